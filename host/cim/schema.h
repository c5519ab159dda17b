// SPDX-License-Identifier: Apache-2.0
// The class model of the desk object manager: what the MOF files declare, with everything inherited already
// resolved, so that its readers (GetClass, typing of keys and arguments, association traversal) only look up.
//
// Names are compared without regard to letter case everywhere, as DSP0004 asks; the spelling that is kept is
// the one of the declaration.
#ifndef HOST_CIM_SCHEMA_H
#define HOST_CIM_SCHEMA_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace cim
{

// ---- Names and types ----

/** The intrinsic types of CIM (DSP0004), with the values of the CMPI type codes. None is "no type". */
enum class Type : std::uint16_t {
    none = 0x0000,
    boolean = 0x0002,
    char16 = 0x0003,
    real32 = 0x0008,
    real64 = 0x000c,
    uint8 = 0x0080,
    uint16 = 0x0090,
    uint32 = 0x00a0,
    uint64 = 0x00b0,
    sint8 = 0x00c0,
    sint16 = 0x00d0,
    sint32 = 0x00e0,
    sint64 = 0x00f0,
    reference = 0x1100,
    string = 0x1600,
    dateTime = 0x1800,
};

/** The bit that makes a CMPI type code an array's. */
inline constexpr std::uint16_t cmpiArrayBit = 0x2000;

/** The CMPI type code (CMPIType) of a CIM type, as scalar or as array. */
constexpr std::uint16_t cmpiType(Type type, bool isArray)
{
    return static_cast<std::uint16_t>(static_cast<unsigned>(type) | (isArray ? cmpiArrayBit : 0u));
}

/** The type's name in MOF and in the TYPE attributes of CIM-XML ("uint16", "datetime", "reference"); "" of
 * None. */
const char *typeName(Type type);

/** The type of a name as typeName() gives it, any letter case; Type::none when there is no such type. */
Type typeFromName(std::string_view name);

/** True of the eight integer types. */
constexpr bool isInteger(Type type)
{
    return (static_cast<unsigned>(type) & 0xff80u) == 0x80u;
}

/** True of real32 and real64. */
constexpr bool isReal(Type type)
{
    return type == Type::real32 || type == Type::real64;
}

/** True when the two names are equal without regard to the case of ASCII letters. */
bool sameName(std::string_view left, std::string_view right);

struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const;
};

struct NameEqual {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const
    {
        return sameName(left, right);
    }
};

/** A map whose keys are CIM names; find() takes any std::string_view without making a string. */
template <typename T>
using NameMap = std::unordered_map<std::string, T, NameHash, NameEqual>;

// ---- The model ----

/** A value as text: the form that CIM-XML's VALUE element takes (true/false, decimal integers, plain
 * strings). A scalar has exactly one item unless it is null; an array has any number. Typed by whoever owns
 * the value. */
struct Value {
    bool isNull = true;
    bool isArray = false;
    std::vector<std::string> items;

    /** The scalar's text, or "" of a null value or an empty array. */
    const std::string &text() const;
    /** True of a non-null boolean scalar whose text is "true". */
    bool isTrue() const;
};

/** How a qualifier spreads (DSP0004 "flavor"). */
struct Flavor {
    bool overridable = true; // false: DisableOverride
    bool toSubclass = true;  // false: Restricted
    bool translatable = false;

    bool operator==(const Flavor &) const = default;
};

struct Qualifier {
    std::string name;
    Type type = Type::none;
    Value value;
    Flavor flavor;
    bool propagated = false; // inherited from the superclass's element, not written at this one
};

using Qualifiers = std::vector<Qualifier>;

/** The qualifier of that name, or null. */
const Qualifier *findQualifier(const Qualifiers &qualifiers, std::string_view name);

/** True when the boolean qualifier is present and true. */
bool hasQualifier(const Qualifiers &qualifiers, std::string_view name);

/** What properties and parameters have in common. */
struct Element {
    std::string name;
    Type type = Type::none;
    bool isArray = false;
    std::uint32_t arraySize = 0; // of a fixed array, 0: open
    std::string referenceClass;  // of Type::reference
    Qualifiers qualifiers;       // with the inherited ones

    /** The CMPI type code of the element. */
    std::uint16_t cmpiCode() const
    {
        return cmpiType(type, isArray);
    }
};

struct Property : Element {
    Value defaultValue;
    bool isKey = false;
    std::string classOrigin; // the class that introduced the property
    bool propagated = false; // neither introduced nor overridden by the class at hand
};

struct Parameter : Element {
    bool isIn = true; // IN and OUT qualifiers; IN is what a parameter without either is
    bool isOut = false;
};

struct Method {
    std::string name;
    Type returnType = Type::none;
    std::vector<Parameter> parameters;
    Qualifiers qualifiers;
    bool isStatic = false;
    std::string classOrigin;
    bool propagated = false;

    /** The parameter of that name, or null. */
    const Parameter *findParameter(std::string_view parameterName) const;
};

/** Number of a class in its repository; small, dense, never reused. */
using ClassId = std::uint32_t;
inline constexpr ClassId noClass = 0xffffffffu;

/** What placeOf() says of a property that the class has not. */
inline constexpr std::size_t noProperty = static_cast<std::size_t>(-1);

/** What is looked at for each property of each instance, without the rest of its declaration. */
struct PropertySlot {
    const char *name = nullptr;
    std::uint16_t cmpiCode = 0;
    bool isKey = false;
    /** The place that was looked up after this one the last time. */
    std::atomic<std::uint16_t> follower = 0;
};

/** A class with everything it has inherited. Inherited properties and methods come first, each at the place
 * of the class that introduced it (an override does not move it), then its own in the order of the
 * declaration. */
struct Class {
    Class() = default;
    Class(const Class &) = delete; // `places` looks into `properties`
    Class &operator=(const Class &) = delete;
    Class(Class &&) = default;
    Class &operator=(Class &&) = default;
    ~Class() = default;

    std::string name;
    std::string superclass; // "" of a root class
    Qualifiers qualifiers;
    std::vector<Property> properties;
    std::vector<Method> methods;
    bool isAssociation = false;
    bool isAbstract = false;
    bool isIndication = false;
    std::string definedAt; // "file:line", for messages

    // Filled by the repository.
    ClassId id = noClass;
    ClassId superclassId = noClass;
    std::vector<ClassId> lineage;      // from the root class to this one
    std::vector<ClassId> subclasses;   // direct ones, in the order of declaration
    std::vector<std::size_t> keys;     // places of the key properties in `properties`
    std::vector<std::size_t> defaults; // places of the properties with a default value other than NULL
    std::unordered_map<std::string_view, std::size_t, NameHash, NameEqual> places; // of the properties
    std::unique_ptr<PropertySlot[]> slots; // one for each property, in the same order

    /** The place of the property of that name in `properties` of a stored class, or noProperty. */
    std::size_t placeOf(std::string_view propertyName) const
    {
        const auto found = places.find(propertyName);
        return found == places.end() ? noProperty : found->second;
    }

    /** placeOf() for who looks up property after property in about the same order each time, as a provider
     * does; previous: the place before. */
    std::size_t placeAfter(std::size_t previous, const char *propertyName) const
    {
        if (previous >= properties.size()) {
            return placeOf(propertyName);
        }
        std::atomic<std::uint16_t> &follower = slots[previous].follower;
        const std::size_t likely = follower.load(std::memory_order_relaxed);
        if (std::strcmp(slots[likely].name, propertyName) == 0) {
            return likely;
        }
        const std::size_t place = placeOf(propertyName);
        if (place <= UINT16_MAX) {
            follower.store(static_cast<std::uint16_t>(place), std::memory_order_relaxed);
        }
        return place;
    }

    /** True when the class is the ancestor or derives from it; both are of one repository. Constant time. */
    bool isA(const Class &ancestor) const
    {
        return lineage.size() >= ancestor.lineage.size() &&
               lineage[ancestor.lineage.size() - 1] == ancestor.id;
    }

    /** The property of that name, or null. */
    const Property *findProperty(std::string_view propertyName) const;
    /** The method of that name, or null. */
    const Method *findMethod(std::string_view methodName) const;
};

struct QualifierDeclaration {
    /** What a qualifier may stand at. */
    enum Scope : std::uint16_t {
        scopeClass = 1,
        scopeAssociation = 2,
        scopeIndication = 4,
        scopeProperty = 8,
        scopeReference = 16,
        scopeMethod = 32,
        scopeParameter = 64,
        scopeSchema = 128,
        scopeAny = 127,
    };

    std::string name;
    Type type = Type::none;
    bool isArray = false;
    std::uint32_t arraySize = 0;
    Value defaultValue;
    std::uint16_t scope = 0; // Scope bits
    Flavor flavor;
};

/** The name of a single scope bit as MOF writes it ("class", "property"), or "". */
const char *scopeName(std::uint16_t scope);

// ---- The repository ----

/** The classes and qualifier declarations of one namespace. Pointers and references that it hands out stay
 * valid for as long as the repository lives; it only grows. */
class ClassRepository
{
  public:
    ClassRepository() = default;
    ClassRepository(const ClassRepository &) = delete;
    ClassRepository &operator=(const ClassRepository &) = delete;
    ClassRepository(ClassRepository &&) = default;
    ClassRepository &operator=(ClassRepository &&) = default;

    /** Takes a resolved class in and fills its id, lineage and keys. Returns the stored class; null when the
     * name is taken or the superclass is unknown, and then nothing has changed. */
    const Class *add(Class declaration);

    /** Takes a qualifier declaration in; false when the name is taken. */
    bool add(QualifierDeclaration declaration);

    /** The class of that name, or null. */
    const Class *find(std::string_view name) const;

    /** The class of that number; the number must come from this repository. */
    const Class &byId(ClassId id) const
    {
        return *classes_[id];
    }

    /** The number of that class, or noClass. */
    ClassId idOf(std::string_view name) const;

    std::size_t size() const
    {
        return classes_.size();
    }

    /** All classes, superclasses before their subclasses. */
    std::vector<const Class *> all() const;

    /** The classes without superclass. */
    std::vector<const Class *> roots() const;

    /** The direct subclasses, in the order of declaration. */
    std::vector<const Class *> subclasses(const Class &parent) const;

    /** All classes below the given one, without it, each before its own subclasses. */
    std::vector<const Class *> deepSubclasses(const Class &parent) const;

    /** True when the class is the ancestor or derives from it. Constant time. */
    bool isA(ClassId klass, ClassId ancestor) const
    {
        if (klass >= classes_.size() || ancestor >= classes_.size()) {
            return false;
        }
        const std::vector<ClassId> &lineage = classes_[klass]->lineage;
        const std::size_t depth = classes_[ancestor]->lineage.size() - 1;
        return depth < lineage.size() && lineage[depth] == ancestor;
    }

    /** The same by name, any letter case; false when either class is unknown. Two hash look-ups. */
    bool isA(std::string_view klass, std::string_view ancestor) const;

    /** The key properties of the class, inherited ones included, in the order of its properties. */
    std::vector<const Property *> keys(const Class &klass) const;

    /** The declaration of that qualifier, or null. */
    const QualifierDeclaration *findQualifier(std::string_view name) const;

    /** All qualifier declarations in the order of declaration. */
    std::vector<const QualifierDeclaration *> qualifiers() const;

  private:
    std::vector<std::unique_ptr<Class>> classes_;
    NameMap<ClassId> classByName_;
    std::vector<std::unique_ptr<QualifierDeclaration>> qualifiers_;
    NameMap<std::size_t> qualifierByName_;
};

} // namespace cim

#endif
