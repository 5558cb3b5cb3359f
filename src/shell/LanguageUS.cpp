#include "shell/LanguageUS.h"

namespace LanguageUS {
QString MessageText(int) { return QString(); }
QString Tip(int) { return QString(); }
QString RandomTip() { return QString(); }
} // namespace LanguageUS
