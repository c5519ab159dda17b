// SPDX-License-Identifier: Apache-2.0
#include "core/model.h"

namespace host
{

const char *operationName(Operation operation)
{
    switch (operation) {
    case Operation::enumerateInstances:
        return "EnumerateInstances";
    case Operation::enumerateInstanceNames:
        return "EnumerateInstanceNames";
    case Operation::getInstance:
        return "GetInstance";
    case Operation::createInstance:
        return "CreateInstance";
    case Operation::modifyInstance:
        return "ModifyInstance";
    case Operation::deleteInstance:
        return "DeleteInstance";
    case Operation::getProperty:
        return "GetProperty";
    case Operation::setProperty:
        return "SetProperty";
    case Operation::execQuery:
        return "ExecQuery";
    case Operation::associators:
        return "Associators";
    case Operation::associatorNames:
        return "AssociatorNames";
    case Operation::references:
        return "References";
    case Operation::referenceNames:
        return "ReferenceNames";
    case Operation::invokeMethod:
        return "InvokeMethod";
    case Operation::getClass:
        return "GetClass";
    case Operation::enumerateClasses:
        return "EnumerateClasses";
    case Operation::enumerateClassNames:
        return "EnumerateClassNames";
    case Operation::getQualifier:
        return "GetQualifier";
    case Operation::enumerateQualifiers:
        return "EnumerateQualifiers";
    }
    return "";
}

const char *statusDescription(CMPIrc code)
{
    switch (code) {
    case CMPI_RC_OK:
        return "The operation was successful.";
    case CMPI_RC_ERR_FAILED:
        return "A general error occurred that is not covered by a more specific error code.";
    case CMPI_RC_ERR_ACCESS_DENIED:
        return "Access to a CIM resource was not available to the client.";
    case CMPI_RC_ERR_INVALID_NAMESPACE:
        return "The target namespace does not exist.";
    case CMPI_RC_ERR_INVALID_PARAMETER:
        return "One or more parameter values passed to the method were invalid.";
    case CMPI_RC_ERR_INVALID_CLASS:
        return "The specified class does not exist.";
    case CMPI_RC_ERR_NOT_FOUND:
        return "The requested object could not be found.";
    case CMPI_RC_ERR_NOT_SUPPORTED:
        return "The requested operation is not supported.";
    case CMPI_RC_ERR_CLASS_HAS_CHILDREN:
        return "The operation cannot be carried out on this class because it has subclasses.";
    case CMPI_RC_ERR_CLASS_HAS_INSTANCES:
        return "The operation cannot be carried out on this class because it has instances.";
    case CMPI_RC_ERR_INVALID_SUPERCLASS:
        return "The operation cannot be carried out because the specified superclass does not exist.";
    case CMPI_RC_ERR_ALREADY_EXISTS:
        return "The operation cannot be carried out because an object already exists.";
    case CMPI_RC_ERR_NO_SUCH_PROPERTY:
        return "The specified property does not exist.";
    case CMPI_RC_ERR_TYPE_MISMATCH:
        return "The value supplied is not compatible with the type.";
    case CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED:
        return "The query language is not recognized or supported.";
    case CMPI_RC_ERR_INVALID_QUERY:
        return "The query is not valid for the specified query language.";
    case CMPI_RC_ERR_METHOD_NOT_AVAILABLE:
        return "The extrinsic method could not be invoked.";
    case CMPI_RC_ERR_METHOD_NOT_FOUND:
        return "The specified extrinsic method does not exist.";
    case CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED:
        return "The operation was refused because it exceeds the limits of the server.";
    default:
        return "The operation failed.";
    }
}

} // namespace host
