// SPDX-License-Identifier: Apache-2.0
// GetRegisterValue: the stored value of every register.
#include "support/session.h"
#include "support/shown_registers.h"

#include <monitor_support.h>

#include <algorithm>
#include <cstring>

int GetRegisterValue(int registerId, int groupId, char *text)
{
    if (text == nullptr) {
        return FAILURE;
    }
    return desk::withContents("GetRegisterValue", [=](const desk::Contents &contents) -> int {
        const std::optional<desk::ShortText> value =
            desk::registerText(contents.settings, registerId, groupId);
        if (!value) {
            return FAILURE;
        }
        const std::string_view shown = *value;
        const std::size_t length = std::min<std::size_t>(shown.size(), REGISTER_TEXT_SIZE - 1);
        memcpy(text, shown.data(), length);
        text[length] = '\0';
        return SUCCESS;
    });
}
