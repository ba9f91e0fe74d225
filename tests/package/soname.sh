#!/bin/bash
# Fails unless the library's SONAME is libqzlog.so.1 and it needs no library but ICU and the system's own.
set -euo pipefail

dynamic=$(readelf -dW "$1")
grep -q 'SONAME.*\[libqzlog\.so\.1\]' <<<"$dynamic" || { echo "wrong SONAME:"; grep SONAME <<<"$dynamic"; exit 1; }
others=$(grep NEEDED <<<"$dynamic" | grep -vE '\[(libicu(uc|i18n|data)|libstdc\+\+|libm|libgcc_s|libc|ld-linux-[a-z0-9-]+)\.so' || true)
if [[ -n $others ]]; then
  printf 'unexpected libraries:\n%s\n' "$others"
  exit 1
fi
