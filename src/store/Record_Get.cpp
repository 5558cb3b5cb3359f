#include "store/Record_Get.h"

#include "platform/CodePage1252.h"
#include "store/CONVERSION.h"
#include "store/CRY.h"
#include "store/Record_Put.h"

namespace Record_Get {

using namespace CONVERSION;
using namespace Record_Put;

namespace {

struct Bytes {
    const std::uint8_t *p;
    std::size_t n;
};

Bytes view(const QByteArray &b) {
    return {reinterpret_cast<const std::uint8_t *>(b.constData()), static_cast<std::size_t>(b.size())};
}
Bytes view(const km::SecureBytes &b) {
    return {b.data(), b.size()};
}

QByteArray slice(Bytes b, std::size_t at, std::size_t len) {
    return QByteArray(reinterpret_cast<const char *>(b.p + at), static_cast<qsizetype>(len));
}

// Width of a fixed-size value; -1 for the texts, 0 for a type the reader
// does not know (skipped as having no value).
int fixedWidth(int type) {
    switch (type) {
    case tBoolean:
    case tByte:
        return 1;
    case tInteger:
        return 2;
    case tLong:
    case tSingle:
    case tTime:
    case tMinutes:
        return 4;
    case tCurrency:
    case tDouble:
    case tDate:
        return 8;
    case tText:
    case tMemo:
        return -1;
    default:
        return 0;
    }
}

struct PackedField {
    int index = 0;
    int type = 0;
    std::size_t valueAt = 0;
    std::size_t valueLength = 0;
};

// Reads the field at pos and advances past it. Returns false when the field
// runs past the end of the record; a known field is then cut at the end.
bool nextField(Bytes b, std::size_t &pos, PackedField &f) {
    f.index = b.p[pos];
    f.type = pos + 1 < b.n ? b.p[pos + 1] : 0;
    pos += 2;
    const int w = fixedWidth(f.type);
    std::size_t len = 0;
    if (w >= 0) {
        len = static_cast<std::size_t>(w);
    } else {
        if (pos >= b.n) {
            f.valueAt = b.n;
            f.valueLength = 0;
            return false;
        }
        len = b.p[pos++];
        if (len == 255) {
            if (pos + 2 > b.n) {
                pos = b.n;
                f.valueAt = b.n;
                f.valueLength = 0;
                return false;
            }
            len = static_cast<std::size_t>(b.p[pos]) | (static_cast<std::size_t>(b.p[pos + 1]) << 8);
            pos += 2;
        }
    }
    f.valueAt = std::min(pos, b.n);
    const bool whole = pos + len <= b.n;
    f.valueLength = whole ? len : b.n - f.valueAt;
    pos += len;
    return whole && f.type != 0 && (fixedWidth(f.type) != 0);
}

// The typed text of a text field's bytes (its stored form read back).
QString typedText(const QByteArray &bytes) {
    QString stored = km::cp1252::fromBytes(bytes);
    QString text = StoredToText(stored);
    if (text.constData() != stored.constData()) km::wipe(stored);
    return text;
}

QString textOf(int type, const QByteArray &v) {
    switch (type) {
    case tBoolean:
        return (!v.isEmpty() && v.at(0) != 0) ? QStringLiteral("True") : QStringLiteral("False");
    case tByte:
        return QString::number(v.isEmpty() ? 0 : static_cast<unsigned char>(v.at(0)));
    case tInteger:
    case tLong:
        return QString::number(BytesToInt(v));
    case tCurrency:
        return BytesToCurrency(v).toString();
    case tSingle:
    case tTime:
        return SingleText(BytesToSingle(v));
    case tDouble:
        return FloatText(BytesToDouble(v));
    case tDate:
        return DateText(FromDateValue(BytesToDouble(v)));
    case tMinutes:
        return DateText(MinutesToDate(BytesToInt(v)));
    case tText:
    case tMemo:
        return typedText(v);
    default:
        return QString();
    }
}

bool isEmptyRecord(Bytes b) {
    if (b.n < 2) return true;
    if (b.p[0] == 0 && b.p[1] == 0) return true;   // nothing but zeros in the first place
    if (b.p[0] == 32 && b.p[1] == 32) return true; // the run of blanks of an encrypted ""
    return false;
}

bool unpack(QStringList &values, Bytes b, bool growable) {
    if (isEmptyRecord(b)) return true;
    bool clean = true;
    std::size_t pos = 0;
    while (pos < b.n) {
        PackedField f;
        if (!nextField(b, pos, f)) clean = false;
        if (fixedWidth(f.type) == 0) continue; // unknown type: no value, walk on
        if (f.index >= values.size()) {
            if (!growable) {
                clean = false;
                continue;
            }
            while (values.size() <= f.index)
                values.append(QString());
        }
        const QByteArray v = slice(b, f.valueAt, f.valueLength);
        values[f.index] = f.valueLength == 0 && fixedWidth(f.type) > 0 ? QString() : textOf(f.type, v);
    }
    return clean;
}

std::optional<PackedField> findField(Bytes b, int index) {
    if (isEmptyRecord(b)) return std::nullopt;
    std::size_t pos = 0;
    while (pos < b.n) {
        PackedField f;
        nextField(b, pos, f);
        if (f.index == index && fixedWidth(f.type) != 0) return f;
    }
    return std::nullopt;
}

std::optional<QString> readField(Bytes b, int index) {
    const auto f = findField(b, index);
    if (!f) return std::nullopt;
    return textOf(f->type, slice(b, f->valueAt, f->valueLength));
}

bool isPrivate(Bytes b, int sectionIndex) {
    const auto f = findField(b, PrivateFieldOfSection(sectionIndex));
    if (!f || f->type != tBoolean || f->valueLength != 1) return true;
    return b.p[f->valueAt] != 0;
}

} // namespace

bool UnpackRecord(QStringList &values, const QByteArray &blob, bool encrypted) {
    if (blob.isEmpty()) return true;
    const bool growable = values.isEmpty();
    for (QString &s : values)
        s.clear();
    if (encrypted) {
        CRY::DecryptToPlainBytes(blob);
        return unpack(values, view(CRY::state().PlainBytes), growable);
    }
    return unpack(values, view(blob), growable);
}

bool UnpackRecord(QStringList &values, const km::SecureBytes &clear) {
    if (clear.empty()) return true;
    const bool growable = values.isEmpty();
    for (QString &s : values)
        s.clear();
    return unpack(values, view(clear), growable);
}

km::SecureBytes ReadPackedBytes(const km::SecureBytes &clear, int index) {
    const Bytes b = view(clear);
    const auto f = findField(b, index);
    if (!f || fixedWidth(f->type) >= 0) return {};
    return km::SecureBytes(b.p + f->valueAt, b.p + f->valueAt + f->valueLength);
}

std::optional<QString> ReadPackedField(const QByteArray &clear, int index) {
    return readField(view(clear), index);
}
std::optional<QString> ReadPackedField(const km::SecureBytes &clear, int index) {
    return readField(view(clear), index);
}

QVariant UnpackValue(const QByteArray &data, int type) {
    if (data.isEmpty()) return QVariant::fromValue(nullptr);
    switch (type) {
    case tText:
    case tMemo: {
        // The encoded text: its length (one byte, or 255 and two bytes), then the bytes.
        QByteArray field = QByteArray(1, '\0') + QByteArray(1, static_cast<char>(type)) + data;
        PackedField f;
        std::size_t pos = 0;
        nextField(view(field), pos, f);
        return typedText(field.mid(static_cast<qsizetype>(f.valueAt), static_cast<qsizetype>(f.valueLength)));
    }
    case tBoolean:
        return data.at(0) != 0;
    case tByte:
        return static_cast<int>(static_cast<unsigned char>(data.at(0)));
    case tInteger:
    case tLong:
        return BytesToInt(data);
    case tCurrency:
        return QVariant::fromValue(BytesToCurrency(data));
    case tSingle:
    case tTime:
        return static_cast<double>(BytesToSingle(data));
    case tDouble:
    case tDate:
        return BytesToDouble(data);
    case tMinutes:
        return MinutesToDate(BytesToInt(data));
    default:
        return QVariant();
    }
}

QVariant UnpackTypedValue(const QByteArray &text) {
    if (text.isEmpty()) return QVariant::fromValue(nullptr);
    return UnpackValue(text.mid(1), static_cast<unsigned char>(text.at(0)));
}

int PrivateFieldOfSection(int sectionIndex) {
    switch (sectionIndex) {
    case 0: // addresses
    case 1: // calendar
    case 3: // memos
        return 1;
    case 2: // diary
        return 13;
    case 4: // tasks
        return 2;
    case 5: // confidential data
        return 7;
    default: // the three budgets
        return 4;
    }
}

bool RowIsPrivate(const km::SecureBytes &clear, int sectionIndex) {
    return isPrivate(view(clear), sectionIndex);
}
bool RowIsPrivate(const QByteArray &clear, int sectionIndex) {
    return isPrivate(view(clear), sectionIndex);
}

} // namespace Record_Get
