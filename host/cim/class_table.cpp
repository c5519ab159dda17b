#include "cim/class_table.h"

#include <bit>
#include <stdexcept>

namespace host
{
namespace
{

constexpr std::uint16_t EMPTY_SLOT = 0xffff;

std::size_t hashName(std::string_view name)
{
    std::uint32_t hash = 2166136261u;
    for (const char letter : name) {
        // Setting bit 5 folds the case of letters; what else it folds together the comparison tells apart.
        hash = (hash ^ (static_cast<unsigned char>(letter) | 0x20u)) * 16777619u;
    }
    return hash ^ (hash >> 15);
}

} // namespace

ClassInfo::ClassInfo(const cim::Class &definition)
    : definition_(&definition), slots_(std::bit_ceil(definition.properties.size() * 2 + 2), EMPTY_SLOT),
      mask_(slots_.size() - 1)
{
    if (definition.properties.size() >= EMPTY_SLOT) {
        throw std::length_error("class " + definition.name + " has too many properties");
    }
    for (std::size_t i = 0; i < definition.properties.size(); ++i) {
        std::size_t slot = hashName(definition.properties[i].name) & mask_;
        while (slots_[slot] != EMPTY_SLOT) {
            slot = (slot + 1) & mask_;
        }
        slots_[slot] = static_cast<std::uint16_t>(i);
    }
}

int ClassInfo::findProperty(std::string_view name) const
{
    for (std::size_t slot = hashName(name) & mask_; slots_[slot] != EMPTY_SLOT; slot = (slot + 1) & mask_) {
        if (cim::sameName(definition_->properties[slots_[slot]].name, name)) {
            return slots_[slot];
        }
    }
    return NO_PROPERTY;
}

ClassTable::ClassTable(const cim::ClassRepository &repository, std::string nameSpace)
    : repository_(&repository), nameSpace_(std::move(nameSpace))
{
    classes_.reserve(repository.size());
    for (cim::ClassId id = 0; id < repository.size(); ++id) {
        classes_.emplace_back(repository.byId(id));
    }
}

bool ClassTable::isNameSpace(std::string_view text) const
{
    if (!text.empty() && text.front() == '/') {
        text.remove_prefix(1);
    }
    return cim::sameName(text, nameSpace_);
}

const ClassInfo *ClassTable::find(std::string_view name) const
{
    const cim::ClassId id = repository_->idOf(name);
    return id == cim::NO_CLASS ? nullptr : &classes_[id];
}

} // namespace host
