#include "shell/SessionGuards.h"

#include "platform/Clock.h"
#include "platform/CodePage1252.h"
#include "store/CRY.h"
#include "ui/Services.h"

namespace SessionGuards {

namespace {

qint64 now() {
    return km::Clock::msecsSinceEpoch();
}

} // namespace

State &state() {
    static State s;
    return s;
}

void InstallIdleHooks() {
    state().HooksInstalled = true;
    state().LastActivityTick = now();
}

void RemoveIdleHooks() {
    state().HooksInstalled = false;
}

void NoteActivity() {
    if (state().HooksInstalled) state().LastActivityTick = now();
}

qint64 IdleMilliseconds() {
    State &s = state();
    if (s.IdleFrozen) s.LastActivityTick = now();
    return now() - s.LastActivityTick;
}

QString CountdownText(int remainingSeconds) {
    const int left = std::max(remainingSeconds, 0);
    return QStringLiteral("Idle Countdown:  %1:%2")
        .arg(left / 60, 2, 10, QLatin1Char('0'))
        .arg(left % 60, 2, 10, QLatin1Char('0'));
}

void WipeClipboardText() {
    km::ClipboardService &clip = km::clipboard();
    if (clip.hasText()) {
        const auto length = static_cast<int>(clip.text().size());
        clip.setText(km::cp1252::fromSecureBytes(CRY::RandomBytes(length)), true);
        clip.clear();
    }
}

} // namespace SessionGuards
