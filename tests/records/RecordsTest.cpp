// Memos and confidential data through their window models: what the person
// does, the rows that result, the lists in the sort index's order.
#include <gtest/gtest.h>

#include "records/frmClassified.h"
#include "records/frmNotepad.h"
#include "ui/LanguageUS.h"
#include "ui/Services.h"
#include "shell/SessionGuards.h"
#include "store/CATEGORIES.h"
#include "store/Record_Get.h"
#include "store/Startvariables.h"
#include "support/ScriptedDialogs.h"
#include "support/StoreFixture.h"

namespace {

class MemoTest : public km::test::StoreFixture {
protected:
    void SetUp() override {
        StoreFixture::SetUp();
        SessionGuards::state().ShowPrivate = true;
        CATEGORIES::state() = {};
    }
    // The person types a subject, then fills the editor and presses OK.
    void addMemo(km::frmNotepad &w, const QString &subject, const QString &body, bool priv = false) {
        ui.answerInput(subject);
        ui.onModal<km::frmEditNotepad>([=](km::frmEditNotepad &e) {
            e.ctlNote = body;
            e.ctlPrivate = priv;
            e.cmdOK_Click();
            return true;
        });
        w.cmdAdd_Click();
    }
    QStringList listed(const km::ListBox &list) {
        QStringList out;
        for (int i = 0; i < list.ListCount(); ++i)
            out << list.List(i);
        return out;
    }
    km::test::ScriptedDialogs ui;
};

} // namespace

TEST_F(MemoTest, MemosAreAddedListedInOrderRenamedAndKeepTheirRow) {
    km::frmNotepad w;
    w.Form_Load();
    for (const char *s : {"Zucchini", "apples", "\u00c4rzte", "42 Street", "Bananas"})
        addMemo(w, QString::fromUtf8(s), "body");
    EXPECT_EQ(listed(w.ListSelect),
              QStringList({"42 Street", "apples", QString::fromUtf8("\u00c4rzte"), "Bananas", "Zucchini"}));
    EXPECT_EQ(ui.inputsAsked.first(), "Enter subject:");

    // Rename "Zucchini" to "Avocado": same row, new place.
    const int z = static_cast<int>(listed(w.ListSelect).indexOf("Zucchini"));
    const int id = w.ListSelect.ItemData(z);
    w.listSelect_Click(z);
    ui.onModal<km::frmEditNotepad>([](km::frmEditNotepad &e) {
        e.ctlSubject = "Avocado";
        e.cmdOK_Click();
        return true;
    });
    w.cmdEdit_Click();
    EXPECT_EQ(listed(w.ListSelect).mid(0, 3),
              QStringList({"42 Street", "apples", QString::fromUtf8("\u00c4rzte")}));
    EXPECT_EQ(w.ListSelect.ItemData(static_cast<int>(listed(w.ListSelect).indexOf("Avocado"))), id);
    EXPECT_EQ(w.txtSubject, "Avocado");
    EXPECT_EQ(w.txtInput, "body");
}

TEST_F(MemoTest, AnEmptyBodySavesAndAnEmptySubjectStops) {
    km::frmNotepad w;
    w.Form_Load();
    addMemo(w, "Nothing inside", "");
    ASSERT_EQ(w.ListSelect.ListCount(), 1);
    EXPECT_EQ(w.txtInput, "");
    ui.answerInput(QString("   "));
    w.cmdAdd_Click();
    EXPECT_EQ(w.ListSelect.ListCount(), 1);
    EXPECT_EQ(ui.modalsShown, 1) << "no editor for an empty subject";
}

TEST_F(MemoTest, PrivateMemosHideButDeleteAllRemovesThem) {
    km::frmNotepad w;
    w.Form_Load();
    addMemo(w, "Open", "a");
    addMemo(w, "Secret", "b", true);
    SessionGuards::state().ShowPrivate = false;
    w.HideShow();
    EXPECT_EQ(listed(w.ListSelect), QStringList({"Open"}));

    CATEGORIES::SelectCategory(w.cboCategories, CATEGORIES::CategoryAll);
    ui.answer(km::Answer::OK);
    ui.answer(km::Answer::OK);
    w.mnuMemoDeleteAll();
    EXPECT_EQ(ui.shown.mid(ui.shown.size() - 2),
              QStringList({LanguageUS::MessageText(80), LanguageUS::MessageText(81)}));
    auto rows = store().OpenRowSet("SELECT fPK FROM tt WHERE fSec=14", km::Snapshot);
    EXPECT_EQ(rows->RecordCount(), 0);
}

TEST_F(MemoTest, DeleteAsksWithTheSubjectAndCancelIsTheDefault) {
    km::frmNotepad w;
    w.Form_Load();
    addMemo(w, "Keep me", "x");
    w.cmdDelete_Click(); // no answer queued: the default, Cancel
    EXPECT_EQ(ui.shown.last(), LanguageUS::MessageText(27) + "   Keep me");
    EXPECT_EQ(w.ListSelect.ListCount(), 1);
    ui.answer(km::Answer::OK);
    w.cmdDelete_Click();
    EXPECT_EQ(w.ListSelect.ListCount(), 0);
    w.cmdDelete_Click();
    EXPECT_EQ(ui.shown.last(), LanguageUS::MessageText(100));
}

TEST_F(MemoTest, TheCategoryFilterShowsItsMemosOnly) {
    CATEGORIES::state().CategorySection = 14;
    CATEGORIES::state().CategoryNames = {"Work"};
    CATEGORIES::state().CategoryIds = {1};
    CATEGORIES::SaveCategories(14);
    km::frmNotepad w;
    w.Form_Load();
    addMemo(w, "Unfiled one", "");
    CATEGORIES::SelectCategory(w.cboCategories, 1);
    w.cboCategories_Click();
    addMemo(w, "Filed one", "");
    EXPECT_EQ(listed(w.ListSelect), QStringList({"Filed one"}));
    EXPECT_EQ(Startvariables::state().LastCategory[2], w.cboCategories.ListIndex());
    km::frmNotepad again;
    again.Form_Load();
    EXPECT_EQ(CATEGORIES::CategoryOfSelector(again.cboCategories), 1)
        << "the filter comes back where it was left";
    Startvariables::state().CatShow = 1; // "All"
    km::frmNotepad all;
    all.Form_Load();
    EXPECT_EQ(CATEGORIES::CategoryOfSelector(all.cboCategories), CATEGORIES::CategoryAll);
    CATEGORIES::SelectCategory(w.cboCategories, CATEGORIES::CategoryAll);
    w.cboCategories_Click();
    EXPECT_EQ(listed(w.ListSelect), QStringList({"Filed one", "Unfiled one"}));
}

TEST(ConfidentialKinds, MaskingFollowsTheLabels) {
    EXPECT_TRUE(km::MasksField("Password/PIN"));
    EXPECT_TRUE(km::MasksField("ATM/PIN Code"));
    EXPECT_TRUE(km::MasksField("PIN Code"));
    EXPECT_FALSE(km::MasksField("Software Key"));
    EXPECT_EQ(km::KindOf(5)->labels.at(4), "Account Number ");
    EXPECT_EQ(km::KindOf(2)->labels.size(), 5);
    EXPECT_EQ(km::KindOf(0), nullptr);
}

TEST_F(MemoTest, ConfidentialRecordsByKindWithMaskedFields) {
    km::frmClassified w;
    w.cat_Click(2);
    EXPECT_TRUE(w.visible[4]);
    EXPECT_TRUE(w.masked[3]);
    w.cat_Click(1);
    EXPECT_FALSE(w.visible[4]) << "kind 1 has four fields";
    w.chkPlainPW = true;
    w.chkPlainPW_Click();
    EXPECT_FALSE(w.masked[3]);
    w.chkPlainPW = false;
    w.chkPlainPW_Click();
    EXPECT_TRUE(w.masked[3]);

    for (const char *name : {"Mail host", "Bank portal"}) {
        ui.onModal<km::frmEditConfidential>([=](km::frmEditConfidential &e) {
            e.txtCtl = {name, "https://x.example", "me", "s3cret", ""};
            e.cmdOK_Click();
            return true;
        });
        w.cmdAdd_Click();
    }
    ASSERT_EQ(w.listSelect.ListCount(), 2);
    EXPECT_EQ(w.listSelect.List(0), "Bank portal");
    w.cat_Click(6);
    EXPECT_EQ(w.listSelect.ListCount(), 0) << "another kind lists its own records";

    ui.onModal<km::frmEditConfidential>([](km::frmEditConfidential &e) {
        e.txtCtl[0].clear();
        e.cmdOK_Click();
        return true;
    });
    w.cmdAdd_Click();
    EXPECT_EQ(w.listSelect.ListCount(), 0) << "without a name there is nothing to store";
}

TEST_F(MemoTest, CopyingAFieldPutsItUnderTheWipe) {
    km::frmClassified w;
    w.cat_Click(1);
    ui.onModal<km::frmEditConfidential>([](km::frmEditConfidential &e) {
        e.txtCtl = {"Site", "", "", "pa55word", ""};
        e.cmdOK_Click();
        return true;
    });
    w.cmdAdd_Click();
    w.CopyField(3);
    EXPECT_EQ(km::clipboard().text(), "pa55word");
    SessionGuards::WipeClipboard();
    EXPECT_FALSE(km::clipboard().hasText());
}
