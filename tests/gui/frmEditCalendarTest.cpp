// The appointment dialog on a display (offscreen) over its model and a real
// store: the rule frame follows the option, held buttons repeat, typed
// numbers are filtered, and OK writes the row.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStackedWidget>
#include <QTest>
#include <QToolButton>

#include "GuiSupport.h"
#include "calendar/frmEditCalendar.h"
#include "gui/calendar/frmEditCalendar.h"
#include "support/SectionFixture.h"

namespace {

// Lets events run until the condition holds, for a second at most.
template <class F> bool waitFor(F condition) {
    for (int i = 0; i < 100 && !condition(); ++i)
        QTest::qWait(10);
    return condition();
}

class AppointmentDialogTest : public km::test::SectionFixture {
protected:
    void SetUp() override {
        km::test::startGuiApp();
        SectionFixture::SetUp();
        CALENDAR::state().locale = QLocale(QStringLiteral("en_US"));
        state.calDate = QDate(2024, 5, 14); // a Tuesday
    }
    void TearDown() override {
        CALENDAR::state().locale.reset();
        SectionFixture::TearDown();
    }
    CALENDAR::CalendarState state;
};

TEST_F(AppointmentDialogTest, RuleFrameRepeatButtonsAndFilteredNumbers) {
    CALENDAR::frmEditCalendar model(context(), state);
    km::gui::frmEditCalendar dialog(model);
    dialog.sync();
    dialog.show();
    EXPECT_TRUE(waitFor([&] { return model.times.start == CALENDAR::MomentOf(state.calDate, 540); }))
        << "loaded once shown";

    EXPECT_FALSE(dialog.redoRows->isVisible());
    dialog.Redo[1]->click();
    EXPECT_EQ(model.redoKind, CALENDAR::RedoWeekly);
    EXPECT_TRUE(dialog.redoRows->isVisible());
    EXPECT_EQ(dialog.redoRows->currentIndex(), 1);
    EXPECT_TRUE(dialog.RedoWD[2]->isChecked()); // Tuesday in a week from Sunday
    dialog.RedoWD[2]->click();                   // the only tick cannot go
    EXPECT_EQ(ui.shown.value(0), "At least one weekday has to be selected!");
    EXPECT_TRUE(dialog.RedoWD[2]->isChecked());

    dialog.QQ[1]->setText("1x");
    EXPECT_EQ(dialog.QQ[1]->text(), "11");
    EXPECT_EQ(ui.shown.value(1), "Must be valid number");

    // Held: one step at once, more while the timer runs, none after the release.
    QTest::mousePress(dialog.cmdDuration[1], Qt::LeftButton);
    EXPECT_EQ(dialog.ctlNN[1]->text(), "35");
    EXPECT_TRUE(waitFor([&] { return dialog.ctlNN[1]->text() == "45"; }));
    QTest::mouseRelease(dialog.cmdDuration[1], Qt::LeftButton);
    const QString released = dialog.ctlNN[1]->text();
    QTest::qWait(3 * model.tmrDuration.Interval);
    EXPECT_EQ(dialog.ctlNN[1]->text(), released);

    dialog.ctlSubject->setText("Yoga");
    dialog.cmdOK->click();
    EXPECT_TRUE(model.closeRequested);
    EXPECT_TRUE(state.gCalendarDirty);
    const auto saved = CALENDAR::ReadAppointment(state.gEditId);
    ASSERT_TRUE(saved.has_value());
    EXPECT_EQ(saved->ctlSubject, "Yoga");
    EXPECT_EQ(CALENDAR::RuleKind(saved->ctlRedoString), CALENDAR::RedoWeekly);
    EXPECT_EQ(static_cast<quint8>(saved->ctlRedoString.at(2)), 11); // every 11 weeks
}

} // namespace
