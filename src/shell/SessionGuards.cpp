#include "shell/SessionGuards.h"

#include "platform/Clock.h"
#include "platform/CodePage1252.h"
#include "ui/Services.h"
#include "shell/frmMDI.h"
#include "store/CRY.h"
#include "store/Passphrase.h"

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

void SetBusy(km::WindowModel *window, bool busy) {
    state().IdleFrozen = busy;
    km::desktop().setWaitCursor(busy);
    if (auto *section = dynamic_cast<km::SectionWindow *>(window)) section->enabled = !busy;
    if (km::frmMDI *main = km::MainWindow()) {
        main->enabled = !busy;
        main->panelComment.clear();
        main->changed();
    }
}

void WipeClipboard() {
    km::ClipboardService &clip = km::clipboard();
    if (clip.hasText()) {
        const auto length = static_cast<int>(clip.text().size());
        clip.setText(km::cp1252::fromSecureBytes(CRY::RandomBytes(length)), true);
        clip.clear();
    }
    if (km::frmMDI *main = km::MainWindow()) {
        main->timerClipboard.setEnabled(false);
        main->changed();
    }
}

void ArmClipboardWipe() {
    if (km::frmMDI *main = km::MainWindow()) {
        main->timerClipboard.setEnabled(true);
        main->changed();
    }
}

void TogglePrivate() {
    State &s = state();
    if (!s.ShowPrivate) {
        if (Passphrase::VerifyPassphrase(false)) s.ShowPrivate = true;
    } else {
        s.ShowPrivate = false;
    }
    HideShow();
}

void mnuViewShowPrivate_Switch() {
    km::frmMDI *main = km::MainWindow();
    if (!main) return;
    const bool on = state().ShowPrivate;
    if (km::MenuItem *m = main->menu(QStringLiteral("mnuViewShowPrivate")))
        m->caption = on ? QStringLiteral("Hide Private Records") : QStringLiteral("Show Private Records");
    // The tool bar can hide private records but never show them: showing
    // goes through the menu and the passphrase.
    main->toolButton(3).enabled = on;
    main->changed();
}

void HideShow() {
    km::frmMDI *main = km::MainWindow();
    if (!main) return;
    const bool on = state().ShowPrivate;
    main->toolButton(3).enabled = on;
    mnuViewShowPrivate_Switch();
    switch (main->CurrentSection) {
    case 0:
        break;
    case 11:
    case 12:
    case 14:
    case 15:
    case 16:
    case 17:
    case 18:
    case 19:
        if (main->section()) main->section()->HideShow();
        break;
    default:
        // The Diary is private as a whole and closes at once.
        if (!on) main->GoToSection(8);
        break;
    }
    main->changed();
}

void StandByPause() {
    km::frmMDI *main = km::MainWindow();
    km::DesktopService &desk = km::desktop();
    desk.setWaitCursor(true);
    desk.processEvents();
    if (!main) {
        const qint64 until = now() + 1200;
        while (now() < until)
            desk.processEvents();
        desk.setWaitCursor(false);
        return;
    }
    const bool wasEnabled = main->enabled;
    main->enabled = false;
    main->panelComment = QStringLiteral("Stand By");
    main->timerPW.setEnabled(true);
    main->changed();
    // The widget's timerPW ends the pause; on a clock that runs without it,
    // the model's own bookkeeping does.
    while (main->timerPW.Enabled) {
        desk.setWaitCursor(true);
        desk.processEvents();
        if (main->timerPW.due()) main->timerPW_Timer();
    }
    main->panelComment.clear();
    desk.setWaitCursor(false);
    main->enabled = wasEnabled;
    main->changed();
}

} // namespace SessionGuards
