#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# The package of displayctl for another processor: what it is and needs, and that the program in it, under qemu-user, reads
# and changes a desk monitor of this machine and serves metrics of it.
#
#   packaged.sh BUILD_DIR ARCHITECTURE SYSROOT
set -euo pipefail
# shellcheck source=../endtoend/desk.sh
. "$(dirname "$0")/../endtoend/desk.sh"
# shellcheck source=../endtoend/client.sh
. "$here/client.sh"
# shellcheck source=displayctl.sh
. "$source_dir/tests/client/displayctl.sh"
# shellcheck source=../fleet/fleet.sh
. "$source_dir/tests/fleet/fleet.sh"
# shellcheck source=../packaging/installed_files.sh
. "$source_dir/tests/packaging/installed_files.sh"
build=$1 architecture=$2 sysroot=$3
case $architecture in
arm64) emulator=qemu-aarch64 machine='ELF64 AArch64' ;;
armhf) emulator=qemu-arm machine='ELF32 ARM' ;;
*) give_up "no such architecture: $architecture; arm64 or armhf" ;;
esac
desk_start

# ---- the package ----

made=$scratch/package
mkdir "$made"
cpack --config "$build/CPackConfig.cmake" -G DEB -D CPACK_COMPONENTS_ALL=displayctl -B "$made" >"$made/log" 2>&1 ||
    { cat "$made/log"; give_up 'the package cannot be made'; }
expect 'one package' "displayctl_1.0.0_$architecture.deb" "$(cd "$made" && echo *.deb)"
package=$made/displayctl_1.0.0_$architecture.deb
expect 'its name, version and architecture' "displayctl 1.0.0 $architecture" \
    "$(dpkg-deb -W --showformat '${Package} ${Version} ${Architecture}' "$package")"
expect 'what it depends on' 'libc6
libcrypt1
libcurl4
libgcc-s1
libmicrohttpd12
libprometheus-cpp-core1.0
libpugixml1v5
libssl3
libstdc++6
libyaml-cpp0.7' "$(dpkg-deb -f "$package" Depends | tr ',' '\n' | sed 's/^ *\([^ ]*\).*/\1/' | sort)"
dpkg-deb -x "$package" "$made/content"
expect 'its files' "$(displayctl_files)" "$(files_below "$made/content/usr")"
expect 'what every package has' "$(package_files displayctl)" "$(common_files_below "$made/content/usr")"
program=$made/content/usr/bin/displayctl
expect 'its processor' "$machine" "$(readelf -h "$program" | awk '/^ *(Class|Machine):/ { print $2 }' | paste -sd ' ')"
expect 'no paths of the machine that built it' 0 "$(readelf -d "$program" | grep -cE 'RPATH|RUNPATH' || true)"
expect 'it is stripped' 0 "$(readelf -SW "$program" | grep -cE '\.(symtab|debug_info)' || true)"
if command -v lintian >/dev/null; then
    expect 'lintian finds nothing' '' "$(lintian --allow-root --fail-on none "$package" 2>&1 | grep -E '^[EW]:' || true)"
fi
printf '  its size: %d bytes, the program %d\n' "$(stat -c %s "$package")" "$(stat -c %s "$program")"

# ---- the program ----

DISPLAYCTL=$scratch/displayctl
printf '#!/bin/sh\nexec %s -L "%s" "%s" "$@"\n' "$emulator" "$sysroot" "$program" >"$DISPLAYCTL"
chmod +x "$DISPLAYCTL"
expect 'its version' 'displayctl 1.0.0' "$("$DISPLAYCTL" --version)"
expect 'all about a setting' 'pip.size
  what it is         Size of the second picture.
  short name         size
  values             maximum (Maximum), minimum (Minimum), default (Default)
  read from          ZT_Marovelton_PictureInPicture.PIPSize
  changed by         ZT_Marovelton_PictureInPicture.SetPIPSize(PIPSize)
  who may            everybody
  what must hold     the second picture must be in picture-in-picture mode
                     depends on pip.mode
                     the monitor says: PIP mode or picture beside picture is off. Unable to set the value for pip size
  changes as well    pip.position
  example            displayctl set size=default' "$("$DISPLAYCTL" help pip.size)"
expect 'its manual page' '' "$("$DISPLAYCTL" __manual | diff <(gzip -dc "$made/content/usr/share/man/man1/displayctl.1.gz") - || true)"
expect_ctl 'settings of a monitor' 0 '250
off
1688,880' get luminance pip.mode pip.position
expect_ctl 'a change' 0 'preset.1.luminance  250 -> 120' set luminance=120
expect_property ColorSpace/1 DisplayLuminance 120
ctl history --verify
expect 'the history holds' 0 "$result"
expect_plain_ctl 'a port where nobody listens' 3 '' -m http://127.0.0.1:1 get luminance

# ---- its metrics ----

monitors_file "desk=$(url admin)"
exporter_start
curl -sS "$exporter/probe?target=desk" >"$scratch/answer"
expect 'the luminance for Prometheus' 'displayctl_preset_luminance_candelas_per_square_meter{preset="1"} 120' \
    "$(grep 'luminance_candelas_per_square_meter{preset="1"}' "$scratch/answer")"
exporter_stop

ctl_end
rm -r "$made" "$DISPLAYCTL" "$scratch/answer" "$scratch/monitors.yaml"
report
