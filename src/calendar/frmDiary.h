// The diary (fSec 13): one text per day, shown a day or a week at a time.
// Each day with text is one row:
//
//   fEtx  the packed record: 0 the day's text (long text), 1 the date (minutes)
//   fT1   the date alone (a packed minutes value), encrypted
//   fR2   a point of the day's DayKey, the only key the rows are found by
//   other columns noise
//
// A day that never had text has no row; a day whose text is emptied keeps its
// row with an empty text. The diary is private as a whole: it cannot be
// entered while private records are hidden, and closes the moment they are.
#pragma once

#include <array>

#include <QDate>
#include <QString>
#include <QStringList>

#include "shell/SectionContext.h"
#include "shell/frmMDI.h"

namespace km {

namespace DIARY {

constexpr int Section = 13;
enum Field { Text = 0, Date = 1 };

// The text of one day as stored, and its row (0: none).
struct Day {
    qint64 rowId = 0;
    QString text;
};
Day ReadDay(StoreDb &store, const QDate &date);
// The day of a record's date field as the record gives it; invalid if empty.
QDate DateOfField(const QString &value);

} // namespace DIARY

// One of the week's boxes: its date, its text and its row id ("-1": no row yet).
struct DiaryBox {
    QDate date;
    QString text;
    qint64 tag = -1;
    bool changed = false; // typed since the last save
};

class frmDiary : public SectionWindow {
public:
    static constexpr int Section = DIARY::Section;
    enum Period { DayMode = 0, WeekMode = 1 };

    explicit frmDiary(const SectionContext &context);
    int sectionCode() const override { return Section; }
    QString caption() const override { return QStringLiteral("Diary"); }
    void Form_Load() override;
    void Form_Unload() override;

    // ---- State ----
    std::array<DiaryBox, 7> txtInput; // the week in the system's week order
    bool recordChanged = false;       // some box holds unsaved text
    int diaPeriod = DayMode;
    QDate calDate;
    QStringList txtMargin; // the seven days' long dates, beside their boxes
    QString lblTitel = QStringLiteral("Diary");

    // The box that day mode shows: the chosen date's.
    int dayIndex() const;
    // The boxes in view: one in day mode, seven in week mode.
    QList<int> boxesShown() const;

    // ---- Commands ----
    void calDate_Click(const QDate &date);
    void diaMoveDay(bool up);
    void diaPeriod_Click(int period);
    void txtMargin_Click(int line);
    void txtInput_Change(int index, const QString &text);

    // Fills the boxes with the week of date (from the system's first day).
    void LoadDiaryWeek(const QDate &date);
    // Writes one box through the store's standard write; the new row's id
    // goes into the box's tag.
    void SaveDiaryDay(int index);
    // Saves every box with unsaved text.
    void saveChanged();

private:
    void showDate(const QDate &date);
    SectionContext ctx;
};

// Gives the main window its factory for the diary's section.
void RegisterDiarySection();

} // namespace km
