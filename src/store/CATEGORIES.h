// Categories: each section that files its items keeps a list of named
// categories in one row of its own (fSec 10, fSub = the section's code). The
// names travel only inside that row's encrypted payload; an item's row holds
// nothing but the category's small number in fG1, so the engine can filter by
// category while a reader of the file learns no name.
//
// The payload holds the list as pairs: field 2k is the name of entry k (short
// text), field 2k + 1 its id (16-bit).
//
// Invariants:
//  1. User categories have ids 1 to 9998, unique within a section.
//  2. 0 (Unfiled), -1 (All) and 9999 (Edit categories) are never ids of a
//     stored entry; they stand only in selectors.
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include "ui/Controls.h"

namespace CATEGORIES {

// The section code of the category rows.
constexpr int CategoryRowSection = 10;

// Reserved ids.
constexpr int CategoryAll = -1;            // "All": the filter that shows every item
constexpr int CategoryAllUnsigned = 65535; // the same, held as an unsigned 16-bit value
constexpr int CategoryUnfiled = 0;         // items with no category
constexpr int CategoryEdit = 9999;         // last entry of a selector: opens the editor
constexpr int FirstCategoryId = 1;
constexpr int LastCategoryId = 9998;

// Process-wide state; tests reset it with state() = {}.
struct State {
    QStringList CategoryNames;     // names of the section in work, 0-based
    QList<qint32> CategoryIds;     // their ids, same bounds
    int CategorySection = 0;       // section code whose list is loaded
    bool ListsNeedRefresh = false; // set by SaveCategories: selectors on screen refill
};
State &state();

// Reads the section's list into CategoryNames / CategoryIds and makes it the
// section in work. A section without a row, or whose row holds no entries,
// has an empty list.
void LoadCategories(int section);
// Writes the arrays to the section's row through the standard write (a new
// row gets noise in fT1-fT3 and fR1-fR4) and sets ListsNeedRefresh.
// Returns the row's id.
qint64 SaveCategories(int section);

// The lowest free id from 1 up among CategoryIds. A reserved value standing in
// the list blocks every id. With none free: message 52 and 0.
int NextCategoryId();

// Whether an id is one of the selectors' own values (All, Unfiled, Edit),
// -1 also in its unsigned 16-bit form.
bool IsReservedId(int id);

// Loads the section's list and fills a selector: "All" (-1) first if asked,
// then "Unfiled" (0), the names in list order with their ids, "Edit
// categories" (9999) last. Each text has a left margin of two blanks when all
// three options are on, one when some are. The control's text becomes that of
// the first entry (a combo box thus shows it with nothing selected).
void FillCategorySelector(km::ListBox &control, int section, bool withAll, bool withUnfiled, bool withEdit);
// The item data of the selected entry; with nothing selected, the first
// entry's; 0 for an empty selector.
int CategoryOfSelector(const km::ListBox &control);
// Selects the entry of that id (-1 and 65535 are the same id), or else the first.
void SelectCategory(km::ListBox &control, int id);
// fG1 of a row; 0 when the row has none or doesn't exist.
int CategoryOfRow(qint64 rowId);

// The display text of "Unfiled".
QString UnfiledText();

} // namespace CATEGORIES
