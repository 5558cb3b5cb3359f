// Packing of a record: each field as Chr(index), a type byte and the value's
// bytes, in rising index order. The packed record goes through EncryptField
// into fEtx, so that all of a row's fields open with one decryption.
#pragma once

#include <QByteArray>
#include <QList>
#include <QVariant>

namespace Record_Put {

// Type codes of packed fields.
enum FieldType : int {
    tBoolean = 1,
    tByte = 2,
    tInteger = 3,  // 16-bit
    tLong = 4,     // 32-bit
    tCurrency = 5, // value x 10000, 64-bit
    tSingle = 6,
    tDouble = 7,
    tDate = 8, // date value as double
    tText = 10,
    tMemo = 12,
    tTime = 22,    // fraction of the day as single
    tMinutes = 25, // DateToMinutes, 32-bit
};

// Bytes of a text field: a typed text's stored form (CONVERSION::TextToStored)
// is cut to this length, before a character whose form would not fit whole.
constexpr int MaxTextLength = 65000;

// The type byte and the encoded value; "" for a type not in the table.
// Values may be of their natural kind (bool, integers, double, QDateTime,
// QDate, CONVERSION::Currency, QString) or the text form that UnpackRecord
// gives back, so a record read and written again keeps its bytes. A QString
// of a text type is typed text and goes in in its stored form; a QByteArray
// (a hash, a sealed value, a rule string) goes in as its bytes.
QByteArray PackValue(const QVariant &value, int type);

// One field of a section's record layout.
struct Field {
    int index;
    int type;
};

// Chr(index) & PackValue(slot, type) for each field of the layout, in index
// order. A slot beyond the end of values packs as an empty value.
QByteArray PackRecord(const QList<Field> &layout, const QVariantList &values);

} // namespace Record_Put
