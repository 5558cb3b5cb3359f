// A store's whole life in a temporary folder, played through the scripted
// person: the settings file redirected, every module's session state reset
// before and after, and helpers that write and read the rows of the key chain
// byte by byte, the way a second, independent program would.
#pragma once

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QMap>
#include <QSet>
#include <QTemporaryDir>

#include "platform/CodePage1252.h"
#include "platform/Registry.h"
#include "store/CATEGORIES.h"
#include "store/CRY.h"
#include "store/Passphrase.h"
#include "store/Startvariables.h"
#include "store/Users.h"
#include "store/db.h"
#include "store/frmPW.h"
#include "support/ScriptedDialogs.h"

namespace km::test {

// One row of tt as it stands in the file.
struct RawRow {
    qint64 pk = 0;
    int sec = 0, sub = 0;
    QByteArray etx, t1, t2, t3;
    qint64 r1 = 0, r2 = 0, r3 = 0, r4 = 0, ae = 0;
    bool operator==(const RawRow &) const = default;
};

inline QMap<qint64, RawRow> rowsOf(km::StoreDb &store, const QString &where = QStringLiteral("fPK>0")) {
    QMap<qint64, RawRow> out;
    auto rows = store.OpenRowSet(QStringLiteral("SELECT * FROM tt WHERE ") + where, km::Snapshot);
    for (; !rows->Eof(); rows->MoveNext()) {
        RawRow r;
        r.pk = rows->GetColumn("fPK").toLongLong();
        r.sec = rows->GetColumn("fSec").toInt();
        r.sub = rows->GetColumn("fSub").toInt();
        r.etx = rows->GetColumn("fEtx").toByteArray();
        r.t1 = rows->GetColumn("fT1").toByteArray();
        r.t2 = rows->GetColumn("fT2").toByteArray();
        r.t3 = rows->GetColumn("fT3").toByteArray();
        r.r1 = rows->GetColumn("fR1").toLongLong();
        r.r2 = rows->GetColumn("fR2").toLongLong();
        r.r3 = rows->GetColumn("fR3").toLongLong();
        r.r4 = rows->GetColumn("fR4").toLongLong();
        r.ae = rows->GetColumn("AE").toLongLong();
        out.insert(r.pk, r);
    }
    return out;
}

// The one row of (section, sub).
inline RawRow rowAt(km::StoreDb &store, int sec, int sub) {
    const auto rows = rowsOf(store, QStringLiteral("fSec=%1 And fSub=%2").arg(sec).arg(sub));
    EXPECT_EQ(rows.size(), 1) << "rows of (" << sec << ", " << sub << ")";
    return rows.isEmpty() ? RawRow{} : rows.first();
}

inline QByteArray bytesOf(const km::SecureBytes &b) {
    return km::toQByteArray(b);
}

// The packed user record, field by field: 0 number (byte), 1 PassHash (short
// text), 2 the sealed MasterSecret (short text), 3 and 4 true (boolean),
// 5 zero (32-bit), 6 the name (short text).
inline QByteArray userRecordBytes(int number, const QByteArray &passHash, const QByteArray &sealedMaster,
                                  const QString &name) {
    const QByteArray nameBytes = km::cp1252::toBytes(name);
    QByteArray r;
    r += QByteArray("\x00\x02", 2) + char(number);
    r += QByteArray("\x01\x0a", 2) + char(passHash.size()) + passHash;
    r += QByteArray("\x02\x0a", 2) + char(sealedMaster.size()) + sealedMaster;
    r += QByteArray("\x03\x01\x01\x04\x01\x01", 6);
    r += QByteArray("\x05\x04\x00\x00\x00\x00", 6);
    r += QByteArray("\x06\x0a", 2) + char(nameBytes.size()) + nameBytes;
    return r;
}

// The passphrase verifier of a user row without its random tail.
inline QByteArray verifierOf(const km::SecureBytes &passKey) {
    return CRY::BlockCipherText(bytesOf(CRY::HashPass(CRY::HashKey(passKey))), passKey, -1, 192, 256);
}

// Adds a user row that opens the store under passphrase and seals master.
// fT2 keeps the column's default: the row has no PIN record yet.
inline void addUserRow(km::StoreDb &store, int number, const QString &passphrase,
                       const km::SecureBytes &master, const QString &name) {
    const km::SecureBytes passKey = CRY::HashKey(passphrase);
    const QByteArray record =
        userRecordBytes(number, bytesOf(CRY::HashPass(passKey)), CRY::SealString(master, passKey), name);
    auto rows = store.OpenRowSet(QStringLiteral("tt"), km::Dynaset);
    rows->AddNew();
    rows->SetColumn("fSec", 2);
    rows->SetColumn("fSub", number);
    rows->SetColumn("fEtx", CRY::SealString(km::toSecureBytes(record), passKey));
    rows->SetColumn("fT3", verifierOf(passKey));
    rows->SetColumn("AE", 1);
    rows->Update();
}

// A store as an independent writer makes it: the two key rows, the version row
// and one user row "Admin" without PIN record. Returns the key string (and
// the MasterSecret through masterOut).
inline km::SecureBytes writeStoreByHand(const QString &path, const QString &passphrase,
                                        km::SecureBytes *masterOut = nullptr) {
    const QString version = QStringLiteral("201");
    km::StoreDb::CreateDatabase(path);
    auto store = km::StoreDb::OpenDatabase(path);
    const km::SecureBytes master = CRY::RandomBytes(43);
    if (masterOut) *masterOut = master;
    const km::SecureBytes keyString = CRY::RandomBytes(270);
    const QByteArray wrapped = CRY::SealString(keyString, master);
    CRY::LoadKeyTable(keyString);
    const QByteArray versionRecord = QByteArray("\x02\x0a", 2) + char(version.size()) + version.toLatin1();
    const QByteArray versionField = CRY::EncryptField(versionRecord);
    CRY::UnloadKeyTable();
    auto rows = store->OpenRowSet(QStringLiteral("tt"), km::Dynaset);
    const auto add = [&](int sub, const QByteArray &etx) {
        rows->AddNew();
        rows->SetColumn("fSec", 1);
        rows->SetColumn("fSub", sub);
        rows->SetColumn("fEtx", etx);
        rows->SetColumn("AE", 1);
        rows->Update();
    };
    add(1, wrapped);
    add(2, CRY::SealString(km::toSecureBytes(wrapped), CRY::HashKey(master)));
    add(3, versionField);
    rows.reset();
    addUserRow(*store, 0, passphrase, master, QStringLiteral("Admin"));
    return keyString;
}

// The person at the passphrase or PIN dialog: types each entry and presses OK
// after it; the dialog's own answer is what showModal returns.
inline std::function<bool(km::frmPW &)> typing(const QStringList &entries) {
    return [entries](km::frmPW &w) {
        for (const QString &e : entries) {
            w.txtInput = e;
            w.txtInput_Change();
            w.cmdOK_Click();
        }
        return w.acceptedResult;
    };
}

class StoreLifeFixture : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        path = dir.filePath(QStringLiteral("Personal.kmd"));
        settingsFile = dir.filePath(QStringLiteral("settings.ini"));
        km::SetSettingsFile(settingsFile);
        resetSession();
    }
    void TearDown() override {
        resetSession();
        km::SetSettingsFile(QString());
    }
    static void resetSession() {
        db::state() = db::State{};
        CRY::UnloadKeyTable();
        Passphrase::Wipe();
        Passphrase::state() = {};
        Users::Wipe();
        Startvariables::state() = {};
        CATEGORIES::state() = {};
    }

    // The next passphrase dialog: the person types the passphrase (twice for a new one).
    void type(const QString &passphrase) { ui.onModal<km::frmPW>(typing({passphrase})); }
    void typeNew(const QString &passphrase) { ui.onModal<km::frmPW>(typing({passphrase, passphrase})); }

    int create(const QString &passphrase) {
        typeNew(passphrase);
        return db::CreateStore(path);
    }
    int open(const QString &passphrase) {
        type(passphrase);
        db::state().DatabasePath = path;
        return db::OpenStore();
    }
    // A store created under passphrase and closed again.
    void createClosed(const QString &passphrase) {
        ASSERT_EQ(create(passphrase), 0);
        db::CloseStore();
        ui.shown.clear();
        ui.modalsShown = 0;
    }
    // The store file held by the test alone, for changes behind the session's back.
    std::unique_ptr<km::StoreDb> openRaw() { return km::StoreDb::OpenDatabase(path); }
    // The rows as the file holds them, read while no session has it open.
    QMap<qint64, RawRow> storedRows() { return rowsOf(*openRaw()); }
    QByteArray fileBytes() const {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    // The session's MasterSecret, brought back by FindUser as ChangePassphrase does.
    km::SecureBytes masterSecretOf(const QString &passphrase) {
        Passphrase::state().PassKey = CRY::HashKey(passphrase);
        EXPECT_EQ(Passphrase::FindUser(), 0);
        km::SecureBytes master = Passphrase::state().MasterSecret;
        Passphrase::Wipe();
        return master;
    }

    QTemporaryDir dir;
    QString path;
    QString settingsFile;
    ScriptedDialogs ui;
};

} // namespace km::test
