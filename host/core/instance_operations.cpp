// SPDX-License-Identifier: Apache-2.0
// Operations on instances, and the methods of instances and classes.
#include "core/operations.h"

#include "core/projection.h"

namespace host
{

const cim::Class *classOf(const Work &work, std::string_view name)
{
    const cim::Class *klass = work.nameSpace.classes->find(name);
    if (klass == nullptr) {
        fail(work.call, work.answer, CMPI_RC_ERR_INVALID_CLASS, "The class %.*s does not exist.", shown(name),
             name.data());
    }
    return klass;
}

const cim::Class *classOfPath(const Work &work)
{
    return classOf(work, work.request.path->className->view());
}

bool isServedBelow(const Work &work, const cim::Class &klass)
{
    for (const cim::Class *subclass : work.nameSpace.classes->deepSubclasses(klass)) {
        if (work.providers.instanceProvider(*subclass) != nullptr) {
            return true;
        }
    }
    return false;
}

namespace
{

/** The provider of exactly that class. A path names the class that the instance was made of, so one that
 * names a superclass leads to nothing (DSP0200: not found). */
const Provider *instanceProvider(const Work &work, const cim::Class &klass)
{
    const Provider *provider = work.providers.instanceProvider(klass);
    if (provider != nullptr) {
        return provider;
    }
    if (isServedBelow(work, klass)) {
        fail(work.call, work.answer, CMPI_RC_ERR_NOT_FOUND,
             "There is no instance of %s itself; its subclasses have instances.", klass.name.c_str());
    } else {
        fail(work.call, work.answer, CMPI_RC_ERR_NOT_SUPPORTED,
             "No instance provider is registered for the class %s.", klass.name.c_str());
    }
    return nullptr;
}

const Provider *instanceProviderOfPath(const Work &work)
{
    const cim::Class *klass = classOfPath(work);
    return klass != nullptr ? instanceProvider(work, *klass) : nullptr;
}

/** Enumerates what the provider of exactly that class has; false when there is none. */
bool enumerateClass(const Work &work, const cim::Class &klass)
{
    const Provider *provider = work.providers.instanceProvider(klass);
    if (provider == nullptr) {
        return false;
    }
    const bool names = work.request.operation == Operation::enumerateInstanceNames;
    Path *path = makePath(work.arena(), work.nameSpaces, work.request.nameSpace, klass.name);
    work.callProvider(names ? Collector::Kind::paths : Collector::Kind::instances,
                      [&](const CMPIContext *context, const CMPIResult *result) {
                          const CMPIInstanceMIFT &table = provider->instanceTable;
                          CMPIInstanceMI *mi = provider->instance;
                          return names ? table.enumerateInstanceNames(mi, context, result, &path->cmpi)
                                       : table.enumerateInstances(mi, context, result, &path->cmpi,
                                                                  work.request.propertyList);
                      });
    return true;
}

/** The place of the property that the request is about, or noProperty with the error in the answer. */
std::size_t placeOfProperty(const Work &work, const cim::Class &klass)
{
    const std::string_view name = work.request.propertyName;
    const std::size_t index = klass.placeOf(name);
    if (index == cim::noProperty) {
        fail(work.call, work.answer, CMPI_RC_ERR_NO_SUCH_PROPERTY, "The class %s has no property %.*s.",
             klass.name.c_str(), shown(name), name.data());
    }
    return index;
}

} // namespace

void enumerate(const Work &work)
{
    const cim::Class *wanted = classOf(work, work.request.className);
    if (wanted == nullptr) {
        return;
    }
    bool served = enumerateClass(work, *wanted);
    if (!wanted->subclasses.empty()) {
        for (const cim::Class *subclass : work.nameSpace.classes->deepSubclasses(*wanted)) {
            if (!work.answer.ok()) {
                return;
            }
            served = enumerateClass(work, *subclass) || served;
        }
    }
    if (!served) {
        fail(work.call, work.answer, CMPI_RC_ERR_NOT_SUPPORTED,
             "No instance provider is registered for the class %s or a subclass of it.",
             wanted->name.c_str());
        return;
    }
    show(work, work.request.deepInheritance ? nullptr : wanted);
}

void show(const Work &work, const cim::Class *limit)
{
    Projection projection(work.arena(), work.request, limit);
    for (Instance *instance : work.answer.instances) {
        projection.apply(*instance);
    }
}

namespace
{

/** Asks the provider of exactly the path's class for the instance. */
void getExactInstance(const Work &work)
{
    const Provider *provider = instanceProviderOfPath(work);
    if (provider == nullptr || !work.callProvider(Collector::Kind::instances, [&](const CMPIContext *context,
                                                                                  const CMPIResult *result) {
            return provider->instanceTable.getInstance(provider->instance, context, result,
                                                       &work.request.path->cmpi, work.request.propertyList);
        })) {
        return;
    }
    if (work.answer.instances.empty()) {
        fail(work.call, work.answer, CMPI_RC_ERR_NOT_FOUND, "The provider of %s returned no instance.",
             work.request.path->className->text);
        return;
    }
    work.answer.instances.truncate(1);
}

/** Looks for the instance among those of the subclasses: true when it is found, and then in the answer. */
bool getInstanceBelow(const Work &work, const cim::Class &klass)
{
    // Where the keys tell the class, no other is asked.
    const NamedValue *creationClass = findValue(*work.request.path->keys, "CreationClassName");
    const cim::Class *told = creationClass != nullptr
                                 ? work.nameSpace.classes->find(textOf(stringOf(creationClass->data)))
                                 : nullptr;
    if (told == &klass || (told != nullptr && !told->isA(klass))) {
        told = nullptr;
    }
    for (const cim::Class *subclass : work.nameSpace.classes->deepSubclasses(klass)) {
        if (work.providers.instanceProvider(*subclass) == nullptr || (told != nullptr && told != subclass)) {
            continue;
        }
        Request attempt = work.request;
        attempt.path = copyObject(work.arena(), *work.request.path);
        setClassName(*attempt.path, subclass->name);
        Answer answer(work.arena());
        getExactInstance(
            {work.call, attempt, answer, work.nameSpaces, work.nameSpace, work.providers, work.access});
        if (answer.ok()) {
            work.answer.code = CMPI_RC_OK;
            work.answer.message = nullptr;
            work.answer.instances.clear();
            work.answer.instances.append(answer.instances[0]);
            return true;
        }
    }
    return false;
}

} // namespace

void getInstance(const Work &work)
{
    getExactInstance(work);
    if (work.answer.code == CMPI_RC_ERR_NOT_FOUND) {
        const cim::Class *klass = work.nameSpace.classes->find(work.request.path->className->view());
        if (!getInstanceBelow(work, *klass)) {
            return;
        }
    }
    if (work.answer.ok()) {
        show(work, nullptr);
    }
}

const Request *resolved(const Work &work)
{
    const cim::Class *klass = classOfPath(work);
    if (klass == nullptr) {
        return nullptr;
    }
    if (klass->subclasses.empty() || work.request.path->keys->empty() ||
        work.providers.instanceProvider(*klass) != nullptr || !isServedBelow(work, *klass)) {
        return &work.request;
    }
    Answer answer(work.arena());
    const Work search{work.call,      work.request,   answer,     work.nameSpaces,
                      work.nameSpace, work.providers, work.access};
    if (!getInstanceBelow(search, *klass)) {
        fail(work.call, work.answer, CMPI_RC_ERR_NOT_FOUND,
             "There is no instance of %s itself, and none of a subclass with these keys.",
             klass->name.c_str());
        return nullptr;
    }
    auto *request = new (work.arena().allocate(sizeof(Request), alignof(Request))) Request(work.request);
    request->path = copyObject(work.arena(), *answer.instances[0]->path);
    return request;
}

void createInstance(const Work &work)
{
    const Provider *provider = instanceProviderOfPath(work);
    if (provider == nullptr) {
        return;
    }
    const bool created =
        work.callProvider(Collector::Kind::paths, [&](const CMPIContext *context, const CMPIResult *result) {
            return provider->instanceTable.createInstance(
                provider->instance, context, result, &work.request.path->cmpi, &work.request.instance->cmpi);
        });
    if (created && work.answer.paths.empty()) {
        // The provider took the instance without saying its path: the keys that were given name it.
        completeKeys(*work.request.instance);
        work.answer.paths.append(work.request.instance->path);
    }
}

void modifyInstance(const Work &work)
{
    const Request *request = resolved(work);
    const Provider *provider = request != nullptr ? instanceProviderOfPath(work.with(*request)) : nullptr;
    if (provider != nullptr) {
        work.callProvider(
            Collector::Kind::nothing, [&](const CMPIContext *context, const CMPIResult *result) {
                return provider->instanceTable.modifyInstance(provider->instance, context, result,
                                                              &request->path->cmpi, &request->instance->cmpi,
                                                              request->propertyList);
            });
    }
}

void deleteInstance(const Work &work)
{
    const Request *request = resolved(work);
    const Provider *provider = request != nullptr ? instanceProviderOfPath(work.with(*request)) : nullptr;
    if (provider != nullptr) {
        work.callProvider(Collector::Kind::nothing,
                          [&](const CMPIContext *context, const CMPIResult *result) {
                              return provider->instanceTable.deleteInstance(provider->instance, context,
                                                                            result, &request->path->cmpi);
                          });
    }
}

void getProperty(const Work &work)
{
    const cim::Class *klass = classOfPath(work);
    const std::size_t index = klass != nullptr ? placeOfProperty(work, *klass) : cim::noProperty;
    if (index == cim::noProperty) {
        return;
    }
    const char *list[] = {klass->properties[index].name.c_str(), nullptr};
    Request whole = work.request;
    whole.operation = Operation::getInstance;
    whole.propertyList = list;
    getInstance(work.with(whole));
    Answer &answer = work.answer;
    if (answer.ok() && answer.instances[0]->klass == klass) {
        answer.returnValue = answer.instances[0]->values[index];
        answer.hasReturnValue = !isNull(answer.returnValue);
    }
    answer.instances.clear();
}

void setProperty(const Work &work)
{
    const cim::Class *klass = classOfPath(work);
    const std::size_t index = klass != nullptr ? placeOfProperty(work, *klass) : cim::noProperty;
    if (index == cim::noProperty) {
        return;
    }
    const cim::Property &property = klass->properties[index];
    if (!isNull(work.request.propertyValue) && work.request.propertyValue.type != property.cmpiCode()) {
        fail(work.call, work.answer, CMPI_RC_ERR_TYPE_MISMATCH, "The property %s of %s has the type %s%s.",
             property.name.c_str(), klass->name.c_str(), typeName(property.type),
             property.isArray ? "[]" : "");
        return;
    }
    const char *list[] = {property.name.c_str(), nullptr};
    Request change = work.request;
    change.operation = Operation::modifyInstance;
    change.propertyList = list;
    change.instance = makeInstance(work.arena(), *work.request.path);
    setProperty(*change.instance, index, copyData(work.arena(), work.request.propertyValue));
    modifyInstance(work.with(change));
}

void invokeMethod(const Work &work)
{
    const cim::Class *klass = classOfPath(work);
    if (klass == nullptr) {
        return;
    }
    const Request *request = &work.request;
    const Provider *provider = work.providers.methodProvider(*klass);
    if (provider == nullptr) {
        request = resolved(work);
        if (request == nullptr) {
            return;
        }
        provider = work.providers.methodProvider(*request->path->klass);
    }
    if (provider == nullptr) {
        fail(work.call, work.answer, CMPI_RC_ERR_NOT_SUPPORTED,
             "No method provider is registered for the class %s.", klass->name.c_str());
        return;
    }
    Args *out = makeArgs(work.arena());
    if (work.callProvider(Collector::Kind::data, [&](const CMPIContext *context, const CMPIResult *result) {
            return provider->methodTable.invokeMethod(provider->method, context, result, &request->path->cmpi,
                                                      request->methodName, &request->arguments->cmpi,
                                                      &out->cmpi);
        })) {
        work.answer.outArguments = out;
    }
}

} // namespace host
