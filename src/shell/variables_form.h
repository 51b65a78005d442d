// frmSetActiveVariables: the user's choice of variables. VarListBox lists the
// available, not always-on slots with check marks; SetAllVars and ReSetAllVars
// tick and clear all; Okay stores the choice (asking to reprocess), Cancel
// leaves everything. The logic is ActiveVariablesList (store/active_variables.h).
#pragma once

#include <QDialog>

#include "road/active_variables.h"

class QListWidget;

namespace tl::shell {

class ActiveVariablesForm : public QDialog {
    Q_OBJECT
  public:
    explicit ActiveVariablesForm(QWidget* parent = nullptr);

  private:
    void Fill();
    void TakeChecks();
    ActiveVariablesList list_;
    QListWidget* box_;
};

}  // namespace tl::shell
