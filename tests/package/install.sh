#!/bin/bash
# Installs a build tree into an empty prefix, and checks that what comes with the command is where it is looked for.
# Usage: install.sh CMAKE BUILD_DIR PREFIX
set -euo pipefail
missing=()

rm -rf "$3"
"$1" --install "$2" --prefix "$3" >/dev/null

for name in qzlog qzlog-compile qzlog-render qzlog-count-show; do
  [[ -s $3/share/man/man1/$name.1 ]] || missing+=("$name.1")
done
for name in qzlog.7 qzlog-{config,counter,definitions,entries,ldf}.5; do
  [[ -s $3/share/man/man${name##*.}/$name ]] || missing+=("$name")
done
for file in bash-completion/completions/qzlog zsh/site-functions/_qzlog fish/vendor_completions.d/qzlog.fish \
  qzlog/lnav/qzlog_entries.json doc/qzlog/{README,SECURITY,CHANGELOG}.md \
  doc/qzlog/docs/{README,user-guide,command,environment,definition-source}.md; do
  [[ -s $3/share/$file ]] || missing+=("$file")
done
if ((${#missing[@]})); then
  echo "not installed: ${missing[*]}" >&2
  exit 1
fi
