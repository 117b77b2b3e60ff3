#!/bin/sh
# Installs the packages of build/packages in a clean Debian 12, uses and purges them, and says what they leave behind.
# Needs mmdebstrap, root (or the right to make user namespaces), and a network for what the packages depend on.
# usage: try.sh FOLDER-WITH-PACKAGES
set -eu

packages=$(cd "$1" && pwd)
root=$(mktemp -d)
trap 'umount -q "$root/proc" 2>/dev/null || true; rm -rf --one-file-system "$root"' EXIT
mmdebstrap --quiet --variant=apt --skip=cleanup/apt bookworm "$root" \
    "$(find /etc/apt/sources.list.d -name '*.sources' | head -1 | grep . || echo /etc/apt/sources.list)"
cp -r "$packages" "$root/packages"
cp /etc/resolv.conf "$root/etc/resolv.conf"
mount -t proc proc "$root/proc"

cat >"$root/try" <<'END'
set -eu
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
files() {
    find / -xdev ! -path '/proc/*' ! -path '/tmp*' ! -path '/var/cache/*' ! -path '/var/lib/dpkg/*' \
        ! -path '/var/lib/apt/*' ! -path '/var/log/*' | sort
}
[ ! -e "$(echo /packages/libvelmora-jet-dev*)" ] || apt-get install -y -qq --no-install-recommends gcc g++ pkgconf \
    >/tmp/install.log 2>&1
files >/tmp/before
apt-get install -y -qq --no-install-recommends /packages/*.deb >/tmp/install.log 2>&1 || { cat /tmp/install.log; exit 1; }
dpkg-query -W -f '${Package} ${Version} ${Status}\n' '*velmora*'

cd /tmp
velmora --version
velmora xml=/usr/share/doc/velmora/examples/orders.xml mdb=orders.mdb +quiet | tail -9
if command -v velmora-gui >/dev/null; then
    status=0
    QT_QPA_PLATFORM=offscreen timeout 5 velmora-gui mdb=orders.mdb || status=$?
    echo "velmora-gui was open until it was ended: $([ "$status" = 124 ] && echo yes || echo "no, status $status")"
    [ "$status" = 124 ]
fi
examples=/usr/share/doc/libvelmora-jet-dev/examples
if [ -d $examples ]; then
    cc $examples/table.c $(pkg-config --cflags --libs velmora_jet) -o table_c && ./table_c c.mdb
    c++ $examples/table.cpp $(pkg-config --cflags --libs velmora_jet) -o table_cpp && ./table_cpp cpp.mdb
fi

apt-get purge -y -qq $(dpkg-query -W -f '${Package} ' '*velmora*') >/dev/null 2>&1
apt-get autoremove -y -qq --purge >/dev/null 2>&1
files >/tmp/after
echo "files before: $(wc -l </tmp/before), after the purge: $(wc -l </tmp/after)"
diff /tmp/before /tmp/after && echo "nothing is left behind"
END
chroot "$root" sh /try
