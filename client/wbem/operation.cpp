// SPDX-License-Identifier: Apache-2.0
#include "wbem/operation.h"

#include <utility>

namespace displayctl::wbem
{

namespace
{

Operation onObject(OperationKind kind, ObjectPath object)
{
    Operation operation{};
    operation.kind = kind;
    operation.object = std::move(object);
    return operation;
}

Operation traversal(OperationKind kind, ObjectPath object, AssociationFilter filter)
{
    Operation operation = onObject(kind, std::move(object));
    operation.filter = std::move(filter);
    return operation;
}

ObjectPath classPath(std::string className)
{
    return {.className = std::move(className), .keys = {}};
}

} // namespace

Operation getInstance(ObjectPath object, std::vector<std::string> properties)
{
    Operation operation = onObject(OperationKind::getInstance, std::move(object));
    operation.properties = std::move(properties);
    return operation;
}

Operation enumerateInstances(std::string className, std::vector<std::string> properties)
{
    Operation operation = onObject(OperationKind::enumerateInstances, classPath(std::move(className)));
    operation.properties = std::move(properties);
    return operation;
}

Operation enumerateInstanceNames(std::string className)
{
    return onObject(OperationKind::enumerateInstanceNames, classPath(std::move(className)));
}

Operation associators(ObjectPath object, AssociationFilter filter)
{
    return traversal(OperationKind::associators, std::move(object), std::move(filter));
}

Operation associatorNames(ObjectPath object, AssociationFilter filter)
{
    return traversal(OperationKind::associatorNames, std::move(object), std::move(filter));
}

Operation references(ObjectPath object, AssociationFilter filter)
{
    return traversal(OperationKind::references, std::move(object), std::move(filter));
}

Operation referenceNames(ObjectPath object, AssociationFilter filter)
{
    return traversal(OperationKind::referenceNames, std::move(object), std::move(filter));
}

Operation modifyInstance(ObjectPath object, std::vector<Property> newValues)
{
    Operation operation = onObject(OperationKind::modifyInstance, std::move(object));
    for (const Property &property : newValues) {
        operation.properties.push_back(property.name);
    }
    operation.values = std::move(newValues);
    return operation;
}

Operation invokeMethod(ObjectPath object, std::string method, std::vector<Property> arguments)
{
    Operation operation = onObject(OperationKind::invokeMethod, std::move(object));
    operation.method = std::move(method);
    operation.values = std::move(arguments);
    return operation;
}

} // namespace displayctl::wbem
