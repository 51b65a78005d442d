#include "road/options_model.h"

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "derived/reference_lap.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl {

std::vector<std::string> CarOptionNumberKeys() {
    std::vector<std::string> keys;
    for (int gear = 1; gear <= 7; ++gear) keys.push_back("GearRatioVal" + std::to_string(gear));
    for (const char* key : {"FinalDriveRat", "WheelPulsesRev", "DrivenRollingCircVal"})
        keys.emplace_back(key);
    // WheelSpeedFormula stands here in the saving order, as text.
    for (const char* key : {"IgntionPulsesRev", "CdaVal", "RollingVal", "CarMass"})
        keys.emplace_back(key);
    // AutoZeroAccelerometers (check box) stands here.
    keys.emplace_back("LongAccelOffset");
    keys.emplace_back("LatAccelOffset");
    return keys;
}

std::string OptionNumberText(float value) {
    return ConfigNumberText(value);
}

int HPCorrectionShown(float stored) {
    if (stored == 1.0f) return 1;
    if (stored == 2.0f) return 2;
    if (stored == 3.0f) return 3;
    return 4;
}

int MappingModeShown(float stored) {
    if (stored == 1.0f) return 1;
    if (stored == 2.0f) return 2;
    return 0;
}

namespace {
const char* const kFilterPrefixes[4] = {"TimeFilt_", "RateFilt_", "MinPos_", "MaxPos_"};
}

std::vector<FilterRow> LoadFilterRows() {
    std::vector<FilterRow> rows;
    const std::string& file = Paths().TracelabCfgPath;
    const VariableCatalogue& c = Catalogue();
    for (int n = 1; n < kNoDataSlot; ++n) {
        const RunVar& v = c.RunVars[n];
        if (!v.Enabled || v.Name.empty()) continue;
        FilterRow row;
        row.name = v.Name;
        std::string* cells[4] = {&row.timeFilt, &row.rateFilt, &row.minPos, &row.maxPos};
        for (int k = 0; k < 4; ++k)
            *cells[k] = OptionNumberText(GetConfig(file, kFilterPrefixes[k] + v.Name));
        rows.push_back(std::move(row));
    }
    return rows;
}

void SaveFilterRows(const std::vector<FilterRow>& rows) {
    const std::string& file = Paths().TracelabCfgPath;
    for (const FilterRow& row : rows) {
        const int n = FindVar(row.name);
        if (n < 1 || n >= kNoDataSlot) continue;
        const std::string& name = Catalogue().RunVars[n].Name;
        const std::string* cells[4] = {&row.timeFilt, &row.rateFilt, &row.minPos, &row.maxPos};
        for (int k = 0; k < 4; ++k)
            SetConfig(file, kFilterPrefixes[k] + name, static_cast<float>(GetVal(*cells[k])));
    }
}

bool RefLapOptionsOkay(int32_t chosenRun, const std::string& beaconsText) {
    ReferenceLap& ref = RefLap();
    const auto beacons = static_cast<int32_t>(GetVal(beaconsText));
    if (chosenRun == ref.RefRun && beacons == ref.NumOfBeacons) return true;
    bool yes = false;
    const int32_t runs = Store().RunCount;
    if (runs > 0) {
        yes = YesNoBox("Reprocess Data",
                       "This will require that all the runs are\r\nreprocessed. Do you wish to "
                       "continue?");
        if (!yes) return false;
    }
    ref.RefRun = chosenRun;
    ref.NumOfBeacons = beacons;
    SetConfig(Paths().TracelabCfgPath, "NumOfBeacons", static_cast<float>(beacons));
    if (yes) ReprocessAllRuns();
    return true;
}

std::string GraphXAxisAnswer(const std::string& control, const std::string& otherText) {
    const auto& vars = Catalogue().RunVars;
    if (control == "XAxisDistKm") return vars[11].Name;
    if (control == "XAxisDistMiles") return vars[12].Name;
    if (control == "XAxisDistFt") return vars[14].Name;
    if (control == "XAxisOther" && otherText != "Select Variable" && !otherText.empty())
        return otherText;
    return vars[slot::Time].Name;
}

std::string& GraphXAxisVar() {
    static std::string answer;
    return answer;
}

}  // namespace tl
