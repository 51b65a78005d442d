// The tables of open view forms (XYGraphForms and its kin): one entry per
// number a form was given, from 1, each with a free flag, the cursor-drawn
// flag of the playback and the form itself (opaque here: the windows live
// above the engine).
//
// A new form takes the lowest free entry, so the numbers of closed forms are
// used again, lowest first; only when none is free does the table grow by
// one. Closing a form frees its entry, and free entries at the end are let
// go, so that when every form has closed (as ClearCurrentRun(True) closes
// them all) the table is back to one free entry and a count of 1.
#pragma once

#include <cstdint>
#include <vector>

namespace tl {

class ViewForms {
  public:
    struct Entry {
        bool free = true;
        bool cursorDrawn = false;
        void* form = nullptr;
    };

    ViewForms() { Reset(); }
    // The number (1 to Count()) the form is given: the lowest free entry, or
    // a new one at the end.
    int32_t Open(void* form);
    // Marks the entry free; out-of-range numbers are ignored.
    void Close(int32_t number);
    // One free entry, count 1.
    void Reset();
    int32_t Count() const { return static_cast<int32_t>(entries_.size()) - 1; }
    // Entry 1 to Count(); nullptr outside.
    Entry* At(int32_t number);
    const Entry* At(int32_t number) const;
    // The number of an open form, 0 when it is not in the table.
    int32_t NumberOf(const void* form) const;
    // The forms in use, by number.
    std::vector<void*> OpenForms() const;

  private:
    std::vector<Entry> entries_;  // index 0 unused
};

// The graph windows.
ViewForms& XYGraphForms();
// The bar chart windows.
ViewForms& BarChartForms();

}  // namespace tl
