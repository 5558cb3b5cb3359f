// JetSql: the store's SQL dialect translated to SQLite.
//
// The store writes its statements as they have always been written (integer
// division with "\", Mod, Int(...), True and False, Between, [bracketed]
// names, DELETE * FROM, INSERT INTO tt IN "path" SELECT ..., the closing
// "WITH OWNERACCESS OPTION;"). This module tokenizes such a text, parses it
// into a tree with the dialect's precedence and writes the tree out again for
// SQLite, every operation in explicit parentheses.
//
// Invariants:
//  1. Nothing is rewritten by text substitution: string literals and
//     bracketed names pass through whatever they contain.
//  2. What the parser does not understand fails with
//     EngineError(SyntaxError); it never guesses.
//  3. Arithmetic keeps the dialect's meaning: "/" divides as real numbers,
//     "\" and Mod round both operands to whole numbers (half to even) and
//     truncate toward zero, Mod's remainder takes the sign of the dividend,
//     Int() is the floor, True is -1 and False 0. The SQL functions that
//     carry these rules (jet_idiv, jet_mod, jet_int, ...) must be registered
//     on every connection that runs translated SQL (RegisterFunctions).
//  4. And, Or and Not are logical, as the store uses them in SQL; they never
//     work bit by bit there.
#pragma once

#include <QString>
#include <QStringList>

struct sqlite3;

namespace km::JetSql {

enum class StatementKind { Select, Delete, Insert, Update };

struct Translation {
    StatementKind kind = StatementKind::Select;
    QString sql;   // the whole statement for SQLite
    QString table; // the table after FROM, INTO or UPDATE, as written
    bool grouped =
        false; // SELECT with DISTINCT, GROUP BY or an aggregate: its rows are not rows of the table
    // INSERT only.
    QString attachPath;  // INSERT INTO t IN "path": the other database file the rows go to
    QString source;      // the SELECT that gives the rows, for SQLite (INSERT ... SELECT)
    QStringList columns; // the target columns by name; empty for all columns in table order
};

// Translates one SELECT, DELETE, INSERT or UPDATE statement.
Translation Translate(const QString &jetSql);

// Translates a search condition (FindFirst criteria), e.g. "fSec=1 And fSub=1".
QString TranslateCondition(const QString &criteria);

// Registers jet_int, jet_fix, jet_idiv, jet_mod, jet_pow, jet_concat and
// jet_like on a connection. Returns the SQLite result code.
int RegisterFunctions(sqlite3 *db);

} // namespace km::JetSql
