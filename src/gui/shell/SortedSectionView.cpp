#include "gui/shell/SortedSectionView.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListWidget>
#include <QPushButton>

#include "gui/Controls.h"
#include "gui/shell/ShieldFilter.h"

namespace km::gui {

SortedSectionView::SortedSectionView(SortedSectionModel &model, QWidget *parent)
    : SectionView(parent), m_sorted(model) {}

QListWidget *SortedSectionView::makeList(QWidget *parent, std::function<void()> edit) {
    m_edit = std::move(edit);
    m_list = new QListWidget(parent);
    m_list->installEventFilter(this);
    connect(m_list, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row != m_sorted.listSelect.ListIndex()) command([this, row] { m_sorted.listSelect_Click(row); });
    });
    connect(
        m_list, &QListWidget::itemDoubleClicked, this, [this] { command(m_edit); }, Qt::QueuedConnection);
    return m_list;
}

void SortedSectionView::command(const std::function<void()> &fn) {
    fn();
    sync();
}

void SortedSectionView::syncList() {
    setEnabled(m_sorted.enabled);
    drawList(m_list, m_sorted.listSelect);
}

bool SortedSectionView::eventFilter(QObject *watched, QEvent *event) {
    if (watched == m_list && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            command(m_edit);
            return true;
        }
        if (key == Qt::Key_Delete) {
            command([this] { m_sorted.cmdDelete_Click(); });
            return true;
        }
    }
    return SectionView::eventFilter(watched, event);
}

RecordEditorDialog::RecordEditorDialog(RecordEditor &model, QWidget *parent)
    : ModelDialog(model, parent), m_editor(model) {
    InstallShield(this);
}

QHBoxLayout *RecordEditorDialog::buttonRow(QCheckBox *privateBox) {
    // Made here, after the fields, so that they come last in the tab order.
    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdEsc = new QPushButton(QStringLiteral("Esc"), this);
    cmdOK->setAutoDefault(false);
    cmdEsc->setAutoDefault(false);
    connect(cmdOK, &QPushButton::clicked, this, [this] { command([this] { m_editor.cmdOK_Click(); }); });
    connect(cmdEsc, &QPushButton::clicked, this, [this] { reject(); });
    auto *row = new QHBoxLayout;
    if (privateBox) row->addWidget(privateBox);
    row->addStretch();
    row->addWidget(cmdOK);
    row->addWidget(cmdEsc);
    return row;
}

void RecordEditorDialog::edited(const std::function<void()> &store) {
    store();
    m_editor.changed = true;
}

bool RecordEditorDialog::cancelCommand() {
    m_editor.cmdEsc_Click();
    return true;
}

} // namespace km::gui
