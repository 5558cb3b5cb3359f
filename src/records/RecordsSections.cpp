#include "records/RecordsSections.h"

#include "records/frmClassified.h"
#include "records/frmNotepad.h"
#include "records/frmTodo.h"

namespace records {

void RegisterSections() {
    km::frmMDI::RegisterSection(km::frmNotepad::Section, [](const km::SectionContext &context) {
        return std::make_unique<km::frmNotepad>(context);
    });
    km::frmMDI::RegisterSection(km::frmClassified::Section, [](const km::SectionContext &context) {
        return std::make_unique<km::frmClassified>(context);
    });
    km::frmMDI::RegisterSection(km::frmTodo::Section, [](const km::SectionContext &context) {
        return std::make_unique<km::frmTodo>(context);
    });
}

} // namespace records
