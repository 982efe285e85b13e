# Corpus hook: every .glb a run writes goes through the Khronos glTF validator. Allowed are
# the errors our output rules produce (tools/validator/prescribed.txt) and those the input
# already has; anything else fails the file. Skipped when node or the validator is missing.

_glb_validator_dir="$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)/tools/validator"

# Errors born of the way a file loads rather than of its own faults, by file name.
_glb_validator_known() {
  local name pattern rules
  name="$(basename "$1")"
  while read -r pattern rules; do
    case "$pattern" in "" | "#"*) continue ;; esac
    # shellcheck disable=SC2254
    case "$name" in $pattern) echo "$rules" ;; esac
  done <"$_glb_validator_dir/input-derived.txt"
}

_glb_validator_check() {
  local file="$1" out="$2"
  command -v node >/dev/null 2>&1 || return 0
  [ -d "$_glb_validator_dir/node_modules/gltf-validator" ] || return 0

  local input="$out/$(basename "$file")" allow="" glb
  case "$input" in
    *.glb | *.gltf)
      allow="$(node "$_glb_validator_dir/validate.mjs" "$input" --error-codes 2>/dev/null | paste -sd, -)"
      # Compressed data is invisible to the validator: decoded weights may not sum to 1.
      if grep -aq KHR_draco_mesh_compression "$input"; then allow="$allow,ACCESSOR_WEIGHTS_NON_NORMALIZED"; fi
      ;;
  esac
  local known
  known="$(_glb_validator_known "$file")"
  [ -n "$known" ] && allow="$allow,$known"
  for glb in "$out"/*.glb; do
    [ -e "$glb" ] || continue
    [ "$glb" = "$input" ] && continue
    if ! node "$_glb_validator_dir/validate.mjs" "$glb" --allow-file "$_glb_validator_dir/prescribed.txt" \
      ${allow:+--allow "$allow"} >"$out/validator.txt" 2>&1; then
      echo "validator: $(grep -m3 ' ERROR ' "$out/validator.txt" | sed 's/^[^:]*: //' | paste -sd';' -)"
      return
    fi
  done
}
add_check _glb_validator_check
