// The category editor: what the list shows after each command, what reaches
// the section's row, and which questions the person is asked.
#include <gtest/gtest.h>

#include "ui/LanguageUS.h"
#include "store/CATEGORIES.h"
#include "store/frmEditCategories.h"
#include "support/ScriptedDialogs.h"
#include "support/StoreFixture.h"

using km::frmEditCategories;

namespace {

constexpr int Memos = 14;

class EditCategoriesTest : public km::test::StoreFixture {
protected:
    void SetUp() override {
        StoreFixture::SetUp();
        CATEGORIES::state() = {};
        // The memos' list as the store holds it: Home (1), Work (2).
        CATEGORIES::state().CategoryNames = {"Home", "Work"};
        CATEGORIES::state().CategoryIds = {1, 2};
        CATEGORIES::SaveCategories(Memos);
        CATEGORIES::state() = {};
    }
    void TearDown() override {
        CATEGORIES::state() = {};
        StoreFixture::TearDown();
    }
    static QStringList listed(const frmEditCategories &w) {
        QStringList out;
        for (const auto &e : w.CatList.entries())
            out.append(QStringLiteral("%1=%2").arg(e.text.trimmed()).arg(e.data));
        return out;
    }
    // The list as the store holds it now, "name=id".
    static QStringList stored() {
        CATEGORIES::LoadCategories(Memos);
        QStringList out;
        for (qsizetype k = 0; k < CATEGORIES::state().CategoryNames.size(); ++k)
            out.append(QStringLiteral("%1=%2")
                           .arg(CATEGORIES::state().CategoryNames.at(k))
                           .arg(CATEGORIES::state().CategoryIds.at(k)));
        return out;
    }

    km::test::ScriptedDialogs ui;
};

} // namespace

TEST_F(EditCategoriesTest, LoadListsUnfiledFirstAndSelectsIt) {
    frmEditCategories w(Memos);
    EXPECT_EQ(w.caption(), "Edit Categories");
    EXPECT_EQ(listed(w), QStringList({"Unfiled=0", "Home=1", "Work=2"}));
    EXPECT_EQ(w.CatList.ListIndex(), 0);
    EXPECT_EQ(CATEGORIES::state().CategorySection, Memos);
}

TEST_F(EditCategoriesTest, NewTakesTheNextFreeIdAndOkSavesTheList) {
    frmEditCategories w(Memos);
    ui.answerInput(QStringLiteral("Garden"));
    ui.answerInput(QStringLiteral("  Travel "));
    ui.answerInput(std::nullopt);          // cancelled
    ui.answerInput(QStringLiteral("   ")); // nothing but blanks
    for (int i = 0; i < 4; ++i)
        w.cmdNew_Click();
    EXPECT_EQ(ui.inputsAsked.size(), 4);
    EXPECT_EQ(listed(w), QStringList({"Unfiled=0", "Home=1", "Work=2", "Garden=3", "Travel=4"}));
    EXPECT_EQ(w.CatList.Text(), " Travel") << "the new entry is selected";
    EXPECT_TRUE(ui.shown.isEmpty());
    EXPECT_EQ(stored(), QStringList({"Home=1", "Work=2"})) << "nothing is written before OK";

    frmEditCategories again(Memos);
    ui.answerInput(QStringLiteral("Garden"));
    again.cmdNew_Click();
    ui.answerInput(QStringLiteral("Travel"));
    again.cmdNew_Click();
    again.cmdOK_Click();
    EXPECT_TRUE(again.closeRequested);
    EXPECT_TRUE(again.acceptedResult);
    EXPECT_TRUE(CATEGORIES::state().ListsNeedRefresh);
    EXPECT_EQ(stored(), QStringList({"Home=1", "Work=2", "Garden=3", "Travel=4"}));
}

TEST_F(EditCategoriesTest, NewWithoutAFreeIdShowsMessage52AndAddsNothing) {
    frmEditCategories w(Memos);
    auto &s = CATEGORIES::state();
    for (int id = 3; id <= 9998; ++id) {
        s.CategoryNames.append(QStringLiteral("c%1").arg(id));
        s.CategoryIds.append(id);
    }
    const int before = w.CatList.ListCount();
    ui.answerInput(QStringLiteral("One too many"));
    w.cmdNew_Click();
    EXPECT_EQ(ui.shown, QStringList({"No free category ID number!"}));
    EXPECT_EQ(w.CatList.ListCount(), before);
}

TEST_F(EditCategoriesTest, RenameNeedsASelectionAndNeverTouchesUnfiled) {
    frmEditCategories w(Memos);

    w.CatList.setListIndex(-1);
    w.cmdRename_Click();
    EXPECT_EQ(ui.shown, QStringList({LanguageUS::MessageText(18)}));
    EXPECT_EQ(ui.shown.front(), "Select item");

    w.CatList.setListIndex(0);
    w.cmdRename_Click();
    EXPECT_TRUE(ui.inputsAsked.isEmpty()) << "Unfiled can't be renamed";

    w.CatList.setListIndex(1);
    ui.answerInput(QStringLiteral("House"));
    w.cmdRename_Click();
    ui.answerInput(QStringLiteral(""));
    w.cmdRename_Click(); // an empty answer keeps the name
    EXPECT_EQ(ui.inputsAsked.size(), 2);
    EXPECT_EQ(listed(w), QStringList({"Unfiled=0", "House=1", "Work=2"}));
    w.cmdOK_Click();
    EXPECT_EQ(stored(), QStringList({"House=1", "Work=2"}));
}

TEST_F(EditCategoriesTest, DeleteAsksWithCancelAsDefaultAndFreesTheId) {
    // An item filed under Home keeps its id whatever happens to the list.
    db::StandardWrite item(store(), 0, Memos);
    item.setColumn("fG1", 1);
    const qint64 memo = item.Commit();

    frmEditCategories w(Memos);
    w.CatList.setListIndex(0);
    w.cmdDelete_Click();
    EXPECT_TRUE(ui.shown.isEmpty()) << "Unfiled can't be deleted";

    w.CatList.setListIndex(1);
    w.cmdDelete_Click(); // no answer queued: the default button, Cancel
    EXPECT_EQ(ui.shown, QStringList({LanguageUS::MessageText(19)}));
    EXPECT_EQ(listed(w), QStringList({"Unfiled=0", "Home=1", "Work=2"}));

    ui.answer(km::Answer::OK);
    w.cmdDelete_Click();
    EXPECT_EQ(listed(w), QStringList({"Unfiled=0", "Work=2"}));

    // The freed id is the lowest free one again.
    ui.answerInput(QStringLiteral("Garden"));
    w.cmdNew_Click();
    EXPECT_EQ(listed(w), QStringList({"Unfiled=0", "Work=2", "Garden=1"}));
    w.cmdOK_Click();
    EXPECT_EQ(stored(), QStringList({"Work=2", "Garden=1"}));
    EXPECT_EQ(CATEGORIES::CategoryOfRow(memo), 1) << "no item row is rewritten";
}

TEST_F(EditCategoriesTest, DeleteRefusesTheReservedIds) {
    CATEGORIES::state().CategoryNames = {"Odd", "Stray"};
    CATEGORIES::state().CategoryIds = {255, 9999};
    CATEGORIES::SaveCategories(Memos);
    frmEditCategories w(Memos);
    for (int i = 1; i <= 2; ++i) {
        w.CatList.setListIndex(i);
        ui.answer(km::Answer::OK);
        w.cmdDelete_Click();
    }
    EXPECT_TRUE(ui.shown.isEmpty());
    EXPECT_EQ(w.CatList.ListCount(), 3);
}

TEST_F(EditCategoriesTest, EscLeavesStoreAndListsAsTheyWere) {
    frmEditCategories w(Memos);
    ui.answerInput(QStringLiteral("Garden"));
    w.cmdNew_Click();
    w.CatList.setListIndex(1);
    ui.answer(km::Answer::OK);
    w.cmdDelete_Click();
    w.cmdEsc_Click();
    EXPECT_TRUE(w.closeRequested);
    EXPECT_FALSE(w.acceptedResult);
    EXPECT_EQ(CATEGORIES::state().CategoryNames, QStringList({"Home", "Work"}));
    EXPECT_FALSE(CATEGORIES::state().ListsNeedRefresh);
    EXPECT_EQ(stored(), QStringList({"Home=1", "Work=2"}));
}

TEST_F(EditCategoriesTest, EditOpensTheWindowModallyAndSavesOnlyThroughOk) {
    ui.onModal<frmEditCategories>([&](frmEditCategories &w) {
        ui.answerInput(QStringLiteral("Garden"));
        w.cmdNew_Click();
        w.cmdOK_Click();
        return true;
    });
    EXPECT_TRUE(frmEditCategories::Edit(Memos));
    EXPECT_EQ(stored(), QStringList({"Home=1", "Work=2", "Garden=3"}));

    // A window closed some other way drops its changes.
    ui.onModal<frmEditCategories>([&](frmEditCategories &w) {
        ui.answerInput(QStringLiteral("Travel"));
        w.cmdNew_Click();
        return false;
    });
    EXPECT_FALSE(frmEditCategories::Edit(Memos));
    EXPECT_EQ(CATEGORIES::state().CategoryNames, QStringList({"Home", "Work", "Garden"}));
    EXPECT_EQ(ui.modalsShown, 2);
}
