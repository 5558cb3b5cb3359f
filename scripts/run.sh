#!/usr/bin/env bash
# Sets up, builds and starts the program. Arguments are passed on to it.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
build=${KM_BUILD_DIR:-build/release}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKM_BUILD_TESTS=OFF -DKM_BUILD_BENCH=OFF >/dev/null
cmake --build "$build"
if [ -x "$build/src/kestrelmondarin" ]; then
  exec "$build/src/kestrelmondarin" "$@"
fi
exec "$build/src/kmd" --help
