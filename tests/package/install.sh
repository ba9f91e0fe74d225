#!/bin/bash
# Installs a build tree into an empty prefix. Usage: install.sh CMAKE BUILD_DIR PREFIX
set -euo pipefail

rm -rf "$3"
"$1" --install "$2" --prefix "$3" >/dev/null
