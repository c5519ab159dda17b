// The CMPI 2.0 broker: the four function tables that providers are given.
#ifndef HOST_CMPI_BROKER_H
#define HOST_CMPI_BROKER_H

#include "cim/class_table.h"

#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>

namespace host
{

class Dispatcher;

/** The broker of one object manager. The dispatcher comes later, because providers, which the dispatcher
 * needs, are created with the broker; an up-call before that fails. */
class Broker
{
  public:
    explicit Broker(const ClassTable &classes);
    Broker(const Broker &) = delete;
    Broker &operator=(const Broker &) = delete;

    const CMPIBroker &cmpi() const
    {
        return cmpi_;
    }

    void setDispatcher(Dispatcher *dispatcher)
    {
        dispatcher_ = dispatcher;
    }

    Dispatcher *dispatcher() const
    {
        return dispatcher_;
    }

    const ClassTable &classes() const
    {
        return classes_;
    }

    /** The broker behind the CMPI structure; null for a null pointer or handle. */
    static const Broker *behind(const CMPIBroker *broker)
    {
        return broker == nullptr ? nullptr : static_cast<const Broker *>(broker->hdl);
    }

  private:
    CMPIBroker cmpi_;
    const ClassTable &classes_;
    Dispatcher *dispatcher_ = nullptr;
};

extern const CMPIBrokerFT BROKER_TABLE;
extern const CMPIBrokerEncFT BROKER_FACTORY_TABLE;
extern const CMPIBrokerExtFT BROKER_SYSTEM_TABLE;
extern const CMPIBrokerMemFT BROKER_MEMORY_TABLE;

} // namespace host

#endif
