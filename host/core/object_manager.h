// SPDX-License-Identifier: Apache-2.0
// The object manager as a whole: classes, broker, providers and dispatcher, put together in the right order.
#ifndef HOST_CORE_OBJECT_MANAGER_H
#define HOST_CORE_OBJECT_MANAGER_H

#include "cim/name_spaces.h"
#include "core/dispatcher.h"
#include "core/interop.h"
#include "core/provider_manager.h"
#include "core/registration.h"
#include "core/up_calls.h"

#include <string>
#include <vector>

namespace host
{

struct ObjectManagerOptions {
    std::string nameSpace = "root/cimv2";
    std::vector<std::string> libraryDirectories;
    /** A library file, used for every location; empty: lib<location>.so is looked for. */
    std::string libraryFile;
    /** What the classes conform to. */
    std::vector<Profile> profiles;
    /** Of the object manager, for clients that ask. */
    std::string version = "0.0.0";
};

class ObjectManager
{
  public:
    /** Takes the classes over. */
    ObjectManager(cim::ClassRepository classes, const ObjectManagerOptions &options);

    /** Loads the providers; one text for every problem. What could be loaded is served. */
    std::vector<std::string> load(const std::vector<Registration> &registrations);

    Dispatcher &dispatcher()
    {
        return dispatcher_;
    }

    const Broker &broker() const
    {
        return broker_;
    }

    const cim::NameSpaces &nameSpaces() const
    {
        return nameSpaces_;
    }

  private:
    ObjectManagerOptions options_;
    const cim::ClassRepository classes_;
    cim::NameSpaces nameSpaces_;
    DispatchingBroker broker_;
    Interop interop_;
    ProviderManager providers_;
    Dispatcher dispatcher_;
};

} // namespace host

#endif
