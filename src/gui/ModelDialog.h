// The common frame of every modal window: a QDialog over a window model. The
// widget draws the model's state in sync() and hands each click or key to the
// model through command(); it closes when the model asks to.
#pragma once

#include <functional>
#include <optional>

#include <QDialog>

#include "ui/Dialogs.h"
#include "ui/WindowModel.h"

namespace km::gui {

class ModelDialog : public QDialog {
    Q_OBJECT
public:
    explicit ModelDialog(WindowModel &model, QWidget *parent = nullptr);

    // Shows the dialog modally and returns true when the model closed through
    // OK. A ProgramEnd thrown by a command comes out here, after the dialog's
    // event loop has ended: it must never unwind through Qt's own frames.
    bool runModal();

    // Redraws the model's state.
    virtual void sync() = 0;

protected:
    // Runs one of the model's commands, then redraws, and closes the dialog
    // when the model asked to close or the program is ending.
    void command(const std::function<void()> &fn);
    // What Esc and the window's close button do; false closes the dialog
    // without asking the model.
    virtual bool cancelCommand() { return false; }
    void reject() override;

private:
    void finishIfClosed();

    WindowModel &m_model;
    std::optional<ProgramEnd> m_end;
};

} // namespace km::gui
