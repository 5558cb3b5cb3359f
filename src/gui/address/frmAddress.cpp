#include "gui/address/frmAddress.h"

#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QSplitter>
#include <QStyledItemDelegate>
#include <QTextEdit>
#include <QToolButton>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/records/RecordsViews.h"
#include "gui/shell/PaneActionMenu.h"
#include "gui/shell/ShieldFilter.h"

namespace km::gui {

namespace {

constexpr int ContactRole = Qt::UserRole + 7;
constexpr int NameColumnWidth = 190;

// Draws a row as two columns: File as, and the contact line at a fixed place.
class TwoColumns : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override {
        // Drawn through the style directly: the delegate's own paint would
        // take the text from the model again.
        QStyle *style = option.widget ? option.widget->style() : QApplication::style();
        QStyleOptionViewItem row = option;
        initStyleOption(&row, index);
        row.text.clear();
        style->drawControl(QStyle::CE_ItemViewItem, &row, painter, option.widget);
        QStyleOptionViewItem name = option;
        initStyleOption(&name, index);
        name.rect.setWidth(std::min(NameColumnWidth - 6, option.rect.width()));
        name.backgroundBrush = Qt::NoBrush;
        name.state &= ~QStyle::State_HasFocus;
        style->drawControl(QStyle::CE_ItemViewItem, &name, painter, option.widget);
        QStyleOptionViewItem contact = name;
        contact.text = index.data(ContactRole).toString();
        contact.rect = option.rect;
        contact.rect.setLeft(option.rect.left() + NameColumnWidth);
        style->drawControl(QStyle::CE_ItemViewItem, &contact, painter, option.widget);
    }
};

// The rich text of the pane: the labels in bold at every occurrence, the
// heading underlined, line ends and tabs kept.
QString paneHtml(const Address::Pane &pane) {
    QStringList marks = pane.boldLabels;
    std::sort(marks.begin(), marks.end(), [](const QString &a, const QString &b) { return a.size() > b.size(); });
    QString html = QStringLiteral("<div style=\"white-space:pre-wrap\">");
    const QString &t = pane.text;
    for (qsizetype i = 0; i < t.size();) {
        if (t.mid(i, 2) == QLatin1String("\r\n")) {
            html += QLatin1Char('\n');
            i += 2;
            continue;
        }
        if (!pane.underlined.isEmpty() && t.mid(i, pane.underlined.size()) == pane.underlined &&
            t.mid(i + pane.underlined.size(), 1) == QLatin1String(":")) {
            html += QStringLiteral("<u>") + pane.underlined.toHtmlEscaped() + QStringLiteral("</u>");
            i += pane.underlined.size();
            continue;
        }
        bool marked = false;
        for (const QString &m : marks)
            if (!m.isEmpty() && t.mid(i, m.size()) == m) {
                html += QStringLiteral("<b>") + m.toHtmlEscaped() + QStringLiteral("</b>");
                i += m.size();
                marked = true;
                break;
            }
        if (marked) continue;
        html += QString(t.at(i)).toHtmlEscaped();
        ++i;
    }
    return html + QStringLiteral("</div>");
}

} // namespace

frmAddress::frmAddress(km::frmAddress &model, QWidget *parent) : SortedSectionView(model, parent), m_model(model) {
    auto *left = new QWidget(this);
    cboCategories = new QComboBox(left);
    cboCategories->setToolTip(QStringLiteral("Show the addresses of one category"));
    cmdEditCat = new QToolButton(left);
    cmdEditCat->setText(QStringLiteral("..."));
    cmdEditCat->setToolTip(QStringLiteral("Edit categories"));
    ListSelect = makeList(left, [this] { m_model.cmdEdit_Click(); });
    ListSelect->setItemDelegate(new TwoColumns(ListSelect));
    ListSelect->setContextMenuPolicy(Qt::CustomContextMenu);
    auto *filter = new QHBoxLayout;
    filter->addWidget(cboCategories, 1);
    filter->addWidget(cmdEditCat);
    auto *header = new QHBoxLayout;
    auto *nameHead = new QLabel(QStringLiteral("Name"), left);
    nameHead->setFixedWidth(NameColumnWidth);
    header->addWidget(nameHead);
    header->addWidget(new QLabel(QStringLiteral("Contact"), left), 1);
    header->setContentsMargins(4, 0, 0, 0);
    auto *leftLayout = new QVBoxLayout(left);
    leftLayout->setContentsMargins(0, 0, 0, 0);
    leftLayout->addLayout(filter);
    leftLayout->addLayout(header);
    leftLayout->addWidget(ListSelect, 1);

    auto *pane = new QWidget(this);
    showName = new QLabel(pane);
    QFont big = showName->font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() * 1.3);
    showName->setFont(big);
    showName->setTextInteractionFlags(Qt::NoTextInteraction);
    showContact = new QTextEdit(pane);
    showContact->setReadOnly(true);
    showContact->setTabStopDistance(showContact->fontMetrics().horizontalAdvance(QLatin1Char('x')) * 18);
    showsRecordValue(showContact);
    showContact->viewport()->installEventFilter(this);
    cmdAdd = new QPushButton(QStringLiteral("New"), pane);
    cmdEdit = new QPushButton(QStringLiteral("Edit"), pane);
    cmdDelete = new QPushButton(QStringLiteral("Delete"), pane);
    auto *buttons = new QHBoxLayout;
    for (QPushButton *b : {cmdAdd, cmdEdit, cmdDelete})
        buttons->addWidget(b);
    buttons->addStretch();
    auto *paneLayout = new QVBoxLayout(pane);
    paneLayout->setContentsMargins(0, 0, 0, 0);
    paneLayout->addWidget(showName);
    paneLayout->addWidget(showContact, 1);
    paneLayout->addLayout(buttons);

    auto *split = new QSplitter(this);
    split->addWidget(left);
    split->addWidget(pane);
    split->setStretchFactor(0, 2);
    split->setStretchFactor(1, 3);
    split->setChildrenCollapsible(false);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(split);
    DrawOnWindowColour(this);
    InstallPaneShield(pane);
    installEventFilter(this);

    connect(cboCategories, &QComboBox::activated, this, [this](int index) {
        command([this, index] {
            m_model.cboCategories.setListIndex(index);
            m_model.cboCategories_Click();
        });
    });
    connect(cmdEditCat, &QToolButton::clicked, this, [this] { command([this] { m_model.cmdEditCat_Click(); }); });
    connect(cmdAdd, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdAdd_Click(); }); });
    connect(cmdEdit, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdEdit_Click(); }); });
    connect(cmdDelete, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdDelete_Click(); }); });
    connect(ListSelect, &QListWidget::customContextMenuRequested, this, [this](const QPoint &pos) {
        const int row = ListSelect->indexAt(pos).row();
        if (row < 0) return;
        if (row != m_model.ListSelect.ListIndex()) command([this, row] { m_model.listSelect_Click(row); });
        QMenu menu(this);
        QAction *edit = menu.addAction(QStringLiteral("Edit"));
        QAction *remove = menu.addAction(QStringLiteral("Delete"));
        QAction *chosen = menu.exec(ListSelect->viewport()->mapToGlobal(pos));
        if (chosen == edit) command([this] { m_model.cmdEdit_Click(); });
        if (chosen == remove) command([this] { m_model.cmdDelete_Click(); });
    });
}

TextActions::Selection frmAddress::paneSelection() const {
    // The box holds the text with LF line ends; the model's has CR LF.
    const QString shown = showContact->toPlainText();
    const QTextCursor c = showContact->textCursor();
    const auto toModel = [&shown](int pos) { return pos + static_cast<int>(shown.left(pos).count(QLatin1Char('\n'))); };
    TextActions::Selection box;
    box.text = m_model.showContact.text;
    box.selStart = toModel(c.selectionStart());
    box.selLength = toModel(c.selectionEnd()) - box.selStart;
    return box;
}

void frmAddress::setPaneSelection(const TextActions::Selection &box) {
    const QString &t = box.text;
    const auto toShown = [&t](int pos) { return pos - static_cast<int>(t.left(pos).count(QLatin1Char('\r'))); };
    QTextCursor c = showContact->textCursor();
    c.setPosition(toShown(box.selStart));
    c.setPosition(toShown(box.selStart + box.selLength), QTextCursor::KeepAnchor);
    showContact->setTextCursor(c);
}

bool frmAddress::eventFilter(QObject *watched, QEvent *event) {
    if (showContact && watched == showContact->viewport() && event->type() == QEvent::MouseButtonRelease &&
        !m_model.showContact.text.isEmpty()) {
        auto *mouse = static_cast<QMouseEvent *>(event);
        if (!showContact->textCursor().hasSelection()) {
            // The word under the pointer: the caret goes there first.
            showContact->setTextCursor(showContact->cursorForPosition(mouse->position().toPoint()));
        }
        TextActions::Selection box = paneSelection();
        if (mouse->button() == Qt::LeftButton) {
            TextActions::ClassifySelection(box);
            setPaneSelection(box);
            return false;
        }
        if (mouse->button() == Qt::RightButton) {
            if (!m_model.paneMenu.ShowActionMenu(box)) return true;
            setPaneSelection(box);
            const QString entry = PopUpActionMenu(this, m_model.paneMenu.menu, mouse->globalPosition().toPoint());
            if (!entry.isEmpty()) command([this, entry] { m_model.menuCommand(entry, -1, QString()); });
            return true;
        }
    }
    if (cmdEdit && watched == this && event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->modifiers() == Qt::ControlModifier) {
            if (key->key() == Qt::Key_N) {
                command([this] { m_model.cmdAdd_Click(); });
                return true;
            }
            if (key->key() == Qt::Key_E && cmdEdit->isEnabled()) {
                command([this] { m_model.cmdEdit_Click(); });
                return true;
            }
            if (key->key() == Qt::Key_D && cmdDelete->isEnabled()) {
                command([this] { m_model.cmdDelete_Click(); });
                return true;
            }
        }
    }
    return SortedSectionView::eventFilter(watched, event);
}

void frmAddress::drawPane() {
    if (m_drawnPane == m_model.showContact.text) return;
    m_drawnPane = m_model.showContact.text;
    showContact->setHtml(paneHtml(m_model.showContact));
}

void frmAddress::sync() {
    syncList();
    for (int i = 0; i < ListSelect->count() && i < m_model.contacts.size(); ++i)
        ListSelect->item(i)->setData(ContactRole, m_model.contacts.at(i));
    ListSelect->viewport()->update();
    drawCombo(cboCategories, m_model.cboCategories);
    showName->setText(m_model.showName);
    drawPane();
    const bool any = m_model.ListSelect.ListCount() > 0;
    showName->setEnabled(any);
    showContact->setEnabled(any);
    cmdEdit->setEnabled(m_model.ListSelect.ListIndex() >= 0);
    cmdDelete->setEnabled(m_model.ListSelect.ListIndex() >= 0);
}

} // namespace km::gui
