// SPDX-License-Identifier: Apache-2.0
// The provider frame: what every class module repeats, said once.
//
// A class module holds its constants, one function per setting, its path and instance builders, its methods
// as rows, and one `ProviderClass` that names them; a macro at its end stamps the CMPI operations and
// factories.
#ifndef ZT_MAROVELTON_PROVIDER_H
#define ZT_MAROVELTON_PROVIDER_H

#include "engine/common.h"
#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <strings.h>

// ---- building paths and instances ----
// Builders write into the status of the operation that calls them. The results of adding a key or setting a
// property are not looked at: an object manager refuses one only where the client's property list leaves it
// out or its class definition lacks it, and the rest of the object is right all the same.

struct Key {
    const char *name;
    const char *value;
};

/** Whether a broker's object is missing or unusable. */
template <typename Object>
bool isNullObject(const Object *object)
{
    return !object || !object->hdl || !object->ft;
}

/** A new path of a class in the namespace of `reference`; null, with `status` set, on failure. */
CMPIObjectPath *newPath(const CMPIBroker *broker, const char *className, const CMPIObjectPath *reference,
                        CMPIStatus *status);

void addKeys(const CMPIObjectPath *path, std::initializer_list<Key> keys);

/** Reads the monitor's system name; false, with CMPI_RC_ERR_FAILED and `failure` in the status, when the
 * monitor's record cannot be read. */
bool readSystemName(const CMPIBroker *broker, CMPIStatus *status, const char *failure, SystemName *name);

/** The path of a class whose one key is `InstanceID`, the work of a `_makePath_` function; null on failure.
 */
CMPIObjectPath *makePathByInstanceID(const CMPIBroker *broker, const char *className,
                                     const CMPIObjectPath *reference, const char *instanceID,
                                     CMPIStatus *status);

/** The text of a numbered instance identifier such as "ZT:Marovelton_ColorSpace:%d", counted from 1. */
struct InstanceID {
    InstanceID(const char *format, int index);
    char text[48];
};

/** The index, from 0, of the identifier that equals `instanceID` exactly. Returns 0, or -1 with `errorText`
 * filled. */
int matchInstanceID(const char *instanceID, const char *format, int count, char *errorText, int *index);

/** An instance on its way: each call sets one property, in the order of the class's table. Once a step has
 * failed the later ones do nothing and `finish` gives null. */
struct InstanceBuilder {
    /** Makes an empty instance on a path; a null path gives a builder that has failed already. */
    InstanceBuilder(const CMPIBroker *broker, const char *className, const CMPIObjectPath *path,
                    CMPIStatus *status);
    /** Makes an empty instance of a class whose one key is `InstanceID`. */
    InstanceBuilder(const CMPIBroker *broker, const char *className, const CMPIObjectPath *reference,
                    const char *instanceID, CMPIStatus *status);

    explicit operator bool() const
    {
        return instance != nullptr;
    }
    /** Ends the build with CMPI_RC_ERR_FAILED and `text` unless `ok`. Returns whether it goes on. */
    bool require(bool ok, const char *text);
    /** Reads the monitor's system name, or ends the build with `failure`. */
    bool readSystemName(const char *failure, SystemName *name);

    void boolean(const char *name, int value); // the low byte
    void uint16(const char *name, int value);  // the low 16 bits
    void real32(const char *name, float value);
    void text(const char *name, const char *value);
    /** One %s in `format`, at most 99 characters in all. */
    void formatted(const char *name, const char *format, const char *value);
    /** A point in time, in seconds since 1970-01-01 UTC. */
    void dateTime(const char *name, int64_t seconds);
    /** A text field of a record, which may be full to its width without a terminating zero. */
    template <size_t Width>
    void field(const char *name, const char (&value)[Width])
    {
        char terminated[Width + 1] = {};
        memcpy(terminated, value, Width);
        text(name, terminated);
    }
    void uint16Array(const char *name, std::initializer_list<int> values);
    template <size_t Width>
    void fieldArray(const char *name, const char (&value)[Width])
    {
        char terminated[Width + 1] = {};
        memcpy(terminated, value, Width);
        textArray(name, terminated);
    }

    /** The finished instance, or null with the status set. */
    CMPIInstance *finish();

    const CMPIBroker *broker;
    const char *className;
    CMPIStatus *status;
    CMPIInstance *instance;

  private:
    void makeInstance(const CMPIObjectPath *path);
    void set(const char *name, const CMPIValue *value, CMPIType type);
    CMPIArray *newArray(CMPICount size, CMPIType type);
    void setElement(CMPIArray *array, CMPICount position, const CMPIValue &value, CMPIType type);
    void textArray(const char *name, const char *value);
};

// ---- methods ----

/** One extrinsic method call on its way through its steps. A step that fails sets the status and ends the
 * call. */
struct Call {
    const CMPIBroker *broker;
    const CMPIContext *context;
    const CMPIObjectPath *reference;
    const CMPIArgs *in;
    const char *methodName;
    CMPIStatus *status;
    char errorText[ERROR_TEXT_SIZE]; // what a failing setting or lookup fills; a single blank before
    int index;                       // which instance is addressed, from 0
    uint8_t returnValue;             // the answer if the call fails here
    const char *key = nullptr;       // the identifying key of the addressed instance
};

enum class ArgumentKind : uint8_t {
    none,
    toggle,         // "true", "false" without regard to case, "0", "1"
    integer,        // wholly a base-10 integer
    leadingInteger, // as atoi reads it
};

struct Argument {
    ArgumentKind kind = ArgumentKind::none;
    const char *name = nullptr;
    const char *missing = nullptr;              // the text when the argument is not given
    const char *invalid = "Invalid parameter."; // the text when it is not of its kind
};

struct Range {
    int min = 0;
    int max = 0;
    const char *text = nullptr; // null: no range check
};

/** A method as a row. Its steps, in this order: administrator check; `run`, if given, does all the rest; else
 * the argument is read and converted, the precondition tested, the range checked, and `set` or `act` called.
 */
struct Method {
    const char *name;
    bool administrator = false;
    Argument argument = {};
    bool (*precondition)(Call &) = nullptr;
    Range range = {};
    int (*set)(int value, char *errorText) = nullptr;
    int (*act)(char *errorText) = nullptr;
    bool (*run)(Call &) = nullptr;
};

/** Rows that a table of methods may hold: each name once, every text there, ranges ordered, one thing to do,
 * and no step that would never be reached. */
constexpr bool methodsAreSound(std::span<const Method> methods)
{
    const auto empty = [](const char *text) { return !text || *text == '\0'; };
    for (size_t i = 0; i < methods.size(); ++i) {
        const Method &method = methods[i];
        const bool argument = method.argument.kind != ArgumentKind::none;
        if (empty(method.name) ||
            (method.set != nullptr) + (method.act != nullptr) + (method.run != nullptr) != 1)
            return false;
        if (argument != (method.set != nullptr) || argument != !empty(method.argument.name) ||
            argument != !empty(method.argument.missing) || empty(method.argument.invalid))
            return false;
        if ((method.range.text && !method.set) || (method.precondition && method.run))
            return false;
        if (method.range.min > method.range.max || (method.range.text && empty(method.range.text)))
            return false;
        if (method.range.min < INT16_MIN || method.range.max > INT16_MAX) // a register takes 16 bits
            return false;
        for (size_t other = 0; other < i; ++other)
            if (std::string_view(method.name) == methods[other].name)
                return false;
    }
    return true;
}

// A pointer in a table costs every process memory of its own, and work when the library is loaded. So the
// rows are packed where they are compiled: their texts stand in one constant, and a row names them by their
// places there.

/** A method as it stands in memory. A place is an offset into the texts; that of no text is 0. */
struct PackedMethod {
    uint16_t name, argument, missing, invalid, rangeText;
    int16_t min, max;
    ArgumentKind kind;
    bool administrator : 1;
    bool runs : 1; // has `run`; else `set` where there is an argument and `act` where there is none
    bool (*precondition)(Call &);
    union {
        int (*set)(int value, char *errorText);
        int (*act)(char *errorText);
        bool (*run)(Call &);
    };
};

/** The methods of a class. */
struct MethodTable {
    const char *texts = nullptr;
    std::span<const PackedMethod> rows = {};
};

/** Rows on their way into memory, with their texts one after the other, each once. */
template <size_t Count, size_t Size>
struct PackedMethods {
    std::array<PackedMethod, Count> rows = {};
    std::array<char, Size> texts = {};
    size_t used = 1;

    constexpr explicit PackedMethods(const Method (&methods)[Count])
    {
        for (size_t i = 0; i < Count; ++i) {
            const Method &method = methods[i];
            PackedMethod &row = rows[i];
            row.name = placeOf(method.name);
            row.argument = placeOf(method.argument.name);
            row.missing = placeOf(method.argument.missing);
            row.invalid = placeOf(method.argument.invalid);
            row.rangeText = placeOf(method.range.text);
            row.min = static_cast<int16_t>(method.range.min);
            row.max = static_cast<int16_t>(method.range.max);
            row.kind = method.argument.kind;
            row.administrator = method.administrator;
            row.runs = method.run != nullptr;
            row.precondition = method.precondition;
            if (method.run)
                row.run = method.run;
            else if (method.set)
                row.set = method.set;
            else
                row.act = method.act;
        }
    }

    constexpr uint16_t placeOf(const char *text)
    {
        if (!text)
            return 0;
        const std::string_view wanted = text;
        size_t place = 1;
        while (place < used && wanted != &texts[place])
            place += std::string_view(&texts[place]).size() + 1;
        if (place == used) {
            for (const char character : wanted)
                texts[used++] = character;
            ++used; // its terminating zero
        }
        return static_cast<uint16_t>(place);
    }
};

/** Rows and texts apart: the texts have no pointers, and so are shared by all processes. */
template <const auto &methods>
struct Packing {
    static_assert(methodsAreSound(methods));
    static constexpr size_t count = std::size(methods);
    static constexpr size_t enough = 0x4000; // characters, while the size is not known
    static constexpr size_t size = PackedMethods<count, enough>(methods).used;
    static constexpr auto rows = PackedMethods<count, size>(methods).rows;
    static constexpr auto texts = PackedMethods<count, size>(methods).texts;
};

/** The table of the given rows. */
template <const auto &methods>
constexpr MethodTable packed = {Packing<methods>::texts.data(), Packing<methods>::rows};

/** Ends a call with a code and a text; returns false. */
bool fail(Call &call, CMPIrc code, const char *text);

/** Passes only administrators: reads the requesting user from the context and looks it up. */
bool requireAdministrator(const CMPIBroker *broker, const CMPIContext *context, CMPIStatus *status,
                          char *errorText, bool announce = true);

/** The text of a string argument, which may be empty; null, with the call ended, when it is missing or of
 * another type. */
const char *requireText(Call &call, const char *name, const char *missing,
                        const char *invalidType = "Invalid type of parameter.");
/** Refuses an empty argument text. */
bool requireContent(Call &call, const char *text, const char *empty = "Invalid parameter. Value is missing.");
/** Converts an argument text of the given kind. */
bool convert(Call &call, const char *text, ArgumentKind kind, const char *invalid, int *value);
/** All of the above for one argument. */
bool readArgument(Call &call, const Argument &argument, int *value);

/** The texts that a reference argument is refused with. */
struct ReferenceTexts {
    const char *missing;
    const char *invalidType;
    const char *null;
    const char *className; // its class name cannot be read
};

/** The key of an object path as text; null when it is missing, null or of another type. */
const char *keyText(const CMPIObjectPath *path, const char *name);

/** The path in a reference argument, and its class name; null, with the call ended, when there is none. */
const CMPIObjectPath *requireReference(Call &call, const char *name, const ReferenceTexts &texts,
                                       const char **className);

/** Refuses a value outside the range; without a range text every value passes. */
bool requireRange(Call &call, int value, const Range &range);
/** Refuses a position outside its ranges; both are tested first, and `both` is for neither fitting. */
bool requirePosition(Call &call, int x, const Range &xRange, int y, const Range &yRange, const char *both);
/** The end of a call: the result of a setting, whose text becomes the message when it is not 0. */
bool settled(Call &call, int result);

/** The answer to methods of classes that have none but the placeholder "insert_method_name", which clients
 * know: always return value 1, and an unknown name, or another class, is answered with `unknownCode` and the
 * method name. */
CMPIStatus invokePlaceholder(const CMPIBroker *broker, const char *className, CMPIrc unknownCode,
                             const CMPIResult *result, const CMPIObjectPath *reference,
                             const char *methodName);

// ---- a class ----

/** The key by which GetInstance and the methods know an instance, and the texts of GetInstance. */
struct IdentifyingKey {
    const char *name = nullptr; // null: none beside the system keys
    const char *value = nullptr;
    /** For numbered instances instead of `value`: finds the index. */
    int (*validate)(const char *text, char *errorText, int *index) = nullptr;
    const char *missing = "Could not get InstanceID of instance.";
    const char *wrong = "This class name does not exist (wrong InstanceID).";
};

/** The trace lines of the intrinsic reads, each with the class name for %s; null prints none. */
struct ReadTraces {
    const char *namesCalled = "--- %s CMPI EnumInstanceNames() called\n";
    const char *namesExited = "--- %s CMPI EnumInstanceNames() exited\n";
    const char *instancesCalled = "--- %s CMPI EnumInstances() called\n";
    const char *instancesLeft = "--- %s CMPI EnumInstances() leave \n";
};
inline constexpr ReadTraces usualReadTraces = {};

/** What the frame needs to know of a class. */
struct ProviderClass {
    const char *name;
    bool systemKeys = false; // keyed to the monitor's system name
    uint8_t instances = 1;
    IdentifyingKey key = {};
    std::span<const uint8_t> refresh = {}; // information groups to refresh before a read, in order
    const ReadTraces *traces = &usualReadTraces;

    // One instance has the first pair of builders, the numbered ones of a class with several the second.
    CMPIObjectPath *(*makePath)(const CMPIObjectPath *, CMPIStatus *) = nullptr;
    CMPIInstance *(*makeInst)(const CMPIObjectPath *, CMPIStatus *) = nullptr;
    CMPIObjectPath *(*makePathAt)(const CMPIObjectPath *, int, CMPIStatus *) = nullptr;
    CMPIInstance *(*makeInstAt)(const CMPIObjectPath *, int, CMPIStatus *) = nullptr;

    MethodTable methods = {};
    int (*compareMethodNames)(const char *, const char *) = strcmp;
    const char *wrongClass =
        "Invalid class name";      // null: another class is answered with OK and `failureValue`
    bool methodsCheckValue = true; // whether the key's value is checked before the method
    CMPIrc wrongKeyCode : 8 = CMPI_RC_ERR_NOT_FOUND;
    CMPIrc unknownMethodCode : 8 = CMPI_RC_ERR_NOT_FOUND;
    uint8_t unknownMethodValue = 1;
    uint8_t missingKeyValue = 2;
    uint8_t failureValue = 2;
    CMPIType returnType = CMPI_uint32;
};

CMPIStatus enumInstanceNames(const ProviderClass &provider, const CMPIBroker *broker,
                             const CMPIResult *result, const CMPIObjectPath *reference);
CMPIStatus enumInstances(const ProviderClass &provider, const CMPIBroker *broker, const CMPIResult *result,
                         const CMPIObjectPath *reference);
CMPIStatus getInstance(const ProviderClass &provider, const CMPIBroker *broker, const CMPIResult *result,
                       const CMPIObjectPath *reference);
CMPIStatus invokeMethod(const ProviderClass &provider, const CMPIBroker *broker, const CMPIContext *context,
                        const CMPIResult *result, const CMPIObjectPath *reference, const char *methodName,
                        const CMPIArgs *in);

/** The answer of the operations that a class does not offer. */
CMPIStatus notSupported(const CMPIBroker *broker);
/** The answer of every Cleanup: there is nothing to free. */
CMPIStatus cleanedUp();

/** Prints a trace line with the class name; null prints nothing. */
void trace(const char *format, const char *className);

// ---- the stamped skeleton ----
// The operations of class `Class` and its factories. A module that has an operation of its own stamps the
// others one by one.

#define STAMP_CLEANUP(Class, Kind, Operation)                                                                \
    CMPIStatus Class##Operation(Kind *, const CMPIContext *, CMPIBoolean)                                    \
    {                                                                                                        \
        return cleanedUp();                                                                                  \
    }

#define STAMP_READS(Class, provider)                                                                         \
    CMPIStatus Class##EnumInstanceNames(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,     \
                                        const CMPIObjectPath *reference)                                     \
    {                                                                                                        \
        return enumInstanceNames(provider, _broker, result, reference);                                      \
    }                                                                                                        \
    CMPIStatus Class##EnumInstances(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,         \
                                    const CMPIObjectPath *reference, const char **)                          \
    {                                                                                                        \
        return enumInstances(provider, _broker, result, reference);                                          \
    }                                                                                                        \
    CMPIStatus Class##GetInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,           \
                                  const CMPIObjectPath *reference, const char **)                            \
    {                                                                                                        \
        return getInstance(provider, _broker, result, reference);                                            \
    }

#define STAMP_MODIFY_NOT_SUPPORTED(Class, Operation)                                                         \
    CMPIStatus Class##Operation(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,                   \
                                const CMPIObjectPath *, const CMPIInstance *, const char **)                 \
    {                                                                                                        \
        return notSupported(_broker);                                                                        \
    }

#define STAMP_NOT_SUPPORTED(Class)                                                                           \
    CMPIStatus Class##CreateInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,              \
                                     const CMPIObjectPath *, const CMPIInstance *)                           \
    {                                                                                                        \
        return notSupported(_broker);                                                                        \
    }                                                                                                        \
    CMPIStatus Class##DeleteInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,              \
                                     const CMPIObjectPath *)                                                 \
    {                                                                                                        \
        return notSupported(_broker);                                                                        \
    }                                                                                                        \
    CMPIStatus Class##ExecQuery(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,                   \
                                const CMPIObjectPath *, const char *, const char *)                          \
    {                                                                                                        \
        return notSupported(_broker);                                                                        \
    }

#define STAMP_METHODS(Class, provider)                                                                       \
    CMPIStatus Class##InvokeMethod(CMPIMethodMI *, const CMPIContext *context, const CMPIResult *result,     \
                                   const CMPIObjectPath *reference, const char *methodName,                  \
                                   const CMPIArgs *in, CMPIArgs *)                                           \
    {                                                                                                        \
        return invokeMethod(provider, _broker, context, result, reference, methodName, in);                  \
    }

#define STAMP_PLACEHOLDER_METHOD(Class, unknownCode)                                                         \
    CMPIStatus Class##InvokeMethod(CMPIMethodMI *, const CMPIContext *, const CMPIResult *result,            \
                                   const CMPIObjectPath *reference, const char *methodName,                  \
                                   const CMPIArgs *, CMPIArgs *)                                             \
    {                                                                                                        \
        return invokePlaceholder(_broker, _ClassName, unknownCode, result, reference, methodName);           \
    }

// The factories are all that the library exports.
#define STAMP_INSTANCE_FACTORY(Class)                                                                        \
    STAMP_CLEANUP(Class, CMPIInstanceMI, Cleanup)                                                            \
    _Pragma("GCC visibility push(default)") CMInstanceMIStub(Class, Class, _broker, CMNoHook)                \
        _Pragma("GCC visibility pop")

#define STAMP_METHOD_FACTORY(Class)                                                                          \
    STAMP_CLEANUP(Class, CMPIMethodMI, MethodCleanup)                                                        \
    _Pragma("GCC visibility push(default)") CMMethodMIStub(Class, Class, _broker, CMNoHook)                  \
        _Pragma("GCC visibility pop")

// A whole instance and method provider over one ProviderClass.
#define STAMP_INSTANCE_AND_METHOD_PROVIDER(Class, provider)                                                  \
    STAMP_READS(Class, provider)                                                                             \
    STAMP_MODIFY_NOT_SUPPORTED(Class, ModifyInstance)                                                        \
    STAMP_NOT_SUPPORTED(Class)                                                                               \
    STAMP_METHODS(Class, provider)                                                                           \
    STAMP_INSTANCE_FACTORY(Class)                                                                            \
    STAMP_METHOD_FACTORY(Class)

// The same for a class without methods, which answers the placeholder alone.
#define STAMP_INSTANCE_AND_PLACEHOLDER_PROVIDER(Class, provider, unknownCode)                                \
    STAMP_READS(Class, provider)                                                                             \
    STAMP_MODIFY_NOT_SUPPORTED(Class, ModifyInstance)                                                        \
    STAMP_NOT_SUPPORTED(Class)                                                                               \
    STAMP_PLACEHOLDER_METHOD(Class, unknownCode)                                                             \
    STAMP_INSTANCE_FACTORY(Class)                                                                            \
    STAMP_METHOD_FACTORY(Class)

#endif
