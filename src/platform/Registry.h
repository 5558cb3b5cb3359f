// The program's per-machine values (window placement, last database and user,
// backup folder, tips on or off). The program names them by registry value
// paths, either relative to its own key ("Startup\\MDI_Top") or in full
// ("HKEY_CURRENT_USER\\Software\\Tavernholt\\Kestrelmondarin\\Startup\\MDI_Top",
// "HKCU\\..." likewise). Here they live in an INI file,
// $XDG_CONFIG_HOME/Tavernholt/Kestrelmondarin.ini (~/.config/... by default),
// under the key with "/" for each backslash: "Startup/MDI_Top". Keys are case
// sensitive, so every caller spells a value path the same way.
#pragma once

#include <QString>

namespace km {

// The program's key as a full value path prefix, ending in a backslash.
inline constexpr char ProgramKey[] = "HKEY_CURRENT_USER\\Software\\Tavernholt\\Kestrelmondarin\\";

// The value as text; a number written by RegWriteDword reads as its decimal
// text. Empty if the value is absent, the path lies outside the program's key,
// or the file can't be read.
QString RegRead(const QString &valuePath);
// Write a text / a 32-bit number and sync the file at once. False if the path
// lies outside the program's key or the file can't be written; callers mostly
// ignore that, as a failed write only loses a preference.
bool RegWrite(const QString &valuePath, const QString &text);
bool RegWriteDword(const QString &valuePath, qint32 number);

// The INI key of a value path ("Startup/MDI_Top"); empty for a path outside the
// program's key or one that names no value.
QString SettingsKey(const QString &valuePath);

// Use this file instead of the user's (tests); an empty path returns to the user's.
void SetSettingsFile(const QString &path);
// The file in use.
QString SettingsFilePath();

} // namespace km
