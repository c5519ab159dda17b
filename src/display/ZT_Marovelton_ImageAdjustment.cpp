// SPDX-License-Identifier: Apache-2.0
// ZT_Marovelton_ImageAdjustment: how the picture is shown, one object. Aspect ratio, digital-cinema region,
// cropped region, video levels, overscan, blue channel, overdrive, deinterlacer, cadence detection and the
// region of a 4K source, with one method per setting.

#include "display/modules.h"

#include <cstdio>

using namespace frame;

static const CMPIBroker *_broker;
constexpr const char *_ClassName = "ZT_Marovelton_ImageAdjustment";
constexpr const char *_InstanceID = "ZT:Marovelton_ImageAdjustment";

SETTING(setCroppedRegionOpacity, IMAGE_ADJ_SETTINGS_ID, OPACITY_CROPPED_REGION,
        .reply = "Failed to set the value to CroppedRegionOpacity.",
        .busy = "Device is Busy. Please try after some time") // no full stop, unlike the others
SETTING(setDCIImageRegion, IMAGE_ADJ_SETTINGS_ID, DCI_IMAGE_REGION,
        "Failed to set the value to DCIImageRegion.")
SETTING(setDisplayAspectRatio, IMAGE_ADJ_SETTINGS_ID, DISPLAY_FILL_STATUS,
        "Failed to set the value to DisplayAspectRatio.")
// Clients know the corner by the text about source scaling.
COMMAND(setDisplayed4KCorner, QUICK_ACTION_ID, NEXT_4K_CORNER, "Failed to set the value to Source Scaling.")
SETTING(setOverscanFrame, IMAGE_ADJ_SETTINGS_ID, OVERSCAN_STATUS, "Failed to set the value to OverscanFrame.")

int Set4KRegionPosition(int x, int y, char *errorText)
{
    return sendSetting(IMAGE_ADJ_SETTINGS_ID, {{SCROLL_4K_POSITION_X, x}, {SCROLL_4K_POSITION_Y, y}},
                       {"Failed to set the 4k Region Position."}, errorText);
}

SETTING(setShowBlueChannel, IMAGE_ADJ_SETTINGS_ID, BLUE_CHANNELS_STATUS,
        "Failed to set the value to ShowBlueChannel.")
SETTING(setShowCroppedRegionForImageAdjustment, IMAGE_ADJ_SETTINGS_ID, SHOW_CROPPED_REGION,
        "Failed to set the value to ShowCroppedRegion.")
SETTING(setUseVideoLevels, IMAGE_ADJ_SETTINGS_ID, VIDEO_LEVEL_STATUS,
        "Failed to set the value to video level.")
SETTING(setOverdrive, IMAGE_ADJ_SETTINGS_ID, OVER_DRIVE,
        "Failed to set the value of OverdriveEnabled property.")
SETTING(setDeinterlacer, IMAGE_ADJ_SETTINGS_ID, DEINTERLACING_STATUS,
        "Failed to set the value of DeinterlacerEnabled property.")
SETTING(setCadence, IMAGE_ADJ_SETTINGS_ID, CADENCE_DETECTION_STATUS,
        "Failed to set the value of CadenceDetectionEnabled property.")
SETTING(set4KSourceScaling, IMAGE_ADJ_SETTINGS_ID, SOURCE_SCALING_4K,
        "Failed to set the value to Source Scaling.")

// The engine offers neither of these two: they fail without a text, and no method calls them.

int setDisplayMode4K(int, char *)
{
    return -1;
}

int setShow4KPositionOverlay(int, char *)
{
    return -1;
}

int Get4kState()
{
    int state = 0;
    return readRegister(SCROLL_4K_STATE, IMAGE_ADJ_SETTINGS_ID, &state) == 0 ? state : -1;
}

STAMP_PATH_BY_INSTANCE_ID(ZT_Marovelton_ImageAdjustment)

CMPIInstance *_makeInst_ZT_Marovelton_ImageAdjustment(const CMPIObjectPath *reference, CMPIStatus *status)
{
    InstanceBuilder picture(_broker, _ClassName, _makePath_ZT_Marovelton_ImageAdjustment(reference, status),
                            status);
    ImageAdjustment image = {};
    SystemName system;
    if (!picture ||
        !picture.require(GetImageAdjustmentInfo(&image) == 0,
                         "Failed to get Image Adjustment information from database.") ||
        !picture.readSystemName("Could not get monitor information from database.", &system)) {
        return nullptr;
    }

    picture.uint16("Region4KPositionX", image.Region4KPositionX);
    picture.uint16("Region4KPositionY", image.Region4KPositionY);
    picture.uint16("CroppedRegionOpacity", image.CroppedRegionOpacity);
    picture.boolean("OverscanFrame", image.Overscan);
    picture.boolean("ShowBlueChannel", image.ShowBlueChannel);
    picture.boolean("ShowCroppedRegion", image.ShowCroppedRegion);
    picture.boolean("UseVideoLevels", image.UseVideoLevels);
    picture.boolean("OverdriveEnabled", image.Overdrive);
    picture.boolean("DeinterlacerEnabled", image.Deinterlacer);
    picture.boolean("CadenceDetectionEnabled", image.Cadence);
    picture.uint16Array("DisplayAspectRatio", {image.DisplayAspectRatio});
    picture.uint16Array("DCIImageRegion", {image.CurrentDCIOptions});
    // Not the record's field of that name: the scaling in use is among the options for 4K.
    picture.uint16Array("SourceScaling4K", {image.CurrentDCIOptions4K});
    picture.describe(_InstanceID, logicalElement);
    picture.formatted("Name", "%s-ImageAdjustment", system.text);
    return picture.finish();
}

// ---- methods ----

constexpr int pixelForPixel = 4; // an aspect ratio: only then is a 4K source larger than the display

/** Reads the settings after asking the engine to refresh them. */
static bool readImage(Call &call, ImageAdjustment *image)
{
    return settled(call, InvokeGetMethod_Spear(IMAGE_ADJ_SETTINGS_ID, call.errorText)) &&
           (GetImageAdjustmentInfo(image) == 0 ||
            fail(call, CMPI_RC_ERR_FAILED, "Failed to get Settings information from database."));
}

static bool is4K(const ImageAdjustment &image)
{
    const int width = image.HorizontalResolution;
    return image.VerticalResolution == 2160 && (width == 4096 || width == 4095 || width == 3840);
}

/** Passes while a 4K source is shown pixel for pixel, and gives the settings. */
static bool require4KRegion(Call &call, ImageAdjustment *image)
{
    if (!readImage(call, image)) {
        return false;
    }
    if (image->DisplayAspectRatio != pixelForPixel) {
        return fail(call, CMPI_RC_ERR_NOT_SUPPORTED, "4k not supported. (Pixel-for-Pixel should be enabled)");
    }
    return is4K(*image) || fail(call, CMPI_RC_ERR_NOT_SUPPORTED, "4k not supported.(Unsupported Resolution)");
}

static bool cornerCanBeChosen(Call &call)
{
    ImageAdjustment image = {};
    return require4KRegion(call, &image);
}

static bool scalingCanBeModified(Call &call)
{
    ImageAdjustment image = {};
    return readImage(call, &image) &&
           (is4K(image) || fail(call, CMPI_RC_ERR_NOT_SUPPORTED,
                                "SourceScaling4K cannot be modified.(Unsupported Resolution)"));
}

constexpr int any = -1;

/** Where the region may stand on a source of one width with one digital-cinema region, in pixels. */
constexpr struct {
    int width, dciOption;
    int minX, maxX, minY, maxY;
} regionBounds[] = {
    {4096, 0, 0, 1536, 0, 720},
    {4095, 0, 0, 1535, 0, 720},
    {4096, 1, 50, 1486, 0, 720},
    {4095, 1, 49, 1485, 0, 720},
    {4096, 2, 0, 1536, 222, 498},
    {4095, 2, 0, 1535, 222, 498},
    {3840, any, 0, 1280, 0, 720},
    // A digital-cinema region that has no bounds leaves no room: every position is out of range.
    {any, any, 0, -1, 0, -1},
};

static const auto &boundsOf(const ImageAdjustment &image)
{
    const auto *bounds = regionBounds;
    while ((bounds->width != any && bounds->width != image.HorizontalResolution) ||
           (bounds->dciOption != any && bounds->dciOption != image.CurrentDCIOptions)) {
        ++bounds; // ends at the last row, which fits everything
    }
    return *bounds;
}

/** Reads one coordinate, within bounds that stand in its range text. */
static bool readCoordinate(Call &call, const char *name, const char *missing, int min, int max,
                           const char *rangeText, int *value)
{
    char text[128];
    snprintf(text, sizeof text, rangeText, min, max);
    return readArgument(call, {integer, name, missing}, value) &&
           requireRange(call, *value, {min, max, text});
}

static bool runSet4KRegionPosition(Call &call)
{
    ImageAdjustment image = {};
    if (!require4KRegion(call, &image)) {
        return false;
    }
    const auto &bounds = boundsOf(image);
    int x = 0;
    int y = 0;
    return readCoordinate(call, "Position4KRegionX", "Required argument Position4KRegionX missing.",
                          bounds.minX, bounds.maxX, "Invalid Position4KRegionX value %d and %d", &x) &&
           readCoordinate(call, "Position4KRegionY", "Required argument Position4KRegionY missing.",
                          bounds.minY, bounds.maxY,
                          "Invalid Position4KRegionY value. Valid values are between %d and %d", &y) &&
           settled(call, Set4KRegionPosition(x, y, call.errorText));
}

static bool runSet4KDisplayMode(Call &call)
{
    // Offered by no engine. The argument is fetched all the same, given or not, and the message clients
    // know is the blank that no setting has replaced.
    static_cast<void>(cmpi::getArg(call.in, "DisplayMode4K", nullptr));
    return fail(call, CMPI_RC_ERR_NOT_SUPPORTED, call.errorText);
}

// The range texts differ in small words; clients know each as it stands.
constexpr Method methods[] = {
    {.name = "SetCroppedRegionOpacity",
     .argument = {integer, "CroppedRegionOpacity", "Required argument CroppedRegionOpacity missing."},
     .range = {25, 100, "Invalid input value range. Valid values are between 25 and 100."},
     .set = setCroppedRegionOpacity},
    {.name = "SetDCIImageRegion",
     .argument = {integer, "DCIImageRegion", "Required argument DCIImageRegion missing."},
     .range = {0, 2, "Invalid input value range. Valid values are between 0 and 2."},
     .set = setDCIImageRegion},
    {.name = "SetDisplayAspectRatio",
     .argument = {integer, "DisplayAspectRatio", "Required argument DisplayAspectRatio missing."},
     .range = {0, 4, "Invalid input value range, Valid values are between 0 and 4."},
     .set = setDisplayAspectRatio},
    {.name = "Set4KDisplayMode", .run = runSet4KDisplayMode},
    {.name = "SetDisplayed4KCorner", .precondition = cornerCanBeChosen, .act = setDisplayed4KCorner},
    {.name = "SetOverscanFrame",
     .argument = {toggle, "OverscanFrame", "Required argument OverscanFrame missing."},
     .range = {0, 1, "Invalid input value range. Valid value are 0 or 1."},
     .set = setOverscanFrame},
    {.name = "Set4KRegionPosition", .run = runSet4KRegionPosition},
    {.name = "SetShow4KPositionOverlay", .run = refuseMethod},
    {.name = "SetShowBlueChannel",
     .argument = {toggle, "ShowBlueChannel", "Required argument ShowBlueChannel missing."},
     .range = {0, 1, "Invalid input value. Valid values are 0 or 1."},
     .set = setShowBlueChannel},
    {.name = "SetShowCroppedRegion",
     .argument = {toggle, "ShowCroppedRegion", "Required argument ShowCroppedRegion missing."},
     .range = {0, 1, "Invalid input value range, Valid value are 0 or 1."},
     .set = setShowCroppedRegionForImageAdjustment},
    {.name = "SetUseVideoLevels",
     .argument = {toggle, "UseVideoLevels", "Required argument UseVideoLevels missing."},
     .range = {0, 1, "Invalid input value range, Valid value are 0 or 1."},
     .set = setUseVideoLevels},
    {.name = "SetOverdriveEnabled",
     .argument = {toggle, "OverdriveEnabled", "Required argument OverdriveEnabled missing."},
     .range = {0, 1, "Invalid input value range, Valid value are 0 or 1."},
     .set = setOverdrive},
    {.name = "SetDeinterlacerEnabled",
     .administrator = true,
     .argument = {toggle, "DeinterlacerEnabled", "Required argument DeinterlacerEnabled missing."},
     .range = {0, 1, "Invalid input value range, Valid value are 0 or 1."},
     .set = setDeinterlacer},
    {.name = "SetCadenceDetectionEnabled",
     .administrator = true,
     .argument = {toggle, "CadenceDetectionEnabled", "Required argument CadenceDetectionEnabled missing."},
     .range = {0, 1, "Invalid input value range, Valid value are 0 or 1."},
     .set = setCadence},
    {.name = "Set4KSourceScaling",
     .argument = {integer, "SourceScaling4K", "Required argument SourceScaling4K missing."},
     .precondition = scalingCanBeModified,
     .range = {0, 3, "Invalid input value range. Valid values are between 0 and 3"}, // no full stop
     .set = set4KSourceScaling},
};

STAMP_INSTANCE_AND_METHOD_PROVIDER(ZT_Marovelton_ImageAdjustment,
                                   .key = {.name = "InstanceID", .value = _InstanceID}, .methods = methods)
