#include "cli/cli_common.h"

#include <unistd.h>

#include <filesystem>
#include <iostream>

#include "core/platform.h"
#include "core/startup.h"

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

bool Engine::Start(const ParsedArgs& args, std::ostream& err) {
    StartupOptions options;
    options.appDir = ExecutableDir();
    options.configDir = args.Value("config-dir");
    if (!args.Value("family").empty()) options.commandLine += "<" + args.Value("family") + ">";
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

}  // namespace tl::cli
