# Sourced by the tests that use a function of the package in a small project of their own. They set: project, its folder; work, the
# folder it is built and installed in; generator; prefix, that of the installed package; comment, what a build says of each result.
# shellcheck shell=bash disable=SC2154 # the variables are the test's

fail() {
  printf '%s\n' "$@"
  exit 1
}

# write_project LINE...: a project that makes the calls given.
write_project() {
  printf '%s\n' 'cmake_minimum_required(VERSION 3.10)' 'project(product NONE)' 'find_package(qzlog REQUIRED)' "$@" \
    >"$project/CMakeLists.txt"
}

configure() {
  cmake -S "$project" -B "$work/build" -G "$generator" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_INSTALL_PREFIX="$work/installed" 2>&1
}

# expect_built NAME...: what the next build makes, in the order of the alphabet.
expect_built() {
  local output got
  output=$(cmake --build "$work/build" 2>&1) || fail "$output"
  got=$(sed -n "s/.*$comment: //p" <<<"$output" | sort | paste -sd ' ')
  [[ $got == "$*" ]] || fail "expected to be built: $*" "                 got: $got"
}

# expect_build_refused TEXT: the next build fails and says this.
expect_build_refused() {
  local output
  if output=$(cmake --build "$work/build" 2>&1); then fail "built all the same"; fi
  [[ $output == *"$1"* ]] || fail "expected: $1" "$output"
}

# expect_refused TEXT LINE...: a project with these lines cannot be configured, and is told why.
expect_refused() {
  local text=$1 output
  shift
  write_project "$@"
  if output=$(configure); then fail "configured all the same: $*"; fi
  output=$(tr -s ' \n' ' ' <<<"$output")
  [[ $output == *"$text"* ]] || fail "expected: $text" "$output"
}

# change SOURCE RESULT...: a source that is newer than what was made of it, whatever the file system's clock can tell apart.
change() {
  touch -d '-1 minute' "${@:2}"
  touch "$1"
}
