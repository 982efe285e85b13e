#!/usr/bin/env bash
# Runs the built tool over every file of the corpus and fails on a crash, a sanitizer
# report or a time-out. A clean refusal (exit 1 with a message) is a pass.
set -uo pipefail

vurl="$(cd "$(dirname "$1")" && pwd)/$(basename "$1")"
corpus="${2:-../shared/corpus}"
limit="${CORPUS_TIME_LIMIT:-60}"

if [ ! -d "$corpus" ]; then
  echo "corpus: $corpus not found, skipped"
  exit 0
fi

work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

# Hooks that later checks can add (for instance validating every .glb written).
check_outputs() { :; }
for hook in "$(dirname "$0")"/corpus.d/*.sh; do
  [ -e "$hook" ] && . "$hook"
done

passed=0
failed=0
failures=()
while IFS= read -r -d '' file; do
  # Image folders that a run beside its input would have written are not corpus files.
  case "$file" in *.md | *.fbm/*) continue ;; esac
  out="$work/run"
  rm -rf "$out"
  mkdir -p "$out"
  cp "$file" "$out/" 2>/dev/null  # the tool writes side files (image folders) beside its input
  input="$out/$(basename "$file")"
  ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1}" UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1}" \
    timeout -s KILL "$limit" "$vurl" -i "$input" -o "$out/o.glb" -m "$out/m.json" -a "$out/a.json" \
      -r "$out/r.json" -d "$out/d.json" -g "$out/g.json" -n "$out/n.json" \
      >"$out/stdout" 2>"$out/stderr"
  code=$?
  reason=""
  if [ "$code" -eq 137 ]; then
    reason="time-out after ${limit}s"
  elif [ "$code" -gt 128 ]; then
    reason="killed by signal $((code - 128))"
  elif [ "$code" -ne 0 ] && [ "$code" -ne 1 ]; then
    reason="exit code $code"
  elif grep -qE 'ERROR: (AddressSanitizer|LeakSanitizer)|runtime error:' "$out/stderr"; then
    reason="sanitizer report"
  elif [ "$code" -eq 1 ] && ! grep -q "Failed to load scene." "$out/stdout" && ! grep -q "^ERROR: " "$out/stderr"; then
    reason="exit 1 without a refusal message"
  elif [ "$code" -ne 0 ] && [[ "$file" == */glb/valid/* ]]; then
    reason="a valid file was refused: $(head -c 300 "$out/stderr")"
  else
    reason="$(check_outputs "$file" "$out" "$code")"
  fi
  if [ -n "$reason" ]; then
    failed=$((failed + 1))
    failures+=("${file#"$corpus"/}: $reason")
    echo "FAIL ${file#"$corpus"/}: $reason"
    sed -n '1,20p' "$out/stderr" | sed 's/^/    /'
  else
    passed=$((passed + 1))
  fi
done < <(find "$corpus" -type f -print0 | sort -z)

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
