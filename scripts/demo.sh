#!/usr/bin/env bash
# Shows the tool at work on the project's own sample files.
set -euo pipefail
vurl="$1"
echo "\$ vurl --version"
"$vurl" --version
echo "\$ vurl --help"
"$vurl" --help
