// SPDX-License-Identifier: Apache-2.0
#include "contract.h"
#include "every_class.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

// Weak: a factory that the library does not have is null instead of an error of the linker, so that the
// registration can be compared with what is there.
#define DECLARE_FACTORY(Class, Kind)                                                                         \
    extern "C" [[gnu::weak]] CMPI##Kind##MI *ZT_Marovelton_##Class##_Create_##Kind##MI(                      \
        const CMPIBroker *, const CMPIContext *, CMPIStatus *);
#define DECLARE_FACTORIES(Class)                                                                             \
    DECLARE_FACTORY(Class, Instance)                                                                         \
    DECLARE_FACTORY(Class, Method)                                                                           \
    DECLARE_FACTORY(Class, Association)

EVERY_CLASS(DECLARE_FACTORIES)

namespace contract
{

namespace
{

#define FACTORIES_OF(Class)                                                                                  \
    TestedClass{"ZT_Marovelton_" #Class, ZT_Marovelton_##Class##_Create_InstanceMI,                          \
                ZT_Marovelton_##Class##_Create_MethodMI, ZT_Marovelton_##Class##_Create_AssociationMI},

const TestedClass classes[] = {EVERY_CLASS(FACTORIES_OF)};

[[noreturn]] void giveUp(const std::string &what)
{
    fprintf(stderr, "%s\n", what.c_str());
    abort();
}

/** What the shell tools print for a network interface that is up. */
void interfaceIsUp(const std::string &name, const std::string &addressLine)
{
    const std::string first = name + "      Link encap:Ethernet  HWaddr 00:1B:44:11:3A:B7\n";
    seam.commands["/sbin/ifconfig " + name] = {.output = {first, addressLine}};
    seam.commands["/sbin/ifconfig | grep " + name] = {.output = {first}};
}

} // namespace

std::span<const TestedClass> libraryClasses()
{
    return classes;
}

const TestedClass &libraryClass(const std::string &name)
{
    const auto found = std::find_if(std::begin(classes), std::end(classes), [&](const TestedClass &tested) {
        return tested.name == "ZT_Marovelton_" + name;
    });
    if (found == std::end(classes)) {
        giveUp("the library has no class ZT_Marovelton_" + name);
    }
    return *found;
}

const cim::Class &declaredClass(const std::string &name)
{
    const cim::Class *found = mof::deskClasses().find(name);
    if (!found || found->name != name) {
        giveUp("mof/ has no class " + name);
    }
    return *found;
}

std::set<std::string> ownProperties(const cim::Class &declared)
{
    std::set<std::string> names;
    for (const cim::Property &property : declared.properties) {
        if (!property.propagated) {
            names.insert(property.name);
        }
    }
    return names;
}

void scriptMonitor()
{
    // A second picture as an inset of the default size, with a source that has digital-cinema regions.
    seam.registers[{PIP_STATE, PIP_INFO_ID}] = "1";
    seam.registers[{PIP_SIZE, PIP_INFO_ID}] = "2";
    seam.registers[{PIP_HORIZONTAL_ACTIVE, PIP_INFO_ID}] = "4096";
    seam.registers[{PIP_VERTICAL_ACTIVE, PIP_INFO_ID}] = "2160";
    seam.registers[{FUNCTION_BUTTON_MODE, FUNCTION_BTN_ID}] = "1";
    // The second preset is in use and can be reset.
    seam.registers[{ACTIVE_COLORSPACE, COLOR_SPACE_ID}] = "1";
    seam.registers[{RESET_LAST_CALIBRATION, COLOR_SPACE_ID}] = "1";
    seam.registers[{RESET_FACTORY_CALIBRATION, COLOR_SPACE_ID}] = "1";
    // A loopback interface and the one of the management network.
    seam.commands["cat /proc/net/dev"] = {.output = {"Inter-|   Receive             |  Transmit\n",
                                                     " face |bytes    packets errs|bytes    packets\n",
                                                     "    lo: 1024       8    0  0  0\n",
                                                     "  eth0:123456789 100    0  0  0\n"}};
    interfaceIsUp("lo", "          inet addr:127.0.0.1  Mask:255.0.0.0\n");
    interfaceIsUp("eth0", "          inet addr:192.0.2.17  Bcast:192.0.2.255  Mask:255.255.255.0\n");
}

std::vector<Path> pathsOf(const TestedClass &tested)
{
    const Answer answer = enumerateNames(tested, path(tested.name));
    EXPECT_STATUS(answer, CMPI_RC_OK, "") << tested.name;
    return answer.paths();
}

std::vector<Instance> instancesOf(const TestedClass &tested)
{
    const Answer answer = enumerate(tested, path(tested.name));
    EXPECT_STATUS(answer, CMPI_RC_OK, "") << tested.name;
    return answer.instances();
}

void serveInstances()
{
    for (const TestedClass &tested : libraryClasses()) {
        if (tested.createAssociationMI) {
            continue;
        }
        const std::vector<Path> paths = pathsOf(tested);
        std::vector<Instance> instances = instancesOf(tested);
        ASSERT_EQ(instances.size(), paths.size()) << tested.name;
        for (size_t i = 0; i < paths.size(); ++i) {
            instances[i].path = paths[i];
        }
        broker.classes[tested.name].instances = instances;
    }
    ASSERT_EQ(broker.classes.size(), 19u);

    const Entries keys = {{"CreationClassName", "Linux_ComputerSystem"}, {"Name", "controller"}};
    broker.classes["Linux_ComputerSystem"].instances = {instance(path("Linux_ComputerSystem", keys), keys)};

    for (const cim::Class *declared : mof::deskClasses().all()) {
        if (!declared->superclass.empty()) {
            broker.superclasses[declared->name] = declared->superclass;
        }
    }
    ASSERT_TRUE(broker.superclasses.contains("ZT_Marovelton_Monitor"));
}

void expectPathOf(const std::string &className, const Path &path)
{
    SCOPED_TRACE(test_support::describe(path));
    EXPECT_EQ(path.className, className);
    std::vector<std::string> names;
    for (const Entry &key : path.keys) {
        names.push_back(key.name);
    }
    EXPECT_EQ(mof::checkKeys(className, names), "");
    expectDeclared(className, path.keys);
}

void expectDeclared(const std::string &className, const Entries &properties)
{
    for (const Entry &property : properties) {
        SCOPED_TRACE(className + "." + property.name);
        const Value &value = property.value;
        ASSERT_EQ(mof::checkProperty(className, property.name, value.type), "");
        EXPECT_EQ(value.state, CMPI_goodValue);

        const cim::Property *declared = declaredClass(className).findProperty(property.name);
        ASSERT_NE(declared, nullptr);
        if (declared->isArray) {
            EXPECT_FALSE(value.elements.empty());
            for (const Value &element : value.elements) {
                EXPECT_EQ(element.type, cim::cmpiType(declared->type, false));
                EXPECT_EQ(element.state, CMPI_goodValue);
            }
        }
        if (declared->type == cim::Type::reference) {
            ASSERT_NE(value.path, nullptr);
            EXPECT_TRUE(mof::deskClasses().isA(value.path->className, declared->referenceClass))
                << value.path->className << " is no " << declared->referenceClass;
            expectPathOf(value.path->className, *value.path);
        }
    }
}

std::set<std::string> namesOf(const Entries &entries)
{
    std::set<std::string> names;
    for (const Entry &entry : entries) {
        names.insert(entry.name);
    }
    return names;
}

} // namespace contract
