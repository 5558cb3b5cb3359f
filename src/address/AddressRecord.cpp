#include "address/AddressRecord.h"

#include "platform/Engine.h"
#include "platform/Random.h"
#include "store/CONVERSION.h"
#include "store/CRY.h"
#include "store/INDICES.h"
#include "store/Record_Get.h"
#include "store/Record_Put.h"
#include "ui/LanguageUS.h"

namespace km::Address {

namespace {

using Record_Put::tBoolean;
using Record_Put::tByte;
using Record_Put::tMemo;
using Record_Put::tMinutes;
using Record_Put::tText;

std::array<FieldDef, FieldCount> buildTable() {
    std::array<FieldDef, FieldCount> t{};
    const auto set = [&t](int i, const char *name, int type, bool control) {
        t[static_cast<size_t>(i)] = {i, QString::fromLatin1(name), type, control};
    };
    set(0, "UserNumber", tByte, false);
    set(1, "Private", tBoolean, true);
    set(2, "Priority", tByte, false);
    set(3, "Title", tText, true);
    set(4, "FirstName", tText, true);
    set(5, "MiddleName", tText, false);
    set(6, "LastName", tText, true);
    set(7, "Suffix", tText, true);
    set(8, "CompanyName", tText, true);
    set(9, "Department", tText, false);
    set(10, "JobTitle", tText, true);
    const char *pages[] = {"Business", "Home", "Other"};
    const char *parts[] = {"Street", "City", "State", "PostalCode", "Country"};
    for (int p = 0; p < 3; ++p)
        for (int f = 0; f < 5; ++f)
            set(11 + p * 5 + f, (QByteArray(pages[p]) + "Address" + parts[f]).constData(), tText, true);
    set(26, "Account", tText, false);
    set(27, "Anniversary", tText, false);
    set(28, "BillingInformation", tText, false);
    set(29, "Birthday", tMinutes, true);
    set(30, "Children", tText, true);
    set(31, "Gender", tText, false);
    set(32, "GovernmentIDNumber", tText, true);
    set(33, "Profession", tText, false);
    set(34, "Spouse", tText, true);
    for (int u = 1; u <= 4; ++u)
        set(34 + u, QByteArray("User").append(QByteArray::number(u)).constData(), tText, true);
    set(39, "OrganizationalIDNumber", tText, false);
    set(40, "CustomerID", tText, false);
    for (int n = 1; n <= 9; ++n) {
        set(40 + n, QByteArray("Com").append(QByteArray::number(n)).constData(), tText, true);
        set(49 + n, QByteArray("ComLabel").append(QByteArray::number(n)).constData(), tByte, true);
    }
    set(59, "ComDisplay", tByte, true);
    set(60, "Notes", tMemo, true);
    return t;
}

QString crlf() {
    return QStringLiteral("\r\n");
}

QString padded(const QString &label, int width) {
    return (label + QLatin1Char(':')).leftJustified(width, QLatin1Char(' '));
}

} // namespace

const std::array<FieldDef, FieldCount> &FieldTable() {
    static const std::array<FieldDef, FieldCount> table = buildTable();
    return table;
}

int FieldIndex(const QString &name) {
    for (const FieldDef &f : FieldTable())
        if (f.name == name) return f.index;
    return -1;
}

QString ContactSuffix(int code) {
    switch (code) {
    case 1: return QStringLiteral(" (W)");
    case 2: return QStringLiteral(" (H)");
    case 3: return QStringLiteral(" (F)");
    case 6: return QStringLiteral(" (main)");
    case 7: return QStringLiteral(" (pager)");
    case 8: return QStringLiteral(" (M)");
    default: return QString(); // Other, Email, Website
    }
}

int DefaultLabel(int slot) {
    static const int defaults[] = {1, 2, 8, 6, 3, 5, 5, 9, 4};
    return slot >= 1 && slot <= 9 ? defaults[slot - 1] : 4;
}

Record EmptyRecord() {
    Record r;
    for (int i = 0; i < FieldCount; ++i)
        r.append(QString());
    return r;
}

QString Com(const Record &r, int slot) {
    return r.value(Com1 + slot - 1);
}

int ComLabel(const Record &r, int slot) {
    const QString stored = r.value(ComLabel1 + slot - 1);
    return stored.isEmpty() ? DefaultLabel(slot) : stored.toInt();
}

QString ContactLine(const Record &r) {
    const QString display = r.value(ComDisplay);
    if (display.isEmpty()) return QString();
    const int slot = display.toInt() + 1;
    if (slot < 1 || slot > 9) return QString();
    return Com(r, slot) + ContactSuffix(ComLabel(r, slot));
}

QString PrivateMarker(bool isPrivate) {
    Randomize();
    const int n = static_cast<int>(RndInt(15)) + 10;
    const QByteArray s = CRY::RandomNoise(n).left(n);
    const int c = 2 * (static_cast<int>(RndInt(255)) / 2) + (isPrivate ? 1 : 0);
    QByteArray marker = s.left(6);
    marker.append(static_cast<char>(c));
    marker.append(s.right(n - 6));
    return QString::fromLatin1(marker);
}

bool MarkerIsPrivate(const QByteArray &fT3) {
    return fT3.size() >= 7 && (static_cast<unsigned char>(fT3.at(6)) & 1) != 0;
}

void NormaliseSlots(Record &r) {
    for (int n = 1; n <= 9; ++n)
        if (Com(r, n).isEmpty()) r[ComLabel1 + n - 1].clear();
    if (r.value(ComDisplay).isEmpty()) r[ComDisplay] = QStringLiteral("0");
    const int shown = r.value(ComDisplay).toInt() + 1;
    if (shown < 1 || shown > 9 || Com(r, shown).isEmpty()) {
        r[ComDisplay].clear();
        for (int n = 1; n <= 9; ++n)
            if (!Com(r, n).isEmpty()) {
                r[ComDisplay] = QString::number(n - 1);
                break;
            }
    }
}

SortedSection::SaveRequest SaveRequestOf(const Record &r, const QString &fileAs, int category) {
    SortedSection::SaveRequest request;
    request.values.reserve(FieldCount);
    for (int i = 0; i < FieldCount; ++i) {
        const QString v = r.value(i);
        request.values.append(v.isEmpty() ? QVariant() : QVariant(v));
        // Only fields with a value are packed; the user's number is filled by the save.
        if (!v.isEmpty() || i == UserNumber) request.layout.append({i, FieldTable()[static_cast<size_t>(i)].type});
    }
    request.title = fileAs;
    request.subtitle = ContactLine(r);
    request.plainT3 = PrivateMarker(r.value(Private) == QLatin1String("True")).toLatin1();
    request.r5OnNew = 0;
    request.noiseEverySave = true;
    request.g1 = category;
    request.userSlot = UserNumber;
    request.section = Section;
    return request;
}

Loaded LoadAddress(StoreDb &store, qint64 id) {
    Loaded l;
    auto rows = store.OpenRowSet(
        QStringLiteral("SELECT * FROM tt WHERE fPK = %1 WITH OWNERACCESS OPTION;").arg(id), Snapshot);
    if (rows->RecordCount() == 0) return l;
    const QByteArray payload = rows->GetColumn(QStringLiteral("fEtx")).toByteArray();
    if (payload.isEmpty()) return l;
    l.found = true;
    l.section = rows->GetColumn(QStringLiteral("fSec")).toInt();
    l.category = rows->GetColumn(QStringLiteral("fG1")).toInt();
    l.record = EmptyRecord();
    Record_Get::UnpackRecord(l.record, payload, true);
    return l;
}

QList<ListRow> ReadList(StoreDb &store, std::optional<int> filter) {
    QString sql = QStringLiteral("SELECT fPK, fT1, fT2, fT3, fG1, AE, fR1, fR2\\%1 AS X FROM tt WHERE fSec=%2")
                      .arg(INDICES::BucketWidth)
                      .arg(Section);
    if (filter) sql += QStringLiteral(" And fG1 = %1").arg(*filter);
    sql += QStringLiteral(" ORDER BY fR2\\%1, fR1 WITH OWNERACCESS OPTION;").arg(INDICES::BucketWidth);
    auto rows = store.OpenRowSet(sql, Snapshot);
    QList<ListRow> out;
    for (; !rows->Eof(); rows->MoveNext()) {
        ListRow row;
        row.id = rows->GetColumn(QStringLiteral("fPK")).toLongLong();
        row.fileAs = CRY::DecryptField(rows->GetColumn(QStringLiteral("fT1")).toByteArray());
        row.contactLine = CRY::DecryptField(rows->GetColumn(QStringLiteral("fT2")).toByteArray());
        row.isPrivate = MarkerIsPrivate(rows->GetColumn(QStringLiteral("fT3")).toByteArray());
        const QVariant g1 = rows->GetColumn(QStringLiteral("fG1"));
        row.category = g1.isNull() ? 0 : g1.toInt();
        const QVariant ae = rows->GetColumn(QStringLiteral("AE"));
        row.changeBits = ae.isNull() ? 1 : ae.toInt();
        out.append(row);
    }
    return out;
}

void DeleteAll(StoreDb &store, std::optional<int> category) {
    QString sql = QStringLiteral("DELETE * FROM tt WHERE fSec=%1").arg(Section);
    if (category) sql += QStringLiteral(" And fG1=%1").arg(*category);
    store.Execute(sql + QStringLiteral(" WITH OWNERACCESS OPTION;"));
}

void WriteTabDelimited(StoreDb &store, ExportSink &out) {
    QByteArray line;
    for (int i = 1; i < FieldCount; ++i)
        line += FieldTable()[static_cast<size_t>(i)].name.toLatin1() + '\t';
    out.write(line + '\n');
    // Only the payload is read: the engine sorts 10,000 rows faster when it
    // carries one column rather than all of them.
    auto rows = store.OpenRowSet(
        QStringLiteral("SELECT fEtx FROM tt WHERE fSec=%1 ORDER BY  fR2 , fR1 WITH OWNERACCESS OPTION;").arg(Section),
        Snapshot);
    Record values = EmptyRecord();
    for (; !rows->Eof(); rows->MoveNext()) {
        for (QString &v : values)
            wipe(v);
        Record_Get::UnpackRecord(values, rows->GetColumn(QStringLiteral("fEtx")).toByteArray(), true);
        line.clear();
        for (int i = 1; i < FieldCount; ++i) {
            QByteArray cell = values.at(i).toUtf8();
            line += cell;
            line += '\t';
            wipe(cell);
        }
        line += '\n';
        out.write(line);
        wipe(line);
    }
    for (QString &v : values)
        wipe(v);
}

QString NameLine(const Record &r, const QString &fileAs) {
    QString s;
    if (!r.value(Title).isEmpty()) s += r.value(Title) + QLatin1Char(' ');
    s += fileAs;
    if (!r.value(Suffix).isEmpty()) s += QLatin1Char(' ') + r.value(Suffix);
    return s;
}

Pane ComposePane(const Record &r, const QStringList &userLabels) {
    using LanguageUS::MessageText;
    const QString gov = MessageText(75), birthday = MessageText(78), spouse = MessageText(76),
                  children = MessageText(77), heading = MessageText(53), home = MessageText(56),
                  work = MessageText(58), other = MessageText(59), fax = MessageText(60),
                  email = MessageText(55), pager = MessageText(64), main = MessageText(65),
                  mobile = MessageText(67), web = MessageText(61), note = MessageText(68);
    Pane pane;
    pane.boldLabels = {gov, birthday, spouse, children, home, work, other, fax, email, pager, main, mobile, web, note};
    for (const QString &u : userLabels)
        if (!u.isEmpty()) pane.boldLabels.append(u);
    pane.underlined = heading;
    QString &t = pane.text;

    bool organisation = false;
    for (int f : {JobTitle, CompanyName, Department})
        if (!r.value(f).isEmpty()) {
            t += r.value(f) + crlf();
            organisation = true;
        }
    if (organisation) t += QString(40, QLatin1Char('_')) + crlf() + crlf();

    // The pane's labels differ from the editor's list in codes 6 and 7.
    const QString labelOf[] = {home, work, home, fax, other, email, pager, main, mobile, web};
    for (int n = 1; n <= 9; ++n) {
        const QString value = Com(r, n);
        if (value.isEmpty()) continue;
        const QString stored = r.value(ComLabel1 + n - 1);
        const int code = stored.isEmpty() ? 2 : stored.toInt();
        const QString label = code >= 1 && code <= 9 ? labelOf[code] : home;
        t += padded(label, 16) + QLatin1Char('\t') + value + crlf();
    }
    t += crlf();

    QString addresses;
    const std::pair<int, QString> pages[] = {
        {HomeAddressStreet, home}, {BusinessAddressStreet, work}, {OtherAddressStreet, other}};
    for (const auto &[street, label] : pages) {
        QString page;
        if (!r.value(street + Street).isEmpty()) page += r.value(street + Street) + crlf();
        const QString city = r.value(street + City);
        if (!city.isEmpty()) {
            QStringList rest;
            for (int f : {State, PostalCode})
                if (!r.value(street + f).isEmpty()) rest.append(r.value(street + f));
            page += city + (rest.isEmpty() ? QString() : QStringLiteral(", ") + rest.join(QLatin1Char(' '))) +
                    crlf();
        }
        if (!r.value(street + Country).isEmpty()) page += r.value(street + Country) + crlf();
        if (!page.isEmpty()) addresses += label + crlf() + page;
    }
    if (!addresses.isEmpty()) t += heading + QLatin1Char(':') + crlf() + addresses + crlf();

    const std::pair<int, QString> personal[] = {{GovernmentIDNumber, gov},
                                                {Birthday, birthday},
                                                {Spouse, spouse},
                                                {Children, children},
                                                {User1, userLabels.value(0)},
                                                {User1 + 1, userLabels.value(1)},
                                                {User1 + 2, userLabels.value(2)},
                                                {User1 + 3, userLabels.value(3)}};
    for (const auto &[field, label] : personal) {
        QString value = r.value(field);
        if (value.isEmpty()) continue;
        if (field == Birthday) {
            const QDateTime d = CONVERSION::ParseDateText(value);
            if (d.isValid()) value = d.date().toString(QStringLiteral("yyyy-MM-dd"));
        }
        t += padded(label, 20) + value + crlf();
    }
    t += crlf();

    if (!r.value(Notes).isEmpty()) t += note + QLatin1Char(':') + crlf() + r.value(Notes);
    return pane;
}

} // namespace km::Address
