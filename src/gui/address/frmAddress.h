// The address book's window on Qt: the category filter, the list of File as
// and contact line, the name line and the composed pane with its word actions.
#pragma once

#include "address/frmAddress.h"
#include "gui/shell/SortedSectionView.h"

class QComboBox;
class QLabel;
class QPushButton;
class QTextEdit;
class QToolButton;

namespace km::gui {

class frmAddress : public SortedSectionView {
    Q_OBJECT
public:
    frmAddress(km::frmAddress &model, QWidget *parent);
    void sync() override;

    QComboBox *cboCategories = nullptr;
    QToolButton *cmdEditCat = nullptr;
    QListWidget *ListSelect = nullptr;
    QLabel *showName = nullptr;
    QTextEdit *showContact = nullptr;
    QPushButton *cmdAdd = nullptr, *cmdEdit = nullptr, *cmdDelete = nullptr;

    // The pane's text as the model composed it (CR LF line ends) and the
    // selection in it, for the classifier; and back.
    TextActions::Selection paneSelection() const;
    void setPaneSelection(const TextActions::Selection &box);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void drawPane();
    km::frmAddress &m_model;
    QString m_drawnPane;
};

} // namespace km::gui
