// "Tip of the Day" over its model.
#pragma once

#include "gui/ModelDialog.h"
#include "shell/frmTip.h"

class QCheckBox;
class QLabel;
class QPushButton;

namespace km::gui {

class frmTip : public ModelDialog {
    Q_OBJECT
public:
    frmTip(km::frmTip &model, QWidget *parent = nullptr);

    void sync() override;

    // Loads the model and shows it unless it closed itself at load.
    static void ShowAtStart();

    QLabel *lblTipSection = nullptr;
    QLabel *lblTipText = nullptr;
    QCheckBox *chkLoadTipsAtStartup = nullptr;
    QPushButton *cmdNextTip = nullptr;
    QPushButton *cmdOK = nullptr;

private:
    km::frmTip &m_model;
};

} // namespace km::gui
