#include "cli/Cli.h"

#include <map>

#include "cli/CliDialogs.h"
#include "platform/SecureBytes.h"

namespace cli {

bool Context::flag(const QString &name) const {
    return parser && parser->isSet(name);
}

std::optional<QString> Context::value(const QString &name) const {
    if (!parser || !parser->isSet(name)) return std::nullopt;
    return parser->value(name);
}

std::optional<int> Context::intValue(const QString &name, bool *bad) const {
    const auto v = value(name);
    if (!v) return std::nullopt;
    bool ok = false;
    const int n = v->toInt(&ok);
    if (!ok) *bad = true;
    return n;
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

qsizetype Command::firstAssignment() const {
    qsizetype at = 0;
    for (const Argument &a : arguments) {
        if (a.name.contains(QLatin1Char('='))) return at;
        if (a.count != Argument::One) return -1;
        ++at;
    }
    return -1;
}

QString Printable(const QString &value) {
    QString out;
    out.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        const char16_t c = value.at(i).unicode();
        switch (c) {
        case u'\\':
            out += QLatin1String("\\\\");
            break;
        case u'\t':
            out += QLatin1String("\\t");
            break;
        case u'\n':
            out += QLatin1String("\\n");
            break;
        case u'\r':
            // The store's texts break lines with CR LF: one line break, one \n.
            if (i + 1 < value.size() && value.at(i + 1) == QLatin1Char('\n')) {
                out += QLatin1String("\\n");
                ++i;
            } else {
                out += QLatin1String("\\r");
            }
            break;
        case 0x2028:
        case 0x2029:
            out += QStringLiteral("\\u%1").arg(static_cast<int>(c), 4, 16, QLatin1Char('0'));
            break;
        default:
            if (c < 0x20 || (c >= 0x7f && c <= 0x9f))
                out += QLatin1String("\\x") +
                       QStringLiteral("%1").arg(static_cast<int>(c), 2, 16, QLatin1Char('0')).toUpper();
            else
                out += QChar(c);
        }
    }
    return out;
}

int ResolveValues(Context &ctx) {
    if (!ctx.command) return ExitOk;
    const qsizetype first = ctx.command->firstAssignment();
    if (first < 0) {
        if (!ctx.valuesFile.isEmpty())
            return ctx.fail(QStringLiteral("kmd %1 takes no values.").arg(ctx.command->name), ExitUsage);
        return ExitOk;
    }
    QString why;
    for (qsizetype i = first; i < ctx.positional.size(); ++i) {
        QString &item = ctx.positional[i];
        if (!item.endsWith(QLatin1String("=-")) || item.indexOf(QLatin1Char('=')) != item.size() - 2) continue;
        const QString name = item.left(item.size() - 2);
        std::optional<QString> value = ReadInputLine(name + QLatin1Char(':'), &why);
        if (!value) return ctx.fail(why);
        km::wipe(item);
        item = name + QLatin1Char('=') + *value;
        km::wipe(*value);
    }
    if (ctx.valuesFile.isEmpty()) return ExitOk;
    std::optional<QString> text = ReadTextFile(ctx.valuesFile, QStringLiteral("values file"), &why);
    if (!text) return ctx.fail(why);
    QStringList lines = text->split(QLatin1Char('\n'));
    km::wipe(*text);
    int status = ExitOk;
    for (QString &line : lines) {
        if (line.endsWith(QLatin1Char('\r'))) line.chop(1);
        if (status == ExitOk && !line.isEmpty()) {
            if (line.indexOf(QLatin1Char('=')) <= 0)
                status = ctx.fail(QStringLiteral("A line of the values file is not of the form NAME=VALUE."),
                                  ExitUsage);
            else
                ctx.positional << line;
        }
        km::wipe(line);
    }
    return status;
}

void WipeArguments(Context &ctx) {
    for (QString &item : ctx.positional)
        km::wipe(item);
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
std::map<int, SectionCommands> &sectionCommandTable() {
    static std::map<int, SectionCommands> table;
    return table;
}

void RegisterSectionCommands(int section, SectionCommands commands) {
    sectionCommandTable()[section] = std::move(commands);
}

std::optional<SectionCommands> SectionCommandsFor(int section) {
    auto it = sectionCommandTable().find(section);
    if (it == sectionCommandTable().end()) return std::nullopt;
    return it->second;
}

QStringList SectionAddUsages() {
    QStringList usages;
    for (const auto &[section, entry] : addTable())
        usages << entry.usage;
    return usages;
}

void RegisterSectionEdit(int section, SectionEdit edit, const QString &usage) {
    editTable()[section] = {std::move(edit), usage};
}
std::optional<SectionEdit> SectionEditFor(int section) {
    auto it = editTable().find(section);
    if (it == editTable().end()) return std::nullopt;
    return it->second.edit;
}
QStringList SectionEditUsages() {
    QStringList usages;
    for (const auto &[section, entry] : editTable())
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
