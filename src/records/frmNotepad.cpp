#include "records/frmNotepad.h"

#include "records/SortedSection.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"
#include "shell/SessionGuards.h"
#include "store/CATEGORIES.h"
#include "store/CONVERSION.h"
#include "store/Startvariables.h"
#include "store/db.h"
#include "store/frmEditCategories.h"

namespace km {

namespace {

const QList<Record_Put::Field> kLayout = {
    {frmNotepad::UserNumber, Record_Put::tByte},     {frmNotepad::Private, Record_Put::tBoolean},
    {frmNotepad::DateCreated, Record_Put::tMinutes}, {frmNotepad::DateLastModified, Record_Put::tMinutes},
    {frmNotepad::Subject, Record_Put::tText},        {frmNotepad::Memo, Record_Put::tMemo}};

QString dateShown(const QString &slot) {
    const QDateTime d = CONVERSION::ParseDateText(slot);
    return d.isValid() ? d.toString(QStringLiteral("yyyy-MM-dd HH:mm")) : QString();
}

} // namespace

void frmEditNotepad::cmdEsc_Click() {
    if (changed && ShowMessage(20, Buttons::YesNo, Answer::No, Icon::Question) != Answer::Yes) return;
    close(false);
}

void frmEditNotepad::cmdEditCat_Click() {
    const int id = CATEGORIES::CategoryOfSelector(ctlCategory);
    frmEditCategories::Edit(frmNotepad::Section);
    CATEGORIES::FillCategorySelector(ctlCategory, frmNotepad::Section, false, true, false);
    CATEGORIES::SelectCategory(ctlCategory, id);
}

frmNotepad::frmNotepad() = default;

void frmNotepad::Form_Load() {
    CATEGORIES::FillCategorySelector(cboCategories, Section, true, true, true);
    CATEGORIES::FillCategorySelector(cboCategory, Section, false, true, false);
    // The filter comes back where it was left: the stored value is the place
    // in the selector, so a new store starts on its first entry, "All".
    // The preference "Initial category listing" (0 "Last Used", 1 "All").
    const int last = Startvariables::state().CatShow == 0 ? Startvariables::state().LastCategory[2] : 0;
    cboCategories.setListIndex(last >= 0 && last < cboCategories.ListCount() ? last : 0);
    cboCategories.setText(cboCategories.List(cboCategories.ListIndex()));
    listSelect_Initialize();
}

bool frmNotepad::menuCommand(const QString &name, int, const QString &) {
    if (name == QLatin1String("mnuMemoAdd"))
        cmdAdd_Click();
    else if (name == QLatin1String("mnuMemoEdit"))
        cmdEdit_Click();
    else if (name == QLatin1String("mnuMemoDeleteSelected"))
        cmdDelete_Click();
    else if (name == QLatin1String("mnuMemoDeleteCategory") || name == QLatin1String("mnuMemoDeleteAll"))
        mnuMemoDeleteAll();
    else
        return false;
    return true;
}

std::optional<int> frmNotepad::Filter() const {
    const int id = CATEGORIES::CategoryOfSelector(cboCategories);
    if (id == CATEGORIES::CategoryAll || id == CATEGORIES::CategoryAllUnsigned) return std::nullopt;
    return id;
}

void frmNotepad::clearPane() {
    RowId = 0;
    txtSubject.clear();
    txtInput.clear();
    ctlPrivate = false;
    ctlDateCreated.clear();
    ctlLastModified.clear();
    recordChanged = false;
    newRecord = false;
    Values.clear();
}

void frmNotepad::listSelect_Initialize(qint64 select) {
    SessionGuards::SetBusy(this, true);
    const int index = records::FillList(
        ListSelect, records::SortedList(Section, Filter(), PrivateBit, SessionGuards::state().ShowPrivate),
        select);
    SessionGuards::SetBusy(this, false);
    if (index < 0)
        clearPane();
    else
        showRecord(ListSelect.ItemData(index));
}

void frmNotepad::askStoreChanged() {
    if (!recordChanged) return;
    if (ShowMessage(26, Buttons::YesNo, Answer::Yes, Icon::Question) == Answer::Yes) SaveRecord();
    recordChanged = false;
}

void frmNotepad::listSelect_Click(int index) {
    askStoreChanged();
    if (index < 0 || index >= ListSelect.ListCount()) return;
    ListSelect.setListIndex(index);
    showRecord(ListSelect.ItemData(index));
}

void frmNotepad::showRecord(qint64 id) {
    clearPane();
    const records::StoredRecord r = records::ReadRecord(id);
    if (!r.found) return;
    RowId = id;
    Values = r.values;
    txtSubject = r.values.value(Subject);
    txtInput = r.values.value(Memo);
    ctlPrivate = r.values.value(Private) == QLatin1String("True");
    ctlDateCreated = QStringLiteral("Date created: ") + dateShown(r.values.value(DateCreated));
    ctlLastModified = QStringLiteral("Last modified: ") + dateShown(r.values.value(DateLastModified));
    CATEGORIES::SelectCategory(cboCategory, r.g1);
}

void frmNotepad::cboCategories_Click() {
    askStoreChanged();
    const int id = CATEGORIES::CategoryOfSelector(cboCategories);
    if (id == CATEGORIES::CategoryEdit) {
        cmdEditCat_Click();
        return;
    }
    Startvariables::state().LastCategory[2] = static_cast<qint16>(cboCategories.ListIndex());
    listSelect_Initialize();
}

bool frmNotepad::runEditor(const QString &subject) {
    frmEditNotepad editor;
    editor.ctlSubject = subject;
    editor.ctlNote = txtInput;
    editor.ctlPrivate = ctlPrivate;
    CATEGORIES::FillCategorySelector(editor.ctlCategory, Section, false, true, false);
    CATEGORIES::SelectCategory(editor.ctlCategory, CATEGORIES::CategoryOfSelector(cboCategory));
    if (!ui().showModal(editor)) return false;
    txtSubject = editor.ctlSubject;
    txtInput = editor.ctlNote;
    ctlPrivate = editor.ctlPrivate;
    CATEGORIES::SelectCategory(cboCategory, CATEGORIES::CategoryOfSelector(editor.ctlCategory));
    return true;
}

void frmNotepad::cmdAdd_Click() {
    askStoreChanged();
    const int category = Filter().value_or(0);
    const auto subject = ui().inputBox(QStringLiteral("Memo"), QStringLiteral("Enter subject:"));
    if (!subject || subject->trimmed().isEmpty()) return;
    clearPane();
    newRecord = true;
    CATEGORIES::SelectCategory(cboCategory, category);
    if (!runEditor(subject->trimmed())) {
        newRecord = false;
        listSelect_Initialize();
        return;
    }
    const qint64 id = SaveRecord();
    listSelect_Initialize(id);
}

void frmNotepad::cmdEdit_Click() {
    if (RowId == 0) {
        ShowMessage(100, Buttons::OK, Answer::OK, Icon::Exclamation);
        return;
    }
    if (!runEditor(txtSubject)) return;
    const qint64 id = SaveRecord();
    listSelect_Initialize(id);
}

qint64 frmNotepad::SaveRecord() {
    records::SaveRequest request;
    request.section = Section;
    request.rowId = newRecord ? 0 : RowId;
    request.layout = kLayout;
    request.values = {QVariant(), ctlPrivate, QVariant(), QVariant(), txtSubject, txtInput};
    // The creation date of an old memo stays as it was.
    if (!newRecord && RowId != 0) request.values[DateCreated] = Values.value(DateCreated);
    request.title = txtSubject;
    request.g1 = CATEGORIES::CategoryOfSelector(cboCategory);
    request.userSlot = UserNumber;
    request.createdSlot = DateCreated;
    request.modifiedSlot = DateLastModified;
    const qint64 id = records::SaveSortedRecord(request);
    if (id) {
        RowId = id;
        newRecord = false;
        recordChanged = false;
    }
    return id;
}

void frmNotepad::cmdDelete_Click() {
    const int index = ListSelect.ListIndex();
    if (index < 0) {
        ShowMessage(100, Buttons::OK, Answer::OK, Icon::Exclamation);
        return;
    }
    const std::optional<qint64> next = records::ConfirmAndDelete(ListSelect, 27);
    if (!next) return;
    recordChanged = false;
    listSelect_Initialize(*next);
}

void frmNotepad::mnuMemoDeleteAll() {
    const std::optional<int> filter = Filter();
    if (ShowMessage(filter ? 102 : 80, Buttons::OKCancel, Answer::Cancel, Icon::Exclamation) != Answer::OK)
        return;
    if (ShowMessage(81, Buttons::OKCancel, Answer::Cancel, Icon::Exclamation) != Answer::OK) return;
    QString sql = QStringLiteral("DELETE * FROM tt WHERE fSec=%1").arg(Section);
    if (filter) sql += QStringLiteral(" And fG1=%1").arg(*filter);
    db::Store().Execute(sql + QStringLiteral(" WITH OWNERACCESS OPTION;"));
    recordChanged = false;
    listSelect_Initialize();
}

void frmNotepad::cmdEditCat_Click() {
    const int filter = CATEGORIES::CategoryOfSelector(cboCategories);
    const int shown = CATEGORIES::CategoryOfSelector(cboCategory);
    frmEditCategories::Edit(Section);
    CATEGORIES::FillCategorySelector(cboCategories, Section, true, true, true);
    CATEGORIES::FillCategorySelector(cboCategory, Section, false, true, false);
    CATEGORIES::SelectCategory(cboCategories,
                               filter == CATEGORIES::CategoryEdit ? CATEGORIES::CategoryAll : filter);
    CATEGORIES::SelectCategory(cboCategory, shown);
    listSelect_Initialize(RowId);
}

} // namespace km
