#include "cmpi/objects.h"

#include "cmpi/date_time.h"

#include <cinttypes>
#include <cstdio>
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

// ------------------------------------------------------------------------------------------------ making

String *makeString(Arena &arena, std::string_view text)
{
    String *string = makeObject<String>(arena, STRING_TABLE);
    string->text = arena.copyText(text);
    string->length = text.size();
    return string;
}

Array *makeArray(Arena &arena, CMPIType elementType, CMPICount size)
{
    Array *array = makeObject<Array>(arena, ARRAY_TABLE);
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
    Path *path = makeObject<Path>(arena, PATH_TABLE);
    path->nameSpaces = &nameSpaces;
    path->nameSpace = nameSpace.empty() ? nullptr : makeString(arena, nameSpace);
    path->keys = makeValues(arena);
    setClassName(*path, className);
    return path;
}

Instance *makeInstance(Arena &arena, const Path &path)
{
    Instance *instance = makeObject<Instance>(arena, INSTANCE_TABLE);
    instance->klass = path.klass;
    instance->path = copyObject(arena, path);
    const std::size_t count = path.klass->properties.size();
    instance->values = arena.makeArray<CMPIData>(count);
    for (std::size_t i = 0; i < count; ++i) {
        instance->values[i] = nullData(path.klass->properties[i].cmpiCode());
    }
    for (const NamedValue &key : *instance->path->keys) {
        const std::size_t index = path.klass->placeOf(key.name->view());
        if (index != cim::NO_PROPERTY && key.data.type == instance->values[index].type) {
            instance->values[index] = copyData(arena, key.data);
        }
    }
    return instance;
}

Args *makeArgs(Arena &arena)
{
    Args *args = makeObject<Args>(arena, ARGS_TABLE);
    args->values = makeValues(arena);
    return args;
}

Enumeration *makeEnumeration(Arena &arena, CMPIType elementType)
{
    Enumeration *enumeration = makeObject<Enumeration>(arena, ENUMERATION_TABLE);
    enumeration->elementType = elementType;
    enumeration->elements = new (arena.allocate(sizeof(ArenaList<CMPIData>), alignof(ArenaList<CMPIData>)))
        ArenaList<CMPIData>(arena);
    return enumeration;
}

DateTime *makeDateTime(Arena &arena, CMPIUint64 microseconds, bool isInterval)
{
    char text[DATE_TIME_LENGTH + 1] = {};
    if (isInterval ? !formatInterval(microseconds, text)
                   : !formatTimestamp(static_cast<std::int64_t>(microseconds), text)) {
        return nullptr;
    }
    DateTime *dateTime = makeObject<DateTime>(arena, DATE_TIME_TABLE);
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
    DateTime *dateTime = makeObject<DateTime>(arena, DATE_TIME_TABLE);
    dateTime->microseconds = microseconds;
    dateTime->isInterval = isInterval;
    std::memcpy(dateTime->text, text.data(), DATE_TIME_LENGTH);
    dateTime->text[DATE_TIME_LENGTH] = '\0';
    return dateTime;
}

Context *makeContext(Arena &arena)
{
    Context *context = makeObject<Context>(arena, CONTEXT_TABLE);
    context->entries = makeValues(arena);
    return context;
}

SelectExpression *makeSelectExpression(Arena &arena, std::string_view query, std::string_view language)
{
    SelectExpression *expression = makeObject<SelectExpression>(arena, SELECT_EXPRESSION_TABLE);
    expression->query = makeString(arena, query);
    expression->language = makeString(arena, language);
    return expression;
}

Error *makeError(Arena &arena)
{
    return makeObject<Error>(arena, ERROR_TABLE);
}

Result *makeResult(Arena &arena, ResultSink &sink)
{
    Result *result = makeObject<Result>(arena, RESULT_TABLE);
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
    Array *copy = makeObject<Array>(arena, ARRAY_TABLE);
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
    Path *copy = makeObject<Path>(arena, PATH_TABLE);
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
    Instance *copy = makeObject<Instance>(arena, INSTANCE_TABLE);
    copy->klass = original.klass;
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
    Args *copy = makeObject<Args>(arena, ARGS_TABLE);
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
    DateTime *copy = makeObject<DateTime>(arena, DATE_TIME_TABLE);
    copy->microseconds = original.microseconds;
    copy->isInterval = original.isInterval;
    std::memcpy(copy->text, original.text, sizeof copy->text);
    return copy;
}

Context *copyObject(Arena &arena, const Context &original)
{
    Context *copy = makeObject<Context>(arena, CONTEXT_TABLE);
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

// ------------------------------------------------------------------------------------------------ values

CMPIData nullData(CMPIType type, CMPIValueState state)
{
    CMPIData data = {};
    data.type = type;
    data.state = state;
    return data;
}

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
    if ((type & CMPI_ARRAY) != 0) {
        takeObject<Array>(arena, value->array, data.value.array, data);
        // An array says itself what it holds; a type that contradicts it is a provider's mistake.
        if (data.state == CMPI_goodValue &&
            behind<Array>(data.value.array)->elementType != (data.type & ~CMPI_ARRAY)) {
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
    case CMPI_chars:
        data.value.string = &makeString(arena, reinterpret_cast<const char *>(value))->cmpi;
        return CMPI_RC_OK;
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

CMPIData copyData(Arena &arena, const CMPIData &data)
{
    if (isNull(data)) {
        return data;
    }
    // Simple values are copied with the structure; takeValue() knows the others. What is stored is always of
    // a type that can be taken.
    if ((data.type & CMPI_ARRAY) == 0 && (data.type & CMPI_ENC) == 0) {
        return data;
    }
    CMPIData copy = {};
    takeValue(arena, &data.value, data.type, copy);
    copy.state = static_cast<CMPIValueState>(copy.state | data.state);
    return copy;
}

// ------------------------------------------------------------------------------------------- the parts

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
    const cim::Property &property = instance.klass->properties[index];
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
        return behind<String>(left.value.string)->view() == behind<String>(right.value.string)->view();
    case CMPI_ref:
        return samePath(*behind<Path>(left.value.ref), *behind<Path>(right.value.ref));
    case CMPI_dateTime:
        return behind<DateTime>(left.value.dateTime)->microseconds ==
               behind<DateTime>(right.value.dateTime)->microseconds;
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
        return mix(hash, behind<String>(data.value.string)->view(), false);
    case CMPI_ref:
        return hashPath(*behind<Path>(data.value.ref));
    case CMPI_dateTime:
        return behind<DateTime>(data.value.dateTime)->microseconds;
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
        if (index != cim::NO_PROPERTY) {
            set->insert(index);
        }
    }
    return set;
}

// ------------------------------------------------------------------------------------------------- texts

namespace
{

/** A text that grows in an arena. */
class TextBuilder
{
  public:
    explicit TextBuilder(Arena &arena) : text_(arena) {}

    void add(std::string_view text)
    {
        for (const char letter : text) {
            text_.append(letter);
        }
    }

    void addQuoted(std::string_view text)
    {
        add("\"");
        for (const char letter : text) {
            if (letter == '"' || letter == '\\') {
                text_.append('\\');
            }
            text_.append(letter);
        }
        add("\"");
    }

    String *finish()
    {
        return makeString(text_.arena(), {text_.begin(), text_.size()});
    }

  private:
    ArenaList<char> text_;
};

void addData(TextBuilder &text, const CMPIData &data, bool quoted);

void addPath(TextBuilder &text, const Path &path)
{
    if (path.host != nullptr) {
        text.add("//");
        text.add(path.host->view());
        text.add("/");
    }
    if (path.nameSpace != nullptr) {
        text.add(path.nameSpace->view());
        text.add(":");
    }
    text.add(path.className->view());
    char separator[] = ".";
    for (const NamedValue &key : *path.keys) {
        text.add(separator);
        separator[0] = ',';
        text.add(key.name->view());
        text.add("=");
        addData(text, key.data, true);
    }
}

void addInstance(TextBuilder &text, const Instance &instance)
{
    text.add("instance of ");
    text.add(instance.klass->name);
    text.add(" {");
    for (std::size_t i = 0; i < instance.klass->properties.size(); ++i) {
        text.add(" ");
        text.add(instance.klass->properties[i].name);
        text.add(" = ");
        addData(text, instance.values[i], true);
        text.add(";");
    }
    text.add(" }");
}

void addScalar(TextBuilder &text, const CMPIData &data, bool quoted)
{
    char number[48];
    switch (data.type) {
    case CMPI_boolean:
        text.add(data.value.boolean != 0 ? "TRUE" : "FALSE");
        return;
    case CMPI_char16:
        std::snprintf(number, sizeof number, "%u", static_cast<unsigned>(data.value.char16));
        break;
    case CMPI_uint8:
        std::snprintf(number, sizeof number, "%u", static_cast<unsigned>(data.value.uint8));
        break;
    case CMPI_uint16:
        std::snprintf(number, sizeof number, "%u", static_cast<unsigned>(data.value.uint16));
        break;
    case CMPI_uint32:
        std::snprintf(number, sizeof number, "%" PRIu32, static_cast<std::uint32_t>(data.value.uint32));
        break;
    case CMPI_uint64:
        std::snprintf(number, sizeof number, "%" PRIu64, static_cast<std::uint64_t>(data.value.uint64));
        break;
    case CMPI_sint8:
        std::snprintf(number, sizeof number, "%d", static_cast<int>(data.value.sint8));
        break;
    case CMPI_sint16:
        std::snprintf(number, sizeof number, "%d", static_cast<int>(data.value.sint16));
        break;
    case CMPI_sint32:
        std::snprintf(number, sizeof number, "%" PRId32, static_cast<std::int32_t>(data.value.sint32));
        break;
    case CMPI_sint64:
        std::snprintf(number, sizeof number, "%" PRId64, static_cast<std::int64_t>(data.value.sint64));
        break;
    case CMPI_real32:
        std::snprintf(number, sizeof number, "%.8e", static_cast<double>(data.value.real32));
        break;
    case CMPI_real64:
        std::snprintf(number, sizeof number, "%.16e", data.value.real64);
        break;
    case CMPI_string: {
        const std::string_view string = behind<String>(data.value.string)->view();
        quoted ? text.addQuoted(string) : text.add(string);
        return;
    }
    case CMPI_dateTime:
        quoted ? text.addQuoted(behind<DateTime>(data.value.dateTime)->text)
               : text.add(behind<DateTime>(data.value.dateTime)->text);
        return;
    case CMPI_ref: {
        const Path &path = *behind<Path>(data.value.ref);
        if (quoted) {
            text.addQuoted(pathText(*path.arena, path)->view());
        } else {
            addPath(text, path);
        }
        return;
    }
    case CMPI_instance:
        addInstance(text, *behind<Instance>(data.value.inst));
        return;
    default:
        std::snprintf(number, sizeof number, "(type 0x%x)", static_cast<unsigned>(data.type));
        break;
    }
    text.add(number);
}

void addData(TextBuilder &text, const CMPIData &data, bool quoted)
{
    if (isNull(data)) {
        text.add("NULL");
        return;
    }
    if ((data.type & CMPI_ARRAY) == 0) {
        addScalar(text, data, quoted);
        return;
    }
    const Array &array = *behind<Array>(data.value.array);
    text.add("{");
    for (CMPICount i = 0; i < array.size; ++i) {
        text.add(i == 0 ? "" : ", ");
        addData(text, array.elements[i], true);
    }
    text.add("}");
}

} // namespace

String *pathText(Arena &arena, const Path &path)
{
    TextBuilder text(arena);
    addPath(text, path);
    return text.finish();
}

String *valueText(Arena &arena, const CMPIData &data)
{
    TextBuilder text(arena);
    addData(text, data, false);
    return text.finish();
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
