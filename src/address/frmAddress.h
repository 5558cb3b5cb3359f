// The address book's window (section 11) and its editor. The list shows File
// as and the contact line of each row without opening a payload (the private
// state comes from the marker in fT3); only the selected row is opened, and
// the pane is a text composed from its record.
#pragma once

#include <array>

#include <QString>
#include <QStringList>

#include "address/AddressRecord.h"
#include "shell/SortedSection.h"
#include "shell/TextActions.h"
#include "ui/Controls.h"

namespace km {

// The editor of one address. It owns no data: the window fills it from the
// working record and reads it back after OK.
class frmEditAddress : public RecordEditor {
public:
    explicit frmEditAddress(Dialogs &dialogs);
    QString caption() const override { return QStringLiteral("Address"); }

    // The record's fields by index, for every field with a control (the
    // texts; Birthday as typed, the labels in ctlComLabel, Private in ctlPrivate).
    Address::Record ctl = Address::EmptyRecord();
    ComboBox ctlFileAs;   // candidates with item data 10 to 15; free text
    ComboBox ctlCategory; // the section's categories, Unfiled included
    int ctlAddress = 2;   // the page shown: 0 Home, 1 Business, 2 Other
    std::array<ListBox, 9> ctlComLabel; // each: the nine labels with their codes
    QString ctlComDisplay;              // the 0-based slot shown in the list
    QString ctlBirthday;                // the date as typed
    bool ctlPrivate = false;
    QString ctlID;
    std::array<QString, 4> lblUserDef; // captions of User1 to User4

    // The candidates of "File as" from the names, the company and the home city.
    void FileAsCandidates();
    // First or last name has lost the focus.
    void txtName_LostFocus() { FileAsCandidates(); }
    // Ctrl went down in the last name: candidates, unless the last name stands
    // in File as already or nothing of the field lies outside its selection.
    void ctlLastName_CtrlDown(bool textOutsideSelection);
    void ctlAddress_Click(int page) { ctlAddress = page; }
    void DisplayCom_Click(int slot);
    // Leaving the birthday: a text that is no date says so and keeps the focus
    // (false); an empty one passes.
    bool ctlBirthday_Validate();
    // File as must not be empty (message 15 keeps the dialog open).
    void cmdOK_Click() override;

    // The code of the label chosen in slot n (1 to 9).
    int labelCode(int slot) const;
    void setLabelCode(int slot, int code);
    // The page a stored record opens on: the first of Home, Business, Other
    // with a field, else Other.
    static int PageOf(const Address::Record &r);
};

class frmAddress : public SortedSectionModel {
public:
    static constexpr int Section = Address::Section;
    static constexpr int PrivateBit = 0;

    explicit frmAddress(const SectionContext &context);
    int sectionCode() const override { return Section; }
    QString sectionMenu() const override { return QStringLiteral("mnuAddress"); }
    QString caption() const override { return QStringLiteral("Address"); }
    void Form_Load() override;
    bool menuCommand(const QString &name, int index, const QString &arg) override;

    // ---- State the widget draws ----
    ListBox &ListSelect = listSelect; // File as; item data: fPK
    QStringList contacts;             // the Contact column, beside ListSelect
    ComboBox cboCategories;           // the filter, "All" first
    QString showName;
    Address::Pane showContact;
    bool paneEnabled = false;

    // The working record and what the list said of the shown row.
    Address::Record record = Address::EmptyRecord();
    QString fileAs;
    int category = 0;

    // ---- Commands ----
    void showListitems(qint64 select = 0) { listSelect_Initialize(select); }
    void cboCategories_Click();
    void cmdAdd_Click();
    void cmdEdit_Click();
    void cmdEditCat_Click();
    // scope 1: the filter's category; otherwise the whole section.
    void mnuAddressDeleteAll(int scope);
    // Writes the whole section to the file the person chooses, after the
    // passphrase (the file holds private addresses in clear too).
    void ExportAddressTabDelimited();
    // Find's Go To: all categories, then the row selected.
    void GoToRecord(qint64 id);

    // The right click on the pane and its menu's entries (Dial calls the
    // address's File as).
    TextActions::PaneMenu paneMenu;

    std::optional<int> Filter() const;

protected:
    int sectionId() const override { return Section; }
    int privateBit() const override { return PrivateBit; }
    std::optional<int> listFilter() const override { return Filter(); }
    int deleteQuestion() const override { return 14; }
    QString deleteSeparator() const override { return QStringLiteral(" "); }
    void clearFields() override;
    void showFields(const SortedSection::StoredRecord &record) override;
    SortedSection::SaveRequest saveRequest() const override;
    QList<SortedSection::ListItem> readList() override;

private:
    void refillCategories();
    // Fills the editor, shows it, and reads it back; true when the record
    // was changed and OK pressed.
    bool runEditor(bool isNew);
    void compose();
    void afterSave(qint64 id);
};

} // namespace km
