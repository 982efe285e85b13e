# Corpus hook: every curve of each binary FBX file is evaluated at its keys, midpoints and
# outside its span by vurl_fbx_anim_check (beside the tool); a NaN from finite keys, or a
# forward walk that disagrees with a fresh search, fails the file. Skipped when the
# checker was not built.

_fbx_anim_checker="$(dirname "$vurl")/vurl_fbx_anim_check"

_fbx_anim_check() {
  local file="$1" out="$2"
  case "$file" in */fbx/binary/*.fbx) ;; *) return 0 ;; esac
  [ -x "$_fbx_anim_checker" ] || return 0
  if ! "$_fbx_anim_checker" "$file" >"$out/anim-check.txt" 2>&1; then
    echo "anim check: $(grep -m3 -E 'NaN|differ' "$out/anim-check.txt" | sed 's/^[^:]*: //' | paste -sd';' -)"
  fi
}
add_check _fbx_anim_check
