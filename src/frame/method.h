// SPDX-License-Identifier: Apache-2.0
// The methods of a class as rows.
#ifndef FRAME_METHOD_H
#define FRAME_METHOD_H

#include "frame/call.h"
#include <span>
#include <string_view>

namespace frame
{

/** A setting function, and one that is told no value: 0, or -1 with what failed in `errorText`. */
using Setting = int(int value, char *errorText);
using Action = int(char *errorText);

/** A method as a row. Its steps, in this order: administrator check; `run`, if given, does the rest; else the
 * argument is read and converted, the precondition tested, the range checked, `set` or `act` called. */
struct Method {
    const char *name;
    bool administrator = false;
    Argument argument = {};
    bool (*precondition)(Call &) = nullptr;
    Range range = {};
    Setting *set = nullptr;
    Action *act = nullptr;
    bool (*run)(Call &) = nullptr;
};

/** Rows that a table of methods may hold: each name once, every text there, ranges ordered, one thing to do,
 * and no step that would never be reached. */
constexpr bool methodsAreSound(std::span<const Method> methods)
{
    const auto empty = [](const char *text) { return !text || *text == '\0'; };
    for (size_t i = 0; i < methods.size(); ++i) {
        const Method &method = methods[i];
        const bool argument = method.argument.kind != none;
        if (empty(method.name) ||
            (method.set != nullptr) + (method.act != nullptr) + (method.run != nullptr) != 1) {
            return false;
        }
        if (argument != (method.set != nullptr) || argument != !empty(method.argument.name) ||
            argument != !empty(method.argument.missing) || empty(method.argument.invalid)) {
            return false;
        }
        if ((method.range.text && !method.set) || (method.precondition && method.run)) {
            return false;
        }
        if (method.range.min > method.range.max || (method.range.text && empty(method.range.text)) ||
            method.range.min < INT16_MIN || method.range.max > INT16_MAX) { // a register takes 16 bits
            return false;
        }
        for (size_t other = 0; other < i; ++other) {
            if (std::string_view(method.name) == methods[other].name) {
                return false;
            }
        }
    }
    return true;
}

/** Takes a call through the steps of its row. */
[[nodiscard]] bool runMethod(Call &call, const Method &method);

} // namespace frame

#endif
