// SPDX-License-Identifier: Apache-2.0
// Queries: the object manager enumerates the class after FROM and its subclasses, and keeps what the
// condition admits.
#include "core/operations.h"

#include "core/projection.h"
#include "core/query.h"

namespace host
{
namespace
{

/** The query of the request, bound to its class; nothing, with the error in the answer, when it is none. */
std::optional<Query> queryOf(const Work &work, const cim::Class *&klass)
{
    const std::optional<QueryLanguage> language = queryLanguage(work.request.queryLanguage);
    if (!language) {
        fail(work.call, work.answer, CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED,
             "The query language %.*s is not supported; WQL and DMTF:CQL are.",
             shown(work.request.queryLanguage), work.request.queryLanguage);
        return std::nullopt;
    }
    std::string problem;
    std::optional<Query> query = Query::parse(work.request.query, *language, problem);
    if (query) {
        klass = classOf(work, query->className());
        if (klass == nullptr) {
            return std::nullopt;
        }
        if (query->bind(*klass, *work.nameSpace.classes, problem)) {
            return query;
        }
    }
    fail(work.call, work.answer, CMPI_RC_ERR_INVALID_QUERY, "%s", problem.c_str());
    return std::nullopt;
}

/** Keeps what the query admits, and of it what the query selects. */
void select(const Work &work, const Query &query)
{
    ArenaList<Instance *> &instances = work.answer.instances;
    std::size_t kept = 0;
    for (Instance *instance : instances) {
        if (query.admits(*instance)) {
            instances[kept++] = instance;
        }
    }
    instances.truncate(kept);
    if (query.selected().empty()) {
        return;
    }
    std::vector<const char *> names;
    for (const std::string &name : query.selected()) {
        names.push_back(name.c_str());
    }
    names.push_back(nullptr);
    Request selection = work.request;
    selection.propertyList = names.data();
    Projection projection(work.arena(), selection, nullptr);
    for (Instance *instance : instances) {
        projection.apply(*instance);
    }
}

} // namespace

void execQuery(const Work &work)
{
    const cim::Class *klass = nullptr;
    const std::optional<Query> query = queryOf(work, klass);
    if (!query) {
        return;
    }
    Request all = work.request;
    all.operation = Operation::EnumerateInstances;
    all.className = klass->name;
    enumerate(work.with(all));
    if (work.answer.ok()) {
        select(work, *query);
    }
}

} // namespace host
