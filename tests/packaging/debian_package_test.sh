#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Makes the Debian packages, looks into them, installs them into a scratch root with dpkg and removes them again.
#
#   debian_package_test.sh CPACK BUILD_DIR ARCHITECTURE READELF SOURCE_DIR PACKAGE COMPONENT...
#
# PACKAGE is what the library's package is called.
set -eu
here=$(dirname "$0")
. "$here/check.sh"
. "$here/installed_files.sh"
cpack=$1 build=$2 architecture=$3 readelf=$4 source=$5 name=$6
shift 6
command -v dpkg-deb >/dev/null || { echo 'Skipped: there is no dpkg.'; exit 77; }
scratch
has() { for component in $components; do [ "$component" != "$1" ] || return 0; done; return 1; }
components=$*

(cd "$scratch" && "$cpack" --config "$build/CPackConfig.cmake" -G DEB -B "$scratch/packages" >"$scratch/log" 2>&1) ||
    { cat "$scratch/log"; failed 'cpack'; report; }
expect 'the packages' "$(for component in $components; do
    case $component in
    provider) echo "${name}_1.0.0_$architecture.deb" ;;
    development) echo "libcmpidisplaymanagement-dev_1.0.0_$architecture.deb" ;;
    registration) echo libcmpidisplaymanagement-common_1.0.0_all.deb ;;
    documentation) echo libcmpidisplaymanagement-doc_1.0.0_all.deb ;;
    collection) echo ansible-collection-marovelton-display_1.0.0_all.deb ;;
    host) echo "display-host_1.0.0_$architecture.deb" ;;
    *) echo "${component}_1.0.0_$architecture.deb" ;;
    esac
done | LC_ALL=C sort)" "$(cd "$scratch/packages" && find . -maxdepth 1 -name '*.deb' | sed 's|^\./||' | LC_ALL=C sort)"
package=$scratch/packages/${name}_1.0.0_$architecture.deb
common=$scratch/packages/libcmpidisplaymanagement-common_1.0.0_all.deb
development=$scratch/packages/libcmpidisplaymanagement-dev_1.0.0_$architecture.deb

field() { dpkg-deb -f "$1" "$2"; }
expect 'its name' "$name" "$(field "$package" Package)"
expect 'its version' 1.0.0 "$(field "$package" Version)"
expect 'its architecture' "$architecture" "$(field "$package" Architecture)"
expect 'its section' libs "$(field "$package" Section)"
expect 'the section of the development package' libdevel "$(field "$development" Section)"
expect 'its maintainer' 'Marovelton Display Management <display-management@marovelton.example>' "$(field "$package" Maintainer)"
case $name in
*-stand-in)
    expect 'what it depends on' 'libc6 (>= 2.14)' "$(field "$package" Depends)"
    expect 'the real one takes its place' libcmpidisplaymanagement "$(field "$package" Conflicts)"
    expect 'it says that it is not for shipping' ' It is not for shipping.' "$(field "$package" Description | tail -1)"
    ;;
esac

# ---- what is in them ----
unpack() { # unpack PACKAGE_FILE: into $content
    content=$scratch/$(field "$1" Package)
    dpkg-deb -x "$1" "$content"
    expect "$1: all is below /usr" usr "$(ls "$content")"
    expect "$1: all belongs to root" '' "$(dpkg-deb -c "$1" | awk '$2 != "root/root"')"
    expect "$1: nobody else may write" '' "$(dpkg-deb -c "$1" | awk '$1 !~ /^l/ && (substr($1, 6, 1) == "w" || substr($1, 9, 1) == "w")')"
    expect "$1: copyright and changes" "$(package_files "$(field "$1" Package)")" "$(common_files_below "$content/usr")"
}
unpack "$package"
expect 'the files of the library' "$(provider_files)" "$(files_below "$content/usr")"
library=$content/usr/lib/cmpi/libcmpiDisplayManagement.so
expect 'no paths of the machine that built it' '' "$("$readelf" -dW "$library" | grep -E 'RPATH|RUNPATH' || true)"
expect 'it is stripped' '' "$("$readelf" -SW "$library" | grep -E '\.(symtab|debug_info)' || true)"
unpack "$common"
expect 'the files of the registration' "$(registration_files "$source")" "$(files_below "$content/usr")"
expect 'its manual page can be read' '.TH' "$(gzip -dc "$content/usr/share/man/man8/register-providers.8.gz" | sed -n 's/^\(\.TH\) .*/\1/p')"
unpack "$development"
expect 'the files of the development package' "$(development_files)" "$(files_below "$content/usr")"
if has documentation; then
    unpack "$scratch/packages/libcmpidisplaymanagement-doc_1.0.0_all.deb"
    expect 'the documentation' "$(documentation_files "$source")" "$(files_below "$content/usr")"
fi
if has host; then
    unpack "$scratch/packages/display-host_1.0.0_$architecture.deb"
    expect 'the files of the object manager' "$(host_files)" "$(files_below "$content/usr")"
    depends=$(field "$scratch/packages/display-host_1.0.0_$architecture.deb" Depends | tr ',' '\n' | sed 's/^ *\([^ ]*\).*/\1/' | LC_ALL=C sort)
    for library in adduser libc6 libcrypt1 libgnutls30 libmicrohttpd12 libpugixml1v5 libstdc++6; do
        echo "$depends" | grep -qxF "$library" || failed "the object manager does not depend on $library: $depends"
    done
    # It makes the user that the object manager becomes. What makes users here tells what it is asked.
    dpkg-deb -e "$scratch/packages/display-host_1.0.0_$architecture.deb" "$scratch/control"
    mkdir "$scratch/bin"
    printf '#!/bin/sh\necho "$*"\n' >"$scratch/bin/adduser"
    chmod +x "$scratch/bin/adduser"
    expect 'its user' '--system --group --quiet --home /var/lib/display-host --no-create-home --gecos Object manager display-host' \
        "$(PATH=$scratch/bin:$PATH "$scratch/control/postinst" configure)"
    expect 'only when it is configured' '' "$(PATH=$scratch/bin:$PATH "$scratch/control/postinst" abort-upgrade 1.0.0)"
fi
if has displayctl; then
    unpack "$scratch/packages/displayctl_1.0.0_$architecture.deb"
    [ -x "$content/usr/bin/displayctl" ] || failed 'displayctl cannot be run'
    expect 'the files of displayctl' "$(displayctl_files)" "$(files_below "$content/usr")"
fi
if has collection; then
    unpack "$scratch/packages/ansible-collection-marovelton-display_1.0.0_all.deb"
    expect 'the files of the collection' "$(collection_files "$source")" "$(files_below "$content/usr")"
    expect 'what it depends on' 'ansible-core (>= 2.14), displayctl' \
        "$(field "$scratch/packages/ansible-collection-marovelton-display_1.0.0_all.deb" Depends)"
fi

if command -v lintian >/dev/null; then
    expect 'lintian finds nothing' '' "$(lintian --allow-root --fail-on none "$scratch"/packages/*.deb 2>&1 | grep -E '^[EW]:' || true)"
else
    echo 'Not checked: lintian is not installed.'
fi

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
    dpkg_in_root --install "$package" "$common" "$development"
    expect 'the files that were installed' "$( (provider_files; registration_files "$source"; development_files) | LC_ALL=C sort)" \
        "$(files_below "$root/usr" | grep -vi other)"
    expect 'dpkg finds nothing changed' '' "$($as_root dpkg --root="$root" --verify "$name")"
    dpkg_in_root --remove libcmpidisplaymanagement-dev libcmpidisplaymanagement-common "$name"
    expect 'nothing is left after removing' "$before" "$(tree)"
    dpkg_in_root --install "$package"
    dpkg_in_root --purge "$name"
    expect 'nothing is left after purging' "$before" "$(tree)"
    expect 'dpkg knows it no more' '' "$(dpkg-query --admindir="$root/var/lib/dpkg" -W 2>/dev/null | grep display || true)"
else
    echo 'Not root, and there is no fakeroot: the packages were looked into and not installed.'
fi

report
