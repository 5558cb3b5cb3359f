// The sort index. Titles are encrypted, so the engine cannot sort by them;
// each row of an alphabetically sorted section carries two plain numbers
// instead: a random point in its letter bucket (bucket column, fR2) and a
// random point in its rank slot within that bucket (rank column, fR1). A list
// sorts by bucket column \ BucketWidth, then rank column, without decrypting.
//
// Invariants:
//  1. Within a bucket, the rank numbers of its n rows lie one in each of n
//     equal slots of 0..MaxIndex, in the order of their folded titles.
//  2. Placing a title decrypts only rows of its own bucket (a binary search),
//     and rewrites rank numbers of that bucket only.
//  3. Folding works on the typed text. A character of code page 1252 folds
//     to its byte, letters upper case and the accented ones to their plain
//     letter (Ärzte lies between apples and Avocado). A character outside
//     the code page whose canonical decomposition is a letter of the code
//     page with marks folds to that letter (Ś as S); any other (Ł, Cyrillic,
//     Greek, emoji) folds to a mark above every code page byte and its code
//     point, upper case, the base letter where the decomposition gives one
//     (Ё beside Е): other scripts sort after A to Z, each in code point order.
//  4. The bucket order agrees with the fold's: a title that begins beyond
//     the code page lies in bucket 36, after every bucket of A to Y and
//     with the titles of Z whose second letter is V or later.
#pragma once

#include <QByteArray>
#include <QString>

#include "platform/Engine.h"

namespace INDICES {

constexpr qint32 MaxIndex = 2147483647;
constexpr int BucketCount = 42;
constexpr qint32 BucketWidth = MaxIndex / BucketCount; // 51130563

struct ScatterRange {
    qint32 Value = 0; // a random point in the slot
    qint32 High = 0;  // the last number of the slot
    qint32 Low = 0;   // the first number of the slot
};

// The letter class of a character (1 to 26 for A to Z, accented letters as
// their plain letter, 0 for anything else). Mode 1 sorts Å, Ä/Æ, Ö/Ø after Z.
int SortLetter(QChar ch, int mode);
// Accented letters folded and upper case (invariant 3); compared bytewise.
QByteArray SortFold(const QString &text);
// Bucket of a folded text: (class of 1st x 31 + class of 2nd) \ 23, a
// character beyond the code page of class 27 (invariant 4).
int SortBucket(const QByteArray &folded, int mode);
ScatterRange ScatterPoint(qint64 pos, qint64 count, qint64 low, qint64 high);
qint32 BucketPoint(const QString &text);

// The rank number for the row being written (its title changing from oldText,
// "" for a new row, to newText). May rewrite the rank numbers of other rows
// of the bucket; the caller runs it inside the row's write transaction.
qint32 PlaceInOrder(km::StoreDb &store, const QString &titleColumn, const QString &bucketColumn,
                    const QString &rankColumn, const QString &newText, const QString &oldText, qint64 rowId,
                    int section, int flag, int bucketCount);
// The position of key among the rows low..high of rows (ordered by rank).
qint64 BinaryPlace(km::RowSet &rows, const QString &column, const QByteArray &key, qint64 low, qint64 high);
// Renumbers rows first..last: slot i + shift, or with shift 0, i below pos and i + 1 from pos on.
void Respread(km::RowSet &rows, const QString &column, qint64 pos, qint64 first, qint64 last, qint64 count,
              qint64 shift);

// (Int(Rnd x 32768) x 65536 + Int(Rnd x 65536)) / 2147483647: 0 to 1, both included.
double RandomUnit();
// RandomUnit x 2147483648, rounded, kept within 32 bits.
qint32 RandomLong();

} // namespace INDICES
