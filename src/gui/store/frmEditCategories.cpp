#include "gui/store/frmEditCategories.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "gui/Controls.h"

namespace km::gui {

frmEditCategories::frmEditCategories(km::frmEditCategories &model, QWidget *parent)
    : ModelDialog(model, parent), m_model(model) {
    CatList = new QListWidget(this);
    cmdNew = new QPushButton(QStringLiteral("&New..."), this);
    cmdRename = new QPushButton(QStringLiteral("&Rename..."), this);
    cmdDelete = new QPushButton(QStringLiteral("&Delete"), this);
    cmdOK = new QPushButton(QStringLiteral("OK"), this);
    cmdEsc = new QPushButton(QStringLiteral("Esc"), this);

    auto *buttons = new QVBoxLayout;
    for (QPushButton *b : {cmdNew, cmdRename, cmdDelete}) {
        b->setAutoDefault(false);
        buttons->addWidget(b);
    }
    buttons->addStretch();
    buttons->addWidget(cmdOK);
    buttons->addWidget(cmdEsc);
    cmdOK->setDefault(true);
    auto *layout = new QHBoxLayout(this);
    layout->addWidget(CatList, 1);
    layout->addLayout(buttons);
    resize(380, 300);

    connect(CatList, &QListWidget::currentRowChanged, this,
            [this](int row) { m_model.CatList.setListIndex(row); });
    connect(cmdNew, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdNew_Click(); }); });
    connect(cmdRename, &QPushButton::clicked, this,
            [this] { command([this] { m_model.cmdRename_Click(); }); });
    connect(CatList, &QListWidget::itemDoubleClicked, this,
            [this] { command([this] { m_model.cmdRename_Click(); }); });
    connect(cmdDelete, &QPushButton::clicked, this,
            [this] { command([this] { m_model.cmdDelete_Click(); }); });
    connect(cmdOK, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdOK_Click(); }); });
    connect(cmdEsc, &QPushButton::clicked, this, [this] { reject(); });
}

bool frmEditCategories::cancelCommand() {
    m_model.cmdEsc_Click();
    return true;
}

void frmEditCategories::sync() {
    drawList(CatList, m_model.CatList);
}

} // namespace km::gui
