#include "gui/store/frmMenuDB.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace km::gui {

frmMenuDB::frmMenuDB(km::frmMenuDB &model, QWidget *parent) : ModelDialog(model, parent), m_model(model) {
    cmdNewDB = new QPushButton(QString::fromLatin1(km::frmMenuDB::cmdNewDBCaption), this);
    cmdOldDB = new QPushButton(QString::fromLatin1(km::frmMenuDB::cmdOldDBCaption), this);
    cmdCancel = new QPushButton(QString::fromLatin1(km::frmMenuDB::cmdCancelCaption), this);
    auto *layout = new QVBoxLayout(this);
    for (QPushButton *b : {cmdNewDB, cmdOldDB, cmdCancel}) {
        b->setAutoDefault(false);
        b->setMinimumHeight(34);
        layout->addWidget(b);
    }
    layout->setSpacing(10);
    layout->setContentsMargins(24, 20, 24, 20);
    setMinimumWidth(280);

    connect(cmdNewDB, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdNewDB_Click(); }); });
    connect(cmdOldDB, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdOldDB_Click(); }); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { reject(); });
}

bool frmMenuDB::cancelCommand() {
    m_model.cmdCancel_Click();
    return true;
}

} // namespace km::gui
