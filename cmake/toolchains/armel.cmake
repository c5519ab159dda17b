# SPDX-License-Identifier: Apache-2.0
# The controller's processor and its like: ARMv5TE without a floating-point unit. Thumb code is a third smaller.
# GCC's notes about what changed in version 7 (psabi) are of no use where all is built by one compiler.

set(ARM_TRIPLET arm-linux-gnueabi)
set(ARM_PROCESSOR arm)
set(DISPLAY_DEBIAN_ARCHITECTURE armel)
set(CMAKE_C_FLAGS_INIT "-march=armv5te -mfloat-abi=soft -mthumb -Wno-psabi")
set(CMAKE_CXX_FLAGS_INIT "-march=armv5te -mfloat-abi=soft -mthumb -Wno-psabi")
include(${CMAKE_CURRENT_LIST_DIR}/arm.cmake)
