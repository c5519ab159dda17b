// SPDX-License-Identifier: Apache-2.0
#include "model/facts.h"

#include <algorithm>

namespace displayctl::model
{

namespace
{

template <typename Facts>
const Facts *findNamed(std::span<const Facts> all, std::string_view name)
{
    const auto found = std::ranges::find(all, name, &Facts::name);
    return found == all.end() ? nullptr : &*found;
}

} // namespace

const ClassFacts *findClass(std::string_view name)
{
    const auto found = std::ranges::find_if(allClasses(), [name](const ClassFacts &facts) {
        return facts.name.substr(classPrefix.size()) == name;
    });
    return found == allClasses().end() ? nullptr : &*found;
}

const PropertyFacts *findProperty(const ClassFacts &facts, std::string_view name)
{
    return findNamed(facts.properties, name);
}

const MethodFacts *findMethod(const ClassFacts &facts, std::string_view name)
{
    return findNamed(facts.methods, name);
}

} // namespace displayctl::model
