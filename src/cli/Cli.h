// The frame of kmd: parsed arguments, the output streams, the login to a
// store, and the table of commands. Each group of commands lives in its own
// file and registers itself with a static Registration.
#pragma once

#include <functional>
#include <optional>

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QString>
#include <QStringList>
#include <QTextStream>

namespace cli {

// Exit statuses. A usage error (an unknown command or option, a missing
// argument, a malformed field) is 64, as sysexits has it.
constexpr int ExitOk = 0;
constexpr int ExitFailure = 1;
constexpr int ExitWrongPassphrase = 2;
constexpr int ExitUsage = 64;

struct Command;

struct Context {
    QStringList positional;                     // arguments after the command name, options taken out
    const QCommandLineParser *parser = nullptr; // the command's options as parsed
    const Command *command = nullptr;
    QTextStream *out = nullptr; // one record a line
    QTextStream *err = nullptr; // the system's own messages
    QString passphraseFile;     // --passphrase-file FILE
    QString valuesFile;         // --values-file FILE

    bool flag(const QString &name) const;                    // --name given
    std::optional<QString> value(const QString &name) const; // --name VALUE or --name=VALUE
    // --name N as a number; none when absent. Sets *bad when it is no number.
    std::optional<int> intValue(const QString &name, bool *bad) const;
    // Writes the message to stderr and returns the status.
    int fail(const QString &message, int status = ExitFailure) const;
    // "usage: " and the command's synopsis on stderr; returns ExitUsage.
    int usageError() const;
};

// How a command uses the store. A command that only reads opens it
// read-only: it works on a store the person may only read, and leaves the
// file's bytes and modification time as they were.
enum class Access { Write, ReadOnly };

// Opens the store at path and logs in with the passphrase from
// --passphrase-file or the terminal. On failure prints the message and
// returns the exit status; on success returns 0 and the store is the
// session's (db::Store()) with its key table loaded until CloseSession.
int Login(Context &ctx, const QString &path, Access access = Access::Write);

// A value as kmd prints it, on one line whatever it holds: a backslash is
// written "\\", a line break (CR LF or LF) "\n", a lone CR "\r", a tab "\t",
// every other control character "\xHH" and the Unicode line and paragraph
// separators "\u2028" and "\u2029". No value can pass for a column or a
// record line of its own. Every command prints record values through it.
QString Printable(const QString &value);

// The most kmd reads of a passphrase file, a values file, or one line of
// standard input.
constexpr qsizetype MaxInputBytes = 64 * 1024;

// Values kept off the command line, where every local user can read them
// (/proc/PID/cmdline): an assignment NAME=- takes the next line of standard
// input (without echo on a terminal), and the NAME=VALUE lines of
// --values-file FILE are added after the assignments given. Values from
// standard input are read before any passphrase from it. Returns 0, or the
// status after the message.
int ResolveValues(Context &ctx);
// Wipes the arguments, which may hold such values now.
void WipeArguments(Context &ctx);
// Closes the session's store (saving its settings rows only where a command
// changed them) and wipes every key.
void CloseSession();
void KeepSettingsOnClose();
// The store file test that comes before a login: 0, or the exit status after
// the message ("File format not recognized." for a file that is no store).
int TestStoreFile(Context &ctx, const QString &path);

// A positional argument of a command: one, one or more, or any number.
struct Argument {
    enum Count { One, OneOrMore, AnyNumber };
    QString name; // as in the synopsis: STORE, SECTION, NAME=VALUE
    QString description;
    Count count = One;
};

struct Command {
    QString name;
    QString description; // what it does, for kmd NAME --help
    QList<Argument> arguments;
    QList<QCommandLineOption> options; // besides --passphrase-file and --help
    // Called with options parsed and as many positional arguments as
    // arguments asks for; anything else is a usage error before it.
    std::function<int(Context &)> run;
    // Text after the options and arguments in kmd NAME --help, if any.
    std::function<QString()> moreHelp = {};

    // "kmd list STORE SECTION [--category ID] [--kind K] [--show-private]"
    QString synopsis() const;
    // Where the NAME=VALUE assignments begin among the positional arguments;
    // -1 for a command that takes none.
    qsizetype firstAssignment() const;
    // Whether n positional arguments fit the command's arguments.
    bool takes(qsizetype n) const;
};

// The STORE argument most commands take.
Argument StoreArgument();

void Register(const Command &command);
const QList<Command> &Commands();

struct Registration {
    explicit Registration(const Command &command) { Register(command); }
};

// Section-specific halves of the record commands (add), by section code.
// usage is the section's fields, as in "kmd add STORE 14 Subject=... [Memo=...]".
using SectionAdd = std::function<int(Context &, const QStringList &assignments)>;
void RegisterSectionAdd(int section, SectionAdd add, const QString &usage);
std::optional<SectionAdd> SectionAddFor(int section);
// The usage of every section's add, by section code.
QStringList SectionAddUsages();

// Section-specific halves of kmd edit: the general command logs in, reads the
// row's section and hands the row id and the assignments to that section's
// edit. usage is as in "kmd edit STORE ID Subject=... [Memo=...]".
using SectionEdit = std::function<int(Context &, qint64 id, const QStringList &assignments)>;
void RegisterSectionEdit(int section, SectionEdit edit, const QString &usage);
std::optional<SectionEdit> SectionEditFor(int section);
// The usage of every section's edit, by section code.
QStringList SectionEditUsages();
// Section-specific halves of list and show, for sections the records'
// commands do not know: list runs after the arguments were checked, before
// the login; show once logged in, for a row of that section.
struct SectionCommands {
    std::function<int(Context &)> list;
    std::function<int(Context &, qint64 id)> show;
};
void RegisterSectionCommands(int section, SectionCommands commands);
std::optional<SectionCommands> SectionCommandsFor(int section);

// "name=value" assignments into pairs; a malformed one is an error.
std::optional<QList<QPair<QString, QString>>> ParseAssignments(const QStringList &items, QString *bad);

} // namespace cli

namespace km {
class RowSet;
}

namespace cli {
class CliDialogs;
// Installs the command line's dialogs; startWithNew: the first passphrase
// entry is a new one (kmd create).
CliDialogs &SetUpDialogs(Context &ctx, bool startWithNew);
} // namespace cli

namespace cli {

// Row checks of kmd check, by section code: the row set stands on a row of
// that section whose payload has been decrypted into clear; returns false
// and says why when the row's derived columns disagree with its record.
using SectionCheck = std::function<bool(km::RowSet &row, const QByteArray &clear, QString *why)>;
void RegisterSectionCheck(int section, SectionCheck check);
// The checks of kmd check on the session's store, keys loaded: a "fail" line
// for each row that fails, then the counts; ExitOk when none failed.
int CheckRows(Context &ctx);
std::optional<SectionCheck> SectionCheckFor(int section);

} // namespace cli
