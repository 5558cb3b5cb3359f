// "Preferences": the one dialog for every setting of the person. The values
// live in the start variables, the user-defined field names of the address
// book and the PIN record of the user's row; nothing of this dialog goes to the
// machine's settings file.
//
// A person at an unlocked machine may tighten the guards but not loosen them:
// changing the idle time, the PIN settings, the passphrase, ticking "Show
// Private" and opening the budgets' display flags all ask for the master
// passphrase first, and a wrong one leaves the control as it was.
//
// The widget (gui/shell/frmOptions) draws the public state and calls the
// commands; it lays the controls out on the tabs of TabNames.
#pragma once

#include <array>

#include <QString>
#include <QStringList>

#include "shell/SectionContext.h"
#include "ui/Controls.h"
#include "ui/WindowModel.h"

namespace km {

class frmOptions : public WindowModel {
public:
    // ---- Captions ----
    static const QStringList TabNames; // "Startup", "Calendar", "Lists", "Budget", "PIN"
    enum Tab { TabStartup = 0, TabCalendar, TabLists, TabBudget, TabPin };
    static const QStringList StartScreenCaptions;  // index 0 to 2
    static const QStringList StartAppSections;     // cboStartApp's texts
    static const std::array<int, 7> StartAppCodes; // ... and their item data
    static const QStringList CalViewCaptions;      // index 0 to 3
    static const QStringList AppDurationCaptions;  // index 1 to 6 at [index - 1]
    static const std::array<int, 6> AppDurationMinutes;
    static const QStringList DiaryShowCaptions;  // index 0 "7 Days", 1 "1 Day"
    static const QStringList CatShowCaptions;    // index 0 "Last Used", 1 "All"
    static const QStringList BudgetShowCaptions; // bit 0 to 3 of a budget's flags
    static const QStringList PinAppCaptions;     // bit 0 to 8 of PinSections
    static const QStringList PINeveryaccessCaptions;
    static constexpr const char *lblIdleBefore = "Exit program when inactive for more than";
    static constexpr const char *lblIdleAfter = "minutes (0 = never exit, max = 15 min)";
    static constexpr const char *lblPinHint = "(PIN can take any number of numbers/characters)";
    static constexpr int IdleMax = 15;
    static constexpr int TimeMax = 1425; // 23:45, in minutes of the day
    static constexpr int HourStep = 60;
    static constexpr int MinuteStep = 15;
    static constexpr int AddressSection = 11; // owner of the user-defined field names

    QString caption() const override { return QStringLiteral("Preferences"); }

    // ---- The controls' state ----
    int SSTab1 = TabStartup;

    int StartScreen = 0;
    ComboBox cboStartApp;
    bool cboStartAppEnabled = false;

    int Idle = 5; // minutes, shown in the box beside UpDownIdle
    bool UpDownIdleEnabled = false;
    bool cmdChangeIdleEnabled = true;
    bool chkShowPrivate = true;

    int CalView = 2;
    int AppDuration = 3; // 1 to 6
    // The three times, in minutes of the day; each has an hour and a minute spinner.
    enum TimeBox { WorkdayStart = 0, WorkdayEnd, DisplayFrom };
    std::array<int, 3> Times{480, 1020, 450};
    int DiaryShow = 1;

    int CatShow = 0;
    bool TodoShowCompleted = false;
    std::array<QString, 4> txtUserDefined;

    int BudgetPrimary = 0;
    std::array<bool, 12> BudgetShow{}; // bit i of budget b at 4 b + i
    bool BudgetFrameVisible = false;

    bool PinFrameVisible = false;
    QString PIN;
    std::array<bool, 9> PinApp{};
    int PINeveryaccess = 0; // 0 once a session, 1 at every access

    // The main window whose private records OK shows or hides; none in
    // tests that look at the settings alone.
    explicit frmOptions(Shell *shell = nullptr) : m_shell(shell) {}
    ~frmOptions() override;

    // ---- Commands ----
    void Form_Load();
    void StartScreen_Click(int index);
    void cmdChangeIdle_Click();
    // One step of UpDownIdle; nothing while it is disabled.
    void UpDownIdle_Change(bool up);
    void chkShowPrivate_Click(bool checked);
    // One step of a time spinner: the hour spinner steps 60 minutes, the minute
    // spinner 15. Returns false when the step is not taken.
    bool udHN_Change(TimeBox box, bool hourSpinner, bool up);
    void cmdPIN_Click();
    void cmdPINhide_Click();
    // The person picked another tab.
    void SSTab1_Click(int tab);
    void cmdPWchange_Click();
    void cmdOK_Click();
    void cmdCancel_Click();

    // "08:00" for 480.
    static QString TimeText(int minutes);

private:
    void loadPin();
    Shell *m_shell = nullptr;
    bool m_loading = false;
    bool m_privateGiven = false; // the passphrase was given here to show private records
};

} // namespace km
