// SPDX-License-Identifier: Apache-2.0
#include "core/provider_call.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace host
{

void fail(Call &call, Answer &answer, CMPIrc code, const char *format, ...)
{
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    answer.code = code;
    answer.message = call.arena->copyText(text);
}

int shown(std::string_view text)
{
    return static_cast<int>(std::min<std::size_t>(text.size(), 200));
}

// ----------------------------------------------------------------------------------------------- collecting

/** CMPI_RC_OK when the operation has a place for that kind and the request has memory for it. */
CMPIrc Collector::refuses(Kind kind) const
{
    if (kind_ != kind) {
        return CMPI_RC_ERR_NOT_SUPPORTED;
    }
    return arena_.exhausted() ? CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED : CMPI_RC_OK;
}

void Collector::complete(Path &path)
{
    if (path.nameSpace == nullptr) {
        path.nameSpace = makeString(arena_, request_.nameSpace);
    }
}

CMPIrc Collector::takeData(const CMPIValue *value, CMPIType type)
{
    if (const CMPIrc problem = refuses(Kind::data); problem != CMPI_RC_OK) {
        return problem;
    }
    const CMPIrc code = takeValue(arena_, value, type, answer_.returnValue);
    answer_.hasReturnValue = code == CMPI_RC_OK;
    return code;
}

CMPIrc Collector::takeInstance(const Instance &instance)
{
    if (const CMPIrc problem = refuses(Kind::instances); problem != CMPI_RC_OK) {
        return problem;
    }
    // A copy, because the provider may go on to change the instance and return it again.
    Instance *copy = copyObject(arena_, instance);
    completeKeys(*copy);
    complete(*copy->path);
    answer_.instances.append(copy);
    return CMPI_RC_OK;
}

CMPIrc Collector::takePath(const Path &path)
{
    if (const CMPIrc problem = refuses(Kind::paths); problem != CMPI_RC_OK) {
        return problem;
    }
    Path *copy = copyObject(arena_, path);
    complete(*copy);
    answer_.paths.append(copy);
    return CMPI_RC_OK;
}

void Collector::takeError(const Error &error)
{
    error_ = copyObject(arena_, error);
}

void Collector::done()
{
    // The return of the provider says the same.
}

// ---------------------------------------------------------------------------------------------- the call

bool ProviderCall::begin()
{
    if (call_.depth >= ProviderAccess::maxDepth) {
        fail(call_, answer_, CMPI_RC_ERR_FAILED,
             "Up-calls of providers are nested more than %u deep; this is probably a loop.",
             ProviderAccess::maxDepth);
        return false;
    }
    const std::chrono::milliseconds patience =
        request_.patience ? std::min(*request_.patience, access_.patience) : access_.patience;
    if (!access_.gate.enter(call_.request, request_.principal, patience)) {
        answer_.timedOut = true;
        fail(call_, answer_, CMPI_RC_ERR_FAILED,
             "Another request has been keeping the providers busy for too long.");
        return false;
    }
    return true;
}

const Context *ProviderCall::makeContextOf(unsigned depth)
{
    Arena &arena = *call_.arena;
    Context *context = makeContext(arena);
    context->request = call_.request;
    context->depth = depth;
    const auto add = [&](const char *name, const CMPIData &data) {
        context->entries->append({makeString(arena, name), data});
    };
    add(CMPIInitNameSpace, stringData(makeString(arena, request_.nameSpace)));
    add(CMPIPrincipal, stringData(makeString(arena, request_.principal)));
    CMPIData flags = {};
    flags.type = CMPI_uint32;
    flags.value.uint32 = (request_.localOnly ? CMPI_FLAG_LocalOnly : 0u) |
                         (request_.deepInheritance ? CMPI_FLAG_DeepInheritance : 0u) |
                         (request_.includeQualifiers ? CMPI_FLAG_IncludeQualifiers : 0u) |
                         (request_.includeClassOrigin ? CMPI_FLAG_IncludeClassOrigin : 0u);
    add(CMPIInvocationFlags, flags);
    return context;
}

bool ProviderCall::conclude(const CMPIStatus &status)
{
    const Error *error = collector_.error();
    if (status.rc == CMPI_RC_OK && error == nullptr) {
        return true;
    }
    const String *message = behind<String>(status.msg);
    answer_.code = status.rc;
    if (error != nullptr && status.rc == CMPI_RC_OK) {
        answer_.code = error->statusCode != CMPI_RC_OK ? error->statusCode : CMPI_RC_ERR_FAILED;
        message = error->message;
    }
    // The text may be a clone's, which the arena does not own.
    answer_.message = message != nullptr ? copyObject(*call_.arena, *message)->text : nullptr;
    return false;
}

} // namespace host
