#!/usr/bin/env bash
# Prints the size of the test suite against the product code, in physical lines of the
# files git tracks. Test code is C++ and CMake under tests/; anything else there is
# expected-output or input data and is counted on its own line.
set -euo pipefail
cd "$(dirname "$0")/.."

count() { # count PATTERN... : total lines of the tracked files git lists for the patterns
  git ls-files -z -- "$@" | xargs -0 -r cat | wc -l
}

tests=$(count 'tests/**.cpp' 'tests/**.h' 'tests/**CMakeLists.txt' 'tests/**.cmake')
data=$(( $(count 'tests/**') - tests ))
product=$(count 'src/**')
tooling=$(count 'tools/**' 'bench/**' 'scripts/**')

printf '%-32s %7d\n' "test code (tests/)" "$tests"
printf '%-32s %7d\n' "test data (tests/)" "$data"
printf '%-32s %7d\n' "product code (src/)" "$product"
printf '%-32s %7d\n' "tooling (tools, bench, scripts)" "$tooling"
awk -v t="$tests" -v p="$product" 'BEGIN { printf "%-32s %7.2f (goal: at most 0.35)\n", "test code / product code", (p ? t / p : 0) }'
