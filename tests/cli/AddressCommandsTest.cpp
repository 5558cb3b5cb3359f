// kmd on the address book: add, list, show, edit and delete of section 11,
// the tab-delimited export and find across sections.
#include <gtest/gtest.h>

#include "cli/Kmd.h"

namespace {

using km::test::KmdResult;
using km::test::KmdScratch;

QString added(const KmdScratch &scratch, const QStringList &fields) {
    const KmdResult r = scratch.run(QStringList{"add", scratch.store} + fields);
    EXPECT_EQ(r.status, 0) << testing::PrintToString(r);
    return r.out.trimmed();
}

} // namespace

TEST(KmdAddress, AddListShowEditDelete) {
    const KmdScratch scratch;
    const QString s = scratch.store;
    const QString zoe = added(scratch, {"11", "FirstName=Zoe", "LastName=Young", "Com1=555-1"});
    const QString acme =
        added(scratch, {"11", "CompanyName=Acme", "HomeAddressCity=Rome", "Com3=0170", "ComDisplay=2"});
    const QString hidden = added(scratch, {"11", "LastName=Hidden", "Private=True", "Com6=h@x.org"});
    EXPECT_EQ(scratch.run({"list", s, "11"}).lines(),
              QStringList({acme + "\tAcme\t0170 (M)", zoe + "\tYoung, Zoe\t555-1 (W)"}));
    EXPECT_EQ(scratch.run({"list", s, "11", "--show-private"}).lines().value(1), hidden + "\tHidden\th@x.org");

    const QStringList shown = scratch.run({"show", s, acme}).lines();
    ASSERT_EQ(shown.size(), 63);
    EXPECT_EQ(shown.value(8), "8\tCompanyName\tAcme");
    EXPECT_EQ(shown.value(52), "52\tComLabel3\t8");
    EXPECT_EQ(shown.value(61), "FileAs\tAcme");
    EXPECT_EQ(shown.value(62), "category\t0\tUnfiled");

    EXPECT_EQ(scratch.run({"edit", s, zoe, "Com1=", "Com2=777", "FileAs=Zed"}).status, 0);
    EXPECT_EQ(scratch.run({"list", s, "11"}).lines().value(1), zoe + "\tZed\t777 (H)");
    EXPECT_EQ(scratch.run({"check", s}).status, 0);

    const KmdResult bad = scratch.run({"add", s, "11", "Nickname=x"});
    EXPECT_EQ(bad.status, 64);
    const KmdResult noName = scratch.run({"add", s, "11", "Com1=1"});
    EXPECT_EQ(noName.status, 64);
    EXPECT_TRUE(noName.err.contains("Either LAST NAME")) << noName.err.toStdString();

    EXPECT_EQ(scratch.run({"delete", s, zoe}).status, 0);
    EXPECT_EQ(scratch.run({"list", s, "11"}).lines(), QStringList({acme + "\tAcme\t0170 (M)"}));
}

TEST(KmdAddress, ExportAndFind) {
    const KmdScratch scratch;
    const QString s = scratch.store;
    const QString open = added(scratch, {"11", "LastName=Open", "Notes=needle in notes"});
    const QString priv = added(scratch, {"11", "LastName=Closed", "Private=True", "Spouse=NEEDLE"});
    const QString memo = added(scratch, {"14", "Subject=Memo", "Memo=a Needle"});

    ASSERT_EQ(scratch.run({"export-addresses", s, "out.txt"}).status, 0);
    QFile f(scratch.path("out.txt"));
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = f.readAll().split('\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_TRUE(lines[0].startsWith("Private\tPriority\t"));
    EXPECT_EQ(lines[1].split('\t').value(0) + lines[2].split('\t').value(0), "TrueFalse") << "Closed, Open";
    EXPECT_EQ(f.permissions() & (QFileDevice::ReadOther | QFileDevice::ReadGroup), 0);

    EXPECT_EQ(scratch.run({"find", s, "needle"}).lines(),
              QStringList({"Address\t" + open + "\tOpen\t", "Memo\t" + memo + "\tMemo\t"}));
    EXPECT_EQ(scratch.run({"find", s, "NEEDLE", "--case-sensitive", "--show-private"}).lines(),
              QStringList({"Address\t" + priv + "\tClosed\t"}));
    EXPECT_EQ(scratch.run({"find", s, "needle", "--sections", "14"}).lines().size(), 1);
    EXPECT_EQ(scratch.run({"find", s, "needle", "--sections", "20"}).status, 64);
}

TEST(KmdAddress, FindNamesTheCalendarDiaryAndTaskColumns) {
    const KmdScratch scratch;
    const QString s = scratch.store;
    const QString appointment = added(scratch, {"12", "start=2024-05-09 08:30", "end=2024-05-09 09:00",
                                                "subject=Needle shop", "location=Mall"});
    const QString allDay = added(scratch, {"12", "start=2024-05-10 00:00", "end=2024-05-11 00:00", "subject=needle day"});
    ASSERT_EQ(scratch.run({"diary", s, "2024-02-29", "--set", "A needle found."}).status, 0);
    const QString task = added(scratch, {"15", "Description=buy needles", "due=2024-06-01"});
    const QString done = added(scratch, {"15", "Description=needle sharpened", "completed=2024-01-02"});

    const QStringList lines = scratch.run({"find", s, "needle", "--sections", "12,13,15"}).lines();
    ASSERT_EQ(lines.size(), 5);
    EXPECT_EQ(lines.mid(0, 2), QStringList({"Calendar\t" + appointment + "\t0\t2024-05-09 08:30",
                                            "Calendar\t" + allDay + "\t0\t2024-05-10"}))
        << "Item is the record's first field: the number of the user who saved it, Admin's 0";
    const QStringList diary = lines[2].split('\t');
    EXPECT_EQ(QStringList({diary.value(0), diary.value(2), diary.value(3)}),
              QStringList({"Diary", "2024-02-29", ""}));
    EXPECT_EQ(lines.mid(3), QStringList({"Todo\t" + task + "\tbuy needles\tDue 2024-06-01",
                                         "Todo\t" + done + "\tneedle sharpened\tCompleted"}));
}
