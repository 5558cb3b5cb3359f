#include "gui/records/frmEditNotepad.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QToolButton>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/records/RecordsViews.h"

namespace km::gui {

frmEditNotepad::frmEditNotepad(km::frmEditNotepad &model, QWidget *parent)
    : RecordEditorDialog(model, parent), m_model(model) {
    setObjectName(QStringLiteral("memo-editor"));
    ctlSubject = new QLineEdit(this);
    ctlCategory = new QComboBox(this);
    cmdEditCat = new QToolButton(this);
    cmdEditCat->setText(QStringLiteral("..."));
    cmdEditCat->setToolTip(QStringLiteral("Edit categories"));
    ctlNote = new QPlainTextEdit(this);
    ctlNote->setTabChangesFocus(true);
    showsRecordValue(ctlSubject);
    showsRecordValue(ctlNote);
    ctlPrivate = new QCheckBox(QStringLiteral("Private"), this);

    auto *grid = new QGridLayout;
    grid->addWidget(new QLabel(QStringLiteral("Subject"), this), 0, 0);
    grid->addWidget(ctlSubject, 0, 1, 1, 2);
    grid->addWidget(new QLabel(QStringLiteral("Category"), this), 1, 0);
    grid->addWidget(ctlCategory, 1, 1);
    grid->addWidget(cmdEditCat, 1, 2);
    grid->setColumnStretch(1, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(new QLabel(QStringLiteral("Body:"), this));
    layout->addWidget(ctlNote, 1);
    layout->addLayout(buttonRow(ctlPrivate));
    resize(520, 420);

    onTextTyped(ctlSubject, [this](const QString &text) { edited([&] { m_model.ctlSubject = text; }); });
    onTextTyped(ctlNote, [this](const QString &text) { edited([&] { m_model.ctlNote = text; }); });
    connect(ctlCategory, &QComboBox::activated, this,
            [this](int index) { edited([&] { m_model.ctlCategory.setListIndex(index); }); });
    connect(ctlPrivate, &QCheckBox::clicked, this,
            [this](bool on) { edited([&] { m_model.ctlPrivate = on; }); });
    connect(cmdEditCat, &QToolButton::clicked, this,
            [this] { command([this] { m_model.cmdEditCat_Click(); }); });
    ctlNote->setFocus();
}

void frmEditNotepad::sync() {
    drawText(ctlSubject, m_model.ctlSubject);
    drawCombo(ctlCategory, m_model.ctlCategory);
    drawPlain(ctlNote, m_model.ctlNote);
    ctlPrivate->setChecked(m_model.ctlPrivate);
}

} // namespace km::gui
