// The desktop services on Qt: the system clipboard, the wait cursor, opening
// URLs and letting pending events run.
#pragma once

#include "ui/Services.h"

namespace km::gui {

class QtClipboard : public ClipboardService {
public:
    bool hasText() const override;
    QString text() const override;
    // Secret text carries "x-kde-passwordManagerHint" = "secret" beside
    // text/plain, so that clipboard managers leave it out of their history.
    void setText(const QString &text, bool secret) override;
    // The clipboard, and the selection when it is this program's.
    void clear() override;
    void clearSelection() override;
};

class QtDesktop : public DesktopService {
public:
    void setWaitCursor(bool on) override;
    bool openUrl(const QString &url) override;
    void processEvents() override;

private:
    int m_waitDepth = 0;
};

} // namespace km::gui
