// What the calendar window and the appointment editor tell each other. The
// calendar fills the request before it opens the editor; the editor reads it,
// and on closing says whether it wrote a row and where the calendar should go.
// One object per calendar window, handed to each editor it opens.
#pragma once

#include <optional>

#include <QDate>
#include <QtGlobal>

namespace CALENDAR {

struct CalendarState {
    // True: the editor makes a new appointment; false: it changes gEditId.
    bool gEditIsNew = true;
    qint64 gEditId = 0; // fPK of the row to change
    // Moments (minutes since the store's epoch) of the clicked slot or
    // occurrence; 0 = none chosen.
    qint32 gEditStart = 0;
    qint32 gEditEnd = 0;
    quint8 gEditAllDay = 0; // 1: a new row starts as all-day
    // A save wrote a row (set by the editor's OK, cleared by its Esc): the
    // calendar collects its occurrences again.
    bool gCalendarDirty = false;
    // After OK the date of the appointment, after Esc none: the calendar
    // moves there.
    std::optional<QDate> gGotoDate;
    // The calendar window's date; invalid while no calendar window is up.
    QDate calDate;
};

} // namespace CALENDAR
