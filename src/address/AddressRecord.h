// An address: one row of section 11. The whole record of 61 fields travels
// encrypted in fEtx; the list is drawn without opening it, from the two
// display texts encrypted each by itself (fT1 File as, fT2 the contact line),
// the plain category (fG1), the private marker hidden in noise (fT3) and the
// sort index (fR2, fR1) of File as followed by the contact line.
#pragma once

#include <array>
#include <optional>

#include <QList>
#include <QString>
#include <QStringList>

#include "shell/SortedSection.h"

namespace km {

class StoreDb;

namespace Address {

constexpr int Section = 11;
constexpr int FieldCount = 61;

enum Field : int {
    UserNumber = 0,
    Private = 1,
    Priority = 2,
    Title = 3,
    FirstName = 4,
    MiddleName = 5,
    LastName = 6,
    Suffix = 7,
    CompanyName = 8,
    Department = 9,
    JobTitle = 10,
    BusinessAddressStreet = 11, // Street, City, State, PostalCode, Country follow
    HomeAddressStreet = 16,
    OtherAddressStreet = 21,
    Birthday = 29,
    Children = 30,
    GovernmentIDNumber = 32,
    Spouse = 34,
    Profession = 33,
    User1 = 35, User2, User3, User4,
    Com1 = 41, Com2, Com3, Com4, Com5, Com6, Com7, Com8, Com9,
    ComLabel1 = 50, ComLabel2, ComLabel3, ComLabel4, ComLabel5, ComLabel6, ComLabel7, ComLabel8, ComLabel9,
    ComDisplay = 59,
    Notes = 60,
    // The offsets of the five fields of an address page from its street.
    Street = 0, City = 1, State = 2, PostalCode = 3, Country = 4,
};

struct FieldDef {
    int index;
    QString name; // the editor's control is "ctl" + name, where it has one
    int type;     // PackValue's type code
    bool hasControl;
};
// AddressFieldTable: the 61 fields by index.
const std::array<FieldDef, FieldCount> &FieldTable();
// The index of a field name; -1 for none.
int FieldIndex(const QString &name);

// What a communication slot is (ComLabelCode 1 to 9).
QString ContactSuffix(int code);
// The label code of slot n (1 to 9) where it has none stored.
int DefaultLabel(int slot);

// The working record: every field as the text UnpackRecord gives.
using Record = QStringList;
Record EmptyRecord();

// The slot's text (1 to 9) and its label code (the default where none is stored).
QString Com(const Record &r, int slot);
int ComLabel(const Record &r, int slot);
// The text of slot ComDisplay + 1 with its label's suffix; empty when ComDisplay is.
QString ContactLine(const Record &r);

// 11 to 25 characters of noise whose 7th character's code is odd for a
// private record, even for another.
QString PrivateMarker(bool isPrivate);
bool MarkerIsPrivate(const QByteArray &fT3);

// The rules of a save on a record whose controls have been read: labels of
// empty slots dropped, ComDisplay moved to the first non-empty slot when its
// own is empty, or emptied when all are.
void NormaliseSlots(Record &r);

// The standard write of an address: fields 0 (the user) and 1 (private)
// filled, only non-empty fields packed, fT1/fT2 and the sort index rewritten
// only when File as and the contact line changed, a fresh private marker.
// Returns the row id, 0 when the row belongs to another section (message 16).
SortedSection::SaveRequest SaveRequestOf(const Record &r, const QString &fileAs, int category);

// LoadAddress: the record of a row of any section with a payload, and its fG1.
struct Loaded {
    bool found = false;
    int section = 0;
    int category = 0;
    Record record;
};
Loaded LoadAddress(StoreDb &store, qint64 id);

// ReadListRow: what the list shows of a row, without its payload.
struct ListRow {
    qint64 id = 0;
    QString fileAs;
    QString contactLine;
    bool isPrivate = false;
    int category = 0;
    int changeBits = 1;
};
// The list in the sort index's order (fR2 \ BucketWidth, fR1), filter: fG1.
QList<ListRow> ReadList(StoreDb &store, std::optional<int> filter);

// Deletes of the whole section or of one category of it.
void DeleteAll(StoreDb &store, std::optional<int> category);

// The cells of the tab-delimited export: the header of the names of fields 1
// to 60, then a line per row of section 11 in fR2, fR1 order, every cell
// followed by a tab, lines ended by LF, UTF-8. Written to out as it goes.
class ExportSink {
public:
    virtual ~ExportSink() = default;
    virtual void write(const QByteArray &bytes) = 0;
};
void WriteTabDelimited(StoreDb &store, ExportSink &out);

// The detail pane: the composed text, and the labels set in bold (the
// heading "Address" underlined) at every occurrence.
struct Pane {
    QString text;
    QStringList boldLabels;
    QString underlined;
};
// userLabels: the four user-defined captions.
Pane ComposePane(const Record &r, const QStringList &userLabels);
// The name line: Title, File as, Suffix.
QString NameLine(const Record &r, const QString &fileAs);

} // namespace Address

} // namespace km
