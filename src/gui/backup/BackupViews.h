// The backup folder dialog and the restore window over their models.
#pragma once

#include "backup/frmBackup.h"
#include "backup/frmRestore.h"
#include "gui/ModelDialog.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

namespace km::gui {

class QtDialogs;

class frmBackup : public ModelDialog {
    Q_OBJECT
public:
    frmBackup(km::frmBackup &model, QWidget *parent = nullptr);
    void sync() override;

    QLabel *lblBackup = nullptr;
    QLineEdit *txtBackupTo = nullptr;
    QPushButton *cmdChangeDir = nullptr;
    QPushButton *cmdBackup = nullptr;
    QPushButton *cmdCancel = nullptr;

protected:
    bool cancelCommand() override;

private:
    km::frmBackup &m_model;
};

class frmRestore : public ModelDialog {
    Q_OBJECT
public:
    frmRestore(km::frmRestore &model, QWidget *parent = nullptr);
    void sync() override;

    QLineEdit *txtBackupFolder = nullptr;
    QTreeWidget *LV = nullptr;
    QPushButton *cmdChangeDir = nullptr;
    QPushButton *cmdRestore = nullptr;
    QPushButton *cmdVerify = nullptr;
    QPushButton *cmdDelete = nullptr;
    QPushButton *cmdCancel = nullptr;

protected:
    bool cancelCommand() override;

private:
    km::frmRestore &m_model;
};

// Tells the dialogs which widget draws these models.
void RegisterBackupViews(QtDialogs &dialogs);

} // namespace km::gui
