// The translator works in three steps: the text becomes tokens (string
// literals, bracketed names, numbers, words, symbols), the tokens become a
// tree by recursive descent along the dialect's precedence, and the tree is
// written out for SQLite. Statements are short and written by the program
// itself, so clarity wins over speed here; the engine caches what SQLite
// prepares from the result.
#include "platform/JetSql.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <sqlite3.h>

#include "platform/Engine.h"

namespace km::JetSql {

namespace {

// ---------------------------------------------------------------- tokens

enum class Tok { End, Word, Name, String, Number, Symbol };

struct Token {
    Tok type = Tok::End;
    QString text; // a word or symbol as written; the contents of a name or string literal
    qsizetype pos = 0;
};

[[noreturn]] void syntaxError(const QString &what) {
    throw EngineError(EngineErr::SyntaxError, QStringLiteral("Syntax error in the query: %1.").arg(what));
}

bool isWordStart(QChar c) {
    return c.isLetter() || c == QLatin1Char('_');
}
bool isWordChar(QChar c) {
    return c.isLetterOrNumber() || c == QLatin1Char('_');
}

std::vector<Token> tokenize(const QString &s) {
    std::vector<Token> out;
    const qsizetype n = s.size();
    qsizetype i = 0;
    while (i < n) {
        const QChar c = s[i];
        if (c.isSpace()) {
            ++i;
            continue;
        }
        Token t;
        t.pos = i;
        if (c == QLatin1Char('[')) {
            const qsizetype close = s.indexOf(QLatin1Char(']'), i + 1);
            if (close < 0) syntaxError(QStringLiteral("a bracketed name is not closed (position %1)").arg(i));
            t.type = Tok::Name;
            t.text = s.mid(i + 1, close - i - 1);
            if (t.text.trimmed().isEmpty())
                syntaxError(QStringLiteral("empty brackets (position %1)").arg(i));
            i = close + 1;
        } else if (c == QLatin1Char('\'') || c == QLatin1Char('"')) {
            // The quote character doubled stands for itself; the other quote is plain text.
            QString value;
            qsizetype j = i + 1;
            for (;;) {
                if (j >= n) syntaxError(QStringLiteral("a text literal is not closed (position %1)").arg(i));
                if (s[j] == c) {
                    if (j + 1 < n && s[j + 1] == c) {
                        value += c;
                        j += 2;
                        continue;
                    }
                    break;
                }
                value += s[j++];
            }
            t.type = Tok::String;
            t.text = value;
            i = j + 1;
        } else if (c.isDigit() || (c == QLatin1Char('.') && i + 1 < n && s[i + 1].isDigit())) {
            qsizetype j = i;
            while (j < n && s[j].isDigit())
                ++j;
            if (j < n && s[j] == QLatin1Char('.')) {
                ++j;
                while (j < n && s[j].isDigit())
                    ++j;
            }
            if (j < n && (s[j] == QLatin1Char('e') || s[j] == QLatin1Char('E'))) {
                qsizetype k = j + 1;
                if (k < n && (s[k] == QLatin1Char('+') || s[k] == QLatin1Char('-'))) ++k;
                if (k >= n || !s[k].isDigit())
                    syntaxError(QStringLiteral("a malformed number (position %1)").arg(i));
                while (k < n && s[k].isDigit())
                    ++k;
                j = k;
            }
            if (j < n && isWordChar(s[j]))
                syntaxError(QStringLiteral("a malformed number (position %1)").arg(i));
            t.type = Tok::Number;
            t.text = s.mid(i, j - i);
            i = j;
        } else if (isWordStart(c)) {
            qsizetype j = i + 1;
            while (j < n && isWordChar(s[j]))
                ++j;
            t.type = Tok::Word;
            t.text = s.mid(i, j - i);
            i = j;
        } else {
            static const char *const twoChar[] = {"<=", ">=", "<>"};
            t.type = Tok::Symbol;
            for (const char *sym : twoChar) {
                if (i + 1 < n && c == QLatin1Char(sym[0]) && s[i + 1] == QLatin1Char(sym[1]))
                    t.text = QLatin1String(sym);
            }
            if (t.text.isEmpty()) {
                if (!QStringLiteral("=<>+-*/\\^&(),;.").contains(c))
                    syntaxError(QStringLiteral("unexpected character at position %1").arg(i));
                t.text = QString(c);
            }
            i += t.text.size();
        }
        out.push_back(std::move(t));
    }
    Token end;
    end.pos = n;
    out.push_back(end);
    return out;
}

// Words that can never be a column name without brackets.
bool isReserved(const QString &word) {
    static const char *const reserved[] = {
        "SELECT", "DISTINCT", "DISTINCTROW", "TOP",    "FROM",   "WHERE",  "GROUP", "BY",          "HAVING",
        "ORDER",  "ASC",      "DESC",        "AS",     "AND",    "OR",     "XOR",   "EQV",         "IMP",
        "NOT",    "BETWEEN",  "IS",          "NULL",   "LIKE",   "MOD",    "TRUE",  "FALSE",       "IN",
        "INTO",   "VALUES",   "SET",         "DELETE", "INSERT", "UPDATE", "WITH",  "OWNERACCESS", "OPTION",
        "UNION",  "JOIN",     "ON",          "INNER",  "LEFT",   "RIGHT"};
    for (const char *r : reserved) {
        if (word.compare(QLatin1String(r), Qt::CaseInsensitive) == 0) return true;
    }
    return false;
}

QString quoteName(const QString &name) {
    QString q = name;
    q.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + q + QLatin1Char('"');
}

QString quoteText(const QString &text) {
    QString q = text;
    q.replace(QLatin1Char('\''), QStringLiteral("''"));
    return QLatin1Char('\'') + q + QLatin1Char('\'');
}

// ---------------------------------------------------------------- tree

struct Node;
using NodePtr = std::unique_ptr<Node>;

struct Node {
    enum Kind { Literal, Column, Star, Unary, Binary, Between, IsNull, InList, Like, Call };
    Kind kind = Literal;
    QString text;      // SQLite text of a literal, column name, operator or function
    QString qualifier; // table of a qualified column
    bool negated = false;
    bool aggregate = false;
    std::vector<NodePtr> args;
};

NodePtr makeNode(Node::Kind kind, const QString &text = QString()) {
    auto node = std::make_unique<Node>();
    node->kind = kind;
    node->text = text;
    return node;
}

NodePtr makeBinary(const QString &op, NodePtr left, NodePtr right) {
    auto node = makeNode(Node::Binary, op);
    node->args.push_back(std::move(left));
    node->args.push_back(std::move(right));
    return node;
}

bool hasAggregate(const Node &node) {
    if (node.kind == Node::Call && node.aggregate) return true;
    for (const auto &arg : node.args) {
        if (hasAggregate(*arg)) return true;
    }
    return false;
}

struct FunctionSpec {
    const char *jet;
    const char *sqlite;
    bool aggregate;
};

// The functions the store's SQL may call, with their SQLite counterparts. Each
// takes exactly one argument; Count also takes "*".
const FunctionSpec kFunctions[] = {
    {"Int", "jet_int", false}, {"Fix", "jet_fix", false}, {"Abs", "abs", false},    {"Len", "length", false},
    {"UCase", "upper", false}, {"LCase", "lower", false}, {"Count", "count", true}, {"Sum", "sum", true},
    {"Avg", "avg", true},      {"Min", "min", true},      {"Max", "max", true},
};

QString render(const Node &node) {
    auto arg = [&](int i) { return render(*node.args[static_cast<size_t>(i)]); };
    switch (node.kind) {
    case Node::Literal:
        return node.text;
    case Node::Column:
        return node.qualifier.isEmpty() ? quoteName(node.text)
                                        : quoteName(node.qualifier) + QLatin1Char('.') + quoteName(node.text);
    case Node::Star:
        return QStringLiteral("*");
    case Node::Unary:
        return node.text == QLatin1String("NOT") ? QStringLiteral("(NOT %1)").arg(arg(0))
                                                 : QStringLiteral("(-%1)").arg(arg(0));
    case Node::Binary: {
        const QString &op = node.text;
        if (op == QLatin1String("/")) return QStringLiteral("(CAST(%1 AS REAL) / %2)").arg(arg(0), arg(1));
        if (op == QLatin1String("\\")) return QStringLiteral("jet_idiv(%1, %2)").arg(arg(0), arg(1));
        if (op == QLatin1String("MOD")) return QStringLiteral("jet_mod(%1, %2)").arg(arg(0), arg(1));
        if (op == QLatin1String("^")) return QStringLiteral("jet_pow(%1, %2)").arg(arg(0), arg(1));
        if (op == QLatin1String("&")) return QStringLiteral("jet_concat(%1, %2)").arg(arg(0), arg(1));
        return QStringLiteral("(%1 %2 %3)").arg(arg(0), op, arg(1));
    }
    case Node::Between:
        return QStringLiteral("(%1 %2BETWEEN %3 AND %4)")
            .arg(arg(0), node.negated ? QStringLiteral("NOT ") : QString(), arg(1), arg(2));
    case Node::IsNull:
        return QStringLiteral("(%1 IS %2NULL)")
            .arg(arg(0), node.negated ? QStringLiteral("NOT ") : QString());
    case Node::InList: {
        QStringList items;
        for (size_t i = 1; i < node.args.size(); ++i)
            items << render(*node.args[i]);
        return QStringLiteral("(%1 %2IN (%3))")
            .arg(arg(0), node.negated ? QStringLiteral("NOT ") : QString(), items.join(QStringLiteral(", ")));
    }
    case Node::Like: {
        const QString like = QStringLiteral("jet_like(%1, %2)").arg(arg(0), arg(1));
        return node.negated ? QStringLiteral("(NOT %1)").arg(like) : like;
    }
    case Node::Call: {
        QStringList items;
        for (const auto &a : node.args)
            items << render(*a);
        return QStringLiteral("%1(%2)").arg(node.text, items.join(QStringLiteral(", ")));
    }
    }
    return QString();
}

// ---------------------------------------------------------------- parser

struct SelectParts {
    QString sql;
    QString table;
    bool grouped = false;
    bool star = false;
    QStringList itemNames;
};

class Parser {
public:
    explicit Parser(const QString &text) : m_tokens(tokenize(text)) {}

    Translation statement() {
        Translation tr;
        if (acceptWord("SELECT")) {
            SelectParts select = selectBody();
            tr.kind = StatementKind::Select;
            tr.sql = select.sql;
            tr.table = select.table;
            tr.grouped = select.grouped;
        } else if (acceptWord("DELETE")) {
            tr.kind = StatementKind::Delete;
            // "DELETE * FROM t" and "DELETE t.* FROM t" both mean all columns.
            if (!acceptSymbol("*") && (peek().type == Tok::Word || peek().type == Tok::Name) &&
                isSymbol(".", 1) && isSymbol("*", 2)) {
                m_pos += 3;
            }
            expectWord("FROM");
            tr.table = tableName();
            tr.sql = QStringLiteral("DELETE FROM ") + quoteName(tr.table) + whereClause();
        } else if (acceptWord("INSERT")) {
            tr.kind = StatementKind::Insert;
            insertBody(tr);
        } else if (acceptWord("UPDATE")) {
            tr.kind = StatementKind::Update;
            tr.table = tableName();
            expectWord("SET");
            QStringList sets;
            do {
                const QString column = columnName();
                expectSymbol("=");
                sets << quoteName(column) + QStringLiteral(" = ") + render(*expression());
            } while (acceptSymbol(","));
            tr.sql = QStringLiteral("UPDATE ") + quoteName(tr.table) + QStringLiteral(" SET ") +
                     sets.join(QStringLiteral(", ")) + whereClause();
        } else {
            fail(QStringLiteral("SELECT, DELETE, INSERT or UPDATE"));
        }
        tail();
        return tr;
    }

    QString condition() {
        NodePtr e = expression();
        expectEnd();
        return render(*e);
    }

private:
    std::vector<Token> m_tokens;
    size_t m_pos = 0;
    int m_exprNames = 0;

    const Token &peek(size_t ahead = 0) const {
        const size_t i = m_pos + ahead;
        return i < m_tokens.size() ? m_tokens[i] : m_tokens.back();
    }
    bool isWord(const char *word, size_t ahead = 0) const {
        const Token &t = peek(ahead);
        return t.type == Tok::Word && t.text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
    }
    bool isSymbol(const char *sym, size_t ahead = 0) const {
        const Token &t = peek(ahead);
        return t.type == Tok::Symbol && t.text == QLatin1String(sym);
    }
    bool acceptWord(const char *word) {
        if (!isWord(word)) return false;
        ++m_pos;
        return true;
    }
    bool acceptSymbol(const char *sym) {
        if (!isSymbol(sym)) return false;
        ++m_pos;
        return true;
    }
    void expectWord(const char *word) {
        if (!acceptWord(word)) fail(QString::fromLatin1(word));
    }
    void expectSymbol(const char *sym) {
        if (!acceptSymbol(sym)) fail(QStringLiteral("\"%1\"").arg(QLatin1String(sym)));
    }
    void expectEnd() {
        if (peek().type != Tok::End) fail(QStringLiteral("the end of the statement"));
    }

    // Names the offending token by its kind; literals are not repeated in
    // the message, since they may come from a row.
    [[noreturn]] void fail(const QString &expected) const {
        const Token &t = peek();
        QString found;
        switch (t.type) {
        case Tok::End:
            found = QStringLiteral("the end of the text");
            break;
        case Tok::Word:
            found = QStringLiteral("\"%1\"").arg(t.text);
            break;
        case Tok::Name:
            found = QStringLiteral("a bracketed name");
            break;
        case Tok::String:
            found = QStringLiteral("a text literal");
            break;
        case Tok::Number:
            found = QStringLiteral("a number");
            break;
        case Tok::Symbol:
            found = QStringLiteral("\"%1\"").arg(t.text);
            break;
        }
        syntaxError(
            QStringLiteral("expected %1 but found %2 at position %3").arg(expected, found).arg(t.pos));
    }

    void tail() {
        if (acceptWord("WITH")) {
            expectWord("OWNERACCESS");
            expectWord("OPTION");
        }
        acceptSymbol(";");
        expectEnd();
    }

    // A name as it may stand for a table or column: a plain word that is not a
    // keyword, or anything in brackets.
    bool atName(size_t ahead = 0) const {
        const Token &t = peek(ahead);
        return t.type == Tok::Name || (t.type == Tok::Word && !isReserved(t.text));
    }
    QString takeName(const QString &what) {
        if (!atName()) fail(what);
        return m_tokens[m_pos++].text;
    }
    QString tableName() { return takeName(QStringLiteral("a table name")); }
    QString columnName() { return takeName(QStringLiteral("a column name")); }

    QString whereClause() {
        return acceptWord("WHERE") ? QStringLiteral(" WHERE ") + render(*expression()) : QString();
    }

    SelectParts selectBody() {
        SelectParts parts;
        const bool distinct = acceptWord("DISTINCT");
        QStringList items;
        bool aggregate = false;
        if (acceptSymbol("*")) {
            parts.star = true;
            items << QStringLiteral("*");
        } else {
            do {
                NodePtr e = expression();
                aggregate = aggregate || hasAggregate(*e);
                QString alias;
                if (acceptWord("AS")) {
                    if (peek().type == Tok::String)
                        alias = m_tokens[m_pos++].text;
                    else
                        alias = takeName(QStringLiteral("a name after AS"));
                }
                QString name = alias;
                if (name.isEmpty() && e->kind == Node::Column) name = e->text;
                // An expression without a name is named as the dialect names it.
                if (name.isEmpty()) alias = name = QStringLiteral("Expr%1").arg(1000 + m_exprNames++);
                parts.itemNames << name;
                items << (alias.isEmpty() ? render(*e)
                                          : render(*e) + QStringLiteral(" AS ") + quoteName(alias));
            } while (acceptSymbol(","));
        }
        expectWord("FROM");
        parts.table = tableName();
        QString sql = QStringLiteral("SELECT ") + (distinct ? QStringLiteral("DISTINCT ") : QString()) +
                      items.join(QStringLiteral(", ")) + QStringLiteral(" FROM ") + quoteName(parts.table);
        sql += whereClause();
        bool grouped = distinct || aggregate;
        if (isWord("GROUP")) {
            ++m_pos;
            expectWord("BY");
            sql += QStringLiteral(" GROUP BY ") + expressionList();
            grouped = true;
        }
        if (acceptWord("HAVING")) {
            sql += QStringLiteral(" HAVING ") + render(*expression());
            grouped = true;
        }
        if (isWord("ORDER")) {
            ++m_pos;
            expectWord("BY");
            QStringList keys;
            do {
                QString key = render(*expression());
                if (acceptWord("DESC"))
                    key += QStringLiteral(" DESC");
                else if (acceptWord("ASC"))
                    key += QStringLiteral(" ASC");
                keys << key;
            } while (acceptSymbol(","));
            sql += QStringLiteral(" ORDER BY ") + keys.join(QStringLiteral(", "));
        }
        parts.sql = sql;
        parts.grouped = grouped;
        return parts;
    }

    void insertBody(Translation &tr) {
        expectWord("INTO");
        tr.table = tableName();
        if (acceptWord("IN")) {
            if (peek().type != Tok::String) fail(QStringLiteral("the path of a database in quotes"));
            tr.attachPath = m_tokens[m_pos++].text;
            if (tr.attachPath.isEmpty()) fail(QStringLiteral("a path"));
        }
        QStringList columns;
        if (acceptSymbol("(")) {
            do
                columns << columnName();
            while (acceptSymbol(","));
            expectSymbol(")");
        }
        QString target = QStringLiteral("INSERT INTO ") + quoteName(tr.table);
        if (acceptWord("SELECT")) {
            SelectParts select = selectBody();
            // Rows go into the columns of the same names, not by position.
            if (columns.isEmpty() && !select.star) columns = select.itemNames;
            tr.source = select.sql;
        } else if (acceptWord("VALUES")) {
            if (!tr.attachPath.isEmpty()) fail(QStringLiteral("SELECT after the path of another database"));
            expectSymbol("(");
            tr.source = QStringLiteral("VALUES (") + expressionList() + QLatin1Char(')');
            expectSymbol(")");
        } else {
            fail(QStringLiteral("SELECT or VALUES"));
        }
        tr.columns = columns;
        if (!columns.isEmpty()) {
            QStringList quoted;
            for (const QString &c : columns)
                quoted << quoteName(c);
            target += QStringLiteral(" (") + quoted.join(QStringLiteral(", ")) + QLatin1Char(')');
        }
        tr.sql = target + QLatin1Char(' ') + tr.source;
    }

    QString expressionList() {
        QStringList items;
        do
            items << render(*expression());
        while (acceptSymbol(","));
        return items.join(QStringLiteral(", "));
    }

    // Precedence, loosest first: Or; And; Not; comparisons (= <> < > <= >=
    // Like, Is [Not] Null, Between, In); &; + -; Mod; \; * /; unary -; ^.
    NodePtr expression() { return orExpr(); }

    NodePtr orExpr() {
        NodePtr left = andExpr();
        while (acceptWord("OR"))
            left = makeBinary(QStringLiteral("OR"), std::move(left), andExpr());
        return left;
    }
    NodePtr andExpr() {
        NodePtr left = notExpr();
        while (acceptWord("AND"))
            left = makeBinary(QStringLiteral("AND"), std::move(left), notExpr());
        return left;
    }
    NodePtr notExpr() {
        if (acceptWord("NOT")) {
            auto node = makeNode(Node::Unary, QStringLiteral("NOT"));
            node->args.push_back(notExpr());
            return node;
        }
        return comparison();
    }
    NodePtr comparison() {
        NodePtr left = concat();
        for (;;) {
            static const char *const ops[] = {"=", "<>", "<", ">", "<=", ">="};
            bool matched = false;
            for (const char *op : ops) {
                if (acceptSymbol(op)) {
                    left = makeBinary(QLatin1String(op), std::move(left), concat());
                    matched = true;
                    break;
                }
            }
            if (matched) continue;
            bool negated = false;
            if (isWord("NOT") && (isWord("LIKE", 1) || isWord("BETWEEN", 1) || isWord("IN", 1))) {
                ++m_pos;
                negated = true;
            }
            NodePtr node;
            if (acceptWord("LIKE")) {
                node = makeNode(Node::Like);
                node->args.push_back(std::move(left));
                node->args.push_back(concat());
            } else if (acceptWord("BETWEEN")) {
                node = makeNode(Node::Between);
                node->args.push_back(std::move(left));
                node->args.push_back(concat());
                expectWord("AND");
                node->args.push_back(concat());
            } else if (acceptWord("IN")) {
                node = makeNode(Node::InList);
                node->args.push_back(std::move(left));
                expectSymbol("(");
                do
                    node->args.push_back(expression());
                while (acceptSymbol(","));
                expectSymbol(")");
            } else if (!negated && acceptWord("IS")) {
                node = makeNode(Node::IsNull);
                node->negated = acceptWord("NOT");
                expectWord("NULL");
                node->args.push_back(std::move(left));
                left = std::move(node);
                continue;
            } else {
                return left;
            }
            node->negated = negated;
            left = std::move(node);
        }
    }
    NodePtr concat() {
        NodePtr left = additive();
        while (acceptSymbol("&"))
            left = makeBinary(QStringLiteral("&"), std::move(left), additive());
        return left;
    }
    NodePtr additive() {
        NodePtr left = modulo();
        for (;;) {
            if (acceptSymbol("+"))
                left = makeBinary(QStringLiteral("+"), std::move(left), modulo());
            else if (acceptSymbol("-"))
                left = makeBinary(QStringLiteral("-"), std::move(left), modulo());
            else
                return left;
        }
    }
    NodePtr modulo() {
        NodePtr left = intDivision();
        while (acceptWord("MOD"))
            left = makeBinary(QStringLiteral("MOD"), std::move(left), intDivision());
        return left;
    }
    NodePtr intDivision() {
        NodePtr left = multiplicative();
        while (acceptSymbol("\\"))
            left = makeBinary(QStringLiteral("\\"), std::move(left), multiplicative());
        return left;
    }
    NodePtr multiplicative() {
        NodePtr left = unary();
        for (;;) {
            if (acceptSymbol("*"))
                left = makeBinary(QStringLiteral("*"), std::move(left), unary());
            else if (acceptSymbol("/"))
                left = makeBinary(QStringLiteral("/"), std::move(left), unary());
            else
                return left;
        }
    }
    NodePtr unary() {
        if (acceptSymbol("-")) {
            auto node = makeNode(Node::Unary, QStringLiteral("-"));
            node->args.push_back(unary());
            return node;
        }
        if (acceptSymbol("+")) return unary();
        return power();
    }
    // ^ binds tighter than negation (-2^2 is -4) but its exponent may carry a sign.
    NodePtr power() {
        NodePtr left = primary();
        while (acceptSymbol("^"))
            left = makeBinary(QStringLiteral("^"), std::move(left), exponent());
        return left;
    }
    NodePtr exponent() {
        if (acceptSymbol("-")) {
            auto node = makeNode(Node::Unary, QStringLiteral("-"));
            node->args.push_back(exponent());
            return node;
        }
        return primary();
    }
    NodePtr primary() {
        const Token &t = peek();
        switch (t.type) {
        case Tok::Number:
            ++m_pos;
            return makeNode(Node::Literal, t.text);
        case Tok::String:
            ++m_pos;
            return makeNode(Node::Literal, quoteText(t.text));
        case Tok::Symbol:
            if (acceptSymbol("(")) {
                NodePtr inner = expression();
                expectSymbol(")");
                return inner;
            }
            break;
        case Tok::Name:
            return column();
        case Tok::Word:
            if (acceptWord("TRUE")) return makeNode(Node::Literal, QStringLiteral("-1"));
            if (acceptWord("FALSE")) return makeNode(Node::Literal, QStringLiteral("0"));
            if (acceptWord("NULL")) return makeNode(Node::Literal, QStringLiteral("NULL"));
            if (isReserved(t.text)) break;
            if (isSymbol("(", 1)) return call();
            return column();
        case Tok::End:
            break;
        }
        fail(QStringLiteral("an expression"));
    }
    NodePtr column() {
        auto node = makeNode(Node::Column, m_tokens[m_pos++].text);
        if (isSymbol(".") && atName(1)) {
            ++m_pos;
            node->qualifier = node->text;
            node->text = m_tokens[m_pos++].text;
        }
        return node;
    }
    NodePtr call() {
        const QString name = m_tokens[m_pos].text;
        const FunctionSpec *spec = nullptr;
        for (const FunctionSpec &f : kFunctions) {
            if (name.compare(QLatin1String(f.jet), Qt::CaseInsensitive) == 0) spec = &f;
        }
        if (!spec) fail(QStringLiteral("a known function"));
        m_pos += 2; // name and "("
        auto node = makeNode(Node::Call, QLatin1String(spec->sqlite));
        node->aggregate = spec->aggregate;
        if (spec->aggregate && std::strcmp(spec->jet, "Count") == 0 && acceptSymbol("*"))
            node->args.push_back(makeNode(Node::Star));
        else
            node->args.push_back(expression());
        expectSymbol(")");
        return node;
    }
};

// ---------------------------------------------------------------- SQL functions

constexpr const char *kMismatch = "Data type mismatch in expression.";
constexpr const char *kOverflow = "Overflow.";
constexpr const char *kDivisionByZero = "Division by zero.";

struct Number {
    enum Kind { Null, Whole, Real } kind = Null;
    sqlite3_int64 whole = 0;
    double real = 0;
};

// Reads a numeric argument; text that looks like a number counts as one.
// Returns false after reporting a mismatch.
bool readNumber(sqlite3_context *ctx, sqlite3_value *value, Number &out) {
    switch (sqlite3_value_numeric_type(value)) {
    case SQLITE_NULL:
        out.kind = Number::Null;
        return true;
    case SQLITE_INTEGER:
        out.kind = Number::Whole;
        out.whole = sqlite3_value_int64(value);
        return true;
    case SQLITE_FLOAT:
        out.kind = Number::Real;
        out.real = sqlite3_value_double(value);
        return true;
    default:
        sqlite3_result_error(ctx, kMismatch, -1);
        return false;
    }
}

bool fitsWhole(double d) {
    return d >= -9223372036854775808.0 && d < 9223372036854775808.0;
}

// The operand rule of \ and Mod: a number rounds to the nearest whole number,
// halves to the even one (2.5 -> 2, 3.5 -> 4).
bool roundOperand(sqlite3_context *ctx, const Number &n, sqlite3_int64 &out) {
    if (n.kind == Number::Whole) {
        out = n.whole;
        return true;
    }
    const double r = std::nearbyint(n.real); // the default rounding mode breaks ties to even
    if (!std::isfinite(r) || !fitsWhole(r)) {
        sqlite3_result_error(ctx, kOverflow, -1);
        return false;
    }
    out = static_cast<sqlite3_int64>(r);
    return true;
}

void resultWholeOrReal(sqlite3_context *ctx, double d) {
    if (fitsWhole(d))
        sqlite3_result_int64(ctx, static_cast<sqlite3_int64>(d));
    else
        sqlite3_result_double(ctx, d);
}

// Int(x): the largest whole number not above x; Fix(x): x without its fraction.
template <bool Floor> void wholePart(sqlite3_context *ctx, int, sqlite3_value **argv) {
    Number n;
    if (!readNumber(ctx, argv[0], n)) return;
    if (n.kind == Number::Null)
        sqlite3_result_null(ctx);
    else if (n.kind == Number::Whole)
        sqlite3_result_int64(ctx, n.whole);
    else
        resultWholeOrReal(ctx, Floor ? std::floor(n.real) : std::trunc(n.real));
}

// Shared by \ and Mod: both operands rounded, the divisor not zero.
bool wholeOperands(sqlite3_context *ctx, sqlite3_value **argv, sqlite3_int64 &a, sqlite3_int64 &b) {
    Number x, y;
    if (!readNumber(ctx, argv[0], x) || !readNumber(ctx, argv[1], y)) return false;
    if (x.kind == Number::Null || y.kind == Number::Null) {
        sqlite3_result_null(ctx);
        return false;
    }
    if (!roundOperand(ctx, x, a) || !roundOperand(ctx, y, b)) return false;
    if (b == 0) {
        sqlite3_result_error(ctx, kDivisionByZero, -1);
        return false;
    }
    return true;
}

void integerDivide(sqlite3_context *ctx, int, sqlite3_value **argv) {
    sqlite3_int64 a = 0, b = 0;
    if (!wholeOperands(ctx, argv, a, b)) return;
    if (a == std::numeric_limits<sqlite3_int64>::min() && b == -1) {
        sqlite3_result_error(ctx, kOverflow, -1);
        return;
    }
    sqlite3_result_int64(ctx, a / b); // C++ truncates toward zero
}

void modulo(sqlite3_context *ctx, int, sqlite3_value **argv) {
    sqlite3_int64 a = 0, b = 0;
    if (!wholeOperands(ctx, argv, a, b)) return;
    sqlite3_result_int64(ctx, b == -1 ? 0 : a % b); // the remainder keeps the sign of a
}

void power(sqlite3_context *ctx, int, sqlite3_value **argv) {
    Number x, y;
    if (!readNumber(ctx, argv[0], x) || !readNumber(ctx, argv[1], y)) return;
    if (x.kind == Number::Null || y.kind == Number::Null) {
        sqlite3_result_null(ctx);
        return;
    }
    const double base = x.kind == Number::Whole ? static_cast<double>(x.whole) : x.real;
    const double exp = y.kind == Number::Whole ? static_cast<double>(y.whole) : y.real;
    const double r = std::pow(base, exp);
    if (!std::isfinite(r))
        sqlite3_result_error(ctx, kOverflow, -1);
    else
        sqlite3_result_double(ctx, r);
}

// & joins texts; a Null side counts as empty, two Null sides give Null.
void concatenate(sqlite3_context *ctx, int, sqlite3_value **argv) {
    const bool nullA = sqlite3_value_type(argv[0]) == SQLITE_NULL;
    const bool nullB = sqlite3_value_type(argv[1]) == SQLITE_NULL;
    if (nullA && nullB) {
        sqlite3_result_null(ctx);
        return;
    }
    std::string joined;
    for (int i = 0; i < 2; ++i) {
        if (sqlite3_value_type(argv[i]) == SQLITE_NULL) continue;
        const auto *text = sqlite3_value_text(argv[i]);
        joined.append(reinterpret_cast<const char *>(text),
                      static_cast<size_t>(sqlite3_value_bytes(argv[i])));
    }
    sqlite3_result_text64(ctx, joined.data(), joined.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

QChar fold(QChar c) {
    return c.toCaseFolded();
}

// Like's patterns: * any run, ? any one character, # one digit, [abc], [a-z]
// and [!abc] one character of (or not of) a set; letters match in either case.
bool likeMatch(const QString &s, qsizetype si, const QString &p, qsizetype pi) {
    while (pi < p.size()) {
        const QChar c = p[pi];
        if (c == QLatin1Char('*')) {
            while (pi < p.size() && p[pi] == QLatin1Char('*'))
                ++pi;
            if (pi == p.size()) return true;
            for (qsizetype k = si; k <= s.size(); ++k) {
                if (likeMatch(s, k, p, pi)) return true;
            }
            return false;
        }
        if (si >= s.size()) return false;
        const QChar sc = s[si];
        if (c == QLatin1Char('?')) {
        } else if (c == QLatin1Char('#')) {
            if (!sc.isDigit()) return false;
        } else if (c == QLatin1Char('[')) {
            const qsizetype close = p.indexOf(QLatin1Char(']'), pi + 1);
            if (close < 0) return false;
            qsizetype k = pi + 1;
            const bool negate = k < close && p[k] == QLatin1Char('!');
            if (negate) ++k;
            bool inSet = false;
            for (; k < close; ++k) {
                if (k + 2 < close && p[k + 1] == QLatin1Char('-')) {
                    if (fold(sc) >= fold(p[k]) && fold(sc) <= fold(p[k + 2])) inSet = true;
                    k += 2;
                } else if (fold(sc) == fold(p[k])) {
                    inSet = true;
                }
            }
            if (inSet == negate) return false;
            pi = close;
        } else if (fold(c) != fold(sc)) {
            return false;
        }
        ++si;
        ++pi;
    }
    return si == s.size();
}

QString valueText(sqlite3_value *v) {
    return QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_value_text(v)), sqlite3_value_bytes(v));
}

void like(sqlite3_context *ctx, int, sqlite3_value **argv) {
    if (sqlite3_value_type(argv[0]) == SQLITE_NULL || sqlite3_value_type(argv[1]) == SQLITE_NULL) {
        sqlite3_result_null(ctx);
        return;
    }
    sqlite3_result_int(ctx, likeMatch(valueText(argv[0]), 0, valueText(argv[1]), 0) ? 1 : 0);
}

} // namespace

Translation Translate(const QString &jetSql) {
    return Parser(jetSql).statement();
}

QString TranslateCondition(const QString &criteria) {
    return Parser(criteria).condition();
}

int RegisterFunctions(sqlite3 *db) {
    struct Fn {
        const char *name;
        int args;
        void (*fn)(sqlite3_context *, int, sqlite3_value **);
    };
    static const Fn fns[] = {
        {"jet_int", 1, wholePart<true>}, {"jet_fix", 1, wholePart<false>},
        {"jet_idiv", 2, integerDivide},  {"jet_mod", 2, modulo},
        {"jet_pow", 2, power},           {"jet_concat", 2, concatenate},
        {"jet_like", 2, like},
    };
    for (const Fn &f : fns) {
        const int rc = sqlite3_create_function_v2(db, f.name, f.args,
                                                  SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS,
                                                  nullptr, f.fn, nullptr, nullptr, nullptr);
        if (rc != SQLITE_OK) return rc;
    }
    return SQLITE_OK;
}

} // namespace km::JetSql
