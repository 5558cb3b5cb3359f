// The task list and editor through their models: the rows written (read back
// as another program would, by their plain columns and date keys), the list's
// order and marks under a fixed today, and the questions asked.
#include <gtest/gtest.h>

#include "calendar/CALENDAR.h"
#include "records/frmTodo.h"
#include "store/CRY.h"
#include "store/Record_Get.h"
#include "store/Startvariables.h"
#include "support/SectionFixture.h"
#include "ui/LanguageUS.h"

namespace {

using km::Answer;
using km::TODO::Task;

// Today is Monday 2024-05-06 (the fixture's clock).
qint64 day(int y, int m, int d) {
    return CALENDAR::DayNumber(QDate(y, m, d));
}

struct Row {
    int section = 0, g1 = 0;
    bool f1 = false, f2 = false, f3 = false;
    qint64 due = 0, completed = 0;
    int priority = -1;
    QString title;
    QStringList values;
};

class TodoTest : public km::test::SectionFixture {
protected:
    void SetUp() override {
        SectionFixture::SetUp();
        Startvariables::state() = {};
        CALENDAR::state().TasksChanged = false;
    }
    Row row(qint64 id) {
        auto rows = store().OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE fPK=%1").arg(id), km::Snapshot);
        Row r;
        if (rows->RecordCount() == 0) return r;
        r.section = rows->GetColumn("fSec").toInt();
        r.g1 = rows->GetColumn("fG1").toInt();
        r.f1 = rows->GetColumn("fF1").toInt() == -1;
        r.f2 = rows->GetColumn("fF2").toInt() == -1;
        r.f3 = rows->GetColumn("fF3").toInt() == -1;
        r.due = CALENDAR::DayFromKey(rows->GetColumn("fR3").toInt(), CALENDAR::SeriesStartKey);
        r.completed = CALENDAR::DayFromKey(rows->GetColumn("fR2").toInt(), CALENDAR::SeriesEndKey);
        r.priority = static_cast<int>(rows->GetColumn("fR1").toLongLong() / (2147483647 / 3));
        r.title = CRY::DecryptField(rows->GetColumn("fT1").toByteArray());
        Record_Get::UnpackRecord(r.values, rows->GetColumn("fEtx").toByteArray(), true);
        return r;
    }
    qint64 put(const QString &text, qint64 due = 0, int priority = 1, qint64 completed = 0, bool priv = false) {
        Task t;
        t.Description = text;
        t.hasDue = due != 0;
        t.due = due;
        t.priority = priority;
        t.completed = completed != 0;
        t.completedDate = completed;
        t.Private = priv;
        return km::TODO::SaveTask(store(), t, 0);
    }
    static QStringList texts(const km::frmTodo &w) {
        QStringList out;
        for (const km::TodoItem &i : w.TodoList)
            out << i.cells[km::TODO::ColTask];
        return out;
    }
    static QStringList column(const km::frmTodo &w, int c) {
        QStringList out;
        for (const km::TodoItem &i : w.TodoList)
            out << i.cells[static_cast<size_t>(c)];
        return out;
    }
    static QString text(int message) { return LanguageUS::MessageText(message); }
};

TEST_F(TodoTest, ARowKeepsItsFlagsPlainItsDatesAsKeysAndItsTextEncrypted) {
    Task t;
    t.Description = "Pay rent";
    t.Memo = "by transfer";
    t.priority = km::TODO::High;
    t.hasDue = true;
    t.due = day(2024, 6, 1);
    t.completed = true;
    t.completedDate = day(2024, 5, 6);
    t.category = 3;
    t.Private = true;
    const qint64 id = km::TODO::SaveTask(store(), t, 0);
    EXPECT_TRUE(CALENDAR::state().TasksChanged);
    const Row r = row(id);
    EXPECT_EQ(r.section, 15);
    EXPECT_EQ(r.g1, 3);
    EXPECT_TRUE(r.f1 && r.f2 && r.f3);
    EXPECT_EQ(r.due, t.due);
    EXPECT_EQ(r.completed, t.completedDate);
    EXPECT_EQ(r.priority, 0);
    EXPECT_EQ(r.title, "Pay rent");
    EXPECT_EQ(r.values.value(0), "Pay rent");
    EXPECT_EQ(r.values.value(1), "by transfer");
    EXPECT_EQ(r.values.value(2), "True");

    // No dates: both keys sit at the low end of their range and read back as none.
    const Row bare = row(put("Nothing"));
    EXPECT_FALSE(bare.f1 || bare.f2 || bare.f3);
    EXPECT_LE(bare.due, km::TODO::DueShownAbove);
    EXPECT_LE(bare.completed, km::TODO::CompletedShownAbove);
    EXPECT_EQ(bare.priority, 1);
    EXPECT_EQ(bare.values.value(2), "False");
}

TEST_F(TodoTest, TheListOrdersOpenOverdueDatedDatelessThenCompletedAndMarksOverdue) {
    put("dateless low", 0, 2);
    put("dateless high", 0, 0);
    put("next week", day(2024, 5, 13));
    put("today", day(2024, 5, 6));
    put("last week", day(2024, 4, 29));
    put("done late", day(2024, 4, 1), 1, day(2024, 5, 2));
    put("done early", day(2024, 7, 1), 1, day(2024, 5, 2));
    put("secret", day(2024, 5, 7), 1, 0, true);
    shell.showPrivate = false;
    km::frmTodo w(context());
    w.Form_Load();
    EXPECT_EQ(texts(w), QStringList({"last week", "today", "next week", "dateless high", "dateless low"}));
    QList<bool> overdue;
    for (const km::TodoItem &i : w.TodoList)
        overdue << i.overdue;
    EXPECT_EQ(overdue, QList<bool>({true, false, false, false, false}));
    EXPECT_EQ(column(w, km::TODO::ColPriority), QStringList({"X X", "X X", "X X", "X X X", "X"}));

    w.ShowCompleted_Click(true);
    EXPECT_EQ(Startvariables::state().TodoShowCompleted, 1);
    shell.showPrivate = true;
    w.HideShow();
    EXPECT_EQ(texts(w), QStringList({"last week", "today", "secret", "next week", "dateless high", "dateless low",
                                     "done late", "done early"}));
    EXPECT_EQ(w.TodoList.at(2).cells[km::TODO::ColPrivate], "P");
    // A completed task is never overdue, and shows its completion date.
    EXPECT_FALSE(w.TodoList.at(6).overdue);
    EXPECT_EQ(w.TodoList.at(6).completed, QDate(2024, 5, 2));
    EXPECT_FALSE(w.TodoList.at(6).cells[km::TODO::ColExecDate].isEmpty());
    EXPECT_EQ(w.TodoList.at(6).cells[km::TODO::ColSortKey], QStringLiteral("100%1").arg(day(2024, 4, 1), 6, 10, QLatin1Char('0')) + "1");
}

TEST_F(TodoTest, HeadersSortTheirColumnInTheirDirectionAndTaskMeansTheDefaultOrder) {
    put("b", day(2024, 5, 20), 2);
    put("a", 0, 0);
    put("c", day(2024, 5, 10), 1);
    km::frmTodo w(context());
    w.Form_Load();
    EXPECT_EQ(texts(w), QStringList({"c", "b", "a"}));
    w.TodoList_ColumnClick(3); // "Prty", descending: high first
    EXPECT_EQ(texts(w), QStringList({"a", "c", "b"}));
    w.TodoList_ColumnClick(1); // "Task" is the sort key
    EXPECT_EQ(texts(w), QStringList({"c", "b", "a"}));
    for (int c = 0; c < 8; ++c)
        EXPECT_EQ(km::TODO::SortsDescending(c), c == 2 || c == 3 || c == 4 || c == 6) << c;
}

TEST_F(TodoTest, ATickStaysInPlaceUntilTheNextBuildAndClearingItRebuildsAtOnce) {
    const qint64 first = put("first", day(2024, 5, 8));
    put("second", day(2024, 5, 9));
    km::frmTodo w(context());
    w.Form_Load();
    ASSERT_EQ(texts(w), QStringList({"first", "second"}));

    w.TodoList_ItemCheck(0, true);
    EXPECT_EQ(texts(w), QStringList({"first", "second"})); // not rebuilt
    EXPECT_EQ(w.ListIndex, 0);
    EXPECT_TRUE(w.TodoList.at(0).checked);
    EXPECT_FALSE(w.TodoList.at(0).cells[km::TODO::ColExecDate].isEmpty());
    Row r = row(first);
    EXPECT_TRUE(r.f3);
    EXPECT_EQ(r.completed, day(2024, 5, 6));
    EXPECT_EQ(r.due, day(2024, 5, 8));

    w.TodoList_ItemCheck(0, false);
    r = row(first);
    EXPECT_FALSE(r.f3);
    EXPECT_LE(r.completed, km::TODO::CompletedShownAbove);
    EXPECT_TRUE(w.TodoList.at(0).cells[km::TODO::ColExecDate].isEmpty());

    w.TodoList_ItemCheck(0, true);
    w.showListitems(); // completed tasks are hidden
    EXPECT_EQ(texts(w), QStringList({"second"}));
    // The menu's Completed ticks the selected one.
    w.TodoList_Click(0);
    w.mnuCompleted();
    EXPECT_TRUE(row(w.TodoList.at(0).tag).f3);
}

TEST_F(TodoTest, DeletesAskTheirQuestionsAndDeleteCompletedReachesHiddenRows) {
    put("open one");
    const qint64 done = put("done one", 0, 1, day(2024, 5, 1));
    km::frmTodo w(context());
    w.Form_Load();
    ASSERT_EQ(w.TodoList.size(), 1);

    w.ListIndex = -1;
    w.cmdDelete();
    EXPECT_EQ(ui.messagesShown().last(), text(18));

    w.TodoList_Click(0);
    w.cmdDelete(); // Cancel is the default
    EXPECT_EQ(ui.messagesShown().last(), text(29) + "\n   open one");
    EXPECT_EQ(w.TodoList.size(), 1);

    w.mnuTodoDeleteCompleted(); // Cancel
    EXPECT_EQ(row(done).section, 15);
    ui.answer(Answer::OK);
    w.mnuTodoDeleteCompleted();
    EXPECT_EQ(ui.messagesShown().last(), text(82));
    EXPECT_EQ(row(done).section, 0);
    EXPECT_EQ(w.TodoList.size(), 1);

    ui.answer(Answer::OK);
    ui.answer(Answer::Cancel);
    w.mnuTodoDeleteAll();
    EXPECT_EQ(w.TodoList.size(), 1);
    ui.answer(Answer::OK);
    ui.answer(Answer::OK);
    w.mnuTodoDeleteAll();
    EXPECT_EQ(ui.messagesShown().mid(ui.messagesShown().size() - 2), QStringList({text(80), text(81)}));
    EXPECT_TRUE(w.TodoList.isEmpty());
}

TEST_F(TodoTest, TheEditorAddsEditsAndLosesTheNoteMark) {
    km::frmTodo w(context());
    w.Form_Load();
    ui.onModal<km::frmEditTodo>([](km::frmEditTodo &e) {
        EXPECT_EQ(e.ctlPri, 1);
        EXPECT_TRUE(e.ctlDateDue.compact);
        e.ctlTask = "Call Ann";
        e.ctlNote = "about Sunday";
        e.ctlPri = 0;
        e.changed = true;
        e.cmdOK_Click();
        return true;
    });
    w.cmdAdd_Click();
    ASSERT_EQ(w.TodoList.size(), 1);
    EXPECT_EQ(w.ListIndex, 0);
    EXPECT_EQ(w.TodoList.at(0).cells[km::TODO::ColNote], "  N");
    const qint64 id = w.TodoList.at(0).tag;
    EXPECT_EQ(row(id).values.value(3), "0"); // the user's number

    ui.onModal<km::frmEditTodo>([](km::frmEditTodo &e) {
        EXPECT_EQ(e.ctlTask, "Call Ann");
        e.ctlNote.clear();
        e.changed = true;
        e.cmdOK_Click();
        return true;
    });
    w.cmdEdit();
    EXPECT_EQ(w.TodoList.at(0).tag, id);
    EXPECT_TRUE(w.TodoList.at(0).cells[km::TODO::ColNote].isEmpty());
    EXPECT_FALSE(row(id).f2);
    EXPECT_EQ(row(id).priority, 0);

    // OK without a change writes nothing.
    CALENDAR::state().TasksChanged = false;
    ui.onModal<km::frmEditTodo>([](km::frmEditTodo &e) {
        e.cmdOK_Click();
        return true;
    });
    w.cmdEdit();
    EXPECT_FALSE(CALENDAR::state().TasksChanged);
}

TEST_F(TodoTest, TheDatePickersKeepTheirRules) {
    km::frmEditTodo e(ui, QDate(2024, 5, 6));
    // Switched on from compact: today, wide.
    e.ctlDateDue.hasDate = true;
    e.ctlDateDue.value = QDate(2020, 1, 1);
    e.ctlDateDue_Change();
    EXPECT_EQ(e.ctlDateDue.value, QDate(2024, 5, 6));
    EXPECT_FALSE(e.ctlDateDue.compact);
    EXPECT_TRUE(e.changed);
    EXPECT_TRUE(ui.messagesShown().isEmpty());
    // A past date: "Date in the past!" and today.
    e.ctlDateDue.value = QDate(2024, 5, 1);
    e.ctlDateDue_Change();
    EXPECT_EQ(ui.messagesShown().last(), text(24));
    EXPECT_EQ(e.ctlDateDue.value, QDate(2024, 5, 6));
    // Today itself and later dates pass.
    e.ctlDateDue.value = QDate(2024, 5, 9);
    e.ctlDateDue_Change();
    EXPECT_EQ(ui.messagesShown().size(), 1);
    EXPECT_EQ(e.ctlDateDue.value, QDate(2024, 5, 9));

    // Completing does not move the due date; the due date is then frozen.
    e.ctlDateCompleted.hasDate = true;
    e.ctlDateCompleted.value = QDate(2024, 5, 7);
    e.ctlDateCompleted_Change();
    EXPECT_FALSE(e.ctlDateCompleted.compact);
    EXPECT_EQ(e.ctlDateDue.value, QDate(2024, 5, 9));
    e.ctlDateDue.value = QDate(2024, 6, 1);
    e.changed = false;
    e.ctlDateDue_Change();
    EXPECT_EQ(ui.messagesShown().last(), text(23));
    EXPECT_EQ(e.ctlDateDue.value, QDate(2024, 5, 7));
    EXPECT_FALSE(e.changed);

    // Cleared, the completed picker remembers today and goes compact.
    e.ctlDateCompleted.hasDate = false;
    e.ctlDateCompleted_Change();
    EXPECT_TRUE(e.ctlDateCompleted.compact);
    EXPECT_EQ(e.ctlDateCompleted.value, QDate(2024, 5, 6));
    Task t;
    e.readInto(t);
    EXPECT_FALSE(t.completed);
    EXPECT_EQ(t.completedDate, 0);
    EXPECT_TRUE(t.hasDue);
    EXPECT_EQ(t.due, day(2024, 5, 7));

    // Esc after a change asks "Discard changes?"; No keeps the editor open.
    ui.answer(Answer::No);
    e.cmdEsc_Click();
    EXPECT_EQ(ui.messagesShown().last(), text(20));
    EXPECT_FALSE(e.closeRequested);
}

TEST_F(TodoTest, TheContextMenuSetsPriorityAndDueDate) {
    const qint64 id = put("errand", day(2024, 5, 20));
    km::frmTodo w(context());
    w.Form_Load();
    w.TodoList_Click(0);
    w.mnuTodoPriority(2);
    EXPECT_EQ(row(id).priority, 2);
    EXPECT_EQ(w.TodoList.at(w.ListIndex).cells[km::TODO::ColPriority], "X");

    w.mnuTodoDueDate(false);
    EXPECT_FALSE(row(id).f1);
    EXPECT_TRUE(w.TodoList.at(w.ListIndex).cells[km::TODO::ColDue].isEmpty());

    ui.onModal<km::frmChooseDate>([](km::frmChooseDate &d) {
        EXPECT_EQ(d.value, QDate(2024, 5, 6));
        d.value = QDate(2024, 8, 1);
        d.cmdOK_Click();
        return true;
    });
    w.mnuTodoDueDate(true);
    EXPECT_TRUE(row(id).f1);
    EXPECT_EQ(row(id).due, day(2024, 8, 1));
    EXPECT_EQ(w.TodoList.at(w.ListIndex).due, QDate(2024, 8, 1));
}

} // namespace

TEST(TodoSortKey, PadsTheDueDayToSixDigitsAfterTheCompletedAndPastMarks) {
    km::TODO::Task t;
    t.priority = 2;
    const QDate today(2024, 5, 6);
    EXPECT_EQ(km::TODO::SortKey(t, today), QStringLiteral("0119999992"));
    t.hasDue = true;
    t.completed = true;
    for (const qint64 due : {qint64(0), qint64(7), qint64(45678), qint64(123456), qint64(1234567)}) {
        t.due = due;
        const QString marks = due < day(2024, 5, 6) ? QStringLiteral("10") : QStringLiteral("11");
        EXPECT_EQ(km::TODO::SortKey(t, today), marks + QStringLiteral("0%1").arg(due, 6, 10, QLatin1Char('0')) + "2")
            << due;
    }
    t.due = -5;
    EXPECT_EQ(km::TODO::SortKey(t, today), QStringLiteral("100-000052")); // the sign before the padding
}
