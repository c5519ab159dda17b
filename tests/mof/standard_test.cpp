// SPDX-License-Identifier: Apache-2.0
// The classes in mof/ against the facts of the standard schema: that they compile where the object manager
// has all of it, and that the shortened superclasses for the desk say nothing else than it does.
//
// What the reader refuses is refused here too: its rules are shown at work on the standard classes below. The
// rules that it has not, because an object manager can do without them, are functions of this file.
#include "cim/mof_reader.h"
#include "mof_classes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

namespace
{

using Texts = std::vector<std::string>;

// ---- Values ----

struct Range {
    std::int64_t low;
    std::int64_t high;
};

/** The values of an integer type; those of uint64 as far as a sint64 goes, which is all that MaxValue can
 *  tell. */
Range rangeOf(cim::Type type)
{
    switch (type) {
    case cim::Type::uint8:
        return {0, UINT8_MAX};
    case cim::Type::uint16:
        return {0, UINT16_MAX};
    case cim::Type::uint32:
        return {0, UINT32_MAX};
    case cim::Type::uint64:
        return {0, INT64_MAX};
    case cim::Type::sint8:
        return {INT8_MIN, INT8_MAX};
    case cim::Type::sint16:
        return {INT16_MIN, INT16_MAX};
    case cim::Type::sint32:
        return {INT32_MIN, INT32_MAX};
    default:
        return {INT64_MIN, INT64_MAX};
    }
}

/** Reads a whole number of MOF; an empty text leaves it as it is. False when there is something else. */
bool readNumber(const std::string &text, std::int64_t &number)
{
    if (text.empty()) {
        return true;
    }
    char *end = nullptr;
    number = std::strtoll(text.c_str(), &end, 0);
    return *end == '\0';
}

/** The values that an entry of a ValueMap stands for: "5", "5..9", "5..", "..9" or ".."; false when it is
 * none of these for the type. */
bool readEntry(const std::string &entry, cim::Type type, Range &range)
{
    const Range all = rangeOf(type);
    const std::size_t dots = entry.find("..");
    range = all;
    return !entry.empty() && readNumber(entry.substr(0, dots), range.low) &&
           readNumber(dots == std::string::npos ? entry : entry.substr(dots + 2), range.high) &&
           all.low <= range.low && range.low <= range.high && range.high <= all.high;
}

/** The place of the entry of the map that stands for the value, one that names it alone before a range; the
 *  map's size when there is none. */
std::size_t placeOf(const std::string &value, cim::Type type, const Texts &map)
{
    const auto exact = std::find(map.begin(), map.end(), value);
    Range wanted{};
    if (exact != map.end() || !cim::isInteger(type) || !readEntry(value, type, wanted)) {
        return static_cast<std::size_t>(exact - map.begin());
    }
    const auto range = std::find_if(map.begin(), map.end(), [&](const std::string &entry) {
        Range known{};
        return readEntry(entry, type, known) && known.low <= wanted.low && wanted.high <= known.high;
    });
    return static_cast<std::size_t>(range - map.begin());
}

/** ValueMap and Values: as many of one as of the other, values of the type, each once; where the element
 *  overrides one that has a map, only values of that map, under the same names unless the map has them in a
 *  range. */
void checkMap(const std::string &what, cim::Type type, const cim::Qualifiers &qualifiers,
              const cim::Qualifiers *overridden, Texts &found)
{
    const cim::Qualifier *map = cim::findQualifier(qualifiers, "ValueMap");
    const cim::Qualifier *values = cim::findQualifier(qualifiers, "Values");
    if (map == nullptr) {
        if (values != nullptr) {
            found.push_back(what + " has Values without ValueMap");
        }
        return;
    }
    const Texts &entries = map->value.items;
    if (values != nullptr && values->value.items.size() != entries.size()) {
        found.push_back(what + " has " + std::to_string(values->value.items.size()) + " Values for " +
                        std::to_string(entries.size()) + " entries of its ValueMap");
        return;
    }
    if (!cim::isInteger(type) && type != cim::Type::string) {
        found.push_back(what + " has a ValueMap and the type " + cim::typeName(type));
        return;
    }
    const cim::Qualifier *standard =
        overridden != nullptr ? cim::findQualifier(*overridden, "ValueMap") : nullptr;
    const cim::Qualifier *names = overridden != nullptr ? cim::findQualifier(*overridden, "Values") : nullptr;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::string &entry = entries[i];
        Range range{};
        if (cim::isInteger(type) && !readEntry(entry, type, range)) {
            found.push_back(what + ": " + entry + " in its ValueMap is no " + cim::typeName(type));
            continue;
        }
        if (std::count(entries.begin(), entries.end(), entry) > 1) {
            found.push_back(what + " has " + entry + " more than once in its ValueMap");
        }
        if (standard == nullptr) {
            continue;
        }
        const Texts &known = standard->value.items;
        const std::size_t place = placeOf(entry, type, known);
        if (place == known.size()) {
            found.push_back(what + ": " + entry + " is not in the overridden ValueMap");
        } else if (known[place] == entry && values != nullptr && names != nullptr &&
                   names->value.items[place] != values->value.items[i]) {
            found.push_back(what + ": " + entry + " means " + values->value.items[i] +
                            ", in what it overrides " + names->value.items[place]);
        }
    }
}

/** MinValue, MaxValue and MaxLen: at the types they are for, within the type; a text not longer than in what
 *  the element overrides. */
void checkBounds(const std::string &what, cim::Type type, const cim::Qualifiers &qualifiers,
                 const cim::Qualifiers *overridden, Texts &found)
{
    Range bounds = rangeOf(type);
    for (const char *name : {"MinValue", "MaxValue"}) {
        const cim::Qualifier *bound = cim::findQualifier(qualifiers, name);
        if (bound == nullptr) {
            continue;
        }
        Range value{};
        if (!cim::isInteger(type)) {
            found.push_back(what + " has " + name + " and the type " + cim::typeName(type));
        } else if (!readEntry(bound->value.text(), type, value)) {
            found.push_back(what + ": " + name + " " + bound->value.text() + " is no " + cim::typeName(type));
        } else {
            (name[1] == 'i' ? bounds.low : bounds.high) = value.low;
        }
    }
    if (bounds.low > bounds.high) {
        found.push_back(what + " has a MinValue above its MaxValue");
    }
    const cim::Qualifier *length = cim::findQualifier(qualifiers, "MaxLen");
    if (length == nullptr) {
        return;
    }
    const cim::Qualifier *standard =
        overridden != nullptr ? cim::findQualifier(*overridden, "MaxLen") : nullptr;
    if (type != cim::Type::string) {
        found.push_back(what + " has MaxLen and the type " + cim::typeName(type));
    } else if (standard != nullptr && std::stoul(length->value.text()) > std::stoul(standard->value.text())) {
        found.push_back(what + " has MaxLen " + length->value.text() + ", what it overrides " +
                        standard->value.text());
    }
}

void checkValues(const std::string &what, cim::Type type, const cim::Qualifiers &qualifiers,
                 const cim::Qualifiers *overridden, Texts &found)
{
    checkMap(what, type, qualifiers, overridden, found);
    checkBounds(what, type, qualifiers, overridden, found);
}

/** A property's default value is one of its ValueMap and within its bounds. */
void checkDefault(const std::string &what, const cim::Property &property, Texts &found)
{
    if (property.defaultValue.isNull) {
        return;
    }
    const cim::Qualifier *map = cim::findQualifier(property.qualifiers, "ValueMap");
    const cim::Qualifier *low = cim::findQualifier(property.qualifiers, "MinValue");
    const cim::Qualifier *high = cim::findQualifier(property.qualifiers, "MaxValue");
    for (const std::string &value : property.defaultValue.items) {
        if ((map != nullptr && placeOf(value, property.type, map->value.items) == map->value.items.size()) ||
            (low != nullptr && std::stoll(value) < std::stoll(low->value.text())) ||
            (high != nullptr && std::stoll(value) > std::stoll(high->value.text()))) {
            found.push_back(what + " has the default " + value + ", which it may not have");
        }
    }
}

// ---- Classes ----

/** How many there may be at an end: not fewer than at the overridden end, not more. */
void checkCardinality(const std::string &what, const cim::Qualifiers &qualifiers,
                      const cim::Qualifiers *overridden, Texts &found)
{
    const auto number = [](const cim::Qualifiers *list, const char *name, unsigned long otherwise) {
        const cim::Qualifier *qualifier = list != nullptr ? cim::findQualifier(*list, name) : nullptr;
        return qualifier != nullptr ? std::stoul(qualifier->value.text()) : otherwise;
    };
    constexpr unsigned long any = std::numeric_limits<unsigned long>::max();
    const unsigned long min = number(&qualifiers, "Min", 0);
    const unsigned long max = number(&qualifiers, "Max", any);
    if (min > max) {
        found.push_back(what + " has a Min above its Max");
    }
    if (min < number(overridden, "Min", 0) || max > number(overridden, "Max", any)) {
        found.push_back(what + " has a wider Min or Max than what it overrides");
    }
}

std::string direction(const cim::Parameter &parameter)
{
    return parameter.isOut ? parameter.isIn ? "in and out " : "out " : "in ";
}

/** An override has the parameters of the method that it overrides. Their order does not matter: they travel
 * by name. */
void checkParameters(const std::string &what, const cim::Method &method, const cim::Method &overridden,
                     Texts &found)
{
    for (const cim::Parameter &expected : overridden.parameters) {
        const std::string standard = direction(expected) + mof::describe(expected);
        const cim::Parameter *parameter = method.findParameter(expected.name);
        if (parameter == nullptr) {
            found.push_back(what + " leaves out the parameter " + standard);
        } else if (direction(*parameter) + mof::describe(*parameter) != standard) {
            found.push_back(what + " has the parameter " + direction(*parameter) + mof::describe(*parameter) +
                            ", what it overrides " + standard);
        }
    }
    for (const cim::Parameter &parameter : method.parameters) {
        if (overridden.findParameter(parameter.name) == nullptr) {
            found.push_back(what + " adds the parameter " + direction(parameter) + mof::describe(parameter));
        }
    }
}

/** What is wrong with a class that the reader took. */
void checkClass(const cim::ClassRepository &classes, const cim::Class &klass, Texts &found)
{
    const cim::Class *parent = klass.superclass.empty() ? nullptr : classes.find(klass.superclass);
    if (klass.keys.empty() && !klass.isAbstract) {
        found.push_back(klass.name + " has no key");
    }
    for (const cim::Property &property : klass.properties) {
        if (property.propagated) {
            continue;
        }
        const std::string what = klass.name + "." + property.name;
        const cim::Property *overridden = parent != nullptr ? parent->findProperty(property.name) : nullptr;
        const cim::Qualifiers *inherited = overridden != nullptr ? &overridden->qualifiers : nullptr;
        if (overridden != nullptr && overridden->name != property.name) {
            found.push_back(what + " is spelled " + overridden->name + " in what it overrides");
        }
        if (property.type == cim::Type::reference) {
            checkCardinality(what, property.qualifiers, inherited, found);
            if (parent != nullptr && overridden == nullptr) {
                found.push_back(what + " is a reference that " + parent->name + " has not");
            }
            continue;
        }
        checkValues(what, property.type, property.qualifiers, inherited, found);
        checkDefault(what, property, found);
    }
    for (const cim::Method &method : klass.methods) {
        if (method.propagated) {
            continue;
        }
        const std::string what = klass.name + "." + method.name;
        const cim::Method *overridden = parent != nullptr ? parent->findMethod(method.name) : nullptr;
        checkValues(what, method.returnType, method.qualifiers,
                    overridden != nullptr ? &overridden->qualifiers : nullptr, found);
        if (overridden != nullptr) {
            checkParameters(what, method, *overridden, found);
        }
        for (const cim::Parameter &parameter : method.parameters) {
            const cim::Parameter *old =
                overridden != nullptr ? overridden->findParameter(parameter.name) : nullptr;
            checkValues(what + "." + parameter.name, parameter.type, parameter.qualifiers,
                        old != nullptr ? &old->qualifiers : nullptr, found);
        }
    }
}

void note(const cim::MofResult &result, Texts &found)
{
    for (const cim::MofMessage &message : result.messages) {
        found.push_back(message.text);
    }
}

/** The standard classes; the count tells them from those that are read after them. */
struct Standard {
    cim::ClassRepository classes;
    std::size_t count = 0;
    Texts found;

    Standard()
    {
        note(cim::readMofFiles(classes, {STANDARD_SCHEMA}), found);
        count = classes.size();
    }

    /** The messages of what has been read since, and what is wrong with its classes. */
    Texts check(const cim::MofResult &result)
    {
        note(result, found);
        const std::vector<const cim::Class *> all = classes.all();
        for (std::size_t i = count; i < all.size(); ++i) {
            checkClass(classes, *all[i], found);
        }
        return found;
    }
};

// The services take every argument as text and have no jobs; clients rely on it. That is all in which the
// classes are not as the standard wants them.
TEST(Standard, TakesTheClassesOfTheMonitor)
{
    Standard standard;
    ASSERT_EQ(standard.found, Texts{});
    ASSERT_EQ(standard.count, 34u);
    const cim::MofResult result = cim::readMofFiles(
        standard.classes, {MOF_DIR "/Linux_ComputerSystem.mof", MOF_DIR "/ZT_Marovelton.mof"});
    EXPECT_EQ(standard.check(result),
              (Texts{
                  "ZT_Marovelton_RemoteManagementService.RequestStateChange has the parameter in string "
                  "RequestedState, what it overrides in uint16 RequestedState",
                  "ZT_Marovelton_RemoteManagementService.RequestStateChange leaves out the parameter out "
                  "CIM_ConcreteJob REF Job",
                  "ZT_Marovelton_RemoteManagementService.RequestStateChange leaves out the parameter in "
                  "datetime TimeoutPeriod",
                  "ZT_Marovelton_WSManagementService.RequestStateChange has the parameter in string "
                  "RequestedState, what it overrides in uint16 RequestedState",
                  "ZT_Marovelton_WSManagementService.RequestStateChange leaves out the parameter out "
                  "CIM_ConcreteJob REF Job",
                  "ZT_Marovelton_WSManagementService.RequestStateChange leaves out the parameter in "
                  "datetime TimeoutPeriod",
                  "ZT_Marovelton_IPConfigurationService.RequestStateChange has the parameter in string "
                  "RequestedState, what it overrides in uint16 RequestedState",
                  "ZT_Marovelton_IPConfigurationService.RequestStateChange leaves out the parameter out "
                  "CIM_ConcreteJob REF Job",
                  "ZT_Marovelton_IPConfigurationService.RequestStateChange leaves out the parameter in "
                  "datetime TimeoutPeriod",
                  "ZT_Marovelton_IPConfigurationService.ApplySettingToIPNetworkConnection: 1 means Failed, "
                  "in what it overrides Not Supported",
                  "ZT_Marovelton_IPConfigurationService.ApplySettingToIPNetworkConnection leaves out the "
                  "parameter in CIM_IPVersionSettingData REF IPVersionSettingData",
                  "ZT_Marovelton_IPConfigurationService.ApplySettingToIPNetworkConnection has the "
                  "parameter in string Mode, what it overrides in uint16 Mode",
                  "ZT_Marovelton_IPConfigurationService.ApplySettingToIPNetworkConnection leaves out the "
                  "parameter out CIM_ConcreteJob REF Job",
              }));
    EXPECT_EQ(standard.classes.size(), standard.count + 34u);
}

/** The superclasses from the nearest to the root, each after a blank. */
std::string chainOf(const cim::ClassRepository &classes, const cim::Class &klass)
{
    std::string chain;
    for (auto id = klass.lineage.rbegin() + 1; id != klass.lineage.rend(); ++id) {
        chain += " " + classes.byId(*id).name;
    }
    return chain;
}

Texts keyNames(const cim::ClassRepository &classes, const cim::Class &klass)
{
    Texts names;
    for (const cim::Property *key : classes.keys(klass)) {
        names.push_back(key->name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(Standard, GivesTheClassesTheSuperclassesAndKeysThatTheyHaveOnTheDesk)
{
    Standard standard;
    cim::readMofFiles(standard.classes, {MOF_DIR "/Linux_ComputerSystem.mof", MOF_DIR "/ZT_Marovelton.mof"});
    for (const cim::Class *klass : mof::deskClasses().all()) {
        const cim::Class *full = standard.classes.find(klass->name);
        ASSERT_NE(full, nullptr) << klass->name;
        EXPECT_EQ(chainOf(mof::deskClasses(), *klass), chainOf(standard.classes, *full)) << klass->name;
        EXPECT_EQ(keyNames(mof::deskClasses(), *klass), keyNames(standard.classes, *full)) << klass->name;
    }
}

struct Case {
    const char *text;
    Texts found;
};

// The rules of the reader.
TEST(Standard, RefusesWhatTheReaderRefuses)
{
    const Case cases[] = {
        {"class T_A : CIM_Projector { };",
         {"unknown superclass \"CIM_Projector\" of class \"T_A\"; "
          "it must be declared before its subclasses"}},
        {"class T_A : CIM_Display { uint16 Availability; };",
         {"property \"Availability\" of class \"T_A\" is already declared in \"CIM_LogicalDevice\"; "
          "expected [Override (\"Availability\")]"}},
        {"class T_A : CIM_Service { uint32 StopService ( ); };",
         {"method \"StopService\" of class \"T_A\" is already declared in \"CIM_Service\"; "
          "expected [Override (\"StopService\")]"}},
        {"class T_A : CIM_Display { [Override (\"Brightness\")] uint16 Brightness; };",
         {"property \"Brightness\" of class \"T_A\" overrides nothing; no superclass declares it"}},
        {"class T_A : CIM_Service { [Override (\"BroadcastReset\")] uint32 BroadcastReset ( ); };",
         {"method \"BroadcastReset\" of class \"T_A\" overrides nothing; no superclass declares it"}},
        {"class T_A : CIM_Display { [Override (\"HealthState\")] uint32 HealthState; };",
         {"property \"HealthState\" of class \"T_A\" has type uint32; the property it overrides has uint16"}},
        {"class T_A : CIM_Display { [Override (\"HealthState\")] uint16 HealthState[]; };",
         {"property \"HealthState\" of class \"T_A\" has type uint16[]; the property it overrides has "
          "uint16"}},
        {"class T_A : CIM_Service { [Override (\"StopService\")] uint8 StopService ( ); };",
         {"method \"StopService\" of class \"T_A\" returns uint8; the method it overrides returns uint32"}},
        {"class T_A : CIM_SettingData { [Key] string Number; };",
         {"property \"Number\" of class \"T_A\" may not be a key; the keys are those of superclass "
          "\"CIM_SettingData\": InstanceID"}},
        {"class T_A : CIM_Display { [Key, Override (\"InstanceID\")] string InstanceID; };",
         {"property \"InstanceID\" of class \"T_A\" may not be a key; the keys are those of superclass "
          "\"CIM_Display\": SystemCreationClassName, SystemName, CreationClassName, DeviceID"}},
        {"class T_A : CIM_SettingData { [Override (\"InstanceID\"), Key (false)] string InstanceID; };",
         {"qualifier \"Key\" of property \"InstanceID\" of class \"T_A\" may not change; "
          "the inherited value is \"true\""}},
        {"[Association (false)] class T_A : CIM_Dependency { };",
         {"qualifier \"Association\" of class \"T_A\" may not change; the inherited value is \"true\"",
          "qualifier \"Association\" may not stand at class \"T_A\"; its scope is association"}},
        {"[Association] class T_A : CIM_HostedAccessPoint {"
         " [Override (\"Dependent\")] CIM_Service REF Dependent; };",
         {"property \"Dependent\" of class \"T_A\" refers to class \"CIM_Service\"; expected "
          "\"CIM_ServiceAccessPoint\" or a subclass, as the overridden property has it"}},
        {"[Association] class T_A : CIM_Dependency { [Override (\"Dependent\")] CIM_Lamp REF Dependent; };",
         {"property \"Dependent\" of class \"T_A\" refers to class \"CIM_Lamp\", which is not defined"}},
        {"class T_A : CIM_SettingData { [Colour (\"red\")] string Number; };",
         {"unknown qualifier \"Colour\"; it must be declared before it is used"}},
        {"class T_A : CIM_SettingData { [Weak] string Number; };",
         {"qualifier \"Weak\" may not stand at property \"Number\" of class \"T_A\"; its scope is "
          "reference"}},
        {"class T_A : CIM_SettingData { [MaxLen (\"long\")] string Number; };",
         {"value of qualifier \"MaxLen\": expected a number of type uint32, found a string"}},
    };
    for (const Case &test : cases) {
        Standard standard;
        EXPECT_EQ(standard.check(cim::readMofText(standard.classes, test.text)), test.found) << test.text;
    }
}

// The rules of this file.
TEST(Standard, RefusesWhatContradictsIt)
{
    const Case cases[] = {
        {"class T_A : CIM_LogicalElement { };", {"T_A has no key"}},
        {"class T_A : CIM_SettingData { [Override (\"caption\")] string caption; };",
         {"T_A.caption is spelled Caption in what it overrides"}},
        {"[Association] class T_A : CIM_Dependency { CIM_Display REF Display; };",
         {"T_A.Display is a reference that CIM_Dependency has not"}},
        {"[Association] class T_A : CIM_SystemDevice {"
         " [Override (\"GroupComponent\"), Max (2)] CIM_System REF GroupComponent; };",
         {"T_A.GroupComponent has a wider Min or Max than what it overrides"}},
        {"[Association] class T_A : CIM_SystemDevice {"
         " [Override (\"GroupComponent\"), Min (0)] CIM_System REF GroupComponent; };",
         {"T_A.GroupComponent has a wider Min or Max than what it overrides"}},
        {"[Association] class T_A : CIM_Dependency {"
         " [Override (\"Dependent\"), Min (2), Max (1)] CIM_ManagedElement REF Dependent; };",
         {"T_A.Dependent has a Min above its Max"}},
        {"class T_A : CIM_SettingData { [ValueMap {\"1\", \"2\"}, Values {\"One\"}] uint8 Number; };",
         {"T_A.Number has 1 Values for 2 entries of its ValueMap"}},
        {"class T_A : CIM_Display { [Override (\"HealthState\"), ValueMap {\"5\"}] uint16 HealthState; };",
         {"T_A.HealthState has 9 Values for 1 entries of its ValueMap"}},
        {"class T_A : CIM_SettingData { [Values {\"One\"}] uint8 Number; };",
         {"T_A.Number has Values without ValueMap"}},
        {"class T_A : CIM_SettingData { [ValueMap {\"1\"}] boolean Number; };",
         {"T_A.Number has a ValueMap and the type boolean"}},
        {"class T_A : CIM_SettingData { [ValueMap {\"1\", \"1\"}] uint8 Number; };",
         {"T_A.Number has 1 more than once in its ValueMap",
          "T_A.Number has 1 more than once in its ValueMap"}},
        {"class T_A : CIM_SettingData {"
         " [ValueMap {\"255\", \"256\", \"-1\", \"one\", \"\", \"9..8\", \"..\"}] uint8 Number; };",
         {"T_A.Number: 256 in its ValueMap is no uint8", "T_A.Number: -1 in its ValueMap is no uint8",
          "T_A.Number: one in its ValueMap is no uint8", "T_A.Number:  in its ValueMap is no uint8",
          "T_A.Number: 9..8 in its ValueMap is no uint8"}},
        {"class T_A : CIM_SettingData { [Override (\"ChangeableType\"), ValueMap {\"3\", \"4\"},"
         " Values {\"Not Changeable - Transient\", \"Sometimes\"}] uint16 ChangeableType; };",
         {"T_A.ChangeableType: 4 is not in the overridden ValueMap"}},
        {"class T_A : CIM_SettingData {"
         " [Override (\"ChangeableType\"), ValueMap {\"1\"}, Values {\"Never\"}] uint16 ChangeableType; };",
         {"T_A.ChangeableType: 1 means Never, in what it overrides Changeable - Transient"}},
        {"class T_A : CIM_Display { [Override (\"Status\"), ValueMap {\"OK\", \"Ill\"}] string Status; };",
         {"T_A.Status: Ill is not in the overridden ValueMap"}},
        {"class T_A : CIM_Service {"
         " [Override (\"EnabledState\"), ValueMap {\"2\"}, Values {\"Enabled\"}] uint16 EnabledState; };",
         {"T_A.EnabledState has the default 5, which it may not have"}},
        {"class T_A : CIM_SettingData {"
         " [MinValue (1), MaxValue (9)] uint8 A = 0; [MinValue (1), MaxValue (9)] uint8 B = 10; };",
         {"T_A.A has the default 0, which it may not have",
          "T_A.B has the default 10, which it may not have"}},
        {"class T_A : CIM_SettingData {"
         " [MaxValue (256)] uint8 A; [MinValue (-1)] uint32 B; [MinValue (-129)] sint8 C; };",
         {"T_A.A: MaxValue 256 is no uint8", "T_A.B: MinValue -1 is no uint32",
          "T_A.C: MinValue -129 is no sint8"}},
        {"class T_A : CIM_SettingData { [MinValue (5), MaxValue (4)] uint8 Number; };",
         {"T_A.Number has a MinValue above its MaxValue"}},
        {"class T_A : CIM_SettingData { [MaxValue (5)] string Number; };",
         {"T_A.Number has MaxValue and the type string"}},
        {"class T_A : CIM_SettingData { [MaxLen (5)] uint8 Number; };",
         {"T_A.Number has MaxLen and the type uint8"}},
        {"class T_A : CIM_SettingData { [Override (\"Caption\"), MaxLen (65)] string Caption; };",
         {"T_A.Caption has MaxLen 65, what it overrides 64"}},
        {"class T_A : CIM_SettingData { uint32 Set ( [In, ValueMap {\"70000\"}] uint16 Number ); };",
         {"T_A.Set.Number: 70000 in its ValueMap is no uint16"}},
        {"class T_A : CIM_ProtocolEndpoint { [Override (\"BroadcastReset\"), ValueMap {\"1\"},"
         " Values {\"No\"}] uint32 BroadcastReset ( ); };",
         {"T_A.BroadcastReset: 1 means No, in what it overrides Not_Supported"}},
        {"class T_A : CIM_Display { [Override (\"SetPowerState\")] uint32 SetPowerState ("
         " uint32 PowerState, [Out] datetime Time ); };",
         {"T_A.SetPowerState has the parameter in uint32 PowerState, what it overrides in uint16 PowerState",
          "T_A.SetPowerState has the parameter in and out datetime Time, "
          "what it overrides in datetime Time"}},
        {"class T_A : CIM_Display { [Override (\"OnlineDevice\")] uint32 OnlineDevice ( boolean Now ); };",
         {"T_A.OnlineDevice leaves out the parameter in boolean Online",
          "T_A.OnlineDevice adds the parameter in boolean Now"}},
    };
    for (const Case &test : cases) {
        Standard standard;
        EXPECT_EQ(standard.check(cim::readMofText(standard.classes, test.text)), test.found) << test.text;
    }
}

TEST(Standard, AllowsWhatNarrowsIt)
{
    Standard standard;
    const cim::MofResult result = cim::readMofText(standard.classes, R"(
        [Association] class T_Link : CIM_SystemDevice {
              [Override ("GroupComponent")] CIM_ComputerSystem REF GroupComponent;
              [Override ("PartComponent"), Min (1), Max (4)] CIM_Display REF PartComponent; };
        class T_Element : CIM_LogicalElement {
              [Key, Override ("InstanceID"), MaxLen (20)] string InstanceID;
              [Override ("HealthState"), ValueMap {"5", "7", "0x8000..40000"}, Values {"OK", "Seven", "Ours"}]
              uint16 HealthState = 5;
              [MinValue (0), MaxValue (0xff), ValueMap {"0", "..100", "101.."}] uint8 Level = 255; };
        class T_Device : CIM_Display {
              [Override ("SetPowerState"), ValueMap {"0"}] uint32 SetPowerState (
                  datetime Time, [ValueMap {"6"}, Values {"Power Off"}] uint16 PowerState ); };
        )");
    EXPECT_EQ(standard.check(result), Texts{});
}

// ---- The shortened superclasses ----

std::string shown(const cim::Value &value)
{
    std::string text = value.isNull ? "NULL" : "";
    for (const std::string &item : value.items) {
        text += (text.empty() ? "" : ", ") + item;
    }
    return text;
}

/** The qualifiers that stand at the element itself: the same ones with the same values, except that
 *  descriptions are the project's own, and that named values may be left out. */
void compareQualifiers(const std::string &what, const cim::Qualifiers &ours, const cim::Qualifiers &standard,
                       Texts &found)
{
    for (const cim::Qualifier &qualifier : ours) {
        if (qualifier.propagated || qualifier.name == "Description") {
            continue;
        }
        const cim::Qualifier *other = cim::findQualifier(standard, qualifier.name);
        if (other == nullptr || other->propagated) {
            found.push_back(what + " has " + qualifier.name + ", in the standard it has not");
        } else if (shown(qualifier.value) != shown(other->value)) {
            found.push_back(what + " has " + qualifier.name + " " + shown(qualifier.value) +
                            ", in the standard " + shown(other->value));
        }
    }
    for (const cim::Qualifier &qualifier : standard) {
        const cim::Qualifier *other = cim::findQualifier(ours, qualifier.name);
        if (!qualifier.propagated && (other == nullptr || other->propagated) &&
            qualifier.name != "ValueMap" && qualifier.name != "Values") {
            found.push_back(what + " has not " + qualifier.name + ", in the standard it has");
        }
    }
}

void compareProperties(const cim::Class &ours, const cim::Class &standard, Texts &found)
{
    for (const cim::Property &property : ours.properties) {
        if (property.propagated) {
            continue;
        }
        const std::string what = ours.name + "." + property.name;
        const cim::Property *other = standard.findProperty(property.name);
        if (other == nullptr || other->propagated) {
            found.push_back(what + " is not in the standard");
            continue;
        }
        if (mof::describe(property) != mof::describe(*other)) {
            found.push_back(what + " is " + mof::describe(property) + ", in the standard " +
                            mof::describe(*other));
        }
        if (shown(property.defaultValue) != shown(other->defaultValue)) {
            found.push_back(what + " has the default " + shown(property.defaultValue) + ", in the standard " +
                            shown(other->defaultValue));
        }
        compareQualifiers(what, property.qualifiers, other->qualifiers, found);
    }
    for (const cim::Property &property : standard.properties) {
        if (property.isKey && ours.findProperty(property.name) == nullptr) {
            found.push_back(ours.name + " has not the key " + property.name);
        }
    }
}

/** Parameters may be left out. */
void compareMethods(const cim::Class &ours, const cim::Class &standard, Texts &found)
{
    for (const cim::Method &method : ours.methods) {
        if (method.propagated) {
            continue;
        }
        const std::string what = ours.name + "." + method.name;
        const cim::Method *other = standard.findMethod(method.name);
        if (other == nullptr || other->propagated || other->name != method.name) {
            found.push_back(what + " is not in the standard");
            continue;
        }
        if (method.returnType != other->returnType) {
            found.push_back(what + " returns " + cim::typeName(method.returnType) + ", in the standard " +
                            cim::typeName(other->returnType));
        }
        compareQualifiers(what, method.qualifiers, other->qualifiers, found);
        for (const cim::Parameter &parameter : method.parameters) {
            const std::string text = direction(parameter) + mof::describe(parameter);
            const cim::Parameter *otherOne = other->findParameter(parameter.name);
            if (otherOne == nullptr) {
                found.push_back(what + ": the parameter " + text + " is not in the standard");
                continue;
            }
            if (text != direction(*otherOne) + mof::describe(*otherOne)) {
                found.push_back(what + " has the parameter " + text + ", in the standard " +
                                direction(*otherOne) + mof::describe(*otherOne));
            }
            compareQualifiers(what + "." + parameter.name, parameter.qualifiers, otherOne->qualifiers, found);
        }
    }
}

/** The declaration with its scope, and the flavors that are not the usual ones. */
std::string shown(const cim::QualifierDeclaration &declaration)
{
    std::string text = declaration.name + " : " + cim::typeName(declaration.type) +
                       (declaration.isArray ? "[]" : "") + " = " + shown(declaration.defaultValue) +
                       ", scope";
    for (unsigned bit = 1; bit <= cim::QualifierDeclaration::scopeSchema; bit <<= 1) {
        if ((declaration.scope & bit) != 0) {
            text += std::string(" ") + cim::scopeName(static_cast<std::uint16_t>(bit));
        }
    }
    return text + (declaration.flavor.overridable ? "" : ", DisableOverride") +
           (declaration.flavor.toSubclass ? "" : ", Restricted") +
           (declaration.flavor.translatable ? ", Translatable" : "");
}

/** In what the standard classes and the qualifier declarations of a repository are not those of the standard.
 */
Texts compareWithStandard(const cim::ClassRepository &classes)
{
    const Standard standard;
    Texts found;
    for (const cim::QualifierDeclaration *declaration : classes.qualifiers()) {
        const cim::QualifierDeclaration *other = standard.classes.findQualifier(declaration->name);
        if (other == nullptr) {
            found.push_back("qualifier " + declaration->name + " is not in the standard");
        } else if (shown(*declaration) != shown(*other)) {
            found.push_back("qualifier " + shown(*declaration) + "; in the standard " + shown(*other));
        }
    }
    for (const cim::Class *klass : classes.all()) {
        if (!klass->name.starts_with("CIM_")) {
            continue;
        }
        const cim::Class *other = standard.classes.find(klass->name);
        if (other == nullptr || other->name != klass->name) {
            found.push_back(klass->name + " is not in the standard");
            continue;
        }
        if (klass->superclass != other->superclass) {
            found.push_back(klass->name + " derives from " + klass->superclass + ", in the standard from " +
                            other->superclass);
        }
        compareQualifiers(klass->name, klass->qualifiers, other->qualifiers, found);
        compareProperties(*klass, *other, found);
        compareMethods(*klass, *other, found);
    }
    return found;
}

TEST(Shortened, SaysNothingElseThanTheStandard)
{
    EXPECT_EQ(compareWithStandard(mof::deskClasses()), Texts{});
}

TEST(Shortened, HasEveryPropertyOfTheStandard)
{
    // An instance that was read elsewhere can be sent back here.
    const Standard standard;
    Texts missing;
    for (const cim::Class *klass : mof::deskClasses().all()) {
        if (!klass->name.starts_with("CIM_")) {
            continue;
        }
        for (const cim::Property &property : standard.classes.find(klass->name)->properties) {
            if (klass->findProperty(property.name) == nullptr) {
                missing.push_back(klass->name + "." + property.name);
            }
        }
    }
    EXPECT_EQ(missing, Texts{});
}

TEST(Shortened, IsFoundOutWhenItDoes)
{
    const Case cases[] = {
        {"class CIM_Projector { };", {"CIM_Projector is not in the standard"}},
        {"[Version (\"2.28.0\"), Abstract] class CIM_ManagedSystemElement { };",
         {"CIM_ManagedSystemElement derives from , in the standard from CIM_ManagedElement"}},
        {"[Version (\"2.45.1\")] class CIM_ManagedElement { };",
         {"CIM_ManagedElement has Version 2.45.1, in the standard 2.45.0",
          "CIM_ManagedElement has not Abstract, in the standard it has"}},
        {"[Version (\"2.45.0\"), Abstract] class CIM_ManagedElement { string Colour; };",
         {"CIM_ManagedElement.Colour is not in the standard"}},
        {"[Version (\"2.45.0\"), Abstract] class CIM_ManagedElement { uint32 Paint ( ); };",
         {"CIM_ManagedElement.Paint is not in the standard"}},
        {"[Version (\"2.45.0\"), Abstract] class CIM_ManagedElement { uint32 Generation;"
         " string elementName; [Key] string InstanceID; string Caption; };",
         {"CIM_ManagedElement.Generation is uint32 Generation, in the standard uint64 Generation",
          "CIM_ManagedElement.elementName is string elementName, in the standard string ElementName",
          "CIM_ManagedElement.InstanceID has Key, in the standard it has not",
          "CIM_ManagedElement.Caption has not MaxLen, in the standard it has"}},
        {"[Version (\"2.45.0\"), Abstract] class CIM_ManagedElement {"
         " [MaxLen (65)] string Caption = \"a\"; };",
         {"CIM_ManagedElement.Caption has the default a, in the standard NULL",
          "CIM_ManagedElement.Caption has MaxLen 65, in the standard 64"}},
        {"[Association, Abstract, Version (\"2.10.0\")] class CIM_Dependency {"
         " [Key] CIM_Dependency REF Antecedent; CIM_Dependency REF Other; };",
         {"CIM_Dependency.Antecedent is CIM_Dependency REF Antecedent, in the standard "
          "CIM_ManagedElement REF Antecedent",
          "CIM_Dependency.Other is not in the standard", "CIM_Dependency has not the key Dependent"}},
        {"[Abstract, Version (\"2.22.0\")] class CIM_EnabledLogicalElement {"
         " [ValueMap {\"2\"}, Values {\"Enabled\"}] uint16 EnabledState = 5;"
         " uint8 RequestStateChange ("
         " [In] string RequestedState, [In, Required] datetime TimeoutPeriod, [In] boolean Now ); };",
         {"CIM_EnabledLogicalElement derives from , in the standard from CIM_LogicalElement",
          "CIM_EnabledLogicalElement.EnabledState has ValueMap 2, in the standard "
          "0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11..32767, 32768..65535",
          "CIM_EnabledLogicalElement.EnabledState has Values Enabled, in the standard "
          "Unknown, Other, Enabled, Disabled, Shutting Down, Not Applicable, Enabled but Offline, In Test, "
          "Deferred, Quiesce, Starting, DMTF Reserved, Vendor Reserved",
          "CIM_EnabledLogicalElement.RequestStateChange returns uint8, in the standard uint32",
          "CIM_EnabledLogicalElement.RequestStateChange has the parameter in string RequestedState, "
          "in the standard in uint16 RequestedState",
          "CIM_EnabledLogicalElement.RequestStateChange.TimeoutPeriod has Required, "
          "in the standard it has not",
          "CIM_EnabledLogicalElement.RequestStateChange: the parameter in boolean Now is not in the "
          "standard"}},
        {"Qualifier Colour : string, Scope(any);", {"qualifier Colour is not in the standard"}},
        {"Qualifier Out : uint8[] = {1}, Scope(class), Flavor(Restricted, Translatable);",
         {"qualifier Out : uint8[] = 1, scope class, Restricted, Translatable; in the standard "
          "Out : boolean = false, scope parameter, DisableOverride"}},
    };
    for (const Case &test : cases) {
        cim::ClassRepository classes;
        Texts messages;
        note(cim::readMofFiles(classes, {MOF_DIR "/qualifiers.mof"}), messages);
        note(cim::readMofText(classes, test.text), messages);
        EXPECT_EQ(messages, Texts{}) << test.text;
        EXPECT_EQ(compareWithStandard(classes), test.found) << test.text;
    }
}

} // namespace
