// The build profile: which hardware family and vehicle kind this start serves,
// the debug flags, and every path the program derives from its installation.
//
// Installation layout on this platform (the original kept everything beside
// the executable; the translation is recorded here and in the README):
//   AppDir       the directory of the executable.
//   ShareDir     AppDir/../share/tracelab: the shipped, read-only data (default
//                configuration files, the help pages, animations). The build
//                tree has the same layout: <build>/bin and <build>/share/tracelab.
//   ConfigRoot   the working configuration root, which stands for the
//                original's AppDir and AppDir\..\..\: it holds BuildOptions.cfg,
//                Configuration/ with the seven per-family files, and the log
//                Tracelab.log. Chosen by --config-dir DIR; else, run from a
//                build tree, <build>/config; else $XDG_CONFIG_HOME/tracelab
//                (~/.config/tracelab). Files absent from it are created from
//                ShareDir/defaults on start (SeedConfigRoot), so a first start
//                succeeds for a new user and a test never touches the user's own.
//   HelpPath     ShareDir/help/VelquorHelp.html (the contents page); the index
//                page is VelquorHelp-index.html beside it.
// The animations (FileCopy.avi, FileDelr.avi, Process.avi) are looked for in
// ShareDir/animations; none are shipped, and every user of them checks that
// the file exists first.
#pragma once

#include <cstdint>
#include <string>

namespace tl {

enum class Family { None, HX40, MQ7, SV63, SW63 };
enum class Vehicle { Car, Kart, Bike, Boat };

struct BuildProfile {
    bool FastStartFlag = false;
    bool DebugFlag = false;
    bool InterpFlag = false;
    bool VehicleCar = false;
    bool VehicleKart = false;
    bool VehicleBike = false;
    bool VehicleBoat = false;
    bool HardwareSV63 = false;
    bool HardwareHX40 = false;
    bool HardwareMQ7 = false;
    bool HardwareSW63 = false;
    bool TimeStampExport = false;

    // The family when exactly one hardware flag is set, else Family::None.
    Family family() const;
    // The vehicle whose flag is set (tested Car, Bike, Boat, Kart).
    Vehicle vehicle() const;
    // Sets exactly one hardware flag / one vehicle flag.
    void SetFamily(Family f);
    void SetVehicle(Vehicle v);
    // Plane families keep RawData in eight vectors; stream families in one.
    bool PlaneFamily() const { return HardwareHX40 || HardwareSV63; }
    bool StreamFamily() const { return HardwareMQ7 || HardwareSW63; }
};

struct SystemPaths {
    std::string AppDir;
    std::string ShareDir;
    std::string ConfigRoot;
    std::string LogPath;
    std::string HelpPath;
    std::string HelpIndexPath;
    std::string BuildOptionsPath;
    std::string FileCopyAviPath;
    std::string FileDelrAviPath;
    std::string ProcessAviPath;
    // The seven per-family files in ConfigRoot/Configuration.
    std::string CarCfgPath;
    std::string GraphDefsCfgPath;
    std::string UserVarsCfgPath;
    std::string TracelabCfgPath;
    std::string FirstRunPath;
    std::string SummaryPerformanceCfgPath;
    std::string TempDatPath;
};

BuildProfile& Profile();
SystemPaths& Paths();

// Family words as the messages use them: "HX40", "MQ7", "SV63", "SW63".
const char* FamilyWord(Family f);
// The file-name prefix of the per-family files ("HX40", ...).
const char* FamilyPrefix(Family f);

// Clears the flags as a block, reads BuildOptions.cfg (Paths().BuildOptionsPath),
// applies the command-line tokens, and returns the autoload path in fileToLoad.
// Always returns true.
bool SetBuildFlags(const std::string& commandLine, std::string& fileToLoad);

// major "." minor "." revision "/" vehicle "/" family, plus the debug and
// time-stamp marks.
std::string BuildIdString();

// The application's own three-part version.
struct VersionNumber {
    int major, minor, revision;
};
VersionNumber ProgramVersion();

// Sets AppDir/ShareDir/ConfigRoot and the fixed paths (log, help, build
// options, animations). Does not touch the disk.
void FormBasePaths(const std::string& appDir, const std::string& shareDir,
                   const std::string& configRoot);
// Forms the seven per-family paths for the profile's family, tested in the
// order HX40, MQ7, SW63, SV63.
void FormFamilyPaths();

// Chooses the configuration root for an executable in appDir: the override
// when not empty; the build tree's <build>/config; else the user's
// $XDG_CONFIG_HOME/tracelab.
std::string ChooseConfigRoot(const std::string& appDir, const std::string& overrideRoot);
// ShareDir for an executable in appDir.
std::string ChooseShareDir(const std::string& appDir);
// Creates configRoot and configRoot/Configuration, and copies from
// shareDir/defaults every shipped file that is absent. Returns an error text,
// empty on success.
std::string SeedConfigRoot(const std::string& shareDir, const std::string& configRoot);

}  // namespace tl
