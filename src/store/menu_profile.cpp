#include "store/menu_profile.h"

#include <cmath>
#include <cstdio>

#include "core/config_store.h"
#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "store/run_store.h"

namespace tl {

std::vector<MenuChange> BuildMenuChanges(Family family, Vehicle vehicle) {
    std::vector<MenuChange> changes;
    auto hide = [&](const char* control) { changes.push_back({control, false, std::nullopt}); };
    auto caption = [&](const char* control, const std::string& text) {
        changes.push_back({control, std::nullopt, text});
    };
    switch (family) {
        case Family::MQ7:
        case Family::SW63:
            hide("mnuLogger");
            hide("mnuSv63Runs");
            hide("mnuBar12");
            break;
        case Family::HX40:
            hide("mnuSv63Runs");
            hide("mnuBar12");
            break;
        case Family::SV63:
            caption("mnuLogger", "Meter");
            caption("mnuLoggerSetupLogger", "Set-Up Meter");
            hide("mnuLoadOptions");
            hide("mnuSaveOptions");
            hide("mnuBar6");
            break;
        case Family::None:
            break;
    }
    std::string word;
    switch (vehicle) {
        case Vehicle::Car:
            word = "Car";
            break;
        case Vehicle::Kart:
            word = "Kart";
            break;
        case Vehicle::Bike:
            word = "Bike";
            break;
        case Vehicle::Boat:
            word = "Boat";
            changes.push_back({"mnuRefOptions", true, std::nullopt});
            break;
    }
    caption("mnuCarOptions", "&" + word);
    caption("mnuLoadOptions", "&Load " + word + " Options");
    caption("mnuSaveOptions", "&Save " + word + " Options");
    caption("mnuEditOptions", "&Edit " + word + " Options");
    return changes;
}

int32_t TakeFormNumber(std::vector<bool>& used) {
    if (used.empty()) used.push_back(false);  // entry 0 is never used
    for (size_t n = 1; n < used.size(); ++n) {
        if (!used[n]) {
            used[n] = true;
            return static_cast<int32_t>(n);
        }
    }
    used.push_back(true);
    return static_cast<int32_t>(used.size() - 1);
}

void ReleaseFormNumber(std::vector<bool>& used, int32_t number) {
    if (number >= 1 && static_cast<size_t>(number) < used.size()) used[number] = false;
}

std::vector<std::string> MarkActiveWindow(const std::vector<std::string>& captions,
                                          int activeIndex) {
    const std::string mark = kActiveMark;
    std::vector<std::string> out;
    out.reserve(captions.size());
    for (size_t i = 0; i < captions.size(); ++i) {
        std::string text = captions[i];
        for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark)) {
            text.erase(at, mark.size());
        }
        if (static_cast<int>(i) == activeIndex) text += mark;
        out.push_back(std::move(text));
    }
    return out;
}

bool RawDataLoaded() {
    return Store().RawData.UpperIndex() > 10;
}

bool ToolWindowShownAtStart(const ToolWindowKeys& keys) {
    return GetConfig(Paths().TracelabCfgPath, keys.showKey) == 1.0f;
}

void StoreToolWindowState(const ToolWindowKeys& keys, bool open, const WindowBox& box) {
    const std::string& file = Paths().TracelabCfgPath;
    if (!open) {
        SetConfig(file, keys.showKey, 0);
        return;
    }
    SetConfig(file, keys.showKey, 1);
    const std::string prefix = keys.prefix;
    SetConfig(file, prefix + "Left", static_cast<float>(box.left));
    SetConfig(file, prefix + "Top", static_cast<float>(box.top));
    SetConfig(file, prefix + "Width", static_cast<float>(box.width));
    SetConfig(file, prefix + "Height", static_cast<float>(box.height));
}

std::optional<WindowBox> StoredToolWindowBox(const ToolWindowKeys& keys) {
    const std::string& file = Paths().TracelabCfgPath;
    const std::string prefix = keys.prefix;
    WindowBox box;
    box.width = GetConfigInt(file, prefix + "Width");
    box.height = GetConfigInt(file, prefix + "Height");
    if (box.width <= 0 || box.height <= 0) return std::nullopt;
    box.left = GetConfigInt(file, prefix + "Left");
    box.top = GetConfigInt(file, prefix + "Top");
    return box;
}

std::string PathTail(const std::string& path) {
    const size_t at = path.find_last_of("\\/");
    return at == std::string::npos ? path : path.substr(at + 1);
}

std::string CarFileLabelText(int32_t run) {
    const RunStore& s = Store();
    if (run < 1 || run > s.RunCount) return {};
    const std::string& carFile = s.RunInfo[run].CarFile;
    if (Profile().HardwareSV63) {
        // The meter keeps four vehicles in the working file; CarFile is the
        // vehicle's number as text.
        const std::string key = carFile.empty() ? "Car0Name" : "Car" + carFile + "Name";
        return GetConfigString(Paths().CarCfgPath, key);
    }
    if (carFile.empty()) return "default options";
    return PathTail(carFile);
}

namespace {

std::string FormatGeneral(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

bool HumidityValid(float value) {
    return std::isfinite(value) && value >= 0.0f && value <= 150.0f;
}

}  // namespace

AmbientTexts AmbientShownFor(int32_t run) {
    RunStore& s = Store();
    if (run < 1 || run > s.RunCount) return {};
    RunRecord& r = s.RunInfo[run];
    if (r.AmbientTemperature == 0.0f) r.AmbientTemperature = 30.0f;
    if (r.AmbientPressure == 0.0f) r.AmbientPressure = 101.0f;
    if (!HumidityValid(r.AmbientHumidity)) r.AmbientHumidity = 0.0f;
    return {FormatGeneral(r.AmbientTemperature), FormatGeneral(r.AmbientHumidity),
            FormatGeneral(r.AmbientPressure)};
}

std::string SetAmbientConditions(int32_t run, const AmbientTexts& texts) {
    LogDebug("setting ambient conditions-----------------------------------------");
    const double temperature = GetVal(texts.temperature);
    const double pressure = GetVal(texts.pressure);
    const double humidity = GetVal(texts.humidity);
    if (temperature < -30 || temperature > 50)
        return "The specified ambient temperature is outside the allowable range";
    if (pressure < 80 || pressure > 120)
        return "The specified ambient pressure is outside the allowable range";
    // The form accepts relative humidities up to 150, as it always did.
    if (humidity < 0 || humidity > 150)
        return "The specified ambient relative humidity is outside the allowable range";
    RunStore& s = Store();
    if (run < 1 || run > s.RunCount) return {};
    s.RunInfo[run].AmbientTemperature = static_cast<float>(temperature);
    s.RunInfo[run].AmbientHumidity = static_cast<float>(humidity);
    s.RunInfo[run].AmbientPressure = static_cast<float>(pressure);
    return {};
}

std::vector<std::string> RecentRunFiles() {
    std::vector<std::string> files;
    for (int i = 1; i <= kRecentFileCount; ++i) {
        std::string path =
            GetConfigString(Paths().TracelabCfgPath, "RecentRunFile" + std::to_string(i));
        if (!path.empty()) files.push_back(std::move(path));
    }
    return files;
}

void AddRecentRunFile(const std::string& path) {
    if (path.empty()) return;
    std::vector<std::string> files{path};
    for (std::string& old : RecentRunFiles()) {
        if (old != path && files.size() < static_cast<size_t>(kRecentFileCount))
            files.push_back(std::move(old));
    }
    for (int i = 1; i <= kRecentFileCount; ++i) {
        const std::string value = i <= static_cast<int>(files.size()) ? files[i - 1] : "";
        SetConfigString(Paths().TracelabCfgPath, "RecentRunFile" + std::to_string(i), value);
    }
}

}  // namespace tl
