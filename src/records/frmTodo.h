// The task section (fSec 15): a to-do list with due dates, priorities and a
// tick for done. Unlike the sorted sections, a task keeps its flags plain so
// that the engine filters completed tasks and the deletes work on plain
// columns:
//
//   fEtx  the packed TaskRecord (Description, Memo, Private, UserNumber)
//   fT1   the Description, encrypted
//   fR1   the priority as a scattered point (three slots over the long range)
//   fR2   the completed date as a series-end key, fR3 the due date as a
//         series-start key; "no date" is day 0, which the key clamps to the
//         low end of its range and which therefore reads back as no date
//   fF1   has a due date, fF2 has a note, fF3 completed
//   fG1   category id
//
// The private flag lies only inside the payload, so the list decrypts every
// row to know it.
#pragma once

#include <array>
#include <optional>

#include <QDate>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include "shell/SectionContext.h"
#include "shell/SortedSection.h"
#include "shell/frmMDI.h"
#include "ui/Controls.h"

namespace km {

class RowSet;

namespace TODO {

constexpr int Section = 15;
constexpr int PrivateBit = 4; // the task section's place in the private mask
constexpr int LastCategorySlot = 1;
// Dates at or below these day numbers are "no date" when shown: a due date
// must lie after 1989-04-29, a completed date after 1997-03-21.
constexpr qint64 DueShownAbove = 32627;
constexpr qint64 CompletedShownAbove = 35510;

enum Field { Description = 0, Memo = 1, Private = 2, UserNumber = 3 };
enum Priority { High = 0, Normal = 1, Low = 2 };
enum Column { ColTask, ColDue, ColPriority, ColPrivate, ColNote, ColCategory, ColExecDate, ColSortKey };
constexpr int ColumnCount = 8;

// The working task. Dates are day numbers of the date system, 0 for none.
struct Task {
    qint64 id = -1; // -1: a new task
    QString Description;
    QString Memo;
    bool hasNote = false;
    int priority = Normal;
    bool hasDue = false;
    qint64 due = 0;
    bool completed = false;
    qint64 completedDate = 0;
    int category = 0;
    QString sortKey;
    bool Private = false;
};

// The priority's fR1 point and back.
qint32 PriorityPoint(int priority);
int PriorityOfPoint(qint64 point);

// The plain and keyed columns of the row the row set stands on (dates,
// flags, priority, category); the payload stays untouched.
Task ReadTaskColumns(RowSet &rows);
// The task of the row the row set stands on; the payload is decrypted.
Task ReadTask(RowSet &rows);
// The same for the list: only the Description and the private flag are
// taken from the payload, which stays in wiped bytes.
Task ReadListedTask(RowSet &rows);
// The task of a row id, or nothing when there is no task of that id.
std::optional<Task> LoadTask(StoreDb &store, qint64 id);

// The standard write of a task (new when id is -1 or missing). Returns the
// row id, or 0 when the id is a row of another section ("Update impossible"
// was shown). Sets the tasks-changed flag.
qint64 SaveTask(StoreDb &store, const Task &task, int userNumber);

// "1"/"0" completed, "0" overdue else "1", "0" and the due day "000000" or
// "1999999", the priority digit: the list's default order.
QString SortKey(const Task &task, const QDate &today);
bool IsOverdue(const Task &task, const QDate &today);
// The dates a list shows, past the display thresholds; invalid for none.
QDate DueShown(const Task &task);
QDate CompletedShown(const Task &task);
QString PriorityMarks(int priority);

// The column a header click sorts on, and its direction.
bool SortsDescending(int column);

} // namespace TODO

// A date picker that can hold no date. An empty picker is drawn compact, and
// compact is also the editor's memory that the picker had no date before.
struct DatePicker {
    bool hasDate = false;
    QDate value; // the remembered date while it has none
    bool compact = true;
};

// The task editor: text, note, priority, private flag, category and the two
// date pickers with their rules.
class frmEditTodo : public RecordEditor {
public:
    frmEditTodo(Dialogs &dialogs, const QDate &today) : RecordEditor(dialogs), m_today(today) {}
    QString caption() const override { return QStringLiteral("Task"); }

    QString ctlTask;
    QString ctlNote;
    int ctlPri = TODO::Normal; // 0 "High", 1 "Normal", 2 "Low"
    bool ctlPrivate = false;
    ComboBox cboCategory;
    DatePicker ctlDateDue;
    DatePicker ctlDateCompleted;

    // The widget writes the picker's new state, then calls its handler.
    void ctlDateDue_Change();
    void ctlDateCompleted_Change();
    void cmdEditCat_Click();
    // Ctrl+Enter.
    void keyCtrlEnter() { cmdOK_Click(); }

    void fill(const TODO::Task &task);
    void readInto(TODO::Task &task) const;
    QDate today() const { return m_today; }

private:
    QDate m_today;
};

// The "Choose..." date of the list's context menu.
class frmChooseDate : public WindowModel {
public:
    QString caption() const override { return QStringLiteral("Due Date"); }
    QDate value;
    void cmdOK_Click() { close(true); }
    void cmdCancel_Click() { close(false); }
};

// One line of the task list: a tick bound to completed, eight cells, the
// row id as its tag, and the overdue mark.
struct TodoItem {
    qint64 tag = 0;
    bool checked = false;
    bool overdue = false;
    std::array<QString, TODO::ColumnCount> cells;
    // What the cells show, as values (invalid dates for none).
    QDate due, completed;
    int priority = TODO::Normal;
};

class frmTodo : public SectionWindow {
public:
    static constexpr int Section = TODO::Section;
    explicit frmTodo(const SectionContext &context);
    int sectionCode() const override { return Section; }
    QString sectionMenu() const override { return QStringLiteral("mnuTodo"); }
    QString caption() const override { return QStringLiteral("To Do"); }
    void Form_Load() override;
    void Form_Unload() override;
    bool menuCommand(const QString &name, int index, const QString &arg) override;
    void HideShow() override { showListitems(); }

    // ---- State ----
    QList<TodoItem> TodoList;
    int ListIndex = -1;
    ComboBox cboCategories; // "All" first, the categories, then the editor entry
    bool ShowCompleted = false;
    TODO::Task work;
    // The last header clicked (0-based sub-item), and whether it sorted down.
    int sortColumn = TODO::ColSortKey;

    // ---- Commands ----
    void showListitems();
    void TodoList_Click(int index);
    void cmdAdd_Click();
    void cmdEdit();
    void cmdDelete();
    void mnuTodoDeleteAll();
    void mnuTodoDeleteCompleted();
    void mnuCompleted();
    void mnuTodoPriority(int level);
    void mnuTodoDueDate(bool choose);
    // A click in an item's tick box; checked is the tick's new state.
    void TodoList_ItemCheck(int index, bool checked);
    // header: the 1-based header index.
    void TodoList_ColumnClick(int header);
    void ShowCompleted_Click(bool on);
    void cboCategories_Click();
    void cmdEditCat_Click();
    // Whether a right click opens the context menu (an item is selected).
    bool contextMenuAllowed() const { return ListIndex >= 0; }

    std::optional<int> Filter() const;
    int indexOfTag(qint64 tag) const;

private:
    bool loadSelected();
    bool runEditor();
    void saveAndShow();
    void select(qint64 tag);
    void sortOn(int column, bool descending);
    TodoItem itemOf(const TODO::Task &task, const QDate &today) const;
    QString shortDate(const QDate &date) const;

    SectionContext ctx;
    mutable QHash<qint64, QString> m_dateTexts; // short dates by Julian day
};

} // namespace km
