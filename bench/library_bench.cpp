// SPDX-License-Identifier: Apache-2.0
// The library alone: calls through the CMPI interface, from the factory to the function table, with a broker
// and a support library that cost next to nothing.

#include "cases.h"
#include "constant_seam.h"
#include "null_broker.h"
#include "providers.h"

#include <cstdio>

namespace
{

using bench::Argument;
using bench::broker;
using bench::context;
using bench::Path;
using bench::Result;

const Path colorSpace("ZT_Marovelton_ColorSpace", {{"InstanceID", "ZT:Marovelton_ColorSpace:1"}});
const Path monitor("ZT_Marovelton_Monitor", {{"DeviceID", "ZT:Marovelton_Monitor"},
                                             {"CreationClassName", "ZT_Marovelton_Monitor"},
                                             {"SystemName", "Studio 7"},
                                             {"SystemCreationClassName", "Linux_ComputerSystem"}});
const Path computerSystem("Linux_ComputerSystem", {{"Name", "Studio 7"}});

CMPIInstanceMI *colorSpaces()
{
    static CMPIInstanceMI *made = ZT_Marovelton_ColorSpace_Create_InstanceMI(&broker, &context, nullptr);
    return made;
}

bool enumerateColorSpaces()
{
    Result result;
    const CMPIStatus status =
        colorSpaces()->ft->enumerateInstances(colorSpaces(), &context, result, colorSpace, nullptr);
    return status.rc == CMPI_RC_OK && result.instances == 7 && result.done == 1;
}

bool nameColorSpaces()
{
    Result result;
    const CMPIStatus status =
        colorSpaces()->ft->enumerateInstanceNames(colorSpaces(), &context, result, colorSpace);
    return status.rc == CMPI_RC_OK && result.paths == 7 && result.done == 1;
}

bool getColorSpace()
{
    Result result;
    const CMPIStatus status =
        colorSpaces()->ft->getInstance(colorSpaces(), &context, result, colorSpace, nullptr);
    return status.rc == CMPI_RC_OK && result.instances == 1;
}

bool getMonitor()
{
    static CMPIInstanceMI *mi = ZT_Marovelton_Monitor_Create_InstanceMI(&broker, &context, nullptr);
    Result result;
    const CMPIStatus status = mi->ft->getInstance(mi, &context, result, monitor, nullptr);
    return status.rc == CMPI_RC_OK && result.instances == 1;
}

CMPIStatus setLuminance(const char *value, Result &result)
{
    static CMPIMethodMI *mi = ZT_Marovelton_ColorSpace_Create_MethodMI(&broker, &context, nullptr);
    const Argument argument(value);
    return mi->ft->invokeMethod(mi, &context, result, colorSpace, "SetDisplayLuminance", argument, nullptr);
}

bool setDisplayLuminance()
{
    const long sentBefore = bench::messagesSent;
    Result result;
    const CMPIStatus status = setLuminance("120", result);
    return status.rc == CMPI_RC_OK && result.dataType == CMPI_uint32 && result.data.uint32 == 0 &&
           bench::messagesSent == sentBefore + 1;
}

bool refuseDisplayLuminance()
{
    const long sentBefore = bench::messagesSent;
    Result result;
    const CMPIStatus status = setLuminance("251", result);
    return status.rc == CMPI_RC_ERR_INVALID_PARAMETER && bench::messagesSent == sentBefore &&
           bench::messageOf(status) == "Invalid input value range. Valid values are between 48 and 250.";
}

bool walkSystemDevice()
{
    static CMPIAssociationMI *mi =
        ZT_Marovelton_SystemDevice_Create_AssociationMI(&broker, &context, nullptr);
    Result result;
    const CMPIStatus status = mi->ft->associators(mi, &context, result, computerSystem, nullptr, nullptr,
                                                  nullptr, nullptr, nullptr);
    return status.rc == CMPI_RC_OK && result.instances == 1 && result.done == 1;
}

constexpr bench::Case cases[] = {
    {"library/enumerate_color_spaces", enumerateColorSpaces},
    {"library/name_color_spaces", nameColorSpaces},
    {"library/get_color_space", getColorSpace},
    {"library/get_monitor", getMonitor},
    {"library/set_display_luminance", setDisplayLuminance},
    {"library/refuse_display_luminance", refuseDisplayLuminance},
    {"library/walk_system_device", walkSystemDevice},
};

} // namespace

int main(int argc, char **argv)
{
    return bench::run(argc, argv, cases);
}
