// SPDX-License-Identifier: Apache-2.0
// What stands behind the encapsulated CMPI types. Each structure begins with the CMPI structure that
// providers see; its handle points back at the structure itself.
//
// Texts, once made, never change: a copy within one arena shares them. Everything else is copied when it is
// put into another object, as CMPI has it.
#ifndef HOST_CMPI_OBJECTS_H
#define HOST_CMPI_OBJECTS_H

#include "cim/name_spaces.h"
#include "cmpi/arena.h"

#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace host
{

/** What all of them have in common. */
template <typename Type>
struct Encapsulated {
    using Cmpi = Type;

    Cmpi cmpi;
    Arena *arena; // where the object lives and grows
    bool isClone; // then the arena belongs to the object alone
};

struct String : Encapsulated<CMPIString> {
    const char *text;
    std::size_t length;

    std::string_view view() const
    {
        return {text, length};
    }
};

/** The text, or nothing of a null pointer. */
inline std::string_view textOf(const String *text)
{
    return text != nullptr ? text->view() : std::string_view();
}

struct Array : Encapsulated<CMPIArray> {
    CMPIType elementType;
    CMPICount size;
    CMPIData *elements;
};

/** The name of an element and its value. */
struct NamedValue {
    String *name;
    CMPIData data;
};

struct Path : Encapsulated<CMPIObjectPath> {
    const cim::NameSpaces *nameSpaces;
    String *host;      // null: none
    String *nameSpace; // null: none
    String *className;
    const cim::Class *klass; // null: the class is not known
    ArenaList<NamedValue> *keys;
};

/** The set of properties of a class that somebody wants to see, by their places. */
struct PropertySet {
    std::size_t words;
    std::uint64_t *bits;

    bool contains(std::size_t index) const
    {
        return (bits[index / 64] >> (index % 64) & 1u) != 0;
    }

    void insert(std::size_t index)
    {
        bits[index / 64] |= std::uint64_t{1} << (index % 64);
    }
};

struct Instance : Encapsulated<CMPIInstance> {
    Path *path;
    const cim::Class *klass;     // never null
    CMPIData *values;            // one for each property of the class
    const PropertySet *visible;  // null: all are
    const PropertySet *settable; // null: all are; others are ignored when they are set
    std::size_t lastSet;         // the place of the property that was set last, or noProperty
};

struct Args : Encapsulated<CMPIArgs> {
    ArenaList<NamedValue> *values;
};

struct Enumeration : Encapsulated<CMPIEnumeration> {
    CMPIType elementType;
    ArenaList<CMPIData> *elements;
    std::size_t next;
};

struct DateTime : Encapsulated<CMPIDateTime> {
    CMPIUint64 microseconds;
    bool isInterval;
    char text[26];
};

struct Context : Encapsulated<CMPIContext> {
    ArenaList<NamedValue> *entries;
    // For threads that a provider attaches with this context.
    std::uint64_t request;
    unsigned depth;
};

struct SelectExpression : Encapsulated<CMPISelectExp> {
    String *query;
    String *language;
};

struct Error : Encapsulated<CMPIError> {
    CMPIErrorType type;
    CMPIErrorSeverity severity;
    CMPIErrorProbableCause probableCause;
    CMPIErrorSrcFormat sourceFormat;
    CMPIrc statusCode;
    String *otherType;
    String *owner;
    String *messageId;
    String *message;
    String *probableCauseDescription;
    String *source;
    String *otherSourceFormat;
    String *statusCodeDescription;
    Array *recommendedActions;
    Array *messageArguments;
};

/** Receives what a provider returns. */
class ResultSink
{
  public:
    virtual CMPIrc takeData(const CMPIValue *value, CMPIType type) = 0;
    virtual CMPIrc takeInstance(const Instance &instance) = 0;
    virtual CMPIrc takePath(const Path &path) = 0;
    virtual void takeError(const Error &error) = 0;
    virtual void done() = 0;

  protected:
    ~ResultSink() = default;
};

struct Result : Encapsulated<CMPIResult> {
    ResultSink *sink;
};

// The function tables, one for each type.
extern const CMPIStringFT stringTable;
extern const CMPIArrayFT arrayTable;
extern const CMPIObjectPathFT pathTable;
extern const CMPIInstanceFT instanceTable;
extern const CMPIArgsFT argsTable;
extern const CMPIEnumerationFT enumerationTable;
extern const CMPIDateTimeFT dateTimeTable;
extern const CMPIContextFT contextTable;
extern const CMPISelectExpFT selectExpressionTable;
extern const CMPIErrorFT errorTable;
extern const CMPIResultFT resultTable;

/** The CMPI version of all tables. */
inline constexpr CMPIVersion tableVersion = 200;

/** The object behind a CMPI pointer; null for a null pointer and for an object without handle. */
template <typename T>
T *behind(const typename T::Cmpi *object)
{
    return object == nullptr ? nullptr : static_cast<T *>(const_cast<void *>(object->hdl));
}

// ------------------------------------------------------------------------------------------------ making

String *makeString(Arena &arena, std::string_view text);
Array *makeArray(Arena &arena, CMPIType elementType, CMPICount size);
Path *makePath(Arena &arena, const cim::NameSpaces &nameSpaces, std::string_view nameSpace,
               std::string_view className);
/** An instance of the path's class, which must be known; the key properties take the values of the keys. */
Instance *makeInstance(Arena &arena, const Path &path);
Args *makeArgs(Arena &arena);
Enumeration *makeEnumeration(Arena &arena, CMPIType elementType);
/** Null when the value has no CIM text: years outside 0 to 9999, intervals beyond 99999999 days. */
DateTime *makeDateTime(Arena &arena, CMPIUint64 microseconds, bool isInterval);
/** Null when the text is not a CIM datetime. Its text is kept as it is. */
DateTime *makeDateTime(Arena &arena, std::string_view text);
Context *makeContext(Arena &arena);
SelectExpression *makeSelectExpression(Arena &arena, std::string_view query, std::string_view language);
Error *makeError(Arena &arena);
Result *makeResult(Arena &arena, ResultSink &sink);

// ----------------------------------------------------------------------------------------------- copying

/** Copies into the arena; a text that lives there already is shared. */
String *copyObject(Arena &arena, const String &original);
Array *copyObject(Arena &arena, const Array &original);
Path *copyObject(Arena &arena, const Path &original);
Instance *copyObject(Arena &arena, const Instance &original);
Args *copyObject(Arena &arena, const Args &original);
Enumeration *copyObject(Arena &arena, const Enumeration &original);
DateTime *copyObject(Arena &arena, const DateTime &original);
Context *copyObject(Arena &arena, const Context &original);
SelectExpression *copyObject(Arena &arena, const SelectExpression &original);
Error *copyObject(Arena &arena, const Error &original);

// ------------------------------------------------------------------------------------------------ values

/** The type as it is stored: text is always a CMPI_string. */
constexpr CMPIType storedType(CMPIType type)
{
    if ((type & ~CMPI_ARRAY) == CMPI_chars) {
        return static_cast<CMPIType>(CMPI_string | (type & CMPI_ARRAY));
    }
    return type;
}

/** Takes over a value in the way CMPI passes it (see cmpi_conventions in the headers: simple values by
 * address, CMPI_chars as the char pointer itself). A null pointer makes a null value of the type. Returns
 * CMPI_RC_ERR_INVALID_DATA_TYPE when the type is none that an object can hold. */
CMPIrc takeValue(Arena &arena, const CMPIValue *value, CMPIType type, CMPIData &data);

/** A copy of a value that is stored already. */
CMPIData copyObjectData(Arena &arena, const CMPIData &data);
inline CMPIData copyData(Arena &arena, const CMPIData &data);

/** A null value of that type. */
inline CMPIData nullData(CMPIType type, CMPIValueState state = CMPI_nullValue)
{
    CMPIData data = {};
    data.type = type;
    data.state = state;
    return data;
}

/** The text value, as CMPIData. */
CMPIData stringData(String *text);

inline bool isNull(const CMPIData &data)
{
    return (data.state & (CMPI_nullValue | CMPI_notFound | CMPI_badValue)) != 0;
}

/** What the value holds behind its pointer; null when it holds no such thing. What stands in the place of the
 * pointer may be a number that a client sent, so it is read after a look at the type alone, here and nowhere
 * else. */
inline const String *stringOf(const CMPIData &data)
{
    return data.type == CMPI_string && !isNull(data) ? behind<String>(data.value.string) : nullptr;
}

inline CMPIData copyData(Arena &arena, const CMPIData &data)
{
    // Nothing stands behind a simple value, and texts, which most are, never change.
    const String *text = stringOf(data);
    return (data.type & (CMPI_ARRAY | CMPI_ENC)) == 0 || (text != nullptr && text->arena == &arena)
               ? data
               : copyObjectData(arena, data);
}

inline const Path *pathOf(const CMPIData &data)
{
    return data.type == CMPI_ref && !isNull(data) ? behind<Path>(data.value.ref) : nullptr;
}

inline const DateTime *dateTimeOf(const CMPIData &data)
{
    return data.type == CMPI_dateTime && !isNull(data) ? behind<DateTime>(data.value.dateTime) : nullptr;
}

inline const Instance *instanceOf(const CMPIData &data)
{
    return data.type == CMPI_instance && !isNull(data) ? behind<Instance>(data.value.inst) : nullptr;
}

inline const Array *arrayOf(const CMPIData &data)
{
    return (data.type & CMPI_ARRAY) != 0 && !isNull(data) ? behind<Array>(data.value.array) : nullptr;
}

using NumberText = std::array<char, 32>;

/** An integer in decimal, or a real number with the digits that tell it from its neighbours; NaN and the
 * infinities as CIM-XML writes them. Empty when the value is no number. */
std::string_view numberText(const CMPIData &data, NumberText &text);

// ------------------------------------------------------------------------------------------- the parts

NamedValue *findValue(ArenaList<NamedValue> &values, std::string_view name);

/** Sets or adds. The data must live in the arena of the list. */
void setValue(ArenaList<NamedValue> &values, std::string_view name, const CMPIData &data);

void setClassName(Path &path, std::string_view className);

/** Sets the namespace; the class is the one that has its name there. */
void setNameSpace(Path &path, std::string_view nameSpace);

/** Sets a key; the data must live in the arena of the path. */
void setKey(Path &path, std::string_view name, const CMPIData &data);

/** Sets the property at that place, and the key of the path when it is a key property. The data must be of
 * the property's type, or null, and live in the arena of the instance. */
void setProperty(Instance &instance, std::size_t index, const CMPIData &data);

/** The keys that the path lacks are taken from the key properties of the instance. */
void completeKeys(Instance &instance);

/** True when both name the same object: class and keys are equal, names without regard to letter case. */
bool samePath(const Path &left, const Path &right);

/** Equal for paths that are the same object. */
std::uint64_t hashPath(const Path &path);

/** The set of the named properties; names that the class has not are passed over. */
PropertySet *makePropertySet(Arena &arena, const cim::Class &klass, const char *const *names);

/** An empty set for a class. */
PropertySet *makePropertySet(Arena &arena, const cim::Class &klass);

/** The text of a path: "namespace:Class.Key="value",..." (DSP0004, untyped WBEM URI). */
String *pathText(Arena &arena, const Path &path);

/** The text of any value, for messages: numbers in decimal, booleans as TRUE and FALSE, arrays in braces. */
String *valueText(Arena &arena, const CMPIData &data);

// ------------------------------------------------------------------------------------------------ status

/** Fills a status that may be absent. The text is made in the arena; null: no message. */
void setStatus(CMPIStatus *status, CMPIrc code, Arena *arena = nullptr, const char *text = nullptr);

inline CMPIStatus makeStatus(CMPIrc code, CMPIString *message = nullptr)
{
    return CMPIStatus{code, message};
}

} // namespace host

#endif
