# SPDX-License-Identifier: Apache-2.0
# What all ARM toolchains have in common: Debian's cross compiler for the given triplet, and an emulator that
# runs what it builds. Set before this file is read: ARM_TRIPLET, ARM_PROCESSOR (arm, aarch64), DISPLAY_DEBIAN_ARCHITECTURE.
#
# What needs more libraries than the C library, the object manager and displayctl, is built with DISPLAY_SYSROOT, a
# directory with Debian's own packages of that architecture, as tools/sysroot makes it.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${ARM_PROCESSOR})
set(CMAKE_C_COMPILER ${ARM_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${ARM_TRIPLET}-g++)

# Libraries and headers of the target alone: Debian's cross packages stand in /usr/<triplet>, those of a
# multi-arch installation in /usr/lib/<triplet>.
set(CMAKE_LIBRARY_ARCHITECTURE ${ARM_TRIPLET})
set(ARM_LIBRARIES /usr/${ARM_TRIPLET})
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES DISPLAY_SYSROOT)
if(DISPLAY_SYSROOT)
    set(CMAKE_SYSROOT ${DISPLAY_SYSROOT})
    set(ARM_LIBRARIES ${DISPLAY_SYSROOT})
endif()
set(CMAKE_FIND_ROOT_PATH /usr/${ARM_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(ARM_EMULATOR NAMES qemu-${ARM_PROCESSOR} qemu-${ARM_PROCESSOR}-static)
if(ARM_EMULATOR)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${ARM_EMULATOR} -L ${ARM_LIBRARIES})
endif()

# find_package(GTest) builds the sources of Debian's googletest: there is no built one for the target.
list(PREPEND CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR}/../cross)
