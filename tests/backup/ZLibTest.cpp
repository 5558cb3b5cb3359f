#include <gtest/gtest.h>
#include <zlib.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "backup/ZLib.h"
#include "platform/Engine.h"
#include "support/ScriptedDialogs.h"
#include "ui/LanguageUS.h"

namespace km::test {
namespace {

QByteArray readAll(const QString &path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

void writeAll(const QString &path, const QByteArray &data) {
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(data);
}

// Some kilobytes of a store: a real one, so that the expanded image opens.
QByteArray storeBytes(const QTemporaryDir &dir) {
    const QString path = dir.filePath(QStringLiteral("image.kmd"));
    StoreDb::CreateDatabase(path);
    return readAll(path);
}

TEST(ZLibTest, LittleEndianBytesAndBack) {
    EXPECT_EQ(ZLib::LittleEndianBytes(1000, 4), QByteArray::fromHex("e8030000"));
    EXPECT_EQ(ZLib::LittleEndianBytes(-2, 4), QByteArray::fromHex("feffffff"));
    EXPECT_EQ(ZLib::LittleEndianBytes(0x0102, 2), QByteArray::fromHex("0201"));
    EXPECT_EQ(ZLib::BytesToLong(QByteArray::fromHex("e8030000")), 1000);
    EXPECT_EQ(ZLib::BytesToLong(QByteArray::fromHex("feffffff")), -2);
    EXPECT_EQ(ZLib::BytesToLong(QByteArray::fromHex("0201")), 0x0102);
    EXPECT_EQ(ZLib::BytesToLong(QByteArray::fromHex("0102030405")), 0);
}

// The Part's example: a backup of C:\Data\a.kmd of 1000 bytes.
TEST(ZLibTest, TrailerOfTheExample) {
    const QByteArray t = ZLib::Trailer(QStringLiteral("C:\\Data\\a.kmd"), 1000);
    EXPECT_EQ(t, QByteArray("C:\\Data\\a.kmd") + QByteArray::fromHex("0d03e8030000"));
    // Code page 1252, not UTF-8: one byte per letter.
    EXPECT_EQ(ZLib::Trailer(QStringLiteral("/d/\u00e9.kmd"), 1).left(8), QByteArray("/d/\xe9.kmd"));
    EXPECT_TRUE(ZLib::Trailer(QString(256, QLatin1Char('x')), 1).isEmpty());
    EXPECT_EQ(ZLib::Trailer(QString(255, QLatin1Char('x')), 1).size(), 255 + 6);
}

TEST(ZLibTest, CompressedBytesAreZlibsCompressAndExpandBack) {
    // More than one slice of input, partly compressible.
    QByteArray data;
    for (int i = 0; i < 3 * 1024 * 1024; ++i)
        data.append(static_cast<char>((qint64(i) * 7919) % 251 ^ (i >> 10)));
    data.append(QByteArray(5 * 1024 * 1024, 'k'));
    const QByteArray original = data;
    uLongf room = compressBound(static_cast<uLong>(data.size()));
    QByteArray reference(static_cast<qsizetype>(room), '\0');
    ASSERT_EQ(compress(reinterpret_cast<Bytef *>(reference.data()), &room,
                       reinterpret_cast<const Bytef *>(data.constData()), static_cast<uLong>(data.size())),
              Z_OK);
    reference.resize(static_cast<qsizetype>(room));

    int ticks = 0;
    EXPECT_EQ(ZLib::CompressBytes(data, [&] { ++ticks; }), Z_OK);
    EXPECT_EQ(data, reference);
    EXPECT_GE(ticks, 2);
    EXPECT_EQ(ZLib::ExpandBytes(data, original.size()), Z_OK);
    EXPECT_EQ(data, original);
}

TEST(ZLibTest, ExpandRefusesShortDamagedAndLongStreams) {
    const QByteArray original(100000, 'a');
    QByteArray packed = original;
    ASSERT_EQ(ZLib::CompressBytes(packed), Z_OK);
    QByteArray cut = packed.left(packed.size() - 10);
    EXPECT_NE(ZLib::ExpandBytes(cut, original.size()), Z_OK);
    QByteArray flipped = packed;
    flipped[flipped.size() / 2] = static_cast<char>(flipped.at(flipped.size() / 2) ^ 0x55);
    EXPECT_NE(ZLib::ExpandBytes(flipped, original.size()), Z_OK);
    QByteArray longer = packed;
    EXPECT_NE(ZLib::ExpandBytes(longer, original.size() - 1), Z_OK);
    QByteArray shorter = packed;
    EXPECT_NE(ZLib::ExpandBytes(shorter, original.size() + 1), Z_OK);
}

TEST(ZLibTest, BackupFileNameCutsAtTheFirstDot) {
    const QDateTime when(QDate(2004, 12, 24), QTime(17, 4, 55));
    EXPECT_EQ(ZLib::BackupFileName(QStringLiteral("/x/PersonalData.kmd"), when),
              QStringLiteral("PersonalData041224170455.kmz"));
    EXPECT_EQ(ZLib::BackupFileName(QStringLiteral("/x/my.data.kmd"), when), QStringLiteral("my041224170455.kmz"));
}

TEST(ZLibTest, CompressFileWritesTheFormatAndReadBackupTakesItApart) {
    QTemporaryDir dir;
    ScriptedDialogs ui;
    const QByteArray store = storeBytes(dir);
    const QString source = dir.filePath(QStringLiteral("a.kmd"));
    writeAll(source, store);
    const QString kmz = dir.filePath(QStringLiteral("a.kmz"));
    // An older, longer file of the same name is replaced whole.
    writeAll(kmz, QByteArray(store.size() * 2, 'z'));
    const qint64 written = ZLib::CompressFile(source, kmz);
    ASSERT_GT(written, 0);
    const QByteArray file = readAll(kmz);
    EXPECT_EQ(file.size(), written);
    const QByteArray trailer = ZLib::Trailer(source, static_cast<quint32>(store.size()));
    EXPECT_TRUE(file.endsWith(trailer));
    QByteArray stream = file.left(file.size() - trailer.size());
    ASSERT_EQ(ZLib::ExpandBytes(stream, store.size()), Z_OK);
    EXPECT_EQ(stream, store);
    EXPECT_FALSE(QFile::permissions(kmz) & (QFileDevice::ReadOther | QFileDevice::ReadGroup));
    EXPECT_EQ(QDir(dir.path()).entryList({QStringLiteral("*.part*")}, QDir::Files).size(), 0);

    ZLib::Backup b;
    EXPECT_EQ(ZLib::ReadBackup(kmz, b), 0);
    EXPECT_EQ(b.sourcePath, source);
    EXPECT_EQ(b.size, static_cast<quint32>(store.size()));
    EXPECT_EQ(b.store, store);
    EXPECT_TRUE(ui.shown.isEmpty());
}

TEST(ZLibTest, SourcesThatCannotBeBackedUp) {
    QTemporaryDir dir;
    ScriptedDialogs ui;
    const QString kmz = dir.filePath(QStringLiteral("x.kmz"));
    const QString empty = dir.filePath(QStringLiteral("empty.kmd"));
    writeAll(empty, QByteArray());
    EXPECT_EQ(ZLib::CompressFile(empty, kmz), 0);
    // Kept as the format has it: the last byte, not the mark's place.
    const QString endsIn3 = dir.filePath(QStringLiteral("three.kmd"));
    writeAll(endsIn3, QByteArray("abc\x03", 4));
    EXPECT_EQ(ZLib::CompressFile(endsIn3, kmz), 0);
    const QString deep = dir.filePath(QString(250, QLatin1Char('d')));
    ASSERT_TRUE(QDir().mkpath(deep));
    const QString longPath = deep + QStringLiteral("/long.kmd");
    writeAll(longPath, QByteArray("abc"));
    EXPECT_EQ(ZLib::CompressFile(longPath, kmz), 0);
    EXPECT_EQ(ui.shown, QStringList({LanguageUS::MessageText(133), LanguageUS::MessageText(130),
                                     LanguageUS::MessageText(137)}));
    EXPECT_FALSE(QFile::exists(kmz));
}

TEST(ZLibTest, DamagedBackupsAreRefused) {
    QTemporaryDir dir;
    ScriptedDialogs ui;
    const QString source = dir.filePath(QStringLiteral("a.kmd"));
    writeAll(source, storeBytes(dir));
    const QString kmz = dir.filePath(QStringLiteral("a.kmz"));
    ASSERT_GT(ZLib::CompressFile(source, kmz), 0);
    const QByteArray good = readAll(kmz);
    const QString bad = dir.filePath(QStringLiteral("bad.kmz"));
    ZLib::Backup b;
    const auto readWith = [&](const QByteArray &bytes) {
        writeAll(bad, bytes);
        return ZLib::ReadBackup(bad, b);
    };
    EXPECT_EQ(readWith(QByteArray()), 133);
    QByteArray mark = good;
    mark[mark.size() - 5] = 4;
    EXPECT_EQ(readWith(mark), 131);
    EXPECT_EQ(readWith(good.left(good.size() / 2) + good.right(good.size() - good.size() / 2 - 7)), 131);
    QByteArray flipped = good;
    flipped[20] = static_cast<char>(flipped.at(20) ^ 0xff);
    EXPECT_EQ(readWith(flipped), 131);
    QByteArray size = good;
    size[size.size() - 4] = static_cast<char>(size.at(size.size() - 4) + 1);
    EXPECT_EQ(readWith(size), 131);
    // A sound stream of something that is no store.
    const QString text = dir.filePath(QStringLiteral("notes.txt"));
    writeAll(text, QByteArray(5000, 'n'));
    ASSERT_GT(ZLib::CompressFile(text, bad), 0);
    EXPECT_EQ(ZLib::ReadBackup(bad, b), 131);
    EXPECT_EQ(readWith(good), 0);
}

} // namespace
} // namespace km::test
