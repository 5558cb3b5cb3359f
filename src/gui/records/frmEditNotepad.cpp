#include "gui/records/frmEditNotepad.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/records/RecordsViews.h"
#include "gui/shell/ShieldFilter.h"

namespace km::gui {

frmEditNotepad::frmEditNotepad(km::frmEditNotepad &model, QWidget *parent)
    : ModelDialog(model, parent), m_model(model) {
    setObjectName(QStringLiteral("memo-editor"));
    ctlSubject = new QLineEdit(this);
    ctlCategory = new QComboBox(this);
    cmdEditCat = new QToolButton(this);
    cmdEditCat->setText(QStringLiteral("..."));
    cmdEditCat->setToolTip(QStringLiteral("Edit categories"));
    ctlNote = new QPlainTextEdit(this);
    ctlNote->setTabChangesFocus(true);
    ctlPrivate = new QCheckBox(QStringLiteral("Private"), this);
    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdEsc = new QPushButton(QStringLiteral("Esc"), this);
    // Enter in the body is a line end, not OK.
    cmdOK->setAutoDefault(false);
    cmdEsc->setAutoDefault(false);

    auto *grid = new QGridLayout;
    grid->addWidget(new QLabel(QStringLiteral("Subject"), this), 0, 0);
    grid->addWidget(ctlSubject, 0, 1, 1, 2);
    grid->addWidget(new QLabel(QStringLiteral("Category"), this), 1, 0);
    grid->addWidget(ctlCategory, 1, 1);
    grid->addWidget(cmdEditCat, 1, 2);
    grid->setColumnStretch(1, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(ctlPrivate);
    buttons->addStretch();
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdEsc);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(new QLabel(QStringLiteral("Body:"), this));
    layout->addWidget(ctlNote, 1);
    layout->addLayout(buttons);
    resize(520, 420);

    connect(ctlSubject, &QLineEdit::textChanged, this, [this](const QString &text) {
        m_model.ctlSubject = text;
        m_model.changed = true;
    });
    connect(ctlNote, &QPlainTextEdit::textChanged, this, [this] {
        m_model.ctlNote = ctlNote->toPlainText();
        m_model.changed = true;
    });
    connect(ctlCategory, &QComboBox::activated, this, [this](int index) {
        m_model.ctlCategory.setListIndex(index);
        m_model.changed = true;
    });
    connect(ctlPrivate, &QCheckBox::clicked, this, [this](bool on) {
        m_model.ctlPrivate = on;
        m_model.changed = true;
    });
    connect(cmdEditCat, &QToolButton::clicked, this,
            [this] { command([this] { m_model.cmdEditCat_Click(); }); });
    connect(cmdOK, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdOK_Click(); }); });
    connect(cmdEsc, &QPushButton::clicked, this, [this] { reject(); });

    InstallShield(this);
    ctlNote->setFocus();
}

bool frmEditNotepad::cancelCommand() {
    m_model.cmdEsc_Click();
    return true;
}

void frmEditNotepad::sync() {
    drawText(ctlSubject, m_model.ctlSubject);
    drawCombo(ctlCategory, m_model.ctlCategory);
    drawPlain(ctlNote, m_model.ctlNote);
    ctlPrivate->setChecked(m_model.ctlPrivate);
}

} // namespace km::gui
