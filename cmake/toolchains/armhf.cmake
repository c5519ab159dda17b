# SPDX-License-Identifier: Apache-2.0
# ARMv7 with a floating-point unit.

set(ARM_TRIPLET arm-linux-gnueabihf)
set(ARM_PROCESSOR arm)
set(DISPLAY_DEBIAN_ARCHITECTURE armhf)
set(CMAKE_C_FLAGS_INIT "-march=armv7-a+fp -mfloat-abi=hard -mthumb -Wno-psabi")
set(CMAKE_CXX_FLAGS_INIT "-march=armv7-a+fp -mfloat-abi=hard -mthumb -Wno-psabi")
include(${CMAKE_CURRENT_LIST_DIR}/arm.cmake)
