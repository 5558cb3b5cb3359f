// Repair and compacting of a store file, done on the file while no session
// holds it open.
#pragma once

#include <QString>

namespace km {

// True when the engine finds every page of the file sound.
bool StoreIsSound(const QString &path);
// Rebuilds a damaged store: every row that can still be read goes into a new
// file that then takes the store's name; the damaged file stays beside it
// with ".damaged" added. A sound store is left as it is. Throws EngineError
// when the file is no store at all or cannot be written.
void RepairDatabase(const QString &path);
// Writes a compacted copy of source to destination (which must not exist).
void CompactDatabase(const QString &source, const QString &destination);
// Compacts the store: a compacted copy in a temporary file takes its name.
void CompactInPlace(const QString &path);

} // namespace km
