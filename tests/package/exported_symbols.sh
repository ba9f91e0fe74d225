#!/bin/bash
# Compares the names that the shared library exports with exported_symbols.txt.
# Usage: exported_symbols.sh libqzlog.so [--update]      (--update rewrites the list: review its diff)
set -euo pipefail
export LC_ALL=C

library=$1
list=$(dirname "$0")/exported_symbols.txt

exported() { nm -DC --defined-only "$library" | cut -d' ' -f3- | sort -u; }

if [[ ${2:-} == --update ]]; then
  exported >"$list"
  exit
fi
if ! diff -u "$list" <(exported); then
  echo "The exported interface changed (- listed, + exported). If that is meant: $0 $library --update" >&2
  exit 1
fi
