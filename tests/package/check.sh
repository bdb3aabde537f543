#!/usr/bin/env bash
# Installs, upgrades and purges the packages in a bare Debian (bare.sh), and builds a stranger's project there in the
# ways that packages offer (tests/consumer/check_ways.sh). What that writes is a layer above the bare Debian, which
# stays as it is; the compilers and tools are a layer of their own, made once. The mounts end with this process.
#
# Usage, as root: unshare --mount check.sh <root of the tree> <folder of the packages> <bare Debian>

set -euo pipefail
tree=$1 packages=$2 bare=$3
readonly TOOLS=(clang cmake ninja-build pkgconf)
work=$packages/check
tools=$bare-tools
rm -rf --one-file-system "$work"
mkdir -p "$work/previous" "$work/root"

# inside <upper layer> <layers below> <command>...: runs it as root of these layers, where /tree and /packages are
# ours, and cannot be written to.
inside() {
  local upper=$1 lower=$2 status=0
  shift 2
  mkdir -p "$upper" "$work/overlay"
  mount -t overlay overlay -o "lowerdir=$lower,upperdir=$upper,workdir=$work/overlay" "$work/root" || {
    echo "SKIPPED: no overlay can be mounted below build/, whose file system may be one itself"
    exit 77
  }
  mkdir -p "$work/root/tree" "$work/root/packages"
  mount --bind -o ro "$tree" "$work/root/tree"
  mount --bind -o ro "$packages" "$work/root/packages"
  mount --rbind /proc "$work/root/proc"
  mount --rbind /dev "$work/root/dev"
  cp -L /etc/resolv.conf "$work/root/etc/"
  chroot "$work/root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LC_ALL=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive "$@" || status=$?
  umount --recursive --lazy "$work/root"
  return "$status"
}

# A "previous version" of each package: the same files under a lower number, and the library in a file of that number.
# It shows that one version takes the place of another, with its links; not what two real versions differ in.
for package in "$packages"/*.deb; do
  [[ $package != *-dbgsym_* ]] || continue
  folder=$work/previous/$(basename "$package" .deb)
  dpkg-deb --raw-extract "$package" "$folder"
  version=$(dpkg-deb -f "$package" Version)
  sed -i "s/^Version: .*/Version: 0.9.0/; s/(= $version)/(= 0.9.0)/" "$folder/DEBIAN/control"
  while read -r library; do
    mv "$library" "${library%.so.*}.so.0.9.0"
    for link in "${library%/*}"/{lib,}tovlog4vrk.so.1; do ln -sf tovlog4vrk.so.0.9.0 "$link"; done
  done < <(find "$folder" -type f -name 'tovlog4vrk.so.*')
  dpkg-deb --root-owner-group --build "$folder" "$folder.deb" >/dev/null
done

inside "$work/bare" "$bare" /tree/tests/package/bare.sh

if [ "$(cat "$tools/ready" 2>/dev/null)" != "${TOOLS[*]}" ]; then
  rm -rf --one-file-system "$tools"
  inside "$tools" "$bare" apt-get -qq update
  inside "$tools" "$bare" apt-get -qq -y install --no-install-recommends "${TOOLS[@]}" >/dev/null
  echo "${TOOLS[*]}" >"$tools/ready"
fi
inside "$work/ways" "$tools:$bare" bash -euc '
  apt-get -qq update
  apt-get -qq -y install --no-install-recommends /packages/tovlog4vrk1_*.deb /packages/log4vrk-dev_*.deb >/dev/null
  /tree/tests/consumer/check_ways.sh g++ /tmp/g++
  /tree/tests/consumer/check_ways.sh clang++ /tmp/clang++
'
