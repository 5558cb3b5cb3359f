// Services of the desktop that the logic needs but that live in QtGui: the
// clipboard, the wait cursor, opening a URL. The program installs Qt ones
// (gui/), tests install fakes; the logic never includes a QtGui header.
#pragma once

#include <QString>

namespace km {

class ClipboardService {
public:
    virtual ~ClipboardService() = default;
    virtual bool hasText() const = 0;
    virtual QString text() const = 0;
    // secret: marked for clipboard managers as a password, not to be kept in history.
    virtual void setText(const QString &text, bool secret) = 0;
    virtual void clear() = 0;
    // Empties the selection (X11's PRIMARY, which a middle click pastes
    // anywhere) when it holds this program's text: overwritten first, as the
    // wipe does the clipboard, then cleared. Another program's text stays; a
    // desktop without a selection has nothing to do.
    virtual void clearSelection() {}
};

class DesktopService {
public:
    virtual ~DesktopService() = default;
    // The wait cursor over the whole screen while on.
    virtual void setWaitCursor(bool on) = 0;
    // mailto:, http://, tel:, file: URLs through the desktop; false if nothing took it.
    virtual bool openUrl(const QString &url) = 0;
    // Lets pending events run (the pause after a wrong passphrase, long work).
    virtual void processEvents() {}
};

// The process's services; until a program installs its own, inert ones that
// hold a clipboard in memory and do nothing else.
ClipboardService &clipboard();
DesktopService &desktop();
void setClipboard(ClipboardService *service);
void setDesktop(DesktopService *service);

} // namespace km
