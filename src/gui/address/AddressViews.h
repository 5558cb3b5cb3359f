// The address book's windows on Qt, and Find's.
#pragma once

namespace km::gui {

class QtDialogs;

// Registers the address view with the main window and frmEditAddress and
// frmFind with the dialogs.
void RegisterAddressViews(QtDialogs &dialogs);

} // namespace km::gui
