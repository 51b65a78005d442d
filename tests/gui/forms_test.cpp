// The platform's forms: frmVQMsgBox, frmPleaseWait, frmProcess, the boxes,
// the file dialogs, and the hooks into the main window.
#include <QApplication>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QTime>
#include <QToolBar>

#include <fstream>

#include "core/ui_services.h"
#include "gui_fixture.h"
#include "platform/qt/message_form.h"
#include "platform/qt/progress_form.h"
#include "platform/qt/view_window.h"
#include "shell/main_form.h"
#include "support/engine_fixture.h"

namespace tl::test {
namespace {

using qt::QtFileFilter;

TEST(QtFileFilterTest, TranslatesPairsIntoQtFilters) {
    EXPECT_EQ(QtFileFilter("Run Files|*.run|All Files|*.*"),
              QStringLiteral("Run Files (*.run);;All Files (*.*)"));
    // Several patterns of one entry become a blank-separated list.
    EXPECT_EQ(QtFileFilter("Tracelab files|*.run;*.car|Text|*.csv"),
              QStringLiteral("Tracelab files (*.run *.car);;Text (*.csv)"));
    // A single description with no pattern gets every file.
    EXPECT_EQ(QtFileFilter("Anything"), QStringLiteral("Anything (*)"));
    EXPECT_EQ(QtFileFilter("Runs|*.run|Odd"), QStringLiteral("Runs (*.run);;Odd (*)"));
    EXPECT_EQ(QtFileFilter(""), QString());
    // Descriptions that show their patterns keep one bracket, the real one.
    EXPECT_EQ(QtFileFilter("Run Data Files (*.run )|*.run|Show All Files (*.*)|*.*"),
              QStringLiteral("Run Data Files (*.run);;Show All Files (*.*)"));
    // An empty description is named by its patterns.
    EXPECT_EQ(QtFileFilter("|*.cfg"), QStringLiteral("*.cfg (*.cfg)"));
}

TEST(QtClockTest, SecondsSinceMidnightFollowsTheLocalClock) {
    const double before = QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
    const double seconds = qt::LocalSecondsSinceMidnight();
    const double after = QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
    ASSERT_GE(seconds, 0.0);
    ASSERT_LT(seconds, 86400.0);
    if (after >= before) {  // not across midnight
        EXPECT_GE(seconds, before);
        EXPECT_LE(seconds, after);
    }
}

class FormsTest : public GuiTest {};

TEST_F(FormsTest, MessageFormShowsTextTitleAndSizesToItsLines) {
    shell::MainForm main;
    main.show();
    platform.SetMainWindow(&main);

    int lines = -1;
    int textBottom = 0, buttonTop = 0;
    bool centred = false;
    ModalWatcher watcher([&](QWidget* form) {
        auto* box = qobject_cast<qt::VQMsgBox*>(form);
        if (box == nullptr) return true;
        lines = box->LineCount();
        auto* text = box->findChild<QPlainTextEdit*>(QStringLiteral("MsgText"));
        auto* ok = box->findChild<QPushButton*>(QStringLiteral("OkButton"));
        if (text == nullptr || ok == nullptr) return true;
        EXPECT_TRUE(text->isReadOnly());
        textBottom = text->geometry().bottom();
        buttonTop = ok->geometry().top();
        centred =
            (box->frameGeometry().center() - main.frameGeometry().center()).manhattanLength() <= 4;
        ok->click();
        return false;
    });
    Message("First line\r\nSecond line\r\nThird line");
    ASSERT_EQ(watcher.seen.size(), 1u);
    EXPECT_EQ(watcher.seen[0].objectName, QStringLiteral("frmVQMsgBox"));
    EXPECT_EQ(watcher.seen[0].title, QStringLiteral("Error Report"));
    EXPECT_EQ(watcher.seen[0].text, QStringLiteral("First line\nSecond line\nThird line"));
    EXPECT_EQ(lines, 3);
    EXPECT_GT(buttonTop, textBottom);
    EXPECT_TRUE(centred);
}

TEST_F(FormsTest, MessageFormCountsWrappedLinesAndCapsItsHeight) {
    qt::VQMsgBox box;
    box.SetMessage(QStringLiteral("short"));
    const int oneLine = box.findChild<QPlainTextEdit*>(QStringLiteral("MsgText"))->height();
    EXPECT_EQ(box.LineCount(), 1);

    box.SetMessage(
        QString(60, QLatin1Char(' ')).replace(QLatin1Char(' '), QStringLiteral("word ")));
    EXPECT_GT(box.LineCount(), 1);  // one paragraph, wrapped at the box's width
    const int wrapped = box.findChild<QPlainTextEdit*>(QStringLiteral("MsgText"))->height();
    EXPECT_GT(wrapped, oneLine);

    QStringList many;
    for (int i = 0; i < 200; ++i) many << QString::number(i);
    box.SetMessage(many.join(QLatin1Char('\n')));
    EXPECT_EQ(box.LineCount(), 200);
    const int capped = box.findChild<QPlainTextEdit*>(QStringLiteral("MsgText"))->height();
    // The box stops growing; the text scrolls.
    EXPECT_LT(capped, 200 * oneLine / 2);
    EXPECT_GT(capped, wrapped);
}

TEST_F(FormsTest, MessageHidesTheWaitFormFirst) {
    shell::MainForm main;
    main.show();
    platform.SetMainWindow(&main);
    ShowPleaseWait("Loading the run");
    ASSERT_TRUE(platform.IsWaitShown());
    bool waitVisibleDuringMessage = true;
    ModalWatcher watcher([&](QWidget*) {
        waitVisibleDuringMessage = platform.IsWaitShown();
        return true;
    });
    Message("Cannot open the file");
    ASSERT_TRUE(watcher.Saw(QStringLiteral("frmVQMsgBox")));
    EXPECT_FALSE(waitVisibleDuringMessage);
}

TEST_F(FormsTest, WaitFormShowsReasonOnTopWithBusyCursorAndOneHideEndsIt) {
    shell::MainForm main;
    main.show();
    platform.SetMainWindow(&main);

    ShowPleaseWait("Loading data from file");
    QWidget* wait = FindTopLevel(QStringLiteral("frmPleaseWait"));
    ASSERT_NE(wait, nullptr);
    EXPECT_TRUE(wait->isVisible());
    EXPECT_TRUE(wait->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    auto* reason = wait->findChild<QLabel*>(QStringLiteral("ReasonForWait"));
    ASSERT_NE(reason, nullptr);
    EXPECT_EQ(reason->text(), QStringLiteral("Loading data from file"));
    EXPECT_EQ(main.cursor().shape(), Qt::WaitCursor);

    // Nesting is not counted: a second show changes the text, one hide ends both.
    ShowPleaseWait("Saving data to file");
    EXPECT_EQ(reason->text(), QStringLiteral("Saving data to file"));
    HidePleaseWait();
    Settle();
    EXPECT_FALSE(platform.IsWaitShown());
    EXPECT_EQ(FindTopLevel(QStringLiteral("frmPleaseWait")), nullptr);
    EXPECT_EQ(main.cursor().shape(), Qt::ArrowCursor);
}

TEST_F(FormsTest, ProgressLinesReachProgressTextAndScrollToTheEnd) {
    shell::MainForm main;
    main.show();
    platform.SetMainWindow(&main);

    ShowNonModal();
    SetProcessCaption("Processing run 1");
    QWidget* form = FindTopLevel(QStringLiteral("frmProcess"));
    ASSERT_NE(form, nullptr);
    EXPECT_TRUE(form->isVisible());
    EXPECT_FALSE(qobject_cast<QDialog*>(form)->isModal());
    EXPECT_EQ(form->windowTitle(), QStringLiteral("Processing run 1"));
    // No animation is shipped: Animation1 shows the busy bar.
    auto* bar = form->findChild<QProgressBar*>();
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(bar->maximum(), 0);

    DispProg("");  // an empty text adds nothing
    for (int i = 1; i <= 60; ++i) DispProg("Converting step " + std::to_string(i));
    auto* text = form->findChild<QPlainTextEdit*>(QStringLiteral("ProgressText"));
    ASSERT_NE(text, nullptr);
    const QStringList lines = text->toPlainText().split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 60);
    EXPECT_TRUE(lines.front().endsWith(QStringLiteral("s  :  Converting step 1")));
    EXPECT_TRUE(lines.back().endsWith(QStringLiteral("s  :  Converting step 60")));
    EXPECT_EQ(lines.back().indexOf(QStringLiteral("s  :  ")), 5);  // "@@@@@" field
    EXPECT_GT(text->verticalScrollBar()->maximum(), 0);
    EXPECT_EQ(text->verticalScrollBar()->value(), text->verticalScrollBar()->maximum());

    HideNonModal();
    Settle();
    EXPECT_EQ(FindTopLevel(QStringLiteral("frmProcess")), nullptr);
}

TEST_F(FormsTest, ProgressAnimationFallsBackToBusyBarForUnplayableFiles) {
    TempDir dir;
    const std::string avi = dir.file("Process.avi");
    std::ofstream(avi) << "RIFF not really a movie";
    qt::ProcessForm form;
    form.StartAnimation(QString::fromStdString(avi));
    EXPECT_FALSE(form.MoviePlaying());
    auto* bar = form.findChild<QProgressBar*>();
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(bar->maximum(), 0);
    form.StopAnimation();
    EXPECT_EQ(bar->maximum(), 1);
}

TEST_F(FormsTest, QuestionBoxesReturnTheButtonChosen) {
    std::vector<QMessageBox::StandardButton> answers{QMessageBox::Yes, QMessageBox::No,
                                                     QMessageBox::Ok, QMessageBox::Cancel};
    size_t next = 0;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    ModalWatcher watcher([&](QWidget* form) {
        auto* box = qobject_cast<QMessageBox*>(form);
        if (box == nullptr) return true;
        icon = box->icon();
        if (box->objectName() == QStringLiteral("PlainMessageBox")) return true;
        box->button(answers.at(next++))->click();
        return false;
    });
    EXPECT_TRUE(YesNoBox("Continue?", "This will clear all raw and processed run data"));
    EXPECT_EQ(icon, QMessageBox::Question);
    EXPECT_FALSE(YesNoBox("Continue?", "Again?"));
    EXPECT_TRUE(OkCancelBox("Erase", "Erase the logger?"));
    EXPECT_FALSE(OkCancelBox("Erase", "Erase the logger?"));
    PlainMessage("A crutial system file could not be found", "Tracelab");
    ASSERT_EQ(watcher.seen.size(), 5u);
    EXPECT_EQ(watcher.seen[0].objectName, QStringLiteral("YesNoBox"));
    EXPECT_EQ(watcher.seen[0].title, QStringLiteral("Continue?"));
    EXPECT_EQ(watcher.seen[2].objectName, QStringLiteral("OkCancelBox"));
    EXPECT_EQ(watcher.seen[4].objectName, QStringLiteral("PlainMessageBox"));
    EXPECT_EQ(watcher.seen[4].text, QStringLiteral("A crutial system file could not be found"));
}

TEST_F(FormsTest, InputBoxReturnsTextOrNothingOnCancel) {
    bool cancel = false;
    ModalWatcher watcher([&](QWidget* form) {
        auto* dialog = qobject_cast<QDialog*>(form);
        if (dialog == nullptr) return true;
        if (cancel) {
            dialog->reject();
            return false;
        }
        return true;
    });
    EXPECT_EQ(platform.InputBox("Name of the run", "Rename", "Monza"),
              std::optional<std::string>("Monza"));
    cancel = true;
    EXPECT_EQ(platform.InputBox("Name of the run", "Rename", "Monza"), std::nullopt);
}

TEST_F(FormsTest, OpenDialogIsMultiSelectWithTranslatedFilterAndDirectory) {
    TempDir dir;
    std::ofstream(dir.file("a.run")) << "x";
    std::ofstream(dir.file("b.run")) << "y";
    QFileDialog::FileMode mode = QFileDialog::AnyFile;
    QStringList filters;
    QString directory;
    ModalWatcher watcher([&](QWidget* form) {
        auto* dialog = qobject_cast<QFileDialog*>(form);
        if (dialog == nullptr) return true;
        mode = dialog->fileMode();
        filters = dialog->nameFilters();
        directory = dialog->directory().absolutePath();
        // Typed as a user would: two names in quotes.
        auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        if (name == nullptr) {
            dialog->reject();
            return false;
        }
        name->setText(QStringLiteral("\"a.run\" \"b.run\""));
        return true;
    });
    FileDialogRequest request;
    request.title = "Load Run Data";
    request.filter = "Run Files|*.run|All Files|*.*";
    request.initialDir = dir.path().string();
    request.multiSelect = true;
    const std::vector<std::string> chosen = platform.OpenFiles(request);
    ASSERT_EQ(watcher.seen.size(), 1u);
    EXPECT_EQ(watcher.seen[0].objectName, QStringLiteral("CommDialog1"));
    EXPECT_EQ(watcher.seen[0].title, QStringLiteral("Load Run Data"));
    EXPECT_EQ(mode, QFileDialog::ExistingFiles);
    EXPECT_EQ(filters, (QStringList{QStringLiteral("Run Files (*.run)"),
                                    QStringLiteral("All Files (*.*)")}));
    EXPECT_EQ(directory.toStdString(), std::filesystem::canonical(dir.path()).string());
    ASSERT_EQ(chosen.size(), 2u);
    EXPECT_EQ(std::filesystem::canonical(chosen[0]), std::filesystem::canonical(dir.file("a.run")));
    EXPECT_EQ(std::filesystem::canonical(chosen[1]), std::filesystem::canonical(dir.file("b.run")));
}

TEST_F(FormsTest, SaveDialogAsksBeforeOverwritingOnlyWhenTold) {
    TempDir dir;
    bool confirms = false;
    ModalWatcher watcher([&](QWidget* form) {
        auto* dialog = qobject_cast<QFileDialog*>(form);
        if (dialog == nullptr) return true;
        confirms = !dialog->testOption(QFileDialog::DontConfirmOverwrite);
        dialog->reject();
        return false;
    });
    FileDialogRequest request;
    request.filter = "Run Files|*.run";
    request.initialDir = dir.path().string();
    request.overwritePrompt = true;
    EXPECT_EQ(platform.SaveFile(request), std::nullopt);  // cancelled
    EXPECT_TRUE(confirms);
    request.overwritePrompt = false;
    EXPECT_EQ(platform.SaveFile(request), std::nullopt);
    EXPECT_FALSE(confirms);
}

// A view as the later views will be: a widget that can regenerate itself.
class CountingView : public QWidget, public qt::ViewWindow {
  public:
    int regenerations = 0;
    void Regenerate() override { ++regenerations; }
};

TEST_F(FormsTest, ShellHooksReachMenusToolbarCursorAndViews) {
    auto* main = new shell::MainForm;
    main->menuBar()->addMenu(QStringLiteral("&File"));
    main->show();
    platform.SetMainWindow(main);

    DisableAllForms();
    EXPECT_FALSE(main->menuBar()->isEnabled());
    EXPECT_FALSE(main->Toolbar()->isEnabled());
    EXPECT_FALSE(main->MdiArea()->isEnabled());
    EnableAllForms();
    EXPECT_TRUE(main->menuBar()->isEnabled());
    EXPECT_TRUE(main->Toolbar()->isEnabled());
    EXPECT_TRUE(main->MdiArea()->isEnabled());
    EXPECT_TRUE(main->MdiArea()->updatesEnabled());

    SetAllMousePointers(11);
    SetAllMousePointers(11);
    ASSERT_NE(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
    SetAllMousePointers(0);  // one reset undoes any number of hourglasses
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);

    auto* view = new CountingView;
    QMdiSubWindow* sub = main->MdiArea()->addSubWindow(view);
    sub->show();
    auto* plain = new QWidget;  // not a view: left alone
    main->MdiArea()->addSubWindow(plain)->show();
    ASSERT_EQ(platform.OpenViews().size(), 1u);
    CurrentPlatform().shell->RefreshOpenViews();
    EXPECT_EQ(view->regenerations, 1);
    CurrentPlatform().shell->UnloadAllViews();
    Settle();
    EXPECT_EQ(main->MdiArea()->subWindowList().size(), 1);
    EXPECT_TRUE(platform.OpenViews().empty());

    CurrentPlatform().shell->UnloadMainForm();
    EXPECT_EQ(platform.MainWindow(), nullptr);
    Settle();
    EXPECT_EQ(FindTopLevel(QStringLiteral("frmMain")), nullptr);
}

}  // namespace
}  // namespace tl::test
