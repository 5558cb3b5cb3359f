// The sort index: letter classes and buckets, scattered points, and lists
// that come out in the order of titles the engine never sees.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "platform/CodePage1252.h"
#include "store/INDICES.h"
#include "store/Record_Put.h"
#include "support/ScriptedDialogs.h"
#include "support/StoreFixture.h"

using namespace INDICES;

TEST(SortLetter, ClassesOfPlainAccentedAndOtherCharacters) {
    struct Case {
        char16_t ch;
        int mode0, mode1;
    } cases[] = {{u'a', 1, 1},        {u'Z', 26, 26},      {u'\u00c4', 1, 29},  {u'\u00e6', 1, 29},
                 {u'\u00f6', 15, 30}, {u'\u00d8', 15, 30}, {u'\u00e5', 1, 28},  {u'\u00e9', 5, 5},
                 {u'\u00df', 19, 19}, {u'\u00e7', 3, 3},   {u'\u00f1', 14, 14}, {u'\u00fd', 25, 25},
                 {u'\u00fe', 20, 20}, {u'\u00d0', 4, 4},   {u'\u00fc', 21, 21}, {u'\u00ef', 9, 9},
                 {u'1', 0, 0},        {u' ', 0, 0},        {u'\u00d7', 0, 0},   {u'\u20ac', 0, 0}};
    for (const auto &c : cases) {
        EXPECT_EQ(SortLetter(QChar(c.ch), 0), c.mode0) << int(c.ch);
        EXPECT_EQ(SortLetter(QChar(c.ch), 1), c.mode1) << int(c.ch);
    }
}

TEST(SortFold, FoldsAccentsUpperCasesAndBuckets) {
    EXPECT_EQ(SortFold(QStringLiteral("\u00c4rger \u00fcber Stra\u00dfe")), QByteArray("ARGER UBER STRASE"));
    EXPECT_EQ(SortFold(QStringLiteral("caf\u00e9\u2013x")), QByteArray("CAFE@X"))
        << "a high byte that is no letter folds to @";
    EXPECT_EQ(SortFold(QString()), QByteArray());
    EXPECT_EQ(SortBucket(SortFold(QStringLiteral("1st")), 0), 0);
    EXPECT_EQ(SortBucket(SortFold(QStringLiteral("Aa")), 0), (1 * 31 + 1) / 23);
    EXPECT_EQ(SortBucket(SortFold(QStringLiteral("\u00c4rger")), 0),
              SortBucket(SortFold(QStringLiteral("Arger")), 0));
    EXPECT_EQ(SortBucket(QByteArray("Z"), 0), 26 * 31 / 23);
    EXPECT_EQ(SortBucket(km::cp1252::toBytes(QStringLiteral("\u00d6\u00d6")), 1), 41)
        << "the largest class gives bucket 41";
}

TEST(SortFold, EveryCodePageCharacterFoldsToOneByteOfAtMost128) {
    for (int b = 0; b < 256; ++b) {
        const QByteArray f = SortFold(QString(km::cp1252::toChar(static_cast<unsigned char>(b))));
        ASSERT_EQ(f.size(), 1) << b;
        EXPECT_LE(static_cast<unsigned char>(f.at(0)), 128) << b;
    }
}

TEST(SortFold, MarkedLettersBesideTheirBaseOtherScriptsAfterZ) {
    // Each pair folds alike.
    const struct {
        const char *name;
        QString a, b;
    } alike[] = {
        {"code page accent", QStringLiteral("\u00d3"), QStringLiteral("o")},
        {"accent outside the code page", QStringLiteral("\u015a\u0105"), QStringLiteral("sa")},
        {"mark typed apart", QStringLiteral("O\u0301"), QStringLiteral("\u00d3")},
        {"two marks", QStringLiteral("\u1ec7"), QStringLiteral("E")},
        {"Cyrillic case", QStringLiteral("\u043f\u0440\u0438"), QStringLiteral("\u041f\u0420\u0418")},
        {"Cyrillic base", QStringLiteral("\u0401"), QStringLiteral("\u0415")},
        {"Greek tonos", QStringLiteral("\u03ac"), QStringLiteral("\u0391")},
    };
    for (const auto &c : alike)
        EXPECT_EQ(SortFold(c.a), SortFold(c.b)) << c.name;

    EXPECT_NE(SortFold(QStringLiteral("\u0141")), SortFold(QStringLiteral("L")))
        << "\u0141 has no decomposition";
    EXPECT_EQ(SortFold(QStringLiteral("\U0001F600")), QByteArray("\xff\x01\xf6\x00", 4));

    // Titles in the order a list shows them.
    const QStringList ordered = {QStringLiteral("42 Street"),
                                 QStringLiteral("apples"),
                                 QStringLiteral("\u00c4rzte"),
                                 QStringLiteral("Avocado"),
                                 QStringLiteral("Sanduhr"),
                                 QStringLiteral("\u015al\u0105sk"),
                                 QStringLiteral("Szpak"),
                                 QStringLiteral("Zebra"),
                                 QStringLiteral("\u0141\u00f3d\u017a"),
                                 QStringLiteral("\u0386\u03bb\u03c6\u03b1"),
                                 QStringLiteral("\u03a9\u03bc\u03ad\u03b3\u03b1"),
                                 QStringLiteral("\u0415\u0433\u043e"),
                                 QStringLiteral("\u0401\u0436"),
                                 QStringLiteral("\u0416\u0443\u043a"),
                                 QStringLiteral("\U0001F600 smile")};
    for (qsizetype i = 1; i < ordered.size(); ++i) {
        const QByteArray a = SortFold(ordered[i - 1]), b = SortFold(ordered[i]);
        EXPECT_LT(a, b) << i;
        EXPECT_LE(SortBucket(a, 0), SortBucket(b, 0)) << i;
    }
    EXPECT_EQ(SortBucket(SortFold(QStringLiteral("\u0416")), 0), 36);
    EXPECT_EQ(SortBucket(SortFold(QStringLiteral("Zz")), 0), 36);
    EXPECT_EQ(SortBucket(SortFold(QStringLiteral("A\u0416")), 0),
              SortBucket(SortFold(QStringLiteral("Az")), 0));
}

TEST(ScatterPoint, PointsLieInTheirSlotsAndStayWithin32Bits) {
    for (int pos = 0; pos < 42; ++pos) {
        for (int k = 0; k < 50; ++k) {
            const ScatterRange r = ScatterPoint(pos, 42, 0, MaxIndex);
            ASSERT_LE(r.Low, r.Value);
            ASSERT_LE(r.Value, r.High + 1) << "a unit draw of exactly 1 reaches the next slot's first number";
            ASSERT_EQ(r.Value / BucketWidth, r.Value == r.High + 1 ? pos + 1 : pos);
        }
    }
    const ScatterRange clamped = ScatterPoint(99, 3, 0, 300);
    EXPECT_EQ(clamped.Low, 200);
    EXPECT_EQ(clamped.High, 299);
    const ScatterRange negative = ScatterPoint(-1, 3, 0, 300);
    EXPECT_EQ(negative.High, -100);
    EXPECT_EQ(negative.Low, -199);
    EXPECT_LE(negative.Value, -100);
    EXPECT_GE(negative.Value, -200);
    for (int k = 0; k < 1000; ++k) {
        const qint32 v = ScatterPoint(0, 1, 0, MaxIndex).Value;
        ASSERT_GE(v, 0);
        ASSERT_GE(RandomLong(), 0);
    }
}

namespace {

class SortedSectionTest : public km::test::StoreFixture {
protected:
    static constexpr int Section = 14;

    qint64 save(qint64 id, const QString &title) {
        db::StandardWrite w(store(), id, Section);
        EXPECT_TRUE(w.ok());
        const QString old = w.oldText(QStringLiteral("fT1"));
        w.setRecord(Record_Put::PackRecord({{4, Record_Put::tText}}, {{}, {}, {}, {}, title}));
        w.setText(QStringLiteral("fT1"), title);
        w.placeInOrder(title, old);
        return w.Commit({false, true, true, false, false, true, true});
    }

    // The list as the section's window reads it: sorted by the engine alone.
    QStringList list() {
        auto rows =
            store().OpenRowSet(QStringLiteral("SELECT fPK, fT1, fR1, fR2\\%1 AS X FROM tt WHERE fSec=%2 "
                                              "ORDER BY fR2\\%1, fR1 WITH OWNERACCESS OPTION;")
                                   .arg(BucketWidth)
                                   .arg(Section),
                               km::Snapshot);
        QStringList out;
        for (; !rows->Eof(); rows->MoveNext())
            out << CRY::DecryptField(rows->GetColumn("fT1").toByteArray());
        return out;
    }

    QMap<qint64, qint64> ranks() {
        auto rows = store().OpenRowSet(QStringLiteral("SELECT fPK, fR1 FROM tt WHERE fSec=%1").arg(Section),
                                       km::Snapshot);
        QMap<qint64, qint64> out;
        for (; !rows->Eof(); rows->MoveNext())
            out[rows->GetColumn("fPK").toLongLong()] = rows->GetColumn("fR1").toLongLong();
        return out;
    }

    static QStringList expectedOrder(QStringList titles) {
        std::stable_sort(titles.begin(), titles.end(), [](const QString &a, const QString &b) {
            const int ba = SortBucket(SortFold(a), 0), bb = SortBucket(SortFold(b), 0);
            return ba != bb ? ba < bb : SortFold(a) < SortFold(b);
        });
        return titles;
    }
    static QList<QByteArray> folded(const QStringList &titles) {
        QList<QByteArray> out;
        for (const QString &t : titles)
            out << SortFold(t);
        return out;
    }
};

} // namespace

TEST_F(SortedSectionTest, TitlesAddedInAnyOrderListSorted) {
    QStringList titles = {"Zebra",   "apple",    "Apfel",  "\u00c4pfel", "Banana",  "banana",   "42 Street",
                          "Mango",   "mandarin", "Maroon", "Kiwi",       "Anchovy", "Aardvark", "Zz",
                          "\u00d6l", "Olive",    "Quince", "",           "Cherry",  "cherry",   "Date",
                          "Elder",   "Fig",      "Grape",  "Honeydew"};
    std::mt19937 shuffle(7);
    for (int round = 0; round < 3; ++round) {
        std::shuffle(titles.begin(), titles.end(), shuffle);
        for (const QString &t : titles)
            save(0, t + QString(round, 'x'));
    }
    QStringList all;
    for (int round = 0; round < 3; ++round)
        for (const QString &t : titles)
            all << t + QString(round, 'x');
    EXPECT_EQ(folded(list()), folded(expectedOrder(all)));
}

TEST_F(SortedSectionTest, TitlesOfOtherScriptsListAfterTheLatinOnes) {
    const QStringList ordered = {QStringLiteral("apples"),
                                 QStringLiteral("\u00c4rzte"),
                                 QStringLiteral("Avocado"),
                                 QStringLiteral("\u015al\u0105sk"),
                                 QStringLiteral("Szpak"),
                                 QStringLiteral("Zz top"),
                                 QStringLiteral("\u0141\u00f3d\u017a"),
                                 QStringLiteral("\u03a9\u03bc\u03ad\u03b3\u03b1"),
                                 QStringLiteral("\u0401\u0436"),
                                 QStringLiteral("\u0416\u0443\u043a"),
                                 QStringLiteral("\U0001F600")};
    QStringList shuffled = ordered;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(11));
    for (const QString &t : shuffled)
        save(0, t);
    EXPECT_EQ(list(), ordered);
}

TEST_F(SortedSectionTest, FirstRowsAndInsertsBetweenNeighbours) {
    const qint64 b = save(0, "Bb");
    const qint32 firstRank = ranks().value(b);
    EXPECT_GE(firstRank, 0) << "the first row of a bucket may take a rank anywhere in the range";
    save(0, "Bd");
    save(0, "Bc");
    EXPECT_EQ(list(), QStringList({"Bb", "Bc", "Bd"}));
    const QList<qint64> r = ranks().values();
    std::vector<qint64> sorted(r.begin(), r.end());
    std::sort(sorted.begin(), sorted.end());
    const qint64 third = MaxIndex / 3;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(sorted[static_cast<size_t>(i)] / third, i) << "slot " << i << " of 3";
}

TEST_F(SortedSectionTest, RenamesMoveRowsAndLeaveOthersAloneWhenTheyStay) {
    QList<qint64> ids;
    for (const char *t : {"Ca", "Cc", "Ce", "Cg", "Ci"})
        ids << save(0, t);
    auto before = ranks();

    save(ids[2], "Cf"); // stays between Cc and Cg
    auto after = ranks();
    for (qint64 id : ids)
        EXPECT_EQ(after.value(id), before.value(id)) << "no row moves for a rename that passes nobody";

    save(ids[4], "Cb"); // moves up
    EXPECT_EQ(list(), QStringList({"Ca", "Cb", "Cc", "Cf", "Cg"}));
    save(ids[0], "Ch"); // moves down
    EXPECT_EQ(list(), QStringList({"Cb", "Cc", "Cf", "Cg", "Ch"}));
    save(ids[1], "Zulu"); // leaves the bucket
    save(ids[3], "Ab");   // another bucket
    EXPECT_EQ(list(), QStringList({"Ab", "Cb", "Cf", "Ch", "Zulu"}));
    save(ids[2], "Cf"); // unchanged text keeps its place
    EXPECT_EQ(list(), QStringList({"Ab", "Cb", "Cf", "Ch", "Zulu"}));
}

TEST_F(SortedSectionTest, EqualTitlesBothStay) {
    save(0, "Dup");
    save(0, "Dup");
    save(0, "Dup");
    EXPECT_EQ(list(), QStringList({"Dup", "Dup", "Dup"}));
}

TEST_F(SortedSectionTest, AWriteThatIsNotCommittedUndoesTheRenumbering) {
    for (const char *t : {"Ea", "Ec", "Ee"})
        save(0, t);
    const auto before = ranks();
    {
        db::StandardWrite w(store(), 0, Section);
        w.setText("fT1", "Eb");
        w.placeInOrder("Eb", QString());
        // dropped without Commit
    }
    EXPECT_EQ(ranks(), before);
    reopen();
    EXPECT_EQ(ranks(), before);
}

TEST_F(SortedSectionTest, AnotherSectionsRowIsNotOverwritten) {
    km::test::ScriptedDialogs ui;
    const qint64 id = save(0, "Mine");
    db::StandardWrite w(store(), id, 16);
    EXPECT_FALSE(w.ok());
    EXPECT_EQ(ui.messagesShown(), QStringList({"Update impossible"}));
    EXPECT_EQ(w.Commit(), 0);
}
