// Find across sections on a logged-in main window: the search over the
// decrypted payloads with its case and private rules per section, the PIN on
// a box, the enabling rule, Cancel between rows and Go To into the address book.
#include <gtest/gtest.h>

#include "address/AddressSections.h"
#include "address/frmAddress.h"
#include "shell/MainWindowTestSupport.h"
#include "shell/frmFind.h"
#include "store/Record_Put.h"
#include "store/Users.h"
#include "store/db.h"
#include "ui/LanguageUS.h"

namespace {

using namespace km;

class FindTest : public test::MainWindowFixture {
protected:
    void SetUp() override {
        MainWindowFixture::SetUp();
        ASSERT_TRUE(startOpen());
        address::RegisterSections();
    }
    void TearDown() override {
        UnregisterFindSections();
        MainWindowFixture::TearDown();
    }
    // A row of a section with the given fields packed as texts or booleans.
    qint64 putRow(int section, const QList<std::pair<int, QVariant>> &fields, const QString &title = {}) {
        QList<Record_Put::Field> layout;
        QVariantList values;
        for (const auto &[index, value] : fields) {
            layout.append({index, value.typeId() == QMetaType::Bool ? Record_Put::tBoolean : Record_Put::tText});
            while (values.size() <= index)
                values.append(QVariant());
            values[index] = value;
        }
        db::StandardWrite w(db::Store(), 0, section);
        w.setRecord(Record_Put::PackRecord(layout, values));
        w.setText("fT1", title);
        return w.Commit();
    }
    qint64 addAddress(const QString &last, const QString &notes, bool priv = false) {
        frmAddress a(w->sectionContext());
        a.record[Address::LastName] = last;
        a.record[Address::Notes] = notes;
        a.record[Address::Private] = priv ? "True" : "False";
        a.fileAs = last;
        a.newRecord = true;
        return a.SaveRecord();
    }
    static QStringList hits(const QList<FindHit> &list) {
        QStringList out;
        for (const FindHit &h : list)
            out << QStringLiteral("%1:%2:%3").arg(h.name, h.item, h.spec);
        return out;
    }
};

} // namespace

TEST_F(FindTest, SearchesEveryChosenSectionWithItsCaseAndPrivateRules) {
    addAddress("Miller", "likes ABC tea");
    addAddress("Hidden", "abc secret", true);
    putRow(14, {{1, false}, {4, QString("Memo abc")}}, "Memo title");
    // A transaction: field 3 is its private flag, field 4 the user's number.
    putRow(17, {{3, false}, {4, QString("1")}, {5, QString("abc budget")}}, "Rent");
    putRow(18, {{3, true}, {5, QString("abc private budget")}}, "Secret");

    FindRequest r;
    r.text = "abc";
    r.boxes.fill(true);
    r.showPrivate = false;
    EXPECT_EQ(hits(SearchSections(db::Store(), r)),
              QStringList({"Address:Miller:", "Memo:Memo title:", "Budget 1:Rent:"}));

    r.caseSensitive = true;
    EXPECT_EQ(hits(SearchSections(db::Store(), r)), QStringList({"Memo:Memo title:", "Budget 1:Rent:"}));

    r.caseSensitive = false;
    r.showPrivate = true;
    EXPECT_EQ(SearchSections(db::Store(), r).size(), 5);

    r.boxes.fill(false);
    r.boxes[0] = true;
    r.text = "miller";
    EXPECT_EQ(hits(SearchSections(db::Store(), r)), QStringList({"Address:Miller:"})) << "fields too";
    r.text = QString::fromUtf8("\u00e4");
    EXPECT_TRUE(SearchSections(db::Store(), r).isEmpty());
}

TEST_F(FindTest, TheWindowEnablesFindAsksThePinAndGoesToTheHit) {
    const qint64 id = addAddress("Target", "needle");
    addAddress("Other", "hay");
    frmFind f(*w);
    f.txtFind_Change("needle");
    EXPECT_FALSE(f.cmdFindEnabled) << "no box ticked";
    f.PinApp_Click(3, true);
    EXPECT_TRUE(f.cmdFindEnabled);
    f.txtFind_Change("");
    EXPECT_FALSE(f.cmdFindEnabled) << "no text";
    f.txtFind_Change("NEEDLE");

    // The address book under a PIN: a wrong one leaves its box clear.
    Users::state().PinSections = 1;
    Users::state().Pin = "1234";
    ui.onModal<frmPW>(test::typing({"9999"}));
    f.PinApp_Click(0, true);
    EXPECT_FALSE(f.PinApp[0]);
    EXPECT_EQ(ui.shown.last(), LanguageUS::MessageText(125));
    ui.onModal<frmPW>(test::typing({"1234"}));
    f.PinApp_Click(0, true);
    EXPECT_TRUE(f.PinApp[0]);

    f.cmdFind_Click();
    EXPECT_EQ(f.lblSummary, "1" + LanguageUS::MessageText(111));
    ASSERT_EQ(f.LV.size(), 1);
    EXPECT_EQ(f.LV[0].id, id);
    EXPECT_TRUE(f.cmdGotoEnabled);
    EXPECT_FALSE(desk.waitCursor) << "the wait ends with the search";

    f.cmdGoto_Click();
    EXPECT_TRUE(f.closeRequested);
    EXPECT_EQ(w->CurrentSection, 11);
    auto *book = dynamic_cast<frmAddress *>(w->section());
    ASSERT_NE(book, nullptr);
    EXPECT_EQ(book->RowId, id);
    EXPECT_EQ(book->fileAs, "Target");
}

TEST_F(FindTest, CancelStopsBetweenRows) {
    for (int i = 0; i < 130; ++i)
        putRow(14, {{1, false}, {4, QString("row %1").arg(i)}}, QString::number(i));
    frmFind f(*w);
    f.txtFind_Change("row");
    f.PinApp_Click(3, true);
    QStringList progress;
    f.onProgress = [&] {
        progress << f.lblProgress;
        f.cmdCancel_Click();
    };
    f.cmdFind_Click();
    EXPECT_EQ(progress, QStringList({"64 of 130 rows"}));
    EXPECT_EQ(f.LV.size(), 64);
    EXPECT_FALSE(f.searching);
    EXPECT_FALSE(f.closeRequested) << "Cancel during a search only stops it";
    f.cmdCancel_Click();
    EXPECT_TRUE(f.closeRequested);
}
