// SPDX-License-Identifier: Apache-2.0
// Following associations.
#include "core/operations.h"

#include "core/projection.h"

namespace host
{
namespace
{

/** True when one of the association's references may point at an object of the class. */
bool canReference(const Work &work, const cim::Class &association, const cim::Class &source)
{
    for (const cim::Property &property : association.properties) {
        if (property.type != cim::Type::reference) {
            continue;
        }
        const cim::Class *end = work.nameSpace.classes->find(property.referenceClass);
        if (end != nullptr && source.isA(*end)) {
            return true;
        }
    }
    return false;
}

CMPIStatus callAssociation(const Provider &provider, const CMPIContext *context, const CMPIResult *result,
                           const Path &source, const Request &request)
{
    const CMPIAssociationMIFT &table = provider.associationTable;
    CMPIAssociationMI *mi = provider.association;
    const TraversalFilter &filter = request.filter;
    switch (request.operation) {
    case Operation::associators:
        return table.associators(mi, context, result, &source.cmpi, filter.associationClass,
                                 filter.resultClass, filter.role, filter.resultRole, request.propertyList);
    case Operation::associatorNames:
        return table.associatorNames(mi, context, result, &source.cmpi, filter.associationClass,
                                     filter.resultClass, filter.role, filter.resultRole);
    case Operation::references:
        return table.references(mi, context, result, &source.cmpi, filter.associationClass, filter.role,
                                request.propertyList);
    default:
        return table.referenceNames(mi, context, result, &source.cmpi, filter.associationClass, filter.role);
    }
}

/** True when the class that a filter for the other end names exists, wherever: that end may lie in another
 * namespace. Otherwise the error is in the answer. */
bool isResultClass(const Work &work, const char *name)
{
    for (const cim::NameSpace &each : work.nameSpaces.all()) {
        if (name == nullptr || each.classes->find(name) != nullptr) {
            return true;
        }
    }
    const cim::Class *ignored = nullptr;
    return findFilterClass(work, name, ignored);
}

} // namespace

void traverse(const Work &work)
{
    const cim::Class *source = classOfPath(work);
    if (source == nullptr) {
        return;
    }
    if (work.request.isOfClass) {
        return traverseClasses(work);
    }
    if (work.request.path->keys->empty()) {
        fail(work.call, work.answer, CMPI_RC_ERR_NOT_SUPPORTED,
             "%s of a class is not supported: the path has no keys.", operationName(work.request.operation));
        return;
    }
    const Request *found = source->subclasses.empty() ? &work.request : resolved(work);
    if (found == nullptr) {
        return;
    }
    const Request &request = *found;
    source = request.path->klass;
    const cim::Class *reach = nullptr;
    if (!findFilterClass(work, request.filter.associationClass, reach) ||
        !isResultClass(work, request.filter.resultClass)) {
        return;
    }
    const bool names =
        request.operation == Operation::associatorNames || request.operation == Operation::referenceNames;
    Answer &answer = work.answer;
    Deduplication deduplication;
    for (const cim::Class *association : work.providers.associationClasses(*work.nameSpace.classes)) {
        if ((reach != nullptr && !association->isA(*reach)) || !canReference(work, *association, *source)) {
            continue;
        }
        // Each provider gets a path of its own, because it may write to it.
        const Path *path = copyObject(work.arena(), *request.path);
        const std::size_t firstInstance = answer.instances.size();
        const std::size_t firstPath = answer.paths.size();
        if (!work.callProvider(names ? Collector::Kind::paths : Collector::Kind::instances,
                               [&](const CMPIContext *context, const CMPIResult *collected) {
                                   return callAssociation(*work.providers.associationProvider(*association),
                                                          context, collected, *path, request);
                               })) {
            return;
        }
        deduplication.apply(answer.instances, firstInstance);
        deduplication.apply(answer.paths, firstPath);
    }
    show(work, nullptr);
}

} // namespace host
