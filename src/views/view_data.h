// What the XY graph and the bar chart read from the run store in the same
// way: a variable's column by its name, the run number typed into an axis,
// and a value's text on the clipboard.
#pragma once

#include <cstdint>
#include <string>

namespace tl {

// The column of a named variable (a name no longer known, or "Select
// Variable", reads the shared "*No Data*" column); nullptr when RunData has
// no such column.
const float* ColumnOfName(const std::string& name);

// AxisRun_Change's rule for a typed run number: above RunCount it becomes
// "1", below 1 it becomes RunCount (the up-down control wraps, the two
// directions deliberately unlike). Returns the name of the run it then names
// (rounded half to even), empty when that is no loaded run.
std::string WrapAxisRun(std::string& axisRun);

// The run as the calculations take it: rounded half to even, held within 1
// to RunCount (at least 1), written back as a whole number.
int32_t ClampAxisRun(std::string& axisRun);

// The shortest decimal text that reads back as the same single.
std::string ShortestSingle(float v);

}  // namespace tl
