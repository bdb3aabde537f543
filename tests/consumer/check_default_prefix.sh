#!/usr/bin/env bash
# Installs the build into /usr/local of a root of its own, tells ldconfig, and builds and runs this folder's program
# there as the README says, without a path to the library: through pkg-config, then through the CMake package.
#
# Usage: check_default_prefix.sh <build directory> <C++ compiler>

set -euo pipefail
build=$1 compiler=$2
here=$(dirname "$(readlink -f "$0")")
. "$here/common.sh"
[ "$(id -u)" = 0 ] || skip "a root directory of its own needs root: run the tests as root"
unshare --mount true 2>/dev/null || skip "this machine lets nobody mount: run the tests outside of the container"

work=$build/tests/default_prefix
root=$work/root
rm -rf --one-file-system "$work"
mkdir -p "$root"/{usr,etc,tmp,dev,proc,consumer} "$work/stage"
DESTDIR=$work/stage cmake --install "$build" --prefix /usr/local >"$work/install.log"
for folder in /bin /sbin /lib*; do
  if [ -L "$folder" ]; then cp -d "$folder" "$root/"; else mkdir "$root$folder"; fi
done
cp -a /etc/ld.so.conf* "$root/etc/"
[ ! -d /etc/alternatives ] || cp -a /etc/alternatives "$root/etc/"
cp "$here"/{main.cpp,log.xml,CMakeLists.txt} "$root/consumer/"

# The mounts end with the shell. What is under /usr and no part of the install stays read-only.
unshare --mount bash -euc '
  root=$1 local=$2
  for folder in /usr /bin /sbin /lib*; do [ -L "$folder" ] || mount --bind -o ro "$folder" "$root$folder"; done
  mount --bind "$local" "$root/usr/local"
  mount --rbind /dev "$root/dev"
  mount --rbind /proc "$root/proc"
  exec chroot "$root" /usr/bin/env -i PATH=/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin CXX="$3" bash -euc "$4"
' bash "$root" "$work/stage/usr/local" "$compiler" '
  cd /consumer
  ldconfig
  "$CXX" -std=c++17 -o with-pkg-config main.cpp $(pkg-config --cflags --libs log4vrk)
  ./with-pkg-config >console.log
  mkdir ../pkg-config
  mv *.log ../pkg-config
  cmake -S . -B build -G Ninja -DCMAKE_SKIP_RPATH=ON # as an installed program is
  cmake --build build
  build/consumer >console.log
'
check_logs "$root/pkg-config"
check_logs "$root/consumer"
