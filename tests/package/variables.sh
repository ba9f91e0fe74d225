#!/bin/bash
# Builds programs that have variables of their own with the names of the library's, use the library's by its header, or
# by declarations of their own; in one piece and with a shared library in between. Runs them.
# Usage: variables.sh COMPILER pie|no-pie INCLUDE_DIR LIBRARY WORK_DIR
set -euo pipefail

compiler=$1 pie=$2 include=$3 library=$4 work=$5
source_dir=$(cd "$(dirname "$0")" && pwd)/variables
if [[ $pie == pie ]]; then code=-fPIE link=-pie; else code=-fno-pie link=-no-pie; fi
failures=0

compile() {  # NAME OBJECT FLAG...
  "$compiler" -std=c++11 -Wall -Wextra -Wpedantic -Werror -I"$include" "${@:3}" -c "$source_dir/$1.cpp" -o "$work/$2.o"
}

# run NAME FLAGS PROGRAM_OBJECTS [LIBRARY_OBJECT]: links, with the object in a shared library of its own, and runs.
run() {
  local name=$1 between=()
  local flags objects
  read -ra flags <<<"$2"
  read -ra objects <<<"$3"
  if [[ $# -gt 3 ]]; then
    "$compiler" "${flags[@]}" -shared "$work/$4.o" "$library" -o "$work/libbetween.so"
    between=("$work/libbetween.so")
  fi
  "$compiler" "${flags[@]}" "$link" "${objects[@]/#/$work/}" "${between[@]}" "$library" \
    -Wl,-rpath,"$work:$(dirname "$library")" -o "$work/program"
  if ! (cd "$work" && ./program); then
    echo "$name ($2)"
    failures=$((failures + 1))
  fi
}

check() {  # LINKER FLAG...
  local linker=$1 part
  shift
  for part in main own header declared; do compile "$part" "$part" "$code" "$@"; done
  for part in header declared; do compile "$part" "$part-pic" -fPIC "$@"; done
  compile main main-own "$code" -DOWN "$@"
  local how="$* -fuse-ld=$linker"
  run "own variables" "$how" "main-own.o own.o header.o"
  run "own variables, the header's user between" "$how" "main-own.o own.o" header-pic
  run "declarations and header" "$how" "main.o declared.o header.o"
  run "declarations, the header's user between" "$how" "main.o declared.o" header-pic
  # In a program optimised by g++ as a whole, GNU ld does not see that the variable copied there has two names.
  [[ $how == *-flto*bfd ]] || run "header, the declarations between" "$how" "main.o header.o" declared-pic
}

rm -rf "$work"
mkdir -p "$work"
for linker in bfd gold lld; do
  command -v "ld.$linker" >/dev/null || continue
  for optimisation in -O0 -O2; do check "$linker" "$optimisation"; done
done
# g++'s own linker plugin is the default linker's; clang's is lld's own.
if [[ $compiler == clang++ ]]; then lto=lld; else lto=bfd; fi
if command -v "ld.$lto" >/dev/null; then check "$lto" -O2 -flto; fi
if ((failures)); then
  echo "programs that went wrong: $failures" >&2
  exit 1
fi
