#include "files/summary_run_list.h"

#include <utility>

namespace tl {

SummaryRunList& SummaryRuns() {
    static SummaryRunList list;
    return list;
}

void SummaryRunList::Add(SummaryRunRecord record) {
    Runs.push_back(std::move(record));
    NotifyChanged();
}

void SummaryRunList::Remove(size_t index) {
    if (index >= Runs.size()) return;
    Runs.erase(Runs.begin() + static_cast<std::ptrdiff_t>(index));
    NotifyChanged();
}

void SummaryRunList::Clear() {
    Runs.clear();
    NotifyChanged();
}

void SummaryRunList::NotifyChanged() const {
    if (onChanged) onChanged();
}

}  // namespace tl
