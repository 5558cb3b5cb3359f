#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "platform/Registry.h"
#include "ui/LanguageUS.h"
#include "shell/frmTip.h"

namespace {

class frmTipTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        km::SetSettingsFile(dir.filePath(QStringLiteral("settings.ini")));
    }
    void TearDown() override { km::SetSettingsFile(QString()); }
    static QString value() { return km::RegRead(QString::fromLatin1(km::frmTip::ShowTipsValue)); }

    QTemporaryDir dir;
};

TEST_F(frmTipTest, TheBoxWritesOneOrZeroAndZeroKeepsTheWindowAway) {
    km::frmTip first;
    first.Form_Load();
    EXPECT_FALSE(first.closeRequested) << "an absent value shows the window";
    EXPECT_TRUE(first.chkLoadTipsAtStartup);

    first.chkLoadTipsAtStartup_Click(false);
    EXPECT_EQ(value(), QStringLiteral("0"));
    km::frmTip hidden;
    hidden.Form_Load();
    EXPECT_TRUE(hidden.closeRequested);
    EXPECT_FALSE(hidden.acceptedResult);

    hidden.chkLoadTipsAtStartup_Click(true);
    EXPECT_EQ(value(), QStringLiteral("1"));
    km::frmTip again;
    again.Form_Load();
    EXPECT_FALSE(again.closeRequested);
}

TEST_F(frmTipTest, ATipIsSplitAtItsFirstColon) {
    const km::TipParts p = km::SplitTip(QStringLiteral("CALENDAR: Start 10:30 tomorrow"));
    EXPECT_EQ(p.section, QStringLiteral("CALENDAR"));
    EXPECT_EQ(p.text, QStringLiteral(" Start 10:30 tomorrow"));

    QStringList tips;
    for (int n = 1; n <= LanguageUS::TipCount; ++n)
        tips.append(LanguageUS::Tip(n));
    km::frmTip w;
    w.Form_Load();
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(w.lblTipSection.contains(QLatin1Char(':')));
        EXPECT_TRUE(tips.contains(w.lblTipSection + QLatin1Char(':') + w.lblTipText))
            << w.lblTipSection.toStdString();
        w.cmdNextTip_Click();
    }
}

} // namespace
