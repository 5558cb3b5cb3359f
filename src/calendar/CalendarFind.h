// What Find shows of a hit in the calendar and in the diary, and how Go To
// brings it up.
#pragma once

namespace CALENDAR {
// Registers the Find columns and Go To of the calendar (12) and the diary (13).
void RegisterFindSections();
} // namespace CALENDAR
