// The person's side of every dialog, on the command line: messages go to
// stderr, questions take the answer that leaves things as they are (Cancel,
// No where it is the default), and the passphrase dialog reads its entries
// from the passphrase source.
#pragma once

#include <QStringList>
#include <QTextStream>

#include "platform/SecureBytes.h"
#include "ui/Dialogs.h"

namespace cli {

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

private:
    QString ask(const QString &prompt);
    bool m_fromFile = false;
    QStringList m_lines;
    int m_newIndex = 1;
    QString m_current;
    bool m_haveCurrent = false;
    QString m_lastFresh;
};

class CliDialogs : public km::Dialogs {
public:
    CliDialogs(QTextStream &err, PassphraseSource &source) : m_err(err), m_source(source) {}
    km::Answer message(const QString &text, km::Buttons buttons, km::Answer defaultButton, km::Icon icon,
                       const QString &title) override;
    bool showModal(km::WindowModel &window) override;
    void standBy(int ms) override {}

    // Answer of the repair question and similar Yes/No questions.
    bool answerYes = false;

private:
    QTextStream &m_err;
    PassphraseSource &m_source;
};

} // namespace cli
