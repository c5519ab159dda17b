# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=sh disable=SC2154 # root is the sourcing script's
# Sourced by tools/soak and tools/load: builds what they run, as it is shipped, and names it for their drivers.
tools/install-packages cmake ninja-build g++ util-linux libsqlite3-dev libmicrohttpd-dev libpugixml-dev \
    libcli11-dev libcrypt-dev libgnutls28-dev libbenchmark-dev libcurl4-openssl-dev libssl-dev nlohmann-json3-dev \
    libyaml-cpp-dev prometheus-cpp-dev >&2
build=build/bench
cmake --preset bench >/dev/null
cmake --build --preset bench --target soak-driver load-driver display-host desk-engine desk-monitor displayctl \
    cmpiDisplayManagement >&2
export DISPLAY_HOST="$root/$build/host/display-host" DESK_ENGINE="$root/$build/desk/engine/desk-engine"
export DESK_COMMAND="$root/$build/desk/support/desk-monitor" DISPLAYCTL="$root/$build/client/displayctl"
export DESK_LIBRARY="$root/$build/src/libcmpiDisplayManagement.so"
