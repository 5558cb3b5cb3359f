#include "gui/records/frmEditConfidential.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/records/RecordsViews.h"
#include "gui/shell/ShieldFilter.h"

namespace km::gui {

frmEditConfidential::frmEditConfidential(km::frmEditConfidential &model, QWidget *parent)
    : ModelDialog(model, parent), m_model(model) {
    setObjectName(QStringLiteral("confidential-editor"));
    auto *fields = new QGridLayout;
    for (size_t i = 0; i < 5; ++i) {
        lblTxt[i] = new QLabel(this);
        txtCtl[i] = new QLineEdit(this);
        fields->addWidget(lblTxt[i], static_cast<int>(i), 0);
        fields->addWidget(txtCtl[i], static_cast<int>(i), 1);
        connect(txtCtl[i], &QLineEdit::textChanged, this, [this, i](const QString &text) {
            m_model.txtCtl[i] = text;
            m_model.changed = true;
        });
    }
    fields->setColumnStretch(1, 1);
    txtNotes = new QPlainTextEdit(this);
    txtNotes->setTabChangesFocus(true);
    ctlPrivate = new QCheckBox(QStringLiteral("Private"), this);
    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdEsc = new QPushButton(QStringLiteral("Esc"), this);
    cmdOK->setAutoDefault(false);
    cmdEsc->setAutoDefault(false);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(ctlPrivate);
    buttons->addStretch();
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdEsc);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addWidget(new QLabel(QStringLiteral("Notes:"), this));
    layout->addWidget(txtNotes, 1);
    layout->addLayout(buttons);
    resize(480, 400);

    connect(txtNotes, &QPlainTextEdit::textChanged, this, [this] {
        m_model.txtNotes = txtNotes->toPlainText();
        m_model.changed = true;
    });
    connect(ctlPrivate, &QCheckBox::clicked, this, [this](bool on) {
        m_model.ctlPrivate = on;
        m_model.changed = true;
    });
    connect(cmdOK, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdOK_Click(); }); });
    connect(cmdEsc, &QPushButton::clicked, this, [this] { reject(); });

    InstallShield(this);
    txtCtl[0]->setFocus();
}

bool frmEditConfidential::cancelCommand() {
    m_model.cmdEsc_Click();
    return true;
}

void frmEditConfidential::sync() {
    setWindowTitle(m_model.caption());
    for (size_t i = 0; i < 5; ++i) {
        lblTxt[i]->setText(m_model.lblTxt[i]);
        lblTxt[i]->setVisible(m_model.visible[i]);
        txtCtl[i]->setVisible(m_model.visible[i]);
        txtCtl[i]->setEchoMode(m_model.masked[i] ? QLineEdit::Password : QLineEdit::Normal);
        drawText(txtCtl[i], m_model.txtCtl[i]);
    }
    drawPlain(txtNotes, m_model.txtNotes);
    ctlPrivate->setChecked(m_model.ctlPrivate);
}

} // namespace km::gui
