// SPDX-License-Identifier: Apache-2.0
// What the class definitions say about the monitor's classes. The table behind it is written at build time
// from mof/.
#ifndef DISPLAYCTL_MODEL_FACTS_H
#define DISPLAYCTL_MODEL_FACTS_H

#include <optional>
#include <span>
#include <string_view>

namespace displayctl::model
{

/** A code of a ValueMap, with its name in Values; the name is empty where the class gives none. */
struct CodeName {
    int code;
    std::string_view name;
};

struct PropertyFacts {
    std::string_view name;
    std::string_view type; ///< as MOF writes it: boolean, uint16, string, datetime, reference ...
    bool isArray;
    bool isKey;
    std::string_view description;
    std::string_view unit; ///< PUnit, empty where there is none
    std::optional<long> minimum;
    std::optional<long> maximum;
    std::span<const CodeName> codes;
    std::string_view correspondence; ///< "Class.Method.Argument" that changes it, empty where there is none
};

struct ArgumentFacts {
    std::string_view name;
    std::string_view type;
    std::string_view description;
    std::span<const CodeName> codes;
};

struct MethodFacts {
    std::string_view name;
    std::string_view description;
    std::span<const ArgumentFacts> arguments;
};

struct ClassFacts {
    std::string_view name; ///< whole, as in ZT_Marovelton_Monitor
    std::string_view description;
    bool isAssociation;
    std::span<const PropertyFacts> properties; ///< inherited ones included
    std::span<const MethodFacts> methods;      ///< its own
};

/** What every class name begins with. */
inline constexpr std::string_view classPrefix = "ZT_Marovelton_";

/** All classes of the monitor, associations included. */
[[nodiscard]] std::span<const ClassFacts> allClasses();

/** The class of that name without its prefix, as in "Monitor"; null when there is none. */
[[nodiscard]] const ClassFacts *findClass(std::string_view name);
[[nodiscard]] const PropertyFacts *findProperty(const ClassFacts &facts, std::string_view name);
[[nodiscard]] const MethodFacts *findMethod(const ClassFacts &facts, std::string_view name);

} // namespace displayctl::model

#endif
