#include "ui/LanguageUS.h"

#include <gtest/gtest.h>

#include <QSet>

using namespace LanguageUS;

TEST(LanguageUS, ComposedRowsCarryTheirLineBreaks) {
    EXPECT_EQ(MessageText(158),
              QStringLiteral("Weak passphrase:\r\nPassphrase should be mixed case, with at least one "
                             "digit or punctuation character. Accept anyway?"));
    const QString row160 = MessageText(160);
    EXPECT_TRUE(row160.startsWith(
        QStringLiteral("Kestrelmondarin creates an empty database to store all encrypted "
                       "data. The file gets the extension \".kmd\".\r\n\r\n-  By clicking YES")));
    EXPECT_TRUE(row160.contains(
        QStringLiteral("default path:\r\n       \"My Documents\\Kestrelmondarin\\Personaldata.kmd\"\r\n\r\n- "
                       " By clicking NO")));
    EXPECT_TRUE(row160.endsWith(QStringLiteral("specify a custom path and filename.")));
    EXPECT_EQ(row160.count(QStringLiteral("\r\n")), 5);
    EXPECT_TRUE(MessageText(94).startsWith(QStringLiteral(
        "The database has been modified by a more recent software version of Kestrelmondarin. Access denied. "
        "Please, download the update from www.")));
    EXPECT_TRUE(MessageText(94).endsWith(QLatin1Char('.')));
}

TEST(LanguageUS, RowsAsTheProgramShowsThem) {
    struct Case {
        int row;
        const char *text;
    };
    const Case cases[] = {
        {1, "No database specified."},
        {15,
         "Either LAST NAME, FIRST NAME or COMPANY have to be specified. Alternatively DELETE record or leave "
         "unchanged (ESC)!"},
        {32, "Conversion error (binary to string)!"},
        {73, "E"},
        {74, ""},
        {111, " items found"},
        {127, "Outlook containes no contacts (addresses)."},
        {151, "No date fullfilling criteria available after start date this month. The start date will be "
              "anticipated or moved to next month. Starting with next month?"},
        {171, "in folder"},
        {0, ""},
        {2, ""},
        {148, ""},
        {172, ""},
        {-40, ""},
    };
    for (const Case &c : cases)
        EXPECT_EQ(MessageText(c.row), QLatin1String(c.text)) << c.row;
}

TEST(LanguageUS, NoRowCarriesTableMarkup) {
    int rows = 0;
    for (int n = -1000; n <= 1000; ++n) {
        const QString t = MessageText(n);
        if (t.isEmpty()) continue;
        ++rows;
        EXPECT_FALSE(t.contains(QLatin1Char('|')) || t.contains(QLatin1Char('`'))) << n;
        EXPECT_FALSE(t.startsWith(QLatin1Char('"')) || t.endsWith(QLatin1Char('"'))) << n;
        EXPECT_FALSE(t.contains(QStringLiteral("line break"))) << n;
        EXPECT_EQ(t.count(QLatin1Char('\n')), t.count(QStringLiteral("\r\n"))) << n;
    }
    EXPECT_EQ(rows, 153);
}

TEST(LanguageUS, TwentySevenTipsEachWithASectionWord) {
    static_assert(TipCount == 27);
    QSet<QString> distinct;
    for (int n = 1; n <= TipCount; ++n) {
        const QString tip = Tip(n);
        const qsizetype colon = tip.indexOf(QLatin1Char(':'));
        ASSERT_GT(colon, 0) << n;
        const QString section = tip.left(colon);
        EXPECT_EQ(section, section.toUpper()) << n;
        EXPECT_FALSE(tip.startsWith(QLatin1Char('"')) || tip.endsWith(QLatin1Char('"'))) << n;
        EXPECT_EQ(tip.at(colon + 1), QLatin1Char(' ')) << n;
        distinct.insert(tip);
    }
    EXPECT_EQ(distinct.size(), TipCount);
    EXPECT_EQ(Tip(0), QString());
    EXPECT_EQ(Tip(28), QString());
    EXPECT_TRUE(Tip(1).contains(QStringLiteral("(workday) view,  F3 for week")));
    EXPECT_EQ(Tip(27),
              QStringLiteral("GENERAL: If you delete a category, all items listed under that category will "
                             "be moved to the \"Unfiled\" category. You can never delete the \"Unfiled\" "
                             "category."));
    EXPECT_TRUE(Tip(13).startsWith(QStringLiteral("COMPACT DATABASE: ")));
    for (int i = 0; i < 200; ++i) {
        const QString tip = RandomTip();
        EXPECT_TRUE(distinct.contains(tip));
    }
}
