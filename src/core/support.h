// Small routines used all over the system: locale-free number parsing,
// numeric helpers with the tolerances and wrap rules callers rely on, the
// moving-average filter, a percentile and the plot colours.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace tl {

inline constexpr float kPi = 3.141592654f;
inline constexpr double kGravity = 9.80665;

float FindMax(float a, float b);
float FindMin(float a, float b);
// x below low gives low; x at or above high gives high.
float FindClip(float low, float x, float high);
// Wraps x into [low, high) by adding or subtracting (high - low); low when the
// two are equal.
float Constrain(float x, float low, float high);
float InvSin(float x);
// Angle in radians in 0 to 2 pi of the vector (x, y) given as Atan2(y, x).
float Atan2(float y, float x);
// x between a and b in either order, with b widened by 0.0001 on both sides.
bool IsBetween(double a, double x, double b);
// a1 x + b1 y = c1, a2 x + b2 y = c2; x = y = -1 when b1 or the determinant
// term is 0.
void SimEquat(float a1, float b1, float c1, float a2, float b2, float c2, float& x, float& y);
void Swap(int32_t& a, int32_t& b);

bool ValidNumber(const std::string& text);
// Replaces every "," of the caller's text by "." and reads it with GetVal_NI.
double GetVal(std::string& text);
double GetVal(const std::string& text);
double GetVal_NI(const std::string& text);
std::string FormToSD(double value, int digits);

// In-place moving average over samples at 100 per second.
void LinearFilterVar(std::span<float> vector, float seconds);
// Ascending, with an explicit stack; the pivot is the middle element.
void QSort(std::span<float> array, int32_t first, int32_t last);

// Colours are packed with the low byte red, then green, then blue.
uint32_t VqColorIndex(int index, bool invert);
uint32_t GraphColorGen2(int& value);
// Components above 255 count as 255 and below 0 as 0, as the platform's RGB did.
inline uint32_t Rgb(int r, int g, int b) {
    auto c = [](int v) { return uint32_t(v < 0 ? 0 : v > 255 ? 255 : v); };
    return c(r) | (c(g) << 8) | (c(b) << 16);
}

}  // namespace tl
