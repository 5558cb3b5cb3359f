// Appointment rows. An appointment or a series is one row of tt with fSec 12,
// built so that a reader of the raw file learns as little as possible while
// the engine can still select the rows of given days and order them:
//
//   fEtx  the packed AppointmentRecord, encrypted
//   fT1   the start moment (type 4 value), encrypted: a view reads the time
//         without opening the payload
//   fT2   the start's minute of day in six-minute steps (type 2), encrypted
//   fT3   a series' rule string, or seven random bytes for a single row, so
//         that the two cannot be told apart by length
//   fR1   the row's rank among the rows of its day (DayOrderKey)
//   fR2   series: key of its last day (SeriesEndKey); single: noise
//   fR3   key of the start's day (DayKey)
//   fR4   series: key of its first day (SeriesStartKey); single: noise
//   fSub  the row class by range only: 0..147 single, 148..195 yearly series,
//         196..255 any other series; random within the range
//
// Invariants:
//  1. fT1 and fR3 always agree with ctlAppoStart; every writer goes through
//     WriteAppointment, which writes them together with the payload.
//  2. The numeric order of date keys is the order of the days; all rows of
//     one day and key kind share one bucket of the key range.
//  3. The rule string and the start moment are binary: they are read with
//     the non-trimming decryption, since any of their bytes may be a blank.
//  4. Day numbers without further words are those of the date system: days
//     since 1899-12-30. Moments are minutes since the store's epoch
//     (1997-03-20); their day is taken by floor, so a moment before the
//     epoch still belongs to its own day.
#pragma once

#include <optional>

#include <QByteArray>
#include <QByteArrayView>
#include <QDate>
#include <QList>
#include <QLocale>
#include <QString>
#include <QStringList>

#include "platform/SecureBytes.h"

namespace CALENDAR {

constexpr int Section = 12;
constexpr int EpochDay = 35509;        // 1997-03-20, day 0 of moments and 16-bit day numbers
constexpr int FirstCalendarDay = 9185; // 1925-02-22, the earliest date the calendar accepts
constexpr int LastCalendarDay = 61833; // 2069-04-15, the latest date the calendar accepts
constexpr int NoEndPickerDay = 54789;  // 2050-01-01: the end a rule without end date carries
constexpr int MinutesPerDay = 1440;

// ---- Module state ----

struct State {
    // The locale the first day of the week is read from; none: the system's.
    std::optional<QLocale> locale;
    // A task was saved or deleted: the calendar's task list fills itself anew
    // and clears the flag.
    bool TasksChanged = false;
};
State &state();

// ---- Days and moments ----

qint64 DayNumber(const QDate &date); // days since 1899-12-30
QDate DateOfDay(qint64 dayNumber);
// The epoch day of a moment and its minute of day, both by floor.
qint32 DayOfMoment(qint32 moment);
int MinuteOfDayOfMoment(qint32 moment);
QDate DateOfMoment(qint32 moment);
qint32 MomentOf(const QDate &date, int minuteOfDay = 0);
// A date from parts that may overflow: month 13 is January of the next year, day 31 of a 30-day
// month the first of the next, day 0 the last of the month before.
QDate MakeDate(int year, int month, int day);

// ---- Date keys ----

enum KeyKind { DayKey = 1, SeriesStartKey = 2, SeriesEndKey = 3 };

struct DateKeyValue {
    qint32 point = 0; // a random point inside the day's bucket
    qint32 high = 0;  // the bucket's highest value
    qint32 low = 0;   // the bucket's lowest value
};

int KeyOrigin(int kind);   // day number of the kind's day 0
int KeyCount(int kind);    // number of days the kind spans
qint32 KeyWidth(int kind); // width of one day's bucket
DateKeyValue DateKey(qint64 dayNumber, int kind);
DateKeyValue DateKey(const QDate &date, int kind);
qint64 DayFromKey(qint32 value, int kind); // the day number
QDate DateFromKey(qint32 value, int kind);

// ---- Rule strings (ctlRedoString) ----
//
// Byte 0: bits 0-2 RedoKind, bits 3-4 RedoEndKind; bytes 1 and 2 by kind;
// bytes 3-4 the series' first day, 5-6 its last day, then any number of
// excepted days; every day a 16-bit epoch day number, low byte first.

enum RedoKind {
    RedoNone = 0,
    RedoWeekly = 1,     // b1 weekday mask (2^w, w 1 Sunday..7 Saturday), b2 interval in weeks
    RedoDaily = 2,      // b1 0, b2 interval in days
    RedoWorkday = 3,    // b1 124, b2 0 (read as 1)
    RedoMonthly = 4,    // b1 day of month, b2 interval in months
    RedoMonthlyNth = 5, // b1 weekday + 8 * ordinal (5 = last), b2 interval in months
    RedoYearly = 6,     // b1 day of month, b2 month
    RedoYearlyNth = 7,  // b1 weekday + 8 * ordinal, b2 month
};
enum RedoEndKind { EndNever = 0, EndAfterCount = 1, EndOnDate = 2 };

constexpr int RuleHeaderLength = 7;
constexpr int WorkdayMask = 124; // Monday to Friday

struct RedoRule {
    int kind = RedoNone;
    int endKind = EndNever;
    int b1 = 0;
    int b2 = 0;
    qint16 first = 0; // epoch days
    qint16 last = 0;
    QList<qint16> excepted;
};

QByteArray Days16Bytes(qint16 day);
qint16 Days16At(QByteArrayView bytes, qsizetype pos);
// Header byte 0 as a reader sees it: a byte above 127 stands for its complement.
int RuleHeaderByte0(QByteArrayView redo);
int RuleKind(QByteArrayView redo); // RedoKind of a string, 0 for an empty one
int RuleEndKind(QByteArrayView redo);
QByteArray RedoString(const RedoRule &rule);
// Nothing for a string of even length or shorter than seven bytes.
std::optional<RedoRule> ParseRedoString(QByteArrayView redo);

// ---- The appointment record ----

enum AppointmentField {
    FieldUserNumber = 0,
    FieldPrivate = 1,
    FieldAppoStart = 2,
    FieldAppoEnd = 3,
    FieldAllday = 4,
    FieldAlarmYN = 5,
    FieldAlarmTime = 6,
    FieldRedoString = 7,
    FieldSubject = 8,
    FieldLocation = 9,
    FieldNotes = 10,
    AppointmentFieldCount = 11
};

struct AppointmentRecord {
    int UserNumber = 0; // the user who saved the row (byte)
    bool ctlPrivate = false;
    qint32 ctlAppoStart = 0;  // moment; in a series the first occurrence's date and the daily time
    qint32 ctlAppoEnd = 0;    // moment, never before the start, at most the next midnight
    int ctlAllday = 0;        // 1 = all-day event
    int ctlAlarmYN = 0;       // 1 = alarm set
    qint32 ctlAlarmTime = 0;  // start minus the lead; the start when no alarm was chosen
    QByteArray ctlRedoString; // empty for a single row
    QString ctlSubject;
    QString ctlLocation;
    QString ctlNotes;

    bool isSeries() const { return !ctlRedoString.isEmpty(); }
};

// The packed record; fields whose value is an empty string are left out.
QByteArray PackAppointment(const AppointmentRecord &record);
// From a clear packed record; missing fields read as empty or 0.
AppointmentRecord AppointmentFromClear(const km::SecureBytes &clear);
// Reads the row of the session's store; nothing when there is no such
// appointment row.
std::optional<AppointmentRecord> ReadAppointment(qint64 rowId);

// The moment in a decrypted fT1 (a packed value of type 4, or 25); nothing
// for a field that does not hold one.
std::optional<qint32> StartOfField(const QByteArray &fT1);

// ---- Row class (fSub) ----

enum class RowClass { Single, Yearly, Series };
constexpr int SingleSubCount = 148;      // 0..147
constexpr int OtherSeriesSubFirst = 196; // 196..255; 148..195 yearly
RowClass ClassOfSub(int fSub);
RowClass ClassOfRule(QByteArrayView redo);
// A random fSub within the rule's range; for a yearly series the month picks
// one of twelve groups of four (the start's month for kind 6, the rule's for kind 7).
int DrawSub(QByteArrayView redo, int startMonth);

// ---- Writing ----

// Which columns a save redraws. Everything: the editor, the imports and new
// rows. Times: a move of an existing row (payload, fT1, fT2, fR3, fR1); its
// class, rule copy and series keys stay as they are.
enum class WriteScope { Everything, Times };

// The one writer of calendar rows, in the store's session, as one
// transaction: all columns but fR1 (standard write: AddNew with AE 1 or Edit
// with AE Or 2), Update; DayOrderKey; Edit, fR1, Update. rowId 0 or -1, or an
// id that is not there, makes a new row. Returns the row id, or 0 when the
// id belongs to another section (message 16 was shown, nothing changed).
qint64 WriteAppointment(qint64 rowId, const AppointmentRecord &record,
                        WriteScope scope = WriteScope::Everything);

// The fR1 of a row that has just been written with this start (new or
// changed), renumbering the other rows of its day where the row's place
// needs it; each row renumbered gets AE Or 2. Runs inside the caller's
// transaction.
qint32 DayOrderKey(qint32 start, qint64 rowId, bool isNew);

} // namespace CALENDAR
