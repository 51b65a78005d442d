#include "shell/user_channels_model.h"

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/log.h"
#include "core/ui_services.h"
#include "road/run_road.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"
#include "store/run_store.h"

namespace tl {

namespace {

std::string CleanName(const std::string& name) {
    std::string out;
    for (char c : name)
        if (c != '"' && c != '\r' && c != '\n') out += c;
    const size_t first = out.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    return out.substr(first, out.find_last_not_of(' ') - first + 1);
}

constexpr const char* kConstTexts[kUserConstCount] = {
    "Car Constant 1 [-]",  "Car Constant 2 [-]",          "Car Constant 3 [-]",
    "Car Constant 4 [-]",  "Car Constant 5 [-]",          "Car Constant 6 [-]",
    "Car Constant 7 [-]",  "Car Constant 8 [-]",          "Car Constant 9 [-]",
    "Car Constant 10 [-]", "Aerodynamic Resistance [m2]", "Rolling Resistance [N/m2]",
    "Vehicle Mass [kg]",   "Ambient Temperature [C]",     "Ambient Pressure [kPa]",
    "Ambient Humidity [%]"};

std::vector<std::string> NamesOf(const std::vector<UserChannel>& channels) {
    std::vector<std::string> names;
    for (const UserChannel& c : channels) names.push_back(c.name);
    return names;
}

}  // namespace

void UserChannelsModel::Load() {
    rows.clear();
    for (UserChannel& c : ReadUserChannels(Paths().UserVarsCfgPath)) {
        if (c.name.empty()) continue;
        if (static_cast<int>(rows.size()) >= kMaxChannels) break;
        rows.push_back(std::move(c));
    }
    loaded_ = rows;
}

std::vector<FormulaName> UserChannelsModel::VariablesAvailable() {
    std::vector<FormulaName> names;
    const auto& vars = Catalogue().RunVars;
    for (int s = 1; s < kNoDataSlot; ++s) {
        if (vars[s].Enabled) names.push_back({UserVarName(s), vars[s].Name});
    }
    return names;
}

std::vector<FormulaName> UserChannelsModel::SystemConstants() {
    std::vector<FormulaName> names;
    for (int i = 0; i < kUserConstCount; ++i) names.push_back({UserConstName(i), kConstTexts[i]});
    return names;
}

int UserChannelsModel::Insert(int at, const std::string& name) {
    const std::string clean = CleanName(name);
    if (clean.empty() || static_cast<int>(rows.size()) >= kMaxChannels) return -1;
    if (at < 0 || at > static_cast<int>(rows.size())) at = static_cast<int>(rows.size());
    rows.insert(rows.begin() + at, UserChannel{clean, std::string(), 0});
    return at;
}

bool UserChannelsModel::Rename(int row, const std::string& name) {
    const std::string clean = CleanName(name);
    if (row < 0 || row >= static_cast<int>(rows.size()) || clean.empty()) return false;
    rows[row].name = clean;
    return true;
}

void UserChannelsModel::Delete(int row) {
    if (row >= 0 && row < static_cast<int>(rows.size())) rows.erase(rows.begin() + row);
}

void UserChannelsModel::SetFormula(int row, const std::string& formula) {
    if (row >= 0 && row < static_cast<int>(rows.size())) rows[row].formula = formula;
}

bool UserChannelsModel::NamesChanged() const {
    return NamesOf(rows) != NamesOf(loaded_);
}

bool UserChannelsModel::FormulasChanged() const {
    if (rows.size() != loaded_.size()) return true;
    for (size_t i = 0; i < rows.size(); ++i)
        if (rows[i].formula != loaded_[i].formula) return true;
    return false;
}

int UserChannelsModel::FirstBadFormula() const {
    for (size_t i = 0; i < rows.size(); ++i) {
        std::vector<int> slots;
        std::vector<bool> consts;
        if (!CheckInputsRequired(rows[i].formula, slots, consts)) return static_cast<int>(i);
    }
    return -1;
}

UserChannelsModel::OkayResult UserChannelsModel::Okay() {
    // Design note: the form checks every formula before it saves, with the
    // message the processing would give, so that a typing error is seen while
    // the editor is still open rather than at the next reprocess of each run.
    if (const int bad = FirstBadFormula(); bad >= 0) {
        Message("There is an error in the definition of user variable " + rows[bad].name);
        return OkayResult::BadFormula;
    }
    const bool namesChanged = NamesChanged();
    const bool runsLoaded = Store().RunCount > 0;
    if (namesChanged && runsLoaded &&
        !OkCancelBox("Reprocess",
                     "To change the variables available, all the runs will need reprocessing, do "
                     "you wish to continue?"))
        return OkayResult::Cancelled;
    const std::string& path = Paths().UserVarsCfgPath;
    LogDebug("save the user variables to " + path);
    if (!SaveUserChannels(path, rows)) {
        Message("system file " + path + " is inaccessible, the user variable data connot be saved");
        return OkayResult::SaveFailed;
    }
    const bool formulasChanged = FormulasChanged();
    if (namesChanged) {
        // The selection lines of user channels ("U:" + name) are re-registered:
        // stale ones go, a channel keeps its tick under its (new) place, and a
        // channel the user has just made is ticked, so that it is calculated.
        const std::string& cfg = Paths().TracelabCfgPath;
        std::vector<std::string> ticked;
        for (const UserChannel& c : rows) {
            bool isNew = true;
            for (const UserChannel& old : loaded_)
                if (old.name == c.name) isNew = false;
            if (isNew || GetConfig(cfg, "U:" + c.name) == -1.0f) ticked.push_back(c.name);
        }
        RemoveUserVarsFromConfig();
        for (const std::string& name : ticked) SetConfig(cfg, "U:" + name, -1.0f);
        SetAvailableVars();
        if (runsLoaded) ReprocessAllRuns();
    } else if (formulasChanged && runsLoaded && ReprocessQuestion()) {
        ReprocessAllRuns();
    }
    loaded_ = rows;
    return OkayResult::Saved;
}

}  // namespace tl
