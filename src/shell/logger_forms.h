// The Logger menu's forms: frmCommSetup (the serial port), frmDownloadControl
// with DownloadOptionFrm (the run directory and the download), frmSetUpLogger
// (the HX40 logger's settings) and frmConfirmErase. The work is the link's
// (link/serial_link.h, link/download.h, link/logger_setup.h); these forms show
// it. Every wait of the link lets events run, so the window repaints and
// AbortBtn is heard while a run comes in.
#pragma once

#include <QDialog>
#include <QElapsedTimer>

#include "link/download.h"
#include "link/logger_setup.h"

class QLabel;
class QLineEdit;
class QListWidget;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QTableWidget;

namespace tl::shell {

// frmCommSetup ("Open Serial Port"): SelectPort lists the numbered ports 1 to
// 16 that open ("Serial Port " and the number) and the other serial devices
// the system knows (by path); DevicePathTxt takes a device typed by hand,
// which wins over the list. OpenPort stores the choice ("CommPort" and
// "CommPortDevice"; a device that is not a numbered port has the number 0);
// Cancel leaves the setting alone.
class CommSetupForm : public QDialog {
    Q_OBJECT
  public:
    explicit CommSetupForm(QWidget* parent = nullptr);
    // False when no port opened (the message has been shown); the form still
    // takes a device typed by hand.
    bool PortsFound() const { return portsFound_; }
    void OpenPort();

  private:
    QListWidget* list_;
    QLineEdit* device_;
    bool portsFound_ = false;
};

// frmDownloadControl. Load() reads the directory into RunListBox (a tick
// column and the run's line); DownloadBtn runs the family's flow with the
// ticked rows; AbortBtn raises the abort flag, which the download's loop sees
// at its next look at the port. The form unloads when a flow has run.
class DownloadControlForm : public QDialog {
    Q_OBJECT
  public:
    explicit DownloadControlForm(QWidget* parent = nullptr);
    // Form load: connect, read the directory, disconnect.
    void Load();
    bool Loaded() const { return loaded_; }
    void Download();
    void Abort();
    DownloadControl& Model() { return model_; }
    // Seconds from AbortBtn's click to the download's loop giving up, -1
    // before an abort reached it.
    double AbortLatency() const { return abortLatency_; }

  protected:
    void reject() override;

  private:
    void Refresh();
    void FillList();
    void SetBusy(bool busy);

    DownloadControl model_;
    QTableWidget* grid_;
    QLabel* progress_;
    QProgressBar* animation_;
    QPushButton* download_;
    QPushButton* selectAll_;
    QPushButton* clearAll_;
    QPushButton* cancel_;
    QPushButton* abort_;
    bool busy_ = false;
    bool loaded_ = false;
    QElapsedTimer abortClicked_;
    double abortLatency_ = -1.0;
};

// DownloadOptionFrm: the three ways of bringing in several runs.
class DownloadOptionForm : public QDialog {
    Q_OBJECT
  public:
    explicit DownloadOptionForm(QWidget* parent = nullptr);
    DownloadOption Choice() const;

  private:
    QRadioButton* options_[3];
};

// frmSetUpLogger: Load() reads the logger's settings into the controls; OK
// writes them back, or leaves the dialog open with a message for a value
// that is refused.
class SetUpLoggerForm : public QDialog {
    Q_OBJECT
  public:
    explicit SetUpLoggerForm(QWidget* parent = nullptr);
    // False when the logger could not be reached (the dialog then closes).
    bool Load();
    void OkClick();
    LoggerSettings Settings() const;

  private:
    void Show(const LoggerSettings& settings);
};

// frmConfirmErase: the question, and on OkButton the erase with its
// progress.
class ConfirmEraseForm : public QDialog {
    Q_OBJECT
  public:
    explicit ConfirmEraseForm(QWidget* parent = nullptr);
    void OkClick();
    EraseResult Result() const { return result_; }

  private:
    QLabel* question_;
    QProgressBar* animation_;
    QPushButton* ok_;
    QPushButton* cancel_;
    EraseResult result_ = EraseResult::NotConnected;
};

// The menu entries: each form shown modally over parent.
void ShowCommSetup(QWidget* parent);
// frmDownloadControl, then CheckInternalDataStillValid.
void ShowDownloadControl(QWidget* parent);
void ShowSetUpLogger(QWidget* parent);
void ShowConfirmErase(QWidget* parent);

}  // namespace tl::shell
