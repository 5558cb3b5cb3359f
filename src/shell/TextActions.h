// The right-click actions on a word of a detail pane (the address book's and
// the confidential section's): the text under the pointer is taken as a word,
// classified by hand-written tests of its characters (not by any label of the
// record), and offered as Copy, Copy without blanks, Send Mail, Dial or Open
// Website. The outward calls go through the desktop's services as mailto:,
// http:// and tel: URLs.
#pragma once

#include <QString>

namespace km {

class Dialogs;
class Shell;

namespace TextActions {

enum Kind {
    Nothing = 0,    // nothing selected or found
    MailAddress = 1,
    WebAddress = 2,
    MultiLine = 3,  // the selection spans more than one line
    PlainWords = 4, // letters, digits and blanks only
    PhoneLike = 5,  // no leading "+"
    OtherText = 6,  // telephone-like with a leading "+", or anything else
};

// Each trims the text first. Letters and digits are ASCII only.
bool IsMailAddress(const QString &text);
bool IsWebAddress(const QString &text);
bool IsPlainWords(const QString &text);
bool IsPhoneLike(const QString &text);
// Removes every blank, "(", ")", "-", "/" and "+" / every blank.
QString StripPhone(const QString &text);
QString StripBlanks(const QString &text);

// A text box's text and selection, as the classifier reads and sets them.
struct Selection {
    QString text;
    int selStart = 0;
    int selLength = 0;
    QString selText() const { return text.mid(selStart, selLength); }
};

// With a selection, the selection (less a trailing line end) is the text;
// without one, the word around the caret up to ";", "," or a control
// character, and the box's selection is set to it. Returns the kind.
Kind ClassifySelection(Selection &box);

// Which entries of the menu are enabled for a clicked text of a kind.
struct MenuState {
    bool copy = true;
    bool copyStripped = false;
    bool sendMail = false;
    bool dial = false;
    bool openWebsite = false;
};
MenuState MenuFor(Kind kind, const QString &clickedText);

// The actions. name: the called party (the address's File as, the
// confidential entry's first field).
void CopyText(Shell &shell, const QString &clickedText);
void CopyStripped(Shell &shell, const QString &clickedText);
void SendMail(Dialogs &dialogs, const QString &clickedText);
void OpenWebsite(const QString &clickedText);
void Dial(Dialogs &dialogs, const QString &clickedText, const QString &name);
void MakeCall(Dialogs &dialogs, const QString &number, const QString &name);

// The menu of a pane: what the last right click took, which entries it
// enables, and an entry's command by its name (mnuAddressBoxRCcopy,
// ...Stripped, ...SendMail, ...DialPhone, ...www).
class PaneMenu {
public:
    // The right button's release on a box with text: the word is classified
    // and marked in the box. False when there is nothing to act on.
    bool ShowActionMenu(Selection &box);
    // name: the called party of Dial.
    bool Click(const QString &entry, Shell &shell, Dialogs &dialogs, const QString &name);

    QString ClickedText;
    MenuState menu;
};

} // namespace TextActions

} // namespace km
