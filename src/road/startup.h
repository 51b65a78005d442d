// Start-up: Main in its exact order, and the installation set-up before it.
#pragma once

#include <string>

namespace tl {

// The windows Main shows. The program implements them with Qt; tracelab-cli
// and the tests with HeadlessStartupUi, which has no banner, no main form and
// no first-run form.
class StartupUi {
  public:
    virtual ~StartupUi() = default;
    // frmStartBanner with "BuildCode:" + BuildIdString in VersionLabel.
    // Returns false when there is no banner to hold on screen.
    virtual bool ShowBanner(const std::string& versionLabel) = 0;
    virtual void HideBanner() = 0;
    virtual void ShowMainForm() = 0;
    // frmFirstRun, modal over frmMain. Returns false when no form was shown
    // (nobody to greet), in which case the first-run marker is not written.
    virtual bool ShowFirstRunForm() = 0;
    // True when frmMain is still loaded (EnableBuildVariables may unload it).
    virtual bool MainFormLoaded() const = 0;
};

class HeadlessStartupUi : public StartupUi {
  public:
    bool ShowBanner(const std::string&) override { return false; }
    void HideBanner() override {}
    void ShowMainForm() override {}
    bool ShowFirstRunForm() override { return false; }
    bool MainFormLoaded() const override { return true; }
};

struct StartupOptions {
    // Directory of the executable.
    std::string appDir;
    // --config-dir DIR, empty for the default root.
    std::string configDir;
    // The whole command line as one string (tokens <hx40> ... <f:path>).
    std::string commandLine;
    // False for a program without windows: the start then does not ask for
    // the help files, which only the help window opens.
    bool helpWindow = true;
};

// Sets up the paths for the executable and seeds the configuration root with
// the shipped defaults (see build_profile.h). Returns an error text, empty on
// success.
std::string PrepareInstallation(const StartupOptions& options);

// Main: the linear start of the program. Returns true when start-up is over
// with the main form loaded; false when it stopped (external serial check,
// system files, or the build's family), in which case no window stays open.
bool Main(const StartupOptions& options, StartupUi& ui);

// Logs the platform, processor and memory figures (ReadSystemInfoFromWindows
// of the original, from uname, /proc/cpuinfo and /proc/meminfo here).
void ReadSystemInfoFromWindows();
// Free physical and free virtual bytes (MemAvailable, and MemAvailable plus
// SwapFree, from /proc/meminfo).
void GetWindowsFreeMemory(double& physical, double& virtualBytes);
// The four configuration files must exist and be writeable; with helpWindow
// the help file must be readable too.
bool CheckSystemFileAvailability(bool helpWindow = true);

}  // namespace tl
