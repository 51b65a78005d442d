#include "fuzz_support.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>

#include "core/platform.h"
#include "core/scripted_platform.h"
#include "files/csv_export.h"
#include "files/raw_run_files.h"
#include "road/active_variables.h"
#include "road/convert_driver.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace fs = std::filesystem;

namespace tl::fuzz {
namespace {

struct FuzzEngine {
    ScriptedPlatform ui;
    fs::path root;
    std::string input;
    Family family = Family::None;
    std::set<Family> selected;  // families whose variables are all selected
    bool dirty = true;

    FuzzEngine() {
        ui.defaultYesNo = false;
        SetPlatform(ui.AsPlatform());
        root = fs::temp_directory_path() / ("tracelab-fuzz-" + std::to_string(::getpid()));
        std::error_code ec;
        fs::remove_all(root, ec);
        FormBasePaths(TRACELAB_BIN_DIR, TRACELAB_SHARE_DIR, root.string());
        const std::string error = SeedConfigRoot(TRACELAB_SHARE_DIR, root.string());
        if (!error.empty()) {
            std::fprintf(stderr, "fuzz: %s\n", error.c_str());
            std::abort();
        }
        input = (root / "input.run").string();
        std::atexit([] {
            std::error_code e;
            fs::remove_all(
                fs::temp_directory_path() / ("tracelab-fuzz-" + std::to_string(::getpid())), e);
        });
    }
};

FuzzEngine& Engine() {
    static FuzzEngine* engine = new FuzzEngine();  // lives as long as the process
    return *engine;
}

Vehicle VehicleOf(Family family) {
    switch (family) {
        case Family::HX40:
            return Vehicle::Car;
        case Family::SW63:
            return Vehicle::Bike;
        default:
            return Vehicle::Kart;
    }
}

}  // namespace

void UseFamily(Family family) {
    FuzzEngine& e = Engine();
    e.ui.ClearRecords();
    if (family == e.family && !e.dirty) return;
    Profile().SetFamily(family);
    Profile().SetVehicle(VehicleOf(family));
    FormFamilyPaths();
    ClearCurrentRun(true);
    if (e.selected.insert(family).second) {
        // Every variable the family offers, as "Set All" in the selection.
        ActiveVariablesList list;
        list.Activate();
        list.SetAll();
        list.Okay();
        ClearCurrentRun(true);
    }
    e.family = family;
    e.dirty = false;
}

std::string WriteInputFile(const std::string& bytes) {
    FuzzEngine& e = Engine();
    std::ofstream out(e.input, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return e.input;
}

void LoadConvertAndClear(const std::string& path, bool derived) {
    FuzzEngine& e = Engine();
    e.dirty = true;
    LoadDataFromFile(path);
    for (int32_t run = 1; run <= Store().RunCount; ++run) ConvertRawToRunData(run, derived);
    if (derived && Store().RunCount > 0) {
        // Both exports of whatever the processing made of the bytes.
        std::string error;
        const std::string csv = (e.root / "export.csv").string();
        WriteProcessedCsv(1, csv, 1, true, error);
        WriteRawCsv(csv, error);
    }
    e.ui.ClearRecords();
}

std::string RunFileHead(int32_t type) {
    std::string out;
    auto put = [&](int32_t v) {
        const auto u = static_cast<uint32_t>(v);
        for (int i = 0; i < 4; ++i) out.push_back(static_cast<char>((u >> (8 * i)) & 0xFF));
    };
    put(kRunFileMagic);
    put(type);
    return out;
}

std::string PlaneFileFromFrames(int32_t type, const uint8_t* data, size_t size) {
    if (size < 8) return RunFileHead(type);
    const size_t frames = (size - 8) / 8;
    std::string out = RunFileHead(type);
    const auto n = static_cast<uint32_t>(frames);
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<char>((n >> (8 * i)) & 0xFF));
    for (size_t v = 0; v < 8; ++v) {
        out.push_back(static_cast<char>(data[v]));
        for (size_t f = 0; f < frames; ++f) out.push_back(static_cast<char>(data[8 + f * 8 + v]));
    }
    return out;
}

}  // namespace tl::fuzz
