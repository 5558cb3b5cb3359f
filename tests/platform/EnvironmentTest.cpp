#include "platform/Environment.h"
#include "platform/Registry.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <QFile>
#include <QLockFile>
#include <QSettings>
#include <QTemporaryDir>

#include <vector>

using namespace km;

namespace {

class SettingsFile : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        file = dir.filePath(QStringLiteral("Kestrelmondarin.ini"));
        SetSettingsFile(file);
    }
    void TearDown() override { SetSettingsFile(QString()); }
    QTemporaryDir dir;
    QString file;
};

} // namespace

TEST(Registry, ValuePathsMapToIniKeys) {
    struct Case {
        const char *path, *key;
    };
    const std::vector<Case> cases = {
        {"Startup\\MDI_Top", "Startup/MDI_Top"},
        {"HKEY_CURRENT_USER\\Software\\Tavernholt\\Kestrelmondarin\\Startup\\MDI_Top", "Startup/MDI_Top"},
        {"hkey_current_user\\software\\tavernholt\\kestrelmondarin\\LastUser", "LastUser"},
        {"HKCU\\Software\\Tavernholt\\Kestrelmondarin\\Backup\\Folder", "Backup/Folder"},
        {"DatabasePath", "DatabasePath"},
        {"Startup\\", ""},
        {"", ""},
        {"HKEY_LOCAL_MACHINE\\Software\\Other\\Value", ""},
    };
    for (const Case &c : cases)
        EXPECT_EQ(SettingsKey(QLatin1String(c.path)), QLatin1String(c.key)) << c.path;
}

TEST_F(SettingsFile, WritesAreReadBackAndStandInTheFileAtOnce) {
    EXPECT_EQ(SettingsFilePath(), file);
    EXPECT_EQ(RegRead(QStringLiteral("Startup\\MDI_Top")), QString());

    ASSERT_TRUE(RegWrite(QStringLiteral("Startup\\DatabasePath"), QStringLiteral("/home/u/Ä, @data.kmd")));
    ASSERT_TRUE(RegWriteDword(QString::fromLatin1(ProgramKey) + QStringLiteral("Startup\\MDI_Top"), -120));
    ASSERT_TRUE(RegWriteDword(QStringLiteral("Startup\\ShowTipsAtStartup"), 0));
    ASSERT_TRUE(RegWrite(QStringLiteral("LastUser"), QString()));

    EXPECT_EQ(RegRead(QString::fromLatin1(ProgramKey) + QStringLiteral("Startup\\DatabasePath")),
              QStringLiteral("/home/u/Ä, @data.kmd"));
    EXPECT_EQ(RegRead(QStringLiteral("Startup\\MDI_Top")), QStringLiteral("-120"));
    EXPECT_EQ(RegRead(QStringLiteral("Startup\\ShowTipsAtStartup")), QStringLiteral("0"));
    EXPECT_EQ(RegRead(QStringLiteral("LastUser")), QString());

    // Another reader of the file sees the values without any further sync.
    QSettings other(file, QSettings::IniFormat);
    EXPECT_EQ(other.value(QStringLiteral("Startup/MDI_Top")).toString(), QStringLiteral("-120"));
    QFile raw(file);
    ASSERT_TRUE(raw.open(QIODevice::ReadOnly));
    const QByteArray text = raw.readAll();
    EXPECT_TRUE(text.contains("[Startup]"));
    EXPECT_TRUE(text.contains("MDI_Top=-120"));
}

TEST_F(SettingsFile, TheFileAndTheFolderMadeForItAreTheOwnersAlone) {
    const auto modeOf = [](const QString &p) {
        struct stat st {};
        return ::stat(QFile::encodeName(p).constData(), &st) == 0 ? st.st_mode & 07777 : 0u;
    };
    const mode_t old = ::umask(022); // as where the program's start-up has set no mask
    const QString nested = dir.filePath(QStringLiteral("Tavernholt/Kestrelmondarin.ini"));
    SetSettingsFile(nested);
    EXPECT_TRUE(RegWrite(QStringLiteral("User\\LastUser"), QStringLiteral("Admin")));
    EXPECT_EQ(modeOf(nested), 0600u);
    EXPECT_EQ(modeOf(dir.filePath(QStringLiteral("Tavernholt"))), 0700u);
    EXPECT_TRUE(RegWriteDword(QStringLiteral("Startup\\MDI_Top"), 5));
    EXPECT_EQ(modeOf(nested), 0600u) << "a rewrite keeps the mode";
    ::umask(old);
    EXPECT_EQ(RegRead(QStringLiteral("User\\LastUser")), QStringLiteral("Admin"));
}

TEST_F(SettingsFile, PathsOutsideTheProgramKeyAreRefused) {
    EXPECT_FALSE(RegWrite(QStringLiteral("HKEY_LOCAL_MACHINE\\Software\\X"), QStringLiteral("1")));
    EXPECT_FALSE(RegWriteDword(QStringLiteral("Startup\\"), 1));
    EXPECT_EQ(RegRead(QStringLiteral("HKEY_LOCAL_MACHINE\\Software\\X")), QString());
    EXPECT_FALSE(QFile::exists(file));
}

TEST(Registry, TheUsersFileLiesUnderTheMakerAndProgramName) {
    SetSettingsFile(QString());
    EXPECT_TRUE(SettingsFilePath().endsWith(QStringLiteral("/Tavernholt/Kestrelmondarin.ini")));
}

TEST(Environment, FolderOfPath) {
    struct Case {
        const char *path, *folder, *name;
    };
    const std::vector<Case> cases = {
        {"", "", ""},
        {"/home/u/data.kmd", "/home/u", "data.kmd"},
        {"C:\\Users\\u\\data.kmd", "C:\\Users\\u", "data.kmd"},
        {"/home/u\\typed\\data.kmd", "/home/u\\typed", "data.kmd"},
        {"a\\b/c", "a\\b", "c"},
        {"data.kmd", "", "data.kmd"},
        {"/data.kmd", "", "data.kmd"},
        {"/home/u/", "/home/u", ""},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(FolderOfPath(QLatin1String(c.path), true), QLatin1String(c.folder)) << c.path;
        EXPECT_EQ(FolderOfPath(QLatin1String(c.path), false), QLatin1String(c.name)) << c.path;
    }
}

TEST(Environment, OnlyOneInstanceHoldsTheLock) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    SetRuntimeFolder(dir.path());
    const QString path = SingleInstanceLockPath();
    EXPECT_EQ(path, dir.filePath(QStringLiteral("kestrelmondarin.lock")));

    ASSERT_TRUE(TryLockSingleInstance());
    EXPECT_TRUE(QFile::exists(path));
    EXPECT_TRUE(TryLockSingleInstance()); // asking again keeps the lock
    {
        QLockFile second(path);
        second.setStaleLockTime(0);
        EXPECT_FALSE(second.tryLock(0));
    }

    ReleaseSingleInstance();
    EXPECT_FALSE(QFile::exists(path));
    {
        QLockFile other(path);
        ASSERT_TRUE(other.tryLock(0));
        EXPECT_FALSE(TryLockSingleInstance());
    }
    EXPECT_TRUE(TryLockSingleInstance());
    ReleaseSingleInstance();
    SetRuntimeFolder(QString());
}

TEST(Environment, ALockLeftByADeadProcessIsTakenOver) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    SetRuntimeFolder(dir.path());
    {
        QFile stale(SingleInstanceLockPath());
        ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
        stale.write("2147483600\nkestrelmondarin\n\n"); // no process has this id
    }
    EXPECT_TRUE(TryLockSingleInstance());
    ReleaseSingleInstance();
    SetRuntimeFolder(QString());
}
