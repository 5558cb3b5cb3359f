// "Preferences" over its model: one tab per entry of the model's TabNames.
#pragma once

#include <array>

#include "gui/ModelDialog.h"
#include "shell/frmOptions.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QPushButton;
class QTabWidget;

namespace km::gui {

class UpDown;

class frmOptions : public ModelDialog {
    Q_OBJECT
public:
    frmOptions(km::frmOptions &model, QWidget *parent = nullptr);
    ~frmOptions() override;

    void sync() override;

    QTabWidget *SSTab1 = nullptr;
    QButtonGroup *StartScreen = nullptr;
    QComboBox *cboStartApp = nullptr;
    QLineEdit *Idle = nullptr;
    UpDown *UpDownIdle = nullptr;
    QPushButton *cmdChangeIdle = nullptr;
    QCheckBox *chkShowPrivate = nullptr;
    QPushButton *cmdPWchange = nullptr;
    QButtonGroup *CalView = nullptr;
    QButtonGroup *AppDuration = nullptr;
    std::array<QLineEdit *, 3> Times{};
    QButtonGroup *DiaryShow = nullptr;
    QButtonGroup *CatShow = nullptr;
    QCheckBox *TodoShowCompleted = nullptr;
    std::array<QLineEdit *, 4> txtUserDefined{};
    QButtonGroup *BudgetPrimary = nullptr;
    std::array<QGroupBox *, 3> BudgetFrame{};
    std::array<QCheckBox *, 12> BudgetShow{};
    QPushButton *cmdPIN = nullptr;
    QPushButton *cmdPINhide = nullptr;
    QGroupBox *PinFrame = nullptr;
    QLineEdit *PIN = nullptr;
    std::array<QCheckBox *, 9> PinApp{};
    QButtonGroup *PINeveryaccess = nullptr;
    QPushButton *cmdOK = nullptr;
    QPushButton *cmdCancel = nullptr;

protected:
    bool cancelCommand() override;

private:
    QWidget *startupTab();
    QWidget *calendarTab();
    QWidget *listsTab();
    QWidget *budgetTab();
    QWidget *pinTab();

    km::frmOptions &m_model;
};

} // namespace km::gui
