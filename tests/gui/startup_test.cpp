// The start of the program with its real windows: Main on a fresh
// configuration root, the banner, frmMain, the first-run form and marker.
#include <QDesktopServices>
#include <QLabel>
#include <QMainWindow>
#include <QMdiArea>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTextBrowser>
#include <QUrl>

#include <filesystem>

#include "core/build_profile.h"
#include "core/config_store.h"
#include "files/run_file_builder.h"
#include "gui_fixture.h"
#include "road/startup.h"
#include "shell/help_window.h"
#include "shell/main_form.h"
#include "shell/qt_startup_ui.h"
#include "shell/start_forms.h"
#include "store/run_store.h"
#include "support/engine_fixture.h"

namespace tl::test {
namespace {

namespace fs = std::filesystem;

class StartupTest : public GuiTest {
  protected:
    StartupOptions Options(const std::string& commandLine) {
        StartupOptions options;
        options.appDir = TRACELAB_BIN_DIR;
        options.configDir = root.path().string();
        options.commandLine = commandLine;
        return options;
    }
    TempDir root;
};

// Records, while Main runs, what the start banner showed.
struct BannerSpy {
    QString versionLabel;
    bool wasVisible = false;
    QTimer timer;
    BannerSpy() {
        QObject::connect(&timer, &QTimer::timeout, [this] {
            QWidget* banner = FindTopLevel(QStringLiteral("frmStartBanner"));
            if (banner == nullptr || !banner->isVisible()) return;
            wasVisible = true;
            if (auto* label = banner->findChild<QLabel*>(QStringLiteral("VersionLabel"))) {
                versionLabel = label->text();
            }
        });
        timer.start(5);
    }
};

TEST_F(StartupTest, FreshRootShowsBannerMainFormAndFirstRunFormOnce) {
    const StartupOptions options = Options("<hx40> <kart>");
    ASSERT_EQ(PrepareInstallation(options), "");
    shell::QtStartupUi ui(platform);
    BannerSpy banner;
    bool firstRunOwnedByMain = false;
    ModalWatcher watcher([&](QWidget* form) {
        if (form->objectName() != QStringLiteral("frmFirstRun")) return true;
        firstRunOwnedByMain = form->parentWidget() == ui.MainWindow();
        form->findChild<QPushButton*>(QStringLiteral("Okay"))->click();
        return false;
    });
    ASSERT_TRUE(Main(options, ui));

    EXPECT_TRUE(banner.wasVisible);
    EXPECT_EQ(banner.versionLabel,
              QStringLiteral("BuildCode:") + QString::fromStdString(BuildIdString()));
    EXPECT_EQ(BuildIdString().substr(BuildIdString().find('/')), "/Kart/HX40");
    EXPECT_EQ(FindTopLevel(QStringLiteral("frmStartBanner")), nullptr);  // unloaded

    ASSERT_TRUE(ui.MainFormLoaded());
    QMainWindow* main = ui.MainWindow();
    EXPECT_EQ(main->objectName(), QStringLiteral("frmMain"));
    EXPECT_TRUE(main->isVisible());
    EXPECT_EQ(main->windowTitle(),
              QStringLiteral("VQ Tracelab - ") + QString::fromStdString(BuildIdString()));
    EXPECT_NE(qobject_cast<QMdiArea*>(main->centralWidget()), nullptr);
    EXPECT_EQ(platform.MainWindow(), main);

    ASSERT_TRUE(watcher.Saw(QStringLiteral("frmFirstRun")));
    EXPECT_TRUE(firstRunOwnedByMain);
    const std::string marker = (root.path() / "Configuration" / "HX40_FirstRun.txt").string();
    ASSERT_TRUE(fs::exists(marker));
    EXPECT_EQ(ReadAll(marker).substr(0, 21), "Tracelab has been run");
    const std::string cfg = Paths().TracelabCfgPath;
    EXPECT_EQ(fs::path(cfg).filename(), "HX40_Tracelab.cfg");
    // The folders for runs, exports and car files start at the configuration
    // root, which stands for the original's program folder.
    for (const char* key : {"RunPath", "ExportPath", "CarPath"}) {
        EXPECT_EQ(GetConfigString(cfg, key), root.path().string()) << key;
    }

    // The next start finds the marker and greets nobody.
    ModalWatcher second;
    shell::QtStartupUi ui2(platform);
    ASSERT_TRUE(Main(options, ui2));
    EXPECT_FALSE(second.Saw(QStringLiteral("frmFirstRun")));
    EXPECT_TRUE(ui2.MainFormLoaded());
}

TEST_F(StartupTest, MissingAutoloadFileIsReportedAndTheStartGoesOn) {
    fs::create_directories(root.path() / "Configuration");
    WriteAll((root.path() / "Configuration" / "MQ7_FirstRun.txt").string(),
             "Tracelab has been run\r\n");
    const std::string missing = root.file("nowhere.run");
    const StartupOptions options = Options("<mq7> <f:" + missing + ">");
    ASSERT_EQ(PrepareInstallation(options), "");
    shell::QtStartupUi ui(platform);
    ModalWatcher watcher;
    ASSERT_TRUE(Main(options, ui));
    const SeenForm* message = watcher.Find(QStringLiteral("frmVQMsgBox"));
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->text, QStringLiteral("File specified at the command line cannot be found"));
    EXPECT_FALSE(watcher.Saw(QStringLiteral("frmFirstRun")));
    EXPECT_TRUE(ui.MainFormLoaded());
}

TEST_F(StartupTest, DebugStartWarnsAndWritesTheLog) {
    const StartupOptions options = Options("<debug> <hx40> <boat>");
    ASSERT_EQ(PrepareInstallation(options), "");
    shell::QtStartupUi ui(platform);
    ModalWatcher watcher;
    ASSERT_TRUE(Main(options, ui));
    const SeenForm* message = watcher.Find(QStringLiteral("frmVQMsgBox"));
    ASSERT_NE(message, nullptr);
    EXPECT_TRUE(message->text.startsWith(QStringLiteral("Debugging to file has been enabled")));
    // The first-run form comes before the debugging message.
    ASSERT_GE(watcher.seen.size(), 2u);
    EXPECT_EQ(watcher.seen[0].objectName, QStringLiteral("frmFirstRun"));
    EXPECT_TRUE(
        QString::fromStdString(BuildIdString()).contains(QStringLiteral("<Debug Enabled>")));
    const std::string log = ReadAll(Paths().LogPath);
    EXPECT_NE(log.find("**** System Started ****"), std::string::npos);
    EXPECT_NE(log.find("show the start banner"), std::string::npos);
    EXPECT_NE(log.find("main form now loaded"), std::string::npos);
    EXPECT_LT(log.find("hide the start banner"), log.find("load the main form"));
}

TEST_F(StartupTest, RunNamedOnTheCommandLineIsLoadedAfterTheStart) {
    const SimulatedHX40Run sim = SimulateHX40(12.0);
    const std::string run = root.file("circuit.run");
    WriteAll(run, PlaneFile(1, sim.header, sim.frames));
    const StartupOptions options = Options("<hx40> <car> <f:" + run + ">");
    ASSERT_EQ(PrepareInstallation(options), "");
    shell::QtStartupUi ui(platform);
    QStringList questions;
    ModalWatcher watcher([&](QWidget* form) {
        auto* box = qobject_cast<QMessageBox*>(form);
        if (box == nullptr || box->objectName() != QStringLiteral("YesNoBox")) return true;
        questions << box->text();
        box->button(QMessageBox::No)->click();  // load only, no processing
        return false;
    });
    ASSERT_TRUE(Main(options, ui));
    EXPECT_TRUE(ui.MainFormLoaded());
    ASSERT_EQ(questions.size(), 1);
    EXPECT_EQ(
        questions[0],
        QStringLiteral("Do you want to process the raw file automatically once it is loaded?"));
    EXPECT_FALSE(watcher.Saw(QStringLiteral("frmVQMsgBox")));
    ASSERT_EQ(Store().RunCount, 1);
    const RunRecord& loaded = Store().RunInfo[1];
    EXPECT_EQ(loaded.Name, "circuit");
    EXPECT_EQ(loaded.RunEnd - loaded.RunStart + 1, sim.trueRows);
    // The load freezes the main window while it works and gives it back.
    EXPECT_TRUE(ui.MainWindow()->menuBar()->isEnabled());
    EXPECT_TRUE(ui.MainWindow()->centralWidget()->isEnabled());
}

// Follows frmProcess while it lives: its caption and every line added to
// ProgressText, as the user saw them go by.
struct ProcessSpy {
    QStringList captions;
    QStringList lines;
    QPointer<QWidget> form;
    QTimer timer;
    ProcessSpy() {
        QObject::connect(&timer, &QTimer::timeout, [this] {
            QWidget* found = FindTopLevel(QStringLiteral("frmProcess"));
            if (found == nullptr || found == form.data()) return;
            form = found;
            QObject::connect(found, &QWidget::windowTitleChanged,
                             [this](const QString& title) { captions << title; });
            auto* text = found->findChild<QPlainTextEdit*>(QStringLiteral("ProgressText"));
            QObject::connect(text, &QPlainTextEdit::textChanged, [this, text] {
                const QString all = text->toPlainText();
                lines = all.isEmpty() ? QStringList() : all.split(QLatin1Char('\n'));
            });
        });
        timer.start(1);
    }
};

TEST_F(StartupTest, RunNamedOnTheCommandLineIsProcessedWhenTheUserSaysYes) {
    const SimulatedHX40Run sim = SimulateHX40(12.0);
    const std::string run = root.file("oval.run");
    WriteAll(run, PlaneFile(1, sim.header, sim.frames));
    const StartupOptions options = Options("<hx40> <car> <f:" + run + ">");
    ASSERT_EQ(PrepareInstallation(options), "");
    shell::QtStartupUi ui(platform);
    ProcessSpy progress;
    ModalWatcher watcher([&](QWidget* form) {
        auto* box = qobject_cast<QMessageBox*>(form);
        if (box == nullptr || box->objectName() != QStringLiteral("YesNoBox")) return true;
        box->button(QMessageBox::Yes)->click();
        return false;
    });
    ASSERT_TRUE(Main(options, ui));
    ASSERT_EQ(Store().RunCount, 1);
    EXPECT_EQ(Store().RunInfo[1].RunLength, sim.trueRows);
    for (const SeenForm& form : watcher.seen) {
        EXPECT_NE(form.objectName, QStringLiteral("frmVQMsgBox")) << form.text.toStdString();
    }
    // frmProcess came and went, showing the steps of the conversion.
    EXPECT_TRUE(progress.captions.contains(QStringLiteral("Processing: oval")));
    ASSERT_GE(progress.lines.size(), 3);
    EXPECT_TRUE(progress.lines.front().endsWith(QStringLiteral("s  :  Begin Processing.....")));
    EXPECT_TRUE(progress.lines.back().endsWith(QStringLiteral("s  :  Check internal data")));
    Settle();
    EXPECT_EQ(FindTopLevel(QStringLiteral("frmProcess")), nullptr);
}

TEST_F(StartupTest, ReadOnlySettingsFileStopsTheStartWithoutAWindow) {
    const StartupOptions options = Options("<sv63> <car>");
    ASSERT_EQ(PrepareInstallation(options), "");
    const fs::path cfg = root.path() / "Configuration" / "SV63_Tracelab.cfg";
    if (!fs::exists(cfg)) WriteAll(cfg.string(), "");
    fs::permissions(cfg, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    shell::QtStartupUi ui(platform);
    ModalWatcher watcher;
    EXPECT_FALSE(Main(options, ui));
    const SeenForm* message = watcher.Find(QStringLiteral("PlainMessageBox"));
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->text,
              QStringLiteral("A crutial system file cannot be accessed (SV63_Tracelab),  a "
                             "reboot or re-installation may be required"));
    EXPECT_FALSE(ui.MainFormLoaded());
    EXPECT_EQ(FindTopLevel(QStringLiteral("frmMain")), nullptr);
    fs::permissions(cfg, fs::perms::owner_write, fs::perm_options::add);
}

// Receives the URLs the desktop is asked to open.
class UrlCatcher : public QObject {
    Q_OBJECT
  public:
    QList<QUrl> urls;
  public slots:
    void open(const QUrl& url) { urls << url; }
};

TEST_F(StartupTest, QuickStartOpensTheHelpContentsAndOkayCloses) {
    const StartupOptions options = Options("<hx40>");
    ASSERT_EQ(PrepareInstallation(options), "");
    {
        shell::FirstRunForm form;
        form.show();
        form.findChild<QPushButton*>(QStringLiteral("QuickStart"))->click();
        EXPECT_TRUE(form.isVisible());
        form.findChild<QPushButton*>(QStringLiteral("Okay"))->click();
        EXPECT_FALSE(form.isVisible());
        EXPECT_EQ(form.result(), QDialog::Accepted);
    }
    // The contents page, in the program's own help window.
    auto* help = qobject_cast<shell::HelpWindow*>(FindTopLevel(QStringLiteral("HelpWindow")));
    ASSERT_NE(help, nullptr);
    EXPECT_EQ(help->Browser()->source().toLocalFile().toStdString(), Paths().HelpPath);
    EXPECT_TRUE(fs::exists(Paths().HelpPath)) << Paths().HelpPath;
    help->close();
    Settle();
}

TEST_F(StartupTest, BannerCloseButtonUnloadsIt) {
    shell::QtStartupUi ui(platform);
    ASSERT_TRUE(ui.ShowBanner("BuildCode:1.2.3/Car/MQ7"));
    QWidget* banner = FindTopLevel(QStringLiteral("frmStartBanner"));
    ASSERT_NE(banner, nullptr);
    EXPECT_EQ(banner->findChild<QLabel*>(QStringLiteral("VersionLabel"))->text(),
              QStringLiteral("BuildCode:1.2.3/Car/MQ7"));
    banner->findChild<QPushButton*>(QStringLiteral("CloseBtn"))->click();
    Settle();
    EXPECT_EQ(FindTopLevel(QStringLiteral("frmStartBanner")), nullptr);
    ui.HideBanner();  // nothing left to hide
}

}  // namespace
}  // namespace tl::test

#include "startup_test.moc"
