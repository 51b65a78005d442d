// GetVal_NI reads GPS fields and option texts in its own way: the fraction is
// taken as a whole number, brought below 1 by tenths and then divided by ten
// once per leading zero. The result is pinned to the bit, since conversions
// and options depend on it, including where a library reader would round
// differently.
#include <gtest/gtest.h>

#include <string>

#include "core/support.h"

namespace tl {
namespace {

TEST(GetValNIExact, FractionsByTenthsAndLeadingZeros) {
    // A latitude field: 0.2 then three leading zeros.
    EXPECT_EQ(GetVal_NI("5130.0002"), 5130.0 + 2.0 / 10.0 / 10.0 / 10.0 / 10.0);
    EXPECT_EQ(GetVal_NI("00010.4321"), 10.0 + 4321.0 / 10.0 / 10.0 / 10.0 / 10.0);
    // Only zeros after the point, and a fraction that ends in zeros.
    EXPECT_EQ(GetVal_NI("12.000"), 12.0);
    EXPECT_EQ(GetVal_NI("0.0500"), 500.0 / 10.0 / 10.0 / 10.0 / 10.0);
    // Spaces and tabs go at both ends only; one inside drops out like a letter.
    EXPECT_EQ(GetVal_NI("\t 7.25 \t"), 7.25);
    EXPECT_EQ(GetVal_NI("7 .25"), 7.25);
    // The 20 characters are counted after the ends are trimmed: the fraction
    // "123456" of the text below is cut to "1234".
    EXPECT_EQ(GetVal_NI("   123456789012345.123456"),
              123456789012345.0 + 1234.0 / 10.0 / 10.0 / 10.0 / 10.0);
    // A minus after the point still counts; a third part never does.
    EXPECT_EQ(GetVal_NI("3.5-"), -3.5);
    EXPECT_EQ(GetVal_NI("3.5.9-"), -3.5);
}

}  // namespace
}  // namespace tl
