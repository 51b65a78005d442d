// The two comma-separated exports: the processed variables of one run at a
// chosen sample time (with a second form that puts the time of day in front
// of each row), and the raw logger bytes of every run in memory.
//
// The dialog procedures (ExportDataToFile, ExportDataToFileWithTimeStamp,
// ExportRawDataToFile) ask for the file and the sample time through the
// platform; the Write... functions below do the work for a given path and
// serve the command line as well. Every file is written beside its target
// and renamed over it when complete, so an export that fails halfway leaves
// the old file as it was.
#pragma once

#include <cstdint>
#include <string>

namespace tl {

// Menu entries of the run manager and the main window.
void ExportDataToFile(int32_t run);
void ExportDataToFileWithTimeStamp(int32_t run);
void ExportRawDataToFile();

// The sample step in rows from the text of the "Sample Time" box:
// int(GetVal(text) x 100). 0.014 gives 1; anything below 0.01 gives 0.
int32_t ExportStepFromText(const std::string& sampleTime);

// Writes the processed export of run to path: every step-th row from
// RunStart to RunEnd, a column per enabled slot. A step below 1 writes an
// empty file, as the program leaves one when the sample time is refused.
// With timeStamp the rows begin with the time of day (HX40 runs). Returns
// false with the reason in error; the file at path is then untouched.
bool WriteProcessedCsv(int32_t run, const std::string& path, int32_t step, bool timeStamp,
                       std::string& error);
// Writes the raw export of all runs in memory to path.
bool WriteRawCsv(const std::string& path, std::string& error);

// A number in the plain form of the original program's text output: a blank
// or "-" for the sign, up to seven significant digits, no leading zero before
// the decimal point, exponent form ("1.234568E+07", "1E-05") outside the
// fixed range, and a trailing blank.
std::string PlainNumberText(float value);

// The time of day of the run's first row as hhmmss.ss, from the GPS
// sentences of an HX40 run; 0 when none can be had (and for other families).
double CalculateRunStartTime(int32_t run);
// hhmmss.ss -> seconds of the day (hours taken mod 24).
double Time2Seconds(double hhmmss);
// seconds -> hhmmss.ss, hours wrapped mod 24.
double Seconds2Time(double seconds);

}  // namespace tl
