#include "support/settings_table.h"

#include <charconv>
#include <cmath>
#include <unordered_map>
#include <vector>

namespace desk
{

namespace
{

/* The rows are consistent: one row per name and per register, factory values that the row itself accepts. */
consteval bool consistent()
{
    for (std::size_t i = 0; i < std::size(SettingRows); ++i) {
        const SettingRow &row = SettingRows[i];
        if (row.name.empty() || row.minimum > row.maximum || row.step < 1)
            return false;
        if (row.kind == Kind::Number && (row.factoryNumber < row.minimum || row.factoryNumber > row.maximum ||
                                         row.factoryNumber % row.step != 0))
            return false;
        if (row.kind != Kind::Number && row.factoryText.size() > static_cast<std::size_t>(row.maximum))
            return false;
        for (std::size_t j = 0; j < i; ++j)
            if (SettingRows[j].name == row.name ||
                (row.registerId != NoRegister && SettingRows[j].registerId == row.registerId))
                return false;
    }
    for (const PresetRow &preset : PresetRows)
        if (preset.name.size() > 14 || preset.gamma.size() > 9 || preset.luminance < 48 ||
            preset.luminance > 250)
            return false;
    return true;
}
static_assert(consistent());

constexpr std::string_view PresetFieldNames[PresetFieldCount] = {
    "name",    "luminance", "calibrated_luminance",
    "red_x",   "red_y",     "red_u",
    "red_v",   "green_x",   "green_y",
    "green_u", "green_v",   "blue_x",
    "blue_y",  "blue_u",    "blue_v",
    "white_x", "white_y",   "white_u",
    "white_v", "gamma",
};

/* Four decimals after a point. */
std::string decimal(double value)
{
    char buffer[16];
    const auto [end, error] =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, 4);
    return error == std::errc() ? std::string(buffer, end) : std::string();
}

/* x, y and the CIE 1976 coordinates u', v' that follow from them. */
void appendCoordinates(std::vector<std::string> &values, Chromaticity c)
{
    const double divisor = -2 * c.x + 12 * c.y + 3;
    values.push_back(decimal(c.x));
    values.push_back(decimal(c.y));
    values.push_back(decimal(4 * c.x / divisor));
    values.push_back(decimal(9 * c.y / divisor));
}

struct Table {
    std::vector<std::string> texts; /* what the presets' rows point into */
    std::vector<SettingRow> rows;
    std::unordered_map<std::string_view, int> places;

    Table()
    {
        rows.assign(std::begin(SettingRows), std::end(SettingRows));
        texts.reserve(2 * static_cast<std::size_t>(PresetCount) * PresetFieldCount);
        for (int preset = 0; preset < PresetCount; ++preset)
            appendPreset(preset);
        for (std::size_t i = 0; i < rows.size(); ++i)
            places.emplace(rows[i].name, static_cast<int>(i));
    }

    void appendPreset(int number)
    {
        const PresetRow &preset = PresetRows[number];
        std::vector<std::string> values = {std::string(preset.name), "", ""};
        for (Chromaticity c : {preset.red, preset.green, preset.blue, preset.white})
            appendCoordinates(values, c);
        values.emplace_back(preset.gamma);

        for (int field = 0; field < PresetFieldCount; ++field) {
            texts.push_back("preset" + std::to_string(number + 1) + "." +
                            std::string(PresetFieldNames[field]));
            const std::string_view name = texts.back();
            if (field == PresetLuminance || field == PresetCalibratedLuminance) {
                rows.push_back(figure(name, NoRegister, ColorSpaceGroup, preset.luminance, 48, 250));
            } else {
                texts.push_back(values[static_cast<std::size_t>(field)]);
                rows.push_back(
                    text(name, NoRegister, ColorSpaceGroup, texts.back(), field == PresetName ? 15 : 10));
            }
        }
    }
};

const Table &table()
{
    static const Table instance;
    return instance;
}

} // namespace

std::span<const SettingRow> allSettings()
{
    return table().rows;
}

int findSetting(std::string_view name)
{
    const auto found = table().places.find(name);
    return found == table().places.end() ? -1 : found->second;
}

const SettingRow *findRegister(int registerId, int group)
{
    if (registerId == NoRegister)
        return nullptr;
    for (const SettingRow &row : SettingRows)
        if (row.registerId == registerId && row.group == group)
            return &row;
    return nullptr;
}

const FaultRow *findFault(std::string_view name)
{
    for (const FaultRow &row : FaultRows)
        if (row.name == name)
            return &row;
    return nullptr;
}

std::string complaint(const SettingRow &row, std::string_view value)
{
    if (row.kind == Kind::Number) {
        int number = 0;
        if (!parseNumber(value, number))
            return "is not a whole number";
        if (number < row.minimum || number > row.maximum)
            return "is outside " + std::to_string(row.minimum) + ".." + std::to_string(row.maximum);
        if (number % row.step != 0)
            return "is not a multiple of " + std::to_string(row.step);
        return {};
    }
    if (row.kind == Kind::Address) {
        std::uint8_t octets[4];
        return parseAddress(value, octets) ? std::string() : "is not an IPv4 address";
    }
    if (value.size() > static_cast<std::size_t>(row.maximum))
        return "is longer than " + std::to_string(row.maximum) + " bytes";
    if (!printable(value))
        return "holds characters that cannot be shown";
    return {};
}

namespace
{

template <class Value>
bool parseWhole(std::string_view text, Value &value)
{
    const char *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && rest == end;
}

} // namespace

bool parseNumber(std::string_view text, int &number)
{
    return parseWhole(text, number);
}

bool parseSeconds(std::string_view text, double &seconds)
{
    double number = 0;
    if (!parseWhole(text, number) || !std::isfinite(number) || number < 0)
        return false;
    seconds = number;
    return true;
}

bool parseAddress(std::string_view text, std::uint8_t octets[4])
{
    std::uint8_t parsed[4] = {};
    std::size_t at = 0;
    for (int i = 0; i < 4; ++i) {
        octets[i] = 0;
    }
    for (int i = 0; i < 4; ++i) {
        if (i > 0 && (at >= text.size() || text[at++] != '.'))
            return false;
        const std::size_t start = at;
        unsigned value = 0;
        while (at < text.size() && at - start < 3 && text[at] >= '0' && text[at] <= '9')
            value = value * 10 + static_cast<unsigned>(text[at++] - '0');
        const bool leadingZero = at - start > 1 && text[start] == '0';
        if (at == start || leadingZero || value > 255)
            return false;
        parsed[i] = static_cast<std::uint8_t>(value);
    }
    if (at != text.size())
        return false;
    for (int i = 0; i < 4; ++i)
        octets[i] = parsed[i];
    return true;
}

bool printable(std::string_view text)
{
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead < 0x20 || lead == 0x7f)
            return false;
        const std::size_t length = lead < 0x80   ? 1
                                   : lead < 0xc2 ? 0
                                   : lead < 0xe0 ? 2
                                   : lead < 0xf0 ? 3
                                   : lead < 0xf5 ? 4
                                                 : 0;
        if (length == 0 || length > text.size() - i)
            return false;
        unsigned code = length == 1 ? lead : lead & (0x7fu >> length);
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xc0) != 0x80)
                return false;
            code = code << 6 | (next & 0x3fu);
        }
        const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
        const bool surrogate = code >= 0xd800 && code <= 0xdfff;
        const bool control = code >= 0x80 && code < 0xa0;
        if (overlong || surrogate || control || code > 0x10ffff)
            return false;
        i += length;
    }
    return true;
}

} // namespace desk
