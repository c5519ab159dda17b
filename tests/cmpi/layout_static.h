// SPDX-License-Identifier: Apache-2.0
// The simple types of CMPI, which no table shows. Included after the CMPI headers and <type_traits>.
#pragma once

static_assert(std::is_same_v<CMPIBoolean, unsigned char>);
static_assert(std::is_same_v<CMPIChar16, unsigned short>);
static_assert(sizeof(CMPIUint8) == 1 && std::is_unsigned_v<CMPIUint8>);
static_assert(sizeof(CMPIUint16) == 2 && std::is_unsigned_v<CMPIUint16>);
static_assert(sizeof(CMPIUint32) == 4 && std::is_unsigned_v<CMPIUint32>);
static_assert(sizeof(CMPIUint64) == 8 && std::is_unsigned_v<CMPIUint64>);
static_assert(sizeof(CMPISint8) == 1 && std::is_signed_v<CMPISint8>);
static_assert(sizeof(CMPISint16) == 2 && std::is_signed_v<CMPISint16>);
static_assert(sizeof(CMPISint32) == 4 && std::is_signed_v<CMPISint32>);
static_assert(sizeof(CMPISint64) == 8 && std::is_signed_v<CMPISint64>);
static_assert(std::is_same_v<CMPIReal32, float>);
static_assert(std::is_same_v<CMPIReal64, double>);
static_assert(std::is_same_v<CMPICount, unsigned int>);
static_assert(std::is_same_v<CMPIFlags, unsigned int>);
static_assert(std::is_same_v<CMPIType, unsigned short>);
static_assert(std::is_same_v<CMPIValueState, unsigned short>);
static_assert(std::is_same_v<CMPIVersion, int>);
static_assert(sizeof(CMPIrc) == sizeof(int));
static_assert(sizeof(CMPIValue) == (sizeof(void *) == 8 ? 16 : 8));
static_assert(sizeof(CMPIData) == (sizeof(void *) == 8 ? 24 : 16));
static_assert(sizeof(CMPIStatus) == (sizeof(void *) == 8 ? 16 : 8));
