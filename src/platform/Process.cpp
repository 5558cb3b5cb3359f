#include "platform/Process.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace km {

void DisableCoreDumps() {
    struct rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
}

void KeepNewFilesPrivate() {
    umask(077);
}

} // namespace km
