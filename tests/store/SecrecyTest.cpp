// What the person typed never stands in the store file in any readable form.
#include <gtest/gtest.h>

#include <QFile>

#include "platform/CodePage1252.h"
#include "store/CONVERSION.h"
#include "store/Record_Put.h"
#include "support/StoreFixture.h"

namespace {

class SecrecyTest : public km::test::StoreFixture {};

QList<QByteArray> forms(const QString &word) {
    QByteArray utf16;
    for (QChar c : word) {
        utf16.append(static_cast<char>(c.unicode() & 0xFF));
        utf16.append(static_cast<char>(c.unicode() >> 8));
    }
    return {km::cp1252::toBytes(word), word.toUtf8(), utf16, km::cp1252::toBytes(word.toUpper()),
            km::cp1252::toBytes(CONVERSION::TextToStored(word))};
}

} // namespace

TEST_F(SecrecyTest, KnownWordsWrittenThroughTheStandardWriteAreNotInTheFile) {
    const QStringList words = {
        "Kohlrabisuppe",           "Zugangscode7781",
        "M\u00fcllerstra\u00dfe",  "Ordnungsamt",
        "\u0141\u00f3d\u017askie", "\u041f\u0440\u0438\u0432\u0435\u0442\u0441\u0442\u0432\u0438\u0435",
        "Kuchen\U0001F600Teller"};
    for (int i = 0; i < 200; ++i) {
        const QString title = words.at(i % words.size()) + QString::number(i % 3);
        db::StandardWrite w(store(), 0, 14);
        w.setRecord(Record_Put::PackRecord({{0, Record_Put::tLong},
                                            {1, Record_Put::tBoolean},
                                            {4, Record_Put::tText},
                                            {5, Record_Put::tMemo}},
                                           {i, false, {}, {}, title, words.join(' ')}));
        w.setText("fT1", title);
        w.placeInOrder(title, QString());
        w.Commit({false, true, true, false, false, true, true});
    }
    // Rename and delete too, so freed pages would show what they held.
    store().Execute("DELETE * FROM tt WHERE fPK<50 WITH OWNERACCESS OPTION;");
    db::state().StoreDb.reset();

    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QByteArray raw = f.readAll();
    ASSERT_GT(raw.size(), 10000);
    for (const QString &w : words)
        for (const QByteArray &form : forms(w))
            EXPECT_EQ(raw.indexOf(form), -1) << w.toStdString();
    reopen();
}
