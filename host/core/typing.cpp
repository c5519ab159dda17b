// SPDX-License-Identifier: Apache-2.0
#include "core/typing.h"

#include "cmpi/scalar_text.h"

#include <algorithm>
#include <cstdio>

namespace host
{
namespace
{

/** The name for messages: %.*s wants an int, and a name may be long. */
int shown(std::string_view text)
{
    return static_cast<int>(std::min<std::size_t>(text.size(), 200));
}

} // namespace

void Typing::fail(CMPIrc code, const char *format, ...)
{
    char text[640];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    code_ = code;
    error_ = arena_.copyText(text);
}

bool Typing::scalar(const ItemText &item, cim::Type type, std::string_view name,
                    std::string_view defaultNameSpace, CMPIData &data)
{
    data = nullData(cim::cmpiType(type, false));
    if (item.isNull) {
        return true;
    }
    if (type == cim::Type::reference) {
        const Path *reference = path(*item.reference, defaultNameSpace);
        if (reference == nullptr) {
            return false;
        }
        data.state = CMPI_goodValue;
        data.value.ref = const_cast<CMPIObjectPath *>(&reference->cmpi);
        return true;
    }
    if (!readScalar(arena_, item.text, type, data)) {
        fail(CMPI_RC_ERR_INVALID_PARAMETER, "The value \"%.*s\" of %.*s is not a %s.", shown(item.text),
             item.text.data(), shown(name), name.data(), cim::typeName(type));
        return false;
    }
    return true;
}

bool Typing::value(const ValueText &text, cim::Type type, bool isArray, std::string_view defaultNameSpace,
                   CMPIData &data)
{
    if (text.isNull) {
        data = nullData(cim::cmpiType(type == cim::Type::none ? cim::Type::string : type, isArray));
        return true;
    }
    // The form of the value is the client's. A reference cannot be read as anything else, nor can a text be
    // read as a reference.
    const auto typeOf = [type](const ItemText &item) {
        if (item.reference != nullptr) {
            return cim::Type::reference;
        }
        return type == cim::Type::none || type == cim::Type::reference ? cim::Type::string : type;
    };
    if (!text.isArray) {
        return scalar(text.item, typeOf(text.item), text.name, defaultNameSpace, data);
    }
    const std::size_t count = text.items->size();
    cim::Type elementType = type == cim::Type::none ? cim::Type::string : type;
    for (const ItemText &item : *text.items) {
        if (!item.isNull) {
            elementType = typeOf(item);
            break;
        }
    }
    Array *array = makeArray(arena_, cim::cmpiType(elementType, false), static_cast<CMPICount>(count));
    for (std::size_t i = 0; i < count; ++i) {
        const ItemText &item = (*text.items)[i];
        if (arena_.exhausted()) {
            fail(CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED, "The values need too much memory.");
            return false;
        }
        if (!item.isNull && (item.reference != nullptr) != (elementType == cim::Type::reference)) {
            fail(CMPI_RC_ERR_INVALID_PARAMETER, "The array %.*s mixes references and values.",
                 shown(text.name), text.name.data());
            return false;
        }
        if (!scalar(item, elementType, text.name, defaultNameSpace, array->elements[i])) {
            return false;
        }
    }
    data = nullData(cim::cmpiType(elementType, true), CMPI_goodValue);
    data.value.array = &array->cmpi;
    return true;
}

Path *Typing::path(const PathText &text, std::string_view defaultNameSpace)
{
    const std::string_view nameSpace = text.nameSpace.empty() ? defaultNameSpace : text.nameSpace;
    Path *path = makePath(arena_, nameSpaces_, nameSpace, text.className);
    if (!text.host.empty()) {
        path->host = makeString(arena_, text.host);
    }
    if (text.keys == nullptr) {
        return path;
    }
    const cim::Class *definition = path->klass != nullptr ? path->klass : nullptr;
    for (const ValueText &key : *text.keys) {
        std::string_view name = key.name;
        if (name.empty()) {
            if (definition == nullptr || definition->keys.size() != 1 || text.keys->size() != 1) {
                fail(CMPI_RC_ERR_INVALID_PARAMETER, "A key of %.*s has no name.", shown(text.className),
                     text.className.data());
                return nullptr;
            }
            name = definition->properties[definition->keys.front()].name;
        }
        if (findValue(*path->keys, name) != nullptr) {
            fail(CMPI_RC_ERR_INVALID_PARAMETER, "The key %.*s is given twice.", shown(name), name.data());
            return nullptr;
        }
        cim::Type type = key.type;
        if (definition != nullptr) {
            const std::size_t index = path->klass->placeOf(name);
            if (index != cim::noProperty) {
                type = path->klass->properties[index].type;
            }
        }
        ValueText named = key;
        named.name = name;
        CMPIData data = {};
        if (!value(named, type, false, nameSpace, data)) {
            return nullptr;
        }
        setKey(*path, name, data);
    }
    return path;
}

Instance *Typing::instance(const Path &path, const ArenaList<ValueText> &properties)
{
    Instance *instance = makeInstance(arena_, path);
    const cim::Class &klass = *instance->klass;
    const std::string_view nameSpace =
        path.nameSpace != nullptr ? path.nameSpace->view() : std::string_view();
    for (const ValueText &text : properties) {
        const std::size_t index = klass.placeOf(text.name);
        if (index == cim::noProperty) {
            fail(CMPI_RC_ERR_NO_SUCH_PROPERTY, "The class %s has no property %.*s.", klass.name.c_str(),
                 shown(text.name), text.name.data());
            return nullptr;
        }
        const cim::Property &property = klass.properties[index];
        CMPIData data = {};
        if (!value(text, property.type, property.isArray, nameSpace, data)) {
            return nullptr;
        }
        if (data.type != property.cmpiCode()) {
            fail(CMPI_RC_ERR_TYPE_MISMATCH, "The property %s of %s has the type %s%s.", property.name.c_str(),
                 klass.name.c_str(), typeName(property.type), property.isArray ? "[]" : "");
            return nullptr;
        }
        setProperty(*instance, index, data);
    }
    return instance;
}

Args *Typing::arguments(const cim::Class *klass, std::string_view method, const ArenaList<ValueText> &values,
                        std::string_view defaultNameSpace)
{
    const cim::Method *definition = klass != nullptr ? klass->findMethod(method) : nullptr;
    Args *args = makeArgs(arena_);
    for (const ValueText &text : values) {
        const cim::Parameter *parameter =
            definition != nullptr ? definition->findParameter(text.name) : nullptr;
        const cim::Type type = parameter != nullptr ? parameter->type : text.type;
        const bool isArray = parameter != nullptr ? parameter->isArray : text.isArray;
        CMPIData data = {};
        if (arena_.exhausted()) {
            fail(CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED, "The arguments need too much memory.");
            return nullptr;
        }
        if (!value(text, type, isArray, defaultNameSpace, data)) {
            return nullptr;
        }
        if (const NamedValue *present = findValue(*args->values, text.name); present != nullptr) {
            // Some clients send the elements of an array one by one under the same name.
            const Array *before = arrayOf(present->data);
            const Array *more = arrayOf(data);
            if (before == nullptr || more == nullptr || present->data.type != data.type) {
                fail(CMPI_RC_ERR_INVALID_PARAMETER, "The argument %.*s is given twice.", shown(text.name),
                     text.name.data());
                return nullptr;
            }
            Array *joined = makeArray(arena_, before->elementType, before->size + more->size);
            for (CMPICount i = 0; i < before->size; ++i) {
                joined->elements[i] = before->elements[i];
            }
            for (CMPICount i = 0; i < more->size; ++i) {
                joined->elements[before->size + i] = more->elements[i];
            }
            data.value.array = &joined->cmpi;
        }
        setValue(*args->values, text.name, data);
    }
    return args;
}

} // namespace host
