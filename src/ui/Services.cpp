#include "ui/Services.h"

namespace km {

namespace {

class MemoryClipboard : public ClipboardService {
public:
    bool hasText() const override { return !m_text.isEmpty(); }
    QString text() const override { return m_text; }
    void setText(const QString &text, bool) override { m_text = text; }
    void clear() override { m_text.clear(); }

private:
    QString m_text;
};

class InertDesktop : public DesktopService {
public:
    void setWaitCursor(bool) override {}
    bool openUrl(const QString &) override { return false; }
};

MemoryClipboard g_memoryClipboard;
InertDesktop g_inertDesktop;
ClipboardService *g_clipboard = &g_memoryClipboard;
DesktopService *g_desktop = &g_inertDesktop;

} // namespace

ClipboardService &clipboard() { return *g_clipboard; }
DesktopService &desktop() { return *g_desktop; }
void setClipboard(ClipboardService *service) { g_clipboard = service ? service : &g_memoryClipboard; }
void setDesktop(DesktopService *service) { g_desktop = service ? service : &g_inertDesktop; }

} // namespace km
