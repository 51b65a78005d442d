#include "support/engine_fixture.h"

#include <fstream>
#include <random>
#include <sstream>

#include <algorithm>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/platform.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace fs = std::filesystem;

namespace tl::test {

TempDir::TempDir() {
    std::random_device rd;
    const fs::path base = fs::temp_directory_path();
    for (int attempt = 0; attempt < 100; ++attempt) {
        fs::path candidate = base / ("tracelab-test-" + std::to_string(rd()));
        std::error_code ec;
        if (fs::create_directory(candidate, ec)) {
            path_ = candidate;
            return;
        }
    }
    throw std::runtime_error("cannot create a temporary directory");
}

TempDir::~TempDir() {
    std::error_code ec;
    // Files made read-only by a test must not stop the clean-up.
    for (auto it = fs::recursive_directory_iterator(path_, ec);
         !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
        fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
    fs::remove_all(path_, ec);
}

std::string StartEngine(const TempDir& root, ScriptedPlatform& ui, Family family, Vehicle vehicle) {
    SetPlatform(ui.AsPlatform());
    Profile() = BuildProfile{};
    FormBasePaths(TRACELAB_BIN_DIR, TRACELAB_SHARE_DIR, root.path().string());
    const std::string error = SeedConfigRoot(TRACELAB_SHARE_DIR, root.path().string());
    if (!error.empty()) return error;
    Profile().SetFamily(family);
    Profile().SetVehicle(vehicle);
    FormFamilyPaths();
    ClearCurrentRun(true);
    return {};
}

void StopEngine() {
    Profile() = BuildProfile{};
    SetPlatform(Platform{});
}

void EnableEveryVariable() {
    SetAvailableVars();
    for (int s = 1; s <= 200; ++s)
        if (Catalogue().RunVars[s].Available && !Catalogue().RunVars[s].Name.empty())
            SetConfig(Paths().TracelabCfgPath, PlainVarName(s), -1);
    SetAvailableVars();
}

void LayOutRuns(int runs, int32_t rows, const std::string& name) {
    int32_t columns = 0;
    for (int v = 1; v <= kNoDataSlot; ++v)
        columns = std::max(columns, Catalogue().RunVars[v].Column + 1);
    RunStore& s = Store();
    s.RunData.Reset(runs * rows + 1, columns);
    s.RunCount = runs;
    for (int n = 1; n <= runs; ++n) {
        RunRecord& r = s.RunInfo[n];
        r = RunRecord{};
        r.Name = name;
        r.RunStart = (n - 1) * rows + 1;
        r.RunEnd = n * rows;
        r.RunLength = rows;
    }
}

void EngineTest::SetUp() {
    const std::string error = StartEngine(root, ui, Family::HX40, Vehicle::Car);
    ASSERT_TRUE(error.empty()) << error;
    ui.ClearRecords();
}

void EngineTest::TearDown() {
    StopEngine();
}

void EngineTest::UseProfile(Family family, Vehicle vehicle) {
    Profile().SetFamily(family);
    Profile().SetVehicle(vehicle);
    FormFamilyPaths();
    ClearCurrentRun(true);
}

std::string DemoPath(const std::string& name) {
    return std::string(TRACELAB_SOURCE_DIR) + "/samples/" + name;
}

int LoadDemoRun(ScriptedPlatform& ui, const std::string& name) {
    const std::string demo = DemoPath(name);
    CopyFileReplacing(demo + ".car", Paths().CarCfgPath);
    ui.yesNoAnswers.push_back(true);
    LoadDataFromFile(demo + ".run");
    return Store().RunCount;
}

std::string ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

void WriteAll(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace tl::test
