// The store's SQL dialect, run for real: every statement shape the program
// passes goes through the translator and the engine against a small table
// whose plain numbers are negative as well as positive, where truncating and
// flooring division would give different orders.
#include <gtest/gtest.h>

#include <functional>

#include <QTemporaryDir>

#include <sqlite3.h>

#include "platform/Engine.h"
#include "platform/JetSql.h"

using namespace km;

namespace {

// fPK, fSec, fSub, fR1, fR2, fR3, fR4, fF3, fT1 (hex blob, "" for the default
// text "0", "NULL"), fG1
struct Row {
    int pk, sec, sub, r1, r2, r3, r4, f3;
    const char *t1;
    int g1;
};
const Row kRows[] = {
    // addresses, sorted by fR2 \ 51130563 then fR1
    {1, 11, 0, 5, -60000000, 0, 0, 0, "", 1},
    {2, 11, 0, 1, 60000000, 0, 0, 0, "", 2},
    {3, 11, 0, 9, 10, 0, 0, 0, "", 1},
    {4, 11, 0, 2, 51130562, 0, 0, 0, "", 1},
    {5, 11, 0, 1, -10, 0, 0, 0, "", 1},
    // appointments: single rows (fSub < 148) by day key fR3, series (fSub >= 148) from fR4 to fR2
    {6, 12, 1, 1, 0, -150, 0, 0, "", 0},
    {7, 12, 1, 5, 0, -50, 0, 0, "", 0},
    {8, 12, 1, 3, 0, 50, 0, 0, "", 0},
    {9, 12, 1, 0, 0, 120, 0, 0, "", 0},
    {10, 12, 150, 0, 100, 0, -100, 0, "", 0},
    {11, 12, 150, 0, 500, 600, 300, 0, "", 0},
    // memos with a doubled cipher text and two without any
    {12, 14, 0, 7, -5, 0, 0, 0, "AA01", 3},
    {13, 14, 0, 1, 5, 0, 0, 0, "AA01", 3},
    {14, 14, 0, 0, 0, 0, 0, 0, "BB", 4},
    {15, 14, 0, 0, 0, 0, 0, 0, "NULL", 3},
    {16, 14, 0, 0, 0, 0, 0, 0, "NULL", 0},
    // tasks, fF3 = completed
    {17, 15, 0, 0, 0, 0, 0, -1, "", 1},
    {18, 15, 0, 0, 0, 0, 0, 0, "", 1},
    {19, 15, 0, 0, 0, 0, 0, 0, "", 2},
    // budget: fR1 Mod 4 is the kind of the transaction, fR3 its day
    {20, 17, 0, -7, 0, 10, 0, 0, "", 0},
    {21, 17, 0, 6, 0, 20, 0, 0, "", 0},
    {22, 17, 0, 5, 0, 99, 0, 0, "", 0},
    // diary pages by fR2
    {23, 13, 0, 0, -10, 0, 0, 0, "", 0},
    {24, 13, 0, 0, 11, 0, 0, 0, "", 0},
    // a user row and a category row
    {25, 2, 1, 0, 0, 0, 0, 0, "", 0},
    {26, 10, 14, 0, 0, 0, 0, 0, "", 0},
};

class JetSqlTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        path = dir.filePath(QStringLiteral("dialect.kmd"));
        StoreDb::CreateDatabase(path);
        db = StoreDb::OpenDatabase(path);
        for (const Row &r : kRows) {
            const QString t1 = QString::fromLatin1(r.t1);
            QString sql = QStringLiteral("INSERT INTO tt (fPK, fSec, fSub, fR1, fR2, fR3, fR4, fF3, fG1%1) "
                                         "VALUES (%2, %3, %4, %5, %6, %7, %8, %9, %10%11)")
                              .arg(t1.isEmpty() ? QString() : QStringLiteral(", fT1"))
                              .arg(r.pk)
                              .arg(r.sec)
                              .arg(r.sub)
                              .arg(r.r1)
                              .arg(r.r2)
                              .arg(r.r3)
                              .arg(r.r4)
                              .arg(r.f3)
                              .arg(r.g1)
                              .arg(t1.isEmpty()                  ? QString()
                                   : t1 == QLatin1String("NULL") ? QStringLiteral(", NULL")
                                                                 : QStringLiteral(", X'%1'").arg(t1));
            ASSERT_EQ(sqlite3_exec(db->Handle(), sql.toUtf8().constData(), nullptr, nullptr, nullptr),
                      SQLITE_OK)
                << r.pk;
        }
    }

    // The first column of every row, joined by commas; cipher bytes as hex.
    std::string firstColumn(const QString &jet) {
        auto rows = db->OpenRowSet(jet, Snapshot);
        QStringList out;
        while (!rows->Eof()) {
            const QVariant v = rows->GetColumn(0);
            out << (v.typeId() == QMetaType::QByteArray
                        ? QString::fromLatin1(v.toByteArray().toHex().toUpper())
                        : v.toString());
            rows->MoveNext();
        }
        return out.join(QLatin1Char(',')).toStdString();
    }

    QVariant value(const QString &expression) {
        auto rows =
            db->OpenRowSet(QStringLiteral("SELECT %1 AS V FROM tt WHERE fPK=1").arg(expression), Snapshot);
        EXPECT_EQ(rows->RecordCount(), 1);
        return rows->GetColumn(QStringLiteral("V"));
    }

    QTemporaryDir dir;
    QString path;
    std::unique_ptr<StoreDb> db;
};

TEST_F(JetSqlTest, ExpressionsFollowTheDialectsArithmeticAndPrecedence) {
    struct Case {
        const char *jet;
        const char *expected; // "NULL" for Null
    };
    const Case cases[] = {
        // \ and Mod truncate toward zero after rounding both operands half to even
        {"-7 \\ 2", "-3"},
        {"7 \\ -2", "-3"},
        {"-7 Mod 2", "-1"},
        {"7 Mod -2", "1"},
        {"2.5 \\ 1", "2"},
        {"3.5 \\ 1", "4"},
        {"-2.5 \\ 1", "-2"},
        {"7.6 Mod 2.5", "0"},
        {"[fR2] \\ 51130563", "-1"},
        {"Null \\ 2", "NULL"},
        // Int is the floor, Fix the truncation, / is real division
        {"Int(-1.5)", "-2"},
        {"Int(1.5)", "1"},
        {"Fix(-1.5)", "-1"},
        {"Int(-7 / 2)", "-4"},
        {"Int(fR2 / 51130563)", "-2"},
        {"7 / 2", "3.5"},
        // precedence: ^, unary -, * /, \, Mod, + -, &
        {"2 ^ 3", "8"},
        {"-2 ^ 2", "-4"},
        {"2 ^ -1", "0.5"},
        {"1 + 2 * 3", "7"},
        {"10 - 4 - 3", "3"},
        {"2 * 3 \\ 4", "1"},
        {"7 \\ 2 * 2", "1"},
        {"7 Mod 4 \\ 2", "1"},
        {"5 + 7 Mod 3", "6"},
        {"1 + 2 & 3", "33"},
        // literals and names
        {"'a' & 'b'", "ab"},
        {"'a' & Null", "a"},
        {"True", "-1"},
        {"False", "0"},
        {"\"it's\"", "it's"},
        {"'say ''hi'''", "say 'hi'"},
        {"\"a\"\"b\"", "a\"b"},
        {"[fR1] + fR1 + tt.fR1 + [tt].[fR1]", "20"},
        // conditions
        {"1 = 1 And 2 = 3 Or 4 = 4", "1"},
        {"Not 1 = 2", "1"},
        {"3 Between 1 And 5", "1"},
        {"3 Not Between 4 And 5", "1"},
        {"Null Is Null", "1"},
        {"fT3 Is Not Null", "0"},
        {"2 In (1, 2, 3)", "1"},
        {"'Hello' Like 'h*O'", "1"},
        {"'Hello' Like 'H?llo'", "1"},
        {"'a1' Like 'a#'", "1"},
        {"'ab' Like 'a[!b]'", "0"},
        {"'ac' Like 'a[a-c]'", "1"},
        {"'a*' Like 'a[*]'", "1"},
        // functions
        {"Abs(-4)", "4"},
        {"Len('abc')", "3"},
        {"UCase('abc')", "ABC"},
    };
    for (const Case &c : cases) {
        const QVariant v = value(QString::fromLatin1(c.jet));
        if (std::strcmp(c.expected, "NULL") == 0)
            EXPECT_TRUE(v.isNull()) << c.jet;
        else
            EXPECT_EQ(v.toString().toStdString(), c.expected) << c.jet;
    }
}

TEST_F(JetSqlTest, EveryStatementShapeOfTheProgramReturnsTheRightRows) {
    struct Case {
        const char *jet;
        const char *rows; // the first column of each row, in order
    };
    const Case cases[] = {
        // the duplicate sweep
        {"SELECT fSec FROM tt GROUP BY fSec HAVING fSec>10;", "11,12,13,14,15,17"},
        {"SELECT fT1 FROM tt WHERE fSec=14 And Not(fT1 Is Null) GROUP BY fT1 HAVING (Count(fPK)>1);", "AA01"},
        {"SELECT * FROM tt WHERE fSec=14", "12,13,14,15,16"},
        // users, settings, categories
        {"SELECT * FROM tt WHERE fSec=2 WITH OWNERACCESS OPTION;", "25"},
        {"SELECT * FROM tt WHERE fSec=2 And fPK=25 WITH OWNERACCESS OPTION;", "25"},
        {"SELECT * FROM tt WHERE fSec=10 And fSub=14 WITH OWNERACCESS OPTION;", "26"},
        {"SELECT fG1 FROM tt WHERE fPK=12", "3"},
        // the sort index: a bucket of a section ordered by rank
        {"SELECT fPK, AE, fT1, fR2, [fR2] \\ 51130563 AS X, fR1 FROM tt WHERE (fR2 Between -51130563 And "
         "51130562) "
         "AND (fSec=11) ORDER BY fR1;",
         "5,4,3"},
        // lists sorted by bucket (truncating division: -10 and -5 are in bucket 0) then rank
        {"SELECT fPK, fT1, fEtx, fR1, fR2\\51130563 AS X, fG1 FROM tt WHERE fSec=14 And fG1=3 ORDER BY "
         "fR2\\51130563, fR1 WITH OWNERACCESS OPTION;",
         "15,13,12"},
        {"SELECT fPk, fT1 FROM tt WHERE fSec=11 And fG1=1 ORDER BY fR2\\(51130563), fR1 WITH OWNERACCESS "
         "OPTION;",
         "1,5,4,3"},
        {"SELECT fPK, fT1, fT2, fT3, fG1, AE FROM tt WHERE fSec=11 ORDER BY fR2\\(51130563), fR1 WITH "
         "OWNERACCESS "
         "OPTION;",
         "1,5,4,3,2"},
        {"SELECT * FROM tt WHERE fSec=11 ORDER BY  fR2 , fR1 WITH OWNERACCESS OPTION;", "1,5,3,4,2"},
        {"SELECT * FROM tt WHERE fSec=11 ORDER BY fR2 DESC", "2,4,3,5,1"},
        // appointments of a range: Int floors, so -1.5 sorts before -0.5
        {"SELECT * FROM tt WHERE ((fSec=12) AND (fSub < 148) AND (fR3 Between -200 And 100)) ORDER BY "
         "Int([fR3]/100), fR1 WITH OWNERACCESS OPTION;",
         "6,7,8"},
        {"SELECT fPK, fT1, fR1, AE FROM tt WHERE (fSec=12) AND ([fR3] Between -100 And 100) ORDER BY [fR1] "
         "WITH "
         "OWNERACCESS OPTION;",
         "10,8,7"},
        {"SELECT * FROM tt WHERE (fSec=12) AND (fSub >= 148) AND ((fR4 < 200 AND fR2 > 0)) WITH OWNERACCESS "
         "OPTION;",
         "10"},
        // diary pages, tasks
        {"SELECT * FROM tt WHERE fSec=13 And (fR2 Between -10 And 10) WITH OWNERACCESS OPTION;", "23"},
        {"SELECT * FROM tt WHERE fSec=15 And fG1=1 And fF3 = False  WITH OWNERACCESS OPTION;", "18"},
        {"SELECT * FROM tt WHERE fSec=15 And fF3=True", "17"},
        // budget totals: the remainder keeps the sign of fR1
        {"SELECT [fR1] Mod 4 AS CDBW, fT1, fG1 FROM tt WHERE ((fR3 Between 0 And 50) AND (fSec=17)) ORDER BY "
         "fR3;",
         "-3,2"},
        // the budget journal's filters on direction and class
        {"SELECT * FROM tt WHERE fSec=17 And (((fR1 Mod 4) Mod 2) =0)  And (((fR1 Mod 4) \\ 2) =1)  And (fR3 "
         "Between 0 "
         "And 50) ORDER BY fR3 WITH OWNERACCESS OPTION;",
         "21"},
        // a quote inside a literal stays inside it
        {"SELECT fPK FROM tt WHERE fSec = '1'' OR ''1''=''1'", ""},
        {"SELECT DISTINCT fSub FROM tt WHERE fSec=12 ORDER BY fSub", "1,150"},
        {"SELECT Count(*) AS N FROM tt WHERE fSec=14 And fT1 Is Null", "2"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(firstColumn(QString::fromLatin1(c.jet)), c.rows) << c.jet;
}

TEST_F(JetSqlTest, DeleteInsertAndUpdateStatementsChangeTheRowsTheySay) {
    struct Case {
        const char *jet;
        qint64 changed;
        const char *section; // the check afterwards
        const char *left;
    };
    const Case cases[] = {
        {"DELETE * FROM tt WHERE fSec=15 And fF3=True WITH OWNERACCESS OPTION;", 1,
         "SELECT fPK FROM tt WHERE fSec=15", "18,19"},
        {"DELETE * FROM tt WHERE ((fSec=12) AND (fSub < 148) AND (fR3 <= -50));", 2,
         "SELECT fPK FROM tt WHERE fSec=12", "8,9,10,11"},
        {"DELETE * FROM tt WHERE fSec=14 And fG1=3 WITH OWNERACCESS OPTION;", 3,
         "SELECT fPK FROM tt WHERE fSec=14", "14,16"},
        {"DELETE FROM tt WHERE fPK=25", 1, "SELECT fPK FROM tt WHERE fSec=2", ""},
        {"UPDATE tt SET fR1 = fR1 \\ 2, fF3 = True WHERE fSec = 17", 3,
         "SELECT fR1 FROM tt WHERE fSec=17 And fF3=True ORDER BY fPK", "-3,3,2"},
        {"INSERT INTO tt (fSec, fSub) VALUES (19, 2)", 1, "SELECT fSub FROM tt WHERE fSec=19", "2"},
        {"INSERT INTO tt SELECT fSec, fR1 + 1 AS fR2 FROM tt WHERE fSec = 17", 3,
         "SELECT fR2 FROM tt WHERE fSec=17 And fR2 <> 0 ORDER BY fR2", "-2,3,4"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(db->Execute(QString::fromLatin1(c.jet)), c.changed) << c.jet;
        EXPECT_EQ(firstColumn(QString::fromLatin1(c.section)), c.left) << c.jet;
    }
}

TEST_F(JetSqlTest, InsertIntoAnotherStoreCopiesTheRowsInsideATransaction) {
    const QString archive = dir.filePath(QStringLiteral("dia\"lect.kma"));
    StoreDb::CreateDatabase(archive);
    QString quoted = archive;
    quoted.replace(QLatin1Char('"'), QStringLiteral("\"\""));

    db->BeginTrans();
    EXPECT_EQ(
        db->Execute(
            QStringLiteral("INSERT INTO tt IN \"%1\" SELECT * From tt WHERE ((fSec=12) AND (fSub > 147) AND "
                           "(fR2 < 200));")
                .arg(quoted)),
        1);
    db->CommitTrans();
    db->BeginTrans();
    EXPECT_EQ(
        db->Execute(QStringLiteral("DELETE * FROM tt WHERE ((fSec=12) AND (fSub > 147) AND (fR2 < 200));")),
        1);
    db->CommitTrans();

    auto other = StoreDb::OpenDatabase(archive);
    auto rows = other->OpenRowSet(QStringLiteral("tt"));
    ASSERT_EQ(rows->RecordCount(), 1);
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fPK")).toLongLong(), 10);
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fSub")).toLongLong(), 150);
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fR4")).toLongLong(), -100);
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fT1")).toByteArray(), QByteArray("0"));
    rows.reset();
    other.reset();

    // The same row again collides with its row id: nothing is copied.
    db->Execute(QStringLiteral("INSERT INTO tt (fPK, fSec, fSub, fR2) VALUES (10, 12, 150, 100)"));
    const QString again =
        QStringLiteral("INSERT INTO tt IN '%1' SELECT * FROM tt WHERE fSec=12").arg(archive);
    try {
        db->Execute(again);
        FAIL() << "a taken row id was copied";
    } catch (const EngineError &e) {
        EXPECT_EQ(e.number(), EngineErr::DuplicateKey);
    }
    other = StoreDb::OpenDatabase(archive);
    EXPECT_EQ(other->OpenRowSet(QStringLiteral("tt"))->RecordCount(), 1);
    other.reset();

    try {
        db->Execute(QStringLiteral("INSERT INTO tt IN '%1' SELECT * FROM tt")
                        .arg(dir.filePath(QStringLiteral("none.kma"))));
        FAIL() << "inserted into a file that is not there";
    } catch (const EngineError &e) {
        EXPECT_EQ(e.number(), EngineErr::FileNotFound);
    }
}

TEST_F(JetSqlTest, TranslationKeepsLiteralsWholeAndDropsTheClosingWords) {
    using JetSql::Translate;
    EXPECT_EQ(Translate(QStringLiteral("DELETE * FROM tt WHERE fPK=5 WITH OWNERACCESS OPTION;")).sql,
              QStringLiteral("DELETE FROM \"tt\" WHERE (\"fPK\" = 5)"));
    EXPECT_EQ(JetSql::TranslateCondition(QStringLiteral("fSec=1 and fSub=1")),
              QStringLiteral("((\"fSec\" = 1) AND (\"fSub\" = 1))"));

    const auto select =
        Translate(QStringLiteral("select fPK, [fR2] \\ 51130563 as X from tt where fT1 = 'a \\ b Mod [c] "
                                 "True' order by fR2\\51130563, fR1 desc"));
    EXPECT_EQ(
        select.sql,
        QStringLiteral("SELECT \"fPK\", jet_idiv(\"fR2\", 51130563) AS \"X\" FROM \"tt\" WHERE (\"fT1\" = "
                       "'a \\ b Mod [c] True') ORDER BY jet_idiv(\"fR2\", 51130563), \"fR1\" DESC"));
    EXPECT_FALSE(select.grouped);
    EXPECT_TRUE(Translate(QStringLiteral("SELECT fSec FROM tt GROUP BY fSec")).grouped);
    EXPECT_TRUE(Translate(QStringLiteral("SELECT DISTINCT fSec FROM tt")).grouped);
    EXPECT_TRUE(Translate(QStringLiteral("SELECT Count(fPK) FROM tt")).grouped);

    const auto insert =
        Translate(QStringLiteral("INSERT INTO tt IN \"/a b/x.kma\" SELECT * From tt WHERE (fSec=12);"));
    EXPECT_EQ(insert.kind, JetSql::StatementKind::Insert);
    EXPECT_EQ(insert.attachPath, QStringLiteral("/a b/x.kma"));
    EXPECT_EQ(insert.source, QStringLiteral("SELECT * FROM \"tt\" WHERE (\"fSec\" = 12)"));
    EXPECT_TRUE(insert.columns.isEmpty());
}

TEST_F(JetSqlTest, WhatTheTranslatorDoesNotUnderstandIsASyntaxError) {
    const char *const garbage[] = {
        "",
        "SELEC * FROM tt",
        "DROP TABLE tt",
        "SELECT * FROM tt WHERE",
        "SELECT * FROM tt WHERE fSec = 'abc",
        "SELECT * FROM tt WHERE [fSec = 1",
        "SELECT * FROM tt WHERE fSec == 1",
        "SELECT * FROM tt WHERE fSec != 1",
        "SELECT * FROM tt WHERE fR1 = #1/1/2000#",
        "SELECT * FROM tt; DELETE FROM tt",
        "SELECT * FROM tt WHERE fSec = 1 extra",
        "SELECT * FROM tt WHERE fSec Between 1",
        "SELECT * FROM tt WHERE fSec Is 1",
        "SELECT Foo(fSec) FROM tt",
        "SELECT Int(1, 2) FROM tt",
        "SELECT * FROM tt WITH OWNERACCESS",
        "SELECT * FROM tt ORDER fR1",
        "SELECT FROM tt",
        "SELECT * FROM WHERE fSec = 1",
        "SELECT fR1 fR2 FROM tt",
        "SELECT 12abc FROM tt",
        "SELECT * FROM tt WHERE []",
        "INSERT INTO tt IN 'x.kma' VALUES (1)",
        "INSERT INTO tt IN x.kma SELECT * FROM tt",
        "DELETE * tt WHERE fSec = 1",
        "UPDATE tt fR1 = 1",
    };
    for (const char *text : garbage) {
        try {
            JetSql::Translate(QString::fromLatin1(text));
            ADD_FAILURE() << "accepted: " << text;
        } catch (const EngineError &e) {
            EXPECT_EQ(e.number(), EngineErr::SyntaxError) << text;
        }
    }
    for (const char *criteria : {"fSec=1 And", "(fSec=1", "fSec=1)", "And fSec=1"}) {
        EXPECT_THROW(JetSql::TranslateCondition(QString::fromLatin1(criteria)), EngineError) << criteria;
    }
    // Through the engine the same errors come back, and a literal never shows in the message.
    try {
        db->OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE fT1 = 'secret' fSec"));
        FAIL();
    } catch (const EngineError &e) {
        EXPECT_EQ(e.number(), EngineErr::SyntaxError);
        EXPECT_FALSE(e.description().contains(QStringLiteral("secret")));
    }
}

TEST_F(JetSqlTest, RunTimeFailuresOfTheDialectsArithmetic) {
    const struct {
        const char *jet;
        int number;
    } cases[] = {
        {"1 \\ 0", EngineErr::Generic},
        {"1 Mod 0", EngineErr::Generic},
        {"'abc' \\ 2", EngineErr::Generic},
        {"fNoSuch + 1", EngineErr::ItemNotFound},
    };
    for (const auto &c : cases) {
        try {
            value(QString::fromLatin1(c.jet));
            ADD_FAILURE() << "no error: " << c.jet;
        } catch (const EngineError &e) {
            EXPECT_EQ(e.number(), c.number) << c.jet;
        }
    }
}

} // namespace
