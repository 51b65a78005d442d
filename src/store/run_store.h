// The run store: every run in memory lives in two shared arrays and a small
// table that says where each run begins and ends.
//
//   RunInfo   records 0 to 11; run n is record n, record 0 unused.
//   RawData   the logger's bytes. Plane families (HX40, SV63): eight vectors
//             RawData(index, 1..8); stream families (MQ7, SW63): one byte
//             stream RawData(index). Each vector is one contiguous block.
//   RunData   the processed samples, RunData(row, column), row fast: each
//             column is one contiguous float block. Row 0 is never used.
//
// Both arrays grow in place, one column or plane at a time, so a resize never
// needs two full copies of the table: the peak is the final size plus one
// column. The observable rules of the original two-copy resize are kept by
// the procedures in run_store.cpp (which rows survive, which index is lost,
// the wait texts shown per column).
#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace tl {

struct RunRecord {
    std::string Name;
    int32_t RunStart = 0;
    int32_t RunEnd = 0;
    int32_t RawStart = 0;
    int32_t RawEnd = 0;
    int32_t RunLength = 0;
    std::string RunSpare1;
    std::string CarFile;
    std::string Details;
    std::string UserDetails;
    std::array<uint8_t, 8> HeaderBytes{};  // HeaderBytes(1..8) is [0..7]
    float AmbientPressure = 101.0f;
    float AmbientTemperature = 30.0f;
    float AmbientHumidity = 0.0f;
};

// One contiguous, zero-initialised block of trivially copyable elements that
// grows and shrinks in place. It lives in malloc'd memory so that a resize is a
// realloc: on Linux a large block is moved by remapping its pages rather than
// by copying, and at worst one block is copied at a time. This is what keeps
// the peak of a resize at the final size plus one column.
template <class T>
class GrowBlock {
  public:
    GrowBlock() = default;
    ~GrowBlock() { std::free(data_); }
    GrowBlock(const GrowBlock& other) { *this = other; }
    GrowBlock& operator=(const GrowBlock& other);
    GrowBlock(GrowBlock&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}
    GrowBlock& operator=(GrowBlock&& other) noexcept;
    size_t size() const { return size_; }
    T* data() { return data_; }
    const T* data() const { return data_; }
    T& operator[](size_t i) { return data_[i]; }
    const T& operator[](size_t i) const { return data_[i]; }
    operator std::span<T>() { return {data_, size_}; }
    operator std::span<const T>() const { return {data_, size_}; }
    // Keeps elements 0 to min(old, new) - 1; new elements are 0. Throws
    // RuntimeError 7 (out of memory) when the block cannot be had.
    void Resize(size_t newSize);

  private:
    T* data_ = nullptr;
    size_t size_ = 0;
};

// The raw logger bytes in the family's shape.
class RawArray {
  public:
    // Empties the array to index 0 to 1 in the given shape.
    void Reset(bool planes);
    bool planes() const { return planes_; }
    int32_t UpperIndex() const { return upper_; }
    // Index 0 to UpperIndex(); vector 1 to 8 (plane shape).
    uint8_t& operator()(int32_t index, int vector) { return data_[vector - 1][index]; }
    uint8_t operator()(int32_t index, int vector) const { return data_[vector - 1][index]; }
    // Stream shape.
    uint8_t& operator()(int32_t index) { return data_[0][index]; }
    uint8_t operator()(int32_t index) const { return data_[0][index]; }
    // A whole vector (1 to 8; the stream is vector 1).
    std::span<uint8_t> Vector(int vector) { return data_[vector - 1]; }
    std::span<const uint8_t> Vector(int vector) const { return data_[vector - 1]; }
    // Number of vectors of the shape: 8 for planes, 1 for the stream.
    int VectorCount() const { return planes_ ? 8 : 1; }
    // Resizes every vector to index 0 to newUpper (at least 0), keeping the
    // content of the indices both sizes share; new indices are 0.
    void Resize(int32_t newUpper);
    // Bytes held.
    size_t Bytes() const;

  private:
    bool planes_ = false;
    int32_t upper_ = -1;
    std::array<GrowBlock<uint8_t>, 8> data_;
};

// RunData: column-contiguous single-precision table.
class RunArray {
  public:
    int32_t UpperRow() const { return upper_; }
    int32_t Columns() const { return static_cast<int32_t>(columns_.size()); }
    float& operator()(int32_t row, int32_t column) { return columns_[column][row]; }
    float operator()(int32_t row, int32_t column) const { return columns_[column][row]; }
    std::span<float> Column(int32_t column) { return columns_[column]; }
    std::span<const float> Column(int32_t column) const { return columns_[column]; }
    // Rows 0 to upperRow, the given number of columns, all zero.
    void Reset(int32_t upperRow, int32_t columns);
    // Resizes one column to rows 0 to newUpper, keeping the rows both sizes
    // share; new rows are 0. The table's upper row follows the last call of
    // SetUpperRow; callers resize every column and then set it.
    void ResizeColumn(int32_t column, int32_t newUpper);
    // Changes the number of columns: columns beyond the new count are
    // released, new columns get rows 0 to UpperRow(), all zero.
    void SetColumnCount(int32_t columns);
    void SetUpperRow(int32_t newUpper) { upper_ = newUpper; }
    size_t Bytes() const;

  private:
    int32_t upper_ = -1;
    std::vector<GrowBlock<float>> columns_;
};

struct RunStore {
    std::array<RunRecord, 12> RunInfo;
    int32_t RunCount = 0;
    RawArray RawData;
    RunArray RunData;
    int32_t CurrentRun = 1;
    int32_t LapCount = 0;
    int32_t RefLapNumber = 0;
};

RunStore& Store();

extern template class GrowBlock<uint8_t>;
extern template class GrowBlock<float>;

// Convenience for readers: RunData(row, column).
inline float& RunData(int32_t row, int32_t column) {
    return Store().RunData(row, column);
}

}  // namespace tl
