// The main window's logic: start and stop, the section switch, the menus and
// the bars. Its invariants:
//   1. Exactly one section window is loaded; the Startscreen counts as one.
//   2. No command that needs the store can be reached while none is open:
//      SetDatabaseMenus(False) follows every close, the section bar included.
//   3. ExitProgram runs once; whatever the way out, the store is closed, the
//      clipboard wiped and the process ended.
#include "shell/frmMDI.h"

#include <set>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include "platform/Clock.h"
#include "platform/EngineMaintenance.h"
#include "platform/Environment.h"
#include "platform/Registry.h"
#include "shell/SessionGuards.h"
#include "shell/frmOptions.h"
#include "shell/frmSplash.h"
#include "shell/frmTip.h"
#include "store/KeptLogin.h"
#include "store/Passphrase.h"
#include "store/Startvariables.h"
#include "store/Users.h"
#include "store/db.h"
#include "store/frmMenuDB.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"
#include "ui/Services.h"

namespace km {

namespace {

// Commands of parts that register themselves when they exist (the imports):
// until then their menu entries stay disabled.
const char *const ImportCommands[] = {"mnuTodoImportPalm",     "mnuMemoImportPalm",
                                      "mnuAddressImportPalm",  "mnuAddressImportOutlook",
                                      "mnuCalendarImportPalm", "mnuCalendarImportOutlook"};

std::set<QString> &registeredCommands() {
    static std::set<QString> c;
    return c;
}

std::map<int, SectionFactory> &factories() {
    static std::map<int, SectionFactory> f;
    return f;
}

const char *const PlacementValues[] = {"Startup\\MDI_Top", "Startup\\MDI_Left", "Startup\\MDI_Height",
                                       "Startup\\MDI_Width"};
constexpr int DefaultWidth = 12300;
constexpr int DefaultHeight = 8820;
constexpr int UnitsPerPixel = 15;

// The section menus, hidden at every switch; the section shows its own.
const char *const SectionMenus[] = {"mnuTodo", "mnuMemo", "mnuAddress", "mnuBudget", "mnuCalendar"};

MenuItem item(const QString &name, const QString &caption, int index = -1) {
    MenuItem m;
    m.name = name;
    m.caption = caption;
    m.index = index;
    return m;
}

MenuItem separator(const QString &name = QString(), int index = -1) {
    MenuItem m;
    m.name = name;
    m.index = index;
    m.separator = true;
    return m;
}

MenuItem submenu(const QString &name, const QString &caption, std::vector<MenuItem> children) {
    MenuItem m = item(name, caption);
    m.children = std::move(children);
    return m;
}

MenuItem array(const QString &name, const QString &caption, const QStringList &captions) {
    MenuItem m = item(name, caption);
    for (int i = 0; i < captions.size(); ++i)
        m.children.push_back(captions.at(i).isEmpty() ? separator(name, i) : item(name, captions.at(i), i));
    return m;
}

template <class Item> Item *findIn(std::vector<MenuItem> &items, const QString &name, int index) {
    for (MenuItem &m : items) {
        if (!m.name.isEmpty() && m.name == name && m.index == index) return &m;
        if (Item *found = findIn<Item>(m.children, name, index)) return found;
    }
    return nullptr;
}

void setEnabled(frmMDI &w, const char *name, bool on) {
    if (MenuItem *m = w.menu(QString::fromLatin1(name))) m->enabled = on;
}

bool showPrivate() {
    return SessionGuards::state().ShowPrivate;
}

} // namespace

// ---- TimerModel ----

void TimerModel::setEnabled(bool on) {
    if (on && !Enabled) {
        ++generation;
        startedAt = Clock::msecsSinceEpoch();
    }
    Enabled = on;
}

bool TimerModel::due() const {
    return Enabled && Clock::msecsSinceEpoch() - startedAt >= Interval;
}

void TimerModel::rearm() {
    startedAt = Clock::msecsSinceEpoch();
}

// ---- Construction ----

frmMDI::frmMDI() {
    buildMenus();
    buildBars();
    const qint64 now = Clock::msecsSinceEpoch();
    for (TimerModel *t : {&timerClipboard, &timerPW, &timerTimeout, &timerSplash})
        t->startedAt = now;
    // The countdown runs from the window's load; activity counts from the
    // moment the idle hooks go in.
    SessionGuards::state().LastActivityTick = now;
    db::state().AfterOpen = [this] { afterStoreOpen(); };
    db::state().AfterClose = [this] { afterStoreClose(); };
    showTip = [] {
        frmTip tip;
        tip.Form_Load();
        if (!tip.closeRequested) ui().showModal(tip);
    };
    showOptions = [this] {
        frmOptions options(this);
        options.Form_Load();
        ui().showModal(options);
    };
    changePassphrase = [] { Passphrase::ChangePassphrase(); };
    showWebsite = [] { desktop().openUrl(QString::fromLatin1(WebsiteUrl)); };
}

frmMDI::~frmMDI() {
    db::state().AfterOpen = nullptr;
    db::state().AfterClose = nullptr;
    if (m_section) m_section->Form_Unload();
}

void frmMDI::RegisterSection(int code, SectionFactory factory) {
    factories()[code] = std::move(factory);
}

void frmMDI::UnregisterSections() {
    factories().clear();
    registeredCommands().clear();
}

QString FirstStartQuestion(const QString &path) {
    // The question names the folder the way the person knows it on this system.
    return LanguageUS::MessageText(160).replace(
        QStringLiteral("\"My Documents\\Kestrelmondarin\\Personaldata.kmd\""),
        QLatin1Char('"') + QDir::toNativeSeparators(path) + QLatin1Char('"'));
}

MenuItem *frmMDI::menu(const QString &name, int index) {
    return findIn<MenuItem>(m_menus, name, index);
}

const MenuItem *frmMDI::menu(const QString &name, int index) const {
    return findIn<MenuItem>(const_cast<std::vector<MenuItem> &>(m_menus), name, index);
}

ToolButton *frmMDI::toolButton(const QString &key) {
    for (ToolButton &b : Toolbar1)
        if (!b.separator && b.key == key) return &b;
    return nullptr;
}

void frmMDI::changed() {
    applyAvailability();
    if (onChanged) onChanged();
}

void frmMDI::RegisterCommand(const QString &name) {
    registeredCommands().insert(name);
}

void frmMDI::applyAvailability() {
    // Entries no other rule disables follow their part alone; Backup follows
    // the store as well, so it is only held off here.
    const auto follow = [this](const QString &name, bool available) {
        if (MenuItem *m = menu(name)) m->enabled = available;
    };
    follow(QStringLiteral("mnuEditFind"), static_cast<bool>(showFind));
    follow(QStringLiteral("mnuToolsDbUtilitiesRestore"), static_cast<bool>(DbRestore));
    for (const char *name : ImportCommands)
        follow(QString::fromLatin1(name), registeredCommands().count(QString::fromLatin1(name)) > 0);
    if (!DbBackup)
        if (MenuItem *m = menu(QStringLiteral("mnuToolsBackup"))) m->enabled = false;
    if (!showFind)
        if (ToolButton *find = toolButton(QStringLiteral("Find"))) find->enabled = false;
}

void frmMDI::buildMenus() {
    MenuItem cut = item("mnuEditCut", "Cut"), copy = item("mnuEditCopy", "Copy"),
             paste = item("mnuEditPaste", "Paste");
    cut.shortcut = QStringLiteral("Ctrl+X");
    copy.shortcut = QStringLiteral("Ctrl+C");
    paste.shortcut = QStringLiteral("Ctrl+V");
    MenuItem users = item("mnuEditUsers", "&Users");
    users.visible = false;
    MenuItem online = item("mnuHelpOnline", "&Online Help");
    online.shortcut = QStringLiteral("F1");
    // The keys a desktop program is expected to answer, where the menus give none.
    const auto withKey = [](MenuItem m, const char *key) {
        m.shortcut = QString::fromLatin1(key);
        return m;
    };

    m_menus = {
        submenu("mnuFile", "&File",
                {withKey(item("mnuFileNew", "&New..."), "Ctrl+N"),
                 withKey(item("mnuFileOpen", "&Open..."), "Ctrl+O"), separator(),
                 item("mnuFileCloseSection", "Close &Form"), item("mnuFileCloseDB", "Close &Database"),
                 separator(), withKey(item("mnuFileQuit", "E&xit"), "Ctrl+Q")}),
        submenu("mnuEdit", "&Edit",
                {cut, copy, paste, separator(), withKey(item("mnuEditFind", "&Find"), "Ctrl+F"), separator(),
                 item("mnuEditChangePW", "Change Pass&word"), users}),
        submenu("mnuView", "&View", {}),
        submenu("mnuTodo", "Tas&ks",
                {item("mnuTodoNew", "&New Task"), item("mnuTodoEdit", "&Edit Task"),
                 submenu("mnuTodoDelete", "&Delete",
                         {item("mnuTodoDeleteSelected", "&Selected Task"),
                          item("mnuTodoDeleteCompleted", "&Completed Tasks"),
                          item("mnuTodoDeleteAll", "&All Tasks")}),
                 separator(),
                 submenu("mnuTodoImport", "&Import", {item("mnuTodoImportPalm", "&Palm Todo-File")})}),
        submenu(
            "mnuMemo", "&Memos",
            {item("mnuMemoAdd", "&New Memo"), item("mnuMemoEdit", "&Edit Memo"),
             submenu("mnuMemoDelete", "&Delete",
                     {item("mnuMemoDeleteSelected", "&Selected Memo"),
                      item("mnuMemoDeleteCategory", "All in &Category"), item("mnuMemoDeleteAll", "&All")}),
             separator(),
             submenu("mnuMemoImport", "&Import", {item("mnuMemoImportPalm", "&Palm Notepad-File")})}),
        submenu(
            "mnuAddress", "&Records",
            {item("mnuAddressAdd", "&Add new"), item("mnuAddressEdit", "&Edit"),
             submenu("mnuAddressDelete", "&Delete",
                     {item("mnuAddressDeleteSelected", "&Selected Record"),
                      item("mnuAddressDeleteCategory", "All in &Category"),
                      item("mnuAddressDeleteAll", "&All")}),
             separator(),
             submenu("mnuAddressImport", "&Import",
                     {item("mnuAddressImportPalm", "&Palm Addressbook"),
                      item("mnuAddressImportOutlook", "&Outlook Contacts")}),
             submenu("mnuAddressExport", "Export", {item("mnuAddressExportTab", "Tab-delimited Textfile")})}),
        submenu("mnuBudget", "&Budget", {}),
        submenu("mnuCalendar", "&Calendar", {}),
        submenu("mnuTools", "&Tools",
                {item("mnuToolsBackup", "&Backup Database"),
                 submenu("mnuToolsDbUtilities", "&Other Database Utilities",
                         {item("mnuToolsDbUtilitiesRepairCompact", "&Repair and Compact Database"),
                          item("mnuToolsDbUtilitiesRestore", "&Restore Earlier Database")}),
                 separator(), item("mnuToolsPreferences", "&Preferences...")}),
        submenu("mnuHelp", "&Help",
                {online, item("mnuHelpTipOfDay", "Show &Tip of the Day"), separator(),
                 item("mnuHelpWebsite", "&Tavernholt Website"), separator(),
                 item("mnuHelpAbout", "A&bout Kestrelmondarin")}),
    };

    // Control arrays: their items hang directly in the menu.
    MenuItem &view = *menu("mnuView");
    const QStringList sections = {"Startscr&een", "&Calendar", "&Todo",         "&Addressbook",
                                  "&Memo",        "&Diary",    "Con&fidential", "&Budget"};
    for (int i = 0; i < sections.size(); ++i)
        view.children.push_back(item("mnuViewSection", sections.at(i), i));
    view.children.push_back(separator());
    view.children.push_back(withKey(item("mnuViewShowPrivate", "&Show Private Records"), "Ctrl+L"));

    MenuItem &budget = *menu("mnuBudget");
    budget.children = {item("mnuBudgetAdd", "&Add...", 0),
                       item("mnuBudgetAdd", "Add &Credit", 1),
                       item("mnuBudgetAdd", "Add De&bit", 2),
                       item("mnuBudgetEdit", "&Edit"),
                       item("mnuBudgetDelete", "&Delete"),
                       separator(),
                       item("mnuBudgetShowPrivate", "&Show Private"),
                       separator(),
                       item("mnuBudgetShowBudget", "Goto Budget &1", 0),
                       item("mnuBudgetShowBudget", "Goto Budget &2", 1),
                       item("mnuBudgetShowBudget", "Goto Budget &3", 2)};

    MenuItem &calendar = *menu("mnuCalendar");
    calendar.children = {item("mnuCalendarNewApp", "&New Appointment"),
                         item("mnuCalendarNewAllday", "New All-&Day Event"),
                         separator(),
                         item("mnuCalendarGotoToday", "Goto &Today"),
                         item("mnuCalendarGotoDate", "&Goto..."),
                         separator(),
                         item("mnuCalendarView", "&1. Day View", 0),
                         item("mnuCalendarView", "&2. Workdays (5 Days) View", 1),
                         item("mnuCalendarView", "&3. Week View", 2),
                         item("mnuCalendarView", "&4. Month View", 3),
                         separator(),
                         submenu("mnuCalendarImport", "&Import",
                                 {item("mnuCalendarImportPalm", "&Palm Datebook"),
                                  item("mnuCalendarImportOutlook", "&Outlook Calendar")}),
                         item("mnuCalendarArchive", "&Delete/Archive...")};
    // Ctrl+1 to Ctrl+3 switch among the day, work-week and week views.
    for (MenuItem &view : calendar.children)
        if (view.name == QLatin1String("mnuCalendarView") && view.index >= 0 && view.index < 3)
            view.shortcut = QStringLiteral("Ctrl+%1").arg(view.index + 1);

    // The context menus: in the bar, never shown there.
    std::vector<MenuItem> context = {
        submenu("mnuCalendarRC", "CalendarRC",
                {item("mnuCalendarRCNewAppo", "New Appointment"),
                 item("mnuCalendarRCNewAllday", "New All Day Event")}),
        submenu("mnuCalendarAppoRC", "CalendarAppoRC",
                {item("mnuCalendarAppoRCOpen", "Open"), item("mnuCalendarAppoRCDelete", "Delete")}),
        submenu("mnuCalendarTodoRC", "CalendarTodoRC", {item("mnuCalendarTodoRCEdit", "Edit")}),
        submenu("mnuAddressBoxRC", "AddressBoxRC",
                {item("mnuAddressBoxRCcopy", "Copy"), item("mnuAddressBoxRCStripped", "Copy (no spaces)"),
                 item("mnuAddressBoxRCSendMail", "Send Mail..."), item("mnuAddressBoxRCDialPhone", "Dial..."),
                 item("mnuAddressBoxRCwww", "Open Website...")}),
        submenu("mnuAddressListRC", "AddressListRC",
                {item("mnuAddressRCEdit", "Edit"), item("mnuAddressRCDelete", "Delete")}),
        submenu("mnuTodoRC", "TodoRC",
                {item("mnuTodoRCEdit", "&Edit"), item("mnuTodoRCCompleted", "&Completed"),
                 array("mnuTodoRCPriority", "Priority...", {}),
                 submenu("mnuTodoRCDueDate", "Due Date...",
                         {item("mnuTodoRCDueDateNoDate", "No Date"),
                          item("mnuTodoRCDueDateChooseDate", "Choose...")}),
                 item("mnuTodoRCDeleteItem", "&Delete")}),
        array("mnuBudgetItemlistRClk", "BudgetItemlistRClk", {}),
    };
    MenuItem &priority = context[5].children[2];
    for (int i = 0; i < 3; ++i)
        priority.children.push_back(
            item("mnuTodoRCPriorityLevel", QStringList{"&High", "&Normal", "&Low"}.at(i), i));
    MenuItem &budgetRC = context[6];
    const QStringList budgetItems = {"&Edit", "", "&Add...", "Add &Credit", "Add De&bit", "", "&Delete"};
    for (int i = 0; i < budgetItems.size(); ++i)
        budgetRC.children.push_back(budgetItems.at(i).isEmpty()
                                        ? separator("mnuBudgetItemlistRC", i)
                                        : item("mnuBudgetItemlistRC", budgetItems.at(i), i));
    for (MenuItem &m : context) {
        m.visible = false;
        m_menus.push_back(std::move(m));
    }
    hideSectionMenus();
}

void frmMDI::buildBars() {
    optSection = {{"op12", "  Calendar", 12}, {"op15", "To Do", 15}, {"op11", "Address", 11},
                  {"op14", "Memo", 14},       {"op13", "Diary", 13}, {"op16", "Confidential", 16},
                  {"op17", "Budget", 17},     {"op00", QString(), 0}};
    const auto button = [](const QString &key, const QString &caption, const QString &tip = QString()) {
        ToolButton b;
        b.key = key;
        b.caption = caption;
        b.tip = tip.isEmpty() ? caption : tip;
        return b;
    };
    ToolButton sep;
    sep.separator = true;
    Toolbar1 = {button("Reset", "Exit"),
                sep,
                button("Lock", QString(), "Hide Private Records"),
                sep,
                button("Find", "Find"),
                sep,
                button("btnDay", "Day"),
                button("btnWork", "Workdays"),
                button("btnWeek", "Week"),
                button("btnMonth", "Month")};
    // Nothing to show before a store is open.
    for (ToolButton &b : Toolbar1)
        if (b.key.startsWith(QLatin1String("btn"))) b.enabled = false;
}

void frmMDI::hideSectionMenus() {
    for (const char *name : SectionMenus)
        if (MenuItem *m = menu(QString::fromLatin1(name))) m->visible = false;
}

// ---- Start and stop ----

template <class F> void frmMDI::guarded(F &&work) {
    ++m_depth;
    try {
        work();
    } catch (const ProgramEnd &) {
        --m_depth;
        ExitProgram();
        return;
    } catch (const EngineError &e) {
        // Nothing raises across a window: the person sees what failed.
        ui().message(e.description(), Buttons::OK, Answer::OK, Icon::Exclamation);
    }
    --m_depth;
}

bool frmMDI::Form_Load() {
    if (!TryLockSingleInstance()) {
        ShowMessage(135, Buttons::OK, Answer::OK, Icon::Exclamation);
        m_refused = true;
        if (raiseOtherInstance) raiseOtherInstance();
        if (!(unloadWindow && unloadWindow())) ExitProgram();
        return false;
    }
    guarded([this] {
        OutlookBarEnabled(false);
        SetDatabaseMenus(false);
        readPlacement();
        loadSection(std::make_unique<frmSplash>());
        CurrentSection = 0;
        for (SectionButton &b : optSection)
            b.pressed = b.code == 0;
        changed();

        db::State &s = db::state();
        db::LoadRecentFiles();
        s.DbOpen = false;
        // A remembered store that fails to open has been named with its
        // reason by the probe; it stays remembered, and is no first start.
        const bool remembered = !s.DatabasePath.isEmpty();
        if (ProbeDatabase(s.DatabasePath) != 0) {
            const QString folder = SpecialFolder(FolderDocuments) + QStringLiteral("/Kestrelmondarin");
            const QString path = folder + QStringLiteral("/PersonalData.kmd");
            const bool firstRun = !remembered && !QFileInfo::exists(folder);
            if (firstRun && ui().message(FirstStartQuestion(path), Buttons::YesNo, Answer::Yes,
                                         Icon::Question) == Answer::Yes) {
                MakePrivateFolder(folder);
                s.NewStore = true;
                if (db::CreateStore(path) != 0)
                    showFrmMenuDB();
                else
                    ShowMessage(146, Buttons::OK, Answer::OK, Icon::Information);
            } else {
                showFrmMenuDB();
            }
        } else if (db::OpenStore() != 0) {
            showFrmMenuDB();
        }

        const int startOption = Startvariables::state().StartScreen;
        if (startOption != 0) timerSplash.setEnabled(true);
        SessionGuards::state().IdleFrozen = false;
        SessionGuards::InstallIdleHooks();
        if (s.DbOpen) {
            if (showTip) showTip();
            if (startOption == 0) OutlookBarEnabled(true);
            setEnabled(*this, "mnuTools", true);
        } else {
            ShowMessage(97, Buttons::OK, Answer::OK, Icon::Critical);
        }
        changed();
    });
    return !m_exiting;
}

void frmMDI::readPlacement() {
    int values[4] = {0, 0, 0, 0};
    bool failed = false;
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        values[i] = RegRead(QString::fromLatin1(PlacementValues[i])).toInt(&ok);
        failed = failed || !ok;
    }
    if (failed || values[2] == 0 || values[3] == 0) {
        placement.Width = DefaultWidth;
        placement.Height = DefaultHeight;
        placement.positioned = false;
        return;
    }
    placement.Top = values[0] * UnitsPerPixel;
    placement.Left = values[1] * UnitsPerPixel;
    placement.Height = values[2] * UnitsPerPixel;
    placement.Width = values[3] * UnitsPerPixel;
    placement.positioned = true;
}

void frmMDI::savePlacement() {
    const int values[4] = {placement.Top, placement.Left, placement.Height, placement.Width};
    for (int i = 0; i < 4; ++i)
        RegWriteDword(QString::fromLatin1(PlacementValues[i]), qint16(values[i] / UnitsPerPixel));
}

void frmMDI::showFrmMenuDB() {
    frmMenuDB dialog;
    ui().showModal(dialog);
}

void frmMDI::Form_QueryUnload() {
    ExitProgram();
}

void frmMDI::ExitProgram() {
    if (m_exiting) return;
    m_exiting = true;
    // Every way out keeps the window's place, as long as the window was on
    // screen in its normal state.
    if (!m_refused && placement.shown && placement.State == WindowState::Normal) savePlacement();
    try {
        if (db::state().DbOpen) CloseStore();
        db::ExitProgram();
    } catch (const EngineError &) {
        // The keys are gone whatever the file says; the program ends all the same.
        db::CloseStore(false);
    }
    SessionGuards::RemoveIdleHooks();
    WipeClipboard();
    if (!m_refused) ReleaseSingleInstance();
    changed();
    if (endProgram) endProgram();
}

void frmMDI::CloseStore() {
    // The switch to the Startscreen comes first, so that the section leaves
    // while its store is still there, and so that the switch's re-enabling
    // of the section menus is undone by the store's menus right after.
    GoToSection(8);
    SetDatabaseMenus(false);
    db::CloseStore();
    if (auto *splash = dynamic_cast<frmSplash *>(m_section.get())) splash->ShowNoDatabase();
    changed();
}

void frmMDI::afterStoreOpen() {
    SessionGuards::state().ShowPrivate = Startvariables::state().ShowPrivateDefault;
    SetDatabaseMenus(true);
    mnuViewShowPrivate_Switch();
    const QString path = db::state().DatabasePath;
    Caption = QStringLiteral("Kestrelmondarin - ") + FolderOfPath(path, false);
    if (auto *splash = dynamic_cast<frmSplash *>(m_section.get())) splash->ShowDatabase(path);
    changed();
}

void frmMDI::afterStoreClose() {
    SetDatabaseMenus(false);
    Caption = QStringLiteral("Kestrelmondarin");
    changed();
}

// ---- Menus and bars ----

void frmMDI::OutlookBarEnabled(bool state) {
    optSectionEnabled = state;
    changed();
}

void frmMDI::SetDatabaseMenus(bool state) {
    optSectionEnabled = state;
    for (const char *name : {"mnuFileCloseDB", "mnuFileCloseSection", "mnuEdit", "mnuView", "mnuToolsBackup",
                             "mnuToolsDbUtilitiesRepairCompact", "mnuToolsPreferences"})
        setEnabled(*this, name, state);
    m_menusOn = state;
    refreshLockButton();
    toolButton(5).enabled = state;
    // The calendar's views need a store to show.
    for (const char *key : {"btnDay", "btnWork", "btnWeek", "btnMonth"})
        if (ToolButton *b = toolButton(QString::fromLatin1(key))) b->enabled = state;
    changed();
}

void frmMDI::SetSectionMenus(bool state) {
    for (const char *name : {"mnuEdit", "mnuViewShowPrivate", "mnuToolsBackup",
                             "mnuToolsDbUtilitiesRepairCompact", "mnuToolsPreferences"})
        setEnabled(*this, name, state);
    m_menusOn = state;
    refreshLockButton();
    toolButton(5).enabled = state;
    changed();
}

int frmMDI::ProbeDatabase(QString &path) {
    if (path.isEmpty()) return -1;
    // TestOpenFile works on the store's path, which path normally is.
    db::State &s = db::state();
    const QString saved = s.DatabasePath;
    s.DatabasePath = path;
    const int err = db::TestOpenFile(path);
    if (&path != &s.DatabasePath) s.DatabasePath = saved;
    if (err != 0) path.clear();
    return err;
}

bool frmMDI::mnuDbRepair(const QString &pathIn) {
    const QString path = pathIn;
    bool result = false;
    db::KeptLogin login;
    const bool wasShowing = showPrivate();

    GoToSection(8);
    OutlookBarEnabled(false);
    enabled = false;
    changed();
    if (path.isEmpty() || !QFileInfo::exists(path)) {
        ShowMessage(134, Buttons::OK, Answer::OK, Icon::Exclamation);
    } else {
        desktop().setWaitCursor(true);
        CloseStore();
        QString outcome;
        try {
            const RepairReport report = db::RepairDatabase(path);
            result = report.usable();
            outcome = db::RepairOutcome(report, path);
        } catch (const EngineError &e) {
            result = false;
            outcome = e.description();
        }
        ui().message(outcome, Buttons::OK, Answer::OK, result ? Icon::Information : Icon::Critical);
        if (login.held() && result) {
            guarded([&] {
                login.reopen(path);
                SessionGuards::state().ShowPrivate = wasShowing;
                mnuViewShowPrivate_Switch();
            });
            desktop().setWaitCursor(false);
            OutlookBarEnabled(true);
        } else {
            desktop().setWaitCursor(false);
            showFrmMenuDB();
        }
    }
    enabled = true;
    changed();
    return result;
}

// ---- Sections ----

void frmMDI::GoToSection(int button) {
    if (button < 1 || button > static_cast<int>(optSection.size())) return;
    for (size_t i = 0; i < optSection.size(); ++i)
        optSection[i].pressed = static_cast<int>(i) == button - 1;
    optSection_ButtonClick(button);
}

void frmMDI::optSection_ButtonClick(int button) {
    if (button < 1 || button > static_cast<int>(optSection.size())) return;
    changed();
    desktop().processEvents();
    SetSectionMenus(false);
    hideSectionMenus();

    const QString key = optSection[static_cast<size_t>(button - 1)].key;
    int code = key.right(2).toInt();
    if (code >= 11 && code <= 16) {
        if (!pinAllows(code - 11)) {
            GoToSection(8);
            return;
        }
    }

    std::unique_ptr<SectionWindow> next;
    if (code == 0) {
        next = std::make_unique<frmSplash>();
    } else if (code == 13 && !showPrivate()) {
        ShowMessage(143, Buttons::OK, Answer::OK, Icon::Information);
        GoToSection(8);
        return;
    } else if (code >= 11 && code <= 17) {
        const auto f = factories().find(code);
        if (f != factories().end() && f->second) next = f->second(sectionContext());
        if (!next) {
            QString name = optSection[static_cast<size_t>(button - 1)].caption.trimmed();
            next = std::make_unique<frmSectionPlaceholder>(code, name);
        }
    } else {
        SetSectionMenus(true);
        return;
    }
    CurrentSection = code;
    // "Show Last Section Used": the section in view is the one to come back to.
    Startvariables::State &start = Startvariables::state();
    if (start.StartScreen == 2 && code >= 11) start.StartApp = static_cast<decltype(start.StartApp)>(code);
    for (size_t i = 0; i < optSection.size(); ++i)
        optSection[i].pressed = static_cast<int>(i) == button - 1;
    loadSection(std::move(next));
    // The calendar opens in the stored view: its button is the pressed one.
    if (code == 12) showCalendarView(Startvariables::state().CalView <= 3 ? Startvariables::state().CalView : 2);
    SetSectionMenus(true);
}

void frmMDI::loadSection(std::unique_ptr<SectionWindow> next) {
    if (m_section) {
        try {
            m_section->Form_Unload();
        } catch (const EngineError &) {
            // A failing unload does not stop the switch.
        }
        m_unloaded.push_back(std::move(m_section));
    }
    m_section = std::move(next);
    try {
        m_section->Form_Load();
    } catch (const EngineError &) {
    }
    if (m_section->State != WindowState::Maximized) m_section->State = WindowState::Maximized;
    if (auto *splash = dynamic_cast<frmSplash *>(m_section.get()); splash && !db::state().DbOpen)
        splash->ShowNoDatabase();
    const QString own = m_section->sectionMenu();
    if (!own.isEmpty())
        if (MenuItem *m = menu(own)) m->visible = true;
    changed();
}

void frmMDI::purgeUnloaded() {
    m_unloaded.clear();
}

void frmMDI::forwardToSection(const QString &name, int index, const QString &arg) {
    if (m_section) m_section->menuCommand(name, index, arg);
    changed();
}

void frmMDI::Toolbar1_ButtonClick(const QString &key) {
    if (key == QLatin1String("Reset")) {
        if (!(unloadWindow && unloadWindow())) Form_QueryUnload();
        return;
    }
    if (key == QLatin1String("Lock")) {
        mnuViewShowPrivate_Click();
        return;
    }
    if (key == QLatin1String("Find")) {
        mnuEditFind_Click();
        return;
    }
    static const QStringList views = {"btnDay", "btnWork", "btnWeek", "btnMonth"};
    const int view = static_cast<int>(views.indexOf(key));
    if (view < 0) return;
    Startvariables::state().CalView = static_cast<quint8>(view);
    showCalendarView(view);
    forwardToSection(QStringLiteral("CalendarView"), view);
}

void frmMDI::showCalendarView(int view) {
    static const QStringList views = {"btnDay", "btnWork", "btnWeek", "btnMonth"};
    CalendarView = view;
    for (int i = 0; i < 4; ++i) {
        toolButton(views.at(i))->pressed = i == view;
        if (MenuItem *m = menu(QStringLiteral("mnuCalendarView"), i)) m->enabled = i != view;
    }
}

void frmMDI::menuClick(const QString &name, int index) {
    guarded([&] {
        const auto onActive = [this](void (frmMDI::*command)(ActiveControl &)) {
            ActiveControl control = readActiveControl ? readActiveControl() : ActiveControl{};
            (this->*command)(control);
            if (writeActiveControl && control.present) writeActiveControl(control);
        };
        if (name == QLatin1String("mnuFileNew")) return mnuFileNew_Click();
        if (name == QLatin1String("mnuFileOpen")) return mnuFileOpen_Click();
        if (name == QLatin1String("mnuFileCloseSection")) return mnuFileCloseSection_Click();
        if (name == QLatin1String("mnuFileCloseDB")) return mnuFileCloseDB_Click();
        if (name == QLatin1String("mnuFileQuit")) return mnuFileQuit_Click();
        if (name == QLatin1String("mnuEditCut")) return onActive(&frmMDI::mnuEditCut_Click);
        if (name == QLatin1String("mnuEditCopy")) return onActive(&frmMDI::mnuEditCopy_Click);
        if (name == QLatin1String("mnuEditPaste")) return onActive(&frmMDI::mnuEditPaste_Click);
        if (name == QLatin1String("mnuEditFind")) return mnuEditFind_Click();
        if (name == QLatin1String("mnuEditChangePW")) return mnuEditChangePW_Click();
        if (name == QLatin1String("mnuEditUsers")) return;
        if (name == QLatin1String("mnuViewSection")) return mnuViewSection_Click(index);
        if (name == QLatin1String("mnuViewShowPrivate")) return mnuViewShowPrivate_Click();
        if (name == QLatin1String("mnuCalendarView")) return mnuCalendarView_Click(index);
        if (name == QLatin1String("mnuCalendarImportPalm"))
            return forwardToSection(QStringLiteral("mnuCalendarImport"), -1, QStringLiteral("Palm"));
        if (name == QLatin1String("mnuCalendarImportOutlook"))
            return forwardToSection(QStringLiteral("mnuCalendarImport"), -1, QStringLiteral("Outlook"));
        if (name == QLatin1String("mnuToolsBackup")) return mnuToolsBackup_Click();
        if (name == QLatin1String("mnuToolsDbUtilitiesRepairCompact"))
            return mnuToolsDbUtilitiesRepairCompact_Click();
        if (name == QLatin1String("mnuToolsDbUtilitiesRestore")) return mnuToolsDbUtilitiesRestore_Click();
        if (name == QLatin1String("mnuToolsPreferences")) return mnuToolsPreferences_Click();
        if (name == QLatin1String("mnuHelpOnline")) return mnuHelpOnline_Click();
        if (name == QLatin1String("mnuHelpTipOfDay")) return mnuHelpTipOfDay_Click();
        if (name == QLatin1String("mnuHelpWebsite")) return mnuHelpWebsite_Click();
        if (name == QLatin1String("mnuHelpAbout")) return mnuHelpAbout_Click();
        if (name == QLatin1String("mnuAddressBoxRCcopy")) {
            if (m_section && m_section->menuCommand(name, index)) return changed();
            return onActive(&frmMDI::mnuEditCopy_Click);
        }
        forwardToSection(name, index);
    });
}

void frmMDI::mnuFileNew_Click() {
    guarded([this] {
        GoToSection(8);
        OutlookBarEnabled(false);
        if (db::state().DbOpen) CloseStore();
        if (db::CreateStore() != 0) {
            showFrmMenuDB();
        } else {
            ShowMessage(146, Buttons::OK, Answer::OK, Icon::Information);
            Startvariables::LoadStartVariables();
            OutlookBarEnabled(true);
        }
        if (!db::state().DbOpen) SetDatabaseMenus(false);
    });
}

void frmMDI::mnuFileOpen_Click() {
    guarded([this] {
        GoToSection(8);
        OutlookBarEnabled(false);
        CloseStore();
        const int chosen = db::ChooseStoreFile();
        if (chosen != 0) {
            showFrmMenuDB();
        } else if (db::OpenStore() != 0) {
            showFrmMenuDB();
        }
        if (!db::state().DbOpen) showFrmMenuDB();
        // With no store the bar stays off: nothing behind it would work.
        OutlookBarEnabled(db::state().DbOpen);
    });
}

void frmMDI::mnuFileCloseSection_Click() {
    GoToSection(8);
}

void frmMDI::mnuFileCloseDB_Click() {
    const db::State &s = db::state();
    if (!s.DatabasePath.isEmpty() && QFileInfo::exists(s.DatabasePath) && s.DbOpen)
        guarded([this] { CloseStore(); });
}

void frmMDI::mnuFileQuit_Click() {
    ExitProgram();
}

void frmMDI::mnuEditCopy_Click(ActiveControl &control) {
    timerClipboard.setEnabled(false);
    clipboard().clear();
    armClipboardWipe();
    if (control.present) {
        control.selStart = std::clamp(control.selStart, 0, static_cast<int>(control.text.size()));
        control.selLength =
            std::clamp(control.selLength, 0, static_cast<int>(control.text.size()) - control.selStart);
        if (control.recordValue && (control.masked || control.selLength == 0)) {
            // What was copied is what is selected after, and what Cut takes.
            control.selStart = 0;
            control.selLength = static_cast<int>(control.text.size());
        }
        const QString selected = control.selectedText();
        if (!selected.isEmpty()) clipboard().setText(selected, true);
    }
    changed();
}

void frmMDI::mnuEditCut_Click(ActiveControl &control) {
    mnuEditCopy_Click(control);
    if (!control.present) return;
    const int length = static_cast<int>(control.text.size());
    control.text = control.text.left(control.selStart) +
                   control.text.right(length - control.selLength - control.selStart);
    control.selLength = 0;
}

void frmMDI::mnuEditPaste_Click(ActiveControl &control) {
    if (!control.present) return;
    const int length = static_cast<int>(control.text.size());
    control.selStart = std::clamp(control.selStart, 0, length);
    control.selLength = std::clamp(control.selLength, 0, length - control.selStart);
    const QString pasted = clipboard().hasText() ? clipboard().text() : QString();
    control.text =
        control.text.left(control.selStart) + pasted + control.text.mid(control.selStart + control.selLength);
    control.selStart += static_cast<int>(pasted.size());
    control.selLength = 0;
}

void frmMDI::mnuEditFind_Click() {
    if (showFind) guarded([this] { showFind(); });
}

void frmMDI::mnuEditChangePW_Click() {
    if (changePassphrase) guarded([this] { changePassphrase(); });
}

void frmMDI::mnuViewSection_Click(int index) {
    if (index < 0 || index > 7) return;
    GoToSection(index == 0 ? 8 : index);
}

void frmMDI::mnuViewShowPrivate_Click() {
    guarded([this] { TogglePrivate(); });
}

void frmMDI::mnuCalendarView_Click(int index) {
    if (index < 0 || index > 3) return;
    Toolbar1_ButtonClick(toolButton(index + 7).key);
}

void frmMDI::mnuToolsBackup_Click() {
    if (DbBackup) guarded([this] { DbBackup(); });
}

void frmMDI::mnuToolsDbUtilitiesRepairCompact_Click() {
    guarded([this] { mnuDbRepair(db::state().DatabasePath); });
}

void frmMDI::mnuToolsDbUtilitiesRestore_Click() {
    if (DbRestore) guarded([this] { DbRestore(); });
}

void frmMDI::mnuToolsPreferences_Click() {
    if (showOptions) guarded([this] { showOptions(); });
}

void frmMDI::mnuHelpOnline_Click() {
    if (showHelp) showHelp();
}

void frmMDI::mnuHelpTipOfDay_Click() {
    RegWriteDword(QStringLiteral("Startup\\ShowTipsAtStartup"), 1);
    if (showTip) guarded([this] { showTip(); });
}

void frmMDI::mnuHelpWebsite_Click() {
    if (CurrentSection != 0) GoToSection(8);
    if (showWebsite) showWebsite();
}

void frmMDI::mnuHelpAbout_Click() {
    if (showAbout) showAbout();
}

// ---- Timers ----

void frmMDI::timerTimeout_Timer() {
    purgeUnloaded();
    if (m_exiting) return;
    const int minutes = Startvariables::state().IdleMinutes;
    if (minutes == 0) return;
    const qint64 idle = SessionGuards::IdleMilliseconds();
    const int remaining = qint16(minutes * 60) - static_cast<int>(idle / 1000);
    panelAutoshutoff = SessionGuards::CountdownText(remaining);
    changed();
    if (idle >= qint64(minutes) * 60000) {
        // Under a modal dialog the window cannot close; the exit does not wait.
        if (!(unloadWindow && unloadWindow())) Form_QueryUnload();
    }
}

void frmMDI::timerClipboard_Timer() {
    WipeClipboard();
}

void frmMDI::timerSplash_Timer() {
    timerSplash.setEnabled(false);
    changed();
    const int start = Startvariables::state().StartApp;
    for (size_t i = 0; i < optSection.size(); ++i)
        if (optSection[i].key.right(2).toInt() == start) {
            guarded([&] { GoToSection(static_cast<int>(i) + 1); });
            return;
        }
}

void frmMDI::timerPW_Timer() {
    timerPW.setEnabled(false);
    changed();
}

void frmMDI::fireDueTimers() {
    const std::pair<TimerModel *, void (frmMDI::*)()> timers[] = {
        {&timerPW, &frmMDI::timerPW_Timer},
        {&timerTimeout, &frmMDI::timerTimeout_Timer},
        {&timerClipboard, &frmMDI::timerClipboard_Timer},
        {&timerSplash, &frmMDI::timerSplash_Timer}};
    for (const auto &[timer, tick] : timers)
        if (timer->due()) {
            timer->rearm();
            (this->*tick)();
        }
}

// ---- The session guards on this window ----

void frmMDI::copyText(const QString &text) {
    ActiveControl control{true, text, 0, static_cast<int>(text.size())};
    mnuEditCopy_Click(control);
}

void frmMDI::armClipboardWipe() {
    timerClipboard.setEnabled(true);
    changed();
}

void frmMDI::WipeClipboard() {
    // The selection too, even when the clipboard held nothing to wipe.
    clipboard().clearSelection();
    SessionGuards::WipeClipboardText();
    timerClipboard.setEnabled(false);
    changed();
}

void frmMDI::setBusy(WindowModel *window, bool busy) {
    SessionGuards::state().IdleFrozen = busy;
    desktop().setWaitCursor(busy);
    if (auto *section = dynamic_cast<SectionWindow *>(window)) section->enabled = !busy;
    enabled = !busy;
    panelComment.clear();
    changed();
}

bool frmMDI::privateShown() const {
    return showPrivate();
}

int frmMDI::userNumber() const {
    return Users::state().User.Number;
}

bool frmMDI::pinAllows(int pinSection) {
    return Users::PinAllows(pinSection);
}

SectionContext frmMDI::sectionContext() {
    return SectionContext{ui(), *this, db::Store(), Clock::current(), QLocale::system()};
}

void frmMDI::refreshLockButton() {
    if (Toolbar1.size() >= 3) toolButton(3).enabled = m_menusOn && showPrivate();
}

void frmMDI::mnuViewShowPrivate_Switch() {
    if (MenuItem *m = menu(QStringLiteral("mnuViewShowPrivate")))
        m->caption =
            showPrivate() ? QStringLiteral("Hide Private Records") : QStringLiteral("Show Private Records");
    refreshLockButton();
    changed();
}

void frmMDI::setPrivateShown(bool on) {
    SessionGuards::state().ShowPrivate = on;
    mnuViewShowPrivate_Switch();
    switch (CurrentSection) {
    case 0:
        break;
    case 13:
        // The Diary is private as a whole and closes at once.
        if (!on) GoToSection(8);
        break;
    default:
        if (m_section) m_section->HideShow();
        break;
    }
    changed();
}

void frmMDI::TogglePrivate() {
    if (!showPrivate()) {
        if (Passphrase::VerifyPassphrase(false)) setPrivateShown(true);
    } else {
        setPrivateShown(false);
    }
}

void frmMDI::StandByPause() {
    DesktopService &desk = desktop();
    const bool wasEnabled = enabled;
    desk.setWaitCursor(true);
    desk.processEvents();
    enabled = false;
    panelComment = QStringLiteral("Stand By");
    timerPW.setEnabled(true);
    changed();
    // The widget's timerPW ends the pause; on a clock that runs without it,
    // the model's own bookkeeping does.
    while (timerPW.Enabled) {
        desk.setWaitCursor(true);
        desk.processEvents();
        if (timerPW.due()) timerPW_Timer();
    }
    panelComment.clear();
    desk.setWaitCursor(false);
    enabled = wasEnabled;
    changed();
}

} // namespace km
