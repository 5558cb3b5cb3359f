// kmd: the store on the command line, for scripts, tests and benchmarks.
#include <cstdio>
#include <cstring>

#include "platform/Process.h"

static void usage(std::FILE *out) {
    std::fputs("usage: kmd COMMAND STORE [ARGS...]\n"
               "Works on a Kestrelmondarin store (.kmd) without a window.\n",
               out);
}

int main(int argc, char **argv) {
    km::DisableCoreDumps();
    if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
        usage(stdout);
        return argc < 2 ? 1 : 0;
    }
    usage(stderr);
    return 1;
}
