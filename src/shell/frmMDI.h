// The program's one main window: its menu tree, the section bar, the tool bar,
// the status panels, the four timers, the order in which the program starts
// and stops, and the one section window it holds at a time.
//
// This is the window's state and its commands, free of any toolkit. The
// widget (gui/shell/frmMDI) draws the state and forwards the person's actions:
//   - it builds its menus from menus(), its section bar from optSection, its
//     tool bar from Toolbar1, and re-reads all of them whenever onChanged runs;
//   - it mirrors each TimerModel with a QTimer (see TimerModel) and calls the
//     matching *_Timer command when one fires;
//   - it calls menuClick() for every menu item, optSection_ButtonClick() and
//     Toolbar1_ButtonClick() for the bars, Form_QueryUnload() when the window
//     is closed in any way;
//   - it shows the section window section() (a frmSplash, a placeholder, or a
//     section's own model) in its client area, maximized.
//
// It is the Shell of the section windows: each is made with a SectionContext
// that hands it this window's clipboard, busy and private-records services,
// and nothing more of it.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include <QString>

#include "shell/SectionContext.h"
#include "ui/WindowModel.h"

namespace km {

// ---- What the widget draws ----

// One entry of the menu tree. A separator has no name and no caption. Items of
// a control array (mnuViewSection, mnuCalendarView, mnuBudgetAdd, ...) share
// their name and differ by index; every other item has index -1.
struct MenuItem {
    QString name;     // the control's name, "mnuFileNew"
    int index = -1;   // index within its control array, -1 if none
    QString caption;  // with "&" before the access key
    QString shortcut; // a key sequence in portable text ("Ctrl+C"), or empty
    bool separator = false;
    bool visible = true;
    bool enabled = true;
    bool checked = false;
    std::vector<MenuItem> children; // a submenu when not empty

    bool isSubmenu() const { return !children.empty(); }
};

// A button of the section bar. The last two digits of the key are the code.
struct SectionButton {
    QString key;     // "op12"
    QString caption; // "  Calendar"
    int code = 0;    // 12
    bool pressed = false;
    bool enabled = true;
};

// A button of the tool bar; the separators are entries of their own so that
// button indexes (1-based) stay as the program counts them.
struct ToolButton {
    QString key;     // "Reset", "Lock", "Find", "btnDay", ...
    QString caption; // the text under the picture ("" for Lock, which has a tip)
    QString tip;
    bool separator = false;
    bool enabled = true;
    bool pressed = false; // only the four calendar view buttons hold it
};

// A timer of the main window. The widget keeps one QTimer per TimerModel:
// when Enabled is false it stops it; when Enabled is true and either its
// QTimer is not running or generation differs from the one it last saw, it
// (re)starts it with Interval. So "enable" never restarts a running timer, and
// "disable, then enable" (Copy, Cut) does.
struct TimerModel {
    int Interval = 0; // milliseconds
    bool Enabled = false;
    int generation = 0;   // counts the starts from disabled
    qint64 startedAt = 0; // Clock::msecsSinceEpoch() of the last start

    void setEnabled(bool on);
    // For tests and the model's own bookkeeping: the timer is enabled and a
    // whole interval has passed on the clock since it started.
    bool due() const;
    // After a tick the interval begins anew.
    void rearm();
};

enum class WindowState { Normal, Minimized, Maximized };

// The window's placement in internal units: one fifteenth of a pixel.
struct Placement {
    int Top = 0, Left = 0, Width = 0, Height = 0;
    // False: the position is the platform's choice (only the size is set).
    bool positioned = false;
    WindowState State = WindowState::Normal;
    // The window has been on screen: only then is its place worth keeping.
    bool shown = false;
};

// The active control's text for Cut, Copy and Paste: the widget fills it from
// the focused text control before the call and writes it back after.
struct ActiveControl {
    bool present = false; // false when the focus is on no text control
    QString text;
    int selStart = 0;
    int selLength = 0;
    // A field that shows a record's value (a section's detail pane): Copy with
    // nothing selected takes its whole value, as its right-click Copy does.
    bool recordValue = false;
    // Its value is drawn as dots: Copy takes all of it, never a piece that the
    // person cannot see.
    bool masked = false;
    QString selectedText() const { return text.mid(selStart, selLength); }
};

// ---- Section windows ----

// The window of one section, loaded by the section switch and unloaded when
// it is left. Each section derives its model from this.
class SectionWindow : public WindowModel {
public:
    // The section's code (0 Startscreen, 11 to 17).
    virtual int sectionCode() const = 0;
    // The name of the section menu it shows while it is up ("mnuTodo"), or "".
    virtual QString sectionMenu() const { return QString(); }
    virtual void Form_Load() {}
    virtual void Form_Unload() {}
    // A menu or tool bar command of the main window meant for this section:
    // the control's name and array index ("mnuTodoNew", -1; "mnuBudgetAdd", 2;
    // "CalendarView", 0..3; "Import", with text "Palm"/"Outlook" in arg).
    // False if the section has no such command.
    virtual bool menuCommand(const QString &name, int index, const QString &arg = QString()) { return false; }
    // ShowPrivate changed: the list is rebuilt without or with private rows.
    virtual void HideShow() {}
    // The widget keeps a section window maximized; this is its last state.
    WindowState State = WindowState::Normal;
    // False while the program is busy on its behalf (SetBusy).
    bool enabled = true;
};

// A section whose window is not built yet: an empty window with its name.
class frmSectionPlaceholder : public SectionWindow {
public:
    frmSectionPlaceholder(int code, QString name) : m_code(code), m_name(std::move(name)) {}
    int sectionCode() const override { return m_code; }
    QString caption() const override { return m_name; }

private:
    int m_code;
    QString m_name;
};

// The first-start question, naming the store's default path on this system.
QString FirstStartQuestion(const QString &path);

using SectionFactory = std::function<std::unique_ptr<SectionWindow>(const SectionContext &)>;

// ---- The main window ----

class frmMDI : public WindowModel, public Shell {
public:
    frmMDI();
    ~frmMDI() override;
    frmMDI(const frmMDI &) = delete;
    frmMDI &operator=(const frmMDI &) = delete;

    QString caption() const override { return Caption; }

    // A section's window model, made whenever the section comes up. Later
    // sections register their own for their code (11 to 17); a code without
    // one gets a frmSectionPlaceholder.
    static void RegisterSection(int code, SectionFactory factory);
    static void UnregisterSections(); // tests
    // A command of a part that is built apart from the shell (an import):
    // its menu entry is disabled until the part registers it.
    static void RegisterCommand(const QString &name);
    static constexpr const char *WebsiteUrl = "https://www.tavernholt.example/";

    // ---- State the widget draws ----
    QString Caption = QStringLiteral("Kestrelmondarin");
    std::vector<MenuItem> &menus() { return m_menus; }
    const std::vector<MenuItem> &menus() const { return m_menus; }
    // An item by control name (and index for control arrays); nullptr if none.
    MenuItem *menu(const QString &name, int index = -1);
    const MenuItem *menu(const QString &name, int index = -1) const;

    std::vector<SectionButton> optSection; // the eight buttons, in bar order
    bool optSectionEnabled = true;

    std::vector<ToolButton> Toolbar1; // index 1 is Toolbar1[0]
    ToolButton &toolButton(int index) { return Toolbar1.at(static_cast<size_t>(index - 1)); }
    ToolButton *toolButton(const QString &key);

    // Status panels; date, time, CAPS and NUM are the widget's own.
    QString panelComment;
    QString panelAutoshutoff;
    static constexpr const char *autoshutoffTip = "Idle Countdown to Shutdown";

    TimerModel timerClipboard{30000, true};
    TimerModel timerPW{1200, false};
    TimerModel timerTimeout{1000, true};
    TimerModel timerSplash{2000, false};

    Placement placement;
    bool enabled = true; // the whole window (disabled around long work)

    // The section window in view (frmSplash for the Startscreen); never null
    // after Form_Load.
    SectionWindow *section() const { return m_section.get(); }
    int CurrentSection = 0;
    int CalendarView = 0; // the pressed view button, 0 to 3

    // ---- Hooks the widget sets ----
    // After every change of state: re-read menus, bars, panels, timers,
    // placement and the section window.
    std::function<void()> onChanged;
    // Close the main window (which runs Form_QueryUnload). False when the
    // window cannot close now, as under an open modal dialog.
    std::function<bool()> unloadWindow;
    // The last step of ExitProgram: end the process. It must not return into
    // code that runs on (a modal dialog's caller, say): quit the event loops
    // and leave, e.g. with std::exit.
    std::function<void()> endProgram;
    // The modal windows the shell opens from its menus and at start. The tip
    // of the day, the preferences and the change of passphrase come set to
    // their models shown through ui().showModal; the others do nothing until
    // set: frmFind, frmAbout, the online help, the maker's website, backup
    // and restore.
    std::function<void()> showTip;
    std::function<void()> showFind, showOptions, changePassphrase, showAbout, showHelp, showWebsite;
    std::function<bool()> DbBackup, DbRestore;
    // Entries of parts not built yet (Find, Backup, Restore, the imports) are
    // disabled while their hook above is unset or their command unregistered.
    // After message 135: bring the instance that runs already to the front.
    std::function<void()> raiseOtherInstance;
    // The focused text control, for Cut, Copy and Paste reached through
    // menuClick (the menu, its shortcuts, context menus): read before, written
    // back after. Without them those commands act on an absent control.
    std::function<ActiveControl()> readActiveControl;
    std::function<void(const ActiveControl &)> writeActiveControl;

    // ---- Commands ----
    // The whole start sequence. False when the program must end at once
    // (a second instance).
    bool Form_Load();
    // The window is closing in any way: placement saved in normal state, then
    // ExitProgram.
    void Form_QueryUnload();
    void ExitProgram();
    void CloseStore();

    void OutlookBarEnabled(bool state);
    void SetDatabaseMenus(bool state);
    void SetSectionMenus(bool state);
    // 0 or the error; a non-zero result empties path.
    int ProbeDatabase(QString &path);
    bool mnuDbRepair(const QString &path);

    // button: 1 to 8, the position in optSection.
    void GoToSection(int button);
    void optSection_ButtonClick(int button);
    void Toolbar1_ButtonClick(const QString &key);
    // Any menu item, context menus included, by control name and index.
    void menuClick(const QString &name, int index = -1);

    void mnuFileNew_Click();
    void mnuFileOpen_Click();
    void mnuFileCloseSection_Click();
    void mnuFileCloseDB_Click();
    void mnuFileQuit_Click();
    void mnuEditCut_Click(ActiveControl &control);
    void mnuEditCopy_Click(ActiveControl &control);
    void mnuEditPaste_Click(ActiveControl &control);
    void mnuEditFind_Click();
    void mnuEditChangePW_Click();
    void mnuViewSection_Click(int index);
    void mnuViewShowPrivate_Click();
    void mnuCalendarView_Click(int index);
    // The view buttons and menu entries show the view in force (0 to 3).
    void showCalendarView(int view);
    void mnuToolsBackup_Click();
    void mnuToolsDbUtilitiesRepairCompact_Click();
    void mnuToolsDbUtilitiesRestore_Click();
    void mnuToolsPreferences_Click();
    void mnuHelpOnline_Click();
    void mnuHelpTipOfDay_Click();
    void mnuHelpWebsite_Click();
    void mnuHelpAbout_Click();

    void timerTimeout_Timer();
    void timerClipboard_Timer();
    void timerSplash_Timer();
    void timerPW_Timer();
    // Fires every timer that is due on the clock, as the widget's QTimers
    // would (tests, and a widget that drives the timers from one tick).
    void fireDueTimers();

    // Calls onChanged.
    void changed();

    // ---- The session guards on this window ----
    // Shell: what a section window may ask of the main window.
    void copyText(const QString &text) override;
    void armClipboardWipe() override;
    void setBusy(WindowModel *window, bool busy) override;
    bool privateShown() const override;
    void setPrivateShown(bool on) override;
    int userNumber() const override;
    bool pinAllows(int pinSection) override;
    // The context a section window is made with.
    SectionContext sectionContext();

    // Overwrites and clears the clipboard and this program's selection; the
    // wipe timer stops.
    void WipeClipboard();
    // The handler of "Show/Hide Private Records" and of the Lock button:
    // showing asks for the passphrase, hiding asks nothing.
    void TogglePrivate();
    // The menu caption and the Lock button follow ShowPrivate.
    void mnuViewShowPrivate_Switch();
    // The one rule of the Lock button: it can hide private records while
    // they are shown and the menus are on, and never show them.
    void refreshLockButton();
    // The pause after a wrong passphrase: "Stand By", wait cursor, nothing
    // can be typed, for the whole interval of timerPW.
    void StandByPause();

private:
    void buildMenus();
    void applyAvailability();
    void buildBars();
    void hideSectionMenus();
    void readPlacement();
    void savePlacement();
    void showFrmMenuDB();
    void loadSection(std::unique_ptr<SectionWindow> next);
    void forwardToSection(const QString &name, int index, const QString &arg = QString());
    void afterStoreOpen();
    void afterStoreClose();
    void purgeUnloaded();
    template <class F> void guarded(F &&work);

    std::vector<MenuItem> m_menus;
    std::unique_ptr<SectionWindow> m_section;
    // Windows left by a switch are kept until the next command from outside:
    // the switch may have been asked for by the leaving window itself, whose
    // command is still running.
    std::vector<std::unique_ptr<SectionWindow>> m_unloaded;
    int m_depth = 0;
    bool m_refused = false; // a second instance: nothing of this one is kept
    bool m_exiting = false;
    bool m_menusOn = false; // the last state of SetDatabaseMenus / SetSectionMenus
};

} // namespace km
