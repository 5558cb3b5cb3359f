// Repair and compacting of a store file, done on the file while no session
// holds it open.
#pragma once

#include <QString>

namespace km {

// True when the engine finds every page of the file sound.
bool StoreIsSound(const QString &path);
// What a repair did.
struct RepairReport {
    bool wasSound = false; // nothing to repair: the store is as it was
    qint64 rowsKept = 0;   // rows read from the damaged file into the new one
    bool hasKeyRows = false; // the key string row and a user row survived
    bool opens = false;      // the result opens as a store
    // The result can serve as a store: it opens and its keys are there.
    bool usable() const { return opens && hasKeyRows; }
};

// Rebuilds a damaged store: every row that can still be read goes into a new
// file that then takes the store's name; the damaged file stays beside it
// with ".damaged" added (its journal or log, if one was left, beside that).
// A sound store is left as it is. Throws EngineError when the file is no
// store at all or cannot be written. What a killed process left is folded
// into the store before anything else, so that its committed rows are kept.
RepairReport RepairDatabase(const QString &path);
// Writes a compacted copy of source to destination (which must not exist).
void CompactDatabase(const QString &source, const QString &destination);
// Compacts the store: a compacted copy in a temporary file takes its name.
// The store's log is folded in first, and no side file of the old file
// remains beside the new one.
void CompactInPlace(const QString &path);

} // namespace km
