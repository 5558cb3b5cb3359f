#include "ui/Dialogs.h"

#include "ui/LanguageUS.h"

namespace km {

namespace {

class SilentDialogs : public Dialogs {
public:
    Answer message(const QString &, Buttons, Answer defaultButton, Icon, const QString &) override {
        return defaultButton;
    }
};

SilentDialogs g_silent;
Dialogs *g_ui = &g_silent;

} // namespace

Dialogs &ui() {
    return *g_ui;
}
void setUi(Dialogs *dialogs) {
    g_ui = dialogs ? dialogs : &g_silent;
}

Answer ShowMessage(int row, Buttons buttons, Answer defaultButton, Icon icon) {
    return ui().message(LanguageUS::MessageText(row), buttons, defaultButton, icon);
}

} // namespace km
