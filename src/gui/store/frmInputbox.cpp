#include "gui/store/frmInputbox.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/shell/ShieldFilter.h"

namespace km::gui {

frmInputbox::frmInputbox(km::frmInputbox &model, QWidget *parent)
    : ModelDialog(model, parent), m_model(model) {
    m_lblPrompt = new QLabel(this);
    m_lblPrompt->setWordWrap(true);
    txtInput = new QLineEdit(this);
    txtInput->setObjectName(QStringLiteral("txtInput"));
    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdOK->setDefault(true);
    cmdCancel = new QPushButton(QStringLiteral("Cancel"), this);
    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(cmdOK, QDialogButtonBox::AcceptRole);
    buttons->addButton(cmdCancel, QDialogButtonBox::RejectRole);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_lblPrompt);
    layout->addWidget(txtInput);
    layout->addSpacing(6);
    layout->addWidget(buttons);
    setMinimumWidth(360);

    onTextTyped(txtInput, [this](const QString &text) { m_model.txtInput = text; });
    connect(cmdOK, &QPushButton::clicked, this, [this] {
        command([&] {
            m_model.txtInput = txtInput->text();
            m_model.cmdOK_Click();
        });
    });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { reject(); });

    InstallShield(this);
    txtInput->setFocus();
}

bool frmInputbox::cancelCommand() {
    m_model.cmdCancel_Click();
    return true;
}

void frmInputbox::sync() {
    setWindowTitle(m_model.caption());
    m_lblPrompt->setText(m_model.lblPrompt);
    drawText(txtInput, m_model.txtInput);
}

} // namespace km::gui
