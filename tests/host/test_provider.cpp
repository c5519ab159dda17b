// SPDX-License-Identifier: Apache-2.0
// Providers for the tests of the object manager: seven things, a pair association between neighbours, an
// association with the computer system, and providers that do what a provider should not.
#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>
#include <cmpi/cmpimacs.h>

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <strings.h>

namespace
{

constexpr int things = 7;
constexpr const char *systemClass = "Linux_ComputerSystem";
constexpr const char *systemName = "desk";

const CMPIBroker *broker = nullptr;
std::string labels[things];
std::string tags[things][2];  // empty: as in the beginning
std::atomic<int> napping = 0; // calls of Nap at the same time
std::atomic<int> mostNapping = 0;
std::atomic<bool> mayWake = false; // what a nap without end waits for

CMPIStatus status(CMPIrc code, const char *text = nullptr)
{
    CMPIStatus result = {code, nullptr};
    if (text != nullptr) {
        result.msg = CMNewString(broker, text, nullptr);
    }
    return result;
}

const char *chars(const CMPIString *string)
{
    return string != nullptr ? CMGetCharPtr(string) : "(null)";
}

const CMPIValue *charsValue(const char *text)
{
    return reinterpret_cast<const CMPIValue *>(text);
}

std::string nameSpaceOf(const CMPIObjectPath *path)
{
    return chars(CMGetNameSpace(path, nullptr));
}

/** Tells what is done, as providers do, where a test wants to read it. */
void trace(const char *what)
{
    if (std::getenv("TEST_PROVIDER_TRACE") != nullptr) {
        std::puts(what);
    }
}

std::string format(const char *pattern, ...) __attribute__((format(printf, 1, 2)));

std::string format(const char *pattern, ...)
{
    char text[2048];
    va_list arguments;
    va_start(arguments, pattern);
    std::vsnprintf(text, sizeof text, pattern, arguments);
    va_end(arguments);
    return text;
}

// -------------------------------------------------------------------------------------------------- things

CMPIObjectPath *thingPath(const char *nameSpace, const char *className, int number)
{
    CMPIObjectPath *path = CMNewObjectPath(broker, nameSpace, className, nullptr);
    CMAddKey(path, "SystemCreationClassName", charsValue(systemClass), CMPI_chars);
    CMAddKey(path, "SystemName", charsValue(systemName), CMPI_chars);
    CMAddKey(path, "CreationClassName", charsValue(className), CMPI_chars);
    CMAddKey(path, "DeviceID", charsValue(format("thing%d", number).c_str()), CMPI_chars);
    return path;
}

CMPIInstance *thing(const CMPIObjectPath *reference, const char *className, int number,
                    const char **properties)
{
    const std::string nameSpace = nameSpaceOf(reference);
    CMPIInstance *instance = CMNewInstance(broker, thingPath(nameSpace.c_str(), className, number), nullptr);
    static const char *keys[] = {"DeviceID", nullptr};
    CMSetPropertyFilter(instance, properties, keys);
    CMSetProperty(instance, "ElementName", charsValue(format("thing%d", number).c_str()), CMPI_chars);
    CMSetProperty(instance, "Label", charsValue(labels[number].c_str()), CMPI_chars);
    const auto level = static_cast<CMPIUint16>(number * 10);
    CMSetProperty(instance, "Level", reinterpret_cast<const CMPIValue *>(&level), CMPI_uint16);
    const CMPISint32 offset = -100 * number;
    CMSetProperty(instance, "Offset32", reinterpret_cast<const CMPIValue *>(&offset), CMPI_sint32);
    const CMPIUint64 serial = CMPIUint64{1} << (8 * number);
    CMSetProperty(instance, "Serial", reinterpret_cast<const CMPIValue *>(&serial), CMPI_uint64);
    const CMPIBoolean hot = number % 2 != 0;
    CMSetProperty(instance, "Hot", reinterpret_cast<const CMPIValue *>(&hot), CMPI_boolean);
    const auto gain = static_cast<CMPIReal32>(number) + 0.5f;
    CMSetProperty(instance, "Gain", reinterpret_cast<const CMPIValue *>(&gain), CMPI_real32);
    CMPIDateTime *seen = CMNewDateTimeFromBinary(broker, CMPIUint64{1700000000} * 1000000, 0, nullptr);
    CMSetProperty(instance, "Seen", reinterpret_cast<const CMPIValue *>(&seen), CMPI_dateTime);
    CMPIArray *tagArray = CMNewArray(broker, 2, CMPI_chars, nullptr);
    static const char *const firstTags[] = {"red & <blue>", "gr\xc3\xbcn"};
    for (CMPICount i = 0; i < 2; ++i) {
        const std::string &tag = tags[number][i];
        CMSetArrayElementAt(tagArray, i, charsValue(tag.empty() ? firstTags[i] : tag.c_str()), CMPI_chars);
    }
    CMSetProperty(instance, "Tags", reinterpret_cast<const CMPIValue *>(&tagArray), CMPI_charsA);
    CMPIArray *codes = CMNewArray(broker, 3, CMPI_uint16, nullptr);
    for (CMPIUint16 i = 0; i < 3; ++i) {
        const auto code = static_cast<CMPIUint16>(number * 10 + i);
        CMSetArrayElementAt(codes, i, reinterpret_cast<const CMPIValue *>(&code), CMPI_uint16);
    }
    CMSetProperty(instance, "Codes", reinterpret_cast<const CMPIValue *>(&codes), CMPI_uint16A);
    return instance;
}

/** The number in the key DeviceID, or -1. */
int thingNumber(const CMPIObjectPath *path)
{
    CMPIStatus result = {};
    const CMPIData key = CMGetKey(path, "DeviceID", &result);
    if (result.rc != CMPI_RC_OK || key.type != CMPI_string || (key.state & CMPI_nullValue) != 0) {
        return -1;
    }
    const char *id = chars(key.value.string);
    if (std::strncmp(id, "thing", 5) != 0 || id[5] < '0' || id[5] >= '0' + things || id[6] != '\0') {
        return -1;
    }
    return id[5] - '0';
}

// ------------------------------------------------------------------------------------- Test_Thing, instances

CMPIStatus Test_ThingCleanup(CMPIInstanceMI *, const CMPIContext *, CMPIBoolean)
{
    return status(CMPI_RC_OK);
}

CMPIStatus Test_ThingEnumInstanceNames(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                                       const CMPIObjectPath *reference)
{
    trace("the things are named");
    for (int i = 0; i < things; ++i) {
        CMReturnObjectPath(result, thingPath(nameSpaceOf(reference).c_str(), "Test_Thing", i));
    }
    CMReturnDone(result);
    return status(CMPI_RC_OK);
}

CMPIStatus Test_ThingEnumInstances(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                                   const CMPIObjectPath *reference, const char **properties)
{
    for (int i = 0; i < things; ++i) {
        CMReturnInstance(result, thing(reference, "Test_Thing", i, properties));
    }
    CMReturnDone(result);
    return status(CMPI_RC_OK);
}

CMPIStatus Test_ThingGetInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                                 const CMPIObjectPath *reference, const char **properties)
{
    const int number = thingNumber(reference);
    if (number < 0) {
        return status(CMPI_RC_ERR_NOT_FOUND, "no such thing");
    }
    CMReturnInstance(result, thing(reference, "Test_Thing", number, properties));
    CMReturnDone(result);
    return status(CMPI_RC_OK);
}

CMPIStatus Test_ThingCreateInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                                    const CMPIObjectPath *, const CMPIInstance *instance)
{
    CMPIObjectPath *path = CMGetObjectPath(instance, nullptr);
    if (thingNumber(path) >= 0) {
        return status(CMPI_RC_ERR_ALREADY_EXISTS, "the thing is there already");
    }
    CMReturnObjectPath(result, path);
    return status(CMPI_RC_OK);
}

/** Takes both tags over. */
void takeTags(int number, const CMPIInstance *instance)
{
    const CMPIData data = CMGetProperty(instance, "Tags", nullptr);
    for (CMPICount i = 0; i < 2; ++i) {
        tags[number][i] = chars(CMGetArrayElementAt(data.value.array, i, nullptr).value.string);
    }
}

/** Takes the label over, or the tags; the level must not be given. */
CMPIStatus Test_ThingModifyInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                    const CMPIObjectPath *path, const CMPIInstance *instance,
                                    const char **properties)
{
    const int number = thingNumber(path);
    if (number < 0) {
        return status(CMPI_RC_ERR_NOT_FOUND, "no such thing");
    }
    const char *property = properties != nullptr && properties[0] != nullptr ? properties[0] : "Label";
    if (strcasecmp(property, "Tags") == 0) {
        takeTags(number, instance);
        return status(CMPI_RC_OK);
    }
    if (strcasecmp(property, "Label") != 0) {
        return status(CMPI_RC_ERR_NOT_SUPPORTED, "only the label and the tags can be changed");
    }
    const CMPIData label = CMGetProperty(instance, "Label", nullptr);
    labels[number] = (label.state & CMPI_nullValue) != 0 ? "(null)" : chars(label.value.string);
    return status(CMPI_RC_OK);
}

CMPIStatus Test_ThingDeleteInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                    const CMPIObjectPath *)
{
    return status(CMPI_RC_ERR_NOT_SUPPORTED, "no delete");
}

CMPIStatus Test_ThingExecQuery(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                               const CMPIObjectPath *reference, const char *query, const char *language)
{
    if (std::strcmp(language, "DMTF:CQL") != 0) {
        return status(CMPI_RC_ERR_QUERY_LANGUAGE_NOT_SUPPORTED, "only DMTF:CQL");
    }
    if (std::strstr(query, "thing2") != nullptr) {
        CMReturnInstance(result, thing(reference, "Test_Thing", 2, nullptr));
    }
    return status(CMPI_RC_OK);
}

// --------------------------------------------------------------------------------------- Test_Thing, methods

std::string describe(const CMPIData &data)
{
    if ((data.state & CMPI_nullValue) != 0) {
        return format("0x%x/null", static_cast<unsigned>(data.type));
    }
    if ((data.type & CMPI_ARRAY) != 0) {
        CMPIArray *array = data.value.array;
        std::string text =
            format("0x%x/array[%u] elt 0x%x", static_cast<unsigned>(data.type),
                   CMGetArrayCount(array, nullptr), static_cast<unsigned>(CMGetArrayType(array, nullptr)));
        for (CMPICount i = 0; i < CMGetArrayCount(array, nullptr); ++i) {
            text.append(" ").append(describe(CMGetArrayElementAt(array, i, nullptr)));
        }
        return text;
    }
    const std::string type = format("0x%x/", static_cast<unsigned>(data.type));
    switch (data.type) {
    case CMPI_boolean:
        return type + (data.value.boolean != 0 ? "true" : "false");
    case CMPI_uint8:
        return type + format("%u", static_cast<unsigned>(data.value.uint8));
    case CMPI_uint16:
        return type + format("%u", static_cast<unsigned>(data.value.uint16));
    case CMPI_uint32:
        return type + format("%u", data.value.uint32);
    case CMPI_uint64:
        return type + format("%llu", data.value.uint64);
    case CMPI_sint32:
        return type + format("%d", data.value.sint32);
    case CMPI_real64:
        return type + format("%f", data.value.real64);
    case CMPI_string:
        return type + format("\"%s\"", chars(data.value.string));
    case CMPI_dateTime:
        return type + chars(CMGetStringFormat(data.value.dateTime, nullptr));
    case CMPI_ref:
        return type + format("\"%s\" %s", chars(CMGetHostname(data.value.ref, nullptr)),
                             chars(CMObjectPathToString(data.value.ref, nullptr)));
    default:
        return type + "?";
    }
}

std::string describe(const CMPIArgs *arguments)
{
    std::string text;
    for (CMPICount i = 0; i < CMGetArgCount(arguments, nullptr); ++i) {
        CMPIString *name = nullptr;
        const CMPIData data = CMGetArgAt(arguments, i, &name, nullptr);
        text += std::string(chars(name)) + ":" + describe(data) + "; ";
    }
    return text;
}

void addText(CMPIArgs *out, const char *name, const std::string &text)
{
    CMAddArg(out, name, charsValue(text.c_str()), CMPI_chars);
}

std::string describeContext(const CMPIContext *context)
{
    const CMPIData principal = CMGetContextEntry(context, CMPIPrincipal, nullptr);
    const CMPIData nameSpace = CMGetContextEntry(context, CMPIInitNameSpace, nullptr);
    const CMPIData flags = CMGetContextEntry(context, CMPIInvocationFlags, nullptr);
    return format("%s %s 0x%x %u", chars(principal.value.string), chars(nameSpace.value.string),
                  static_cast<unsigned>(flags.type), flags.value.uint32);
}

struct Errand {
    const CMPIContext *context;
    std::string nameSpace;
    std::string found;
};

/** Runs in a thread of the provider's own, which is attached to the broker. */
void *runErrand(void *argument)
{
    auto *errand = static_cast<Errand *>(argument);
    CMPIStatus result = CBAttachThread(broker, errand->context);
    if (result.rc != CMPI_RC_OK) {
        errand->found = "not attached";
        return nullptr;
    }
    const CMPIInstance *instance = CBGetInstance(
        broker, errand->context, thingPath(errand->nameSpace.c_str(), "Test_Thing", 4), nullptr, &result);
    errand->found =
        instance != nullptr ? chars(CMGetProperty(instance, "ElementName", nullptr).value.string) : "nothing";
    CBDetachThread(broker, errand->context);
    return nullptr;
}

/** Up-calls of all kinds, chosen by a word. */
CMPIStatus relay(const CMPIContext *context, const CMPIObjectPath *reference, const std::string &what,
                 const CMPIArgs *in, CMPIArgs *out)
{
    const std::string nameSpace = nameSpaceOf(reference);
    CMPIStatus result = {};
    std::string info;
    if (what == "names" || what == "instances") {
        CMPIObjectPath *path = CMNewObjectPath(broker, nameSpace.c_str(), "Test_Thing", nullptr);
        CMPIEnumeration *found = what == "names" ? CBEnumInstanceNames(broker, context, path, &result)
                                                 : CBEnumInstances(broker, context, path, nullptr, &result);
        int count = 0;
        while (found != nullptr && CMHasNext(found, nullptr)) {
            count += CMGetNext(found, nullptr).type == (what == "names" ? CMPI_ref : CMPI_instance) ? 1 : 0;
        }
        info = format("%d", count);
    } else if (what == "system") {
        CMPIObjectPath *path = CMNewObjectPath(broker, nameSpace.c_str(), systemClass, nullptr);
        CMPIEnumeration *found = CBEnumInstances(broker, context, path, nullptr, &result);
        if (found != nullptr && CMHasNext(found, nullptr)) {
            const CMPIInstance *system = CMGetNext(found, nullptr).value.inst;
            info = chars(CMGetProperty(system, "CreationClassName", nullptr).value.string);
        }
    } else if (what == "missing") {
        CBGetInstance(broker, context, thingPath(nameSpace.c_str(), "Test_SpecialThing", 9), nullptr,
                      &result);
    } else if (what == "loop") {
        CBInvokeMethod(broker, context, reference, "Relay", in, out, &result);
    } else if (what == "associators") {
        CMPIEnumeration *found = CBAssociatorNames(broker, context, reference, "Test_ThingPair", nullptr,
                                                   nullptr, nullptr, &result);
        int count = 0;
        for (; found != nullptr && CMHasNext(found, nullptr); ++count) {
            CMGetNext(found, nullptr);
        }
        info = format("%d", count);
    } else if (what == "modify") {
        CMPIInstance *change = CMNewInstance(broker, reference, nullptr);
        CMSetProperty(change, "Label", charsValue("relayed"), CMPI_chars);
        result = CBModifyInstance(broker, context, reference, change, nullptr);
    } else if (what == "property") {
        const CMPIData data = CBGetProperty(broker, context, reference, "Level", &result);
        info = describe(data);
    } else if (what == "context") {
        info = describeContext(context);
    } else if (what == "thread") {
        Errand errand = {CBPrepareAttachThread(broker, context), nameSpace, ""};
        void *thread = broker->xft->newThread(runErrand, &errand, 0);
        void *ignored = nullptr;
        broker->xft->joinThread(thread, &ignored);
        info = errand.found;
    } else if (what == "most") {
        info = format("%d", mostNapping.load());
    }
    addText(out, "info", info);
    return result;
}

/** Null where the object manager does not know that class. */
CMPIInstance *makeState(const std::string &nameSpace, CMPIUint16 load)
{
    CMPIInstance *state =
        CMNewInstance(broker, CMNewObjectPath(broker, nameSpace.c_str(), "Test_State", nullptr), nullptr);
    if (state == nullptr) {
        return nullptr;
    }
    const std::string note = format("a & b <c> \"%u\"", static_cast<unsigned>(load));
    CMSetProperty(state, "Note", charsValue(note.c_str()), CMPI_chars);
    CMSetProperty(state, "Load", reinterpret_cast<const CMPIValue *>(&load), CMPI_uint16);
    return state;
}

/** Instances in the output arguments: one, several, none; and what came as the argument "want". */
CMPIStatus giveStates(const std::string &nameSpace, const CMPIArgs *in, CMPIArgs *out)
{
    CMPIValue value = {};
    value.inst = makeState(nameSpace, 7);
    if (value.inst == nullptr) {
        return status(CMPI_RC_ERR_INVALID_CLASS, "Test_State");
    }
    CMAddArg(out, "state", &value, CMPI_instance);
    CMPIValue states = {};
    states.array = CMNewArray(broker, 2, CMPI_instance, nullptr);
    for (CMPICount i = 0; i < 2; ++i) {
        value.inst = makeState(nameSpace, static_cast<CMPIUint16>(i + 1));
        CMSetArrayElementAt(states.array, i, &value, CMPI_instance);
    }
    CMAddArg(out, "states", &states, CMPI_instanceA);
    CMAddArg(out, "none", nullptr, CMPI_instance);
    addText(out, "wanted", describe(CMGetArg(in, "want", nullptr)));
    return status(CMPI_RC_OK);
}

CMPIStatus Test_ThingMethodCleanup(CMPIMethodMI *, const CMPIContext *, CMPIBoolean)
{
    return status(CMPI_RC_OK);
}

CMPIStatus Test_ThingInvokeMethod(CMPIMethodMI *, const CMPIContext *context, const CMPIResult *result,
                                  const CMPIObjectPath *reference, const char *method, const CMPIArgs *in,
                                  CMPIArgs *out)
{
    CMPIStatus outcome = {};
    CMPIStatus found = {};
    const CMPIUint32 good = 0;
    if (std::strcmp(method, "Hello") == 0) {
        const std::string greeting =
            "hello " + describe(in) + format("%u keys", CMGetKeyCount(reference, nullptr));
        CMReturnData(result, charsValue(greeting.c_str()), CMPI_chars);
        CMReturnDone(result);
        return outcome;
    }
    if (thingNumber(reference) < 0) {
        return status(CMPI_RC_ERR_NOT_FOUND, "no such thing");
    }
    if (std::strcmp(method, "Echo") == 0) {
        const CMPIData text = CMGetArg(in, "text", &found);
        addText(out, "reply",
                found.rc != CMPI_RC_OK               ? "(absent)"
                : (text.state & CMPI_nullValue) != 0 ? "(null)"
                                                     : chars(text.value.string));
    } else if (std::strcmp(method, "Types") == 0) {
        addText(out, "described", describe(in));
    } else if (std::strcmp(method, "Touch") == 0) {
        const CMPIData target = CMGetArg(in, "target", &found);
        if (found.rc != CMPI_RC_OK || target.type != CMPI_ref) {
            return status(CMPI_RC_ERR_INVALID_PARAMETER, "target is no reference");
        }
        CMAddArg(out, "same", &target.value, CMPI_ref);
        addText(out, "info", describe(in));
    } else if (std::strcmp(method, "Nap") == 0) {
        const CMPIData ms = CMGetArg(in, "ms", &found);
        const int now = ++napping;
        trace("a thing naps");
        for (int most = mostNapping; now > most && !mostNapping.compare_exchange_weak(most, now);) {
        }
        if (ms.value.uint32 == UINT32_MAX) {
            mayWake.wait(false);
            mayWake = false;
        } else {
            broker->xft->threadSleep(ms.value.uint32);
        }
        --napping;
    } else if (std::strcmp(method, "Fail") == 0) {
        const CMPIData code = CMGetArg(in, "code", nullptr);
        const CMPIData message = CMGetArg(in, "message", &found);
        if (found.rc == CMPI_RC_OK && std::strcmp(chars(message.value.string), "throw an exception") == 0) {
            throw std::runtime_error("thrown by a provider");
        }
        if (found.rc == CMPI_RC_OK && std::strcmp(chars(message.value.string), "throw a number") == 0) {
            throw 42;
        }
        addText(out, "reply", "must not be seen");
        CMReturnData(result, reinterpret_cast<const CMPIValue *>(&good), CMPI_uint32);
        // Clients may ask for any number; of these the type has room for some.
        return status(code.value.uint32 <= CMPI_RC_ERROR ? static_cast<CMPIrc>(code.value.uint32)
                                                         : CMPI_RC_ERR_FAILED,
                      found.rc == CMPI_RC_OK ? chars(message.value.string) : nullptr);
    } else if (std::strcmp(method, "Describe") == 0) {
        outcome = giveStates(nameSpaceOf(reference), in, out);
    } else if (std::strcmp(method, "Relay") == 0) {
        outcome = relay(context, reference, chars(CMGetArg(in, "what", nullptr).value.string), in, out);
    } else {
        return status(CMPI_RC_ERR_METHOD_NOT_FOUND, method);
    }
    CMReturnData(result, reinterpret_cast<const CMPIValue *>(&good), CMPI_uint32);
    CMReturnDone(result);
    return outcome;
}

// ----------------------------------------------------------------------------------------- Test_SpecialThing

CMPIStatus Test_SpecialThingCleanup(CMPIInstanceMI *, const CMPIContext *, CMPIBoolean)
{
    return status(CMPI_RC_OK);
}

CMPIStatus Test_SpecialThingEnumInstanceNames(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                                              const CMPIObjectPath *reference)
{
    CMReturnObjectPath(result, thingPath(nameSpaceOf(reference).c_str(), "Test_SpecialThing", 0));
    return status(CMPI_RC_OK);
}

CMPIStatus Test_SpecialThingEnumInstances(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                                          const CMPIObjectPath *reference, const char **properties)
{
    CMPIInstance *special = thing(reference, "Test_SpecialThing", 0, properties);
    const CMPIUint32 extra = 42;
    CMSetProperty(special, "Extra", reinterpret_cast<const CMPIValue *>(&extra), CMPI_uint32);
    CMReturnInstance(result, special);
    return status(CMPI_RC_OK);
}

CMPIStatus Test_SpecialThingGetInstance(CMPIInstanceMI *mi, const CMPIContext *context,
                                        const CMPIResult *result, const CMPIObjectPath *reference,
                                        const char **properties)
{
    if (thingNumber(reference) != 0) {
        return status(CMPI_RC_ERR_NOT_FOUND, "no such special thing");
    }
    return Test_SpecialThingEnumInstances(mi, context, result, reference, properties);
}

CMPIStatus refuse()
{
    return status(CMPI_RC_ERR_NOT_SUPPORTED, "NOT_SUPPORTED");
}

CMPIStatus Test_SpecialThingCreateInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                           const CMPIObjectPath *, const CMPIInstance *)
{
    return refuse();
}

CMPIStatus Test_SpecialThingModifyInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                           const CMPIObjectPath *, const CMPIInstance *, const char **)
{
    return refuse();
}

CMPIStatus Test_SpecialThingDeleteInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                           const CMPIObjectPath *)
{
    return refuse();
}

CMPIStatus Test_SpecialThingExecQuery(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                      const CMPIObjectPath *, const char *, const char *)
{
    return refuse();
}

// ----------------------------------------------------------------------------------------------- Test_Simple

/** One instance for every Id; most tables are left empty, as sloppy providers do. */
CMPIStatus simpleGetInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                             const CMPIObjectPath *reference, const char **)
{
    CMPIStatus outcome = {};
    const CMPIData id = CMGetKey(reference, "Id", &outcome);
    if (outcome.rc != CMPI_RC_OK || id.type != CMPI_uint16) {
        return status(CMPI_RC_ERR_INVALID_PARAMETER, "Id is not a uint16");
    }
    CMPIInstance *instance = CMNewInstance(broker, reference, nullptr);
    CMSetProperty(instance, "Text",
                  charsValue("a\x01"
                             "b\xff"
                             "c\td"),
                  CMPI_chars);
    const CMPIChar16 letter = 0x20ac;
    CMSetProperty(instance, "Letter", reinterpret_cast<const CMPIValue *>(&letter), CMPI_char16);
    const CMPISint64 number = -9223372036854775807LL - 1;
    CMSetProperty(instance, "Signed", reinterpret_cast<const CMPIValue *>(&number), CMPI_sint64);
    const CMPIReal64 real = 0.1;
    CMSetProperty(instance, "Real", reinterpret_cast<const CMPIValue *>(&real), CMPI_real64);
    CMReturnInstance(result, instance);
    return outcome;
}

const CMPIInstanceMIFT simpleTable = {
    200,     200,     "instanceTest_Simple", nullptr, nullptr, nullptr, simpleGetInstance, nullptr, nullptr,
    nullptr, nullptr,
};
const CMPIMethodMIFT simpleMethodTable = {200, 200, "methodTest_Simple", nullptr, nullptr};
CMPIInstanceMI simpleInstances = {nullptr, &simpleTable};
CMPIMethodMI simpleMethods = {nullptr, &simpleMethodTable};

// ----------------------------------------------------------------------------------------------- Test_Faulty

/** Returns an object and then fails, with one text or none, or by way of an extended error. */
CMPIStatus faultyEnumerate(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                           const CMPIObjectPath *reference)
{
    CMPIObjectPath *path = CMNewObjectPath(broker, nameSpaceOf(reference).c_str(), "Test_Faulty", nullptr);
    CMReturnObjectPath(result, path);
    return status(CMPI_RC_ERR_FAILED, "failed  after <one> & \"more\"");
}

CMPIStatus faultyEnumerateInstances(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                                    const CMPIObjectPath *, const char **)
{
    CMPIError *error = CMNewCMPIError(broker, "Tests", "T1", "an extended error", ErrorSevHigh,
                                      Software_Error, CMPI_RC_ERR_ACCESS_DENIED, nullptr);
    CMReturnError(result, error);
    return status(CMPI_RC_OK);
}

CMPIStatus faultyGetInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                             const CMPIObjectPath *reference, const char **)
{
    const CMPIData name = CMGetKey(reference, "Name", nullptr);
    if (name.type == CMPI_string && std::strcmp(chars(name.value.string), "nothing") == 0) {
        return status(CMPI_RC_OK); // neither an instance nor an error
    }
    if (name.type == CMPI_string && std::strcmp(chars(name.value.string), "hungry") == 0) {
        // Makes objects until the broker has enough of it.
        CMPIStatus outcome = {};
        for (int i = 0; i < 100000000; ++i) {
            if (CMNewArray(broker, 1000, CMPI_uint64, &outcome) == nullptr) {
                return status(outcome.rc, "the broker gives no more");
            }
        }
    }
    if (CMReturnObjectPath(result, reference).rc == CMPI_RC_OK) {
        return status(CMPI_RC_ERR_FAILED, "a path was taken for an instance");
    }
    return status(CMPI_RC_ERR_FAILED);
}

const CMPIInstanceMIFT faultyTable = {
    200,
    200,
    "instanceTest_Faulty",
    nullptr,
    faultyEnumerate,
    faultyEnumerateInstances,
    faultyGetInstance,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};
CMPIInstanceMI faultyInstances = {nullptr, &faultyTable};

// -------------------------------------------------------------------------------------------- Test_ThingPair

CMPIInstance *pairOf(const std::string &nameSpace, int first)
{
    CMPIObjectPath *path = CMNewObjectPath(broker, nameSpace.c_str(), "Test_ThingPair", nullptr);
    CMPIInstance *pair = CMNewInstance(broker, path, nullptr);
    CMPIObjectPath *antecedent = thingPath(nameSpace.c_str(), "Test_Thing", first);
    CMPIObjectPath *dependent = thingPath(nameSpace.c_str(), "Test_Thing", first + 1);
    CMSetProperty(pair, "Antecedent", reinterpret_cast<const CMPIValue *>(&antecedent), CMPI_ref);
    CMSetProperty(pair, "Dependent", reinterpret_cast<const CMPIValue *>(&dependent), CMPI_ref);
    const CMPIUint16 weight = 5;
    CMSetProperty(pair, "Weight", reinterpret_cast<const CMPIValue *>(&weight), CMPI_uint16);
    return pair;
}

CMPIStatus Test_ThingPairCleanup(CMPIInstanceMI *, const CMPIContext *, CMPIBoolean)
{
    return status(CMPI_RC_OK);
}

CMPIStatus Test_ThingPairEnumInstanceNames(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                                           const CMPIObjectPath *reference)
{
    for (int i = 0; i + 1 < things; ++i) {
        CMReturnObjectPath(result, CMGetObjectPath(pairOf(nameSpaceOf(reference), i), nullptr));
    }
    return status(CMPI_RC_OK);
}

CMPIStatus Test_ThingPairEnumInstances(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                                       const CMPIObjectPath *reference, const char **)
{
    for (int i = 0; i + 1 < things; ++i) {
        CMReturnInstance(result, pairOf(nameSpaceOf(reference), i));
    }
    return status(CMPI_RC_OK);
}

CMPIStatus Test_ThingPairGetInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *result,
                                     const CMPIObjectPath *reference, const char **)
{
    CMPIStatus outcome = {};
    const CMPIData antecedent = CMGetKey(reference, "Antecedent", &outcome);
    if (outcome.rc != CMPI_RC_OK || antecedent.type != CMPI_ref) {
        return status(CMPI_RC_ERR_INVALID_PARAMETER, "Antecedent is no reference");
    }
    const int first = thingNumber(antecedent.value.ref);
    if (first < 0 || first + 1 >= things) {
        return status(CMPI_RC_ERR_NOT_FOUND, "no such pair");
    }
    CMReturnInstance(result, pairOf(nameSpaceOf(reference), first));
    return outcome;
}

CMPIStatus Test_ThingPairCreateInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                        const CMPIObjectPath *, const CMPIInstance *)
{
    return refuse();
}

CMPIStatus Test_ThingPairModifyInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                        const CMPIObjectPath *, const CMPIInstance *, const char **)
{
    return refuse();
}

CMPIStatus Test_ThingPairDeleteInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                        const CMPIObjectPath *)
{
    return refuse();
}

CMPIStatus Test_ThingPairExecQuery(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                                   const CMPIObjectPath *, const char *, const char *)
{
    return refuse();
}

CMPIStatus Test_ThingPairAssociationCleanup(CMPIAssociationMI *, const CMPIContext *, CMPIBoolean)
{
    return status(CMPI_RC_OK);
}

bool admits(const char *filter, const char *name)
{
    return filter == nullptr || strcasecmp(filter, name) == 0;
}

/** Calls the function with the first of each pair that the thing is in, as role and resultRole have it. */
template <typename Function>
CMPIStatus forPairs(const CMPIObjectPath *source, const char *role, const char *resultRole, Function function)
{
    const int number = thingNumber(source);
    if (number < 0) {
        return status(CMPI_RC_ERR_NOT_FOUND, "no such thing");
    }
    if (number > 0 && admits(role, "Dependent") && admits(resultRole, "Antecedent")) {
        function(number - 1, number - 1);
    }
    if (number + 1 < things && admits(role, "Antecedent") && admits(resultRole, "Dependent")) {
        function(number, number + 1);
    }
    return status(CMPI_RC_OK);
}

CMPIStatus Test_ThingPairAssociators(CMPIAssociationMI *, const CMPIContext *, const CMPIResult *result,
                                     const CMPIObjectPath *source, const char *, const char *,
                                     const char *role, const char *resultRole, const char **properties)
{
    return forPairs(source, role, resultRole, [&](int, int other) {
        CMReturnInstance(result, thing(source, "Test_Thing", other, properties));
    });
}

CMPIStatus Test_ThingPairAssociatorNames(CMPIAssociationMI *, const CMPIContext *, const CMPIResult *result,
                                         const CMPIObjectPath *source, const char *, const char *,
                                         const char *role, const char *resultRole)
{
    return forPairs(source, role, resultRole, [&](int, int other) {
        CMPIObjectPath *path = thingPath(nameSpaceOf(source).c_str(), "Test_Thing", other);
        CMReturnObjectPath(result, path);
        CMReturnObjectPath(result, path); // twice, as some do: the client is to see it once
    });
}

CMPIStatus Test_ThingPairReferences(CMPIAssociationMI *, const CMPIContext *, const CMPIResult *result,
                                    const CMPIObjectPath *source, const char *, const char *role,
                                    const char **)
{
    return forPairs(source, role, nullptr,
                    [&](int first, int) { CMReturnInstance(result, pairOf(nameSpaceOf(source), first)); });
}

CMPIStatus Test_ThingPairReferenceNames(CMPIAssociationMI *, const CMPIContext *, const CMPIResult *result,
                                        const CMPIObjectPath *source, const char *, const char *role)
{
    return forPairs(source, role, nullptr, [&](int first, int) {
        CMReturnObjectPath(result, CMGetObjectPath(pairOf(nameSpaceOf(source), first), nullptr));
    });
}

// ---------------------------------------------------------------------------------------- Test_ThingOnSystem

CMPIStatus Test_ThingOnSystemAssociationCleanup(CMPIAssociationMI *, const CMPIContext *, CMPIBoolean)
{
    return status(CMPI_RC_OK);
}

CMPIStatus Test_ThingOnSystemAssociators(CMPIAssociationMI *, const CMPIContext *context,
                                         const CMPIResult *result, const CMPIObjectPath *source, const char *,
                                         const char *, const char *, const char *, const char **)
{
    CMPIStatus outcome = {};
    CMPIObjectPath *path = CMNewObjectPath(broker, nameSpaceOf(source).c_str(), systemClass, nullptr);
    CMPIEnumeration *systems = CBEnumInstances(broker, context, path, nullptr, &outcome);
    while (systems != nullptr && CMHasNext(systems, nullptr)) {
        CMReturnInstance(result, CMGetNext(systems, nullptr).value.inst);
    }
    return outcome;
}

CMPIStatus Test_ThingOnSystemAssociatorNames(CMPIAssociationMI *, const CMPIContext *context,
                                             const CMPIResult *result, const CMPIObjectPath *source,
                                             const char *, const char *, const char *, const char *)
{
    CMPIStatus outcome = {};
    CMPIObjectPath *path = CMNewObjectPath(broker, nameSpaceOf(source).c_str(), systemClass, nullptr);
    CMPIEnumeration *systems = CBEnumInstanceNames(broker, context, path, &outcome);
    while (systems != nullptr && CMHasNext(systems, nullptr)) {
        CMReturnObjectPath(result, CMGetNext(systems, nullptr).value.ref);
    }
    return outcome;
}

CMPIStatus Test_ThingOnSystemReferences(CMPIAssociationMI *, const CMPIContext *, const CMPIResult *,
                                        const CMPIObjectPath *, const char *, const char *, const char **)
{
    return status(CMPI_RC_ERR_FAILED, "references are broken");
}

CMPIStatus Test_ThingOnSystemReferenceNames(CMPIAssociationMI *, const CMPIContext *, const CMPIResult *,
                                            const CMPIObjectPath *, const char *, const char *)
{
    return status(CMPI_RC_OK);
}

void setUp(const CMPIBroker *given)
{
    broker = given;
    for (int i = 0; i < things; ++i) {
        labels[i] = format("label-%d", i);
        tags[i][0].clear();
        tags[i][1].clear();
    }
    trace("the things are set up");
}

} // namespace

CMInstanceMIStub(Test_Thing, Test_Thing, broker, setUp(brkr))
    CMMethodMIStub(Test_Thing, Test_Thing, broker, CMNoHook)
        CMInstanceMIStub(Test_SpecialThing, Test_SpecialThing, broker, CMNoHook)
            CMInstanceMIStub(Test_ThingPair, Test_ThingPair, broker, CMNoHook)
                CMAssociationMIStub(Test_ThingPair, Test_ThingPair, broker, CMNoHook)
                    CMAssociationMIStub(Test_ThingOnSystem, Test_ThingOnSystem, broker, CMNoHook)

                        extern "C"
{

    CMPIInstanceMI *Test_Simple_Create_InstanceMI(const CMPIBroker *, const CMPIContext *, CMPIStatus *)
    {
        return &simpleInstances;
    }

    CMPIMethodMI *Test_Simple_Create_MethodMI(const CMPIBroker *, const CMPIContext *, CMPIStatus *)
    {
        return &simpleMethods;
    }

    CMPIInstanceMI *Test_Faulty_Create_InstanceMI(const CMPIBroker *, const CMPIContext *, CMPIStatus *)
    {
        return &faultyInstances;
    }

    CMPIMethodMI *Test_Faulty_Create_MethodMI(const CMPIBroker *, const CMPIContext *, CMPIStatus *)
    {
        return &simpleMethods;
    }

    /** A factory that fails. */
    CMPIInstanceMI *Test_Broken_Create_InstanceMI(const CMPIBroker *given, const CMPIContext *,
                                                  CMPIStatus *outcome)
    {
        *outcome = {CMPI_RC_ERR_FAILED, CMNewString(given, "not today", nullptr)};
        return nullptr;
    }

    /** For tests in the same process: whether somebody is inside Nap. */
    bool isNapping()
    {
        return napping > 0;
    }

    /** Ends a nap without end (of UINT32_MAX milliseconds). */
    void wakeNapper()
    {
        mayWake = true;
        mayWake.notify_one();
    }
}
