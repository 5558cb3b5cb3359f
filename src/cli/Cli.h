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

    bool flag(const QString &name) const;                    // --name given
    std::optional<QString> value(const QString &name) const; // --name VALUE or --name=VALUE
    // Writes the message to stderr and returns the status.
    int fail(const QString &message, int status = ExitFailure) const;
    // "usage: " and the command's synopsis on stderr; returns ExitUsage.
    int usageError() const;
};

// Opens the store at path and logs in with the passphrase from
// --passphrase-file or the terminal. On failure prints the message and
// returns the exit status; on success returns 0 and the store is the
// session's (db::Store()) with its key table loaded until CloseSession.
int Login(Context &ctx, const QString &path);
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
