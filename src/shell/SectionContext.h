// What a section window is given when it is made: the seam to the person, the
// narrow part of the main window it may use, the store, the clock and the
// locale. A section model reaches nothing else: no main window, no
// process-wide dialogs, so that a test can hand it a scripted person, a
// recording shell and a store of its own.
#pragma once

#include <QLocale>
#include <QString>

namespace km {

class Clock;
class Dialogs;
class StoreDb;
class WindowModel;

// The services of the main window that a section uses. The main window's
// model implements it; kmd and tests have their own.
class Shell {
public:
    virtual ~Shell() = default;
    // The program's one Copy: the text goes to the clipboard marked as a
    // secret, and the clipboard wipe starts its interval anew.
    virtual void copyText(const QString &text) = 0;
    // Starts the clipboard wipe's interval unless it is already running.
    virtual void armClipboardWipe() = 0;
    // Long work: wait cursor, idle clock frozen, the main window and the given
    // window disabled until the matching call with false.
    virtual void setBusy(WindowModel *window, bool busy) = 0;
    // Whether private records are shown in this session.
    virtual bool privateShown() const = 0;
    // Shows or hides them, and has the section in view follow. Showing is
    // for callers that have had the passphrase given for it.
    virtual void setPrivateShown(bool on) = 0;
    // The number of the user who opened the store, written into new rows.
    virtual int userNumber() const = 0;
    // The section's PIN test (sections 0 to 5 as the PIN counts them); false
    // when the person did not give the PIN.
    virtual bool pinAllows(int pinSection) = 0;
};

struct SectionContext {
    Dialogs &dialogs;
    Shell &shell;
    StoreDb &store;
    Clock &clock;
    QLocale locale;
};

} // namespace km
