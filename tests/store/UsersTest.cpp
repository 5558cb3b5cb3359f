// User rows and section PINs: the PIN record in fT2, the default PIN, asking
// for the PIN and the section switch's test.
#include <gtest/gtest.h>

#include "ui/LanguageUS.h"
#include "store/LoginTestSupport.h"
#include "store/Record_Get.h"

using km::test::rowAt;
using km::test::typing;

namespace {

const QString Pass = QStringLiteral("Kestrel 2024 nest");

QString msg(int row) {
    return LanguageUS::MessageText(row);
}

class UsersTest : public km::test::StoreLifeFixture {
protected:
    void SetUp() override {
        StoreLifeFixture::SetUp();
        ASSERT_EQ(create(Pass), 0);
        ui.modalsShown = 0;
    }
    QStringList storedPin() {
        QStringList slots(4);
        Record_Get::UnpackRecord(slots, rowAt(db::Store(), 2, 0).t2, true);
        return slots;
    }
    void setT2(const QByteArray &value) {
        auto rows = db::Store().OpenRowSet("tt");
        rows->FindFirst("fSec=2 And fSub=0");
        rows->Edit();
        rows->SetColumn("fT2", value);
        rows->Update();
    }
    void typePin(const QString &pin) { ui.onModal<km::frmPW>(typing({pin})); }
    void cancelPin() {
        ui.onModal<km::frmPW>([](km::frmPW &w) {
            w.cmdCancel_Click();
            return false;
        });
    }
    const QString defaultPin = Users::DefaultPin(CRY::HashPass(Pass));
};

TEST_F(UsersTest, ANewStoreHoldsTheDefaultPin) {
    EXPECT_EQ(storedPin(), QStringList({"0", defaultPin, "0", "False"}));
    EXPECT_EQ(Users::state().PinKind, 0);
    EXPECT_EQ(Users::state().Pin, defaultPin);
    EXPECT_EQ(rowAt(db::Store(), 2, 0).ae, 3) << "added, then its PIN written";
}

TEST_F(UsersTest, TheDefaultPinIsANumberMadeFromThePassphrase) {
    QSet<QString> pins;
    for (const char *p :
         {"Kestrel 2024 nest", "Kestrel 2024 nesT", "12345678", "\xe4\xf6\xfc passphrase 1"}) {
        const QString pin = Users::DefaultPin(CRY::HashPass(QString::fromLatin1(p)));
        EXPECT_FALSE(pin.isEmpty());
        bool number = false;
        pin.toLongLong(&number);
        EXPECT_TRUE(number) << pin.toStdString();
        EXPECT_EQ(Users::DefaultPin(CRY::HashPass(QString::fromLatin1(p))), pin);
        pins.insert(pin);
    }
    EXPECT_EQ(pins.size(), 4) << "the default PIN changes with the passphrase";

    // Four rounds over the double hash: character 3 first, each next place
    // found from the byte just read.
    const km::SecureBytes h = CRY::HashPass(CRY::HashPass(CRY::HashPass(Pass)));
    long long r = 0;
    int p = 3;
    for (int i = 1; i <= 4; ++i) {
        const long long b = h[p - 1] / 2;
        long long power = 1;
        for (int k = 0; k < i; ++k)
            power *= b;
        r += power;
        p = static_cast<int>(((b % 5) + p) % 20 + 1);
    }
    EXPECT_EQ(defaultPin, QString::number(r));
}

TEST_F(UsersTest, AUserRowWithoutPinRecordGetsTheDefaultAtLoadPin) {
    struct Case {
        const char *name;
        QByteArray t2;
    };
    const Case cases[] = {
        {"the column's default", "0"},
        {"noise", CRY::RandomNoise(2)},
        {"nothing", QByteArray()},
        {"a record without PIN text", CRY::EncryptField(QByteArray("\x00\x02\x01\x01\x0a\x00", 6))},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        setT2(c.t2);
        Users::state().Pin = "stale";
        Users::state().PinKind = 1;
        Passphrase::state().PassCheck = CRY::HashPass(Pass); // as at login
        Users::LoadPin();
        EXPECT_EQ(Users::state().Pin, defaultPin);
        EXPECT_EQ(Users::state().PinKind, 0);
        EXPECT_EQ(storedPin(), QStringList({"0", defaultPin, "0", "False"}));
        EXPECT_TRUE(Passphrase::state().PassCheck.empty());
    }
    EXPECT_EQ(ui.modalsShown, 0);

    // Without PassCheck at hand the passphrase is asked for.
    setT2("0");
    type(Pass);
    Users::LoadPin();
    EXPECT_EQ(ui.modalsShown, 1);
    EXPECT_EQ(Users::state().Pin, defaultPin);
    EXPECT_TRUE(Passphrase::state().PassphraseRaw.isEmpty());
}

TEST_F(UsersTest, APinOfAnyLengthAndCharactersIsKeptAndAccepted) {
    const QString pins[] = {"7", "0000", "a b", "\u00c4\u00d6\u00fc\u20ac\u00df !", QString(300, 'x') + "9"};
    for (const QString &pin : pins) {
        SCOPED_TRACE(pin.left(10).toStdString());
        Users::WritePin(1, pin, 0x1ff, true);
        Users::state().Pin.clear();
        Users::state().PinKind = 0;
        Users::state().PinSections = 0;
        Users::state().PinEveryAccess = false;
        Users::LoadPin();
        EXPECT_EQ(Users::state().Pin, pin);
        EXPECT_EQ(Users::state().PinKind, 1);
        EXPECT_EQ(Users::state().PinSections, 0x1ff);
        EXPECT_TRUE(Users::state().PinEveryAccess);
        typePin(pin);
        EXPECT_EQ(Users::RequestPin(), 1);
    }
    EXPECT_TRUE(ui.shown.isEmpty());
}

TEST_F(UsersTest, RequestPinAnswersRightWrongOrCancelled) {
    struct Case {
        const char *name;
        QString pin;
        std::optional<QString> typed; // nothing: cancelled
        int result;
        QStringList shown;
    };
    const Case cases[] = {
        {"right", "4711", QString("4711"), 1, {}},
        {"wrong", "4711", QString("4712"), 2, {QString("PIN not correct!")}},
        {"cancelled", "4711", std::nullopt, 3, {}},
        {"empty entry", "4711", QString(), 2, {QString("PIN not correct!")}},
        {"empty entry, empty PIN", "", QString(), 1, {}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        Users::state().Pin = c.pin;
        ui.shown.clear();
        km::frmPW seen;
        ui.onModal<km::frmPW>([&](km::frmPW &w) {
            seen.Caption = w.Caption;
            seen.lblPrompt = w.lblPrompt;
            seen.chkShowClearCaption = w.chkShowClearCaption;
            seen.chkPwLength = w.chkPwLength;
            seen.chkConfirm = w.chkConfirm;
            seen.chkCheckPWquality = w.chkCheckPWquality;
            if (!c.typed) {
                w.cmdCancel_Click();
                return false;
            }
            return typing({*c.typed})(w);
        });
        EXPECT_EQ(Users::RequestPin(), c.result);
        EXPECT_EQ(ui.shown, c.shown);
        EXPECT_EQ(seen.Caption, "Kestrelmondarin");
        EXPECT_EQ(seen.lblPrompt, "Enter PIN:");
        EXPECT_EQ(seen.chkShowClearCaption, "Show PIN in clear");
        EXPECT_FALSE(seen.chkPwLength || seen.chkConfirm || seen.chkCheckPWquality);
    }
}

TEST_F(UsersTest, PinAllowsAsksOnceASessionOrAtEveryAccess) {
    Users::WritePin(1, "2468", (1 << Users::Memos) | (1 << Users::Budget1), false);

    EXPECT_TRUE(Users::PinAllows(Users::Addresses)) << "a section without PIN";
    EXPECT_EQ(ui.modalsShown, 0);

    typePin("1357");
    EXPECT_FALSE(Users::PinAllows(Users::Memos));
    EXPECT_EQ(ui.shown, QStringList({QString("PIN not correct!")}));
    cancelPin();
    EXPECT_FALSE(Users::PinAllows(Users::Memos));
    typePin("2468");
    EXPECT_TRUE(Users::PinAllows(Users::Memos));
    EXPECT_TRUE(Users::PinAllows(Users::Memos));
    EXPECT_EQ(ui.modalsShown, 3) << "once unlocked, the section stays open this session";
    typePin("2468");
    EXPECT_TRUE(Users::PinAllows(Users::Budget1));
    EXPECT_EQ(ui.modalsShown, 4) << "each section is unlocked on its own";

    Users::WritePin(1, "2468", 1 << Users::Memos, true);
    for (int i = 0; i < 3; ++i) {
        typePin("2468");
        EXPECT_TRUE(Users::PinAllows(Users::Memos));
    }
    EXPECT_EQ(ui.modalsShown, 7) << "asked at every access";

    // A new open of the store locks the sections again.
    Users::WritePin(1, "2468", 1 << Users::Memos, false);
    db::FinishOpen();
    typePin("2468");
    EXPECT_TRUE(Users::PinAllows(Users::Memos));
    EXPECT_EQ(ui.modalsShown, 8);
}

TEST_F(UsersTest, WritingThePinOfAMissingUserRowEndsTheProgram) {
    Users::state().User.RowId = 99999;
    EXPECT_THROW(Users::WritePin(0, "1", 0, false), km::ProgramEnd);
    EXPECT_EQ(ui.shown, QStringList({msg(109)}));
}

TEST_F(UsersTest, RewritingAUserRowKeepsItsPlaceAndDrawsFreshNoise) {
    const auto before = rowAt(db::Store(), 2, 0);
    Passphrase::state().PassKey = CRY::HashKey(Pass);
    Users::UserRecord user;
    user.Number = 0;
    user.Name = "Admin";
    EXPECT_EQ(Users::WriteUser(user), 0);
    EXPECT_EQ(user.RowId, before.pk);
    const auto after = rowAt(db::Store(), 2, 0);
    EXPECT_EQ(after.ae, 3);
    EXPECT_NE(after.t1, before.t1);
    EXPECT_NE(after.etx, before.etx);
    EXPECT_TRUE(Users::CheckVerifier(after.t3, Passphrase::state().PassKey));
    EXPECT_FALSE(Users::CheckVerifier(after.t3, CRY::HashKey(QStringLiteral("another one 1"))));

    user.Number = 3;
    EXPECT_EQ(Users::WriteUser(user), 0);
    EXPECT_NE(user.RowId, before.pk);
    EXPECT_EQ(rowAt(db::Store(), 2, 3).ae, 1);
}

} // namespace
