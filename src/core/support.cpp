#include "core/support.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <utility>
#include <vector>

#include "core/log.h"

namespace tl {

float FindMax(float a, float b) {
    return a > b ? a : b;
}
float FindMin(float a, float b) {
    return a < b ? a : b;
}

float FindClip(float low, float x, float high) {
    if (x < low) return low;
    if (x >= high) return high;
    return x;
}

float Constrain(float x, float low, float high) {
    if (low == high) return low;
    const float range = high - low;
    // A value many turns away would take forever by repeated steps (and never
    // arrive once the step is below the float's resolution): fold it first.
    if (std::fabs((x - low) / range) > 1.0e4f) x = low + std::fmod(x - low, range);
    while (x > high) x -= range;
    while (x < low) x += range;
    return x;
}

float InvSin(float x) {
    float d = std::sqrt(1.0f - x * x);
    // At exactly 1 the root is 0; its place is taken by the inverse of a very
    // large constant, so the result stays finite (pi / 2).
    if (d == 0.0f) d = 1.0f / 1.0e30f;
    return std::atan(x / d);
}

float Atan2(float y, float x) {
    float a;
    if (x != 0.0f) {
        a = std::atan(y / x);
        if (x < 0.0f) a += kPi;
    } else {
        a = y > 0.0f ? kPi / 2.0f : (y < 0.0f ? -kPi / 2.0f : 0.0f);
    }
    const float twoPi = 2.0f * kPi;
    while (a < 0.0f) a += twoPi;
    while (a >= twoPi) a -= twoPi;
    return a;
}

bool IsBetween(double a, double x, double b) {
    const double lo = std::min(a, b - 0.0001);
    const double hi = std::max(a, b + 0.0001);
    return x >= lo && x <= hi;
}

void SimEquat(float a1, float b1, float c1, float a2, float b2, float c2, float& x, float& y) {
    if (b1 == 0.0f) {
        x = y = -1.0f;
        return;
    }
    const float det = a2 - b2 * a1 / b1;
    if (det == 0.0f) {
        x = y = -1.0f;
        return;
    }
    x = (c2 - b2 * c1 / b1) / det;
    y = (c1 - a1 * x) / b1;
}

void Swap(int32_t& a, int32_t& b) {
    std::swap(a, b);
}

bool ValidNumber(const std::string& text) {
    for (char c : text)
        if (!((c >= '0' && c <= '9') || c == '-' || c == '.' || c == ',')) return false;
    return true;
}

double GetVal(std::string& text) {
    for (char& c : text)
        if (c == ',') c = '.';
    return GetVal_NI(text);
}

double GetVal(const std::string& text) {
    std::string copy = text;
    return GetVal(copy);
}

double GetVal_NI(const std::string& input) {
    // Read in place, with no copy of the text: the GPS sentences of a
    // conversion come through here several times a second of the run.
    const std::string_view all(input);
    const size_t b = all.find_first_not_of(" \t");
    if (b == std::string_view::npos) return 0.0;
    const size_t e = all.find_last_not_of(" \t");
    const std::string_view text = all.substr(b, e - b + 1).substr(0, 20);
    const bool negative = text.find('-') != std::string_view::npos;
    // Only digits and "." count. The digits before the first point are the
    // whole part, those up to a second point the fraction (a third part is
    // ignored). The fraction is read as a whole number and brought below 1,
    // then divided by ten once for each of its leading zeros.
    double w = 0.0, f = 0.0;
    int part = 0, leadingZeros = 0;
    bool anyFraction = false, leading = true;
    for (const char c : text) {
        if (c == '.') {
            ++part;
        } else if (c >= '0' && c <= '9') {
            if (part == 0) {
                w = w * 10.0 + (c - '0');
            } else if (part == 1) {
                f = f * 10.0 + (c - '0');
                anyFraction = true;
                if (leading && c == '0')
                    ++leadingZeros;
                else
                    leading = false;
            }
        }
    }
    if (anyFraction) {
        while (f >= 1.0) f /= 10.0;
        for (int k = 0; k < leadingZeros; ++k) f /= 10.0;
    }
    const double result = w + f;
    return negative ? -result : result;
}

std::string FormToSD(double value, int digits) {
    if (value == 0.0) return "0.0";
    double e = std::trunc(std::log(std::fabs(value)) / std::log(10.0)) + 1.0;
    e = FindMax(static_cast<float>(e), 0.0f);
    const int n = static_cast<int>(e);
    const int decimals = digits > n ? digits - n : 0;
    char buf[512];
    std::snprintf(buf, sizeof buf, "%.*f", decimals, std::fabs(value));
    std::string text = buf;
    std::string whole = text, frac;
    if (size_t dot = text.find('.'); dot != std::string::npos) {
        whole = text.substr(0, dot);
        frac = text.substr(dot + 1);
    }
    // The format has n places before the point: at least n digits, and none
    // at all for a zero whole part when n is 0.
    if (n == 0 && whole == "0") whole.clear();
    while (static_cast<int>(whole.size()) < n) whole.insert(whole.begin(), '0');
    std::string result = whole + "." + frac;
    bool allZero = true;
    for (char c : whole + frac)
        if (c != '0') allZero = false;
    if (value < 0 && !allZero) result.insert(result.begin(), '-');
    return result;
}

void LinearFilterVar(std::span<float> v, float seconds) {
    // The window length is rounded as the platform's integer conversion does:
    // halves to even.
    const long w = std::lrint(static_cast<double>(seconds) * 100.0);
    const long upper = static_cast<long>(v.size()) - 1;
    if (w < 2 || w > upper - 10) return;
    const long h = (w - 1) / 2;
    const long t = w - h;
    double sum = 0.0;
    for (long i = 0; i < w; ++i) sum += v[i];
    // Only the rows written below are read back: no need to clear the rest.
    thread_local std::vector<float> result;
    if (result.size() < v.size()) result.resize(v.size());
    for (long i = h; i <= upper - t - 1; ++i) {
        sum = sum - v[i - h] + v[i + t];
        result[i] = static_cast<float>(sum / static_cast<double>(w));
    }
    // Copied in one block: as a loop of single stores (the compiler cannot
    // rule out that the two arrays overlap) it took as long as the averaging.
    if (upper - t - 1 >= h + 1)
        std::copy(result.begin() + (h + 1), result.begin() + (upper - t), v.begin() + (h + 1));
}

void QSort(std::span<float> a, int32_t first, int32_t last) {
    if (first < 0 || last >= static_cast<int32_t>(a.size()) || first >= last) return;
    std::vector<std::pair<int32_t, int32_t>> stack;
    stack.emplace_back(first, last);
    while (!stack.empty()) {
        auto [lo, hi] = stack.back();
        stack.pop_back();
        while (lo < hi) {
            const int32_t mid = lo + (hi - lo) / 2;
            std::swap(a[lo], a[mid]);
            const float pivot = a[lo];
            int32_t i = lo + 1, j = hi;
            while (true) {
                while (i <= j && a[i] < pivot) ++i;
                while (i <= j && a[j] > pivot) --j;
                if (i >= j) break;
                std::swap(a[i], a[j]);
                ++i;
                --j;
            }
            std::swap(a[lo], a[j]);
            // The smaller partition first; the larger waits on the stack.
            if (j - lo < hi - j) {
                stack.emplace_back(j + 1, hi);
                hi = j - 1;
            } else {
                stack.emplace_back(lo, j - 1);
                lo = j + 1;
            }
        }
    }
}

uint32_t VqColorIndex(int index, bool invert) {
    uint32_t c;
    switch (index) {
        case 0:
            c = 0;
            break;
        case 1:
            c = 255;
            break;
        case 2:
            c = 0xFF00FF;
            break;
        case 3:
            c = 0xFF0000;
            break;
        case 4:
            c = 65280 / 2;
            break;
        case 5:
            c = 65280;
            break;
        case 6:
            c = 65535;
            break;
        case 7:
            c = 0xFFFF00;
            break;
        case 8:
            c = 16711680 / 2;
            break;
        // 255 / 2 is 127.5, which the colour's integer type rounds (halves to
        // even) to 128.
        case 9:
            c = 128;
            break;
        default:
            c = Rgb(128, 128, 128);
            LogDebug("Cursor Color Out Of Bounds!");
            break;
    }
    return invert ? c ^ 0xFFFFFFu : c;
}

uint32_t GraphColorGen2(int& value) {
    if (value < 0) value = 0;
    if (value > 767) value = 767;
    if (value < 256) return Rgb(value, 0, 0);
    if (value < 512) return Rgb(255, value - 255, 0);
    return Rgb(255, 255, value - 512);
}

}  // namespace tl
