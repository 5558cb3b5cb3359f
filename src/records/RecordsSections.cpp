#include "records/RecordsSections.h"

#include "records/frmClassified.h"
#include "records/frmNotepad.h"

namespace records {

void RegisterSections() {
    km::frmMDI::RegisterSection(km::frmNotepad::Section, [] { return std::make_unique<km::frmNotepad>(); });
    km::frmMDI::RegisterSection(km::frmClassified::Section,
                                [] { return std::make_unique<km::frmClassified>(); });
}

} // namespace records
