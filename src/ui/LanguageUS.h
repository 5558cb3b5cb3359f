// The numbered message table and the tips of the day. A further language
// would be a second table with the same row numbers.
#pragma once

#include <QString>

namespace LanguageUS {

// The row's text; empty if the number has no row.
QString MessageText(int row);

constexpr int TipCount = 27;
// Tip n (1 to 27): a section word in capitals, ":" and the text.
QString Tip(int n);
// One of the 27 tips, drawn with Rnd; a tip may repeat.
QString RandomTip();

} // namespace LanguageUS
