// SPDX-License-Identifier: Apache-2.0
#include "frame/method.h"

namespace frame
{

bool runMethod(Call &call, const Method &method)
{
    int value = 0;
    if (method.administrator &&
        !requireAdministrator(call.broker, call.context, call.status, call.errorText)) {
        return false;
    }
    if (method.run) {
        return method.run(call);
    }
    if (method.argument.kind != none && !readArgument(call, method.argument, &value)) {
        return false;
    }
    if (method.precondition && !method.precondition(call)) {
        return false;
    }
    if (!requireRange(call, value, method.range)) {
        return false;
    }
    // A sound row has one of the two.
    // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
    return settled(call, method.set ? method.set(value, call.errorText) : method.act(call.errorText));
}

} // namespace frame
