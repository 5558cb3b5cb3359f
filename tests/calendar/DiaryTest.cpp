// The diary through its model: days written and found again by their date
// keys, the week from the system's first day, and nothing typed lost when the
// date, the mode or the window changes.
#include <gtest/gtest.h>

#include "calendar/frmDiary.h"
#include "store/CRY.h"
#include "store/Record_Get.h"
#include "store/Startvariables.h"
#include "calendar/CalendarTestSupport.h"
#include "support/SectionFixture.h"

namespace {

using km::test::D;

class DiaryTest : public km::test::SectionFixture {
protected:
    void SetUp() override {
        SectionFixture::SetUp();
        Startvariables::state() = {};
    }
    // The texts of the diary rows whose fR2 lies in the day's key bucket, as
    // another reader of the file would find them.
    QStringList rowsOfDay(const QDate &date) {
        const CALENDAR::DateKeyValue k = CALENDAR::DateKey(date, CALENDAR::DayKey);
        auto rows = store().OpenRowSet(
            QStringLiteral("SELECT fEtx, fT1 FROM tt WHERE fSec=13 And fR2 >= %1 And fR2 <= %2").arg(k.low).arg(k.high),
            km::Snapshot);
        QStringList out;
        for (; !rows->Eof(); rows->MoveNext()) {
            QStringList values;
            Record_Get::UnpackRecord(values, rows->GetColumn("fEtx").toByteArray(), true);
            EXPECT_EQ(QDateTime::fromString(values.value(1), "yyyy-MM-dd HH:mm:ss").date(), date);
            EXPECT_EQ(CALENDAR::StartOfField(rows->GetColumn("fT1").toByteArray()), CALENDAR::MomentOf(date));
            out << values.value(0);
        }
        return out;
    }
    int diaryRows() {
        return static_cast<int>(
            store().OpenRowSet(QStringLiteral("SELECT fPK FROM tt WHERE fSec=13"), km::Snapshot)->RecordCount());
    }
};

TEST_F(DiaryTest, AWeekTypedIsKeptAcrossDateChangesAndTheClose) {
    km::test::WeekLocale week("de_DE"); // weeks start on Monday
    Startvariables::state().DiaryShow = 0;
    {
        km::frmDiary w(context());
        w.Form_Load();
        ASSERT_EQ(w.diaPeriod, km::frmDiary::WeekMode);
        EXPECT_EQ(w.txtInput[0].date, D("2024-05-06")); // Monday, today
        EXPECT_EQ(w.boxesShown().size(), 7);
        EXPECT_EQ(w.txtMargin.at(6), QLocale(QLocale::English).toString(D("2024-05-12"), QLocale::LongFormat));
        for (int i = 0; i < 7; ++i)
            w.txtInput_Change(i, QStringLiteral("day %1").arg(i));
        EXPECT_TRUE(w.recordChanged);
        w.diaMoveDay(true); // a week on: the typed week is saved first
        EXPECT_FALSE(w.recordChanged);
        EXPECT_EQ(w.txtInput[0].date, D("2024-05-13"));
        EXPECT_EQ(w.txtInput[0].tag, -1);
        EXPECT_EQ(rowsOfDay(D("2024-05-12")), QStringList({"day 6"}));

        w.txtMargin_Click(2); // Wednesday of the new week, no row
        EXPECT_EQ(w.calDate, D("2024-05-15"));
        w.txtInput_Change(2, "next week");
        w.diaMoveDay(false);
        EXPECT_EQ(w.txtInput[0].text, "day 0");
        EXPECT_GT(w.txtInput[0].tag, 0);
        w.txtInput_Change(3, "changed");
        w.Form_Unload(); // the close saves
    }
    EXPECT_EQ(rowsOfDay(D("2024-05-15")), QStringList({"next week"}));
    EXPECT_EQ(rowsOfDay(D("2024-05-09")), QStringList({"changed"}));
    EXPECT_EQ(diaryRows(), 8);
}

TEST_F(DiaryTest, DayModeShowsTheChosenDayAndAnEmptiedDayKeepsItsRow) {
    km::test::WeekLocale week("en_US"); // weeks start on Sunday
    km::frmDiary w(context());
    w.Form_Load();
    ASSERT_EQ(w.diaPeriod, km::frmDiary::DayMode);
    EXPECT_EQ(w.txtInput[0].date, D("2024-05-05"));
    EXPECT_EQ(w.boxesShown(), QList<int>({1}));
    w.txtInput_Change(1, "Monday's note");
    w.diaMoveDay(true); // one day on
    EXPECT_EQ(w.calDate, D("2024-05-07"));
    EXPECT_EQ(w.boxesShown(), QList<int>({2}));
    EXPECT_EQ(km::DIARY::ReadDay(store(), D("2024-05-06")).text, "Monday's note");

    w.calDate_Click(D("2024-05-06"));
    EXPECT_EQ(w.txtInput[1].text, "Monday's note");
    w.txtInput_Change(1, "");
    w.diaPeriod_Click(km::frmDiary::WeekMode); // a change of mode saves too
    EXPECT_EQ(rowsOfDay(D("2024-05-06")), QStringList({""}));
    EXPECT_EQ(diaryRows(), 1);
    // A day seen but never typed in gets no row.
    w.Form_Unload();
    EXPECT_EQ(diaryRows(), 1);
}

} // namespace
