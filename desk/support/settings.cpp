// SPDX-License-Identifier: Apache-2.0
#include "support/settings.h"

#include "support/values.h"

namespace desk
{

consteval Settings::Values Settings::factoryValues()
{
    Values values;
    for (std::size_t i = 0; i < settingCount; ++i) {
        const SettingRow &row = settingRows[i];
        if (row.kind == Kind::number) {
            values[i] = {row.factoryNumber, decimalText(row.factoryNumber)};
        } else {
            values[i] = {0, ShortText(row.factoryText)};
        }
    }
    return values;
}

constexpr Settings::Values Settings::factory = factoryValues();

Settings::Settings() : values_(factory) {}

void Settings::set(Key key, int value)
{
    values_[key.index()] = {value, decimalText(value)};
}

void Settings::set(Key key, std::string_view value)
{
    int number = 0;
    if (key.row().kind == Kind::number) {
        parseNumber(value, number);
    }
    values_[key.index()] = {number, ShortText(value)};
}

void Settings::reset(Key key)
{
    values_[key.index()] = factory[key.index()];
}

Key inputActive(int input)
{
    static constexpr Key keys[inputCount] = {"input1.active", "input2.active", "input3.active"};
    return keys[input];
}

Key inputWidth(int input)
{
    static constexpr Key keys[inputCount] = {"input1.width", "input2.width", "input3.width"};
    return keys[input];
}

Key inputHeight(int input)
{
    static constexpr Key keys[inputCount] = {"input1.height", "input2.height", "input3.height"};
    return keys[input];
}

} // namespace desk
