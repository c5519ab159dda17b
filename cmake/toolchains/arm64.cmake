# SPDX-License-Identifier: Apache-2.0
# ARMv8, 64 bits.

set(ARM_TRIPLET aarch64-linux-gnu)
set(ARM_PROCESSOR aarch64)
set(DISPLAY_DEBIAN_ARCHITECTURE arm64)
include(${CMAKE_CURRENT_LIST_DIR}/arm.cmake)
