#include "fuzz_support.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>

#include "convert/family_converters.h"
#include "core/platform.h"
#include "core/scripted_platform.h"
#include "files/csv_export.h"
#include "files/raw_run_files.h"
#include "files/summary_run_list.h"
#include "results/track_markers.h"
#include "road/active_variables.h"
#include "road/convert_driver.h"
#include "road/run_road.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace fs = std::filesystem;

namespace tl::fuzz {
namespace {

// Where the configuration root and the input file live: a memory file system
// when the machine has one. Every options write is flushed to disk before its
// rename, and a change of family rewrites a few options: on a disk that costs
// milliseconds an input, on /dev/shm nothing.
fs::path ScratchRoot() {
    std::error_code ec;
    const fs::path shm = "/dev/shm";
    const fs::path base = fs::is_directory(shm, ec) && ::access(shm.c_str(), W_OK) == 0
                              ? shm
                              : fs::temp_directory_path();
    return base / ("tracelab-fuzz-" + std::to_string(::getpid()));
}

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
        root = ScratchRoot();
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
            fs::remove_all(ScratchRoot(), e);
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

void ResetStore() {
    RunStore& s = Store();
    for (RunRecord& r : s.RunInfo) r = RunRecord{};
    s.RunCount = 0;
    s.CurrentRun = 1;
    s.RawData.Reset(Profile().PlaneFamily());
    SummaryRuns().Clear();
    Markers().ResizeRuns(0);
    Engine().ui.ClearRecords();
}

namespace {

// One run of the bytes already in RawData: counted, allocated, converted by
// the family's converter alone.
void CountAndConvert(int32_t rawUpper, const uint8_t* header) {
    RunStore& s = Store();
    RunRecord& r = s.RunInfo[1];
    r.Name = "fuzz";
    r.RawStart = 0;
    r.RawEnd = rawUpper;
    for (int i = 0; i < 8; ++i) r.HeaderBytes[i] = header ? header[i] : 0;
    s.RunCount = 1;
    AllocateRunArray(1);
    const BuildProfile& p = Profile();
    if (p.HardwareHX40)
        ConvertRawToRunData_HX40(1);
    else if (p.HardwareSV63)
        ConvertRawToRunData_SV63(1);
    else
        ConvertRawToRunData_MQ7(1);
}

}  // namespace

void ConvertPlanes(const uint8_t* data, size_t size) {
    ResetStore();
    if (size < 16) return;
    const size_t frames = (size - 8) / 8;
    RawArray& raw = Store().RawData;
    raw.Resize(static_cast<int32_t>(frames) - 1);
    for (int v = 1; v <= 8; ++v) {
        uint8_t* plane = raw.Vector(v).data();
        for (size_t f = 0; f < frames; ++f) plane[f] = data[8 + f * 8 + (v - 1)];
    }
    CountAndConvert(static_cast<int32_t>(frames) - 1, data);
}

void ConvertStream(const uint8_t* data, size_t size) {
    ResetStore();
    if (size < 1) return;
    RawArray& raw = Store().RawData;
    raw.Resize(static_cast<int32_t>(size) - 1);
    std::copy(data, data + size, raw.Vector(1).data());
    CountAndConvert(static_cast<int32_t>(size) - 1, nullptr);
}

void LoadOnly(const std::string& path) {
    ResetStore();
    LoadDataFromFile(path, nullptr);
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
