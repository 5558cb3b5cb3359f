#include "store/db.h"

#include "platform/Random.h"
#include "ui/Dialogs.h"
#include "store/CRY.h"
#include "store/INDICES.h"

namespace db {

State &state() {
    static State s;
    return s;
}

km::StoreDb &Store() {
    if (!state().StoreDb) throw km::EngineError(km::EngineErr::Generic, QStringLiteral("No store is open."));
    return *state().StoreDb;
}

void AddRow(km::RowSet &rows) {
    rows.AddNew();
    rows.SetColumn(QStringLiteral("AE"), 1);
}

void EditRow(km::RowSet &rows) {
    const qint64 ae = rows.GetColumn(QStringLiteral("AE")).toLongLong();
    rows.Edit();
    rows.SetColumn(QStringLiteral("AE"), ae | 2);
}

void WriteNoise(km::RowSet &rows, const NoiseFlags &flags) {
    km::Randomize();
    const auto noiseText = [&](const char *column) {
        rows.SetColumn(QString::fromLatin1(column), CRY::RandomNoise(static_cast<int>(km::RndInt(3)) + 1));
    };
    if (flags.t1) noiseText("fT1");
    if (flags.t2) noiseText("fT2");
    if (flags.t3) noiseText("fT3");
    if (flags.r1) rows.SetColumn(QStringLiteral("fR1"), INDICES::RandomLong());
    if (flags.r2) rows.SetColumn(QStringLiteral("fR2"), INDICES::RandomLong());
    if (flags.r3) rows.SetColumn(QStringLiteral("fR3"), INDICES::RandomLong());
    if (flags.r4) rows.SetColumn(QStringLiteral("fR4"), INDICES::RandomLong());
}

StandardWrite::StandardWrite(km::StoreDb &store, qint64 rowId, int section)
    : m_store(store), m_section(section) {
    begin(rowId > 0 ? QStringLiteral("fPK=%1").arg(rowId) : QString(), section);
}

StandardWrite::StandardWrite(km::StoreDb &store, const QString &criteria, int section)
    : m_store(store), m_section(section) {
    begin(criteria, section);
}

void StandardWrite::begin(const QString &criteria, int section) {
    m_store.BeginTrans();
    m_inTransaction = true;
    try {
        m_rows = m_store.OpenRowSet(QStringLiteral("tt"), km::Dynaset);
        if (!criteria.isEmpty()) m_rows->FindFirst(criteria);
        if (criteria.isEmpty() || m_rows->NoMatch()) {
            AddRow(*m_rows);
            m_rowId = m_rows->GetColumn(QStringLiteral("fPK")).toLongLong();
            m_new = true;
            m_ok = true;
        } else if (m_rows->GetColumn(QStringLiteral("fSec")).toInt() != section) {
            km::ShowMessage(16);
            m_ok = false;
        } else {
            m_rowId = m_rows->GetColumn(QStringLiteral("fPK")).toLongLong();
            EditRow(*m_rows);
            m_ok = true;
        }
        if (m_ok) m_rows->SetColumn(QStringLiteral("fSec"), section);
    } catch (...) {
        m_rows.reset();
        m_store.Rollback();
        m_inTransaction = false;
        throw;
    }
}

StandardWrite::~StandardWrite() {
    if (m_done) return;
    try {
        if (m_rows) m_rows->CancelUpdate();
        m_rows.reset();
        if (m_inTransaction) m_store.Rollback();
    } catch (...) {
        // Nothing more can be undone here; the engine error was already the caller's.
    }
}

QVariant StandardWrite::oldColumn(const QString &name) const {
    if (m_new || !m_rows) return QVariant();
    return m_rows->GetColumn(name);
}

QString StandardWrite::oldText(const QString &column) const {
    if (m_new || !m_rows) return QString();
    return CRY::DecryptField(m_rows->GetColumn(column).toByteArray());
}

void StandardWrite::setRecord(const QByteArray &packed) {
    m_rows->SetColumn(QStringLiteral("fEtx"), CRY::EncryptField(packed));
}

void StandardWrite::setText(const QString &column, const QString &plain) {
    m_rows->SetColumn(column, CRY::EncryptField(plain));
}

void StandardWrite::setColumn(const QString &column, const QVariant &value) {
    m_rows->SetColumn(column, value);
}

void StandardWrite::placeInOrder(const QString &title, const QString &oldTitle, const QString &titleColumn,
                                 const QString &bucketColumn, const QString &rankColumn, int buckets) {
    m_rows->SetColumn(bucketColumn, INDICES::BucketPoint(title));
    const qint32 rank = INDICES::PlaceInOrder(m_store, titleColumn, bucketColumn, rankColumn, title, oldTitle,
                                              m_rowId, m_section, 0, buckets);
    m_rows->SetColumn(rankColumn, rank);
}

qint64 StandardWrite::Commit(const NoiseFlags &noiseOnNewRow) {
    if (!m_ok) return 0;
    if (m_new) WriteNoise(*m_rows, noiseOnNewRow);
    m_rows->Update();
    m_rows.reset();
    m_store.CommitTrans();
    m_inTransaction = false;
    m_done = true;
    if (m_new) state().StoreChanged = true;
    return m_rowId;
}

} // namespace db
