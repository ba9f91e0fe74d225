# Prints what zsh offers when the tab key is pressed behind a line, and then the line as it stands afterwards.
# Usage: zsh -f complete.zsh FOLDER_WITH_COMPLETION LINE      The working folder has to be writable.
zmodload zsh/zpty

# A shell at a terminal of its own. Whoever adds matches to the list is overheard; calls that only ask which ones would match
# are let through. ^G writes the line down and ends the shell.
setup='
fpath=('$1' $fpath); autoload -Uz compinit; compinit -u -C -d '$PWD'/dump
compadd() {
  if [[ ${@[(i)-[OAD]]} -le $# ]]; then builtin compadd "$@"; return; fi
  local -a offered; builtin compadd -O offered "$@"; print -rl -- $offered >> offered.txt
  builtin compadd "$@"
}
show() { print -r -- "$BUFFER" > line.txt; exit }
zle -N show; bindkey "^I" complete-word "^G" show
'
: > offered.txt
zpty shell "ZDOTDIR=$PWD TERM=dumb zsh -f -i"
zpty -w shell ${setup//$'\n'/;}
zpty -w -n shell "$2"$'\t\a'
while zpty -r shell text; do :; done
sort -u offered.txt | sed '/^$/d'
printf '[%s]\n' "$(<line.txt)"
