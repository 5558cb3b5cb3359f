#include "gui/ModelDialog.h"

namespace km::gui {

ModelDialog::ModelDialog(WindowModel &model, QWidget *parent) : QDialog(parent), m_model(model) {
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowTitle(model.caption());
}

bool ModelDialog::runModal() {
    m_model.closeRequested = false;
    sync();
    exec();
    if (m_end) {
        const ProgramEnd end = *m_end;
        m_end.reset();
        throw end;
    }
    return m_model.closeRequested && m_model.acceptedResult;
}

void ModelDialog::command(const std::function<void()> &fn) {
    try {
        fn();
    } catch (const ProgramEnd &end) {
        m_end = end;
        done(QDialog::Rejected);
        return;
    }
    sync();
    finishIfClosed();
}

void ModelDialog::finishIfClosed() {
    if (m_model.closeRequested && isVisible())
        done(m_model.acceptedResult ? QDialog::Accepted : QDialog::Rejected);
}

void ModelDialog::reject() {
    if (m_model.closeRequested || m_end) {
        QDialog::reject();
        return;
    }
    bool handled = false;
    command([&] { handled = cancelCommand(); });
    if (!handled && !m_end) QDialog::reject();
}

} // namespace km::gui
