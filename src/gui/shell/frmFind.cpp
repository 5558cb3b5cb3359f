#include "gui/shell/frmFind.h"

#include <QApplication>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "gui/Controls.h"
#include "gui/shell/ShieldFilter.h"

namespace km::gui {

frmFind::frmFind(km::frmFind &model, QWidget *parent) : ModelDialog(model, parent), m_model(model) {
    setObjectName(QStringLiteral("find"));
    setWindowTitle(model.caption());
    txtFind = new QLineEdit(this);
    keepOutOfSelection(txtFind);
    chkCaseSensitive = new QCheckBox(QStringLiteral("Case Sensitive"), this);
    auto *where = new QGroupBox(QStringLiteral("where:"), this);
    auto *grid = new QGridLayout(where);
    for (int box = 0; box < FindScopeCount; ++box) {
        PinApp[static_cast<size_t>(box)] = new QCheckBox(FindScopes()[static_cast<size_t>(box)].caption, where);
        grid->addWidget(PinApp[static_cast<size_t>(box)], box % 5, box / 5);
        connect(PinApp[static_cast<size_t>(box)], &QCheckBox::clicked, this,
                [this, box](bool on) { command([this, box, on] { m_model.PinApp_Click(box, on); }); });
    }
    cmdSelectAll = new QPushButton(QStringLiteral("Select All"), this);
    cmdDeselect = new QPushButton(QStringLiteral("Deselect"), this);
    cmdFind = new QPushButton(QStringLiteral("Find"), this);
    cmdGoto = new QPushButton(QStringLiteral("Go To"), this);
    cmdCancel = new QPushButton(QStringLiteral("Cancel"), this);
    cmdFind->setDefault(true);
    LV = new QTreeWidget(this);
    LV->setRootIsDecorated(false);
    LV->setHeaderLabels({QStringLiteral("Section"), QStringLiteral("Item"), QStringLiteral("Spec")});
    // 900, 3000 and 2250 units of a fifteenth of a pixel.
    LV->setColumnWidth(0, 60 + 30);
    LV->setColumnWidth(1, 200);
    LV->setColumnWidth(2, 150);
    keepOutOfSelection(LV);
    lblSummary = new QLabel(this);
    lblProgress = new QLabel(this);

    auto *top = new QGridLayout;
    top->addWidget(new QLabel(QStringLiteral("Find what:"), this), 0, 0);
    top->addWidget(txtFind, 0, 1);
    top->addWidget(chkCaseSensitive, 1, 1);
    auto *selection = new QVBoxLayout;
    selection->addWidget(cmdSelectAll);
    selection->addWidget(cmdDeselect);
    selection->addStretch();
    auto *middle = new QHBoxLayout;
    middle->addWidget(where, 1);
    middle->addLayout(selection);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(lblSummary);
    buttons->addWidget(lblProgress, 1);
    for (QPushButton *b : {cmdFind, cmdGoto, cmdCancel})
        buttons->addWidget(b);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(middle);
    layout->addWidget(LV, 1);
    layout->addLayout(buttons);
    resize(520, 480);
    InstallShield(this);

    onTextTyped(txtFind, [this](const QString &text) {
        m_model.txtFind_Change(text);
        cmdFind->setEnabled(m_model.cmdFindEnabled);
    });
    connect(chkCaseSensitive, &QCheckBox::clicked, this, [this](bool on) { m_model.chkCaseSensitive_Click(on); });
    connect(cmdSelectAll, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdSelectAll_Click(); }); });
    connect(cmdDeselect, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdDeselect_Click(); }); });
    connect(cmdFind, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdFind_Click(); }); });
    connect(cmdGoto, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdGoto_Click(); }); });
    connect(cmdCancel, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdCancel_Click(); }); });
    connect(LV, &QTreeWidget::currentItemChanged, this, [this] {
        m_model.LV_Click(LV->indexOfTopLevelItem(LV->currentItem()));
    });
    connect(
        LV, &QTreeWidget::itemDoubleClicked, this, [this] { command([this] { m_model.cmdGoto_Click(); }); },
        Qt::QueuedConnection);
    // While the search runs: the count is drawn and the desktop's events,
    // Cancel among them, are handled between rows.
    m_model.onProgress = [this] {
        sync();
        QApplication::processEvents();
    };
    txtFind->setFocus();
}

bool frmFind::cancelCommand() {
    m_model.cmdCancel_Click();
    return true;
}

void frmFind::sync() {
    drawText(txtFind, m_model.txtFind);
    chkCaseSensitive->setChecked(m_model.chkCaseSensitive);
    for (size_t box = 0; box < PinApp.size(); ++box) {
        PinApp[box]->setChecked(m_model.PinApp[box]);
        PinApp[box]->setEnabled(!m_model.searching);
    }
    txtFind->setEnabled(!m_model.searching);
    cmdSelectAll->setEnabled(!m_model.searching);
    cmdDeselect->setEnabled(!m_model.searching);
    cmdFind->setEnabled(m_model.cmdFindEnabled && !m_model.searching);
    cmdGoto->setEnabled(m_model.cmdGotoEnabled);
    LV->setEnabled(m_model.LVEnabled);
    if (LV->topLevelItemCount() != m_model.LV.size()) {
        const QSignalBlocker block(LV);
        LV->clear();
        for (const FindHit &hit : m_model.LV)
            LV->addTopLevelItem(new QTreeWidgetItem({hit.name, hit.item, hit.spec}));
    }
    if (m_model.LVIndex >= 0 && m_model.LVIndex < LV->topLevelItemCount()) {
        const QSignalBlocker block(LV);
        LV->setCurrentItem(LV->topLevelItem(m_model.LVIndex));
    }
    lblSummary->setText(m_model.lblSummary);
    lblProgress->setText(m_model.lblProgress);
}

} // namespace km::gui
