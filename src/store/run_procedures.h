// The procedures of the run store and the variable catalogue. ClearCurrentRun,
// CheckInternalDataStillValid and ReprocessAllRuns reach every room of the
// engine and live at its top, in road/run_road.h.
#pragma once

#include <cstdint>
#include <string>

namespace tl {

// --- run store ---
void AllocateRunArray(int32_t run);
// The last row run's raw stretch gives when its rows are counted from its
// RunStart by the family's frame rules or stream scan: the walk
// AllocateRunArray makes. The trim sets a run's end by it too, so that a
// reprocess finds the same length.
int64_t WalkRunRows(int32_t run);
void WipeRunData(int32_t run);
void PreserveRawData(int32_t newUpperIndex);
void PreserveRawDataHX40(int32_t newUpperIndex);
void PreserveRawDataMQ7(int32_t newUpperIndex);
void PreserveRunData(int32_t newUpperRow);
void DeleteRun(int32_t run);
void DeleteRunHX40(int32_t run);
void DeleteRunMQ7(int32_t run);
int FindVar(const std::string& name);
int32_t FindVarIndex(const std::string& name);
int32_t FindRunIndex(const std::string& name);
// The run whose rows hold row, 0 if none.
int32_t FindRunOfRow(int32_t row);
void DeleteVariableData(int32_t firstRow, int32_t lastRow, int slotNumber);
void CopyVariableData(int32_t firstRow, int32_t lastRow, int fromSlot, int toSlot);
void CheckMemoryAvailable(double bytes);
// Mean of RunData rows first to last in a column; bounds below 1 become 1.
float AvVar(int32_t first, int32_t last, int32_t column);
// The value at fraction (limited to 0 to 1) of the sorted rows first to last
// of a column: element Int((last - first) * fraction). 0 unless both rows lie
// in the same run and last is above first.
float FindPercentileOfData(int32_t first, int32_t last, int32_t column, float fraction);
// Moving average of n = Round(timeConstant * 100) rows on a RunData column;
// the window of row i is rows i - before + 1 to i + after.
void LinearFilterVar(int32_t run, int32_t column, float timeConstant);

// The trim of frmTrimRun as an engine function. The times are the texts of
// the StartTime and EndTime boxes, read with GetVal.
enum class TrimResult {
    Done,
    EndNotAfterStart,  // "The end time must be after start time"
    NegativeTime,      // "Times must be positive"
    EndAfterRunEnd,    // "End time is after the end of the run"
    NoHardware,        // "No hardware specified!!"
    // A stream-family run before the stream scan is built: refused with a
    // message, the run unchanged; the form closes.
    NotAvailable,
};
struct TrimDefaults {
    std::string title;      // "Trim Run Number: " run
    std::string startTime;  // "0.00"
    std::string endTime;    // RunLength / 100 - 0.01
};
TrimDefaults TrimRunDefaults(int32_t run);
// Shows the Part's message for a refusal and returns which; the form stays
// open on the first three.
TrimResult TrimRun(int32_t run, const std::string& startTime, const std::string& endTime);

// --- variable catalogue ---
void SetAvailableVars();
void InitVarNames();
bool EnableBuildVariables();
void SetAlwaysOnVars();
void CheckVariableDependancies();
void DisableWheelSpeedOptions();
void ApplyProfileToOptions();

}  // namespace tl
