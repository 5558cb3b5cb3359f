// The address book through its window model and editor: rows read back from
// the store as another program would, the list's order and private rule, the
// File as candidates, the pane's text and the tab-delimited export.
#include <gtest/gtest.h>

#include "address/frmAddress.h"
#include "store/CATEGORIES.h"
#include "store/CRY.h"
#include "store/Record_Get.h"
#include "support/SectionFixture.h"
#include "store/db.h"
#include "ui/LanguageUS.h"

namespace {

using km::Answer;
using km::frmAddress;
using km::frmEditAddress;
namespace A = km::Address;

struct RawRow {
    bool found = false;
    QString t1, t2;
    QByteArray t3;
    qint64 r1 = 0, r2 = 0, ae = 0;
    QVariant r5;
    int g1 = 0;
    QStringList values;
    QByteArray clear;
};

class AddressTest : public km::test::SectionFixture {
protected:
    RawRow raw(qint64 id) {
        RawRow r;
        auto rows = store().OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE fPK=%1").arg(id), km::Snapshot);
        if (rows->RecordCount() == 0) return r;
        r.found = true;
        r.t1 = CRY::DecryptField(rows->GetColumn("fT1").toByteArray());
        r.t2 = CRY::DecryptField(rows->GetColumn("fT2").toByteArray());
        r.t3 = rows->GetColumn("fT3").toByteArray();
        r.r1 = rows->GetColumn("fR1").toLongLong();
        r.r2 = rows->GetColumn("fR2").toLongLong();
        r.ae = rows->GetColumn("AE").toLongLong();
        r.r5 = rows->GetColumn("fR5");
        r.g1 = rows->GetColumn("fG1").toInt();
        r.clear = km::toQByteArray(CRY::DecryptFieldBytes(rows->GetColumn("fEtx").toByteArray()));
        Record_Get::UnpackRecord(r.values, km::toSecureBytes(r.clear));
        return r;
    }
    // The person fills the editor through fill and presses OK.
    void add(frmAddress &w, std::function<void(frmEditAddress &)> fill) {
        ui.onModal<frmEditAddress>([fill](frmEditAddress &e) {
            fill(e);
            e.cmdOK_Click();
            return true;
        });
        w.cmdAdd_Click();
    }
    void addPerson(frmAddress &w, const QString &first, const QString &last, const QString &phone = {},
                   bool priv = false) {
        add(w, [=](frmEditAddress &e) {
            e.ctl[A::FirstName] = first;
            e.ctl[A::LastName] = last;
            e.ctl[A::Com1] = phone;
            e.ctlPrivate = priv;
        });
    }
    void edit(frmAddress &w, std::function<void(frmEditAddress &)> fill) {
        ui.onModal<frmEditAddress>([fill](frmEditAddress &e) {
            fill(e);
            e.cmdOK_Click();
            return true;
        });
        w.cmdEdit_Click();
    }
    static QStringList listed(const frmAddress &w) {
        QStringList out;
        for (int i = 0; i < w.ListSelect.ListCount(); ++i)
            out << w.ListSelect.List(i) + "|" + w.contacts.value(i);
        return out;
    }
    static QString text(int message) { return LanguageUS::MessageText(message); }
};

} // namespace

TEST_F(AddressTest, SaveWritesTheRowShapeAndTheListSortsByFileAsAndContact) {
    frmAddress w(context());
    w.Form_Load();
    addPerson(w, "Zoe", "Young", "555-1");
    addPerson(w, "Anna", "Smith", "555-2");
    // The same name again: the sort index compares a new text with the File
    // as of the rows there, so it goes after its namesake.
    addPerson(w, "Anna", "Smith", "");
    add(w, [](frmEditAddress &e) {
        e.ctl[A::CompanyName] = "Acme";
        e.ctl[A::HomeAddressStreet + A::City] = "Springfield";
        e.ctl[A::Com3] = "0170 1234";
        e.ctlComDisplay = "2";
    });
    EXPECT_EQ(listed(w), QStringList({"Acme|0170 1234 (M)", "Smith, Anna|555-2 (W)", "Smith, Anna|",
                                      "Young, Zoe|555-1 (W)"}));

    const RawRow acme = raw(w.RowId);
    ASSERT_TRUE(acme.found);
    EXPECT_EQ(acme.t1, "Acme");
    EXPECT_EQ(acme.t2, "0170 1234 (M)");
    EXPECT_EQ(acme.ae, 1);
    EXPECT_EQ(acme.r5, QVariant(0));
    EXPECT_FALSE(A::MarkerIsPrivate(acme.t3));
    EXPECT_GE(acme.t3.size(), 11);
    EXPECT_LE(acme.t3.size(), 25);
    EXPECT_EQ(acme.values.value(A::UserNumber), QString::number(shell.userNumber()));
    EXPECT_EQ(acme.values.value(A::Private), "False");
    EXPECT_EQ(acme.values.value(A::ComDisplay), "2");
    // Only fields with a value are packed: labels of empty slots go.
    EXPECT_EQ(acme.values.value(A::ComLabel3), "8");
    EXPECT_EQ(acme.values.value(A::ComLabel1), "");
    EXPECT_FALSE(Record_Get::ReadPackedField(acme.clear, A::ComLabel1).has_value());
    EXPECT_FALSE(Record_Get::ReadPackedField(acme.clear, A::FirstName).has_value());

    // An address of nine empty slots: empty contact line and ComDisplay.
    const qint64 bare = w.ListSelect.ItemData(2);
    EXPECT_EQ(raw(bare).t2, "");
    EXPECT_FALSE(Record_Get::ReadPackedField(raw(bare).clear, A::ComDisplay).has_value());
}

TEST_F(AddressTest, AnEditOfNotesKeepsTheListColumnsAndAMovedContactFallsBack) {
    frmAddress w(context());
    w.Form_Load();
    add(w, [](frmEditAddress &e) {
        e.ctl[A::LastName] = "Miller";
        e.ctl[A::Com1] = "111";
        e.ctl[A::Com2] = "222";
        e.ctl[A::Com6] = "m@x.org";
        e.ctlComDisplay = "1";
    });
    const qint64 id = w.RowId;
    const RawRow before = raw(id);
    EXPECT_EQ(before.t2, "222 (H)");

    edit(w, [](frmEditAddress &e) { e.ctl[A::Notes] = "met at the fair"; });
    const RawRow notes = raw(id);
    EXPECT_EQ(notes.values.value(A::Notes), "met at the fair");
    EXPECT_EQ(notes.ae, 3);
    EXPECT_EQ(std::tuple(notes.r1, notes.r2), std::tuple(before.r1, before.r2));
    EXPECT_EQ(notes.t1, before.t1);
    {
        auto rows = store().OpenRowSet(QStringLiteral("SELECT fT1, fT2 FROM tt WHERE fPK=%1").arg(id), km::Snapshot);
        auto again = store().OpenRowSet(QStringLiteral("SELECT fT1 FROM tt WHERE fPK=%1").arg(id), km::Snapshot);
        EXPECT_EQ(rows->GetColumn("fT1").toByteArray(), again->GetColumn("fT1").toByteArray());
    }

    // The preferred slot emptied: the first one left, with its own suffix;
    // an email slot shows no suffix.
    edit(w, [](frmEditAddress &e) {
        e.ctl[A::Com2].clear();
        e.ctl[A::Com1].clear();
    });
    EXPECT_EQ(raw(id).t2, "m@x.org");
    EXPECT_EQ(raw(id).values.value(A::ComDisplay), "5");
    EXPECT_EQ(w.contacts, QStringList({"m@x.org"}));
}

TEST_F(AddressTest, PrivateRowsAreHiddenByTheMarkerWithoutOpeningThePayload) {
    frmAddress w(context());
    w.Form_Load();
    addPerson(w, "Open", "Alpha");
    addPerson(w, "Secret", "Beta", "", true);
    EXPECT_TRUE(A::MarkerIsPrivate(raw(w.RowId).t3));
    // The payloads are spoiled: the list must not need them.
    store().Execute("UPDATE tt SET fEtx = NULL WHERE fSec=11");
    shell.showPrivate = false;
    w.HideShow();
    EXPECT_EQ(listed(w), QStringList({"Alpha, Open|"}));
    shell.showPrivate = true;
    w.HideShow();
    EXPECT_EQ(listed(w), QStringList({"Alpha, Open|", "Beta, Secret|"}));
}

TEST_F(AddressTest, ANewEntryCarriesTheControlLessFieldsOfTheLastRecord) {
    frmAddress w(context());
    w.Form_Load();
    addPerson(w, "Imported", "Person");
    // As an import would have filled them.
    w.record[A::MiddleName] = "Q.";
    w.record[A::Department] = "Sales";
    w.SaveRecord();
    addPerson(w, "Fresh", "Entry");
    const RawRow r = raw(w.RowId);
    EXPECT_EQ(r.values.value(A::FirstName), "Fresh");
    EXPECT_EQ(r.values.value(A::MiddleName), "Q.");
    EXPECT_EQ(r.values.value(A::Department), "Sales");
}

TEST_F(AddressTest, ARowOfAnotherSectionIsNotOverwritten) {
    frmAddress w(context());
    w.Form_Load();
    db::StandardWrite memo(store(), 0, 14);
    const qint64 memoId = memo.Commit();
    w.record[A::LastName] = "X";
    w.fileAs = "X";
    w.RowId = memoId;
    EXPECT_EQ(w.SaveRecord(), 0);
    EXPECT_EQ(ui.shown.last(), text(16));
    EXPECT_EQ(raw(memoId).t1, "");
}

TEST_F(AddressTest, CategoryFilterFollowsTheSavedAddressAndDeleteAsksWithTheName) {
    auto &c = CATEGORIES::state();
    c.CategoryNames = {"Friends", "Work"};
    c.CategoryIds = {1, 2};
    CATEGORIES::SaveCategories(11);
    frmAddress w(context());
    w.Form_Load();
    CATEGORIES::SelectCategory(w.cboCategories, 1);
    w.cboCategories_Click();
    add(w, [](frmEditAddress &e) {
        e.ctl[A::LastName] = "Colleague";
        EXPECT_EQ(CATEGORIES::CategoryOfSelector(e.ctlCategory), 1) << "a new one takes the filter's";
        CATEGORIES::SelectCategory(e.ctlCategory, 2);
    });
    EXPECT_EQ(w.Filter(), 2) << "the filter jumps to the saved category";
    EXPECT_EQ(raw(w.RowId).g1, 2);

    w.cmdDelete_Click(); // Cancel, the default
    EXPECT_EQ(ui.shown.last(), text(14) + " Colleague");
    EXPECT_TRUE(raw(w.RowId).found);
    ui.answer(Answer::OK);
    w.cmdDelete_Click();
    EXPECT_EQ(w.ListSelect.ListCount(), 0);
}

TEST_F(AddressTest, FileAsCandidates) {
    frmEditAddress e(ui);
    const auto entries = [&e] {
        QStringList out;
        for (int i = 0; i < e.ctlFileAs.ListCount(); ++i)
            out << QString::number(e.ctlFileAs.ItemData(i)) + ":" + e.ctlFileAs.List(i);
        return out;
    };
    // A company and a home city: the company alone, chosen.
    e.ctl[A::CompanyName] = "Acme";
    e.ctl[A::HomeAddressStreet + A::City] = "Rome";
    e.FileAsCandidates();
    EXPECT_EQ(entries(), QStringList({"12:Acme"}));
    EXPECT_EQ(e.ctlFileAs.Text(), "Acme");

    // No home city: offered, not chosen; OK says message 15 until it is picked.
    e.ctlFileAs.setText("");
    e.ctl[A::HomeAddressStreet + A::City] = "";
    e.ctl[A::BusinessAddressStreet + A::City] = "Milan"; // the Business page makes no slot 15
    e.cmdOK_Click();
    EXPECT_EQ(entries(), QStringList({"12:Acme"}));
    EXPECT_EQ(ui.shown, QStringList({text(15)}));
    EXPECT_FALSE(e.closeRequested);
    e.ctlFileAs.setListIndex(0);
    e.cmdOK_Click();
    EXPECT_EQ(ui.shown.size(), 1);
    EXPECT_TRUE(e.closeRequested);

    // Last name and company: L, C, "L, C"; the wish stays 10.
    frmEditAddress f(ui);
    f.ctl[A::LastName] = "Rossi";
    f.ctl[A::CompanyName] = "Acme";
    f.ctl[A::HomeAddressStreet + A::City] = "Rome";
    f.FileAsCandidates();
    QStringList got;
    for (int i = 0; i < f.ctlFileAs.ListCount(); ++i)
        got << QString::number(f.ctlFileAs.ItemData(i)) + ":" + f.ctlFileAs.List(i);
    EXPECT_EQ(got, QStringList({"10:Rossi", "12:Acme", "13:Rossi, Acme", "15:Rossi, Rome"}));
    EXPECT_EQ(f.ctlFileAs.Text(), "Rossi");

    // A hand-typed File as survives OK.
    f.ctlFileAs.setText("Uncle R.");
    f.cmdOK_Click();
    EXPECT_EQ(f.ctlFileAs.Text(), "Uncle R.");
}

TEST_F(AddressTest, BirthdayMustBeADate) {
    frmEditAddress e(ui);
    e.ctl[A::LastName] = "B";
    e.ctlBirthday = "not a day";
    e.cmdOK_Click();
    EXPECT_EQ(ui.shown, QStringList({text(49)}));
    EXPECT_FALSE(e.closeRequested);
    e.ctlBirthday = "1980-02-29";
    EXPECT_TRUE(e.ctlBirthday_Validate());
}

TEST_F(AddressTest, ThePaneIsComposedWithTheSwappedLabelsAndAddressRules) {
    A::Record r = A::EmptyRecord();
    r[A::JobTitle] = "Chief";
    r[A::CompanyName] = "Acme";
    r[A::Com1] = "111";
    r[A::ComLabel1] = "6"; // Main in the editor, "Pager" in the pane
    r[A::Com2] = "222";
    r[A::ComLabel2] = "7"; // and the reverse
    r[A::Com3] = "333";    // no stored label: home
    r[A::HomeAddressStreet + A::Street] = "1 Way";
    r[A::HomeAddressStreet + A::City] = "Rome";
    r[A::HomeAddressStreet + A::PostalCode] = "00100";
    r[A::BusinessAddressStreet + A::State] = "NY"; // a state without a city shows nothing
    r[A::Birthday] = "1980-02-29 00:00:00";
    r[A::User2] = "blue";
    r[A::Notes] = "Line one";
    r[A::Profession] = "carried, never shown";
    const A::Pane pane = A::ComposePane(r, {"U1", "Colour", "U3", "U4"});
    const QString expected = "Chief\r\nAcme\r\n" + QString(40, '_') + "\r\n\r\n" +
                             "Pager:          \t111\r\n"
                             "Main:           \t222\r\n"
                             "Home:           \t333\r\n\r\n"
                             "Address:\r\nHome\r\n1 Way\r\nRome, 00100\r\n\r\n"
                             "Birthday:           1980-02-29\r\n"
                             "Colour:             blue\r\n\r\n"
                             "Note:\r\nLine one";
    EXPECT_EQ(pane.text, expected);
    EXPECT_TRUE(pane.boldLabels.contains("Colour"));
    EXPECT_EQ(pane.underlined, "Address");
    EXPECT_EQ(A::NameLine(r, "Acme"), "Acme");
}

TEST_F(AddressTest, TheExportWritesEveryRowInKeyOrderPrivateOnesToo) {
    struct Buffer : A::ExportSink {
        void write(const QByteArray &b) override { data += b; }
        QByteArray data;
    };
    Buffer empty;
    A::WriteTabDelimited(store(), empty);
    const QList<QByteArray> header = empty.data.split('\n');
    ASSERT_EQ(header.size(), 2);
    EXPECT_TRUE(header[0].startsWith("Private\tPriority\tTitle\t"));
    EXPECT_TRUE(header[0].endsWith("ComDisplay\tNotes\t"));
    EXPECT_EQ(header[0].count('\t'), 60);

    frmAddress w(context());
    w.Form_Load();
    addPerson(w, "B", "Bravo", "1");
    add(w, [](frmEditAddress &e) {
        e.ctl[A::LastName] = "Alpha";
        e.ctl[A::Notes] = QString::fromUtf8("two\nlines \u0141");
        e.ctlPrivate = true;
    });
    Buffer out;
    A::WriteTabDelimited(store(), out);
    const QList<QByteArray> lines = out.data.split('\n');
    ASSERT_EQ(lines.size(), 5) << "header, Alpha (two lines), Bravo, end";
    EXPECT_TRUE(lines[1].startsWith("True\t\t\tAlpha\t") || lines[1].startsWith("True\t\t\t\t\tAlpha"));
    EXPECT_EQ(lines[1].split('\t').value(5), "Alpha");
    EXPECT_EQ(lines[2], QString::fromUtf8("lines \u0141\t").toUtf8());
    EXPECT_EQ(lines[3].count('\t'), 60);
    EXPECT_EQ(lines[3].split('\t').value(0), "False");
    EXPECT_EQ(lines[3].split('\t').value(40), "1") << "Com1";
}

TEST_F(AddressTest, TheWindowsExportAsksThePassphraseFirst) {
    frmAddress w(context());
    w.Form_Load();
    addPerson(w, "A", "Person");
    w.ExportAddressTabDelimited(); // no user to check against: refused
    EXPECT_EQ(ui.shown.last(), text(85));
    EXPECT_TRUE(ui.fileDialogs.isEmpty()) << "no save dialog after a wrong passphrase";
}
