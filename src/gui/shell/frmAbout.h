// The About box: the program's name and version.
#pragma once

#include <QDialog>

namespace km::gui {

class frmAbout : public QDialog {
    Q_OBJECT
public:
    explicit frmAbout(QWidget *parent = nullptr);
};

} // namespace km::gui
