// Buffers for secrets: key table, field keys, passphrase hashes, decrypted
// payloads. Every block such a buffer ever owned is overwritten with
// OPENSSL_cleanse before it goes back to the heap, also when the vector grows
// and moves its contents, so no stale copy of a secret survives in freed memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

#include <QByteArray>
#include <QString>

namespace km {

void cleanse(void *p, std::size_t n);

template <class T> struct WipingAllocator {
    using value_type = T;
    WipingAllocator() noexcept = default;
    template <class U> WipingAllocator(const WipingAllocator<U> &) noexcept {}
    T *allocate(std::size_t n) { return static_cast<T *>(::operator new(n * sizeof(T))); }
    void deallocate(T *p, std::size_t n) noexcept {
        cleanse(p, n * sizeof(T));
        ::operator delete(p);
    }
    template <class U> bool operator==(const WipingAllocator<U> &) const noexcept { return true; }
};

using SecureBytes = std::vector<std::uint8_t, WipingAllocator<std::uint8_t>>;

// Overwrites the bytes of a QByteArray / the characters of a QString in place.
// The containers are detached first so that the wipe hits this copy's buffer.
void wipe(QByteArray &bytes);
void wipe(QString &text);
void wipe(SecureBytes &bytes);

inline QByteArray toQByteArray(const SecureBytes &b) {
    return QByteArray(reinterpret_cast<const char *>(b.data()), static_cast<qsizetype>(b.size()));
}
inline SecureBytes toSecureBytes(const QByteArray &b) {
    return SecureBytes(reinterpret_cast<const std::uint8_t *>(b.constData()),
                       reinterpret_cast<const std::uint8_t *>(b.constData()) + b.size());
}

} // namespace km
