#!/bin/bash
# operate.sh CHECK SOURCES QZLOG FOLDER: what the program that an example configuration is for says of it. Exit status 77 where the program
# is not installed.
set -euo pipefail

check=$1 sources=$2 qzlog=$3 folder=$4

# needs PROGRAM: its path.
needs() {
  PATH=$PATH:/usr/sbin:/sbin command -v "$1" && return
  echo "$1 is not installed" >&2
  exit 77
}

# The server of a package: installed, or unpacked below $QZLOG_SYSLOG_SERVERS.
needs_server() {
  local unpacked=${QZLOG_SYSLOG_SERVERS:-/nowhere}/$1/usr/sbin/$2
  if [[ -x $unpacked ]]; then echo "$unpacked"; else needs "$2"; fi
}

make_certificate() {
  openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=example -keyout server.key -out server.pem 2>/dev/null
  cp server.pem ca.pem
}

check_service() {
  local analyze
  analyze=$(needs systemd-analyze)
  sed "s:/usr/bin/qzlog:$qzlog:" "$sources/qzlog-ship@.service" >"qzlog-ship@.service"
  # Of this unit alone; the machine's own may have faults.
  "$analyze" verify --man=no --recursive-errors=no "$PWD/qzlog-ship@.service" 2>&1 | tee found.txt
  [[ ! -s found.txt ]]
  # 0 is what nothing can be done to, 10 what has no bounds.
  "$analyze" security --offline=true --threshold=20 --no-pager "$PWD/qzlog-ship@.service" >exposure.txt || { cat exposure.txt; return 1; }
  tail -1 exposure.txt
}

check_users() {
  mkdir -p root/etc
  "$(needs systemd-sysusers)" --root="$PWD/root" "$sources/qzlog-ship.sysusers.conf"
  grep '^qzlog-ship:' root/etc/passwd
  "$(needs systemd-tmpfiles)" --root="$PWD/root" --create "$sources/qzlog-ship.tmpfiles.conf"
  [[ $(stat -c %a root/etc/qzlog/ship) == 750 ]]
}

check_environment() {
  # shellcheck disable=SC1091  # the copy that the user makes
  . "$sources/storage.env"
  mkdir logs && echo '{"id":1}' >logs/storage.20261121.0001
  : >credentials
  # A plug-in for the scheme is not there, so that what is wrong in the words comes first, and then that.
  # shellcheck disable=SC2086  # words
  HOME=$PWD "$qzlog" ship logs --to "$TO" --plugins "$PWD" ${OPTIONS//\/etc\/qzlog\/ship\/*.credentials/credentials} 2>&1 | tee said.txt && return 1
  grep -q 'ship-nats' said.txt && [[ $SERIES == /* ]]
}

check_nats() {
  local server
  server=$(needs nats-server)
  make_certificate
  cp "$sources"/nats-*.conf .
  sed -i "s:/etc/nats:$PWD:g; s:/var/lib/nats:$PWD/store:" nats-cluster.conf
  for number in 1 2 3; do NATS_SHIP_PASSWORD=one NATS_READ_PASSWORD=two "$server" -c "nats-$number.conf" -t; done
}

# What the file grants is enough to ship and to read, and a reader can take nothing away.
check_nats_rights() {
  local server port url pid
  server=$(needs nats-server)
  port=$((20000 + $$ % 20000))
  { echo "listen: \"127.0.0.1:$port\"" && sed -n '/^authorization/,$p' "$sources/nats-cluster.conf"; } >rights.conf
  NATS_SHIP_PASSWORD=one NATS_READ_PASSWORD=two "$server" -c rights.conf -js -sd "$PWD/store" 2>server.log &
  pid=$!
  # shellcheck disable=SC2064  # this one
  trap "kill $pid" EXIT
  timeout 20 sh -c "until grep -q 'Server is ready' server.log; do sleep 0.1; done"
  printf 'user = ship\npassword = one\n' >ship.txt
  printf 'user = read\npassword = two\n' >read.txt
  mkdir logs
  echo '{"writer":"h/1/2","seq":1,"id":1,"attributes":{}}' >logs/s.20261121.0001
  printf 'version: "1.0"\nentries:\n  - {id: 1, name: N, message: "shown"}\n' >d.yaml
  url=nats://127.0.0.1:$port/ENTRIES
  "$qzlog" ship logs --to "$url" --credentials ship.txt --state state.json --option create=yes --once 2>said.txt
  [[ $("$qzlog" render --definitions d.yaml --from "$url" --credentials read.txt) == shown ]]
  [[ $("$qzlog" render --definitions d.yaml --from "$url" --credentials read.txt --group g) == shown ]]
  exec 3<>"/dev/tcp/127.0.0.1/$port"
  # shellcheck disable=SC2016  # subjects
  printf 'CONNECT {"user":"read","pass":"two","verbose":false}\r\nPUB $JS.API.STREAM.PURGE.ENTRIES 0\r\n\r\nPUB $JS.API.STREAM.DELETE.ENTRIES 0\r\n\r\nPING\r\n' >&3
  timeout 10 sed '/PONG/q' <&3 >answers.txt
  [[ $(grep -c 'Permissions Violation' answers.txt) == 2 ]]
}

check_rsyslog() {
  local server modules
  server=$(needs_server rsyslog rsyslogd)
  modules=${server%/sbin/rsyslogd}/lib/$(uname -m)-linux-gnu/rsyslog
  { echo "global(workDirectory=\"$PWD\")" && cat "$sources/rsyslog.conf"; } >rsyslog.conf
  "$server" -N1 -f "$PWD/rsyslog.conf" -M "$modules" 2>&1 | tee said.txt
  ! grep -i 'error' said.txt
}

check_syslog_ng() {
  local server modules
  server=$(needs_server syslog-ng-core syslog-ng)
  modules=$(dirname "$(find "${server%/sbin/syslog-ng}/lib" -name libsyslogformat.so | head -1)")
  make_certificate
  sed "s:/etc/syslog-ng:$PWD:g" "$sources/syslog-ng.conf" >syslog-ng.conf
  LD_LIBRARY_PATH=${modules%/*}${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH} \
    "$server" -s -f "$PWD/syslog-ng.conf" --module-path="$modules"
}

check_logrotate() {
  sed "s:/var/log:$PWD:; s/ root adm$//" "$sources/logrotate.conf" >logrotate.conf
  chmod 644 logrotate.conf
  echo line >entries.log
  "$(needs logrotate)" -d -s state logrotate.conf 2>&1 | tee said.txt
  grep -q 'considering log' said.txt && ! grep -i '^error' said.txt
}

check_lnav() {
  local lnav
  lnav=$(needs lnav)
  HOME=$PWD "$lnav" -i "$sources/../../cmake/qzlog-lnav.json"
  HOME=$PWD "$lnav" -C
}

rm -rf "$folder"
mkdir -p "$folder"
cd "$folder"
"check_$check"
