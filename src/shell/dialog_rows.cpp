#include "shell/dialog_rows.h"

#include <QBoxLayout>
#include <QDialog>
#include <QPushButton>

namespace tl::shell {

QPushButton* AddOkCancel(QDialog* dialog, QBoxLayout* layout, const char* okName,
                         const char* cancelName) {
    auto* row = new QHBoxLayout;
    row->addStretch();
    auto* ok = new QPushButton(QStringLiteral("OK"));
    ok->setObjectName(QString::fromUtf8(okName));
    ok->setDefault(true);
    auto* cancel = new QPushButton(QStringLiteral("Cancel"));
    cancel->setObjectName(QString::fromUtf8(cancelName));
    row->addWidget(ok);
    row->addWidget(cancel);
    layout->addLayout(row);
    QObject::connect(cancel, &QPushButton::clicked, dialog, &QDialog::reject);
    return ok;
}

}  // namespace tl::shell
