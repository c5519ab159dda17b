// SPDX-License-Identifier: Apache-2.0
// The readers: each fills one record of the seam from the store.
#include "support/session.h"

#include <monitor_support.h>

#include <algorithm>
#include <cstring>

using namespace desk;

namespace
{

/** Copies a text into a field of the record: zero-filled, and without a terminating zero when the text is as
 * long as the field, as on the monitor. */
template <std::size_t size>
void copyField(char (&field)[size], std::string_view text)
{
    memset(field, 0, size);
    memcpy(field, text.data(), std::min(size, text.size()));
}

/** Fills a record when it is there at all. */
template <class Record, class Fill>
int fillRecord(const char *function, Record *record, Fill fill) noexcept
{
    if (record == nullptr) {
        return FAILURE;
    }
    return withContents(function, [&](const Contents &contents) {
        *record = Record{};
        fill(contents.settings);
        return SUCCESS;
    });
}

} // namespace

int GetMoinitorInfo(MonitorInfo *info)
{
    return fillRecord("GetMoinitorInfo", info, [=](const Settings &s) {
        copyField(info->DisplayMode, s.text("display_mode"));
        info->ActiveColorSpace = s.activePreset();
        info->ActiveVideoInput = s.number("video_input");
        info->VideoPipelineDelay = s.number("video_pipeline_delay");
        info->LastCalibration = s.number("last_calibration");
        info->BacklightHours = s.number("backlight_hours");
        info->Deployment_Date = s.number("deployment_date");
        copyField(info->SerialNumber, s.text("serial_number"));
        copyField(info->DisplayName, s.text("display_name"));
        copyField(info->DeploymentLocation, s.text("deployment_location"));
        info->AutoSwitchSource = s.number("auto_switch_source");
        info->SoftPowerState = s.number("soft_power_state");
        info->RecalibrationAlarmDuration = s.number("recalibration_alarm");
        copyField(info->PexalVersion, s.text("pexal_version"));
    });
}

int GetMonitorStatus(int selector)
{
    if (selector != SPEAR_STATE && selector != FWU_STATUS) {
        return FAILURE;
    }
    try {
        Session session;
        return selector == SPEAR_STATE && session.read().fault("busy") ? BUSY : FREE;
    } catch (const std::exception &error) {
        report("GetMonitorStatus", error.what());
        return FAILURE;
    }
}

int GetDisplayManagementInfo(ManagementInfo *info)
{
    return fillRecord("GetDisplayManagementInfo", info, [=](const Settings &s) {
        info->PowerSaverEnabled = s.number("power_saver");
        info->PowerOnRecallEnabled = s.number("power_on_recall");
        info->DDCCICommunicationEnabled = s.number("ddc_ci_communication");
        info->EDIDUpdateEnabled = s.number("auto_edid_update");
        info->HotPlugInitiateEnabled = s.number("hot_plug_initiate");
        info->ManageInternalProcessor = s.number("manage_internal_processor");
        info->FWUpdateEnabled = s.number("firmware_update_enabled");
        info->CalibrationSupportEnabled = s.number("calibration_support");
        info->DisplayPortHotPlugDetection = s.number("display_port_hot_plug_detection");
        info->DisplayPortComapatibility = s.number("display_port_compatibility");
    });
}

int GetImageAdjustmentInfo(ImageAdjustment *info)
{
    return fillRecord("GetImageAdjustmentInfo", info, [=](const Settings &s) {
        info->DisplayAspectRatio = s.number("display_aspect_ratio");
        info->CurrentDCIOptions = s.number("dci_image_region");
        info->CurrentDCIOptions4K = s.number("source_scaling_4k");
        info->ShowCroppedRegion = s.number("show_cropped_region");
        info->CroppedRegionOpacity = s.number("cropped_region_opacity");
        info->UseVideoLevels = s.number("use_video_levels");
        info->Overscan = s.number("overscan");
        info->ShowBlueChannel = s.number("show_blue_channel");
        info->Overdrive = s.number("overdrive");
        info->Deinterlacer = s.number("deinterlacer");
        info->Cadence = s.number("cadence_detection");
        info->DisplayMode4K = s.number("scroll_4k_state");
        info->Displayed4KCorner = s.number("displayed_4k_corner");
        info->Region4KPositionX = s.number("scroll_4k_position_x");
        info->Region4KPositionY = s.number("scroll_4k_position_y");
        info->Show4KPositionOverlay = s.number("show_4k_position_overlay");
        info->SourceScaling4K = s.number("source_scaling_4k");
        info->HorizontalResolution = s.number(inputWidth(s.number("video_input")));
        info->VerticalResolution = s.number(inputHeight(s.number("video_input")));
    });
}

int GetPIPSettingsInfo(PexalPIPSettings *info)
{
    return fillRecord("GetPIPSettingsInfo", info, [=](const Settings &s) {
        info->PipMode = s.number("pip_mode");
        info->PipPosition = s.number("pip_position");
        info->PipPositionX = s.number("pip_position_x");
        info->PipPositionY = s.number("pip_position_y");
        info->PipSize = s.number("pip_size");
        info->PipInputSource = s.number("pip_source");
        info->VideoLevel = s.number("pip_video_levels");
        info->OverScan = s.number("pip_overscan");
        info->ImageRegion = s.number("pip_dci_image_region");
        info->ShowCroppedRegion = s.number("pip_show_cropped_region");
        info->DP1State = s.number("input1.active");
        info->DP2State = s.number("input2.active");
        info->HDMIState = s.number("input3.active");
    });
}

int GetOSDMenuAndMessagesInfo(OSDMenuAndMessageInfo *info)
{
    return fillRecord("GetOSDMenuAndMessagesInfo", info, [=](const Settings &s) {
        info->PowerStatus = s.number("show_power_on_info");
        info->InputSourceStatus = s.number("show_source_info");
        info->MenuColorspaces = s.number("show_color_space_info");
        info->MenuWarmupTime = s.number("warm_up_reminder");
        info->MenuCalibration = s.number("calibration_notification");
        info->OSDPositionX = s.number("osd_position_x");
        info->OSDPositionY = s.number("osd_position_y");
        info->MenuMessageTimeOut = s.number("menu_timeout");
        info->Opacity = s.number("menu_opacity");
        info->DisplayRotation = s.number("display_rotation");
        info->Language = s.number("menu_language");
    });
}

int GetColorSpaceInfoById(ColorSpaceInfo *info, int index)
{
    if (index < 0 || index >= presetCount) {
        return FAILURE;
    }
    return fillRecord("GetColorSpaceInfoById", info, [=](const Settings &s) {
        const auto text = [&](Field field) { return s.text(presetKey(index, field)); };
        info->ActiveColorSpace = index;
        info->DisplayLuminance = s.number(presetKey(index, "luminance"));
        copyField(info->ColorSpaceName, text("name"));
        copyField(info->RedPrimaryU, text("red_u"));
        copyField(info->GreenPrimaryU, text("green_u"));
        copyField(info->BluePrimaryU, text("blue_u"));
        copyField(info->WhitePointU, text("white_u"));
        copyField(info->RedPrimaryV, text("red_v"));
        copyField(info->GreenPrimaryV, text("green_v"));
        copyField(info->BluePrimaryV, text("blue_v"));
        copyField(info->WhitePointV, text("white_v"));
        copyField(info->RedPrimaryX, text("red_x"));
        copyField(info->GreenPrimaryX, text("green_x"));
        copyField(info->BluePrimaryX, text("blue_x"));
        copyField(info->WhitePointX, text("white_x"));
        copyField(info->RedPrimaryY, text("red_y"));
        copyField(info->GreenPrimaryY, text("green_y"));
        copyField(info->BluePrimaryY, text("blue_y"));
        copyField(info->WhitePointY, text("white_y"));
        copyField(info->Gamma, text("gamma"));
    });
}

int GetBezelButtonInfo(BezelButtonInfo *info)
{
    return fillRecord("GetBezelButtonInfo", info, [=](const Settings &s) {
        info->ButtonColor = s.number("bezel_button_color");
        info->ButtonBrightness = s.number("bezel_button_brightness");
        info->ButtonAutoFade = s.number("bezel_button_auto_fade");
    });
}

int GetFunctionButtonInfoById(FunctionButtonInfo *info, int index)
{
    static constexpr Key settings[functionButtonCount] = {
        "function_button1.setting", "function_button2.setting", "function_button3.setting",
        "function_button4.setting"};
    static constexpr Key names[functionButtonCount] = {"function_button1.name", "function_button2.name",
                                                       "function_button3.name", "function_button4.name"};
    if (index < 0 || index >= functionButtonCount) {
        return FAILURE;
    }
    return fillRecord("GetFunctionButtonInfoById", info, [=](const Settings &s) {
        info->ButtonMode = s.number("function_button_mode");
        info->Setting = s.number(settings[index]);
        copyField(info->Name, s.text(names[index]));
    });
}

int GetTestPatternInfo(TestPatternInfo *info)
{
    return fillRecord("GetTestPatternInfo", info, [=](const Settings &s) {
        info->TestPatternGenerator = s.number("test_pattern");
        info->Enabled = s.number("test_pattern_enabled");
        copyField(info->RValue, s.text("test_pattern_red"));
        copyField(info->GValue, s.text("test_pattern_green"));
        copyField(info->BValue, s.text("test_pattern_blue"));
        info->Status = s.number("test_pattern_enabled");
    });
}

int GetRemoteManagementServerInfo(RemoteManagementServer *info)
{
    return fillRecord("GetRemoteManagementServerInfo", info, [=](const Settings &s) {
        info->RemoteManagementEnabled = s.number("remote_management");
        info->IPConfigurationMode = s.number("ip_configuration_mode");
        copyField(info->IPv4Address, s.text("ipv4_address"));
        copyField(info->IPv4Subnet, s.text("ipv4_subnet"));
        copyField(info->IPv4Gateway, s.text("ipv4_gateway"));
        copyField(info->MACAddress, s.text("mac_address"));
        info->WSManagementStatus = s.number("ws_management");
        info->WSIdentifySupport = s.number("ws_identify");
    });
}

int GetIPAddress(char *address)
{
    if (address == nullptr) {
        return FAILURE;
    }
    /** Callers do not examine the result: they must find an empty text after a failure. */
    *address = '\0';
    return withContents("GetIPAddress", [=](const Contents &contents) {
        const std::string_view text = contents.settings.text("ipv4_address"); // at most 15 bytes
        memcpy(address, text.data(), text.size());
        address[text.size()] = '\0';
        return SUCCESS;
    });
}
