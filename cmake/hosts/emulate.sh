#!/bin/bash
# Runs another host's program under user-mode emulation. A program may start itself once more by its first argument, as GoogleTest
# does for the processes in which something has to die. This machine cannot execute it, so that argument is a script beside the
# program that calls the emulator.
# Usage: emulate.sh EMULATOR SYSROOT PROGRAM [ARGUMENT...]
set -euo pipefail

emulator=$1 sysroot=$2 program=$3
script=$program.emulated

if [[ ! -x $script ]]; then
  cat >"$script.$$" <<TEXT
#!/bin/sh
exec ${emulator@Q} -L ${sysroot@Q} -0 "\$0" ${program@Q} "\$@"
TEXT
  chmod +x "$script.$$"
  mv "$script.$$" "$script"
fi
exec "$script" "${@:4}"
