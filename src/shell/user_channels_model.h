// The logic of frmUserChannels ("User Defined Variables") without its window:
// the channel rows as the user edits them, the two lists of names a formula
// may use, and what OK does. The window (user_channels_form.h) only shows
// this and forwards clicks.
#pragma once

#include <string>
#include <vector>

#include "derived/user_channels.h"

namespace tl {

// A name a formula may use, and what it stands for.
struct FormulaName {
    std::string name;  // "VAR_08", "CAR_1", "CdA", ...
    std::string text;  // the variable's name, "Car Constant 1 [-]", ...
};

class UserChannelsModel {
  public:
    // Channels 100 to 199.
    static constexpr int kMaxChannels = 100;

    // Form_Load: the records of the file at UserVarsCfgPath. Records without
    // a name hold no slot and are dropped here.
    void Load();

    // RegenVariablesAvailable: every enabled slot by its VAR_ name and text.
    static std::vector<FormulaName> VariablesAvailable();
    // The sixteen constants with the texts they are shown by.
    static std::vector<FormulaName> SystemConstants();

    // InsertChannel: a new row with the name and an empty formula before row
    // at (at the end when at is out of range). Quotes and line ends cannot be
    // kept in the file and are dropped from the name. Returns the new row, or
    // -1 when the name is empty or all slots are taken.
    int Insert(int at, const std::string& name);
    // EditChannel: the row's new name (same cleaning); false when refused.
    bool Rename(int row, const std::string& name);
    // DeleteChannel: the row goes; later channels move up one slot.
    void Delete(int row);
    void SetFormula(int row, const std::string& formula);

    // Whether the list of names differs from the one loaded.
    bool NamesChanged() const;
    // The first row whose formula the evaluator refuses; -1 when all pass.
    int FirstBadFormula() const;

    enum class OkayResult { Saved, BadFormula, Cancelled, SaveFailed };
    // OK: a refused formula is reported ("There is an error in the definition
    // of user variable " and the name) and the form stays open. When the
    // names changed and runs are loaded, the "Reprocess" question comes;
    // Cancel keeps the form open. SaveUserVars writes the file; then the
    // catalogue takes the new names and the runs are reprocessed.
    OkayResult Okay();

    std::vector<UserChannel> rows;

  private:
    bool FormulasChanged() const;
    std::vector<UserChannel> loaded_;
};

}  // namespace tl
