// The option dialogs: frmCarOptions, frmTracelabOptions, frmRefLapOptions,
// frmSetDefaultDirectories with frmSelectDirectory, frmSelectGraphXAxis.
// Each loads keys of a configuration file into its controls on opening and
// stores them on Okay; Cancel closes with nothing stored. The key tables are
// in store/options_model.h.
#pragma once

#include <QDialog>
#include <QString>

class QTableWidget;
class QLineEdit;

namespace tl::shell {

// frmCarOptions over CarCfgPath. The GearRatioVal boxes are named
// GearRatioVal1 to GearRatioVal7 (one per key) in place of one control array.
class CarOptionsForm : public QDialog {
    Q_OBJECT
  public:
    explicit CarOptionsForm(QWidget* parent = nullptr);
    void Save();
};

// frmTracelabOptions over TracelabCfgPath, with the filter grid
// MsGridFilterOptions (one row per enabled variable).
class TracelabOptionsForm : public QDialog {
    Q_OBJECT
  public:
    explicit TracelabOptionsForm(QWidget* parent = nullptr);
    void Save();

  private:
    QTableWidget* grid_;
};

// frmRefLapOptions: RunNameRefLapCbo and NumLapBeaconsTxt.
class RefLapOptionsForm : public QDialog {
    Q_OBJECT
  public:
    explicit RefLapOptionsForm(QWidget* parent = nullptr);
};

// frmSetDefaultDirectories: RunPath, CarPath, ExportPath with their
// "Change.." buttons.
class DefaultDirectoriesForm : public QDialog {
    Q_OBJECT
  public:
    explicit DefaultDirectoriesForm(QWidget* parent = nullptr);
};

// frmSelectDirectory: a directory chooser answering the chosen path, empty
// when cancelled.
QString SelectDirectory(QWidget* parent, const QString& start);

// frmSelectGraphXAxis: answers through GraphXAxisVar().
class SelectGraphXAxisForm : public QDialog {
    Q_OBJECT
  public:
    explicit SelectGraphXAxisForm(QWidget* parent = nullptr);
};

// mnuHelpAbout: frmStartBanner.
void ShowAboutBanner(QWidget* parent);

}  // namespace tl::shell
