// SPDX-License-Identifier: Apache-2.0
// What declarations mean: qualifiers and their scopes, what classes inherit and override, what references
// name.
#include "cim/mof_parser.h"

#include <algorithm>

namespace cim
{
namespace
{

bool sameValue(const Value &left, const Value &right)
{
    return left.isNull == right.isNull && left.items == right.items;
}

/** What the qualifiers take in memory, about. */
std::size_t sizeOf(const Qualifiers &qualifiers)
{
    std::size_t size = 0;
    for (const Qualifier &qualifier : qualifiers) {
        size += sizeof qualifier;
        for (const std::string &item : qualifier.value.items) {
            size += sizeof item + item.size();
        }
    }
    return size;
}

} // namespace

// ---- Qualifiers ----

void MofParser::checkScope(const std::vector<QualifierUse> &uses, std::uint16_t scope,
                           const std::string &what)
{
    for (const QualifierUse &use : uses) {
        if ((use.declaration->scope & scope) != 0) {
            continue;
        }
        std::string allowed;
        for (unsigned i = 0; i < 8; ++i) {
            const auto bit = static_cast<std::uint16_t>(1u << i);
            if ((use.declaration->scope & bit) != 0) {
                allowed += (allowed.empty() ? "" : ", ") + std::string(scopeName(bit));
            }
        }
        error(use.where, "qualifier " + inQuotes(use.qualifier.name) + " may not stand at " + what +
                             "; its scope is " + allowed);
    }
}

/** What an element has from the overridden or inherited one. */
Qualifiers MofParser::inheritedQualifiers(const Qualifiers &qualifiers)
{
    Qualifiers result;
    for (const Qualifier &qualifier : qualifiers) {
        if (qualifier.flavor.toSubclass) {
            result.push_back(qualifier);
            result.back().propagated = true;
        }
    }
    return result;
}

/** The written qualifiers followed by the inherited ones that they do not replace. */
Qualifiers MofParser::mergeQualifiers(const Qualifiers *inherited, const std::vector<QualifierUse> &uses,
                                      const std::string &what)
{
    Qualifiers result;
    for (const QualifierUse &use : uses) {
        result.push_back(use.qualifier);
    }
    if (inherited == nullptr) {
        return result;
    }
    for (Qualifier &old : inheritedQualifiers(*inherited)) {
        const auto use = std::find_if(uses.begin(), uses.end(), [&](const QualifierUse &candidate) {
            return sameName(candidate.qualifier.name, old.name);
        });
        if (use == uses.end()) {
            result.push_back(std::move(old));
        } else if (!old.flavor.overridable && !sameValue(use->qualifier.value, old.value)) {
            error(use->where, "qualifier " + inQuotes(old.name) + " of " + what +
                                  " may not change; the inherited value is " +
                                  (old.value.isNull ? "NULL" : inQuotes(old.value.text())));
        }
    }
    return result;
}

// ---- Classes ----

void MofParser::resolveClass(ParsedClass &parsed)
{
    Class &klass = parsed.klass;
    const std::string what = "class " + inQuotes(klass.name);
    if (const Class *other = repository_.find(klass.name)) {
        abandon(parsed.where, what + " is defined twice, first at " + other->definedAt);
    }
    const Class *parent = nullptr;
    if (!klass.superclass.empty()) {
        parent = repository_.find(klass.superclass);
        if (parent == nullptr) {
            abandon(parsed.superclassWhere,
                    brokenClasses_.contains(klass.superclass)
                        ? "the superclass " + inQuotes(klass.superclass) + " of " + what + " has errors"
                        : "unknown superclass " + inQuotes(klass.superclass) + " of " + what +
                              "; it must be declared before its subclasses");
        }
        if (parent->lineage.size() >= limits_.inheritanceDepth) {
            abandon(parsed.superclassWhere, what + " derives through more than " +
                                                std::to_string(limits_.inheritanceDepth) + " classes");
        }
        klass.superclass = parent->name;
    }
    klass.qualifiers = mergeQualifiers(parent != nullptr ? &parent->qualifiers : nullptr, parsed.uses, what);
    klass.isAssociation = hasQualifier(klass.qualifiers, "Association");
    klass.isIndication = hasQualifier(klass.qualifiers, "Indication");
    klass.isAbstract = hasQualifier(klass.qualifiers, "Abstract");
    if (klass.isAssociation && parent != nullptr && !parent->isAssociation) {
        error(parsed.where,
              what + " is an association and its superclass " + inQuotes(parent->name) + " is not");
    }
    checkScope(parsed.uses,
               klass.isAssociation  ? Declaration::scopeClass | Declaration::scopeAssociation
               : klass.isIndication ? Declaration::scopeClass | Declaration::scopeIndication
                                    : Declaration::scopeClass,
               what);
    resolveProperties(parsed, parent);
    resolveMethods(parsed, parent);
    if (klass.isAssociation) {
        const auto count = std::count_if(klass.properties.begin(), klass.properties.end(),
                                         [](const Property &p) { return p.type == Type::reference; });
        if (count < 2) {
            error(parsed.where, what + " is an association with " + std::to_string(count) +
                                    " references; expected at least two");
        }
    }
}

void MofParser::checkOverride(const Qualifiers &qualifiers, const char *kind, const std::string &name,
                              const std::string &className, const std::string *inheritedFrom, Where where)
{
    const Qualifier *override = findQualifier(qualifiers, "Override");
    const std::string what = std::string(kind) + " " + inQuotes(name) + " of class " + inQuotes(className);
    if (override == nullptr || override->propagated) {
        if (inheritedFrom != nullptr) {
            error(where, what + " is already declared in " + inQuotes(*inheritedFrom) +
                             "; expected [Override (" + inQuotes(name) + ")]");
        }
    } else if (!sameName(override->value.text(), name)) {
        error(where, what + " overrides " + inQuotes(override->value.text()) + "; expected its own name");
    } else if (inheritedFrom == nullptr) {
        error(where, what + " overrides nothing; no superclass declares it");
    }
}

void MofParser::addReference(const Element &element, const std::string &ancestor, const std::string &what,
                             Where where)
{
    if (element.type == Type::reference) {
        pending_.push_back({element.referenceClass, ancestor, what, file_, where});
    }
}

/** Whether the property may be what it says: a reference, a key. overridden: the property of the parent, or
 * null. */
void MofParser::checkProperty(const Property &property, const Class &klass, const Class *parent,
                              const Property *overridden, const std::string &what, Where where)
{
    if (property.type == Type::reference && !klass.isAssociation) {
        error(where, what + " is a reference; only an association may have one");
    }
    if (property.isKey && property.isArray) {
        error(where, what + " is a key and an array; a key has a single value");
    }
    if (property.isKey && parent != nullptr && !parent->keys.empty() &&
        (overridden == nullptr || !overridden->isKey)) {
        std::string keys;
        for (const Property *key : repository_.keys(*parent)) {
            keys += (keys.empty() ? "" : ", ") + key->name;
        }
        error(where, what + " may not be a key; the keys are those of superclass " + inQuotes(parent->name) +
                         ": " + keys);
    }
}

void MofParser::resolveProperties(ParsedClass &parsed, const Class *parent)
{
    Class &klass = parsed.klass;
    NameMap<std::size_t> places;
    if (parent != nullptr) {
        for (const Property &inherited : parent->properties) {
            places.emplace(inherited.name, klass.properties.size());
            klass.properties.push_back(inherited);
            Property &property = klass.properties.back();
            property.propagated = true;
            property.qualifiers = inheritedQualifiers(inherited.qualifiers);
            charge(sizeof property + sizeOf(property.qualifiers), parsed.where);
        }
    }
    std::unordered_set<std::string, NameHash, NameEqual> own;
    for (ParsedProperty &declared : parsed.properties) {
        Property &property = declared.property;
        const std::string what = "property " + inQuotes(property.name) + " of class " + inQuotes(klass.name);
        if (!own.insert(property.name).second) {
            error(declared.where, what + " is declared twice");
            continue;
        }
        const auto place = places.find(property.name);
        const bool isInherited = place != places.end();
        const Property *old = isInherited ? parent->findProperty(property.name) : nullptr;
        checkScope(declared.uses,
                   property.type == Type::reference ? Declaration::scopeReference
                                                    : Declaration::scopeProperty,
                   what);
        property.qualifiers =
            mergeQualifiers(old != nullptr ? &old->qualifiers : nullptr, declared.uses, what);
        property.isKey = hasQualifier(property.qualifiers, "Key");
        property.classOrigin = old != nullptr ? old->classOrigin : klass.name;
        checkOverride(property.qualifiers, "property", property.name, klass.name,
                      old != nullptr ? &old->classOrigin : nullptr, declared.where);
        checkProperty(property, klass, parent, old, what, declared.where);
        if (old == nullptr) {
            addReference(property, "", what, declared.where);
            klass.properties.push_back(std::move(property));
            continue;
        }
        if (property.type != old->type || property.isArray != old->isArray) {
            error(declared.where, what + " has type " + typeWithArray(property.type, property.isArray) +
                                      "; the property it overrides has " +
                                      typeWithArray(old->type, old->isArray));
        } else {
            addReference(property, old->referenceClass, what, declared.where);
        }
        if (!declared.hasDefault) {
            property.defaultValue = old->defaultValue;
        }
        klass.properties[place->second] = std::move(property);
    }
    checkTotal(klass.properties.size(), "properties", parsed.where);
}

void MofParser::resolveMethods(ParsedClass &parsed, const Class *parent)
{
    Class &klass = parsed.klass;
    NameMap<std::size_t> places;
    if (parent != nullptr) {
        for (const Method &inherited : parent->methods) {
            places.emplace(inherited.name, klass.methods.size());
            klass.methods.push_back(inherited);
            Method &method = klass.methods.back();
            method.propagated = true;
            method.qualifiers = inheritedQualifiers(inherited.qualifiers);
            std::size_t size = sizeof method + sizeOf(method.qualifiers);
            for (const Parameter &parameter : method.parameters) {
                size += sizeof parameter + sizeOf(parameter.qualifiers);
            }
            charge(size, parsed.where);
        }
    }
    std::unordered_set<std::string, NameHash, NameEqual> own;
    for (ParsedMethod &declared : parsed.methods) {
        Method &method = declared.method;
        const std::string what = "method " + inQuotes(method.name) + " of class " + inQuotes(klass.name);
        if (!own.insert(method.name).second) {
            error(declared.where, what + " is declared twice");
            continue;
        }
        const auto place = places.find(method.name);
        const bool isInherited = place != places.end();
        const Method *old = isInherited ? parent->findMethod(method.name) : nullptr;
        checkScope(declared.uses, Declaration::scopeMethod, what);
        method.qualifiers = mergeQualifiers(old != nullptr ? &old->qualifiers : nullptr, declared.uses, what);
        method.isStatic = hasQualifier(method.qualifiers, "Static");
        method.classOrigin = old != nullptr ? old->classOrigin : klass.name;
        checkOverride(method.qualifiers, "method", method.name, klass.name,
                      old != nullptr ? &old->classOrigin : nullptr, declared.where);
        for (const ParsedParameter &parameter : declared.parameters) {
            addReference(parameter.parameter, "",
                         "parameter " + inQuotes(parameter.parameter.name) + " of " + what, parameter.where);
        }
        if (old == nullptr) {
            klass.methods.push_back(std::move(method));
            continue;
        }
        // The parameters may differ from the overridden method's: the monitor's services take every argument
        // as text where the standard has numbers, and clients depend on it.
        if (method.returnType != old->returnType) {
            error(declared.where, what + " returns " + typeName(method.returnType) +
                                      "; the method it overrides returns " + typeName(old->returnType));
        }
        klass.methods[place->second] = std::move(method);
    }
    checkTotal(klass.methods.size(), "methods", parsed.where);
}

void MofParser::charge(std::size_t bytes, Where where)
{
    inheritedBytes_ += bytes;
    if (inheritedBytes_ > limits_.inheritedBytes) {
        error(where, "the classes inherit more than " + std::to_string(limits_.inheritedBytes) +
                         " bytes; the rest is not read");
        throw Stop{};
    }
}

void MofParser::checkTotal(std::size_t count, const char *what, Where where)
{
    if (count > limits_.listLength) {
        abandon(where, "the class has more than " + std::to_string(limits_.listLength) + " " + what +
                           " with the inherited ones");
    }
}

/** What can only be known at the end: the classes that references name. */
void MofParser::checkReferences()
{
    for (const PendingReference &reference : pending_) {
        file_ = reference.file;
        const Class *klass = repository_.find(reference.referenceClass);
        if (klass == nullptr) {
            error(reference.where,
                  reference.element + " refers to class " + inQuotes(reference.referenceClass) +
                      (brokenClasses_.contains(reference.referenceClass) ? ", which has errors"
                                                                         : ", which is not defined"));
        } else if (!reference.ancestor.empty() && !repository_.isA(klass->name, reference.ancestor)) {
            error(reference.where, reference.element + " refers to class " + inQuotes(klass->name) +
                                       "; expected " + inQuotes(reference.ancestor) +
                                       " or a subclass, as the " + "overridden property has it");
        }
    }
}

} // namespace cim
