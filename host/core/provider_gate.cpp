// SPDX-License-Identifier: Apache-2.0
#include "core/provider_gate.h"

namespace host
{

bool ProviderGate::enter(std::uint64_t request, std::chrono::milliseconds patience)
{
    std::unique_lock lock(mutex_);
    if (holder_ != request && holder_ != 0 &&
        !free_.wait_for(lock, patience, [this] { return holder_ == 0; })) {
        return false;
    }
    holder_ = request;
    ++entries_;
    return true;
}

void ProviderGate::leave()
{
    {
        const std::lock_guard lock(mutex_);
        if (--entries_ != 0) {
            return;
        }
        holder_ = 0;
    }
    free_.notify_one();
}

} // namespace host
