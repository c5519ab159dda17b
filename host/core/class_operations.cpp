// SPDX-License-Identifier: Apache-2.0
// Reading class definitions and qualifier declarations.
#include "core/operations.h"

#include <unordered_set>

namespace host
{

void readClasses(const Work &work)
{
    const cim::ClassRepository &repository = *work.nameSpace.classes;
    const Request &request = work.request;
    Answer &answer = work.answer;
    if (request.operation == Operation::getClass) {
        const cim::Class *klass = repository.find(request.className);
        if (klass == nullptr) { // DSP0200 has GetClass alone say "not found" here
            fail(work.call, answer, CMPI_RC_ERR_NOT_FOUND, "The class %.*s does not exist.",
                 shown(request.className), request.className.data());
            return;
        }
        answer.classes.append(klass);
        return;
    }
    std::vector<const cim::Class *> found;
    if (request.className.empty()) {
        found = request.deepInheritance ? repository.all() : repository.roots();
    } else {
        const cim::Class *parent = classOf(work, request.className);
        if (parent == nullptr) {
            return;
        }
        found = request.deepInheritance ? repository.deepSubclasses(*parent) : repository.subclasses(*parent);
    }
    for (const cim::Class *klass : found) {
        answer.classes.append(klass);
    }
}

bool findFilterClass(const Work &work, const char *name, const cim::Class *&klass)
{
    klass = name != nullptr ? work.nameSpace.classes->find(name) : nullptr;
    if (name != nullptr && klass == nullptr) {
        fail(work.call, work.answer, CMPI_RC_ERR_INVALID_PARAMETER,
             "The class %.200s of the filter does not exist.", name);
        return false;
    }
    return true;
}

namespace
{

bool hasRole(const cim::Property &property, const char *role)
{
    return property.type == cim::Type::reference && (role == nullptr || cim::sameName(property.name, role));
}

} // namespace

void traverseClasses(const Work &work)
{
    const Request &request = work.request;
    const cim::ClassRepository &classes = *work.nameSpace.classes;
    const cim::Class *source = classOfPath(work);
    const cim::Class *reach = nullptr;
    const cim::Class *result = nullptr;
    if (source == nullptr || !findFilterClass(work, request.filter.associationClass, reach) ||
        !findFilterClass(work, request.filter.resultClass, result)) {
        return;
    }
    const bool references =
        request.operation == Operation::references || request.operation == Operation::referenceNames;
    std::unordered_set<const cim::Class *> seen;
    const auto add = [&](const cim::Class &klass) {
        if (seen.insert(&klass).second) {
            work.answer.classes.append(&klass);
        }
    };
    for (const cim::Class *association : classes.all()) {
        if (!association->isAssociation || (reach != nullptr && !association->isA(*reach))) {
            continue;
        }
        for (const cim::Property &here : association->properties) {
            const cim::Class *end =
                hasRole(here, request.filter.role) ? classes.find(here.referenceClass) : nullptr;
            if (end == nullptr || !source->isA(*end)) {
                continue;
            }
            if (references) {
                add(*association);
                continue;
            }
            for (const cim::Property &there : association->properties) {
                const cim::Class *far = &there != &here && hasRole(there, request.filter.resultRole)
                                            ? classes.find(there.referenceClass)
                                            : nullptr;
                if (far != nullptr && (result == nullptr || far->isA(*result))) {
                    add(*far);
                }
            }
        }
    }
}

void readQualifiers(const Work &work)
{
    const cim::ClassRepository &repository = *work.nameSpace.classes;
    const Request &request = work.request;
    if (request.operation == Operation::enumerateQualifiers) {
        for (const cim::QualifierDeclaration *declaration : repository.qualifiers()) {
            work.answer.qualifiers.append(declaration);
        }
        return;
    }
    const cim::QualifierDeclaration *declaration = repository.findQualifier(request.qualifierName);
    if (declaration == nullptr) {
        fail(work.call, work.answer, CMPI_RC_ERR_NOT_FOUND, "The qualifier %.*s does not exist.",
             shown(request.qualifierName), request.qualifierName.data());
        return;
    }
    work.answer.qualifiers.append(declaration);
}

} // namespace host
