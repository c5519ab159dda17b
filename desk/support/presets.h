// SPDX-License-Identifier: Apache-2.0
// The colour-space presets as the factory leaves them, and what each of them stores.
#ifndef DESK_SUPPORT_PRESETS_H
#define DESK_SUPPORT_PRESETS_H

#include "support/setting_row.h"
#include "support/short_text.h"

#include <iterator>
#include <string_view>

namespace desk
{

struct Chromaticity {
    double x, y; // CIE 1931
};

struct PresetRow {
    std::string_view name;
    int luminance; // cd/m2
    Chromaticity red, green, blue, white;
    std::string_view gamma;
};

inline constexpr Chromaticity whiteD65{0.3127, 0.3290};
inline constexpr Chromaticity whiteD50{0.3457, 0.3585};
inline constexpr Chromaticity whiteDci{0.3140, 0.3510};

inline constexpr PresetRow presetRows[] = {
    {"Native", 250, {0.6900, 0.3000}, {0.2050, 0.7150}, {0.1490, 0.0450}, whiteD65, "2.20"},
    {"AdobeRGB", 160, {0.6400, 0.3300}, {0.2100, 0.7100}, {0.1500, 0.0600}, whiteD65, "2.20"},
    {"Rec.709", 100, {0.6400, 0.3300}, {0.3000, 0.6000}, {0.1500, 0.0600}, whiteD65, "2.40"},
    {"sRGB D65", 80, {0.6400, 0.3300}, {0.3000, 0.6000}, {0.1500, 0.0600}, whiteD65, "2.20"},
    {"sRGB D50", 80, {0.6400, 0.3300}, {0.3000, 0.6000}, {0.1500, 0.0600}, whiteD50, "2.20"},
    {"DCI P3", 48, {0.6800, 0.3200}, {0.2650, 0.6900}, {0.1500, 0.0600}, whiteDci, "2.60"},
    {"Rec.2020", 100, {0.7080, 0.2920}, {0.1700, 0.7970}, {0.1310, 0.0460}, whiteD65, "2.40"},
};
inline constexpr int presetCount = static_cast<int>(std::size(presetRows));

/** One of the values that each preset stores. */
struct PresetField {
    std::string_view name;
    int shownBy; // the register that shows the active preset's, in the groups of colour, or noRegister
    Kind kind;   // a text of so many bytes at most, or a luminance
    int width;
    ShortText (*factory)(const PresetRow &);
};

namespace presets
{

constexpr double x(Chromaticity c)
{
    return c.x;
}
constexpr double y(Chromaticity c)
{
    return c.y;
}
/** CIE 1976, as they follow from x and y. */
constexpr double u(Chromaticity c)
{
    return 4 * c.x / (-2 * c.x + 12 * c.y + 3);
}
constexpr double v(Chromaticity c)
{
    return 9 * c.y / (-2 * c.x + 12 * c.y + 3);
}

template <Chromaticity PresetRow::*point, double (*coordinate)(Chromaticity)>
constexpr ShortText decimals(const PresetRow &row)
{
    return fourDecimals(coordinate(row.*point));
}

constexpr ShortText name(const PresetRow &row)
{
    return row.name;
}
constexpr ShortText gamma(const PresetRow &row)
{
    return row.gamma;
}
constexpr ShortText luminance(const PresetRow &row)
{
    return decimalText(row.luminance);
}

} // namespace presets

inline constexpr int lowestLuminance = 48;
inline constexpr int highestLuminance = 250;

inline constexpr PresetField presetFields[] = {
    {"name", noRegister, Kind::text, 15, presets::name},
    {"luminance", noRegister, Kind::number, 0, presets::luminance}, // as the user left it
    {"calibrated_luminance", noRegister, Kind::number, 0,
     presets::luminance}, // as the last calibration left it
    {"red_x", 2, Kind::text, 10, presets::decimals<&PresetRow::red, presets::x>},
    {"red_y", 3, Kind::text, 10, presets::decimals<&PresetRow::red, presets::y>},
    {"red_u", 4, Kind::text, 10, presets::decimals<&PresetRow::red, presets::u>},
    {"red_v", 5, Kind::text, 10, presets::decimals<&PresetRow::red, presets::v>},
    {"green_x", 6, Kind::text, 10, presets::decimals<&PresetRow::green, presets::x>},
    {"green_y", 7, Kind::text, 10, presets::decimals<&PresetRow::green, presets::y>},
    {"green_u", 8, Kind::text, 10, presets::decimals<&PresetRow::green, presets::u>},
    {"green_v", 9, Kind::text, 10, presets::decimals<&PresetRow::green, presets::v>},
    {"blue_x", 10, Kind::text, 10, presets::decimals<&PresetRow::blue, presets::x>},
    {"blue_y", 11, Kind::text, 10, presets::decimals<&PresetRow::blue, presets::y>},
    {"blue_u", 12, Kind::text, 10, presets::decimals<&PresetRow::blue, presets::u>},
    {"blue_v", 13, Kind::text, 10, presets::decimals<&PresetRow::blue, presets::v>},
    {"white_x", 14, Kind::text, 10, presets::decimals<&PresetRow::white, presets::x>},
    {"white_y", 15, Kind::text, 10, presets::decimals<&PresetRow::white, presets::y>},
    {"white_u", 16, Kind::text, 10, presets::decimals<&PresetRow::white, presets::u>},
    {"white_v", 17, Kind::text, 10, presets::decimals<&PresetRow::white, presets::v>},
    {"gamma", 18, Kind::text, 10, presets::gamma},
};
inline constexpr int presetFieldCount = static_cast<int>(std::size(presetFields));

} // namespace desk

#endif
