// User rows, the PIN record and the section PINs. A store can hold several
// user rows (fSec 2, fSub = the user's number), each opening the same data
// under its own passphrase; every read searches all of them.
//
// User row: fEtx = SealString(packed user record, PassKey); fT2 = EncryptField
// of the packed PIN record; fT3 = the passphrase verifier followed by 0 to 5
// random bytes; fT1 and fR1 to fR4 noise, written anew at each write.
#pragma once

#include <QString>

#include "platform/SecureBytes.h"

namespace Users {

using km::SecureBytes;

struct UserRecord {
    qint64 RowId = 0;
    int Number = 0;
    SecureBytes PassHash;     // HashPass(PassKey)
    SecureBytes SealedMaster; // sealed in the row; MasterSecret in clear while logging in
    bool RightA = true;
    bool RightB = true;
    qint32 Extra = 0;
    QString Name;
};

// Section index bits of PinSections and UnlockedSections.
enum SectionBit { Addresses = 0, Calendar, Diary, Memos, Tasks, Confidential, Budget1, Budget2, Budget3 };

struct State {
    UserRecord User; // the session's user
    int PinKind = 0; // 0 default PIN made from the passphrase, 1 set by the user
    QString Pin;
    qint32 PinSections = 0;
    bool PinEveryAccess = false;
    qint32 UnlockedSections = 0;
};
State &state();
// Wipes the user record's secrets and the PIN.
void Wipe();

// Writes the session user's row in a transaction (needs PassKey); 0 or an engine error number.
int WriteUser(UserRecord &user);
void LoadPin();
void WritePin(int kind, const QString &pin, qint32 sections, bool everyAccess);
void ResetPin();
QString DefaultPin(const SecureBytes &passCheck);
// 1 right, 2 wrong (message 125 shown), 3 cancelled.
int RequestPin();
// The section switch's test: true when the section may be entered.
bool PinAllows(int sectionBit);

// The verifier of fT3: BlockCipherText(HashPass(HashKey(PassKey)), PassKey, ...) and 0-5 random bytes.
QByteArray MakeVerifier(const SecureBytes &passKey);
bool CheckVerifier(const QByteArray &fT3, const SecureBytes &passKey);

} // namespace Users
