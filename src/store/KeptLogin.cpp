#include "store/KeptLogin.h"

#include "store/CRY.h"
#include "store/db.h"

namespace db {

KeptLogin::KeptLogin() : m_held(CRY::KeyTableLoaded()) {
    if (!m_held) return;
    m_keys = CRY::state().KeyTable;
    m_user = Users::state().User;
}

KeptLogin::~KeptLogin() {
    km::wipe(m_keys);
    km::wipe(m_user.PassHash);
    km::wipe(m_user.SealedMaster);
}

void KeptLogin::reopen(const QString &path) {
    CRY::LoadKeyTable(m_keys);
    Users::state().User = m_user;
    state().DatabasePath = path;
    FinishOpen();
}

} // namespace db
