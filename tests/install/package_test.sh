#!/bin/sh
# Makes the Debian package, installs it into a system of its own, runs what it brought, and purges it: nothing stays.
# Arguments: the build folder.
set -eu
build=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
(cd "$work" && cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/log" 2>&1) || { cat "$work/log"; exit 1; }
package=$(ls "$work"/zrv_*.deb)
root=$work/root
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
touch "$root/var/lib/dpkg/status"
run() { dpkg --root="$root" --force-not-root --force-depends --force-script-chrootless --log=/dev/null "$@" >"$work/log" 2>&1 ||
  { cat "$work/log"; exit 1; }; }

run -i "$package"
"$root/usr/bin/zrv" generate text "Hello" -o "$work/hello.txt" >"$work/said"  # with the library and the font beside it
grep -q "MIT License" "$root/usr/share/doc/zrv/copyright"
grep -q "The ZRV authors" "$root/usr/share/zrv/hershey.txt"
grep -q 2000 "$work/said" || { cat "$work/said"; exit 1; }
run --purge zrv
left=$(find "$root" -path "$root/var/lib/dpkg" -prune -o ! -type d -print)
[ -z "$left" ] || { echo "left behind: $left"; exit 1; }
