// km-screenshots FOLDER: runs the program under the display it is given, on
// the store of a scratch home folder (scripts/screenshots.sh makes one), and
// saves a PNG of each window into FOLDER.
#include <cstdio>

#include <QApplication>

#include "gui/Program.h"
#include "screenshots/Screenshots.h"

int main(int argc, char **argv) {
    QApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: km-screenshots FOLDER\n");
        return 1;
    }
    // The scratch store's passphrase: the tour creates the store and answers
    // every question for it.
    km::gui::StartScreenshots(QString::fromLocal8Bit(argv[1]), QStringLiteral("Window-Pictures 2024"));
    km::gui::Program program;
    return program.run([](km::gui::frmMDI &window, km::frmMDI &model) { km::gui::RunScreenshotTour(window, model); });
}
