// SPDX-License-Identifier: Apache-2.0
// A complete CMPI 2.0 broker for unit tests: every object is a plain structure that a test can look into,
// every call that can fail can be made to fail, and what a provider asks other classes is scripted per class.
//
// There is one broker, `broker`, emptied before every test.
#ifndef TEST_SUPPORT_RECORDING_BROKER_H
#define TEST_SUPPORT_RECORDING_BROKER_H

#include "cmpi_values.h"
#include "faults.h"
#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace test_support
{

/** What every object of the broker is. Objects belong to the broker until it is emptied. */
struct Object {
    virtual ~Object() = default;
    bool cloned = false; // a clone that its maker has to release
    bool released = false;
};

struct StringObject : Object, CMPIString {
    using Interface = CMPIString;
    std::string text;
    bool hasCharacters = true;
};

struct PathObject : Object, CMPIObjectPath {
    using Interface = CMPIObjectPath;
    Path path;
};

struct InstanceObject : Object, CMPIInstance {
    using Interface = CMPIInstance;
    Instance instance;
};

struct ArgsObject : Object, CMPIArgs {
    using Interface = CMPIArgs;
    Entries entries;
};

struct ContextObject : Object, CMPIContext {
    using Interface = CMPIContext;
    Entries entries;
};

struct ArrayObject : Object, CMPIArray {
    using Interface = CMPIArray;
    CMPIType type = CMPI_null;
    std::vector<Value> elements;
};

struct DateTimeObject : Object, CMPIDateTime {
    using Interface = CMPIDateTime;
    uint64_t microseconds = 0;
    bool interval = false;
};

struct EnumerationObject : Object, CMPIEnumeration {
    using Interface = CMPIEnumeration;
    std::vector<Value> elements;
    size_t next = 0;
};

/** What a provider hands back: everything in its order, and how often it said that it was done. */
struct ResultObject : Object, CMPIResult {
    using Interface = CMPIResult;
    std::vector<Value> returned;
    int done = 0;
};

/** How the rest of the world answers a provider that asks for the objects of a class. */
struct ClassScript {
    std::vector<Instance> instances = {};
    CMPIrc enumerateRc = CMPI_RC_OK; // anything else: no enumeration, this status
    std::string enumerateMessage = {};
    bool noEnumeration = false;              // null with the status OK
    std::optional<size_t> emptyElement = {}; // this element of an enumeration (counted from 0) is empty
    CMPIrc getInstanceRc = CMPI_RC_OK;
    std::string getInstanceMessage = {};
    bool noInstance = false; // getInstance gives null with the status OK
};

/** What object managers do differently, each within the standard. All are off unless the program is started
 * with BROKER_MANNERS, which names some of them, or a test sets them; every suite passes with each. */
struct Manners {
    bool marksElementsNull =
        false;                     // an element of an enumeration has its object and the state CMPI_nullValue
    bool keepsKeysInPaths = false; // newInstance shows the keys of its path by no property of the instance
    bool reportsFailuresAlone = false; // a call that succeeds leaves the status of the caller as it was
};

class RecordingBroker : public CMPIBroker
{
  public:
    RecordingBroker();
    RecordingBroker(const RecordingBroker &) = delete;
    RecordingBroker &operator=(const RecordingBroker &) = delete;

    // ---- the script ----
    std::map<std::string, ClassScript>
        classes; // a class that is not here is unknown: CMPI_RC_ERR_INVALID_CLASS
    std::map<std::string, std::string> superclasses; // the hierarchy of classPathIsA: class, its superclass
    std::optional<CMPIBoolean> classPathIsAYes;      // what classPathIsA answers instead of 1
    Manners manners;

    // ---- the record ----
    std::vector<std::string> upCalls; // "enumerateInstances(root/cimv2:Class)" and the like, in order

    /** Empties the broker: script, record and objects. */
    void reset();
    /** Frees the objects and forgets the record; the script stays. */
    void freeObjects();
    /** The clones that nobody has released. */
    int unreleasedClones() const;

    // ---- objects for calls ----
    PathObject *newPath(const Path &path);
    InstanceObject *newInstance(const Instance &instance);
    ArgsObject *newArgs(const Entries &entries);
    ContextObject *newContext(const Entries &entries);
    ResultObject *newResult();
    StringObject *newString(const std::string &text);

    template <typename Made>
    Made *make()
    {
        auto owned = std::make_unique<Made>();
        Made *made = owned.get();
        made->hdl = made;
        made->ft = tableOf(made);
        objects_.push_back(std::move(owned));
        return made;
    }

    /** Data as the broker hands it out, with the objects that belong to it. */
    CMPIData dataOf(const Value &value, Fault fault = Fault::none);
    /** The value that a function was given. */
    static Value valueOf(const CMPIValue *value, CMPIType type);
    static Value valueOf(const CMPIData &data);

  private:
    static const CMPIStringFT *tableOf(const CMPIString *);
    static const CMPIObjectPathFT *tableOf(const CMPIObjectPath *);
    static const CMPIInstanceFT *tableOf(const CMPIInstance *);
    static const CMPIArgsFT *tableOf(const CMPIArgs *);
    static const CMPIContextFT *tableOf(const CMPIContext *);
    static const CMPIArrayFT *tableOf(const CMPIArray *);
    static const CMPIDateTimeFT *tableOf(const CMPIDateTime *);
    static const CMPIEnumerationFT *tableOf(const CMPIEnumeration *);
    static const CMPIResultFT *tableOf(const CMPIResult *);

    std::vector<std::unique_ptr<Object>> objects_;
};

extern RecordingBroker broker;

/** The text of a broker's string, whatever its form. */
std::string textOf(const CMPIString *string, const char *otherwise);

} // namespace test_support

#endif
