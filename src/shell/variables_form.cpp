#include "shell/variables_form.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tl::shell {

ActiveVariablesForm::ActiveVariablesForm(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSetActiveVariables"));
    setWindowTitle(QStringLiteral("Select Variables"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(QStringLiteral("Tick the variables to calculate:")));
    box_ = new QListWidget;
    box_->setObjectName(QStringLiteral("VarListBox"));
    layout->addWidget(box_, 1);
    auto* row = new QHBoxLayout;
    auto button = [&](const char* name, const char* caption) {
        auto* b = new QPushButton(QString::fromUtf8(caption));
        b->setObjectName(QString::fromUtf8(name));
        b->setAutoDefault(false);
        row->addWidget(b);
        return b;
    };
    QPushButton* all = button("SetAllVars", "Select All");
    QPushButton* none = button("ReSetAllVars", "Clear All");
    row->addStretch();
    QPushButton* okay = button("Okay", "OK");
    QPushButton* cancel = button("Cancel", "Cancel");
    layout->addLayout(row);
    // SetAllVars and ReSetAllVars hold the list's redraw off meanwhile.
    connect(all, &QPushButton::clicked, this, [this] {
        box_->setUpdatesEnabled(false);
        list_.SetAll();
        Fill();
        box_->setUpdatesEnabled(true);
    });
    connect(none, &QPushButton::clicked, this, [this] {
        box_->setUpdatesEnabled(false);
        list_.ReSetAll();
        Fill();
        box_->setUpdatesEnabled(true);
    });
    connect(okay, &QPushButton::clicked, this, [this] {
        TakeChecks();
        if (list_.Okay()) accept();
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    list_.Activate();
    Fill();
    resize(360, 520);
}

void ActiveVariablesForm::Fill() {
    box_->clear();
    for (const ActiveVariableEntry& entry : list_.entries) {
        auto* item = new QListWidgetItem(QString::fromStdString(entry.name), box_);
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable | Qt::ItemIsSelectable);
        item->setCheckState(entry.checked ? Qt::Checked : Qt::Unchecked);
    }
}

void ActiveVariablesForm::TakeChecks() {
    for (int i = 0; i < box_->count() && i < static_cast<int>(list_.entries.size()); ++i)
        list_.entries[i].checked = box_->item(i)->checkState() == Qt::Checked;
}

}  // namespace tl::shell
