// Inner parts of the field cipher that its tests and benchmarks reach into:
// the cache of prepared Blowfish key schedules and the making of the
// verifier's key buffer. Nothing outside CRY calls these.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/CryptoLib.h"
#include "platform/SecureBytes.h"

namespace CRY {

// Blowfish key schedules of recently used key numbers. A schedule costs far
// more to make than a short field costs to decrypt, and a list shows many
// rows under few repeating key numbers, so schedules are kept per key number.
//
// A full cache makes room by dropping an entry drawn at random. Lists are read
// again and again in the same order, and a list of more key numbers than the
// cache holds would, under least-recently-used eviction, always drop exactly
// the schedule it needs next; a random victim keeps most of such a list.
//
// A look-up is O(1) and allocates nothing: an index of 65536 slots maps a key
// number to an entry of a pool. The pool grows in chunks up to its capacity
// and is then recycled.
// Each entry also keeps the 16-byte key it was made from; an entry whose key
// differs from the key asked for is rebuilt, so a schedule is never used for
// a key it does not belong to, whatever happened to the key table meanwhile.
//
// clear() wipes every schedule and key and keeps the pool's memory for the
// next store; release() also gives the memory back.
class ScheduleCache {
public:
    // Half of all key numbers, about 130 MiB when full: enough for a list of
    // 20,000 rows whose titles and payloads are both read (some 30,000 key
    // numbers) to find its schedules again. The pool grows only with use.
    static constexpr int DefaultCapacity = 32768;
    static constexpr int KeyBytes = 16;

    explicit ScheduleCache(int capacity = DefaultCapacity);
    ~ScheduleCache();
    ScheduleCache(const ScheduleCache &) = delete;
    ScheduleCache &operator=(const ScheduleCache &) = delete;

    // The schedule of key number (0 to 65535) under the 16-byte key, made on a miss.
    const CryptoLib::BlowfishSchedule &get(int number, const std::uint8_t *key);

    void clear();
    void release();

    int size() const { return m_used; }
    int capacity() const { return m_capacity; }
    long long misses() const { return m_misses; }
    // True when no byte of any schedule or key in the pool's memory is set.
    bool holdsNoKeyMaterial() const;

private:
    struct Entry {
        CryptoLib::BlowfishSchedule schedule;
        std::array<std::uint8_t, KeyBytes> key{};
        std::int32_t number = -1;
    };
    static constexpr int ChunkEntries = 256;

    Entry &entry(int index) { return m_chunks[index / ChunkEntries][index % ChunkEntries]; }

    int m_capacity;
    int m_used = 0;
    long long m_misses = 0;
    std::vector<std::int32_t> m_slot; // key number -> entry, -1 when absent
    std::vector<std::unique_ptr<Entry[]>> m_chunks;
};

// The process's cache, which lives with the key table.
ScheduleCache &scheduleCache();

// The verifier's key buffer, 4 bytes for each byte of the hash. Stores written
// before depend on this exact making, so it must stay as it is: each hash byte
// becomes its code page 1252 character; the two bytes of that character
// (low byte first) each become a code page 1252 character again; the key
// buffer is the two bytes of each of those characters, low byte first.
SecureBytes VerifierKeyBuffer(const SecureBytes &hash);

} // namespace CRY
