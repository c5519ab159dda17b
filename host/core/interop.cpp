// SPDX-License-Identifier: Apache-2.0
#include "core/interop.h"

#include "cim/mof_reader.h"
#include "core/computer_system.h"
#include "core/interop_mof.h"
#include "core/provider_manager.h"

#include <algorithm>
#include <stdexcept>

namespace host
{
namespace
{

constexpr const char *ownName = "interop";
constexpr const char *otherName = "root/interop";

constexpr const char *objectManagerClass = "CIM_ObjectManager";
constexpr const char *nameSpaceClass = "CIM_Namespace";
constexpr const char *profileClass = "CIM_RegisteredProfile";
constexpr const char *conformanceClass = "CIM_ElementConformsToProfile";

constexpr const char *brand = "display-host";

constexpr std::uint16_t stateEnabled = 2;
constexpr std::uint16_t noRequest = 12; // not applicable
constexpr std::uint16_t statusOk = 2;
constexpr std::uint16_t healthOk = 5;
constexpr std::uint16_t classesOfCim = 2;
constexpr std::uint16_t notAdvertised = 2;

} // namespace

cim::ClassRepository readInteropClasses()
{
    cim::ClassRepository repository;
    const cim::MofResult result = cim::readMofText(repository, interopMof, "interop.mof");
    if (!result.ok()) {
        throw std::logic_error(result.messages.front().format());
    }
    return repository;
}

Interop::Interop(cim::NameSpaces &nameSpaces, const CMPIBroker &broker, std::string hostName,
                 std::string version)
    : classes_(readInteropClasses()), nameSpaces_(nameSpaces), broker_(broker),
      hostName_(std::move(hostName)), version_(std::move(version))
{
    for (const char *name : {ownName, otherName}) {
        if (nameSpaces.find(name) == nullptr) {
            nameSpaces.add(classes_, name);
        }
    }
    addClasses();
    addAssociations();
}

std::vector<std::string> Interop::setProfiles(std::vector<Profile> profiles)
{
    profiles_ = std::move(profiles);
    std::vector<std::string> problems;
    const cim::NameSpace &standard = nameSpaces_.standard();
    for (const Profile &profile : profiles_) {
        const std::string start = profile.where + ": [" + profile.instanceId + "] ";
        for (const std::string &name : profile.centralClasses) {
            if (standard.classes->find(name) == nullptr) {
                problems.push_back(start + "no MOF file defines the central class " + name);
            }
        }
        for (const std::string &name : profile.references) {
            if (std::ranges::find(profiles_, name, &Profile::instanceId) == profiles_.end()) {
                problems.push_back(start + "there is no profile " + name + " to reference");
            }
        }
    }
    return problems;
}

void Interop::addTo(ProviderManager &providers)
{
    for (const std::unique_ptr<BuiltInClass> &each : builtIn_) {
        for (const cim::NameSpace &nameSpace : nameSpaces_.all()) {
            if (nameSpace.classes == &classes_ || each->name() == conformanceClass) {
                providers.addBuiltIn(nameSpace, *each);
            }
        }
    }
}

void Interop::add(const char *className, BuiltInClass::Maker make, BuiltInClass::Method method)
{
    builtIn_.push_back(
        std::make_unique<BuiltInClass>(broker_, nameSpaces_, className, std::move(make), std::move(method)));
}

/** The name of this namespace that the client uses. */
std::string_view Interop::ownNameSpace(const Making &making) const
{
    const cim::NameSpace *nameSpace = nameSpaces_.find(making.nameSpace);
    return nameSpace != nullptr && nameSpace->classes == &classes_ ? std::string_view(nameSpace->name)
                                                                   : ownName;
}

// ------------------------------------------------------------------------------------------------- instances

Instance *Interop::objectManager(const Making &making) const
{
    return InstanceBuilder(making.arena, nameSpaces_, ownNameSpace(making), objectManagerClass)
        .text("SystemCreationClassName", computerSystemClass)
        .text("SystemName", hostName_)
        .text("CreationClassName", objectManagerClass)
        .text("Name", std::string(brand) + ":" + hostName_)
        .text("ElementName", brand)
        .text("Caption", "Object manager")
        .text("Description",
              std::string(brand) + " version " + version_) // compat: clients look for "version"
        .text("Version", version_)
        .onlyNumber("OperationalStatus", statusOk)
        .number("HealthState", healthOk)
        .number("EnabledState", stateEnabled)
        .number("RequestedState", noRequest)
        .flag("Started", true)
        .flag("GatherStatisticalData", false)
        .instance();
}

Instance *Interop::nameSpaceInstance(const Making &making, const cim::NameSpace &nameSpace) const
{
    return InstanceBuilder(making.arena, nameSpaces_, ownNameSpace(making), nameSpaceClass)
        .text("SystemCreationClassName", computerSystemClass)
        .text("SystemName", hostName_)
        .text("ObjectManagerCreationClassName", objectManagerClass)
        .text("ObjectManagerName", std::string(brand) + ":" + hostName_)
        .text("CreationClassName", nameSpaceClass)
        .text("Name", nameSpace.name)
        .text("ElementName", nameSpace.name)
        .number("ClassType", classesOfCim)
        .instance();
}

Instance *Interop::profileInstance(const Making &making, const Profile &profile) const
{
    InstanceBuilder builder(making.arena, nameSpaces_, ownNameSpace(making), profileClass);
    builder.text("InstanceID", profile.instanceId)
        .text("ElementName", profile.name)
        .number("RegisteredOrganization", profile.organization)
        .text("RegisteredName", profile.name)
        .text("RegisteredVersion", profile.version)
        .onlyNumber("AdvertiseTypes", notAdvertised);
    if (!profile.otherOrganization.empty()) {
        builder.text("OtherRegisteredOrganization", profile.otherOrganization);
    }
    return builder.instance();
}

void Interop::addClasses()
{
    add(objectManagerClass, [this](const Making &making) {
        making.instances.append(objectManager(making));
        return makeStatus(CMPI_RC_OK);
    });
    add(nameSpaceClass, [this](const Making &making) {
        for (const cim::NameSpace &nameSpace : nameSpaces_.all()) {
            making.instances.append(nameSpaceInstance(making, nameSpace));
        }
        return makeStatus(CMPI_RC_OK);
    });
    add(
        profileClass,
        [this](const Making &making) {
            for (const Profile &profile : profiles_) {
                making.instances.append(profileInstance(making, profile));
            }
            return makeStatus(CMPI_RC_OK);
        },
        [this](const Making &making, const Path &target, std::string_view method, Args &out) {
            return getCentralInstances(making, target, method, out);
        });
}

// ---------------------------------------------------------------------------------------------- associations

void Interop::addAssociations()
{
    add("CIM_NamespaceInManager", [this](const Making &making) {
        const Path &manager = *objectManager(making)->path;
        for (const cim::NameSpace &nameSpace : nameSpaces_.all()) {
            making.instances.append(
                InstanceBuilder(making.arena, nameSpaces_, ownNameSpace(making), "CIM_NamespaceInManager")
                    .reference("Antecedent", manager)
                    .reference("Dependent", *nameSpaceInstance(making, nameSpace)->path)
                    .instance());
        }
        return makeStatus(CMPI_RC_OK);
    });
    add("CIM_ReferencedProfile", [this](const Making &making) {
        for (const Profile &profile : profiles_) {
            for (const std::string &name : profile.references) {
                const auto other = std::ranges::find(profiles_, name, &Profile::instanceId);
                if (other == profiles_.end()) {
                    continue;
                }
                making.instances.append(
                    InstanceBuilder(making.arena, nameSpaces_, ownNameSpace(making), "CIM_ReferencedProfile")
                        .reference("Antecedent", *profileInstance(making, *other)->path)
                        .reference("Dependent", *profileInstance(making, profile)->path)
                        .instance());
            }
        }
        return makeStatus(CMPI_RC_OK);
    });
    add(conformanceClass, [this](const Making &making) { return makeConformances(making); });
}

/** The profile that the path names, or null. */
const Profile *Interop::profileOf(const Path &path) const
{
    const NamedValue *key = findValue(*path.keys, "InstanceID");
    const std::string_view name = key != nullptr ? textOf(stringOf(key->data)) : std::string_view();
    const auto found = std::ranges::find(profiles_, name, &Profile::instanceId);
    return found != profiles_.end() ? &*found : nullptr;
}

/** False when the object that associations are followed from cannot be at an end of this one. */
bool Interop::concerns(const Making &making, const Profile &profile, const std::string &centralClass) const
{
    if (making.source == nullptr) {
        return true;
    }
    const std::string_view name = making.source->className->view();
    if (cim::sameName(name, profileClass)) {
        return profileOf(*making.source) == &profile;
    }
    return nameSpaces_.standard().classes->isA(name, centralClass);
}

CMPIStatus Interop::centralInstances(const Making &making, const std::string &className,
                                     ArenaList<Path *> &paths) const
{
    CMPIStatus status = {};
    const Path *klass = makePath(making.arena, nameSpaces_, nameSpaces_.standard().name, className);
    const CMPIEnumeration *names =
        broker_.bft->enumerateInstanceNames(&broker_, making.context, &klass->cmpi, &status);
    if (names != nullptr) {
        for (const CMPIData &each : *behind<Enumeration>(names)->elements) {
            paths.append(behind<Path>(each.value.ref));
        }
    }
    return status;
}

CMPIStatus Interop::makeConformances(const Making &making) const
{
    for (const Profile &profile : profiles_) {
        for (const std::string &className : profile.centralClasses) {
            if (!concerns(making, profile, className)) {
                continue;
            }
            ArenaList<Path *> elements(making.arena);
            const CMPIStatus status = centralInstances(making, className, elements);
            if (status.rc != CMPI_RC_OK) {
                return status;
            }
            for (const Path *element : elements) {
                making.instances.append(
                    InstanceBuilder(making.arena, nameSpaces_, making.nameSpace, conformanceClass)
                        .reference("ConformantStandard", *profileInstance(making, profile)->path)
                        .reference("ManagedElement", *element)
                        .instance());
            }
        }
    }
    return makeStatus(CMPI_RC_OK);
}

CMPIStatus Interop::getCentralInstances(const Making &making, const Path &target, std::string_view method,
                                        Args &out) const
{
    CMPIStatus status = {};
    if (!cim::sameName(method, "GetCentralInstances")) {
        setStatus(&status, CMPI_RC_ERR_METHOD_NOT_FOUND, &making.arena,
                  "The class CIM_RegisteredProfile has the method GetCentralInstances alone.");
        return status;
    }
    const Profile *profile = profileOf(target);
    if (profile == nullptr) {
        setStatus(&status, CMPI_RC_ERR_NOT_FOUND, &making.arena, "There is no instance with these keys.");
        return status;
    }
    ArenaList<Path *> elements(making.arena);
    for (const std::string &className : profile->centralClasses) {
        status = centralInstances(making, className, elements);
        if (status.rc != CMPI_RC_OK) {
            return status;
        }
    }
    Array *array = makeArray(*out.arena, CMPI_ref, static_cast<CMPICount>(elements.size()));
    for (CMPICount i = 0; i < array->size; ++i) {
        array->elements[i] = {};
        array->elements[i].type = CMPI_ref;
        array->elements[i].value.ref = &copyObject(*out.arena, *elements[i])->cmpi;
    }
    CMPIData data = {};
    data.type = CMPI_refA;
    data.value.array = &array->cmpi;
    setValue(*out.values, "CentralInstances", data);
    return status;
}

} // namespace host
