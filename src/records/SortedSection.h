// What the alphabetically sorted sections share (memos, confidential data):
// the list read in the engine's order by the sort index alone, and the save
// through the store's standard write that places a changed title.
#pragma once

#include <optional>

#include <QList>
#include <QString>
#include <QVariantList>

#include "ui/Controls.h"
#include "store/Record_Put.h"

namespace records {

struct ListItem {
    qint64 id = 0;
    QString text;
};

// The rows of a section (with fG1 = filter unless none), in the order of the
// sort index. While private records are hidden, each payload is decrypted to
// leave private rows out (sectionBit: the section's private-flag place).
QList<ListItem> SortedList(int section, std::optional<int> filter, int sectionBit, bool showPrivate);

// Puts the items into the list control (item data: fPK) and selects the one
// of row `select`, else the first. Returns the selected index, -1 for none.
int FillList(km::ListBox &list, const QList<ListItem> &items, qint64 select);
// The row to select once the one at index has gone: the next, else the one
// before, else none (0).
qint64 NeighbourOf(const km::ListBox &list, int index);

// The record of a row, its slots as text (empty when the row is missing).
struct StoredRecord {
    bool found = false;
    int section = 0;
    int g1 = 0;
    QStringList values;
};
StoredRecord ReadRecord(qint64 rowId);

struct SaveRequest {
    int section = 0;
    qint64 rowId = 0; // 0 for a new row
    QList<Record_Put::Field> layout;
    QVariantList values;   // by field index; slots for dates of the write are filled here
    QString title;         // the list text, placed by the sort index
    int g1 = 0;            // category id or kind
    int createdSlot = -1;  // slot that takes now on a new row (-1: none)
    int modifiedSlot = -1; // slot that takes now at each save
    int userSlot = -1;     // slot that takes the session user's number
};

// The standard write of a record of a sorted section. Returns the row id, or 0
// when the row belongs to another section ("Update impossible" was shown).
qint64 SaveSortedRecord(const SaveRequest &request);

// "DELETE * FROM tt WHERE fPK=" id; true when a row went.
bool DeleteRow(qint64 rowId);
// Deletes the selected row of the list after the question of message row
// `question` followed by three blanks and the title (OK and Cancel, Cancel
// the default). Returns the row to select next, or nothing when nothing went.
std::optional<qint64> ConfirmAndDelete(const km::ListBox &list, int question);

} // namespace records
