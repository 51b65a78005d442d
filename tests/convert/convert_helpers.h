// Shared helpers of the conversion tests: put bytes into the run store as a
// loader would, size the run, and read a slot's rows.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl::test {

using Frame = std::array<uint8_t, 8>;  // vectors 1 to 8

// Selects every available variable, as "Set All" would, and rebuilds the
// catalogue.
inline void EnableAllVariables() {
    SetAvailableVars();
    for (int s = 1; s <= 200; ++s)
        if (Catalogue().RunVars[s].Available && !Catalogue().RunVars[s].Name.empty())
            SetConfig(Paths().TracelabCfgPath, PlainVarName(s), -1);
    SetAvailableVars();
}

// Frames as run 1 (raw 0 to n - 1), sized by AllocateRunArray and wiped.
inline void LoadPlaneRun(const std::vector<Frame>& frames, std::array<uint8_t, 8> header = {}) {
    RunStore& s = Store();
    s.RawData.Reset(true);
    s.RawData.Resize(static_cast<int32_t>(frames.size()) - 1);
    for (size_t i = 0; i < frames.size(); ++i)
        for (int v = 1; v <= 8; ++v) s.RawData(static_cast<int32_t>(i), v) = frames[i][v - 1];
    s.RunCount = 1;
    RunRecord& r = s.RunInfo[1];
    r.Name = "test";
    r.RawStart = 0;
    r.RawEnd = static_cast<int32_t>(frames.size()) - 1;
    r.HeaderBytes = header;
    AllocateRunArray(1);
    WipeRunData(1);
}

inline void LoadStreamRun(const std::vector<uint8_t>& bytes) {
    RunStore& s = Store();
    s.RawData.Reset(false);
    s.RawData.Resize(static_cast<int32_t>(bytes.size()) - 1);
    for (size_t i = 0; i < bytes.size(); ++i) s.RawData(static_cast<int32_t>(i)) = bytes[i];
    s.RunCount = 1;
    RunRecord& r = s.RunInfo[1];
    r.Name = "test";
    r.RawStart = 0;
    r.RawEnd = static_cast<int32_t>(bytes.size()) - 1;
    AllocateRunArray(1);
    WipeRunData(1);
}

inline float Row(int slotNumber, int32_t row) {
    return RunData(row, ColumnOf(slotNumber));
}

inline const RunRecord& Run1() {
    return Store().RunInfo[1];
}

}  // namespace tl::test
