// What the views of the sorted sections share (memos, confidential data, the
// address book): the list of titles wired to the model, and the dialog frame
// of a record's editor.
//
// The list: selecting a row shows it (the model asks "Store record?" first
// when the pane was changed), a double click or Enter edits it, Delete
// deletes it. The double click is queued: the editor must not run inside the
// list's own mouse handling, which the refill after the save would pull from
// under it.
#pragma once

#include <functional>

#include "gui/ModelDialog.h"
#include "gui/shell/SectionView.h"
#include "shell/SortedSection.h"

class QCheckBox;
class QHBoxLayout;
class QListWidget;
class QPushButton;

namespace km::gui {

class SortedSectionView : public SectionView {
    Q_OBJECT
public:
    SortedSectionView(SortedSectionModel &model, QWidget *parent);

protected:
    // Makes the list of titles; edit is the section's Edit command.
    QListWidget *makeList(QWidget *parent, std::function<void()> edit);
    // Runs a command of the model, then redraws the whole view.
    void command(const std::function<void()> &fn);
    // Draws the enabled state and the list.
    void syncList();
    bool eventFilter(QObject *watched, QEvent *event) override;

    QListWidget *m_list = nullptr;

private:
    SortedSectionModel &m_sorted;
    std::function<void()> m_edit;
};

// The frame of a record's editor: OK and "Esc" (neither a default button:
// Enter in a text is a line end), the shield on the whole window, and Esc or
// the close button going to the model's cmdEsc_Click, which asks "Discard
// changes?" when something was typed.
class RecordEditorDialog : public ModelDialog {
    Q_OBJECT
public:
    RecordEditorDialog(RecordEditor &model, QWidget *parent);

    QPushButton *cmdOK = nullptr;
    QPushButton *cmdEsc = nullptr;

protected:
    // The row under the fields, made once the fields are: the private box
    // (if any) on the left, OK and Esc on the right.
    QHBoxLayout *buttonRow(QCheckBox *privateBox);
    // Something was typed: the model keeps the value and marks itself changed.
    void edited(const std::function<void()> &store);
    bool cancelCommand() override;

private:
    RecordEditor &m_editor;
};

} // namespace km::gui
