// The Startscreen over its model: the title, the version and the store in use,
// in a frame centred in the client area.
#pragma once

#include "gui/shell/SectionView.h"
#include "shell/frmSplash.h"

class QLabel;
class QLineEdit;

namespace km::gui {

class frmSplash : public SectionView {
    Q_OBJECT
public:
    frmSplash(km::frmSplash &model, QWidget *parent = nullptr);
    void sync() override;

    QLineEdit *txtVersion = nullptr;
    QLineEdit *txtDbName = nullptr;
    QLineEdit *txtDbPath = nullptr;

private:
    km::frmSplash &m_model;
};

// An empty section window with its name, for a section not built yet.
class frmSectionPlaceholder : public SectionView {
    Q_OBJECT
public:
    frmSectionPlaceholder(SectionWindow &model, QWidget *parent = nullptr);
};

} // namespace km::gui
