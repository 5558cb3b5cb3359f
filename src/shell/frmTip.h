// "Tip of the Day": one tip drawn at random, its section word apart from its
// text, and the box that decides whether the window comes up at start. That
// choice is a value of the machine ("Startup\ShowTipsAtStartup"), not of the
// store.
#pragma once

#include <QString>

#include "ui/WindowModel.h"

namespace km {

class frmTip : public WindowModel {
public:
    static constexpr const char *ShowTipsValue = "Startup\\ShowTipsAtStartup";
    static constexpr const char *lblDidYouKnow = "Did you know...";
    static constexpr const char *chkLoadTipsAtStartupCaption = "&Show Tips at Startup";
    static constexpr const char *cmdNextTipCaption = "&Next Tip";
    static constexpr const char *cmdOKCaption = "OK";

    QString caption() const override { return QStringLiteral("Tip of the Day"); }

    QString lblTipSection;
    QString lblTipText;
    bool chkLoadTipsAtStartup = false;

    // Reads the value; at "0" the window closes at once (closeRequested), so
    // the caller does not show it. Anything else, absent included, ticks the
    // box and shows a tip.
    void Form_Load();
    void DisplayCurrentTip();
    // The person clicked the box; its new value goes to the settings as 1 or 0.
    void chkLoadTipsAtStartup_Click(bool checked);
    void cmdNextTip_Click();
    void cmdOK_Click();
};

// A tip cut at its first ":": the section word and the text behind the ":".
struct TipParts {
    QString section;
    QString text;
};
TipParts SplitTip(const QString &tip);

} // namespace km
