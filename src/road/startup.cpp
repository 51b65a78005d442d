// Main is the composition root of the engine: it runs the whole start in its
// fixed order, from the configuration root to the first clear of the run
// store and the autoload of a run.
#include "road/startup.h"

#include <sys/utsname.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/external_serial.h"
#include "core/log.h"
#include "core/platform.h"
#include "core/system_info.h"
#include "core/ui_services.h"
#include "files/raw_run_files.h"
#include "road/run_road.h"
#include "store/run_procedures.h"

namespace tl {

std::string PrepareInstallation(const StartupOptions& options) {
    const std::string share = ChooseShareDir(options.appDir);
    const std::string root = ChooseConfigRoot(options.appDir, options.configDir);
    FormBasePaths(options.appDir, share, root);
    return SeedConfigRoot(share, root);
}

void GetWindowsFreeMemory(double& physical, double& virtualBytes) {
    const MemoryFigures f = CurrentPlatform().memory->Read();
    physical = f.availablePhysical;
    virtualBytes = f.availableVirtual;
}

void ReadSystemInfoFromWindows() {
    std::string text;
    struct utsname u {};
    if (::uname(&u) != 0) {
        LogDebug("Error Getting Version Information");
    } else {
        text += std::string(u.sysname) + " " + u.release + " (Build " + u.version + ")";
    }
    std::string cpu = "(unknown)";
    std::ifstream cpuinfo("/proc/cpuinfo");
    for (std::string line; std::getline(cpuinfo, line);) {
        if (line.rfind("model name", 0) == 0) {
            if (size_t colon = line.find(':'); colon != std::string::npos) {
                cpu = line.substr(colon + 1);
                if (!cpu.empty() && cpu[0] == ' ') cpu.erase(0, 1);
            }
            break;
        }
    }
    const MemoryFigures m = CurrentPlatform().memory->Read();
    text += "\r\nCPU: " + cpu;
    text += "\r\nTotal Physical Memory: " + FormatKilobytes(m.totalPhysical);
    text += "\r\nAvailable Physical Memory: " + FormatKilobytes(m.availablePhysical);
    text += "\r\nTotal Virtual Memory: " + FormatKilobytes(m.totalVirtual);
    text += "\r\nAvailable Virtual Memory: " + FormatKilobytes(m.availableVirtual);
    LogDebug(text);
}

bool CheckSystemFileAvailability(bool helpWindow) {
    const SystemPaths& p = Paths();
    const std::string* files[] = {&p.TracelabCfgPath, &p.CarCfgPath, &p.GraphDefsCfgPath,
                                  &p.UserVarsCfgPath};
    // A file created here was, in the original, left open for writing to the
    // end of the process, so the writeability tests below found it locked and
    // the start stopped, as the message says. The same outcome is kept by
    // counting a created file as not writeable.
    bool created[4] = {false, false, false, false};
    for (int i = 0; i < 4; ++i) {
        if (!FileExists(*files[i])) {
            PlainMessage("A crutial system file could not be found (" + ExtractFileName(*files[i]) +
                         "), it has now been created but you will have to re-start");
            WriteFileAtomically(*files[i], "");
            created[i] = true;
        }
    }
    auto writeable = [&](int i) { return !created[i] && FileWriteable(*files[i]); };
    const std::string tracelabName = ExtractFileName(p.TracelabCfgPath);
    // A program without windows (tracelab-cli) has no help window to open.
    if (helpWindow && (!FileExists(p.HelpPath) || !FileReadable(p.HelpPath))) {
        PlainMessage("The system help file cannot be accessed (" + tracelabName +
                     "), a reboot or re-installation may be required");
        return false;
    }
    if (!writeable(0)) {
        PlainMessage("A crutial system file cannot be accessed (" + tracelabName +
                     "),  a reboot or re-installation may be required");
        return false;
    }
    if (!writeable(1)) {
        PlainMessage("A crutial system file cannot be accessed (" + tracelabName +
                     "),  a reboot or re-installation may be required");
        return false;
    }
    if (!writeable(2)) {
        PlainMessage("A crutial system file cannot be accessed (" +
                     ExtractFileName(p.GraphDefsCfgPath) +
                     "),  a reboot or re-installation may be required");
        return false;
    }
    if (!writeable(3)) {
        PlainMessage("A crutial system file cannot be accessed (" +
                     ExtractFileName(p.UserVarsCfgPath) +
                     "), a reboot or re-installation may be required");
        return false;
    }
    return true;
}

bool Main(const StartupOptions& options, StartupUi& ui) {
    SystemPaths& paths = Paths();
    // 1. A fresh log with every start, whatever the debug setting.
    if (FileWriteable(paths.LogPath)) DeleteFileIfPresent(paths.LogPath);

    // 2. The help file, BuildOptions.cfg and the animations were formed by
    //    PrepareInstallation from the installation layout.

    // 3. The build profile.
    std::string fileToLoad;
    SetBuildFlags(options.commandLine, fileToLoad);
    LogDebug("**** System Started ****");
    LogDebug("program started from menu, " + options.commandLine);
    LogDebug("");
    const VersionNumber v = ProgramVersion();
    LogDebug("program version: " + std::to_string(v.major) + "." + std::to_string(v.minor) + "." +
             std::to_string(v.revision));
    LogDebug("application root: " + paths.AppDir);
    LogDebug("File to autoload: " + fileToLoad);
    LogDebug("");
    ReadSystemInfoFromWindows();
    LogDebug("");

    // 4. The seven per-family paths.
    FormFamilyPaths();

    // 5. The external conversion library is optional; without one there is
    //    nothing to test and the start goes on with no "S:" variables.
    LogDebug("check the external serial file");
    if (ExternalSerialLibraryPresent() && !TestExternalSerialCode()) return false;

    // 6.
    LogDebug("check the availability of the file system");
    if (!CheckSystemFileAvailability(options.helpWindow)) return false;

    // 7. The start banner.
    LogDebug("show the start banner");
    const bool banner = ui.ShowBanner("BuildCode:" + BuildIdString());
    DoEvents();
    if (banner && !Profile().FastStartFlag) Pause(1.5);
    LogDebug("hide the start banner");
    ui.HideBanner();

    // 8. The empty run store and the variable catalogue.
    ClearCurrentRun(true);
    CheckInternalDataStillValid();

    // 9.
    LogDebug("load the main form");
    ui.ShowMainForm();
    DoEvents();
    LogDebug("main form now loaded");
    if (!ui.MainFormLoaded()) return false;

    // 10. The first start of this family on this configuration. The folder
    //     that stood for the program's own (AppDir) as the place for runs,
    //     exports and car files is the configuration root here.
    LogDebug("Show the first time screen if required");
    if (!FileExists(paths.FirstRunPath)) {
        if (ui.ShowFirstRunForm()) {
            SetConfigString(paths.TracelabCfgPath, "RunPath", paths.ConfigRoot);
            SetConfigString(paths.TracelabCfgPath, "ExportPath", paths.ConfigRoot);
            SetConfigString(paths.TracelabCfgPath, "CarPath", paths.ConfigRoot);
            WriteFileAtomically(paths.FirstRunPath, "Tracelab has been run\r\n");
        }
    }

    // 11.
    if (Profile().DebugFlag)
        Message(
            "Debugging to file has been enabled, this will generate a .log file in the Tracelab "
            "program directory of program activity, it will also cause the program to run more "
            "slowly - please be patient!");

    // 12.
    if (!fileToLoad.empty()) {
        LogDebug("System initialised... now autoload the file");
        LoadDataFromFile(fileToLoad);
        LogDebug("System initialised... hand over to the GUI");
    }

    // 13.
    ApplyProfileToOptions();
    LogDebug("End Of main module.");
    return true;
}

}  // namespace tl
