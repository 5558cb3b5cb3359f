// The model that the alphabetically sorted sections share (memos,
// confidential data, the address book): a list read in the engine's order by
// the sort index alone, a detail pane of the selected record, and its save
// through the store's standard write, which places a changed title.
//
// Its rules:
//   1. The pane shows the record of RowId; newRecord is on from New until the
//      first save, when RowId becomes the new row's fPK.
//   2. A field edited in the pane sets recordChanged. Leaving that record in
//      any way (another row, another filter, New, Delete, leaving the
//      section, hiding private records) asks "Store record?" first; Yes saves
//      the pane as it stands, No drops the change.
//   3. After a save or a delete the list is filled anew and the saved record,
//      or the neighbour of the deleted one, is selected.
//   4. Every question goes to the section's Dialogs, every write to its store.
#pragma once

#include <optional>

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include "shell/SectionContext.h"
#include "shell/frmMDI.h"
#include "store/Record_Put.h"
#include "ui/Controls.h"

namespace km {

namespace SortedSection {

struct ListItem {
    qint64 id = 0;
    QString text;
    QString detail; // a second column (the address book's contact line)
};

// The rows of a section (with fG1 = filter unless none), in the order of the
// sort index. While private records are hidden, each payload is decrypted to
// leave private rows out (privateBit: the section's private-flag place).
QList<ListItem> SortedList(StoreDb &store, int section, std::optional<int> filter, int privateBit,
                           bool showPrivate);

// Puts the items into the list control (item data: fPK) and selects the one
// of row `select`, else the first. Returns the selected index, -1 for none.
int FillList(ListBox &list, const QList<ListItem> &items, qint64 select);
// The row to select once the one at index has gone: the next, else the one
// before, else none (0).
qint64 NeighbourOf(const ListBox &list, int index);

// The record of a row, its slots as text (found is false when the row is missing).
struct StoredRecord {
    bool found = false;
    int section = 0;
    int g1 = 0;
    QStringList values;
};
StoredRecord ReadRecord(StoreDb &store, qint64 rowId);

struct SaveRequest {
    int section = 0;
    qint64 rowId = 0; // 0 for a new row
    QList<Record_Put::Field> layout;
    QVariantList values;   // by field index; the slots below are filled by the save
    QString title;         // the list text, placed by the sort index
    int g1 = 0;            // category id or kind
    int createdSlot = -1;  // slot that takes now on a new row (-1: none)
    int modifiedSlot = -1; // slot that takes now at each save
    int userSlot = -1;     // slot that takes the user's number
    int userNumber = 0;
    // A section that lists a second text beside the title (the address book's
    // contact line) keeps it in fT2; the list then sorts by title followed
    // directly by it, and both are rewritten only when that joined text changes.
    std::optional<QString> subtitle;
    // Plain fT3 written at every save (a private marker); empty: noise on a new row.
    QByteArray plainT3;
    // fR5 of a new row, when the section keeps one there.
    std::optional<int> r5OnNew;
    // fR3 and fR4 take fresh noise at every save, not only on a new row.
    bool noiseEverySave = false;
};

// The standard write of a record of a sorted section. Returns the row id, or 0
// when the row belongs to another section ("Update impossible" was shown).
qint64 SaveSortedRecord(StoreDb &store, const SaveRequest &request, const QDateTime &now);

// "DELETE * FROM tt WHERE fPK=" id; true when a row went.
bool DeleteRow(StoreDb &store, qint64 rowId);

} // namespace SortedSection

// The editing dialog of a record: OK closes and the section saves; Esc with
// unsaved changes asks "Discard changes?" and stays open on No. Closing
// either way empties the desktop's selection if it holds this program's
// text, so that nothing selected in the editor stays there to be pasted.
class RecordEditor : public WindowModel {
public:
    explicit RecordEditor(Dialogs &dialogs) : m_dialogs(dialogs) {}
    bool changed = false; // something was typed since the editor opened

    // An editor with a rule of its own before it closes replaces this.
    virtual void cmdOK_Click() { closeEditor(true); }
    void cmdEsc_Click();

protected:
    void closeEditor(bool accepted);
    Dialogs &m_dialogs;
};

class SortedSectionModel : public SectionWindow {
public:
    explicit SortedSectionModel(const SectionContext &context);

    void Form_Unload() override { askStoreChanged(); }
    void HideShow() override;

    // ---- State ----
    ListBox listSelect; // the titles; item data: fPK
    qint64 RowId = 0;
    bool newRecord = false;
    bool recordChanged = false;

    // ---- Commands ----
    // Fills the list under the section's filter and selects the row `select`
    // (else the first) and shows it.
    void listSelect_Initialize(qint64 select = 0);
    void listSelect_Click(int index);
    // Deletes the selected record after the section's question; without a
    // selection the section's own message, if it has one.
    void cmdDelete_Click();
    // Whether the pane shows a record that an edit in place can change: a
    // stored one or a new one. With neither, the pane's fields take nothing.
    bool paneEditable() const { return RowId != 0 || newRecord; }
    // A field of the pane was edited in place (the widget calls it after
    // writing the field's new text into the model).
    void paneEdited();
    // Saves the pane as it stands. Returns the row id, 0 when refused.
    qint64 SaveRecord();

protected:
    // ---- What each section says ----
    virtual int sectionId() const = 0;
    virtual int privateBit() const = 0;
    // The fG1 that the list shows, or nothing for every row of the section.
    virtual std::optional<int> listFilter() const = 0;
    // The question before a delete (its text, three blanks, the title).
    virtual int deleteQuestion() const = 0;
    // What stands between the question and the title.
    virtual QString deleteSeparator() const { return QStringLiteral("   "); }
    // The message of a delete without a selection, 0 for none.
    virtual int noSelectionMessage() const { return 0; }
    // Empties the section's own fields of the pane.
    virtual void clearFields() = 0;
    // Fills them from a stored record.
    virtual void showFields(const SortedSection::StoredRecord &record) = 0;
    // The pane's fields as a save: layout, values, title, fG1 and slots.
    virtual SortedSection::SaveRequest saveRequest() const = 0;

    // The rows of the list under the filter; by default SortedList, which
    // opens each payload while private records are hidden.
    virtual QList<SortedSection::ListItem> readList();

    // ---- Shared steps ----
    // Rule 2: a changed record asks "Store record?" before it is left.
    void askStoreChanged();
    void clearPane();
    void showRecord(qint64 id);
    // Delete all (under the filter): the first question, then "Are you
    // sure?", both with Cancel as the default. True when rows were deleted.
    bool deleteAllInFilter(int question) { return deleteAll(question, listFilter()); }
    // The same for the rows of one category, or of the whole section.
    bool deleteAll(int question, std::optional<int> category);

    SectionContext ctx;
    // The slots of the shown record as they were read.
    QStringList storedValues;
};

} // namespace km
