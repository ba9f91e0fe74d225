#!/bin/bash
# demo.sh BUILD_DIR: what qzlog does, step by step, with the example product: each command, its output and its time.
set -euo pipefail

if (($# != 1)); then
  echo "Usage: demo.sh BUILD_DIR" >&2
  exit 2
fi
build=$(cd "$1" && pwd)
sources=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
export PATH=$build/tools:$build/examples/storage:$PATH
export TZ=Europe/Berlin

say() { printf '\n# %s\n' "$*"; }

# The decimal sign of EPOCHREALTIME is the locale's.
microseconds() { echo "${EPOCHREALTIME//[!0-9]/}"; }

# run COMMAND LINE...: shows the line of shell, runs it and shows how long it took.
run() {
  local started took
  printf '$ %s\n' "$*"
  started=$(microseconds)
  eval "$*"
  took=$(($(microseconds) - started))
  printf -- '-- %d.%03d s\n' $((took / 1000000)) $((took % 1000000 / 1000))
}

render() { run "head -3 storage.jsonl | qzlog render --definitions storage.ldf $*"; }

# A copy of the product's files, to play with.
rm -rf "$build/demo"
mkdir "$build/demo"
cd "$build/demo"
cp -R "$sources"/*.yaml "$sources"/*.jsonl "$sources"/po .
echo "# In $build/demo; the time zone is $TZ."

say "One of the product's events, as its author writes it in storage.yaml:"
sed -n '/name: DISK_FAILED/,/^$/{/^$/!p}' storage.yaml

say "The definitions are checked and compiled, then the messages as the translators wrote them:"
run qzlog compile storage.yaml -o storage.ldf
run qzlog compile storage_aux.yaml --aux-of storage.yaml -o storage_aux.ldf
run qzlog catalog build storage.yaml storage_aux.yaml --po po -o messages

say "A C++ program builds entries and shows their messages (more: entries attributes choices refusals auxiliary):"
run storage_events . messages

say "The command renders entries that were stored or sent as lines of JSON, such as this one:"
sed -n 2p storage.jsonl
render --catalog messages --locale en_US
render --catalog messages --locale de_DE
render --catalog messages --locale ja_JP
render --no-icu
