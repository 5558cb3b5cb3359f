#!/usr/bin/env bash
# Builds the screenshot tour (the program with a scripted person, built
# beside the tests), runs it under Xvfb in a scratch home folder, and saves a
# PNG of each window into the folder named by the first argument (default:
# screenshots/).
set -euo pipefail
cd "$(dirname "$0")/.."
out=$(realpath -m "${1:-screenshots}")
build=${KM_BUILD_DIR:-build/release}
if [ -z "${KM_SKIP_SETUP:-}" ]; then bash scripts/setup.sh; fi
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKM_BUILD_TESTS=ON -DKM_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j2 --target km-screenshots

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$scratch/home/Documents" "$scratch/config" "$scratch/data" "$scratch/runtime" "$out"
chmod 700 "$scratch/runtime"
rm -f "$out"/*.png

HOME="$scratch/home" XDG_CONFIG_HOME="$scratch/config" XDG_DATA_HOME="$scratch/data" \
XDG_RUNTIME_DIR="$scratch/runtime" XDG_DOCUMENTS_DIR="$scratch/home/Documents" \
LANG=en_US.UTF-8 QT_QPA_PLATFORM=xcb \
  timeout 120 xvfb-run -a -s "-screen 0 1280x900x24" "$build/tests/km-screenshots" "$out" || status=$?

ls -1 "$out"
exit "${status:-0}"
