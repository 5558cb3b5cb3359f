// A Shell that records what a section asked of the main window: texts
// copied, wipes armed, busy calls, and private records shown or hidden.
#pragma once

#include <QList>
#include <QStringList>

#include "shell/BasicShell.h"

namespace km::test {

class FakeShell : public BasicShell {
public:
    void copyText(const QString &text) override {
        copied.append(text);
        BasicShell::copyText(text);
    }
    void armClipboardWipe() override { ++wipesArmed; }
    void setBusy(WindowModel *window, bool busy) override {
        busyCalls.append(busy);
        busyNow = busy;
    }
    bool privateShown() const override { return showPrivate; }
    void setPrivateShown(bool on) override { showPrivate = on; }
    bool pinAllows(int pinSection) override { return !refusedPins.contains(pinSection); }

    QStringList copied;
    int wipesArmed = 0;
    QList<bool> busyCalls;
    bool busyNow = false;
    bool showPrivate = true;
    QList<int> refusedPins;
};

} // namespace km::test
