#include "support/engine_fixture.h"

#include <fstream>
#include <random>
#include <sstream>

#include "core/build_profile.h"
#include "core/platform.h"
#include "store/run_procedures.h"

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

void EngineTest::SetUp() {
    SetPlatform(ui.AsPlatform());
    Profile() = BuildProfile{};
    FormBasePaths(TRACELAB_BIN_DIR, TRACELAB_SHARE_DIR, root.path().string());
    const std::string error = SeedConfigRoot(TRACELAB_SHARE_DIR, root.path().string());
    ASSERT_TRUE(error.empty()) << error;
    UseProfile(Family::HX40, Vehicle::Car);
    ui.ClearRecords();
}

void EngineTest::TearDown() {
    Profile() = BuildProfile{};
    SetPlatform(Platform{});
}

void EngineTest::UseProfile(Family family, Vehicle vehicle) {
    Profile().SetFamily(family);
    Profile().SetVehicle(vehicle);
    FormFamilyPaths();
    ClearCurrentRun(true);
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
