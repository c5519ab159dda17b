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
    const std::vector<std::string> &names = query.selected();
    work.answer.selected = work.arena().makeArray<const char *>(names.size() + 1);
    for (std::size_t i = 0; i < names.size(); ++i) {
        work.answer.selected[i] = work.arena().copyText(names[i]);
    }
    Request selection = work.request;
    selection.propertyList = work.answer.selected;
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
    all.operation = Operation::enumerateInstances;
    all.className = klass->name;
    enumerate(work.with(all));
    if (work.answer.ok()) {
        work.answer.classes.append(klass);
        select(work, *query);
    }
}

void runFiltered(const Work &work, void (*operation)(const Work &))
{
    const char *language = work.request.queryLanguage != nullptr ? work.request.queryLanguage : "";
    if (!cim::sameName(language, "DMTF:FQL")) {
        fail(work.call, work.answer, CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED,
             "The filter language %.*s is not supported; DMTF:FQL is.", shown(language), language);
        return;
    }
    // A filter is the condition of a query.
    std::string problem;
    std::optional<Query> filter = Query::parse(std::string("SELECT * FROM Any WHERE ") + work.request.query,
                                               QueryLanguage::cql, problem);
    if (!filter) {
        fail(work.call, work.answer, CMPI_RC_ERR_INVALID_QUERY, "%s", problem.c_str());
        return;
    }
    Request whole = work.request; // the filter may look at what the client does not want to see
    whole.propertyList = nullptr;
    whole.localOnly = false;
    whole.deepInheritance = true;
    whole.query = nullptr;
    operation(work.with(whole));
    if (!work.answer.ok()) {
        return;
    }
    ArenaList<Instance *> &instances = work.answer.instances;
    const cim::Class *bound = nullptr;
    std::size_t kept = 0;
    for (Instance *instance : instances) {
        if (instance->klass != bound && !filter->bind(*instance->klass, *work.nameSpace.classes, problem)) {
            fail(work.call, work.answer, CMPI_RC_ERR_INVALID_QUERY, "%s", problem.c_str());
            return;
        }
        bound = instance->klass;
        if (filter->admits(*instance)) {
            instances[kept++] = instance;
        }
    }
    instances.truncate(kept);
    show(work, work.request.deepInheritance ? nullptr : work.nameSpace.classes->find(work.request.className));
}

} // namespace host
