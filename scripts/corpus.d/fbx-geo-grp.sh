# Corpus hook: no binary FBX file of the corpus has the avatar rig, so each must be read to
# its end and converted, and the run must then stop at the missing geo_GRP node: exit 1 with
# that one error line, after the import and the resource file's line.

_fbx_geo_grp_check() {
  local file="$1" out="$2" code="$3"
  case "$file" in */fbx/binary/*.fbx) ;; *) return 0 ;; esac
  # Two files the reader refuses by its own rules (see expected_refusals in corpus.sh): they
  # must end as a failed load, with the reader's reason on the console.
  case "$file" in
    */synthetic_unsafe_cube_7500_binary.fbx | */synthetic_node_depth_fail_7400_binary.fbx)
      if [ "$code" -ne 1 ] || ! grep -q "An error occured while loading the scene" "$out/stdout" ||
         ! grep -q "Failed to load scene." "$out/stdout"; then
        echo "expected a failed load (exit 1, the loader's failure lines), got exit $code"
      fi
      return 0 ;;
  esac
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
add_check _fbx_geo_grp_check
