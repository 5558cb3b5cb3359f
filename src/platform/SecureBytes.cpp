#include "platform/SecureBytes.h"

#include <openssl/crypto.h>

namespace km {

void cleanse(void *p, std::size_t n) {
    if (p && n) OPENSSL_cleanse(p, n);
}

void wipe(QByteArray &bytes) {
    if (!bytes.isEmpty()) {
        bytes.detach();
        cleanse(bytes.data(), static_cast<std::size_t>(bytes.size()));
    }
    bytes.clear();
}

void wipe(QString &text) {
    if (!text.isEmpty()) {
        text.detach();
        cleanse(text.data(), static_cast<std::size_t>(text.size()) * sizeof(QChar));
    }
    text.clear();
}

void wipe(SecureBytes &bytes) {
    cleanse(bytes.data(), bytes.size());
    bytes.clear();
}

} // namespace km
