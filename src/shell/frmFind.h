// Find across sections. Every text in the store is encrypted, so the engine
// can answer no text query and no index of plain words exists: Find opens the
// whole payload of every row of the chosen sections, one row at a time, and
// looks for the text in the clear bytes in memory, which are wiped again
// before the next row. The search runs over the packed form, so it sees every
// field, the carried ones and numbers kept as text included.
//
// The shell knows no section's record, so each section registers what Find
// shows of a hit (the Item and Spec columns) and how Go To shows the record
// in its window (RegisterFindSection). A section without a registration lists
// its hits by the decrypted title (fT1) and Go To opens the section.
#pragma once

#include <array>
#include <functional>
#include <optional>

#include <QDateTime>
#include <QList>
#include <QLocale>
#include <QString>

#include "platform/SecureBytes.h"
#include "ui/WindowModel.h"

namespace km {

class RowSet;
class SectionWindow;
class StoreDb;
class frmMDI;

// The nine boxes of "where:", in box order.
struct FindScope {
    QString caption;  // of the box
    int section;      // fSec
    int nameMessage;  // the section's name in the result list
    int privateField; // the field of the packed record that holds the private flag
};
constexpr int FindScopeCount = 9;
const std::array<FindScope, FindScopeCount> &FindScopes();

struct FindHit {
    int box = 0;      // scope index
    qint64 id = 0;    // the row's fPK
    QString name;     // the section's name
    QString item;
    QString spec;
    // The day Go To shows, for the sections that go to a date (calendar, diary).
    QDate date;
};

// How the columns write dates: the window in the locale's short forms, kmd
// (no locale) as yyyy-MM-dd and HH:mm, as its other commands print them.
struct FindDates {
    std::optional<QLocale> locale;
    QString date(const QDate &date) const;
    // The date, and after a blank the time unless it is midnight.
    QString dateTime(const QDateTime &moment) const;
};

struct FindSection {
    // Fills item and spec of a hit: the row set stands on the matching row,
    // clear is its decrypted packed record.
    std::function<void(RowSet &row, const SecureBytes &clear, const FindDates &dates, FindHit &hit)> describe;
    // Go To: the section's window is up; select the record (and what else the
    // window allows, as a date). Unset: the section only opens.
    std::function<void(SectionWindow &window, const FindHit &hit)> goTo;
    // The columns describe reads besides fPK and fEtx, as a select list
    // ("fT1, fT2"); the search reads no others.
    QString columns = QString();
};
void RegisterFindSection(int section, FindSection find);
void UnregisterFindSections(); // tests

struct FindRequest {
    QString text;
    bool caseSensitive = false;
    std::array<bool, FindScopeCount> boxes{};
    bool showPrivate = false;
    FindDates dates;
};

// The search of the window and of kmd. progress(done, total) is told after
// every row (total: the rows of all chosen sections) and stops the search,
// between two rows, by returning false.
QList<FindHit> SearchSections(StoreDb &store, const FindRequest &request,
                              const std::function<bool(int done, int total)> &progress = {});

// Whether the clear bytes hold the text's stored form (case folded as the
// code page's letters are, unless caseSensitive).
bool PayloadHolds(const SecureBytes &clear, const QByteArray &needle, bool caseSensitive);

class frmFind : public WindowModel {
public:
    explicit frmFind(frmMDI &mdi);
    QString caption() const override { return QStringLiteral("Find"); }

    // ---- State the widget draws ----
    QString txtFind;
    bool chkCaseSensitive = false;
    std::array<bool, FindScopeCount> PinApp{};
    bool cmdFindEnabled = false;
    bool cmdGotoEnabled = false;
    bool LVEnabled = true;
    QList<FindHit> LV;
    int LVIndex = -1;
    QString lblSummary;
    // While a search runs: "n of N rows", and Cancel stops it.
    bool searching = false;
    QString lblProgress;

    // Called during a search after each few rows: the widget redraws and
    // lets the desktop's events run, so that Cancel can be clicked.
    std::function<void()> onProgress;

    // ---- Commands ----
    void txtFind_Change(const QString &text);
    void chkCaseSensitive_Click(bool on) { chkCaseSensitive = on; }
    // A box of a PIN-protected section asks for the PIN before it is ticked;
    // on failure it stays clear.
    void PinApp_Click(int box, bool on);
    void cmdSelectAll_Click();
    void cmdDeselect_Click();
    void cmdFind_Click();
    void LV_Click(int index);
    // Also a double click on a row: closes Find and shows the row's record.
    void cmdGoto_Click();
    // During a search it stops the search; otherwise it closes the window.
    void cmdCancel_Click();

private:
    void testEnabled();
    frmMDI &m_mdi;
    bool m_cancel = false;
};

} // namespace km
