// Process-wide hardening done first thing in both programs.
#pragma once

namespace km {
// No core file may carry a key table or a decrypted value to disk.
void DisableCoreDumps();
} // namespace km
