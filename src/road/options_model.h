// The load and save of the option dialogs, without their windows: which keys
// each dialog reads into which control and writes back, and the few rules of
// their Okay buttons. Numbers typed into option boxes are stored as GetVal
// reads them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tl {

// frmCarOptions' number keys in the order they are saved (WheelSpeedFormula,
// the three check boxes and the car constants are handled apart).
std::vector<std::string> CarOptionNumberKeys();
inline constexpr const char* kOptionsSavedMessage =
    "You will have to re-process the runs to make use of any changes you made";

// Text a stored number is shown as in an option box.
std::string OptionNumberText(float value);

// frmTracelabOptions: any HPCorrection other than 1, 2, 3 selects STP (4);
// any MappingMode other than 0, 1, 2 selects 0.
int HPCorrectionShown(float stored);
int MappingModeShown(float stored);

// One row of MsGridFilterOptions: an enabled variable and its four filter
// settings (TimeFilt_, RateFilt_, MinPos_, MaxPos_ + the display name).
struct FilterRow {
    std::string name;
    std::string timeFilt, rateFilt, minPos, maxPos;  // cell texts
};
std::vector<FilterRow> LoadFilterRows();
// Each row's slot is found by name; rows whose name is no variable are passed.
void SaveFilterRows(const std::vector<FilterRow>& rows);

// frmRefLapOptions' Okay: chosenRun is the combo's run (0 for none), beacons
// the text of NumLapBeaconsTxt. Returns true when the form unloads; false when
// the user said No with runs loaded (nothing changed).
bool RefLapOptionsOkay(int32_t chosenRun, const std::string& beaconsText);

// The three default paths of frmSetDefaultDirectories.
inline constexpr const char* kDefaultPathKeys[3] = {"RunPath", "CarPath", "ExportPath"};

// frmSelectGraphXAxis: the standard choices in the order of their test, so
// that the last enabled one is selected.
struct XAxisChoice {
    const char* control;
    int slot;
};
inline constexpr XAxisChoice kXAxisChoices[4] = {
    {"XAxisTime", 1}, {"XAxisDistFt", 14}, {"XAxisDistMiles", 12}, {"XAxisDistKm", 11}};
// The answer for a choice (control name or "XAxisOther" with its text).
std::string GraphXAxisAnswer(const std::string& control, const std::string& otherText);
// The shared answer of frmSelectGraphXAxis.
std::string& GraphXAxisVar();

}  // namespace tl
