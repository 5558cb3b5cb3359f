#include "gui/Program.h"

#include <cstdlib>

#include <QApplication>
#include <QFile>
#include <QFileSystemWatcher>

#include "gui/calendar/frmEditCalendar.h"
#include "calendar/frmCalendar.h"
#include "gui/calendar/frmCalendar.h"
#include "address/AddressSections.h"
#include "gui/address/AddressViews.h"
#include "calendar/frmDiary.h"
#include "gui/calendar/frmDiary.h"
#include "backup/Backup.h"
#include "gui/backup/BackupViews.h"
#include "gui/records/RecordsViews.h"
#include "gui/shell/frmMDI.h"
#include "platform/Environment.h"
#include "records/RecordsSections.h"
#include "shell/frmFind.h"

namespace km::gui {

namespace {

// A second start asks the running program to come to the front by writing to
// this file beside the single-instance lock; the running one watches it.
QString RaiseRequestPath() {
    return SingleInstanceLockPath() + QStringLiteral(".raise");
}

} // namespace

Program::Program() {
    setUi(&dialogs);
    setClipboard(&clipboard);
    setDesktop(&desktop);
    records::RegisterSections();
    CALENDAR::RegisterSections();
    RegisterRecordsViews(dialogs);
    dialogs.addWindow<CALENDAR::frmEditCalendar, frmEditCalendar>();
    RegisterCalendarViews();
    address::RegisterSections();
    RegisterAddressViews(dialogs);
    model.showFind = [this] {
        km::frmFind find(model);
        dialogs.showModal(find);
    };
    RegisterDiaryView();
    RegisterBackupViews(dialogs);
    RegisterBackup(model);
    model.raiseOtherInstance = [] {
        QFile request(RaiseRequestPath());
        if (request.open(QIODevice::WriteOnly | QIODevice::Append)) request.write("raise\n");
    };
}

Program::~Program() {
    setUi(nullptr);
    setClipboard(nullptr);
    setDesktop(nullptr);
}

int Program::run(const std::function<void(frmMDI &, km::frmMDI &)> &afterLoad) {
    try {
        frmMDI window(model, dialogs);
        // The window comes up only once a store is open or the person chose to
        // go on without one: until then a cancelled login or the DB menu's
        // Exit ends the program, and no empty main window stands behind the
        // questions of the start.
        if (!model.Form_Load()) return 0;
        window.show();
        window.sync();

        QFile request(RaiseRequestPath());
        request.open(QIODevice::WriteOnly | QIODevice::Truncate);
        request.close();
        QFileSystemWatcher watcher({request.fileName()});
        QObject::connect(&watcher, &QFileSystemWatcher::fileChanged, &window,
                         [&window, &watcher](const QString &path) {
                             if (window.isMinimized()) window.showNormal();
                             window.raise();
                             window.activateWindow();
                             if (!watcher.files().contains(path)) watcher.addPath(path);
                         });

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
