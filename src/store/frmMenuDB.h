// "DB menu": what the person may do when no store could be opened at start.
#pragma once

#include "ui/WindowModel.h"

namespace km {

class frmMenuDB : public WindowModel {
public:
    static constexpr const char *cmdNewDBCaption = "Create &New DB";
    static constexpr const char *cmdOldDBCaption = "&Open Existing DB";
    static constexpr const char *cmdCancelCaption = "E&xit";

    QString caption() const override { return QStringLiteral("DB menu"); }

    // The dialog hides while a command runs and shows again where the
    // command leaves the person without a store.
    bool visible = true;

    void cmdNewDB_Click();
    void cmdOldDB_Click();
    void cmdCancel_Click();
};

} // namespace km
