#!/bin/sh
# Makes the Debian packages, looks into them, installs them into a scratch root with dpkg and removes them again.
#
#   debian_package_test.sh CPACK BUILD_DIR ARCHITECTURE READELF
set -eu
here=$(dirname "$0")
. "$here/check.sh"
. "$here/installed_files.sh"
cpack=$1 build=$2 architecture=$3 readelf=$4
command -v dpkg-deb >/dev/null || { echo 'Skipped: there is no dpkg.'; exit 77; }
scratch

(cd "$scratch" && "$cpack" --config "$build/CPackConfig.cmake" -G DEB -B "$scratch/packages" >"$scratch/log" 2>&1) ||
    { cat "$scratch/log"; failed 'cpack'; report; }
expect 'the packages' "$(printf '%s\n' "libcmpidisplaymanagement-dev_1.0.0_$architecture.deb" \
    "libcmpidisplaymanagement_1.0.0_$architecture.deb")" \
    "$(cd "$scratch/packages" && find . -maxdepth 1 -name '*.deb' | sed 's|^\./||' | LC_ALL=C sort)"
package=$scratch/packages/libcmpidisplaymanagement_1.0.0_$architecture.deb
development=$scratch/packages/libcmpidisplaymanagement-dev_1.0.0_$architecture.deb

field() { dpkg-deb -f "$1" "$2"; }
expect 'its name' libcmpidisplaymanagement "$(field "$package" Package)"
expect 'its version' 1.0.0 "$(field "$package" Version)"
expect 'its architecture' "$architecture" "$(field "$package" Architecture)"
expect 'what it depends on' 'libc6 (>= 2.14)' "$(field "$package" Depends)"
expect 'its section' libs "$(field "$package" Section)"
expect 'the section of the development package' libdevel "$(field "$development" Section)"
[ -n "$(field "$package" Maintainer)" ] || failed 'nobody maintains it'

# ---- what is in it ----
dpkg-deb -x "$package" "$scratch/content"
dpkg-deb -x "$development" "$scratch/development"
expect 'all is below /usr' usr "$(ls "$scratch/content")"
expect 'the files of the package' "$(provider_files)" "$(files_below "$scratch/content/usr")"
expect 'its documentation' "$(documentation_files "$here/../..")" "$(documentation_below "$scratch/content/usr")"
expect 'the files of the development package' "$(development_files)" "$(files_below "$scratch/development/usr")"
expect 'all belongs to root' '' "$(dpkg-deb -c "$package" | awk '$2 != "root/root"')"
expect 'nobody else may write' '' "$(dpkg-deb -c "$package" | awk 'substr($1, 6, 1) == "w" || substr($1, 9, 1) == "w"')"
library=$scratch/content/usr/lib/cmpi/libcmpiDisplayManagement.so
expect 'no paths of the machine that built it' '' "$("$readelf" -dW "$library" | grep -E 'RPATH|RUNPATH' || true)"
expect 'it is stripped' '' "$("$readelf" -SW "$library" | grep -E '\.(symtab|debug_info)' || true)"

# ---- installed and removed ----
root=$scratch/root
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/triggers" "$root/var/log" \
    "$root/usr/lib/cmpi" "$root/usr/share/doc" "$root/usr/include"
: >"$root/var/lib/dpkg/status"
# The system's own files, which keep its directories.
touch "$root/usr/lib/cmpi/libcmpiOther.so" "$root/usr/share/doc/other" "$root/usr/include/other.h"
as_root=
if [ "$(id -u)" -ne 0 ]; then
    command -v fakeroot >/dev/null && as_root=fakeroot
fi
if [ "$(id -u)" -eq 0 ] || [ -n "$as_root" ]; then
    # The support library and the C library of the scratch root are nobody's.
    dpkg_in_root() {
        $as_root dpkg --root="$root" --force-depends --force-architecture --force-bad-path --log=/dev/null "$@" \
            >"$scratch/log" 2>&1 || { cat "$scratch/log"; failed "dpkg $*"; }
    }
    tree() { (cd "$root" && find . ! -path './var/*' | LC_ALL=C sort); }
    before=$(tree)
    dpkg_in_root --install "$package" "$development"
    expect 'the files that were installed' "$( (provider_files; development_files) | LC_ALL=C sort)" \
        "$(files_below "$root/usr" | grep -vi other)"
    expect 'dpkg finds nothing changed' '' "$($as_root dpkg --root="$root" --verify libcmpidisplaymanagement)"
    dpkg_in_root --remove libcmpidisplaymanagement-dev libcmpidisplaymanagement
    expect 'nothing is left after removing' "$before" "$(tree)"
    dpkg_in_root --install "$package"
    dpkg_in_root --purge libcmpidisplaymanagement
    expect 'nothing is left after purging' "$before" "$(tree)"
    expect 'dpkg knows it no more' '' "$(dpkg-query --admindir="$root/var/lib/dpkg" -W 2>/dev/null | grep display || true)"
else
    echo 'Not root, and there is no fakeroot: the packages were looked into and not installed.'
fi

report
