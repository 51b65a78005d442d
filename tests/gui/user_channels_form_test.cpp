// frmUserChannels driven through the menu on a processed demo run: a channel
// is added, a bad formula is refused with the processing's message, and the
// new variable is calculated on the run; renaming keeps the channel ticked,
// Cancel stores nothing. The model's own limits are checked without a window.
#include <QLineEdit>
#include <QTableWidget>

#include <fstream>
#include <sstream>

#include "core/config_store.h"
#include "shell/user_channels_model.h"
#include "shell_fixture.h"
#include "store/catalogue.h"
#include "store/run_procedures.h"

namespace tl::test {
namespace {

class UserChannelsFormTest : public ShellTest {
  protected:
    // Answers the next InputBox with text.
    void Answer(const QString& text) {
        user.forms[QStringLiteral("InputBox")] = [text](QWidget* form) {
            auto* edit = form->findChild<QLineEdit*>();
            ASSERT_NE(edit, nullptr);
            edit->setText(text);
            static_cast<QDialog*>(form)->accept();
        };
    }
    static QString Cell(QWidget* form, const char* grid, int row, int col) {
        auto* table = Child<QTableWidget>(form, grid);
        if (table == nullptr || table->item(row, col) == nullptr) return {};
        return table->item(row, col)->text();
    }
};

std::string FileText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST_F(UserChannelsFormTest, AddedChannelIsCheckedSavedAndCalculated) {
    Start("<hx40> <car>");
    LoadDemo(true);
    ASSERT_TRUE(Entry("MnuUserChannels")->isEnabled());
    bool sawNames = false;
    user.forms[QStringLiteral("frmUserChannels")] = [&](QWidget* form) {
        EXPECT_EQ(form->windowTitle(), QStringLiteral("User Defined Variables"));
        // Existing variables by their VAR_ names, two digits under ten.
        auto* vars = Child<QTableWidget>(form, "MSFlexGridVarNames");
        ASSERT_NE(vars, nullptr);
        ASSERT_GT(vars->rowCount(), 5);
        EXPECT_EQ(Cell(form, "MSFlexGridVarNames", 0, 0), QStringLiteral("VAR_01"));
        EXPECT_EQ(Cell(form, "MSFlexGridVarNames", 0, 1),
                  QString::fromStdString(Catalogue().RunVars[1].Name));
        EXPECT_EQ(Child<QTableWidget>(form, "MSFlexGridConstants")->rowCount(), 16);
        EXPECT_EQ(Cell(form, "MSFlexGridConstants", 12, 1), QStringLiteral("Vehicle Mass [kg]"));
        sawNames = true;

        Answer(QStringLiteral("Double \"Speed\""));
        Click(form, "InsertChannel");
        EXPECT_EQ(Cell(form, "MsGridUserChannels", 0, 0), QStringLiteral("Double Speed"));
        auto* formula = Child<QLineEdit>(form, "NumberEditTxtBox");
        formula->setText(QStringLiteral("VAR_08 * 2 +"));
        Click(form, "OK");
        EXPECT_TRUE(form->isVisible());  // refused, the form stays
        formula->setText(QStringLiteral("VAR_08 * 2"));
        EXPECT_EQ(Cell(form, "MsGridUserChannels", 0, 1), QStringLiteral("VAR_08 * 2"));
        user.answers.push_back(QMessageBox::Ok);  // reprocess
        Click(form, "OK");
    };
    Entry("MnuUserChannels")->trigger();
    EXPECT_TRUE(sawNames);
    EXPECT_TRUE(user.messages.contains(
        QStringLiteral("There is an error in the definition of user variable Double Speed")));
    EXPECT_TRUE(user.questions.contains(QStringLiteral(
        "To change the variables available, all the runs will need reprocessing, do you wish to "
        "continue?")));

    EXPECT_EQ(FileText(Paths().UserVarsCfgPath), "\"Double Speed\",\"VAR_08 * 2\",0\r\n");
    EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "U:Double Speed"), -1.0f);
    const RunVar& channel = Catalogue().RunVars[kFirstUserSlot];
    EXPECT_EQ(channel.Name, "U:Double Speed");
    ASSERT_TRUE(channel.Enabled);
    const RunRecord& run = Store().RunInfo[1];
    int moving = 0;
    for (int32_t row = run.RunStart; row <= run.RunEnd; row += 997) {
        const float speed = RunData(row, ColumnOf(slot::SpeedKph));
        EXPECT_FLOAT_EQ(RunData(row, channel.Column), 2.0f * speed) << row;
        if (speed > 20.0f) ++moving;
    }
    EXPECT_GT(moving, 5);  // the run was processed: the channel is not all zero

    // Renamed: the channel keeps its tick under the new name; the old line goes.
    user.forms[QStringLiteral("frmUserChannels")] = [this](QWidget* form) {
        EXPECT_EQ(Cell(form, "MsGridUserChannels", 0, 1), QStringLiteral("VAR_08 * 2"));
        Answer(QStringLiteral("Twice"));
        Click(form, "EditChannel");
        Answer(QStringLiteral("Mass"));
        Click(form, "InsertChannel");  // after the selected row
        Child<QLineEdit>(form, "NumberEditTxtBox")->setText(QStringLiteral("Mass + VAR_100"));
        user.answers.push_back(QMessageBox::Ok);
        Click(form, "OK");
    };
    Entry("MnuUserChannels")->trigger();
    EXPECT_EQ(Catalogue().RunVars[kFirstUserSlot].Name, "U:Twice");
    EXPECT_TRUE(Catalogue().RunVars[kFirstUserSlot].Enabled);
    EXPECT_EQ(Catalogue().RunVars[kFirstUserSlot + 1].Name, "U:Mass");
    EXPECT_EQ(GetConfig(Paths().TracelabCfgPath, "U:Double Speed"), 0.0f);
    // A channel reads a lower user slot: the mass plus twice the speed.
    const float mass = GetConfig(Paths().CarCfgPath, "CarMass");
    const int32_t row = run.RunStart + run.RunLength / 2;
    EXPECT_FLOAT_EQ(RunData(row, ColumnOf(kFirstUserSlot + 1)),
                    mass + 2.0f * RunData(row, ColumnOf(slot::SpeedKph)));

    // Delete and Cancel: nothing stored.
    const std::string before = FileText(Paths().UserVarsCfgPath);
    user.forms[QStringLiteral("frmUserChannels")] = [](QWidget* form) {
        Click(form, "DeleteChannel");
        EXPECT_EQ(Child<QTableWidget>(form, "MsGridUserChannels")->rowCount(), 1);
        Click(form, "Cancel");
    };
    Entry("MnuUserChannels")->trigger();
    EXPECT_EQ(FileText(Paths().UserVarsCfgPath), before);
}

class UserChannelsModelTest : public EngineTest {};

TEST_F(UserChannelsModelTest, NamesAreCleanedAndSlotsRunOutAtAHundred) {
    UseProfile(Family::MQ7, Vehicle::Kart);
    UserChannelsModel model;
    model.Load();
    EXPECT_EQ(model.Insert(0, "  \"  "), -1);  // nothing left of the name
    EXPECT_EQ(model.Insert(0, " Lap \"fast\"\r\n"), 0);
    EXPECT_EQ(model.rows[0].name, "Lap fast");
    for (int i = 1; i < UserChannelsModel::kMaxChannels; ++i)
        ASSERT_EQ(model.Insert(-1, "C" + std::to_string(i)), i);
    EXPECT_EQ(model.Insert(-1, "one too many"), -1);
    // Every formula must pass: an empty one does not.
    EXPECT_EQ(model.FirstBadFormula(), 0);
    for (UserChannel& c : model.rows) c.formula = "CAR_1 + VAR_07 * Humid";
    EXPECT_EQ(model.FirstBadFormula(), -1);
    model.SetFormula(42, "sqrt(");
    EXPECT_EQ(model.FirstBadFormula(), 42);
    EXPECT_TRUE(model.NamesChanged());
    model.Delete(0);
    EXPECT_EQ(model.rows.front().name, "C1");
    EXPECT_FALSE(model.Rename(500, "x"));
}

}  // namespace
}  // namespace tl::test
