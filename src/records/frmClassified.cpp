#include "records/frmClassified.h"

#include "store/CONVERSION.h"
#include "ui/Dialogs.h"

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

frmClassified::frmClassified(const SectionContext &context) : SortedSectionModel(context) {}

void frmClassified::Form_Load() {
    cat_Click(cat);
}

void frmClassified::applyLabels() {
    labelsOf(cat, chkPlainPW, lblTxt, visible, masked);
}

void frmClassified::cat_Click(int kind) {
    askStoreChanged();
    cat = kind;
    applyLabels();
    const ConfidentialKind *k = KindOf(kind);
    lblCategory = k ? QStringLiteral("Category:  ") + k->caption : QString();
    if (!k) {
        // A kind out of 1 to 16 shows nothing.
        listSelect.Clear();
        clearPane();
        return;
    }
    listSelect_Initialize();
}

void frmClassified::chkPlainPW_Click() {
    applyLabels();
}

void frmClassified::clearFields() {
    for (QString &t : txtCtl)
        t.clear();
    txtNotes.clear();
    ctlPrivate = false;
    lblLastModified.clear();
}

void frmClassified::showFields(const SortedSection::StoredRecord &r) {
    for (int i = 0; i < 5; ++i)
        txtCtl[static_cast<size_t>(i)] = r.values.value(i);
    txtNotes = r.values.value(notes);
    ctlPrivate = r.values.value(Private) == QLatin1String("True");
    const QDateTime d = CONVERSION::ParseDateText(r.values.value(DateLastModified));
    lblLastModified = QStringLiteral("Last modified: ") +
                      (d.isValid() ? d.toString(QStringLiteral("yyyy-MM-dd HH:mm")) : QString());
}

SortedSection::SaveRequest frmClassified::saveRequest() const {
    SortedSection::SaveRequest request;
    request.layout = kLayout;
    request.values = {txtCtl[0], txtCtl[1], txtCtl[2],  txtCtl[3],
                      txtCtl[4], txtNotes,  QVariant(), ctlPrivate};
    request.title = txtCtl[0];
    request.g1 = cat;
    request.modifiedSlot = DateLastModified;
    request.userSlot = UserName;
    return request;
}

bool frmClassified::runEditor() {
    frmEditConfidential editor(ctx.dialogs);
    editor.kind = cat;
    editor.txtCtl = txtCtl;
    editor.txtNotes = txtNotes;
    editor.ctlPrivate = ctlPrivate;
    labelsOf(cat, chkPlainPW, editor.lblTxt, editor.visible, editor.masked);
    if (!ctx.dialogs.showModal(editor)) return false;
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
    const qint64 id = SaveRecord();
    listSelect_Initialize(id ? id : RowId);
}

void frmClassified::CopyField(int field) {
    const QString text = field == notes
                             ? txtNotes
                             : (field >= 0 && field < 5 ? txtCtl[static_cast<size_t>(field)] : QString());
    if (!text.isEmpty()) ctx.shell.copyText(text);
}

bool frmClassified::ShowActionMenu(int field, TextActions::Selection &box) {
    if (field >= 0 && field < 5 && masked[static_cast<size_t>(field)]) {
        box.selStart = 0;
        box.selLength = static_cast<int>(box.text.size());
    }
    return paneMenu.ShowActionMenu(box);
}

bool frmClassified::menuCommand(const QString &name, int, const QString &) {
    return paneMenu.Click(name, ctx.shell, ctx.dialogs, txtCtl[0]);
}

} // namespace km
