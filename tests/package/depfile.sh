#!/bin/bash
# Has make and ninja read what `qzlog compile --depfile` writes, for files with awkward names.
# Usage: depfile.sh GENERATOR PREFIX WORK_DIR     GENERATOR: "Unix Makefiles" for make, "Ninja"
set -euo pipefail

generator=$1 prefix=$2 work=$3
# shellcheck source=tests/package/small_project.sh
source "$(dirname "$0")/small_project.sh"
readonly qzlog=$prefix/bin/qzlog
# shellcheck disable=SC2016 # a dollar sign in a file's name
readonly BASE='a b#c$d:e.yaml'
readonly SITE='si te.yaml'

write_sources() {
  printf 'version: "1.0"\nentries:\n  - {id: 1, name: A, message: "text"}\n' >"$BASE"
  printf 'version: "1.0"\nentries:\n  - {id: 2, name: B, message: "text"}\n' >"$SITE"
}

# Neither build file knows the standard source: only the dependency file leads to it.
write_build_file() {
  local command="$qzlog compile 'si te.yaml' --aux-of 'a b#c\$\$d:e.yaml' -o out.ldf --depfile out.d && touch out.ldf"
  if [[ $generator == Ninja ]]; then
    printf '%s\n' 'rule compile' "  command = $command" '  depfile = out.d' 'build out.ldf: compile si$ te.yaml' >build.ninja
  else
    printf '%s\n' 'out.ldf: si\ te.yaml' "	$command" '-include out.d' >Makefile
  fi
}

build() { if [[ $generator == Ninja ]]; then ninja; else make; fi; }

expect() {
  local output
  output=$(build 2>&1) || fail "$output"
  case $1 in
    work) [[ $output == *compile* ]] || fail "$2: nothing was compiled: $output" ;;
    rest) [[ $output != *compile* ]] || fail "$2: compiled once more: $output" ;;
  esac
}

rm -rf "$work"
mkdir -p "$work"
cd "$work"
write_sources
touch -d '-1 hour' ./*.yaml
write_build_file
expect work "at first"
expect rest "nothing changed"
change "$BASE" out.ldf
expect work "the standard source changed"
expect rest "nothing changed any more"

# CMake translates the file for either tool.
mkdir cmake
cat >CMakeLists.txt <<CMAKE
cmake_minimum_required(VERSION 3.20)
project(depfile NONE)
add_custom_command(OUTPUT \${CMAKE_BINARY_DIR}/out.ldf
  COMMAND $qzlog compile \${CMAKE_SOURCE_DIR}/si\ te.yaml --merge \${CMAKE_SOURCE_DIR}/extra\ more.yaml
    -o \${CMAKE_BINARY_DIR}/out.ldf --depfile \${CMAKE_BINARY_DIR}/out.d
  COMMAND \${CMAKE_COMMAND} -E touch \${CMAKE_BINARY_DIR}/out.ldf
  DEPFILE \${CMAKE_BINARY_DIR}/out.d
  COMMENT "compile"
  VERBATIM)
add_custom_target(all_definitions ALL DEPENDS \${CMAKE_BINARY_DIR}/out.ldf)
CMAKE
printf 'version: "1.0"\nentries: []\n' >'extra more.yaml'
touch -d '-1 hour' ./*.yaml
cmake -S . -B cmake -G "$generator" >cmake.log || fail "$(<cmake.log)"
build() { cmake --build cmake; }
expect work "CMake, at first"
expect rest "CMake, nothing changed"
change 'extra more.yaml' cmake/out.ldf
expect work "CMake, the merged source changed"
expect rest "CMake, nothing changed any more"
