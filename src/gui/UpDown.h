// A spinner without a box of its own: two arrow buttons that step a value the
// model keeps (the model decides whether a step is taken).
#pragma once

#include <QWidget>

class QToolButton;

namespace km::gui {

class UpDown : public QWidget {
    Q_OBJECT
public:
    explicit UpDown(QWidget *parent = nullptr);

    QToolButton *up = nullptr;
    QToolButton *down = nullptr;

Q_SIGNALS:
    void stepped(bool up);
};

} // namespace km::gui
