// Puts the address book behind its section button and tells Find what it
// shows of an address and how Go To selects one.
#pragma once

namespace address {
void RegisterSections();
} // namespace address
