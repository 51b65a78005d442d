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

class EngineTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;
    // Re-forms the family paths and rebuilds the empty store for a profile.
    void UseProfile(Family family, Vehicle vehicle);

    TempDir root;
    ScriptedPlatform ui;
};

// Reads a whole file as bytes.
std::string ReadAll(const std::string& path);
// Writes bytes to a file, replacing it.
void WriteAll(const std::string& path, const std::string& bytes);

}  // namespace tl::test
