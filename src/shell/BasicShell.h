// A Shell without a main window, for kmd and for tests: no clipboard timer,
// nothing to disable, every PIN passes, and private records follow the
// session's switch.
#pragma once

#include "platform/Clock.h"
#include "shell/SectionContext.h"
#include "shell/SessionGuards.h"
#include "store/Users.h"
#include "store/db.h"
#include "ui/Dialogs.h"
#include "ui/Services.h"

namespace km {

class BasicShell : public Shell {
public:
    void copyText(const QString &text) override {
        clipboard().setText(text, true);
        armClipboardWipe();
    }
    void armClipboardWipe() override {}
    void setBusy(WindowModel *, bool) override {}
    bool privateShown() const override { return SessionGuards::state().ShowPrivate; }
    void setPrivateShown(bool on) override { SessionGuards::state().ShowPrivate = on; }
    int userNumber() const override { return Users::state().User.Number; }
    bool pinAllows(int) override { return true; }

    // A context over the session's store and dialogs.
    SectionContext context() {
        return SectionContext{ui(), *this, db::Store(), Clock::current(), QLocale::system()};
    }
};

} // namespace km
