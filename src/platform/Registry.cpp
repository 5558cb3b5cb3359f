#include "platform/Registry.h"

#include <QFileInfo>
#include <QSettings>
#include <QStringList>

#include <memory>

#include "platform/Environment.h"

namespace km {

namespace {

struct RegistryState {
    QString settingsFile; // empty: the user's file
};

RegistryState &state() {
    static RegistryState s;
    return s;
}

std::unique_ptr<QSettings> openSettings() {
    const QString &file = state().settingsFile;
    if (!file.isEmpty()) return std::make_unique<QSettings>(file, QSettings::IniFormat);
    return std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                       QStringLiteral("Tavernholt"), QStringLiteral("Kestrelmondarin"));
}

bool write(const QString &valuePath, const QVariant &value) {
    const QString key = SettingsKey(valuePath);
    if (key.isEmpty()) return false;
    auto settings = openSettings();
    // The file names the last store and user: it is made private and empty
    // before the first value goes in, in a private folder where the program
    // makes one.
    const QString file = settings->fileName();
    if (!QFileInfo::exists(file) && MakePrivateFolder(QFileInfo(file).path())) CreatePrivateFile(file);
    settings->setValue(key, value);
    settings->sync();
    KeepPrivate(file);
    return settings->status() == QSettings::NoError;
}

} // namespace

QString SettingsKey(const QString &valuePath) {
    static const QString fullPrefix = QString::fromLatin1(ProgramKey);
    static const QString shortPrefix = QStringLiteral("HKCU\\Software\\Tavernholt\\Kestrelmondarin\\");
    QString path = valuePath;
    if (path.startsWith(fullPrefix, Qt::CaseInsensitive))
        path.remove(0, fullPrefix.size());
    else if (path.startsWith(shortPrefix, Qt::CaseInsensitive))
        path.remove(0, shortPrefix.size());
    else if (path.startsWith(QStringLiteral("HKEY_"), Qt::CaseInsensitive) ||
             path.startsWith(QStringLiteral("HKCU\\"), Qt::CaseInsensitive) ||
             path.startsWith(QStringLiteral("HKLM\\"), Qt::CaseInsensitive))
        return QString(); // another hive or another program's key

    // A trailing backslash names a key, not a value; empty steps are dropped.
    if (path.isEmpty() || path.endsWith(QLatin1Char('\\'))) return QString();
    const QStringList steps = path.split(QLatin1Char('\\'), Qt::SkipEmptyParts);
    return steps.join(QLatin1Char('/'));
}

QString RegRead(const QString &valuePath) {
    const QString key = SettingsKey(valuePath);
    if (key.isEmpty()) return QString();
    auto settings = openSettings();
    if (settings->status() != QSettings::NoError) return QString();
    return settings->value(key).toString();
}

bool RegWrite(const QString &valuePath, const QString &text) {
    return write(valuePath, text);
}

bool RegWriteDword(const QString &valuePath, qint32 number) {
    return write(valuePath, number);
}

void SetSettingsFile(const QString &path) {
    state().settingsFile = path;
}

QString SettingsFilePath() {
    return openSettings()->fileName();
}

} // namespace km
