// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_PictureInPicture: the second picture, inset into the main one or beside it, one object. Its
// mode, size, position and input, and the methods that change these, most only if there is such a picture.

#include "display/modules.h"

#include <cstdio>

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_PictureInPicture";
constexpr const char *_InstanceID = "ZT:Marovelton_PictureInPicture";

SETTING(SetPIPInputSource, PIP_INFO_ID, PIP_SOURCE, .reply = "Failed to set the value to InputSource.",
        .busy = "Device is Busy. Please try after some Time.")
COMMAND(SetSwapInputSource, PIP_INFO_ID, SWAP_PIP_PRIMARY_INPUTS,
        "Failed to set the value to SwapInputSource.")

int SetPIPPosition(int x, int y, char *errorText)
{
    // Preset 4 of PIP_POSITION stands for the coordinates.
    return sendSetting(PIP_INFO_ID, {{PIP_POSITION, 4}, {PIP_POSITION_X, x}, {PIP_POSITION_Y, y}},
                       {"Failed to set the value to PIPPositions."}, errorText);
}

SETTING(SetPIPSize, PIP_INFO_ID, PIP_SIZE, "Failed to set the value to PIP Size.")
SETTING(SetPIPMode, PIP_INFO_ID, PIP_STATE, .reply = "Failed to set the value to PIPMode.",
        .busy = "Device is Busy. Plese try after some time.")
SETTING(SetOverScan, PIP_INFO_ID, PIP_OVER_SCAN_STATUS, "Failed to set the value to OverScan.")
SETTING(SetUseVideoLevels, PIP_INFO_ID, PIP_VIDEO_LEVEL_STATUS, "Failed to set the value to video level.")
SETTING(SetDigitalCinemaOption, PIP_INFO_ID, PIP_DCI_IMAGE_REGION,
        "Failed to set the value to DigitalCinemaOption.")

int GetPIPMode()
{
    int mode = 0;
    return readRegister(PIP_STATE, PIP_INFO_ID, &mode) == 0 ? mode : -1;
}

int GetPIPSize()
{
    int size = 0;
    return readRegister(PIP_SIZE, PIP_INFO_ID, &size) == 0 ? size : -1;
}

int GetResolution(int *horizontal, int *vertical)
{
    int width = 0;
    int height = 0;
    if (readRegister(PIP_HORIZONTAL_ACTIVE, PIP_INFO_ID, &width) == -1 ||
        readRegister(PIP_VERTICAL_ACTIVE, PIP_INFO_ID, &height) == -1) {
        return -1;
    }
    *horizontal = width;
    *vertical = height;
    return 0;
}

STAMP_PATH_BY_INSTANCE_ID(ZT_Marovelton_PictureInPicture)

CMPIInstance *_makeInst_ZT_Marovelton_PictureInPicture(const CMPIObjectPath *reference, CMPIStatus *status)
{
    PexalPIPSettings info = {};
    SystemName system;
    InstanceBuilder pip(_broker, _ClassName,
                        newPath(_broker, _ClassName, reference, status, {{"InstanceID", _InstanceID}}),
                        status);
    if (!pip ||
        !pip.require(GetPIPSettingsInfo(&info) == 0,
                     "Failed to get PIPSettings information from database.") ||
        !pip.readSystemName("Could not get monitor information from database.", &system)) {
        return nullptr;
    }

    pip.boolean("PIPOverscanEnabled", info.OverScan);
    pip.uint16("PIPSize", info.PipSize);
    pip.uint16("PIPPositionX", info.PipPositionX);
    pip.uint16("PIPPositionY", info.PipPositionY);
    pip.uint16Array("PIPMode", {info.PipMode});
    pip.boolean("UseVideoLevels", info.VideoLevel);
    pip.boolean("ShowDCICroppedRegion", info.ShowCroppedRegion);
    pip.uint16Array("DigitalCinemaOption", {info.ImageRegion});
    pip.uint16Array("PIPInputSource", {info.PipInputSource});
    pip.describe(_InstanceID, logicalElement);
    pip.formatted("Name", "%s-PictureInPicture", system.text);
    return pip.finish();
}

// ---- methods ----

/** Refreshes the engine's values and refuses with `refusal` in one of the modes. A mode that cannot be read
 * refuses nothing. */
static bool passUnlessIn(Call &call, std::initializer_list<int> modes, const char *refusal)
{
    if (!settled(call, InvokeGetMethod_Spear(PIP_INFO_ID, call.errorText))) {
        return false;
    }
    const int mode = GetPIPMode();
    for (const int refused : modes) {
        if (mode == refused) {
            return fail(call, CMPI_RC_ERR_NOT_SUPPORTED, refusal);
        }
    }
    return true;
}

static bool inputSourceCanBeSet(Call &call)
{
    return passUnlessIn(call, {PIP_MODE_OFF, PIP_PICTURE_BESIDE_PICTURE},
                        "PIP mode is off. Unable to set the value for PIPInput source");
}

static bool inputsCanBeSwapped(Call &call)
{
    CMPIStatus counted = {CMPI_RC_OK, nullptr};
    if (cmpi::getArgCount(call.in, &counted) != 0 || counted.rc != CMPI_RC_OK) {
        return fail(call, CMPI_RC_ERR_INVALID_PARAMETER,
                    "Argument not Required for SwapPrimaryPIPInputs method");
    }
    return passUnlessIn(call, {PIP_MODE_OFF},
                        "PIP mode is off. Unable to set the value for Swap input source");
}

static bool sizeCanBeSet(Call &call)
{
    // Refused beside the main picture as well, although the text speaks of the opposite.
    return passUnlessIn(call, {PIP_MODE_OFF, PIP_PICTURE_BESIDE_PICTURE},
                        "PIP mode or picture beside picture is off. Unable to set the value for pip size");
}

static bool overScanCanBeSet(Call &call)
{
    return passUnlessIn(call, {PIP_MODE_OFF}, "PIP mode is off. Unable to set the value for OverScan");
}

static bool digitalCinemaOptionCanBeSet(Call &call)
{
    int width = 0;
    int height = 0;
    if (!passUnlessIn(call, {PIP_MODE_OFF}, "PIP mode is off. Unable to set the value")) {
        return false;
    }
    if (GetResolution(&width, &height) != 0) {
        return fail(call, CMPI_RC_ERR_FAILED, "Could not get info from DB");
    }
    printf("%s:x = %d, y = %d\n", "ZT_Marovelton_PictureInPictureInvokeMethod", width, height);
    if ((height == 2160 && (width == 4096 || width == 4095)) || (height == 1080 && width == 2048)) {
        return true;
    }
    return fail(call, CMPI_RC_ERR_NOT_SUPPORTED,
                "PIP active resolution does not support DCI. Unable to set the value");
}

// By PipSize. Clients know the maximum inset as the one with the smallest range.
constexpr struct {
    Range x, y;
    const char *both;
} positionLimits[] = {
    {{160, 480, "Invalid values, PIP Size is maximum. Valid Values of PIPPositionX are between 160 and 480."},
     {160, 200, "Invalid values, PIP Size is maximum. Valid values of PIPPositionY are between 160 and 200."},
     "Invalid values, PIP Size is maximum. Valid Values of PIPPositionX are between 160 and 480 and Valid values of PIPPositionY are between 160 and 200."},
    {{160, 2116,
      "Invalid values, PIP Size is minimum. Valid Values of PIPPositionX are between 160 and 2116."},
     {160, 1120,
      "Invalid values, PIP Size is minimum. Valid values of PIPPositionY are between 160 and 1120."},
     "Invalid values, PIP Size is minimum. Valid Values of PIPPositionX are between 160 and 2116 and Valid values of PIPPositionY are between 160 and 1120."},
    {{160, 1688,
      "Invalid values, PIP Size is default. Valid Values of PIPPositionX are between 160 and 1688."},
     {160, 880, "Invalid values, PIP Size is default. Valid values of PIPPositionY are between 160 and 880."},
     "Invalid values, PIP Size is default. Valid Values of PIPPositionX are between 160 and 1688 and Valid values of PIPPositionY are between 160 and 880."},
};
static_assert(PIP_SIZE_MAXIMUM == 0 && PIP_SIZE_MINIMUM == 1 && PIP_SIZE_DEFAULT == 2);

static bool runSetPIPPosition(Call &call)
{
    int x = 0;
    int y = 0;
    if (!readArgument(call, {integer, "PIPPositionX", "Required argument PIPPositionX missing."}, &x) ||
        !readArgument(call, {integer, "PIPPositionY", "Required argument PIPPositionY missing."}, &y) ||
        !passUnlessIn(call, {PIP_MODE_OFF, PIP_PICTURE_BESIDE_PICTURE},
                      "PIP mode or picture in picture is off. Unable to set the value for pip positions")) {
        return false;
    }
    const int size = GetPIPSize();
    if (size < PIP_SIZE_MAXIMUM || size > PIP_SIZE_DEFAULT) { // no limits are known for it
        return fail(call, CMPI_RC_ERR_FAILED, "Failed to get PIPSettings information from database.");
    }
    const auto &limits = positionLimits[size];
    return requirePosition(call, x, limits.x, y, limits.y, limits.both) &&
           settled(call, SetPIPPosition(x, y, call.errorText));
}

constexpr Method methods[] = {
    {.name = "SetPIPInputSource",
     .argument = {integer, "PIPInputSource", "Required argument PIPInputSource missing."},
     .precondition = inputSourceCanBeSet,
     .range = {0, 2, "Invalid input value range, Enter valid values 0 to 2."},
     .set = SetPIPInputSource},
    {.name = "SwapPrimaryPIPInputs", .precondition = inputsCanBeSwapped, .act = SetSwapInputSource},
    {.name = "SetPIPPosition", .run = runSetPIPPosition},
    {.name = "SetPIPSize",
     .argument = {integer, "PIPSize", "Required argument PIPSize missing."},
     .precondition = sizeCanBeSet,
     .range = {0, 2, "Invalid input value range. Valid values are between 0 and 2."},
     .set = SetPIPSize},
    {.name = "SetPIPMode",
     .argument = {integer, "PIPMode", "Required argument PIPMode missing."},
     .range = {0, 2, "Invalid input value range, Valid values are between 0 and 2."},
     .set = SetPIPMode},
    {.name = "SetPIPOverscanEnabled",
     .argument = {toggle, "PIPOverscanEnabled", "Required argument PIPOverscanEnabled missing.",
                  "Invalid Parameter."},
     .precondition = overScanCanBeSet,
     .range = {0, 1, "Invalid input value range. Valid values are 0 and 1."},
     .set = SetOverScan},
    {.name = "SetUseVideoLevels",
     .argument = {toggle, "UseVideoLevels", "Required argument UseVideoLevels missing."},
     .range = {0, 1, "Invalid input value range, Valid value are 0 or 1."},
     .set = SetUseVideoLevels},
    {.name = "SetDigitalCinemaOption",
     .argument = {integer, "DigitalCinemaOption", "Required argument DigitalCinemaOption missing."},
     .precondition = digitalCinemaOptionCanBeSet,
     .range = {0, 2, "Invalid input value range. Valid values are between 0 and 2."},
     .set = SetDigitalCinemaOption},
};

STAMP_INSTANCE_AND_METHOD_PROVIDER(ZT_Marovelton_PictureInPicture,
                                   .key = {.name = "InstanceID", .value = _InstanceID}, .methods = methods,
                                   .refusals = {.wrongClass = nullptr})
