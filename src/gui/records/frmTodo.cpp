#include "gui/records/frmTodo.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QSignalBlocker>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/records/RecordsViews.h"

namespace km::gui {

namespace {

// The column widths of the list in pixels (the twips of the original layout
// at 15 to the pixel); the sort key's column is never seen.
constexpr int kWidths[km::TODO::ColumnCount] = {280, 80, 46, 40, 40, 120, 80, 0};
const char *const kHeaders[km::TODO::ColumnCount] = {"Task", "Due Date", "Prty", "Priv",
                                                     "Note", "Category", "Exec Date", "-"};

// A red disc with a white bar: the mark of a task past its due date.
QIcon overdueIcon() {
    static const QIcon icon = [] {
        QPixmap pixmap(14, 14);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        p.setBrush(QColor(200, 30, 30));
        p.setPen(Qt::NoPen);
        p.drawEllipse(1, 1, 12, 12);
        p.setBrush(Qt::white);
        p.drawRect(6, 3, 2, 6);
        p.drawRect(6, 10, 2, 2);
        return QIcon(pixmap);
    }();
    return icon;
}

QIcon blankIcon() {
    static const QIcon icon = [] {
        QPixmap pixmap(14, 14);
        pixmap.fill(Qt::transparent);
        return QIcon(pixmap);
    }();
    return icon;
}

} // namespace

frmTodo::frmTodo(km::frmTodo &model, QWidget *parent) : SectionView(parent), m_model(model) {
    setObjectName(QStringLiteral("todo"));
    cboCategories = new QComboBox(this);
    cboCategories->setToolTip(QStringLiteral("Show the tasks of one category"));
    cmdEditCat = new QToolButton(this);
    cmdEditCat->setText(QStringLiteral("..."));
    cmdEditCat->setToolTip(QStringLiteral("Edit categories"));
    ShowCompleted = new QCheckBox(QStringLiteral("Show Completed Items"), this);
    cmdAdd = new QPushButton(QStringLiteral("New"), this);
    cmdEdit = new QPushButton(QStringLiteral("Edit"), this);
    cmdDelete = new QPushButton(QStringLiteral("Delete"), this);

    TodoList = new QTreeWidget(this);
    TodoList->setColumnCount(km::TODO::ColumnCount);
    QStringList headers;
    for (const char *h : kHeaders)
        headers << QString::fromLatin1(h);
    TodoList->setHeaderLabels(headers);
    TodoList->setRootIsDecorated(false);
    TodoList->setUniformRowHeights(true);
    TodoList->setAllColumnsShowFocus(true);
    TodoList->setSortingEnabled(false);
    TodoList->setContextMenuPolicy(Qt::CustomContextMenu);
    TodoList->header()->setSectionsClickable(true);
    TodoList->header()->setSortIndicatorShown(false);
    for (int c = 0; c < km::TODO::ColumnCount; ++c)
        TodoList->setColumnWidth(c, kWidths[c]);
    TodoList->setColumnHidden(km::TODO::ColSortKey, true);
    TodoList->installEventFilter(this);

    auto *top = new QHBoxLayout;
    top->addWidget(cboCategories, 1);
    top->addWidget(cmdEditCat);
    top->addSpacing(12);
    top->addWidget(ShowCompleted);
    top->addStretch(1);
    for (QPushButton *b : {cmdAdd, cmdEdit, cmdDelete})
        top->addWidget(b);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(TodoList, 1);
    DrawOnWindowColour(this);

    connect(cboCategories, &QComboBox::activated, this, [this](int index) {
        command([this, index] {
            m_model.cboCategories.setListIndex(index);
            m_model.cboCategories_Click();
        });
    });
    connect(cmdEditCat, &QToolButton::clicked, this, [this] { command([this] { m_model.cmdEditCat_Click(); }); });
    connect(ShowCompleted, &QCheckBox::clicked, this,
            [this](bool on) { command([this, on] { m_model.ShowCompleted_Click(on); }); });
    connect(cmdAdd, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdAdd_Click(); }); });
    connect(cmdEdit, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdEdit(); }); });
    connect(cmdDelete, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdDelete(); }); });
    connect(TodoList, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        const int index = item ? TodoList->indexOfTopLevelItem(item) : -1;
        if (index != m_model.ListIndex) m_model.TodoList_Click(index);
    });
    connect(TodoList, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem *item, int column) {
        if (column != 0) return;
        const int index = TodoList->indexOfTopLevelItem(item);
        const bool checked = item->checkState(0) == Qt::Checked;
        if (index < 0 || index >= m_model.TodoList.size() || m_model.TodoList.at(index).checked == checked) return;
        // The tick handler may rebuild the list: not inside the list's own signal.
        QMetaObject::invokeMethod(
            this, [this, index, checked] { command([&] { m_model.TodoList_ItemCheck(index, checked); }); },
            Qt::QueuedConnection);
    });
    connect(
        TodoList, &QTreeWidget::itemDoubleClicked, this, [this] { command([this] { m_model.cmdEdit(); }); },
        Qt::QueuedConnection);
    connect(TodoList->header(), &QHeaderView::sectionClicked, this,
            [this](int section) { command([this, section] { m_model.TodoList_ColumnClick(section + 1); }); });
    connect(TodoList, &QTreeWidget::customContextMenuRequested, this, &frmTodo::contextMenu);
}

void frmTodo::command(const std::function<void()> &fn) {
    fn();
    sync();
}

void frmTodo::contextMenu(const QPoint &at) {
    if (QTreeWidgetItem *item = TodoList->itemAt(at)) {
        const int index = TodoList->indexOfTopLevelItem(item);
        if (index != m_model.ListIndex) command([this, index] { m_model.TodoList_Click(index); });
    }
    if (!m_model.contextMenuAllowed()) {
        QApplication::beep();
        return;
    }
    QMenu menu(this);
    menu.addAction(QStringLiteral("&Edit"), this, [this] { command([this] { m_model.cmdEdit(); }); });
    menu.addAction(QStringLiteral("&Completed"), this, [this] { command([this] { m_model.mnuCompleted(); }); });
    QMenu *priority = menu.addMenu(QStringLiteral("Priority..."));
    const char *const levels[] = {"&High", "&Normal", "&Low"};
    for (int level = 0; level < 3; ++level)
        priority->addAction(QString::fromLatin1(levels[level]), this,
                            [this, level] { command([this, level] { m_model.mnuTodoPriority(level); }); });
    QMenu *due = menu.addMenu(QStringLiteral("Due Date..."));
    due->addAction(QStringLiteral("No Date"), this, [this] { command([this] { m_model.mnuTodoDueDate(false); }); });
    due->addAction(QStringLiteral("Choose..."), this, [this] { command([this] { m_model.mnuTodoDueDate(true); }); });
    menu.addSeparator();
    menu.addAction(QStringLiteral("&Delete"), this, [this] { command([this] { m_model.cmdDelete(); }); });
    menu.exec(TodoList->viewport()->mapToGlobal(at));
}

bool frmTodo::eventFilter(QObject *watched, QEvent *event) {
    if (watched == TodoList && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            command([this] { m_model.cmdEdit(); });
            return true;
        }
        if (key == Qt::Key_Delete) {
            command([this] { m_model.cmdDelete(); });
            return true;
        }
    }
    return SectionView::eventFilter(watched, event);
}

void frmTodo::sync() {
    setEnabled(m_model.enabled);
    drawCombo(cboCategories, m_model.cboCategories);
    ShowCompleted->setChecked(m_model.ShowCompleted);
    const QSignalBlocker block(TodoList);
    const int count = static_cast<int>(m_model.TodoList.size());
    while (TodoList->topLevelItemCount() > count)
        delete TodoList->takeTopLevelItem(TodoList->topLevelItemCount() - 1);
    for (int i = 0; i < count; ++i) {
        QTreeWidgetItem *item = TodoList->topLevelItem(i);
        if (!item) {
            item = new QTreeWidgetItem(TodoList);
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        }
        const km::TodoItem &model = m_model.TodoList.at(i);
        for (int c = 0; c < km::TODO::ColumnCount; ++c)
            if (item->text(c) != model.cells[static_cast<size_t>(c)]) item->setText(c, model.cells[static_cast<size_t>(c)]);
        item->setCheckState(0, model.checked ? Qt::Checked : Qt::Unchecked);
        item->setIcon(0, model.overdue ? overdueIcon() : blankIcon());
        item->setToolTip(0, model.overdue ? QStringLiteral("Overdue") : QString());
    }
    QTreeWidgetItem *current = m_model.ListIndex >= 0 ? TodoList->topLevelItem(m_model.ListIndex) : nullptr;
    TodoList->setCurrentItem(current);
    if (!current) TodoList->clearSelection();
}

} // namespace km::gui
