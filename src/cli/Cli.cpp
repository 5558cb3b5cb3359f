#include "cli/Cli.h"

#include <map>

namespace cli {

bool Context::flag(const QString &name) const {
    return parser && parser->isSet(name);
}

std::optional<QString> Context::value(const QString &name) const {
    if (!parser || !parser->isSet(name)) return std::nullopt;
    return parser->value(name);
}

int Context::fail(const QString &message, int status) const {
    if (err) {
        *err << message << Qt::endl;
        err->flush();
    }
    return status;
}

int Context::usageError() const {
    if (!command) return ExitUsage;
    return fail(QStringLiteral("usage: ") + command->synopsis(), ExitUsage);
}

QString Command::synopsis() const {
    QString line = QStringLiteral("kmd ") + name;
    for (const Argument &a : arguments) {
        switch (a.count) {
        case Argument::One:
            line += ' ' + a.name;
            break;
        case Argument::OneOrMore:
            line += ' ' + a.name + QStringLiteral("...");
            break;
        case Argument::AnyNumber:
            line += QStringLiteral(" [") + a.name + QStringLiteral("...]");
            break;
        }
    }
    for (const QCommandLineOption &o : options) {
        line += QStringLiteral(" [--") + o.names().constLast();
        if (!o.valueName().isEmpty()) line += ' ' + o.valueName();
        line += ']';
    }
    return line;
}

Argument StoreArgument() {
    return {QStringLiteral("STORE"), QStringLiteral("the store file (.kmd)")};
}

bool Command::takes(qsizetype n) const {
    qsizetype least = 0;
    bool open = false;
    for (const Argument &a : arguments) {
        if (a.count != Argument::AnyNumber) ++least;
        if (a.count != Argument::One) open = true;
    }
    return n >= least && (open || n == least);
}

namespace {
QList<Command> &commandTable() {
    static QList<Command> table;
    return table;
}
struct SectionAddEntry {
    SectionAdd add;
    QString usage;
};
std::map<int, SectionAddEntry> &addTable() {
    static std::map<int, SectionAddEntry> table;
    return table;
}
struct SectionEditEntry {
    SectionEdit edit;
    QString usage;
};
std::map<int, SectionEditEntry> &editTable() {
    static std::map<int, SectionEditEntry> table;
    return table;
}
} // namespace

void RegisterSectionEdit(int section, SectionEdit edit, const QString &usage) {
    editTable()[section] = {std::move(edit), usage};
}
std::optional<SectionEdit> SectionEditFor(int section) {
    auto it = editTable().find(section);
    if (it == editTable().end()) return std::nullopt;
    return it->second.edit;
}

void Register(const Command &command) {
    commandTable().append(command);
}
const QList<Command> &Commands() {
    return commandTable();
}

void RegisterSectionAdd(int section, SectionAdd add, const QString &usage) {
    addTable()[section] = {std::move(add), usage};
}
std::optional<SectionAdd> SectionAddFor(int section) {
    auto it = addTable().find(section);
    if (it == addTable().end()) return std::nullopt;
    return it->second.add;
}
QStringList SectionAddUsages() {
    QStringList usages;
    for (const auto &[section, entry] : addTable())
        usages << entry.usage;
    return usages;
}

std::optional<QList<QPair<QString, QString>>> ParseAssignments(const QStringList &items, QString *bad) {
    QList<QPair<QString, QString>> out;
    for (const QString &item : items) {
        const qsizetype eq = item.indexOf('=');
        if (eq <= 0) {
            if (bad) *bad = item;
            return std::nullopt;
        }
        out.append({item.left(eq), item.mid(eq + 1)});
    }
    return out;
}

} // namespace cli

namespace cli {

namespace {
std::map<int, SectionCheck> &checkTable() {
    static std::map<int, SectionCheck> table;
    return table;
}
} // namespace

void RegisterSectionCheck(int section, SectionCheck check) {
    checkTable()[section] = std::move(check);
}
std::optional<SectionCheck> SectionCheckFor(int section) {
    auto it = checkTable().find(section);
    if (it == checkTable().end()) return std::nullopt;
    return it->second;
}

} // namespace cli
