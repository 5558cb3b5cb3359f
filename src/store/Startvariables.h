// The store's own settings: the start variables (one row, fSec 5 / fSub 1)
// and the user-defined field names of a section (one row per section,
// fSec 9 / fSub = the section's code). Both live encrypted in fEtx, so moving
// the file moves them and a reader of the file learns nothing from them.
//
// The start variables' record always holds all 24 fields in index order:
//    0 IdleMinutes (16-bit)      12 DayStart (double, day fraction)
//    1-3 BudgetShow1..3 (byte)   13 DayEnd (double)
//    4 StartApp (byte)           14 DayFirstShown (double)
//    5 StartScreen (byte)        15-19 LastCategory[5] (16-bit)
//    6 TodoShowCompleted (byte)  20-22 ListFlags[3] (16-bit)
//    7 BudgetPrimary (byte)      23 ShowPrivateDefault (boolean)
//    8 DiaryShow (byte)
//    9 CatShow (byte, inverted: 0 means shown)
//   10 CalView (byte)
//   11 CalSlotMinutes (16-bit)
// A record of an older version with fewer fields leaves the later variables 0.
#pragma once

#include <array>

#include <QString>

namespace Startvariables {

constexpr int StartVariableCount = 24;
constexpr int SettingsSection = 5;   // fSec of the start variables' row (fSub 1)
constexpr int FieldNamesSection = 9; // fSec of the user field names' rows
constexpr int UserFieldCount = 4;

// The session variables, initialised to the defaults of a new store. Tests
// reset them with state() = {}.
struct State {
    qint16 IdleMinutes = 5;
    quint8 BudgetShow1 = 7;
    quint8 BudgetShow2 = 7;
    quint8 BudgetShow3 = 7;
    quint8 StartApp = 0;
    quint8 StartScreen = 0;
    quint8 TodoShowCompleted = 0;
    quint8 BudgetPrimary = 0;
    quint8 DiaryShow = 1;
    quint8 CatShow = 0;
    quint8 CalView = 2;
    qint16 CalSlotMinutes = 30;
    double DayStart = 1.0 / 3.0;                       // 8:00
    double DayEnd = 17.0 / 24.0;                       // 17:00
    double DayFirstShown = 5.0 / 16.0;                 // 7:30
    std::array<qint16, 5> LastCategory{0, 0, 0, 0, 0}; // the third is the memos'
    std::array<qint16, 3> ListFlags{-1, -1, -1};
    bool ShowPrivateDefault = true;

    std::array<QString, UserFieldCount> UserFieldNames;
};
State &state();

// Reads the start variables' row into the session variables. A store without
// the row gets the defaults, which are written at once.
void LoadStartVariables();
// Writes every start variable to the row found by "fSec = 5 And fSub = 1"
// (a new row gets noise in all seven short columns). Returns the row's id.
qint64 SaveStartVariables();
// Sets the defaults of a new store and saves them.
qint64 DefaultStartVariables();

// Fills UserFieldNames from the section's row; a missing row means "User1" to
// "User4", and the row is added with them at once.
void LoadUserFieldNames(int section);
// Writes UserFieldNames to the section's row. Returns the row's id.
qint64 SaveUserFieldNames(int section);

} // namespace Startvariables
