// The desktop program.
#include <QApplication>

#include "gui/Program.h"
#include "platform/Process.h"

int main(int argc, char **argv) {
    km::DisableCoreDumps();
    km::KeepNewFilesPrivate();
    QApplication app(argc, argv);
    km::gui::Program program;
    return program.run();
}
