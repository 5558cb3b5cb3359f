// The one source of "now" for the whole program. The idle countdown, the
// clipboard wipe, due dates and "today" all read it, so tests can set time.
#pragma once

#include <QDate>
#include <QDateTime>

namespace km {

class Clock {
public:
    virtual ~Clock() = default;

    static QDateTime now(); // local date and time
    static QDate today();
    static qint64 msecsSinceEpoch();

    // Replaces the clock; nullptr restores the system clock. The caller keeps ownership.
    static void setInstance(Clock *clock);
    // The clock in force, to hand to a window model.
    static Clock &current();

    // This clock's local date and time.
    QDateTime dateTime() const { return currentDateTime(); }

protected:
    virtual QDateTime currentDateTime() const;
};

// A clock that stands still until a test moves it.
class FixedClock : public Clock {
public:
    explicit FixedClock(const QDateTime &start) : m_now(start) {}
    void set(const QDateTime &t) { m_now = t; }
    void advanceMSecs(qint64 ms) { m_now = m_now.addMSecs(ms); }
    void advanceSecs(qint64 s) { m_now = m_now.addSecs(s); }

protected:
    QDateTime currentDateTime() const override { return m_now; }

private:
    QDateTime m_now;
};

} // namespace km
