#!/usr/bin/env bash
# Inside a bare Debian that has g++ besides: the packages of the previous version (see check.sh) and a program that is
# built with them, then the packages of this version, then none. /tree and /packages are the caller's.

set -euo pipefail
log=/tmp/apt.log
work=/tmp/hello

fail() {
  echo "FAILED: $*"
  exit 1
}

apt() { apt-get -q -y --no-install-recommends "$@" >"$log" 2>&1 || { cat "$log"; fail "apt-get $*"; }; }

# All files, but for what apt keeps for itself.
files() {
  find / -xdev \( -path /tmp -o -path /var/cache/apt -o -path /var/lib/apt -o -path /var/log \) -prune -o -print | sort
}

# What the program of the README prints, without the times, is what is expected.
check_hello() {
  sed -E 's/^[0-9:,]+ \[[^]]+\] //' | diff - <(
    echo "INFO hello.world - Hello, log."
    printf 'DEBUG hello.world - cup %d of 3\n' 1 2 3
    echo "WARN hello.world - No more coffee."
  ) || fail "hello, $1"
}

apt update
files >/tmp/before

echo "== install" # as docs/installing.md tells to
mkdir -p "$work"
cd "$work"
cp /packages/check/previous/*.deb .
# shellcheck source=tests/package/first-line.sh
. /tree/tests/package/first-line.sh >output
check_hello "with the previous version" <output

echo "== upgrade"
apt install /packages/*.deb
! dpkg -l | grep 'log4vrk.* 0\.9\.0 ' || fail "this is still of the previous version"
./hello | check_hello "built with the previous version, with this one"
g++ hello.cpp -o hello -l:tovlog4vrk.so
./hello | check_hello "with this version"

echo "== contents"
examples=/usr/share/doc/log4vrk-dev/examples
library=$(readlink -f /usr/lib/*/tovlog4vrk.so)
(cd "$examples" && log4vrk-check --explain shop.orders.intake INFO wrong.xml || [ $? = 1 ]) |
  diff <(tail -n +2 "$examples/wrong.expected") - || fail "log4vrk-check"
log4vrk-recover --list "$work" || fail "log4vrk-recover"
for file in $(dpkg -L log4vrk-tools | grep '^/usr/bin/.') "$library" "${library%/*}"/tovlog4vrk-*.so; do
  id=$(readelf --notes "$file" | sed -n 's/.*Build ID: //p')
  [ -f "/usr/lib/debug/.build-id/${id:0:2}/${id:2}.debug" ] || fail "no debugging symbols of $file"
  [[ $file = /usr/bin/* ]] || continue
  name=${file##*/}
  gzip --test "/usr/share/man/man1/$name.1.gz" || fail "no man page of $name"
  # shellcheck source=/dev/null
  (. "/usr/share/bash-completion/completions/$name" && complete -p "$name" >/dev/null) || fail "no completion of $name"
done
[ -f /usr/share/log4vrk/log4vrk.xsd ] || fail "no schema"
[ "$(uname -m)" != x86_64 ] || /tree/tests/structure/check_symbols.sh "$library" || fail "exported symbols"

echo "== remove and purge"
mapfile -t packages < <(dpkg-query --show --showformat '${Package}\n' '*log4vrk*')
apt remove "${packages[@]}"
! ./hello >/tmp/output 2>&1 || fail "hello runs without the library"
grep -q 'tovlog4vrk.so.1: cannot open shared object file' /tmp/output || fail "hello says: $(cat /tmp/output)"
dpkg --purge "${packages[@]}" 2>/dev/null # apt does not know those any more that left nothing behind
apt autoremove --purge
! ldconfig -p | grep tovlog4vrk || fail "ldconfig still knows that"
files | diff /tmp/before - || fail "files were left behind (>), or taken away (<)"
