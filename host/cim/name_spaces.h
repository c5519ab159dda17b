// SPDX-License-Identifier: Apache-2.0
// The namespaces that are served, with the classes of each.
#ifndef HOST_CIM_NAME_SPACES_H
#define HOST_CIM_NAME_SPACES_H

#include "cim/schema.h"

#include <string>
#include <string_view>
#include <vector>

namespace cim
{

struct NameSpace {
    std::string name; // without a leading slash
    const ClassRepository *classes;
};

class NameSpaces
{
  public:
    /** The namespace that counts where none is named. The repository must outlive this. */
    NameSpaces(const ClassRepository &classes, std::string name)
    {
        add(classes, std::move(name));
    }

    /** One more namespace; before any request is served. */
    void add(const ClassRepository &classes, std::string name)
    {
        all_.push_back({std::move(name), &classes});
    }

    const NameSpace &standard() const
    {
        return all_.front();
    }

    const std::vector<NameSpace> &all() const
    {
        return all_;
    }

    /** The namespace of that name, or null; a leading slash and letter case do not count. */
    const NameSpace *find(std::string_view name) const
    {
        if (!name.empty() && name.front() == '/') {
            name.remove_prefix(1);
        }
        for (const NameSpace &nameSpace : all_) {
            if (sameName(nameSpace.name, name)) {
                return &nameSpace;
            }
        }
        return nullptr;
    }

    /** The class of that name in the namespace, or in the standard one when there is no such namespace; null
     * when it is not known. */
    const Class *findClass(std::string_view nameSpace, std::string_view className) const
    {
        const NameSpace *found = find(nameSpace);
        return (found != nullptr ? found : &standard())->classes->find(className);
    }

  private:
    std::vector<NameSpace> all_;
};

} // namespace cim

#endif
