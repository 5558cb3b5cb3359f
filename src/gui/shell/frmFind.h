// Find on Qt: the text, Case Sensitive, the nine boxes of "where:", the
// result list and its buttons. While the search runs the window shows how far
// it got and Cancel stops it; the events of the desktop keep running.
#pragma once

#include <array>

#include "gui/ModelDialog.h"
#include "shell/frmFind.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

namespace km::gui {

class frmFind : public ModelDialog {
    Q_OBJECT
public:
    frmFind(km::frmFind &model, QWidget *parent);
    void sync() override;

    QLineEdit *txtFind = nullptr;
    QCheckBox *chkCaseSensitive = nullptr;
    std::array<QCheckBox *, FindScopeCount> PinApp{};
    QPushButton *cmdSelectAll = nullptr, *cmdDeselect = nullptr, *cmdFind = nullptr, *cmdGoto = nullptr,
                *cmdCancel = nullptr;
    QTreeWidget *LV = nullptr;
    QLabel *lblSummary = nullptr;
    QLabel *lblProgress = nullptr;

protected:
    bool cancelCommand() override;

private:
    km::frmFind &m_model;
};

} // namespace km::gui
