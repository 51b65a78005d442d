// The SV63 meter's summary runs: finished result blocks of the meter's timed
// tests, which never enter RunData. The list grows by a load of a summary run
// file (type 101) and by the meter download; a full clear of the run store
// empties it. The Summary Results Explorer reads it and registers itself as
// the listener, so that every change rebuilds its tree (RefreshRunTree).
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tl {

// The size of a summary run as the meter delivers it: 128 frames of 8 bytes,
// frame 0 holding the run's header bytes.
inline constexpr int32_t kSummaryRunBytes = 1024;

struct SummaryRunRecord {
    bool Flag = false;
    // The name shown and saved with a session: the file name, or the name
    // given on download.
    std::string Name;
    std::vector<uint8_t> Bytes;
    // The user's notes (ResultsTxt).
    std::string Notes;
};

struct SummaryRunList {
    std::vector<SummaryRunRecord> Runs;
    // RefreshRunTree of the open summary window; empty when it is closed.
    std::function<void()> onChanged;

    void Add(SummaryRunRecord record);
    void Remove(size_t index);
    void Clear();
    void NotifyChanged() const;
};

SummaryRunList& SummaryRuns();

}  // namespace tl
