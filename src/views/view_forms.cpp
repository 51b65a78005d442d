#include "views/view_forms.h"

namespace tl {

int32_t ViewForms::Open(void* form) {
    for (int32_t n = 1; n <= Count(); ++n) {
        if (entries_[n].free) {
            entries_[n] = Entry{false, false, form};
            return n;
        }
    }
    entries_.push_back(Entry{false, false, form});
    return Count();
}

void ViewForms::Close(int32_t number) {
    if (number < 1 || number > Count()) return;
    entries_[number] = Entry{};
    while (Count() > 1 && entries_.back().free) entries_.pop_back();
}

void ViewForms::Reset() {
    entries_.assign(2, Entry{});
}

ViewForms::Entry* ViewForms::At(int32_t number) {
    return number < 1 || number > Count() ? nullptr : &entries_[number];
}

const ViewForms::Entry* ViewForms::At(int32_t number) const {
    return number < 1 || number > Count() ? nullptr : &entries_[number];
}

int32_t ViewForms::NumberOf(const void* form) const {
    for (int32_t n = 1; n <= Count(); ++n) {
        if (!entries_[n].free && entries_[n].form == form) return n;
    }
    return 0;
}

std::vector<void*> ViewForms::OpenForms() const {
    std::vector<void*> forms;
    for (int32_t n = 1; n <= Count(); ++n) {
        if (!entries_[n].free) forms.push_back(entries_[n].form);
    }
    return forms;
}

ViewForms& XYGraphForms() {
    static ViewForms forms;
    return forms;
}

ViewForms& BarChartForms() {
    static ViewForms forms;
    return forms;
}

}  // namespace tl
