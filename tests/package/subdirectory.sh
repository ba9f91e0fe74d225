#!/bin/bash
# Takes the source tree into another project with add_subdirectory. Only what is the project's own is compiled.
# Usage: subdirectory.sh SOURCE_DIR WORK_DIR
set -euo pipefail

source_dir=$1 work=$2

fail() {
  printf '%s\n' "$@"
  exit 1
}

rm -rf "$work"
mkdir -p "$work/project"
printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' 'project(product LANGUAGES CXX)' 'enable_testing()' \
  "add_subdirectory(\"$source_dir\" qzlog)" 'qzlog_add_definitions(TARGET events SOURCES events.yaml)' \
  'add_executable(product main.cpp)' 'target_link_libraries(product PRIVATE qzlog::qzlog)' \
  'target_compile_definitions(product PRIVATE EXPECTED_VERSION="")' >"$work/project/CMakeLists.txt"
cp "$source_dir/tests/package/consumer/"{main.cpp,events.yaml} "$work/project"

# What is disabled cannot be found, even where it is installed.
cmake -S "$work/project" -B "$work/build" -G Ninja \
  -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON -DCMAKE_DISABLE_FIND_PACKAGE_benchmark=ON >"$work/configure.log" 2>&1 ||
  fail "cannot be configured:" "$(cat "$work/configure.log")"

targets=$(ninja -C "$work/build" -t targets all)
others=$(grep -E '^qzlog/(tests|bench|fuzz|examples)/' <<<"$targets" || true)
[[ -z $others ]] || fail "built as well:" "$(head <<<"$others")"
grep -q '^qzlog/tools/qzlog:' <<<"$targets" || fail "the command is not built"
tests=$(ctest --test-dir "$work/build" -N)
grep -q '^Total Tests: 0$' <<<"$tests" || fail "$tests"
grep -q '^CMAKE_BUILD_TYPE:STRING=$' "$work/build/CMakeCache.txt" || fail "the project's build type is changed"

cmake --build "$work/build" --target CMakeFiles/product.dir/main.cpp.o >"$work/build.log" 2>&1 || fail "$(cat "$work/build.log")"
