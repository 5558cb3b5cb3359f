// kmd backup, restore and verify: the file read by a reader of its own here,
// a restore beside an existing store, and a verify that writes nothing.
#include <gtest/gtest.h>
#include <zlib.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include "cli/Kmd.h"

namespace {

using km::test::KmdResult;
using km::test::KmdScratch;

QByteArray bytesOf(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Every file below the folder with its size and time, to see that nothing changed.
QStringList listing(const QString &folder) {
    QStringList all;
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo f(it.next());
        all << f.filePath() + " " + QString::number(f.size()) + " " +
                   QString::number(f.lastModified().toMSecsSinceEpoch());
    }
    all.sort();
    return all;
}

TEST(KmdBackup, BackupIsReadByAnIndependentReaderAndRestoredBesideTheStore) {
    const KmdScratch scratch;
    ASSERT_EQ(scratch.run({"add", scratch.store, "14", "Subject=Shopping", "Memo=milk"}).status, 0);
    const KmdResult made = scratch.run({"backup", scratch.store, "--to", "bk"});
    ASSERT_EQ(made.status, 0) << testing::PrintToString(made);
    const QString kmz = made.out.trimmed();
    EXPECT_TRUE(QFileInfo(kmz).fileName().contains(QRegularExpression("^s\\d{12}\\.kmz$"))) << kmz.toStdString();

    // Read from the end: size, mark 3, path length, path; then zlib's uncompress.
    const QByteArray file = bytesOf(kmz);
    ASSERT_GT(file.size(), 6);
    const quint32 size = quint8(file.at(file.size() - 4)) | quint8(file.at(file.size() - 3)) << 8 |
                         quint8(file.at(file.size() - 2)) << 16 | quint32(quint8(file.at(file.size() - 1))) << 24;
    EXPECT_EQ(file.at(file.size() - 5), 3);
    const int n = quint8(file.at(file.size() - 6));
    EXPECT_EQ(QString::fromLatin1(file.mid(file.size() - 6 - n, n)), scratch.path(scratch.store));
    QByteArray store(size, '\0');
    uLongf got = size;
    ASSERT_EQ(uncompress(reinterpret_cast<Bytef *>(store.data()), &got,
                         reinterpret_cast<const Bytef *>(file.constData()), uLong(file.size() - 6 - n)),
              Z_OK);
    EXPECT_EQ(got, size);
    // The compacted store itself.
    EXPECT_EQ(store, bytesOf(scratch.path(scratch.store)));

    // Restored beside a changed store: the changed one is kept as .kmb.
    ASSERT_EQ(scratch.run({"add", scratch.store, "14", "Subject=Later"}).status, 0);
    const KmdResult restored = scratch.run({"restore", kmz, "--to", "."});
    ASSERT_EQ(restored.status, 0) << testing::PrintToString(restored);
    EXPECT_EQ(restored.out.trimmed(), scratch.path(scratch.store));
    EXPECT_TRUE(QFile::exists(scratch.path("s.kmb")));
    EXPECT_FALSE(QFile::exists(scratch.path("s.kmr")));
    EXPECT_EQ(bytesOf(scratch.path(scratch.store)), store);
    const KmdResult checked = scratch.run({"check", scratch.store});
    EXPECT_EQ(checked.status, 0) << testing::PrintToString(checked);
    EXPECT_EQ(scratch.run({"list", "s.kmb", "14"}).lines().size(), 2);
    EXPECT_EQ(scratch.run({"list", scratch.store, "14"}).lines().size(), 1);

    EXPECT_EQ(scratch.run({"restore", kmz}).status, 64);
}

TEST(KmdBackup, VerifyWritesNothingAndFindsDamage) {
    KmdScratch scratch;
    ASSERT_EQ(scratch.run({"add", scratch.store, "14", "Subject=Shopping", "Memo=milk"}).status, 0);
    const QString kmz = scratch.run({"backup", scratch.store, "--to", "bk"}).out.trimmed();
    ASSERT_FALSE(kmz.isEmpty());
    const QStringList before = listing(scratch.dir.path());
    const KmdResult good = scratch.run({"verify", kmz});
    EXPECT_EQ(good.status, 0) << testing::PrintToString(good);
    EXPECT_TRUE(good.out.contains("failed\t0"));
    EXPECT_TRUE(good.err.contains("Backup is complete and opens with your passphrase."));
    EXPECT_EQ(listing(scratch.dir.path()), before);

    scratch.write("wrong", "not the passphrase\n");
    EXPECT_NE(scratch.run({"verify", kmz}, "wrong").status, 0);

    QByteArray bad = bytesOf(kmz);
    bad[40] = char(bad.at(40) ^ 0x10);
    QFile out(scratch.path("bad.kmz"));
    ASSERT_TRUE(out.open(QIODevice::WriteOnly));
    out.write(bad);
    out.close();
    const KmdResult damaged = scratch.run({"verify", "bad.kmz"});
    EXPECT_EQ(damaged.status, 1);
    EXPECT_TRUE(damaged.err.contains("File not compressed or compression format not recognized."));
    const QStringList unchanged = listing(scratch.dir.path());
    EXPECT_EQ(scratch.run({"restore", "bad.kmz", "--to", "."}).status, 1);
    EXPECT_EQ(listing(scratch.dir.path()), unchanged);
}

} // namespace
