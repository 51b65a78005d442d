// The run store's arrays and the procedures that size, empty and search them.
//
// Column count of RunData: a clear allocates columns 0 to 201 (the most a
// catalogue can enable), and from then on PreserveRunData lays the table out
// with NumVars columns, keeping the existing columns 0 to NumVars - 1 and
// dropping any beyond. Since the catalogue is always rebuilt by the clear that
// precedes an allocation, the two agree whenever rows are filled.
#include "store/run_store.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/platform.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "formats/plane_frames.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/slot_columns.h"
#include "store/stream_scan.h"

namespace tl {

// --- GrowBlock ---

template <class T>
GrowBlock<T>& GrowBlock<T>::operator=(const GrowBlock& other) {
    if (this == &other) return *this;
    Resize(0);
    Resize(other.size_);
    if (other.size_) std::memcpy(data_, other.data_, other.size_ * sizeof(T));
    return *this;
}

template <class T>
GrowBlock<T>& GrowBlock<T>::operator=(GrowBlock&& other) noexcept {
    if (this != &other) {
        std::free(data_);
        data_ = std::exchange(other.data_, nullptr);
        size_ = std::exchange(other.size_, 0);
    }
    return *this;
}

template <class T>
void GrowBlock<T>::Resize(size_t newSize) {
    if (newSize == size_) return;
    if (newSize == 0) {
        std::free(data_);
        data_ = nullptr;
        size_ = 0;
        return;
    }
    if (newSize > SIZE_MAX / sizeof(T)) throw RuntimeError(kErrOutOfMemory, "Out of memory");
    void* p = std::realloc(data_, newSize * sizeof(T));
    if (!p) throw RuntimeError(kErrOutOfMemory, "Out of memory");
    data_ = static_cast<T*>(p);
    if (newSize > size_) std::memset(data_ + size_, 0, (newSize - size_) * sizeof(T));
    size_ = newSize;
}

template class GrowBlock<uint8_t>;
template class GrowBlock<float>;

// --- RawArray ---

void RawArray::Reset(bool planes) {
    planes_ = planes;
    for (auto& v : data_) v.Resize(0);
    upper_ = -1;
    Resize(1);
}

void RawArray::Resize(int32_t newUpper) {
    if (newUpper < 0) newUpper = 0;
    const size_t n = static_cast<size_t>(newUpper) + 1;
    for (int v = 0; v < VectorCount(); ++v) data_[v].Resize(n);
    upper_ = newUpper;
}

size_t RawArray::Bytes() const {
    size_t total = 0;
    for (const auto& v : data_) total += v.size();
    return total;
}

// --- RunArray ---

void RunArray::Reset(int32_t upperRow, int32_t columns) {
    columns_.clear();
    upper_ = std::max(upperRow, 0);
    columns_.resize(static_cast<size_t>(std::max(columns, 0)));
    for (auto& c : columns_) c.Resize(static_cast<size_t>(upper_) + 1);
}

void RunArray::ResizeColumn(int32_t column, int32_t newUpper) {
    columns_[column].Resize(static_cast<size_t>(std::max(newUpper, 0)) + 1);
}

void RunArray::SetColumnCount(int32_t columns) {
    const size_t old = columns_.size();
    columns_.resize(static_cast<size_t>(std::max(columns, 0)));
    for (size_t c = old; c < columns_.size(); ++c)
        columns_[c].Resize(static_cast<size_t>(std::max(upper_, 0)) + 1);
}

size_t RunArray::Bytes() const {
    size_t total = 0;
    for (const auto& c : columns_) total += c.size() * sizeof(float);
    return total;
}

RunStore& Store() {
    static RunStore store;
    return store;
}

// --- procedures ---

namespace {

bool ValidRecord(int32_t run) {
    return run >= 1 && run <= 11;
}

}  // namespace

int64_t WalkRunRows(int32_t run) {
    const RunStore& s = Store();
    const RunRecord& r = s.RunInfo[run];
    const BuildProfile& p = Profile();
    const RawArray& raw = s.RawData;
    // A run's raw range never reaches past the array, whatever a file
    // claimed: the walk stops at the array's last index.
    const int32_t rawEnd = std::min(r.RawEnd, raw.UpperIndex());
    const int32_t rawStart = std::max(r.RawStart, 0);
    if (rawEnd != r.RawEnd)
        LogDebug("raw end beyond the raw data, cut to " + std::to_string(rawEnd));
    if (p.HardwareSV63)
        return WalkSv63Rows(raw.Vector(1), Sv63Step(r.HeaderBytes[0]), rawStart, rawEnd,
                            r.RunStart);
    if (p.HardwareHX40) return WalkHx40Rows(raw.Vector(3), rawStart, rawEnd, r.RunStart);
    if (p.HardwareMQ7 || p.HardwareSW63) return r.RunStart + CountStreamRows(run);
    Message("No hardware defined!!");
    return r.RunStart;
}

void AllocateRunArray(int32_t run) {
    Procedure("AllocateRunArray", [&] {
        if (!ValidRecord(run)) return;
        RunStore& s = Store();
        RunRecord& r = s.RunInfo[run];
        LogDebug("allocate run array for " + std::to_string(run));
        ShowPleaseWait("Scanning Raw Data...");
        // The test looks at RunCount, not at run: ReprocessAllRuns relies on it.
        r.RunStart = (s.RunCount == 1) ? 1 : s.RunInfo[run - 1].RunEnd + 1;

        const int64_t counter = WalkRunRows(run);
        HidePleaseWait();
        // More rows than a 32-bit row index holds cannot be allocated anyway;
        // the allocation below then fails as a run-time error.
        r.RunEnd = static_cast<int32_t>(std::min<int64_t>(counter, INT32_MAX - 1));
        r.RunLength = r.RunEnd - r.RunStart + 1;
        LogDebug("New run end = " + std::to_string(r.RunEnd));
        LogDebug("new length = " + std::to_string(r.RunLength));
        PreserveRunData(r.RunEnd);
    });
}

void WipeRunData(int32_t run) {
    Procedure("WipeRunData", [&] {
        if (!ValidRecord(run)) return;
        RunStore& s = Store();
        const RunRecord& r = s.RunInfo[run];
        LogDebug("wipe all the rundata from run: " + std::to_string(run));
        const int32_t first = std::max(r.RunStart, 0);
        const int32_t last = std::min(r.RunEnd, s.RunData.UpperRow());
        if (last < first) return;
        for (int32_t c = 0; c < s.RunData.Columns(); ++c) {
            auto col = s.RunData.Column(c);
            std::fill(col.begin() + first, col.begin() + last + 1, 0.0f);
        }
        LogDebug("Reset the GPS speed vectors");
        // In these two vectors -1 means no value yet.
        for (int slotNumber : {slot::SpeedKph, slot::SpeedMph}) {
            const int32_t c = ColumnOf(slotNumber);
            if (c < 0 || c >= s.RunData.Columns()) continue;
            auto col = s.RunData.Column(c);
            std::fill(col.begin() + first, col.begin() + last + 1, -1.0f);
        }
    });
}

void PreserveRawData(int32_t newUpperIndex) {
    const BuildProfile& p = Profile();
    if (p.HardwareHX40 || p.HardwareSV63)
        PreserveRawDataHX40(newUpperIndex);
    else if (p.HardwareMQ7 || p.HardwareSW63)
        PreserveRawDataMQ7(newUpperIndex);
    else
        Message("No hardware defined");
}

void PreserveRawDataHX40(int32_t newUpperIndex) {
    Procedure("PreserveRawDataHX40", [&] {
        RawArray& raw = Store().RawData;
        CheckMemoryAvailable(2.0 * 8.0 * (double(newUpperIndex) - raw.UpperIndex()));
        ShowPleaseWait("Allocating Raw Memory");
        if (newUpperIndex < 0) newUpperIndex = 0;
        if (!raw.planes()) raw.Reset(true);
        raw.Resize(newUpperIndex);
        // The original copied indices 1 to the upper index through a
        // temporary array, so index 0 is never carried: every resize leaves
        // zero there. The in-place resize keeps that rule.
        for (int v = 1; v <= 8; ++v) raw(0, v) = 0;
        HidePleaseWait();
    });
}

void PreserveRawDataMQ7(int32_t newUpperIndex) {
    Procedure("PreserveRawDataMQ7", [&] {
        RawArray& raw = Store().RawData;
        CheckMemoryAvailable(double(newUpperIndex) - raw.UpperIndex());
        if (newUpperIndex < 0) newUpperIndex = 0;
        // The stream never shrinks: after a deletion or a trim its upper index
        // stays, and only RunInfo says what is in use. (The original took the
        // larger of the two through a single, which rounds above 2^24; the
        // exact figure is kept here so that a run's last byte is always inside
        // the stream.)
        raw.Resize(std::max(newUpperIndex, raw.UpperIndex()));
    });
}

void PreserveRunData(int32_t newUpperRow) {
    Procedure("PreserveRunData", [&] {
        RunArray& data = Store().RunData;
        const int32_t numVars = std::max(Catalogue().NumVars, 1);
        if (newUpperRow < 0) newUpperRow = 0;
        CheckMemoryAvailable(4.0 * numVars * (double(newUpperRow) - data.UpperRow()));
        LogDebug("Preserve Run Data " + std::to_string(newUpperRow));
        const std::string of = "/" + std::to_string(numVars - 1);
        // The table grows in place, column by column, so the peak is the final
        // size plus one column. The wait texts of the original's two copying
        // passes are kept, one per column each, never in the row loop.
        ShowPleaseWait("Allocating Temporary Memory");
        for (int32_t c = 0; c < numVars; ++c)
            ShowPleaseWait("Copy Data To Temporary Memory " + std::to_string(c) + of);
        ShowPleaseWait("Allocating Memory");
        LogDebug("Reformating Run Array to " + std::to_string(newUpperRow) + " by " +
                 std::to_string(numVars - 1));
        data.SetColumnCount(numVars);
        for (int32_t c = 0; c < numVars; ++c) {
            ShowPleaseWait("Copy Data To Memory " + std::to_string(c) + of);
            data.ResizeColumn(c, newUpperRow);
            data(0, c) = 0.0f;  // row 0 is never copied
        }
        data.SetUpperRow(newUpperRow);
        LogDebug("Clearing the temporary array");
    });
}

int FindVar(const std::string& name) {
    if (name.empty()) return kNoDataSlot;
    const auto& vars = Catalogue().RunVars;
    for (int i = 0; i < kNoDataSlot; ++i)
        if (vars[i].Name == name) return i;
    return kNoDataSlot;
}

int32_t FindVarIndex(const std::string& name) {
    const auto& vars = Catalogue().RunVars;
    const int s = FindVar(name);
    if (s == kNoDataSlot || !vars[s].Enabled) return vars[kNoDataSlot].Column;
    return vars[s].Column;
}

int32_t FindRunIndex(const std::string& name) {
    if (name.empty()) return 1;
    const RunStore& s = Store();
    for (int32_t n = 1; n <= std::min(s.RunCount, 11); ++n)
        if (s.RunInfo[n].Name == name) return n;
    return 1;
}

int32_t FindRunOfRow(int32_t row) {
    const RunStore& s = Store();
    for (int32_t n = 1; n <= std::min(s.RunCount, 11); ++n)
        if (row >= s.RunInfo[n].RunStart && row <= s.RunInfo[n].RunEnd) return n;
    return 0;
}

namespace {

// Clamps a row range to the table; false when nothing is left.
bool ClampRows(int32_t& first, int32_t& last) {
    first = std::max(first, 0);
    last = std::min(last, Store().RunData.UpperRow());
    return last >= first;
}

bool HasColumn(int32_t column) {
    return column >= 0 && column < Store().RunData.Columns();
}

}  // namespace

void DeleteVariableData(int32_t firstRow, int32_t lastRow, int slotNumber) {
    if (slotNumber < 1 || slotNumber > kNoDataSlot) return;
    const RunVar& v = Catalogue().RunVars[slotNumber];
    // Slot 201, the shared "*No Data*" column and scratch, is always written.
    const bool written = v.Enabled || slotNumber == kNoDataSlot;
    if (!written || !HasColumn(v.Column) || !ClampRows(firstRow, lastRow)) return;
    auto col = Store().RunData.Column(v.Column);
    std::fill(col.begin() + firstRow, col.begin() + lastRow + 1, 0.0f);
}

void CopyVariableData(int32_t firstRow, int32_t lastRow, int fromSlot, int toSlot) {
    if (fromSlot < 1 || fromSlot > kNoDataSlot || toSlot < 1 || toSlot > kNoDataSlot) return;
    const RunVar& from = Catalogue().RunVars[fromSlot];
    const RunVar& to = Catalogue().RunVars[toSlot];
    if (!from.Enabled || !to.Enabled || !HasColumn(from.Column) || !HasColumn(to.Column)) return;
    if (!ClampRows(firstRow, lastRow) || from.Column == to.Column) return;
    auto src = Store().RunData.Column(from.Column);
    auto dst = Store().RunData.Column(to.Column);
    std::copy(src.begin() + firstRow, src.begin() + lastRow + 1, dst.begin() + firstRow);
}

void CheckMemoryAvailable(double bytes) {
    const MemoryFigures m = CurrentPlatform().memory->Read();
    const double P = m.availablePhysical;
    const double V = m.availableVirtual;
    bool warned = true;
    if (bytes > V)
        Message(
            "The memory required for the operation in more than that available, you may not be "
            "able to continue");
    else if (bytes > V - 50000 && bytes > P)
        Message(
            "The memory required for the operation will use nearly all the virtual memory on the "
            "PC, the program may run excessively slowly");
    else if (bytes > P)
        Message(
            "The memory required for the operation requires more memory than the PC has "
            "installed, the program may run excessively slowly");
    else if (bytes > P - 20000)
        Message(
            "The memory requires nearly all the remaining physical memory on the PC, the program "
            "may start to run slowly");
    else
        warned = false;
    if (warned && bytes > P - 20000)
        Message(
            "To increase program performance, reduce the number of variables selected, trim the "
            "run length, reduce the number of runs loaded, close other Windows programs or "
            "upgrade the PCs memory");
}

float AvVar(int32_t first, int32_t last, int32_t column) {
    first = std::max(first, 1);
    last = std::max(last, 1);
    if (!HasColumn(column)) return 0.0f;
    last = std::min(last, Store().RunData.UpperRow());
    if (last < first) return 0.0f;
    const auto col = Store().RunData.Column(column);
    double sum = 0;
    for (int32_t r = first; r <= last; ++r) sum += col[r];
    return static_cast<float>(sum / (last - first + 1));
}

float FindPercentileOfData(int32_t first, int32_t last, int32_t column, float fraction) {
    const int32_t run = FindRunOfRow(first);
    if (run <= 0 || FindRunOfRow(last) != run || last <= first || !HasColumn(column)) return 0.0f;
    if (last > Store().RunData.UpperRow() || first < 0) return 0.0f;
    fraction = FindClip(0.0f, fraction, 1.0f);
    const auto col = Store().RunData.Column(column);
    thread_local std::vector<float> sorted;
    sorted.assign(col.begin() + first, col.begin() + last + 1);
    const auto k = std::min(static_cast<size_t>(static_cast<double>(last - first) * fraction),
                            sorted.size() - 1);
    // The element the sort would put at k: a selection finds the same value
    // without ordering the rest. A NaN has no place in that order, so a
    // stretch holding one is sorted as it always was.
    if (std::none_of(sorted.begin(), sorted.end(), [](float v) { return std::isnan(v); })) {
        std::nth_element(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(k),
                         sorted.end());
        return sorted[k];
    }
    QSort(sorted, 0, static_cast<int32_t>(sorted.size()) - 1);
    return sorted[k];
}

void LinearFilterVar(int32_t run, int32_t column, float timeConstant) {
    Procedure("LinearFilterVar", [&] {
        const RunRows rows = RowsOf(run);
        RunArray& rd = Store().RunData;
        if (!rows.ok || column < 0 || column >= rd.Columns()) return;
        // Round halves to even, as the system's Round does (default FP mode).
        const double nd = std::nearbyint(static_cast<double>(timeConstant * 100.0f));
        if (!(nd >= 2.0) || nd > static_cast<double>(rows.length) - 10.0) return;
        const int32_t n = static_cast<int32_t>(nd);
        const int32_t before = (n - 1) / 2;
        const int32_t after = n - before;
        float* v = rd.Column(column).data();
        double sum = 0.0;
        for (int32_t i = rows.first; i <= rows.first + n - 1; ++i) sum += v[i];
        thread_local std::vector<float> tmp;
        tmp.resize(static_cast<size_t>(rows.last) + 1);
        for (int32_t i = rows.first + before; i <= rows.last - after - 1; ++i) {
            sum = sum - v[i - before] + v[i + after];
            tmp[i] = static_cast<float>(sum / n);
        }
        // One block copy rather than a loop of single stores, which the
        // compiler has to keep as they are (the arrays might overlap).
        const int32_t from = rows.first + before + 1, to = rows.last - after - 1;
        if (to >= from) std::copy(tmp.begin() + from, tmp.begin() + to + 1, v + from);
    });
}

}  // namespace tl
