# Corpus hook: every text FBX file is walked record by record, with every array read, by
# vurl_fbx_dump (beside the tool), so that the whole field tree a text file turns into is
# checked under the sanitizer build, not only the parts a conversion reads. A clean refusal
# is a pass; a crash, a time-out or a sanitizer report fails the file. Skipped when the
# dump tool was not built.

_fbx_text_dump="$(dirname "$vurl")/vurl_fbx_dump"

_fbx_text_walk_check() {
  local file="$1" out="$2" status
  case "$file" in *.fbx) ;; *) return 0 ;; esac
  [ -x "$_fbx_text_dump" ] || return 0
  head -c 2 "$file" | grep -q '^;' || return 0
  timeout -s KILL "$limit" "$_fbx_text_dump" "$file" >"$out/text-walk.txt" 2>&1
  status=$?
  if [ "$status" -gt 1 ]; then
    echo "text walk: exit $status"
  elif grep -qE 'ERROR: (AddressSanitizer|LeakSanitizer)|runtime error:' "$out/text-walk.txt"; then
    echo "text walk: sanitizer report"
  fi
}
add_check _fbx_text_walk_check
