#include "records/SortedSection.h"

#include "platform/Clock.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"
#include "store/CONVERSION.h"
#include "store/CRY.h"
#include "store/INDICES.h"
#include "store/Record_Get.h"
#include "store/Users.h"
#include "store/db.h"

namespace records {

QList<ListItem> SortedList(int section, std::optional<int> filter, int sectionBit, bool showPrivate) {
    QString sql = QStringLiteral("SELECT fPK, fT1, fEtx, fR1, fR2\\%1 AS X, fG1 FROM tt WHERE fSec=%2")
                      .arg(INDICES::BucketWidth)
                      .arg(section);
    if (filter) sql += QStringLiteral(" And fG1=%1").arg(*filter);
    sql += QStringLiteral(" ORDER BY fR2\\%1, fR1 WITH OWNERACCESS OPTION;").arg(INDICES::BucketWidth);
    auto rows = db::Store().OpenRowSet(sql, km::Snapshot);
    QList<ListItem> out;
    for (; !rows->Eof(); rows->MoveNext()) {
        if (!showPrivate) {
            CRY::DecryptToPlainBytes(rows->GetColumn(QStringLiteral("fEtx")).toByteArray());
            if (Record_Get::RowIsPrivate(CRY::state().PlainBytes, sectionBit)) continue;
        }
        out.append({rows->GetColumn(QStringLiteral("fPK")).toLongLong(),
                    CRY::DecryptField(rows->GetColumn(QStringLiteral("fT1")).toByteArray())});
    }
    return out;
}

int FillList(km::ListBox &list, const QList<ListItem> &items, qint64 select) {
    list.Clear();
    for (const ListItem &item : items)
        list.AddItem(item.text, static_cast<int>(item.id));
    if (list.ListCount() == 0) return -1;
    int index = 0;
    for (int i = 0; i < list.ListCount(); ++i)
        if (list.ItemData(i) == select) index = i;
    list.setListIndex(index);
    return index;
}

qint64 NeighbourOf(const km::ListBox &list, int index) {
    if (index + 1 < list.ListCount()) return list.ItemData(index + 1);
    if (index > 0) return list.ItemData(index - 1);
    return 0;
}

StoredRecord ReadRecord(qint64 rowId) {
    StoredRecord r;
    auto rows = db::Store().OpenRowSet(
        QStringLiteral("SELECT * FROM tt WHERE fPK=%1 WITH OWNERACCESS OPTION;").arg(rowId), km::Snapshot);
    if (rows->RecordCount() == 0) return r;
    r.found = true;
    r.section = rows->GetColumn(QStringLiteral("fSec")).toInt();
    r.g1 = rows->GetColumn(QStringLiteral("fG1")).toInt();
    Record_Get::UnpackRecord(r.values, rows->GetColumn(QStringLiteral("fEtx")).toByteArray(), true);
    return r;
}

qint64 SaveSortedRecord(const SaveRequest &request) {
    db::StandardWrite w(db::Store(), request.rowId, request.section);
    if (!w.ok()) return 0;
    QVariantList values = request.values;
    const auto put = [&](int slot, const QVariant &v) {
        if (slot < 0) return;
        while (values.size() <= slot)
            values.append(QVariant());
        values[slot] = v;
    };
    const QDateTime now = CONVERSION::Naive(km::Clock::now());
    put(request.userSlot, Users::state().User.Number);
    put(request.modifiedSlot, now);
    if (w.isNew()) put(request.createdSlot, now);

    w.setRecord(Record_Put::PackRecord(request.layout, values));
    w.setColumn(QStringLiteral("fG1"), request.g1);
    const QString oldTitle = w.oldText(QStringLiteral("fT1"));
    if (w.isNew() || request.title != oldTitle) {
        w.setText(QStringLiteral("fT1"), request.title);
        w.placeInOrder(request.title, oldTitle);
    }
    return w.Commit({false, true, true, false, false, true, true});
}

std::optional<qint64> ConfirmAndDelete(const km::ListBox &list, int question) {
    const int index = list.ListIndex();
    if (index < 0) return std::nullopt;
    const QString text = LanguageUS::MessageText(question) + QStringLiteral("   ") + list.List(index);
    if (km::ui().message(text, km::Buttons::OKCancel, km::Answer::Cancel, km::Icon::Exclamation) !=
        km::Answer::OK)
        return std::nullopt;
    DeleteRow(list.ItemData(index));
    return NeighbourOf(list, index);
}

bool DeleteRow(qint64 rowId) {
    return db::Store().Execute(
               QStringLiteral("DELETE * FROM tt WHERE fPK=%1 WITH OWNERACCESS OPTION;").arg(rowId)) > 0;
}

} // namespace records
