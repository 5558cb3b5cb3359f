// The person's side of every dialog, on the command line: messages go to
// stderr, questions take the answer that leaves things as they are (Cancel,
// No where it is the default), and the passphrase dialog reads its entries
// from the passphrase source.
#pragma once

#include <optional>

#include <QStringList>
#include <QTextStream>

#include "platform/SecureBytes.h"
#include "ui/Dialogs.h"

namespace cli {

// Reading what the person hands kmd, within bounds: at most MaxInputBytes
// (64 KiB) of a file or of one line of standard input, UTF-8 only. Each
// returns nothing and says why (in *why) when the input is refused; what was
// read is wiped on the way.
std::optional<QString> ReadTextFile(const QString &path, const QString &what, QString *why);
// One line of standard input, without its line break; without echo, after
// the prompt, when standard input is a terminal.
std::optional<QString> ReadInputLine(const QString &prompt, QString *why);

// Where passphrases come from: lines of --passphrase-file (UTF-8, one
// trailing newline dropped), or the terminal without echo, or standard input
// when that is no terminal. The first entry answers every request for the
// present passphrase; the entries after it answer, in order, requests for a
// new one and its confirmation (a missing confirmation repeats the entry).
class PassphraseSource {
public:
    ~PassphraseSource();
    // Reads the file; false (with why) if it cannot be read.
    bool loadFile(const QString &path, QString *why);
    // The first entry is a new passphrase already (kmd create).
    void startWithNew() { m_newIndex = 0; }

    QString current(const QString &prompt);
    QString fresh(const QString &prompt, bool confirmation);
    bool fromFile() const { return m_fromFile; }
    qsizetype fileEntries() const { return m_lines.size(); }
    // Why an entry from the terminal or standard input was refused ("" if none).
    QString refusal() const { return m_refusal; }

private:
    QString ask(const QString &prompt);
    bool m_fromFile = false;
    QStringList m_lines;
    int m_newIndex = 1;
    QString m_current;
    bool m_haveCurrent = false;
    QString m_lastFresh;
    QString m_refusal;
};

class CliDialogs : public km::Dialogs {
public:
    CliDialogs(QTextStream &err, PassphraseSource &source) : m_err(err), m_source(source) {}
    km::Answer message(const QString &text, km::Buttons buttons, km::Answer defaultButton, km::Icon icon,
                       const QString &title) override;
    bool showModal(km::WindowModel &window) override;
    void standBy(int ms) override {}

    PassphraseSource &source() { return m_source; }

    // Answer of the repair question and similar Yes/No questions.
    bool answerYes = false;

private:
    QTextStream &m_err;
    PassphraseSource &m_source;
};

} // namespace cli
