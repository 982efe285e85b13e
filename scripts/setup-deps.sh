#!/usr/bin/env bash
# Installs what the build and the tests need on a Debian machine. Idempotent: does
# nothing when everything is already there.
set -euo pipefail

here="$(cd "$(dirname "$0")/.." && pwd)"

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  SUDO="sudo"
fi

packages=(cmake g++ make ninja-build pkg-config time libgtest-dev libdraco-dev rapidjson-dev zlib1g-dev nodejs npm)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
# nodejs from other sources ships npm itself; only ask for the Debian npm when there is none.
if command -v npm >/dev/null 2>&1; then
  tmp=()
  for p in "${missing[@]}"; do [ "$p" = npm ] || [ "$p" = nodejs ] || tmp+=("$p"); done
  missing=("${tmp[@]+"${tmp[@]}"}")
fi

if [ "${#missing[@]}" -gt 0 ]; then
  echo "setup-deps: installing ${missing[*]}"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}" >/dev/null
fi

# Further set-up steps (xatlas source, the glTF validator) are added by the scripts below.
for extra in "$here"/scripts/setup-deps.d/*.sh; do
  [ -e "$extra" ] || continue
  bash "$extra"
done
