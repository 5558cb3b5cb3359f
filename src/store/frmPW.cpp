#include "store/frmPW.h"

#include "platform/SecureBytes.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"

namespace km {

bool IsWeakPassphrase(const QString &text) {
    for (QChar c : text) {
        const char16_t a = c.unicode();
        const bool digit = a >= 48 && a <= 57;
        const bool upper = a >= 65 && a <= 90;
        const bool lower = a == 32 || (a >= 97 && a <= 122);
        if (digit || (!upper && !lower)) return false; // a digit or a mark
    }
    return true;
}

frmPW::~frmPW() {
    wipe(txtInput);
    wipe(m_firstEntry);
    wipe(PassphraseRaw);
}

void frmPW::Form_Load() {
    m_prompt = lblPrompt;
    m_haveFirst = false;
    wipe(m_firstEntry);
    DialogCancelled = false;
    masked = !chkShowClear;
    txtInput_Change();
}

void frmPW::txtInput_Change() {
    cmdOKEnabled = !chkPwLength || txtInput.size() >= 8;
}

void frmPW::chkShowClear_Click() {
    masked = !chkShowClear;
}

void frmPW::cmdOK_Click() {
    if (!cmdOKEnabled) return;
    if (chkCheckPWquality && !m_haveFirst && IsWeakPassphrase(txtInput)) {
        if (ShowMessage(158, Buttons::YesNo, Answer::Yes, Icon::Question) == Answer::No) {
            wipe(txtInput);
            txtInput_Change();
            return;
        }
    }
    if (chkConfirm) {
        if (!m_haveFirst) {
            m_firstEntry = txtInput;
            m_haveFirst = true;
            lblPrompt = LanguageUS::MessageText(42);
            wipe(txtInput);
            txtInput_Change();
            return;
        }
        if (txtInput != m_firstEntry) {
            wipe(txtInput);
            wipe(m_firstEntry);
            m_haveFirst = false;
            lblPrompt = m_prompt;
            txtInput_Change();
            if (ShowMessage(84, Buttons::RetryCancel, Answer::Retry, Icon::Exclamation) == Answer::Cancel) {
                DialogCancelled = true;
                close(false);
                throw ProgramEnd{1, 84};
            }
            return;
        }
    }
    PassphraseRaw = txtInput;
    wipe(txtInput);
    wipe(m_firstEntry);
    DialogCancelled = false;
    close(true);
}

void frmPW::cmdCancel_Click() {
    wipe(txtInput);
    wipe(m_firstEntry);
    DialogCancelled = true;
    close(false);
}

} // namespace km
