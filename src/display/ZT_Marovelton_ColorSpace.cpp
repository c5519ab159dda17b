// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_ColorSpace: the seven colour-space presets, one object each. Their primaries, white point,
// gamma and luminance, which is in use, and the methods that set the luminance and reset the calibration.

#include "display/modules.h"

#include <cstdio>

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_ColorSpace";
constexpr const char *_InstanceID = "ZT:Marovelton_ColorSpace:%d";
constexpr int presets = 7;

int ValidateColorSpaceInstanceID(const char *instanceID, char *errorText, int *index)
{
    return matchInstanceID(instanceID, _InstanceID, presets, errorText, index);
}

SETTING(SetDisplayLuminance, COLOR_SPACE_ID, LUMINANCE, "Failed to set the value to DisplayLuminance.")
// Clients know both resets by the text about luminance.
COMMAND(ResetToLastCalibration, RESET_GROUP_ID, RESET_LAST_CALIBRATION,
        "Failed to set the value to DisplayLuminance.")
COMMAND(ResetToFactoryCalibration, RESET_GROUP_ID, RESET_FACTORY_CALIBRATION,
        "Failed to set the value to DisplayLuminance.")

STAMP_PATH_BY_NUMBER(ZT_Marovelton_ColorSpace)

CMPIInstance *_makeInst_ZT_Marovelton_ColorSpace(const CMPIObjectPath *reference, int index,
                                                 CMPIStatus *status)
{
    InstanceBuilder preset(_broker, _ClassName, _makePath_ZT_Marovelton_ColorSpace(reference, index, status),
                           status);
    ColorSpaceInfo info = {};
    int active = 0;
    if (!preset ||
        !preset.require(GetColorSpaceInfoById(&info, index) == 0,
                        "Failed to get ColorSpace information from database.") ||
        !preset.require(readRegister(ACTIVE_COLORSPACE, COLOR_SPACE_ID, &active) == 0,
                        "Failed to get ColorSpace information from database.")) {
        return nullptr;
    }
    char colorSpaceName[sizeof info.ColorSpaceName + 1] = {};
    memcpy(colorSpaceName, info.ColorSpaceName, sizeof info.ColorSpaceName);
    char name[64];
    snprintf(name, sizeof name, "%s-%s", _ClassName, colorSpaceName);

    preset.boolean("Active", active == index);
    // Only the low 16 bits go out; whatever number the record holds, adding to them cannot overflow.
    preset.uint16("ColorSpaceNumber", static_cast<uint16_t>(info.ActiveColorSpace) + 1);
    preset.text("ColorSpaceName", colorSpaceName);
    preset.uint16("DisplayLuminance", info.DisplayLuminance);
    preset.field("BluePrimaryU", info.BluePrimaryU);
    preset.field("BluePrimaryV", info.BluePrimaryV);
    preset.field("BluePrimaryX", info.BluePrimaryX);
    preset.field("BluePrimaryY", info.BluePrimaryY);
    // The sRGB curve is not a power function: clients expect its name in the place of a number.
    if (strstr(colorSpaceName, "sRGB")) {
        preset.text("Gamma", "sRGB");
    } else {
        preset.field("Gamma", info.Gamma);
    }
    preset.field("GreenPrimaryU", info.GreenPrimaryU);
    preset.field("GreenPrimaryV", info.GreenPrimaryV);
    preset.field("GreenPrimaryX", info.GreenPrimaryX);
    preset.field("GreenPrimaryY", info.GreenPrimaryY);
    preset.field("RedPrimaryU", info.RedPrimaryU);
    preset.field("RedPrimaryV", info.RedPrimaryV);
    preset.field("RedPrimaryX", info.RedPrimaryX);
    preset.field("RedPrimaryY", info.RedPrimaryY);
    preset.field("WhitePointU", info.WhitePointU);
    preset.field("WhitePointV", info.WhitePointV);
    preset.field("WhitePointX", info.WhitePointX);
    preset.field("WhitePointY", info.WhitePointY);
    preset.describe(InstanceID(_InstanceID, index).text, logicalElement);
    preset.text("Name", name);
    return preset.finish();
}

// ---- methods ----

static bool readStored(Call &call, int registerId, int *value)
{
    return readRegister(registerId, COLOR_SPACE_ID, value) == 0 ||
           fail(call, CMPI_RC_ERR_FAILED, "Failed to get ColorSpace information from database.");
}

/** Passes only the preset that is in use. */
static bool requireActive(Call &call, const char *refused)
{
    int active = 0;
    return readStored(call, ACTIVE_COLORSPACE, &active) &&
           (active == call.index || fail(call, CMPI_RC_ERR_NOT_SUPPORTED, refused));
}

static bool runSetDisplayLuminance(Call &call)
{
    int luminance = 0;
    const char *text = requireText(call, "Luminance", "Required argument Luminance missing.");
    // Clients learn that the preset is not in use even when the value they gave is no luminance.
    return text && requireActive(call, "Luminance value changing allowed to active colorspace only.") &&
           requireContent(call, text) && convert(call, text, integer, "Invalid parameter.", &luminance) &&
           requireRange(call, luminance,
                        {48, 250, "Invalid input value range. Valid values are between 48 and 250."}) &&
           settled(call, SetDisplayLuminance(luminance, call.errorText));
}

/** Passes where the engine offers a reset: its register, read afresh, is 1. */
static bool requireOffered(Call &call, int resetRegister, const char *refused)
{
    int offered = 0;
    return settled(call, InvokeGetMethod_Spear(COLOR_SPACE_ID, call.errorText)) &&
           readStored(call, resetRegister, &offered) &&
           (offered == 1 || fail(call, CMPI_RC_ERR_NOT_SUPPORTED, refused));
}

static bool lastCalibrationCanBeReset(Call &call)
{
    return requireOffered(call, RESET_LAST_CALIBRATION,
                          "Operation not allowed.Current store have user-adjusted luminance") &&
           requireActive(call, "ResetToLastCalibration allowed for active colorspace only.");
}

/** Unlike the last calibration, the factory's may be restored on a preset that is not in use. */
static bool factoryCalibrationCanBeReset(Call &call)
{
    return requireOffered(call, RESET_FACTORY_CALIBRATION,
                          "Operation not allowed.Current store is same as factory store");
}

constexpr Method methods[] = {
    {.name = "SetDisplayLuminance", .run = runSetDisplayLuminance},
    {.name = "ResetToLastCalibration",
     .precondition = lastCalibrationCanBeReset,
     .act = ResetToLastCalibration},
    {.name = "ResetToFactoryCalibration",
     .precondition = factoryCalibrationCanBeReset,
     .act = ResetToFactoryCalibration},
};

STAMP_INSTANCE_AND_METHOD_PROVIDER(ZT_Marovelton_ColorSpace,
                                   .key = {.name = "InstanceID", .validate = ValidateColorSpaceInstanceID},
                                   .reads = {.count = presets}, .methods = methods,
                                   .refusals = {.wrongKey = CMPI_RC_ERR_INVALID_PARAMETER,
                                                .missingKeyValue = 1})
