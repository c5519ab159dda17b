// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_TestPatternGenerator: the built-in test-pattern generator, one object. Its pattern and
// levels, and the methods that switch it, choose the pattern and set the levels.

#include "display/modules.h"

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_TestPatternGenerator";
constexpr const char *_InstanceID = "ZT:Marovelton_TestPatternGenerator";

// Clients know a missing reply to any of these by the text about the power saver.

// The register carries the state, 1 for on, whatever its name says.
SETTING(SetTestPatternEnable, TEST_PATTERN_ID, TEST_PATTERN_DISABLE,
        "Failed to set the value to PowerSaverState.")
SETTING(SetTestPattern, TEST_PATTERN_ID, TEST_PATTERN_WEB, "Failed to set the value to PowerSaverState.")

int SetRGBValue(int red, int green, int blue, char *errorText)
{
    return sendSetting(TEST_PATTERN_ID,
                       {{TEST_PATTERN_RED, red}, {TEST_PATTERN_GREEN, green}, {TEST_PATTERN_BLUE, blue}},
                       {"Failed to set the value to PowerSaverState."}, errorText);
}

STAMP_PATH_BY_INSTANCE_ID(ZT_Marovelton_TestPatternGenerator)

CMPIInstance *_makeInst_ZT_Marovelton_TestPatternGenerator(const CMPIObjectPath *reference,
                                                           CMPIStatus *status)
{
    SystemName system;
    TestPatternInfo info = {};
    InstanceBuilder generator(_broker, _ClassName,
                              newPath(_broker, _ClassName, reference, status, {{"InstanceID", _InstanceID}}),
                              status);
    if (!generator ||
        !generator.readSystemName("Failed to get monitor information from database.", &system)) {
        return nullptr;
    }

    generator.describe(_InstanceID, logicalElement);
    generator.formatted("Name", "%s-TestPatternGenerator", system.text);
    if (!generator.require(GetTestPatternInfo(&info) == 0,
                           "Failed to get test pattern information from database.")) {
        return nullptr;
    }
    generator.boolean("Enabled", info.Enabled);
    generator.field("RValue", info.RValue);
    generator.field("GValue", info.GValue);
    generator.field("BValue", info.BValue);
    generator.uint16Array("TestPattern", {info.TestPatternGenerator});
    return generator.finish();
}

// ---- methods ----

/** Reads one of the three levels, 0 to 255. */
static bool readLevel(Call &call, const char *argument, const char *missing, int *level)
{
    return readArgument(call, {leadingInteger, argument, missing}, level) &&
           requireRange(call, *level,
                        {0, 255, "Invalid input value range. Valid values are between 0 and 255."});
}

static bool runSetRGBValue(Call &call)
{
    int red = 0;
    int green = 0;
    int blue = 0;
    return readLevel(call, "RValue", "Required argument RValue missing.", &red) &&
           readLevel(call, "GValue", "Required argument GValue missing.", &green) &&
           readLevel(call, "BValue", "Required argument BValue missing.", &blue) &&
           settled(call, SetRGBValue(red, green, blue, call.errorText));
}

constexpr Method methods[] = {
    {.name = "SetEnabled",
     .argument = {toggle, "Enabled", "Required argument Enabled missing."},
     .set = SetTestPatternEnable},
    {.name = "SetTestPattern",
     .argument = {leadingInteger, "TestPattern", "Required argument TestPattern missing."},
     .range = {0, 8, "Invalid input value range. Valid values are between 0 and 8."},
     .set = SetTestPattern},
    {.name = "SetRGBValue", .run = runSetRGBValue},
};

STAMP_INSTANCE_AND_METHOD_PROVIDER(
    ZT_Marovelton_TestPatternGenerator, .key = {.name = "InstanceID", .value = _InstanceID},
    .methods = methods, .compareMethodNames = strcasecmp,
    .refusals = {.wrongClass = nullptr, .unknownMethod = CMPI_RC_ERR_NOT_SUPPORTED, .unknownMethodValue = 0})
