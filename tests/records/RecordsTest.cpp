// Memos and confidential data through their window models: what the person
// does, the rows that result (read back from the store as another program
// would), the questions asked and what was asked of the main window.
#include <gtest/gtest.h>

#include "records/frmClassified.h"
#include "records/frmNotepad.h"
#include "store/CATEGORIES.h"
#include "store/CONVERSION.h"
#include "store/Record_Get.h"
#include "store/Startvariables.h"
#include "store/frmEditCategories.h"
#include "support/SectionFixture.h"
#include "ui/LanguageUS.h"
#include "ui/Services.h"

namespace {

using km::Answer;

// One row of the store as it stands in the file.
struct Row {
    bool found = false;
    int section = 0;
    int g1 = 0;
    QStringList values;
};

class RecordsTest : public km::test::SectionFixture {
protected:
    Row row(qint64 id) {
        Row r;
        auto rows = store().OpenRowSet(QStringLiteral("SELECT fSec, fG1, fEtx FROM tt WHERE fPK=%1").arg(id),
                                       km::Snapshot);
        if (rows->RecordCount() == 0) return r;
        r.found = true;
        r.section = rows->GetColumn("fSec").toInt();
        r.g1 = rows->GetColumn("fG1").toInt();
        Record_Get::UnpackRecord(r.values, rows->GetColumn("fEtx").toByteArray(), true);
        return r;
    }
    int rowsOf(int section) {
        return static_cast<int>(
            store()
                .OpenRowSet(QStringLiteral("SELECT fPK FROM tt WHERE fSec=%1").arg(section), km::Snapshot)
                ->RecordCount());
    }
    void makeCategories(const QStringList &names) {
        auto &c = CATEGORIES::state();
        c.CategorySection = km::frmNotepad::Section;
        c.CategoryNames = names;
        c.CategoryIds.clear();
        for (int i = 0; i < names.size(); ++i)
            c.CategoryIds.append(i + 1);
        CATEGORIES::SaveCategories(km::frmNotepad::Section);
    }
    // The person types a subject, then fills the editor and presses OK.
    void addMemo(km::frmNotepad &w, const QString &subject, const QString &body, bool priv = false,
                 int category = -1) {
        ui.answerInput(subject);
        ui.onModal<km::frmEditNotepad>([=](km::frmEditNotepad &e) {
            e.ctlNote = body;
            e.ctlPrivate = priv;
            if (category >= 0) CATEGORIES::SelectCategory(e.ctlCategory, category);
            e.cmdOK_Click();
            return true;
        });
        w.cmdAdd_Click();
    }
    void addRecord(km::frmClassified &w, const std::array<QString, 5> &fields, bool priv = false) {
        ui.onModal<km::frmEditConfidential>([=](km::frmEditConfidential &e) {
            e.txtCtl = fields;
            e.ctlPrivate = priv;
            e.cmdOK_Click();
            return true;
        });
        w.cmdAdd_Click();
    }
    static QStringList listed(const km::ListBox &list) {
        QStringList out;
        for (int i = 0; i < list.ListCount(); ++i)
            out << list.List(i);
        return out;
    }
    static QString text(int message) { return LanguageUS::MessageText(message); }
};

QDateTime stamp(const QString &slot) {
    return CONVERSION::ParseDateText(slot);
}

} // namespace

TEST_F(RecordsTest, MemosAreWrittenInOrderAndARenameKeepsTheRowAndItsCreationDate) {
    shell.showPrivate = true;
    km::frmNotepad w(context());
    w.Form_Load();
    for (const char *s : {"Zucchini", "apples", "\u00c4rzte", "42 Street", "Bananas"})
        addMemo(w, QString::fromUtf8(s), "body");
    EXPECT_EQ(listed(w.ListSelect),
              QStringList({"42 Street", "apples", QString::fromUtf8("\u00c4rzte"), "Bananas", "Zucchini"}));
    EXPECT_EQ(ui.inputsAsked.first(), "Enter subject:");

    const int z = static_cast<int>(listed(w.ListSelect).indexOf("Zucchini"));
    const qint64 id = w.ListSelect.ItemData(z);
    const Row before = row(id);
    ASSERT_TRUE(before.found);
    EXPECT_EQ(before.section, 14);
    EXPECT_EQ(before.values.value(km::frmNotepad::Subject), "Zucchini");
    EXPECT_EQ(stamp(before.values.value(km::frmNotepad::DateCreated)), clock.dateTime());

    // A day later the memo is renamed: same row, new place, the creation date
    // as it was and a new modification date.
    clock.advanceSecs(86400);
    w.listSelect_Click(z);
    ui.onModal<km::frmEditNotepad>([](km::frmEditNotepad &e) {
        e.ctlSubject = "Avocado";
        e.cmdOK_Click();
        return true;
    });
    w.cmdEdit_Click();
    EXPECT_EQ(listed(w.ListSelect).mid(0, 4),
              QStringList({"42 Street", "apples", QString::fromUtf8("\u00c4rzte"), "Avocado"}));
    EXPECT_EQ(w.RowId, id);
    const Row after = row(id);
    EXPECT_EQ(after.values.value(km::frmNotepad::Subject), "Avocado");
    EXPECT_EQ(after.values.value(km::frmNotepad::Memo), "body");
    EXPECT_EQ(after.values.value(km::frmNotepad::DateCreated),
              before.values.value(km::frmNotepad::DateCreated));
    EXPECT_EQ(stamp(after.values.value(km::frmNotepad::DateLastModified)), clock.dateTime());
    EXPECT_EQ(rowsOf(14), 5);
}

TEST_F(RecordsTest, ANewMemoCarriesTheUserAndEmptyInputStops) {
    shell.showPrivate = true;
    km::frmNotepad w(context());
    w.Form_Load();
    addMemo(w, "Nothing inside", "");
    ASSERT_EQ(w.ListSelect.ListCount(), 1);
    EXPECT_EQ(row(w.RowId).values.value(km::frmNotepad::UserNumber), QString::number(shell.userNumber()));
    EXPECT_EQ(w.txtInput, "");
    // Filling the list is long work: busy on, then off again.
    ASSERT_GE(shell.busyCalls.size(), 2);
    EXPECT_FALSE(shell.busyNow);

    ui.answerInput(QString("   "));
    w.cmdAdd_Click();
    ui.answerInput(std::nullopt);
    w.cmdAdd_Click();
    EXPECT_EQ(ui.modalsShown, 1) << "no editor for an empty or cancelled subject";
    EXPECT_EQ(rowsOf(14), 1);
}

TEST_F(RecordsTest, DeleteAllUnderAFilterDeletesThatCategoryOnlyPrivateRowsIncluded) {
    makeCategories({"Work", "Home"});
    shell.showPrivate = true;
    km::frmNotepad w(context());
    w.Form_Load();
    addMemo(w, "Unfiled one", "", false, 0);
    addMemo(w, "Home one", "", false, 2);
    addMemo(w, "Work open", "", false, 1);
    addMemo(w, "Work secret", "", true, 1);
    ASSERT_EQ(rowsOf(14), 4);

    shell.showPrivate = false;
    CATEGORIES::SelectCategory(w.cboCategories, 1);
    w.cboCategories_Click();
    EXPECT_EQ(listed(w.ListSelect), QStringList({"Work open"})) << "the private memo is hidden";

    // Cancel at the second question deletes nothing.
    ui.answer(Answer::OK);
    w.mnuMemoDeleteAll();
    EXPECT_EQ(ui.shown.mid(ui.shown.size() - 2), QStringList({text(102), text(81)}));
    EXPECT_EQ(rowsOf(14), 4);

    ui.answer(Answer::OK);
    ui.answer(Answer::OK);
    w.mnuMemoDeleteAll();
    EXPECT_EQ(rowsOf(14), 2) << "both memos of Work went, hidden or not; the others stay";
    shell.showPrivate = true;
    CATEGORIES::SelectCategory(w.cboCategories, CATEGORIES::CategoryAll);
    w.cboCategories_Click();
    EXPECT_EQ(listed(w.ListSelect), QStringList({"Home one", "Unfiled one"}));

    ui.answer(Answer::OK);
    ui.answer(Answer::OK);
    w.mnuMemoDeleteAll();
    EXPECT_EQ(ui.shown.mid(ui.shown.size() - 2), QStringList({text(80), text(81)}));
    EXPECT_EQ(rowsOf(14), 0);
}

TEST_F(RecordsTest, DeleteAsksWithTheTitleCancelIsTheDefaultAndTheNeighbourFollows) {
    shell.showPrivate = true;
    km::frmNotepad w(context());
    w.Form_Load();
    for (const char *s : {"a", "b", "c"})
        addMemo(w, s, "x");
    w.listSelect_Click(1);
    w.cmdDelete_Click(); // no answer queued: the default, Cancel
    EXPECT_EQ(ui.shown.last(), text(27) + "   b");
    EXPECT_EQ(rowsOf(14), 3);
    ui.answer(Answer::OK);
    w.cmdDelete_Click();
    EXPECT_EQ(listed(w.ListSelect), QStringList({"a", "c"}));
    EXPECT_EQ(w.txtSubject, "c") << "the next one is selected";
    EXPECT_EQ(rowsOf(14), 2);

    ui.answer(Answer::OK);
    ui.answer(Answer::OK);
    w.mnuMemoDeleteAll();
    w.cmdDelete_Click();
    EXPECT_EQ(ui.shown.last(), text(100));
}

TEST_F(RecordsTest, LeavingAChangedMemoAsksToStoreIt) {
    shell.showPrivate = true;
    km::frmNotepad w(context());
    w.Form_Load();
    addMemo(w, "first", "one");
    addMemo(w, "second", "two");
    const qint64 first = w.ListSelect.ItemData(0);

    // Edited in the pane, then another row: "Store record?", Yes saves.
    w.listSelect_Click(0);
    w.txtInput = "one, edited";
    w.paneEdited();
    ui.answer(Answer::Yes);
    w.listSelect_Click(1);
    EXPECT_EQ(ui.shown.last(), text(26));
    EXPECT_EQ(row(first).values.value(km::frmNotepad::Memo), "one, edited");
    EXPECT_EQ(w.txtSubject, "second");

    // No drops the change.
    w.txtInput = "two, dropped";
    w.paneEdited();
    ui.answer(Answer::No);
    w.listSelect_Click(0);
    EXPECT_EQ(row(w.ListSelect.ItemData(1)).values.value(km::frmNotepad::Memo), "two");
    EXPECT_EQ(w.txtInput, "one, edited");

    // Leaving the section asks too; an unchanged memo asks nothing.
    const int asked = static_cast<int>(ui.shown.size());
    w.Form_Unload();
    EXPECT_EQ(ui.shown.size(), asked);
    w.txtSubject = "first, renamed";
    w.paneEdited();
    ui.answer(Answer::Yes);
    w.Form_Unload();
    EXPECT_EQ(row(first).values.value(km::frmNotepad::Subject), "first, renamed");
}

TEST_F(RecordsTest, AMemoSavedUnderACategoryMadeInTheEditorKeepsIt) {
    makeCategories({"Work"});
    shell.showPrivate = true;
    km::frmNotepad w(context());
    w.Form_Load();
    CATEGORIES::SelectCategory(w.cboCategories, 1);
    w.cboCategories_Click();

    ui.answerInput(QStringLiteral("Trip"));
    ui.onModal<km::frmEditNotepad>([this](km::frmEditNotepad &e) {
        // The person makes "Travel" in the category editor and picks it.
        ui.answerInput(QStringLiteral("Travel"));
        ui.onModal<km::frmEditCategories>([](km::frmEditCategories &c) {
            c.cmdNew_Click();
            c.cmdOK_Click();
            return true;
        });
        e.cmdEditCat_Click();
        e.cmdOK_Click();
        return true;
    });
    w.cmdAdd_Click();

    const qint64 id = w.RowId;
    ASSERT_NE(id, 0);
    const int travel = row(id).g1;
    EXPECT_NE(travel, 0) << "not Unfiled";
    EXPECT_NE(travel, 1) << "not the filter's Work";
    CATEGORIES::LoadCategories(14);
    EXPECT_TRUE(CATEGORIES::state().CategoryNames.contains("Travel"));
    // The filter was Work: it moves so that the new memo is the one selected.
    EXPECT_EQ(w.Filter(), std::nullopt);
    EXPECT_EQ(w.ListSelect.ItemData(w.ListSelect.ListIndex()), id);
    EXPECT_EQ(w.txtSubject, "Trip");
    // And the filter offers the new category at once.
    bool offered = false;
    for (int i = 0; i < w.cboCategories.ListCount(); ++i)
        offered |= w.cboCategories.ItemData(i) == travel;
    EXPECT_TRUE(offered);
}

TEST_F(RecordsTest, TheFilterShowsItsMemosAndComesBackWhereItWasLeft) {
    makeCategories({"Work"});
    shell.showPrivate = true;
    km::frmNotepad w(context());
    w.Form_Load();
    addMemo(w, "Unfiled one", "");
    CATEGORIES::SelectCategory(w.cboCategories, 1);
    w.cboCategories_Click();
    addMemo(w, "Filed one", "");
    EXPECT_EQ(listed(w.ListSelect), QStringList({"Filed one"}));
    EXPECT_EQ(row(w.RowId).g1, 1) << "a new memo takes the filter's category";

    km::frmNotepad again(context());
    again.Form_Load();
    EXPECT_EQ(CATEGORIES::CategoryOfSelector(again.cboCategories), 1);
    Startvariables::state().CatShow = 1; // "All"
    km::frmNotepad all(context());
    all.Form_Load();
    EXPECT_EQ(CATEGORIES::CategoryOfSelector(all.cboCategories), CATEGORIES::CategoryAll);
    EXPECT_EQ(listed(all.ListSelect), QStringList({"Filed one", "Unfiled one"}));
}

// A clipboard that counts how often the selection was emptied.
class SelectionClipboard : public km::ClipboardService {
public:
    bool hasText() const override { return false; }
    QString text() const override { return QString(); }
    void setText(const QString &, bool) override {}
    void clear() override {}
    void clearSelection() override { ++clears; }
    int clears = 0;
};

// Leaving an editor in any way empties the selection (what was selected in
// it must not stay to be pasted elsewhere); staying open does not.
TEST_F(RecordsTest, EditorsAskBeforeDiscardingTypedTextAndEmptyTheSelectionWhenTheyClose) {
    SelectionClipboard selection;
    km::setClipboard(&selection);
    km::frmEditNotepad memo(ui);
    km::frmEditConfidential data(ui);
    km::frmEditText longText(ui);
    for (km::RecordEditor *e :
         {static_cast<km::RecordEditor *>(&memo), static_cast<km::RecordEditor *>(&data),
          static_cast<km::RecordEditor *>(&longText)}) {
        ui.shown.clear();
        e->changed = false;
        e->closeRequested = false;
        e->cmdEsc_Click();
        EXPECT_TRUE(e->closeRequested) << "nothing typed: Esc closes without a question";
        EXPECT_TRUE(ui.shown.isEmpty());

        e->closeRequested = false;
        e->changed = true;
        e->cmdEsc_Click(); // the default, No
        EXPECT_EQ(ui.shown, QStringList({text(20)}));
        EXPECT_FALSE(e->closeRequested);
        ui.answer(Answer::Yes);
        e->cmdEsc_Click();
        EXPECT_TRUE(e->closeRequested);
        EXPECT_FALSE(e->acceptedResult);
        EXPECT_EQ(selection.clears, 2);

        e->cmdOK_Click();
        EXPECT_TRUE(e->acceptedResult);
        EXPECT_EQ(selection.clears, 3);
        selection.clears = 0;
    }
    km::setClipboard(nullptr);
}

TEST(ConfidentialKinds, MaskingFollowsTheLabels) {
    EXPECT_TRUE(km::MasksField("Password/PIN"));
    EXPECT_TRUE(km::MasksField("ATM/PIN Code"));
    EXPECT_TRUE(km::MasksField("PIN Code"));
    EXPECT_FALSE(km::MasksField("Software Key"));
    EXPECT_EQ(km::KindOf(5)->labels.at(4), "Account Number ");
    EXPECT_EQ(km::KindOf(0), nullptr);
}

TEST_F(RecordsTest, ConfidentialRecordsByKindWithMaskedFields) {
    shell.showPrivate = true;
    km::frmClassified w(context());
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

    addRecord(w, {"Mail host", "https://x.example", "me", "s3cret", ""});
    addRecord(w, {"Bank portal", "", "", "", ""}, true);
    EXPECT_EQ(listed(w.listSelect), QStringList({"Bank portal", "Mail host"}));
    const Row r = row(w.listSelect.ItemData(1));
    EXPECT_EQ(r.section, 16);
    EXPECT_EQ(r.g1, 1);
    EXPECT_EQ(r.values.value(km::frmClassified::n3), "s3cret");
    EXPECT_EQ(r.values.value(km::frmClassified::UserName), QString::number(shell.userNumber()));

    w.cat_Click(6);
    EXPECT_EQ(w.listSelect.ListCount(), 0) << "another kind lists its own records";
    shell.showPrivate = false;
    w.cat_Click(1);
    EXPECT_EQ(listed(w.listSelect), QStringList({"Mail host"})) << "the private one stays hidden";

    ui.onModal<km::frmEditConfidential>([](km::frmEditConfidential &e) {
        e.txtCtl[0].clear();
        e.cmdOK_Click();
        return true;
    });
    w.cmdAdd_Click();
    EXPECT_EQ(rowsOf(16), 2) << "without a name there is nothing to store";

    // Delete asks message 79 with the name; without a selection nothing happens.
    ui.answer(Answer::OK);
    w.cmdDelete_Click();
    EXPECT_EQ(ui.shown.last(), text(79) + "   Mail host");
    EXPECT_EQ(rowsOf(16), 1);
    const int asked = static_cast<int>(ui.shown.size());
    w.cmdDelete_Click();
    EXPECT_EQ(ui.shown.size(), asked);
}

TEST_F(RecordsTest, ChangingTheKindAsksToStoreAChangedRecord) {
    shell.showPrivate = true;
    km::frmClassified w(context());
    w.cat_Click(1);
    addRecord(w, {"Shop", "", "", "old", ""});
    w.txtCtl[3] = "new";
    w.paneEdited();
    ui.answer(Answer::Yes);
    w.cat_Click(2);
    EXPECT_EQ(ui.shown.last(), text(26));
    w.cat_Click(1);
    EXPECT_EQ(row(w.RowId).values.value(km::frmClassified::n3), "new");
}

TEST_F(RecordsTest, ACopiedFieldGoesThroughTheProgramsCopy) {
    shell.showPrivate = true;
    km::frmClassified w(context());
    w.cat_Click(1);
    addRecord(w, {"Site", "", "", "pa55word", ""});
    w.CopyField(3);
    EXPECT_EQ(shell.copied, QStringList({"pa55word"}));
    EXPECT_EQ(shell.wipesArmed, 1) << "a copied field is under the wipe";
    w.CopyField(2); // an empty field copies nothing
    EXPECT_EQ(shell.copied.size(), 1);
}
