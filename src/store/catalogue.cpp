// The variable catalogue: which slots exist, which are available in this
// build, which the user selected, and where each one's column lies.
#include "store/catalogue.h"

#include <algorithm>
#include <initializer_list>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/external_serial.h"
#include "core/log.h"
#include "core/platform.h"
#include "core/ui_services.h"
#include "store/field_records.h"
#include "store/run_procedures.h"

namespace tl {

VariableCatalogue& Catalogue() {
    static VariableCatalogue catalogue;
    return catalogue;
}

namespace {

std::string BoolText(bool b) {
    return b ? "True" : "False";
}

void MakeAvailable(std::initializer_list<int> slots) {
    auto& vars = Catalogue().RunVars;
    for (int s : slots) vars[s].Available = true;
}

void MakeAvailableRange(int first, int last) {
    auto& vars = Catalogue().RunVars;
    for (int s = first; s <= last; ++s) vars[s].Available = true;
}

void MakeUnavailable(std::initializer_list<int> slots) {
    auto& vars = Catalogue().RunVars;
    for (int s : slots) vars[s].Available = false;
}

}  // namespace

std::string PlainVarName(int slotNumber) {
    switch (slotNumber) {
        case slot::SpeedMph:
            return "Speed [mph]";
        case slot::SpeedKph:
            return "Speed [kph]";
        default:
            return (slotNumber >= 0 && slotNumber <= kNoDataSlot)
                       ? Catalogue().RunVars[slotNumber].Name
                       : std::string{};
    }
}

void InitVarNames() {
    auto& v = Catalogue().RunVars;
    static const char* const kNames[] = {
        nullptr,
        "Time [s]",                   // 1
        "Accel Longitudinal [g]",     // 2
        "Accel/Brake Flag [-]",       // 3
        "Accel Lateral [g]",          // 4
        "Accel Total [g]",            // 5
        "Engine Speed [rpm]",         // 6
        "Speed [mph]",                // 7
        "Speed [kph]",                // 8
        "Wheel Speed [mph]",          // 9
        "Wheel Speed [kph]",          // 10
        "Distance [km]",              // 11
        "Distance [miles]",           // 12
        "Distance [m]",               // 13
        "Distance [ft]",              // 14
        "Power [hp]",                 // 15
        "Power [kW]",                 // 16
        "Torque [lbf ft]",            // 17
        "Torque [N m]",               // 18
        "Gear [-]",                   // 19
        nullptr,                      // 20
        "Position X [m]",             // 21
        "Position Y [m]",             // 22
        "Time Slip [s]",              // 23
        "Rate of Time Slip [%]",      // 24
        "Analogue Ch 1 [V]",          // 25
        nullptr,                      // 26
        "Analogue Ch 2 [V]",          // 27
        nullptr,                      // 28
        "Analogue 1 [V]",             // 29
        "Analogue 2 [V]",             // 30
        "Analogue 3 [V]",             // 31
        "Analogue 4 [V]",             // 32
        "Analogue 5 [V]",             // 33
        "Analogue 6 [V]",             // 34
        "Analogue 7 [V]",             // 35
        "Power Supply [V]",           // 36
        "Digital Ch 1 [-]",           // 37
        "Frequency 1 [Hz]",           // 38
        "Frequency 2 [Hz]",           // 39
        "Frequency 3 [Hz]",           // 40
        "Frequency 4 [Hz]",           // 41
        "Track Side Beacon [-]",      // 42
        "GPS Speed Acc [m/s]",        // 43
        "GPS Pos Acc [m]",            // 44
        "Sat Count [-]",              // 45
        "GPS time of week [ms]",      // 46
        "Vehicle Heading [Deg]",      // 47
        "Change in Heading [Deg/s]",  // 48
        "Inst. Corner Radius [m]",    // 49
        "Cycle Lean Angle [Deg]",     // 50
        "Serial Bytes Rx [-]",        // 51
    };
    constexpr int kNamed = static_cast<int>(sizeof kNames / sizeof kNames[0]);
    for (int s = 1; s < kNamed; ++s)
        if (kNames[s]) v[s].Name = kNames[s];
    v[kNoDataSlot].Name = "*No Data*";
}

bool EnableBuildVariables() {
    const BuildProfile& p = Profile();
    const int flags =
        int(p.HardwareHX40) + int(p.HardwareMQ7) + int(p.HardwareSV63) + int(p.HardwareSW63);
    if (flags != 1) {
        Message("The hardware has been incorrectly specified, cannot continue");
        CurrentPlatform().shell->UnloadMainForm();
        return false;
    }
    // On every family.
    MakeAvailable({1, 2, 4, 8, 11});
    // HX40, MQ7, SW63 and SV63.
    MakeAvailable({3, 5, 7, 12, 13, 14, 15, 16, 21, 22, 47, 48, 49});
    if (p.HardwareHX40 || p.HardwareMQ7 || p.HardwareSW63)
        MakeAvailable({6, 17, 18, 19, 23, 24, 42, 50});
    if (p.HardwareHX40 || p.HardwareMQ7) MakeAvailable({9, 10});
    if (p.HardwareHX40) MakeAvailable({25, 27, 37, 45});
    if (p.HardwareMQ7) {
        MakeAvailableRange(29, 36);
        MakeAvailableRange(38, 41);
        MakeAvailable({46});
    }
    if (p.HardwareMQ7 || p.HardwareSW63) MakeAvailable({43, 44, 51});

    if (p.VehicleCar) MakeUnavailable({50});
    if (p.VehicleKart) MakeUnavailable({7, 8, 15, 16, 17, 18, 19, 43, 44, 45, 50});
    if (p.VehicleBike) MakeUnavailable({15, 16, 17, 18});
    if (p.VehicleBoat) MakeUnavailable({9, 10, 15, 16, 17, 18, 19, 42, 50});
    return true;
}

void SetAlwaysOnVars() {
    auto& v = Catalogue().RunVars;
    for (int s : {1, 2, 4, 8, 11}) {
        v[s].Enabled = true;
        v[s].Available = true;
    }
    for (int s : {10, 42})
        if (v[s].Available) v[s].Enabled = true;
}

void CheckVariableDependancies() {
    auto& v = Catalogue().RunVars;
    if (v[19].Enabled) v[6].Enabled = true;
    if (v[17].Enabled) v[6].Enabled = true;
    if (v[18].Enabled) v[6].Enabled = true;
    if (v[21].Enabled) v[22].Enabled = true;
    if (v[22].Enabled) v[21].Enabled = true;
}

void SetAvailableVars() {
    Procedure("SetAvailableVars", [&] {
        VariableCatalogue& cat = Catalogue();
        auto& v = cat.RunVars;
        const BuildProfile& p = Profile();
        LogDebug("--------Set up the available variables--------");
        LogDebug("clear the runvars array");
        for (RunVar& r : v) {
            r.Column = p.FastStartFlag ? -1 : 0;
            r.Enabled = false;
            r.Available = false;
            r.Name.clear();
        }

        LogDebug("Set the system variable names");
        InitVarNames();

        LogDebug("Set the build options");
        EnableBuildVariables();

        if (p.HardwareMQ7 || p.HardwareSW63) {
            LogDebug("Set up the users serial variables");
            const int count = ExternalSerialVariableCount();
            LogDebug("External serial variables= " + std::to_string(count));
            // The library's channels follow "Serial Bytes Rx [-]" in slot 51:
            // the first takes slot 52, and the 48 a library may report fill
            // slots 52 to 99 exactly, which is why 49 is refused. (Read as
            // "slot 51 + i from i = 0", the first name would overwrite the
            // serial byte count, which the stream conversion still writes.)
            for (int i = 0; i <= std::min(count - 1, 47); ++i) {
                RunVar& r = v[kFirstSerialSlot + 1 + i];
                r.Name = "S:" + ExternalSerialVariableName(i);
                r.Available = true;
                LogDebug("external dll reported new name of: " + r.Name);
            }
        }

        LogDebug("set up the user defined variables");
        // The user channel file holds triples of name, formula and flag. Only
        // records with a name take a slot here; more than 100 are cut off at
        // slot 199 without a word.
        if (FileReadable(Paths().UserVarsCfgPath)) {
            int s = kFirstUserSlot;
            for (const auto& rec : ReadFieldRecords(Paths().UserVarsCfgPath, 3)) {
                if (rec[0].empty()) continue;
                if (s >= 200) break;
                v[s].Name = "U:" + rec[0];
                v[s].Available = true;
                ++s;
            }
        }

        LogDebug("Set the availability of standard variables");
        const std::string& cfg = Paths().TracelabCfgPath;
        for (int s = 1; s <= kNoDataSlot; ++s) {
            RunVar& r = v[s];
            // A slot without a name is never available, so its key is not read.
            const float value = r.Name.empty() ? 0.0f : GetConfig(cfg, r.Name);
            if (value == -1.0f && r.Available) {
                r.Enabled = true;
                LogDebug(r.Name + " has been made available");
            } else {
                r.Enabled = false;
                if (!r.Name.empty()) LogDebug(r.Name + " is not available");
            }
        }

        // Slot 10 is still available here on HX40 and MQ7 (the wheel-speed
        // removal comes in the next step), so these builds show GPS speed
        // names; the selection key stays the plain name (PlainVarName).
        if (v[slot::WheelSpeedKph].Available) {
            v[slot::SpeedMph].Name = "GPS Speed [mph]";
            v[slot::SpeedKph].Name = "GPS Speed [kph]";
        }

        SetAlwaysOnVars();
        v[kNoDataSlot].Available = false;
        v[kNoDataSlot].Enabled = false;
        DisableWheelSpeedOptions();
        CheckVariableDependancies();

        LogDebug("Count up the variables enabled");
        int enabled = 0;
        for (int s = 1; s <= kNoDataSlot; ++s)
            if (v[s].Enabled) ++enabled;
        cat.NumVars = enabled + 1;
        LogDebug("******NumVars= " + std::to_string(cat.NumVars));
        v[kNoDataSlot].Column = cat.NumVars - 1;
        int32_t next = 0;
        for (int s = 1; s <= kNoDataSlot; ++s)
            v[s].Column = v[s].Enabled ? next++ : v[kNoDataSlot].Column;

        for (int s = 1; s <= kNoDataSlot; ++s)
            if (!v[s].Name.empty())
                LogDebug(v[s].Name + " index= " + std::to_string(v[s].Column) + " : " +
                         BoolText(v[s].Enabled) + " : " + BoolText(v[s].Available));
    });
}

}  // namespace tl
