#include "gui/shell/frmSplash.h"

#include <vector>

#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include "gui/Controls.h"

namespace km::gui {

namespace {

std::vector<SectionViewFactory> &factories() {
    static std::vector<SectionViewFactory> list;
    return list;
}

QLineEdit *readOnly(QWidget *parent) {
    auto *box = new QLineEdit(parent);
    box->setReadOnly(true);
    // No caret and no focus: the Startscreen is nothing to type into.
    box->setFocusPolicy(Qt::NoFocus);
    box->setFrame(false);
    return box;
}

} // namespace

void RegisterSectionView(SectionViewFactory factory) {
    factories().push_back(std::move(factory));
}

SectionView *CreateSectionView(SectionWindow &model, QWidget *parent) {
    for (const SectionViewFactory &factory : factories())
        if (SectionView *view = factory(model, parent)) return view;
    if (auto *splash = dynamic_cast<km::frmSplash *>(&model)) return new frmSplash(*splash, parent);
    return new frmSectionPlaceholder(model, parent);
}

frmSplash::frmSplash(km::frmSplash &model, QWidget *parent) : SectionView(parent), m_model(model) {
    auto *frame = new QFrame(this);
    frame->setObjectName(QStringLiteral("splashFrame"));
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setAutoFillBackground(true);
    frame->setBackgroundRole(QPalette::Base);
    frame->setFixedSize(520, 300);

    auto *title = new QLabel(QStringLiteral("Kestrelmondarin"), frame);
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 2.6);
    big.setBold(true);
    title->setFont(big);
    title->setAlignment(Qt::AlignCenter);
    title->setStyleSheet(QStringLiteral("color: #1f4e79;"));
    auto *subtitle = new QLabel(QStringLiteral("Personal Information, Encrypted"), frame);
    subtitle->setAlignment(Qt::AlignCenter);
    subtitle->setStyleSheet(QStringLiteral("color: #555;"));

    txtVersion = readOnly(frame);
    txtVersion->setAlignment(Qt::AlignCenter);
    txtDbName = readOnly(frame);
    txtDbPath = readOnly(frame);
    auto *grid = new QGridLayout;
    grid->addWidget(new QLabel(m_model.lblDbName, frame), 0, 0);
    grid->addWidget(txtDbName, 0, 1);
    grid->addWidget(new QLabel(m_model.lblDbPath, frame), 1, 0);
    grid->addWidget(txtDbPath, 1, 1);

    auto *inner = new QVBoxLayout(frame);
    inner->setContentsMargins(28, 24, 28, 20);
    inner->addStretch();
    inner->addWidget(title);
    inner->addWidget(subtitle);
    inner->addSpacing(10);
    inner->addWidget(txtVersion);
    inner->addStretch();
    inner->addLayout(grid);

    // The frame stays centred in the client area whatever its size.
    auto *outer = new QGridLayout(this);
    outer->addWidget(frame, 0, 0, Qt::AlignCenter);
}

void frmSplash::sync() {
    drawText(txtVersion, m_model.txtVersion);
    drawText(txtDbName, m_model.txtDbName);
    drawText(txtDbPath, m_model.txtDbPath);
    txtDbPath->setCursorPosition(0);
}

frmSectionPlaceholder::frmSectionPlaceholder(SectionWindow &model, QWidget *parent) : SectionView(parent) {
    auto *name = new QLabel(model.caption().trimmed(), this);
    QFont big = name->font();
    big.setPointSizeF(big.pointSizeF() * 2);
    name->setFont(big);
    name->setAlignment(Qt::AlignCenter);
    name->setStyleSheet(QStringLiteral("color: #666;"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(name);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Base);
}

} // namespace km::gui
