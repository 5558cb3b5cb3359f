// The desktop program: the main window over its model, with the Qt dialogs
// and desktop services installed for the whole process.
#include <cstdlib>

#include <QApplication>

#include "gui/QtDialogs.h"
#include "gui/QtServices.h"
#include "gui/Screenshots.h"
#include "gui/records/RecordsViews.h"
#include "gui/shell/frmMDI.h"
#include "platform/Process.h"
#include "records/RecordsSections.h"
#include "shell/frmMDI.h"

int main(int argc, char **argv) {
    km::DisableCoreDumps();
    QApplication app(argc, argv);
    km::gui::QtDialogs dialogs;
    km::gui::QtClipboard clipboard;
    km::gui::QtDesktop desktop;
    km::setUi(&dialogs);
    km::setClipboard(&clipboard);
    km::setDesktop(&desktop);
    records::RegisterSections();
    km::gui::RegisterRecordsViews(dialogs);

    km::frmMDI model;
    const QString screenshots = qEnvironmentVariable("KM_SCREENSHOT_DIR");
    try {
        km::gui::frmMDI window(model, dialogs);
        window.show();
        if (!screenshots.isEmpty())
            km::gui::StartScreenshots(screenshots, qEnvironmentVariable("KM_SCREENSHOT_PASSPHRASE"));
        if (!model.Form_Load()) return 0;
        window.sync();
        if (!screenshots.isEmpty()) km::gui::RunScreenshotTour(window, model);
        app.exec();
    } catch (const km::ProgramEnd &end) {
        model.endProgram = [code = end.code] { std::exit(code); };
    }
    // The one way out closes the store and wipes the clipboard.
    model.ExitProgram();
    return 0;
}
