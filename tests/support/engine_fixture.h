// The fixture every engine test stands on: a fresh configuration root in a
// temporary directory seeded with the shipped defaults, a scripted platform
// installed, the build profile set, and the run store and catalogue cleared.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "core/build_profile.h"
#include "core/scripted_platform.h"

namespace tl::test {

// A temporary directory removed at destruction.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::filesystem::path& path() const { return path_; }
    std::string file(const std::string& name) const { return (path_ / name).string(); }

  private:
    std::filesystem::path path_;
};

// The engine started headless on the configuration root (seeded with the
// shipped defaults) with the scripted platform, the profile set and the
// store cleared: what every engine test and benchmark stands on. Returns
// the seeding error, empty when all went well. StopEngine undoes it.
std::string StartEngine(const TempDir& root, ScriptedPlatform& ui, Family family, Vehicle vehicle);
void StopEngine();

// Ticks every available variable in the options file, as "Set All" does,
// and rebuilds the catalogue.
void EnableEveryVariable();

// RunData sized for the catalogue and zeroed, holding `runs` runs of `rows`
// rows back to back from row 1, each named `name`.
void LayOutRuns(int runs, int32_t rows, const std::string& name);

// A demo run of samples/ by name ("demo_hx40_road"), without extension: the
// .run, .car, .truth.csv and .laps.csv stand beside it.
std::string DemoPath(const std::string& name);

// Loads the demo run `name` as a user does: its .car in place of the car
// configuration, then the .run, the first load's question answered yes.
// Returns the number of runs in the store afterwards.
int LoadDemoRun(ScriptedPlatform& ui, const std::string& name);

class EngineTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;
    // Re-forms the family paths and rebuilds the empty store for a profile.
    void UseProfile(Family family, Vehicle vehicle);
    // LoadDemoRun with this test's platform.
    int LoadDemoRun(const std::string& name = "demo_hx40_road") {
        return test::LoadDemoRun(ui, name);
    }

    TempDir root;
    ScriptedPlatform ui;
};

// Reads a whole file as bytes.
std::string ReadAll(const std::string& path);
// Writes bytes to a file, replacing it.
void WriteAll(const std::string& path, const std::string& bytes);

}  // namespace tl::test
