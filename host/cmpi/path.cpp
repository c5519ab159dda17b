// SPDX-License-Identifier: Apache-2.0
// The function table of object paths.
#include "cmpi/guarded.h"
#include "cmpi/object_tables.h"

namespace host
{
namespace
{

/** A text that the path has not got reads as empty. */
CMPIString *getText(const CMPIObjectPath *path, String *Path::*member, CMPIStatus *status)
{
    Path *self = checked<Path>(path, status);
    if (self == nullptr) {
        return nullptr;
    }
    String *text = self->*member;
    return text != nullptr ? &text->cmpi : &makeString(*self->arena, "")->cmpi;
}

CMPIStatus setNameSpaceOfPath(const CMPIObjectPath *path, const char *nameSpace)
{
    CMPIStatus status = {};
    if (Path *self = checked<Path>(path, &status); self != nullptr) {
        setNameSpace(*self, nameSpace != nullptr ? nameSpace : "");
    }
    return status;
}

CMPIString *getNameSpace(const CMPIObjectPath *path, CMPIStatus *status)
{
    return getText(path, &Path::nameSpace, status);
}

CMPIStatus setHostname(const CMPIObjectPath *path, const char *hostname)
{
    CMPIStatus status = {};
    if (Path *self = checked<Path>(path, &status); self != nullptr) {
        self->host = hostname == nullptr || *hostname == '\0' ? nullptr : makeString(*self->arena, hostname);
    }
    return status;
}

CMPIString *getHostname(const CMPIObjectPath *path, CMPIStatus *status)
{
    return getText(path, &Path::host, status);
}

CMPIStatus setClassNameOfPath(const CMPIObjectPath *path, const char *className)
{
    CMPIStatus status = {};
    if (Path *self = checked<Path>(path, &status); self != nullptr) {
        if (className == nullptr || *className == '\0') {
            return makeStatus(CMPI_RC_ERR_INVALID_PARAMETER);
        }
        setClassName(*self, className);
    }
    return status;
}

CMPIString *getClassName(const CMPIObjectPath *path, CMPIStatus *status)
{
    const Path *self = checked<Path>(path, status);
    return self != nullptr ? &self->className->cmpi : nullptr;
}

using Keys = NamedValues<Path, &Path::keys, CMPI_RC_ERR_NOT_FOUND>;

CMPIStatus addKey(const CMPIObjectPath *path, const char *name, const CMPIValue *value, CMPIType type)
{
    const CMPIStatus status = Keys::add(path, name, value, type);
    if (status.rc == CMPI_RC_OK) {
        NamedValue *key = findValue(*behind<Path>(path)->keys, name);
        key->data.state = static_cast<CMPIValueState>(key->data.state | CMPI_keyValue);
    }
    return status;
}

CMPIStatus setNameSpaceFromObjectPath(const CMPIObjectPath *path, const CMPIObjectPath *source)
{
    Path *self = behind<Path>(path);
    const Path *from = behind<Path>(source);
    if (self == nullptr || from == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    setNameSpace(*self, textOf(from->nameSpace));
    return makeStatus(CMPI_RC_OK);
}

CMPIStatus setHostAndNameSpaceFromObjectPath(const CMPIObjectPath *path, const CMPIObjectPath *source)
{
    const CMPIStatus status = setNameSpaceFromObjectPath(path, source);
    if (status.rc == CMPI_RC_OK) {
        Path *self = behind<Path>(path);
        const Path *from = behind<Path>(source);
        self->host = from->host != nullptr ? copyObject(*self->arena, *from->host) : nullptr;
    }
    return status;
}

// ---------------------------------------------------------------------------------------------- qualifiers

/** The qualifier's value: booleans as such, everything else as text. */
CMPIData qualifierData(Arena &arena, const cim::Qualifiers &qualifiers, const char *name, CMPIStatus *status)
{
    const cim::Qualifier *qualifier = cim::findQualifier(qualifiers, name);
    if (qualifier == nullptr) {
        setStatus(status, CMPI_RC_ERR_NOT_FOUND);
        return nullData(CMPI_null, CMPI_notFound);
    }
    if (qualifier->value.isNull) {
        return nullData(cim::cmpiType(qualifier->type, qualifier->value.isArray));
    }
    CMPIData data = {};
    if (qualifier->value.isArray) {
        const auto size = static_cast<CMPICount>(qualifier->value.items.size());
        Array *array = makeArray(arena, CMPI_string, size);
        for (CMPICount i = 0; i < size; ++i) {
            array->elements[i] = stringData(makeString(arena, qualifier->value.items[i]));
        }
        data.type = CMPI_stringA;
        data.value.array = &array->cmpi;
        return data;
    }
    if (qualifier->type == cim::Type::boolean) {
        data.type = CMPI_boolean;
        data.value.boolean = qualifier->value.isTrue() ? 1 : 0;
        return data;
    }
    return stringData(makeString(arena, qualifier->value.text()));
}

/** The path whose class is known and whose names are all given; null and a filled status otherwise. */
Path *pathOfKnownClass(const CMPIObjectPath *path, std::initializer_list<const char *> names,
                       CMPIStatus *status)
{
    Path *self = checked<Path>(path, status);
    if (self == nullptr) {
        return nullptr;
    }
    for (const char *name : names) {
        if (name == nullptr) {
            setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
            return nullptr;
        }
    }
    if (self->klass == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_CLASS);
        return nullptr;
    }
    return self;
}

CMPIData noElement(CMPIStatus *status, CMPIrc code)
{
    setStatus(status, code);
    return nullData(CMPI_null, CMPI_notFound);
}

CMPIData getClassQualifier(const CMPIObjectPath *path, const char *qualifier, CMPIStatus *status)
{
    const Path *self = pathOfKnownClass(path, {qualifier}, status);
    if (self == nullptr) {
        return nullData(CMPI_null, CMPI_badValue);
    }
    return qualifierData(*self->arena, self->klass->qualifiers, qualifier, status);
}

CMPIData getPropertyQualifier(const CMPIObjectPath *path, const char *property, const char *qualifier,
                              CMPIStatus *status)
{
    const Path *self = pathOfKnownClass(path, {property, qualifier}, status);
    if (self == nullptr) {
        return nullData(CMPI_null, CMPI_badValue);
    }
    const std::size_t index = self->klass->placeOf(property);
    if (index == cim::noProperty) {
        return noElement(status, CMPI_RC_ERR_NO_SUCH_PROPERTY);
    }
    return qualifierData(*self->arena, self->klass->properties[index].qualifiers, qualifier, status);
}

CMPIData getMethodQualifier(const CMPIObjectPath *path, const char *method, const char *qualifier,
                            CMPIStatus *status)
{
    const Path *self = pathOfKnownClass(path, {method, qualifier}, status);
    if (self == nullptr) {
        return nullData(CMPI_null, CMPI_badValue);
    }
    const cim::Method *found = self->klass->findMethod(method);
    if (found == nullptr) {
        return noElement(status, CMPI_RC_ERR_METHOD_NOT_FOUND);
    }
    return qualifierData(*self->arena, found->qualifiers, qualifier, status);
}

CMPIData getParameterQualifier(const CMPIObjectPath *path, const char *method, const char *parameter,
                               const char *qualifier, CMPIStatus *status)
{
    const Path *self = pathOfKnownClass(path, {method, parameter, qualifier}, status);
    if (self == nullptr) {
        return nullData(CMPI_null, CMPI_badValue);
    }
    const cim::Method *found = self->klass->findMethod(method);
    if (found == nullptr) {
        return noElement(status, CMPI_RC_ERR_METHOD_NOT_FOUND);
    }
    const cim::Parameter *element = found->findParameter(parameter);
    if (element == nullptr) {
        return noElement(status, CMPI_RC_ERR_NOT_FOUND);
    }
    return qualifierData(*self->arena, element->qualifiers, qualifier, status);
}

CMPIString *toString(const CMPIObjectPath *path, CMPIStatus *status)
{
    const Path *self = checked<Path>(path, status);
    return self != nullptr ? &pathText(*self->arena, *self)->cmpi : nullptr;
}

} // namespace

const CMPIObjectPathFT pathTable = {
    tableVersion,
    releaseObject<Path>,
    guarded<cloneObject<Path>>,
    guarded<setNameSpaceOfPath>,
    guarded<getNameSpace>,
    guarded<setHostname>,
    guarded<getHostname>,
    guarded<setClassNameOfPath>,
    guarded<getClassName>,
    guarded<addKey>,
    guarded<Keys::get>,
    guarded<Keys::getAt>,
    Keys::count,
    guarded<setNameSpaceFromObjectPath>,
    guarded<setHostAndNameSpaceFromObjectPath>,
    guarded<getClassQualifier>,
    guarded<getPropertyQualifier>,
    guarded<getMethodQualifier>,
    guarded<getParameterQualifier>,
    guarded<toString>,
};

} // namespace host
