#include "address/AddressSections.h"

#include "address/frmAddress.h"
#include "platform/Engine.h"
#include "shell/frmFind.h"
#include "store/CRY.h"

namespace address {

void RegisterSections() {
    km::frmMDI::RegisterSection(km::frmAddress::Section, [](const km::SectionContext &context) {
        return std::make_unique<km::frmAddress>(context);
    });
    km::RegisterFindSection(
        km::frmAddress::Section,
        {[](km::RowSet &row, const km::SecureBytes &, const km::FindDates &, km::FindHit &hit) {
             hit.item = CRY::DecryptField(row.GetColumn(QStringLiteral("fT1")).toByteArray());
             hit.spec = CRY::DecryptField(row.GetColumn(QStringLiteral("fT2")).toByteArray());
         },
         [](km::SectionWindow &window, const km::FindHit &hit) {
             if (auto *w = dynamic_cast<km::frmAddress *>(&window)) w->GoToRecord(hit.id);
         },
         QStringLiteral("fT1, fT2")});
}

} // namespace address
