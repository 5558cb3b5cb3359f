#include "records/frmClassified.h"

#include "records/SortedSection.h"
#include "ui/Dialogs.h"
#include "ui/LanguageUS.h"
#include "ui/Services.h"
#include "shell/SessionGuards.h"
#include "store/CONVERSION.h"

namespace km {

namespace {

const QList<Record_Put::Field> kLayout = {{frmClassified::n0, Record_Put::tText},
                                          {frmClassified::n1, Record_Put::tText},
                                          {frmClassified::n2, Record_Put::tText},
                                          {frmClassified::n3, Record_Put::tText},
                                          {frmClassified::n4, Record_Put::tText},
                                          {frmClassified::notes, Record_Put::tMemo},
                                          {frmClassified::DateLastModified, Record_Put::tMinutes},
                                          {frmClassified::Private, Record_Put::tBoolean},
                                          {frmClassified::UserName, Record_Put::tByte}};

// Labels, visibility and masks of the five fields for a kind.
void labelsOf(int kind, bool plain, std::array<QString, 5> &labels, std::array<bool, 5> &visible,
              std::array<bool, 5> &masked) {
    const ConfidentialKind *k = KindOf(kind);
    for (int i = 0; i < 5; ++i) {
        const bool shown = k && i < k->labels.size();
        labels[static_cast<size_t>(i)] = shown ? k->labels.at(i) : QString();
        visible[static_cast<size_t>(i)] = shown;
        masked[static_cast<size_t>(i)] = shown && !plain && MasksField(k->labels.at(i));
    }
}

} // namespace

const QList<ConfidentialKind> &ConfidentialKinds() {
    static const QList<ConfidentialKind> kinds = {
        {1,
         "Web Login",
         {"Name", "URL", "User ID", "Password"},
         "access to web sites, e-commerce, discussion groups"},
        {2, "Email Accounts", {"Name", "Email Address", "User ID", "Password", "POP/SMTP Server"}, ""},
        {3,
         "ISP Accounts",
         {"Name", "URL", "Login / User ID", "Password"},
         "Login parameters to the Internet (Internet Service Providers)"},
        {4, "FTP Servers", {"Name", "URL", "User ID", "Password"}, ""},
        {5,
         "Bank Accounts",
         {"Bank", "Bank Address", "Bank Routing Number", "Account Holder", "Account Number "},
         ""},
        {6, "Online Banking", {"Bank", "URL", "User ID", "Password"}, ""},
        {7, "Credit Cards", {"Name/Type", "Number", "Exp. Date", "Security Code", "PIN Code"}, ""},
        {8,
         "ATM/PIN Cards",
         {"Card Name", "Card Number", "Bank", "ATM/PIN Code"},
         "Cash Cards, Bankomat etc."},
        {9, "Serial Numbers", {"Product Name", "Description", "Serial Number", "URL"}, ""},
        {10, "Software Keys", {"Product Name", "Serial Number", "Licensed To", "Software Key"}, ""},
        {11, "Mobile Phone SIM", {"Phone Provider", "Phone Number", "PIN", "PUK"}, ""},
        {12,
         "Documents/Data",
         {"Person", "Document / Type of Data", "Number", "Place/Date Issued"},
         "Important Document Numbers (ID card, driver's license, etc.), important personal data"},
        {13, "Membership", {"Organization", "Person", "Membership Number", "URL"}, ""},
        {14, "Insurance", {"Description", "Company", "Police Number", "Contact"}, ""},
        {15, "Other", {"Name", "Description", "Other Info", "Password/PIN"}, ""},
        {16, "E-Commerce", {"Company", "URL", "User ID", "Password", "Customer Number"}, ""},
    };
    return kinds;
}

const ConfidentialKind *KindOf(int id) {
    if (id < 1 || id > 16) return nullptr;
    return &ConfidentialKinds().at(id - 1);
}

bool MasksField(const QString &label) {
    return label.contains(QLatin1String("password"), Qt::CaseInsensitive) ||
           label.contains(QLatin1String("pin"), Qt::CaseInsensitive);
}

QString frmEditConfidential::caption() const {
    const ConfidentialKind *k = KindOf(kind);
    return k ? k->caption : QString();
}

void frmEditConfidential::cmdEsc_Click() {
    if (changed && ShowMessage(20, Buttons::YesNo, Answer::No, Icon::Question) != Answer::Yes) return;
    close(false);
}

void frmEditText::cmdEsc_Click() {
    if (changed && ShowMessage(20, Buttons::YesNo, Answer::No, Icon::Question) != Answer::Yes) return;
    close(false);
}

void frmClassified::Form_Load() {
    cat_Click(cat);
}

void frmClassified::applyLabels() {
    labelsOf(cat, chkPlainPW, lblTxt, visible, masked);
}

void frmClassified::askStoreChanged() {
    if (!recordChanged) return;
    if (ShowMessage(26, Buttons::YesNo, Answer::Yes, Icon::Question) == Answer::Yes) SaveRecord();
    recordChanged = false;
}

void frmClassified::cat_Click(int kind) {
    askStoreChanged();
    cat = kind;
    applyLabels();
    const ConfidentialKind *k = KindOf(kind);
    lblCategory = k ? QStringLiteral("Category:  ") + k->caption : QString();
    listSelect_Initialize();
}

void frmClassified::chkPlainPW_Click() {
    applyLabels();
}

void frmClassified::clearPane() {
    RowId = 0;
    for (QString &t : txtCtl)
        t.clear();
    txtNotes.clear();
    ctlPrivate = false;
    lblLastModified.clear();
    recordChanged = false;
    newRecord = false;
}

void frmClassified::listSelect_Initialize(qint64 select) {
    listSelect.Clear();
    clearPane();
    if (!KindOf(cat)) return;
    SessionGuards::SetBusy(this, true);
    const int index = records::FillList(
        listSelect, records::SortedList(Section, cat, PrivateBit, SessionGuards::state().ShowPrivate),
        select);
    SessionGuards::SetBusy(this, false);
    if (index >= 0) showRecord(listSelect.ItemData(index));
}

void frmClassified::listSelect_Click(int index) {
    askStoreChanged();
    if (index < 0 || index >= listSelect.ListCount()) return;
    listSelect.setListIndex(index);
    showRecord(listSelect.ItemData(index));
}

void frmClassified::showRecord(qint64 id) {
    clearPane();
    const records::StoredRecord r = records::ReadRecord(id);
    if (!r.found) return;
    RowId = id;
    for (int i = 0; i < 5; ++i)
        txtCtl[static_cast<size_t>(i)] = r.values.value(i);
    txtNotes = r.values.value(notes);
    ctlPrivate = r.values.value(Private) == QLatin1String("True");
    const QDateTime d = CONVERSION::ParseDateText(r.values.value(DateLastModified));
    lblLastModified = QStringLiteral("Last modified: ") +
                      (d.isValid() ? d.toString(QStringLiteral("yyyy-MM-dd HH:mm")) : QString());
}

bool frmClassified::runEditor() {
    frmEditConfidential editor;
    editor.kind = cat;
    editor.txtCtl = txtCtl;
    editor.txtNotes = txtNotes;
    editor.ctlPrivate = ctlPrivate;
    labelsOf(cat, chkPlainPW, editor.lblTxt, editor.visible, editor.masked);
    if (!ui().showModal(editor)) return false;
    txtCtl = editor.txtCtl;
    txtNotes = editor.txtNotes;
    ctlPrivate = editor.ctlPrivate;
    return true;
}

void frmClassified::cmdAdd_Click() {
    askStoreChanged();
    if (!KindOf(cat)) return;
    clearPane();
    newRecord = true;
    if (!runEditor() || txtCtl[0].trimmed().isEmpty()) {
        // Without a name there is nothing to store.
        listSelect_Initialize();
        return;
    }
    listSelect_Initialize(SaveRecord());
}

void frmClassified::cmdEdit_Click() {
    if (RowId == 0) return;
    if (!runEditor()) return;
    listSelect_Initialize(SaveRecord());
}

qint64 frmClassified::SaveRecord() {
    records::SaveRequest request;
    request.section = Section;
    request.rowId = newRecord ? 0 : RowId;
    request.layout = kLayout;
    request.values = {txtCtl[0], txtCtl[1], txtCtl[2],  txtCtl[3],
                      txtCtl[4], txtNotes,  QVariant(), ctlPrivate};
    request.title = txtCtl[0];
    request.g1 = cat;
    request.modifiedSlot = DateLastModified;
    request.userSlot = UserName;
    const qint64 id = records::SaveSortedRecord(request);
    if (id) {
        RowId = id;
        newRecord = false;
        recordChanged = false;
    }
    return id;
}

void frmClassified::cmdDelete_Click() {
    if (const std::optional<qint64> next = records::ConfirmAndDelete(listSelect, 79))
        listSelect_Initialize(*next);
}

void frmClassified::CopyField(int field) {
    const QString text =
        field == 5 ? txtNotes : (field >= 0 && field < 5 ? txtCtl[static_cast<size_t>(field)] : QString());
    ActiveControl control{true, text, 0, static_cast<int>(text.size())};
    if (frmMDI *mdi = MainWindow()) {
        mdi->mnuEditCopy_Click(control);
        return;
    }
    clipboard().clear();
    SessionGuards::ArmClipboardWipe();
    clipboard().setText(text, true);
}

} // namespace km
