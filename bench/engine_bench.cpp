// SPDX-License-Identifier: Apache-2.0
// One change over the desk's display engine: a method call through the CMPI interface, its message on a real
// queue, the engine's process that writes the store, and its reply. The engine must run; see run.sh.

#include "cases.h"
#include "null_broker.h"
#include "providers.h"

#include <monitor_support.h>

#include <cstdio>

namespace
{

using bench::Argument;
using bench::broker;
using bench::context;
using bench::Path;
using bench::Result;

const Path colorSpace("ZT_Marovelton_ColorSpace", {{"InstanceID", "ZT:Marovelton_ColorSpace:1"}});

/** Sets another luminance each time, so that there is something to do, and reads it back. */
bool setDisplayLuminance()
{
    constexpr int lowest = 48;
    constexpr int values = 203; // to 250
    static CMPIMethodMI *mi = ZT_Marovelton_ColorSpace_Create_MethodMI(&broker, &context, nullptr);
    static int calls = 0;
    const int luminance = lowest + calls++ % values;
    char text[16];
    std::snprintf(text, sizeof text, "%d", luminance);
    const Argument argument(text);
    Result result;
    const CMPIStatus status =
        mi->ft->invokeMethod(mi, &context, result, colorSpace, "SetDisplayLuminance", argument, nullptr);
    ColorSpaceInfo info;
    return status.rc == CMPI_RC_OK && result.dataType == CMPI_uint32 && result.data.uint32 == 0 &&
           GetColorSpaceInfoById(&info, 0) == SUCCESS && info.DisplayLuminance == luminance;
}

constexpr bench::Case cases[] = {
    {"engine/set_display_luminance", setDisplayLuminance},
};

} // namespace

int main(int argc, char **argv)
{
    return bench::run(argc, argv, cases);
}
