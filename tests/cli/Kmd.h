// kmd as scripts meet it: the built program in a child process, in a scratch
// folder, with its output, error output and exit status collected.
#pragma once

#include <gtest/gtest.h>

#include <ostream>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

namespace km::test {

struct KmdResult {
    int status = -1; // -1: kmd did not end by itself (a crash, a sanitizer abort, a hang)
    QString out;
    QString err;

    QStringList lines() const { return out.split(QLatin1Char('\n'), Qt::SkipEmptyParts); }
};

inline void PrintTo(const KmdResult &r, std::ostream *os) {
    *os << "status " << r.status << "\nstdout:\n"
        << r.out.toStdString() << "stderr:\n"
        << r.err.toStdString();
}

// A scratch folder holding a store made by "kmd create" and its passphrase
// file. Commands run in the folder, so paths in messages are as given.
class KmdScratch {
public:
    static constexpr const char *Passphrase = "Correct-Horse-9";

    explicit KmdScratch(bool withStore = true) {
        EXPECT_TRUE(dir.isValid());
        write(QStringLiteral("pass"), QString::fromLatin1(Passphrase) + QLatin1Char('\n'));
        if (withStore) {
            const KmdResult made = run({QStringLiteral("create"), store});
            EXPECT_EQ(made.status, 0) << made.err.toStdString();
        }
    }

    // Writes a file in the folder (a passphrase file, a file that is no store).
    void write(const QString &name, const QString &text) {
        QFile f(dir.filePath(name));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(text.toUtf8());
    }
    QString path(const QString &name) const { return dir.filePath(name); }

    // kmd args --passphrase-file passFile; with an empty passFile no
    // passphrase file, and standard input is empty.
    KmdResult run(const QStringList &args, const QString &passFile = QStringLiteral("pass")) const {
        QStringList all = args;
        if (!passFile.isEmpty()) all << QStringLiteral("--passphrase-file") << passFile;
        QProcess p;
        p.setWorkingDirectory(dir.path());
        p.setStandardInputFile(QProcess::nullDevice());
        p.start(QStringLiteral(KM_KMD_PATH), all);
        KmdResult r;
        if (!p.waitForFinished(60000)) {
            p.kill();
            p.waitForFinished();
            ADD_FAILURE() << "kmd did not finish: " << all.join(QLatin1Char(' ')).toStdString();
        }
        r.out = QString::fromUtf8(p.readAllStandardOutput());
        r.err = QString::fromUtf8(p.readAllStandardError());
        if (p.exitStatus() == QProcess::NormalExit) r.status = p.exitCode();
        return r;
    }
    KmdResult runWithout(const QStringList &args) const { return run(args, QString()); }

    QTemporaryDir dir;
    const QString store = QStringLiteral("s.kmd");
};

} // namespace km::test
