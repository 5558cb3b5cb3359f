// Find in the task list on a logged-in main window: Item and Spec of each
// kind of task, and Go To selecting a task the list did not show.
#include <gtest/gtest.h>

#include "calendar/CALENDAR.h"
#include "records/RecordsSections.h"
#include "records/frmTodo.h"
#include "shell/MainWindowTestSupport.h"
#include "shell/frmFind.h"
#include "store/Startvariables.h"
#include "store/db.h"
#include "ui/LanguageUS.h"

namespace {

using namespace km;

class TodoFindTest : public test::MainWindowFixture {
protected:
    void SetUp() override {
        MainWindowFixture::SetUp();
        ASSERT_TRUE(startOpen());
        records::RegisterSections();
    }
    void TearDown() override {
        UnregisterFindSections();
        MainWindowFixture::TearDown();
    }
    static qint64 add(const QString &text, const QDate &due = {}, const QDate &done = {}, bool isPrivate = false,
                      int category = 0) {
        TODO::Task t;
        t.Description = text;
        t.hasDue = due.isValid();
        t.due = t.hasDue ? CALENDAR::DayNumber(due) : 0;
        t.completed = done.isValid();
        t.completedDate = t.completed ? CALENDAR::DayNumber(done) : 0;
        t.Private = isPrivate;
        t.category = category;
        return TODO::SaveTask(db::Store(), t, 1);
    }
};

} // namespace

TEST_F(TodoFindTest, HitsShowTheDescriptionAndDueOrCompleted) {
    const qint64 due = add("call the NEEDLE maker", QDate(2024, 3, 10));
    const qint64 open = add("needle without a date");
    const qint64 done = add("needle bought", QDate(2024, 2, 1), QDate(2024, 2, 3));
    add("private needle", QDate(2024, 3, 10), {}, true);
    add("hay");

    FindRequest r;
    r.text = "needle";
    r.boxes[4] = true;
    QStringList got;
    for (const FindHit &h : SearchSections(db::Store(), r))
        got << QStringLiteral("%1|%2|%3|%4").arg(h.name).arg(h.id).arg(h.item, h.spec);
    const QString name = LanguageUS::MessageText(116);
    EXPECT_EQ(got, QStringList({QStringLiteral("%1|%2|call the NEEDLE maker|Due 2024-03-10").arg(name).arg(due),
                                QStringLiteral("%1|%2|needle without a date|Due").arg(name).arg(open),
                                QStringLiteral("%1|%2|needle bought|Completed").arg(name).arg(done)}));
}

TEST_F(TodoFindTest, GoToSelectsACompletedTaskOfAnotherCategory) {
    add("open needle one", QDate(2024, 3, 5));
    const qint64 id = add("done needle two", {}, QDate(2024, 2, 20), false, 3);
    frmFind f(*w);
    f.txtFind_Change("two");
    f.PinApp_Click(4, true);
    f.cmdFind_Click();
    ASSERT_EQ(f.LV.size(), 1);
    EXPECT_EQ(f.LV[0].spec, LanguageUS::MessageText(123));
    f.cmdGoto_Click();

    ASSERT_EQ(w->CurrentSection, 15);
    auto *list = dynamic_cast<frmTodo *>(w->section());
    ASSERT_NE(list, nullptr);
    ASSERT_GE(list->ListIndex, 0);
    EXPECT_EQ(list->TodoList[list->ListIndex].tag, id);
    EXPECT_TRUE(list->ShowCompleted) << "the completed task came into the list";
}
