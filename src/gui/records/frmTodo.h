// The task list over its model: the category filter, "Show Completed Items",
// the buttons New, Edit and Delete, and the list of eight columns whose tick
// box completes a task. The model keeps the order; a header click asks the
// model to sort, and the widget only draws what the model holds.
#pragma once

#include "gui/shell/SectionView.h"
#include "records/frmTodo.h"

class QCheckBox;
class QComboBox;
class QPushButton;
class QToolButton;
class QTreeWidget;

namespace km::gui {

class frmTodo : public SectionView {
    Q_OBJECT
public:
    frmTodo(km::frmTodo &model, QWidget *parent = nullptr);
    void sync() override;

    QComboBox *cboCategories = nullptr;
    QToolButton *cmdEditCat = nullptr;
    QCheckBox *ShowCompleted = nullptr;
    QTreeWidget *TodoList = nullptr;
    QPushButton *cmdAdd = nullptr;
    QPushButton *cmdEdit = nullptr;
    QPushButton *cmdDelete = nullptr;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void command(const std::function<void()> &fn);
    void contextMenu(const QPoint &at);
    km::frmTodo &m_model;
};

} // namespace km::gui
