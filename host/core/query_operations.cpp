// SPDX-License-Identifier: Apache-2.0
// Queries.
#include "core/operations.h"

namespace host
{
namespace
{

/** The word after FROM; DSP0200 tells the class of a query nowhere else. */
std::string_view classOfQuery(std::string_view query)
{
    constexpr std::string_view BLANKS = " \t\r\n";
    bool afterFrom = false;
    while (true) {
        const std::size_t first = query.find_first_not_of(BLANKS);
        if (first == std::string_view::npos) {
            return {};
        }
        query.remove_prefix(first);
        const std::size_t end = std::min(query.find_first_of(BLANKS), query.size());
        const std::string_view word = query.substr(0, end);
        if (afterFrom) {
            return word;
        }
        afterFrom = cim::sameName(word, "from");
        query.remove_prefix(end);
    }
}

} // namespace

void execQuery(const Work &work)
{
    const std::string_view className = classOfQuery(work.request.query);
    if (className.empty()) {
        fail(work.call, work.answer, CMPI_RC_ERR_INVALID_QUERY, "The query names no class after FROM.");
        return;
    }
    const cim::Class *klass = classOf(work, className);
    const Provider *provider = klass != nullptr ? work.providers.instanceProvider(*klass) : nullptr;
    if (provider == nullptr) {
        return;
    }
    Path *path = makePath(work.arena(), work.nameSpaces, work.request.nameSpace, klass->name);
    work.callProvider(Collector::Kind::Instances, [&](const CMPIContext *context, const CMPIResult *result) {
        return provider->instanceTable.execQuery(provider->instance, context, result, &path->cmpi,
                                                 work.request.query, work.request.queryLanguage);
    });
}

} // namespace host
