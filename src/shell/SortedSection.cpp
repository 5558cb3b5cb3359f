#include "shell/SortedSection.h"

#include "platform/Clock.h"
#include "store/CONVERSION.h"
#include "store/CRY.h"
#include "store/INDICES.h"
#include "store/Record_Get.h"
#include "store/db.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"
#include "ui/Services.h"

namespace km {

namespace SortedSection {

QList<ListItem> SortedList(StoreDb &store, int section, std::optional<int> filter, int privateBit,
                           bool showPrivate) {
    QString sql = QStringLiteral("SELECT fPK, fT1, fEtx, fR1, fR2\\%1 AS X, fG1 FROM tt WHERE fSec=%2")
                      .arg(INDICES::BucketWidth)
                      .arg(section);
    if (filter) sql += QStringLiteral(" And fG1=%1").arg(*filter);
    sql += QStringLiteral(" ORDER BY fR2\\%1, fR1 WITH OWNERACCESS OPTION;").arg(INDICES::BucketWidth);
    auto rows = store.OpenRowSet(sql, Snapshot);
    QList<ListItem> out;
    for (; !rows->Eof(); rows->MoveNext()) {
        if (!showPrivate) {
            CRY::DecryptToPlainBytes(rows->GetColumn(QStringLiteral("fEtx")).toByteArray());
            if (Record_Get::RowIsPrivate(CRY::state().PlainBytes, privateBit)) continue;
        }
        out.append({rows->GetColumn(QStringLiteral("fPK")).toLongLong(),
                    CRY::DecryptField(rows->GetColumn(QStringLiteral("fT1")).toByteArray()), QString()});
    }
    return out;
}

int FillList(ListBox &list, const QList<ListItem> &items, qint64 select) {
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

qint64 NeighbourOf(const ListBox &list, int index) {
    if (index + 1 < list.ListCount()) return list.ItemData(index + 1);
    if (index > 0) return list.ItemData(index - 1);
    return 0;
}

StoredRecord ReadRecord(StoreDb &store, qint64 rowId) {
    StoredRecord r;
    auto rows = store.OpenRowSet(
        QStringLiteral("SELECT * FROM tt WHERE fPK=%1 WITH OWNERACCESS OPTION;").arg(rowId), Snapshot);
    if (rows->RecordCount() == 0) return r;
    r.found = true;
    r.section = rows->GetColumn(QStringLiteral("fSec")).toInt();
    r.g1 = rows->GetColumn(QStringLiteral("fG1")).toInt();
    Record_Get::UnpackRecord(r.values, rows->GetColumn(QStringLiteral("fEtx")).toByteArray(), true);
    return r;
}

qint64 SaveSortedRecord(StoreDb &store, const SaveRequest &request, const QDateTime &now) {
    db::StandardWrite w(store, request.rowId, request.section);
    if (!w.ok()) return 0;
    QVariantList values = request.values;
    const auto put = [&](int slot, const QVariant &v) {
        if (slot < 0) return;
        while (values.size() <= slot)
            values.append(QVariant());
        values[slot] = v;
    };
    const QDateTime stamp = CONVERSION::Naive(now);
    put(request.userSlot, request.userNumber);
    put(request.modifiedSlot, stamp);
    if (w.isNew()) put(request.createdSlot, stamp);

    w.setRecord(Record_Put::PackRecord(request.layout, values));
    w.setColumn(QStringLiteral("fG1"), request.g1);
    if (!request.plainT3.isEmpty()) w.setColumn(QStringLiteral("fT3"), request.plainT3);
    if (w.isNew() && request.r5OnNew) w.setColumn(QStringLiteral("fR5"), *request.r5OnNew);
    const bool two = request.subtitle.has_value();
    const QString title = two ? request.title + *request.subtitle : request.title;
    QString oldTitle = w.oldText(QStringLiteral("fT1"));
    if (two) oldTitle += w.oldText(QStringLiteral("fT2"));
    if (w.isNew() || title != oldTitle) {
        w.setText(QStringLiteral("fT1"), request.title);
        if (two) w.setText(QStringLiteral("fT2"), *request.subtitle);
        w.placeInOrder(title, oldTitle);
    }
    if (request.noiseEverySave) db::WriteNoise(w.rows(), {false, false, false, false, false, true, true});
    return w.Commit({false, !two, request.plainT3.isEmpty(), false, false, true, true});
}

bool DeleteRow(StoreDb &store, qint64 rowId) {
    return store.Execute(
               QStringLiteral("DELETE * FROM tt WHERE fPK=%1 WITH OWNERACCESS OPTION;").arg(rowId)) > 0;
}

} // namespace SortedSection

void RecordEditor::cmdEsc_Click() {
    if (changed && m_dialogs.message(LanguageUS::MessageText(20), Buttons::YesNo, Answer::No,
                                     Icon::Question) != Answer::Yes)
        return;
    closeEditor(false);
}

void RecordEditor::closeEditor(bool accepted) {
    clipboard().clearSelection();
    close(accepted);
}

SortedSectionModel::SortedSectionModel(const SectionContext &context) : ctx(context) {}

void SortedSectionModel::HideShow() {
    askStoreChanged();
    listSelect_Initialize(RowId);
}

void SortedSectionModel::askStoreChanged() {
    if (!recordChanged) return;
    recordChanged = false;
    if (ctx.dialogs.message(LanguageUS::MessageText(26), Buttons::YesNo, Answer::Yes, Icon::Question) ==
        Answer::Yes)
        SaveRecord();
}

void SortedSectionModel::paneEdited() {
    if (paneEditable()) recordChanged = true;
}

void SortedSectionModel::clearPane() {
    RowId = 0;
    newRecord = false;
    recordChanged = false;
    storedValues.clear();
    clearFields();
}

void SortedSectionModel::showRecord(qint64 id) {
    clearPane();
    const SortedSection::StoredRecord r = SortedSection::ReadRecord(ctx.store, id);
    if (!r.found) return;
    RowId = id;
    storedValues = r.values;
    showFields(r);
}

void SortedSectionModel::listSelect_Initialize(qint64 select) {
    ctx.shell.setBusy(this, true);
    QList<SortedSection::ListItem> items;
    try {
        items = readList();
    } catch (...) {
        ctx.shell.setBusy(this, false);
        throw;
    }
    ctx.shell.setBusy(this, false);
    const int index = SortedSection::FillList(listSelect, items, select);
    if (index < 0)
        clearPane();
    else
        showRecord(listSelect.ItemData(index));
}

QList<SortedSection::ListItem> SortedSectionModel::readList() {
    return SortedSection::SortedList(ctx.store, sectionId(), listFilter(), privateBit(), ctx.shell.privateShown());
}

void SortedSectionModel::listSelect_Click(int index) {
    if (index < 0 || index >= listSelect.ListCount()) return;
    const qint64 id = listSelect.ItemData(index);
    if (id == RowId && !newRecord) {
        listSelect.setListIndex(index);
        return;
    }
    if (recordChanged) {
        // The save refills the list; the row asked for is found again by its id.
        askStoreChanged();
        listSelect_Initialize(id);
        return;
    }
    listSelect.setListIndex(index);
    showRecord(id);
}

qint64 SortedSectionModel::SaveRecord() {
    SortedSection::SaveRequest request = saveRequest();
    request.section = sectionId();
    request.rowId = newRecord ? 0 : RowId;
    request.userNumber = ctx.shell.userNumber();
    const qint64 id = SortedSection::SaveSortedRecord(ctx.store, request, ctx.clock.dateTime());
    if (id) {
        RowId = id;
        newRecord = false;
        recordChanged = false;
    }
    return id;
}

void SortedSectionModel::cmdDelete_Click() {
    const int index = listSelect.ListIndex();
    if (index < 0) {
        if (const int message = noSelectionMessage())
            ctx.dialogs.message(LanguageUS::MessageText(message), Buttons::OK, Answer::OK, Icon::Exclamation);
        return;
    }
    const QString text =
        LanguageUS::MessageText(deleteQuestion()) + deleteSeparator() + listSelect.List(index);
    if (ctx.dialogs.message(text, Buttons::OKCancel, Answer::Cancel, Icon::Exclamation) != Answer::OK) return;
    const qint64 next = SortedSection::NeighbourOf(listSelect, index);
    SortedSection::DeleteRow(ctx.store, listSelect.ItemData(index));
    recordChanged = false;
    listSelect_Initialize(next);
}

bool SortedSectionModel::deleteAll(int question, std::optional<int> category) {
    const auto ask = [this](int row) {
        return ctx.dialogs.message(LanguageUS::MessageText(row), Buttons::OKCancel, Answer::Cancel,
                                   Icon::Exclamation) == Answer::OK;
    };
    if (!ask(question) || !ask(81)) return false;
    QString sql = QStringLiteral("DELETE * FROM tt WHERE fSec=%1").arg(sectionId());
    if (category) sql += QStringLiteral(" And fG1=%1").arg(*category);
    ctx.store.Execute(sql + QStringLiteral(" WITH OWNERACCESS OPTION;"));
    recordChanged = false;
    listSelect_Initialize();
    return true;
}

} // namespace km
