#include "gui/records/frmNotepad.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/records/RecordsViews.h"
#include "gui/shell/ShieldFilter.h"

namespace km::gui {

frmNotepad::frmNotepad(km::frmNotepad &model, QWidget *parent)
    : SortedSectionView(model, parent), m_model(model) {
    auto *left = new QWidget(this);
    cboCategories = new QComboBox(left);
    cboCategories->setToolTip(QStringLiteral("Show the memos of one category"));
    cmdEditCat = new QToolButton(left);
    cmdEditCat->setText(QStringLiteral("..."));
    cmdEditCat->setToolTip(QStringLiteral("Edit categories"));
    ListSelect = makeList(left, [this] { m_model.cmdEdit_Click(); });
    auto *filter = new QHBoxLayout;
    filter->addWidget(cboCategories, 1);
    filter->addWidget(cmdEditCat);
    auto *leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    leftLayout->addLayout(filter);
    leftLayout->addWidget(ListSelect, 1);

    auto *pane = new QWidget(this);
    txtSubject = new QLineEdit(pane);
    QFont bold = txtSubject->font();
    bold.setBold(true);
    txtSubject->setFont(bold);
    cboCategory = new QComboBox(pane);
    ShowOnly(cboCategory);
    txtInput = new QPlainTextEdit(pane);
    txtInput->setTabChangesFocus(true);
    showsRecordValue(txtSubject);
    showsRecordValue(txtInput);
    ctlPrivate = new QCheckBox(QStringLiteral("Private"), pane);
    ctlDateCreated = new QLabel(pane);
    ctlLastModified = new QLabel(pane);
    for (QLabel *date : {ctlDateCreated, ctlLastModified})
        date->setStyleSheet(QStringLiteral("color: #555;"));
    cmdAdd = new QPushButton(QStringLiteral("New"), pane);
    cmdEdit = new QPushButton(QStringLiteral("Edit"), pane);
    cmdDelete = new QPushButton(QStringLiteral("Delete"), pane);

    auto *head = new QGridLayout;
    head->addWidget(new QLabel(QStringLiteral("Subject"), pane), 0, 0);
    head->addWidget(txtSubject, 0, 1);
    head->addWidget(new QLabel(QStringLiteral("Category"), pane), 1, 0);
    head->addWidget(cboCategory, 1, 1);
    auto *flags = new QHBoxLayout;
    flags->addWidget(ctlPrivate);
    flags->addStretch();
    auto *dates = new QVBoxLayout;
    dates->addWidget(ctlDateCreated);
    dates->addWidget(ctlLastModified);
    flags->addLayout(dates);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *b : {cmdAdd, cmdEdit, cmdDelete})
        buttons->addWidget(b);
    buttons->addStretch();
    auto *paneLayout = new QVBoxLayout(pane);
    paneLayout->setContentsMargins(0, 0, 0, 0);
    paneLayout->addLayout(head);
    paneLayout->addWidget(txtInput, 1);
    paneLayout->addLayout(flags);
    paneLayout->addLayout(buttons);

    auto *split = new QSplitter(this);
    split->addWidget(left);
    split->addWidget(pane);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 2);
    split->setChildrenCollapsible(false);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(split);
    DrawOnWindowColour(this);
    InstallPaneShield(pane);

    onTextTyped(txtSubject, [this](const QString &text) {
        m_model.txtSubject = text;
        m_model.paneEdited();
    });
    onTextTyped(txtInput, [this](const QString &text) {
        m_model.txtInput = text;
        m_model.paneEdited();
    });
    connect(ctlPrivate, &QCheckBox::clicked, this, [this](bool on) {
        m_model.ctlPrivate = on;
        m_model.paneEdited();
    });
    connect(cboCategories, &QComboBox::activated, this, [this](int index) {
        command([this, index] {
            m_model.cboCategories.setListIndex(index);
            m_model.cboCategories_Click();
        });
    });
    connect(cmdEditCat, &QToolButton::clicked, this,
            [this] { command([this] { m_model.cmdEditCat_Click(); }); });
    connect(cmdAdd, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdAdd_Click(); }); });
    connect(cmdEdit, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdEdit_Click(); }); });
    connect(cmdDelete, &QPushButton::clicked, this,
            [this] { command([this] { m_model.cmdDelete_Click(); }); });
}

void frmNotepad::sync() {
    syncList();
    drawCombo(cboCategories, m_model.cboCategories);
    const bool editable = m_model.paneEditable();
    txtSubject->setReadOnly(!editable);
    txtInput->setReadOnly(!editable);
    ctlPrivate->setEnabled(editable);
    if (drawText(txtSubject, m_model.txtSubject)) txtSubject->setCursorPosition(0);
    drawCombo(cboCategory, m_model.cboCategory);
    drawPlain(txtInput, m_model.txtInput);
    ctlPrivate->setChecked(m_model.ctlPrivate);
    ctlDateCreated->setText(m_model.ctlDateCreated);
    ctlLastModified->setText(m_model.ctlLastModified);
}

} // namespace km::gui
