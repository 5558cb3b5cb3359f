// The Startscreen: the title picture, the version and the store in use. It is
// the section window of code 0, shown whenever no section is.
#pragma once

#include "shell/frmMDI.h"

namespace km {

class frmSplash : public SectionWindow {
public:
    static constexpr const char *VersionText = "2.00.2";

    int sectionCode() const override { return 0; }
    QString caption() const override { return QStringLiteral("Startscreen"); }

    // The labels and the three read-only text boxes.
    QString lblDbName = QStringLiteral("DB Name:");
    QString lblDbPath = QStringLiteral("DB Path:");
    QString txtVersion = QStringLiteral("Version 2.0.2");
    QString txtDbName;
    QString txtDbPath;

    // The version, and the store named by the store's DatabasePath while one
    // is open.
    void Form_Load() override;
    // The file name and folder of path, or "No database open" and nothing
    // when path is empty.
    void ShowDatabase(const QString &path);
    // What the Startscreen reads once the store is closed.
    void ShowNoDatabase();
};

} // namespace km
