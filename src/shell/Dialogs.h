// Every exchange with the person goes through this one seam: message boxes,
// the input box, passphrase and PIN dialogs, file dialogs, and showing a
// window model modally. The program answers with Qt windows, tests with a
// scripted fake that records what was asked and returns queued answers.
#pragma once

#include <QString>

namespace km {

enum class Buttons { OK, OKCancel, YesNo, YesNoCancel, RetryCancel, AbortRetryIgnore };
enum class Answer { OK, Cancel, Yes, No, Retry, Abort, Ignore };
enum class Icon { None, Critical, Question, Exclamation, Information };

class Dialogs {
public:
    virtual ~Dialogs() = default;
    virtual Answer message(const QString &text, Buttons buttons = Buttons::OK,
                           Answer defaultButton = Answer::OK, Icon icon = Icon::None,
                           const QString &title = QString()) = 0;
};

// The process's dialogs, for modules (plain functions) that must tell the
// person something. Until a program installs its own, messages go nowhere and
// every question is answered with its default button.
Dialogs &ui();
void setUi(Dialogs *dialogs);

// Shows the numbered message; extra is appended as the callers compose it.
Answer ShowMessage(int row, Buttons buttons = Buttons::OK, Answer defaultButton = Answer::OK,
                   Icon icon = Icon::None);

} // namespace km
