// The task list and the diary on a display (offscreen), over models that
// write to a real store: a tick in the list reaches the row, a header click
// reorders, the diary shows one box or seven and typing reaches the model.
#include <gtest/gtest.h>

#include <QHeaderView>
#include <QCheckBox>
#include <QDateEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QToolButton>
#include <QTreeWidget>

#include "GuiSupport.h"
#include "calendar/CALENDAR.h"
#include "calendar/frmDiary.h"
#include "gui/UpDown.h"
#include "gui/calendar/frmDiary.h"
#include "gui/records/frmEditTodo.h"
#include "gui/records/frmTodo.h"
#include "records/frmTodo.h"
#include "store/Startvariables.h"
#include "support/SectionFixture.h"

namespace {

class TasksDiaryViewsTest : public km::test::SectionFixture {
protected:
    void SetUp() override {
        km::test::startGuiApp();
        SectionFixture::SetUp();
        Startvariables::state() = {};
    }
    void put(const QString &text, int priority) {
        km::TODO::Task t;
        t.Description = text;
        t.priority = priority;
        km::TODO::SaveTask(store(), t, 0);
    }
    bool completedInStore(qint64 id) {
        return km::TODO::LoadTask(store(), id).value().completed;
    }
};

} // namespace

TEST_F(TasksDiaryViewsTest, ATickInTheListCompletesTheTaskAndAHeaderReorders) {
    put("low one", 2);
    put("high one", 0);
    km::frmTodo model(context());
    model.Form_Load();
    km::gui::frmTodo view(model);
    view.sync();
    ASSERT_EQ(view.TodoList->topLevelItemCount(), 2);
    EXPECT_EQ(view.TodoList->topLevelItem(0)->text(0), "high one");
    EXPECT_TRUE(view.TodoList->isColumnHidden(km::TODO::ColSortKey));

    view.TodoList->topLevelItem(0)->setCheckState(0, Qt::Checked);
    QApplication::processEvents(); // the tick handler runs queued
    const qint64 high = model.TodoList.at(0).tag;
    EXPECT_TRUE(completedInStore(high));
    EXPECT_EQ(view.TodoList->topLevelItem(0)->checkState(0), Qt::Checked);
    EXPECT_FALSE(view.TodoList->topLevelItem(0)->text(km::TODO::ColExecDate).isEmpty());

    view.TodoList->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    QApplication::processEvents();
    EXPECT_FALSE(completedInStore(high));

    Q_EMIT view.TodoList->header()->sectionClicked(0); // "Task": the default order
    EXPECT_EQ(view.TodoList->topLevelItem(0)->text(0), "high one");
    Q_EMIT view.TodoList->header()->sectionClicked(2); // "Prty", descending
    EXPECT_EQ(view.TodoList->topLevelItem(0)->text(2), "X X X");
}

TEST_F(TasksDiaryViewsTest, TheDiaryShowsADayOrAWeekAndKeepsWhatIsTyped) {
    km::frmDiary model(context());
    model.Form_Load();
    km::gui::frmDiary view(model);
    view.resize(900, 700);
    view.show();
    view.sync();
    int shown = 0;
    for (QPlainTextEdit *box : view.txtInput)
        shown += box->isVisible() ? 1 : 0;
    EXPECT_EQ(shown, 1);

    view.diaPeriod[1]->click();
    shown = 0;
    for (int i = 0; i < 7; ++i) {
        shown += view.txtInput[static_cast<size_t>(i)]->isVisible() ? 1 : 0;
        EXPECT_EQ(view.txtMargin[static_cast<size_t>(i)]->text(), model.txtMargin.at(i));
    }
    EXPECT_EQ(shown, 7);

    const int today = model.dayIndex();
    view.txtInput[static_cast<size_t>(today)]->setPlainText("typed today");
    EXPECT_TRUE(model.recordChanged);
    view.diaMoveDay->up->click(); // a week on: the day is saved
    EXPECT_EQ(km::DIARY::ReadDay(store(), clock.dateTime().date()).text, "typed today");
    EXPECT_TRUE(view.txtInput[static_cast<size_t>(today)]->toPlainText().isEmpty());
}

TEST_F(TasksDiaryViewsTest, TheEditorsDueTickSwitchesTheDateOnAndCtrlEnterIsOK) {
    km::frmEditTodo model(ui, clock.dateTime().date());
    model.fill(km::TODO::Task());
    km::gui::frmEditTodo dialog(model);
    dialog.sync();
    EXPECT_TRUE(dialog.ctlDateDue->isHidden()); // compact: no date

    dialog.chkDateDue->click();
    EXPECT_TRUE(model.ctlDateDue.hasDate);
    EXPECT_EQ(model.ctlDateDue.value, clock.dateTime().date());
    EXPECT_FALSE(dialog.ctlDateDue->isHidden());
    EXPECT_TRUE(model.changed);

    // In the notes a plain Enter is a line end; Ctrl+Enter closes through OK.
    QTest::keyClick(dialog.ctlNote, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(model.closeRequested);
    EXPECT_TRUE(model.acceptedResult);
}
