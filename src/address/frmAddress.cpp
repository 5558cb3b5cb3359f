#include "address/frmAddress.h"

#include <QFile>

#include "store/CATEGORIES.h"
#include "store/CONVERSION.h"
#include "store/Passphrase.h"
#include "store/Startvariables.h"
#include "store/frmEditCategories.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"
#include "ui/Services.h"

namespace km {

using namespace Address;

namespace {

// The editor's label list: its order is not the code order.
const std::pair<const char *, int> kLabels[] = {{"Work", 1},    {"Home", 2},    {"Mobile", 8},
                                                {"Fax", 3},     {"Email", 5},   {"Website", 9},
                                                {"Main", 6},    {"Pager", 7},   {"Other", 4}};

bool editedByControl(int index) {
    return index >= Priority && index <= Com1 + 8 && FieldTable()[static_cast<size_t>(index)].hasControl;
}

QString birthdayShown(const QString &stored) {
    const QDateTime d = CONVERSION::ParseDateText(stored);
    return d.isValid() ? d.date().toString(QStringLiteral("yyyy-MM-dd")) : QString();
}

// The typed birthday as a date: ISO or the short forms of the locale.
std::optional<QDate> parseBirthday(const QString &typed) {
    const QString t = typed.trimmed();
    for (const QString &format : {QStringLiteral("yyyy-MM-dd"), QStringLiteral("M/d/yyyy"),
                                  QStringLiteral("d.M.yyyy"), QStringLiteral("M/d/yy")}) {
        const QDate d = QDate::fromString(t, format);
        if (d.isValid()) return d;
    }
    const QDateTime dt = CONVERSION::ParseDateText(t);
    if (dt.isValid()) return dt.date();
    return std::nullopt;
}

class FileSink : public ExportSink {
public:
    explicit FileSink(QFile &file) : m_file(file) {}
    void write(const QByteArray &bytes) override { m_file.write(bytes); }

private:
    QFile &m_file;
};

} // namespace

// ---- The editor ----

frmEditAddress::frmEditAddress(Dialogs &dialogs) : RecordEditor(dialogs) {
    for (ListBox &list : ctlComLabel)
        for (const auto &[text, code] : kLabels)
            list.AddItem(QString::fromLatin1(text), code);
    for (int n = 1; n <= 9; ++n)
        setLabelCode(n, DefaultLabel(n));
}

int frmEditAddress::labelCode(int slot) const {
    const ListBox &list = ctlComLabel.at(static_cast<size_t>(slot - 1));
    return list.ListIndex() >= 0 ? list.ItemData(list.ListIndex()) : 0;
}

void frmEditAddress::setLabelCode(int slot, int code) {
    ListBox &list = ctlComLabel.at(static_cast<size_t>(slot - 1));
    for (int i = 0; i < list.ListCount(); ++i)
        if (list.ItemData(i) == code) list.setListIndex(i);
}

int frmEditAddress::PageOf(const Record &r) {
    for (const auto &[page, street] : {std::pair{0, int(HomeAddressStreet)}, std::pair{1, int(BusinessAddressStreet)},
                                       std::pair{2, int(OtherAddressStreet)}})
        for (int f = 0; f < 5; ++f)
            if (!r.value(street + f).isEmpty()) return page;
    return 2;
}

void frmEditAddress::FileAsCandidates() {
    int wish = 10;
    if (!ctlFileAs.Text().isEmpty()) {
        for (int i = 0; i < ctlFileAs.ListCount(); ++i)
            if (ctlFileAs.List(i) == ctlFileAs.Text()) wish = ctlFileAs.ItemData(i);
    }
    for (int i = ctlFileAs.ListCount() - 1; i >= 0; --i)
        if (ctlFileAs.ItemData(i) >= 10 && ctlFileAs.ItemData(i) <= 15) ctlFileAs.RemoveItem(i);
    ctlFileAs.setText(QString());
    const QString F = ctl.value(FirstName), L = ctl.value(LastName), C = ctl.value(CompanyName),
                  T = ctl.value(HomeAddressStreet + City);
    if (F.isEmpty() && L.isEmpty() && C.isEmpty()) return;
    std::array<QString, 6> slot;
    if (!F.isEmpty() || !L.isEmpty())
        slot[0] = L.isEmpty() ? F : F.isEmpty() ? L : L + QStringLiteral(", ") + F;
    if (!F.isEmpty() && !L.isEmpty()) slot[1] = F + QLatin1Char(' ') + L;
    if (!C.isEmpty()) slot[2] = C;
    const QString lastFirst = L + (F.isEmpty() ? QString() : QStringLiteral(" ")) + F;
    // Slot 14 (company, first and last name) is built and at once overwritten
    // by slot 13's form: it never holds anything.
    if (!C.isEmpty() && !L.isEmpty()) slot[3] = lastFirst + QStringLiteral(", ") + C;
    if (!T.isEmpty() && !L.isEmpty()) slot[5] = lastFirst + QStringLiteral(", ") + T;
    if (C.isEmpty()) wish = 10;
    else if (L.isEmpty()) wish = 12;
    if (T.isEmpty()) wish = 10;
    for (int i = 0; i < 6; ++i)
        if (!slot[static_cast<size_t>(i)].isEmpty()) ctlFileAs.AddItem(slot[static_cast<size_t>(i)], 10 + i);
    for (int i = 0; i < ctlFileAs.ListCount(); ++i)
        if (ctlFileAs.ItemData(i) == wish) ctlFileAs.setListIndex(i);
}

void frmEditAddress::ctlLastName_CtrlDown(bool textOutsideSelection) {
    const QString last = ctl.value(LastName);
    if (!ctlFileAs.Text().contains(last) && textOutsideSelection) FileAsCandidates();
}

void frmEditAddress::DisplayCom_Click(int slot) {
    // A change by the mouse: no question on Esc, but the record differs.
    ctlComDisplay = QString::number(slot);
}

bool frmEditAddress::ctlBirthday_Validate() {
    if (ctlBirthday.trimmed().isEmpty() || parseBirthday(ctlBirthday)) return true;
    m_dialogs.message(LanguageUS::MessageText(49), Buttons::OK, Answer::OK, Icon::Exclamation);
    return false;
}

void frmEditAddress::cmdOK_Click() {
    if (ctlFileAs.Text().isEmpty()) FileAsCandidates();
    if (ctlFileAs.Text().isEmpty()) {
        m_dialogs.message(LanguageUS::MessageText(15), Buttons::OK, Answer::OK, Icon::Exclamation);
        return;
    }
    if (!ctlBirthday_Validate()) return;
    closeEditor(true);
}

// ---- The window ----

frmAddress::frmAddress(const SectionContext &context) : SortedSectionModel(context) {}

void frmAddress::Form_Load() {
    refillCategories();
    const int last = Startvariables::state().CatShow == 0 ? Startvariables::state().LastCategory[1] : 0;
    cboCategories.setListIndex(last >= 0 && last < cboCategories.ListCount() ? last : 0);
    listSelect_Initialize();
}

void frmAddress::refillCategories() {
    const int filter = CATEGORIES::CategoryOfSelector(cboCategories);
    CATEGORIES::FillCategorySelector(cboCategories, Section, true, true, true);
    CATEGORIES::SelectCategory(cboCategories,
                               filter == CATEGORIES::CategoryEdit ? CATEGORIES::CategoryAll : filter);
    if (cboCategories.ListIndex() < 0) cboCategories.setListIndex(0);
}

std::optional<int> frmAddress::Filter() const {
    const int id = CATEGORIES::CategoryOfSelector(cboCategories);
    if (id == CATEGORIES::CategoryAll || id == CATEGORIES::CategoryAllUnsigned ||
        id == CATEGORIES::CategoryEdit)
        return std::nullopt;
    return id;
}

bool frmAddress::menuCommand(const QString &name, int, const QString &) {
    if (name == QLatin1String("mnuAddressAdd"))
        cmdAdd_Click();
    else if (name == QLatin1String("mnuAddressEdit") || name == QLatin1String("mnuAddressRCEdit"))
        cmdEdit_Click();
    else if (name == QLatin1String("mnuAddressDeleteSelected") || name == QLatin1String("mnuAddressRCDelete"))
        cmdDelete_Click();
    else if (name == QLatin1String("mnuAddressDeleteCategory"))
        mnuAddressDeleteAll(1);
    else if (name == QLatin1String("mnuAddressDeleteAll"))
        mnuAddressDeleteAll(0);
    else if (name == QLatin1String("mnuAddressExportTab"))
        ExportAddressTabDelimited();
    else
        return paneMenu.Click(name, ctx.shell, ctx.dialogs, fileAs);
    return true;
}

QList<SortedSection::ListItem> frmAddress::readList() {
    QList<SortedSection::ListItem> items;
    contacts.clear();
    const bool showPrivate = ctx.shell.privateShown();
    for (const ListRow &row : ReadList(ctx.store, Filter())) {
        if (row.fileAs.isEmpty() || row.fileAs == QString(QChar(0))) continue;
        if (row.isPrivate && !showPrivate) continue;
        items.append({row.id, row.fileAs, row.contactLine});
        contacts.append(row.contactLine);
    }
    return items;
}

void frmAddress::clearFields() {
    showName.clear();
    showContact = {};
    fileAs.clear();
    category = 0;
    paneEnabled = listSelect.ListCount() > 0;
}

void frmAddress::showFields(const SortedSection::StoredRecord &r) {
    record = EmptyRecord();
    for (int i = 0; i < FieldCount && i < r.values.size(); ++i)
        record[i] = r.values.at(i);
    category = r.g1;
    const int index = listSelect.ListIndex();
    fileAs = index >= 0 ? listSelect.List(index) : QString();
    compose();
}

void frmAddress::compose() {
    Startvariables::LoadUserFieldNames(Section);
    const auto &names = Startvariables::state().UserFieldNames;
    showName = NameLine(record, fileAs);
    showContact = ComposePane(record, QStringList(names.begin(), names.end()));
    paneEnabled = listSelect.ListCount() > 0;
}

SortedSection::SaveRequest frmAddress::saveRequest() const {
    return SaveRequestOf(record, fileAs, category);
}

bool frmAddress::runEditor(bool isNew) {
    frmEditAddress editor(ctx.dialogs);
    Startvariables::LoadUserFieldNames(Section);
    for (int u = 0; u < 4; ++u)
        editor.lblUserDef[static_cast<size_t>(u)] = Startvariables::state().UserFieldNames[static_cast<size_t>(u)];
    CATEGORIES::FillCategorySelector(editor.ctlCategory, Section, false, true, false);
    if (isNew) {
        CATEGORIES::SelectCategory(editor.ctlCategory, Filter().value_or(0));
    } else {
        for (int i = Priority; i <= Com1 + 8; ++i)
            if (editedByControl(i)) editor.ctl[i] = record.value(i);
        for (int n = 1; n <= 9; ++n)
            editor.setLabelCode(n, ComLabel(record, n));
        editor.ctl[Notes] = record.value(Notes);
        editor.ctlPrivate = record.value(Private) == QLatin1String("True");
        editor.ctlAddress = frmEditAddress::PageOf(record);
        editor.ctlComDisplay = record.value(ComDisplay).isEmpty() ? QStringLiteral("0") : record.value(ComDisplay);
        editor.ctlBirthday = birthdayShown(record.value(Birthday));
        CATEGORIES::SelectCategory(editor.ctlCategory, category);
        editor.ctlID = QString::number(RowId);
        editor.ctlFileAs.setText(fileAs);
    }
    editor.changed = false;
    if (!ctx.dialogs.showModal(editor)) return false;

    // Only the fields with controls are read back; the others keep what the
    // working record holds (a new entry thus carries the last record's).
    Record next = record;
    next[Private] = editor.ctlPrivate ? QStringLiteral("True") : QStringLiteral("False");
    for (int i = Priority; i <= Com1 + 8; ++i)
        if (editedByControl(i)) next[i] = editor.ctl.value(i);
    next[Notes] = editor.ctl.value(Notes);
    if (const auto d = parseBirthday(editor.ctlBirthday))
        next[Birthday] = QDateTime(*d, QTime(0, 0)).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    else
        next[Birthday].clear();
    for (int n = 1; n <= 9; ++n)
        next[ComLabel1 + n - 1] = QString::number(editor.labelCode(n));
    next[ComDisplay] = editor.ctlComDisplay;
    NormaliseSlots(next);
    int chosen = CATEGORIES::CategoryOfSelector(editor.ctlCategory);
    if (chosen < 0 || editor.ctlCategory.Text().isEmpty()) chosen = 0;
    const bool differs = isNew || editor.changed || next != record || chosen != category ||
                         editor.ctlFileAs.Text() != fileAs;
    record = next;
    category = chosen;
    fileAs = editor.ctlFileAs.Text();
    refillCategories();
    return differs;
}

void frmAddress::afterSave(qint64 id) {
    if (id == 0) {
        listSelect_Initialize(RowId);
        return;
    }
    const std::optional<int> filter = Filter();
    if (filter && *filter != category) {
        CATEGORIES::SelectCategory(cboCategories, category);
        Startvariables::state().LastCategory[1] = static_cast<qint16>(cboCategories.ListIndex());
    }
    listSelect_Initialize(id);
}

void frmAddress::cmdAdd_Click() {
    askStoreChanged();
    listSelect.setListIndex(-1);
    const Record carried = record;
    // A new entry empties the fields that have controls; the others stay.
    for (int i = Private; i < FieldCount; ++i)
        if (FieldTable()[static_cast<size_t>(i)].hasControl) record[i].clear();
    const int keepRow = static_cast<int>(RowId);
    clearPane();
    newRecord = true;
    fileAs.clear();
    category = Filter().value_or(0);
    if (!runEditor(true)) {
        newRecord = false;
        record = carried;
        listSelect_Initialize(keepRow);
        return;
    }
    afterSave(SaveRecord());
}

void frmAddress::cmdEdit_Click() {
    if (RowId == 0 || listSelect.ListIndex() < 0) return;
    const QString oldFileAs = fileAs, oldContact = ContactLine(record);
    const int oldCategory = category;
    if (!runEditor(false)) return;
    const qint64 id = SaveRecord();
    if (id && fileAs == oldFileAs && ContactLine(record) == oldContact && category == oldCategory) {
        compose();
        return;
    }
    afterSave(id);
}

void frmAddress::cboCategories_Click() {
    if (CATEGORIES::CategoryOfSelector(cboCategories) == CATEGORIES::CategoryEdit) {
        cmdEditCat_Click();
        return;
    }
    Startvariables::state().LastCategory[1] = static_cast<qint16>(cboCategories.ListIndex());
    listSelect_Initialize();
}

void frmAddress::cmdEditCat_Click() {
    frmEditCategories::Edit(Section);
    refillCategories();
    listSelect_Initialize(RowId);
}

void frmAddress::mnuAddressDeleteAll(int scope) {
    if (listSelect.ListCount() == 0) return;
    const std::optional<int> filter = scope == 1 ? Filter() : std::nullopt;
    deleteAll(filter ? 102 : 80, filter);
}

void frmAddress::ExportAddressTabDelimited() {
    // The file holds every address in clear, private ones too.
    if (!Passphrase::VerifyPassphrase(false)) return;
    FileDialogSpec spec;
    spec.title = LanguageUS::MessageText(88) + QStringLiteral(" Export Address");
    spec.filters = {QStringLiteral("Tab-delimited Address file (kmdAddress_Tab.txt)")};
    spec.fileName = QStringLiteral("kmdAddress_Tab.txt");
    spec.overwritePrompt = true;
    const auto path = ctx.dialogs.saveFile(spec);
    if (!path || path->isEmpty()) return;
    ctx.shell.setBusy(this, true);
    QFile file(*path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        // The owner's alone, as the store is.
        file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        FileSink sink(file);
        WriteTabDelimited(ctx.store, sink);
        file.close();
    }
    ctx.shell.setBusy(this, false);
}

void frmAddress::GoToRecord(qint64 id) {
    CATEGORIES::SelectCategory(cboCategories, CATEGORIES::CategoryAll);
    listSelect_Initialize(id);
}

} // namespace km
