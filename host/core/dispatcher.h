// From a request to the providers it concerns, and back with the answer. Requests of clients and up-calls of
// providers go the same way.
#ifndef HOST_CORE_DISPATCHER_H
#define HOST_CORE_DISPATCHER_H

#include "cmpi/call.h"
#include "core/model.h"
#include "core/provider_manager.h"

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
    bool enter(std::uint64_t request, std::chrono::milliseconds patience);
    void leave();

  private:
    std::mutex mutex_;
    std::condition_variable free_;
    std::uint64_t holder_ = 0; // the request inside, 0: none
    unsigned entries_ = 0;
};

class Dispatcher
{
  public:
    /** Provider calls that may enclose one another: a provider that makes an up-call to itself is found out.
     */
    static constexpr unsigned MAX_DEPTH = 16;

    Dispatcher(const ClassTable &classes, const ProviderManager &providers, std::string hostName);

    /** How long a request waits for the one before it to leave the providers. */
    void setPatience(std::chrono::milliseconds patience)
    {
        patience_ = patience;
    }

    /** Does what the request asks; the answer says how it went. Objects of the answer live in the arena of
     * the call. */
    void execute(Call &call, const Request &request, Answer &answer);

    const ClassTable &classes() const
    {
        return classes_;
    }

    /** The name of this host, for paths that leave it. */
    const std::string &hostName() const
    {
        return hostName_;
    }

  private:
    friend class ProviderCall;

    void dispatch(Call &call, const Request &request, Answer &answer);
    const ClassInfo *classOf(const Request &request, std::string_view name, Answer &answer);
    const ClassInfo *classOfPath(const Request &request, Answer &answer);
    const Provider *instanceProvider(Call &call, const ClassInfo &info, Answer &answer);
    bool isServedBelow(const ClassInfo &info) const;

    void enumerate(Call &call, const Request &request, Answer &answer);
    void getInstance(Call &call, const Request &request, Answer &answer);
    void createInstance(Call &call, const Request &request, Answer &answer);
    void modifyInstance(Call &call, const Request &request, Answer &answer);
    void deleteInstance(Call &call, const Request &request, Answer &answer);
    void getProperty(Call &call, const Request &request, Answer &answer);
    void setProperty(Call &call, const Request &request, Answer &answer);
    void execQuery(Call &call, const Request &request, Answer &answer);
    void traverse(Call &call, const Request &request, Answer &answer);
    void invokeMethod(Call &call, const Request &request, Answer &answer);
    void readClasses(Call &call, const Request &request, Answer &answer);
    void readQualifiers(const Request &request, Answer &answer);

    const ClassTable &classes_;
    const ProviderManager &providers_;
    const std::string hostName_;
    ProviderGate gate_;
    std::chrono::milliseconds patience_ = std::chrono::seconds(60);
};

} // namespace host

#endif
