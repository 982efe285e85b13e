#!/usr/bin/env bash
# Builds the suite with gcov instrumentation, runs every test once and prints the line
# and branch coverage of the product code (src/). Installs gcovr when it is missing.
#   scripts/coverage.sh [BUILD_DIR]
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$here/build-cov}"
jobs="${JOBS:-$(nproc)}"

if ! command -v gcovr >/dev/null 2>&1; then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  echo "coverage: installing gcovr"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq gcovr >/dev/null
fi

cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DVURL_COVERAGE=ON \
  -DVURL_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j "$jobs"
# Counts from an earlier run would add up with this one.
find "$build" -name '*.gcda' -delete
(cd "$build" && ctest -j "$jobs" --output-on-failure)
# Branches the compiler adds for exceptions say nothing about our tests. The per-file table
# goes into the build folder; never name a device as the output, gcovr deletes the path it
# tries before writing.
gcovr --root "$here" --filter "$here/src/" --object-directory "$build" \
  --exclude-throw-branches --exclude-unreachable-branches --print-summary -o "$build/coverage.txt"
echo "coverage: per-file table in $build/coverage.txt"
