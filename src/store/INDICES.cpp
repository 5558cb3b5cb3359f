#include "store/INDICES.h"

#include <algorithm>
#include <cmath>

#include "platform/CodePage1252.h"
#include "platform/Random.h"
#include "ui/Dialogs.h"
#include "store/CRY.h"
#include "store/db.h"

namespace INDICES {

namespace {

constexpr int ClassA = 1, ClassC = 3, ClassD = 4, ClassE = 5, ClassI = 9, ClassN = 14, ClassO = 15,
              ClassS = 19, ClassT = 20, ClassU = 21, ClassY = 25, ClassZ = 26;

int sgn(qint64 v) {
    return v > 0 ? 1 : (v < 0 ? -1 : 0);
}

// Rounds half to even and keeps the result within 32 bits.
qint32 toLong(double v) {
    const double r = std::nearbyint(v);
    return static_cast<qint32>(std::clamp(r, -2147483648.0, 2147483647.0));
}

QByteArray foldedTitle(km::RowSet &rows, const QString &column) {
    return SortFold(CRY::DecryptField(rows.GetColumn(column).toByteArray()));
}

qint32 rankOf(km::RowSet &rows, const QString &column) {
    return static_cast<qint32>(rows.GetColumn(column).toLongLong());
}

// A character that code page 1252 has no byte for, and no letter of the code
// page as its base, stands in a folded text as this byte and its code point
// in three bytes, high first. Every byte of a folded code page text is 128 or
// less, so such characters sort after all of them, among themselves by code
// point, and a bucket lies after every bucket of a letter A to Z.
constexpr unsigned char Beyond = 0xFF;
constexpr qsizetype BeyondBytes = 4;
constexpr int ClassBeyond = ClassZ + 1;

// The fold of one byte of code page 1252.
char foldByte(unsigned char b) {
    if (b > 128) return static_cast<char>(SortLetter(km::cp1252::toChar(b), 0) + 64);
    if (b >= 'a' && b <= 'z') return static_cast<char>(b - 32);
    return static_cast<char>(b);
}

// The upper case of a character beyond the code page, or its base letter
// where its canonical decomposition is that letter followed by nonspacing
// marks only (Ś is S and an acute, Ё is Е and a diaeresis). A letter with a
// mark the decomposition does not take apart, such as Ł, is its own letter.
char32_t baseLetter(char32_t c) {
    const char32_t upper = QChar::toUpper(c);
    const QList<uint> parts = QString::fromUcs4(&upper, 1).normalized(QString::NormalizationForm_D).toUcs4();
    if (parts.size() < 2) return upper;
    for (qsizetype i = 1; i < parts.size(); ++i)
        if (QChar::category(parts[i]) != QChar::Mark_NonSpacing) return upper;
    return parts[0];
}

// The letter class of the folded character at i; i moves past it.
int classAt(const QByteArray &folded, qsizetype &i, int mode) {
    const auto b = static_cast<unsigned char>(folded.at(i));
    if (b == Beyond) {
        i += BeyondBytes;
        return ClassBeyond;
    }
    ++i;
    return SortLetter(km::cp1252::toChar(b), mode);
}

} // namespace

int SortLetter(QChar ch, int mode) {
    const int c = km::cp1252::toByte(ch.toUpper());
    if (c >= 65 && c <= 90) return c - 64;
    switch (c) {
    case 196: // Ä
    case 198: // Æ
        return mode == 1 ? ClassZ + 3 : ClassA;
    case 214: // Ö
    case 216: // Ø
        return mode == 1 ? ClassZ + 4 : ClassO;
    case 197: // Å
        return mode == 1 ? ClassZ + 2 : ClassA;
    case 199:
        return ClassC;
    case 208:
        return ClassD;
    case 209:
        return ClassN;
    case 221:
        return ClassY;
    case 222:
        return ClassT;
    case 223:
        return ClassS;
    default:
        break;
    }
    if (c >= 192 && c <= 198) return ClassA;
    if (c >= 200 && c <= 203) return ClassE;
    if (c >= 204 && c <= 207) return ClassI;
    if (c >= 210 && c <= 214) return ClassO;
    if (c >= 217 && c <= 220) return ClassU;
    return 0;
}

QByteArray SortFold(const QString &text) {
    QByteArray out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size();) {
        char32_t c = text[i].unicode();
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            c = QChar::surrogateToUcs4(text[i], text[i + 1]);
            ++i;
        }
        ++i;
        if (km::cp1252::holds(c)) {
            out.append(foldByte(km::cp1252::toByte(QChar(static_cast<char16_t>(c)))));
            continue;
        }
        // A mark typed apart from its letter is passed over, as the marks of
        // the code page's own letters are.
        if (QChar::category(c) == QChar::Mark_NonSpacing) continue;
        const char32_t base = baseLetter(c);
        if (km::cp1252::holds(base)) {
            out.append(foldByte(km::cp1252::toByte(QChar(static_cast<char16_t>(base)))));
            continue;
        }
        out.append(static_cast<char>(Beyond));
        out.append(static_cast<char>((base >> 16) & 0xFF));
        out.append(static_cast<char>((base >> 8) & 0xFF));
        out.append(static_cast<char>(base & 0xFF));
    }
    return out;
}

int SortBucket(const QByteArray &folded, int mode) {
    if (folded.isEmpty()) return 0;
    qsizetype i = 0;
    const int a = classAt(folded, i, mode);
    // Titles that begin beyond the code page differ by code point, not by
    // class: they share one bucket, and their fold orders them within it.
    if (a == ClassBeyond) return ClassBeyond * 31 / 23;
    const int b = i < folded.size() ? classAt(folded, i, mode) : 0;
    return (a * 31 + b) / 23;
}

ScatterRange ScatterPoint(qint64 pos, qint64 count, qint64 low, qint64 high) {
    if (std::llabs(pos) > count - 1) pos = sgn(pos) * (count - 1);
    const qint64 step =
        static_cast<qint64>(std::floor(static_cast<double>(high - low) / static_cast<double>(count)));
    km::Randomize();
    const int s = pos == 0 ? 1 : sgn(pos);
    const double r = RandomUnit();
    const qint64 a = std::llabs(pos);
    ScatterRange out;
    out.Value = toLong(s * (static_cast<double>(low + a * step) + r * static_cast<double>(step)));
    if (pos >= 0) {
        out.Low = toLong(static_cast<double>(low + pos * step));
        out.High = toLong(static_cast<double>(low + (pos + 1) * step - 1));
    } else {
        out.High = toLong(static_cast<double>(sgn(pos) * (low + a * step)));
        out.Low = toLong(static_cast<double>(sgn(pos) * (low + (a + 1) * step - 1)));
    }
    return out;
}

qint32 BucketPoint(const QString &text) {
    return ScatterPoint(SortBucket(SortFold(text), 0), BucketCount, 0, MaxIndex).Value;
}

qint64 BinaryPlace(km::RowSet &rows, const QString &column, const QByteArray &key, qint64 low, qint64 high) {
    qint64 lo = low, hi = high;
    rows.MoveFirst();
    const km::Bookmark first = rows.GetBookmark();
    // With fewer than three rows in the range the callers have already found the
    // key to lie strictly between its ends, so its place is the upper row's.
    qint64 mid = hi;
    while (hi - lo >= 2) {
        mid = lo + (hi - lo) / 2;
        rows.Move(mid, first);
        const QByteArray t = foldedTitle(rows, column);
        if (key < t) {
            hi = mid;
            if (mid - lo == 1) break;
        } else if (key == t) {
            break;
        } else {
            lo = mid;
            if (hi - mid < 2) {
                ++mid;
                break;
            }
        }
    }
    return mid;
}

void Respread(km::RowSet &rows, const QString &column, qint64 pos, qint64 first, qint64 last, qint64 count,
              qint64 shift) {
    if (last < first) return;
    rows.MoveFirst();
    rows.Move(first);
    for (qint64 i = first; i <= last && !rows.Eof(); ++i) {
        const qint64 slot = shift != 0 ? i + shift : (i < pos ? i : i + 1);
        db::EditRow(rows);
        rows.SetColumn(column, ScatterPoint(slot, count, 0, MaxIndex).Value);
        rows.Update();
        rows.MoveNext();
    }
}

qint32 PlaceInOrder(km::StoreDb &store, const QString &titleColumn, const QString &bucketColumn,
                    const QString &rankColumn, const QString &newText, const QString &oldText, qint64 rowId,
                    int section, int /*flag*/, int bucketCount) {
    const QByteArray newFold = SortFold(newText);
    const QByteArray oldFold = SortFold(oldText);
    const int newBucket = SortBucket(newFold, 0);
    const bool same = !oldText.isEmpty() && SortBucket(oldFold, 0) == newBucket;
    const ScatterRange range = ScatterPoint(newBucket, bucketCount, 0, MaxIndex);

    const QString sql =
        QStringLiteral("SELECT fPK, AE, %1, %2, [%2] \\ %3 AS X, %4 FROM tt WHERE (%2 Between %5 And %6) "
                       "AND (fSec=%7) ORDER BY %4;")
            .arg(titleColumn, bucketColumn)
            .arg(BucketWidth)
            .arg(rankColumn)
            .arg(range.Low)
            .arg(range.High)
            .arg(section);
    auto rows = store.OpenRowSet(sql, km::Dynaset);
    if (rows->RecordCount() == 0) return ScatterPoint(0, 1, 0, MaxIndex).Value;
    rows->MoveLast();
    const qint64 n = rows->RecordCount();

    if (!same) {
        qint64 p = 0;
        rows->MoveLast();
        if (newFold >= foldedTitle(*rows, titleColumn)) {
            p = n;
        } else {
            rows->MoveFirst();
            if (newFold <= foldedTitle(*rows, titleColumn))
                p = 0;
            else
                p = BinaryPlace(*rows, titleColumn, newFold, 0, n - 1);
        }
        const qint32 result = ScatterPoint(p, n + 1, 0, MaxIndex).Value;
        Respread(*rows, rankColumn, p, 0, n - 1, n + 1, 0);
        return result;
    }

    rows->FindFirst(QStringLiteral("fPK = %1").arg(rowId));
    if (rows->NoMatch()) {
        km::ShowMessage(31);
        return 0;
    }
    const qint32 kept = rankOf(*rows, rankColumn);
    if (newFold == oldFold) return kept;

    const qint64 i = rows->AbsolutePosition();
    const bool up = newFold < oldFold;
    if ((up && i == 0) || (!up && i == n - 1)) return kept;

    qint64 p = 0, first = 0, last = 0, shift = 0;
    if (up) {
        rows->MovePrevious();
        if (newFold >= foldedTitle(*rows, titleColumn)) return kept;
        rows->MoveFirst();
        p = newFold < foldedTitle(*rows, titleColumn) ? 0
                                                      : BinaryPlace(*rows, titleColumn, newFold, 0, i - 1);
        first = p;
        last = i - 1;
        shift = 1;
    } else {
        rows->MoveNext();
        if (newFold <= foldedTitle(*rows, titleColumn)) return kept;
        rows->MoveLast();
        p = newFold > foldedTitle(*rows, titleColumn)
                ? n - 1
                : BinaryPlace(*rows, titleColumn, newFold, i + 1, n - 1) - 1;
        first = i + 1;
        last = p;
        shift = -1;
    }
    const qint32 result = ScatterPoint(p, n, 0, MaxIndex).Value;
    Respread(*rows, rankColumn, p, first, last, n, shift);
    return result;
}

double RandomUnit() {
    const double hi = static_cast<double>(km::RndInt(32768));
    const double lo = static_cast<double>(km::RndInt(65536));
    return (hi * 65536.0 + lo) / 2147483647.0;
}

qint32 RandomLong() {
    return static_cast<qint32>(std::min(std::nearbyint(RandomUnit() * 2147483648.0), 2147483647.0));
}

} // namespace INDICES
