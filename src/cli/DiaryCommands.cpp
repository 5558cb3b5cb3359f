// kmd for the diary (section 13):
//
//   kmd diary STORE DATE                 prints the day's text (nothing for a day without)
//   kmd diary STORE DATE --set TEXT      writes the day's text through the diary's own save
//   kmd diary STORE DATE --set -         the same with the text from standard input
//
//   kmd check: a day's fR2 must lie in its date's key bucket and fT1 must
//   hold its date.
#include <cstdio>

#include <QFile>

#include "calendar/CALENDAR.h"
#include "calendar/frmDiary.h"
#include "cli/Cli.h"
#include "platform/Engine.h"
#include "shell/BasicShell.h"
#include "shell/SessionGuards.h"
#include "store/CRY.h"
#include "store/Record_Get.h"
#include "store/db.h"

namespace cli {

namespace {

int diary(Context &ctx) {
    const QDate date = QDate::fromString(ctx.positional.at(1), Qt::ISODate);
    if (!date.isValid()) return ctx.fail(QStringLiteral("Not a date (yyyy-MM-dd): ") + ctx.positional.at(1), ExitUsage);
    std::optional<QString> text = ctx.value("set");
    if (text && *text == QLatin1String("-")) {
        QFile in;
        if (!in.open(stdin, QIODevice::ReadOnly)) return ctx.fail(QStringLiteral("Standard input cannot be read."));
        text = QString::fromUtf8(in.readAll());
        // One line end closes what a shell's echo or a file gives; it is not the diary's.
        if (text->endsWith('\n')) text->chop(1);
    }
    if (int e = Login(ctx, ctx.positional.at(0), text ? Access::Write : Access::ReadOnly)) return e;
    // The diary is private as a whole; a command that names its store and passphrase may read it.
    SessionGuards::state().ShowPrivate = true;
    if (!text) {
        const QString day = km::DIARY::ReadDay(db::Store(), date).text;
        if (!day.isEmpty()) *ctx.out << day << '\n';
        return ExitOk;
    }
    km::BasicShell shell;
    km::frmDiary w(shell.context());
    w.calDate = date;
    w.LoadDiaryWeek(date);
    const int index = w.dayIndex();
    w.txtInput_Change(index, *text);
    w.SaveDiaryDay(index);
    return w.txtInput[static_cast<size_t>(index)].tag > 0 ? ExitOk : ExitFailure;
}

bool checkDay(km::RowSet &row, const QByteArray &clear, QString *why) {
    QStringList values;
    Record_Get::UnpackRecord(values, km::toSecureBytes(clear));
    const QDate date =
        QDateTime::fromString(values.value(km::DIARY::Date), QStringLiteral("yyyy-MM-dd HH:mm:ss")).date();
    if (!date.isValid()) return *why = QStringLiteral("the day has no date"), false;
    if (CALENDAR::DateFromKey(row.GetColumn("fR2").toInt(), CALENDAR::DayKey) != date)
        return *why = QStringLiteral("fR2 is not the key of the day's date"), false;
    if (CALENDAR::StartOfField(row.GetColumn("fT1").toByteArray()) != CALENDAR::MomentOf(date))
        return *why = QStringLiteral("fT1 is not the day's date"), false;
    return true;
}

Registration r({QStringLiteral("diary"),
                QStringLiteral("Prints the diary's text of a day, or with --set writes it (\"-\": the text "
                               "from standard input)."),
                {StoreArgument(), {QStringLiteral("DATE"), QStringLiteral("the day, yyyy-MM-dd")}},
                {{QStringLiteral("set"), QStringLiteral("Writes TEXT as the day's text."), QStringLiteral("TEXT")}},
                diary});

struct Halves {
    Halves() { RegisterSectionCheck(km::DIARY::Section, checkDay); }
} halves;

} // namespace

} // namespace cli
