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
  definitions=$work/build/definitions/events.ldf
  check_definitions
}

# What qzlog_add_definitions made: beside the program, in the build folder, and installed.
check_definitions() {
  "$prefix/bin/qzlog" compile "$source_dir/events.yaml" -o "$work/expected.ldf"
  cmp "$definitions" "$work/expected.ldf"
  "$prefix/bin/qzlog" compile "$source_dir/site events.yaml" --aux-of "$source_dir/events.yaml" --path icu -o "$work/expected.ldf"
  cmp "$work/build/site events.ldf" "$work/expected.ldf"
  cmake --install "$work/build" --prefix "$work/installed"
  cmp "$work/installed/share/consumer/events.ldf" "$definitions"
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
  definitions=$work/events.ldf
  "$prefix/bin/qzlog" compile "$source_dir/events.yaml" -o "$definitions"
}

rm -rf "$work"
mkdir -p "$work"
if [[ $way == find_package ]]; then build_with_find_package; else build_with_pkg_config; fi

output=$("$consumer" "$definitions")
expected="Disk vol1 is full: 0 of 4096 blocks free"
if [[ $output != "$expected" ]]; then
  printf 'expected: %s\n     got: %s\n' "$expected" "$output"
  exit 1
fi
