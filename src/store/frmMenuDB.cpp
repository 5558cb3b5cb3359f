#include "store/frmMenuDB.h"

#include "ui/Dialogs.h"
#include "store/db.h"

namespace km {

void frmMenuDB::cmdNewDB_Click() {
    visible = false;
    const int err = db::CreateStore();
    if (err != 0) {
        visible = true;
        return;
    }
    ShowMessage(146, Buttons::OK, Answer::OK, Icon::Information);
    close(true);
}

void frmMenuDB::cmdOldDB_Click() {
    visible = false;
    db::State &s = db::state();
    const QString oldPath = s.DatabasePath;
    const int err = db::ChooseStoreFile();
    if (err != 0) {
        s.DatabasePath = oldPath;
        if (!oldPath.isEmpty() && err != DialogCancelledError) {
            close(false);
            return;
        }
        visible = true;
        return;
    }
    s.OpenAttempts = 0;
    if (db::OpenStore() == 0) {
        close(true);
        return;
    }
    if (ui().mainWindowUp()) {
        close(false);
        return;
    }
    ShowMessage(97, Buttons::OK, Answer::OK, Icon::Critical);
    throw ProgramEnd{1, 97};
}

void frmMenuDB::cmdCancel_Click() {
    visible = false;
    close(false);
    if (!ui().mainWindowUp()) throw ProgramEnd{0, 0};
}

} // namespace km
