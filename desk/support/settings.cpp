#include "support/settings.h"

namespace desk
{

Settings::Settings() : texts(SettingCount), numbers(SettingCount)
{
    for (std::size_t i = 0; i < SettingCount; ++i)
        reset(Key(i));
}

void Settings::set(Key key, int value)
{
    numbers[key.index()] = value;
    texts[key.index()] = std::to_string(value);
}

void Settings::set(Key key, std::string value)
{
    int number = 0;
    if (allSettings()[key.index()].kind == Kind::Number)
        parseNumber(value, number);
    numbers[key.index()] = number;
    texts[key.index()] = std::move(value);
}

void Settings::reset(Key key)
{
    const SettingRow &row = allSettings()[key.index()];
    if (row.kind == Kind::Number)
        set(key, row.factoryNumber);
    else
        set(key, std::string(row.factoryText));
}

Key inputActive(int input)
{
    static constexpr Key keys[InputCount] = {"input1.active", "input2.active", "input3.active"};
    return keys[input];
}

Key inputWidth(int input)
{
    static constexpr Key keys[InputCount] = {"input1.width", "input2.width", "input3.width"};
    return keys[input];
}

Key inputHeight(int input)
{
    static constexpr Key keys[InputCount] = {"input1.height", "input2.height", "input3.height"};
    return keys[input];
}

} // namespace desk
