#!/bin/bash
# Uses qzlog_add_definitions in a small project: what is compiled, when again, and what it refuses.
# Usage: add_definitions.sh GENERATOR PREFIX WORK_DIR
set -euo pipefail

generator=$1 prefix=$2 work=$3
project="$work/a project" comment='Compiling the definitions'
# shellcheck source=tests/package/small_project.sh
source "$(dirname "$0")/small_project.sh"

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
expect_built base events.ldf site.ldf
[[ -s "$work/build/base events.ldf" && -s $work/build/out/site/site.ldf ]] || fail "a file is missing"
expect_built

change "$project/src/site.yaml" "$work/build/out/site/site.ldf.stamp"
expect_built site.ldf
expect_built
change "$project/src/base events.yaml" "$work/build/base events.ldf.stamp" "$work/build/out/site/site.ldf.stamp"
expect_built base events.ldf site.ldf

printf '  - {id: 1, name: C, message: "text"}\n' >>"$project/src/base events.yaml"
change "$project/src/base events.yaml" "$work/build/base events.ldf.stamp"
expect_build_refused '[duplicate-id]'

expect_refused 'TARGET and SOURCES are required' 'qzlog_add_definitions(TARGET events)'
expect_refused 'TARGET and SOURCES are required' 'qzlog_add_definitions(SOURCES src/site.yaml)'
expect_refused 'unknown arguments: PATHS' 'qzlog_add_definitions(PATHS TARGET events SOURCES src/site.yaml)'
expect_refused 'without a value: DESTINATION' 'qzlog_add_definitions(TARGET events SOURCES src/site.yaml DESTINATION)'
expect_refused 'PATH is icu, narrow or both, not wide' 'qzlog_add_definitions(TARGET e SOURCES src/site.yaml PATH wide)'
expect_refused 'two sources would be compiled to' 'qzlog_add_definitions(TARGET e SOURCES a/site.yaml src/site.yaml)'
