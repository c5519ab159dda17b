// SPDX-License-Identifier: Apache-2.0
#include "cmpi/objects.h"

#include "cmpi/date_time.h"

#include <cstring>

namespace host
{
namespace
{

/** Makes the structure with its CMPI part filled. */
template <typename T, typename Table>
T *makeObject(Arena &arena, const Table &table)
{
    T *object = arena.make<T>();
    object->cmpi.hdl = object;
    object->cmpi.ft = &table;
    object->arena = &arena;
    object->isClone = false;
    return object;
}

String *copyIfAny(Arena &arena, const String *text)
{
    return text == nullptr ? nullptr : copyObject(arena, *text);
}

Array *copyIfAny(Arena &arena, const Array *array)
{
    return array == nullptr ? nullptr : copyObject(arena, *array);
}

ArenaList<NamedValue> *makeValues(Arena &arena)
{
    return new (arena.allocate(sizeof(ArenaList<NamedValue>), alignof(ArenaList<NamedValue>)))
        ArenaList<NamedValue>(arena);
}

ArenaList<NamedValue> *copyValues(Arena &arena, const ArenaList<NamedValue> &original)
{
    ArenaList<NamedValue> *copy = makeValues(arena);
    for (const NamedValue &value : original) {
        copy->append({copyObject(arena, *value.name), copyData(arena, value.data)});
    }
    return copy;
}

} // namespace

// ------------------------------------------------------------------------------------------------ making

String *makeString(Arena &arena, std::string_view text)
{
    // The text stands behind its object.
    auto *string = new (arena.allocate(sizeof(String) + text.size() + 1, alignof(String))) String;
    char *copy = reinterpret_cast<char *>(string + 1);
    if (!text.empty()) {
        std::memcpy(copy, text.data(), text.size());
    }
    copy[text.size()] = '\0';
    string->cmpi.hdl = string;
    string->cmpi.ft = &stringTable;
    string->arena = &arena;
    string->isClone = false;
    string->text = copy;
    string->length = text.size();
    return string;
}

Array *makeArray(Arena &arena, CMPIType elementType, CMPICount size)
{
    Array *array = makeObject<Array>(arena, arrayTable);
    array->elementType = storedType(elementType);
    array->size = size;
    array->elements = arena.makeArray<CMPIData>(size);
    for (CMPICount i = 0; i < size; ++i) {
        array->elements[i] = nullData(array->elementType);
    }
    return array;
}

Path *makePath(Arena &arena, const cim::NameSpaces &nameSpaces, std::string_view nameSpace,
               std::string_view className)
{
    Path *path = makeObject<Path>(arena, pathTable);
    path->nameSpaces = &nameSpaces;
    path->nameSpace = nameSpace.empty() ? nullptr : makeString(arena, nameSpace);
    path->keys = makeValues(arena);
    setClassName(*path, className);
    return path;
}

Instance *makeInstance(Arena &arena, const Path &path)
{
    Instance *instance = makeObject<Instance>(arena, instanceTable);
    instance->klass = path.klass;
    instance->path = copyObject(arena, path);
    instance->lastSet = cim::noProperty;
    const std::size_t count = path.klass->properties.size();
    instance->values = static_cast<CMPIData *>(arena.allocate(count * sizeof(CMPIData), alignof(CMPIData)));
    for (std::size_t i = 0; i < count; ++i) {
        new (instance->values + i) CMPIData(nullData(path.klass->slots[i].cmpiCode));
    }
    for (const NamedValue &key : *instance->path->keys) {
        const std::size_t index = path.klass->placeOf(key.name->view());
        if (index != cim::noProperty && key.data.type == instance->values[index].type) {
            instance->values[index] = copyData(arena, key.data);
        }
    }
    return instance;
}

Args *makeArgs(Arena &arena)
{
    Args *args = makeObject<Args>(arena, argsTable);
    args->values = makeValues(arena);
    return args;
}

Enumeration *makeEnumeration(Arena &arena, CMPIType elementType)
{
    Enumeration *enumeration = makeObject<Enumeration>(arena, enumerationTable);
    enumeration->elementType = elementType;
    enumeration->elements = new (arena.allocate(sizeof(ArenaList<CMPIData>), alignof(ArenaList<CMPIData>)))
        ArenaList<CMPIData>(arena);
    return enumeration;
}

DateTime *makeDateTime(Arena &arena, CMPIUint64 microseconds, bool isInterval)
{
    char text[dateTimeLength + 1] = {};
    if (isInterval ? !formatInterval(microseconds, text)
                   : !formatTimestamp(static_cast<std::int64_t>(microseconds), text)) {
        return nullptr;
    }
    DateTime *dateTime = makeObject<DateTime>(arena, dateTimeTable);
    dateTime->microseconds = microseconds;
    dateTime->isInterval = isInterval;
    std::memcpy(dateTime->text, text, sizeof dateTime->text);
    return dateTime;
}

DateTime *makeDateTime(Arena &arena, std::string_view text)
{
    std::uint64_t microseconds = 0;
    bool isInterval = false;
    if (!parseDateTime(text, microseconds, isInterval)) {
        return nullptr;
    }
    DateTime *dateTime = makeObject<DateTime>(arena, dateTimeTable);
    dateTime->microseconds = microseconds;
    dateTime->isInterval = isInterval;
    std::memcpy(dateTime->text, text.data(), dateTimeLength);
    dateTime->text[dateTimeLength] = '\0';
    return dateTime;
}

Context *makeContext(Arena &arena)
{
    Context *context = makeObject<Context>(arena, contextTable);
    context->entries = makeValues(arena);
    return context;
}

SelectExpression *makeSelectExpression(Arena &arena, std::string_view query, std::string_view language)
{
    SelectExpression *expression = makeObject<SelectExpression>(arena, selectExpressionTable);
    expression->query = makeString(arena, query);
    expression->language = makeString(arena, language);
    return expression;
}

Error *makeError(Arena &arena)
{
    return makeObject<Error>(arena, errorTable);
}

Result *makeResult(Arena &arena, ResultSink &sink)
{
    Result *result = makeObject<Result>(arena, resultTable);
    result->sink = &sink;
    return result;
}

// ----------------------------------------------------------------------------------------------- copying

String *copyObject(Arena &arena, const String &original)
{
    if (original.arena == &arena) {
        return const_cast<String *>(&original); // texts never change
    }
    return makeString(arena, original.view());
}

Array *copyObject(Arena &arena, const Array &original)
{
    Array *copy = makeObject<Array>(arena, arrayTable);
    copy->elementType = original.elementType;
    copy->size = original.size;
    copy->elements = arena.makeArray<CMPIData>(original.size);
    for (CMPICount i = 0; i < original.size; ++i) {
        copy->elements[i] = copyData(arena, original.elements[i]);
    }
    return copy;
}

Path *copyObject(Arena &arena, const Path &original)
{
    Path *copy = makeObject<Path>(arena, pathTable);
    copy->nameSpaces = original.nameSpaces;
    copy->host = copyIfAny(arena, original.host);
    copy->nameSpace = copyIfAny(arena, original.nameSpace);
    copy->className = copyObject(arena, *original.className);
    copy->klass = original.klass;
    copy->keys = copyValues(arena, *original.keys);
    return copy;
}

Instance *copyObject(Arena &arena, const Instance &original)
{
    Instance *copy = makeObject<Instance>(arena, instanceTable);
    copy->klass = original.klass;
    copy->lastSet = original.lastSet;
    copy->path = copyObject(arena, *original.path);
    const std::size_t count = original.klass->properties.size();
    copy->values = static_cast<CMPIData *>(arena.allocate(count * sizeof(CMPIData), alignof(CMPIData)));
    for (std::size_t i = 0; i < count; ++i) {
        new (copy->values + i) CMPIData(copyData(arena, original.values[i]));
    }
    for (const auto &[from, to] :
         {std::pair{original.visible, &copy->visible}, std::pair{original.settable, &copy->settable}}) {
        if (from != nullptr) {
            PropertySet *set = makePropertySet(arena, *original.klass);
            std::memcpy(set->bits, from->bits, from->words * sizeof *set->bits);
            *to = set;
        }
    }
    return copy;
}

Args *copyObject(Arena &arena, const Args &original)
{
    Args *copy = makeObject<Args>(arena, argsTable);
    copy->values = copyValues(arena, *original.values);
    return copy;
}

Enumeration *copyObject(Arena &arena, const Enumeration &original)
{
    Enumeration *copy = makeEnumeration(arena, original.elementType);
    for (const CMPIData &element : *original.elements) {
        copy->elements->append(copyData(arena, element));
    }
    copy->next = original.next;
    return copy;
}

DateTime *copyObject(Arena &arena, const DateTime &original)
{
    if (original.arena == &arena) {
        return const_cast<DateTime *>(&original); // nor do dates
    }
    DateTime *copy = makeObject<DateTime>(arena, dateTimeTable);
    copy->microseconds = original.microseconds;
    copy->isInterval = original.isInterval;
    std::memcpy(copy->text, original.text, sizeof copy->text);
    return copy;
}

Context *copyObject(Arena &arena, const Context &original)
{
    Context *copy = makeObject<Context>(arena, contextTable);
    copy->entries = copyValues(arena, *original.entries);
    copy->request = original.request;
    copy->depth = original.depth;
    return copy;
}

SelectExpression *copyObject(Arena &arena, const SelectExpression &original)
{
    return makeSelectExpression(arena, original.query->view(), original.language->view());
}

Error *copyObject(Arena &arena, const Error &original)
{
    Error *copy = makeError(arena);
    copy->type = original.type;
    copy->severity = original.severity;
    copy->probableCause = original.probableCause;
    copy->sourceFormat = original.sourceFormat;
    copy->statusCode = original.statusCode;
    copy->otherType = copyIfAny(arena, original.otherType);
    copy->owner = copyIfAny(arena, original.owner);
    copy->messageId = copyIfAny(arena, original.messageId);
    copy->message = copyIfAny(arena, original.message);
    copy->probableCauseDescription = copyIfAny(arena, original.probableCauseDescription);
    copy->source = copyIfAny(arena, original.source);
    copy->otherSourceFormat = copyIfAny(arena, original.otherSourceFormat);
    copy->statusCodeDescription = copyIfAny(arena, original.statusCodeDescription);
    copy->recommendedActions = copyIfAny(arena, original.recommendedActions);
    copy->messageArguments = copyIfAny(arena, original.messageArguments);
    return copy;
}

// ------------------------------------------------------------------------------------------------ status

void setStatus(CMPIStatus *status, CMPIrc code, Arena *arena, const char *text)
{
    if (status != nullptr) {
        status->rc = code;
        status->msg = arena == nullptr || text == nullptr ? nullptr : &makeString(*arena, text)->cmpi;
    }
}

} // namespace host
