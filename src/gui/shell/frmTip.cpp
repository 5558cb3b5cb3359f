#include "gui/shell/frmTip.h"

#include <QApplication>
#include <QCheckBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStyle>
#include <QVBoxLayout>

#include "ui/Dialogs.h"

namespace km::gui {

frmTip::frmTip(km::frmTip &model, QWidget *parent) : ModelDialog(model, parent), m_model(model) {
    auto *picture = new QLabel(this);
    picture->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(48, 48));
    picture->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
    auto *didYouKnow = new QLabel(QString::fromLatin1(km::frmTip::lblDidYouKnow), this);
    QFont big = didYouKnow->font();
    big.setPointSizeF(big.pointSizeF() * 1.5);
    big.setBold(true);
    didYouKnow->setFont(big);
    lblTipSection = new QLabel(this);
    QFont bold = lblTipSection->font();
    bold.setBold(true);
    lblTipSection->setFont(bold);
    lblTipText = new QLabel(this);
    lblTipText->setWordWrap(true);
    lblTipText->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    lblTipText->setMinimumHeight(90);

    auto *panel = new QFrame(this);
    panel->setFrameShape(QFrame::StyledPanel);
    panel->setBackgroundRole(QPalette::Base);
    panel->setAutoFillBackground(true);
    auto *text = new QVBoxLayout;
    text->addWidget(didYouKnow);
    text->addSpacing(8);
    text->addWidget(lblTipSection);
    text->addWidget(lblTipText, 1);
    auto *inner = new QHBoxLayout(panel);
    inner->addWidget(picture);
    inner->addLayout(text, 1);

    chkLoadTipsAtStartup = new QCheckBox(QString::fromLatin1(km::frmTip::chkLoadTipsAtStartupCaption), this);
    cmdNextTip = new QPushButton(QString::fromLatin1(km::frmTip::cmdNextTipCaption), this);
    cmdNextTip->setAutoDefault(false);
    cmdOK = new QPushButton(QString::fromLatin1(km::frmTip::cmdOKCaption), this);
    cmdOK->setDefault(true);
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(chkLoadTipsAtStartup);
    bottom->addStretch();
    bottom->addWidget(cmdNextTip);
    bottom->addWidget(cmdOK);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(panel, 1);
    layout->addLayout(bottom);
    resize(480, 260);

    connect(chkLoadTipsAtStartup, &QCheckBox::toggled, this,
            [this](bool on) { command([&] { m_model.chkLoadTipsAtStartup_Click(on); }); });
    connect(cmdNextTip, &QPushButton::clicked, this,
            [this] { command([this] { m_model.cmdNextTip_Click(); }); });
    connect(cmdOK, &QPushButton::clicked, this, [this] { command([this] { m_model.cmdOK_Click(); }); });
}

void frmTip::sync() {
    lblTipSection->setText(m_model.lblTipSection);
    lblTipText->setText(m_model.lblTipText.trimmed());
    const QSignalBlocker block(chkLoadTipsAtStartup);
    chkLoadTipsAtStartup->setChecked(m_model.chkLoadTipsAtStartup);
}

void frmTip::ShowAtStart() {
    km::frmTip model;
    model.Form_Load();
    if (model.closeRequested) return;
    ui().showModal(model);
}

} // namespace km::gui
