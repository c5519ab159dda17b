#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Installs by component into a scratch root, looks at what is there, uninstalls, and finds nothing.
#
#   install_test.sh CMAKE BUILD_DIR SOURCE_DIR READELF PACKAGE
set -eu
here=$(dirname "$0")
. "$here/check.sh"
. "$here/installed_files.sh"
cmake=$1 build=$2 source=$3 readelf=$4 package=$5
scratch
root=$scratch/root
prefix=$root/opt/display
mkdir "$root"

# A copy of the scripts, so that the lists of what was installed from the build itself stay as they are.
copy=$scratch/build
mkdir "$copy"
(cd "$build" && find . -name cmake_install.cmake) | while IFS= read -r script; do
    mkdir -p "$copy/$(dirname "$script")"
    sed "s|\"$build\(/[^\"]*\)\{0,1\}/cmake_install\.cmake\"|\"$copy\1/cmake_install.cmake\"|
         s|\"$build/install_manifest|\"$copy/install_manifest|
         s|\"$build/\${CMAKE_INSTALL_MANIFEST}\"|\"$copy/\${CMAKE_INSTALL_MANIFEST}\"|" \
        "$build/$script" >"$copy/$script"
done

install() {
    DESTDIR=$root "$cmake" --install "$copy" --prefix /opt/display --component "$1" >"$scratch/log" 2>&1 ||
        { cat "$scratch/log"; failed "installing $1"; }
}

install provider
expect 'the files of the component provider' "$(provider_files)" "$(files_below "$prefix")"
expect 'no directory without a file' '' "$(cd "$prefix" && find . -type d -empty)"
expect 'its copyright and changes' "$(package_files "$package")" "$(common_files_below "$prefix")"
install registration
install development
expect 'the files of the three components' "$( (provider_files; registration_files "$source"; development_files) | LC_ALL=C sort)" \
    "$(files_below "$prefix")"

library=$prefix/lib/cmpi/libcmpiDisplayManagement.so
expect 'no paths of the machine that built it' '' "$("$readelf" -dW "$library" | grep -E 'RPATH|RUNPATH' || true)"
cmp "$prefix/include/monitor_support.h" "$source/include/monitor_support.h" || failed 'the header differs'
for file in "$source"/mof/ZT_Marovelton*.mof; do
    cmp "$file" "$prefix/share/libcmpiDisplayManagement/mof/$(basename "$file")" || failed "$file differs"
done
[ -x "$prefix/share/libcmpiDisplayManagement/register-providers" ] || failed 'register-providers cannot be run'
[ ! -x "$prefix/include/monitor_support.h" ] || failed 'the header can be run'

# ---- away again, beside a provider of somebody else ----
touch "$prefix/lib/cmpi/libcmpiOther.so"
DESTDIR=$root "$cmake" -D BUILD_DIR="$copy" -P "$source/cmake/Uninstall.cmake" >"$scratch/log" 2>&1 ||
    { cat "$scratch/log"; failed 'uninstalling'; }
expect 'only the other provider is left' lib/cmpi/libcmpiOther.so "$(cd "$prefix" && find . ! -type d | sed 's|^\./||')"
expect 'no directory of ours is left' '' "$(cd "$prefix" && find . -type d -iname '*displaymanagement*')"
rm "$prefix/lib/cmpi/libcmpiOther.so"

install provider
DESTDIR=$root "$cmake" -D BUILD_DIR="$copy" -P "$source/cmake/Uninstall.cmake" >"$scratch/log" 2>&1 ||
    { cat "$scratch/log"; failed 'uninstalling'; }
expect 'no file is left' '' "$(cd "$root" && find . ! -type d)"
expect 'lib/cmpi goes when it is empty' '' "$(cd "$root" && find . -type d -name cmpi)"
if DESTDIR=$root "$cmake" -D BUILD_DIR="$copy" -P "$source/cmake/Uninstall.cmake" >"$scratch/log" 2>&1; then
    failed 'uninstalling twice is told'
fi

# ---- without DESTDIR it goes from where it was put ----
install provider
install development
(unset DESTDIR && "$cmake" -D BUILD_DIR="$copy" -P "$source/cmake/Uninstall.cmake") >"$scratch/log" 2>&1 ||
    { cat "$scratch/log"; failed 'uninstalling without DESTDIR'; }
expect 'without DESTDIR: no file is left' '' "$(cd "$root" && find . ! -type d)"
expect 'without DESTDIR: no list is left' '' "$(find "$copy" -name 'install_manifest*')"
install provider
mv "$root" "$scratch/elsewhere"
if (unset DESTDIR && "$cmake" -D BUILD_DIR="$copy" -P "$source/cmake/Uninstall.cmake") >"$scratch/log" 2>&1; then
    failed 'finding nothing is told'
fi
grep -q "install_manifest_provider.txt, below $root/" "$scratch/log" || failed 'which list, and where it was looked for'
DESTDIR=$scratch/elsewhere "$cmake" -D BUILD_DIR="$copy" -P "$source/cmake/Uninstall.cmake" >"$scratch/log" 2>&1 ||
    { cat "$scratch/log"; failed 'uninstalling from where it is now'; }
expect 'from where it is now: no file is left' '' "$(cd "$scratch/elsewhere" && find . ! -type d)"

report
