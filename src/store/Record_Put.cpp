#include "store/Record_Put.h"

#include <algorithm>
#include <cmath>

#include "platform/CodePage1252.h"
#include "platform/SecureBytes.h"
#include "store/CONVERSION.h"

namespace Record_Put {

using namespace CONVERSION;

namespace {

bool isEmptyValue(const QVariant &v) {
    if (!v.isValid() || v.isNull()) return true;
    if (v.typeId() == QMetaType::QString) return v.toString().isEmpty();
    return false;
}

bool toBool(const QVariant &v) {
    if (isEmptyValue(v)) return false;
    if (v.typeId() == QMetaType::QString) {
        const QString s = v.toString().trimmed();
        if (s.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0) return true;
        if (s.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0) return false;
        bool ok = false;
        const double d = s.toDouble(&ok);
        return ok && d != 0.0;
    }
    return v.toBool();
}

double toDouble(const QVariant &v) {
    if (isEmptyValue(v)) return 0.0;
    if (v.canConvert<Currency>() && v.userType() == qMetaTypeId<Currency>())
        return v.value<Currency>().toDouble();
    return v.toString().trimmed().toDouble();
}

qint64 toWhole(const QVariant &v) {
    if (isEmptyValue(v)) return 0;
    switch (v.typeId()) {
    case QMetaType::Bool:
        return v.toBool() ? -1 : 0;
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::UChar:
    case QMetaType::SChar:
    case QMetaType::Char:
        return v.toLongLong();
    default:
        break;
    }
    const QString s = v.toString().trimmed();
    if (s.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0) return -1;
    if (s.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0) return 0;
    bool ok = false;
    const qint64 n = s.toLongLong(&ok);
    if (ok) return n;
    // Whole numbers round half to even, as the store's arithmetic does.
    return static_cast<qint64>(std::nearbyint(s.toDouble()));
}

Currency toCurrency(const QVariant &v) {
    if (isEmptyValue(v)) return Currency{};
    if (v.userType() == qMetaTypeId<Currency>()) return v.value<Currency>();
    switch (v.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
        return Currency::fromScaled(v.toLongLong() * 10000);
    default:
        return Currency::fromDouble(v.toString().trimmed().toDouble());
    }
}

// The date value of a slot: a date-time, a date, a date value, or the text form.
double toDateValue(const QVariant &v, bool *isDate) {
    *isDate = false;
    if (isEmptyValue(v)) return 0.0;
    if (IsDate(v)) {
        *isDate = true;
        return VariantDateValue(v);
    }
    if (v.typeId() == QMetaType::QString) {
        const QDateTime dt = ParseDateText(v.toString().trimmed());
        if (dt.isValid()) {
            *isDate = true;
            return ToDateValue(dt);
        }
    }
    return 0.0;
}

QByteArray packText(const QVariant &v) {
    QByteArray bytes;
    if (v.typeId() == QMetaType::QByteArray) {
        // Byte texts (hashes, sealed values) go in as they are.
        bytes = v.toByteArray().left(MaxTextLength);
    } else {
        // Typed text goes in in its stored form; the limit counts that form.
        const QString text = isEmptyValue(v) ? QString() : v.toString();
        QString stored = TextToStored(text, MaxTextLength);
        bytes = km::cp1252::toBytes(stored);
        if (stored.constData() != text.constData()) km::wipe(stored);
    }
    QByteArray out;
    const qsizetype n = bytes.size();
    if (n < 255) {
        out.append(static_cast<char>(n));
    } else {
        out.append(static_cast<char>(255));
        out.append(static_cast<char>(n & 0xFF));
        out.append(static_cast<char>((n >> 8) & 0xFF));
    }
    out.append(bytes);
    return out;
}

} // namespace

QByteArray PackValue(const QVariant &value, int type) {
    QByteArray out;
    out.append(static_cast<char>(type));
    switch (type) {
    case tBoolean:
        out.append(static_cast<char>(toBool(value) ? 1 : 0));
        break;
    case tByte:
        out.append(static_cast<char>(toWhole(value) & 0xFF));
        break;
    case tInteger:
        out.append(IntToBytes(toWhole(value), 2));
        break;
    case tLong:
        out.append(IntToBytes(toWhole(value), 4));
        break;
    case tCurrency:
        out.append(CurrencyToBytes(toCurrency(value)));
        break;
    case tSingle:
        out.append(SingleToBytes(static_cast<float>(toDouble(value))));
        break;
    case tDouble:
        out.append(DoubleToBytes(toDouble(value)));
        break;
    case tDate: {
        bool isDate = false;
        double d = toDateValue(value, &isDate);
        if (!isDate && !isEmptyValue(value)) d = toDouble(value);
        out.append(DoubleToBytes(d));
        break;
    }
    case tText:
    case tMemo:
        out.append(packText(value));
        break;
    case tTime: {
        bool isDate = false;
        double d = toDateValue(value, &isDate);
        if (!isDate && !isEmptyValue(value)) d = toDouble(value);
        out.append(SingleToBytes(static_cast<float>(std::fabs(d - std::trunc(d)))));
        break;
    }
    case tMinutes: {
        bool isDate = false;
        const double d = toDateValue(value, &isDate);
        out.append(IntToBytes(isDate ? DateToMinutes(FromDateValue(d)) : 0, 4));
        break;
    }
    default:
        return QByteArray();
    }
    return out;
}

QByteArray PackRecord(const QList<Field> &layout, const QVariantList &values) {
    QList<Field> fields = layout;
    std::stable_sort(fields.begin(), fields.end(),
                     [](const Field &a, const Field &b) { return a.index < b.index; });
    QByteArray out;
    for (const Field &f : fields) {
        const QVariant v = f.index < values.size() ? values.at(f.index) : QVariant();
        out.append(static_cast<char>(f.index & 0xFF));
        out.append(PackValue(v, f.type));
    }
    return out;
}

} // namespace Record_Put
