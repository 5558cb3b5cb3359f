// The field cipher. Every byte of user data that reaches tt encrypted passes
// through here, in one of three forms:
//  - field form: Blowfish-CBC under one of 65536 keys selected from the key
//    table; key number (2 bytes, high first), 8-byte vector, cipher blocks.
//    Used for fEtx, fT1 to fT3 and every other user value.
//  - sealed form: AES-256-CBC under a PBKDF2 key; 16-byte nonce, cipher
//    blocks. Only the key table and the user rows.
//  - verifier form: Rijndael, 192-bit block, 256-bit key, no chaining. Only
//    the passphrase verifier of a user row.
//
// Cipher text, hashes and random values are "byte texts": QByteArray, one
// byte a character of code page 1252, taken as they are. Plain text (QString)
// is what the person typed: it goes in in its stored form
// (CONVERSION::TextToStored, then code page 1252) and comes out of
// DecryptField the same way back.
//
// Invariants:
//  1. No key is ever stored: a field key exists only while the key number at
//     the head of a field and the key table are both at hand.
//  2. KeyTable, FieldKey, PlainBytes and the cache of Blowfish key schedules
//     live in wiping buffers; UnloadKeyTable wipes all of them.
//  3. A field that does not decrypt is no error: it reads as garbage. Only
//     the passphrase check at login catches a wrong key table.
//  4. A field decryption and the read of PlainBytes follow each other with no
//     other field operation between.
#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include "platform/SecureBytes.h"

namespace CRY {

using km::SecureBytes;

constexpr int KeyCount = 65536;

struct State {
    SecureBytes KeyTable = SecureBytes(1, 0); // 270 bytes when loaded, one byte when no store is open
    int KeyTableSize = 0;
    SecureBytes FieldKey;   // the key in force for the next field operation (16 bytes)
    SecureBytes PlainBytes; // output of the last field decryption
};
State &state();

// Loads the key table (sets KeyTable, forgets every cached key schedule).
void LoadKeyTable(const SecureBytes &table);
// Wipes KeyTable back to one byte, FieldKey, PlainBytes and the schedule cache.
void UnloadKeyTable();
bool KeyTableLoaded();

// ---- Field form ----
// mode 1 encrypts under a random key number; 2 decrypts a field form and trims
// blanks; 3 encrypts under the current FieldKey without key number; 4 decrypts
// under it without trimming. An invalid QVariant is the Empty value: "" in
// every mode. Null (QVariant of std::nullptr_t) and "" encrypt as a run of 0
// to 12 blanks. QString values go in in their stored form, QByteArray values
// are taken as bytes; other kinds as their text. Modes 2 and 4 return the
// plain bytes; use DecryptField for text.
QByteArray FieldCipher(int mode, const QVariant &value);

QByteArray EncryptField(const QString &text);
QByteArray EncryptField(const QByteArray &bytes);
QByteArray EncryptField(const QVariant &value);
// Mode 2: the plain text, trimmed of blanks at both ends, read back from its
// stored form.
QString DecryptField(const QByteArray &field);
// Like mode 2 without the trim, for binary values (packed values, rule
// strings) whose first or last byte may be 32. Empty for a malformed field.
SecureBytes DecryptFieldBytes(const QByteArray &field);
// The inner decryption: leaves the clear bytes in state().PlainBytes (one
// byte 0 for a malformed field). Returns false where the pad check failed or
// the field was malformed.
bool DecryptToPlainBytes(const QByteArray &field);

void SelectFieldKey(int number);

// ---- Sealed form ----
QByteArray SealString(const SecureBytes &plain, const SecureBytes &password);
// Empty for every failure (wrong password, damaged text).
SecureBytes UnsealString(const QByteArray &sealed, const SecureBytes &password);

// ---- Verifier form ----
// direction -1 encrypts, 0 decrypts; returns "" when the decrypted pad is wrong.
QByteArray BlockCipherText(const QByteArray &text, const SecureBytes &password, int direction, int blockBits,
                           int keyBits);

// ---- Hashes and random values ----
SecureBytes HashKey(const SecureBytes &bytes);  // 80 rounds of SHA-256
SecureBytes HashKey(const QString &text);       // of cp1252 bytes
SecureBytes HashPass(const SecureBytes &bytes); // 47 rounds of SHA-1 (19-byte feed-back)
SecureBytes HashPass(const QString &text);
SecureBytes RandomBytes(int n);
QByteArray RandomNoise(int n); // 8 x n bytes
int ByteSum(const SecureBytes &bytes);
int ByteSum(const QByteArray &bytes);
// Overwrites the bytes in place and empties the buffer (its memory is kept),
// then leaves the one byte 0 that stands for "no value" (a malformed field's
// PlainBytes, a FieldKey that is no valid key).
void WipeBytes(SecureBytes &bytes);
// Overwrites every character with character 0, then empties the text.
QString WipeString(QString &text);

// Number of Blowfish key schedules kept (bounded: half of all key numbers, about 130 MiB).
int CachedSchedules();

} // namespace CRY
