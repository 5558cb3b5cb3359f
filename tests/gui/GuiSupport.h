// What the widget tests share: the one application object, and a window
// brought to the front as the person would have it (the keystroke shield
// acts only on the active window).
#pragma once

#include <ostream>

#include <QApplication>
#include <QTest>
#include <QWidget>

// A failed comparison of texts prints them as text.
inline void PrintTo(const QString &text, std::ostream *os) {
    *os << '"' << text.toStdString() << '"';
}

namespace km::test {

inline void startGuiApp() {
    static int argc = 1;
    static char name[] = "test_gui";
    static char *argv[] = {name, nullptr};
    if (!qApp) new QApplication(argc, argv);
}

inline bool bringToFront(QWidget &window) {
    window.show();
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window);
}

} // namespace km::test
