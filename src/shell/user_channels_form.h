// frmUserChannels, "User Defined Variables": the grid of user channels
// (MsGridUserChannels, name and formula), the formula box NumberEditTxtBox
// that edits the selected channel's formula, the names a formula may use
// (MSFlexGridVarNames "Existing Variables", MSFlexGridConstants "System
// Constants"; a double click puts the name into the formula), and the buttons
// InsertChannel, EditChannel, DeleteChannel, OK and Cancel. The logic is
// UserChannelsModel.
#pragma once

#include <QDialog>

#include "shell/user_channels_model.h"

class QLineEdit;
class QTableWidget;

namespace tl::shell {

class UserChannelsForm : public QDialog {
    Q_OBJECT
  public:
    explicit UserChannelsForm(QWidget* parent = nullptr);
    const UserChannelsModel& Model() const { return model_; }

  private:
    void FillChannels(int select);
    void RegenVariablesAvailable();
    void InsertChannel();
    void EditChannel();
    void DeleteChannel();
    void ShowFormulaOf(int row);
    void PutName(const QTableWidget* grid, int row);
    int CurrentRow() const;

    UserChannelsModel model_;
    QTableWidget* channels_;
    QTableWidget* varNames_;
    QTableWidget* constants_;
    QLineEdit* formula_;
    bool filling_ = false;
};

}  // namespace tl::shell
