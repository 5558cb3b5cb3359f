#include "calendar/frmCalendar.h"

#include "calendar/CalendarFind.h"
#include "calendar/frmDiary.h"
#include "calendar/frmEditCalendar.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QHash>

#include "platform/Engine.h"
#include "shell/BasicShell.h"
#include "store/CRY.h"
#include "store/Record_Get.h"
#include "store/Startvariables.h"
#include "store/db.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"

namespace CALENDAR {

namespace {

constexpr int MsgConfirmDelete = 7;
constexpr int MsgLowerLimit = 149;
constexpr int MsgUpperLimit = 150;
constexpr int PrivateBit = 1; // field of the private flag in the packed record

// A whole number of rows from a distance: the rest above half a row counts
// as one more, toward the pointer's side.
int nearestRows(double distance) {
    const double whole = std::trunc(distance / RowHeight);
    const double rest = distance - whole * RowHeight;
    if (rest > SnapRest) return static_cast<int>(whole) + 1;
    if (rest < -SnapRest) return static_cast<int>(whole) - 1;
    return static_cast<int>(whole);
}

int rowOfDayFraction(double fraction, int rowsPerHour) {
    const int minutes = static_cast<int>(std::lround(fraction * MinutesPerDay));
    return minutes * rowsPerHour / 60;
}

QString timeText(int minuteOfDay, bool hours12) {
    const int h = minuteOfDay / 60 % 24;
    const int m = minuteOfDay % 60;
    if (!hours12) return QStringLiteral("%1:%2").arg(h, 2, 10, QLatin1Char('0')).arg(m, 2, 10, QLatin1Char('0'));
    const int h12 = h % 12 == 0 ? 12 : h % 12;
    return QStringLiteral("%1:%2 %3")
        .arg(h12)
        .arg(m, 2, 10, QLatin1Char('0'))
        .arg(h < 12 ? QStringLiteral("am") : QStringLiteral("pm"));
}

} // namespace

QString BoxMarks(const CalendarBox &box) {
    QString marks;
    if (box.alarm) marks += QLatin1Char('A');
    if (box.isPrivate) marks += QLatin1Char('B');
    if (box.recurring) marks += QLatin1Char('C');
    if (box.notes) marks += QLatin1Char('G');
    return marks;
}

frmCalendar::frmCalendar(const km::SectionContext &context) : m_context(context) {
    visibleWidth = HourGutter + 7 * 1800.0;
    m_entries.reserve(256);
    boxes.reserve(256);
    m_columnEnds.reserve(32);
    openEditor = [this] {
        frmEditCalendar editor(m_context, state);
        m_context.dialogs.showModal(editor);
    };
}

frmCalendar::~frmCalendar() {
    Form_Unload();
}

void frmCalendar::Form_Load() {
    const Startvariables::State &start = Startvariables::state();
    gSlotMinutes = start.CalSlotMinutes;
    if (gSlotMinutes <= 0 || gSlotMinutes > 60 || 60 % gSlotMinutes != 0) gSlotMinutes = 30;
    displayFromRow = rowOfDayFraction(start.DayFirstShown, rowsPerHour());
    workStartRow = rowOfDayFraction(start.DayStart, rowsPerHour());
    workEndRow = rowOfDayFraction(start.DayEnd, rowsPerHour());
    const QString timeForm = m_context.locale.timeFormat(QLocale::ShortFormat);
    hours12 = timeForm.contains(QLatin1Char('a'), Qt::CaseInsensitive);
    // 255: no view chosen yet.
    // 255: no view chosen yet. The month view has no window part yet: the week stands for it.
    ViewMode = start.CalView <= ViewWeek ? int(start.CalView) : int(ViewWeek);
    state = {};
    state.calDate = m_context.clock.dateTime().date();
    range = ViewRange(state.calDate, ViewMode);
    state.gCalendarDirty = true;
    DrawAppointments();
}

void frmCalendar::Form_Unload() {
    for (CalendarBox &b : m_entries) {
        km::wipe(b.subject);
        km::wipe(b.location);
    }
    for (CalendarBox &b : boxes) {
        km::wipe(b.subject);
        km::wipe(b.location);
    }
    m_entries.clear();
    boxes.clear();
    m_occurrences.clear();
}

bool frmCalendar::menuCommand(const QString &name, int index, const QString &) {
    if (name == QLatin1String("CalendarView")) {
        calView_Click(index);
        return true;
    }
    if (name == QLatin1String("mnuCalendarGotoToday")) {
        mnuGotoToday_Click();
        return true;
    }
    if (name == QLatin1String("mnuCalendarNewApp") || name == QLatin1String("mnuCalendarRCNewAppo")) {
        mnuNewAppointment(false);
        return true;
    }
    if (name == QLatin1String("mnuCalendarNewAllday") || name == QLatin1String("mnuCalendarRCNewAllday")) {
        mnuNewAppointment(true);
        return true;
    }
    if (name == QLatin1String("mnuCalendarAppoRCOpen")) {
        OpenBox(contextBox);
        return true;
    }
    if (name == QLatin1String("mnuCalendarAppoRCDelete")) {
        DeleteBox(contextBox);
        return true;
    }
    return false;
}

void frmCalendar::HideShow() {
    ClearSelection();
    selectedBox = -1;
    layout();
    changed();
}

// ---- Geometry ----

int frmCalendar::daysShown() const {
    return static_cast<int>(range.first.daysTo(range.last)) + 1;
}

double frmCalendar::colWidth() const {
    const int days = std::max(1, daysShown());
    return std::max(1.0, (visibleWidth - HourGutter) / days);
}

int frmCalendar::columnOfDate(const QDate &date) const {
    if (date < range.first || date > range.last) return -1;
    return static_cast<int>(range.first.daysTo(date));
}

QString frmCalendar::HourLabel(int hour) const {
    if (!hours12) return QStringLiteral("%1:00").arg(hour, 2, 10, QLatin1Char('0'));
    const int h12 = hour % 12 == 0 ? 12 : hour % 12;
    return QStringLiteral("%1 %2").arg(h12).arg(hour < 12 ? QStringLiteral("am") : QStringLiteral("pm"));
}

QString frmCalendar::BoxTimeText(const CalendarBox &box) const {
    if (box.allDay) return QStringLiteral("00-24");
    return timeText(MinuteOfDayOfMoment(box.start), hours12) + QStringLiteral(" - ") +
           timeText(MinuteOfDayOfMoment(box.end), hours12);
}

QString frmCalendar::BoxToolTip(const CalendarBox &box) const {
    QStringList lines;
    lines << BoxTimeText(box) + QStringLiteral("  ") + box.subject;
    if (!box.location.isEmpty()) lines << box.location;
    QStringList marks;
    if (box.alarm) marks << QStringLiteral("Alarm");
    if (box.isPrivate) marks << QStringLiteral("Private");
    if (box.recurring) marks << QStringLiteral("Recurring");
    if (box.notes) marks << QStringLiteral("Notes");
    if (!marks.isEmpty()) lines << marks.join(QStringLiteral(", "));
    return lines.join(QLatin1Char('\n'));
}

// ---- Date and view ----

bool frmCalendar::inLimits(const QDate &date) {
    const qint64 day = DayNumber(date);
    if (day < FirstCalendarDay) {
        m_context.dialogs.message(LanguageUS::MessageText(MsgLowerLimit) + QLatin1Char(' ') +
                                      m_context.locale.toString(DateOfDay(FirstCalendarDay), QLocale::ShortFormat),
                                  km::Buttons::OK, km::Answer::OK, km::Icon::Exclamation, QString());
        return false;
    }
    if (day >= LastCalendarDay) {
        m_context.dialogs.message(LanguageUS::MessageText(MsgUpperLimit) + QLatin1Char(' ') +
                                      m_context.locale.toString(DateOfDay(LastCalendarDay), QLocale::ShortFormat),
                                  km::Buttons::OK, km::Answer::OK, km::Icon::Exclamation, QString());
        return false;
    }
    return true;
}

bool frmCalendar::SetDate(const QDate &date) {
    if (!date.isValid() || !inLimits(date)) return false;
    if (date == state.calDate) return true;
    ClearSelection();
    selectedBox = -1;
    if (date < range.first || date > range.last) {
        state.gCalendarDirty = true;
        range = ViewRange(date, ViewMode);
    }
    state.calDate = date;
    DrawAppointments();
    return true;
}

void frmCalendar::cmdToday_Click() {
    SetDate(m_context.clock.dateTime().date());
}

void frmCalendar::calView_Click(int mode) {
    if (mode < ViewDay || mode > ViewMonth) return;
    // The month view has no window part yet: the week stands for it.
    const int shown = mode == ViewMonth ? ViewWeek : mode;
    Startvariables::state().CalView = static_cast<quint8>(mode);
    ViewMode = shown;
    ClearSelection();
    selectedBox = -1;
    range = ViewRange(state.calDate, ViewMode);
    state.gCalendarDirty = true;
    DrawAppointments();
}

void frmCalendar::Step(int direction) {
    const int days = ViewMode == ViewDay ? 1 : 7;
    const QDate target = state.calDate.addDays(static_cast<qint64>(direction) * days);
    if (!inLimits(target)) return;
    ClearSelection();
    selectedBox = -1;
    state.calDate = target;
    range = ViewRange(target, ViewMode);
    state.gCalendarDirty = true;
    DrawAppointments();
}

// ---- Drawing ----

void frmCalendar::DrawAppointments() {
    if (state.gCalendarDirty) collect();
    layout();
    changed();
}

void frmCalendar::collect() {
    state.gCalendarDirty = false;
    for (CalendarBox &b : m_entries) {
        km::wipe(b.subject);
        km::wipe(b.location);
    }
    m_entries.clear();
    m_occurrences = CollectOccurrences(m_context.store, range.first, range.last);
    const qint32 first = firstMoment();
    const qint32 last = lastMoment();

    // Each row is read once, however many occurrences it has in the view, and
    // all of them by one query.
    struct RowRead {
        bool found = false;
        AppointmentRecord record;
    };
    QHash<qint64, RowRead> rows;
    QStringList ids;
    for (const Occurrence &o : m_occurrences)
        if (o.start >= first && o.start < last && !rows.contains(o.id)) {
            rows.insert(o.id, RowRead{});
            ids << QString::number(o.id);
        }
    if (!ids.isEmpty()) {
        auto rs = m_context.store.OpenRowSet(QStringLiteral("SELECT fPK, fEtx FROM tt WHERE fPK IN (%1) AND fSec=%2 "
                                                            "WITH OWNERACCESS OPTION;")
                                                 .arg(ids.join(QLatin1Char(',')))
                                                 .arg(Section),
                                             km::Snapshot);
        for (; !rs->Eof(); rs->MoveNext()) {
            RowRead &read = rows[rs->GetColumn(QStringLiteral("fPK")).toLongLong()];
            km::SecureBytes clear = CRY::DecryptFieldBytes(rs->GetColumn(QStringLiteral("fEtx")).toByteArray());
            read.found = true;
            read.record = AppointmentFromClear(clear);
            km::wipe(clear);
        }
    }
    for (const Occurrence &o : m_occurrences) {
        if (o.start < first || o.start >= last) continue;
        const auto it = rows.constFind(o.id);
        if (!it->found) continue;
        const AppointmentRecord &r = it->record;
        CalendarBox b;
        b.id = o.id;
        b.rowStart = r.ctlAppoStart;
        b.allDay = r.ctlAllday == 1;
        if (b.allDay) {
            b.start = DayOfMoment(o.start) * MinutesPerDay;
            b.end = b.start + MinutesPerDay;
        } else {
            b.start = o.start;
            b.end = o.start + (r.ctlAppoEnd - r.ctlAppoStart);
        }
        b.subject = r.ctlSubject;
        b.location = r.ctlLocation;
        b.alarm = r.ctlAlarmYN == 1;
        b.recurring = !r.ctlRedoString.isEmpty();
        b.notes = !r.ctlNotes.isEmpty();
        b.isPrivate = r.ctlPrivate;
        m_entries.push_back(std::move(b));
    }
    for (RowRead &read : rows) {
        km::wipe(read.record.ctlSubject);
        km::wipe(read.record.ctlLocation);
        km::wipe(read.record.ctlNotes);
    }
    // An all-day box counts from its midnight: it goes before the day's timed boxes.
    std::stable_sort(m_entries.begin(), m_entries.end(),
                     [](const CalendarBox &a, const CalendarBox &b) { return a.start < b.start; });
}

void frmCalendar::layout() {
    for (CalendarBox &b : boxes) {
        km::wipe(b.subject);
        km::wipe(b.location);
    }
    boxes.clear();
    const bool showPrivate = m_context.shell.privateShown();
    for (const CalendarBox &e : m_entries)
        if (showPrivate || !e.isPrivate) boxes.push_back(e);

    // The overlap step: one pass over the boxes in start order.
    const qint32 first = firstMoment();
    m_allDayCount.fill(0);
    m_columnEnds.clear();
    int groupSize = 0;
    qint32 groupEnd = std::numeric_limits<qint32>::min();
    const auto setColumns = [this](qsizetype from, qsizetype to, int columns) {
        for (qsizetype k = std::max<qsizetype>(0, from); k <= to; ++k)
            boxes[static_cast<size_t>(k)].columns = columns;
    };
    for (qsizetype i = 0; i < static_cast<qsizetype>(boxes.size()); ++i) {
        CalendarBox &b = boxes[static_cast<size_t>(i)];
        b.rect = BoxRectangle(b.start, b.end, b.allDay);
        b.slot = 1;
        b.columns = 1;
        if (b.allDay) {
            const int d = std::clamp((b.start - first) / MinutesPerDay, 0, 6);
            if (++m_allDayCount[static_cast<size_t>(d)] > 1 && i > 0) {
                b.slot = boxes[static_cast<size_t>(i - 1)].columns + 1;
                setColumns(i - b.slot + 1, i, b.slot);
            }
            continue;
        }
        if (i == 0 || b.start >= groupEnd) {
            // The first box, or one that starts after the group has ended: a new group.
            groupSize = 1;
            m_columnEnds.assign(1, b.end);
        } else {
            ++groupSize;
            const CalendarBox &prev = boxes[static_cast<size_t>(i - 1)];
            bool placed = false;
            if (prev.columns >= 2 && !prev.allDay) {
                // The first earlier box of the group whose column has ended lends it.
                for (qsizetype j = std::max<qsizetype>(0, i - groupSize + 1); j < i; ++j) {
                    const CalendarBox &other = boxes[static_cast<size_t>(j)];
                    const size_t column = static_cast<size_t>(other.slot - 1);
                    if (column >= m_columnEnds.size() || b.start < m_columnEnds[column]) continue;
                    b.slot = other.slot;
                    b.columns = other.columns;
                    m_columnEnds[column] = std::max(m_columnEnds[column], b.end);
                    placed = true;
                    break;
                }
            }
            // A box that starts where the one before it ended, or after an
            // all-day box, stays in column 1 of 1 although it overlaps the
            // group: the overlap step has always placed it so.
            if (!placed && !(b.start >= prev.end || prev.allDay)) {
                b.slot = prev.columns + 1;
                m_columnEnds.resize(static_cast<size_t>(b.slot), std::numeric_limits<qint32>::min());
                m_columnEnds[static_cast<size_t>(b.slot - 1)] =
                    std::max(m_columnEnds[static_cast<size_t>(b.slot - 1)], b.end);
                setColumns(i - groupSize + 1, i, b.slot);
            }
        }
        if (b.end > groupEnd) groupEnd = b.end;
    }
    PlaceBoxes();
}

LayoutRect frmCalendar::BoxRectangle(qint32 start, qint32 end, bool allDay) const {
    const qint32 s = start - firstMoment();
    const int column = s / MinutesPerDay;
    const int m = s % MinutesPerDay;
    int e = (end - firstMoment()) % MinutesPerDay;
    if (e == 0) e = MinutesPerDay;
    LayoutRect r;
    r.left = colWidth() * column + HourGutter;
    r.width = colWidth();
    if (allDay) {
        r.top = 0;
        r.height = StripRowHeight;
        return r;
    }
    r.top = std::max(0.0, rowsPerHour() * m / 60.0 * RowHeight);
    r.height = (e - m) / 60.0 * rowsPerHour() * RowHeight;
    if (r.height < 0) r.height = 30;
    return r;
}

void frmCalendar::PlaceBoxes() {
    const double cw = colWidth();
    for (CalendarBox &b : boxes) {
        b.box.left = b.rect.left + BoxIndent + (b.slot - 1) * (cw - BoxMargin) / b.columns;
        b.box.width = (b.rect.width - BoxMargin) / b.columns;
        if (b.allDay) {
            b.box.top = 30;
            b.box.height = StripRowHeight - 60;
        } else {
            b.box.top = b.rect.top;
            b.box.height = b.rect.height;
        }
    }
}

std::optional<qint32> frmCalendar::PointToMoment(double x, double y, bool allDay) {
    if (x < HourGutter) return std::nullopt;
    const int column = static_cast<int>(std::floor((x - HourGutter) / colWidth()));
    if (column < 0 || column >= daysShown()) return std::nullopt;
    const qint32 midnight = firstMoment() + column * MinutesPerDay;
    if (allDay) {
        state.gEditAllDay = 1;
        return midnight;
    }
    state.gEditAllDay = 0;
    const int row = std::clamp(static_cast<int>(std::floor(y / RowHeight)), 0, rowCount());
    return midnight + row * 60 / rowsPerHour();
}

int frmCalendar::BoxAt(double x, double y, bool allDay) const {
    for (qsizetype i = static_cast<qsizetype>(boxes.size()) - 1; i >= 0; --i) {
        const CalendarBox &b = boxes[static_cast<size_t>(i)];
        if (b.allDay == allDay && b.box.contains(x, y)) return static_cast<int>(i);
    }
    return -1;
}

// ---- Selection ----

void frmCalendar::SelectArea(double x0, double y0, double x1, double y1, bool allDay) {
    const auto columnOf = [this](double x) {
        return std::clamp(static_cast<int>(std::floor((x - HourGutter) / colWidth())), 0, daysShown() - 1);
    };
    if (x0 < HourGutter) {
        ClearSelection();
        return;
    }
    selection.active = true;
    selection.allDay = allDay;
    selection.column = columnOf(x0);
    if (allDay) {
        selection.lastColumn = columnOf(x1);
        if (selection.lastColumn < selection.column) std::swap(selection.lastColumn, selection.column);
        return;
    }
    // A timed selection stays in the column where it began.
    const auto rowOf = [this](double y) {
        return std::clamp(static_cast<int>(std::floor(y / RowHeight)), 0, rowCount() - 1);
    };
    selection.firstRow = rowOf(y0);
    selection.lastRow = rowOf(y1);
    if (selection.lastRow < selection.firstRow) std::swap(selection.firstRow, selection.lastRow);
}

std::optional<std::pair<qint32, qint32>> frmCalendar::SelectionSpan() const {
    if (!selection.active) return std::nullopt;
    const qint32 midnight = firstMoment() + selection.column * MinutesPerDay;
    if (selection.allDay)
        return std::pair{midnight, firstMoment() + (selection.lastColumn + 1) * MinutesPerDay};
    return std::pair{midnight + selection.firstRow * gSlotMinutes, midnight + (selection.lastRow + 1) * gSlotMinutes};
}

// ---- Drags ----

bool frmCalendar::InResizeZone(int box, double y) const {
    if (box < 0 || box >= static_cast<int>(boxes.size())) return false;
    const CalendarBox &b = boxes[static_cast<size_t>(box)];
    return !b.allDay && y >= b.box.bottom() - ResizeZone && y < b.box.bottom();
}

void frmCalendar::BoxPress(int box, double x, double y) {
    drag = {};
    if (box < 0 || box >= static_cast<int>(boxes.size())) return;
    const CalendarBox &b = boxes[static_cast<size_t>(box)];
    selectedBox = box;
    ClearSelection();
    drag.box = box;
    drag.kind = b.allDay ? DragKind::MoveAllDay : (InResizeZone(box, y) ? DragKind::Resize : DragKind::Move);
    drag.pressX = x;
    drag.pressY = y;
    drag.grabX = x - b.box.left;
    drag.grabY = y - b.box.top;
    drag.shadow = b.box;
    drag.valid = true;
}

void frmCalendar::DragMove(double x, double y, bool overStrip) {
    if (drag.kind == DragKind::None) return;
    if (!drag.started) {
        if (std::abs(x - drag.pressX) <= DragThreshold && std::abs(y - drag.pressY) <= DragThreshold) return;
        drag.started = true;
    }
    const CalendarBox &b = boxes[static_cast<size_t>(drag.box)];
    const double cw = colWidth();
    switch (drag.kind) {
    case DragKind::Resize: {
        // Each row moves the end by one slot; the box keeps at least one row.
        const int minRows = -static_cast<int>(std::ceil(b.box.height / RowHeight)) + 1;
        drag.rowsDelta = std::max(nearestRows(y - drag.pressY), std::min(0, minRows));
        double height = b.box.height + drag.rowsDelta * RowHeight;
        height = std::min(height, gridHeight() - b.box.top);
        drag.shadow.height = std::max(height, std::min(b.box.height, RowHeight));
        drag.valid = !overStrip;
        return;
    }
    case DragKind::MoveAllDay: {
        if (!overStrip || x < HourGutter) {
            drag.valid = false;
            return;
        }
        const int column = std::clamp(static_cast<int>(std::floor((x - HourGutter) / cw)), 0, daysShown() - 1);
        drag.shadow.left = b.box.left + (column - std::floor((b.rect.left - HourGutter) / cw + 0.5)) * cw;
        drag.valid = true;
        return;
    }
    case DragKind::Move: {
        // Drop arithmetic: the box's middle picks the column, the top snaps
        // to the nearest row, and the box stays within the day.
        const double middle = x - drag.grabX + std::floor(b.box.width / 2);
        if (overStrip || middle < HourGutter || middle >= HourGutter + cw * daysShown()) {
            drag.valid = false;
            return;
        }
        const int column = static_cast<int>((middle - HourGutter) / cw);
        double top = nearestRows(y - drag.grabY) * RowHeight;
        top = std::max(0.0, std::min(top, gridHeight() - b.box.height));
        drag.shadow.left = HourGutter + column * cw + BoxIndent;
        drag.shadow.top = top;
        drag.shadow.width = cw - BoxMargin;
        drag.valid = true;
        return;
    }
    case DragKind::None:
        return;
    }
}

bool frmCalendar::DragRelease(double x, double y, bool overStrip) {
    if (drag.kind == DragKind::None) return false;
    DragMove(x, y, overStrip);
    const Drag done = drag;
    drag = {};
    if (!done.started || !done.valid) {
        changed();
        return false;
    }
    const CalendarBox &b = boxes[static_cast<size_t>(done.box)];
    const double cw = colWidth();
    switch (done.kind) {
    case DragKind::Resize: {
        if (done.rowsDelta == 0) break;
        const qint32 dayEnd = (DayOfMoment(b.start) + 1) * MinutesPerDay;
        qint32 end = b.end + done.rowsDelta * gSlotMinutes;
        end = std::max(end, b.start + std::min(gSlotMinutes, b.end - b.start));
        end = std::min(end, dayEnd);
        if (end == b.end) break;
        return SaveBoxChange(done.box, ModeEnd, b.start, end);
    }
    case DragKind::MoveAllDay: {
        const int from = static_cast<int>((b.rect.left - HourGutter) / cw + 0.5);
        const int to = std::clamp(static_cast<int>(std::floor((x - HourGutter) / cw)), 0, daysShown() - 1);
        if (from == to) break;
        const qint32 shift = (to - from) * MinutesPerDay;
        return SaveBoxChange(done.box, ModeMove, b.start + shift, b.end + shift);
    }
    case DragKind::Move: {
        const auto start = PointToMoment(done.shadow.left, done.shadow.top, false);
        const auto oldStart = PointToMoment(b.box.left + 1, b.box.top, false);
        if (!start) break;
        // A box off the slot grid keeps its minutes when it only changes day.
        const qint32 delta = oldStart ? *start - *oldStart : 1;
        const qint32 newStart = delta % MinutesPerDay == 0 ? b.start + delta : *start;
        if (newStart == b.start) break;
        qint32 newEnd = newStart + (b.end - b.start);
        newEnd = std::min(newEnd, (DayOfMoment(newStart) + 1) * MinutesPerDay);
        return SaveBoxChange(done.box, ModeMove, newStart, newEnd);
    }
    case DragKind::None:
        break;
    }
    changed();
    return false;
}

// ---- Writing ----

qint64 frmCalendar::writeTimes(qint64 id, qint32 occurrenceStart, qint32 newStart, qint32 newEnd, int mode,
                               const QString &subject) {
    std::optional<AppointmentRecord> record = ReadAppointment(id);
    if (!record) {
        km::ShowMessage(11);
        return 0;
    }
    AppointmentRecord &r = *record;
    if (mode == ModeSubject) {
        r.ctlSubject = subject;
    } else {
        qint32 start = newStart;
        qint32 end = newEnd;
        if (r.isSeries()) {
            // A series keeps its days: the rule computes them from its own
            // first day, and the row takes only the new time of day.
            const qint32 shift = MinuteOfDayOfMoment(newStart) - MinuteOfDayOfMoment(occurrenceStart);
            start = r.ctlAppoStart + shift;
            end = start + (newEnd - newStart);
        }
        if (mode == ModeMove) {
            // The alarm keeps its lead before the start.
            r.ctlAlarmTime += start - r.ctlAppoStart;
            r.ctlAppoStart = start;
        }
        r.ctlAppoEnd = std::min(end, (DayOfMoment(r.ctlAppoStart) + 1) * MinutesPerDay);
    }
    const qint64 written = WriteAppointment(id, r, WriteScope::Times);
    km::wipe(r.ctlSubject);
    km::wipe(r.ctlLocation);
    km::wipe(r.ctlNotes);
    return written;
}

bool frmCalendar::SaveBoxChange(int box, int mode, qint32 newStart, qint32 newEnd, const QString &subject) {
    if (box < 0 || box >= static_cast<int>(boxes.size())) return false;
    const CalendarBox b = boxes[static_cast<size_t>(box)];
    const qint64 written = writeTimes(b.id, b.start, newStart, newEnd, mode, subject);
    state.gCalendarDirty = true;
    selectedBox = -1;
    // The calendar follows a moved box to its new day.
    if (written != 0 && mode == ModeMove && DateOfMoment(newStart) != state.calDate &&
        SetDate(DateOfMoment(newStart)))
        return true;
    DrawAppointments();
    return written != 0;
}

bool frmCalendar::MoveOccurrence(qint64 id, qint32 fromStart, qint32 newStart, std::optional<qint32> newEnd,
                                 QString *why) {
    const QDate day = DateOfMoment(fromStart);
    range = ViewRange(day, ViewDay);
    state.calDate = day;
    state.gCalendarDirty = true;
    collect();
    const auto it = std::find_if(m_entries.begin(), m_entries.end(), [&](const CalendarBox &e) {
        return e.id == id && (e.start == fromStart || (e.allDay && DayOfMoment(e.start) == DayOfMoment(fromStart)));
    });
    if (it == m_entries.end()) {
        if (why) *why = QStringLiteral("No occurrence of %1 starts then").arg(id);
        return false;
    }
    const CalendarBox &b = *it;
    qint32 start = newStart;
    qint32 end = newEnd.value_or(newStart + (b.end - b.start));
    if (b.allDay && !newEnd) {
        start = DayOfMoment(newStart) * MinutesPerDay;
        end = start + MinutesPerDay;
    }
    if (end < start) {
        if (why) *why = QStringLiteral("The end lies before the start");
        return false;
    }
    if (!inLimits(DateOfMoment(start))) {
        if (why) *why = QStringLiteral("The date lies outside the calendar's range");
        return false;
    }
    const int mode = start == b.start ? ModeEnd : ModeMove;
    const qint64 written = writeTimes(b.id, b.start, start, end, mode, QString());
    state.gCalendarDirty = true;
    if (written == 0 && why) *why = LanguageUS::MessageText(16);
    return written != 0;
}

qint64 frmCalendar::CreateAppointmentRow(const QString &subject, double x, double y, bool allDay) {
    const auto start = PointToMoment(x, y, allDay);
    if (!start || !inLimits(DateOfMoment(*start))) return 0;
    AppointmentRecord r;
    r.UserNumber = m_context.shell.userNumber();
    r.ctlPrivate = false;
    r.ctlAppoStart = *start;
    r.ctlAppoEnd = allDay ? *start + MinutesPerDay : *start + gSlotMinutes;
    r.ctlAllday = allDay ? 1 : 0;
    r.ctlAlarmTime = r.ctlAppoStart;
    r.ctlSubject = subject;
    const qint64 id = WriteAppointment(0, r);
    km::wipe(r.ctlSubject);
    state.gCalendarDirty = true;
    DrawAppointments();
    return id;
}

// ---- Editor and menus ----

void frmCalendar::runEditor() {
    if (openEditor) openEditor();
    afterEditor();
}

void frmCalendar::afterEditor() {
    const bool dirty = state.gCalendarDirty;
    if (state.gGotoDate && state.gGotoDate->isValid() && *state.gGotoDate != state.calDate) {
        const QDate target = *state.gGotoDate;
        if (target < range.first || target > range.last) {
            state.gCalendarDirty = true;
            range = ViewRange(target, ViewMode);
        }
        state.calDate = target;
    }
    state.gGotoDate.reset();
    if (dirty || state.gCalendarDirty) {
        state.gCalendarDirty = true;
        DrawAppointments();
    } else {
        changed();
    }
    state.gEditStart = 0;
    state.gEditEnd = 0;
    state.gEditAllDay = 0;
}

void frmCalendar::NewAppointmentAt(double x, double y, bool allDay) {
    const auto start = PointToMoment(x, y, allDay);
    if (!start) return;
    if (!inLimits(DateOfMoment(*start))) return;
    state.gEditIsNew = true;
    state.gEditId = 0;
    state.gEditStart = *start;
    state.gEditEnd = allDay ? *start + MinutesPerDay : *start + gSlotMinutes;
    ClearSelection();
    runEditor();
}

void frmCalendar::mnuNewAppointment(bool allDay) {
    state.gEditIsNew = true;
    state.gEditId = 0;
    state.gEditAllDay = allDay ? 1 : 0;
    if (const auto span = SelectionSpan()) {
        state.gEditStart = span->first;
        state.gEditEnd = span->second;
        if (selection.allDay) state.gEditAllDay = 1;
    } else {
        // No slot chosen: the editor starts from the calendar's date.
        state.gEditStart = 0;
        state.gEditEnd = 0;
    }
    runEditor();
}

void frmCalendar::OpenBox(int box) {
    if (box < 0 || box >= static_cast<int>(boxes.size())) return;
    const CalendarBox &b = boxes[static_cast<size_t>(box)];
    state.gEditIsNew = false;
    state.gEditId = b.id;
    state.gEditStart = b.start;
    state.gEditEnd = b.end;
    state.gEditAllDay = b.allDay ? 1 : 0;
    runEditor();
}

bool frmCalendar::DeleteBox(int box) {
    if (box < 0 || box >= static_cast<int>(boxes.size())) return false;
    const qint64 id = boxes[static_cast<size_t>(box)].id;
    if (km::ShowMessage(MsgConfirmDelete, km::Buttons::YesNo, km::Answer::No, km::Icon::Question) !=
        km::Answer::Yes)
        return false;
    m_context.store.Execute(
        QStringLiteral("DELETE * FROM tt WHERE fPK=%1 AND fSec=%2 WITH OWNERACCESS OPTION;").arg(id).arg(Section));
    // A span that marks a whole day was the deleted all-day box's.
    if (state.gEditEnd - state.gEditStart == MinutesPerDay && MinuteOfDayOfMoment(state.gEditStart) == 0) {
        state.gEditStart = 0;
        state.gEditEnd = 0;
    }
    selectedBox = -1;
    contextBox = -1;
    state.gCalendarDirty = true;
    DrawAppointments();
    return true;
}

QString frmCalendar::ContextMenuAt(double x, double y, bool allDay) {
    const int box = BoxAt(x, y, allDay);
    if (box >= 0) {
        contextBox = box;
        selectedBox = box;
        return QStringLiteral("mnuCalendarAppoRC");
    }
    contextBox = -1;
    if (const auto start = PointToMoment(x, y, allDay)) {
        const auto span = SelectionSpan();
        if (!span || *start < span->first || *start >= span->second) SelectArea(x, y, x, y, allDay);
    }
    return QStringLiteral("mnuCalendarRC");
}

// ---- Registration and the command line ----

void RegisterSections() {
    km::frmMDI::RegisterSection(Section, [](const km::SectionContext &context) {
        return std::make_unique<frmCalendar>(context);
    });
    km::RegisterDiarySection();
    RegisterFindSections();
}

QStringList LayoutLines(const km::SectionContext &context, const QDate &date, int mode, bool showPrivate) {
    const bool was = context.shell.privateShown();
    context.shell.setPrivateShown(showPrivate);
    frmCalendar view(context);
    view.ViewMode = mode;
    view.state.calDate = date;
    view.range = ViewRange(date, mode);
    view.state.gCalendarDirty = true;
    view.DrawAppointments();
    context.shell.setPrivateShown(was);
    QStringList lines;
    const auto when = [](qint32 moment) {
        return DateOfMoment(moment).toString(QStringLiteral("yyyy-MM-dd")) + QLatin1Char(' ') +
               QStringLiteral("%1:%2")
                   .arg(MinuteOfDayOfMoment(moment) / 60, 2, 10, QLatin1Char('0'))
                   .arg(MinuteOfDayOfMoment(moment) % 60, 2, 10, QLatin1Char('0'));
    };
    for (const CalendarBox &b : view.boxes) {
        QString subject = b.subject;
        subject.replace(QLatin1Char('\t'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
        subject.replace(QLatin1Char('\r'), QLatin1Char(' '));
        lines << QStringLiteral("%1\t%2\t%3\t%4\t%5\t%6\t%7\t%8")
                     .arg(b.id)
                     .arg(when(b.start), when(b.end))
                     .arg(b.allDay ? 1 : 0)
                     .arg(b.slot)
                     .arg(b.columns)
                     .arg(BoxMarks(b), subject);
        km::wipe(subject);
    }
    return lines;
}

} // namespace CALENDAR
