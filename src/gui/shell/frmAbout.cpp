#include "gui/shell/frmAbout.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QVBoxLayout>

#include "shell/frmSplash.h"

namespace km::gui {

frmAbout::frmAbout(QWidget *parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("About Kestrelmondarin"));
    auto *name = new QLabel(QStringLiteral("Kestrelmondarin"), this);
    QFont big = name->font();
    big.setPointSizeF(big.pointSizeF() * 1.8);
    big.setBold(true);
    name->setFont(big);
    auto *version = new QLabel(QStringLiteral("Version ") + QLatin1String(km::frmSplash::VersionText), this);
    auto *what = new QLabel(QStringLiteral("Personal information manager: calendar, diary, tasks, addresses, "
                                           "memos, confidential data and budgets, encrypted field by field."),
                            this);
    what->setWordWrap(true);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    auto *layout = new QVBoxLayout(this);
    for (QLabel *l : {name, version, what}) {
        l->setAlignment(Qt::AlignCenter);
        layout->addWidget(l);
    }
    layout->addSpacing(8);
    layout->addWidget(buttons);
    setFixedWidth(380);
}

} // namespace km::gui
