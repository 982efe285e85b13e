#!/usr/bin/env bash
# Puts the xatlas source (xatlas.h, xatlas.cpp) into .deps/xatlas/ for the build.
# No Debian package ships xatlas as a library, but the godot source package carries it
# under thirdparty/xatlas/. It is fetched with a private apt configuration in a temporary
# folder, so the machine's own apt set-up stays as it is.
# XATLAS_DIR, when it names a folder with both files, is used instead.
set -euo pipefail

here="$(cd "$(dirname "$0")/../.." && pwd)"
dest="$here/.deps/xatlas"

orig_name="godot_3.2.3-stable.orig.tar.gz"
orig_sha="4c2a8e7da1ad05c6223b0ff6cf2be124dad6708b56a8ec9910dc2aaf82a553ae"
cpp_sha="b58f94c3dabb67ba5d158505fb84a2219bbf44330e4596429169ca6471721367"
h_sha="11f81c43de2d29883ac6ebb8135e1ee0ce5da93ae91a22d7032331af8d3f4db6"

if [ -n "${XATLAS_DIR:-}" ]; then
  if [ -f "$XATLAS_DIR/xatlas.h" ] && [ -f "$XATLAS_DIR/xatlas.cpp" ]; then
    echo "setup-deps: xatlas from XATLAS_DIR=$XATLAS_DIR"
    exit 0
  fi
  echo "setup-deps: XATLAS_DIR=$XATLAS_DIR has no xatlas.h and xatlas.cpp" >&2
  exit 1
fi

sha_of() { sha256sum "$1" | cut -d' ' -f1; }

if [ -f "$dest/xatlas.h" ] && [ -f "$dest/xatlas.cpp" ] &&
   [ "$(sha_of "$dest/xatlas.cpp")" = "$cpp_sha" ] && [ "$(sha_of "$dest/xatlas.h")" = "$h_sha" ]; then
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  SUDO="sudo"
fi

tmp="$(mktemp -d)"
# apt may leave root-owned files in there when it ran through sudo.
trap '$SUDO rm -rf "$tmp"' EXIT
mkdir -p "$tmp/parts" "$tmp/lists/partial" "$tmp/work"
chmod 755 "$tmp" "$tmp/work"
# apt downloads as its own user where it can; let it write here.
if id _apt >/dev/null 2>&1; then $SUDO chown _apt "$tmp/work" || true; fi

# The system's deb entries, turned into deb-src entries, in the private parts folder.
found=0
for f in /etc/apt/sources.list.d/*.sources; do
  [ -e "$f" ] || continue
  sed -e 's/^Types:.*$/Types: deb-src/' "$f" > "$tmp/parts/$(basename "$f")"
  found=1
done
for f in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
  [ -e "$f" ] || continue
  sed -n -e 's/^[[:space:]]*deb[[:space:]]/deb-src /p' "$f" > "$tmp/parts/$(basename "$f").list"
  found=1
done
if [ "$found" -eq 0 ]; then
  echo "setup-deps: no apt sources found to fetch the xatlas source from" >&2
  exit 1
fi

apt_opts=(-o Dir::Etc::SourceList=/dev/null -o "Dir::Etc::SourceParts=$tmp/parts"
          -o "Dir::State::Lists=$tmp/lists")
echo "setup-deps: fetching the xatlas source (godot3 source package)"
$SUDO apt-get -qq "${apt_opts[@]}" update >/dev/null
(cd "$tmp/work" && $SUDO apt-get -qq "${apt_opts[@]}" source --download-only godot3 >/dev/null)

orig="$tmp/work/$orig_name"
if [ ! -f "$orig" ]; then
  echo "setup-deps: the godot3 source package no longer has $orig_name; set XATLAS_DIR" >&2
  exit 1
fi
if [ "$(sha_of "$orig")" != "$orig_sha" ]; then
  echo "setup-deps: SHA-256 mismatch for $orig_name" >&2
  exit 1
fi

mkdir -p "$tmp/x"
tar -xzf "$orig" -C "$tmp/x" --wildcards '*/thirdparty/xatlas/*'
src_dir="$(find "$tmp/x" -type d -path '*/thirdparty/xatlas' | head -n 1)"
if [ -z "$src_dir" ] || [ "$(sha_of "$src_dir/xatlas.cpp")" != "$cpp_sha" ] ||
   [ "$(sha_of "$src_dir/xatlas.h")" != "$h_sha" ]; then
  echo "setup-deps: the xatlas files in $orig_name are not the expected ones" >&2
  exit 1
fi

rm -rf "$dest"
mkdir -p "$dest"
cp "$src_dir"/* "$dest/"
echo "setup-deps: xatlas source in $dest"
