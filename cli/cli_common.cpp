#include "cli/cli_common.h"
#include "cli/commands.h"

#include <sys/stat.h>
#include <unistd.h>
#include <QGuiApplication>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/platform.h"
#include "core/support.h"
#include "files/raw_run_files.h"
#include "platform/render/painter_surface.h"
#include "results/laps.h"
#include "road/convert_driver.h"
#include "road/run_road.h"
#include "road/startup.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace fs = std::filesystem;

namespace tl::cli {

namespace {

const std::set<std::string> kFamilies = {"hx40", "mq7", "sv63", "sw63"};
const std::set<std::string> kVehicles = {"car", "kart", "bike", "boat"};

}  // namespace

ParsedArgs ParseArguments(const std::vector<std::string>& args, const OptionSpec& extra) {
    ParsedArgs out;
    std::set<std::string> valueOptions = extra.valueOptions;
    valueOptions.insert({"config-dir", "family", "vehicle"});
    bool optionsEnded = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (optionsEnded || a.size() < 2 || a[0] != '-') {
            out.positional.push_back(a);
            continue;
        }
        if (a == "--") {
            optionsEnded = true;
            continue;
        }
        if (a == "--help" || a == "-h") {
            out.help = true;
            continue;
        }
        // A one-letter option the command accepts as a value option ("-o
        // OUT.csv") takes the next argument.
        if (a.size() == 2 && valueOptions.count(a.substr(1))) {
            if (i + 1 >= args.size()) {
                out.error = "option " + a + " needs a value";
                return out;
            }
            out.values[a.substr(1)] = args[++i];
            out.all[a.substr(1)].push_back(out.values[a.substr(1)]);
            continue;
        }
        if (a.rfind("--", 0) != 0) {
            out.error = "unknown option " + a;
            return out;
        }
        std::string name = a.substr(2);
        std::string value;
        bool hasValue = false;
        if (auto eq = name.find('='); eq != std::string::npos) {
            value = name.substr(eq + 1);
            name = name.substr(0, eq);
            hasValue = true;
        }
        if (valueOptions.count(name)) {
            if (!hasValue) {
                if (i + 1 >= args.size()) {
                    out.error = "option --" + name + " needs a value";
                    return out;
                }
                value = args[++i];
            }
            out.values[name] = value;
            out.all[name].push_back(value);
        } else if (extra.flagOptions.count(name) && !hasValue) {
            out.flags.insert(name);
        } else {
            out.error = "unknown option --" + name;
            return out;
        }
    }
    if (out.values.count("family") && !kFamilies.count(out.values["family"])) {
        out.error = "--family must be one of hx40, mq7, sv63, sw63";
    } else if (out.values.count("vehicle") && !kVehicles.count(out.values["vehicle"])) {
        out.error = "--vehicle must be one of car, kart, bike, boat";
    } else if (out.values.count("config-dir") && out.values["config-dir"].empty()) {
        out.error = "--config-dir needs a directory";
    }
    return out;
}

std::string ExecutableDir() {
    std::error_code ec;
    fs::path exe = fs::read_symlink("/proc/self/exe", ec);
    if (ec) return fs::current_path(ec).string();
    return exe.parent_path().string();
}

Engine::Engine() : platform_(std::make_unique<ScriptedPlatform>()) {
    // Every question is answered No, every dialog cancelled: the process
    // question, "Continue Load", and the dialog that a refusal brings back.
    platform_->defaultYesNo = false;
    platform_->onEvent = [this](const ScriptedEvent& e) {
        if (e.kind == ScriptedEvent::Kind::Message || e.kind == ScriptedEvent::Kind::PlainMessage) {
            ++messages_;
            std::cerr << e.text << '\n';
        }
    };
    // The memory figures are this machine's own, as the program reads them.
    Platform installed = platform_->AsPlatform();
    installed.memory = nullptr;
    SetPlatform(installed);
}

Engine::~Engine() {
    // Leave no pointer to this platform behind: the defaults return.
    SetPlatform(Platform{});
}

namespace {

const char* FamilyToken(Family family) {
    switch (family) {
        case Family::HX40:
            return "hx40";
        case Family::MQ7:
            return "mq7";
        case Family::SV63:
            return "sv63";
        case Family::SW63:
            return "sw63";
        case Family::None:
            break;
    }
    return "";
}

// The family of a run file from its type (1 HX40, 200 MQ7, 201 SW63, 202
// SV63, and the session and summary types of each family); None for a file
// that cannot be read or is of no known type.
Family FamilyOfFile(const std::string& path) {
    std::error_code ec;
    if (!fs::is_regular_file(path, ec)) return Family::None;
    RunFileHead head;
    if (!ReadRunFileHead(path, head)) return Family::None;
    return FamilyOfRunFileType(head.type);
}

}  // namespace

std::string FamilyFromRunFiles(const std::vector<std::string>& files, std::string* error) {
    Family found = Family::None;
    std::string first;
    for (const std::string& file : files) {
        const Family f = FamilyOfFile(file);
        if (f == Family::None) continue;
        if (found == Family::None) {
            found = f;
            first = file;
        } else if (f != found) {
            if (error)
                *error = "the run files are of different families (" + first + " is " +
                         FamilyToken(found) + ", " + file + " is " + FamilyToken(f) +
                         "); load the runs of one family at a time";
            return {};
        }
    }
    return FamilyToken(found);
}

bool Engine::Start(const ParsedArgs& args, std::ostream& err) {
    StartupOptions options;
    options.helpWindow = false;
    options.appDir = ExecutableDir();
    options.configDir = args.Value("config-dir");
    std::string family = args.Value("family");
    if (family.empty()) {
        // Without --family the runs say which family reads them; with no
        // readable run file BuildOptions.cfg decides, as for the program.
        std::string mix;
        family = FamilyFromRunFiles(args.positional, &mix);
        if (!mix.empty()) {
            err << "tracelab-cli: " << mix << '\n';
            return false;
        }
    }
    if (!family.empty()) options.commandLine += "<" + family + ">";
    if (!args.Value("vehicle").empty()) options.commandLine += "<" + args.Value("vehicle") + ">";
    std::string problem = PrepareInstallation(options);
    if (!problem.empty()) {
        err << "tracelab-cli: " << problem << '\n';
        return false;
    }
    HeadlessStartupUi ui;
    if (!Main(options, ui)) {
        err << "tracelab-cli: the engine did not start (see the messages above)\n";
        return false;
    }
    return true;
}

bool RunFileThere(const char* command, const std::string& file) {
    std::error_code ec;
    const fs::file_status status = fs::status(file, ec);
    if (!fs::exists(status)) {
        std::cerr << "tracelab-cli " << command << ": " << file << ": no such file\n";
        return false;
    }
    if (fs::is_directory(status)) {
        std::cerr << "tracelab-cli " << command << ": " << file
                  << " is a directory, not a run file\n";
        return false;
    }
    return true;
}

bool LoadFiles(const char* command, const std::vector<std::string>& files) {
    bool allLoaded = true;
    for (const std::string& file : files) {
        if (!RunFileThere(command, file)) {
            allLoaded = false;
            continue;
        }
        const int32_t before = Store().RunCount;
        LoadDataFromFile(file);
        if (Store().RunCount == before) {
            allLoaded = false;
            std::cerr << "tracelab-cli " << command << ": " << file << " was not loaded\n";
        }
    }
    return allLoaded;
}

int UsageError(const char* command, const std::string& error) {
    std::cerr << "tracelab-cli " << command << ": " << error << "\n\n";
    PrintUsage(std::cerr, command);
    return kExitUsage;
}

bool PrepareLapsAndSectors(const char* command, const ParsedArgs& args) {
    const bool sectors = args.values.count("auto-sectors") > 0;
    const std::string sectorText = args.Value("auto-sectors");
    if (sectors && (sectorText.empty() || !ValidNumber(sectorText))) {
        std::cerr << "tracelab-cli " << command << ": --auto-sectors needs a number of sectors\n";
        return false;
    }
    if (Store().RunCount < 1) return true;
    const std::string& cfg = Paths().TracelabCfgPath;
    // The marker length as the pipeline's automatic lap marker reads it.
    const float length = FindMin(FindMax(GetConfig(cfg, "MarkerLengthTxt"), 2.0f), 200.0f);
    if (CheckForLapMarker() == -1) AutoPlaceLapMarker(1, length / 2.0f);
    if (sectors) {
        char lengthText[32];
        std::snprintf(lengthText, sizeof lengthText, "%g", static_cast<double>(length));
        ClearAllSectors();
        AutoAddSectorsCmd(1, sectorText, lengthText);
    }
    CheckInternalDataStillValid();
    return true;
}

std::string OutputPath(const ParsedArgs& args) {
    return args.Value("o").empty() ? args.Value("output") : args.Value("o");
}

bool ParseSize(const std::string& text, int& w, int& h) {
    const size_t x = text.find('x');
    if (x == std::string::npos) return false;
    const std::string a = text.substr(0, x), b = text.substr(x + 1);
    if (!ValidNumber(a) || !ValidNumber(b)) return false;
    w = static_cast<int>(GetVal_NI(a));
    h = static_cast<int>(GetVal_NI(b));
    return w >= 100 && h >= 100 && w <= 20000 && h <= 20000;
}

bool SplitCondition(const std::string& text, std::string& name, std::string& lo, std::string& hi) {
    const size_t b = text.rfind(':');
    const size_t a = b == std::string::npos || b == 0 ? std::string::npos : text.rfind(':', b - 1);
    if (a == std::string::npos) return false;
    name = text.substr(0, a);
    lo = text.substr(a + 1, b - a - 1);
    hi = text.substr(b + 1);
    return true;
}

void StartGuiForFonts(std::unique_ptr<QGuiApplication>& app) {
    if (QGuiApplication::instance() != nullptr) return;
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    if (std::getenv("XDG_RUNTIME_DIR") == nullptr) {
        // Qt's own fallback, made here so that it says nothing about it.
        const std::string dir = "/tmp/runtime-" + std::to_string(::getuid());
        ::mkdir(dir.c_str(), 0700);
        setenv("XDG_RUNTIME_DIR", dir.c_str(), 0);
    }
    static int argc = 1;
    static char name[] = "tracelab-cli";
    static char* argv[] = {name, nullptr};
    app = std::make_unique<QGuiApplication>(argc, argv);
}

int LoadAndProcess(const char* command, const ParsedArgs& args, bool& allLoaded) {
    allLoaded = LoadFiles(command, args.positional);
    if (Store().RunCount == 0) return kExitFailed;
    for (int32_t n = 1; n <= Store().RunCount; ++n) ConvertRawToRunData(n, true);
    if (args.flags.count("laps") && !PrepareLapsAndSectors(command, args)) return kExitUsage;
    return kExitOk;
}

bool KnownVariable(const char* command, const std::string& name) {
    const int slot = FindVar(name);
    if (slot != kNoDataSlot && Catalogue().RunVars[slot].Enabled) return true;
    std::cerr << "tracelab-cli " << command << ": no variable \"" << name
              << "\" in this selection\n";
    return false;
}

bool RunsLoaded(const char* command, const std::vector<std::string>& runs) {
    for (const std::string& r : runs)
        if (GetVal_NI(r) > Store().RunCount) {
            std::cerr << "tracelab-cli " << command << ": there is no run " << r << " ("
                      << Store().RunCount << " loaded)\n";
            return false;
        }
    return true;
}

bool WriteCopy(const char* command, const std::string& path, const std::string& text) {
    if (WriteFileAtomically(path, text)) return true;
    std::cerr << "tracelab-cli " << command << ": " << path << " could not be written\n";
    return false;
}

bool WritePicture(const char* command, const std::string& path, int width, int height,
                  const std::function<void(DrawSurface&)>& draw) {
    std::string error;
    if (render::RenderToFile(path, width, height, draw, &error)) return true;
    std::cerr << "tracelab-cli " << command << ": " << error << '\n';
    return false;
}

}  // namespace tl::cli
