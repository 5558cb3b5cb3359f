#!/usr/bin/env bash
# Sets up, builds with warnings as errors and with AddressSanitizer and
# UndefinedBehaviorSanitizer, and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
build=${KM_TEST_BUILD_DIR:-build/test}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DKM_WERROR=ON -DKM_SANITIZE=ON -DKM_BUILD_BENCH=OFF
cmake --build "$build"
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
ctest --test-dir "$build" --output-on-failure -j"$(nproc)"
