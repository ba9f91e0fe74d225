#!/bin/bash
# Builds the example service in examples/shop against an installed qzlog, and looks at what it logged and counted.
# Usage: shop.sh SOURCE_DIR PREFIX WORK_DIR
set -euo pipefail

source_dir=$1 prefix=$2 work=$3
export PATH=$prefix/bin:$PATH TZ=Europe/Berlin

fail() {
  printf '%s\n' "$@"
  exit 1
}

# expect_line FILE LINE: FILE has this line.
expect_line() { grep -qxF -- "$2" "$1" || fail "$1 has no line: $2" "$(head "$1")"; }

# expect_nothing COMMAND...: it succeeds and has nothing to say.
expect_nothing() {
  local output
  output=$("$@" 2>&1) || fail "failed: $*" "$output"
  [[ -z $output ]] || fail "expected to say nothing: $*" "$output"
}

# run_shop FOLDER: the service, at work twice at the same time, in a folder with what was built and without earlier logs.
run_shop() {
  mkdir "$1"
  cp -R "$work/build/"{shop.ldf,shop_site.ldf,shop.conf,messages} "$1"
  "$work/build/shop" "$1" >"$1/first.txt" 2>&1 &
  "$work/build/shop" "$1" >"$1/second.txt" 2>&1 || fail "$(cat "$1/second.txt")"
  wait $! || fail "$(cat "$1/first.txt")"
}

# render FOLDER LOCALE: its messages, into LOCALE.txt.
render() {
  qzlog render --definitions "$1/shop.ldf" --aux "$1/shop_site.ldf" --catalog "$1/messages" --locale "$2" --check-gaps "$1/logs/shop" \
    >"$1/$2.txt" 2>"$1/$2.errors" || fail "$(cat "$1/$2.errors")"
  expect_line "$1/$2.errors" "seq: $(wc -l <"$1/$2.txt") lines of 2 writers, 0 missing, 0 doubled"
}

# counted_in FILE: how often each event came, from a file of what `qzlog stats` or `qzlog count` shows.
counted_in() { sed -nE "$1" "$2" | sort -n; }

rm -rf "$work"
mkdir -p "$work"
cp -R "$source_dir" "$work/source"
cmake -S "$work/source" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS=-Werror >"$work/configure.log" 2>&1 ||
  fail "$(cat "$work/configure.log")"
cmake --build "$work/build" >"$work/build.log" 2>&1 || fail "$(cat "$work/build.log")"
if grep -i 'warning:' "$work/build.log"; then fail "built with warnings"; fi

cd "$work/source"
expect_nothing qzlog check --config shop.conf --section shop
expect_nothing qzlog check shop.yaml shop_site.yaml --catalog "$work/build/messages"
qzlog catalog status shop.yaml shop_site.yaml --po po --require-complete >"$work/status.txt" || fail "$(cat "$work/status.txt")"

# As it comes: 699 entries of each, none of them a debug entry, and each counted once.
run_shop "$work/as_it_comes"
cd "$work/as_it_comes"
expect_line first.txt 'Entries: 699 written, 400 filtered, 0 failed, 0 not counted'
expect_line second.txt 'Entries: 699 written, 400 filtered, 0 failed, 0 not counted'
for locale in en_US de_DE ja_JP; do render . $locale; done
expect_line en_US.txt 'Order 10001: 2 items for Jürgen Groß, 25 JPY'
expect_line de_DE.txt 'Bestellung 10002: 3 Artikel für 佐藤 花子, 37,5 USD'
expect_line ja_JP.txt '注文 10002 を Päckchen & Co. で発送しました (送り状番号 P-700002、0.75 kg)。'
expect_line en_US.txt 'Order 10099 was cancelled, for nobody paid it'
expect_line de_DE.txt 'Bestellung 10009 wurde storniert'
qzlog stats --definitions shop.ldf --aux shop_site.ldf logs/shop >stats.txt
qzlog count show events.cnt >counts.txt
counted_in 's/^ *([0-9]+)  [A-Z_]+ +([0-9]+) .*/\1 \2/p' stats.txt >logged.txt
counted_in 's/^total +([0-9]+) +([0-9]+)$/\1 \2/p' counts.txt >counted.txt
[[ $(wc -l <logged.txt) == 26 ]] || fail "events are missing:" "$(cat stats.txt)"
diff logged.txt counted.txt || fail "logged and counted are not the same"
if grep -q 5500-0000 logs/*; then fail "a card is in the log"; fi

# An operator may narrow it to errors.
mkdir "$work/narrowed"
sed -i 's/^LogLevelLow = 2$/LogLevelLow = 7/' "$work/build/shop.conf"
run_shop "$work/narrowed/shop"
expect_line "$work/narrowed/shop/first.txt" 'Entries: 17 written, 1082 filtered, 0 failed, 0 not counted'

# Without a configuration file everything is logged.
rm "$work/build/shop.conf"
touch "$work/build/shop.conf"
run_shop "$work/unfiltered"
expect_line "$work/unfiltered/first.txt" 'Entries: 1099 written, 0 filtered, 0 failed, 0 not counted'
