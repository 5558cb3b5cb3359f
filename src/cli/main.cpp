// kmd: the store on the command line, for scripts, tests and benchmarks.
// Output is one record a line, tab-separated; errors go to stderr in the
// program's own words with a non-zero exit status.
//
// The first argument names the command, and each command parses its own
// arguments and options: kmd COMMAND --help lists them. --passphrase-file and
// --help may also come before the command.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <algorithm>

#include "cli/Cli.h"
#include "platform/Engine.h"
#include "platform/Process.h"
#include "ui/Dialogs.h"

namespace {

QCommandLineOption passphraseFileOption() {
    return {QStringLiteral("passphrase-file"),
            QStringLiteral("Reads the passphrase from FILE instead of the terminal: UTF-8, one trailing "
                           "newline dropped; for passwd three lines, the present one and the new one twice."),
            QStringLiteral("FILE")};
}

QCommandLineOption valuesFileOption() {
    return {QStringLiteral("values-file"),
            QStringLiteral("Reads NAME=VALUE lines (UTF-8) from FILE, after the NAME=VALUE arguments. A value "
                           "given as NAME=- is read from standard input instead, one line (without echo on a "
                           "terminal), before any passphrase from it. Both keep secret values (a PIN, a "
                           "password) off the command line, which every local user can read while kmd runs."),
            QStringLiteral("FILE")};
}

QCommandLineOption helpOption() {
    return {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Shows this help.")};
}

// The parser's help under a first line of our own: QCommandLineParser names
// the program by the path it was started with and knows nothing of commands.
QString helpText(const QCommandLineParser &parser, const QString &usage) {
    const QString text = parser.helpText();
    const qsizetype eol = text.indexOf(QLatin1Char('\n'));
    return QStringLiteral("Usage: ") + usage + (eol < 0 ? QString() : text.mid(eol));
}

QString globalHelp(const QCommandLineParser &parser) {
    QString text = helpText(parser, QStringLiteral("kmd COMMAND STORE [ARGS...] [--passphrase-file FILE]"));
    text += QStringLiteral("\nCommands:\n");
    QList<cli::Command> commands = cli::Commands();
    std::sort(commands.begin(), commands.end(), [](const auto &a, const auto &b) { return a.name < b.name; });
    for (const cli::Command &c : commands)
        text += QStringLiteral("  ") + c.synopsis() + QLatin1Char('\n');
    text += QStringLiteral("\nkmd COMMAND --help describes a command, its arguments and options.\n");
    return text;
}

void setUpGlobal(QCommandLineParser &parser) {
    parser.setApplicationDescription(
        QStringLiteral("Works on a Kestrelmondarin store (.kmd) without a window.\n"
                       "The passphrase is read from the terminal without echo, or from FILE.\n"
                       "Secret values belong not on the command line, where every local user can read\n"
                       "them while kmd runs: NAME=- reads a value from standard input, and\n"
                       "--values-file FILE reads NAME=VALUE lines (kmd add --help).\n"
                       "Printed values stay on their line: tab, CR, LF and other control characters\n"
                       "are written \\t, \\r, \\n, \\xHH, a backslash \\\\.\n"
                       "Exit status: 0 done, 1 failed, 2 wrong passphrase, 64 usage error."));
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    parser.addOption(passphraseFileOption());
    parser.addOption(helpOption());
    parser.addPositionalArgument(QStringLiteral("COMMAND"), QStringLiteral("one of the commands below"),
                                 QStringLiteral("COMMAND"));
}

// The text in lines of at most width characters, broken at spaces: the
// parser wraps the options' descriptions but not the command's.
QString wrapped(const QString &text, qsizetype width = 79) {
    QString out;
    qsizetype lineLength = 0;
    for (const QString &word : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        if (lineLength > 0 && lineLength + 1 + word.size() > width) {
            out += QLatin1Char('\n');
            lineLength = 0;
        } else if (lineLength > 0) {
            out += QLatin1Char(' ');
            ++lineLength;
        }
        out += word;
        lineLength += word.size();
    }
    return out;
}

void setUpCommand(QCommandLineParser &parser, const cli::Command &command) {
    parser.setApplicationDescription(wrapped(command.description));
    parser.addOptions(command.options);
    if (command.firstAssignment() >= 0) parser.addOption(valuesFileOption());
    parser.addOption(passphraseFileOption());
    parser.addOption(helpOption());
    for (const cli::Argument &a : command.arguments)
        parser.addPositionalArgument(a.name, a.description);
}

QString commandHelp(const QCommandLineParser &parser, const cli::Command &command) {
    QString text = helpText(parser, command.synopsis() + QStringLiteral(" [--passphrase-file FILE]"));
    if (command.moreHelp) text += QLatin1Char('\n') + command.moreHelp() + QLatin1Char('\n');
    return text;
}

const cli::Command *findCommand(const QString &name) {
    for (const cli::Command &c : cli::Commands())
        if (c.name == name) return &c;
    return nullptr;
}

int run(const cli::Command &command, cli::Context &ctx) {
    int status = cli::ExitFailure;
    try {
        status = command.run(ctx);
    } catch (const km::ProgramEnd &end) {
        status = end.code == 0 ? cli::ExitFailure : end.code;
    } catch (const km::EngineError &e) {
        ctx.fail(e.description());
        status = cli::ExitFailure;
    }
    try {
        cli::CloseSession();
    } catch (...) {
        // The keys are wiped before anything that could fail here.
    }
    return status;
}

} // namespace

int main(int argc, char **argv) {
    km::DisableCoreDumps();
    km::KeepNewFilesPrivate();
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    cli::Context ctx;
    ctx.out = &out;
    ctx.err = &err;

    QCommandLineParser global;
    setUpGlobal(global);
    if (!global.parse(app.arguments()))
        return ctx.fail(QStringLiteral("kmd: %1\nkmd --help lists the commands.").arg(global.errorText()),
                        cli::ExitUsage);
    QStringList args = global.positionalArguments();
    // "kmd help" is kmd --help, "kmd help COMMAND" is kmd COMMAND --help.
    const bool helpWord = args.value(0) == QLatin1String("help");
    if (global.isSet(helpOption()) || (helpWord && args.size() == 1)) {
        out << globalHelp(global);
        return cli::ExitOk;
    }
    if (args.isEmpty()) {
        err << globalHelp(global);
        return cli::ExitUsage;
    }
    if (helpWord) args.removeFirst();
    const QString name = args.takeFirst();
    const cli::Command *command = findCommand(name);
    if (!command)
        return ctx.fail(QStringLiteral("Unknown command: %1\nkmd --help lists the commands.").arg(name),
                        cli::ExitUsage);

    QCommandLineParser parser;
    setUpCommand(parser, *command);
    ctx.command = command;
    if (!parser.parse(QStringList{QStringLiteral("kmd ") + name} + args)) {
        ctx.fail(QStringLiteral("kmd %1: %2").arg(name, parser.errorText()));
        return ctx.usageError();
    }
    if (helpWord || parser.isSet(helpOption())) {
        out << commandHelp(parser, *command);
        return cli::ExitOk;
    }
    ctx.parser = &parser;
    ctx.positional = parser.positionalArguments();
    const QCommandLineOption passphraseFile = passphraseFileOption();
    ctx.passphraseFile =
        parser.isSet(passphraseFile) ? parser.value(passphraseFile) : global.value(passphraseFile);
    if (command->firstAssignment() >= 0 && parser.isSet(QStringLiteral("values-file")))
        ctx.valuesFile = parser.value(QStringLiteral("values-file"));
    // Assignments may come from the values file alone.
    const bool takesBefore = command->takes(ctx.positional.size());
    if (const int resolved = cli::ResolveValues(ctx)) {
        cli::WipeArguments(ctx);
        return resolved;
    }
    if (!command->takes(ctx.positional.size()) || (!takesBefore && ctx.valuesFile.isEmpty())) {
        cli::WipeArguments(ctx);
        return ctx.usageError();
    }

    const int status = run(*command, ctx);
    cli::WipeArguments(ctx);
    out.flush();
    return status;
}
