// The derived-variable pipeline that follows every family conversion, and the
// stages it calls. Every stage takes the 1-based run number; none returns a
// status that the pipeline looks at.
#pragma once

#include <cstdint>

namespace tl {

// Runs the derived stages on the run's rows in their fixed order, ending with
// the scratch slot 201 cleared.
void ProcessDerivedVariables(int32_t run);

// The two filter passes over slots 2 to 201: rate and limit repair on the raw
// signals, moving average on the finished variables.
void SmartFilterVariables(int32_t run);
void LinearFilterVariables(int32_t run);
// Replaces stretches that change faster than rate (units per second, timed
// by slot 1) or leave minimum..maximum by a straight line. Returns the count
// of repaired stretches.
int IntelligentRocFilter(int32_t run, int32_t column, float rate, float minimum, float maximum);
// LinearFilterVar (a moving average on one column of a run) is a store
// routine: store/run_procedures.h.

// Slot 9 (mph) from slot 10 (kph).
void CalculateWheelSpeedMph(int32_t run);
// Slot 10 from the vehicle's WheelSpeedFormula (MQ7 converter).
void CalculateFormulaWheelSpeed(int32_t run);

// GPS speed at every row from the sparse fixes and the long acceleration.
void CalcSpeedGPS(int32_t run);
// Position X/Y at every row from the GPS fixes and the dead-reckoned path.
void TrackMapGps(int32_t run);
// One row of dead reckoning; returns 0.
int CalcCourse(float latAccel, float speed, float& x, float& y, float& heading,
               float distMultiplier);

void CalcDistances(int32_t run);
void CalcPower(int32_t run);
void CalcGearRatios(int32_t run);
void CalculateHeadingVariables(int32_t run);

}  // namespace tl
