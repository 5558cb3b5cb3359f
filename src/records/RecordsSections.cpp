#include "records/RecordsSections.h"

#include "records/frmClassified.h"
#include "records/frmNotepad.h"
#include "records/frmTodo.h"
#include "shell/frmFind.h"
#include "store/CATEGORIES.h"

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
    // A task found may stand outside the list's category or among the hidden
    // completed ones: Go To widens the list until the task is in it.
    km::RegisterFindSection(km::frmTodo::Section,
                            {nullptr, [](km::SectionWindow &window, const km::FindHit &hit) {
                                 auto *w = dynamic_cast<km::frmTodo *>(&window);
                                 if (!w) return;
                                 if (w->indexOfTag(hit.id) < 0) {
                                     CATEGORIES::SelectCategory(w->cboCategories, CATEGORIES::CategoryAll);
                                     w->showListitems();
                                 }
                                 if (w->indexOfTag(hit.id) < 0) w->ShowCompleted_Click(true);
                                 w->TodoList_Click(w->indexOfTag(hit.id));
                             }});
    km::frmMDI::RegisterSection(km::frmTodo::Section, [](const km::SectionContext &context) {
        return std::make_unique<km::frmTodo>(context);
    });
}

} // namespace records
