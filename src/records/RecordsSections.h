// Puts the memo and confidential-data windows behind their section buttons.
#pragma once

namespace records {
void RegisterSections();
} // namespace records
