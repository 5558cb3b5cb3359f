// The state and commands of one window, free of any toolkit. The widget of
// the same name in gui/ draws this state and forwards the person's actions.
#pragma once

#include <QString>

namespace km {

class WindowModel {
public:
    virtual ~WindowModel() = default;
    virtual QString caption() const { return QString(); }
    // Set by the model's own commands when it wants to close (OK, Cancel, ...).
    bool closeRequested = false;
    bool acceptedResult = false;

protected:
    void close(bool accepted) {
        closeRequested = true;
        acceptedResult = accepted;
    }
};

} // namespace km
