// SPDX-License-Identifier: Apache-2.0
#include "core/object_manager.h"

#include "core/computer_system.h"
#include "core/conformance.h"

namespace host
{

ObjectManager::ObjectManager(cim::ClassRepository classes, const ObjectManagerOptions &options)
    : options_(options), classes_(withConformanceClasses(std::move(classes), options.profiles)),
      nameSpaces_(classes_, options.nameSpace), broker_(nameSpaces_),
      interop_(nameSpaces_, broker_.cmpi(), localHostName(), options.version),
      providers_(nameSpaces_, broker_.cmpi()), dispatcher_(nameSpaces_, providers_, localHostName())
{
    providers_.setLibraryDirectories(options.libraryDirectories);
    broker_.setDispatcher(&dispatcher_);
}

std::vector<std::string> ObjectManager::load(const std::vector<Registration> &registrations)
{
    std::vector<std::string> problems;
    for (const Registration &registration : registrations) {
        if (!options_.libraryFile.empty()) {
            providers_.setLibraryFile(registration.location, options_.libraryFile);
        }
        std::string problem;
        if (!providers_.load(registration, problem)) {
            problems.push_back(problem);
        }
    }
    // A registered provider of that class goes first; without the class there is nothing to serve.
    providers_.addBuiltIn(nameSpaces_.standard(), computerSystemClass, createComputerSystemProvider);
    interop_.addTo(providers_);
    for (const std::string &text : interop_.setProfiles(options_.profiles)) {
        problems.push_back(text);
    }
    return problems;
}

} // namespace host
