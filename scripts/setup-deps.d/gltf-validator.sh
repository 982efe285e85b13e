#!/usr/bin/env bash
# Installs the Khronos glTF validator (npm) into tools/validator/node_modules and the
# gltfpack tool used by the GLB benchmark. Quiet and quick when both are present.
set -euo pipefail

here="$(cd "$(dirname "$0")/../.." && pwd)"
dir="$here/tools/validator"
version="2.0.0-dev.3.10"

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  SUDO="sudo"
fi

if ! command -v gltfpack >/dev/null 2>&1; then
  echo "setup-deps: installing gltfpack"
  # Only the benchmark uses it, so a failure here does not stop the set-up.
  { $SUDO apt-get update -qq && DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq gltfpack >/dev/null; } ||
    echo "setup-deps: gltfpack not available; the GLB benchmark will skip the comparison" >&2
fi

if ! command -v npm >/dev/null 2>&1; then
  echo "setup-deps: npm is missing; the glTF validator is not installed" >&2
  exit 0
fi

installed="$dir/node_modules/gltf-validator/package.json"
if [ -f "$installed" ] && grep -q "\"version\": \"$version\"" "$installed"; then
  exit 0
fi

echo "setup-deps: installing gltf-validator $version"
mkdir -p "$dir"
if ! npm install --prefix "$dir" --no-save --no-package-lock --no-audit --no-fund --loglevel=error \
  "gltf-validator@$version" >/dev/null; then
  echo "setup-deps: npm could not install gltf-validator; the GLB writer tests need it" >&2
  exit 1
fi
