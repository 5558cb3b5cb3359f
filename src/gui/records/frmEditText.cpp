#include "gui/records/frmEditText.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/records/RecordsViews.h"
#include "gui/shell/ShieldFilter.h"

namespace km::gui {

frmEditText::frmEditText(km::frmEditText &model, QWidget *parent)
    : ModelDialog(model, parent), m_model(model) {
    setObjectName(QStringLiteral("text-editor"));
    txtSubject = new QLineEdit(this);
    txt = new QPlainTextEdit(this);
    txt->setTabChangesFocus(true);
    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdEsc = new QPushButton(QStringLiteral("Esc"), this);
    cmdOK->setAutoDefault(false);
    cmdEsc->setAutoDefault(false);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdEsc);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(txtSubject);
    layout->addWidget(txt, 1);
    layout->addLayout(buttons);
    resize(520, 420);

    connect(txtSubject, &QLineEdit::textChanged, this, [this](const QString &text) {
        m_model.txtSubject = text;
        m_model.changed = true;
    });
    connect(txt, &QPlainTextEdit::textChanged, this, [this] {
        m_model.txt = txt->toPlainText();
        m_model.changed = true;
    });
    connect(cmdOK, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdOK_Click(); }); });
    connect(cmdEsc, &QPushButton::clicked, this, [this] { reject(); });

    InstallShield(this);
    txt->setFocus();
}

bool frmEditText::cancelCommand() {
    m_model.cmdEsc_Click();
    return true;
}

void frmEditText::sync() {
    setWindowTitle(m_model.caption());
    drawText(txtSubject, m_model.txtSubject);
    drawPlain(txt, m_model.txt);
}

} // namespace km::gui
