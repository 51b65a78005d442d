#include "core/build_profile.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "core/config_store.h"
#include "core/ui_services.h"

namespace fs = std::filesystem;

namespace tl {

BuildProfile& Profile() {
    static BuildProfile profile;
    return profile;
}

SystemPaths& Paths() {
    static SystemPaths paths;
    return paths;
}

Family BuildProfile::family() const {
    int count = HardwareHX40 + HardwareMQ7 + HardwareSV63 + HardwareSW63;
    if (count != 1) return Family::None;
    if (HardwareHX40) return Family::HX40;
    if (HardwareMQ7) return Family::MQ7;
    if (HardwareSV63) return Family::SV63;
    return Family::SW63;
}

Vehicle BuildProfile::vehicle() const {
    if (VehicleCar) return Vehicle::Car;
    if (VehicleBike) return Vehicle::Bike;
    if (VehicleBoat) return Vehicle::Boat;
    if (VehicleKart) return Vehicle::Kart;
    return Vehicle::Car;
}

void BuildProfile::SetFamily(Family f) {
    HardwareHX40 = f == Family::HX40;
    HardwareMQ7 = f == Family::MQ7;
    HardwareSV63 = f == Family::SV63;
    HardwareSW63 = f == Family::SW63;
}

void BuildProfile::SetVehicle(Vehicle v) {
    VehicleCar = v == Vehicle::Car;
    VehicleKart = v == Vehicle::Kart;
    VehicleBike = v == Vehicle::Bike;
    VehicleBoat = v == Vehicle::Boat;
}

const char* FamilyWord(Family f) {
    switch (f) {
        case Family::HX40:
            return "HX40";
        case Family::MQ7:
            return "MQ7";
        case Family::SV63:
            return "SV63";
        case Family::SW63:
            return "SW63";
        case Family::None:
            break;
    }
    return "";
}

const char* FamilyPrefix(Family f) {
    return FamilyWord(f);
}

VersionNumber ProgramVersion() {
    return {TRACELAB_VERSION_MAJOR, TRACELAB_VERSION_MINOR, TRACELAB_VERSION_PATCH};
}

namespace {

std::string Lower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return s;
}

// The platform's plain number input: fields separated by commas or line
// ends; a field that is not a number reads as 0; a missing field leaves the
// value as it was.
void ReadBuildOptions(const std::string& path, int values[4]) {
    for (int i = 0; i < 4; ++i) values[i] = -1;
    if (!FileReadable(path)) return;
    std::ifstream in(path, std::ios::binary);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::vector<std::string> fields;
    std::string field;
    bool any = false;
    for (char c : text) {
        if (c == ',' || c == '\n' || c == '\r') {
            if (c == ',' || any) fields.push_back(field);
            field.clear();
            any = false;
            if (c == '\r' || c == '\n') continue;
        } else {
            field.push_back(c);
            if (!std::isspace(static_cast<unsigned char>(c))) any = true;
        }
    }
    if (any) fields.push_back(field);
    for (size_t i = 0; i < fields.size() && i < 4; ++i) {
        const char* s = fields[i].c_str();
        char* end = nullptr;
        long v = std::strtol(s, &end, 10);
        values[i] = end == s ? 0 : static_cast<int>(std::clamp(v, -32768L, 32767L));
    }
}

}  // namespace

bool SetBuildFlags(const std::string& commandLine, std::string& fileToLoad) {
    BuildProfile& p = Profile();
    p = BuildProfile{};

    int options[4];
    ReadBuildOptions(Paths().BuildOptionsPath, options);
    switch (options[0]) {
        case 0:
            p.HardwareHX40 = true;
            break;
        case 2:
            p.HardwareSV63 = true;
            break;
        case 3:
            p.HardwareSW63 = true;
            break;
        default:
            p.HardwareMQ7 = true;
            break;
    }
    switch (options[1]) {
        case 1:
            p.VehicleBike = true;
            break;
        case 2:
            p.VehicleBoat = true;
            break;
        case 3:
            p.VehicleKart = true;
            break;
        default:
            p.VehicleCar = true;
            break;
    }
    p.DebugFlag = options[2] == 1;
    // The export stamp value is read and has no effect.

    const std::string lower = Lower(commandLine);
    auto has = [&](const char* token) { return lower.find(token) != std::string::npos; };

    // Hardware: the first token in the order of test decides.
    const std::pair<const char*, Family> hardware[] = {{"<hx40>", Family::HX40},
                                                       {"<mq7>", Family::MQ7},
                                                       {"<sv63>", Family::SV63},
                                                       {"<sw63>", Family::SW63}};
    for (const auto& [token, family] : hardware) {
        if (has(token)) {
            p.SetFamily(family);
            break;
        }
    }
    const std::pair<const char*, Vehicle> vehicles[] = {{"<car>", Vehicle::Car},
                                                        {"<bike>", Vehicle::Bike},
                                                        {"<boat>", Vehicle::Boat},
                                                        {"<kart>", Vehicle::Kart}};
    for (const auto& [token, vehicle] : vehicles) {
        if (has(token)) {
            p.SetVehicle(vehicle);
            break;
        }
    }
    if (has("<debug>")) p.DebugFlag = true;
    if (has("<interp>")) {
        p.InterpFlag = true;
        p.FastStartFlag = true;
    }

    fileToLoad.clear();
    const size_t at = lower.find("<f:");
    if (at != std::string::npos) {
        const size_t begin = at + 3;
        const size_t close = commandLine.find('>', begin);
        // Without a closing ">" the cut has no length: the name is empty and
        // fails the readability test below, as it always did.
        if (close != std::string::npos) fileToLoad = commandLine.substr(begin, close - begin);
        if (!FileReadable(fileToLoad)) {
            fileToLoad.clear();
            Message("File specified at the command line cannot be found");
        }
    }
    return true;
}

std::string BuildIdString() {
    const BuildProfile& p = Profile();
    std::string vehicle;
    if (p.VehicleCar)
        vehicle = "Car";
    else if (p.VehicleKart)
        vehicle = "Kart";
    else if (p.VehicleBike)
        vehicle = "Bike";
    else if (p.VehicleBoat)
        vehicle = "Boat";
    std::string family;
    if (p.HardwareHX40)
        family = "/HX40";
    else if (p.HardwareSV63)
        family = "/SV63";
    else if (p.HardwareMQ7)
        family = "/MQ7";
    else if (p.HardwareSW63)
        family = "/SW63";
    const VersionNumber v = ProgramVersion();
    std::string id = std::to_string(v.major) + "." + std::to_string(v.minor) + "." +
                     std::to_string(v.revision) + "/" + vehicle + family;
    if (p.DebugFlag) id += " <Debug Enabled> ";
    if (p.TimeStampExport) id += " TStamp Enabled";
    return id;
}

void FormBasePaths(const std::string& appDir, const std::string& shareDir,
                   const std::string& configRoot) {
    SystemPaths& paths = Paths();
    paths.AppDir = appDir;
    paths.ShareDir = shareDir;
    paths.ConfigRoot = configRoot;
    paths.LogPath = (fs::path(configRoot) / "Tracelab.log").string();
    paths.HelpPath = (fs::path(shareDir) / "help" / "VelquorHelp.html").string();
    paths.HelpIndexPath = (fs::path(shareDir) / "help" / "VelquorHelp-index.html").string();
    paths.BuildOptionsPath = (fs::path(configRoot) / "BuildOptions.cfg").string();
    const fs::path animations = fs::path(shareDir) / "animations";
    paths.FileCopyAviPath = (animations / "FileCopy.avi").string();
    paths.FileDelrAviPath = (animations / "FileDelr.avi").string();
    paths.ProcessAviPath = (animations / "Process.avi").string();
}

void FormFamilyPaths() {
    const BuildProfile& p = Profile();
    Family family = Family::None;
    if (p.HardwareHX40)
        family = Family::HX40;
    else if (p.HardwareMQ7)
        family = Family::MQ7;
    else if (p.HardwareSW63)
        family = Family::SW63;
    else if (p.HardwareSV63)
        family = Family::SV63;
    SystemPaths& paths = Paths();
    if (family == Family::None) return;
    const fs::path dir = fs::path(paths.ConfigRoot) / "Configuration";
    const std::string prefix = FamilyPrefix(family);
    auto in = [&](const char* name) { return (dir / (prefix + name)).string(); };
    paths.CarCfgPath = in("_Car.cfg");
    paths.GraphDefsCfgPath = in("_GraphDefs.cfg");
    paths.UserVarsCfgPath = in("_UserVars.cfg");
    paths.TracelabCfgPath = in("_Tracelab.cfg");
    paths.FirstRunPath = in("_FirstRun.txt");
    paths.SummaryPerformanceCfgPath = in("_SummaryPerformance.cfg");
    paths.TempDatPath = in("_temp.dat");
}

std::string ChooseShareDir(const std::string& appDir) {
    return (fs::path(appDir).parent_path() / "share" / "tracelab").lexically_normal().string();
}

std::string ChooseConfigRoot(const std::string& appDir, const std::string& overrideRoot) {
    if (!overrideRoot.empty()) return fs::absolute(overrideRoot).lexically_normal().string();
    const fs::path buildDir = fs::path(appDir).parent_path();
    std::error_code ec;
    if (fs::exists(buildDir / "CMakeCache.txt", ec)) return (buildDir / "config").string();
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg)
        return (fs::path(xdg) / "tracelab").string();
    const char* home = std::getenv("HOME");
    return (fs::path(home && *home ? home : ".") / ".config" / "tracelab").string();
}

std::string SeedConfigRoot(const std::string& shareDir, const std::string& configRoot) {
    std::error_code ec;
    fs::create_directories(fs::path(configRoot) / "Configuration", ec);
    if (ec) return "The configuration folder " + configRoot + " cannot be created: " + ec.message();
    const fs::path defaults = fs::path(shareDir) / "defaults";
    if (!fs::is_directory(defaults, ec)) return {};
    for (auto it = fs::recursive_directory_iterator(defaults, ec);
         !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
        const fs::path rel = fs::relative(it->path(), defaults, ec);
        if (ec) break;
        const fs::path target = fs::path(configRoot) / rel;
        if (it->is_directory(ec)) {
            fs::create_directories(target, ec);
        } else if (!fs::exists(target, ec)) {
            fs::copy_file(it->path(), target, ec);
            if (ec)
                return "The configuration file " + target.string() +
                       " cannot be created: " + ec.message();
        }
        if (ec) break;
    }
    if (ec)
        return "The configuration folder " + configRoot + " cannot be prepared: " + ec.message();
    return {};
}

}  // namespace tl
