#include "cli/CliDialogs.h"

#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include "cli/Cli.h"
#include "ui/LanguageUS.h"
#include "store/frmPW.h"

namespace cli {

std::optional<QString> ReadInputLine(const QString &prompt, QString *why) {
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
    // Reserved at its full size, so the line never moves and leaves a copy behind.
    std::string line;
    line.reserve(static_cast<std::size_t>(MaxInputBytes) + 1);
    bool tooLong = false;
    for (int c; (c = std::getchar()) != EOF && c != '\n';) {
        if (line.size() >= static_cast<std::size_t>(MaxInputBytes)) {
            tooLong = true;
            break;
        }
        line.push_back(static_cast<char>(c));
    }
    if (tty) {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &old);
        std::fputc('\n', stderr);
    }
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::optional<QString> out;
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(QByteArrayView(line.data(), static_cast<qsizetype>(line.size())));
    km::cleanse(line.data(), line.capacity());
    if (tooLong) {
        if (why) *why = QStringLiteral("The line read from standard input is longer than 64 KiB.");
    } else if (utf8.hasError()) {
        if (why) *why = QStringLiteral("The line read from standard input is not UTF-8 text.");
    } else {
        out = text;
    }
    km::wipe(text);
    return out;
}

std::optional<QString> ReadTextFile(const QString &path, const QString &what, QString *why) {
    const QFileInfo info(path);
    if (info.exists() && info.isDir()) {
        if (why) *why = QStringLiteral("The %1 %2 is a folder.").arg(what, path);
        return std::nullopt;
    }
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        if (why) *why = QStringLiteral("Cannot read the %1 %2.").arg(what, path);
        return std::nullopt;
    }
    // Read into one buffer of the full bound: a pipe or device may give
    // short reads, and /dev/zero never ends.
    QByteArray raw(MaxInputBytes + 1, Qt::Uninitialized);
    qsizetype got = 0;
    while (got < raw.size()) {
        const qint64 n = f.read(raw.data() + got, raw.size() - got);
        if (n <= 0) break;
        got += n;
    }
    std::optional<QString> out;
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(QByteArrayView(raw.constData(), got));
    km::wipe(raw);
    if (got > MaxInputBytes) {
        if (why) *why = QStringLiteral("The %1 %2 is longer than 64 KiB.").arg(what, path);
    } else if (utf8.hasError()) {
        if (why) *why = QStringLiteral("The %1 %2 is not UTF-8 text.").arg(what, path);
    } else {
        out = text;
    }
    km::wipe(text);
    return out;
}

PassphraseSource::~PassphraseSource() {
    for (QString &l : m_lines)
        km::wipe(l);
    km::wipe(m_current);
    km::wipe(m_lastFresh);
}

bool PassphraseSource::loadFile(const QString &path, QString *why) {
    std::optional<QString> text = ReadTextFile(path, QStringLiteral("passphrase file"), why);
    if (!text) return false;
    if (text->endsWith(QLatin1Char('\n'))) text->chop(1);
    if (text->endsWith(QLatin1Char('\r'))) text->chop(1);
    m_lines = text->split(QLatin1Char('\n'));
    for (QString &l : m_lines)
        if (l.endsWith(QLatin1Char('\r'))) l.chop(1);
    km::wipe(*text);
    m_fromFile = true;
    return true;
}

QString PassphraseSource::ask(const QString &prompt) {
    // A refused line is no entry: the dialog meets an empty one and says so.
    std::optional<QString> line = ReadInputLine(prompt, &m_refusal);
    if (!line) {
        std::fprintf(stderr, "%s\n", m_refusal.toLocal8Bit().constData());
        return QString();
    }
    QString entry = *line;
    km::wipe(*line);
    return entry;
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
