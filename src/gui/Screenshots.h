// A scripted run for pictures of the windows: started only when the variable
// KM_SCREENSHOT_DIR names a folder. It answers every dialog by itself (the
// passphrase from KM_SCREENSHOT_PASSPHRASE), saves a PNG of each window it
// meets, walks the windows worth showing and then ends the program.
#pragma once

#include <QString>

namespace km {
class frmMDI;
}

namespace km::gui {

class frmMDI;

// Before the start sequence: from now on every dialog is answered and pictured.
void StartScreenshots(const QString &folder, const QString &passphrase);
// After the start sequence: pictures the main window and the other windows, then ends.
void RunScreenshotTour(frmMDI &window, km::frmMDI &model);

} // namespace km::gui
