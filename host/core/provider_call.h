// SPDX-License-Identifier: Apache-2.0
// One call of one provider.
#ifndef HOST_CORE_PROVIDER_CALL_H
#define HOST_CORE_PROVIDER_CALL_H

#include "cmpi/call.h"
#include "core/model.h"
#include "core/provider_gate.h"

#include <new>

namespace host
{

/** Takes over what a provider returns, as far as the operation has a place for it. */
class Collector final : public ResultSink
{
  public:
    enum class Kind { nothing, data, instances, paths };

    Collector(Arena &arena, const Request &request, Kind kind, Answer &answer)
        : arena_(arena), request_(request), kind_(kind), answer_(answer)
    {
    }

    CMPIrc takeData(const CMPIValue *value, CMPIType type) override;
    CMPIrc takeInstance(const Instance &instance) override;
    CMPIrc takePath(const Path &path) override;
    void takeError(const Error &error) override;
    void done() override;

    const Error *error() const
    {
        return error_;
    }

  private:
    CMPIrc refuses(Kind kind) const;
    void complete(Path &path);

    Arena &arena_;
    const Request &request_;
    Kind kind_;
    Answer &answer_;
    const Error *error_ = nullptr;
};

/** How requests get at the providers. */
struct ProviderAccess {
    /** Provider calls that may enclose one another: a provider that makes an up-call to itself is found out.
     */
    static constexpr unsigned maxDepth = 16;

    ProviderGate gate;
    /** How long a request waits for its turn. */
    std::chrono::milliseconds patience = std::chrono::seconds(60);
};

/** Enters, makes the context and the result, and turns what comes back into the answer. */
class ProviderCall
{
  public:
    ProviderCall(ProviderAccess &access, Call &call, const Request &request, Collector::Kind kind,
                 Answer &answer)
        : access_(access), call_(call), request_(request), answer_(answer),
          collector_(*call.arena, request, kind, answer)
    {
    }

    /** function: does the call, given the context and the result. True when it succeeded. */
    template <typename Function>
    bool run(Function function)
    {
        Call inner = call_;
        ++inner.depth;
        const Context *context = makeContextOf(inner.depth);
        const Result *result = makeResult(*call_.arena, collector_);
        if (!begin()) {
            return false;
        }
        CMPIStatus status = {};
        {
            const CallScope scope(inner);
            const Leave leave{access_.gate, call_.request};
            status = function(&context->cmpi, &result->cmpi);
        }
        if (inner.outOfMemory) { // whatever the provider has made of it
            throw std::bad_alloc();
        }
        return conclude(status);
    }

  private:
    /** Leaves the gate at the end of the call, even when that ends with an exception. */
    struct Leave {
        ProviderGate &gate;
        std::uint64_t request;

        ~Leave()
        {
            gate.leave(request);
        }
    };

    [[nodiscard]] bool begin();
    const Context *makeContextOf(unsigned depth);
    [[nodiscard]] bool conclude(const CMPIStatus &status);

    ProviderAccess &access_;
    Call &call_;
    const Request &request_;
    Answer &answer_;
    Collector collector_;
};

/** Makes the answer an error with a text of its own, formatted in the way of printf. */
void fail(Call &call, Answer &answer, CMPIrc code, const char *format, ...)
    __attribute__((format(printf, 4, 5)));

/** For %.*s: names in messages are cut when they are long. */
int shown(std::string_view text);

} // namespace host

#endif
