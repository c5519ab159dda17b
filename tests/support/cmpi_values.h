// SPDX-License-Identifier: Apache-2.0
// CMPI data as plain values: what a test types into an argument list or expects of an instance.
#ifndef TEST_SUPPORT_CMPI_VALUES_H
#define TEST_SUPPORT_CMPI_VALUES_H

#include <cmpi/cmpidt.h>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace test_support
{

struct Path;
struct Instance;

/** How a string is handed over; brokers and clients know every one of these forms. */
enum class TextForm : uint8_t {
    characters,   // a string with its characters
    noString,     // the pointer to the string is null
    noCharacters, // a string whose getCharPtr gives null
    noHandle,     // a string without a handle
};

/** One datum with its type and state. A C string literal is a CMPI_string, the form in which clients' texts
 *  arrive; everything else is made by the functions below. */
struct Value {
    Value() = default;
    Value(const char *characters);
    Value(const std::string &characters);

    CMPIType type = CMPI_null;
    CMPIValueState state = CMPI_goodValue;
    CMPIrc rc = CMPI_RC_OK; // the status with which the broker hands the value out
    uint64_t integer = 0;   // booleans, integers (sign-extended), the microseconds of a dateTime
    double real = 0;
    bool interval = false; // of a dateTime
    TextForm form = TextForm::characters;
    std::string text;               // CMPI_string, CMPI_chars
    bool handedOutAsString = false; // CMPI_chars that came from the provider: brokers make a string of them
    std::vector<Value> elements;
    std::shared_ptr<Path> path;         // CMPI_ref; null is a null pointer
    std::shared_ptr<Instance> instance; // CMPI_instance; null is a null pointer

    bool operator==(const Value &other) const;
};

/** A named value: a key, a property, an argument, a context entry. */
struct Entry {
    std::string name;
    Value value;
    bool operator==(const Entry &) const = default;
};
using Entries = std::vector<Entry>;

struct Path {
    std::string nameSpace = "root/cimv2";
    std::string className;
    Entries keys = {};
    TextForm classNameForm = TextForm::characters; // anything else: the class name cannot be read
    bool operator==(const Path &) const = default;

    /** Copies of this path with one key replaced or added, without a key, of another class, in another
     * namespace. */
    Path with(const std::string &key, const Value &value) const;
    Path without(const std::string &key) const;
    Path ofClass(const std::string &name) const;
    Path inNameSpace(const std::string &name) const;
};

struct Instance {
    Path path;
    Entries properties = {};
    bool operator==(const Instance &) const = default;
    /** The named property or, as brokers have it, key; null when there is none. */
    const Value *find(const std::string &name) const;
};

Path path(const std::string &className, const Entries &keys = {});
Instance instance(const Path &path, const Entries &properties = {});

// ---- good values ----
Value chars(const std::string &text);  // CMPI_chars
Value string(const std::string &text); // CMPI_string
Value boolean(int value);
Value uint8(uint8_t value);
Value uint16(uint16_t value);
Value uint32(uint32_t value);
Value uint64(uint64_t value);
Value sint32(int32_t value);
Value real32(float value);
Value dateTime(int64_t microseconds); // a point in time, since 1970-01-01 UTC
Value interval(uint64_t microseconds);
Value reference(const Path &path);
Value embedded(const Instance &instance);
Value uint16Array(const std::vector<uint16_t> &values);
Value stringArray(const std::vector<std::string> &values);

// ---- values that are not there, in all the ways brokers have of saying so ----
Value absent();                     // not in the list at all
Value nullOf(CMPIType type);        // there, with the state CMPI_nullValue
Value notFoundState(CMPIType type); // status OK, but the state CMPI_notFound
Value readFails(CMPIrc rc);         // the read itself fails
Value leftBehind(const std::string &text, CMPIrc rc, CMPIValueState state); // a string, but the rest says no
Value stringOf(TextForm form); // a CMPI_string, good by its state, of that form
Value nullReference();         // a CMPI_ref, good by its state, with a null pointer

/** A way of not being there, with a word for failure messages. */
struct NamedValue {
    std::string name;
    Value value;
};
/** Every way in which a string can be missing. */
std::vector<NamedValue> everyMissingString();

// ---- printing, one value to a line ----
std::string describe(const Value &value);
std::string describe(const Entries &entries);
std::string describe(const Path &path);
std::string describe(const Instance &instance);
std::string typeName(CMPIType type);

/** Finds without regard to case, as CMPI names are found. */
const Entry *findEntry(const Entries &entries, const std::string &name);
Entry *findEntry(Entries &entries, const std::string &name);

} // namespace test_support

#endif
