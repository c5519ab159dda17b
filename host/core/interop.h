// SPDX-License-Identifier: Apache-2.0
// The namespace "interop", also called "root/interop", where a client finds out what it talks to: the object
// manager, the namespaces that it serves, and the profiles that their classes conform to.
#ifndef HOST_CORE_INTEROP_H
#define HOST_CORE_INTEROP_H

#include "cim/name_spaces.h"
#include "core/built_in.h"
#include "core/profiles.h"

#include <memory>
#include <string>
#include <vector>

namespace host
{

class ProviderManager;

/** The classes of the namespace. */
cim::ClassRepository readInteropClasses();

class Interop
{
  public:
    /** Adds the namespace, unless it is the one that is served already. hostName is that of this host,
     * version that of the object manager. */
    Interop(cim::NameSpaces &nameSpaces, const CMPIBroker &broker, std::string hostName, std::string version);
    Interop(const Interop &) = delete;
    Interop &operator=(const Interop &) = delete;

    /** Takes the profiles over; a text for everything in them that is not there. */
    std::vector<std::string> setProfiles(std::vector<Profile> profiles);

    /** Has the classes served: in this namespace, and CIM_ElementConformsToProfile also in the standard one
     * when that has the class, for an element tells its profile, too. */
    void addTo(ProviderManager &providers);

  private:
    void add(const char *className, BuiltInClass::Maker make, BuiltInClass::Method method = {});
    std::string_view ownNameSpace(const Making &making) const;
    const Profile *profileOf(const Path &path) const;
    bool concerns(const Making &making, const Profile &profile, const std::string &centralClass) const;
    CMPIStatus centralInstances(const Making &making, const std::string &className,
                                ArenaList<Path *> &paths) const;
    Instance *objectManager(const Making &making) const;
    Instance *nameSpaceInstance(const Making &making, const cim::NameSpace &nameSpace) const;
    Instance *profileInstance(const Making &making, const Profile &profile) const;
    CMPIStatus makeConformances(const Making &making) const;
    CMPIStatus getCentralInstances(const Making &making, const Path &target, std::string_view method,
                                   Args &out) const;
    void addClasses();
    void addAssociations();

    const cim::ClassRepository classes_;
    const cim::NameSpaces &nameSpaces_;
    const CMPIBroker &broker_;
    const std::string hostName_;
    const std::string version_;
    std::vector<Profile> profiles_;
    std::vector<std::unique_ptr<BuiltInClass>> builtIn_;
};

} // namespace host

#endif
