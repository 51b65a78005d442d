// Keeping the stored options in line with what the build profile can do.
#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/platform.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"

namespace tl {
namespace {

void SetTl(const char* key, float value) {
    SetConfig(Paths().TracelabCfgPath, key, value);
}
float GetTl(const char* key) {
    return GetConfig(Paths().TracelabCfgPath, key);
}
void DistanceModeAtLeastOne() {
    if (GetTl("DistanceMode") == 0.0f) SetTl("DistanceMode", 1);
}

}  // namespace

void DisableWheelSpeedOptions() {
    auto& v = Catalogue().RunVars;
    // Enabled is left alone: slot 10 stays computed where SetAlwaysOnVars
    // enabled it, but nobody can choose wheel speed.
    v[slot::WheelSpeedKph].Available = false;
    v[slot::WheelSpeedMph].Available = false;
    // mnuRefOptions hidden and the option buttons greyed, on the forms loaded.
    CurrentPlatform().shell->WheelSpeedOptionsDisabled();
    SetTl("PowerSpeedSource", 1);
    DistanceModeAtLeastOne();
    SetTl("MappingMode", 0);
    SetTl("AllDataOntoTrack", 0);
}

void ApplyProfileToOptions() {
    const BuildProfile& p = Profile();
    const std::string& car = Paths().CarCfgPath;
    if (p.HardwareMQ7) SetConfig(car, "UseWheelForRpm", 0);
    if (p.HardwareSW63) {
        SetTl("PowerSpeedSource", 1);
        DistanceModeAtLeastOne();
        if (GetTl("MappingMode") == 2.0f) SetTl("MappingMode", 0);
        SetTl("AllDataOntoTrack", 0);
        SetConfig(car, "UseWheelForRpm", 0);
    }
    if (p.HardwareSV63) {
        SetTl("PowerSpeedSource", 1);
        DistanceModeAtLeastOne();
        SetTl("MappingMode", 0);
        SetTl("TrustAccels", 0);
        SetTl("UseRawGPSData", 0);
        SetTl("AllDataOntoTrack", 0);
    }
    if (p.VehicleKart) {
        SetTl("DistanceMode", 0);
        SetTl("MappingMode", 2);
        SetTl("TrustAccels", 0);
        SetTl("UseRawGPSData", 0);
        SetConfig(car, "UseWheelForRpm", 0);
    }
    if (p.VehicleBike) {
        SetTl("MappingMode", 0);
        SetTl("TrustAccels", 0);
        SetTl("UseRawGPSData", 1);
        SetTl("AllDataOntoTrack", 0);
    }
    if (p.VehicleBoat) {
        DistanceModeAtLeastOne();
        SetTl("MappingMode", 0);
        SetTl("TrustAccels", 0);
        SetTl("UseRawGPSData", 1);
        SetTl("AllDataOntoTrack", 0);
    }
    DisableWheelSpeedOptions();
}

}  // namespace tl
