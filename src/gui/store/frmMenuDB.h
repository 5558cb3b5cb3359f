// "DB menu" over its model: create a store, open one, or leave.
#pragma once

#include "gui/ModelDialog.h"
#include "store/frmMenuDB.h"

class QPushButton;

namespace km::gui {

class frmMenuDB : public ModelDialog {
    Q_OBJECT
public:
    frmMenuDB(km::frmMenuDB &model, QWidget *parent = nullptr);

    void sync() override {}

    QPushButton *cmdNewDB = nullptr;
    QPushButton *cmdOldDB = nullptr;
    QPushButton *cmdCancel = nullptr;

protected:
    bool cancelCommand() override;

private:
    km::frmMenuDB &m_model;
};

} // namespace km::gui
