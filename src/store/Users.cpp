#include "store/Users.h"

#include <cmath>

#include "platform/CodePage1252.h"
#include "platform/Random.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"
#include "store/CRY.h"
#include "store/Passphrase.h"
#include "store/Record_Get.h"
#include "store/Record_Put.h"
#include "store/db.h"
#include "store/frmPW.h"

namespace Users {

using namespace Record_Put;

State &state() {
    static State s;
    return s;
}

void Wipe() {
    State &s = state();
    km::wipe(s.User.PassHash);
    km::wipe(s.User.SealedMaster);
    km::wipe(s.Pin);
    s.User = UserRecord{};
    s.PinKind = 0;
    s.PinSections = 0;
    s.PinEveryAccess = false;
    s.UnlockedSections = 0;
}

QByteArray MakeVerifier(const SecureBytes &passKey) {
    const SecureBytes text = CRY::HashPass(CRY::HashKey(passKey));
    QByteArray v = CRY::BlockCipherText(km::toQByteArray(text), passKey, -1, 192, 256);
    v.append(km::toQByteArray(CRY::RandomBytes(static_cast<int>(km::RndInt(6)))));
    return v;
}

bool CheckVerifier(const QByteArray &fT3, const SecureBytes &passKey) {
    const QByteArray t = CRY::BlockCipherText(fT3, passKey, 0, 192, 256);
    const SecureBytes expected = CRY::HashPass(CRY::HashKey(passKey));
    return !t.isEmpty() && t == km::toQByteArray(expected);
}

int WriteUser(UserRecord &user) {
    const SecureBytes &passKey = Passphrase::state().PassKey;
    QByteArray record =
        PackRecord({{0, tByte}, {1, tText}, {2, tText}, {3, tBoolean}, {4, tBoolean}, {5, tLong}, {6, tText}},
                   {user.Number, km::toQByteArray(user.PassHash), km::toQByteArray(user.SealedMaster),
                    user.RightA, user.RightB, user.Extra, user.Name});
    const QByteArray sealed = CRY::SealString(km::toSecureBytes(record), passKey);
    km::wipe(record);
    const QByteArray verifier = MakeVerifier(passKey);
    try {
        km::StoreDb &store = db::Store();
        km::Transaction transaction(store);
        auto rows = store.OpenRowSet(QStringLiteral("tt"), km::Dynaset);
        rows->FindFirst(QStringLiteral("fSec=2 And fSub=%1").arg(user.Number));
        if (rows->NoMatch()) {
            db::AddRow(*rows);
            rows->SetColumn("fSec", 2);
            rows->SetColumn("fSub", user.Number);
            user.RowId = rows->GetColumn("fPK").toLongLong();
        } else {
            user.RowId = rows->GetColumn("fPK").toLongLong();
            db::EditRow(*rows);
        }
        rows->SetColumn("fEtx", sealed);
        rows->SetColumn("fT3", verifier);
        db::WriteNoise(*rows, {true, true, false, true, true, true, true});
        rows->Update();
        rows.reset();
        transaction.Commit();
    } catch (const km::EngineError &e) {
        return e.number();
    }
    return 0;
}

void WritePin(int kind, const QString &pin, qint32 sections, bool everyAccess) {
    State &s = state();
    QByteArray packed =
        PackRecord({{0, tByte}, {1, tText}, {2, tLong}, {3, tBoolean}}, {kind, pin, sections, everyAccess});
    km::StoreDb &store = db::Store();
    auto rows = store.OpenRowSet(QStringLiteral("tt"), km::Dynaset);
    rows->FindFirst(QStringLiteral("fPK=%1").arg(s.User.RowId));
    if (rows->NoMatch()) {
        km::wipe(packed);
        km::ShowMessage(109, km::Buttons::OK, km::Answer::OK, km::Icon::Critical);
        throw km::ProgramEnd{1, 109};
    }
    db::EditRow(*rows);
    rows->SetColumn("fT2", CRY::EncryptField(packed));
    rows->Update();
    km::wipe(packed);
    s.PinKind = kind;
    if (&s.Pin != &pin) s.Pin = pin;
    s.PinSections = sections;
    s.PinEveryAccess = everyAccess;
}

QString DefaultPin(const SecureBytes &passCheck) {
    const SecureBytes h = CRY::HashPass(CRY::HashPass(passCheck));
    int p = 3;
    double r = 0;
    for (int i = 1; i <= 4; ++i) {
        const int b = h[static_cast<std::size_t>(p - 1)] / 2;
        r = std::nearbyint(r + std::pow(static_cast<double>(b), i));
        p = ((b % 5) + p) % 20 + 1;
    }
    return QString::number(static_cast<qint64>(r));
}

void ResetPin() {
    Passphrase::State &ps = Passphrase::state();
    if (ps.PassCheck.empty()) {
        if (Passphrase::AskPassphrase(false) != 0) return;
        ps.PassCheck = CRY::HashPass(ps.PassphraseRaw);
        CRY::WipeString(ps.PassphraseRaw);
    }
    const QString pin = DefaultPin(ps.PassCheck);
    km::wipe(ps.PassCheck);
    WritePin(0, pin, 0, false);
}

void LoadPin() {
    State &s = state();
    auto rows = db::Store().OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE fPK=%1").arg(s.User.RowId),
                                       km::Snapshot);
    QStringList values = {QString(), QString(), QString(), QString()};
    if (rows->RecordCount() > 0) {
        const QByteArray t2 = rows->GetColumn("fT2").toByteArray();
        if (!t2.isEmpty()) Record_Get::UnpackRecord(values, t2, true);
    }
    rows.reset();
    if (values.at(1).isEmpty()) {
        ResetPin();
    } else {
        s.PinKind = values.at(0).toInt();
        s.Pin = values.at(1);
        s.PinSections = values.at(2).toInt();
        s.PinEveryAccess = values.at(3) == QLatin1String("True");
    }
    for (QString &slot : values)
        km::wipe(slot);
}

int RequestPin() {
    km::frmPW w;
    w.Caption = QStringLiteral("Kestrelmondarin");
    w.lblPrompt = LanguageUS::MessageText(126);
    w.chkPwLength = false;
    w.chkConfirm = false;
    w.chkCheckPWquality = false;
    w.chkShowClearCaption = QStringLiteral("Show PIN in clear");
    w.Form_Load();
    km::ui().showModal(w);
    if (w.DialogCancelled || !w.closeRequested) return 3;
    const bool right = w.PassphraseRaw == state().Pin;
    km::wipe(w.PassphraseRaw);
    if (right) return 1;
    km::ShowMessage(125, km::Buttons::OK, km::Answer::OK, km::Icon::Exclamation);
    return 2;
}

bool PinAllows(int sectionBit) {
    State &s = state();
    const qint32 bit = qint32(1) << sectionBit;
    if (!(s.PinSections & bit)) return true;
    if (!s.PinEveryAccess && (s.UnlockedSections & bit)) return true;
    if (RequestPin() != 1) return false;
    s.UnlockedSections |= bit;
    return true;
}

} // namespace Users
