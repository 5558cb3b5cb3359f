#!/usr/bin/env bash
# Builds the benchmarks optimised and prints their figures.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
build=${KM_BENCH_BUILD_DIR:-build/bench}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKM_BUILD_TESTS=OFF -DKM_BUILD_BENCH=ON >/dev/null
cmake --build "$build"
for b in "$build"/bench/bench_*; do
  [ -x "$b" ] || continue
  echo "== $(basename "$b")"
  "$b" "$@"
done
