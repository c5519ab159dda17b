// SPDX-License-Identifier: Apache-2.0
// What a monitor's object manager tells: paths, values, instances. Values stay the texts that stood in the
// message; the reader says what it takes them for, because object managers differ in the types they name.
#ifndef DISPLAYCTL_WBEM_VALUE_H
#define DISPLAYCTL_WBEM_VALUE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace displayctl::wbem
{

/** Whether two names of classes, properties, keys or methods are the same; letter case does not count in CIM.
 */
[[nodiscard]] bool sameName(std::string_view left, std::string_view right);

struct ObjectPath;

/** One key of a path: a text, or a reference to another object. */
struct Key {
    enum class Kind { text, boolean, number, reference };

    std::string name;
    std::string value; // empty in a reference
    Kind kind = Kind::text;
    std::vector<ObjectPath> reference; // one in a reference, else none

    /** Name and value; whether the value came as a number or as a text does not count. */
    [[nodiscard]] bool operator==(const Key &other) const;
};

/** The path of an instance; a path without keys stands for a class. */
struct ObjectPath {
    std::string className;
    std::vector<Key> keys;
    std::string nameSpace = {}; // empty: that of the connection

    /** The value of a key, or null. */
    [[nodiscard]] const Key *find(std::string_view name) const;
    /** The text of a key, empty where there is none. */
    [[nodiscard]] std::string_view text(std::string_view name) const;
    /** Class and keys, whatever their order; the namespace counts only where both have one. */
    [[nodiscard]] bool operator==(const ObjectPath &other) const;
    /** Class.Key="value",... with the keys in the order of their names: the same text for equal paths of a
     * namespace. */
    [[nodiscard]] std::string toText() const;
};

/** The value of a property, a return value or an output argument. */
class Value
{
  public:
    /** Null. */
    Value() = default;
    explicit Value(std::string text) : texts_{std::move(text)}, isNull_(false) {}
    explicit Value(ObjectPath path) : reference_{std::move(path)}, isNull_(false) {}
    [[nodiscard]] static Value array(std::vector<std::string> texts);

    [[nodiscard]] bool isNull() const
    {
        return isNull_;
    }
    [[nodiscard]] bool isArray() const
    {
        return isArray_;
    }
    /** The text; of an array its first element; none when null, an empty array or a reference. */
    [[nodiscard]] std::optional<std::string> text() const;
    /** The text as a whole number; none when it is not one. */
    [[nodiscard]] std::optional<std::int64_t> number() const;
    /** The text as a truth value, whether written TRUE, true or 1; none when it is not one. */
    [[nodiscard]] std::optional<bool> boolean() const;
    /** The elements of an array; of a scalar, the one. */
    [[nodiscard]] const std::vector<std::string> &elements() const
    {
        return texts_;
    }
    /** The object referred to, or null. */
    [[nodiscard]] const ObjectPath *reference() const
    {
        return reference_.empty() ? nullptr : reference_.data();
    }

    [[nodiscard]] bool operator==(const Value &other) const = default;

  private:
    std::vector<std::string> texts_;
    std::vector<ObjectPath> reference_; // one or none
    bool isNull_ = true;
    bool isArray_ = false;
};

/** A property of an instance or an argument of a method. */
struct Property {
    std::string name;
    std::string
        type; // as CIM names it ("uint16"); "reference" of a reference; empty where the message tells none
    Value value;
};

struct Instance {
    ObjectPath path; // without keys where the message tells none
    std::vector<Property> properties;

    /** The property, or null where the instance has none of this name. */
    [[nodiscard]] const Property *find(std::string_view name) const;
    /** Its value; null (as a value) where the instance has no such property. */
    [[nodiscard]] const Value &value(std::string_view name) const;
};

/** The date of a CIM datetime ("20260131000000.000000+000", "20260131000000.000000+00:00") as YYYY-MM-DD, as
 * the offset leaves it; none when it is not a point in time. */
[[nodiscard]] std::optional<std::string> dateOf(std::string_view dateTime);

} // namespace displayctl::wbem

#endif
