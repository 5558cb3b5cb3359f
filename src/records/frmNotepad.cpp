#include "records/frmNotepad.h"

#include "store/CATEGORIES.h"
#include "store/CONVERSION.h"
#include "store/Startvariables.h"
#include "store/frmEditCategories.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"

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

void frmEditNotepad::cmdEditCat_Click() {
    const int before = CATEGORIES::CategoryOfSelector(ctlCategory);
    const int count = ctlCategory.ListCount();
    const bool saved = frmEditCategories::Edit(frmNotepad::Section);
    CATEGORIES::FillCategorySelector(ctlCategory, frmNotepad::Section, false, true, false);
    // A category made just now is the one the person wants for this memo.
    if (saved && ctlCategory.ListCount() > count)
        ctlCategory.setListIndex(ctlCategory.ListCount() - 1);
    else
        CATEGORIES::SelectCategory(ctlCategory, before);
    if (CATEGORIES::CategoryOfSelector(ctlCategory) != before) changed = true;
}

frmNotepad::frmNotepad(const SectionContext &context) : SortedSectionModel(context) {}

void frmNotepad::Form_Load() {
    refillCategories();
    // The filter comes back where it was left: the stored value is the place
    // in the selector, so a new store starts on its first entry, "All".
    // The preference "Initial category listing" (0 "Last Used", 1 "All").
    const int last = Startvariables::state().CatShow == 0 ? Startvariables::state().LastCategory[2] : 0;
    cboCategories.setListIndex(last >= 0 && last < cboCategories.ListCount() ? last : 0);
    listSelect_Initialize();
}

void frmNotepad::refillCategories() {
    const int filter = CATEGORIES::CategoryOfSelector(cboCategories);
    CATEGORIES::FillCategorySelector(cboCategories, Section, true, true, true);
    CATEGORIES::FillCategorySelector(cboCategory, Section, false, true, false);
    CATEGORIES::SelectCategory(cboCategories,
                               filter == CATEGORIES::CategoryEdit ? CATEGORIES::CategoryAll : filter);
    if (cboCategories.ListIndex() < 0) cboCategories.setListIndex(0);
    CATEGORIES::SelectCategory(cboCategory, m_category);
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
    if (id == CATEGORIES::CategoryAll || id == CATEGORIES::CategoryAllUnsigned ||
        id == CATEGORIES::CategoryEdit)
        return std::nullopt;
    return id;
}

bool frmNotepad::setCategory(int id) {
    CATEGORIES::SelectCategory(cboCategory, id);
    if (CATEGORIES::CategoryOfSelector(cboCategory) != id) {
        CATEGORIES::SelectCategory(cboCategory, m_category);
        return false;
    }
    m_category = id;
    return true;
}

void frmNotepad::clearFields() {
    txtSubject.clear();
    txtInput.clear();
    ctlPrivate = false;
    ctlDateCreated.clear();
    ctlLastModified.clear();
    m_category = 0;
    CATEGORIES::SelectCategory(cboCategory, 0);
}

void frmNotepad::showFields(const SortedSection::StoredRecord &r) {
    txtSubject = r.values.value(Subject);
    txtInput = r.values.value(Memo);
    ctlPrivate = r.values.value(Private) == QLatin1String("True");
    ctlDateCreated = QStringLiteral("Date created: ") + dateShown(r.values.value(DateCreated));
    ctlLastModified = QStringLiteral("Last modified: ") + dateShown(r.values.value(DateLastModified));
    m_category = r.g1;
    CATEGORIES::SelectCategory(cboCategory, r.g1);
}

SortedSection::SaveRequest frmNotepad::saveRequest() const {
    SortedSection::SaveRequest request;
    request.layout = kLayout;
    request.values = {QVariant(), ctlPrivate, QVariant(), QVariant(), txtSubject, txtInput};
    // The creation date of an old memo stays as it was.
    if (!newRecord && RowId != 0) request.values[DateCreated] = storedValues.value(DateCreated);
    request.title = txtSubject;
    request.g1 = m_category;
    request.userSlot = UserNumber;
    request.createdSlot = DateCreated;
    request.modifiedSlot = DateLastModified;
    return request;
}

void frmNotepad::cboCategories_Click() {
    askStoreChanged();
    if (CATEGORIES::CategoryOfSelector(cboCategories) == CATEGORIES::CategoryEdit) {
        cmdEditCat_Click();
        return;
    }
    Startvariables::state().LastCategory[2] = static_cast<qint16>(cboCategories.ListIndex());
    listSelect_Initialize();
}

bool frmNotepad::runEditor(const QString &subject, int category) {
    frmEditNotepad editor(ctx.dialogs);
    editor.ctlSubject = subject;
    editor.ctlNote = txtInput;
    editor.ctlPrivate = ctlPrivate;
    CATEGORIES::FillCategorySelector(editor.ctlCategory, Section, false, true, false);
    CATEGORIES::SelectCategory(editor.ctlCategory, category);
    if (!ctx.dialogs.showModal(editor)) return false;
    txtSubject = editor.ctlSubject;
    txtInput = editor.ctlNote;
    ctlPrivate = editor.ctlPrivate;
    m_category = CATEGORIES::CategoryOfSelector(editor.ctlCategory);
    // Categories made in the editor show in the filter at once.
    refillCategories();
    return true;
}

void frmNotepad::showSaved(qint64 id) {
    if (id == 0) {
        listSelect_Initialize(RowId);
        return;
    }
    const std::optional<int> filter = Filter();
    if (filter && *filter != m_category) {
        CATEGORIES::SelectCategory(cboCategories, CATEGORIES::CategoryAll);
        Startvariables::state().LastCategory[2] = static_cast<qint16>(cboCategories.ListIndex());
    }
    listSelect_Initialize(id);
}

void frmNotepad::cmdAdd_Click() {
    askStoreChanged();
    const int category = Filter().value_or(0);
    const auto subject = ctx.dialogs.inputBox(QStringLiteral("Memo"), QStringLiteral("Enter subject:"));
    if (!subject || subject->trimmed().isEmpty()) return;
    clearPane();
    newRecord = true;
    if (!runEditor(subject->trimmed(), category)) {
        listSelect_Initialize();
        return;
    }
    showSaved(SaveRecord());
}

void frmNotepad::cmdEdit_Click() {
    if (RowId == 0) {
        ctx.dialogs.message(LanguageUS::MessageText(100), Buttons::OK, Answer::OK, Icon::Exclamation);
        return;
    }
    if (!runEditor(txtSubject, m_category)) return;
    showSaved(SaveRecord());
}

void frmNotepad::mnuMemoDeleteAll() {
    askStoreChanged();
    deleteAllInFilter(Filter() ? 102 : 80);
}

void frmNotepad::cmdEditCat_Click() {
    frmEditCategories::Edit(Section);
    refillCategories();
    listSelect_Initialize(RowId);
}

} // namespace km
