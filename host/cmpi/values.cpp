// SPDX-License-Identifier: Apache-2.0
// Values, the lists of named ones, and what makes two paths the same.
#include "cmpi/objects.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace host
{
namespace
{

std::size_t sizeOfSimple(CMPIType type)
{
    switch (type) {
    case CMPI_boolean:
    case CMPI_uint8:
    case CMPI_sint8:
        return 1;
    case CMPI_char16:
    case CMPI_uint16:
    case CMPI_sint16:
        return 2;
    case CMPI_uint32:
    case CMPI_sint32:
    case CMPI_real32:
        return 4;
    case CMPI_uint64:
    case CMPI_sint64:
    case CMPI_real64:
        return 8;
    default:
        return 0;
    }
}

/** Copies an object value behind its pointer; a null pointer makes the value null. */
template <typename T>
void takeObject(Arena &arena, typename T::Cmpi *given, typename T::Cmpi *&taken, CMPIData &data)
{
    const T *object = behind<T>(given);
    if (object == nullptr) {
        data.state = CMPI_nullValue;
        return;
    }
    taken = &copyObject(arena, *object)->cmpi;
}

} // namespace

CMPIData stringData(String *text)
{
    CMPIData data = {};
    data.type = CMPI_string;
    if (text == nullptr) {
        data.state = CMPI_nullValue;
    } else {
        data.value.string = &text->cmpi;
    }
    return data;
}

CMPIrc takeValue(Arena &arena, const CMPIValue *value, CMPIType type, CMPIData &data)
{
    data = nullData(storedType(type), CMPI_goodValue);
    if (value == nullptr || type == CMPI_null) {
        data.state = CMPI_nullValue;
        return CMPI_RC_OK;
    }
    if (type == CMPI_chars) { // most are
        data.value.string = &makeString(arena, reinterpret_cast<const char *>(value))->cmpi;
        return CMPI_RC_OK;
    }
    if ((type & CMPI_ARRAY) != 0) {
        takeObject<Array>(arena, value->array, data.value.array, data);
        // An array says itself what it holds; a type that contradicts it is a provider's mistake.
        if (data.state == CMPI_goodValue && arrayOf(data)->elementType != (data.type & ~CMPI_ARRAY)) {
            data = nullData(data.type);
            return CMPI_RC_ERR_TYPE_MISMATCH;
        }
        return CMPI_RC_OK;
    }
    if (const std::size_t size = sizeOfSimple(type); size != 0) {
        std::memcpy(&data.value, value, size);
        return CMPI_RC_OK;
    }
    switch (type) {
    case CMPI_string:
        takeObject<String>(arena, value->string, data.value.string, data);
        return CMPI_RC_OK;
    case CMPI_dateTime:
        takeObject<DateTime>(arena, value->dateTime, data.value.dateTime, data);
        return CMPI_RC_OK;
    case CMPI_ref:
        takeObject<Path>(arena, value->ref, data.value.ref, data);
        return CMPI_RC_OK;
    case CMPI_instance:
        takeObject<Instance>(arena, value->inst, data.value.inst, data);
        return CMPI_RC_OK;
    case CMPI_args:
        takeObject<Args>(arena, value->args, data.value.args, data);
        return CMPI_RC_OK;
    case CMPI_enumeration:
        takeObject<Enumeration>(arena, value->Enum, data.value.Enum, data);
        return CMPI_RC_OK;
    case CMPI_filter:
        takeObject<SelectExpression>(arena, value->filter, data.value.filter, data);
        return CMPI_RC_OK;
    case CMPI_ptr:
        data.value.dataPtr = value->dataPtr;
        return CMPI_RC_OK;
    default:
        data = nullData(type);
        return CMPI_RC_ERR_INVALID_DATA_TYPE;
    }
}

// Simple values are copied with the structure; takeValue() knows the others. What is stored is always of a
// type that can be taken.
CMPIData copyObjectData(Arena &arena, const CMPIData &data)
{
    if (isNull(data)) {
        return data;
    }
    CMPIData copy = {};
    takeValue(arena, &data.value, data.type, copy);
    copy.state = static_cast<CMPIValueState>(copy.state | data.state);
    return copy;
}

std::string_view numberText(const CMPIData &data, NumberText &text)
{
    char *end = text.data() + text.size();
    const auto integer = [&](auto number) {
        return std::string_view(text.data(), std::to_chars(text.data(), end, number).ptr);
    };
    const auto real = [&](double number, int digits) -> std::string_view {
        if (std::isnan(number)) {
            return "NaN";
        }
        if (std::isinf(number)) {
            return number < 0 ? "-INF" : "INF";
        }
        return {text.data(),
                std::to_chars(text.data(), end, number, std::chars_format::scientific, digits).ptr};
    };
    switch (data.type) {
    case CMPI_uint8:
        return integer(static_cast<unsigned>(data.value.uint8));
    case CMPI_uint16:
        return integer(data.value.uint16);
    case CMPI_uint32:
        return integer(data.value.uint32);
    case CMPI_uint64:
        return integer(data.value.uint64);
    case CMPI_sint8:
        return integer(static_cast<int>(data.value.sint8));
    case CMPI_sint16:
        return integer(data.value.sint16);
    case CMPI_sint32:
        return integer(data.value.sint32);
    case CMPI_sint64:
        return integer(data.value.sint64);
    case CMPI_real32:
        return real(static_cast<double>(data.value.real32), 8);
    case CMPI_real64:
        return real(data.value.real64, 16);
    default:
        return {};
    }
}
// ----------------------------------------------------------------------------------------------- the parts

NamedValue *findValue(ArenaList<NamedValue> &values, std::string_view name)
{
    for (NamedValue &value : values) {
        if (cim::sameName(value.name->view(), name)) {
            return &value;
        }
    }
    return nullptr;
}

void setValue(ArenaList<NamedValue> &values, std::string_view name, const CMPIData &data)
{
    if (NamedValue *present = findValue(values, name); present != nullptr) {
        present->data = data;
    } else {
        values.append({makeString(values.arena(), name), data});
    }
}

void setClassName(Path &path, std::string_view className)
{
    path.className = makeString(*path.arena, className);
    path.klass = path.nameSpaces->findClass(textOf(path.nameSpace), className);
}

void setNameSpace(Path &path, std::string_view nameSpace)
{
    path.nameSpace = nameSpace.empty() ? nullptr : makeString(*path.arena, nameSpace);
    path.klass = path.nameSpaces->findClass(nameSpace, path.className->view());
}

void setKey(Path &path, std::string_view name, const CMPIData &data)
{
    CMPIData key = data;
    key.state = static_cast<CMPIValueState>(key.state | CMPI_keyValue);
    setValue(*path.keys, name, key);
}

void setProperty(Instance &instance, std::size_t index, const CMPIData &data)
{
    instance.values[index] = data;
    const cim::PropertySlot &property = instance.klass->slots[index];
    if (property.isKey && !isNull(data)) {
        instance.values[index].state = static_cast<CMPIValueState>(data.state | CMPI_keyValue);
        setKey(*instance.path, property.name, copyData(*instance.arena, data));
    }
}

void completeKeys(Instance &instance)
{
    const cim::Class &definition = *instance.klass;
    for (const std::size_t key : definition.keys) {
        const CMPIData &data = instance.values[key];
        const std::string &name = definition.properties[key].name;
        if (!isNull(data) && findValue(*instance.path->keys, name) == nullptr) {
            setKey(*instance.path, name, copyData(*instance.arena, data));
        }
    }
}

PropertySet *makePropertySet(Arena &arena, const cim::Class &klass)
{
    const std::size_t words = klass.properties.size() / 64 + 1;
    return arena.make<PropertySet>(words, arena.makeArray<std::uint64_t>(words));
}

PropertySet *makePropertySet(Arena &arena, const cim::Class &klass, const char *const *names)
{
    PropertySet *set = makePropertySet(arena, klass);
    for (; *names != nullptr; ++names) {
        const std::size_t index = klass.placeOf(*names);
        if (index != cim::noProperty) {
            set->insert(index);
        }
    }
    return set;
}

// ------------------------------------------------------------------------------------------------- sameness

namespace
{

bool sameData(const CMPIData &left, const CMPIData &right)
{
    if (left.type != right.type || isNull(left) != isNull(right)) {
        return false;
    }
    if (isNull(left)) {
        return true;
    }
    switch (left.type) {
    case CMPI_string:
        return stringOf(left)->view() == stringOf(right)->view();
    case CMPI_ref:
        return samePath(*pathOf(left), *pathOf(right));
    case CMPI_dateTime:
        return dateTimeOf(left)->microseconds == dateTimeOf(right)->microseconds;
    default:
        return std::memcmp(&left.value, &right.value, sizeOfSimple(left.type)) == 0;
    }
}

std::uint64_t mix(std::uint64_t hash, std::string_view text, bool foldCase)
{
    for (const char letter : text) {
        hash = (hash ^ (static_cast<unsigned char>(letter) | (foldCase ? 0x20u : 0u))) * 0x100000001b3u;
    }
    return hash;
}

std::uint64_t hashData(const CMPIData &data)
{
    std::uint64_t hash = 0xcbf29ce484222325u;
    if (isNull(data)) {
        return hash;
    }
    switch (data.type) {
    case CMPI_string:
        return mix(hash, stringOf(data)->view(), false);
    case CMPI_ref:
        return hashPath(*pathOf(data));
    case CMPI_dateTime:
        return dateTimeOf(data)->microseconds;
    default:
        return mix(hash, {reinterpret_cast<const char *>(&data.value), sizeOfSimple(data.type)}, false);
    }
}

} // namespace

bool samePath(const Path &left, const Path &right)
{
    if (left.keys->size() != right.keys->size() ||
        !cim::sameName(left.className->view(), right.className->view())) {
        return false;
    }
    for (const NamedValue &key : *left.keys) {
        const NamedValue *other = findValue(*right.keys, key.name->view());
        if (other == nullptr || !sameData(key.data, other->data)) {
            return false;
        }
    }
    return true;
}

std::uint64_t hashPath(const Path &path)
{
    std::uint64_t hash = mix(0xcbf29ce484222325u, path.className->view(), true);
    for (const NamedValue &key : *path.keys) {
        // A sum, because the order of the keys does not count.
        hash += mix(hashData(key.data), key.name->view(), true);
    }
    return hash;
}

} // namespace host
