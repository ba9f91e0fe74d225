#!/bin/bash
# Uses qzlog_add_definitions in a small project: what is compiled, when again, and what it refuses.
# Usage: add_definitions.sh GENERATOR PREFIX WORK_DIR
set -euo pipefail

generator=$1 prefix=$2 work=$3
project="$work/a project"

fail() {
  printf '%s\n' "$@"
  exit 1
}

# write_project LINE...: a project that makes the calls given.
write_project() {
  printf '%s\n' 'cmake_minimum_required(VERSION 3.10)' 'project(product NONE)' 'find_package(qzlog REQUIRED)' "$@" \
    >"$project/CMakeLists.txt"
}

configure() { cmake -S "$project" -B "$work/build" -G "$generator" -DCMAKE_PREFIX_PATH="$prefix" 2>&1; }

# expect_compiled NAME...: what the next build compiles, in the order of the alphabet.
expect_compiled() {
  local got
  got=$(cmake --build "$work/build" 2>&1 | sed -n 's/.*Compiling the definitions: //p' | sort | paste -sd ' ')
  [[ $got == "$*" ]] || fail "expected to be compiled: $*" "                    got: $got"
}

# expect_refused TEXT LINE...: a project with these lines cannot be configured, and is told why.
expect_refused() {
  local text=$1 output
  shift
  write_project "$@"
  if output=$(configure); then fail "configured all the same: $*"; fi
  output=$(tr -s ' \n' ' ' <<<"$output")
  [[ $output == *"$text"* ]] || fail "expected: $text" "$output"
}

# change SOURCE STAMP...: a source that is newer than its stamps, whatever the file system's clock can tell apart.
change() {
  touch -d '-1 minute' "${@:2}"
  touch "$1"
}

rm -rf "$work"
mkdir -p "$project/src"
cat >"$project/src/base events.yaml" <<'YAML'
version: "1.0"
entries:
  - {id: 1, name: A, message: "text"}
YAML
cat >"$project/src/site.yaml" <<'YAML'
version: "1.0"
entries:
  - {id: 2, name: B, message: "text"}
YAML

# shellcheck disable=SC2016 # the variable is CMake's
write_project \
  'qzlog_add_definitions(TARGET events SOURCES "src/base events.yaml")' \
  'qzlog_add_definitions(TARGET events SOURCES src/site.yaml AUX_OF "src/base events.yaml" DESTINATION out/site)' \
  'get_target_property(files events QZLOG_DEFINITION_FILES)' \
  'message(STATUS "files: ${files}")'
output=$(configure) || fail "$output"
[[ $output == *"files: $work/build/base events.ldf;$work/build/out/site/site.ldf"* ]] || fail "$output"
expect_compiled base events.ldf site.ldf
[[ -s "$work/build/base events.ldf" && -s $work/build/out/site/site.ldf ]] || fail "a file is missing"
expect_compiled

change "$project/src/site.yaml" "$work/build/out/site/site.ldf.stamp"
expect_compiled site.ldf
expect_compiled
change "$project/src/base events.yaml" "$work/build/base events.ldf.stamp" "$work/build/out/site/site.ldf.stamp"
expect_compiled base events.ldf site.ldf

printf '  - {id: 1, name: C, message: "text"}\n' >>"$project/src/base events.yaml"
change "$project/src/base events.yaml" "$work/build/base events.ldf.stamp"
if output=$(cmake --build "$work/build" 2>&1); then fail "a source with a mistake was taken"; fi
[[ $output == *"[duplicate-id]"* ]] || fail "$output"

expect_refused 'TARGET and SOURCES are required' 'qzlog_add_definitions(TARGET events)'
expect_refused 'TARGET and SOURCES are required' 'qzlog_add_definitions(SOURCES src/site.yaml)'
expect_refused 'unknown arguments: PATHS' 'qzlog_add_definitions(PATHS TARGET events SOURCES src/site.yaml)'
expect_refused 'PATH is icu, narrow or both, not wide' 'qzlog_add_definitions(TARGET e SOURCES src/site.yaml PATH wide)'
expect_refused 'two sources would be compiled to' 'qzlog_add_definitions(TARGET e SOURCES a/site.yaml src/site.yaml)'
