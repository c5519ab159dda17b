// The classes as the broker and the front ends look them up: the repository with an index of the property
// names of each class.
#ifndef HOST_CIM_CLASS_TABLE_H
#define HOST_CIM_CLASS_TABLE_H

#include "cim/schema.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host
{

/** A class and the hashed index of its property names. */
class ClassInfo
{
  public:
    static constexpr int NO_PROPERTY = -1;

    explicit ClassInfo(const cim::Class &definition);

    const cim::Class &definition() const
    {
        return *definition_;
    }

    std::size_t propertyCount() const
    {
        return definition_->properties.size();
    }

    const cim::Property &property(int index) const
    {
        return definition_->properties[static_cast<std::size_t>(index)];
    }

    /** The place of the property of that name (any letter case), or NO_PROPERTY. */
    int findProperty(std::string_view name) const;

  private:
    const cim::Class *definition_;
    std::vector<std::uint16_t> slots_; // open addressing; EMPTY_SLOT or the place of a property
    std::size_t mask_;
};

/** All classes of the one namespace that this object manager serves. */
class ClassTable
{
  public:
    /** Indexes the classes that the repository holds now; it must not grow afterwards. */
    ClassTable(const cim::ClassRepository &repository, std::string nameSpace);

    /** The namespace, without a leading slash. */
    const std::string &nameSpace() const
    {
        return nameSpace_;
    }

    /** True when the text names the namespace; a leading slash and letter case do not count. */
    bool isNameSpace(std::string_view text) const;

    const cim::ClassRepository &repository() const
    {
        return *repository_;
    }

    /** The class of that name (any letter case), or null. */
    const ClassInfo *find(std::string_view name) const;

    const ClassInfo &byId(cim::ClassId id) const
    {
        return classes_[id];
    }

    std::size_t size() const
    {
        return classes_.size();
    }

    /** True when the class is the ancestor or derives from it. */
    bool isA(const ClassInfo &klass, const ClassInfo &ancestor) const
    {
        return repository_->isA(klass.definition().id, ancestor.definition().id);
    }

  private:
    const cim::ClassRepository *repository_;
    std::string nameSpace_;
    std::vector<ClassInfo> classes_;
};

} // namespace host

#endif
