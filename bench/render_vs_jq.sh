#!/bin/bash
# Measures qzlog render against jq building the same text, on a million lines and one core.
#
# Usage: render_vs_jq.sh QZLOG      the command to measure
#
# The entries are a sample of real logs where that is at hand, else generated ones of bench/events.yaml.
set -euo pipefail
readonly QZLOG=$1
readonly LINES_WANTED=1000000
readonly MEMORY_LIMIT_KIB=65536
readonly HERE=${BASH_SOURCE[0]%/*}
readonly SAMPLE=$HERE/../../shared/corpora/HDFS/HDFS
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

choose_entries() {
  if [[ -e $SAMPLE.jsonl ]]; then
    source=$SAMPLE.yaml
    cp "$SAMPLE.jsonl" "$work/sample.jsonl"
    echo "Entries: HDFS log lines, repeated"
  else
    source=$HERE/events.yaml
    generate_entries >"$work/sample.jsonl"
    echo "Entries: generated ones of bench/events.yaml, for the sample of real logs is not at hand"
  fi
}

generate_entries() {
  local i
  for ((i = 0; i < 2000; i++)); do
    printf '{"id":1003,"level":3,"attributes":{"Name":"volume-%04d","Blocks":%d,"Delta":%d,"Share":%d,"Label":"%s"}}\n' \
      "$i" $((i * 7919)) $((i - 1000)) $((i % 1000)) "Größenprüfung in Köln läuft bis Mai"
    printf '{"id":1005,"attributes":{"Number":%d}}\n' "$i"
  done
}

repeat_entries() {
  local copies=$((LINES_WANTED / $(wc -l <"$work/sample.jsonl") + 1)) i
  for ((i = 0; i < copies; i++)); do
    cat "$work/sample.jsonl"
  done | head -n "$LINES_WANTED" >"$work/entries.jsonl" || true
}

render_icu() { "${launcher[@]}" "$QZLOG" render --definitions "$work/definitions.ldf" --locale en_US "$@"; }
render_narrow() { "${launcher[@]}" "$QZLOG" render --definitions "$work/definitions.ldf" --no-icu "$@"; }
run_jq() { "${launcher[@]}" jq -r -f "$work/messages.jq" "$@"; }

# What the commands are started through.
launcher=()

compare_texts() {
  local tool
  run_jq "$work/sample.jsonl" >"$work/expected"
  for tool in render_icu render_narrow; do
    "$tool" "$work/sample.jsonl" | cmp - "$work/expected"
  done
}

# measure TOOL: prints seconds of processor time and the peak of memory in KiB.
measure() {
  launcher=(taskset -c 0 /usr/bin/time -f '%U %S %M' -o "$work/time")
  "$1" "$work/entries.jsonl" >/dev/null
  launcher=()
  awk '{ print $1 + $2, $3 }' "$work/time"
}

# report NAME SECONDS MEMORY [AT_LEAST]: lines per second, and how many times those of jq.
report() {
  awk -v name="$1" -v seconds="$2" -v memory="$3" -v target="${4:-0}" -v jq="$jq_seconds" -v lines="$LINES_WANTED" \
    -v limit="$MEMORY_LIMIT_KIB" '
    function mark(met) { return met ? "ok" : "MISSED" }
    BEGIN {
      memory_text = sprintf("%.1f MiB", memory / 1024)
      times = "1"
      if (target > 0) {
        memory_text = memory_text " " mark(memory < limit)
        times = sprintf("%.1f of %g %s", jq / seconds, target, mark(jq / seconds >= target))
      }
      printf "| %-20s | %9d | %-17s | %-17s |\n", name, lines / seconds, memory_text, times
    }'
}

choose_entries
repeat_entries
"$QZLOG" compile "$source" -o "$work/definitions.ldf"
python3 -B "$HERE/jq_program.py" "$source" >"$work/messages.jq"
compare_texts
printf '%s lines, one core; lines per second of processor time\n\n' "$LINES_WANTED"
printf '| %-20s | %9s | %-17s | %-17s |\n' '' lines/s 'memory, below 64' 'times jq'
echo '|----------------------|-----------|-------------------|-------------------|'
read -r jq_seconds jq_memory < <(measure run_jq)
report 'jq -r' "$jq_seconds" "$jq_memory"
read -r seconds memory < <(measure render_narrow)
report 'qzlog render, narrow' "$seconds" "$memory" 20
read -r seconds memory < <(measure render_icu)
report 'qzlog render, ICU' "$seconds" "$memory" 10
