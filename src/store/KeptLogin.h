// The login of the open store, kept across a close: compacting, repairing and
// backing up close the store (which wipes its key table) and bring it back
// without asking for the passphrase again. The copies are wiped when the
// object goes, whether or not the store came back.
#pragma once

#include <QString>

#include "platform/SecureBytes.h"
#include "store/Users.h"

namespace db {

class KeptLogin {
public:
    KeptLogin(); // keeps the key table and user if a store is logged in
    ~KeptLogin();
    KeptLogin(const KeptLogin &) = delete;
    KeptLogin &operator=(const KeptLogin &) = delete;

    // A login was there to keep.
    bool held() const { return m_held; }
    // Loads the kept key table and user again and finishes the open of the
    // store at path; an engine error of that open propagates.
    void reopen(const QString &path);

private:
    bool m_held = false;
    km::SecureBytes m_keys;
    Users::UserRecord m_user;
};

} // namespace db
