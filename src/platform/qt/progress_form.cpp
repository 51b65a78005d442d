#include "platform/qt/progress_form.h"

#include <QFileInfo>
#include <QLabel>
#include <QMovie>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QScrollBar>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace tl::qt {

ProcessForm::ProcessForm(QWidget* parent) : QDialog(parent, Qt::Tool) {
    setObjectName(QStringLiteral("frmProcess"));
    setWindowTitle(QStringLiteral("Processing"));
    setModal(false);

    animation_ = new QStackedWidget(this);
    animation_->setObjectName(QStringLiteral("Animation1"));
    movieLabel_ = new QLabel(animation_);
    movieLabel_->setAlignment(Qt::AlignCenter);
    busyBar_ = new QProgressBar(animation_);
    busyBar_->setTextVisible(false);
    busyBar_->setRange(0, 1);
    busyBar_->setValue(0);
    animation_->addWidget(movieLabel_);
    animation_->addWidget(busyBar_);
    animation_->setCurrentWidget(busyBar_);
    animation_->setFixedHeight(48);

    progressText_ = new QPlainTextEdit(this);
    progressText_->setObjectName(QStringLiteral("ProgressText"));
    progressText_->setReadOnly(true);
    progressText_->setLineWrapMode(QPlainTextEdit::NoWrap);
    progressText_->setMinimumSize(420, 180);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(animation_);
    layout->addWidget(progressText_, 1);
}

ProcessForm::~ProcessForm() {
    StopAnimation();
}

void ProcessForm::StartAnimation(const QString& animationPath) {
    StopAnimation();
    if (!animationPath.isEmpty() && QFileInfo(animationPath).isReadable()) {
        auto* movie = new QMovie(animationPath, QByteArray(), this);
        if (movie->isValid()) {
            movie_ = movie;
            movieLabel_->setMovie(movie_);
            animation_->setCurrentWidget(movieLabel_);
            movie_->start();
            return;
        }
        delete movie;
    }
    // No playable animation: a busy bar (minimum and maximum both 0).
    busyBar_->setRange(0, 0);
    animation_->setCurrentWidget(busyBar_);
}

void ProcessForm::StopAnimation() {
    if (movie_ != nullptr) {
        movie_->stop();
        movieLabel_->setMovie(nullptr);
        delete movie_;
        movie_ = nullptr;
    }
    busyBar_->setRange(0, 1);
    busyBar_->setValue(0);
}

bool ProcessForm::MoviePlaying() const {
    return movie_ != nullptr && movie_->state() == QMovie::Running;
}

void ProcessForm::AppendLine(const QString& line) {
    QString text = line;
    while (text.endsWith(QLatin1Char('\n')) || text.endsWith(QLatin1Char('\r'))) text.chop(1);
    progressText_->appendPlainText(text);
    progressText_->moveCursor(QTextCursor::End);
    progressText_->ensureCursorVisible();
    if (QScrollBar* bar = progressText_->verticalScrollBar()) bar->setValue(bar->maximum());
}

}  // namespace tl::qt
