#include "shell/frmSplash.h"

#include "platform/Environment.h"
#include "store/db.h"

namespace km {

void frmSplash::Form_Load() {
    txtVersion = QStringLiteral("Version ") + QLatin1String(VersionText);
    const db::State &s = db::state();
    if (s.DbOpen)
        ShowDatabase(s.DatabasePath);
    else
        ShowDatabase(QString());
}

void frmSplash::ShowDatabase(const QString &path) {
    if (path.isEmpty()) {
        txtDbName = QStringLiteral("No database open");
        txtDbPath.clear();
        return;
    }
    txtDbName = FolderOfPath(path, false);
    txtDbPath = FolderOfPath(path, true);
}

void frmSplash::ShowNoDatabase() {
    txtDbName = QStringLiteral("   No database open");
    txtDbPath.clear();
}

} // namespace km
