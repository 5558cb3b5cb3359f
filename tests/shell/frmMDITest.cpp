#include <gtest/gtest.h>

#include "shell/MainWindowTestSupport.h"
#include "store/frmMenuDB.h"
#include "ui/LanguageUS.h"

namespace km::test {
namespace {

using MainWindowTest = MainWindowFixture;

TEST_F(MainWindowTest, MenuCaptionsAndWhatStaysHidden) {
    const std::tuple<const char *, int, const char *> captions[] = {
        {"mnuFileNew", -1, "&New..."},
        {"mnuFileCloseSection", -1, "Close &Form"},
        {"mnuFileQuit", -1, "E&xit"},
        {"mnuEditChangePW", -1, "Change Pass&word"},
        {"mnuViewSection", 0, "Startscr&een"},
        {"mnuViewSection", 6, "Con&fidential"},
        {"mnuViewShowPrivate", -1, "&Show Private Records"},
        {"mnuTodoDeleteCompleted", -1, "&Completed Tasks"},
        {"mnuAddressImportOutlook", -1, "&Outlook Contacts"},
        {"mnuBudgetAdd", 2, "Add De&bit"},
        {"mnuBudgetShowBudget", 0, "Goto Budget &1"},
        {"mnuCalendarView", 1, "&2. Workdays (5 Days) View"},
        {"mnuToolsDbUtilitiesRestore", -1, "&Restore Earlier Database"},
        {"mnuHelpAbout", -1, "A&bout Kestrelmondarin"},
        {"mnuTodoRCPriorityLevel", 2, "&Low"},
        {"mnuBudgetItemlistRC", 6, "&Delete"},
    };
    for (const auto &[name, index, caption] : captions) {
        const MenuItem *m = w->menu(QString::fromLatin1(name), index);
        ASSERT_NE(m, nullptr) << name << index;
        EXPECT_EQ(m->caption, QString::fromLatin1(caption)) << name << index;
    }
    for (const char *hidden : {"mnuEditUsers", "mnuTodo", "mnuMemo", "mnuAddress", "mnuBudget", "mnuCalendar",
                               "mnuCalendarRC", "mnuAddressBoxRC", "mnuTodoRC", "mnuBudgetItemlistRClk"})
        EXPECT_FALSE(w->menu(QString::fromLatin1(hidden))->visible) << hidden;
    EXPECT_TRUE(w->menu("mnuBudgetItemlistRC", 1)->separator);
    ASSERT_EQ(w->optSection.size(), 8u);
    EXPECT_EQ(w->optSection[0].caption, "  Calendar");
    EXPECT_EQ(w->toolButton(7).key, "btnDay");
    EXPECT_TRUE(w->toolButton(6).separator);
}

TEST_F(MainWindowTest, DatabaseAndSectionMenus) {
    const char *byDatabase[] = {"mnuFileCloseDB",
                                "mnuFileCloseSection",
                                "mnuEdit",
                                "mnuView",
                                "mnuToolsBackup",
                                "mnuToolsDbUtilitiesRepairCompact",
                                "mnuToolsPreferences"};
    const char *never[] = {"mnuFileNew", "mnuFileOpen", "mnuFileQuit", "mnuToolsDbUtilitiesRestore",
                           "mnuHelp"};
    // As they stand once backup, restore and find exist.
    w->DbBackup = w->DbRestore = [] { return true; };
    w->showFind = [] {};
    SessionGuards::state().ShowPrivate = false;
    w->SetDatabaseMenus(false);
    for (const char *name : byDatabase)
        EXPECT_FALSE(w->menu(QString::fromLatin1(name))->enabled) << name;
    for (const char *name : never)
        EXPECT_TRUE(w->menu(QString::fromLatin1(name))->enabled) << name;
    EXPECT_FALSE(w->optSectionEnabled);
    EXPECT_FALSE(w->toolButton(5).enabled);

    w->SetDatabaseMenus(true);
    for (const char *name : byDatabase)
        EXPECT_TRUE(w->menu(QString::fromLatin1(name))->enabled) << name;
    EXPECT_FALSE(w->toolButton(3).enabled); // private records hidden
    EXPECT_TRUE(w->toolButton(5).enabled);

    SessionGuards::state().ShowPrivate = true;
    w->SetSectionMenus(false);
    for (const char *name : {"mnuEdit", "mnuViewShowPrivate", "mnuToolsBackup", "mnuToolsPreferences"})
        EXPECT_FALSE(w->menu(QString::fromLatin1(name))->enabled) << name;
    EXPECT_TRUE(w->menu("mnuView")->enabled);
    EXPECT_TRUE(w->menu("mnuFileCloseDB")->enabled);
    w->SetSectionMenus(true);
    EXPECT_TRUE(w->toolButton(3).enabled);
}

TEST_F(MainWindowTest, FirstStartYesCreatesTheDefaultStore) {
    typeNew(QString::fromLatin1(kPass));
    ASSERT_TRUE(w->Form_Load());
    const QString expected = dir.filePath(QStringLiteral("Documents/Kestrelmondarin/PersonalData.kmd"));
    // The question names the real default path, and the new store is announced.
    ASSERT_FALSE(ui.shown.isEmpty());
    EXPECT_TRUE(ui.shown.first().contains(QLatin1Char('"') + expected + QLatin1Char('"')))
        << ui.shown.first().toStdString();
    EXPECT_FALSE(ui.shown.first().contains(QStringLiteral("My Documents")));
    EXPECT_TRUE(ui.shown.contains(LanguageUS::MessageText(146)));
    EXPECT_TRUE(QFileInfo::exists(expected));
    EXPECT_TRUE(db::state().DbOpen);
    EXPECT_EQ(db::state().DatabasePath, expected);
    EXPECT_EQ(tipsShown, 1);
    auto *splash = dynamic_cast<frmSplash *>(w->section());
    ASSERT_NE(splash, nullptr);
    EXPECT_EQ(splash->txtDbName, "PersonalData.kmd");
    EXPECT_EQ(splash->txtVersion, "Version 2.00.2");
    EXPECT_TRUE(w->optSectionEnabled);
    EXPECT_TRUE(w->menu("mnuToolsPreferences")->enabled);
    w->ExitProgram();
    EXPECT_EQ(RegRead(QStringLiteral("MostRecentFiles\\1")), expected);
}

// Without a usable store the DB menu asks; left without one, message 97 and
// the program stays up with File and Help.
TEST_F(MainWindowTest, StartWithoutAStoreEndsInTheDbMenu) {
    struct Case {
        const char *name;
        bool folderExists;
        QString recent;
        bool asks160;
    };
    const Case cases[] = {{"first run, No", false, QString(), true},
                          {"missing file", true, QStringLiteral("/nowhere/Gone.kmd"), false}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        TearDown();
        SetUp();
        if (c.folderExists) QDir(dir.path()).mkpath(QStringLiteral("Documents/Kestrelmondarin"));
        RegWrite(QStringLiteral("MostRecentFiles\\1"), c.recent);
        ui.answer(Answer::No);
        int menus = 0;
        ui.onModal<frmMenuDB>([&](frmMenuDB &m) {
            ++menus;
            m.cmdCancel_Click();
            return false;
        });
        w->Form_Load();
        EXPECT_EQ(!ui.shown.isEmpty() && ui.shown.first().startsWith(LanguageUS::MessageText(160).left(40)),
                  c.asks160);
        EXPECT_EQ(menus, 1);
        EXPECT_EQ(ui.shown.last(), LanguageUS::MessageText(97));
        EXPECT_FALSE(db::state().DbOpen);
        EXPECT_EQ(ends, 0);
        EXPECT_EQ(tipsShown, 0);
        EXPECT_FALSE(w->optSectionEnabled);
        EXPECT_FALSE(w->menu("mnuFileCloseDB")->enabled);
        EXPECT_EQ(dynamic_cast<frmSplash *>(w->section())->txtDbName, "   No database open");
    }
}

// A remembered store that no longer opens is named with the reason; it is
// neither forgotten nor taken for a first start that offers a new, empty store.
TEST_F(MainWindowTest, ARememberedStoreThatFailsToOpenIsSaidAndKept) {
    const QString broken = dir.filePath(QStringLiteral("Elsewhere/Mine.kmd"));
    ASSERT_TRUE(QDir(dir.path()).mkpath(QStringLiteral("Elsewhere")));
    {
        QFile f(broken);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("not a store any more" + QByteArray(5000, 'x'));
    }
    RegWrite(QStringLiteral("MostRecentFiles\\1"), broken);
    ui.answer(Answer::No);
    int menus = 0;
    ui.onModal<frmMenuDB>([&](frmMenuDB &m) {
        ++menus;
        m.cmdCancel_Click();
        return false;
    });
    w->Form_Load();
    ASSERT_FALSE(ui.shown.isEmpty());
    EXPECT_EQ(ui.shown.first(), LanguageUS::MessageText(51));
    for (const QString &shown : ui.shown)
        EXPECT_FALSE(shown.startsWith(LanguageUS::MessageText(160).left(40))) << "no first-start offer";
    EXPECT_EQ(menus, 1);
    w->ExitProgram();
    EXPECT_EQ(RegRead(QStringLiteral("MostRecentFiles\\1")), broken);
}

TEST_F(MainWindowTest, SecondInstanceIsRefused) {
    QLockFile other(SingleInstanceLockPath());
    ASSERT_TRUE(other.tryLock(0));
    int raised = 0;
    w->raiseOtherInstance = [&] { ++raised; };
    EXPECT_FALSE(w->Form_Load());
    EXPECT_EQ(ui.shown, QStringList{LanguageUS::MessageText(135)});
    EXPECT_EQ(raised, 1) << "the running one is brought to the front";
    EXPECT_EQ(ends, 1);
    EXPECT_TRUE(RegRead(QStringLiteral("Startup\\MDI_Width")).isEmpty());
    EXPECT_TRUE(QFileInfo::exists(SingleInstanceLockPath()));
}

TEST_F(MainWindowTest, PlacementReadAndKeptOnlyInNormalState) {
    struct Case {
        const char *name;
        QStringList stored; // top, left, height, width; "" for absent
        Placement expected;
    };
    const Case cases[] = {
        {"all there", {"10", "20", "600", "800"}, {150, 300, 12000, 9000, true}},
        {"width 0", {"10", "20", "600", "0"}, {0, 0, 12300, 8820, false}},
        {"one missing", {"", "20", "600", "800"}, {0, 0, 12300, 8820, false}},
    };
    const char *values[] = {"Startup\\MDI_Top", "Startup\\MDI_Left", "Startup\\MDI_Height",
                            "Startup\\MDI_Width"};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        TearDown();
        SetUp();
        for (int i = 0; i < 4; ++i)
            RegWrite(QString::fromLatin1(values[i]), c.stored[i]);
        ui.answer(Answer::No); // no store wanted
        ui.onModal<frmMenuDB>([](frmMenuDB &) { return false; });
        w->Form_Load();
        EXPECT_EQ(w->placement.Top, c.expected.Top);
        EXPECT_EQ(w->placement.Left, c.expected.Left);
        EXPECT_EQ(w->placement.Height, c.expected.Height);
        EXPECT_EQ(w->placement.Width, c.expected.Width);
        EXPECT_EQ(w->placement.positioned, c.expected.positioned);
    }

    // Top, left, width, height in internal units; kept only from a window
    // that was on screen in its normal state, whatever the way out.
    RegWrite(QStringLiteral("Startup\\MDI_Top"), QStringLiteral("10"));
    w->placement = {1515, 30, 12014, 9000, true, WindowState::Maximized, true};
    w->Form_QueryUnload();
    EXPECT_EQ(RegRead(QStringLiteral("Startup\\MDI_Top")), "10");
    TearDown();
    SetUp();
    w->placement = {1515, 30, 12014, 9000, true, WindowState::Normal, false};
    w->mnuFileQuit_Click();
    EXPECT_EQ(RegRead(QStringLiteral("Startup\\MDI_Top")), "10") << "never on screen";
    TearDown();
    SetUp();
    w->placement = {1515, 30, 12014, 9000, true, WindowState::Normal, true};
    w->menuClick(QStringLiteral("mnuFileQuit"));
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(RegRead(QStringLiteral("Startup\\MDI_Top")), "101");
    EXPECT_EQ(RegRead(QStringLiteral("Startup\\MDI_Width")), "800");
}

// Entries of parts that are not there yet do not look like they work; the
// calendar's view buttons need a store.
TEST_F(MainWindowTest, CommandsOfPartsNotBuiltAreDisabled) {
    const auto enabled = [this](const char *name) { return w->menu(QString::fromLatin1(name))->enabled; };
    EXPECT_FALSE(w->toolButton(QStringLiteral("btnDay"))->enabled);
    ASSERT_TRUE(startOpen());
    EXPECT_TRUE(w->toolButton(QStringLiteral("btnMonth"))->enabled);
    EXPECT_TRUE(enabled("mnuToolsPreferences"));
    for (const char *name : {"mnuEditFind", "mnuToolsBackup", "mnuToolsDbUtilitiesRestore",
                             "mnuMemoImportPalm", "mnuCalendarImportOutlook", "mnuAddressImportPalm"})
        EXPECT_FALSE(enabled(name)) << name;
    EXPECT_FALSE(w->toolButton(QStringLiteral("Find"))->enabled);

    w->showFind = [] {};
    w->DbBackup = [] { return true; };
    frmMDI::RegisterCommand(QStringLiteral("mnuMemoImportPalm"));
    w->SetDatabaseMenus(true);
    EXPECT_TRUE(enabled("mnuEditFind"));
    EXPECT_TRUE(w->toolButton(QStringLiteral("Find"))->enabled);
    EXPECT_TRUE(enabled("mnuToolsBackup"));
    EXPECT_TRUE(enabled("mnuMemoImportPalm"));
    EXPECT_FALSE(enabled("mnuCalendarImportOutlook"));

    w->mnuFileCloseDB_Click();
    EXPECT_FALSE(w->toolButton(QStringLiteral("btnWeek"))->enabled);
}

TEST_F(MainWindowTest, TheWebsiteEntryOpensTheMakersPage) {
    w->menuClick(QStringLiteral("mnuHelpWebsite"));
    EXPECT_EQ(desk.opened, QStringList({QString::fromLatin1(frmMDI::WebsiteUrl)}));
}

TEST_F(MainWindowTest, ANewStoreFromTheFileMenuIsAnnounced) {
    ASSERT_TRUE(startOpen());
    const QString next = dir.filePath(QStringLiteral("second.kmd"));
    ui.answerFile(next);
    typeNew(QString::fromLatin1(kPass));
    w->mnuFileNew_Click();
    EXPECT_TRUE(db::state().DbOpen);
    EXPECT_EQ(db::state().DatabasePath, next);
    EXPECT_EQ(ui.shown.last(), LanguageUS::MessageText(146));
    // The save dialog started in the folder of the store in use.
    ASSERT_FALSE(ui.fileDialogs.isEmpty());
    EXPECT_EQ(QDir(ui.fileDialogs.last().directory), QDir(dir.path()));
}

// Exactly one section window: the one left is unloaded, its menu hidden.
TEST_F(MainWindowTest, SectionSwitchUnloadsTheWindowItLeaves) {
    ASSERT_TRUE(startOpen());
    SectionLog todo;
    registerLogging(15, todo);
    w->GoToSection(buttonOf(15));
    EXPECT_EQ(w->CurrentSection, 15);
    EXPECT_EQ(todo.loads, 1);
    EXPECT_TRUE(w->menu("mnuTodo")->visible);
    EXPECT_EQ(w->section()->State, WindowState::Maximized);
    w->menuClick(QStringLiteral("mnuTodoDeleteAll"));
    w->menuClick(QStringLiteral("mnuCalendarView"), 3);
    EXPECT_EQ(todo.commands, (QStringList{"mnuTodoDeleteAll(-1)", "CalendarView(3)"}));
    EXPECT_TRUE(w->toolButton(10).pressed);
    EXPECT_FALSE(w->menu("mnuCalendarView", 3)->enabled);

    w->GoToSection(buttonOf(16)); // no model of its own yet
    EXPECT_EQ(todo.unloads, 1);
    EXPECT_FALSE(w->menu("mnuTodo")->visible);
    auto *placeholder = dynamic_cast<frmSectionPlaceholder *>(w->section());
    ASSERT_NE(placeholder, nullptr);
    EXPECT_EQ(placeholder->caption(), "Confidential");
    EXPECT_TRUE(w->optSection[static_cast<size_t>(buttonOf(16) - 1)].pressed);

    w->menuClick(QStringLiteral("mnuViewSection"), 0);
    EXPECT_EQ(w->CurrentSection, 0);
    EXPECT_NE(dynamic_cast<frmSplash *>(w->section()), nullptr);
    EXPECT_TRUE(w->menu("mnuEdit")->enabled);
}

TEST_F(MainWindowTest, PinOnceASessionOrAtEveryAccess) {
    ASSERT_TRUE(startOpen());
    Users::State &u = Users::state();
    u.Pin = QStringLiteral("2468");
    u.PinSections = 1 << Users::Memos;
    const int memo = buttonOf(14), address = buttonOf(11);

    for (bool everyAccess : {false, true}) {
        SCOPED_TRACE(everyAccess ? "every access" : "once a session");
        u.PinEveryAccess = everyAccess;
        u.UnlockedSections = 0;
        const int before = ui.modalsShown;
        ui.onModal<frmPW>(typing({QStringLiteral("2468")}));
        w->GoToSection(memo);
        EXPECT_EQ(w->CurrentSection, 14);
        w->GoToSection(address); // not guarded
        if (everyAccess) ui.onModal<frmPW>(typing({QStringLiteral("2468")}));
        w->GoToSection(memo);
        EXPECT_EQ(w->CurrentSection, 14);
        EXPECT_EQ(ui.modalsShown - before, everyAccess ? 2 : 1);
    }

    u.UnlockedSections = 0;
    ui.onModal<frmPW>(typing({QStringLiteral("1357")}));
    w->GoToSection(memo);
    EXPECT_EQ(w->CurrentSection, 0);
    EXPECT_NE(dynamic_cast<frmSplash *>(w->section()), nullptr);
    EXPECT_EQ(ui.shown.last(), LanguageUS::MessageText(125));
    EXPECT_EQ(u.UnlockedSections & (1 << Users::Memos), 0);
}

TEST_F(MainWindowTest, StartSectionComesUpWithTimerSplash) {
    for (int startApp : {11, 20}) {
        SCOPED_TRACE(startApp);
        TearDown();
        SetUp();
        storeIsLastUsed();
        type(QString::fromLatin1(kPass));
        ASSERT_TRUE(w->Form_Load());
        // The start options are the store's: set them as if read from it.
        Startvariables::state().StartScreen = 1;
        Startvariables::state().StartApp = static_cast<quint8>(startApp);
        w->timerSplash.setEnabled(true);
        clock.advanceSecs(2);
        w->fireDueTimers();
        EXPECT_FALSE(w->timerSplash.Enabled);
        EXPECT_EQ(w->CurrentSection, startApp == 11 ? 11 : 0);
    }
}

TEST_F(MainWindowTest, ShowLastSectionUsedComesBackToIt) {
    ASSERT_TRUE(startOpen());
    Startvariables::state().StartScreen = 2;
    w->GoToSection(buttonOf(14));
    w->GoToSection(8);
    EXPECT_EQ(Startvariables::state().StartApp, 14) << "the Startscreen is no section to come back to";
    w->timerSplash.setEnabled(true);
    clock.advanceSecs(2);
    w->fireDueTimers();
    EXPECT_EQ(w->CurrentSection, 14);
}

TEST_F(MainWindowTest, CloseDatabaseLeavesTheProgramUpWithFileAndHelp) {
    ASSERT_TRUE(startOpen());
    w->GoToSection(buttonOf(11));
    w->menuClick(QStringLiteral("mnuFileCloseDB"));
    EXPECT_FALSE(db::state().DbOpen);
    EXPECT_FALSE(CRY::KeyTableLoaded());
    EXPECT_EQ(w->CurrentSection, 0);
    auto *splash = dynamic_cast<frmSplash *>(w->section());
    ASSERT_NE(splash, nullptr);
    EXPECT_EQ(splash->txtDbName, "   No database open");
    EXPECT_TRUE(splash->txtDbPath.isEmpty());
    EXPECT_FALSE(w->optSectionEnabled);
    for (const char *name : {"mnuEdit", "mnuView", "mnuToolsPreferences", "mnuFileCloseDB"})
        EXPECT_FALSE(w->menu(QString::fromLatin1(name))->enabled) << name;
    EXPECT_EQ(ends, 0);
}

} // namespace
} // namespace km::test
