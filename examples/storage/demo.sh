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
cp -R "$sources"/*.yaml "$sources"/*.jsonl "$sources"/*.conf "$sources"/po .
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

say "The same program keeps entries while it works. Where they go says sinks.conf:"
sed -n '/^\[log\]/,/^sync_level/p' sinks.conf

mkdir logs
run "storage_events keep . sinks.conf 2>console.txt"

say "An operator's terminal had the warnings and errors, but not the same one over and over:"
run "head -4 console.txt"
grep -m 1 HELD console.txt

say "The log is a series of files; each line tells its writer and has a number. Is one missing?"
run "ls logs"
run "head -1 logs/storage.*1"
run "qzlog render --definitions storage.ldf --check-gaps logs/storage >all.txt"

say "What is in the log, and how much of it? How much space was left?"
run "qzlog stats --definitions storage.ldf logs/storage"
run "qzlog stats --definitions storage.ldf --by Reason --of Free --where 'exists(Free)' logs/storage"

say "Entries are chosen by their attributes, of which the definitions know the types:"
run "qzlog render --definitions storage.ldf --output short --where 'Free < 24000 and (Reason = 20 or missing(Reason))' logs/storage"

# follow LOCALE: shows the last error of the log, then the others as they come, in the language of the locale, until finish_following.
followers=() printers=()
trap '((${#followers[@]} == 0)) || kill "${followers[@]}"' EXIT
follow() {
  local messages
  : >"messages.$1"
  exec {messages}> >(exec sed -u -e "s/^/$1  /" -e "w messages.$1")
  printers+=($!)
  qzlog render --definitions storage.ldf --catalog messages --locale "$1" --level 7.. --tail 1 --follow logs/storage 1>&"$messages" &
  followers+=($!)
  exec {messages}>&-
}

# Waits until each follower has shown so many messages. False when one has not after ten seconds.
await_followers() {
  local locale all=0 until=$((SECONDS + 10))
  for locale in "${locales[@]}"; do
    while (($(wc -l <"messages.$locale") < $1 && SECONDS < until)); do sleep 0.05; done
    (($(wc -l <"messages.$locale") == $1)) || all=1
  done
  return $all
}

# Ends the followers when each has shown so many messages.
finish_following() {
  local status=0
  await_followers "$1" || status=1
  kill "${followers[@]}"
  wait "${followers[@]}" "${printers[@]}" 2>/dev/null || true
  followers=()
  return $status
}

say "The product is started once more. While it writes, two readers follow its errors, each in a language of their own:"
locales=(en_US ja_JP)
for locale in "${locales[@]}"; do
  printf '$ %s &\n' "qzlog render --definitions storage.ldf --catalog messages --locale $locale --level 7.. --tail 1 --follow logs/storage"
  follow "$locale"
done
await_followers 1
errors=$(cat logs/storage.* | grep -c '"level":[789],')
run "storage_events keep . sinks.conf 2>console.txt"
finish_following $(($(cat logs/storage.* | grep -c '"level":[789],') - errors + 1))
