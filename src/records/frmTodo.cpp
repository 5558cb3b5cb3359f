#include "records/frmTodo.h"

#include <algorithm>

#include "calendar/CALENDAR.h"
#include "platform/Clock.h"
#include "platform/Engine.h"
#include "store/CATEGORIES.h"
#include "store/CRY.h"
#include "store/INDICES.h"
#include "store/Record_Get.h"
#include "store/Record_Put.h"
#include "store/Startvariables.h"
#include "store/db.h"
#include "store/frmEditCategories.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"

namespace km {

namespace TODO {

namespace {

constexpr qint64 PriorityRange = 2147483647;

bool flagOf(RowSet &rows, const QString &column) {
    return rows.GetColumn(column).toInt() != 0;
}

QString message(int row) {
    return LanguageUS::MessageText(row);
}

} // namespace

qint32 PriorityPoint(int priority) {
    return INDICES::ScatterPoint(std::clamp(priority, 0, 2), 3, 0, PriorityRange).Value;
}

int PriorityOfPoint(qint64 point) {
    const qint64 step = PriorityRange / 3;
    return static_cast<int>(std::clamp<qint64>(point / step, 0, 2));
}

Task ReadTaskColumns(RowSet &rows) {
    Task t;
    t.id = rows.GetColumn(QStringLiteral("fPK")).toLongLong();
    t.priority = PriorityOfPoint(rows.GetColumn(QStringLiteral("fR1")).toLongLong());
    t.completedDate =
        CALENDAR::DayFromKey(rows.GetColumn(QStringLiteral("fR2")).toInt(), CALENDAR::SeriesEndKey);
    t.due = CALENDAR::DayFromKey(rows.GetColumn(QStringLiteral("fR3")).toInt(), CALENDAR::SeriesStartKey);
    t.hasDue = flagOf(rows, QStringLiteral("fF1"));
    t.hasNote = flagOf(rows, QStringLiteral("fF2"));
    t.completed = flagOf(rows, QStringLiteral("fF3"));
    t.category = rows.GetColumn(QStringLiteral("fG1")).toInt();
    return t;
}

Task ReadTask(RowSet &rows) {
    Task t = ReadTaskColumns(rows);
    QStringList values;
    Record_Get::UnpackRecord(values, rows.GetColumn(QStringLiteral("fEtx")).toByteArray(), true);
    t.Description = values.value(Description);
    t.Memo = values.value(Memo);
    t.Private = values.value(Private) == QLatin1String("True");
    return t;
}

Task ReadListedTask(RowSet &rows) {
    Task t = ReadTaskColumns(rows);
    SecureBytes clear = CRY::DecryptFieldBytes(rows.GetColumn(QStringLiteral("fEtx")).toByteArray());
    t.Private = Record_Get::RowIsPrivate(clear, PrivateBit);
    t.Description = Record_Get::ReadPackedField(clear, Description).value_or(QString());
    wipe(clear);
    return t;
}

std::optional<Task> LoadTask(StoreDb &store, qint64 id) {
    auto rows = store.OpenRowSet(
        QStringLiteral("SELECT * FROM tt WHERE fPK=%1 WITH OWNERACCESS OPTION;").arg(id), Snapshot);
    if (rows->RecordCount() == 0 || rows->GetColumn(QStringLiteral("fSec")).toInt() != Section)
        return std::nullopt;
    return ReadTask(*rows);
}

qint64 SaveTask(StoreDb &store, const Task &task, int userNumber) {
    // Empty texts stay out of the record; the flag and the user always go in,
    // since a record without its private flag reads as private.
    QList<Record_Put::Field> layout;
    if (!task.Description.isEmpty()) layout.append({Description, Record_Put::tText});
    if (!task.Memo.isEmpty()) layout.append({Memo, Record_Put::tMemo});
    layout.append({Private, Record_Put::tBoolean});
    layout.append({UserNumber, Record_Put::tByte});
    const QVariantList values = {task.Description, task.Memo, task.Private, userNumber};

    db::StandardWrite w(store, task.id > 0 ? task.id : 0, Section);
    if (!w.ok()) return 0;
    w.setRecord(Record_Put::PackRecord(layout, values));
    w.setColumn(QStringLiteral("fG1"), task.category);
    w.setColumn(QStringLiteral("fR1"), PriorityPoint(task.priority));
    w.setColumn(QStringLiteral("fR2"),
                CALENDAR::DateKey(task.completed ? task.completedDate : 0, CALENDAR::SeriesEndKey).point);
    w.setColumn(QStringLiteral("fR3"), CALENDAR::DateKey(task.hasDue ? task.due : 0, CALENDAR::SeriesStartKey).point);
    w.setColumn(QStringLiteral("fF1"), task.hasDue ? -1 : 0);
    w.setColumn(QStringLiteral("fF2"), task.Memo.isEmpty() ? 0 : -1);
    w.setColumn(QStringLiteral("fF3"), task.completed ? -1 : 0);
    w.setText(QStringLiteral("fT1"), task.Description);
    const qint64 id = w.Commit({false, true, true, false, false, false, true});
    CALENDAR::state().TasksChanged = true;
    return id;
}

bool IsOverdue(const Task &task, const QDate &today) {
    return task.hasDue && !task.completed && task.due < CALENDAR::DayNumber(today);
}

QString SortKey(const Task &task, const QDate &today) {
    const bool past = task.hasDue && task.due < CALENDAR::DayNumber(today);
    // Built a character at a time: the list makes one for every row it shows.
    QString key;
    key.reserve(10);
    key += QLatin1Char(task.completed ? '1' : '0');
    key += QLatin1Char(past ? '0' : '1');
    if (!task.hasDue) {
        key += QLatin1String("1999999");
    } else if (task.due >= 0) {
        const QString digits = QString::number(task.due);
        key += QLatin1Char('0');
        for (qsizetype i = digits.size(); i < 6; ++i)
            key += QLatin1Char('0');
        key += digits;
    } else {
        key += QStringLiteral("0%1").arg(task.due, 6, 10, QLatin1Char('0'));
    }
    key += QString::number(task.priority);
    return key;
}

QDate DueShown(const Task &task) {
    return task.hasDue && task.due > DueShownAbove ? CALENDAR::DateOfDay(task.due) : QDate();
}

QDate CompletedShown(const Task &task) {
    return task.completed && task.completedDate > CompletedShownAbove ? CALENDAR::DateOfDay(task.completedDate)
                                                                      : QDate();
}

QString PriorityMarks(int priority) {
    switch (priority) {
    case High:
        return QStringLiteral("X X X");
    case Low:
        return QStringLiteral("X");
    default:
        return QStringLiteral("X X");
    }
}

bool SortsDescending(int column) {
    static constexpr std::array<bool, ColumnCount> down = {false, false, true, true, true, false, true, false};
    return column >= 0 && column < ColumnCount && down[static_cast<size_t>(column)];
}

} // namespace TODO

// ---- The editor ----

void frmEditTodo::fill(const TODO::Task &task) {
    ctlTask = task.Description;
    ctlNote = task.Memo;
    ctlPri = task.priority;
    ctlPrivate = task.Private;
    CATEGORIES::FillCategorySelector(cboCategory, TODO::Section, false, true, false);
    CATEGORIES::SelectCategory(cboCategory, task.category);
    const auto picker = [this](bool has, qint64 day) {
        DatePicker p;
        p.hasDate = has && day > 0;
        p.value = p.hasDate ? CALENDAR::DateOfDay(day) : m_today;
        p.compact = !p.hasDate;
        return p;
    };
    ctlDateDue = picker(task.hasDue, task.due);
    ctlDateCompleted = picker(task.completed, task.completedDate);
}

void frmEditTodo::readInto(TODO::Task &task) const {
    task.Description = ctlTask;
    task.Memo = ctlNote;
    task.hasNote = !ctlNote.isEmpty();
    task.priority = ctlPri;
    task.Private = ctlPrivate;
    task.category = std::max(0, CATEGORIES::CategoryOfSelector(cboCategory));
    task.hasDue = ctlDateDue.hasDate;
    task.due = task.hasDue ? CALENDAR::DayNumber(ctlDateDue.value) : 0;
    task.completed = ctlDateCompleted.hasDate;
    task.completedDate = task.completed ? CALENDAR::DayNumber(ctlDateCompleted.value) : 0;
}

void frmEditTodo::ctlDateDue_Change() {
    // A completed task keeps its due date where the completion froze it.
    if (ctlDateCompleted.hasDate && ctlDateDue.hasDate) {
        m_dialogs.message(TODO::message(23), Buttons::OK, Answer::OK, Icon::Exclamation);
        ctlDateDue.value = ctlDateCompleted.value;
        return;
    }
    for (;;) {
        if (!ctlDateDue.hasDate) {
            ctlDateDue.compact = true;
            break;
        }
        if (ctlDateDue.compact) {
            // The date was just switched on: it starts at today.
            ctlDateDue.value = m_today;
            ctlDateDue.compact = false;
            break;
        }
        if (ctlDateDue.value < m_today) {
            m_dialogs.message(TODO::message(24), Buttons::OK, Answer::OK, Icon::Exclamation);
            ctlDateDue.value = m_today;
            continue;
        }
        ctlDateDue.compact = false;
        break;
    }
    changed = true;
}

void frmEditTodo::ctlDateCompleted_Change() {
    if (!ctlDateCompleted.hasDate) {
        // Switched on again later, the picker offers today.
        ctlDateCompleted.value = m_today;
        ctlDateCompleted.compact = true;
    } else {
        ctlDateCompleted.compact = false;
    }
    changed = true;
}

void frmEditTodo::cmdEditCat_Click() {
    const int before = CATEGORIES::CategoryOfSelector(cboCategory);
    const int count = cboCategory.ListCount();
    const bool saved = frmEditCategories::Edit(TODO::Section);
    CATEGORIES::FillCategorySelector(cboCategory, TODO::Section, false, true, false);
    if (saved && cboCategory.ListCount() > count)
        cboCategory.setListIndex(cboCategory.ListCount() - 1);
    else
        CATEGORIES::SelectCategory(cboCategory, before);
    if (CATEGORIES::CategoryOfSelector(cboCategory) != before) changed = true;
}

// ---- The list ----

frmTodo::frmTodo(const SectionContext &context) : ctx(context) {}

void frmTodo::Form_Load() {
    CATEGORIES::FillCategorySelector(cboCategories, Section, true, true, true);
    const Startvariables::State &start = Startvariables::state();
    const int last = start.CatShow == 0 ? start.LastCategory[TODO::LastCategorySlot] : 0;
    cboCategories.setListIndex(last >= 0 && last < cboCategories.ListCount() - 1 ? last : 0);
    ShowCompleted = start.TodoShowCompleted != 0;
    showListitems();
}

void frmTodo::Form_Unload() {
    Startvariables::state().LastCategory[TODO::LastCategorySlot] = static_cast<qint16>(cboCategories.ListIndex());
}

bool frmTodo::menuCommand(const QString &name, int, const QString &) {
    if (name == QLatin1String("mnuTodoNew"))
        cmdAdd_Click();
    else if (name == QLatin1String("mnuTodoEdit"))
        cmdEdit();
    else if (name == QLatin1String("mnuTodoDeleteSelected") || name == QLatin1String("mnuTodoDeleteItem"))
        cmdDelete();
    else if (name == QLatin1String("mnuTodoDeleteCompleted"))
        mnuTodoDeleteCompleted();
    else if (name == QLatin1String("mnuTodoDeleteAll"))
        mnuTodoDeleteAll();
    else
        return false;
    return true;
}

std::optional<int> frmTodo::Filter() const {
    const int id = CATEGORIES::CategoryOfSelector(cboCategories);
    if (id == CATEGORIES::CategoryAll || id == CATEGORIES::CategoryAllUnsigned || id == CATEGORIES::CategoryEdit)
        return std::nullopt;
    return id;
}

QString frmTodo::shortDate(const QDate &date) const {
    if (!date.isValid()) return QString();
    // A list repeats few dates many times; the locale's formatting is the
    // dearest step of a row after its decryption.
    auto it = m_dateTexts.constFind(date.toJulianDay());
    if (it == m_dateTexts.constEnd())
        it = m_dateTexts.insert(date.toJulianDay(), ctx.locale.toString(date, QLocale::ShortFormat));
    return *it;
}

TodoItem frmTodo::itemOf(const TODO::Task &task, const QDate &today) const {
    TodoItem item;
    item.tag = task.id;
    item.checked = task.completed;
    item.overdue = TODO::IsOverdue(task, today);
    item.due = TODO::DueShown(task);
    item.completed = TODO::CompletedShown(task);
    item.priority = task.priority;
    item.cells[TODO::ColTask] = task.Description;
    item.cells[TODO::ColDue] = shortDate(TODO::DueShown(task));
    item.cells[TODO::ColPriority] = TODO::PriorityMarks(task.priority);
    item.cells[TODO::ColPrivate] = task.Private ? QStringLiteral("P") : QString();
    item.cells[TODO::ColNote] = task.hasNote ? QStringLiteral("  N") : QString();
    if (task.category != 0) {
        const CATEGORIES::State &c = CATEGORIES::state();
        const qsizetype at = c.CategoryIds.indexOf(task.category);
        if (at >= 0) item.cells[TODO::ColCategory] = c.CategoryNames.at(at).trimmed();
    }
    item.cells[TODO::ColExecDate] = shortDate(TODO::CompletedShown(task));
    item.cells[TODO::ColSortKey] = TODO::SortKey(task, today);
    return item;
}

void frmTodo::showListitems() {
    // The columns the list reads; the engine's filter is that of the full
    // "SELECT *" of the section.
    QString sql =
        QStringLiteral("SELECT fPK, fEtx, fR1, fR2, fR3, fF1, fF2, fF3, fG1 FROM tt WHERE fSec=%1").arg(Section);
    if (const std::optional<int> filter = Filter()) sql += QStringLiteral(" And fG1 = %1").arg(*filter);
    if (!ShowCompleted) sql += QStringLiteral(" And fF3 = False");
    sql += QStringLiteral(" WITH OWNERACCESS OPTION;");
    CATEGORIES::LoadCategories(Section);
    const bool showPrivate = ctx.shell.privateShown();
    ctx.shell.setBusy(this, true);
    QList<TodoItem> items;
    // One day for the whole list: what is overdue is judged alike on every row.
    const QDate today = ctx.clock.dateTime().date();
    try {
        auto rows = ctx.store.OpenRowSet(sql, Snapshot);
        for (; !rows->Eof(); rows->MoveNext()) {
            const TODO::Task task = TODO::ReadListedTask(*rows);
            if (task.Private && !showPrivate) continue;
            items.append(itemOf(task, today));
        }
    } catch (...) {
        ctx.shell.setBusy(this, false);
        throw;
    }
    ctx.shell.setBusy(this, false);
    const qint64 selected = ListIndex >= 0 && ListIndex < TodoList.size() ? TodoList.at(ListIndex).tag : 0;
    TodoList = items;
    sortOn(TODO::ColSortKey, false);
    sortColumn = TODO::ColSortKey;
    ListIndex = indexOfTag(selected);
}

void frmTodo::sortOn(int column, bool descending) {
    // The sort key is digits alone: case plays no part there.
    const Qt::CaseSensitivity cs = column == TODO::ColSortKey ? Qt::CaseSensitive : Qt::CaseInsensitive;
    std::stable_sort(TodoList.begin(), TodoList.end(), [&](const TodoItem &a, const TodoItem &b) {
        const int c = QString::compare(a.cells[static_cast<size_t>(column)], b.cells[static_cast<size_t>(column)], cs);
        return descending ? c > 0 : c < 0;
    });
}

int frmTodo::indexOfTag(qint64 tag) const {
    for (int i = 0; i < TodoList.size(); ++i)
        if (TodoList.at(i).tag == tag) return i;
    return -1;
}

void frmTodo::select(qint64 tag) {
    ListIndex = indexOfTag(tag);
}

void frmTodo::TodoList_Click(int index) {
    ListIndex = index >= 0 && index < TodoList.size() ? index : -1;
}

void frmTodo::TodoList_ColumnClick(int header) {
    const int column = header >= 2 && header <= TODO::ColumnCount ? header - 1 : TODO::ColSortKey;
    const qint64 selected = ListIndex >= 0 ? TodoList.at(ListIndex).tag : 0;
    sortOn(column, TODO::SortsDescending(column));
    sortColumn = column;
    if (selected) select(selected);
}

bool frmTodo::loadSelected() {
    if (ListIndex < 0 || ListIndex >= TodoList.size()) return false;
    const qint64 tag = TodoList.at(ListIndex).tag;
    if (tag == work.id) return true;
    const std::optional<TODO::Task> task = TODO::LoadTask(ctx.store, tag);
    if (!task) return false;
    work = *task;
    return true;
}

bool frmTodo::runEditor() {
    frmEditTodo editor(ctx.dialogs, ctx.clock.dateTime().date());
    editor.fill(work);
    if (!ctx.dialogs.showModal(editor) || !editor.changed) return false;
    editor.readInto(work);
    return true;
}

void frmTodo::saveAndShow() {
    const qint64 id = TODO::SaveTask(ctx.store, work, ctx.shell.userNumber());
    if (id) work.id = id;
    showListitems();
    select(work.id);
}

void frmTodo::cmdAdd_Click() {
    work = TODO::Task();
    work.category = Filter().value_or(0);
    if (runEditor()) saveAndShow();
}

void frmTodo::cmdEdit() {
    if (TodoList.isEmpty()) return;
    if (ListIndex < 0) return cmdAdd_Click();
    const std::optional<TODO::Task> task = TODO::LoadTask(ctx.store, TodoList.at(ListIndex).tag);
    if (!task) return cmdAdd_Click();
    work = *task;
    if (runEditor()) saveAndShow();
}

void frmTodo::cmdDelete() {
    if (TodoList.isEmpty()) return;
    if (ListIndex < 0) {
        ctx.dialogs.message(TODO::message(18), Buttons::OK, Answer::OK, Icon::Exclamation);
        return;
    }
    const TodoItem &item = TodoList.at(ListIndex);
    const QString text = TODO::message(29) + QStringLiteral("\n   ") + item.cells[TODO::ColTask];
    if (ctx.dialogs.message(text, Buttons::OKCancel, Answer::Cancel, Icon::Exclamation) != Answer::OK) return;
    SortedSection::DeleteRow(ctx.store, item.tag);
    CALENDAR::state().TasksChanged = true;
    if (item.tag == work.id) work = TODO::Task();
    showListitems();
}

void frmTodo::mnuTodoDeleteAll() {
    if (TodoList.isEmpty()) return;
    const auto ask = [this](int row) {
        return ctx.dialogs.message(TODO::message(row), Buttons::OKCancel, Answer::Cancel, Icon::Exclamation) ==
               Answer::OK;
    };
    if (!ask(80) || !ask(81)) return;
    ctx.store.Execute(QStringLiteral("DELETE * FROM tt WHERE fSec=15 WITH OWNERACCESS OPTION;"));
    CALENDAR::state().TasksChanged = true;
    work = TODO::Task();
    showListitems();
}

void frmTodo::mnuTodoDeleteCompleted() {
    if (ctx.dialogs.message(TODO::message(82), Buttons::OKCancel, Answer::Cancel, Icon::Exclamation) != Answer::OK)
        return;
    ctx.store.Execute(QStringLiteral("DELETE * FROM tt WHERE fSec=15 And fF3=True WITH OWNERACCESS OPTION;"));
    CALENDAR::state().TasksChanged = true;
    work = TODO::Task();
    showListitems();
}

void frmTodo::TodoList_ItemCheck(int index, bool checked) {
    if (index < 0 || index >= TodoList.size()) return;
    ListIndex = index;
    if (!loadSelected()) return;
    TodoItem &item = TodoList[index];
    item.checked = checked;
    if (checked != work.completed) {
        work.completed = checked;
        if (checked) {
            work.completedDate = CALENDAR::DayNumber(ctx.clock.dateTime().date());
            item.completed = TODO::CompletedShown(work);
            item.cells[TODO::ColExecDate] = shortDate(item.completed);
        } else {
            work.completedDate = 0;
            item.completed = QDate();
            item.cells[TODO::ColExecDate].clear();
        }
    }
    const qint64 id = TODO::SaveTask(ctx.store, work, ctx.shell.userNumber());
    if (id) work.id = id;
    // A task just ticked stays where it stood, with its old sort key, until
    // the list is next built; a cleared tick brings it back at once.
    if (!checked) showListitems();
    select(work.id);
}

void frmTodo::mnuCompleted() {
    if (ListIndex < 0) return;
    TodoList_ItemCheck(ListIndex, true);
}

void frmTodo::mnuTodoPriority(int level) {
    if (!loadSelected()) return;
    work.priority = std::clamp(level, 0, 2);
    saveAndShow();
}

void frmTodo::mnuTodoDueDate(bool choose) {
    if (!loadSelected()) return;
    if (choose) {
        frmChooseDate picker;
        picker.value = work.hasDue && work.due > 0 ? CALENDAR::DateOfDay(work.due) : ctx.clock.dateTime().date();
        if (!ctx.dialogs.showModal(picker) || !picker.value.isValid()) return;
        work.hasDue = true;
        work.due = CALENDAR::DayNumber(picker.value);
    } else {
        work.hasDue = false;
        work.due = 0;
    }
    saveAndShow();
}

void frmTodo::ShowCompleted_Click(bool on) {
    ShowCompleted = on;
    quint8 &kept = Startvariables::state().TodoShowCompleted;
    if ((kept != 0) == on) return;
    kept = on ? 1 : 0;
    showListitems();
}

void frmTodo::cboCategories_Click() {
    if (CATEGORIES::CategoryOfSelector(cboCategories) == CATEGORIES::CategoryEdit) {
        cmdEditCat_Click();
        return;
    }
    Startvariables::state().LastCategory[TODO::LastCategorySlot] = static_cast<qint16>(cboCategories.ListIndex());
    showListitems();
}

void frmTodo::cmdEditCat_Click() {
    const int filter = CATEGORIES::CategoryOfSelector(cboCategories);
    frmEditCategories::Edit(Section);
    CATEGORIES::FillCategorySelector(cboCategories, Section, true, true, true);
    CATEGORIES::SelectCategory(cboCategories, filter == CATEGORIES::CategoryEdit ? CATEGORIES::CategoryAll : filter);
    if (cboCategories.ListIndex() < 0) cboCategories.setListIndex(0);
    showListitems();
}

} // namespace km
