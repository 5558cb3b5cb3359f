#include "gui/Program.h"

#include <cstdlib>

#include <QApplication>

#include "gui/records/RecordsViews.h"
#include "gui/shell/frmMDI.h"
#include "records/RecordsSections.h"

namespace km::gui {

Program::Program() {
    setUi(&dialogs);
    setClipboard(&clipboard);
    setDesktop(&desktop);
    records::RegisterSections();
    RegisterRecordsViews(dialogs);
}

Program::~Program() {
    setUi(nullptr);
    setClipboard(nullptr);
    setDesktop(nullptr);
}

int Program::run(const std::function<void(frmMDI &, km::frmMDI &)> &afterLoad) {
    try {
        frmMDI window(model, dialogs);
        window.show();
        if (!model.Form_Load()) return 0;
        window.sync();
        if (afterLoad) afterLoad(window, model);
        QApplication::exec();
    } catch (const ProgramEnd &end) {
        model.endProgram = [code = end.code] { std::exit(code); };
    }
    // The one way out closes the store and wipes the clipboard.
    model.ExitProgram();
    return 0;
}

} // namespace km::gui
