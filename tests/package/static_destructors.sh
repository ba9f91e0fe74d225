#!/bin/bash
# Fails when the library asks for a destructor at the end of the process: its threads may still log then. Static objects
# with one belong into qzlog::NeverDestroyed. Usage: static_destructors.sh libqzlog.so
set -euo pipefail

symbols=$(nm --dynamic --undefined-only "$1")
if grep -wE '__cxa_atexit|__aeabi_atexit|atexit|on_exit' <<<"$symbols"; then
  echo "An object of the library is destroyed when the process ends. Look for it among:"
  nm --demangle "$1" | grep -E '_GLOBAL__sub_I|guard variable' || true
  exit 1
fi
