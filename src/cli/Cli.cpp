#include "cli/Cli.h"

#include <map>

namespace cli {

bool Context::flag(const QString &name) const {
    for (const QString &o : options)
        if (o == "--" + name || o.startsWith("--" + name + "=")) return true;
    return false;
}

std::optional<QString> Context::value(const QString &name) const {
    for (const QString &o : options)
        if (o.startsWith("--" + name + "=")) return o.mid(name.size() + 3);
    return std::nullopt;
}

int Context::fail(const QString &message, int status) const {
    if (err) {
        *err << message << Qt::endl;
        err->flush();
    }
    return status;
}

namespace {
QList<Command> &commandTable() {
    static QList<Command> table;
    return table;
}
std::map<int, SectionAdd> &addTable() {
    static std::map<int, SectionAdd> table;
    return table;
}
} // namespace

void Register(const Command &command) {
    commandTable().append(command);
}
const QList<Command> &Commands() {
    return commandTable();
}

void RegisterSectionAdd(int section, SectionAdd add) {
    addTable()[section] = std::move(add);
}
std::optional<SectionAdd> SectionAddFor(int section) {
    auto it = addTable().find(section);
    if (it == addTable().end()) return std::nullopt;
    return it->second;
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
