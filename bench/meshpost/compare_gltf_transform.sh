#!/usr/bin/env bash
# Compares `vurl -C draco` with `gltf-transform draco` (npm @gltf-transform/cli) on the
# 200 MB indexed scene of bench_meshpost_draco: wall time, peak memory and output size,
# once with gltf-transform set to our quantisation and speeds, once with its own defaults.
#   bench/meshpost/compare_gltf_transform.sh [build/bin]
# gltf-transform is installed into a temporary folder and removed afterwards.
set -euo pipefail
bin="$(cd "${1:-build/bin}" && pwd)"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT

npm install --prefix "$work/npm" --silent --no-audit --no-fund @gltf-transform/cli >/dev/null
gt="$work/npm/node_modules/.bin/gltf-transform"
"$bin/bench_meshpost_draco" --make "$work/in.glb"

run() {
  local label="$1" out="$2"
  shift 2
  /usr/bin/time -f "$label: wall %e s, peak %M KiB" "$@" >/dev/null
  echo "$label: $(stat -c %s "$out") bytes"
}
echo "input: $(stat -c %s "$work/in.glb") bytes"
run "vurl -C draco" "$work/vurl.glb" "$bin/vurl" -i "$work/in.glb" -o "$work/vurl.glb" -C draco
run "gltf-transform draco, our settings" "$work/gt_same.glb" "$gt" draco "$work/in.glb" "$work/gt_same.glb" \
  --encode-speed 0 --decode-speed 0 --quantize-position 11 --quantize-normal 8 --quantize-texcoord 10 \
  --quantize-color 8 --quantize-generic 8
run "gltf-transform draco, its defaults" "$work/gt_default.glb" "$gt" draco "$work/in.glb" "$work/gt_default.glb"
