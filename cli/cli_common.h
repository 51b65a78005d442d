// What every tracelab-cli subcommand shares: a small argument parser for the
// options common to all (--config-dir, --family, --vehicle) and any of the
// subcommand's own, and the start of the engine as the program starts it,
// with a scripted platform that answers every question with No or cancel and
// writes the program's messages to stderr.
#pragma once

#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "core/scripted_platform.h"

class QGuiApplication;

namespace tl {
class DrawSurface;
}

namespace tl::cli {

// Exit codes of every subcommand.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;  // a refused file, a failed start
inline constexpr int kExitUsage = 2;

struct ParsedArgs {
    // Options given, by name without the dashes ("config-dir" -> DIR); the
    // last value of an option given more than once.
    std::map<std::string, std::string> values;
    // Every value of each option, in the order given (--y A --y B).
    std::map<std::string, std::vector<std::string>> all;
    std::set<std::string> flags;
    std::vector<std::string> positional;
    bool help = false;
    std::string error;  // a usage error, empty when none

    std::string Value(const std::string& name) const {
        auto it = values.find(name);
        return it == values.end() ? std::string() : it->second;
    }
};

// Options a subcommand accepts besides the common ones.
struct OptionSpec {
    std::set<std::string> valueOptions;  // take one argument: --name VALUE or --name=VALUE
    std::set<std::string> flagOptions;   // take none
};

// Parses the arguments behind the subcommand's name. The common options
// config-dir, family (hx40|mq7|sv63|sw63) and vehicle (car|kart|bike|boat)
// are always accepted and checked; "--" ends the options.
ParsedArgs ParseArguments(const std::vector<std::string>& args, const OptionSpec& extra = {});

// The engine, started as the program starts it: PrepareInstallation, then
// Main with the headless start-up. The family and vehicle reach Main as the
// command-line tokens (<hx40>, <kart>, ...); without them the profile comes
// from BuildOptions.cfg.
class Engine {
  public:
    Engine();
    ~Engine();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    // Returns false with the reason on stderr when the start failed.
    bool Start(const ParsedArgs& args, std::ostream& err);
    ScriptedPlatform& platform() { return *platform_; }
    // Messages shown since the last call (Message and PlainMessage).
    int messagesShown() const { return messages_; }

  private:
    std::unique_ptr<ScriptedPlatform> platform_;
    int messages_ = 0;
};

// The family token (hx40, mq7, sv63, sw63) of the run files, from the type
// of the first that can be read; empty when none can. A mix of families is
// refused: empty, with the reason in error.
std::string FamilyFromRunFiles(const std::vector<std::string>& files, std::string* error);

// Loads each file as the load menu does; false (with a line on stderr naming
// the command) when any was refused. A file that does not exist, or a
// directory, is said to be so and not offered to the loader.
bool LoadFiles(const char* command, const std::vector<std::string>& files);
// False, with "no such file" or "is a directory" on stderr, for a path that
// is not a file.
bool RunFileThere(const char* command, const std::string& file);

// A usage error: the reason and the command's usage on stderr.
int UsageError(const char* command, const std::string& error);

// The laps of the loaded, processed runs: the lap marker is placed on run 1
// when none exists (as the program's automatic lap marker places it, with the
// configured marker length), and with autoSectors (the number of sectors, as
// the laps form takes it) the sectors too; then the data are checked, which
// recomputes crossings and time slip. False, with the reason on stderr, when
// the sector count is not a number.
bool PrepareLapsAndSectors(const char* command, const ParsedArgs& args);

// What the commands that draw (chart, graph, map) share.

// The picture's path: -o OUT or --output OUT, empty when neither is given.
std::string OutputPath(const ParsedArgs& args);
// --size WIDTHxHEIGHT in pixels, 100 to 20000 each; false when it is not.
bool ParseSize(const std::string& text, int& w, int& h);
// NAME:LO:HI split from the right, as names may hold colons ("S:", "U:");
// false when it holds no two colons.
bool SplitCondition(const std::string& text, std::string& name, std::string& lo, std::string& hi);

// Text needs Qt's font database: an application without a screen, made in
// `app` unless one runs already.
void StartGuiForFonts(std::unique_ptr<QGuiApplication>& app);

// The run files of the command line loaded, and every run processed as
// export --stage all does; with --laps the automatic lap marker (and sectors)
// placed too. kExitOk when there is something to show, else the exit code;
// allLoaded says whether every file was taken.
int LoadAndProcess(const char* command, const ParsedArgs& args, bool& allLoaded);

// False, with a line on stderr, when the variable is not an enabled one of
// the catalogue.
bool KnownVariable(const char* command, const std::string& name);
// False, with a line on stderr, when a run number is beyond those loaded.
bool RunsLoaded(const char* command, const std::vector<std::string>& runs);

// The copy command's text written to `path`; false, with a line on stderr,
// when it could not be.
bool WriteCopy(const char* command, const std::string& path, const std::string& text);
// The picture drawn to `path` (.png, .svg, .pdf) through `draw`; false, with
// the reason on stderr, when it could not be.
bool WritePicture(const char* command, const std::string& path, int width, int height,
                  const std::function<void(DrawSurface&)>& draw);

// The directory of the running executable.
std::string ExecutableDir();

}  // namespace tl::cli
