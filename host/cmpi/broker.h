// SPDX-License-Identifier: Apache-2.0
// The CMPI 2.0 broker: the four function tables that providers are given. The first, with the up-calls, is
// whoever's who answers them.
#ifndef HOST_CMPI_BROKER_H
#define HOST_CMPI_BROKER_H

#include "cim/name_spaces.h"

#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>

namespace host
{

extern const CMPIBrokerEncFT brokerFactoryTable;
extern const CMPIBrokerExtFT brokerSystemTable;
extern const CMPIBrokerMemFT brokerMemoryTable;

class Broker
{
  public:
    Broker(const cim::NameSpaces &nameSpaces, const CMPIBrokerFT &upCalls)
        : cmpi_{this, &upCalls, &brokerFactoryTable, &brokerSystemTable, &brokerMemoryTable},
          nameSpaces_(nameSpaces)
    {
    }

    Broker(const Broker &) = delete;
    Broker &operator=(const Broker &) = delete;

    const CMPIBroker &cmpi() const
    {
        return cmpi_;
    }

    const cim::NameSpaces &nameSpaces() const
    {
        return nameSpaces_;
    }

    /** The broker behind the CMPI structure; null for a null pointer or handle. */
    static const Broker *behind(const CMPIBroker *broker)
    {
        return broker == nullptr ? nullptr : static_cast<const Broker *>(broker->hdl);
    }

  private:
    CMPIBroker cmpi_;
    const cim::NameSpaces &nameSpaces_;
};

} // namespace host

#endif
