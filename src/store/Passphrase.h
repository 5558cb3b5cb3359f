// The chain from the passphrase a person types to the key table that
// encrypts the fields:
//   passphrase --HashKey--> PassKey --unseals--> user row --> MasterSecret
//   MasterSecret --unseals--> key string (row 1,1) = KeyTable
// The passphrase is never stored and never kept: once typed, only PassKey and
// PassCheck (HashPass) remain, and those are wiped once the table is open.
// A change of passphrase rewrites one user row; no field is re-encrypted.
#pragma once

#include <QString>

#include "platform/SecureBytes.h"

namespace Passphrase {

using km::SecureBytes;

constexpr int KeyStringLength = 270; // 2^8 + 16 - 2
constexpr int MasterSecretLength = 43;
constexpr int MinimumLength = 8;

// Own error numbers: the absolute value is the message row.
constexpr int ErrTooShort = -40;
constexpr int ErrWrongPassphrase = -85;
constexpr int ErrCancelled = -98;

struct State {
    QString PassphraseRaw;    // only between the dialog and the hashing
    SecureBytes PassKey;      // HashKey(passphrase)
    SecureBytes PassCheck;    // HashPass(passphrase)
    SecureBytes MasterSecret; // only while the table is being opened
};
State &state();
void Wipe();

// Shows the passphrase dialog: message 99 for a new passphrase, 159 otherwise.
int AskPassphrase(bool isNew);
// AskPassphrase with retries; on success PassKey and PassCheck are set and
// PassphraseRaw is wiped. Without the main window a failure ends the program.
int GetPassphrase(bool isNew);
// Makes MasterSecret and the key string, writes section 1, the version row
// and the first user row with its default PIN. Needs PassKey and the open store.
int CreateKeyRows();
// Opens DatabasePath as the session's store, finds the user, unlocks the table.
int OpenKeyRows();
int FindUser();
bool VerifyPassphrase(bool keep);
// The preferences' change of passphrase. Returns true when it was changed.
bool ChangePassphrase();

} // namespace Passphrase
