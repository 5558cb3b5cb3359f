// Category lists: the free id, the section's row and its secrecy, and the
// selectors that the sections' windows fill from it.
#include <gtest/gtest.h>

#include <QFile>

#include "platform/CodePage1252.h"
#include "ui/LanguageUS.h"
#include "store/CATEGORIES.h"
#include "store/Record_Put.h"
#include "support/ScriptedDialogs.h"
#include "support/StoreFixture.h"

using namespace CATEGORIES;

namespace {

class CategoriesTest : public km::test::StoreFixture {
protected:
    void SetUp() override {
        StoreFixture::SetUp();
        state() = {};
    }
    void TearDown() override {
        state() = {};
        StoreFixture::TearDown();
    }
    void setList(const QStringList &names, const QList<qint32> &ids) {
        state().CategoryNames = names;
        state().CategoryIds = ids;
    }
    std::unique_ptr<km::RowSet> categoryRows(int section) {
        return store().OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE fSec=10 And fSub=%1").arg(section),
                                  km::Snapshot);
    }
    // The selector's entries as "text=data".
    static QStringList listed(const km::ListBox &box) {
        QStringList out;
        for (const auto &e : box.entries())
            out.append(QStringLiteral("%1=%2").arg(e.text).arg(e.data));
        return out;
    }

    km::test::ScriptedDialogs ui;
};

} // namespace

TEST_F(CategoriesTest, NextCategoryIdIsTheLowestFreeIdOrNoneWithMessage52) {
    QList<qint32> full;
    for (int id = 1; id <= 9998; ++id)
        full.append(id);
    struct Case {
        const char *name;
        QList<qint32> ids;
        int expected;
    };
    const QList<Case> cases = {
        {"first category of a section", {}, 1},
        {"gap in the middle", {1, 2, 4}, 3},
        {"gap at the start", {3, 2}, 1},
        {"order doesn't matter", {2, 1, 3}, 4},
        {"Unfiled in the list blocks every id", {1, 0}, 0},
        {"Edit categories in the list blocks every id", {9999}, 0},
        {"All in the list blocks every id", {-1, 2}, 0},
        {"All held unsigned blocks every id", {65535}, 0},
        {"every id taken", full, 0},
        {"the last id free", full.mid(0, 9997), 9998},
    };
    for (const auto &c : cases) {
        ui.shown.clear();
        setList(QStringList(c.ids.size(), QStringLiteral("x")), c.ids);
        EXPECT_EQ(NextCategoryId(), c.expected) << c.name;
        const QStringList expectedMessages =
            c.expected == 0 ? QStringList{LanguageUS::MessageText(52)} : QStringList{};
        EXPECT_EQ(ui.shown, expectedMessages) << c.name;
    }
    EXPECT_EQ(LanguageUS::MessageText(52), "No free category ID number!");
}

TEST_F(CategoriesTest, SaveAndLoadKeepNamesAndIdsPerSection) {
    setList({"Familie", QString::fromUtf8("M\u00fcller & S\u00f6hne"), "Kunden"}, {1, 7, 3});
    const qint64 addressRow = SaveCategories(11);
    EXPECT_GT(addressRow, 0);
    EXPECT_TRUE(state().ListsNeedRefresh);
    setList({"Einkauf"}, {2});
    SaveCategories(15);

    state() = {};
    reopen();
    LoadCategories(11);
    EXPECT_EQ(state().CategoryNames,
              QStringList({"Familie", QString::fromUtf8("M\u00fcller & S\u00f6hne"), "Kunden"}));
    EXPECT_EQ(state().CategoryIds, QList<qint32>({1, 7, 3}));
    EXPECT_EQ(state().CategorySection, 11);

    LoadCategories(15);
    EXPECT_EQ(state().CategoryNames, QStringList({"Einkauf"}));
    EXPECT_EQ(state().CategoryIds, QList<qint32>({2}));

    // A section without a row has an empty list, whatever was loaded before.
    LoadCategories(14);
    EXPECT_TRUE(state().CategoryNames.isEmpty());
    EXPECT_TRUE(state().CategoryIds.isEmpty());
    EXPECT_EQ(state().CategorySection, 14);
}

TEST_F(CategoriesTest, TheSectionsRowIsWrittenOnceWithNoiseAndEditedAfterwards) {
    setList({"A"}, {1});
    const qint64 first = SaveCategories(11);
    QByteArray t1, etx;
    {
        auto rows = categoryRows(11);
        ASSERT_EQ(rows->RecordCount(), 1);
        EXPECT_EQ(rows->GetColumn("AE").toInt(), 1);
        t1 = rows->GetColumn("fT1").toByteArray();
        etx = rows->GetColumn("fEtx").toByteArray();
        for (const char *c : {"fT1", "fT2", "fT3"}) {
            const QByteArray noise = rows->GetColumn(c).toByteArray();
            EXPECT_TRUE(noise.size() == 8 || noise.size() == 16 || noise.size() == 24) << c;
        }
    }

    setList({"A", "B"}, {1, 2});
    EXPECT_EQ(SaveCategories(11), first);
    auto rows = categoryRows(11);
    ASSERT_EQ(rows->RecordCount(), 1);
    EXPECT_EQ(rows->GetColumn("AE").toInt(), 3);
    EXPECT_EQ(rows->GetColumn("fT1").toByteArray(), t1) << "an edit draws no new noise";
    EXPECT_NE(rows->GetColumn("fEtx").toByteArray(), etx);

    // An empty list is a row with no entries.
    setList({}, {});
    SaveCategories(11);
    setList({"stale"}, {5});
    LoadCategories(11);
    EXPECT_TRUE(state().CategoryNames.isEmpty());
}

TEST_F(CategoriesTest, CategoryNamesNeverStandReadableInTheFile) {
    const QStringList words = {"Steuerberater", "Zahnarztpraxis", "Kegelverein"};
    for (int section : {11, 14, 15}) {
        setList(words, {1, 2, 3});
        SaveCategories(section);
        setList({words.at(0) + "Alt", words.at(1)}, {1, 2}); // a rewrite leaves the old payload's pages free
        SaveCategories(section);
    }
    db::state().StoreDb.reset();
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QByteArray raw = f.readAll();
    for (const QString &w : words) {
        EXPECT_EQ(raw.indexOf(km::cp1252::toBytes(w)), -1) << w.toStdString();
        EXPECT_EQ(raw.indexOf(w.toUtf8()), -1) << w.toStdString();
    }
    reopen();
}

TEST_F(CategoriesTest, SelectorEntriesFollowTheThreeOptions) {
    setList({"Home", "Work"}, {1, 2});
    SaveCategories(14);
    struct Case {
        bool all, unfiled, edit;
        QStringList entries;
    };
    const QList<Case> cases = {
        {true, true, true, {"  All=-1", "  Unfiled=0", "  Home=1", "  Work=2", "  Edit categories=9999"}},
        {false, false, false, {"Home=1", "Work=2"}},
        {true, false, false, {" All=-1", " Home=1", " Work=2"}},
        {false, true, false, {" Unfiled=0", " Home=1", " Work=2"}},
        {false, true, true, {" Unfiled=0", " Home=1", " Work=2", " Edit categories=9999"}},
    };
    for (const auto &c : cases) {
        km::ComboBox box;
        box.AddItem("left over", 77);
        box.setListIndex(0);
        FillCategorySelector(box, 14, c.all, c.unfiled, c.edit);
        const std::string label =
            QStringLiteral("%1%2%3").arg(c.all).arg(c.unfiled).arg(c.edit).toStdString();
        EXPECT_EQ(listed(box), c.entries) << label;
        EXPECT_EQ(box.Text(), box.List(0)) << label;
        EXPECT_EQ(box.ListIndex(), -1) << label;
        EXPECT_EQ(CategoryOfSelector(box), box.ItemData(0)) << "nothing selected reads the first entry";
    }
    EXPECT_EQ(LanguageUS::MessageText(66), "Unfiled");

    // A section without categories and without options leaves an empty selector.
    km::ComboBox empty;
    FillCategorySelector(empty, 16, false, false, false);
    EXPECT_EQ(empty.ListCount(), 0);
    EXPECT_EQ(empty.Text(), "");
    EXPECT_EQ(CategoryOfSelector(empty), 0);
}

TEST_F(CategoriesTest, SelectCategoryFindsTheIdOrFallsBackToTheFirstEntry) {
    setList({"Home", "Work"}, {1, 2});
    SaveCategories(15);
    km::ComboBox box;
    FillCategorySelector(box, 15, true, true, true);

    SelectCategory(box, 2);
    EXPECT_EQ(box.ListIndex(), 3);
    EXPECT_EQ(box.Text(), "  Work");
    EXPECT_EQ(CategoryOfSelector(box), 2);

    SelectCategory(box, 65535);
    EXPECT_EQ(CategoryOfSelector(box), -1) << "All held unsigned is still All";

    SelectCategory(box, 0);
    EXPECT_EQ(CategoryOfSelector(box), 0);

    SelectCategory(box, 42);
    EXPECT_EQ(box.ListIndex(), 0) << "an unknown id selects the first entry";
}

TEST_F(CategoriesTest, CategoryOfRowReadsThePlainGroupColumn) {
    db::StandardWrite w(store(), 0, 14);
    w.setColumn("fG1", 7);
    const qint64 row = w.Commit();
    EXPECT_EQ(CategoryOfRow(row), 7);
    EXPECT_EQ(CategoryOfRow(row + 100), 0);
}
