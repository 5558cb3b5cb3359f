#include "gui/store/frmPW.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/shell/ShieldFilter.h"

namespace km::gui {

frmPW::frmPW(km::frmPW &model, QWidget *parent) : ModelDialog(model, parent), m_model(model) {
    m_lblPrompt = new QLabel(this);
    m_txtPath = new QLabel(this);
    m_txtPath->setWordWrap(true);
    m_txtPath->setTextInteractionFlags(Qt::NoTextInteraction);
    txtInput = new QLineEdit(this);
    txtInput->setObjectName(QStringLiteral("txtInput"));
    // Nothing typed here may leave through the clipboard or a drag.
    txtInput->setContextMenuPolicy(Qt::NoContextMenu);
    txtInput->setDragEnabled(false);
    keepOutOfSelection(txtInput);
    chkShowClear = new QCheckBox(this);
    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdOK->setDefault(true);
    cmdCancel = new QPushButton(QStringLiteral("Cancel"), this);
    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(cmdOK, QDialogButtonBox::AcceptRole);
    buttons->addButton(cmdCancel, QDialogButtonBox::RejectRole);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_txtPath);
    layout->addSpacing(6);
    layout->addWidget(m_lblPrompt);
    layout->addWidget(txtInput);
    layout->addWidget(chkShowClear);
    layout->addSpacing(6);
    layout->addWidget(buttons);
    setMinimumWidth(380);

    onTextTyped(txtInput, [this](const QString &text) {
        command([&] {
            m_model.txtInput = text;
            m_model.txtInput_Change();
        });
    });
    connect(chkShowClear, &QCheckBox::toggled, this, [this](bool on) {
        command([&] {
            m_model.chkShowClear = on;
            m_model.chkShowClear_Click();
        });
        txtInput->setFocus();
    });
    connect(cmdOK, &QPushButton::clicked, this, [this] {
        command([&] {
            m_model.txtInput = txtInput->text();
            m_model.cmdOK_Click();
        });
        txtInput->setFocus();
    });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { reject(); });

    InstallShield(this);
    txtInput->setFocus();
}

frmPW::~frmPW() {
    // The line edit's own buffer is the one copy the model cannot wipe.
    const QSignalBlocker block(txtInput);
    txtInput->clear();
}

bool frmPW::cancelCommand() {
    m_model.cmdCancel_Click();
    return true;
}

void frmPW::sync() {
    setWindowTitle(m_model.caption());
    m_lblPrompt->setText(m_model.lblPrompt);
    m_txtPath->setText(m_model.txtPath);
    m_txtPath->setVisible(!m_model.txtPath.isEmpty());
    drawText(txtInput, m_model.txtInput);
    txtInput->setEchoMode(m_model.masked ? QLineEdit::Password : QLineEdit::Normal);
    {
        const QSignalBlocker block(chkShowClear);
        chkShowClear->setText(m_model.chkShowClearCaption);
        chkShowClear->setChecked(m_model.chkShowClear);
    }
    cmdOK->setEnabled(m_model.cmdOKEnabled);
}

} // namespace km::gui
