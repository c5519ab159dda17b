// SPDX-License-Identifier: Apache-2.0
#include "cmpi/call.h"

#include <atomic>
#include <utility>

namespace host
{
namespace
{

thread_local Call *current = nullptr;

} // namespace

Call *currentCall()
{
    return current;
}

CallScope::CallScope(Call &call) : previous_(std::exchange(current, &call)) {}

CallScope::~CallScope()
{
    current = previous_;
}

Call *exchangeCurrentCall(Call *call)
{
    return std::exchange(current, call);
}

std::uint64_t nextRequestNumber()
{
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
}

} // namespace host
