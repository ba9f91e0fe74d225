#!/bin/bash
# Uses qzlog_add_catalog in a small project: what is built, when again, and what it refuses. Usage: add_catalog.sh PREFIX WORK_DIR
set -euo pipefail

prefix=$1 work=$2
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

configure() { cmake -S "$project" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_INSTALL_PREFIX="$work/installed" 2>&1; }

# expect_built NAME...: which catalogs the next build makes.
expect_built() {
  local got
  got=$(cmake --build "$work/build" 2>&1 | sed -n 's/.*Building the message catalog: //p' | sort | paste -sd ' ')
  [[ $got == "$*" ]] || fail "expected to be built: $*" "                 got: $got"
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

rm -rf "$work"
mkdir -p "$project/po"
printf '%s\n' 'version: "1.0"' 'entries:' '  - {id: 1, name: A, message: "text"}' >"$project/events.yaml"
cat >"$project/po/de.po" <<'PO'
msgid ""
msgstr "Language: de\nContent-Type: text/plain; charset=UTF-8\n"

msgctxt "A"
msgid "text"
msgstr "Text"
PO

write_project \
  'qzlog_add_catalog(TARGET texts SOURCES events.yaml PO po/de.po INSTALL_DESTINATION share/messages)' \
  'qzlog_add_catalog(TARGET texts SOURCES events.yaml PO po/de.po SOURCE_LANGUAGE fr DESTINATION "out/other texts")'
output=$(configure) || fail "$output"
expect_built messages 'out/other texts'
expect_built
[[ -s $work/build/messages/en.res && -s "$work/build/out/other texts/fr.res" ]] || fail "a bundle is missing"
[[ ! -e "$work/build/out/other texts/en.res" ]] || fail "the source language was not used"

touch -d '-1 minute' "$work/build/messages.stamp" "$work/build/out/other texts.stamp"
touch "$project/po/de.po"
expect_built messages 'out/other texts'

cmake --install "$work/build" >/dev/null
[[ $(cd "$work/installed/share/messages" && echo *) == 'de.res en.res root.res' ]] || fail "not all bundles were installed"

sed -i 's/^msgstr "Text"/msgstr "{Text}"/' "$project/po/de.po"
touch -d '-1 minute' "$work/build/messages.stamp"
if output=$(cmake --build "$work/build" 2>&1); then fail "a wrong translation was taken"; fi
[[ $output == *"[unknown-attribute]"* ]] || fail "$output"

expect_refused 'TARGET, SOURCES and PO are required' 'qzlog_add_catalog(TARGET texts SOURCES events.yaml)'
expect_refused 'unknown arguments: FILES' 'qzlog_add_catalog(FILES TARGET texts SOURCES events.yaml PO po/de.po)'
expect_refused 'without a value: DESTINATION' 'qzlog_add_catalog(TARGET texts SOURCES events.yaml PO po/de.po DESTINATION)'
