#include "gui/address/AddressViews.h"

#include "gui/QtDialogs.h"
#include "gui/address/frmAddress.h"
#include "gui/address/frmEditAddress.h"
#include "gui/shell/frmFind.h"

namespace km::gui {

void RegisterAddressViews(QtDialogs &dialogs) {
    RegisterSectionView([](SectionWindow &model, QWidget *parent) -> SectionView * {
        if (auto *book = dynamic_cast<km::frmAddress *>(&model)) return new frmAddress(*book, parent);
        return nullptr;
    });
    dialogs.addWindow<km::frmEditAddress, frmEditAddress>();
    dialogs.addWindow<km::frmFind, frmFind>();
}

} // namespace km::gui
