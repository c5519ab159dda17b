// SPDX-License-Identifier: Apache-2.0
#include "core/provider_manager.h"

#include "cmpi/call.h"
#include "cmpi/objects.h"
#include "core/built_in.h"
#include "log/log.h"

#include <algorithm>
#include <dlfcn.h>
#include <unistd.h>

namespace host
{
namespace
{

/** Factories and clean-up are calls like others: what a provider makes meanwhile needs an owner. */
class SetupCall
{
  public:
    SetupCall() : call_{&arena_, nextRequestNumber()}, scope_(call_) {}

    Context *context()
    {
        return makeContext(arena_);
    }

  private:
    Arena arena_;
    Call call_;
    CallScope scope_;
};

template <typename Interface>
bool create(void *library, const std::string &libraryPath, const CMPIBroker &broker,
            const std::string &provider, const char *kind, Interface *&interface, std::string &problem)
{
    if (interface != nullptr) {
        return true;
    }
    const std::string symbol = provider + "_Create_" + kind + "MI";
    using Factory = Interface *(*)(const CMPIBroker *, const CMPIContext *, CMPIStatus *);
    const auto factory = reinterpret_cast<Factory>(dlsym(library, symbol.c_str()));
    if (factory == nullptr) {
        problem = libraryPath + " has no factory " + symbol;
        return false;
    }
    SetupCall setup;
    CMPIStatus status = {};
    Interface *made = factory(&broker, &setup.context()->cmpi, &status);
    if (made == nullptr || made->ft == nullptr || status.rc != CMPI_RC_OK) {
        const String *message = behind<String>(status.msg);
        problem = symbol + " of " + libraryPath + " failed with code " +
                  std::to_string(static_cast<int>(status.rc)) +
                  (message != nullptr ? ": " + std::string(message->view()) : std::string());
        return false;
    }
    if (made->ft->ftVersion < CMPIVersion100) {
        problem = symbol + " of " + libraryPath + " has the unknown interface version " +
                  std::to_string(made->ft->ftVersion);
        return false;
    }
    interface = made;
    return true;
}

/** Stands in the place of a function that the provider has not got. */
template <typename... Arguments>
CMPIStatus notImplemented(Arguments...)
{
    CMPIStatus status = {};
    setStatus(&status, CMPI_RC_ERR_NOT_SUPPORTED, currentCall()->arena,
              "The provider does not implement the operation.");
    return status;
}

template <typename... Arguments>
void fill(CMPIStatus (*&function)(Arguments...))
{
    if (function == nullptr) {
        function = notImplemented<Arguments...>;
    }
}

void fillTables(Provider &provider)
{
    if (provider.instance != nullptr) {
        CMPIInstanceMIFT &table = provider.instanceTable = *provider.instance->ft;
        fill(table.enumerateInstanceNames);
        fill(table.enumerateInstances);
        fill(table.getInstance);
        fill(table.createInstance);
        fill(table.modifyInstance);
        fill(table.deleteInstance);
        fill(table.execQuery);
    }
    if (provider.method != nullptr) {
        provider.methodTable = *provider.method->ft;
        fill(provider.methodTable.invokeMethod);
    }
    if (provider.association != nullptr) {
        CMPIAssociationMIFT &table = provider.associationTable = *provider.association->ft;
        fill(table.associators);
        fill(table.associatorNames);
        fill(table.references);
        fill(table.referenceNames);
    }
}

template <typename Interface>
void cleanUp(Interface *interface, const std::string &provider)
{
    if (interface == nullptr || interface->ft->cleanup == nullptr) {
        return;
    }
    SetupCall setup;
    const CMPIStatus status = interface->ft->cleanup(interface, &setup.context()->cmpi, 1);
    if (status.rc != CMPI_RC_OK && status.rc != CMPI_RC_DO_NOT_UNLOAD && status.rc != CMPI_RC_NEVER_UNLOAD) {
        const String *message = behind<String>(status.msg);
        logLine("clean-up of provider %s ended with code %d%s%s", provider.c_str(),
                static_cast<int>(status.rc), message != nullptr ? ": " : "",
                message != nullptr ? message->text : "");
    }
}

} // namespace

ProviderManager::ProviderManager(const cim::NameSpaces &nameSpaces, const CMPIBroker &broker)
    : nameSpaces_(nameSpaces), broker_(broker)
{
}

ProviderManager::~ProviderManager()
{
    for (const auto &[key, provider] : providers_) {
        cleanUp(provider.instance, provider.name);
        cleanUp(provider.method, provider.name);
        cleanUp(provider.association, provider.name);
    }
    for (const auto &[location, library] : libraries_) {
        dlclose(library.handle);
    }
}

void ProviderManager::setLibraryDirectories(std::vector<std::string> directories)
{
    directories_ = std::move(directories);
}

void ProviderManager::setLibraryFile(const std::string &location, const std::string &file)
{
    files_[location] = file;
}

const ProviderManager::Serving &ProviderManager::servingOf(const cim::Class &klass) const
{
    static const Serving nobody;
    const auto found = serving_.find(&klass);
    return found != serving_.end() ? found->second : nobody;
}

const std::vector<const cim::Class *> &
ProviderManager::associationClasses(const cim::ClassRepository &classes) const
{
    static const std::vector<const cim::Class *> none;
    const auto found = associationClasses_.find(&classes);
    return found != associationClasses_.end() ? found->second : none;
}

ProviderManager::Library *ProviderManager::open(const std::string &location, std::string &problem)
{
    if (const auto found = libraries_.find(location); found != libraries_.end()) {
        return &found->second;
    }
    const std::string name = "lib" + location + ".so";
    std::string path = name;
    if (const auto file = files_.find(location); file != files_.end()) {
        path = file->second;
    } else if (!directories_.empty()) {
        const auto directory =
            std::find_if(directories_.begin(), directories_.end(), [&name](const std::string &candidate) {
                return access((candidate + "/" + name).c_str(), F_OK) == 0;
            });
        if (directory == directories_.end()) {
            problem = "there is no " + name + " in";
            for (const std::string &candidate : directories_) {
                problem += " " + candidate;
            }
            return nullptr;
        }
        path = *directory + "/" + name;
    }
    if (path.find('/') == std::string::npos && path != name) {
        path = "./" + path; // a file name without a directory means the current one, not a search
    }
    void *handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char *reason = dlerror();
        problem = "the library cannot be loaded: " + std::string(reason != nullptr ? reason : path.c_str());
        return nullptr;
    }
    return &libraries_.emplace(location, Library{handle, path}).first->second;
}

bool ProviderManager::load(const Registration &registration, std::string &problem)
{
    const auto fail = [&](const std::string &text) {
        problem = registration.where + ": [" + registration.className + "] " + text;
        return false;
    };
    const cim::NameSpace &nameSpace = nameSpaces_.standard();
    const cim::Class *klass = nameSpace.classes->find(registration.className);
    if (klass == nullptr) {
        return fail("no MOF file defines the class");
    }
    if (std::none_of(registration.nameSpaces.begin(), registration.nameSpaces.end(),
                     [&](const std::string &name) { return nameSpaces_.find(name) == &nameSpace; })) {
        return fail("the class is registered for another namespace than " + nameSpace.name);
    }
    if (registration.isAssociation && !klass->isAssociation) {
        return fail("has an association provider, but the class is no association");
    }
    std::string reason;
    const Library *library = open(registration.location, reason);
    if (library == nullptr) {
        return fail(reason);
    }
    Provider &provider = providers_[registration.location + "\n" + registration.provider];
    provider.name = registration.provider;
    const auto make = [&](const char *kind, auto *&interface) {
        return create(library->handle, library->path, broker_, registration.provider, kind, interface,
                      reason);
    };
    if ((registration.isInstance && !make("Instance", provider.instance)) ||
        (registration.isMethod && !make("Method", provider.method)) ||
        (registration.isAssociation && !make("Association", provider.association))) {
        return fail(reason);
    }
    fillTables(provider);
    Serving &serving = serving_[klass];
    if (registration.isInstance) {
        serving.instance = &provider;
    }
    if (registration.isMethod) {
        serving.method = &provider;
    }
    if (registration.isAssociation) {
        serving.association = &provider;
        associationClasses_[nameSpace.classes].push_back(klass);
    }
    return true;
}

bool ProviderManager::addBuiltIn(const cim::NameSpace &nameSpace, const std::string &className,
                                 InstanceFactory factory)
{
    const cim::Class *klass = nameSpace.classes->find(className);
    if (klass == nullptr || servingOf(*klass).instance != nullptr) {
        return false;
    }
    SetupCall setup;
    CMPIStatus status = {};
    Provider &provider = providers_[nameSpace.name + "\n" + className];
    provider.name = className;
    provider.instance = factory(&broker_, &setup.context()->cmpi, &status);
    fillTables(provider);
    serving_[klass].instance = &provider;
    return true;
}

bool ProviderManager::addBuiltIn(const cim::NameSpace &nameSpace, BuiltInClass &builtIn)
{
    const cim::Class *klass = nameSpace.classes->find(builtIn.name());
    if (klass == nullptr || servingOf(*klass).instance != nullptr) {
        return false;
    }
    Provider &provider = providers_[nameSpace.name + "\n" + builtIn.name()];
    provider.name = builtIn.name();
    provider.instance = builtIn.instanceInterface();
    provider.method = builtIn.methodInterface();
    provider.association = klass->isAssociation ? builtIn.associationInterface() : nullptr;
    fillTables(provider);
    serving_[klass] = {&provider, provider.method != nullptr ? &provider : nullptr,
                       klass->isAssociation ? &provider : nullptr};
    if (klass->isAssociation) {
        associationClasses_[nameSpace.classes].push_back(klass);
    }
    return true;
}

} // namespace host
