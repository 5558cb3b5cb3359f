#include "gui/UpDown.h"

#include <QToolButton>
#include <QVBoxLayout>

namespace km::gui {

UpDown::UpDown(QWidget *parent) : QWidget(parent) {
    up = new QToolButton(this);
    up->setArrowType(Qt::UpArrow);
    down = new QToolButton(this);
    down->setArrowType(Qt::DownArrow);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (QToolButton *b : {up, down}) {
        b->setAutoRepeat(true);
        b->setFixedSize(18, 12);
        layout->addWidget(b);
    }
    connect(up, &QToolButton::clicked, this, [this] { Q_EMIT stepped(true); });
    connect(down, &QToolButton::clicked, this, [this] { Q_EMIT stepped(false); });
}

} // namespace km::gui
