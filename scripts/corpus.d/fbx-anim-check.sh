# Corpus hook: every curve of each binary FBX file is evaluated at its keys, midpoints and
# outside its span by vurl_fbx_anim_check (beside the tool); a NaN from finite keys, or a
# forward walk that disagrees with a fresh search, fails the file. Skipped when the
# checker was not built.

if declare -f check_outputs >/dev/null; then
  eval "$(declare -f check_outputs | sed '1s/check_outputs/_fbx_anim_earlier_check/')"
else
  _fbx_anim_earlier_check() { :; }
fi

_fbx_anim_checker="$(dirname "$vurl")/vurl_fbx_anim_check"

check_outputs() {
  local file="$1" out="$2" code="$3" reason
  reason="$(_fbx_anim_earlier_check "$file" "$out" "$code")"
  if [ -n "$reason" ]; then
    echo "$reason"
    return
  fi
  case "$file" in */fbx/binary/*.fbx) ;; *) return 0 ;; esac
  [ -x "$_fbx_anim_checker" ] || return 0
  if ! "$_fbx_anim_checker" "$file" >"$out/anim-check.txt" 2>&1; then
    echo "anim check: $(grep -m3 -E 'NaN|differ' "$out/anim-check.txt" | sed 's/^[^:]*: //' | paste -sd';' -)"
  fi
}
