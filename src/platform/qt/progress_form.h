// frmProcess: the non-modal progress window of conversions, with the text box
// ProgressText (one line per step, scrolled to the end after each) and the
// animation Animation1.
//
// The original played Process.avi in an animation control. Qt has no AVI
// player in its widget set; QMovie plays the animated image formats (GIF, and
// others where the image plug-ins are installed). So Animation1 plays the given
// file with QMovie when it exists and Qt can read it, and otherwise shows an
// indeterminate (busy) progress bar, which tells the user the same thing: work
// is going on.
#pragma once

#include <QDialog>
#include <QString>

class QLabel;
class QMovie;
class QPlainTextEdit;
class QProgressBar;
class QStackedWidget;

namespace tl::qt {

class ProcessForm : public QDialog {
    Q_OBJECT
  public:
    explicit ProcessForm(QWidget* parent = nullptr);
    ~ProcessForm() override;
    // Starts Animation1: the movie when animationPath is playable, else the
    // busy bar.
    void StartAnimation(const QString& animationPath);
    void StopAnimation();
    // Appends one line to ProgressText (a trailing CR LF is dropped: each
    // call is one line) and scrolls to the end.
    void AppendLine(const QString& line);
    // True while the movie (not the busy bar) is playing.
    bool MoviePlaying() const;

  private:
    QPlainTextEdit* progressText_;
    QStackedWidget* animation_;
    QLabel* movieLabel_;
    QProgressBar* busyBar_;
    QMovie* movie_ = nullptr;
};

}  // namespace tl::qt
