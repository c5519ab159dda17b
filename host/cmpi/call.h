// SPDX-License-Identifier: Apache-2.0
// The call that the current thread is working on. The broker functions that make objects are given no more
// than the broker; what they make belongs to the call of the thread that asks.
#ifndef HOST_CMPI_CALL_H
#define HOST_CMPI_CALL_H

#include "cmpi/arena.h"

#include <cstdint>

namespace host
{

/** One request on its way through providers and back. */
struct Call {
    Arena *arena;
    std::uint64_t request;    // the same for a request and all up-calls that it leads to
    unsigned depth = 0;       // provider calls that enclose the point of execution
    bool outOfMemory = false; // a function of the tables has found none
};

/** The call of this thread, or null outside of any. */
Call *currentCall();

/** Makes a call the thread's current one for as long as the scope lives. */
class CallScope
{
  public:
    explicit CallScope(Call &call);
    ~CallScope();
    CallScope(const CallScope &) = delete;
    CallScope &operator=(const CallScope &) = delete;

  private:
    Call *previous_;
};

/** Replaces the thread's current call and returns the one before; for threads that a provider attaches. */
Call *exchangeCurrentCall(Call *call);

/** A number that no other request of this process has. */
std::uint64_t nextRequestNumber();

} // namespace host

#endif
