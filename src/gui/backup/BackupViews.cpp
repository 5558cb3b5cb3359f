#include "gui/backup/BackupViews.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "gui/QtDialogs.h"

namespace km::gui {

namespace {

QPushButton *button(const QString &text, QWidget *parent) {
    auto *b = new QPushButton(text, parent);
    b->setAutoDefault(false);
    b->setMinimumWidth(96);
    return b;
}

QLineEdit *readOnlyBox(QWidget *parent) {
    auto *box = new QLineEdit(parent);
    box->setReadOnly(true);
    box->setMinimumWidth(360);
    return box;
}

} // namespace

frmBackup::frmBackup(km::frmBackup &model, QWidget *parent) : ModelDialog(model, parent), m_model(model) {
    lblBackup = new QLabel(this);
    txtBackupTo = readOnlyBox(this);
    cmdChangeDir = button(QStringLiteral("..."), this);
    cmdChangeDir->setMinimumWidth(36);
    cmdBackup = button(QString(), this);
    cmdCancel = button(QStringLiteral("Cancel"), this);
    cmdBackup->setDefault(true);

    auto *folder = new QHBoxLayout;
    folder->addWidget(txtBackupTo, 1);
    folder->addWidget(cmdChangeDir);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(cmdBackup);
    buttons->addWidget(cmdCancel);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(lblBackup);
    layout->addLayout(folder);
    layout->addSpacing(8);
    layout->addLayout(buttons);
    layout->setContentsMargins(16, 14, 16, 14);

    connect(cmdChangeDir, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdChangeDir_Click(); }); });
    connect(cmdBackup, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdBackup_Click(); }); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdCancel_Click(); }); });
    sync();
}

void frmBackup::sync() {
    setWindowTitle(m_model.caption());
    lblBackup->setText(m_model.lblBackup());
    txtBackupTo->setText(m_model.txtBackupTo);
    txtBackupTo->setToolTip(m_model.txtBackupTo);
    cmdBackup->setText(m_model.cmdBackupCaption());
    cmdCancel->setEnabled(m_model.cmdCancelEnabled());
}

bool frmBackup::cancelCommand() {
    // In its Restore mode the dialog has no Cancel: closing it is OK.
    if (m_model.cmdCancelEnabled())
        m_model.cmdCancel_Click();
    else
        m_model.cmdBackup_Click();
    return true;
}

frmRestore::frmRestore(km::frmRestore &model, QWidget *parent) : ModelDialog(model, parent), m_model(model) {
    txtBackupFolder = readOnlyBox(this);
    cmdChangeDir = button(QStringLiteral("Change"), this);
    LV = new QTreeWidget(this);
    LV->setRootIsDecorated(false);
    LV->setUniformRowHeights(true);
    LV->setColumnCount(3);
    LV->setHeaderLabels({QString::fromLatin1(km::frmRestore::Columns[0]),
                         QString::fromLatin1(km::frmRestore::Columns[1]),
                         QString::fromLatin1(km::frmRestore::Columns[2])});
    LV->header()->setSectionResizeMode(QHeaderView::Interactive);
    LV->setColumnWidth(0, 220);
    LV->setColumnWidth(1, 170);
    LV->setMinimumSize(540, 220);
    cmdRestore = button(QStringLiteral("Restore"), this);
    cmdVerify = button(QStringLiteral("Verify"), this);
    cmdDelete = button(QStringLiteral("Delete File"), this);
    cmdCancel = button(QStringLiteral("Cancel"), this);

    auto *grid = new QGridLayout(this);
    grid->addWidget(new QLabel(QStringLiteral("Backup Folder:"), this), 0, 0, 1, 2);
    grid->addWidget(txtBackupFolder, 1, 0);
    grid->addWidget(cmdChangeDir, 1, 1);
    grid->addWidget(new QLabel(QStringLiteral("List of backup files"), this), 2, 0, 1, 2);
    grid->addWidget(LV, 3, 0, 1, 2);
    grid->addWidget(new QLabel(QStringLiteral("Select (click) file to restore"), this), 4, 0, 1, 2);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(cmdDelete);
    buttons->addStretch(1);
    buttons->addWidget(cmdVerify);
    buttons->addWidget(cmdRestore);
    buttons->addWidget(cmdCancel);
    grid->addLayout(buttons, 5, 0, 1, 2);
    grid->setContentsMargins(16, 14, 16, 14);

    connect(LV, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        m_model.LV_Click(item ? LV->indexOfTopLevelItem(item) : -1);
    });
    connect(cmdChangeDir, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdChangeDir_Click(); }); });
    connect(cmdRestore, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdRestore_Click(); }); });
    connect(cmdVerify, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdVerify_Click(); }); });
    connect(cmdDelete, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdDelete_Click(); }); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdCancel_Click(); }); });
    sync();
}

void frmRestore::sync() {
    setWindowTitle(m_model.caption());
    txtBackupFolder->setText(m_model.txtBackupFolder);
    txtBackupFolder->setToolTip(m_model.txtBackupFolder);
    const QSignalBlocker quiet(LV);
    LV->clear();
    for (const BackupRow &row : m_model.LV) {
        auto *item = new QTreeWidgetItem(LV, {row.text, row.stamp, row.dimensions});
        item->setToolTip(0, row.tag);
    }
    if (m_model.selected >= 0) {
        QTreeWidgetItem *item = LV->topLevelItem(m_model.selected);
        LV->setCurrentItem(item);
        LV->scrollToItem(item);
    }
    const bool rows = m_model.listEnabled();
    LV->setEnabled(rows);
    cmdRestore->setEnabled(rows);
    cmdVerify->setEnabled(rows);
    cmdDelete->setEnabled(rows);
}

bool frmRestore::cancelCommand() {
    m_model.cmdCancel_Click();
    return true;
}

void RegisterBackupViews(QtDialogs &dialogs) {
    dialogs.addWindow<km::frmBackup, frmBackup>();
    dialogs.addWindow<km::frmRestore, frmRestore>();
}

} // namespace km::gui
