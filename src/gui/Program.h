// The desktop program put together: the Qt dialogs and desktop services
// installed for the whole process, the sections registered, the main window
// over its model. The program's main() runs it as it is; tools that drive the
// real windows (the screenshot tour) run the same assembly.
#pragma once

#include <functional>

#include "gui/QtDialogs.h"
#include "gui/QtServices.h"
#include "shell/frmMDI.h"

namespace km::gui {

class frmMDI;

class Program {
public:
    Program();
    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    // Shows the main window, runs the start sequence and the event loop, and
    // leaves through ExitProgram. afterLoad runs once the start sequence is
    // through, with the window up. Returns the process's exit code.
    int run(const std::function<void(frmMDI &, km::frmMDI &)> &afterLoad = {});

    QtDialogs dialogs;
    QtClipboard clipboard;
    QtDesktop desktop;
    km::frmMDI model;
};

} // namespace km::gui
