# Corpus hook: no binary FBX file of the corpus has the avatar rig, so each must be read to
# its end and converted, and the run must then stop at the missing geo_GRP node: exit 1 with
# that one error line, after the import and the resource file's line.

if declare -f check_outputs >/dev/null; then
  eval "$(declare -f check_outputs | sed '1s/check_outputs/_fbx_geo_grp_earlier_check/')"
else
  _fbx_geo_grp_earlier_check() { :; }
fi

check_outputs() {
  local file="$1" out="$2" code="$3" reason
  reason="$(_fbx_geo_grp_earlier_check "$file" "$out" "$code")"
  if [ -n "$reason" ]; then
    echo "$reason"
    return
  fi
  case "$file" in */fbx/binary/*.fbx) ;; *) return 0 ;; esac
  if [ "$code" -ne 1 ]; then
    echo "exit $code where the missing geo_GRP should end the run"
  elif ! grep -q "Import Complete!" "$out/stdout" || grep -q "An error occured while loading the scene" "$out/stdout"; then
    echo "not read to its end: $(grep -m1 -E '^Error returned|An error occured' "$out/stdout")"
  elif ! grep -q "^Path to rrs nodes json file: " "$out/stdout"; then
    echo "the conversion did not start"
  elif [ "$(cat "$out/stderr")" != "ERROR: Couldn't find 'geo_GRP' node?" ]; then
    echo "stderr is not the geo_GRP line alone: $(head -c 200 "$out/stderr")"
  fi
}
