#include "sim/encoders.h"

namespace tl::sim {

bool FamilyFromName(const std::string& name, Family& family) {
    if (name == "hx40")
        family = Family::HX40;
    else if (name == "mq7")
        family = Family::MQ7;
    else if (name == "sw63")
        family = Family::SW63;
    else if (name == "sv63")
        family = Family::SV63;
    else
        return false;
    return true;
}

const char* FamilyName(Family family) {
    switch (family) {
        case Family::HX40:
            return "HX40";
        case Family::MQ7:
            return "MQ7";
        case Family::SW63:
            return "SW63";
        case Family::SV63:
            return "SV63";
    }
    return "";
}

int FileType(Family family) {
    switch (family) {
        case Family::HX40:
            return 1;
        case Family::MQ7:
            return 200;
        case Family::SW63:
            return 201;
        case Family::SV63:
            return 202;
    }
    return 0;
}

bool IsPlaneFamily(Family family) {
    return family == Family::HX40 || family == Family::SV63;
}

RawRun Encode(Family family, const Trajectory& traj, const Circuit& circuit,
              const VehicleParams& vehicle, const EncodeOptions& options) {
    switch (family) {
        case Family::HX40:
            return EncodeHX40(traj, circuit, vehicle, options);
        case Family::SV63:
            return EncodeSV63(traj, circuit, options);
        default:
            return EncodeStream(family, traj, circuit, vehicle, options);
    }
}

}  // namespace tl::sim
