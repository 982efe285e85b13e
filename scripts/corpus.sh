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

# The FBX document layer on its own: every file of fbx/binary must import with status 0
# through the probe beside the tool, every file of fbx/malformed must end cleanly.
# Refusals the reader owes by its rules are listed with their reason.
probe="$(dirname "$vurl")/vurl_fbx_probe"
expected_refusals=(
  # out-of-bounds UV indices (255, 65535, ...) by design: code 7 fails the import
  "fbx/binary/synthetic_unsafe_cube_7500_binary.fbx"
  # records inside FBXHeaderExtension end 16 MB past the end of the 34 KB file
  "fbx/binary/synthetic_node_depth_fail_7400_binary.fbx"
)
if [ -x "$probe" ]; then
  while IFS= read -r -d '' file; do
    rel="${file#"$corpus"/}"
    out="$work/probe"
    rm -rf "$out"
    mkdir -p "$out"
    cp "$file" "$out/"  # embedded media are extracted beside the input
    input="$out/$(basename "$file")"
    ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1}" UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1}" \
      timeout -s KILL "$limit" "$probe" "$input" >"$out/stdout" 2>"$out/stderr"
    code=$?
    reason=""
    if [ "$code" -eq 137 ]; then
      reason="probe time-out after ${limit}s"
    elif [ "$code" -gt 128 ]; then
      reason="probe killed by signal $((code - 128))"
    elif [ "$code" -ne 0 ] && [ "$code" -ne 1 ]; then
      reason="probe exit code $code"
    elif grep -qE 'ERROR: (AddressSanitizer|LeakSanitizer)|runtime error:' "$out/stderr"; then
      reason="sanitizer report in the probe"
    elif [ "$code" -ne 0 ] && [[ "$rel" == fbx/binary/* ]]; then
      if printf '%s\n' "${expected_refusals[@]}" | grep -qxF "$rel"; then
        echo "expected refusal $rel: $(cut -d'"' -f2 "$out/stdout")"
      else
        reason="import failed: $(head -c 300 "$out/stdout")"
      fi
    fi
    if [ -n "$reason" ]; then
      failed=$((failed + 1))
      echo "FAIL $rel: $reason"
      sed -n '1,20p' "$out/stderr" | sed 's/^/    /'
    else
      passed=$((passed + 1))
    fi
  done < <(find "$corpus/fbx/binary" "$corpus/fbx/malformed" -type f -name '*.fbx' -print0 2>/dev/null | sort -z)
else
  echo "corpus: $probe not built, FBX import checks skipped"
fi

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
