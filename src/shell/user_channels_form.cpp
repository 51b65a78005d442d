#include "shell/user_channels_form.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "core/platform.h"

namespace tl::shell {

namespace {

QTableWidget* NameGrid(const char* name, const QStringList& headings) {
    auto* grid = new QTableWidget(0, static_cast<int>(headings.size()));
    grid->setObjectName(QString::fromUtf8(name));
    grid->setHorizontalHeaderLabels(headings);
    grid->verticalHeader()->setVisible(false);
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid->setSelectionMode(QAbstractItemView::SingleSelection);
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->horizontalHeader()->setStretchLastSection(true);
    grid->verticalHeader()->setDefaultSectionSize(grid->fontMetrics().height() + 6);
    return grid;
}

void FillNames(QTableWidget* grid, const std::vector<FormulaName>& names) {
    grid->setRowCount(static_cast<int>(names.size()));
    for (int i = 0; i < static_cast<int>(names.size()); ++i) {
        grid->setItem(i, 0, new QTableWidgetItem(QString::fromStdString(names[i].name)));
        grid->setItem(i, 1, new QTableWidgetItem(QString::fromStdString(names[i].text)));
    }
    grid->resizeColumnToContents(0);
}

}  // namespace

UserChannelsForm::UserChannelsForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmUserChannels"));
    setWindowTitle(QStringLiteral("User Defined Variables"));

    channels_ = NameGrid("MsGridUserChannels",
                         {QStringLiteral("Variable Name"), QStringLiteral("Formula")});
    formula_ = new QLineEdit;
    formula_->setObjectName(QStringLiteral("NumberEditTxtBox"));
    formula_->setPlaceholderText(QStringLiteral("VAR_08 * 2"));
    varNames_ =
        NameGrid("MSFlexGridVarNames", {QStringLiteral("Name"), QStringLiteral("Variable")});
    constants_ =
        NameGrid("MSFlexGridConstants", {QStringLiteral("Name"), QStringLiteral("Constant")});

    auto button = [this](const char* name, const char* caption, const char* tip) {
        auto* b = new QPushButton(QString::fromUtf8(caption), this);
        b->setObjectName(QString::fromUtf8(name));
        b->setAutoDefault(false);
        if (tip != nullptr) b->setToolTip(QString::fromUtf8(tip));
        return b;
    };
    QPushButton* insert = button("InsertChannel", "&Insert", "Add a new user variable");
    QPushButton* edit =
        button("EditChannel", "&Rename", "Change the name of the selected variable");
    QPushButton* remove = button("DeleteChannel", "&Delete", "Remove the selected variable");
    QPushButton* okay = button("OK", "OK", nullptr);
    QPushButton* cancel = button("Cancel", "Cancel", nullptr);

    auto* left = new QVBoxLayout;
    left->addWidget(new QLabel(QStringLiteral("User Variables")));
    left->addWidget(channels_, 1);
    auto* formulaRow = new QHBoxLayout;
    auto* formulaLabel = new QLabel(QStringLiteral("Formula:"));
    formulaLabel->setBuddy(formula_);
    formulaRow->addWidget(formulaLabel);
    formulaRow->addWidget(formula_, 1);
    left->addLayout(formulaRow);
    auto* editRow = new QHBoxLayout;
    editRow->addWidget(insert);
    editRow->addWidget(edit);
    editRow->addWidget(remove);
    editRow->addStretch();
    left->addLayout(editRow);

    auto* right = new QVBoxLayout;
    right->addWidget(new QLabel(QStringLiteral("Existing Variables")));
    right->addWidget(varNames_, 2);
    right->addWidget(new QLabel(QStringLiteral("System Constants")));
    right->addWidget(constants_, 1);
    right->addWidget(new QLabel(QStringLiteral("Double-click a name to put it into the formula.")));

    auto* columns = new QHBoxLayout;
    columns->addLayout(left, 3);
    columns->addLayout(right, 2);
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    bottom->addWidget(okay);
    bottom->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns, 1);
    layout->addLayout(bottom);

    connect(insert, &QPushButton::clicked, this, &UserChannelsForm::InsertChannel);
    connect(edit, &QPushButton::clicked, this, &UserChannelsForm::EditChannel);
    connect(remove, &QPushButton::clicked, this, &UserChannelsForm::DeleteChannel);
    connect(okay, &QPushButton::clicked, this, [this] {
        if (model_.Okay() == UserChannelsModel::OkayResult::Saved) accept();
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(channels_, &QTableWidget::currentCellChanged, this,
            [this](int row, int, int, int) { ShowFormulaOf(row); });
    connect(formula_, &QLineEdit::textChanged, this, [this](const QString& text) {
        const int row = CurrentRow();
        if (filling_ || row < 0) return;
        model_.SetFormula(row, text.toStdString());
        if (QTableWidgetItem* cell = channels_->item(row, 1)) cell->setText(text);
    });
    connect(varNames_, &QTableWidget::cellDoubleClicked, this,
            [this](int row, int) { PutName(varNames_, row); });
    connect(constants_, &QTableWidget::cellDoubleClicked, this,
            [this](int row, int) { PutName(constants_, row); });

    model_.Load();
    FillChannels(model_.rows.empty() ? -1 : 0);
    RegenVariablesAvailable();
    FillNames(constants_, UserChannelsModel::SystemConstants());
    resize(820, 520);
}

int UserChannelsForm::CurrentRow() const {
    const int row = channels_->currentRow();
    return row >= 0 && row < static_cast<int>(model_.rows.size()) ? row : -1;
}

void UserChannelsForm::FillChannels(int select) {
    filling_ = true;
    channels_->setRowCount(static_cast<int>(model_.rows.size()));
    for (int i = 0; i < static_cast<int>(model_.rows.size()); ++i) {
        channels_->setItem(i, 0, new QTableWidgetItem(QString::fromStdString(model_.rows[i].name)));
        channels_->setItem(i, 1,
                           new QTableWidgetItem(QString::fromStdString(model_.rows[i].formula)));
    }
    channels_->resizeColumnToContents(0);
    filling_ = false;
    if (select >= 0 && select < channels_->rowCount()) {
        channels_->setCurrentCell(select, 1);
    } else {
        channels_->setCurrentCell(-1, -1);
    }
    ShowFormulaOf(CurrentRow());
}

void UserChannelsForm::RegenVariablesAvailable() {
    FillNames(varNames_, UserChannelsModel::VariablesAvailable());
}

void UserChannelsForm::ShowFormulaOf(int row) {
    filling_ = true;
    const bool valid = row >= 0 && row < static_cast<int>(model_.rows.size());
    formula_->setText(valid ? QString::fromStdString(model_.rows[row].formula) : QString());
    formula_->setEnabled(valid);
    filling_ = false;
}

void UserChannelsForm::PutName(const QTableWidget* grid, int row) {
    if (CurrentRow() < 0 || grid->item(row, 0) == nullptr) return;
    formula_->insert(grid->item(row, 0)->text());
    formula_->setFocus();
}

void UserChannelsForm::InsertChannel() {
    const std::optional<std::string> name = CurrentPlatform().messages->InputBox(
        "Please input a name for the new user variable", "New Variable", "");
    if (!name) return;
    const int current = CurrentRow();
    const int row = model_.Insert(current < 0 ? -1 : current + 1, *name);
    if (row < 0) return;
    FillChannels(row);
    formula_->setFocus();
}

void UserChannelsForm::EditChannel() {
    const int row = CurrentRow();
    if (row < 0) return;
    const std::optional<std::string> name =
        CurrentPlatform().messages->InputBox("Please input a new name for the new user variable",
                                             "Edit Variable", model_.rows[row].name);
    if (!name || !model_.Rename(row, *name)) return;
    FillChannels(row);
}

void UserChannelsForm::DeleteChannel() {
    const int row = CurrentRow();
    if (row < 0) return;
    model_.Delete(row);
    FillChannels(std::min(row, static_cast<int>(model_.rows.size()) - 1));
}

}  // namespace tl::shell
