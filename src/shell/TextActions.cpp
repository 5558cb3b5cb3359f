#include "shell/TextActions.h"

#include "shell/SectionContext.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"
#include "ui/Services.h"

namespace km::TextActions {

namespace {

bool alnum(QChar c) {
    const char16_t u = c.unicode();
    return (u >= '0' && u <= '9') || (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z');
}

bool onlyOf(const QString &t, const QString &allowed) {
    for (int i = 1; i + 1 < t.size(); ++i)
        if (!alnum(t.at(i)) && !allowed.contains(t.at(i))) return false;
    return true;
}

bool holdsAny(const QString &t, std::initializer_list<const char *> sequences) {
    for (const char *s : sequences)
        if (t.contains(QLatin1String(s))) return true;
    return false;
}

bool stopsWord(QChar c) {
    return c == u';' || c == u',' || c.unicode() < 32;
}

} // namespace

bool IsMailAddress(const QString &text) {
    const QString t = text.trimmed();
    if (t.isEmpty() || !alnum(t.front()) || !alnum(t.back())) return false;
    if (!onlyOf(t, QStringLiteral("-@._"))) return false;
    if (holdsAny(t, {".@", "@@", "@.", ".."})) return false;
    const qsizetype at = t.indexOf(u'@');
    return at >= 0 && t.indexOf(u'.', at) > at;
}

bool IsWebAddress(const QString &text) {
    const QString t = text.trimmed();
    if (t.isEmpty() || !t.startsWith(QLatin1String("www."), Qt::CaseInsensitive)) return false;
    if (!alnum(t.front()) || !alnum(t.back())) return false;
    if (!onlyOf(t, QStringLiteral("_-./"))) return false;
    if (holdsAny(t, {"..", "-.", ".-", "--"})) return false;
    return t.count(u'.') >= 2;
}

bool IsPlainWords(const QString &text) {
    const QString t = text.trimmed();
    if (t.isEmpty()) return false;
    for (QChar c : t)
        if (!alnum(c) && c != u' ') return false;
    return true;
}

bool IsPhoneLike(const QString &text) {
    const QString t = text.trimmed();
    if (t.isEmpty()) return false;
    if (!alnum(t.front()) && t.front() != u'+' && t.front() != u'(') return false;
    if (!alnum(t.back())) return false;
    if (!onlyOf(t, QStringLiteral("/ -()"))) return false;
    if (holdsAny(t, {"..", "-.", ".-", "--"})) return false;
    const qsizetype close = t.indexOf(u')');
    const qsizetype open = t.indexOf(u'(');
    return close < 0 || (open >= 0 && open < close);
}

QString StripPhone(const QString &text) {
    QString out;
    for (QChar c : text)
        if (!QStringLiteral(" ()-/+").contains(c)) out += c;
    return out;
}

QString StripBlanks(const QString &text) {
    QString out = text;
    out.remove(u' ');
    return out;
}

Kind ClassifySelection(Selection &box) {
    QString word;
    if (box.selLength > 0) {
        word = box.selText();
        // A box whose lines end in LF alone is taken the same way.
        if (word.endsWith(QLatin1String("\r\n")))
            word.chop(2);
        else if (word.endsWith(u'\n'))
            word.chop(1);
        if (word.contains(u'\r') || word.contains(u'\n')) return MultiLine;
    } else {
        const QString &t = box.text;
        const int pos = std::clamp(box.selStart + box.selLength / 2, 0, static_cast<int>(t.size()));
        int first = pos;
        while (first > 0 && !stopsWord(t.at(first - 1)))
            --first;
        int last = pos;
        while (last < t.size() && !stopsWord(t.at(last)))
            ++last;
        while (first < last && t.at(first) == u' ')
            ++first;
        box.selStart = first;
        box.selLength = last - first;
        word = box.selText();
    }
    if (word.isEmpty()) return Nothing;
    if (IsMailAddress(word)) return MailAddress;
    if (IsWebAddress(word)) return WebAddress;
    if (IsPlainWords(word)) return PlainWords;
    if (IsPhoneLike(word)) return word.trimmed().startsWith(u'+') ? OtherText : PhoneLike;
    return OtherText;
}

MenuState MenuFor(Kind kind, const QString &clickedText) {
    MenuState m;
    m.copyStripped = clickedText.contains(u' ') && (kind == PlainWords || kind == OtherText);
    m.sendMail = kind == MailAddress;
    m.dial = kind == PlainWords || kind == PhoneLike || kind == OtherText;
    m.openWebsite = kind == WebAddress;
    return m;
}

void CopyText(Shell &shell, const QString &clickedText) {
    if (!clickedText.isEmpty()) shell.copyText(clickedText);
}

void CopyStripped(Shell &shell, const QString &clickedText) {
    const QString t = StripBlanks(clickedText);
    if (t.isEmpty()) return;
    clipboard().clear();
    shell.copyText(t);
}

void SendMail(Dialogs &dialogs, const QString &clickedText) {
    if (IsMailAddress(clickedText))
        desktop().openUrl(QStringLiteral("mailto:") + clickedText.trimmed());
    else
        dialogs.message(LanguageUS::MessageText(163), Buttons::OK, Answer::OK, Icon::Exclamation);
}

void OpenWebsite(const QString &clickedText) {
    desktop().openUrl(QStringLiteral("http://") + clickedText.trimmed());
}

void Dial(Dialogs &dialogs, const QString &clickedText, const QString &name) {
    if (clickedText.isEmpty()) return;
    QString prompt = QStringLiteral("Phone number ");
    if (clickedText.startsWith(u'+')) prompt += QStringLiteral("(no leading \"+\")");
    const auto answer = dialogs.inputBox(QStringLiteral("Dial"), prompt, clickedText);
    if (!answer || answer->isEmpty()) return;
    MakeCall(dialogs, StripPhone(*answer), name);
}

void MakeCall(Dialogs &dialogs, const QString &number, const QString &name) {
    QString n = number;
    while (n.endsWith(u' '))
        n.chop(1);
    if (n.isEmpty()) {
        dialogs.message(LanguageUS::MessageText(165), Buttons::OK, Answer::OK, Icon::Exclamation);
        return;
    }
    // The called party's name has no place in a tel: URL; the handler is
    // given the number alone.
    (void)name;
    desktop().openUrl(QStringLiteral("tel:") + n);
}

bool PaneMenu::ShowActionMenu(Selection &box) {
    if (box.text.isEmpty()) return false;
    const Kind kind = ClassifySelection(box);
    ClickedText = box.selText();
    if (ClickedText.isEmpty()) return false;
    menu = MenuFor(kind, ClickedText);
    return true;
}

bool PaneMenu::Click(const QString &entry, Shell &shell, Dialogs &dialogs, const QString &name) {
    if (entry == QLatin1String("mnuAddressBoxRCcopy"))
        CopyText(shell, ClickedText);
    else if (entry == QLatin1String("mnuAddressBoxRCStripped"))
        CopyStripped(shell, ClickedText);
    else if (entry == QLatin1String("mnuAddressBoxRCSendMail"))
        SendMail(dialogs, ClickedText);
    else if (entry == QLatin1String("mnuAddressBoxRCDialPhone"))
        Dial(dialogs, ClickedText, name);
    else if (entry == QLatin1String("mnuAddressBoxRCwww"))
        OpenWebsite(ClickedText);
    else
        return false;
    return true;
}

} // namespace km::TextActions
