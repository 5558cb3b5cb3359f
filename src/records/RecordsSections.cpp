#include "records/RecordsSections.h"

#include "records/frmClassified.h"
#include "records/frmNotepad.h"
#include "records/frmTodo.h"
#include "shell/frmFind.h"
#include "store/CATEGORIES.h"
#include "store/Record_Get.h"
#include "ui/LanguageUS.h"

namespace records {

void RegisterSections() {
    km::frmMDI::RegisterSection(km::frmNotepad::Section, [](const km::SectionContext &context) {
        return std::make_unique<km::frmNotepad>(context);
    });
    km::frmMDI::RegisterSection(km::frmClassified::Section, [](const km::SectionContext &context) {
        return std::make_unique<km::frmClassified>(context);
    });
    // Find lists both by their decrypted title, as it does by default; Go To
    // shows a memo under all categories and a confidential entry under its kind.
    km::RegisterFindSection(km::frmNotepad::Section,
                            {nullptr, [](km::SectionWindow &window, const km::FindHit &hit) {
                                 auto *w = dynamic_cast<km::frmNotepad *>(&window);
                                 if (!w) return;
                                 CATEGORIES::SelectCategory(w->cboCategories, CATEGORIES::CategoryAll);
                                 w->listSelect_Initialize(hit.id);
                             }});
    km::RegisterFindSection(km::frmClassified::Section,
                            {nullptr, [](km::SectionWindow &window, const km::FindHit &hit) {
                                 auto *w = dynamic_cast<km::frmClassified *>(&window);
                                 if (!w) return;
                                 w->cat_Click(CATEGORIES::CategoryOfRow(hit.id));
                                 w->listSelect_Initialize(hit.id);
                             }});
    // A task: Item its description, Spec "Completed", or "Due" and the due
    // date as the list shows it. A task found may stand outside the list's
    // category or among the hidden completed ones: Go To widens the list
    // until the task is in it.
    km::RegisterFindSection(km::frmTodo::Section,
                            {[](km::RowSet &row, const km::SecureBytes &clear, const km::FindDates &dates,
                                km::FindHit &hit) {
                                 const km::TODO::Task task = km::TODO::ReadTaskColumns(row);
                                 hit.item = Record_Get::ReadPackedField(clear, km::TODO::Description).value_or(QString());
                                 if (task.completed) {
                                     hit.spec = LanguageUS::MessageText(123);
                                     return;
                                 }
                                 hit.spec = LanguageUS::MessageText(122);
                                 if (const QDate due = km::TODO::DueShown(task); due.isValid())
                                     hit.spec += QLatin1Char(' ') + dates.date(due);
                             },
                             [](km::SectionWindow &window, const km::FindHit &hit) {
                                 auto *w = dynamic_cast<km::frmTodo *>(&window);
                                 if (!w) return;
                                 if (w->indexOfTag(hit.id) < 0) {
                                     CATEGORIES::SelectCategory(w->cboCategories, CATEGORIES::CategoryAll);
                                     w->showListitems();
                                 }
                                 if (w->indexOfTag(hit.id) < 0) w->ShowCompleted_Click(true);
                                 w->TodoList_Click(w->indexOfTag(hit.id));
                             },
                             QStringLiteral("fR1, fR2, fR3, fF1, fF2, fF3, fG1")});
    km::frmMDI::RegisterSection(km::frmTodo::Section, [](const km::SectionContext &context) {
        return std::make_unique<km::frmTodo>(context);
    });
}

} // namespace records
