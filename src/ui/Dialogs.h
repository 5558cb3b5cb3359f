// Every exchange with the person goes through this one seam: message boxes,
// the input box, file dialogs, the folder picker, the "Stand By" pause, and
// showing a window model modally. The program answers with Qt windows, tests
// with a scripted fake that records what was asked and returns queued answers.
#pragma once

#include <optional>

#include <QString>
#include <QStringList>

#include "ui/WindowModel.h"

namespace km {

enum class Buttons { OK, OKCancel, YesNo, YesNoCancel, RetryCancel, AbortRetryIgnore };
enum class Answer { OK, Cancel, Yes, No, Retry, Abort, Ignore };
enum class Icon { None, Critical, Question, Exclamation, Information };

struct FileDialogSpec {
    QString title;
    QStringList filters;    // "Kestrelmondarin KMD (*.kmd)", "All Files (*.*)"
    int selectedFilter = 0; // index into filters
    QString directory;
    QString fileName;
    bool mustExist = false;      // open: the file must be there
    bool overwritePrompt = true; // save: ask before replacing
};

class Dialogs {
public:
    virtual ~Dialogs() = default;
    virtual Answer message(const QString &text, Buttons buttons = Buttons::OK,
                           Answer defaultButton = Answer::OK, Icon icon = Icon::None,
                           const QString &title = QString()) = 0;
    // The shielded input box; nothing when cancelled.
    virtual std::optional<QString> inputBox(const QString &title, const QString &prompt,
                                            const QString &value = QString()) {
        return std::nullopt;
    }
    virtual std::optional<QString> openFile(const FileDialogSpec &spec) { return std::nullopt; }
    virtual std::optional<QString> saveFile(const FileDialogSpec &spec) { return std::nullopt; }
    virtual std::optional<QString> pickFolder(const QString &title, const QString &start) {
        return std::nullopt;
    }
    // Shows the window model modally; true when it closed through OK.
    virtual bool showModal(WindowModel &window) { return false; }
    // The delay step after a wrong passphrase or PIN: "Stand By" for ms milliseconds.
    virtual void standBy(int ms) {}
    // The main window's status pane (empty text clears it).
    virtual void status(const QString &text) {}
    // Whether the main window is up (decides between ending and returning).
    virtual bool mainWindowUp() const { return false; }
};

// The process's dialogs, for modules (plain functions) that must tell the
// person something. Until a program installs its own, messages go nowhere and
// every question is answered with its default button.
Dialogs &ui();
void setUi(Dialogs *dialogs);

// Shows the numbered message.
Answer ShowMessage(int row, Buttons buttons = Buttons::OK, Answer defaultButton = Answer::OK,
                   Icon icon = Icon::None);

// The number a file dialog returns when the person cancels it.
constexpr int DialogCancelledError = 32755;

// Thrown where the program ends after a fatal message: the top of each program
// catches it, closes the store as ExitProgram does and ends with the code.
struct ProgramEnd {
    int code = 1;
    int message = 0; // the message row that was shown, 0 for none
};

} // namespace km
