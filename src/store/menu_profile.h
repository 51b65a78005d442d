// The window-independent rules of the main window: how EnableBuildMenus
// adapts the menus to the family and vehicle, the numbering of new graph and
// bar chart windows, the " (active)" mark of the window list, the save
// question on closing, and the texts of the run manager's rows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/build_profile.h"

namespace tl {

// One change EnableBuildMenus makes to a menu entry, by control name.
struct MenuChange {
    std::string control;
    std::optional<bool> visible;
    std::optional<std::string> caption;
};

// The changes for a family and vehicle, in the order they are applied.
std::vector<MenuChange> BuildMenuChanges(Family family, Vehicle vehicle);

// The new-graph rule: the lowest free entry of used (entry 0 unused, 1 to
// count) is taken; with none free the list grows by one. Returns the number
// taken; used is updated.
int32_t TakeFormNumber(std::vector<bool>& used);
// A closing form sets its entry free again.
void ReleaseFormNumber(std::vector<bool>& used, int32_t number);

// The window list's captions: " (active)" is removed from every entry and put
// behind the entry of the active child (activeIndex, -1 for none).
inline constexpr const char* kActiveMark = " (active)";
std::vector<std::string> MarkActiveWindow(const std::vector<std::string>& captions,
                                          int activeIndex);

// Data count as loaded when RawData has more than 10 entries in its upper
// index: only then does closing ask to save.
bool RawDataLoaded();

// The tool windows whose visibility and place live in TracelabCfgPath.
struct ToolWindowKeys {
    const char* showKey;  // "ShowMiniMaps", "ShowValueTable", "ShowLapSectorTimes"
    const char* prefix;   // "MiniMap", "ValueTable", "LapSectorTimes"
};
inline constexpr ToolWindowKeys kToolWindows[3] = {
    {"ShowMiniMaps", "MiniMap"},
    {"ShowValueTable", "ValueTable"},
    {"ShowLapSectorTimes", "LapSectorTimes"},
};
// A tool window is shown at start only when its key is exactly 1.
bool ToolWindowShownAtStart(const ToolWindowKeys& keys);
struct WindowBox {
    int left = 0, top = 0, width = 0, height = 0;
};
// On closing: an open tool window stores 1 and its place; a closed one 0.
void StoreToolWindowState(const ToolWindowKeys& keys, bool open, const WindowBox& box);
// The stored place of a tool window; nullopt while no width is stored.
std::optional<WindowBox> StoredToolWindowBox(const ToolWindowKeys& keys);

// The run manager's CarFileLabel text for a run.
std::string CarFileLabelText(int32_t run);
// The part of a path behind its last separator ("\" or "/").
std::string PathTail(const std::string& path);

// frmSetAmbientConditions: the values shown on activate (0 temperature
// becomes 30, 0 pressure 101, an invalid humidity 0) and the test of OkBtn.
struct AmbientTexts {
    std::string temperature, humidity, pressure;
};
AmbientTexts AmbientShownFor(int32_t run);
// Returns the refusal message, or empty when the values were stored.
std::string SetAmbientConditions(int32_t run, const AmbientTexts& texts);

// The most recently used run files: kept under RecentRunFile1..4 in
// TracelabCfgPath, newest first, no duplicates.
inline constexpr int kRecentFileCount = 4;
std::vector<std::string> RecentRunFiles();
void AddRecentRunFile(const std::string& path);

}  // namespace tl
