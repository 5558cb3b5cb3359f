#include "shell/frmFind.h"

#include <algorithm>
#include <map>

#include "platform/CodePage1252.h"
#include "platform/Engine.h"
#include "store/CONVERSION.h"
#include "store/CRY.h"
#include "store/Record_Get.h"
#include "shell/frmMDI.h"
#include "ui/LanguageUS.h"
#include "ui/Services.h"

namespace km {

namespace {

std::map<int, FindSection> &registry() {
    static std::map<int, FindSection> r;
    return r;
}

// Case folding of code page 1252 bytes: A-Z, the accented capitals and
// Š, Œ, Ž, Ÿ to their small letters.
struct FoldTable {
    std::array<std::uint8_t, 256> t{};
    FoldTable() {
        for (int i = 0; i < 256; ++i)
            t[static_cast<size_t>(i)] = static_cast<std::uint8_t>(i);
        for (int c = 'A'; c <= 'Z'; ++c)
            t[static_cast<size_t>(c)] = static_cast<std::uint8_t>(c + 32);
        for (int c = 0xC0; c <= 0xDE; ++c)
            if (c != 0xD7) t[static_cast<size_t>(c)] = static_cast<std::uint8_t>(c + 32);
        t[0x8A] = 0x9A;
        t[0x8C] = 0x9C;
        t[0x8E] = 0x9E;
        t[0x9F] = 0xFF;
    }
};
const FoldTable &fold() {
    static const FoldTable f;
    return f;
}

// Default for a section that registered nothing: the decrypted title.
void describeByTitle(RowSet &row, const SecureBytes &, const FindDates &, FindHit &hit) {
    hit.item = CRY::DecryptField(row.GetColumn(QStringLiteral("fT1")).toByteArray());
}

} // namespace

const std::array<FindScope, FindScopeCount> &FindScopes() {
    // Budgets keep their private flag in field 3 of the transaction record;
    // field 4 there is the user's number.
    static const std::array<FindScope, FindScopeCount> scopes = {{
        {QStringLiteral("Address Book"), 11, 112, 1},
        {QStringLiteral("Calendar"), 12, 113, 1},
        {QStringLiteral("Diary"), 13, 114, 13},
        {QStringLiteral("Memopad"), 14, 115, 1},
        {QStringLiteral("Todo "), 15, 116, 2},
        {QStringLiteral("Confidential"), 16, 117, 7},
        {QStringLiteral("Budget 1"), 17, 118, 3},
        {QStringLiteral("Budget 2"), 18, 119, 3},
        {QStringLiteral("Budget 3"), 19, 120, 3},
    }};
    return scopes;
}

QString FindDates::date(const QDate &d) const {
    if (!d.isValid()) return {};
    return locale ? locale->toString(d, QLocale::ShortFormat) : d.toString(Qt::ISODate);
}

QString FindDates::dateTime(const QDateTime &moment) const {
    const QString day = date(moment.date());
    if (!moment.isValid() || moment.time() == QTime(0, 0)) return day;
    return day + QLatin1Char(' ') +
           (locale ? locale->toString(moment.time(), QLocale::ShortFormat)
                   : moment.time().toString(QStringLiteral("HH:mm")));
}

void RegisterFindSection(int section, FindSection find) {
    registry()[section] = std::move(find);
}

void UnregisterFindSections() {
    registry().clear();
}

bool PayloadHolds(const SecureBytes &clear, const QByteArray &needle, bool caseSensitive) {
    if (needle.isEmpty()) return true;
    const auto *n = reinterpret_cast<const std::uint8_t *>(needle.constData());
    const auto *nEnd = n + needle.size();
    if (caseSensitive) return std::search(clear.begin(), clear.end(), n, nEnd) != clear.end();
    const auto &t = fold().t;
    return std::search(clear.begin(), clear.end(), n, nEnd, [&t](std::uint8_t a, std::uint8_t b) {
               return t[a] == t[b];
           }) != clear.end();
}

QList<FindHit> SearchSections(StoreDb &store, const FindRequest &request,
                              const std::function<bool(int, int)> &progress) {
    QList<FindHit> hits;
    if (request.text.isEmpty()) return hits;
    // The packed record holds texts in their stored form (code page 1252,
    // other characters as references), so the text is looked for in that form.
    QByteArray needle = cp1252::toBytes(CONVERSION::TextToStored(request.text));
    struct Wipe {
        QByteArray &bytes;
        ~Wipe() { wipe(bytes); }
    } wipeNeedle{needle};

    struct Open {
        int box;
        std::unique_ptr<RowSet> rows;
    };
    std::vector<Open> open;
    int total = 0;
    for (int box = 0; box < FindScopeCount; ++box) {
        if (!request.boxes[static_cast<size_t>(box)]) continue;
        // Only the payload and what the section's columns need are read: the
        // walk over every row of a section is most of a search's time.
        const int section = FindScopes()[static_cast<size_t>(box)].section;
        const auto reg = registry().find(section);
        const QString columns = reg != registry().end() && reg->second.describe ? reg->second.columns
                                                                                : QStringLiteral("fT1");
        auto rows = store.OpenRowSet(QStringLiteral("SELECT fPK, fEtx%1 FROM tt WHERE fSec=%2 WITH OWNERACCESS OPTION;")
                                         .arg(columns.isEmpty() ? QString() : QStringLiteral(", ") + columns)
                                         .arg(section),
                                     Snapshot);
        total += static_cast<int>(rows->RecordCount());
        open.push_back({box, std::move(rows)});
    }
    int done = 0;
    for (Open &o : open) {
        const FindScope &scope = FindScopes()[static_cast<size_t>(o.box)];
        const auto reg = registry().find(scope.section);
        const auto describe = reg != registry().end() && reg->second.describe ? reg->second.describe
                                                                               : describeByTitle;
        const QString name = LanguageUS::MessageText(scope.nameMessage);
        for (RowSet &rows = *o.rows; !rows.Eof(); rows.MoveNext()) {
            SecureBytes clear = CRY::DecryptFieldBytes(rows.GetColumn(QStringLiteral("fEtx")).toByteArray());
            const bool match = PayloadHolds(clear, needle, request.caseSensitive);
            if (match && (request.showPrivate ||
                          Record_Get::ReadPackedField(clear, scope.privateField) != QLatin1String("True"))) {
                FindHit hit;
                hit.box = o.box;
                hit.id = rows.GetColumn(QStringLiteral("fPK")).toLongLong();
                hit.name = name;
                describe(rows, clear, request.dates, hit);
                hits.append(hit);
            }
            wipe(clear);
            ++done;
            if (progress && !progress(done, total)) return hits;
        }
    }
    return hits;
}

frmFind::frmFind(frmMDI &mdi) : m_mdi(mdi) {}

void frmFind::testEnabled() {
    cmdFindEnabled = !txtFind.isEmpty() && std::any_of(PinApp.begin(), PinApp.end(), [](bool b) { return b; });
}

void frmFind::txtFind_Change(const QString &text) {
    txtFind = text;
    testEnabled();
}

void frmFind::PinApp_Click(int box, bool on) {
    if (box < 0 || box >= FindScopeCount) return;
    if (on && !m_mdi.pinAllows(box)) on = false;
    PinApp[static_cast<size_t>(box)] = on;
    testEnabled();
}

void frmFind::cmdSelectAll_Click() {
    for (int box = 0; box < FindScopeCount; ++box)
        if (!PinApp[static_cast<size_t>(box)]) PinApp_Click(box, true);
}

void frmFind::cmdDeselect_Click() {
    PinApp.fill(false);
    testEnabled();
}

void frmFind::cmdFind_Click() {
    if (!cmdFindEnabled || searching) return;
    LV.clear();
    LVIndex = -1;
    lblSummary.clear();
    LVEnabled = false;
    cmdGotoEnabled = false;
    searching = true;
    m_cancel = false;
    FindRequest request{txtFind, chkCaseSensitive, PinApp, m_mdi.privateShown(), {m_mdi.sectionContext().locale}};
    // The main window waits while the search runs; this window stays open
    // to the person for Cancel.
    m_mdi.setBusy(nullptr, true);
    const auto step = [this](int done, int total) {
        if (done % 64 == 0 || done == total) {
            lblProgress = QStringLiteral("%1 of %2 rows").arg(done).arg(total);
            if (onProgress) onProgress();
        }
        return !m_cancel;
    };
    try {
        LV = SearchSections(m_mdi.sectionContext().store, request, step);
    } catch (...) {
        searching = false;
        m_mdi.setBusy(nullptr, false);
        throw;
    }
    searching = false;
    lblProgress.clear();
    m_mdi.setBusy(nullptr, false);
    lblSummary = QString::number(LV.size()) + LanguageUS::MessageText(111);
    LVEnabled = true;
    if (!LV.isEmpty()) LVIndex = 0;
    cmdGotoEnabled = !LV.isEmpty();
}

void frmFind::LV_Click(int index) {
    if (index >= 0 && index < LV.size()) LVIndex = index;
}

void frmFind::cmdGoto_Click() {
    if (searching || LVIndex < 0 || LVIndex >= LV.size()) return;
    const FindHit hit = LV.at(LVIndex);
    close(true);
    const int section = FindScopes()[static_cast<size_t>(hit.box)].section;
    const int code = std::min(section, 17); // the three budgets share one button
    int button = 0;
    for (size_t i = 0; i < m_mdi.optSection.size(); ++i)
        if (m_mdi.optSection[i].code == code) button = static_cast<int>(i) + 1;
    if (m_mdi.CurrentSection != code) m_mdi.GoToSection(button);
    SectionWindow *window = m_mdi.section();
    if (!window || window->sectionCode() != code) return; // refused (a PIN, private records hidden)
    const auto reg = registry().find(section);
    if (reg != registry().end() && reg->second.goTo) reg->second.goTo(*window, hit);
    m_mdi.changed();
}

void frmFind::cmdCancel_Click() {
    if (searching) {
        m_cancel = true;
        return;
    }
    close(false);
}

} // namespace km
