#!/bin/bash
# Uses qzlog_add_catalog in a small project: what is built and installed, when again, and what it refuses.
# Usage: add_catalog.sh GENERATOR PREFIX WORK_DIR
set -euo pipefail

generator=$1 prefix=$2 work=$3
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

# expect_installed NAME...: what is in the catalog that goes into an empty prefix.
expect_installed() {
  rm -rf "$work/installed"
  cmake --install "$work/build" >/dev/null
  local got
  got=$(cd "$work/installed/share/messages" && echo *)
  [[ $got == "$*" ]] || fail "expected to be installed: $*" "                     got: $got"
}

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

expect_installed de.res en.res root.res

# A language that comes, stays, and goes; by hand, and found by a pattern.
sed 's/Language: de/Language: fr/; s/"Text"/"Texte"/' "$project/po/de.po" >"$project/po/fr.po"
write_project 'qzlog_add_catalog(TARGET texts SOURCES events.yaml PO po/de.po po/fr.po INSTALL_DESTINATION share/messages)'
expect_built messages
expect_installed de.res en.res fr.res root.res
write_project 'qzlog_add_catalog(TARGET texts SOURCES events.yaml PO po/de.po INSTALL_DESTINATION share/messages)'
expect_built messages
[[ ! -e $work/build/messages/fr.res ]] || fail "the language that was taken away is still there"
expect_installed de.res en.res root.res
# shellcheck disable=SC2016 # the variable is CMake's
write_project 'file(GLOB languages CONFIGURE_DEPENDS po/*.po)' \
  'qzlog_add_catalog(TARGET texts SOURCES events.yaml PO ${languages} INSTALL_DESTINATION share/messages)'
expect_built messages
expect_installed de.res en.res fr.res root.res
rm "$project/po/fr.po"
expect_built messages
expect_built
expect_installed de.res en.res root.res

# Another source language is another catalog.
write_project \
  'qzlog_add_catalog(TARGET texts SOURCES events.yaml PO po/de.po SOURCE_LANGUAGE fr INSTALL_DESTINATION share/messages)'
expect_built messages
expect_installed de.res fr.res root.res

# What others left in the folder is not installed; in the build tree the catalog takes the place of a file of its name.
write_project 'qzlog_add_catalog(TARGET texts SOURCES events.yaml PO po/de.po INSTALL_DESTINATION share/messages)'
cp "$work/build/messages/de.res" "$work/build/messages/ja.res"
echo 'made by others' >"$work/build/messages/de.res"
expect_built messages
expect_installed de.res en.res root.res
[[ -e $work/build/messages/ja.res ]] || fail "a bundle of others was removed"
cmp -s "$work/build/messages/de.res" "$work/build/messages/ja.res" || fail "the bundle was not replaced"

# Elsewhere it does not.
mkdir "$project/kept"
echo 'precious' >"$project/kept/de.res"
write_project \
  "qzlog_add_catalog(TARGET texts SOURCES events.yaml PO po/de.po DESTINATION [[$project/kept]] INSTALL_DESTINATION share/messages)"
expect_build_refused '[foreign-bundle]'
[[ $(cat "$project/kept/de.res") == precious ]] || fail "a file of others was replaced"
if cmake --install "$work/build" >/dev/null 2>&1; then fail "a catalog that was not built was installed"; fi

# An absolute place, below DESTDIR as packagers have it.
write_project \
  'qzlog_add_catalog(TARGET texts SOURCES events.yaml PO po/de.po INSTALL_DESTINATION /opt/product/messages)'
cmake --build "$work/build" >/dev/null
DESTDIR="$work/staged" cmake --install "$work/build" >/dev/null
[[ $(cd "$work/staged/opt/product/messages" && echo *) == 'de.res en.res root.res' ]] || fail "nothing was staged"

sed -i 's/^msgstr "Text"/msgstr "{Text}"/' "$project/po/de.po"
change "$project/po/de.po" "$work/build/messages.stamp"
expect_build_refused '[unknown-attribute]'

expect_refused 'TARGET, SOURCES and PO are required' 'qzlog_add_catalog(TARGET texts SOURCES events.yaml)'
expect_refused 'unknown arguments: FILES' 'qzlog_add_catalog(FILES TARGET texts SOURCES events.yaml PO po/de.po)'
expect_refused 'without a value: DESTINATION' 'qzlog_add_catalog(TARGET texts SOURCES events.yaml PO po/de.po DESTINATION)'
