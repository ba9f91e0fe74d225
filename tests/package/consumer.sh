#!/bin/bash
# Builds and runs the project in consumer/ against an installed qzlog, the way a product would.
# Usage: consumer.sh find_package|pkg-config COMPILER STANDARD PREFIX WORK_DIR
set -euo pipefail

way=$1 compiler=$2 standard=$3 prefix=$4 work=$5
source_dir=$(cd "$(dirname "$0")" && pwd)/consumer

build_with_find_package() {
  cmake -S "$source_dir" -B "$work/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
    -DCMAKE_CXX_STANDARD="$standard" -DCMAKE_PREFIX_PATH="$prefix"
  cmake --build "$work/build"
  consumer=$work/build/consumer
}

build_with_pkg_config() {
  pc=$(find "$prefix" -name qzlog.pc)
  PKG_CONFIG_PATH=$(dirname "$pc")
  export PKG_CONFIG_PATH
  libdir=$(pkg-config --variable=libdir qzlog)
  read -ra flags <<<"$(pkg-config --cflags --libs qzlog)"
  "$compiler" -std="c++$standard" -Wall -Wextra -Wpedantic -Werror -DEXPECTED_VERSION="\"$(pkg-config --modversion qzlog)\"" \
    "$source_dir/main.cpp" "${flags[@]}" -Wl,-rpath,"$libdir" -o "$work/consumer"
  consumer=$work/consumer
}

rm -rf "$work"
mkdir -p "$work"
if [[ $way == find_package ]]; then build_with_find_package; else build_with_pkg_config; fi

"$prefix/bin/qzlog" compile "$source_dir/events.yaml" -o "$work/events.ldf"
output=$("$consumer" "$work/events.ldf")
expected="Disk vol1 is full: 0 of 4096 blocks free"
if [[ $output != "$expected" ]]; then
  printf 'expected: %s\n     got: %s\n' "$expected" "$output"
  exit 1
fi
