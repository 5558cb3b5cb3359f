// The key chain from the typed passphrase to the key table: creating a store,
// logging in (right, wrong, two users), the passphrase rules and retries, the
// damaged key rows, the version test and the change of passphrase.
#include <gtest/gtest.h>

#include "store/LoginTestSupport.h"
#include "store/Record_Get.h"
#include "store/Record_Put.h"
#include "store/db.h"
#include "ui/LanguageUS.h"

using km::test::bytesOf;
using km::test::rowAt;
using km::test::rowsOf;
using km::test::typing;

namespace {

const QString Pass = QStringLiteral("Kestrel 2024 nest");
const QString Other = QStringLiteral("Harrier-77 moor");
const QString WrongPass = QStringLiteral("kestrel 2024 nest");
const QString WrongPassword = QStringLiteral("Password not correct!");

QString msg(int row) {
    return LanguageUS::MessageText(row);
}

class LoginTest : public km::test::StoreLifeFixture {
protected:
    // A few memos, as a section would write them.
    void addMemos(const QStringList &titles) {
        for (const QString &t : titles) {
            db::StandardWrite w(db::Store(), 0, 14);
            w.setRecord(Record_Put::PackRecord({{0, Record_Put::tText}}, {t}));
            w.setText("fT1", t);
            w.Commit({false, true, true, true, true, true, true});
        }
    }
    QStringList memoTitles() {
        QStringList out;
        for (const auto &r : rowsOf(db::Store(), "fSec=14"))
            out << CRY::DecryptField(r.t1);
        return out;
    }
    void expectSessionHoldsNoPassphrase() {
        const Passphrase::State &p = Passphrase::state();
        EXPECT_TRUE(p.PassphraseRaw.isEmpty());
        EXPECT_TRUE(p.PassKey.empty());
        EXPECT_TRUE(p.PassCheck.empty());
        EXPECT_TRUE(p.MasterSecret.empty());
        EXPECT_TRUE(Users::state().User.SealedMaster.empty());
    }
};

// ---- Creating and reading the key chain ----

TEST_F(LoginTest, CreateStoreWritesTheKeyChainAsTheRowsDescribeIt) {
    ASSERT_EQ(create(Pass), 0);
    EXPECT_EQ(ui.modalsShown, 1) << "one dialog, the passphrase entered twice";
    EXPECT_TRUE(ui.shown.isEmpty()) << ui.shown.join('|').toStdString();
    EXPECT_TRUE(db::state().DbOpen);
    EXPECT_TRUE(db::state().NewStore);
    EXPECT_EQ(db::state().LastUser, "Admin");
    expectSessionHoldsNoPassphrase();
    const km::SecureBytes sessionTable = CRY::state().KeyTable;
    ASSERT_EQ(sessionTable.size(), 270u);
    db::CloseStore();

    // Read the file back knowing nothing but the passphrase.
    auto store = openRaw();
    const km::SecureBytes passKey = CRY::HashKey(Pass);
    const auto user = rowAt(*store, 2, 0);
    const QByteArray record = bytesOf(CRY::UnsealString(user.etx, passKey));
    ASSERT_FALSE(record.isEmpty());
    const QByteArray passHash = bytesOf(CRY::HashPass(passKey));
    // The sealed MasterSecret is the one part drawn at random; take it from its place.
    const int sealedAt = 3 + 3 + passHash.size() + 3;
    ASSERT_GT(record.size(), sealedAt);
    const QByteArray sealedMaster = record.mid(sealedAt, static_cast<uchar>(record.at(sealedAt - 1)));
    EXPECT_EQ(record, km::test::userRecordBytes(0, passHash, sealedMaster, "Admin"));
    const km::SecureBytes master = CRY::UnsealString(sealedMaster, passKey);
    ASSERT_EQ(master.size(), 43u);

    const auto one = rowAt(*store, 1, 1);
    const auto two = rowAt(*store, 1, 2);
    EXPECT_EQ(CRY::UnsealString(one.etx, master), sessionTable);
    EXPECT_EQ(bytesOf(CRY::UnsealString(two.etx, CRY::HashKey(master))), one.etx);
    EXPECT_EQ(one.ae, 1);
    EXPECT_EQ(two.ae, 1);
    for (const QByteArray &noise : {one.t1, one.t2, one.t3, two.t1, two.t2, two.t3})
        EXPECT_TRUE(noise.size() == 8 || noise.size() == 16 || noise.size() == 24) << noise.size();

    // The verifier: one 24-byte block and 0 to 5 random bytes.
    EXPECT_GE(user.t3.size(), 24);
    EXPECT_LE(user.t3.size(), 29);
    EXPECT_EQ(CRY::BlockCipherText(user.t3, passKey, 0, 192, 256),
              bytesOf(CRY::HashPass(CRY::HashKey(passKey))));

    // Under the key table: the version row and the default PIN record.
    CRY::LoadKeyTable(sessionTable);
    EXPECT_EQ(bytesOf(CRY::DecryptFieldBytes(rowAt(*store, 1, 3).etx)), QByteArray("\x02\x0a\x03"
                                                                                   "201"));
    const QByteArray pin = Users::DefaultPin(CRY::HashPass(Pass)).toLatin1();
    EXPECT_EQ(bytesOf(CRY::DecryptFieldBytes(user.t2)),
              QByteArray("\x00\x02\x00\x01\x0a", 5) + char(pin.size()) + pin +
                  QByteArray("\x02\x04\x00\x00\x00\x00\x03\x01\x00", 9));
}

TEST_F(LoginTest, AStoreWrittenByAnIndependentWriterOpensAndGetsItsPinRecord) {
    const km::SecureBytes keyString = km::test::writeStoreByHand(path, Pass);
    ASSERT_EQ(open(Pass), 0);
    EXPECT_EQ(CRY::state().KeyTable, keyString);
    EXPECT_EQ(ui.modalsShown, 1) << "the PIN record is made without asking again";
    EXPECT_EQ(Users::state().User.Name, "Admin");
    EXPECT_EQ(Users::state().Pin, Users::DefaultPin(CRY::HashPass(Pass)));
    EXPECT_EQ(Users::state().PinKind, 0);
    expectSessionHoldsNoPassphrase();
    QStringList pinRecord(4);
    Record_Get::UnpackRecord(pinRecord, rowAt(db::Store(), 2, 0).t2, true);
    EXPECT_EQ(pinRecord, QStringList({"0", Users::state().Pin, "0", "False"}));
}

TEST_F(LoginTest, TheRightPassphraseOpensTheSameKeyTableAfterTwoWrongOnes) {
    ASSERT_EQ(create(Pass), 0);
    const km::SecureBytes table = CRY::state().KeyTable;
    db::CloseStore();
    ui.shown.clear();

    type(WrongPass);
    type(Other);
    ASSERT_EQ(open(Pass), 0);
    EXPECT_EQ(CRY::state().KeyTable, table);
    EXPECT_EQ(ui.shown, QStringList({WrongPassword, WrongPassword}));
    EXPECT_EQ(ui.standBys, 2);
    EXPECT_TRUE(ui.statusTexts.contains("Checking Database..."));
    EXPECT_TRUE(ui.statusTexts.contains("Database Check OK. Opening..."));
    EXPECT_EQ(ui.statusTexts.last(), QString());
    EXPECT_TRUE(db::state().DbOpen);
    EXPECT_EQ(km::RegRead("MostRecentFiles\\1"), path);
    EXPECT_EQ(km::RegRead("User\\LastUser"), "Admin");
    expectSessionHoldsNoPassphrase();
}

TEST_F(LoginTest, ThreeWrongPassphrasesEndTheProgramWithoutAMainWindow) {
    createClosed(Pass);
    const auto before = storedRows();
    type(WrongPass);
    type(Other);
    type(WrongPass);
    db::state().DatabasePath = path;
    try {
        db::OpenStore();
        FAIL() << "the program goes on";
    } catch (const km::ProgramEnd &) {
    }
    EXPECT_EQ(ui.modalsShown, 3);
    EXPECT_EQ(ui.shown, QStringList({WrongPassword, WrongPassword, LanguageUS::MessageText(97)}))
        << "the third failure says the opening was unsuccessful, then ends";
    EXPECT_FALSE(CRY::KeyTableLoaded());
    db::ExitProgram();
    EXPECT_EQ(storedRows(), before);
}

TEST_F(LoginTest, CancelAfterAWrongPassphraseEndsWithMessage95WithoutAMainWindow) {
    createClosed(Pass);
    type(WrongPass);
    ui.answer(km::Answer::Cancel);
    db::state().DatabasePath = path;
    int message = 0;
    try {
        db::OpenStore();
        FAIL() << "the program goes on";
    } catch (const km::ProgramEnd &end) {
        message = end.message;
    }
    EXPECT_EQ(message, 95);
    EXPECT_EQ(ui.shown, QStringList({WrongPassword, LanguageUS::MessageText(95)}));
    db::ExitProgram();
}

TEST_F(LoginTest, WithTheMainWindowUpFailedOpensReturnAndTheNextOpenStartsAfresh) {
    createClosed(Pass);
    ui.mainUp = true;
    type(WrongPass);
    type(WrongPass);
    EXPECT_EQ(open(WrongPass), Passphrase::ErrWrongPassphrase);
    EXPECT_FALSE(CRY::KeyTableLoaded());
    EXPECT_FALSE(db::state().StoreDb);

    // A later open of the store has its three attempts again.
    ui.shown.clear();
    type(WrongPass);
    EXPECT_EQ(open(Pass), 0);
    EXPECT_EQ(ui.shown, QStringList({WrongPassword}));
}

TEST_F(LoginTest, TwoUsersOpenTheSameKeyTableEachWithItsOwnPassphrase) {
    ASSERT_EQ(create(Pass), 0);
    const km::SecureBytes table = CRY::state().KeyTable;
    km::test::addUserRow(db::Store(), 1, Other, masterSecretOf(Pass), "Second");
    db::CloseStore();

    ASSERT_EQ(open(Other), 0);
    EXPECT_EQ(CRY::state().KeyTable, table);
    EXPECT_EQ(Users::state().User.Name, "Second");
    EXPECT_EQ(Users::state().User.Number, 1);
    EXPECT_EQ(Users::state().Pin, Users::DefaultPin(CRY::HashPass(Other)));
    db::CloseStore();

    ASSERT_EQ(open(Pass), 0);
    EXPECT_EQ(CRY::state().KeyTable, table);
    EXPECT_EQ(Users::state().User.Name, "Admin");
    EXPECT_EQ(Users::state().User.Number, 0);
    EXPECT_EQ(ui.modalsShown, 3);
    EXPECT_TRUE(ui.shown.isEmpty());
}

// ---- The passphrase rules ----

TEST_F(LoginTest, TheDialogAsksForANewPassphraseOrTheStoresOne) {
    db::state().DatabasePath = "/home/someone/Documents/Personal.kmd";
    for (const bool isNew : {true, false}) {
        SCOPED_TRACE(isNew);
        km::frmPW seen;
        ui.onModal<km::frmPW>([&](km::frmPW &w) {
            seen.lblPrompt = w.lblPrompt;
            seen.txtPath = w.txtPath;
            seen.chkPwLength = w.chkPwLength;
            seen.chkConfirm = w.chkConfirm;
            seen.chkCheckPWquality = w.chkCheckPWquality;
            return typing(isNew ? QStringList{Pass, Pass} : QStringList{Pass})(w);
        });
        EXPECT_EQ(Passphrase::AskPassphrase(isNew), 0);
        EXPECT_EQ(Passphrase::state().PassphraseRaw, Pass);
        EXPECT_EQ(seen.lblPrompt, msg(isNew ? 99 : 159));
        EXPECT_EQ(seen.txtPath, "PERSONAL.KMD  /home/someone/Documents");
        EXPECT_TRUE(seen.chkPwLength);
        EXPECT_EQ(seen.chkConfirm, isNew);
        EXPECT_EQ(seen.chkCheckPWquality, isNew);
        Passphrase::Wipe();
    }
}

TEST_F(LoginTest, SevenCharactersAreRefusedAndEightAccepted) {
    // The dialog itself keeps OK disabled below 8 characters ...
    ui.onModal<km::frmPW>([](km::frmPW &w) {
        w.txtInput = "Seven77";
        w.txtInput_Change();
        EXPECT_FALSE(w.cmdOKEnabled);
        w.txtInput = "Eight888";
        w.txtInput_Change();
        EXPECT_TRUE(w.cmdOKEnabled);
        w.cmdOK_Click();
        return true;
    });
    EXPECT_EQ(Passphrase::GetPassphrase(false), 0);
    EXPECT_EQ(Passphrase::state().PassKey, CRY::HashKey(QStringLiteral("Eight888")));
    Passphrase::Wipe();

    // ... and a short one that reaches the key chain all the same meets message 40.
    ui.onModal<km::frmPW>([](km::frmPW &w) {
        w.chkPwLength = false;
        return typing({"Seven77"})(w);
    });
    type("Eight888");
    EXPECT_EQ(Passphrase::GetPassphrase(false), 0);
    EXPECT_EQ(ui.shown, QStringList({QString("Passphrase too short (minimum 8 char)!")}));
    EXPECT_EQ(ui.standBys, 1);
    EXPECT_EQ(Passphrase::state().PassKey, CRY::HashKey(QStringLiteral("Eight888")));
    EXPECT_EQ(Passphrase::state().PassCheck, CRY::HashPass(QStringLiteral("Eight888")));
    EXPECT_TRUE(Passphrase::state().PassphraseRaw.isEmpty());
}

TEST_F(LoginTest, RetriesStopAtTheThirdAttemptOrAtCancel) {
    const auto shortEntry = [](km::frmPW &w) {
        w.chkPwLength = false;
        return typing({"short"})(w);
    };
    struct Case {
        const char *name;
        std::vector<km::Answer> answers; // to the messages after each failure
        int dialogs;
    };
    const Case cases[] = {
        {"retry until the third attempt", {km::Answer::Retry, km::Answer::Retry, km::Answer::Retry}, 3},
        {"cancel at the first message", {km::Answer::Cancel}, 1},
        {"cancel at the second message", {km::Answer::Retry, km::Answer::Cancel}, 2},
    };
    ui.mainUp = true;
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        ui.modalsShown = 0;
        ui.shown.clear();
        ui.modal.clear();
        for (int i = 0; i < 4; ++i)
            ui.onModal<km::frmPW>(shortEntry);
        for (km::Answer a : c.answers)
            ui.answer(a);
        EXPECT_EQ(Passphrase::GetPassphrase(false), Passphrase::ErrTooShort);
        EXPECT_EQ(ui.modalsShown, c.dialogs);
        EXPECT_EQ(ui.shown, QStringList(c.dialogs, QString("Passphrase too short (minimum 8 char)!")));
        EXPECT_TRUE(Passphrase::state().PassKey.empty());
    }
}

TEST_F(LoginTest, CancelEndsTheProgramWithMessage98UnlessTheMainWindowIsUp) {
    const auto cancel = [](km::frmPW &w) {
        w.cmdCancel_Click();
        return false;
    };
    ui.onModal<km::frmPW>(cancel);
    EXPECT_THROW(Passphrase::GetPassphrase(false), km::ProgramEnd);
    EXPECT_EQ(ui.shown, QStringList({QString("Passphrase input aborted. Program will be closed.")}));

    ui.shown.clear();
    ui.mainUp = true;
    ui.onModal<km::frmPW>(cancel);
    EXPECT_EQ(Passphrase::GetPassphrase(false), Passphrase::ErrCancelled);
    EXPECT_TRUE(ui.shown.isEmpty());
    EXPECT_EQ(ui.modalsShown, 2) << "a cancel is never retried";
}

// ---- Damaged key rows, missing users, versions ----

TEST_F(LoginTest, DamagedKeyRowsMissingUsersAndNewerVersionsEndTheProgramLeavingTheFile) {
    struct Case {
        const char *name;
        std::function<void(km::StoreDb &)> damage;
        QString message;
    };
    const Case cases[] = {
        {"row (1,1) deleted, (1,2) present",
         [](km::StoreDb &s) { s.Execute("DELETE * FROM tt WHERE fSec=1 And fSub=1;"); },
         QString("Fatal Error #106")},
        {"row (1,1) no longer unseals",
         [](km::StoreDb &s) {
             auto rows = s.OpenRowSet("tt");
             rows->FindFirst("fSec=1 And fSub=1");
             rows->Edit();
             rows->SetColumn("fEtx", CRY::SealString(CRY::RandomBytes(270), CRY::RandomBytes(43)));
             rows->Update();
         },
         QString("Fatal Error #106")},
        {"both key rows deleted",
         [](km::StoreDb &s) { s.Execute("DELETE * FROM tt WHERE fSec=1 And fSub<3;"); },
         QString("Fatal Error #105")},
        {"no user rows", [](km::StoreDb &s) { s.Execute("DELETE * FROM tt WHERE fSec=2;"); }, msg(96)},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        resetSession();
        QFile::remove(path);
        createClosed(Pass);
        c.damage(*openRaw());
        const auto before = storedRows();
        try {
            open(Pass);
            ADD_FAILURE() << "the program goes on";
        } catch (const km::ProgramEnd &) {
        }
        ASSERT_FALSE(ui.shown.isEmpty());
        EXPECT_EQ(ui.shown.last(), c.message);
        EXPECT_FALSE(CRY::KeyTableLoaded());
        db::ExitProgram();
        EXPECT_EQ(storedRows(), before);
    }
}

TEST_F(LoginTest, ASecondCopySealedAsTheUnlockingReadsItHealsTheFirstRow) {
    // No store written by this program has such a second copy (its inner text
    // is sealed under MasterSecret); made by hand, it shows the first row healed.
    km::SecureBytes master;
    const km::SecureBytes keyString = km::test::writeStoreByHand(path, Pass, &master);
    {
        auto store = openRaw();
        auto rows = store->OpenRowSet("tt");
        rows->FindFirst("fSec=1 And fSub=2");
        rows->Edit();
        const QByteArray inner = CRY::SealString(keyString, CRY::HashKey(Pass));
        rows->SetColumn("fEtx", CRY::SealString(km::toSecureBytes(inner), CRY::HashKey(master)));
        rows->Update();
    }
    struct Case {
        const char *name;
        const char *damage;
        qint64 ae;
    };
    const Case cases[] = {
        {"first row missing", "DELETE * FROM tt WHERE fSec=1 And fSub=1;", 1},
        {"first row unreadable", "UPDATE tt SET fEtx=fT3, AE=1 WHERE fSec=1 And fSub=1;", 3},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        openRaw()->Execute(c.damage);
        ASSERT_EQ(open(Pass), 0);
        EXPECT_EQ(CRY::state().KeyTable, keyString);
        const auto one = rowAt(db::Store(), 1, 1);
        EXPECT_EQ(CRY::UnsealString(one.etx, master), keyString);
        EXPECT_EQ(one.ae, c.ae);
        db::CloseStore();
    }
    EXPECT_TRUE(ui.shown.isEmpty());
}

TEST_F(LoginTest, AStoreOfANewerVersionIsRefusedAndOneWithoutVersionGetsIt) {
    ASSERT_EQ(create(Pass), 0);
    {
        db::StandardWrite w(db::Store(), "fSec=1 And fSub=3", 1);
        w.setRecord(Record_Put::PackRecord({{2, Record_Put::tText}}, {{}, {}, "202"}));
        w.Commit();
    }
    db::CloseStore();
    ui.shown.clear();
    const auto before = storedRows();
    EXPECT_THROW(open(Pass), km::ProgramEnd);
    EXPECT_EQ(ui.shown, QStringList({msg(94)}));
    EXPECT_FALSE(CRY::KeyTableLoaded());
    db::ExitProgram();
    EXPECT_EQ(storedRows(), before);

    openRaw()->Execute("DELETE * FROM tt WHERE fSec=1 And fSub=3;");
    ASSERT_EQ(open(Pass), 0);
    const auto version = rowAt(db::Store(), 1, 3);
    EXPECT_EQ(bytesOf(CRY::DecryptFieldBytes(version.etx)), QByteArray("\x02\x0a\x03"
                                                                       "201"));
    EXPECT_EQ(db::ReadStoreVersion(), 201);
}

// ---- Verifying and changing the passphrase in a session ----

TEST_F(LoginTest, TheVerifierIgnoresItsRandomTail) {
    const km::SecureBytes passKey = CRY::HashKey(Pass);
    QSet<int> tails;
    for (int i = 0; i < 120; ++i) {
        const QByteArray v = Users::MakeVerifier(passKey);
        tails.insert(static_cast<int>(v.size()) - 24);
    }
    EXPECT_EQ(tails, QSet<int>({0, 1, 2, 3, 4, 5}));

    ASSERT_EQ(create(Pass), 0);
    ui.mainUp = true;
    for (int extra = 0; extra <= 5; ++extra) {
        SCOPED_TRACE(extra);
        {
            auto rows = db::Store().OpenRowSet("tt");
            rows->FindFirst("fSec=2 And fSub=0");
            rows->Edit();
            rows->SetColumn("fT3", km::test::verifierOf(passKey) + bytesOf(CRY::RandomBytes(extra)));
            rows->Update();
        }
        ui.shown.clear();
        type(Pass);
        EXPECT_TRUE(Passphrase::VerifyPassphrase(false));
        EXPECT_TRUE(ui.shown.isEmpty());
        EXPECT_TRUE(Passphrase::state().PassKey.empty()) << "kept only when asked";
        type(WrongPass);
        EXPECT_FALSE(Passphrase::VerifyPassphrase(true));
        EXPECT_EQ(ui.shown, QStringList({WrongPassword}));
        EXPECT_TRUE(Passphrase::state().PassKey.empty());
    }
    type(Pass);
    EXPECT_TRUE(Passphrase::VerifyPassphrase(true));
    EXPECT_EQ(Passphrase::state().PassKey, passKey);
    EXPECT_TRUE(Passphrase::state().PassphraseRaw.isEmpty());
}

TEST_F(LoginTest, ChangingThePassphraseRewritesOnlyTheUserRowAndResetsThePin) {
    ASSERT_EQ(create(Pass), 0);
    addMemos({"Dentist", "Garage code", "Birthday list"});
    Users::WritePin(1, "4711", 0b101, true);
    const auto before = rowsOf(db::Store());
    ui.mainUp = true;

    type(Pass);
    typeNew(Other);
    EXPECT_TRUE(Passphrase::ChangePassphrase());
    EXPECT_TRUE(ui.shown.isEmpty()) << ui.shown.join('|').toStdString();
    const auto after = rowsOf(db::Store());
    ASSERT_EQ(after.keys(), before.keys());
    for (qint64 pk : before.keys()) {
        const auto &b = before[pk];
        if (b.sec == 2) {
            EXPECT_NE(after[pk].etx, b.etx);
            EXPECT_NE(after[pk].t3, b.t3);
        } else {
            EXPECT_EQ(after[pk], b) << "row " << pk << " of section " << b.sec;
        }
    }
    EXPECT_EQ(Users::state().PinKind, 0);
    EXPECT_EQ(Users::state().Pin, Users::DefaultPin(CRY::HashPass(Other)));
    EXPECT_EQ(Users::state().PinSections, 0);
    expectSessionHoldsNoPassphrase();
    EXPECT_TRUE(Users::state().User.PassHash.empty());
    db::CloseStore();

    ui.shown.clear();
    type(Pass);
    type(Pass);
    EXPECT_EQ(open(Pass), Passphrase::ErrWrongPassphrase);
    EXPECT_EQ(ui.shown, QStringList({WrongPassword, WrongPassword}));

    ASSERT_EQ(open(Other), 0);
    EXPECT_EQ(memoTitles(), QStringList({"Dentist", "Garage code", "Birthday list"}));
    EXPECT_EQ(Users::state().Pin, Users::DefaultPin(CRY::HashPass(Other)));
}

TEST_F(LoginTest, AFailedChangeOfPassphraseLeavesEverything) {
    ASSERT_EQ(create(Pass), 0);
    ui.mainUp = true;
    const auto before = rowsOf(db::Store());

    // The old passphrase is not proven: "Password not correct!" and nothing more.
    type(WrongPass);
    EXPECT_FALSE(Passphrase::ChangePassphrase());
    EXPECT_EQ(ui.shown, QStringList({WrongPassword}));
    EXPECT_EQ(ui.modalsShown, 2);

    // The new one is not given: "Passphrase left unchanged.".
    ui.shown.clear();
    type(Pass);
    ui.onModal<km::frmPW>([](km::frmPW &w) {
        w.cmdCancel_Click();
        return false;
    });
    EXPECT_FALSE(Passphrase::ChangePassphrase());
    EXPECT_EQ(ui.shown, QStringList({QString("Passphrase left unchanged.")}));
    EXPECT_EQ(rowsOf(db::Store()), before);
    expectSessionHoldsNoPassphrase();
    db::CloseStore();
    EXPECT_EQ(open(Pass), 0);
}

} // namespace
