#include "store/Passphrase.h"

#include "platform/CodePage1252.h"
#include "store/CONVERSION.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"
#include "store/CRY.h"
#include "store/Record_Get.h"
#include "store/Record_Put.h"
#include "store/Users.h"
#include "store/db.h"
#include "store/frmPW.h"

namespace Passphrase {

using namespace Record_Put;

namespace {

constexpr int StandByMs = 1200;

// "Fatal Error #" and the number, then what the engine said.
void fatal(int number, const QString &detail = QString()) {
    QString text = LanguageUS::MessageText(83) + QString::number(number);
    if (!detail.isEmpty()) text += QStringLiteral("\r\n") + detail;
    km::ui().message(text, km::Buttons::OK, km::Answer::OK, km::Icon::Critical);
}

[[noreturn]] void endProgram(int number) {
    fatal(number);
    throw km::ProgramEnd{1, 83};
}

// The text a passphrase is hashed as. The hashes take code page 1252 bytes,
// as they always have, so a passphrase the code page holds is hashed as it is
// and opens the stores it always opened. One with characters the code page
// has no byte for takes the stored form of typed texts ("&#N;" for each such
// character), so that every character counts with its whole value.
template <class Hash> SecureBytes hashPassphrase(const QString &passphrase, Hash hash) {
    bool fits = true;
    for (const QChar c : passphrase)
        fits = fits && !c.isSurrogate() && km::cp1252::holds(c.unicode());
    if (fits) return hash(passphrase);
    QString stored = CONVERSION::TextToStored(passphrase);
    SecureBytes h = hash(stored);
    CRY::WipeString(stored);
    return h;
}

SecureBytes passKeyOf(const QString &passphrase) {
    return hashPassphrase(passphrase, [](const QString &t) { return CRY::HashKey(t); });
}

SecureBytes passCheckOf(const QString &passphrase) {
    return hashPassphrase(passphrase, [](const QString &t) { return CRY::HashPass(t); });
}

QString dialogPath() {
    const QString path = db::state().DatabasePath;
    const int slash = std::max(path.lastIndexOf('/'), path.lastIndexOf('\\'));
    return path.mid(slash + 1).toUpper() + QStringLiteral("  ") + path.left(std::max(slash, 0));
}

void sealRowOne(km::RowSet &rows, const QByteArray &wrapped, bool isNew) {
    rows.SetColumn("fEtx", wrapped);
    rows.SetColumn("fSec", 1);
    rows.SetColumn("fSub", 1);
    rows.SetColumn("fT1", km::toQByteArray(CRY::HashKey(state().MasterSecret)));
    // On a new row the noise overwrites the hash: that is how stores have always been written.
    db::WriteNoise(rows, {isNew, true, true, true, true, true, true});
}

} // namespace

State &state() {
    static State s;
    return s;
}

void Wipe() {
    State &s = state();
    CRY::WipeString(s.PassphraseRaw);
    km::wipe(s.PassKey);
    km::wipe(s.PassCheck);
    km::wipe(s.MasterSecret);
}

int AskPassphrase(bool isNew) {
    State &s = state();
    CRY::WipeString(s.PassphraseRaw);
    km::frmPW w;
    w.lblPrompt = LanguageUS::MessageText(isNew ? 99 : 159);
    w.txtPath = dialogPath();
    w.chkPwLength = true;
    w.chkConfirm = isNew;
    w.chkCheckPWquality = isNew;
    w.Form_Load();
    km::ui().showModal(w);
    if (w.DialogCancelled || !w.closeRequested) return ErrCancelled;
    s.PassphraseRaw = w.PassphraseRaw;
    km::wipe(w.PassphraseRaw);
    if (s.PassphraseRaw.size() < MinimumLength) {
        CRY::WipeString(s.PassphraseRaw);
        return ErrTooShort;
    }
    return 0;
}

int GetPassphrase(bool isNew) {
    State &s = state();
    int attempts = 0;
    for (;;) {
        const int err = AskPassphrase(isNew);
        if (err == 0) {
            s.PassKey = passKeyOf(s.PassphraseRaw);
            s.PassCheck = passCheckOf(s.PassphraseRaw);
            CRY::WipeString(s.PassphraseRaw);
            return 0;
        }
        bool stop = err == ErrCancelled;
        if (!stop) {
            const km::Answer a =
                km::ShowMessage(-err, km::Buttons::RetryCancel, km::Answer::Retry, km::Icon::Exclamation);
            stop = a == km::Answer::Cancel;
            if (!stop) {
                ++attempts;
                km::ui().standBy(StandByMs);
                stop = attempts >= 3;
            }
        }
        if (stop) {
            if (!km::ui().mainWindowUp()) {
                if (err == ErrCancelled)
                    km::ShowMessage(98, km::Buttons::OK, km::Answer::OK, km::Icon::Critical);
                throw km::ProgramEnd{1, -err};
            }
            return err;
        }
    }
}

int CreateKeyRows() {
    State &s = state();
    s.MasterSecret = CRY::RandomBytes(MasterSecretLength);
    SecureBytes keyString = CRY::RandomBytes(KeyStringLength);
    CRY::LoadKeyTable(keyString);

    const QByteArray wrapped = CRY::SealString(keyString, s.MasterSecret);
    if (CRY::UnsealString(wrapped, s.MasterSecret) != keyString) {
        CRY::WipeBytes(keyString);
        km::ui().message(QStringLiteral("115: ") + LanguageUS::MessageText(44), km::Buttons::OK,
                         km::Answer::OK, km::Icon::Critical);
        throw km::ProgramEnd{1, 44};
    }
    CRY::WipeBytes(keyString);

    Users::UserRecord &user = Users::state().User;
    user = Users::UserRecord{};
    user.Number = 0;
    user.PassHash = CRY::HashPass(s.PassKey);
    user.SealedMaster = km::toSecureBytes(CRY::SealString(s.MasterSecret, s.PassKey));
    user.RightA = user.RightB = true;
    user.Extra = 0;
    user.Name = QStringLiteral("Admin");

    try {
        km::StoreDb &store = db::Store();
        {
            km::Transaction transaction(store);
            auto rows = store.OpenRowSet(QStringLiteral("tt"), km::Dynaset);
            const auto openRow = [&](const char *criteria) {
                rows->FindFirst(QString::fromLatin1(criteria));
                const bool isNew = rows->NoMatch();
                isNew ? db::AddRow(*rows) : db::EditRow(*rows);
                return isNew;
            };
            sealRowOne(*rows, wrapped, openRow("fSec=1 And fSub=1"));
            rows->Update();

            openRow("fSec=1 And fSub=2");
            rows->SetColumn("fEtx",
                            CRY::SealString(km::toSecureBytes(wrapped), CRY::HashKey(s.MasterSecret)));
            rows->SetColumn("fSec", 1);
            rows->SetColumn("fSub", 2);
            db::WriteNoise(*rows, {true, true, true, true, true, true, true});
            rows->Update();
            rows.reset();
            transaction.Commit();
        }
        db::WriteVersionRow();
    } catch (const km::EngineError &e) {
        km::wipe(s.MasterSecret);
        return e.number();
    }
    km::wipe(s.MasterSecret);

    const int err = Users::WriteUser(user);
    if (err) return err;
    km::wipe(user.SealedMaster);
    // A new store always has a PIN record: the default one.
    Users::ResetPin();
    return 0;
}

int FindUser() {
    State &s = state();
    auto rows = db::Store().OpenRowSet(
        QStringLiteral("SELECT * FROM tt WHERE fSec=2 WITH OWNERACCESS OPTION;"), km::Snapshot);
    if (rows->RecordCount() == 0) {
        km::ShowMessage(96, km::Buttons::OK, km::Answer::OK, km::Icon::Critical);
        throw km::ProgramEnd{1, 96};
    }
    const SecureBytes passHash = CRY::HashPass(s.PassKey);
    for (rows->MoveFirst(); !rows->Eof(); rows->MoveNext()) {
        SecureBytes record = CRY::UnsealString(rows->GetColumn("fEtx").toByteArray(), s.PassKey);
        if (record.empty()) continue;
        QStringList values(7);
        Record_Get::UnpackRecord(values, record);
        // The hash and the sealed master key are byte texts: read as their bytes.
        SecureBytes hash = Record_Get::ReadPackedBytes(record, 1);
        SecureBytes sealedMaster = Record_Get::ReadPackedBytes(record, 2);
        CRY::WipeBytes(record);
        const bool match = hash == passHash;
        km::wipe(hash);
        if (match) {
            Users::UserRecord &user = Users::state().User;
            user.RowId = rows->GetColumn("fPK").toLongLong();
            user.Number = values.at(0).toInt();
            user.PassHash = passHash;
            user.SealedMaster = CRY::UnsealString(km::toQByteArray(sealedMaster), s.PassKey);
            km::wipe(sealedMaster);
            user.RightA = values.at(3) == QLatin1String("True");
            user.RightB = values.at(4) == QLatin1String("True");
            user.Extra = values.at(5).toInt();
            user.Name = values.at(6);
            s.MasterSecret = user.SealedMaster;
            for (QString &slot : values)
                km::wipe(slot);
            return 0;
        }
        km::wipe(sealedMaster);
        for (QString &slot : values)
            km::wipe(slot);
    }
    return ErrWrongPassphrase;
}

int OpenKeyRows() {
    State &s = state();
    db::State &d = db::state();
    try {
        if (!d.StoreDb) d.StoreDb = km::StoreDb::OpenDatabase(d.DatabasePath, true, d.ReadOnly);
    } catch (const km::EngineError &e) {
        fatal(102, e.description());
        return e.number();
    }
    try {
        const int found = FindUser();
        if (found != 0) return found;

        km::StoreDb &store = *d.StoreDb;
        auto rows = store.OpenRowSet(QStringLiteral("tt"), km::Dynaset);
        SecureBytes keyString;
        int state = 0;
        rows->FindFirst(QStringLiteral("fSec=1 and fSub=1"));
        if (!rows->NoMatch()) {
            keyString = CRY::UnsealString(rows->GetColumn("fEtx").toByteArray(), s.MasterSecret);
            if (keyString.empty()) state = 104;
        } else {
            state = 103;
        }
        if (state) {
            auto copy = store.OpenRowSet(QStringLiteral("tt"), km::Dynaset);
            copy->FindFirst(QStringLiteral("fSec=1 And fSub=2"));
            if (copy->NoMatch()) endProgram(105);
            // The second copy's inner text is sealed under MasterSecret, but it is
            // opened with PassKey: for a store written as designed this yields nothing.
            const SecureBytes inner =
                CRY::UnsealString(copy->GetColumn("fEtx").toByteArray(), CRY::HashKey(s.MasterSecret));
            keyString = CRY::UnsealString(km::toQByteArray(inner), s.PassKey);
            if (keyString.empty()) endProgram(106);
            if (d.ReadOnly) {
                // The key string row is put right by the next session that writes.
            } else if (state == 103) {
                db::AddRow(*rows);
                rows->SetColumn("fSec", 1);
                rows->SetColumn("fSub", 1);
            } else {
                db::EditRow(*rows);
            }
            if (!d.ReadOnly) {
                rows->SetColumn("fEtx", CRY::SealString(keyString, s.MasterSecret));
                rows->Update();
            }
        }
        CRY::LoadKeyTable(keyString);
        CRY::WipeBytes(keyString);
        km::wipe(s.MasterSecret);
        km::wipe(Users::state().User.SealedMaster);
    } catch (const km::EngineError &e) {
        km::wipe(s.MasterSecret);
        return e.number();
    }
    return 0;
}

bool VerifyPassphrase(bool keep) {
    State &s = state();
    bool ok = false;
    SecureBytes k;
    if (AskPassphrase(false) == 0 && !s.PassphraseRaw.isEmpty()) {
        k = passKeyOf(s.PassphraseRaw);
        CRY::WipeString(s.PassphraseRaw);
        try {
            auto rows = db::Store().OpenRowSet(
                QStringLiteral("SELECT * FROM tt WHERE fSec=2 And fPK=%1 WITH OWNERACCESS OPTION;")
                    .arg(Users::state().User.RowId),
                km::Snapshot);
            if (rows->RecordCount() > 0) ok = Users::CheckVerifier(rows->GetColumn("fT3").toByteArray(), k);
        } catch (const km::EngineError &) {
            ok = false;
        }
    }
    CRY::WipeString(s.PassphraseRaw);
    if (!ok) {
        km::ShowMessage(85, km::Buttons::OK, km::Answer::OK, km::Icon::Exclamation);
        km::ui().standBy(StandByMs);
        km::wipe(k);
        return false;
    }
    if (keep) s.PassKey = k;
    km::wipe(k);
    return true;
}

bool ChangePassphrase() {
    State &s = state();
    bool changed = false;
    Users::UserRecord &user = Users::state().User;
    if (!VerifyPassphrase(true)) return false;
    if (FindUser() == 0 && !s.MasterSecret.empty()) {
        SecureBytes master = s.MasterSecret;
        if (GetPassphrase(true) == 0) {
            user.SealedMaster = km::toSecureBytes(CRY::SealString(master, s.PassKey));
            user.PassHash = CRY::HashPass(s.PassKey);
            if (Users::WriteUser(user) == 0) {
                km::wipe(user.SealedMaster);
                Users::ResetPin(); // the default PIN of the new passphrase
                changed = true;
            }
        }
        km::wipe(master);
    }
    if (!changed) km::ShowMessage(124, km::Buttons::OK, km::Answer::OK, km::Icon::Information);
    Wipe();
    km::wipe(user.PassHash);
    km::wipe(user.SealedMaster);
    return changed;
}

} // namespace Passphrase
