// tracelab-cli logger: the logger link without windows, over a POSIX serial
// device (a port, a USB adapter, the emulator's pseudo-terminal).
//   info      connects and prints "logger family=<byte> serial=<n> device=<path>"
//   list      the run directory: "run <k> bytes=<RunByteLength> ..." per record,
//             then "runs <count>"
//   download  the runs K... as the download form's save-each flow fetches
//             and saves them, -o DIR standing for RunPath:
//             "downloaded run <k> bytes=<n> packet=<PacketCount> file=<path>"
//   erase     the erase with its question answered yes: "erased"
// Exit status 0 on success, 1 on a link or logger failure (the program's
// message on stderr, no file for a run that failed), 2 on a usage error.
#include <csignal>
#include <iostream>

#include "cli/cli_common.h"
#include "cli/commands.h"
#include "core/build_profile.h"
#include "core/platform.h"
#include "link/download.h"
#include "link/logger_setup.h"
#include "link/posix_serial_port.h"
#include "link/serial_link.h"

namespace tl::cli {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void OnInterrupt(int) {
    interrupted = 1;
}

// The system clock in place of the scripted one, and the abort flag raised
// by Ctrl+C at the next yield.
class InterruptibleClock final : public Clock {
  public:
    double SecondsSinceMidnight() override { return clock_.SecondsSinceMidnight(); }
    void DoEvents() override {
        clock_.DoEvents();
        if (interrupted) Link().AbortFlag = true;
    }

  private:
    SystemClock clock_;
};

bool ParseRunIndex(const std::string& text, int& k) {
    if (text.empty() || text.size() > 4) return false;
    for (char c : text)
        if (c < '0' || c > '9') return false;
    k = std::stoi(text);
    return k >= 1;
}

}  // namespace

int RunLogger(const std::vector<std::string>& args) {
    ParsedArgs parsed = ParseArguments(args, {{"port", "o", "output"}, {"yes"}});
    if (parsed.help) {
        PrintUsage(std::cout, "logger");
        return kExitOk;
    }
    if (!parsed.error.empty()) return UsageError("logger", parsed.error);
    const std::string device = parsed.Value("port");
    if (device.empty()) return UsageError("logger", "no --port DEVICE given");
    if (parsed.positional.empty()) return UsageError("logger", "no action given");
    const std::string action = parsed.positional[0];
    std::vector<int> wanted;
    if (action == "download") {
        for (size_t i = 1; i < parsed.positional.size(); ++i) {
            int k = 0;
            if (!ParseRunIndex(parsed.positional[i], k))
                return UsageError("logger", "not a run number: " + parsed.positional[i]);
            wanted.push_back(k);
        }
        if (wanted.empty()) return UsageError("logger", "no run to download");
    } else if (action == "info" || action == "list") {
        if (parsed.positional.size() > 1) return UsageError("logger", "too many arguments");
    } else if (action == "erase") {
        if (!parsed.flags.count("yes"))
            return UsageError("logger", "erase needs --yes: it clears the logger's memory");
    } else {
        return UsageError("logger", "unknown action: " + action);
    }

    Engine engine;
    if (!engine.Start(parsed, std::cerr)) return kExitFailed;
    if (!Profile().PlaneFamily()) {
        // The MQ7 and SW63 families have no serial link of this kind: their
        // runs come on cards.
        std::cerr << "tracelab-cli logger: the logger link serves HX40 loggers and SV63 meters; "
                     "choose one with --family hx40 or --family sv63\n";
        return kExitUsage;
    }
    InterruptibleClock clock;
    Platform platform = engine.platform().AsPlatform();
    platform.memory = nullptr;
    platform.clock = &clock;
    SetPlatform(platform);
    PosixSerialPort port;
    SetSerialPort(&port);
    Link().deviceOverride = device;
    Link().AbortFlag = false;
    std::signal(SIGINT, OnInterrupt);
    std::signal(SIGTERM, OnInterrupt);
    struct Restore {
        ~Restore() {
            DisconnectFromLogger();
            SetSerialPort(nullptr);
            Link().deviceOverride.clear();
        }
    } restore;

    if (action == "info") {
        const int32_t serial = ConnectToLogger();
        if (serial < 1) {
            if (serial == 0 && engine.messagesShown() == 0)
                std::cerr << "tracelab-cli logger: the logger's serial number is 0\n";
            return kExitFailed;
        }
        std::cout << "logger family=" << Link().familyByte << " serial=" << serial
                  << " device=" << device << "\n";
        return kExitOk;
    }
    if (action == "erase") {
        if (EraseLogger() != EraseResult::Erased) return kExitFailed;
        std::cout << "erased\n";
        return kExitOk;
    }

    DownloadControl form;
    if (!LoadDownloadForm(form)) return kExitFailed;
    if (action == "list") {
        for (size_t k = 0; k < form.runs.size(); ++k) {
            const ListedRun& r = form.runs[k];
            std::cout << "run " << k + 1 << " bytes=" << r.RunByteLength << " number=" << r.number
                      << " end=" << r.endAddress << " type=" << r.type
                      << " time=" << (r.timeText.empty() ? "-" : r.timeText) << "\n";
        }
        std::cout << "runs " << form.runs.size() << "\n";
        return kExitOk;
    }
    for (int k : wanted) {
        if (k > static_cast<int>(form.runs.size())) {
            std::cerr << "tracelab-cli logger: the logger holds no run " << k << "\n";
            return kExitFailed;
        }
        form.runs[k - 1].ticked = true;
    }
    const std::string out = parsed.Value("o").empty() ? parsed.Value("output") : parsed.Value("o");
    form.runPathOverride = out;
    const bool ok = DownloadEachRunToDisk(form);
    for (const auto& s : form.saved)
        std::cout << "downloaded run " << s.index << " bytes=" << s.bytes
                  << " packet=" << s.packetCount << " file=" << s.path << "\n";
    if (!ok) {
        if (engine.messagesShown() == 0)
            std::cerr << "tracelab-cli logger: run " << form.failedRun << " was not downloaded\n";
        return kExitFailed;
    }
    return kExitOk;
}

}  // namespace tl::cli
