// Rows that every dialog of the program ends with.
#pragma once

class QBoxLayout;
class QDialog;
class QPushButton;

namespace tl::shell {

// The OK and Cancel row under a dialog's layout, named okName and
// cancelName; OK is the default button and Cancel closes with nothing
// stored. Returns OK, for the dialog to connect its own work to.
QPushButton* AddOkCancel(QDialog* dialog, QBoxLayout* layout, const char* okName,
                         const char* cancelName = "Cancel");

}  // namespace tl::shell
