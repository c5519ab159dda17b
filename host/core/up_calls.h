// SPDX-License-Identifier: Apache-2.0
// What providers ask of the object manager while they work on a request, and the threads that they attach.
#ifndef HOST_CORE_UP_CALLS_H
#define HOST_CORE_UP_CALLS_H

#include "cmpi/broker.h"

namespace host
{

class Dispatcher;

extern const CMPIBrokerFT upCallTable;

/** The broker of one object manager. The dispatcher comes later, because providers, which the dispatcher
 * needs, are created with the broker; an up-call before that fails. */
class DispatchingBroker final : public Broker
{
  public:
    explicit DispatchingBroker(const cim::NameSpaces &nameSpaces) : Broker(nameSpaces, upCallTable) {}

    void setDispatcher(Dispatcher *dispatcher)
    {
        dispatcher_ = dispatcher;
    }

    Dispatcher *dispatcher() const
    {
        return dispatcher_;
    }

  private:
    Dispatcher *dispatcher_ = nullptr;
};

} // namespace host

#endif
