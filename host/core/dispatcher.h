// SPDX-License-Identifier: Apache-2.0
// From a request to the operation, and back with the answer. Requests of clients and up-calls of providers go
// the same way.
#ifndef HOST_CORE_DISPATCHER_H
#define HOST_CORE_DISPATCHER_H

#include "cim/name_spaces.h"
#include "core/audit.h"
#include "core/provider_call.h"

#include <chrono>
#include <string>

namespace host
{

class ProviderManager;

class Dispatcher
{
  public:
    Dispatcher(const cim::NameSpaces &nameSpaces, const ProviderManager &providers, std::string hostName);

    /** How long a request waits for its turn with the providers. */
    void setPatience(std::chrono::milliseconds patience)
    {
        access_.patience = patience;
    }

    /** How many requests may be with the providers at a time. */
    void setProviderCalls(unsigned calls)
    {
        access_.gate.setCalls(calls);
    }

    /** Where changes and method calls of clients are recorded; null: nowhere. */
    void setAudit(Audit *audit)
    {
        audit_ = audit;
    }

    /** Does what the request asks; the answer says how it went. Objects of the answer live in the arena of
     * the call. */
    void execute(Call &call, const Request &request, Answer &answer);

    const cim::NameSpaces &nameSpaces() const
    {
        return nameSpaces_;
    }

    /** The name of this host, for paths that leave it. */
    const std::string &hostName() const
    {
        return hostName_;
    }

  private:
    bool permits(Call &call, const Request &request, Answer &answer) const;

    const cim::NameSpaces &nameSpaces_;
    const ProviderManager &providers_;
    const std::string hostName_;
    ProviderAccess access_;
    Audit *audit_ = nullptr;
};

} // namespace host

#endif
