// SPDX-License-Identifier: Apache-2.0
#include "cim/schema.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace cim
{
namespace
{

struct NamedType {
    const char *name;
    Type type;
};

constexpr NamedType types[] = {
    {"boolean", Type::boolean}, {"char16", Type::char16},     {"real32", Type::real32},
    {"real64", Type::real64},   {"uint8", Type::uint8},       {"uint16", Type::uint16},
    {"uint32", Type::uint32},   {"uint64", Type::uint64},     {"sint8", Type::sint8},
    {"sint16", Type::sint16},   {"sint32", Type::sint32},     {"sint64", Type::sint64},
    {"string", Type::string},   {"datetime", Type::dateTime}, {"reference", Type::reference},
};

constexpr unsigned char lower(char letter)
{
    const auto byte = static_cast<unsigned char>(letter);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

const std::string noText;

/** A class is kept as long as the program runs; what its lists have grown to beyond their size is not. */
void dropSlack(Class &klass)
{
    klass.qualifiers.shrink_to_fit();
    klass.properties.shrink_to_fit();
    klass.methods.shrink_to_fit();
    for (Property &property : klass.properties) {
        property.qualifiers.shrink_to_fit();
    }
    for (Method &method : klass.methods) {
        method.qualifiers.shrink_to_fit();
        method.parameters.shrink_to_fit();
        for (Parameter &parameter : method.parameters) {
            parameter.qualifiers.shrink_to_fit();
        }
    }
}

template <typename T>
const T *findByName(const std::vector<T> &items, std::string_view name)
{
    for (const T &item : items) {
        if (sameName(item.name, name)) {
            return &item;
        }
    }
    return nullptr;
}

} // namespace

const char *typeName(Type type)
{
    for (const NamedType &entry : types) {
        if (entry.type == type) {
            return entry.name;
        }
    }
    return "";
}

Type typeFromName(std::string_view name)
{
    for (const NamedType &entry : types) {
        if (sameName(entry.name, name)) {
            return entry.type;
        }
    }
    return Type::none;
}

bool sameName(std::string_view left, std::string_view right)
{
    if (left == right) { // nearly all names come in the letters of their declaration
        return true;
    }
    if (left.size() != right.size()) {
        return false;
    }
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (lower(left[i]) != lower(right[i])) {
            return false;
        }
    }
    return true;
}

std::size_t NameHash::operator()(std::string_view name) const
{
    // Eight letters at once. The bit that tells small from capital letters does not count; that it tells
    // other characters apart, too, makes no difference to names that are the same.
    constexpr std::uint64_t caseBits = 0x2020202020202020u;
    constexpr std::uint64_t factor = 0x9e3779b97f4a7c15u;
    std::uint64_t hash = name.size();
    while (!name.empty()) {
        std::uint64_t letters = 0;
        const std::size_t count = std::min(name.size(), sizeof letters);
        std::memcpy(&letters, name.data(), count);
        hash = (hash ^ (letters | caseBits)) * factor;
        hash ^= hash >> 32;
        name.remove_prefix(count);
    }
    return static_cast<std::size_t>(hash);
}

const std::string &Value::text() const
{
    return isNull || items.empty() ? noText : items.front();
}

bool Value::isTrue() const
{
    return !isArray && text() == "true";
}

const Qualifier *findQualifier(const Qualifiers &qualifiers, std::string_view name)
{
    return findByName(qualifiers, name);
}

bool hasQualifier(const Qualifiers &qualifiers, std::string_view name)
{
    const Qualifier *qualifier = findQualifier(qualifiers, name);
    return qualifier != nullptr && qualifier->type == Type::boolean && qualifier->value.isTrue();
}

const Parameter *Method::findParameter(std::string_view parameterName) const
{
    return findByName(parameters, parameterName);
}

const Property *Class::findProperty(std::string_view propertyName) const
{
    return findByName(properties, propertyName);
}

const Method *Class::findMethod(std::string_view methodName) const
{
    return findByName(methods, methodName);
}

const char *scopeName(std::uint16_t scope)
{
    switch (scope) {
    case QualifierDeclaration::scopeClass:
        return "class";
    case QualifierDeclaration::scopeAssociation:
        return "association";
    case QualifierDeclaration::scopeIndication:
        return "indication";
    case QualifierDeclaration::scopeProperty:
        return "property";
    case QualifierDeclaration::scopeReference:
        return "reference";
    case QualifierDeclaration::scopeMethod:
        return "method";
    case QualifierDeclaration::scopeParameter:
        return "parameter";
    case QualifierDeclaration::scopeSchema:
        return "schema";
    default:
        return "";
    }
}

const Class *ClassRepository::add(Class declaration)
{
    if (classes_.size() >= noClass || declaration.name.empty() || classByName_.contains(declaration.name)) {
        return nullptr;
    }
    ClassId parent = noClass;
    if (!declaration.superclass.empty()) {
        parent = idOf(declaration.superclass);
        if (parent == noClass) {
            return nullptr;
        }
    }
    const auto id = static_cast<ClassId>(classes_.size());
    auto stored = std::make_unique<Class>(std::move(declaration));
    dropSlack(*stored);
    stored->id = id;
    stored->superclassId = parent;
    stored->subclasses.clear();
    stored->lineage.clear();
    if (parent != noClass) {
        stored->lineage = classes_[parent]->lineage;
        classes_[parent]->subclasses.push_back(id);
    }
    stored->lineage.push_back(id);
    stored->keys.clear();
    stored->defaults.clear();
    stored->slots = std::make_unique<PropertySlot[]>(stored->properties.size());
    for (std::size_t i = 0; i < stored->properties.size(); ++i) {
        stored->places.emplace(stored->properties[i].name, i);
        stored->slots[i].name = stored->properties[i].name.c_str();
        stored->slots[i].cmpiCode = stored->properties[i].cmpiCode();
        stored->slots[i].isKey = stored->properties[i].isKey;
        if (!stored->properties[i].defaultValue.isNull && stored->properties[i].type != Type::reference) {
            stored->defaults.push_back(i);
        }
        if (stored->properties[i].isKey) {
            stored->keys.push_back(i);
        }
    }
    classByName_.emplace(stored->name, id);
    classes_.push_back(std::move(stored));
    return classes_.back().get();
}

bool ClassRepository::add(QualifierDeclaration declaration)
{
    if (declaration.name.empty() || qualifierByName_.contains(declaration.name)) {
        return false;
    }
    qualifierByName_.emplace(declaration.name, qualifiers_.size());
    qualifiers_.push_back(std::make_unique<QualifierDeclaration>(std::move(declaration)));
    return true;
}

const Class *ClassRepository::find(std::string_view name) const
{
    const ClassId id = idOf(name);
    return id == noClass ? nullptr : classes_[id].get();
}

ClassId ClassRepository::idOf(std::string_view name) const
{
    const auto entry = classByName_.find(name);
    return entry == classByName_.end() ? noClass : entry->second;
}

std::vector<const Class *> ClassRepository::all() const
{
    std::vector<const Class *> result;
    result.reserve(classes_.size());
    for (const auto &klass : classes_) {
        result.push_back(klass.get());
    }
    return result;
}

std::vector<const Class *> ClassRepository::roots() const
{
    std::vector<const Class *> result;
    for (const auto &klass : classes_) {
        if (klass->superclassId == noClass) {
            result.push_back(klass.get());
        }
    }
    return result;
}

std::vector<const Class *> ClassRepository::subclasses(const Class &parent) const
{
    std::vector<const Class *> result;
    result.reserve(parent.subclasses.size());
    for (const ClassId id : parent.subclasses) {
        result.push_back(classes_[id].get());
    }
    return result;
}

std::vector<const Class *> ClassRepository::deepSubclasses(const Class &parent) const
{
    std::vector<const Class *> result;
    std::vector<ClassId> pending(parent.subclasses.rbegin(), parent.subclasses.rend());
    while (!pending.empty()) {
        const Class &klass = *classes_[pending.back()];
        pending.pop_back();
        result.push_back(&klass);
        pending.insert(pending.end(), klass.subclasses.rbegin(), klass.subclasses.rend());
    }
    return result;
}

bool ClassRepository::isA(std::string_view klass, std::string_view ancestor) const
{
    const ClassId id = idOf(klass);
    const ClassId ancestorId = idOf(ancestor);
    return id != noClass && ancestorId != noClass && isA(id, ancestorId);
}

std::vector<const Property *> ClassRepository::keys(const Class &klass) const
{
    std::vector<const Property *> result;
    result.reserve(klass.keys.size());
    for (const std::size_t place : klass.keys) {
        result.push_back(&klass.properties[place]);
    }
    return result;
}

const QualifierDeclaration *ClassRepository::findQualifier(std::string_view name) const
{
    const auto entry = qualifierByName_.find(name);
    return entry == qualifierByName_.end() ? nullptr : qualifiers_[entry->second].get();
}

std::vector<const QualifierDeclaration *> ClassRepository::qualifiers() const
{
    std::vector<const QualifierDeclaration *> result;
    result.reserve(qualifiers_.size());
    for (const auto &qualifier : qualifiers_) {
        result.push_back(qualifier.get());
    }
    return result;
}

} // namespace cim
