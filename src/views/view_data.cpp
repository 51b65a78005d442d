#include "views/view_data.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "core/support.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl {
namespace {

// Round half to even, as the platform's Round did.
double RoundEven(double v) {
    return std::nearbyint(v);
}

}  // namespace

const float* ColumnOfName(const std::string& name) {
    RunArray& rd = Store().RunData;
    const int32_t c = FindVarIndex(name);
    if (c < 0 || c >= rd.Columns()) return nullptr;
    auto col = rd.Column(c);
    return col.empty() ? nullptr : col.data();
}

std::string WrapAxisRun(std::string& axisRun) {
    const int32_t count = Store().RunCount;
    const double v = GetVal(axisRun);
    if (v > count || v < 1) axisRun = std::to_string(v > count ? 1 : count);
    const double run = RoundEven(GetVal(axisRun));
    return (run >= 1 && run <= count && run <= 11) ? Store().RunInfo[static_cast<int>(run)].Name
                                                   : std::string();
}

int32_t ClampAxisRun(std::string& axisRun) {
    const int32_t count = std::max(Store().RunCount, 1);
    double run = RoundEven(GetVal(axisRun));
    if (!(run >= 1)) run = 1;
    if (run > count) run = count;
    axisRun = std::to_string(static_cast<int32_t>(run));
    return static_cast<int32_t>(run);
}

std::string ShortestSingle(float v) {
    char buf[64];
    const auto res = std::to_chars(buf, buf + sizeof buf, v);
    return res.ec == std::errc() ? std::string(buf, res.ptr) : std::string("0");
}

}  // namespace tl
