// The cursor interface over SQLite: the file it builds, rows written and read
// back, the cursor over the table and over a SELECT, transactions, and the
// ways an open can fail.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include <QDate>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <sqlite3.h>

#include "platform/Engine.h"

using namespace km;

namespace {

// Runs f and returns the engine number it failed with, 0 if it didn't fail.
int errorOf(const std::function<void()> &f) {
    try {
        f();
    } catch (const EngineError &e) {
        return e.number();
    }
    return 0;
}

QStringList pragmaColumn(sqlite3 *db, const char *sql, int column) {
    sqlite3_stmt *st = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(db, sql, -1, &st, nullptr), SQLITE_OK) << sql;
    QStringList out;
    while (sqlite3_step(st) == SQLITE_ROW) {
        const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(st, column));
        out << (text ? QString::fromUtf8(text) : QStringLiteral("NULL"));
    }
    sqlite3_finalize(st);
    return out;
}

QByteArray fileBytes(const QString &path) {
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::ReadOnly));
    return f.readAll();
}

class EngineTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        path = dir.filePath(QStringLiteral("engine.kmd"));
        StoreDb::CreateDatabase(path);
        db = StoreDb::OpenDatabase(path);
    }

    // Adds rows whose fR1 equals their fPK, 1 to n.
    void addRows(int n) {
        auto rows = db->OpenRowSet(QStringLiteral("tt"));
        for (int i = 0; i < n; ++i) {
            rows->AddNew();
            rows->SetColumn(QStringLiteral("fR1"), rows->GetColumn(QStringLiteral("fPK")));
            rows->Update();
        }
    }
    qint64 count(const QString &where = QStringLiteral("fPK > 0")) {
        return db->OpenRowSet(QStringLiteral("SELECT fPK FROM tt WHERE ") + where, Snapshot)->RecordCount();
    }
    void reopen() {
        db.reset();
        db = StoreDb::OpenDatabase(path);
    }

    QTemporaryDir dir;
    QString path;
    std::unique_ptr<StoreDb> db;
};

TEST_F(EngineTest, AFreshStoreHasTheTableItsDefaultsAndItsEightIndexes) {
    sqlite3 *h = db->Handle();
    EXPECT_EQ(pragmaColumn(h, "PRAGMA table_info(tt)", 1).join(QLatin1Char(' ')),
              QStringLiteral("fPK fEtx fSec fSub fR1 fR2 fR3 fR4 fR5 fF1 fF2 fF3 fT1 fT2 fT3 fG1 AE"));
    EXPECT_EQ(pragmaColumn(h, "PRAGMA table_info(tt)", 4).join(QLatin1Char(' ')),
              QStringLiteral("NULL NULL 0 0 0 0 0 0 0 0 0 0 '0' '0' NULL NULL NULL"));

    // The primary key stands as "PrimaryKey" on fPK; the seven others are named after their column.
    EXPECT_EQ(pragmaColumn(h, "PRAGMA table_info(tt)", 5).first(), QStringLiteral("1"));
    EXPECT_TRUE(pragmaColumn(h, "SELECT sql FROM sqlite_schema WHERE name = 'tt'", 0)
                    .first()
                    .contains(QStringLiteral("fPK INTEGER CONSTRAINT PrimaryKey PRIMARY KEY AUTOINCREMENT")));
    QStringList indexes = pragmaColumn(h, "PRAGMA index_list(tt)", 1);
    indexes.sort();
    EXPECT_EQ(indexes.join(QLatin1Char(' ')), QStringLiteral("fR1 fR2 fR3 fR4 fR5 fSec fSub"));
    for (const QString &index : indexes) {
        const QByteArray sql = "PRAGMA index_info(" + index.toLatin1() + ")";
        EXPECT_EQ(pragmaColumn(h, sql.constData(), 2), QStringList{index});
    }

    // A new row that nobody fills reads "0" in fT1 and fT2, Null in fT3.
    auto rows = db->OpenRowSet(QStringLiteral("tt"));
    rows->AddNew();
    rows->Update();
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fT1")).toByteArray(), QByteArray("0"));
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fT2")).toByteArray(), QByteArray("0"));
    for (const char *column : {"fT3", "fEtx", "fG1", "AE"})
        EXPECT_TRUE(rows->GetColumn(QLatin1String(column)).isNull()) << column;
    for (const char *column : {"fSec", "fSub", "fR1", "fR5", "fF1", "fF3"}) {
        EXPECT_EQ(rows->GetColumn(QLatin1String(column)).typeId(), QMetaType::LongLong) << column;
        EXPECT_EQ(rows->GetColumn(QLatin1String(column)).toLongLong(), 0) << column;
    }

    // Closed, the store is one file and can't be created over.
    db.reset();
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{QStringLiteral("engine.kmd")});
    EXPECT_EQ(errorOf([&] { StoreDb::CreateDatabase(path); }), EngineErr::FileExists);
}

TEST_F(EngineTest, AddNewGivesTheRowIdAtOnceAndUpdateStoresEveryKindOfValue) {
    QByteArray allBytes;
    for (int i = 0; i < 256; ++i)
        allBytes.append(static_cast<char>(i));
    qint64 id = 0;
    {
        auto rows = db->OpenRowSet(QStringLiteral("tt"));
        rows->AddNew();
        id = rows->GetColumn(QStringLiteral("fPK")).toLongLong();
        EXPECT_GT(id, 0);
        rows->SetColumn(QStringLiteral("fEtx"), allBytes);
        rows->SetColumn(QStringLiteral("fsec"), 14); // names are case-insensitive
        rows->SetColumn(QStringLiteral("fSub"), 255);
        rows->SetColumn(QStringLiteral("fR1"), -2147483647 - 1);
        rows->SetColumn(QStringLiteral("fR2"), 2.5); // whole-number fields round half to even
        rows->SetColumn(QStringLiteral("fR3"), QStringLiteral(" 12 "));
        rows->SetColumn(QStringLiteral("fF1"), true);
        rows->SetColumn(QStringLiteral("fF2"), 7);
        rows->SetColumn(QStringLiteral("fT1"), QByteArray());
        rows->SetColumn(QStringLiteral("fT2"), QVariant());
        rows->SetColumn(QStringLiteral("fT3"),
                        QString(QChar(0x20AC)) + QStringLiteral("x")); // code page 1252
        rows->SetColumn(QStringLiteral("fG1"), -32768);
        rows->SetColumn(QStringLiteral("AE"), 1);
        EXPECT_EQ(rows->GetColumn(QStringLiteral("fF1")).toLongLong(),
                  -1); // pending values read back as stored
        rows->Update();
        EXPECT_EQ(rows->GetColumn(QStringLiteral("fPK")).toLongLong(), id);
    }
    reopen();
    auto rows = db->OpenRowSet(QStringLiteral("tt"));
    rows->FindFirst(QStringLiteral("fPK=%1").arg(id));
    ASSERT_FALSE(rows->NoMatch());
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fEtx")).toByteArray(), allBytes);
    const struct {
        const char *column;
        qint64 value;
    } numbers[] = {{"fSec", 14}, {"fSub", 255}, {"fR1", -2147483648LL}, {"fR2", 2}, {"fR3", 12}, {"fF1", -1},
                   {"fF2", -1},  {"fF3", 0},    {"fG1", -32768},        {"AE", 1}};
    for (const auto &n : numbers)
        EXPECT_EQ(rows->GetColumn(QLatin1String(n.column)).toLongLong(), n.value) << n.column;
    const QVariant t1 = rows->GetColumn(QStringLiteral("fT1"));
    EXPECT_EQ(t1.typeId(), QMetaType::QByteArray);
    EXPECT_TRUE(t1.toByteArray().isEmpty());
    EXPECT_TRUE(rows->GetColumn(QStringLiteral("fT2")).isNull());
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fT3")).toByteArray(), QByteArray("\x80x"));
}

TEST_F(EngineTest, AnAddNewThatIsNotUpdatedLeavesNothing) {
    const std::function<void(RowSet &)> endings[] = {
        [](RowSet &r) { r.CancelUpdate(); },
        [](RowSet &r) { r.Close(); },
        [](RowSet &r) { r.MoveFirst(); },
        [](RowSet &r) { r.FindFirst(QStringLiteral("fSec=9")); },
    };
    addRows(1);
    for (const auto &end : endings) {
        auto rows = db->OpenRowSet(QStringLiteral("tt"));
        rows->AddNew();
        rows->SetColumn(QStringLiteral("fSec"), 9);
        end(*rows);
    }
    {
        auto rows = db->OpenRowSet(QStringLiteral("tt"));
        rows->AddNew(); // destroyed before Update
    }
    {
        auto rows = db->OpenRowSet(QStringLiteral("tt"));
        rows->AddNew();
        db->Close(); // closing the store rolls the row back as well
    }
    reopen();
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(count(QStringLiteral("fSec=9")), 0);
}

TEST_F(EngineTest, WritesThatTheTableRefuses) {
    addRows(1);
    auto rows = db->OpenRowSet(QStringLiteral("tt"));
    const struct {
        const char *column;
        QVariant value;
        int error;
    } refused[] = {
        {"fSec", 256, EngineErr::Constraint},          {"fSec", -1, EngineErr::Constraint},
        {"fSub", 300, EngineErr::Constraint},          {"fR1", 2147483648LL, EngineErr::Constraint},
        {"fR4", -2147483649LL, EngineErr::Constraint}, {"fG1", 32768, EngineErr::Constraint},
        {"AE", -32769, EngineErr::Constraint},
    };
    for (const auto &r : refused) {
        rows->Edit();
        rows->SetColumn(QLatin1String(r.column), r.value);
        EXPECT_EQ(errorOf([&] { rows->Update(); }), r.error) << r.column;
        rows->CancelUpdate();
    }
    rows->Edit();
    EXPECT_EQ(errorOf([&] { rows->SetColumn(QStringLiteral("fSec"), QStringLiteral("abc")); }),
              EngineErr::DataTypeConversion);
    EXPECT_EQ(errorOf([&] { rows->SetColumn(QStringLiteral("fR1"), QDate(2000, 1, 1)); }),
              EngineErr::DataTypeConversion);
    EXPECT_EQ(errorOf([&] { rows->SetColumn(QStringLiteral("fPK"), 5); }), EngineErr::NotUpdatable);
    EXPECT_EQ(errorOf([&] { rows->SetColumn(QStringLiteral("fNone"), 5); }), EngineErr::ItemNotFound);
    rows->CancelUpdate();
    EXPECT_EQ(errorOf([&] { rows->SetColumn(QStringLiteral("fSec"), 1); }), EngineErr::UpdateWithoutEdit);
    EXPECT_EQ(errorOf([&] { rows->Update(); }), EngineErr::UpdateWithoutEdit);
    EXPECT_EQ(errorOf([&] { rows->GetColumn(QStringLiteral("fNone")); }), EngineErr::ItemNotFound);
    EXPECT_EQ(errorOf([&] { rows->GetColumn(17); }), EngineErr::ItemNotFound);
    EXPECT_EQ(errorOf([&] { db->Execute(QStringLiteral("SELECT * FROM tt")); }),
              EngineErr::CannotExecuteSelect);
    EXPECT_EQ(errorOf([&] { db->OpenRowSet(QStringLiteral("DELETE FROM tt")); }), EngineErr::SyntaxError);

    // The row is as it was, and a refused AddNew leaves no row behind.
    rows->AddNew();
    rows->SetColumn(QStringLiteral("fSec"), 256);
    EXPECT_EQ(errorOf([&] { rows->Update(); }), EngineErr::Constraint);
    rows->CancelUpdate();
    EXPECT_EQ(count(), 1);
    EXPECT_EQ(count(QStringLiteral("fSec = 0 And fR1 = 1 And fG1 Is Null")), 1);
}

TEST_F(EngineTest, EditUpdateAndDeleteOnTheTable) {
    addRows(3);
    auto rows = db->OpenRowSet(QStringLiteral("tt"));
    rows->FindFirst(QStringLiteral("fPK = 2"));
    rows->Edit();
    rows->SetColumn(QStringLiteral("AE"), 3);
    rows->Update();
    EXPECT_EQ(rows->GetColumn(QStringLiteral("AE")).toLongLong(), 3);
    EXPECT_EQ(count(QStringLiteral("AE = 3")), 1);

    rows->Delete();
    EXPECT_EQ(errorOf([&] { rows->GetColumn(QStringLiteral("fPK")); }), EngineErr::RecordDeleted);
    EXPECT_EQ(errorOf([&] { rows->Edit(); }), EngineErr::RecordDeleted);
    EXPECT_EQ(rows->AbsolutePosition(), -1);
    rows->MoveNext();
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fPK")).toLongLong(), 3);
    rows->MovePrevious();
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fPK")).toLongLong(), 1);
    EXPECT_EQ(rows->RecordCount(), 2);
}

// The cursor over the table and over a SELECT, read-write and snapshot, must
// move alike over rows 1, 3, 4, 5, 6 (row 2 deleted).
class CursorTest : public EngineTest, public ::testing::WithParamInterface<std::pair<const char *, int>> {};

TEST_P(CursorTest, MovesBookmarksPositionsAndSearches) {
    addRows(6);
    db->Execute(QStringLiteral("DELETE * FROM tt WHERE fPK = 2"));
    auto rows = db->OpenRowSet(QLatin1String(GetParam().first), GetParam().second);
    auto pk = [&] { return rows->GetColumn(QStringLiteral("fPK")).toLongLong(); };

    EXPECT_EQ(rows->RecordCount(), 5);
    EXPECT_FALSE(rows->Bof() || rows->Eof());
    EXPECT_EQ(pk(), 1);
    EXPECT_EQ(rows->AbsolutePosition(), 0);
    rows->MoveNext();
    EXPECT_EQ(pk(), 3);
    EXPECT_EQ(rows->AbsolutePosition(), 1);
    rows->MoveLast();
    EXPECT_EQ(pk(), 6);
    EXPECT_EQ(rows->AbsolutePosition(), 4);
    rows->MoveNext();
    EXPECT_TRUE(rows->Eof());
    EXPECT_FALSE(rows->Bof());
    EXPECT_EQ(rows->AbsolutePosition(), -1);
    EXPECT_EQ(errorOf([&] { pk(); }), EngineErr::NoCurrentRecord);
    EXPECT_EQ(errorOf([&] { rows->MoveNext(); }), EngineErr::NoCurrentRecord);
    rows->MovePrevious();
    EXPECT_EQ(pk(), 6);
    rows->MoveFirst();
    rows->MovePrevious();
    EXPECT_TRUE(rows->Bof());
    EXPECT_EQ(errorOf([&] { rows->MovePrevious(); }), EngineErr::NoCurrentRecord);
    rows->MoveNext();
    EXPECT_EQ(pk(), 1);

    // Bookmarks and relative moves.
    rows->Move(2);
    EXPECT_EQ(pk(), 4);
    const Bookmark mark = rows->GetBookmark();
    rows->MoveLast();
    rows->SetBookmark(mark);
    EXPECT_EQ(pk(), 4);
    EXPECT_EQ(rows->AbsolutePosition(), 2);
    const struct {
        qint64 offset;
        qint64 pk; // 0: before the first row, -1: after the last
    } moves[] = {{1, 5}, {-1, 3}, {-2, 1}, {-3, 0}, {2, 6}, {3, -1}, {0, 4}};
    for (const auto &m : moves) {
        rows->Move(m.offset, mark);
        if (m.pk == 0)
            EXPECT_TRUE(rows->Bof()) << m.offset;
        else if (m.pk < 0)
            EXPECT_TRUE(rows->Eof()) << m.offset;
        else
            EXPECT_EQ(pk(), m.pk) << m.offset;
    }
    EXPECT_EQ(errorOf([&] { rows->SetBookmark(999); }), EngineErr::InvalidBookmark);

    // Searches: a miss leaves the cursor where it was.
    rows->FindFirst(QStringLiteral("fR1 > 2"));
    EXPECT_FALSE(rows->NoMatch());
    EXPECT_EQ(pk(), 3);
    rows->FindNext(QStringLiteral("fR1 > 2"));
    EXPECT_EQ(pk(), 4);
    rows->FindFirst(QStringLiteral("fR1 = 99"));
    EXPECT_TRUE(rows->NoMatch());
    EXPECT_EQ(pk(), 4);
    rows->FindFirst(QStringLiteral("fR1 Between 5 And 6"));
    rows->FindNext(QStringLiteral("fR1 Between 5 And 6"));
    EXPECT_EQ(pk(), 6);
    rows->FindNext(QStringLiteral("fR1 Between 5 And 6"));
    EXPECT_TRUE(rows->NoMatch());
    EXPECT_EQ(errorOf([&] { rows->FindFirst(QStringLiteral("fNone = 1")); }), EngineErr::ItemNotFound);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, CursorTest,
    ::testing::Values(std::make_pair("tt", int(Dynaset)), std::make_pair("tt", int(Snapshot)),
                      std::make_pair("SELECT fPK, fR1 FROM tt ORDER BY fPK", int(Dynaset)),
                      std::make_pair("SELECT * FROM tt WITH OWNERACCESS OPTION;", int(ForwardOnly))));

TEST_F(EngineTest, AnEmptyRowSetIsAtBothEnds) {
    for (const char *source : {"tt", "SELECT * FROM tt WHERE fSec = 99"}) {
        auto rows = db->OpenRowSet(QLatin1String(source));
        EXPECT_TRUE(rows->Bof() && rows->Eof()) << source;
        EXPECT_EQ(rows->RecordCount(), 0);
        EXPECT_EQ(rows->AbsolutePosition(), -1);
        EXPECT_EQ(errorOf([&] { rows->MoveFirst(); }), EngineErr::NoCurrentRecord) << source;
        EXPECT_EQ(errorOf([&] { rows->GetColumn(QStringLiteral("fPK")); }), EngineErr::NoCurrentRecord)
            << source;
        EXPECT_EQ(errorOf([&] { rows->Edit(); }), EngineErr::NoCurrentRecord) << source;
        rows->FindFirst(QStringLiteral("fPK > 0"));
        EXPECT_TRUE(rows->NoMatch());
    }
}

TEST_F(EngineTest, ASelectWithItsRowIdWritesThroughToTheTable) {
    addRows(3);
    auto rows =
        db->OpenRowSet(QStringLiteral("SELECT fPK, AE, fR1, [fR1] * 10 AS X FROM tt ORDER BY fR1 DESC"));
    EXPECT_EQ(rows->ColumnCount(), 4);
    EXPECT_EQ(rows->ColumnName(3), QStringLiteral("X"));
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fpk")).toLongLong(), 3);
    rows->Edit();
    rows->SetColumn(QStringLiteral("fR1"), 50);
    EXPECT_EQ(errorOf([&] { rows->SetColumn(QStringLiteral("X"), 1); }), EngineErr::NotUpdatable);
    rows->Update();
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fR1")).toLongLong(), 50);
    EXPECT_EQ(rows->GetColumn(QStringLiteral("X")).toLongLong(),
              30); // computed columns keep the value of the open
    EXPECT_EQ(count(QStringLiteral("fPK = 3 And fR1 = 50")), 1);

    // A new row joins the end of the set; deleting takes it out again.
    rows->AddNew();
    const qint64 id = rows->GetColumn(QStringLiteral("fPK")).toLongLong();
    rows->SetColumn(QStringLiteral("AE"), 1);
    rows->Update();
    EXPECT_EQ(rows->RecordCount(), 4);
    EXPECT_EQ(rows->AbsolutePosition(), 3);
    EXPECT_EQ(count(QStringLiteral("AE = 1")), 1);
    rows->MoveFirst();
    rows->Delete();
    EXPECT_EQ(rows->RecordCount(), 3);
    rows->MoveNext();
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fPK")).toLongLong(), 2);
    rows->MoveLast();
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fPK")).toLongLong(), id);
    EXPECT_EQ(count(QStringLiteral("fPK = 3")), 0);

    // Without fPK, grouped, or opened as a snapshot, the rows can't be written.
    const struct {
        const char *sql;
        int kind;
    } readOnly[] = {{"SELECT fR1, AE FROM tt", Dynaset},
                    {"SELECT DISTINCT fPK, fR1 FROM tt", Dynaset},
                    {"SELECT fPK, fR1 FROM tt", Snapshot},
                    {"tt", Snapshot}};
    for (const auto &r : readOnly) {
        auto other = db->OpenRowSet(QLatin1String(r.sql), r.kind);
        EXPECT_EQ(errorOf([&] { other->Edit(); }), EngineErr::NotUpdatable) << r.sql;
        EXPECT_EQ(errorOf([&] { other->AddNew(); }), EngineErr::NotUpdatable) << r.sql;
        EXPECT_EQ(errorOf([&] { other->Delete(); }), EngineErr::NotUpdatable) << r.sql;
    }
}

TEST_F(EngineTest, RolledBackTransactionsLeaveTheFileAsItWas) {
    addRows(3);
    db.reset();
    const QByteArray before = fileBytes(path);
    db = StoreDb::OpenDatabase(path);
    db->BeginTrans();
    addRows(50);
    {
        auto rows = db->OpenRowSet(QStringLiteral("tt"));
        rows->Edit();
        rows->SetColumn(QStringLiteral("fEtx"), QByteArray(3000, 'x'));
        rows->Update();
    }
    db->Execute(QStringLiteral("DELETE * FROM tt WHERE fPK = 2"));
    db->Rollback();
    EXPECT_EQ(db->TransactionDepth(), 0);
    db.reset();
    // The header's change counter (bytes 24-27, 92-95) moves with every session
    // that writes; every other byte must be as it was.
    QByteArray after = fileBytes(path);
    QByteArray expected = before;
    ASSERT_EQ(after.size(), expected.size());
    for (int i : {24, 25, 26, 27, 92, 93, 94, 95})
        after[i] = expected[i] = 0;
    EXPECT_EQ(after, expected);
}

TEST_F(EngineTest, TransactionsNestAndRollbackUndoesTheInnermostLevel) {
    auto add = [&](int section) {
        auto rows = db->OpenRowSet(QStringLiteral("tt"));
        rows->AddNew();
        rows->SetColumn(QStringLiteral("fSec"), section);
        rows->Update();
    };
    db->BeginTrans();
    add(1);
    db->BeginTrans();
    add(2);
    EXPECT_EQ(db->TransactionDepth(), 2);
    db->Rollback();
    EXPECT_EQ(db->TransactionDepth(), 1);
    EXPECT_EQ(count(QStringLiteral("fSec = 2")), 0);
    EXPECT_EQ(count(QStringLiteral("fSec = 1")), 1);
    db->BeginTrans();
    add(3);
    db->CommitTrans();
    db->CommitTrans();
    EXPECT_EQ(errorOf([&] { db->CommitTrans(); }), EngineErr::TransactionError);
    EXPECT_EQ(errorOf([&] { db->Rollback(); }), EngineErr::TransactionError);

    // An AddNew inside a transaction that is rolled back afterwards goes too.
    db->BeginTrans();
    add(4);
    db->Rollback();
    reopen();
    EXPECT_EQ(count(QStringLiteral("fSec In (1, 3)")), 2);
    EXPECT_EQ(count(QStringLiteral("fSec In (2, 4)")), 0);
}

TEST_F(EngineTest, OpeningTellsMissingFilesOtherFilesAndDamagedStoresApart) {
    db->BeginTrans();
    addRows(400);
    {
        auto rows = db->OpenRowSet(QStringLiteral("tt"));
        while (!rows->Eof()) {
            rows->Edit();
            rows->SetColumn(QStringLiteral("fEtx"), QByteArray(200, 'e'));
            rows->Update();
            rows->MoveNext();
        }
    }
    db->CommitTrans();
    db.reset();
    const QByteArray store = fileBytes(path);
    const qsizetype pageSize = 4096;
    ASSERT_GT(store.size(), 20 * pageSize);

    auto write = [&](const QString &name, const QByteArray &bytes) {
        const QString file = dir.filePath(name);
        QFile f(file);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
        return file;
    };
    QByteArray overwritten = store;
    const qsizetype middle = (store.size() / pageSize / 2) * pageSize;
    overwritten.replace(middle, 64, QByteArray(64, '\xA5'));

    sqlite3 *other = nullptr;
    const QString plainSqlite = dir.filePath(QStringLiteral("other.kmd"));
    ASSERT_EQ(sqlite3_open(QFile::encodeName(plainSqlite).constData(), &other), SQLITE_OK);
    sqlite3_exec(other, "CREATE TABLE other (x); CREATE TABLE t2 (fPK INTEGER)", nullptr, nullptr, nullptr);
    sqlite3_close(other);
    const QString wrongColumns = dir.filePath(QStringLiteral("columns.kmd"));
    ASSERT_EQ(sqlite3_open(QFile::encodeName(wrongColumns).constData(), &other), SQLITE_OK);
    sqlite3_exec(other, "CREATE TABLE tt (fPK INTEGER PRIMARY KEY, fEtx BLOB)", nullptr, nullptr, nullptr);
    sqlite3_close(other);

    const struct {
        QString file;
        int error;
    } cases[] = {
        {dir.filePath(QStringLiteral("missing.kmd")), EngineErr::FileNotFound},
        {write(QStringLiteral("text.kmd"), QByteArray("Dear diary,\n").repeated(500)), EngineErr::NotAStore},
        {write(QStringLiteral("empty.kmd"), QByteArray()), EngineErr::NotAStore},
        {plainSqlite, EngineErr::NotAStore},
        {wrongColumns, EngineErr::NotAStore},
        {dir.path(), EngineErr::NotAStore},
        {write(QStringLiteral("overwritten.kmd"), overwritten), EngineErr::Damaged},
        {write(QStringLiteral("truncated.kmd"), store.left(store.size() / 2)), EngineErr::Damaged},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(errorOf([&] { StoreDb::OpenDatabase(c.file); }), c.error) << c.file.toStdString();
        EXPECT_EQ(errorOf([&] { StoreDb::OpenDatabase(c.file, false, true); }), c.error)
            << c.file.toStdString();
    }
    EXPECT_EQ(errorOf([&] { StoreDb::OpenDatabase(path); }), 0);
}

TEST_F(EngineTest, AStoreInUseIsRefusedToEveryOtherConnection) {
    EXPECT_EQ(errorOf([&] { StoreDb::OpenDatabase(path); }), EngineErr::AlreadyInUse);
    EXPECT_EQ(errorOf([&] { StoreDb::OpenDatabase(path, false, true); }), EngineErr::AlreadyInUse);

    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        int number = 0;
        try {
            StoreDb::OpenDatabase(path);
        } catch (const EngineError &e) {
            number = e.number();
        }
        _exit(number == EngineErr::AlreadyInUse ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);

    // A shared read-only open lets others read but nobody write.
    db.reset();
    auto reader = StoreDb::OpenDatabase(path, false, true);
    auto second = StoreDb::OpenDatabase(path, false, true);
    EXPECT_EQ(errorOf([&] { reader->Execute(QStringLiteral("DELETE * FROM tt")); }), EngineErr::ReadOnly);
    EXPECT_EQ(errorOf([&] { reader->OpenRowSet(QStringLiteral("tt"))->AddNew(); }), EngineErr::ReadOnly);
    reader.reset();
    second.reset();
    EXPECT_EQ(errorOf([&] { db = StoreDb::OpenDatabase(path); }), 0);
}

TEST_F(EngineTest, RowSetsOfAClosedStoreFailCleanly) {
    addRows(2);
    auto rows = db->OpenRowSet(QStringLiteral("tt"));
    auto list = db->OpenRowSet(QStringLiteral("SELECT fPK FROM tt"));
    db->Close();
    EXPECT_FALSE(db->IsOpen());
    EXPECT_EQ(errorOf([&] { rows->MoveNext(); }), EngineErr::ObjectClosed);
    EXPECT_EQ(errorOf([&] { list->GetColumn(0); }), EngineErr::ObjectClosed);
    EXPECT_EQ(errorOf([&] { db->OpenRowSet(QStringLiteral("tt")); }), EngineErr::ObjectClosed);
}

} // namespace

TEST_F(EngineTest, ColumnsAreFoundByNameInAnyCaseAndOnlyByTheirWholeName) {
    addRows(1);
    auto rows = db->OpenRowSet(
        QStringLiteral("SELECT fPK, fR1, [fR1] + 1 AS fR10, [fR1] + 2 AS [Größe], [fR1] + 3 AS fR FROM tt"));
    EXPECT_EQ(rows->GetColumn(QStringLiteral("FR1")).toLongLong(), rows->GetColumn(QStringLiteral("fR1")).toLongLong());
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fr10")).toLongLong(), rows->GetColumn(QStringLiteral("fR1")).toLongLong() + 1);
    EXPECT_EQ(rows->GetColumn(QStringLiteral("fr")).toLongLong(), rows->GetColumn(QStringLiteral("fR1")).toLongLong() + 3);
    // Letters beyond ASCII are matched without regard to case too.
    EXPECT_EQ(rows->GetColumn(QStringLiteral("GRÖßE")).toLongLong(), rows->GetColumn(QStringLiteral("fR1")).toLongLong() + 2);
    EXPECT_EQ(errorOf([&] { rows->GetColumn(QStringLiteral("fR2")); }), EngineErr::ItemNotFound);
    EXPECT_EQ(errorOf([&] { rows->GetColumn(QStringLiteral("fPK ")); }), EngineErr::ItemNotFound);
}
