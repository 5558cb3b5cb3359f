#include "cli/CliDialogs.h"

#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <string>

#include <QFile>

#include "ui/LanguageUS.h"
#include "store/frmPW.h"

namespace cli {

namespace {

// One line from standard input; without echo when it is a terminal.
QString readSecretLine(const QString &prompt) {
    const bool tty = isatty(STDIN_FILENO);
    termios old{};
    if (tty) {
        std::fprintf(stderr, "%s ", prompt.toLocal8Bit().constData());
        std::fflush(stderr);
        tcgetattr(STDIN_FILENO, &old);
        termios quiet = old;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    std::string line;
    std::getline(std::cin, line);
    if (tty) {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &old);
        std::fputc('\n', stderr);
    }
    QString out = QString::fromUtf8(line.data(), static_cast<qsizetype>(line.size()));
    km::cleanse(line.data(), line.size());
    return out;
}

} // namespace

PassphraseSource::~PassphraseSource() {
    for (QString &l : m_lines)
        km::wipe(l);
    km::wipe(m_current);
    km::wipe(m_lastFresh);
}

bool PassphraseSource::loadFile(const QString &path, QString *why) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly)) {
        if (why) *why = QStringLiteral("Cannot read the passphrase file %1.").arg(path);
        return false;
    }
    QByteArray raw = f.readAll();
    QString text = QString::fromUtf8(raw);
    km::wipe(raw);
    if (text.endsWith(QLatin1Char('\n'))) text.chop(1);
    if (text.endsWith(QLatin1Char('\r'))) text.chop(1);
    m_lines = text.split(QLatin1Char('\n'));
    for (QString &l : m_lines)
        if (l.endsWith(QLatin1Char('\r'))) l.chop(1);
    km::wipe(text);
    m_fromFile = true;
    return true;
}

QString PassphraseSource::ask(const QString &prompt) {
    return readSecretLine(prompt);
}

QString PassphraseSource::current(const QString &prompt) {
    if (!m_haveCurrent) {
        m_current = m_fromFile ? m_lines.value(0) : ask(prompt);
        m_haveCurrent = true;
    }
    return m_current;
}

QString PassphraseSource::fresh(const QString &prompt, bool confirmation) {
    if (!m_fromFile) return ask(prompt);
    if (m_newIndex < m_lines.size()) {
        m_lastFresh = m_lines.at(m_newIndex++);
    } else if (!confirmation) {
        m_lastFresh.clear();
    }
    return m_lastFresh;
}

km::Answer CliDialogs::message(const QString &text, km::Buttons buttons, km::Answer defaultButton, km::Icon,
                               const QString &) {
    QString shown = text;
    shown.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    m_err << shown << Qt::endl;
    m_err.flush();
    switch (buttons) {
    case km::Buttons::OK:
        return km::Answer::OK;
    case km::Buttons::OKCancel:
        return km::Answer::Cancel;
    case km::Buttons::RetryCancel:
        return km::Answer::Cancel;
    case km::Buttons::YesNo:
    case km::Buttons::YesNoCancel:
        // A weak passphrase is the person's own choice: it is taken as given.
        if (answerYes || text == LanguageUS::MessageText(158)) return km::Answer::Yes;
        return km::Answer::No;
    case km::Buttons::AbortRetryIgnore:
        return km::Answer::Abort;
    }
    return defaultButton;
}

bool CliDialogs::showModal(km::WindowModel &window) {
    auto *pw = dynamic_cast<km::frmPW *>(&window);
    if (!pw) return false;
    // The length rule is the key chain's to enforce here: a short entry must
    // meet its message rather than a disabled OK button.
    pw->chkPwLength = false;
    const bool isNew = pw->chkConfirm;
    bool confirming = false;
    for (int guard = 0; guard < 8 && !pw->closeRequested; ++guard) {
        pw->txtInput = isNew ? m_source.fresh(pw->lblPrompt, confirming) : m_source.current(pw->lblPrompt);
        pw->txtInput_Change();
        pw->cmdOK_Click();
        confirming = isNew && !pw->closeRequested;
    }
    if (!pw->closeRequested) pw->cmdCancel_Click();
    return pw->acceptedResult;
}

} // namespace cli
