#include "shell/frmOptions.h"

#include <algorithm>
#include <cmath>

#include "platform/SecureBytes.h"
#include "shell/SessionGuards.h"
#include "shell/frmMDI.h"
#include "store/Passphrase.h"
#include "store/Startvariables.h"
#include "store/Users.h"

namespace km {

const QStringList frmOptions::TabNames = {QStringLiteral("Startup"), QStringLiteral("Calendar"),
                                          QStringLiteral("Lists"), QStringLiteral("Budget"),
                                          QStringLiteral("PIN")};
const QStringList frmOptions::StartScreenCaptions = {QStringLiteral("Show Start Screen"),
                                                     QStringLiteral("Goto Section"),
                                                     QStringLiteral("Show Last Section Used")};
const QStringList frmOptions::StartAppSections = {
    QStringLiteral("Calendar"),  QStringLiteral("Addressbook"), QStringLiteral("Diary"),
    QStringLiteral("ToDo List"), QStringLiteral("Memo Pad"),    QStringLiteral("Sensitive Data"),
    QStringLiteral("Budget!")};
const std::array<int, 7> frmOptions::StartAppCodes = {12, 11, 13, 15, 14, 16, 17};
const QStringList frmOptions::CalViewCaptions = {QStringLiteral("Day"), QStringLiteral("Workdays (Mon-Fri)"),
                                                 QStringLiteral("Week"), QStringLiteral("Month")};
const QStringList frmOptions::AppDurationCaptions = {QStringLiteral("15 min"), QStringLiteral("20 min"),
                                                     QStringLiteral("30 min"), QStringLiteral("60 min"),
                                                     QStringLiteral("90 min"), QStringLiteral("120 min")};
const std::array<int, 6> frmOptions::AppDurationMinutes = {15, 20, 30, 60, 90, 120};
const QStringList frmOptions::DiaryShowCaptions = {QStringLiteral("7 Days"), QStringLiteral("1 Day")};
const QStringList frmOptions::CatShowCaptions = {QStringLiteral("Last Used"), QStringLiteral("All")};
const QStringList frmOptions::BudgetShowCaptions = {QStringLiteral("Credit"), QStringLiteral("Debit"),
                                                    QStringLiteral("Public"), QStringLiteral("Private")};
const QStringList frmOptions::PinAppCaptions = {
    QStringLiteral("Address Book"), QStringLiteral("Calendar"), QStringLiteral("Diary"),
    QStringLiteral("Memopad"),      QStringLiteral("Todo"),     QStringLiteral("Confidential Data"),
    QStringLiteral("Budget 1"),     QStringLiteral("Budget 2"), QStringLiteral("Budget 3")};
const QStringList frmOptions::PINeveryaccessCaptions = {QStringLiteral("once a session"),
                                                        QStringLiteral("at every access")};

namespace {

int minutesOf(double dayFraction) {
    return std::clamp(static_cast<int>(std::lround(dayFraction * 1440.0)), 0, frmOptions::TimeMax);
}

bool passphraseGiven() {
    return Passphrase::VerifyPassphrase(false);
}

} // namespace

frmOptions::~frmOptions() {
    wipe(PIN);
}

QString frmOptions::TimeText(int minutes) {
    return QStringLiteral("%1:%2")
        .arg(minutes / 60, 2, 10, QLatin1Char('0'))
        .arg(minutes % 60, 2, 10, QLatin1Char('0'));
}

void frmOptions::loadPin() {
    const Users::State &u = Users::state();
    wipe(PIN);
    PIN = u.Pin;
    for (int i = 0; i < static_cast<int>(PinApp.size()); ++i)
        PinApp[static_cast<size_t>(i)] = (u.PinSections >> i) & 1;
    PINeveryaccess = u.PinEveryAccess ? 1 : 0;
}

void frmOptions::Form_Load() {
    // Ticking "Show Private" from the stored value is no person's act: no question.
    m_loading = true;
    const Startvariables::State &v = Startvariables::state();
    SSTab1 = TabStartup;
    StartScreen = v.StartScreen;
    cboStartApp.Clear();
    for (int i = 0; i < StartAppSections.size(); ++i)
        cboStartApp.AddItem(StartAppSections.at(i), StartAppCodes[static_cast<size_t>(i)]);
    for (int i = 0; i < cboStartApp.ListCount(); ++i)
        if (cboStartApp.ItemData(i) == v.StartApp) cboStartApp.setListIndex(i);
    cboStartAppEnabled = StartScreen == 1;

    Idle = v.IdleMinutes;
    UpDownIdleEnabled = false;
    cmdChangeIdleEnabled = true;
    chkShowPrivate_Click(v.ShowPrivateDefault);

    CalView = v.CalView;
    AppDuration = 3;
    for (int i = 0; i < static_cast<int>(AppDurationMinutes.size()); ++i)
        if (AppDurationMinutes[static_cast<size_t>(i)] == v.CalSlotMinutes) AppDuration = i + 1;
    Times = {minutesOf(v.DayStart), minutesOf(v.DayEnd), minutesOf(v.DayFirstShown)};
    DiaryShow = v.DiaryShow == 1 ? 1 : 0;

    CatShow = v.CatShow;
    TodoShowCompleted = v.TodoShowCompleted != 0;
    Startvariables::LoadUserFieldNames(AddressSection);
    for (int i = 0; i < Startvariables::UserFieldCount; ++i)
        txtUserDefined[static_cast<size_t>(i)] = v.UserFieldNames[static_cast<size_t>(i)];

    BudgetPrimary = v.BudgetPrimary;
    const std::array<quint8, 3> flags = {v.BudgetShow1, v.BudgetShow2, v.BudgetShow3};
    for (int b = 0; b < 3; ++b)
        for (int i = 0; i < 4; ++i)
            BudgetShow[static_cast<size_t>(4 * b + i)] = (flags[static_cast<size_t>(b)] >> i) & 1;
    BudgetFrameVisible = false;

    PinFrameVisible = false;
    loadPin();
    m_loading = false;
}

void frmOptions::StartScreen_Click(int index) {
    StartScreen = index;
    cboStartAppEnabled = index == 1;
}

void frmOptions::cmdChangeIdle_Click() {
    if (!passphraseGiven()) return;
    UpDownIdleEnabled = true;
    cmdChangeIdleEnabled = false;
}

void frmOptions::UpDownIdle_Change(bool up) {
    if (!UpDownIdleEnabled) return;
    Idle = std::clamp(Idle + (up ? 1 : -1), 0, IdleMax);
}

void frmOptions::chkShowPrivate_Click(bool checked) {
    chkShowPrivate = checked;
    if (!checked || m_loading) return;
    if (passphraseGiven())
        m_privateGiven = true;
    else
        chkShowPrivate = false;
}

bool frmOptions::udHN_Change(TimeBox box, bool hourSpinner, bool up) {
    const int step = hourSpinner ? HourStep : MinuteStep;
    int &value = Times[static_cast<size_t>(box)];
    const int next = std::clamp(value + (up ? step : -step), 0, TimeMax);
    if (next == value) return false;
    if (box == WorkdayStart && next >= Times[WorkdayEnd]) return false;
    if (box == WorkdayEnd && next <= Times[WorkdayStart]) return false;
    value = next;
    return true;
}

void frmOptions::cmdPIN_Click() {
    if (passphraseGiven()) PinFrameVisible = true;
}

void frmOptions::cmdPINhide_Click() {
    PinFrameVisible = false;
}

void frmOptions::SSTab1_Click(int tab) {
    const int previous = SSTab1;
    SSTab1 = tab;
    if (tab != TabBudget || BudgetFrameVisible) return;
    if (passphraseGiven())
        BudgetFrameVisible = true;
    else
        SSTab1 = previous;
}

void frmOptions::cmdPWchange_Click() {
    // A new passphrase brings the default PIN with it; the PIN controls show it,
    // so that OK does not write the old one back.
    if (Passphrase::ChangePassphrase()) loadPin();
}

void frmOptions::cmdOK_Click() {
    Startvariables::State &v = Startvariables::state();
    v.IdleMinutes = static_cast<qint16>(Idle);

    std::array<quint8, 3> flags{};
    for (int b = 0; b < 3; ++b)
        for (int i = 0; i < 4; ++i)
            if (BudgetShow[static_cast<size_t>(4 * b + i)])
                flags[static_cast<size_t>(b)] |= static_cast<quint8>(1 << i);
    v.BudgetShow1 = flags[0];
    v.BudgetShow2 = flags[1];
    v.BudgetShow3 = flags[2];

    v.ShowPrivateDefault = chkShowPrivate;
    // OK may hide private records; it shows them only when the passphrase was
    // given for it in this window, never because the box loaded ticked.
    bool show = SessionGuards::state().ShowPrivate;
    if (!chkShowPrivate)
        show = false;
    else if (m_privateGiven)
        show = true;
    if (m_shell)
        m_shell->setPrivateShown(show);
    else
        SessionGuards::state().ShowPrivate = show;

    // An emptied box keeps the name the field had.
    for (int i = 0; i < Startvariables::UserFieldCount; ++i)
        if (!txtUserDefined[static_cast<size_t>(i)].isEmpty())
            v.UserFieldNames[static_cast<size_t>(i)] = txtUserDefined[static_cast<size_t>(i)];
    Startvariables::SaveUserFieldNames(AddressSection);

    v.StartScreen = static_cast<quint8>(StartScreen);
    if (cboStartApp.ListIndex() < 0) cboStartApp.setListIndex(0);
    v.StartApp = static_cast<quint8>(cboStartApp.ItemData(cboStartApp.ListIndex()));

    v.DiaryShow = static_cast<quint8>(DiaryShow);
    v.TodoShowCompleted = TodoShowCompleted ? 1 : 0;
    v.BudgetPrimary = static_cast<quint8>(BudgetPrimary);
    v.CatShow = static_cast<quint8>(CatShow);
    v.CalView = static_cast<quint8>(CalView);
    if (AppDuration >= 1 && AppDuration <= static_cast<int>(AppDurationMinutes.size()))
        v.CalSlotMinutes = static_cast<qint16>(AppDurationMinutes[static_cast<size_t>(AppDuration - 1)]);
    v.DayStart = Times[WorkdayStart] / 1440.0;
    v.DayEnd = Times[WorkdayEnd] / 1440.0;
    v.DayFirstShown = Times[DisplayFrom] / 1440.0;

    Startvariables::SaveStartVariables();

    Users::State &u = Users::state();
    qint32 sections = 0;
    for (int i = 0; i < static_cast<int>(PinApp.size()); ++i)
        if (PinApp[static_cast<size_t>(i)]) sections |= 1 << i;
    // A PIN typed here is the person's own; an untouched one keeps its kind.
    const int kind = PIN == u.Pin ? u.PinKind : 1;
    Users::WritePin(kind, PIN, sections, PINeveryaccess == 1);

    close(true);
}

void frmOptions::cmdCancel_Click() {
    close(false);
}

} // namespace km
