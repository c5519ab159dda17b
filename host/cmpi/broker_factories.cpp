// SPDX-License-Identifier: Apache-2.0
// The broker's encapsulation table: makes objects, asks about them, writes messages.
#include "cmpi/broker.h"
#include "cmpi/call.h"
#include "cmpi/guarded.h"
#include "cmpi/object_tables.h"
#include "cmpi/scalar_text.h"
#include "log/log.h"

#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/time.h>

namespace host
{
namespace
{

/** Where the objects of this thread's call are made. Null, with the status filled, when there is no call or
 * when it has had its share of memory. */
Arena *objectArena(const CMPIBroker *broker, CMPIStatus *status)
{
    const Call *call = currentCall();
    if (Broker::behind(broker) == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
        return nullptr;
    }
    if (call == nullptr) {
        setStatus(status, CMPI_RC_ERR_FAILED);
        return nullptr;
    }
    if (call->arena->exhausted()) {
        setStatus(status, CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED);
        return nullptr;
    }
    setStatus(status, CMPI_RC_OK);
    return call->arena;
}

CMPIInstance *newInstance(const CMPIBroker *broker, const CMPIObjectPath *path, CMPIStatus *status)
{
    Arena *arena = objectArena(broker, status);
    if (arena == nullptr) {
        return nullptr;
    }
    const Path *given = checked<Path>(path, status);
    if (given == nullptr) {
        return nullptr;
    }
    if (given->klass == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_CLASS);
        return nullptr;
    }
    Instance *instance = makeInstance(*arena, *given);
    applyDefaults(*instance);
    return &instance->cmpi;
}

CMPIObjectPath *newObjectPath(const CMPIBroker *broker, const char *nameSpace, const char *className,
                              CMPIStatus *status)
{
    Arena *arena = objectArena(broker, status);
    if (arena == nullptr) {
        return nullptr;
    }
    if (className == nullptr || *className == '\0') {
        setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    return &makePath(*arena, Broker::behind(broker)->nameSpaces(), nameSpace != nullptr ? nameSpace : "",
                     className)
                ->cmpi;
}

CMPIArgs *newArgs(const CMPIBroker *broker, CMPIStatus *status)
{
    Arena *arena = objectArena(broker, status);
    return arena != nullptr ? &makeArgs(*arena)->cmpi : nullptr;
}

CMPIString *newString(const CMPIBroker *broker, const char *text, CMPIStatus *status)
{
    Arena *arena = objectArena(broker, status);
    if (arena == nullptr) {
        return nullptr;
    }
    if (text == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    return &makeString(*arena, text)->cmpi;
}

CMPIArray *newArray(const CMPIBroker *broker, CMPICount size, CMPIType type, CMPIStatus *status)
{
    constexpr CMPICount maxArraySize = 1000000;
    Arena *arena = objectArena(broker, status);
    if (arena == nullptr) {
        return nullptr;
    }
    if ((type & CMPI_ARRAY) != 0 || type == CMPI_null) {
        setStatus(status, CMPI_RC_ERR_INVALID_DATA_TYPE);
        return nullptr;
    }
    if (size > maxArraySize) {
        setStatus(status, CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED);
        return nullptr;
    }
    return &makeArray(*arena, type, size)->cmpi;
}

CMPIDateTime *newDateTime(const CMPIBroker *broker, CMPIStatus *status)
{
    Arena *arena = objectArena(broker, status);
    if (arena == nullptr) {
        return nullptr;
    }
    timeval now = {};
    gettimeofday(&now, nullptr);
    const auto microseconds =
        static_cast<CMPIUint64>(now.tv_sec) * 1000000 + static_cast<CMPIUint64>(now.tv_usec);
    DateTime *made = makeDateTime(*arena, microseconds, false);
    return made != nullptr ? &made->cmpi : nullptr;
}

/** A point in time may lie before 1970: then the number is negative, in two's complement. */
CMPIDateTime *newDateTimeFromBinary(const CMPIBroker *broker, CMPIUint64 microseconds, CMPIBoolean isInterval,
                                    CMPIStatus *status)
{
    Arena *arena = objectArena(broker, status);
    if (arena == nullptr) {
        return nullptr;
    }
    DateTime *made = makeDateTime(*arena, microseconds, isInterval != 0);
    if (made == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    return &made->cmpi;
}

CMPIDateTime *newDateTimeFromChars(const CMPIBroker *broker, const char *text, CMPIStatus *status)
{
    Arena *arena = objectArena(broker, status);
    if (arena == nullptr) {
        return nullptr;
    }
    DateTime *made = text != nullptr ? makeDateTime(*arena, std::string_view(text)) : nullptr;
    if (made == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    return &made->cmpi;
}

CMPISelectExp *newSelectExp(const CMPIBroker *broker, const char *query, const char *language,
                            CMPIArray **projection, CMPIStatus *status)
{
    Arena *arena = objectArena(broker, status);
    if (projection != nullptr) {
        *projection = nullptr; // queries are not taken apart
    }
    if (arena == nullptr) {
        return nullptr;
    }
    if (query == nullptr || language == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return nullptr;
    }
    return &makeSelectExpression(*arena, query, language)->cmpi;
}

CMPIBoolean classPathIsA(const CMPIBroker *broker, const CMPIObjectPath *path, const char *className,
                         CMPIStatus *status)
{
    const Broker *self = Broker::behind(broker);
    const Path *given = checked<Path>(path, status);
    if (self == nullptr || given == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
        return 0;
    }
    if (className == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return 0;
    }
    if (cim::sameName(given->className->view(), className)) {
        return 1;
    }
    const cim::Class *ancestor = self->nameSpaces().findClass(textOf(given->nameSpace), className);
    if (given->klass == nullptr || ancestor == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_CLASS);
        return 0;
    }
    return given->klass->isA(*ancestor) ? 1 : 0;
}

// ------------------------------------------------------------------------------------------- about objects

/** The first members of every encapsulated object. */
struct AnyObject {
    const void *hdl;
    const void *ft;
};

struct KnownType {
    const void *table;
    const char *name;
};

const KnownType *typeOf(const void *object)
{
    static const KnownType types[] = {
        {&stringTable, "CMPIString"},
        {&arrayTable, "CMPIArray"},
        {&pathTable, "CMPIObjectPath"},
        {&instanceTable, "CMPIInstance"},
        {&argsTable, "CMPIArgs"},
        {&enumerationTable, "CMPIEnumeration"},
        {&dateTimeTable, "CMPIDateTime"},
        {&contextTable, "CMPIContext"},
        {&selectExpressionTable, "CMPISelectExp"},
        {&errorTable, "CMPIError"},
        {&resultTable, "CMPIResult"},
    };
    const auto *any = static_cast<const AnyObject *>(object);
    if (any == nullptr || any->hdl == nullptr) {
        return nullptr;
    }
    for (const KnownType &type : types) {
        if (type.table == any->ft) {
            return &type;
        }
    }
    return nullptr;
}

template <typename T>
const T &as(const void *object)
{
    return *static_cast<const T *>(static_cast<const AnyObject *>(object)->hdl);
}

String *joinValues(Arena &arena, const ArenaList<NamedValue> &values)
{
    std::string text;
    for (const NamedValue &value : values) {
        text += text.empty() ? "" : ", ";
        text += value.name->view();
        text += "=";
        text += valueText(arena, value.data)->view();
    }
    return makeString(arena, text);
}

CMPIString *toStringOfBroker(const CMPIBroker *broker, const void *object, CMPIStatus *status)
{
    Arena *arena = objectArena(broker, status);
    if (arena == nullptr) {
        return nullptr;
    }
    const KnownType *type = typeOf(object);
    if (type == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
        return nullptr;
    }
    CMPIData data = {};
    if (type->table == &stringTable) {
        return &makeString(*arena, as<String>(object).view())->cmpi;
    }
    if (type->table == &pathTable) {
        return &pathText(*arena, as<Path>(object))->cmpi;
    }
    if (type->table == &dateTimeTable) {
        return &makeString(*arena, as<DateTime>(object).text)->cmpi;
    }
    if (type->table == &arrayTable) {
        data.type = static_cast<CMPIType>(as<Array>(object).elementType | CMPI_ARRAY);
        data.value.array = const_cast<CMPIArray *>(&as<Array>(object).cmpi);
        return &valueText(*arena, data)->cmpi;
    }
    if (type->table == &instanceTable) {
        data.type = CMPI_instance;
        data.value.inst = const_cast<CMPIInstance *>(&as<Instance>(object).cmpi);
        return &valueText(*arena, data)->cmpi;
    }
    if (type->table == &argsTable) {
        return &joinValues(*arena, *as<Args>(object).values)->cmpi;
    }
    if (type->table == &contextTable) {
        return &joinValues(*arena, *as<Context>(object).entries)->cmpi;
    }
    if (type->table == &selectExpressionTable) {
        return &makeString(*arena, as<SelectExpression>(object).query->view())->cmpi;
    }
    if (type->table == &errorTable && as<Error>(object).message != nullptr) {
        return &makeString(*arena, as<Error>(object).message->view())->cmpi;
    }
    return &makeString(*arena, type->name)->cmpi;
}

CMPIBoolean isOfType(const CMPIBroker *broker, const void *object, const char *name, CMPIStatus *status)
{
    const KnownType *type = typeOf(object);
    if (Broker::behind(broker) == nullptr || type == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
        return 0;
    }
    if (name == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_PARAMETER);
        return 0;
    }
    setStatus(status, CMPI_RC_OK);
    return std::string_view(type->name) == name ? 1 : 0;
}

CMPIString *getType(const CMPIBroker *broker, const void *object, CMPIStatus *status)
{
    Arena *arena = objectArena(broker, status);
    if (arena == nullptr) {
        return nullptr;
    }
    const KnownType *type = typeOf(object);
    if (type == nullptr) {
        setStatus(status, CMPI_RC_ERR_INVALID_HANDLE);
        return nullptr;
    }
    return &makeString(*arena, type->name)->cmpi;
}

// ------------------------------------------------------------------------------------------------ messages

constexpr CMPICount maxInserts = 10; // $0 to $9

/** Reads one insert of a message: its type, and the value that the type asks for. False when the type has
 * no place among the inserts; then nothing after it can be read. */
bool readInsert(va_list &arguments, std::string &text)
{
    char number[64];
    switch (va_arg(arguments, int)) {
    case CMPI_sint64:
        std::snprintf(number, sizeof number, "%lld", va_arg(arguments, long long));
        break;
    case CMPI_uint64:
        std::snprintf(number, sizeof number, "%llu", va_arg(arguments, unsigned long long));
        break;
    case CMPI_sint32:
        std::snprintf(number, sizeof number, "%d", va_arg(arguments, int));
        break;
    case CMPI_uint32:
        std::snprintf(number, sizeof number, "%u", va_arg(arguments, unsigned));
        break;
    case CMPI_real64:
        std::snprintf(number, sizeof number, "%g", va_arg(arguments, double));
        break;
    case CMPI_boolean:
        std::snprintf(number, sizeof number, "%s", va_arg(arguments, int) != 0 ? "true" : "false");
        break;
    case CMPI_chars: {
        const char *chars = va_arg(arguments, const char *);
        text = chars != nullptr ? chars : "";
        return true;
    }
    case CMPI_string: {
        const String *string = behind<String>(va_arg(arguments, const CMPIString *));
        text = string != nullptr ? string->text : "";
        return true;
    }
    default:
        return false;
    }
    text = number;
    return true;
}

/** There are no message catalogues: the default text is the message, with $0 to $9 replaced. */
CMPIString *formatMessage(const CMPIBroker *broker, const char *defaultText, CMPIStatus *status,
                          CMPICount count, va_list &arguments)
{
    Arena *arena = objectArena(broker, status);
    if (arena == nullptr) {
        return nullptr;
    }
    std::string inserts[maxInserts];
    for (CMPICount i = 0; i < count && i < maxInserts; ++i) {
        if (!readInsert(arguments, inserts[i])) {
            setStatus(status, CMPI_RC_ERR_INVALID_DATA_TYPE);
            return nullptr;
        }
    }
    std::string message;
    for (const char *c = defaultText != nullptr ? defaultText : ""; *c != '\0'; ++c) {
        const auto insert = static_cast<CMPICount>(c[1] - '0');
        if (*c == '$' && c[1] >= '0' && c[1] <= '9' && insert < count) {
            message += inserts[insert];
            ++c;
        } else {
            message += *c;
        }
    }
    return &makeString(*arena, message)->cmpi;
}

CMPIString *getMessage(const CMPIBroker *broker, const char *, const char *defaultText, CMPIStatus *status,
                       CMPICount count, ...)
{
    va_list arguments;
    va_start(arguments, count);
    CMPIString *message = formatMessage(broker, defaultText, status, count, arguments);
    va_end(arguments);
    return message;
}

CMPIString *getMessage2(const CMPIBroker *broker, const char *, const CMPIMsgFileHandle,
                        const char *defaultText, CMPIStatus *status, CMPICount count, ...)
{
    va_list arguments;
    va_start(arguments, count);
    CMPIString *message = formatMessage(broker, defaultText, status, count, arguments);
    va_end(arguments);
    return message;
}

CMPIStatus openMessageFile(const CMPIBroker *, const char *, CMPIMsgFileHandle *handle)
{
    if (handle != nullptr) {
        *handle = nullptr;
    }
    return makeStatus(CMPI_RC_ERR_NOT_SUPPORTED);
}

CMPIStatus closeMessageFile(const CMPIBroker *, const CMPIMsgFileHandle)
{
    return makeStatus(CMPI_RC_ERR_NOT_SUPPORTED);
}

const char *textOf(const char *text, const CMPIString *string)
{
    const String *given = behind<String>(string);
    return given != nullptr ? given->text : text != nullptr ? text : "";
}

CMPIStatus logMessage(const CMPIBroker *broker, CMPISeverity severity, const char *id, const char *text,
                      const CMPIString *string)
{
    if (Broker::behind(broker) == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    const char *word = severity == CMPI_SEV_ERROR     ? "error"
                       : severity == CMPI_SEV_WARNING ? "warning"
                       : severity == CMPI_SEV_INFO    ? "information"
                                                      : "debug";
    logLine("provider %s: %s%s%s", word, id != nullptr ? id : "", id != nullptr ? ": " : "",
            textOf(text, string));
    return makeStatus(CMPI_RC_OK);
}

/** Trace messages are written when the environment asks for them with DISPLAY_HOST_TRACE. */
CMPIStatus trace(const CMPIBroker *broker, CMPILevel, const char *component, const char *text,
                 const CMPIString *string)
{
    static const bool wanted = std::getenv("DISPLAY_HOST_TRACE") != nullptr;
    if (Broker::behind(broker) == nullptr) {
        return makeStatus(CMPI_RC_ERR_INVALID_HANDLE);
    }
    if (wanted) {
        logLine("trace %s: %s", component != nullptr ? component : "", textOf(text, string));
    }
    return makeStatus(CMPI_RC_OK);
}

CMPIError *newCMPIError(const CMPIBroker *broker, const char *owner, const char *messageId,
                        const char *message, const CMPIErrorSeverity severity,
                        const CMPIErrorProbableCause probableCause, const CMPIrc code, CMPIStatus *status)
{
    Arena *arena = objectArena(broker, status);
    if (arena == nullptr) {
        return nullptr;
    }
    Error *error = makeError(*arena);
    error->owner = owner != nullptr ? makeString(*arena, owner) : nullptr;
    error->messageId = messageId != nullptr ? makeString(*arena, messageId) : nullptr;
    error->message = message != nullptr ? makeString(*arena, message) : nullptr;
    error->severity = severity;
    error->probableCause = probableCause;
    error->statusCode = code;
    return &error->cmpi;
}

} // namespace

const CMPIBrokerEncFT brokerFactoryTable = {
    tableVersion,
    guarded<newInstance>,
    guarded<newObjectPath>,
    guarded<newArgs>,
    guarded<newString>,
    guarded<newArray>,
    guarded<newDateTime>,
    guarded<newDateTimeFromBinary>,
    guarded<newDateTimeFromChars>,
    guarded<newSelectExp>,
    guarded<classPathIsA>,
    guarded<toStringOfBroker>,
    isOfType,
    guarded<getType>,
    getMessage,
    logMessage,
    trace,
    guarded<newCMPIError>,
    openMessageFile,
    closeMessageFile,
    getMessage2,
};

} // namespace host
