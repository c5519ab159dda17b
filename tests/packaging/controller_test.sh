#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The build for a controller: what configuring says of the libraries below the seam, what it refuses, and the package
# that is made with the real ones. What stands for them here is made from the header of the seam.
#
#   controller_test.sh CMAKE CPACK COMPILER SOURCE_DIR
set -eu
here=$(dirname "$0")
. "$here/check.sh"
cmake=$1 cpack=$2 compiler=$3 source=$4
scratch

# ---- a folder of its own, which ./run does not use ----
expect 'the preset has its own folder' "$source/build/controller" \
    "$(cd "$source" && "$cmake" -N --preset controller -LA 2>/dev/null | sed -n 's/^CMAKE_CACHEFILE_DIR:INTERNAL=//p' | grep . || echo "$source/build/controller")"
expect 'it is a preset' 1 "$(cd "$source" && "$cmake" --list-presets | grep -c '"controller"')"

configure() { # configure ARGUMENT...: output in $scratch/log
    rm -rf "$scratch/build"
    status=0
    (cd "$source" && "$cmake" --preset controller -B "$scratch/build" "$@") >"$scratch/log" 2>&1 || status=$?
    # CMake breaks lines of errors where it likes.
    said=$(tr '\n' ' ' <"$scratch/log" | tr -s ' ')
}
says() { case $said in *"$2"*) ;; *) failed "$1: not said: $2"; cat "$scratch/log" ;; esac; }

configure
expect 'without a library: configured' 0 "$status"
says 'without a library' 'support library: STAND-IN, not for shipping'
says 'without a library' 'shell helper: STAND-IN, not for shipping'
says 'without a library' 'CMPI headers: '
configure -DDISPLAY_OWN_CMPI_HEADERS=ON -DCMPI_INCLUDE_DIR="$scratch/headers"
expect 'own headers wanted: configured' 0 "$status"
says 'own headers wanted' "CMPI headers: the project's own"
grep -q '"libcmpidisplaymanagement-stand-in"' "$scratch/build/CPackConfig.cmake" || failed 'the package does not say what it is'

# ---- what cannot be right ----
refused() { # refused WHAT FILE MESSAGE
    configure -DMONITOR_SUPPORT_LIBRARY="$2"
    [ "$status" -ne 0 ] || failed "$1: configured"
    says "$1" "MONITOR_SUPPORT_LIBRARY: $3"
}
refused 'a missing file' "$scratch/none.so" "there is no file $scratch/none.so; it names the monitor's support library"
refused 'a directory' "$scratch" "there is no file $scratch"
echo 'int name;' >"$scratch/text.so"
refused 'a text' "$scratch/text.so" "$scratch/text.so is no shared library"

sed -n 's/^int \([A-Za-z0-9]*\)(.*/int \1(void);\nint \1(void)\n{\n    return 0;\n}/p' "$source/include/monitor_support.h" >"$scratch/support.c"
expect 'functions of the support library' 24 "$(grep -c 'return' "$scratch/support.c")"
"$compiler" -shared -fPIC -Wl,-soname,libmonitor_support.so.2 -o "$scratch/libmonitor_support.so" "$scratch/support.c"
"$compiler" -c -fPIC -o "$scratch/support.o" "$scratch/support.c"
refused 'an object' "$scratch/support.o" "$scratch/support.o is no shared library"
cp "$scratch/libmonitor_support.so" "$scratch/foreign.so"
printf '\026\000' | dd of="$scratch/foreign.so" bs=1 seek=18 conv=notrunc 2>/dev/null
refused 'another machine' "$scratch/foreign.so" "$scratch/foreign.so is for the machine with the ELF number 1600"
says 'another machine' 'and what is built here is for '
printf '\050\000' | dd of="$scratch/foreign.so" bs=1 seek=18 conv=notrunc 2>/dev/null
refused 'an ARM' "$scratch/foreign.so" "$scratch/foreign.so is for ARM with soft float"

# ---- CMPI headers that are named ----
mkdir -p "$scratch/headers/cmpi"
configure -DCMPI_INCLUDE_DIR="$scratch/headers"
[ "$status" -ne 0 ] || failed 'no headers in the directory: configured'
says 'no headers' "CMPI_INCLUDE_DIR: there is no file $scratch/headers/cmpi/cmpidt.h"
cp "$source/include/cmpi/cmpidt.h" "$scratch/headers/cmpi"
configure -DCMPI_INCLUDE_DIR="$scratch/headers"
[ "$status" -ne 0 ] || failed 'one header of two: configured'
says 'one header of two' "CMPI_INCLUDE_DIR: there is no file $scratch/headers/cmpi/cmpift.h"
(cd "$source/tests/cmpi" && awk -f make_headers.awk -v version=2.1 -v directory="$scratch/headers" layout.tsv constants.tsv)
configure -DCMPI_INCLUDE_DIR="$scratch/headers"
expect 'headers are named: configured' 0 "$status"
says 'headers are named' "CMPI headers: $scratch/headers/cmpi for the library, the project's own for the rest"

# ---- with the real ones ----
printf 'int runcommand(void);\nint runcommand(void) { return 0; }\nvoid freeresultbuf(void);\nvoid freeresultbuf(void) {}\n' >"$scratch/shell.c"
"$compiler" -shared -fPIC -Wl,-soname,libcmpiOSBase_Common.so.0 -o "$scratch/libcmpiOSBase_Common.so" "$scratch/shell.c"
configure -DMONITOR_SUPPORT_LIBRARY="$scratch/libmonitor_support.so" -DCMPI_SHELL_HELPER="$scratch/libcmpiOSBase_Common.so"
expect 'with the real ones: configured' 0 "$status"
says 'with the real ones' "support library: $scratch/libmonitor_support.so"
says 'with the real ones' "shell helper: $scratch/libcmpiOSBase_Common.so"
says 'with the real ones' 'depends on: libmonitor-support2, libcmpiosbase-common0'
case $said in *STAND-IN*) failed 'it speaks of a stand-in' ;; esac
"$cmake" --build "$scratch/build" --target cmpiDisplayManagement >"$scratch/log" 2>&1 || { cat "$scratch/log"; failed 'building'; report; }
if ! command -v dpkg-deb >/dev/null; then echo 'Not checked: there is no dpkg.'; report; fi
(cd "$scratch" && "$cpack" --config "$scratch/build/CPackConfig.cmake" -G DEB -B "$scratch/packages" >"$scratch/log" 2>&1) ||
    { cat "$scratch/log"; failed 'cpack'; report; }
package=$(find "$scratch/packages" -maxdepth 1 -name 'libcmpidisplaymanagement_1.0.0_*.deb')
expect 'what it depends on' 'libc6 (>= 2.14), libmonitor-support2, libcmpiosbase-common0' "$(dpkg-deb -f "$package" Depends)"
# docs/installation.md tells these sizes.
expect_size() { # expect_size PACKAGE_FILE LIMIT: the bytes in its files
    rm -rf "$scratch/content"
    dpkg-deb -x "$1" "$scratch/content"
    bytes=$(find "$scratch/content" -type f -exec cat {} + | wc -c)
    echo "bytes in the files of $(dpkg-deb -f "$1" Package): $bytes, at most $2"
    if [ "$bytes" -gt "$2" ]; then failed "$(dpkg-deb -f "$1" Package) installs more than $2 bytes"; fi
}
expect_size "$package" 153600
expect_size "$(find "$scratch/packages" -maxdepth 1 -name 'libcmpidisplaymanagement-common_1.0.0_all.deb')" 131072
if command -v lintian >/dev/null; then
    expect 'lintian finds nothing' '' "$(lintian --allow-root --fail-on none "$scratch"/packages/*.deb 2>&1 | grep -E '^[EW]:' || true)"
fi

report
