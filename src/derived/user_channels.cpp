#include "derived/user_channels.h"

#include <cmath>
#include <cstdio>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/support.h"
#include "core/ui_services.h"
#include "derived/derived_common.h"
#include "derived/formula_evaluator.h"
#include "store/field_records.h"
#include "store/run_procedures.h"

namespace tl {

namespace {

constexpr const char* kConstNames[kUserConstCount] = {
    "CAR_1", "CAR_2",  "CAR_3", "CAR_4", "CAR_5", "CAR_6", "CAR_7", "CAR_8",
    "CAR_9", "CAR_10", "CdA",   "Roll",  "Mass",  "Temp",  "Press", "Humid"};

// The value of constant index (0 to 15) for the run.
double ConstValue(int index, int32_t run) {
    const std::string& car = Paths().CarCfgPath;
    if (index < 10) return GetConfig(car, "Car Constant" + std::to_string(index + 1));
    const RunRecord& rec = Store().RunInfo[run];
    switch (index) {
        case 10:
            return GetConfig(car, "CdaVal");
        case 11:
            return GetConfig(car, "RollingVal");
        case 12:
            return GetConfig(car, "CarMass");
        case 13:
            return rec.AmbientTemperature;
        case 14:
            return rec.AmbientPressure;
        default:
            return rec.AmbientHumidity;
    }
}

// Quotes end a field in the file and line ends end a record: neither can be
// kept inside a name or a formula.
std::string FieldText(const std::string& s) {
    std::string out;
    for (char c : s)
        if (c != '"' && c != '\r' && c != '\n') out += c;
    return out;
}

}  // namespace

const char* UserConstName(int index) {
    return index >= 0 && index < kUserConstCount ? kConstNames[index] : "";
}

std::string UserVarName(int slotNumber) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "VAR_%02d", slotNumber);
    return buf;
}

bool CheckInputsRequired(const std::string& formula, std::vector<int>& slots,
                         std::vector<bool>& consts) {
    slots.clear();
    consts.assign(kUserConstCount, false);
    return ProcedureValue("CheckInputsRequired", false, [&] {
        FormulaEvaluator ev;
        for (int s = 1; s <= kNoDataSlot; ++s) ev.DefineVariable(UserVarName(s), 1.0);
        for (int c = 0; c < kUserConstCount; ++c) ev.DefineVariable(kConstNames[c], 1.0);
        if (!ev.SetFormula(formula)) {
            LogDebug("formula rejected: " + ev.Error());
            return false;
        }
        for (int s = 1; s <= kNoDataSlot; ++s) {
            if (ev.IsUsed(UserVarName(s))) {
                LogDebug(Catalogue().RunVars[s].Name + " is required");
                slots.push_back(s);
            }
        }
        for (int c = 0; c < kUserConstCount; ++c) consts[c] = ev.IsUsed(kConstNames[c]);
        return true;
    });
}

void CalculateUserVar(const std::string& formula, const std::vector<int>& slots,
                      const std::vector<bool>& consts, int32_t column, int32_t run) {
    Procedure("CalculateUserVar", [&] {
        const auto rows = derived::RowsOf(run);
        RunArray& rd = Store().RunData;
        if (!rows.ok || column < 0 || column >= rd.Columns()) return;
        FormulaEvaluator ev;
        for (int c = 0; c < kUserConstCount && c < static_cast<int>(consts.size()); ++c)
            if (consts[c]) ev.DefineVariable(kConstNames[c], ConstValue(c, run));
        // Per row only the variables the formula reads are set.
        struct Input {
            const float* column;
            double* value;
        };
        std::vector<Input> inputs;
        for (int s : slots) {
            if (s < 1 || s > kNoDataSlot) continue;
            const float* src = derived::Col(s);
            if (!src) continue;
            inputs.push_back({src, ev.DefineVariable(UserVarName(s), 0.0)});
        }
        if (!ev.SetFormula(formula)) return;
        float* out = rd.Column(column).data();
        for (int32_t i = rows.first; i <= rows.last; ++i) {
            for (const Input& in : inputs) *in.value = in.column[i];
            const double r = ev.Evaluate();
            if (r > -1.0e20 && r < 1.0e20)
                out[i] = static_cast<float>(r);
            else if (r >= 1.0e20)
                out[i] = 1.0e20f;
            else if (r <= -1.0e20)
                out[i] = -1.0e20f;
            else
                out[i] = 0.0f;  // not a number (0/0): nothing sensible to hold
        }
    });
}

std::vector<UserChannel> ReadUserChannels(const std::string& path) {
    std::vector<UserChannel> out;
    if (!FileReadable(path)) return out;
    for (const auto& rec : ReadFieldRecords(path, 3)) {
        UserChannel c;
        c.name = rec[0];
        c.formula = rec[1];
        c.flag = static_cast<int>(GetVal(rec[2]));
        out.push_back(std::move(c));
    }
    return out;
}

bool SaveUserChannels(const std::string& path, const std::vector<UserChannel>& channels) {
    std::string text;
    for (const auto& c : channels)
        text += "\"" + FieldText(c.name) + "\",\"" + FieldText(c.formula) + "\"," +
                std::to_string(static_cast<int16_t>(c.flag)) + "\r\n";
    return WriteFileAtomically(path, text);
}

void CalculateUserChannels(int32_t run) {
    Procedure("CalculateUserChannels", [&] {
        LogDebug("calculate the user channels for run " + std::to_string(run));
        const auto rows = derived::RowsOf(run);
        if (!rows.ok) return;
        const std::string& path = Paths().UserVarsCfgPath;
        if (!FileReadable(path)) return;
        // Slots follow the named records only, as the catalogue gives them out:
        // a record without a name holds no slot.
        int s = kFirstUserSlot;
        const int32_t scratch = ColumnOf(kNoDataSlot);
        for (const UserChannel& c : ReadUserChannels(path)) {
            if (c.name.empty()) continue;
            if (s > 199) break;
            DispProg("Calculating " + c.name);
            LogDebug(c.name + " = " + c.formula);
            std::vector<int> slots;
            std::vector<bool> consts;
            if (CheckInputsRequired(c.formula, slots, consts)) {
                const int32_t column = FindVarIndex("U:" + c.name);
                LogDebug("results will go to " + std::to_string(column));
                // A disabled channel would only fill the shared "*No Data*"
                // column, which the pipeline clears at its end anyway.
                if (column != scratch) CalculateUserVar(c.formula, slots, consts, column, run);
            } else {
                LogDebug("error in user variable");
                Message("There is an error in the definition of user variable " + c.name);
                DeleteVariableData(rows.first, rows.last, s);
            }
            ++s;
        }
    });
}

}  // namespace tl
