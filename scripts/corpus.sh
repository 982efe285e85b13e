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

# Checks that the hooks add with add_check (for instance validating every .glb written):
# each is called with the corpus file, the run's folder and its exit code, in the order the
# hooks were read; the first that prints a reason fails the file.
checks=()
add_check() { checks+=("$1"); }
check_outputs() {
  local check reason
  for check in "${checks[@]}"; do
    reason="$("$check" "$@")"
    if [ -n "$reason" ]; then
      echo "$reason"
      return
    fi
  done
}
for hook in "$(dirname "$0")"/corpus.d/*.sh; do
  [ -e "$hook" ] && . "$hook"
done

# Copies FILE into a fresh DIR (the tool writes side files, such as image folders, beside
# its input) and runs the command there under the sanitizers' options and the time limit;
# sets `code`.
run_on_copy() {
  local dir="$1" file="$2"
  shift 2
  rm -rf "$dir"
  mkdir -p "$dir"
  cp "$file" "$dir/" 2>/dev/null
  ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1}" UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1}" \
    timeout -s KILL "$limit" "$@" >"$dir/stdout" 2>"$dir/stderr"
  code=$?
}

# A crash, a time-out, an exit code other than 0 or 1, or a sanitizer report in DIR/stderr,
# as a reason; nothing for a run that ended by itself. WHO names the program in front of the
# reason, WHERE behind the sanitizer's.
ending_reason() {
  local code="$1" dir="$2" who="$3" where="$4"
  if [ "$code" -eq 137 ]; then
    echo "${who}time-out after ${limit}s"
  elif [ "$code" -gt 128 ]; then
    echo "${who}killed by signal $((code - 128))"
  elif [ "$code" -ne 0 ] && [ "$code" -ne 1 ]; then
    echo "${who}exit code $code"
  elif grep -qE 'ERROR: (AddressSanitizer|LeakSanitizer)|runtime error:' "$dir/stderr"; then
    echo "sanitizer report${where}"
  fi
}

# Counts the file as passed, or as failed with its reason and the start of its stderr.
record() {
  local rel="$1" reason="$2" dir="$3"
  if [ -n "$reason" ]; then
    failed=$((failed + 1))
    echo "FAIL $rel: $reason"
    sed -n '1,20p' "$dir/stderr" | sed 's/^/    /'
  else
    passed=$((passed + 1))
  fi
}

passed=0
failed=0
while IFS= read -r -d '' file; do
  # Image folders that a run beside its input would have written are not corpus files.
  case "$file" in *.md | *.fbm/*) continue ;; esac
  out="$work/run"
  input="$out/$(basename "$file")"
  run_on_copy "$out" "$file" "$vurl" -i "$input" -o "$out/o.glb" -m "$out/m.json" -a "$out/a.json" \
    -r "$out/r.json" -d "$out/d.json" -g "$out/g.json" -n "$out/n.json"
  reason="$(ending_reason "$code" "$out" "" "")"
  if [ -z "$reason" ]; then
    if [ "$code" -eq 1 ] && ! grep -q "Failed to load scene." "$out/stdout" && ! grep -q "^ERROR: " "$out/stderr"; then
      reason="exit 1 without a refusal message"
    elif [ "$code" -ne 0 ] && [[ "$file" == */glb/valid/* ]]; then
      reason="a valid file was refused: $(head -c 300 "$out/stderr")"
    else
      reason="$(check_outputs "$file" "$out" "$code")"
    fi
  fi
  record "${file#"$corpus"/}" "$reason" "$out"
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
    # Embedded media are extracted beside the input.
    run_on_copy "$out" "$file" "$probe" "$out/$(basename "$file")"
    reason="$(ending_reason "$code" "$out" "probe " " in the probe")"
    if [ -z "$reason" ] && [ "$code" -ne 0 ] && [[ "$rel" == fbx/binary/* ]]; then
      if printf '%s\n' "${expected_refusals[@]}" | grep -qxF "$rel"; then
        echo "expected refusal $rel: $(cut -d'"' -f2 "$out/stdout")"
      else
        reason="import failed: $(head -c 300 "$out/stdout")"
      fi
    fi
    record "$rel" "$reason" "$out"
  done < <(find "$corpus/fbx/binary" "$corpus/fbx/malformed" -type f -name '*.fbx' -print0 2>/dev/null | sort -z)
else
  echo "corpus: $probe not built, FBX import checks skipped"
fi

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
