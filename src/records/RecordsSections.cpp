#include "records/RecordsSections.h"

#include "records/frmClassified.h"
#include "records/frmNotepad.h"
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
}

} // namespace records
