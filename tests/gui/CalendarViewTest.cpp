// The calendar window on a display (offscreen): the pointer's presses, drags
// and double-clicks in pixels reach the model as layout units and end in the
// rows the model writes.
#include <gtest/gtest.h>

#include <QCalendarWidget>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>

#include "GuiSupport.h"
#include "calendar/frmCalendar.h"
#include "gui/calendar/frmCalendar.h"
#include "store/Startvariables.h"
#include "support/SectionFixture.h"

namespace {

using namespace CALENDAR;

class CalendarViewTest : public km::test::SectionFixture {
protected:
    void SetUp() override {
        km::test::startGuiApp();
        SectionFixture::SetUp();
        Startvariables::state() = {};
        Startvariables::state().CalView = ViewDay;
        AppointmentRecord r;
        r.UserNumber = 1;
        r.ctlAppoStart = MomentOf(QDate(2024, 5, 6), 9 * 60);
        r.ctlAppoEnd = MomentOf(QDate(2024, 5, 6), 10 * 60);
        r.ctlAlarmTime = r.ctlAppoStart;
        r.ctlSubject = QStringLiteral("Meeting");
        id = WriteAppointment(0, r);
        model = std::make_unique<frmCalendar>(context());
        model->Form_Load();
        view = std::make_unique<km::gui::frmCalendar>(*model);
        view->resize(1000, 700);
        view->show();
        QApplication::processEvents();
        view->scrollToRow(16); // 8:00 at the top
    }
    void TearDown() override {
        view.reset();
        model.reset();
        SectionFixture::TearDown();
    }
    // The pixel of a point of the grid given in layout units.
    QPoint pixel(double x, double y) const {
        return QPoint(static_cast<int>(x / 15), static_cast<int>(y / 15) - view->scrollOffset());
    }
    AppointmentRecord row() { return ReadAppointment(id).value(); }

    qint64 id = 0;
    std::unique_ptr<frmCalendar> model;
    std::unique_ptr<km::gui::frmCalendar> view;
};

TEST_F(CalendarViewTest, DraggingABoxWithThePointerMovesTheAppointment) {
    ASSERT_EQ(model->boxes.size(), 1u);
    EXPECT_DOUBLE_EQ(model->visibleWidth, view->HourFrame->width() * 15.0);
    const CalendarBox b = model->boxes[0];
    const QPoint press = pixel(b.box.left + 300, b.box.top + 100);
    QTest::mousePress(view->HourFrame, Qt::LeftButton, {}, press);
    QTest::mouseMove(view->HourFrame, press + QPoint(0, 22));
    EXPECT_TRUE(model->drag.started);
    QTest::mouseMove(view->HourFrame, press + QPoint(0, 2 * 22 + 5));
    QTest::mouseRelease(view->HourFrame, Qt::LeftButton, {}, press + QPoint(0, 2 * 22 + 5));
    EXPECT_EQ(row().ctlAppoStart, MomentOf(QDate(2024, 5, 6), 10 * 60));
    EXPECT_EQ(row().ctlAppoEnd, MomentOf(QDate(2024, 5, 6), 11 * 60));

    // A press and release without moving is a click: it selects the box.
    const CalendarBox moved = model->boxes[0];
    const QPoint at = pixel(moved.box.left + 300, moved.box.top + 100);
    QTest::mouseClick(view->HourFrame, Qt::LeftButton, {}, at);
    EXPECT_EQ(model->selectedBox, 0);
    EXPECT_EQ(row().ctlAppoStart, MomentOf(QDate(2024, 5, 6), 10 * 60));
}

TEST_F(CalendarViewTest, ASubjectTypedIntoTheBoxIsWrittenOnEnterAndDroppedOnEsc) {
    model->selectedBox = 0;
    QTest::keyClick(view.get(), Qt::Key_F2);
    ASSERT_NE(view->txtBoxEdit, nullptr);
    EXPECT_EQ(view->txtBoxEdit->text(), QStringLiteral("Meeting"));
    view->txtBoxEdit->setText(QStringLiteral("Lunch with Ann"));
    QTest::keyClick(view->txtBoxEdit, Qt::Key_Return);
    EXPECT_EQ(view->txtBoxEdit, nullptr);
    EXPECT_EQ(row().ctlSubject, QStringLiteral("Lunch with Ann"));
    EXPECT_EQ(row().ctlAppoStart, MomentOf(QDate(2024, 5, 6), 9 * 60));

    model->selectedBox = 0;
    QTest::keyClick(view.get(), Qt::Key_F2);
    ASSERT_NE(view->txtBoxEdit, nullptr);
    view->txtBoxEdit->setText(QStringLiteral("Never written"));
    QTest::keyClick(view->txtBoxEdit, Qt::Key_Escape);
    QApplication::processEvents();
    EXPECT_EQ(view->txtBoxEdit, nullptr);
    EXPECT_EQ(row().ctlSubject, QStringLiteral("Lunch with Ann"));
}

TEST_F(CalendarViewTest, StretchingTheLowerEdgeLengthensByWholeSlots) {
    const CalendarBox b = model->boxes[0];
    const QPoint press = pixel(b.box.left + 300, b.box.bottom() - 45);
    QTest::mousePress(view->HourFrame, Qt::LeftButton, {}, press);
    EXPECT_EQ(model->drag.kind, frmCalendar::DragKind::Resize);
    QTest::mouseMove(view->HourFrame, press + QPoint(0, 40));
    QTest::mouseRelease(view->HourFrame, Qt::LeftButton, {}, press + QPoint(0, 3 * 22));
    EXPECT_EQ(row().ctlAppoStart, MomentOf(QDate(2024, 5, 6), 9 * 60));
    EXPECT_EQ(row().ctlAppoEnd, MomentOf(QDate(2024, 5, 6), 11 * 60 + 30));
}

TEST_F(CalendarViewTest, DoubleClickOnASlotOpensTheEditorThereAndThePickerChangesTheDay) {
    CalendarState seen;
    int opened = 0;
    model->openEditor = [&] {
        seen = model->state;
        ++opened;
    };
    QTest::mouseDClick(view->HourFrame, Qt::LeftButton, {}, pixel(HourGutter + 500, 28 * RowHeight + 10));
    ASSERT_EQ(opened, 1);
    EXPECT_TRUE(seen.gEditIsNew);
    EXPECT_EQ(seen.gEditStart, MomentOf(QDate(2024, 5, 6), 14 * 60));
    EXPECT_EQ(seen.gEditEnd, MomentOf(QDate(2024, 5, 6), 14 * 60 + 30));

    Q_EMIT view->calDate->clicked(QDate(2024, 5, 9));
    EXPECT_EQ(model->state.calDate, QDate(2024, 5, 9));
    EXPECT_TRUE(model->boxes.empty());
    view->cmdToday->click();
    EXPECT_EQ(model->state.calDate, QDate(2024, 5, 6));
    EXPECT_EQ(view->calDate->selectedDate(), QDate(2024, 5, 6));
    ASSERT_EQ(model->boxes.size(), 1u);
}

} // namespace
