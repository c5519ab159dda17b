// SPDX-License-Identifier: Apache-2.0
// Reading class definitions and qualifier declarations.
#include "core/operations.h"

namespace host
{

void readClasses(const Work &work)
{
    const cim::ClassRepository &repository = *work.nameSpace.classes;
    const Request &request = work.request;
    Answer &answer = work.answer;
    if (request.operation == Operation::GetClass) {
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

void readQualifiers(const Work &work)
{
    const cim::ClassRepository &repository = *work.nameSpace.classes;
    const Request &request = work.request;
    if (request.operation == Operation::EnumerateQualifiers) {
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
