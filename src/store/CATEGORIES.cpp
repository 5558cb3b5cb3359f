#include "store/CATEGORIES.h"

#include <algorithm>
#include <vector>

#include "platform/SecureBytes.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"
#include "store/Record_Get.h"
#include "store/Record_Put.h"
#include "store/db.h"

namespace CATEGORIES {

namespace {

QString rowCriteria(int section) {
    return QStringLiteral("fSec=10 And fSub=%1").arg(section);
}

// -1 and 65535 are one id: the same 16 bits read signed or unsigned.
int normalised(int id) {
    return static_cast<qint16>(static_cast<quint16>(id & 0xFFFF));
}

} // namespace

State &state() {
    static State s;
    return s;
}

QString UnfiledText() {
    return LanguageUS::MessageText(66);
}

bool IsReservedId(int id) {
    return id == CategoryUnfiled || id == CategoryEdit || id == CategoryAll || id == CategoryAllUnsigned;
}

void LoadCategories(int section) {
    State &s = state();
    s.CategoryNames.clear();
    s.CategoryIds.clear();
    s.CategorySection = section;

    QByteArray payload;
    {
        auto rows = db::Store().OpenRowSet(
            QStringLiteral("SELECT * FROM tt WHERE %1 WITH OWNERACCESS OPTION;").arg(rowCriteria(section)),
            km::Snapshot);
        if (rows->RecordCount() == 0) return;
        payload = rows->GetColumn(QStringLiteral("fEtx")).toByteArray();
    }

    QStringList values; // growable: the record decides how many entries there are
    Record_Get::UnpackRecord(values, payload, true);
    const qsizetype count = values.size() / 2; // a trailing name without its id is dropped
    for (qsizetype k = 0; k < count; ++k) {
        s.CategoryNames.append(values.at(2 * k));
        s.CategoryIds.append(values.at(2 * k + 1).toInt());
    }
    for (QString &v : values)
        km::wipe(v);
}

qint64 SaveCategories(int section) {
    State &s = state();
    QList<Record_Put::Field> layout;
    QVariantList values;
    const qsizetype count = std::min(s.CategoryNames.size(), s.CategoryIds.size());
    for (qsizetype k = 0; k < count; ++k) {
        const int index = static_cast<int>(2 * k);
        layout.append({index, Record_Put::tText});
        layout.append({index + 1, Record_Put::tInteger});
        values.append(s.CategoryNames.at(k));
        values.append(static_cast<qint16>(s.CategoryIds.at(k)));
    }
    QByteArray packed = Record_Put::PackRecord(layout, values);

    db::StandardWrite w(db::Store(), rowCriteria(section), CategoryRowSection);
    if (!w.ok()) {
        km::wipe(packed);
        return 0;
    }
    w.setRecord(packed);
    km::wipe(packed);
    w.setColumn(QStringLiteral("fSub"), section);
    const qint64 id = w.Commit({true, true, true, true, true, true, true});
    s.ListsNeedRefresh = true;
    return id;
}

int NextCategoryId() {
    const QList<qint32> &ids = state().CategoryIds;
    // A reserved value in the list itself means the list can't be trusted to
    // say which ids are in use: then no id counts as free.
    const bool blocked = std::any_of(ids.begin(), ids.end(), [](qint32 id) { return IsReservedId(id); });
    if (!blocked) {
        std::vector<bool> used(LastCategoryId + 1, false);
        for (const qint32 id : ids)
            if (id >= FirstCategoryId && id <= LastCategoryId) used[id] = true;
        for (int id = FirstCategoryId; id <= LastCategoryId; ++id)
            if (!used[id]) return id;
    }
    km::ShowMessage(52);
    return 0;
}

void FillCategorySelector(km::ListBox &control, int section, bool withAll, bool withUnfiled, bool withEdit) {
    const int options = int(withAll) + int(withUnfiled) + int(withEdit);
    const QString margin = options == 3  ? QStringLiteral("  ")
                           : options > 0 ? QStringLiteral(" ")
                                         : QString();

    LoadCategories(section);
    control.Clear();
    if (withAll) control.AddItem(margin + QStringLiteral("All"), CategoryAll);
    if (withUnfiled) control.AddItem(margin + UnfiledText(), CategoryUnfiled);
    const State &s = state();
    for (qsizetype k = 0; k < s.CategoryNames.size(); ++k)
        control.AddItem(margin + s.CategoryNames.at(k), s.CategoryIds.at(k));
    if (withEdit) control.AddItem(margin + QStringLiteral("Edit categories"), CategoryEdit);
    control.setText(control.List(0));
}

int CategoryOfSelector(const km::ListBox &control) {
    if (control.ListIndex() >= 0) return control.ItemData(control.ListIndex());
    if (control.ListCount() > 0) return control.ItemData(0);
    return CategoryUnfiled;
}

void SelectCategory(km::ListBox &control, int id) {
    for (int i = 0; i < control.ListCount(); ++i)
        if (normalised(control.ItemData(i)) == normalised(id)) {
            control.setListIndex(i);
            return;
        }
    control.setListIndex(0);
}

int CategoryOfRow(qint64 rowId) {
    auto rows =
        db::Store().OpenRowSet(QStringLiteral("SELECT fG1 FROM tt WHERE fPK=%1").arg(rowId), km::Snapshot);
    if (rows->RecordCount() == 0) return CategoryUnfiled;
    return rows->GetColumn(QStringLiteral("fG1")).toInt();
}

} // namespace CATEGORIES
