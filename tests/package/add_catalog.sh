#!/bin/bash
# Uses qzlog_add_catalog in a small project: what is built, when again, and what it refuses. Usage: add_catalog.sh PREFIX WORK_DIR
set -euo pipefail

prefix=$1 work=$2 generator=Ninja
project="$work/a project" comment='Building the message catalog'
# shellcheck source=tests/package/small_project.sh
source "$(dirname "$0")/small_project.sh"

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

change "$project/po/de.po" "$work/build/messages.stamp" "$work/build/out/other texts.stamp"
expect_built messages 'out/other texts'

cmake --install "$work/build" >/dev/null
[[ $(cd "$work/installed/share/messages" && echo *) == 'de.res en.res root.res' ]] || fail "not all bundles were installed"

sed -i 's/^msgstr "Text"/msgstr "{Text}"/' "$project/po/de.po"
change "$project/po/de.po" "$work/build/messages.stamp"
expect_build_refused '[unknown-attribute]'

expect_refused 'TARGET, SOURCES and PO are required' 'qzlog_add_catalog(TARGET texts SOURCES events.yaml)'
expect_refused 'unknown arguments: FILES' 'qzlog_add_catalog(FILES TARGET texts SOURCES events.yaml PO po/de.po)'
expect_refused 'without a value: DESTINATION' 'qzlog_add_catalog(TARGET texts SOURCES events.yaml PO po/de.po DESTINATION)'
