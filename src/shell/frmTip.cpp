#include "shell/frmTip.h"

#include "platform/Random.h"
#include "platform/Registry.h"
#include "ui/LanguageUS.h"

namespace km {

TipParts SplitTip(const QString &tip) {
    const qsizetype colon = tip.indexOf(QLatin1Char(':'));
    if (colon < 0) return TipParts{tip, QString()};
    return TipParts{tip.left(colon), tip.mid(colon + 1)};
}

void frmTip::Form_Load() {
    if (RegRead(QString::fromLatin1(ShowTipsValue)) == QLatin1String("0")) {
        close(false);
        return;
    }
    chkLoadTipsAtStartup = true;
    Randomize();
    DisplayCurrentTip();
}

void frmTip::DisplayCurrentTip() {
    const TipParts parts = SplitTip(LanguageUS::RandomTip());
    lblTipSection = parts.section;
    lblTipText = parts.text;
}

void frmTip::chkLoadTipsAtStartup_Click(bool checked) {
    chkLoadTipsAtStartup = checked;
    RegWriteDword(QString::fromLatin1(ShowTipsValue), checked ? 1 : 0);
}

void frmTip::cmdNextTip_Click() {
    DisplayCurrentTip();
}

void frmTip::cmdOK_Click() {
    close(true);
}

} // namespace km
