#!/usr/bin/env bash
# Runs every benchmark executable and reports wall time and peak memory of each.
set -euo pipefail
bin="$1"
shopt -s nullglob
for b in "$bin"/bench_*; do
  [ -x "$b" ] || continue
  echo "== $(basename "$b")"
  /usr/bin/time -f "wall %e s, peak %M KiB" "$b"
done
