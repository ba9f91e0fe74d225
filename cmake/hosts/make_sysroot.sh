#!/bin/bash
# Unpacks Debian packages of another architecture into a folder that compilers and emulators take for the root of the file system.
# The system's packages, and what it knows about architectures, stay as they are: apt has lists, a cache and a status of its own, and
# takes only the sources and their keys from the system.
# Usage: make_sysroot.sh FOLDER ARCHITECTURE PACKAGE...
set -euo pipefail

folder=$1 architecture=$2
packages=("${@:3}")

apt=$(realpath -m "$folder.apt")
rm -rf "$folder" "$folder.new" "$apt"
mkdir -p "$folder.new" "$apt/lists/partial" "$apt/packages/partial"
touch "$apt/status"
cat >"$apt/apt.conf" <<TEXT
#clear APT::Architectures;
#clear APT::Update;
#clear DPkg;
APT::Architecture "$architecture";
APT::Architectures { "$architecture"; };
APT::Sandbox::User "root";
Acquire::Languages "none";
Dir::State "$apt";
Dir::State::lists "$apt/lists";
Dir::State::status "$apt/status";
Dir::Cache "$apt/cache";
TEXT
apt() { apt-get --config-file="$apt/apt.conf" "$@"; }

# A list that is missing does no harm as long as the others name the packages.
apt update || echo "make_sysroot.sh: some lists of packages are missing" >&2
(cd "$apt/packages" && apt download "${packages[@]}")
for package in "$apt"/packages/*.deb; do
  dpkg-deb -x "$package" "$folder.new"
done
rm -rf "$apt"
mv "$folder.new" "$folder"
