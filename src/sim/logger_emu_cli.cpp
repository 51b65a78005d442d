// The command line of tracelab-logger-emu.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "sim/logger_emu.h"
#include "sim/simulation.h"

namespace tl::sim {

namespace {

const char* kUsage =
    "usage: tracelab-logger-emu [RUN.run ...] [--family hx40|sv63] [options]\n"
    "\n"
    "Opens a pseudo-terminal, prints \"device PATH\" on the first line, and answers on it\n"
    "as an HX40 logger or an SV63 meter holding the given runs (written by tracelab-sim),\n"
    "or runs it simulates itself. Stop it with Ctrl+C.\n"
    "\n"
    "Runs:\n"
    "  --family F          hx40 or sv63 (default: the runs' family, else hx40)\n"
    "  --runs K            simulate K runs when no file is given (default 2)\n"
    "  --laps N            timed laps of each simulated run (default 1)\n"
    "  --circuit C         kart, road or oval (default kart)\n"
    "  --vehicle V         car, kart, bike or boat (default kart)\n"
    "  --period P          SV63 sample period in 0.01 s (default 1)\n"
    "  --summary TYPE      add an SV63 summary run of type 3, 5 or 7 (repeatable)\n"
    "  --empty             hold no runs\n"
    "  --seed S            seed of the simulation and of the faults (default 1)\n"
    "The logger:\n"
    "  --serial N          serial number (default 4711)\n"
    "  --family-byte B     first byte of the version answer (default 2; others are refused)\n"
    "  --old-firmware      no answer to \"h\" (auto-start) or \"e\" (multi-vehicle)\n"
    "  --checksum-on       an HX40 that starts with checksums on\n"
    "  --erase-seconds S   how long an erase takes (default 1)\n"
    "The line:\n"
    "  --baud B            line rate, a byte every 10 bits (default 115200; 0 unpaced)\n"
    "  --latency MS        bytes come out together every MS milliseconds, as behind a USB\n"
    "                      serial adapter (16 is usual; default 0, each byte when due)\n"
    "  --bit-errors RATE   chance of each bit of a transfer being flipped\n"
    "  --drop RATE         chance of each byte of a transfer being lost\n"
    "  --dup RATE          chance of each byte of a transfer coming twice\n"
    "  --noise-everywhere  the three above spoil every reply, not only transfers\n"
    "  --stall S[@BYTES]   the line stands still S seconds after BYTES bytes (default 0)\n"
    "  --die-after N       no answer to anything after N transfers\n"
    "  --quit-after N      the device is unplugged when transfer N + 1 is asked for\n"
    "  --log FILE          transcript: time, each command received, the reply length\n";

LoggerEmu* g_running = nullptr;

void OnSignal(int) {
    if (g_running) g_running->Stop();
}

bool Number(const char* text, double& value) {
    char* end = nullptr;
    value = std::strtod(text, &end);
    return end != text && *end == '\0';
}

bool ReadFile(const std::string& path, std::vector<uint8_t>& bytes) {
    std::ifstream f(path, std::ios::binary);
    if (!f) return false;
    bytes.assign(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
    return true;
}

}  // namespace

int LoggerEmuMain(int argc, char** argv) {
    EmuOptions options;
    std::vector<std::string> files;
    std::vector<int> summaries;
    SimConfig sim;
    sim.circuit = "kart";
    sim.vehicle = "kart";
    sim.drive.laps = 1;
    int simRuns = 2;
    bool familyGiven = false, empty = false;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (a == "--help" || a == "-h") {
            std::fputs(kUsage, stdout);
            return 0;
        }
        if (a.rfind("--", 0) != 0) {
            files.push_back(a);
            continue;
        }
        if (a == "--old-firmware") {
            options.logger.oldFirmware = true;
            continue;
        }
        if (a == "--checksum-on") {
            options.logger.checksumOn = true;
            continue;
        }
        if (a == "--noise-everywhere") {
            options.faults.everywhere = true;
            continue;
        }
        if (a == "--empty") {
            empty = true;
            continue;
        }
        if (i + 1 >= argc) {
            std::fprintf(stderr, "tracelab-logger-emu: %s needs a value\n%s", a.c_str(), kUsage);
            return 2;
        }
        const std::string v = argv[++i];
        double num = 0.0;
        bool ok = true;
        if (a == "--family") {
            ok = FamilyFromName(v, options.logger.family) &&
                 (options.logger.family == Family::HX40 || options.logger.family == Family::SV63);
            familyGiven = ok;
        } else if (a == "--circuit") {
            sim.circuit = v;
        } else if (a == "--vehicle") {
            sim.vehicle = v;
        } else if (a == "--log") {
            options.logPath = v;
        } else if (a == "--stall") {
            const size_t at = v.find('@');
            double bytes = 0.0;
            ok = Number(v.substr(0, at).c_str(), num) && num >= 0 &&
                 (at == std::string::npos ||
                  (Number(v.substr(at + 1).c_str(), bytes) && bytes >= 0));
            options.faults.stallSeconds = num;
            options.faults.stallAtByte = static_cast<uint64_t>(bytes);
        } else if (!Number(v.c_str(), num)) {
            ok = false;
        } else if (a == "--seed" && num >= 0) {
            options.seed = std::strtoull(v.c_str(), nullptr, 10);
        } else if (a == "--runs" && num >= 1 && num <= 50) {
            simRuns = static_cast<int>(num);
        } else if (a == "--laps" && num >= 1 && num <= 1000) {
            sim.drive.laps = static_cast<int>(num);
        } else if (a == "--period" && num >= 1 && num <= 20) {
            sim.encode.sv63Period = static_cast<int>(num);
        } else if (a == "--summary" && (num == 3 || num == 5 || num == 7)) {
            summaries.push_back(static_cast<int>(num));
        } else if (a == "--serial" && num >= 0 && num <= 65535) {
            options.logger.serialNumber = static_cast<uint16_t>(num);
        } else if (a == "--family-byte" && num >= 0 && num <= 255) {
            options.logger.familyByte = static_cast<uint8_t>(num);
        } else if (a == "--erase-seconds" && num >= 0 && num <= 600) {
            options.logger.eraseSeconds = num;
        } else if (a == "--baud" && num >= 0 && num <= 10000000) {
            options.baud = static_cast<int>(num);
        } else if (a == "--latency" && num >= 0 && num <= 1000) {
            options.latencyMs = num;
        } else if (a == "--bit-errors" && num >= 0 && num <= 1) {
            options.faults.bitErrors = num;
        } else if (a == "--drop" && num >= 0 && num <= 1) {
            options.faults.drop = num;
        } else if (a == "--dup" && num >= 0 && num <= 1) {
            options.faults.dup = num;
        } else if (a == "--die-after" && num >= 0) {
            options.faults.dieAfter = static_cast<int>(num);
        } else if (a == "--quit-after" && num >= 0) {
            options.faults.quitAfter = static_cast<int>(num);
        } else {
            ok = false;
        }
        if (!ok) {
            std::fprintf(stderr, "tracelab-logger-emu: bad option %s %s\n%s", a.c_str(), v.c_str(),
                         kUsage);
            return 2;
        }
    }

    std::vector<EmuRun> runs;
    for (const std::string& path : files) {
        std::vector<uint8_t> bytes;
        std::string error;
        EmuRun run;
        Family family = Family::HX40;
        if (!ReadFile(path, bytes))
            error = "cannot read the file";
        else if (!EmuRunFromFile(bytes, family, run, error))
            ;  // the reason is in error
        else if (familyGiven && family != options.logger.family)
            error = std::string("a ") + FamilyName(family) + " run for a " +
                    FamilyName(options.logger.family) + " logger";
        if (!error.empty()) {
            std::fprintf(stderr, "tracelab-logger-emu: %s: %s\n", path.c_str(), error.c_str());
            return 1;
        }
        options.logger.family = family;
        familyGiven = true;
        runs.push_back(std::move(run));
    }
    if (files.empty() && !empty) {
        sim.family = options.logger.family;
        for (int k = 0; k < simRuns; ++k) {
            sim.seed = options.seed + static_cast<uint64_t>(k);
            SimOutput out;
            std::string error;
            if (!RunSimulation(sim, out, error)) {
                std::fprintf(stderr, "tracelab-logger-emu: %s\n", error.c_str());
                return 1;
            }
            runs.push_back(EmuRunFromRaw(out.raw));
        }
    }
    if (!summaries.empty() && options.logger.family != Family::SV63) {
        std::fprintf(stderr, "tracelab-logger-emu: summary runs are the SV63 meter's only\n");
        return 2;
    }
    for (size_t k = 0; k < summaries.size(); ++k)
        runs.push_back(SummaryEmuRun(summaries[k], options.seed + k));

    LoggerEmu emu(options, runs);
    std::string error;
    if (!emu.Open(error)) {
        std::fprintf(stderr, "tracelab-logger-emu: %s\n", error.c_str());
        return 1;
    }
    std::printf("device %s\n", emu.DevicePath().c_str());
    std::fflush(stdout);
    std::fprintf(stderr, "tracelab-logger-emu: %s %s, serial %u, %zu runs:",
                 options.logger.family == Family::SV63 ? "SV63 meter" : "HX40 logger",
                 emu.DevicePath().c_str(), options.logger.serialNumber, runs.size());
    for (const EmuRun& r : runs) std::fprintf(stderr, " %d", r.FrameCount());
    std::fprintf(stderr, " frames\n");
    g_running = &emu;
    std::signal(SIGINT, OnSignal);
    std::signal(SIGTERM, OnSignal);
    emu.Run();
    g_running = nullptr;
    return 0;
}

}  // namespace tl::sim
