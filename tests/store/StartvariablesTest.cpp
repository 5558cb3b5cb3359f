// The store's settings rows: the start variables and the user field names.
#include <gtest/gtest.h>

#include "store/Record_Put.h"
#include "store/Startvariables.h"
#include "support/StoreFixture.h"

using namespace Startvariables;

namespace {

class StartvariablesTest : public km::test::StoreFixture {
protected:
    void SetUp() override {
        StoreFixture::SetUp();
        state() = {};
    }
    void TearDown() override {
        state() = {};
        StoreFixture::TearDown();
    }
    std::unique_ptr<km::RowSet> rowsOf(const QString &where) {
        return store().OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE ") + where, km::Snapshot);
    }
    // Every start variable changed from its default.
    static void setAllOtherThanDefault(State &s) {
        s.IdleMinutes = 12;
        s.BudgetShow1 = 1;
        s.BudgetShow2 = 2;
        s.BudgetShow3 = 255;
        s.StartApp = 4;
        s.StartScreen = 1;
        s.TodoShowCompleted = 1;
        s.BudgetPrimary = 2;
        s.DiaryShow = 0;
        s.CatShow = 1;
        s.CalView = 3;
        s.CalSlotMinutes = 15;
        s.DayStart = 0.1 + 0.2; // not a short decimal
        s.DayEnd = 23.0 / 24.0;
        s.DayFirstShown = 1.0 / 7.0;
        s.LastCategory = {3, -1, 9998, 0, 17};
        s.ListFlags = {0, 5, -32768};
        s.ShowPrivateDefault = false;
    }
    // Every variable as text; doubles with all 17 digits, so equal texts are equal bits.
    static QStringList variables(const State &s) {
        QStringList out;
        for (int v : {int(s.IdleMinutes), int(s.BudgetShow1), int(s.BudgetShow2), int(s.BudgetShow3),
                      int(s.StartApp), int(s.StartScreen), int(s.TodoShowCompleted), int(s.BudgetPrimary),
                      int(s.DiaryShow), int(s.CatShow), int(s.CalView), int(s.CalSlotMinutes)})
            out.append(QString::number(v));
        for (double d : {s.DayStart, s.DayEnd, s.DayFirstShown})
            out.append(QString::number(d, 'g', 17));
        for (qint16 v : s.LastCategory)
            out.append(QString::number(v));
        for (qint16 v : s.ListFlags)
            out.append(QString::number(v));
        out.append(s.ShowPrivateDefault ? "True" : "False");
        return out;
    }
};

} // namespace

TEST_F(StartvariablesTest, AStoreWithoutTheRowOpensWithTheDefaultsAndKeepsThem) {
    setAllOtherThanDefault(state()); // what a previous store left in the session
    ASSERT_EQ(rowsOf("fSec=5")->RecordCount(), 0);

    LoadStartVariables();
    EXPECT_EQ(variables(state()).join(' '),
              "5 7 7 7 0 0 0 0 1 0 2 30 0.33333333333333331 0.70833333333333337 "
              "0.3125 0 0 0 0 0 -1 -1 -1 True");

    auto rows = rowsOf("fSec=5");
    ASSERT_EQ(rows->RecordCount(), 1);
    EXPECT_EQ(rows->GetColumn("fSub").toInt(), 1);
    EXPECT_EQ(rows->GetColumn("AE").toInt(), 1);
    for (const char *c : {"fT1", "fT2", "fT3"}) {
        const QByteArray noise = rows->GetColumn(c).toByteArray();
        EXPECT_TRUE(noise.size() == 8 || noise.size() == 16 || noise.size() == 24) << c;
    }

    // The next opening reads the row and adds none.
    state() = {};
    setAllOtherThanDefault(state());
    LoadStartVariables();
    EXPECT_EQ(variables(state()), variables(State{}));
    EXPECT_EQ(rowsOf("fSec=5")->RecordCount(), 1);
}

TEST_F(StartvariablesTest, EveryVariableRoundTripsExactly) {
    setAllOtherThanDefault(state());
    const State saved = state();
    SaveStartVariables();
    state() = {};
    reopen();
    LoadStartVariables();
    EXPECT_EQ(variables(state()), variables(saved));
}

TEST_F(StartvariablesTest, EachSaveEditsTheOneRowWithAFreshCipherText) {
    const qint64 row = SaveStartVariables();
    QByteArray etx, t1;
    qint64 r1 = 0;
    {
        auto rows = rowsOf("fSec=5 And fSub=1");
        etx = rows->GetColumn("fEtx").toByteArray();
        t1 = rows->GetColumn("fT1").toByteArray();
        r1 = rows->GetColumn("fR1").toLongLong();
    }
    EXPECT_EQ(SaveStartVariables(), row) << "the same variables saved again";
    auto rows = rowsOf("fSec=5 And fSub=1");
    ASSERT_EQ(rows->RecordCount(), 1);
    EXPECT_EQ(rows->GetColumn("AE").toInt(), 3);
    EXPECT_NE(rows->GetColumn("fEtx").toByteArray(), etx) << "a fresh key and vector at each save";
    EXPECT_EQ(rows->GetColumn("fT1").toByteArray(), t1) << "no new noise on an edit";
    EXPECT_EQ(rows->GetColumn("fR1").toLongLong(), r1);
}

TEST_F(StartvariablesTest, AnOlderShorterRecordLeavesTheLaterVariablesZero) {
    using namespace Record_Put;
    // A record that ends after CalSlotMinutes (field 11).
    QList<Field> layout{{0, tInteger}};
    for (int i = 1; i <= 10; ++i)
        layout.append({i, tByte});
    layout.append({11, tInteger});
    db::StandardWrite w(store(), QStringLiteral("fSec = 5 And fSub = 1"), SettingsSection);
    w.setRecord(PackRecord(layout, {9, 1, 2, 3, 4, 5, 1, 2, 0, 1, 3, 60}));
    w.setColumn("fSub", 1);
    w.Commit();

    LoadStartVariables();
    EXPECT_EQ(variables(state()).join(' '), "9 1 2 3 4 5 1 2 0 1 3 60 0 0 0 0 0 0 0 0 0 0 0 False");
    EXPECT_EQ(rowsOf("fSec=5")->RecordCount(), 1);
}

TEST_F(StartvariablesTest, UserFieldNamesDefaultPerSectionAndRoundTrip) {
    LoadUserFieldNames(11);
    EXPECT_EQ(state().UserFieldNames, (std::array<QString, 4>{"User1", "User2", "User3", "User4"}));
    ASSERT_EQ(rowsOf("fSec=9 And fSub=11")->RecordCount(), 1) << "the missing row is added at once";

    state().UserFieldNames = {"Geburtsort", "", QString::fromUtf8("Schuhgr\u00f6\u00dfe"), "Hobby"};
    SaveUserFieldNames(11);
    EXPECT_EQ(rowsOf("fSec=9 And fSub=11")->RecordCount(), 1);

    // Another section has its own row and its own defaults.
    LoadUserFieldNames(15);
    EXPECT_EQ(state().UserFieldNames[0], "User1");
    EXPECT_EQ(rowsOf("fSec=9")->RecordCount(), 2);

    state() = {};
    reopen();
    LoadUserFieldNames(11);
    EXPECT_EQ(state().UserFieldNames,
              (std::array<QString, 4>{"Geburtsort", "", QString::fromUtf8("Schuhgr\u00f6\u00dfe"), "Hobby"}));
}
