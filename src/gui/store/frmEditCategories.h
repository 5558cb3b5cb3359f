// The category editor over its model: the list and New, Rename, Delete, OK, Esc.
#pragma once

#include "gui/ModelDialog.h"
#include "store/frmEditCategories.h"

class QListWidget;
class QPushButton;

namespace km::gui {

class frmEditCategories : public ModelDialog {
    Q_OBJECT
public:
    frmEditCategories(km::frmEditCategories &model, QWidget *parent = nullptr);

    void sync() override;

    QListWidget *CatList = nullptr;
    QPushButton *cmdNew = nullptr;
    QPushButton *cmdRename = nullptr;
    QPushButton *cmdDelete = nullptr;
    QPushButton *cmdOK = nullptr;
    QPushButton *cmdEsc = nullptr;

protected:
    bool cancelCommand() override;

private:
    km::frmEditCategories &m_model;
};

} // namespace km::gui
