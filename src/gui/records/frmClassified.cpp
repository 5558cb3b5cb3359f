#include "gui/records/frmClassified.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/shell/PaneActionMenu.h"
#include "gui/records/RecordsViews.h"
#include "gui/shell/ShieldFilter.h"

namespace km::gui {

namespace {

// The kinds as the kind panel groups them.
struct KindGroup {
    const char *caption;
    QList<int> kinds;
};
const QList<KindGroup> &kindGroups() {
    static const QList<KindGroup> groups = {
        {"Internet", {1, 16, 2, 3, 4}}, {"Money", {5, 6, 7, 8}}, {"Software", {9, 10}},
        {"Personal", {11, 12, 13, 14}}, {"Miscellaneous", {15}},
    };
    return groups;
}

} // namespace

frmClassified::frmClassified(km::frmClassified &model, QWidget *parent)
    : SortedSectionView(model, parent), m_model(model) {
    // The kinds: one column of buttons under the captions of their groups.
    auto *kinds = new QWidget(this);
    auto *kindColumn = new QVBoxLayout(kinds);
    kindColumn->setContentsMargins(0, 0, 0, 0);
    kindColumn->setSpacing(1);
    auto *exclusive = new QButtonGroup(this);
    for (const KindGroup &group : kindGroups()) {
        auto *caption = new QLabel(QString::fromLatin1(group.caption), kinds);
        QFont bold = caption->font();
        bold.setBold(true);
        caption->setFont(bold);
        caption->setStyleSheet(QStringLiteral("color: #1f4e79;"));
        if (kindColumn->count() > 0) kindColumn->addSpacing(5);
        kindColumn->addWidget(caption);
        for (int id : group.kinds) {
            const ConfidentialKind *kind = KindOf(id);
            auto *button = new QToolButton(kinds);
            button->setText(kind->caption);
            button->setToolTip(kind->toolTip);
            button->setCheckable(true);
            button->setAutoRaise(true);
            button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
            button->setFocusPolicy(Qt::TabFocus);
            exclusive->addButton(button, id);
            cat[id] = button;
            kindColumn->addWidget(button);
        }
    }
    kindColumn->addStretch();

    listSelect = makeList(this, [this] { m_model.cmdEdit_Click(); });

    auto *pane = new QWidget(this);
    lblCategory = new QLabel(pane);
    QFont big = lblCategory->font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() * 1.2);
    lblCategory->setFont(big);
    auto *fields = new QGridLayout;
    for (int i = 0; i < 5; ++i) {
        lblTxt[i] = new QLabel(pane);
        txtCtl[i] = new QLineEdit(pane);
        txtCtl[i]->setContextMenuPolicy(Qt::CustomContextMenu);
        showsRecordValue(txtCtl[i]);
        fields->addWidget(lblTxt[i], i, 0);
        fields->addWidget(txtCtl[i], i, 1);
        connect(txtCtl[i], &QWidget::customContextMenuRequested, this,
                [this, i](const QPoint &pos) { offerCopy(txtCtl[i], i, pos); });
        onTextTyped(txtCtl[i], [this, i](const QString &text) {
            m_model.txtCtl[static_cast<size_t>(i)] = text;
            m_model.paneEdited();
        });
    }
    fields->setColumnStretch(1, 1);
    txtNotes = new QPlainTextEdit(pane);
    txtNotes->setTabChangesFocus(true);
    txtNotes->setContextMenuPolicy(Qt::CustomContextMenu);
    showsRecordValue(txtNotes);
    connect(txtNotes, &QWidget::customContextMenuRequested, this, [this](const QPoint &pos) {
        // The position is the viewport's, inside the frame.
        offerCopy(txtNotes->viewport(), km::frmClassified::notes, pos);
    });
    ctlPrivate = new QCheckBox(QStringLiteral("Private"), pane);
    chkPlainPW = new QCheckBox(QStringLiteral("Show Plain Password"), pane);
    lblLastModified = new QLabel(pane);
    lblLastModified->setStyleSheet(QStringLiteral("color: #555;"));
    cmdAdd = new QPushButton(QStringLiteral("New Record"), pane);
    cmdEdit = new QPushButton(QStringLiteral("Edit"), pane);
    cmdDelete = new QPushButton(QStringLiteral("Delete"), pane);

    auto *flags = new QHBoxLayout;
    flags->addWidget(ctlPrivate);
    flags->addSpacing(16);
    flags->addWidget(chkPlainPW);
    flags->addStretch();
    auto *buttons = new QHBoxLayout;
    for (QPushButton *b : {cmdAdd, cmdEdit, cmdDelete})
        buttons->addWidget(b);
    buttons->addStretch();
    auto *paneLayout = new QVBoxLayout(pane);
    paneLayout->setContentsMargins(0, 0, 0, 0);
    paneLayout->addWidget(lblCategory);
    paneLayout->addLayout(fields);
    paneLayout->addWidget(new QLabel(QStringLiteral("Notes:"), pane));
    paneLayout->addWidget(txtNotes, 1);
    paneLayout->addWidget(lblLastModified);
    paneLayout->addLayout(flags);
    paneLayout->addLayout(buttons);

    listSelect->setMinimumWidth(150);
    auto *layout = new QHBoxLayout(this);
    layout->addWidget(kinds);
    layout->addWidget(listSelect, 2);
    layout->addWidget(pane, 5);
    DrawOnWindowColour(this);
    InstallPaneShield(pane);

    onTextTyped(txtNotes, [this](const QString &text) {
        m_model.txtNotes = text;
        m_model.paneEdited();
    });
    connect(ctlPrivate, &QCheckBox::clicked, this, [this](bool on) {
        m_model.ctlPrivate = on;
        m_model.paneEdited();
    });
    connect(exclusive, &QButtonGroup::idClicked, this,
            [this](int kind) { command([this, kind] { m_model.cat_Click(kind); }); });
    connect(chkPlainPW, &QCheckBox::clicked, this, [this](bool on) {
        command([this, on] {
            m_model.chkPlainPW = on;
            m_model.chkPlainPW_Click();
        });
    });
    connect(cmdAdd, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdAdd_Click(); }); });
    connect(cmdEdit, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdEdit_Click(); }); });
    connect(cmdDelete, &QPushButton::clicked, this,
            [this] { command([this] { m_model.cmdDelete_Click(); }); });
}

void frmClassified::offerCopy(QWidget *control, int field, const QPoint &pos) {
    // The word under the pointer (or the selection) is classified for the
    // pane's menu: Copy, Copy (no spaces), Send Mail, Dial, Open Website.
    TextActions::Selection box;
    auto *line = qobject_cast<QLineEdit *>(control);
    if (line) {
        box.text = line->text();
        box.selStart = line->hasSelectedText() ? line->selectionStart() : line->cursorPositionAt(pos);
        box.selLength = line->hasSelectedText() ? static_cast<int>(line->selectedText().size()) : 0;
    } else {
        QTextCursor c = txtNotes->textCursor();
        if (!c.hasSelection()) c = txtNotes->cursorForPosition(pos);
        box.text = txtNotes->toPlainText();
        box.selStart = c.selectionStart();
        box.selLength = c.selectionEnd() - c.selectionStart();
    }
    if (!m_model.ShowActionMenu(field, box)) return;
    if (line) {
        line->setSelection(box.selStart, box.selLength);
    } else {
        QTextCursor c = txtNotes->textCursor();
        c.setPosition(box.selStart);
        c.setPosition(box.selStart + box.selLength, QTextCursor::KeepAnchor);
        txtNotes->setTextCursor(c);
    }
    const QString entry = PopUpActionMenu(this, m_model.paneMenu.menu, control->mapToGlobal(pos));
    if (!entry.isEmpty()) command([this, entry] { m_model.menuCommand(entry, -1, QString()); });
}

void frmClassified::sync() {
    syncList();
    for (auto &[kind, button] : cat)
        button->setChecked(kind == m_model.cat);
    lblCategory->setText(m_model.lblCategory);
    const bool editable = m_model.paneEditable();
    for (size_t i = 0; i < 5; ++i) {
        lblTxt[i]->setText(m_model.lblTxt[i]);
        lblTxt[i]->setVisible(m_model.visible[i]);
        txtCtl[i]->setVisible(m_model.visible[i]);
        txtCtl[i]->setEchoMode(m_model.masked[i] ? QLineEdit::Password : QLineEdit::Normal);
        txtCtl[i]->setReadOnly(!editable);
        if (drawText(txtCtl[i], m_model.txtCtl[i])) txtCtl[i]->setCursorPosition(0);
    }
    txtNotes->setReadOnly(!editable);
    drawPlain(txtNotes, m_model.txtNotes);
    ctlPrivate->setEnabled(editable);
    ctlPrivate->setChecked(m_model.ctlPrivate);
    chkPlainPW->setChecked(m_model.chkPlainPW);
    lblLastModified->setText(m_model.lblLastModified);
}

} // namespace km::gui
