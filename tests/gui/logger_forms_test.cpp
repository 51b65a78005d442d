// The Logger menu against tracelab-logger-emu on a real pseudo-terminal,
// through the program's Qt serial port: the port chosen by its path in
// frmCommSetup, the demo road run listed, ticked, downloaded, converted and
// saved exactly as served; a paced download aborted mid-run; the logger's
// settings read and a refused threshold; the erase after its question.
#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "core/config_store.h"
#include "files/raw_run_files.h"
#include "link/serial_link.h"
#include "platform/qt/qt_serial_port.h"
#include "shell/logger_forms.h"
#include "shell_fixture.h"
#include "store/catalogue.h"

namespace tl::test {
namespace {

const QString kEmulator = QStringLiteral(TRACELAB_BIN_DIR "/tracelab-logger-emu");

std::vector<char> ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

int32_t Int32At(const std::vector<char>& b, size_t at) {
    int32_t v = 0;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}

// The saved run holds the served header, then the empty sample at the run's
// first raw index, then every served sample, channel by channel.
bool SameAsServed(const std::vector<char>& served, const std::vector<char>& saved) {
    if (served.size() < 12 || saved.size() < 12) return false;
    const int32_t n = Int32At(served, 8), m = Int32At(saved, 8);
    if (!std::equal(served.begin(), served.begin() + 8, saved.begin()) || m != n + 1 ||
        saved.size() != size_t(12 + 8 * (m + 1)))
        return false;
    for (int v = 0; v < 8; ++v) {
        const char* a = served.data() + 12 + v * (n + 1);
        const char* b = saved.data() + 12 + v * (m + 1);
        if (b[0] != a[0] || b[1] != 0 || std::memcmp(b + 2, a + 1, size_t(n)) != 0) return false;
    }
    return true;
}

class LoggerFormsTest : public ShellTest {
  protected:
    void SetUp() override {
        ShellTest::SetUp();
        Start("<hx40> <car>");
        qt::InstallQtSerialPort();
    }
    void TearDown() override {
        DisconnectFromLogger();
        SetSerialPort(nullptr);
        if (emulator.state() != QProcess::NotRunning) {
            emulator.kill();
            emulator.waitForFinished(3000);
        }
        ShellTest::TearDown();
    }
    // The emulator serving the demo road run; its device from its first line.
    QString StartEmulator(const QStringList& options) {
        emulator.start(
            kEmulator,
            QStringList{QString::fromStdString(kSamples + "/demo_hx40_road.run")} + options);
        if (!emulator.waitForStarted(5000)) return {};
        QString line;
        for (int i = 0; i < 100 && !line.endsWith(QLatin1Char('\n')); ++i) {
            emulator.waitForReadyRead(50);
            line += QString::fromUtf8(emulator.readLine());
        }
        line = line.trimmed();
        return line.startsWith(QLatin1String("device ")) ? line.mid(7) : QString();
    }
    // frmCommSetup with the device typed by hand.
    void ChoosePort(const QString& device) {
        user.forms[QStringLiteral("frmCommSetup")] = [device](QWidget* form) {
            Child<QLineEdit>(form, "DevicePathTxt")->setText(device);
            Child<QPushButton>(form, "OpenPort")->click();
        };
        Entry("mnuConnectLogger")->trigger();
        Settle();
        user.messages.clear();  // no numbered port may open here
    }
    // Runs then(form) on frmDownloadControl once its list is read.
    void WhenListed(std::function<void(shell::DownloadControlForm*)> then) {
        user.forms[QStringLiteral("frmDownloadControl")] = [then](QWidget* form) {
            RunWhenLoaded(static_cast<shell::DownloadControlForm*>(form), then);
        };
    }
    static void RunWhenLoaded(shell::DownloadControlForm* form,
                              std::function<void(shell::DownloadControlForm*)> then) {
        if (!form->Loaded()) {
            QTimer::singleShot(20, form, [form, then] { RunWhenLoaded(form, then); });
            return;
        }
        then(form);
    }
    QProcess emulator;
};

TEST_F(LoggerFormsTest, PortByPathDirectoryTickDownloadConvertAndSave) {
    EXPECT_TRUE(Entry("mnuConnectLogger")->isEnabled());
    EXPECT_TRUE(Entry("mnuLoggerDownload")->isEnabled());
    const QString device = StartEmulator({QStringLiteral("--baud"), QStringLiteral("0")});
    ASSERT_FALSE(device.isEmpty());
    ChoosePort(device);
    EXPECT_EQ(GetConfigString(Paths().TracelabCfgPath, "CommPortDevice"), device.toStdString());
    EXPECT_EQ(CommPortDevicePath(), device.toStdString());

    QStringList lines;
    QString caption;
    WhenListed([&](shell::DownloadControlForm* form) {
        auto* grid = Child<QTableWidget>(form, "RunListBox");
        caption = form->windowTitle();
        for (int row = 0; row < grid->rowCount(); ++row) lines << grid->item(row, 1)->text();
        ASSERT_EQ(grid->rowCount(), 1);
        grid->item(0, 0)->setCheckState(Qt::Checked);
        Child<QPushButton>(form, "DownloadBtn")->click();
    });
    Entry("mnuLoggerDownload")->trigger();
    Settle();
    EXPECT_EQ(caption, QStringLiteral("Select runs to download"));
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0], QStringLiteral("Run: 1  Duration: 301.88 seconds.  "));
    EXPECT_TRUE(user.messages.isEmpty()) << user.messages.join(QLatin1Char('|')).toStdString();

    // In memory, converted (the last sample has its time, near the run's
    // length), saved as served.
    ASSERT_EQ(Store().RunCount, 1);
    const RunRecord& r = Store().RunInfo[1];
    ASSERT_GT(r.RunEnd, r.RunStart);
    EXPECT_GT(RunData(r.RunEnd, ColumnOf(slot::Time)), 250.0f);
    EXPECT_LT(RunData(r.RunEnd, ColumnOf(slot::Time)), 310.0f);
    const std::string saved = root.file("downloaded.run");
    ASSERT_TRUE(SaveRawDataToFile(1, saved));
    EXPECT_TRUE(SameAsServed(ReadFile(kSamples + "/demo_hx40_road.run"), ReadFile(saved)));
    EXPECT_GE(GetConfig(Paths().TracelabCfgPath, "PacketCount"), 4.0f);
}

TEST_F(LoggerFormsTest, AbortMidDownloadLeavesNoRunAndIsHeardAtOnce) {
    const QString device = StartEmulator({QStringLiteral("--baud"), QStringLiteral("115200")});
    ASSERT_FALSE(device.isEmpty());
    ChoosePort(device);
    SetConfigString(Paths().TracelabCfgPath, "RunPath", root.path().string());
    const auto filesBefore = std::distance(std::filesystem::directory_iterator(root.path()),
                                           std::filesystem::directory_iterator());

    double latency = -1.0;
    QString progressAtAbort;
    WhenListed([&](shell::DownloadControlForm* form) {
        Child<QTableWidget>(form, "RunListBox")->item(0, 0)->setCheckState(Qt::Checked);
        auto* abort = Child<QPushButton>(form, "AbortBtn");
        // A few transfers in, as a user would click.
        QTimer::singleShot(2500, form, [&, abort, form] {
            progressAtAbort = Child<QLabel>(form, "DownloadProgressLbl")->text();
            EXPECT_TRUE(abort->isEnabled());
            abort->click();
        });
        Child<QPushButton>(form, "DownloadBtn")->click();
        latency = form->AbortLatency();
    });
    Entry("mnuLoggerDownload")->trigger();
    Settle();
    EXPECT_TRUE(progressAtAbort.contains(QStringLiteral("% downloaded.")))
        << progressAtAbort.toStdString();
    EXPECT_GE(latency, 0.0);
    EXPECT_LT(latency, 0.2);
    EXPECT_TRUE(user.messages.contains(QStringLiteral("Download aborted by user")));
    EXPECT_EQ(Store().RunCount, 0);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(root.path()),
                            std::filesystem::directory_iterator()),
              filesBefore);
}

TEST_F(LoggerFormsTest, SettingsReadRefusedThresholdAndEraseAfterTheQuestion) {
    const QString device = StartEmulator({QStringLiteral("--baud"), QStringLiteral("0")});
    ASSERT_FALSE(device.isEmpty());
    ChoosePort(device);

    // The settings as the logger holds them; 12.00 V is refused and the
    // dialog stays; 11.99 V goes through and the dialog closes.
    bool stayedOpen = false;
    user.forms[QStringLiteral("frmSetUpLogger")] = [&](QWidget* form) {
        auto* setUp = static_cast<shell::SetUpLoggerForm*>(form);
        EXPECT_TRUE(Child<QGroupBox>(form, "AutoStartFrm")->isEnabled());
        EXPECT_FALSE(Child<QLineEdit>(form, "DigitalLowerThres")->text().isEmpty());
        Child<QLineEdit>(form, "DigitalLowerThres")->setText(QStringLiteral("2.00"));
        Child<QLineEdit>(form, "DigitalUpperThres")->setText(QStringLiteral("12.00"));
        setUp->OkClick();
        stayedOpen = form->isVisible();
        Child<QLineEdit>(form, "DigitalUpperThres")->setText(QStringLiteral("11.99"));
        setUp->OkClick();
    };
    Entry("mnuLoggerSetupLogger")->trigger();
    Settle();
    EXPECT_TRUE(stayedOpen);
    EXPECT_EQ(user.messages.join(QLatin1Char('|')).toStdString(),
              "The digital lower threshold must be greater than 12v");
    user.messages.clear();

    QString question;
    user.forms[QStringLiteral("frmConfirmErase")] = [&](QWidget* form) {
        question = Child<QLabel>(form, "Label1")->text();
        Child<QPushButton>(form, "OkButton")->click();
    };
    Entry("mnuLoggerEraseData")->trigger();
    Settle();
    EXPECT_EQ(question.toStdString(), kEraseQuestion);
    EXPECT_EQ(user.messages.join(QLatin1Char('|')).toStdString(), kErased);

    // The logger holds nothing now.
    user.messages.clear();
    WhenListed(
        [](shell::DownloadControlForm* form) { Child<QPushButton>(form, "CancelBtn")->click(); });
    Entry("mnuLoggerDownload")->trigger();
    Settle();
    EXPECT_EQ(user.messages.join(QLatin1Char('|')).toStdString(), kNoData);
}

// The four forms on a 1366 x 768 screen at 100 % (title bar and panel off;
// 2880 x 1800 at 200 % gives more room in the same units), their texts whole.
TEST_F(LoggerFormsTest, FormsFitTheScreenWithTheirTextsWhole) {
    auto fits = [](QWidget* form, const char* name) {
        form->show();
        form->adjustSize();
        QApplication::processEvents();
        EXPECT_LE(form->frameGeometry().width(), 1366) << name;
        EXPECT_LE(form->frameGeometry().height(), 768 - 80) << name;
        for (auto* b : form->findChildren<QAbstractButton*>()) {
            if (!b->isVisibleTo(form)) continue;
            EXPECT_GE(b->width(), b->sizeHint().width()) << name << ": " << b->text().toStdString();
        }
        for (auto* l : form->findChildren<QLabel*>()) {
            if (!l->isVisibleTo(form) || l->wordWrap() || l->text().isEmpty()) continue;
            EXPECT_GE(l->width(), l->sizeHint().width()) << name << ": " << l->text().toStdString();
        }
        form->close();
    };
    shell::CommSetupForm comm(main);
    fits(&comm, "frmCommSetup");
    shell::DownloadControlForm download(main);
    download.Model().DownloadProgressLbl =
        "100.0% downloaded. Approximately 1000 seconds left. (255 ppt)";
    download.Model().caption = "Downloading Run: 1";
    fits(&download, "frmDownloadControl");
    shell::DownloadOptionForm options(main);
    fits(&options, "DownloadOptionFrm");
    shell::SetUpLoggerForm setUp(main);
    fits(&setUp, "frmSetUpLogger");
    shell::ConfirmEraseForm erase(main);
    fits(&erase, "frmConfirmErase");
}

}  // namespace
}  // namespace tl::test
