// SPDX-License-Identifier: Apache-2.0
// The providers: loading them, and finding the one that serves a class.
#ifndef HOST_CORE_PROVIDER_MANAGER_H
#define HOST_CORE_PROVIDER_MANAGER_H

#include "cim/name_spaces.h"
#include "core/registration.h"

#include <cmpi/cmpidt.h>
#include <cmpi/cmpift.h>

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace host
{

class BuiltInClass;

/** A provider with the interfaces that it has been asked for. Its tables have a function in every place: what
 * the provider does not implement says so. */
struct Provider {
    std::string name;
    CMPIInstanceMI *instance = nullptr;
    CMPIMethodMI *method = nullptr;
    CMPIAssociationMI *association = nullptr;
    CMPIInstanceMIFT instanceTable = {};
    CMPIMethodMIFT methodTable = {};
    CMPIAssociationMIFT associationTable = {};
};

using InstanceFactory = CMPIInstanceMI *(*)(const CMPIBroker *, const CMPIContext *, CMPIStatus *);

class ProviderManager
{
  public:
    ProviderManager(const cim::NameSpaces &nameSpaces, const CMPIBroker &broker);
    ProviderManager(const ProviderManager &) = delete;
    ProviderManager &operator=(const ProviderManager &) = delete;
    /** Tells every provider that it is over, and closes the libraries. */
    ~ProviderManager();

    /** Where libraries are looked for, in this order; without any, where the system looks. */
    void setLibraryDirectories(std::vector<std::string> directories);

    /** Uses that file as lib<location>.so, wherever it lies. */
    void setLibraryFile(const std::string &location, const std::string &file);

    /** Loads the library and has its factories called for the class. False, with a text for the operator in
     * problem, when a part is missing; then the class is not served. */
    bool load(const Registration &registration, std::string &problem);

    /** Takes in an instance provider that is part of the object manager; false when the namespace has no such
     * class or it is served already. */
    bool addBuiltIn(const cim::NameSpace &nameSpace, const std::string &className, InstanceFactory factory);

    /** The same for all that a class is served by; of an association, it is followed, too. The class must
     * outlive this. */
    bool addBuiltIn(const cim::NameSpace &nameSpace, BuiltInClass &builtIn);

    /** The provider of instances of exactly that class, or null. */
    const Provider *instanceProvider(const cim::Class &klass) const
    {
        return servingOf(klass).instance;
    }

    const Provider *methodProvider(const cim::Class &klass) const
    {
        return servingOf(klass).method;
    }

    const Provider *associationProvider(const cim::Class &klass) const
    {
        return servingOf(klass).association;
    }

    /** The classes with an association provider, in the order of their registration. */
    const std::vector<const cim::Class *> &associationClasses(const cim::ClassRepository &classes) const;

  private:
    struct Library {
        void *handle = nullptr;
        std::string path;
    };
    struct Serving {
        const Provider *instance = nullptr;
        const Provider *method = nullptr;
        const Provider *association = nullptr;
    };

    const Serving &servingOf(const cim::Class &klass) const;
    Library *open(const std::string &location, std::string &problem);

    const cim::NameSpaces &nameSpaces_;
    const CMPIBroker &broker_;
    std::vector<std::string> directories_;
    std::map<std::string, std::string> files_;
    std::map<std::string, Library> libraries_;
    std::map<std::string, Provider> providers_; // by library and name
    std::unordered_map<const cim::Class *, Serving> serving_;
    std::unordered_map<const cim::ClassRepository *, std::vector<const cim::Class *>> associationClasses_;
};

} // namespace host

#endif
