// kmd: the store on the command line, for scripts, tests and benchmarks.
// Output is one record a line, tab-separated; errors go to stderr in the
// program's own words with a non-zero exit status.
#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

#include "cli/Cli.h"
#include "platform/Engine.h"
#include "platform/Process.h"
#include "ui/Dialogs.h"

namespace {

// Options that take the next argument as their value.
const QStringList kValueOptions = {"passphrase-file", "category", "kind"};

void usage(QTextStream &out) {
    out << "usage: kmd COMMAND STORE [ARGS...] [--passphrase-file FILE]\n"
           "Works on a Kestrelmondarin store (.kmd) without a window.\n"
           "The passphrase is read from the terminal without echo, or from FILE\n"
           "(UTF-8, one trailing newline dropped).\n\nCommands:\n";
    QList<cli::Command> commands = cli::Commands();
    std::sort(commands.begin(), commands.end(), [](const auto &a, const auto &b) { return a.name < b.name; });
    for (const cli::Command &c : commands)
        out << "  " << c.usage << "\n";
    out.flush();
}

} // namespace

int main(int argc, char **argv) {
    km::DisableCoreDumps();
    km::KeepNewFilesPrivate();
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);

    QStringList args = app.arguments().mid(1);
    if (args.isEmpty() || args.first() == "--help" || args.first() == "-h" || args.first() == "help") {
        usage(args.isEmpty() ? err : out);
        return args.isEmpty() ? cli::ExitUsage : cli::ExitOk;
    }
    const QString name = args.takeFirst();
    cli::Context ctx;
    ctx.out = &out;
    ctx.err = &err;
    for (int i = 0; i < args.size(); ++i) {
        const QString &a = args.at(i);
        if (a.startsWith("--")) {
            const QString option = a.mid(2);
            if (kValueOptions.contains(option)) {
                if (i + 1 >= args.size())
                    return ctx.fail(QStringLiteral("Option %1 needs a value.").arg(a), cli::ExitUsage);
                ctx.options << a + "=" + args.at(++i);
            } else {
                ctx.options << a;
            }
        } else {
            ctx.positional << a;
        }
    }
    if (auto file = ctx.value("passphrase-file")) ctx.passphraseFile = *file;

    for (const cli::Command &c : cli::Commands()) {
        if (c.name != name) continue;
        int status = cli::ExitFailure;
        try {
            status = c.run(ctx);
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
        out.flush();
        return status;
    }
    ctx.fail(QStringLiteral("Unknown command: %1").arg(name), cli::ExitUsage);
    usage(err);
    return cli::ExitUsage;
}
