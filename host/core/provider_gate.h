// SPDX-License-Identifier: Apache-2.0
// Lets requests into the providers.
#ifndef HOST_CORE_PROVIDER_GATE_H
#define HOST_CORE_PROVIDER_GATE_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace host
{

/** Lets one request at a time into the providers. The up-calls of that request, which come from within, pass.
 */
class ProviderGate
{
  public:
    /** Waits for the turn of the request; false when it has not come in time. */
    [[nodiscard]] bool enter(std::uint64_t request, std::chrono::milliseconds patience);
    void leave();

  private:
    std::mutex mutex_;
    std::condition_variable free_;
    std::uint64_t holder_ = 0; // the request inside, 0: none
    unsigned entries_ = 0;
};

} // namespace host

#endif
