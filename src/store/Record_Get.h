// Reading packed records back. After UnpackRecord every slot holds text,
// whatever its type, in one stable form per type (these texts reach the
// address export):
//   boolean            "True" / "False"
//   byte, integers     decimal digits, "-" for negatives
//   currency           shortest text that converts back, "." as decimal point
//   single, double     shortest text that converts back, "." as decimal point
//   time fraction (22) the single as above
//   date (8), minutes (25)  "yyyy-MM-dd HH:mm:ss", also at midnight
//   texts              the typed text, read back from its stored form
//                      (CONVERSION::StoredToText)
// A byte text kept in a text field (a hash, a sealed value, a rule string) is
// read with ReadPackedBytes: its bytes are no stored form.
#pragma once

#include <optional>

#include <QByteArray>
#include <QStringList>
#include <QVariant>

#include "platform/SecureBytes.h"

namespace Record_Get {

// Fills values by field index from a packed record (blob decrypted first when
// encrypted is set). A non-empty values list has fixed bounds: every slot is
// set to "" first, and a field beyond the bounds is left out. An empty list
// grows to the highest index read. An empty blob leaves values as they are.
// Returns false when the record did not walk cleanly (a field beyond fixed
// bounds, a value running past the end, an unknown type byte): what could be
// read is in values all the same.
bool UnpackRecord(QStringList &values, const QByteArray &blob, bool encrypted);
bool UnpackRecord(QStringList &values, const km::SecureBytes &clear);

// The value of one field of a clear packed record in the same text form, or
// nothing if the record has no such field.
std::optional<QString> ReadPackedField(const QByteArray &clear, int index);
// The bytes of a text field (type 10 or 12) of a clear packed record as they
// stand; empty if the record has no such text field.
km::SecureBytes ReadPackedBytes(const km::SecureBytes &clear, int index);
std::optional<QString> ReadPackedField(const km::SecureBytes &clear, int index);

// The native value of value bytes of a type: null for "", QString for texts,
// bool, int for bytes and integers, CONVERSION::Currency, double for floats
// and dates of type 8 (the date value), QDateTime for type 25.
QVariant UnpackValue(const QByteArray &data, int type);
// First byte the type, the rest the value bytes.
QVariant UnpackTypedValue(const QByteArray &text);

// The private flag of a section's record (sectionIndex is the section's mask
// bit: 0 addresses ... 8 budget 3). A missing or non-boolean flag counts as
// private, so a record that cannot be read is never shown by mistake.
bool RowIsPrivate(const km::SecureBytes &clear, int sectionIndex);
bool RowIsPrivate(const QByteArray &clear, int sectionIndex);
// The field index of each section's private flag.
int PrivateFieldOfSection(int sectionIndex);

} // namespace Record_Get
