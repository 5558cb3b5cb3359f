#include "platform/Clock.h"

namespace km {

namespace {
Clock g_systemClock;
Clock *g_clock = &g_systemClock;
} // namespace

QDateTime Clock::currentDateTime() const {
    return QDateTime::currentDateTime();
}

QDateTime Clock::now() {
    return g_clock->currentDateTime();
}
QDate Clock::today() {
    return now().date();
}
qint64 Clock::msecsSinceEpoch() {
    return now().toMSecsSinceEpoch();
}

Clock &Clock::current() {
    return *g_clock;
}

void Clock::setInstance(Clock *clock) {
    g_clock = clock ? clock : &g_systemClock;
}

} // namespace km
