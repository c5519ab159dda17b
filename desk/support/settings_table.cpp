// SPDX-License-Identifier: Apache-2.0
#include "support/settings_table.h"

#include "support/values.h"

namespace desk
{

namespace
{

consteval bool acceptsItsFactoryValue(const SettingRow &row)
{
    if (row.name.empty() || row.name.size() >= ShortText::capacity || row.minimum > row.maximum ||
        row.step < 1) {
        return false;
    }
    if (row.kind == Kind::number) {
        return row.factoryNumber >= row.minimum && row.factoryNumber <= row.maximum &&
               row.factoryNumber % row.step == 0;
    }
    return row.factoryText.size() <= static_cast<std::size_t>(row.maximum) &&
           static_cast<std::size_t>(row.maximum) <= ShortText::capacity;
}

consteval bool rowsAreGood()
{
    for (const SettingRow &row : settingRows) {
        if (!acceptsItsFactoryValue(row)) {
            return false;
        }
    }
    return true;
}
static_assert(rowsAreGood(), "a row has no name, no good limits, or a factory value beyond them");

consteval bool registersAreUnique()
{
    for (std::size_t i = 0; i < settingCount; ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (settingRows[i].registerId != noRegister &&
                settingRows[i].registerId == settingRows[j].registerId) {
                return false;
            }
        }
    }
    return true;
}
static_assert(registersAreUnique(), "two settings have the same register");

/** The places of the rows, in the order of their names. */
consteval std::array<std::uint16_t, settingCount> placesByName()
{
    std::array<std::uint16_t, settingCount> places{};
    for (std::size_t i = 0; i < settingCount; ++i) {
        places[i] = static_cast<std::uint16_t>(i);
    }
    std::sort(places.begin(), places.end(),
              [](auto a, auto b) { return settingRows[a].name < settingRows[b].name; });
    return places;
}
constexpr std::array<std::uint16_t, settingCount> byName = placesByName();

consteval bool namesAreUnique()
{
    for (std::size_t i = 1; i < settingCount; ++i) {
        if (settingRows[byName[i - 1]].name == settingRows[byName[i]].name) {
            return false;
        }
    }
    return true;
}
static_assert(namesAreUnique(), "two settings have the same name");

} // namespace

int findSetting(std::string_view name)
{
    return SettingFinder().find(name);
}

int SettingFinder::find(std::string_view name)
{
    if (next_ < settingCount && settingRows[byName[next_]].name == name) {
        return byName[next_++];
    }
    const auto place = std::lower_bound(byName.begin(), byName.end(), name,
                                        [](std::uint16_t candidate, std::string_view wanted) {
                                            return settingRows[candidate].name < wanted;
                                        });
    if (place == byName.end() || settingRows[*place].name != name) {
        return -1;
    }
    next_ = static_cast<std::size_t>(place - byName.begin()) + 1;
    return *place;
}

const SettingRow *findRegister(int registerId, int group)
{
    if (registerId == noRegister) {
        return nullptr;
    }
    for (const SettingRow &row : plainRows) {
        if (row.registerId == registerId && row.group == group) {
            return &settingRows[static_cast<std::size_t>(&row - plainRows)];
        }
    }
    return nullptr;
}

std::string complaint(const SettingRow &row, std::string_view value)
{
    if (row.kind == Kind::number) {
        int number = 0;
        if (!parseNumber(value, number)) {
            return "is not a whole number";
        }
        if (number < row.minimum || number > row.maximum) {
            return "is outside " + std::to_string(row.minimum) + ".." + std::to_string(row.maximum);
        }
        return number % row.step == 0 ? std::string() : "is not a multiple of " + std::to_string(row.step);
    }
    if (row.kind == Kind::address) {
        std::uint8_t octets[4];
        return parseAddress(value, octets) ? std::string() : "is not an IPv4 address";
    }
    if (value.size() > static_cast<std::size_t>(row.maximum)) {
        return "is longer than " + std::to_string(row.maximum) + " bytes";
    }
    return printable(value) ? std::string() : "holds characters that cannot be shown";
}

} // namespace desk
