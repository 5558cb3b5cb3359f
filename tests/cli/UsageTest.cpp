// kmd's help and its usage errors: what it says, where, and with what status.
#include <gtest/gtest.h>

#include "calendar/CalendarText.h"
#include "cli/Kmd.h"

namespace {

using km::test::KmdResult;
using km::test::KmdScratch;

struct CommandHelp {
    const char *name;
    const char *usage; // the synopsis, after "Usage: "
    QStringList options;
};

const QList<CommandHelp> kCommands = {
    {"add", "kmd add STORE SECTION [NAME=VALUE...]", {}},
    {"categories", "kmd categories STORE SECTION", {}},
    {"check", "kmd check STORE", {}},
    {"compact", "kmd compact STORE", {}},
    {"create", "kmd create STORE [--force]", {"--force"}},
    {"delete", "kmd delete STORE ID", {}},
    {"diary", "kmd diary STORE DATE [--set TEXT]", {"--set <TEXT>"}},
    {"edit", "kmd edit STORE ID NAME=VALUE...", {}},
    {"info", "kmd info STORE", {}},
    {"list",
     "kmd list STORE SECTION [--category ID] [--kind K] [--completed] [--show-private]",
     {"--category <ID>", "--kind <K>", "--completed", "--show-private"}},
    {"occurrences", "kmd occurrences STORE FROM TO [--show-private]", {"--show-private"}},
    {"passwd", "kmd passwd STORE", {}},
    {"repair", "kmd repair STORE", {}},
    {"show", "kmd show STORE ID", {}},
};

TEST(KmdUsage, HelpListsEveryCommandAndAsksNoPassphrase) {
    const KmdScratch scratch(false);
    const KmdResult all = scratch.runWithout({"--help"});
    EXPECT_EQ(all.status, 0) << testing::PrintToString(all);
    EXPECT_TRUE(all.err.isEmpty());
    EXPECT_TRUE(all.out.contains("kmd COMMAND --help"));
    EXPECT_EQ(scratch.runWithout({"help"}).out, all.out);
    EXPECT_EQ(scratch.runWithout({"help", "list"}).out, scratch.runWithout({"list", "--help"}).out);

    for (const CommandHelp &c : kCommands) {
        SCOPED_TRACE(c.name);
        EXPECT_TRUE(all.lines().contains(QStringLiteral("  ") + c.usage)) << all.out.toStdString();

        // The store named does not exist: help must not try to open it.
        const KmdResult help = scratch.runWithout({c.name, "missing.kmd", "--help"});
        EXPECT_EQ(help.status, 0) << testing::PrintToString(help);
        EXPECT_TRUE(help.err.isEmpty());
        EXPECT_TRUE(help.out.startsWith(QStringLiteral("Usage: %1 [--passphrase-file FILE]\n").arg(c.usage)))
            << help.out.toStdString();
        for (const QString &option : c.options)
            EXPECT_TRUE(help.out.contains("  " + option)) << option.toStdString();
        EXPECT_TRUE(help.out.contains("--passphrase-file <FILE>"));
    }
}

TEST(KmdUsage, AddWithoutFieldsPrintsTheSectionsUsageWithoutLogin) {
    const KmdScratch scratch(false);
    const KmdResult calendar = scratch.runWithout({"add", "missing.kmd", "12"});
    EXPECT_EQ(calendar.status, 64);
    EXPECT_EQ(calendar.out, CALENDAR::AddUsage() + "\n");

    const KmdResult memo = scratch.runWithout({"add", "missing.kmd", "14"});
    EXPECT_EQ(memo.status, 64);
    EXPECT_EQ(memo.err, "usage: kmd add STORE 14 Subject=... [Memo=...] [Private=True] [category=ID]\n");

    const KmdResult confidential = scratch.runWithout({"add", "missing.kmd", "16"});
    EXPECT_EQ(confidential.status, 64);
    EXPECT_TRUE(confidential.err.startsWith("usage: kmd add STORE 16 n0=..."));

    // kmd add --help shows all three.
    const KmdResult help = scratch.runWithout({"add", "--help"});
    EXPECT_TRUE(help.out.contains(CALENDAR::AddUsage()));
    EXPECT_TRUE(help.out.contains(memo.err.mid(7)));
    EXPECT_TRUE(help.out.contains(confidential.err.mid(7)));
}

TEST(KmdUsage, UsageErrorsSayWhatIsWrongWithStatus64) {
    const KmdScratch scratch;
    const QString s = scratch.store;
    const struct {
        QStringList args;
        QString err; // the start of stderr
    } cases[] = {
        {{}, "Usage: kmd COMMAND"},
        {{"frobnicate", s}, "Unknown command: frobnicate\n"},
        {{"help", "frobnicate"}, "Unknown command: frobnicate\n"},
        {{"--bogus"}, "kmd: Unknown option 'bogus'."},
        {{"info", s, "--bogus"}, "kmd info: Unknown option 'bogus'.\nusage: kmd info STORE\n"},
        {{"info", s, "--force"}, "kmd info: Unknown option 'force'."},
        {{"list", s, "14", "--show-private=yes"}, "kmd list: Unexpected value after '--show-private'."},
        {{"info"}, "usage: kmd info STORE\n"},
        {{"info", s, "extra"}, "usage: kmd info STORE\n"},
        {{"show", s}, "usage: kmd show STORE ID\n"},
        {{"edit", s, "6"}, "usage: kmd edit STORE ID NAME=VALUE...\n"},
        {{"occurrences", s, "2024-05-01"}, "usage: kmd occurrences STORE FROM TO [--show-private]\n"},
        {{"occurrences", s, "2024-05-02", "2024-05-01"},
         "FROM and TO are dates yyyy-MM-dd, TO not before FROM"},
        {{"occurrences", s, "May", "2024-05-01"}, "FROM and TO are dates yyyy-MM-dd"},
        {{"list", s, "17"}, "Sections listed here: 11 (addresses), 14 (memos), 15 (tasks), 16 (confidential data).\n"},
        {{"list", s, "15", "--category", "x"}, "--category takes a number.\n"},
        {{"add", s, "15", "priority=urgent"}, "Priorities are high, normal and low: urgent\n"},
        {{"diary", s, "today"}, "Not a date (yyyy-MM-dd): today\n"},
        {{"list", s, "14", "--category", "x"}, "--category and --kind take numbers.\n"},
        {{"list", s, "16", "--kind", "17"}, "Kinds are 1 to 16.\n"},
        {{"categories", s, "3"}, "No such section: 3\n"},
        {{"add", s, "13", "a=b"}, "Records of section 13 cannot be added here.\n"},
        {{"add", s, "14", "Subject"}, "Not of the form name=value: Subject\n"},
        {{"add", s, "14", "Subject=x", "Colour=red"}, "Memos have no field Colour\n"},
        {{"add", s, "14", "Memo=x"}, "A memo needs a Subject.\n"},
        {{"add", s, "14", "Subject=x", "category=99"}, "No such category: 99\n"},
        {{"add", s, "16", "n0=x", "pin=1"}, "Confidential records have no field pin\n"},
        {{"add", s, "16", "n1=x"}, "A record needs its first field, n0.\n"},
        {{"add", s, "16", "n0=x", "kind=17"}, "Kinds are 1 to 16: 17\n"},
        {{"add", s, "12", "start=soon"},
         "start: not a moment of the form \"yyyy-MM-dd HH:mm\": soon\nusage: "},
        {{"add", s, "12", "=x"}, "Not of the form name=value: =x\n"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.args.join(' ').toStdString());
        const KmdResult r = scratch.run(c.args);
        EXPECT_EQ(r.status, 64) << testing::PrintToString(r);
        EXPECT_TRUE(r.err.startsWith(c.err)) << r.err.toStdString();
        EXPECT_TRUE(r.out.isEmpty()) << r.out.toStdString();
    }
    // An option's value missing at the very end.
    const KmdResult noValue =
        scratch.run({"--passphrase-file", "pass", "list", s, "14", "--category"}, QString());
    EXPECT_EQ(noValue.status, 64);
    EXPECT_TRUE(noValue.err.startsWith("kmd list: Missing value after '--category'."))
        << noValue.err.toStdString();

    // Nothing of the refused records reached the store.
    const KmdResult info = scratch.run({"info", s});
    EXPECT_EQ(info.lines().mid(2), QStringList({"1\t3", "2\t1", "5\t1"}));
}

} // namespace
