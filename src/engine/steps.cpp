// SPDX-License-Identifier: Apache-2.0
#include "engine/steps.h"
#include "engine/text.h"
#include "monitor_support.h"

namespace engine
{

constexpr struct {
    RegisterId id;
    int width;
    const char *text;
} steps[] = {
    {BEZEL_BUTTON_BRIGHTNESS, 2,
     "Invalid Button Brightness Value. Valid values are between 0,2,4,6,8,10,12,14 upto 20."},
    // Hundredths of a percent. compat: the list leaves out 75, which is accepted.
    {OPACITY_VALUE, 625,
     "Invalid Opacity Value. valid opacity values are 25, 31.25, 37.50, 43.75, 50, 56.25, 62.50, 68.75, 81.25, 87.50, 93.75, 100"},
};

int checkStep(int registerId, int value, char *errorText)
{
    for (const auto &each : steps) {
        if (each.id == registerId && value % each.width != 0) {
            copyText(errorText, ERROR_TEXT_SIZE, each.text);
            return -1;
        }
    }
    return 0;
}

} // namespace engine
