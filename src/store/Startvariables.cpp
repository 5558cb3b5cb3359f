#include "store/Startvariables.h"

#include <optional>

#include <QList>
#include <QStringList>
#include <QVariantList>

#include "platform/SecureBytes.h"
#include "store/Record_Get.h"
#include "store/Record_Put.h"
#include "store/db.h"

namespace Startvariables {

namespace {

using Record_Put::Field;

const QString StartRowCriteria = QStringLiteral("fSec = 5 And fSub = 1");

QString fieldNamesCriteria(int section) {
    return QStringLiteral("fSec=9 And fSub=%1").arg(section);
}

// Index and type of the 24 fields, in index order.
const QList<Field> &startLayout() {
    using namespace Record_Put;
    static const QList<Field> layout = [] {
        QList<Field> l{{0, tInteger}, {1, tByte},     {2, tByte},    {3, tByte},    {4, tByte},
                       {5, tByte},    {6, tByte},     {7, tByte},    {8, tByte},    {9, tByte},
                       {10, tByte},   {11, tInteger}, {12, tDouble}, {13, tDouble}, {14, tDouble}};
        for (int i = 15; i <= 22; ++i)
            l.append({i, tInteger});
        l.append({23, tBoolean});
        return l;
    }();
    return layout;
}

QVariantList startValues(const State &s) {
    QVariantList v{s.IdleMinutes, s.BudgetShow1,       s.BudgetShow2,   s.BudgetShow3, s.StartApp,
                   s.StartScreen, s.TodoShowCompleted, s.BudgetPrimary, s.DiaryShow,   s.CatShow,
                   s.CalView,     s.CalSlotMinutes,    s.DayStart,      s.DayEnd,      s.DayFirstShown};
    for (const qint16 c : s.LastCategory)
        v.append(c);
    for (const qint16 f : s.ListFlags)
        v.append(f);
    v.append(s.ShowPrivateDefault);
    return v;
}

// Slots come back as text; an empty one (a field the record doesn't hold) is 0.
qint16 asInteger(const QString &slot) {
    return static_cast<qint16>(slot.toInt());
}
quint8 asByte(const QString &slot) {
    return static_cast<quint8>(slot.toInt() & 0xFF);
}
double asDouble(const QString &slot) {
    return slot.isEmpty() ? 0.0 : slot.toDouble();
}
bool asBoolean(const QString &slot) {
    return slot == QLatin1String("True");
}

void assignStartVariables(State &s, const QStringList &v) {
    s.IdleMinutes = asInteger(v.at(0));
    s.BudgetShow1 = asByte(v.at(1));
    s.BudgetShow2 = asByte(v.at(2));
    s.BudgetShow3 = asByte(v.at(3));
    s.StartApp = asByte(v.at(4));
    s.StartScreen = asByte(v.at(5));
    s.TodoShowCompleted = asByte(v.at(6));
    s.BudgetPrimary = asByte(v.at(7));
    s.DiaryShow = asByte(v.at(8));
    s.CatShow = asByte(v.at(9));
    s.CalView = asByte(v.at(10));
    s.CalSlotMinutes = asInteger(v.at(11));
    s.DayStart = asDouble(v.at(12));
    s.DayEnd = asDouble(v.at(13));
    s.DayFirstShown = asDouble(v.at(14));
    for (int i = 0; i < 5; ++i)
        s.LastCategory[i] = asInteger(v.at(15 + i));
    for (int i = 0; i < 3; ++i)
        s.ListFlags[i] = asInteger(v.at(20 + i));
    s.ShowPrivateDefault = asBoolean(v.at(23));
}

// The row's fEtx, or nothing when the store has no such row.
std::optional<QByteArray> readPayload(const QString &criteria) {
    auto rows = db::Store().OpenRowSet(
        QStringLiteral("SELECT * FROM tt WHERE %1 WITH OWNERACCESS OPTION;").arg(criteria), km::Snapshot);
    if (rows->RecordCount() == 0) return std::nullopt;
    return rows->GetColumn(QStringLiteral("fEtx")).toByteArray();
}

// The standard write of a settings row: every short column takes noise on a
// new row; an edited row keeps what it has.
qint64 writeSettingsRow(const QString &criteria, int section, int sub, QByteArray &packed) {
    db::StandardWrite w(db::Store(), criteria, section);
    if (!w.ok()) {
        km::wipe(packed);
        return 0;
    }
    w.setRecord(packed);
    km::wipe(packed);
    w.setColumn(QStringLiteral("fSub"), sub);
    return w.Commit({true, true, true, true, true, true, true});
}

qint64 writeUserFieldNames(int section, const State &s) {
    using namespace Record_Put;
    QVariantList values;
    for (const QString &name : s.UserFieldNames)
        values.append(name);
    QByteArray packed = PackRecord({{0, tText}, {1, tText}, {2, tText}, {3, tText}}, values);
    return writeSettingsRow(fieldNamesCriteria(section), FieldNamesSection, section, packed);
}

} // namespace

State &state() {
    static State s;
    return s;
}

void LoadStartVariables() {
    auto payload = readPayload(StartRowCriteria);
    // A store without the row gets the defaults written; the second look
    // must find it, and if the engine still shows none the defaults stand.
    if (!payload) {
        DefaultStartVariables();
        payload = readPayload(StartRowCriteria);
        if (!payload) return;
    }
    QStringList slots_(StartVariableCount);
    Record_Get::UnpackRecord(slots_, *payload, true);
    assignStartVariables(state(), slots_);
    for (QString &v : slots_)
        km::wipe(v);
}

qint64 SaveStartVariables() {
    QByteArray packed = Record_Put::PackRecord(startLayout(), startValues(state()));
    return writeSettingsRow(StartRowCriteria, SettingsSection, 1, packed);
}

qint64 DefaultStartVariables() {
    State &s = state();
    const std::array<QString, UserFieldCount> names = s.UserFieldNames;
    s = State{};
    s.UserFieldNames = names;
    return SaveStartVariables();
}

void LoadUserFieldNames(int section) {
    State &s = state();
    for (int i = 0; i < UserFieldCount; ++i)
        s.UserFieldNames[i] = QStringLiteral("User%1").arg(i + 1);
    const auto payload = readPayload(fieldNamesCriteria(section));
    if (!payload) {
        // A store opened only to be read keeps the default names in memory.
        if (!db::state().ReadOnly) writeUserFieldNames(section, s);
        return;
    }
    QStringList names(UserFieldCount);
    Record_Get::UnpackRecord(names, *payload, true);
    for (int i = 0; i < UserFieldCount; ++i)
        s.UserFieldNames[i] = names.at(i);
}

qint64 SaveUserFieldNames(int section) {
    return writeUserFieldNames(section, state());
}

} // namespace Startvariables
