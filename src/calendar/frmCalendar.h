// The calendar section's window (fSec 12): the day, work-week and week views.
//
// One column per day on a time grid, the all-day strip above it. Everything
// the window computes lives here, in layout units of 1/1440 inch (one
// fifteenth of a pixel on a 96-dpi screen): the range of days, the loaded
// entries, each box's rectangle and its column within an overlap group, the
// arithmetic of drags and drops, and the writes they end in. The widget
// (gui/calendar/frmCalendar) only scales these units to pixels, paints, and
// forwards presses, moves and releases in layout units.
//
// Coordinates: x is measured from the window's left edge (the hour labels take
// the first Gutter units); y of the time grid from midnight at the top of the
// day column, whatever part of it is scrolled into view; y of the all-day
// strip from the strip's top.
//
// The month view and the task and contact list pane come with their own
// window parts later; ViewMode 3 and the list drop (CreateAppointmentRow) are
// already here for them.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <vector>

#include <QDate>
#include <QString>
#include <QStringList>

#include "calendar/CALENDAR.h"
#include "calendar/CalendarState.h"
#include "calendar/Recurrence.h"
#include "shell/SectionContext.h"
#include "shell/frmMDI.h"

namespace CALENDAR {

// Grid constants in layout units.
constexpr double RowHeight = 330;       // one slot row
constexpr double HourGutter = 615;      // the hour labels left of the first day
constexpr double SnapRest = 165;        // a drop more than half a row down snaps to the next row
constexpr double DragThreshold = 30;    // a press becomes a drag once the pointer leaves this square
constexpr double ResizeZone = 247.5;    // a press this close above a box's bottom edge resizes it
constexpr double BoxIndent = 60;        // a box stands this far right of its column's left edge
constexpr double BoxMargin = 78;        // what a column gives up to its margins
constexpr double StripRowHeight = 330;  // the all-day strip's height

struct LayoutRect {
    double left = 0;
    double top = 0;
    double width = 0;
    double height = 0;
    double right() const { return left + width; }
    double bottom() const { return top + height; }
    bool contains(double x, double y) const { return x >= left && x < right() && y >= top && y < bottom(); }
};

// One shown occurrence: the entry of the loaded list and its box.
struct CalendarBox {
    qint64 id = 0;          // boxId: fPK of the row or series
    qint32 start = 0;       // boxStart, boxEnd: this occurrence's moments;
    qint32 end = 0;         //   an all-day box spans its whole day
    qint32 rowStart = 0;    // the row's own ctlAppoStart (a series: its first day)
    bool allDay = false;    // boxAllDay
    bool alarm = false;     // boxAlarm
    bool recurring = false; // boxRecurring
    bool notes = false;     // boxNotes
    bool isPrivate = false; // boxPrivate
    QString subject;        // boxSubject
    QString location;
    int slot = 1;    // boxSlot: 1-based column within its overlap group
    int columns = 1; // boxColumns: columns of the group
    LayoutRect rect; // BoxRectangle: the whole day column's part
    LayoutRect box;  // PlaceBoxes: where the box stands
};

// The marks of a box in the order they are drawn: "A" alarm, "B" private,
// "C" recurring, "G" notes; empty when none is set.
QString BoxMarks(const CalendarBox &box);

class frmCalendar : public km::SectionWindow {
public:
    static constexpr int Section = CALENDAR::Section;

    explicit frmCalendar(const km::SectionContext &context);
    ~frmCalendar() override;
    int sectionCode() const override { return Section; }
    QString sectionMenu() const override { return QStringLiteral("mnuCalendar"); }
    QString caption() const override { return QStringLiteral("Calendar"); }
    void Form_Load() override;
    void Form_Unload() override;
    bool menuCommand(const QString &name, int index, const QString &arg) override;
    void HideShow() override;

    // ---- The request state shared with the appointment editor ----
    CalendarState state;
    // Opens the appointment editor on state and returns once it has closed,
    // with state updated as the editor leaves it. The appointment editor unless
    // replaced (tests script it).
    std::function<void()> openEditor;

    // ---- The view ----
    int ViewMode = ViewWeek;
    DateRange range;       // the days shown
    int gSlotMinutes = 30; // one row
    int displayFromRow = 0, workStartRow = 0, workEndRow = 0;
    bool hours12 = false;       // the system's time form: "h am/pm" rather than "HH"
    double visibleWidth = 0;    // the grid's width in layout units, set by the widget
    std::vector<CalendarBox> boxes; // shown boxes in start order

    int rowsPerHour() const { return 60 / gSlotMinutes; }
    int rowCount() const { return rowsPerHour() * 24; }
    double gridHeight() const { return rowsPerHour() * 7920.0; }
    int daysShown() const;
    double colWidth() const;
    qint32 firstMoment() const { return MomentOf(range.first); }
    qint32 lastMoment() const { return MomentOf(range.last) + MinutesPerDay; }
    QDate dayOfColumn(int column) const { return range.first.addDays(column); }
    // The column of a date, -1 outside the view.
    int columnOfDate(const QDate &date) const;
    // The hour label of a row that begins an hour, in the system's form.
    QString HourLabel(int hour) const;
    // "9:00 - 10:30" or "00-24": the time a box's tool tip and label give.
    QString BoxTimeText(const CalendarBox &box) const;
    // What a box's tool tip says: time, marks' meaning, subject and location.
    QString BoxToolTip(const CalendarBox &box) const;

    // ---- Date and view changes ----
    // A date change as the picker, Today and a drop make it: the limits with
    // messages 149 and 150; outside the loaded range the view moves.
    // Returns false when the date was refused.
    bool SetDate(const QDate &date);
    void calDate_DateClick(const QDate &date) { SetDate(date); }
    void cmdToday_Click();
    void mnuGotoToday_Click() { cmdToday_Click(); }
    // 0 day, 1 work week, 2 week; the month view (3) shows the week until it
    // has a window of its own. The choice is kept in CalView.
    void calView_Click(int mode);
    // Moves by one view's span (a day in the day view, a week otherwise).
    void Step(int direction);

    // ---- Drawing ----
    // Brings the boxes in line with the data: collects again when
    // state.gCalendarDirty, else only lays out again (after a resize).
    void DrawAppointments();
    LayoutRect BoxRectangle(qint32 start, qint32 end, bool allDay) const;
    void PlaceBoxes();
    // The moment of a grid point; nothing left of the gutter or right of the
    // last column. Sets state.gEditAllDay.
    std::optional<qint32> PointToMoment(double x, double y, bool allDay);
    // The box under a point of the grid or the strip, -1 for none (the last
    // drawn, which stands on top, wins).
    int BoxAt(double x, double y, bool allDay) const;

    // ---- Selection of rows (selArea, selAreaD) ----
    struct Selection {
        bool active = false;
        bool allDay = false;
        int column = 0;
        int firstRow = 0, lastRow = 0; // timed: rows inclusive
        int lastColumn = 0;            // all-day: columns inclusive
    };
    Selection selection;
    void ClearSelection() { selection = {}; }
    // Selects the rows (or strip columns) between two points.
    void SelectArea(double x0, double y0, double x1, double y1, bool allDay);
    // The selection's start and end moments.
    std::optional<std::pair<qint32, qint32>> SelectionSpan() const;

    // ---- Drags: press, move, release, all in layout units ----
    enum class DragKind { None, Move, Resize, MoveAllDay };
    struct Drag {
        DragKind kind = DragKind::None;
        int box = -1;
        double pressX = 0, pressY = 0;
        double grabX = 0, grabY = 0; // the press point within the box
        bool started = false;        // the pointer has left the threshold square
        bool valid = false;          // the shadow stands where a drop is taken
        LayoutRect shadow;           // txtMove / txtMoveD
        int rowsDelta = 0;           // a resize: rows added to the end
    };
    Drag drag;
    // Whether a point over a timed box lies in its resize zone (the pointer's
    // vertical resize form).
    bool InResizeZone(int box, double y) const;
    // A press on a box: its shadow comes up, a move or (near the bottom edge)
    // a resize begins.
    void BoxPress(int box, double x, double y);
    // The pointer moved: the shadow follows. Allocates nothing.
    void DragMove(double x, double y, bool overStrip);
    // The release. True when it was a drop that wrote, false for a click (no
    // move beyond the threshold), a refused drop or a drop on the other frame.
    bool DragRelease(double x, double y, bool overStrip);
    void CancelDrag() { drag = {}; }

    // ---- Writing ----
    enum SaveMode { ModeEnd = 1, ModeMove = 2, ModeSubject = 3 };
    // Writes a box's change: mode 1 the end, mode 2 start and end, mode 3 the
    // subject typed into it. A series keeps its first day and takes the new
    // time of day (it moves as one). False when nothing was written.
    bool SaveBoxChange(int box, int mode, qint32 newStart, qint32 newEnd, const QString &subject = QString());
    // The same for a row and occurrence named from outside (kmd move): the
    // occurrence of id that starts at fromStart. Mode 1 when the start stays.
    bool MoveOccurrence(qint64 id, qint32 fromStart, qint32 newStart, std::optional<qint32> newEnd,
                        QString *why = nullptr);
    // A new row from a list item dropped on the grid (allDay: on the strip).
    qint64 CreateAppointmentRow(const QString &subject, double x, double y, bool allDay);

    // ---- Editor and menus ----
    // Double-click on the grid or the strip: a new appointment there.
    void NewAppointmentAt(double x, double y, bool allDay);
    // Double-click on a box, or Open of its context menu.
    void OpenBox(int box);
    // mnuCalendarNewApp / mnuCalendarNewAllday: the selection's span, or none.
    void mnuNewAppointment(bool allDay);
    // Delete of a box's context menu: message 7, the whole row or series.
    bool DeleteBox(int box);
    // The context menu of a point: "mnuCalendarAppoRC" over a box (which
    // becomes contextBox), else "mnuCalendarRC" (the point becomes the
    // selection when it lies outside it).
    QString ContextMenuAt(double x, double y, bool allDay);
    int contextBox = -1;
    int selectedBox = -1;

    // Called by the model whenever what is drawn changed.
    std::function<void()> onChanged;

private:
    void changed() const {
        if (onChanged) onChanged();
    }
    bool inLimits(const QDate &date);
    void collect();
    void layout();
    void runEditor();
    void afterEditor();
    qint64 writeTimes(qint64 id, qint32 occurrenceStart, qint32 newStart, qint32 newEnd, int mode,
                      const QString &subject);

    km::SectionContext m_context;
    std::vector<Occurrence> m_occurrences; // CollectOccurrences of the range
    std::vector<CalendarBox> m_entries;    // every loaded entry, private ones too
    std::vector<qint32> m_columnEnds;      // the overlap step's columnEnds, kept between layouts
    std::array<int, 7> m_allDayCount{};
};

// Registers the calendar and the diary with the main window, and what Find
// shows of their rows.
void RegisterSections();

// "fPK<TAB>start<TAB>end<TAB>allday<TAB>boxSlot<TAB>boxColumns<TAB>marks<TAB>subject"
// of every box of the view of date, in the order DrawAppointments lays them out.
QStringList LayoutLines(const km::SectionContext &context, const QDate &date, int mode, bool showPrivate);

} // namespace CALENDAR
