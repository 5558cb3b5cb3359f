// A scripted run of the real program for pictures of its windows. It answers
// every dialog by itself (with the passphrase of its own scratch store),
// saves a PNG of each window it meets, walks the windows worth showing and
// then ends the program.
#pragma once

#include <QString>

#include "gui/shell/frmMDI.h"
#include "shell/frmMDI.h"

namespace km::gui {

// Before the start sequence: from now on every dialog is answered and pictured.
void StartScreenshots(const QString &folder, const QString &passphrase);
// After the start sequence: pictures the main window and the other windows, then ends.
void RunScreenshotTour(frmMDI &window, km::frmMDI &model);

} // namespace km::gui
