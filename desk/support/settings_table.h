/* The settings of the desk monitor, as rows: the store's schema.
 *
 * A row names a setting, the register and the information group it is reached by, its factory value and the
 * values it accepts. The readers of the support library, the effects of the display engine and the command
 * all work from these rows. Register and group numbers are typed here once more, not taken from the seam's
 * header, so that a wrong number on either side shows. */
#ifndef DESK_SUPPORT_SETTINGS_TABLE_H
#define DESK_SUPPORT_SETTINGS_TABLE_H

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <string>
#include <string_view>

namespace desk
{

enum class Kind : std::uint8_t {
    Number,  /* minimum..maximum, a multiple of step */
    Text,    /* at most maximum bytes */
    Address, /* IPv4, dotted */
};

enum class Access : std::uint8_t {
    Writable, /* a set request may write it */
    ReadOnly, /* a set request may not; the desk's command and the support library may */
};

/* Information groups of registers. */
enum Group : int {
    ColorSpaceGroup = 0,
    VideoInputGroup = 1,
    ImageGroup = 2,
    PipGroup = 3,
    RemoteGroup = 4,
    ManagementGroup = 5,
    MenuGroup = 6,
    FunctionButtonGroup = 7,
    BezelButtonGroup = 8,
    InfoGroup = 9,
    VersionGroup = 10,
    ResetGroup = 11,
    ColorParameterGroup = 12,
    QuickActionGroup = 13,
    FactoryGroup = 14,
    TestPatternGroup = 15,
    GeneralGroup = 16,
    LastGroup = GeneralGroup,
};

inline constexpr int NoRegister = -1;
inline constexpr int NoGroup = -1;

struct SettingRow {
    std::string_view name;
    int registerId;
    int group;
    Kind kind;
    Access access;
    int factoryNumber; /* Kind::Number */
    std::string_view factoryText;
    int minimum;
    int maximum;
    int step;
};

constexpr SettingRow range(std::string_view name, int reg, int group, int factory, int minimum, int maximum,
                           int step = 1)
{
    return {name, reg, group, Kind::Number, Access::Writable, factory, {}, minimum, maximum, step};
}

constexpr SettingRow onOff(std::string_view name, int reg, int group, int factory)
{
    return range(name, reg, group, factory, 0, 1);
}

constexpr SettingRow figure(std::string_view name, int reg, int group, int factory, int minimum, int maximum)
{
    return {name, reg, group, Kind::Number, Access::ReadOnly, factory, {}, minimum, maximum, 1};
}

constexpr SettingRow text(std::string_view name, int reg, int group, std::string_view factory, int width)
{
    return {name, reg, group, Kind::Text, Access::ReadOnly, 0, factory, 0, width, 1};
}

constexpr SettingRow address(std::string_view name, int reg, int group, std::string_view factory)
{
    return {name, reg, group, Kind::Address, Access::Writable, 0, factory, 0, 15, 1};
}

inline constexpr SettingRow SettingRows[] = {
    /* the monitor */
    text("display_mode", 130, InfoGroup, "Single", 25),
    text("serial_number", 133, InfoGroup, "DSK2840017", 15),
    text("pexal_version", 136, InfoGroup, "1.4.2", 15),
    text("display_name", NoRegister, NoGroup, "", 25),
    text("deployment_location", NoRegister, NoGroup, "", 25),
    figure("deployment_date", NoRegister, NoGroup, 1704067200, INT32_MIN, INT32_MAX), /* 1 January 2024 */
    figure("video_pipeline_delay", 132, InfoGroup, 24, 0, 65535),                     /* milliseconds */
    figure("last_calibration", 134, InfoGroup, 312, 0, 65535),                        /* hours since */
    figure("backlight_hours", 135, InfoGroup, 1460, 0, 65535),
    figure("soft_power_state", NoRegister, NoGroup, 1, 0, 1), /* 1: on */

    /* colour; the presets' own values follow these rows, see PresetRows */
    range("active_color_space", 1, ColorSpaceGroup, 0, 0, 6),

    /* video inputs: 0 and 1 Display Port, 2 HDMI; what is connected there is the desk's to say */
    range("video_input", 25, VideoInputGroup, 0, 0, 2),
    onOff("auto_switch_source", 26, VideoInputGroup, 0),
    figure("input1.active", 66, PipGroup, 1, 0, 1),
    figure("input2.active", 67, PipGroup, 1, 0, 1),
    figure("input3.active", 68, PipGroup, 0, 0, 1),
    figure("input1.width", NoRegister, NoGroup, 3840, 0, 4096), /* pixels */
    figure("input2.width", NoRegister, NoGroup, 4096, 0, 4096),
    figure("input3.width", NoRegister, NoGroup, 1920, 0, 4096),
    figure("input1.height", NoRegister, NoGroup, 2160, 0, 2160),
    figure("input2.height", NoRegister, NoGroup, 2160, 0, 2160),
    figure("input3.height", NoRegister, NoGroup, 1080, 0, 2160),

    /* image adjustment */
    range("display_aspect_ratio", 30, ImageGroup, 0, 0, 4),
    range("dci_image_region", 31, ImageGroup, 0, 0, 2),
    range("source_scaling_4k", 32, ImageGroup, 0, 0, 3),
    onOff("show_cropped_region", 33, ImageGroup, 0),
    range("cropped_region_opacity", 34, ImageGroup, 50, 25, 100), /* percent */
    onOff("use_video_levels", 35, ImageGroup, 0),
    onOff("overscan", 36, ImageGroup, 0),
    onOff("show_blue_channel", 37, ImageGroup, 0),
    onOff("overdrive", 38, ImageGroup, 0),
    onOff("deinterlacer", 39, ImageGroup, 1),
    onOff("cadence_detection", 40, ImageGroup, 1),
    onOff("scroll_4k_state", 43, ImageGroup, 0),
    range("scroll_4k_position_x", 44, ImageGroup, 0, 0, 1536), /* pixels */
    range("scroll_4k_position_y", 45, ImageGroup, 0, 0, 720),
    figure("displayed_4k_corner", NoRegister, ImageGroup, 0, 0, 3),
    figure("show_4k_position_overlay", NoRegister, ImageGroup, 0, 0, 1),

    /* picture in picture, on a panel of 2560 x 1440 */
    range("pip_mode", 50, PipGroup, 0, 0, 2),
    range("pip_position", 51, PipGroup, 2, 0, 4), /* 0..3 corners, clockwise from the upper left; 4 free */
    range("pip_position_x", 52, PipGroup, 1688, 160, 2116),
    range("pip_position_y", 53, PipGroup, 880, 160, 1120),
    range("pip_size", 54, PipGroup, 2, 0, 2), /* maximum, minimum, default */
    range("pip_height", 55, PipGroup, 400, 160, 1080),
    figure("pip_width", 56, PipGroup, 712, 284, 1920),
    range("pip_source", 57, PipGroup, 1, 0, 2),
    onOff("pip_video_levels", 59, PipGroup, 0),
    onOff("pip_overscan", 60, PipGroup, 0),
    range("pip_dci_image_region", 61, PipGroup, 0, 0, 2),
    onOff("pip_show_cropped_region", 62, PipGroup, 0),

    /* display management */
    onOff("power_saver", 70, ManagementGroup, 1),
    onOff("power_on_recall", 71, ManagementGroup, 1),
    onOff("ddc_ci_communication", 72, ManagementGroup, 1),
    onOff("auto_edid_update", 73, ManagementGroup, 1),
    onOff("hot_plug_initiate", 74, ManagementGroup, 0),
    onOff("manage_internal_processor", 75, ManagementGroup, 1),
    range("firmware_update_enabled", 76, ManagementGroup, 1, 0, 3),
    onOff("calibration_support", 77, ManagementGroup, 1),
    onOff("display_port_hot_plug_detection", 78, ManagementGroup, 1),
    onOff("display_port_compatibility", 79, ManagementGroup, 0),

    /* remote management and network; the desk's own network is never touched */
    onOff("remote_management", 85, RemoteGroup, 1),
    onOff("ip_configuration_mode", 86, RemoteGroup, 1), /* 0 DHCP, 1 static */
    address("ipv4_address", 87, RemoteGroup, "192.168.10.20"),
    address("ipv4_subnet", 88, RemoteGroup, "255.255.255.0"),
    address("ipv4_gateway", 89, RemoteGroup, "192.168.10.1"),
    text("mac_address", 90, RemoteGroup, "02005E10A64C", 16),
    onOff("ws_management", 91, RemoteGroup, 1),
    onOff("ws_identify", 92, RemoteGroup, 1),
    onOff("ws_management_over_http", 93, RemoteGroup, 1),
    onOff("ws_management_over_https", 94, RemoteGroup, 0),

    /* menu and messages */
    onOff("show_power_on_info", 100, MenuGroup, 1),
    onOff("show_source_info", 101, MenuGroup, 1),
    onOff("show_color_space_info", 102, MenuGroup, 1),
    onOff("warm_up_reminder", 103, MenuGroup, 1),
    onOff("calibration_notification", 104, MenuGroup, 1),
    range("osd_position_x", 105, MenuGroup, 1920, 0, 2560), /* pixels */
    range("osd_position_y", 106, MenuGroup, 120, 0, 1440),
    range("menu_timeout", 107, MenuGroup, 15, 5, 30),               /* seconds */
    range("menu_opacity", 108, MenuGroup, 10000, 2500, 10000, 625), /* hundredths of a percent */
    range("menu_language", 109, MenuGroup, 1, 0, 9),                /* the engine's code */
    onOff("display_rotation", 110, MenuGroup, 0),

    /* buttons */
    range("function_button1.setting", 115, FunctionButtonGroup, 1, 1, 17),
    range("function_button2.setting", 116, FunctionButtonGroup, 2, 1, 17),
    range("function_button3.setting", 117, FunctionButtonGroup, 3, 1, 17),
    range("function_button4.setting", 118, FunctionButtonGroup, 4, 1, 17),
    text("function_button1.name", NoRegister, FunctionButtonGroup, "Function Button 1", 50),
    text("function_button2.name", NoRegister, FunctionButtonGroup, "Function Button 2", 50),
    text("function_button3.name", NoRegister, FunctionButtonGroup, "Function Button 3", 50),
    text("function_button4.name", NoRegister, FunctionButtonGroup, "Function Button 4", 50),
    onOff("function_button_mode", 119, FunctionButtonGroup, 0),
    range("bezel_button_color", 120, BezelButtonGroup, 0, 0, 2),
    range("bezel_button_brightness", 121, BezelButtonGroup, 10, 0, 20, 2),
    onOff("bezel_button_auto_fade", 122, BezelButtonGroup, 1),

    /* test pattern; register 171 carries the on/off state as it is, whatever its name says */
    range("test_pattern", 170, TestPatternGroup, 0, 0, 8),
    onOff("test_pattern_enabled", 171, TestPatternGroup, 0),
    range("test_pattern_red", 172, TestPatternGroup, 255, 0, 255),
    range("test_pattern_green", 173, TestPatternGroup, 255, 0, 255),
    range("test_pattern_blue", 174, TestPatternGroup, 255, 0, 255),

    /* general */
    onOff("color_management", 181, GeneralGroup, 1),
    range("dithering_mode", 182, GeneralGroup, 0, 0, 2),
    range("recalibration_alarm", 183, GeneralGroup, 1000, 1, 1000),
    figure("firmware_update_status", 165, GeneralGroup, 0, 0, 100),
    figure("calibration_process_status", 166, GeneralGroup, 0, 0, 100),
};

inline constexpr int PresetCount = 7;
inline constexpr int InputCount = 3;
inline constexpr int FunctionButtonCount = 4;

/* What each colour-space preset stores. The sixteen coordinates and gamma stand in the order of registers 2
 * to 18, which show those of the active preset. */
enum PresetField : int {
    PresetName,
    PresetLuminance,           /* cd/m2, as the user left it */
    PresetCalibratedLuminance, /* cd/m2, as the last calibration left it */
    RedX,
    RedY,
    RedU,
    RedV,
    GreenX,
    GreenY,
    GreenU,
    GreenV,
    BlueX,
    BlueY,
    BlueU,
    BlueV,
    WhiteX,
    WhiteY,
    WhiteU,
    WhiteV,
    PresetGamma,
    PresetFieldCount,
};

struct Chromaticity {
    double x, y; /* CIE 1931 */
};

struct PresetRow {
    std::string_view name;
    int luminance;
    Chromaticity red, green, blue, white;
    std::string_view gamma;
};

inline constexpr Chromaticity WhiteD65{0.3127, 0.3290};
inline constexpr Chromaticity WhiteD50{0.3457, 0.3585};
inline constexpr Chromaticity WhiteDci{0.3140, 0.3510};

inline constexpr PresetRow PresetRows[PresetCount] = {
    {"Native", 250, {0.6900, 0.3000}, {0.2050, 0.7150}, {0.1490, 0.0450}, WhiteD65, "2.20"},
    {"AdobeRGB", 160, {0.6400, 0.3300}, {0.2100, 0.7100}, {0.1500, 0.0600}, WhiteD65, "2.20"},
    {"Rec.709", 100, {0.6400, 0.3300}, {0.3000, 0.6000}, {0.1500, 0.0600}, WhiteD65, "2.40"},
    {"sRGB D65", 80, {0.6400, 0.3300}, {0.3000, 0.6000}, {0.1500, 0.0600}, WhiteD65, "2.20"},
    {"sRGB D50", 80, {0.6400, 0.3300}, {0.3000, 0.6000}, {0.1500, 0.0600}, WhiteD50, "2.20"},
    {"DCI P3", 48, {0.6800, 0.3200}, {0.2650, 0.6900}, {0.1500, 0.0600}, WhiteDci, "2.60"},
    {"Rec.2020", 100, {0.7080, 0.2920}, {0.1700, 0.7970}, {0.1310, 0.0460}, WhiteD65, "2.40"},
};

/* Users known to a new store. */
struct UserRow {
    std::string_view name;
    bool administrator;
};
inline constexpr UserRow UserRows[] = {{"root", true}, {"admin", true}, {"operator", false}};

/* Faults that the desk monitor can be told to have. */
struct FaultRow {
    std::string_view name;
    std::string_view argument;        /* what the argument is; empty: takes none */
    std::string_view defaultArgument; /* when none is given */
    std::string_view meaning;
};
inline constexpr FaultRow FaultRows[] = {
    {"busy", "", "", "the display engine reports that it is busy"},
    {"silent", "", "", "the engine takes requests, applies them and answers none"},
    {"slow", "seconds", "1", "the engine waits before it applies and answers a request"},
    {"lose-reply", "count", "1", "the engine loses its next replies"},
    {"fail-read", "functions", "", "readers fail: all Get functions, or the ones named (comma-separated)"},
    {"fail-update", "functions", "", "updates of name, date and location fail: all, or the ones named"},
    {"fail-user", "", "", "no user can be looked up"},
    {"fail-queue", "queue", "", "message queues cannot be obtained: all, or the one numbered"},
    {"fail-send", "", "", "messages cannot be sent"},
    {"fail-receive", "", "", "replies cannot be received"},
};

/* The row of a fault, null when there is none of that name. */
const FaultRow *findFault(std::string_view name);

/* A setting by its place: the fixed rows first, then the presets' fields, preset by preset. A Key made from a
 * name is looked up by the compiler, which refuses a name without row. */
class Key
{
  public:
    consteval Key(const char *name) : place(find(name)) {}
    explicit constexpr Key(std::size_t index) : place(index) {}
    constexpr std::size_t index() const
    {
        return place;
    }
    bool operator==(const Key &) const = default;

  private:
    static consteval std::size_t find(std::string_view name)
    {
        for (std::size_t i = 0; i < std::size(SettingRows); ++i)
            if (SettingRows[i].name == name)
                return i;
        throw "no setting of that name";
    }
    std::size_t place;
};

inline constexpr std::size_t SettingCount =
    std::size(SettingRows) + static_cast<std::size_t>(PresetCount) * PresetFieldCount;

/* The setting of one preset, 0 to PresetCount - 1. */
constexpr Key presetKey(int preset, PresetField field)
{
    return Key(std::size(SettingRows) + static_cast<std::size_t>(preset * PresetFieldCount + field));
}

/* All settings as rows, the presets' included; the index is a Key's. */
std::span<const SettingRow> allSettings();

/* The place of the setting, -1 when there is none of that name. */
int findSetting(std::string_view name);

/* The row of a register in a group among SettingRows, null when there is none. */
const SettingRow *findRegister(int registerId, int group);

/* What is wrong with a value for a setting; empty when it is acceptable. */
std::string complaint(const SettingRow &row, std::string_view value);

/* Splits a dotted IPv4 address strictly: four decimal numbers of 0 to 255, no leading zeros, nothing else.
 * On failure the octets are zero. */
bool parseAddress(std::string_view text, std::uint8_t octets[4]);

/* A whole decimal number within the range of int. */
bool parseNumber(std::string_view text, int &number);

/* Seconds, fractions after a point whatever the locale; left as they are when the text is no time. */
bool parseSeconds(std::string_view text, double &seconds);

/* Valid UTF-8 without control characters. */
bool printable(std::string_view text);

} // namespace desk

#endif
