// The GPS primitives against hand-worked figures.
#include <gtest/gtest.h>

#include "convert/gps.h"

namespace tl {
namespace {

TEST(GpsPrimitives, ProjectionOfDegreesAndMinutes) {
    double x = 0, y = 0;
    // 10 minutes east at 51 deg 30 min north, 10 minutes north of the origin:
    // the cosine is of the point's own latitude.
    GpsCoord(5130.0, 10.0, 5120.0, 0.0, x, y);
    EXPECT_NEAR(x, 11551.4795, 1e-3);
    EXPECT_NEAR(y, 18556.1574, 1e-3);
    // Signs follow the numbers: south and west are negative.
    GpsCoord(-5120.0, -10.0, -5130.0, 0.0, x, y);
    EXPECT_LT(x, 0);
    EXPECT_NEAR(y, 18556.1574, 1e-3);
    CalcDistBetweenCoords(5130.0, 10.0, 5120.0, 0.0, x, y);
    EXPECT_NEAR(y, 18556.1574, 1e-3);
}

TEST(GpsPrimitives, ProjectionOfFractionalDegrees) {
    double x = 0, y = 0;
    GpsCoord_FractDegree(-23.7, -46.7, -23.701, -46.699, x, y);
    EXPECT_NEAR(x, -101.947075, 1e-5);
    EXPECT_NEAR(y, 111.336944, 1e-5);
    CalcDistBetweenCoords_FractDegree(-23.701, -46.699, -23.7, -46.7, x, y);
    EXPECT_NEAR(y, -111.336944, 1e-5);
    // At the origin itself, nothing.
    GpsCoord_FractDegree(50.1, 8.2, 50.1, 8.2, x, y);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
}

TEST(GpsPrimitives, WrappedModulo) {
    EXPECT_NEAR(FpMod(370, 360), 10, 1e-9);
    EXPECT_NEAR(FpMod(-10, 360), -10, 1e-9);
    EXPECT_NEAR(FpModPos(-10, 360), 350, 1e-9);
    EXPECT_NEAR(FpModPos(-730, 360), 350, 1e-9);
    EXPECT_NEAR(FpModPos(725, 360), 5, 1e-9);
    EXPECT_EQ(FpMod(5, 0), 1.0000000200408773e+20);
    EXPECT_EQ(FpModPos(-5, 0), 1.0000000200408773e+20);
}

TEST(GpsPrimitives, SatelliteCharacter) {
    int n = 0;
    bool flag = true;
    ExtractSatCount("", n, flag);
    EXPECT_EQ(n, -1);  // empty counts as "0": no count at all
    EXPECT_FALSE(flag);
    const std::pair<const char*, int> table[] = {{"0", -1}, {"1", 1},  {"9", 9},  {":", 10},
                                                 {";", 11}, {"<", 12}, {"?", 15}, {"@", 16},
                                                 {"A", 6},  {"V", -1}, {"B", -1}, {"12", -1}};
    for (const auto& [text, count] : table) {
        ExtractSatCount(text, n, flag);
        EXPECT_EQ(n, count) << text;
        EXPECT_FALSE(flag);
    }
    ExtractSatCount(std::string(1, static_cast<char>(136)), n, flag);
    EXPECT_EQ(n, 8);
    EXPECT_TRUE(flag);
    ExtractSatCount("-1", n, flag);
    EXPECT_EQ(n, -1);
}

TEST(GpsPrimitives, LockScoreBands) {
    const std::string head = " The satelite lock score for this run is ";
    EXPECT_EQ(SatCountText(0), " The run does not contain any GPS information.");
    EXPECT_EQ(SatCountText(9), head + "9");
    EXPECT_EQ(SatCountText(1), head + "1");
    EXPECT_NE(SatCountText(101).find("excellent."), std::string::npos);
    EXPECT_NE(SatCountText(100).find("as good."), std::string::npos);
    EXPECT_NE(SatCountText(64).find("as satisfactory."), std::string::npos);
    EXPECT_NE(SatCountText(49).find("satisfactory, but could be improved."), std::string::npos);
    EXPECT_NE(SatCountText(36).find("poor and may contain"), std::string::npos);
    EXPECT_NE(SatCountText(25).find("at least some of the run."), std::string::npos);
    EXPECT_EQ(SatCountText(10), head +
                                    "10 ,the GPS data is therefore classified as very poor and "
                                    "likely to be inaccurate.");
}

TEST(GpsPrimitives, LocalTimeOfFix) {
    SetTimeZoneBiasMinutes(-60);  // one hour east of Greenwich
    EXPECT_EQ(ExtractGPSTime("123456"), "13:34:56 local time (12:34:56 gmt) ");
    EXPECT_EQ(ExtractGPSTime("233000"), "00:30:00 local time (23:30:00 gmt) ");
    EXPECT_EQ(ExtractGPSTime(""), "01:00:00 local time (00:00:00 gmt) ");
    // Half an hour off: no carry between the fields.
    SetTimeZoneBiasMinutes(210);
    EXPECT_EQ(ExtractGPSTime("021000"), "-01:-20:00 local time (02:10:00 gmt) ");
    SetTimeZoneBiasMinutes(0);
    EXPECT_EQ(ExtractGPSTime(""), "00:00:00 local time (00:00:00 gmt) ");
    UseSystemTimeZoneBias();
}

}  // namespace
}  // namespace tl
