// SPDX-License-Identifier: Apache-2.0
// The states of the monitor that are tried. Their words tell what is tried, never what comes of it.

#include "probe_methods.h"

namespace reference
{

namespace
{

std::string call(int registerId, int group)
{
    return "GetRegisterValue(" + std::to_string(registerId) + ", " + std::to_string(group) + ")";
}

StateOption registerIs(const std::string &when, int registerId, int group, const std::string &value)
{
    return {when, [=] { seam.registers[{registerId, group}] = value; }};
}

StateOption sourceIs(const std::string &when, int width, int height, int dciRegion)
{
    return {when, [=] {
                seam.imageAdjustment.HorizontalResolution = width;
                seam.imageAdjustment.VerticalResolution = height;
                seam.imageAdjustment.CurrentDCIOptions = dciRegion;
            }};
}

StateOption insetIs(const std::string &when, const std::string &width, const std::string &height)
{
    return {when, [=] {
                seam.registers[{PIP_HORIZONTAL_ACTIVE, PIP_INFO_ID}] = width;
                seam.registers[{PIP_VERTICAL_ACTIVE, PIP_INFO_ID}] = height;
            }};
}

StateGroup sources()
{
    StateGroup group = {"GetImageAdjustmentInfo()", {}};
    for (const int width : {3840, 4096, 4095}) {
        for (int region = 0; region <= 3; ++region) {
            const std::string words = "source of " + std::to_string(width) + " x 2160 with DCI region " +
                                      (region == 3 ? "unknown" : std::to_string(region));
            group.options.push_back(sourceIs(words, width, 2160, region));
        }
    }
    for (const int width : {1920, 4096}) {
        group.options.push_back(sourceIs("source of " + std::to_string(width) + " x 1080", width, 1080, 0));
    }
    return group;
}

} // namespace

const std::vector<StateGroup> &stateGroups()
{
    static const std::vector<StateGroup> groups = {
        {call(PIP_STATE, PIP_INFO_ID),
         {registerIs("the second picture is an inset (mode 1)", PIP_STATE, PIP_INFO_ID, "1"),
          registerIs("the second picture is off (mode 0)", PIP_STATE, PIP_INFO_ID, "0"),
          registerIs("the second picture is beside the main one (mode 2)", PIP_STATE, PIP_INFO_ID, "2")}},
        {call(PIP_SIZE, PIP_INFO_ID),
         {registerIs("second picture of maximum size", PIP_SIZE, PIP_INFO_ID, "0"),
          registerIs("second picture of minimum size", PIP_SIZE, PIP_INFO_ID, "1"),
          registerIs("second picture of default size", PIP_SIZE, PIP_INFO_ID, "2"),
          registerIs("second picture of unknown size (3)", PIP_SIZE, PIP_INFO_ID, "3")}},
        {call(PIP_HORIZONTAL_ACTIVE, PIP_INFO_ID),
         {insetIs("second picture's source of 4096 x 2160", "4096", "2160"),
          insetIs("second picture's source of 4095 x 2160", "4095", "2160"),
          insetIs("second picture's source of 2048 x 1080", "2048", "1080"),
          insetIs("second picture's source of 3840 x 2160", "3840", "2160"),
          insetIs("second picture's source of 1920 x 1080", "1920", "1080")}},
        {call(ACTIVE_COLORSPACE, COLOR_SPACE_ID),
         {registerIs("the preset is in use", ACTIVE_COLORSPACE, COLOR_SPACE_ID, "1"),
          registerIs("another preset is in use", ACTIVE_COLORSPACE, COLOR_SPACE_ID, "2")}},
        {call(RESET_LAST_CALIBRATION, COLOR_SPACE_ID),
         {registerIs("the engine offers the reset", RESET_LAST_CALIBRATION, COLOR_SPACE_ID, "1"),
          registerIs("the engine does not offer the reset (`RESET_LAST_CALIBRATION` is 0)",
                     RESET_LAST_CALIBRATION, COLOR_SPACE_ID, "0")}},
        {call(RESET_FACTORY_CALIBRATION, COLOR_SPACE_ID),
         {registerIs("the engine offers the reset", RESET_FACTORY_CALIBRATION, COLOR_SPACE_ID, "1"),
          registerIs("the engine does not offer the reset (`RESET_FACTORY_CALIBRATION` is 0)",
                     RESET_FACTORY_CALIBRATION, COLOR_SPACE_ID, "0")}},
        {"GetImageAdjustmentInfo()",
         {{"the aspect ratio is pixel for pixel (4)", [] { seam.imageAdjustment.DisplayAspectRatio = 4; }},
          {"the aspect ratio is not pixel for pixel", [] { seam.imageAdjustment.DisplayAspectRatio = 0; }}}},
        sources(),
        {"GetRemoteManagementServerInfo()",
         {{"remote management is enabled", [] { seam.remote.RemoteManagementEnabled = 1; }},
          {"remote management is disabled", [] { seam.remote.RemoteManagementEnabled = 0; }}}},
        {"GetRemoteManagementServerInfo()",
         {{"WS-Management is enabled", [] { seam.remote.WSManagementStatus = 1; }},
          {"WS-Management is disabled", [] { seam.remote.WSManagementStatus = 0; }}}},
    };
    return groups;
}

} // namespace reference
