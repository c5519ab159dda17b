/* SPDX-License-Identifier: Apache-2.0 */
/* The seam between the library and the monitor.
 * Every record, enumeration and function that the monitor's support library shares with
 * libcmpiDisplayManagement. On the controller the monitor's own support library supplies the functions, on a
 * desk the substitute in desk/support does. The library resolves them through the dynamic linker alone, so a
 * program that defines the same names first takes their place.
 *
 * A record or text that comes back through this seam is data from outside: a text field may be full to its
 * width without a terminating zero. */
#ifndef MONITOR_SUPPORT_H
#define MONITOR_SUPPORT_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Message sources: who sends a request to the display engine. */
enum MessageSource {
    WEB = 1,
    USB = 2,
    TALMOR = 3,
    USB_HOST = 4,
    SOURCE_CLIENT_CERTIFICATE = 5,
    SOURCE_SERVER_CERTIFICATE = 6,
    WSMAN = 7,
};

/* Process commands: what the display engine is asked to do. */
enum ProcessCommand {
    SYSTEM_REBOOT = 1,
    PROCESS_FWU = 2,
    PROCESS_SET_REQUEST = 3,
    PROCESS_QUENTAR = 4,
    PROCESS_CALIBRATION = 5,
    PROCESS_FWU_USB = 6,
    PROCESS_FWU_WEB = 7,
    PROCESS_GET_REQUEST = 8,
    PROCESS_FACTORY_RESET = 9,
    INSTALL_CERTIFICATE_FOUND = 10,
    UPDATE_IP_SETTINGS = 11,
    PERFORM_FIRMWARE_UPDATE = 12,
    PERFORM_SPEAR_SELFTEST = 13,
};

/* Message queues, the argument of SpearEngineMessageQueueCreate. */
enum MessageQueue {
    MSG_QUEUE_SPEAR_APP = 0, /* requests to the display engine */
    MSG_QUEUE_WEB = 1,
    MSG_QUEUE_USB_SDK = 2,
    MSG_QUEUE_WSMAN = 3, /* replies to this library */
};

/* Information groups of registers. */
enum InformationGroup {
    COLOR_SPACE_ID = 0,
    VIDEO_INPUT_ID = 1,
    IMAGE_ADJ_SETTINGS_ID = 2,
    PIP_INFO_ID = 3,
    REMOTE_MGMENT_ID = 4,
    MANAGEMENT_ID = 5,
    MENU_SETTINGS_ID = 6,
    FUNCTION_BTN_ID = 7,
    BEZEL_BTN_ID = 8,
    PEXAL_INFO_ID = 9,
    VERSION_INFO_ID = 10,
    RESET_GROUP_ID = 11,
    COLORSPACE_PARAMETER_ID = 12,
    QUICK_ACTION_ID = 13,
    FACTORY_UID = 14,
    TEST_PATTERN_ID = 15,
    GENERAL_COMMANDS_ID = 16,
};

/* Selectors of GetMonitorStatus. */
enum MonitorStatusSelector {
    SPEAR_STATE = 0,
    FWU_STATUS = 1,
};

/* Answers of GetMonitorStatus; any value but BUSY counts as free. */
enum MonitorStatus {
    FREE = 0,
    BUSY = 1,
};

/* Result codes of the monitor's services. The library tests for 0 and -1 only. */
enum SupportResult {
    ERROR_I2C_OPEN = 80000000,
    ERROR_I2C_READ = 80000001,
    ERROR_I2C_WRITE = 80000002,
    ERROR_I2C_IOCTL = 80000003,
    ERROR_GPIO_OPEN = 80000004,
    ERROR_GPIO_WRITE = 80000005,
    ERROR_GPIO_READ = 80000006,
    ERROR_GPIO_CLOSE = 80000007,
    ERROR_MMAP_FAILED = 80000008,
    ERROR_DIRECTORY_OPEN = 80000009,
    ERROR_CHECKSUM = 80000010,
    ERROR_INVALID_PARAM = 80000011,
    EINVALID_GAMMA = 80000012,
    CALIB_VALIDATION_FILE_WRITE_ERROR = 80000013,
    ELUT_EOF = 2000,
    ELUT_SYNTAX = -10000,
    ELUT_INVALID = -10001,
    ELUT_VALUE = -10002,
    ERR_NACK = -2,
    FAILURE = -1,
    SUCCESS = 0,
    HAS_STEEP_TABLE = 1,
    USB_FOR_VALIDATION_FOUND = 2,
    IGNORE = 3,
    RETRY_PROCESS = 4,
    DELTA_ERROR = 5,
    PASSWORD_ERROR = 6,
    CERTIFICATE_ALREADY_EXIST = 7,
};

/* Register identifiers; the number travels in RegisterDetails.Register. */
enum RegisterId {
    LUMINANCE = 0,
    ACTIVE_COLORSPACE = 1,
    RED_PRIMARY_X = 2,
    RED_PRIMARY_Y = 3,
    RED_PRIMARY_U = 4,
    RED_PRIMARY_V = 5,
    GREEN_PRIMARY_X = 6,
    GREEN_PRIMARY_Y = 7,
    GREEN_PRIMARY_U = 8,
    GREEN_PRIMARY_V = 9,
    BLUE_PRIMARY_X = 10,
    BLUE_PRIMARY_Y = 11,
    BLUE_PRIMARY_U = 12,
    BLUE_PRIMARY_V = 13,
    WHITE_PRIMARY_X = 14,
    WHITE_PRIMARY_Y = 15,
    WHITE_PRIMARY_U = 16,
    WHITE_PRIMARY_V = 17,
    GAMMA = 18,
    RESET_FACTORY_CALIBRATION = 19,
    RESET_LAST_CALIBRATION = 20,
    VIDEO_INPUT = 25,
    AUTO_SWITCH_STATUS = 26,
    DISPLAY_FILL_STATUS = 30,
    DCI_IMAGE_REGION = 31,
    SOURCE_SCALING_4K = 32,
    SHOW_CROPPED_REGION = 33,
    OPACITY_CROPPED_REGION = 34,
    VIDEO_LEVEL_STATUS = 35,
    OVERSCAN_STATUS = 36,
    BLUE_CHANNELS_STATUS = 37,
    OVER_DRIVE = 38,
    DEINTERLACING_STATUS = 39,
    CADENCE_DETECTION_STATUS = 40,
    IMG_VERTICAL_ACTIVE = 41,
    IMG_HORIZONTAL_ACTIVE = 42,
    SCROLL_4K_STATE = 43,
    SCROLL_4K_POSITION_X = 44,
    SCROLL_4K_POSITION_Y = 45,
    PIP_STATE = 50,
    PIP_POSITION = 51,
    PIP_POSITION_X = 52,
    PIP_POSITION_Y = 53,
    PIP_SIZE = 54,
    PIP_HEIGHT = 55,
    PIP_WIDTH = 56,
    PIP_SOURCE = 57,
    SWAP_PIP_PRIMARY_INPUTS = 58,
    PIP_VIDEO_LEVEL_STATUS = 59,
    PIP_OVER_SCAN_STATUS = 60,
    PIP_DCI_IMAGE_REGION = 61,
    PIP_SHOW_CROPPED_REGION = 62,
    PIP_MAIN_INPUT = 63,
    PIP_VERTICAL_ACTIVE = 64,
    PIP_HORIZONTAL_ACTIVE = 65,
    DP1_STATE = 66,
    DP2_STATE = 67,
    HDMI_STATE = 68,
    AUTO_SLEEP_MODE = 70,
    POWER_ON_RECALL_STATUS = 71,
    DDC_CI_COMM_STATUS = 72,
    AUTO_EDID_STATUS = 73,
    HOT_PLUG_INITIATE = 74,
    MANAGEMENT_INTERNAL_PROCESSOR = 75,
    FW_STATUS = 76,
    CALIBRATION_STATUS = 77,
    DP_HPD_STATUS = 78,
    DP_COMPATABILITY_MODE = 79,
    WEBSERVER_STATUS = 85,
    IP_CONFIGURATION_MODE = 86,
    IP_ADDRESS = 87,
    SUBNET_MASK = 88,
    GATEWAY = 89,
    MAC_ADDRESS = 90,
    WS_MANAGEMENT_STATUS = 91,
    WS_IDENTIFY_STATUS = 92,
    WS_MANAGEMENT_OVER_HTTP = 93,
    WS_MANAGEMENT_OVER_HTTPS = 94,
    SHOW_POWER_ON_INFO_STATUS = 100,
    SHOW_SOURCE_INFO_STATUS = 101,
    SHOW_COLORSPACE_INFO_STATUS = 102,
    WARMUP_TIME_REMINDER = 103,
    CALIBRATION_NOTIFICATION_STATUS = 104,
    OSD_POSITION_X = 105,
    OSD_POSITION_Y = 106,
    MENU_TIMEOUT = 107,
    OPACITY_VALUE = 108,
    MENU_LANGUAGE = 109,
    DISPLAY_ROTATION_STATUS = 110,
    FUNCTION_BUTTON_F1 = 115,
    FUNCTION_BUTTON_F2 = 116,
    FUNCTION_BUTTON_F3 = 117,
    FUNCTION_BUTTON_F4 = 118,
    FUNCTION_BUTTON_MODE = 119,
    BEZEL_BUTTON_COLOR = 120,
    BEZEL_BUTTON_BRIGHTNESS = 121,
    BEZEL_BUTTON_AUTOFADE_STATUS = 122,
    INFO_DISPLAY_MODE = 130,
    INFO_COLOR_SPACE = 131,
    INFO_PIPELINE_DELAY = 132,
    INFO_SERIAL_NUMBER = 133,
    INFO_CALIBRATION_HOURS = 134,
    INFO_BACKLIGHT_HOURS = 135,
    INFO_FIRMWARE_REVISION = 136,
    FACTORY_RESET_START = 140,
    FACTORY_RESET_END = 141,
    DP_COMPATIBILITY = 142,
    RESET_ADMIN_PASSWORD = 143,
    DISPLAY_SETTINGS_RESET = 144,
    COLORSPACE_RESET = 150,
    NEXT_4K = 151,
    SWITCH_TO_NEXT_ACTIVE_VIDEO_INPUT = 152,
    VIDEO_LEVEL_ON_OFF = 153,
    OVERSCAN_ON_OFF = 154,
    BLUE_CHANNEL_ON_OFF = 155,
    NEXT_4K_CORNER = 156,
    PIP_ON_OFF = 157,
    SWAP_PRIMARY_PIP_INPUT = 158,
    NEXT_PIP_CORNER = 159,
    FIRMWARE_UPDATE_STATUS = 165,
    CALIBRATION_PROCESS_STATUS = 166,
    TEST_PATTERN_WEB = 170,
    TEST_PATTERN_DISABLE = 171,
    TEST_PATTERN_RED = 172,
    TEST_PATTERN_GREEN = 173,
    TEST_PATTERN_BLUE = 174,
    TEST_PATTERN_STATUS = 175,
    SOFT_POWER_OFF = 180,
    COLOR_MANAGEMENT_STATUS = 181,
    DITHERING_MODE = 182,
    CALIBRATION_ALERT_LIMIT = 183,
};

/* Picture-in-picture modes and sizes, the values of PIP_STATE and PIP_SIZE. */
enum PipMode {
    PIP_MODE_OFF = 0,
    PIP_PICTURE_IN_PICTURE = 1,
    PIP_PICTURE_BESIDE_PICTURE = 2,
};
enum PipSize {
    PIP_SIZE_MAXIMUM = 0,
    PIP_SIZE_MINIMUM = 1,
    PIP_SIZE_DEFAULT = 2,
};

/* ---- the engine message: packed, 40 bytes, the display engine reads the same layout ---- */

#pragma pack(push, 1)

typedef struct RegisterDetails {
    uint8_t Type;     /* 0: the entry carries Value; 1: DataValue holds an IPv4 address, first octet first */
    uint8_t Register; /* RegisterId, low 8 bits */
    uint8_t Status;   /* set by the engine; 0 in requests */
    union {
        int16_t Value;
        uint8_t DataValue[4];
    } RegisterValue;
} RegisterDetails;

enum { REGISTERS_PER_MESSAGE = 4 };

typedef struct WebCmd {
    uint8_t SequenceNo; /* always 0 */
    uint8_t Count;      /* entries in use */
    uint8_t GroupId;    /* InformationGroup */
    RegisterDetails sRegdetails[REGISTERS_PER_MESSAGE];
} WebCmd;

typedef struct ProcessData {
    int16_t Cmd;    /* ProcessCommand */
    int16_t Source; /* MessageSource */
    union {
        int32_t BusNumber;
        WebCmd sWebCmd;
        uint8_t Bytes[32];
    } Arg;
} ProcessData;

typedef struct SpearMessage {
    int32_t Type; /* always 1 */
    ProcessData Data;
} SpearMessage;

/* ---- records filled by the support library ---- */

typedef struct MonitorInfo { /* packed, 141 bytes */
    char DisplayMode[25];
    int32_t ActiveColorSpace;
    int32_t ActiveVideoInput;
    int32_t VideoPipelineDelay;
    int32_t LastCalibration;
    int32_t BacklightHours;
    int32_t Deployment_Date; /* seconds since 1970-01-01 UTC */
    char SerialNumber[15];
    char DisplayName[25];
    char DeploymentLocation[25];
    int32_t AutoSwitchSource;
    int32_t SoftPowerState;
    int32_t RecalibrationAlarmDuration;
    char PexalVersion[15];
} MonitorInfo;

#pragma pack(pop)

typedef struct ManagementInfo {
    int32_t PowerSaverEnabled;
    int32_t PowerOnRecallEnabled;
    int32_t DDCCICommunicationEnabled;
    int32_t EDIDUpdateEnabled;
    int32_t HotPlugInitiateEnabled;
    int32_t ManageInternalProcessor;
    int32_t FWUpdateEnabled;
    int32_t CalibrationSupportEnabled;
    int32_t DisplayPortHotPlugDetection;
    int32_t DisplayPortComapatibility;
} ManagementInfo;

typedef struct ImageAdjustment {
    int32_t DisplayAspectRatio; /* 0..4; 4 is Pixel-for-Pixel */
    int32_t CurrentDCIOptions;
    int32_t CurrentDCIOptions4K;
    int32_t ShowCroppedRegion;
    int32_t CroppedRegionOpacity; /* percent, 25..100 */
    int32_t UseVideoLevels;
    int32_t Overscan;
    int32_t ShowBlueChannel;
    int32_t Overdrive;
    int32_t Deinterlacer;
    int32_t Cadence;
    int32_t DisplayMode4K;
    int32_t Displayed4KCorner;
    int32_t Region4KPositionX; /* pixels */
    int32_t Region4KPositionY; /* pixels */
    int32_t Show4KPositionOverlay;
    int32_t SourceScaling4K;
    int32_t HorizontalResolution; /* pixels */
    int32_t VerticalResolution;   /* pixels */
} ImageAdjustment;

typedef struct PexalPIPSettings {
    int32_t PipMode;
    int32_t PipPosition;
    int32_t PipPositionX; /* pixels */
    int32_t PipPositionY; /* pixels */
    int32_t PipSize;
    int32_t PipInputSource;
    int32_t VideoLevel;
    int32_t OverScan;
    int32_t ImageRegion;
    int32_t ShowCroppedRegion;
    int32_t DP1State;
    int32_t DP2State;
    int32_t HDMIState;
} PexalPIPSettings;

typedef struct OSDMenuAndMessageInfo {
    int32_t PowerStatus;
    int32_t InputSourceStatus;
    int32_t MenuColorspaces;
    int32_t MenuWarmupTime;
    int32_t MenuCalibration;
    int32_t OSDPositionX;       /* pixels */
    int32_t OSDPositionY;       /* pixels */
    int32_t MenuMessageTimeOut; /* seconds, 5..30 */
    int32_t Opacity;            /* hundredths of a percent: 2500 is 25 % */
    int32_t DisplayRotation;
    int32_t Language; /* the engine's code, 0..9 */
} OSDMenuAndMessageInfo;

typedef struct ColorSpaceInfo {
    int32_t ActiveColorSpace; /* the preset's own number, 0..6 */
    int32_t DisplayLuminance; /* cd/m2 */
    char ColorSpaceName[15];
    char RedPrimaryU[10], GreenPrimaryU[10], BluePrimaryU[10], WhitePointU[10];
    char RedPrimaryV[10], GreenPrimaryV[10], BluePrimaryV[10], WhitePointV[10];
    char RedPrimaryX[10], GreenPrimaryX[10], BluePrimaryX[10], WhitePointX[10];
    char RedPrimaryY[10], GreenPrimaryY[10], BluePrimaryY[10], WhitePointY[10];
    char Gamma[10];
} ColorSpaceInfo;

typedef struct BezelButtonInfo {
    int32_t ButtonColor;
    int32_t ButtonBrightness;
    int32_t ButtonAutoFade;
} BezelButtonInfo;

typedef struct FunctionButtonInfo {
    int32_t ButtonMode;
    int32_t Setting;
    char Name[50];
} FunctionButtonInfo;

typedef struct TestPatternInfo {
    int32_t TestPatternGenerator; /* the selected pattern, 0..8 */
    int32_t Enabled;
    char RValue[10];
    char GValue[10];
    char BValue[10];
    int32_t Status;
} TestPatternInfo;

typedef struct RemoteManagementServer {
    int32_t RemoteManagementEnabled;
    int32_t IPConfigurationMode; /* 0 DHCP, 1 static */
    char IPv4Address[16];
    char IPv4Subnet[16];
    char IPv4Gateway[16];
    char MACAddress[16];
    int32_t WSManagementStatus;
    int32_t WSIdentifySupport;
} RemoteManagementServer;

/* ---- functions of the support library ----
 * Where nothing else is said a function returns 0 on success and anything else on failure. An errorText is
 * the caller's buffer of at least ERROR_TEXT_SIZE characters. */

enum {
    ERROR_TEXT_SIZE = 250,
    IP_ADDRESS_SIZE = 20,    /* the buffer that GetIPAddress fills */
    REGISTER_TEXT_SIZE = 32, /* the buffer that GetRegisterValue fills */
};

/* Fills the monitor's identity and figures. */
int GetMoinitorInfo(MonitorInfo *info);
/* The state of the selected unit: FREE, BUSY; any other value counts as free. */
int GetMonitorStatus(int selector);
/* Obtains the identifier of the numbered MessageQueue. */
int SpearEngineMessageQueueCreate(int queue, int *queueId);
/* Sends one whole message. */
int SendStatusMessagetoSource(SpearMessage message, int queueId);
/* Waits for a message; nothing of it comes back, the parameter is a copy. */
int RecvMessageFromSource(SpearMessage message, int queueId);
/* Writes the stored value of a register as decimal text; REGISTER_TEXT_SIZE characters hold any value. */
int GetRegisterValue(int registerId, int groupId, char *text);
int GetDisplayManagementInfo(ManagementInfo *info);
int GetImageAdjustmentInfo(ImageAdjustment *info);
int GetPIPSettingsInfo(PexalPIPSettings *info);
int GetOSDMenuAndMessagesInfo(OSDMenuAndMessageInfo *info);
int GetColorSpaceInfoById(ColorSpaceInfo *info, int index);
int GetBezelButtonInfo(BezelButtonInfo *info);
int GetFunctionButtonInfoById(FunctionButtonInfo *info, int index);
int GetTestPatternInfo(TestPatternInfo *info);
int GetRemoteManagementServerInfo(RemoteManagementServer *info);
/* Writes the management interface's IPv4 address, dotted, into IP_ADDRESS_SIZE characters. */
int GetIPAddress(char *address);
/* Splits a dotted IPv4 address, first octet first. */
int ParseIPV4Address(const char *text, unsigned char octets[4]);
/* 0 when min <= value <= max. */
int ValidateInputArgs(int value, int min, int max);
/* 0 when the user could be looked up; *isAdmin, one byte, is then non-zero for an administrator. */
int IsAdminUser(const char *userName, char *isAdmin, char *errorText);
/* 0 when the text is acceptable as a display name. */
int ValidateDisplayName(const char *text);
int UpdateDisplayName(const char *text, char *errorText);
/* 0 when the text is an acceptable date, DD/MM/YYYY. */
int ValidateDeploymentDate(const char *text);
int UpdateDeploymentDate(const char *text, char *errorText);
int UpdateDeploymentLocation(const char *text, char *errorText);

#ifdef __cplusplus
}

static_assert(sizeof(RegisterDetails) == 7);
static_assert(offsetof(RegisterDetails, Type) == 0);
static_assert(offsetof(RegisterDetails, Register) == 1);
static_assert(offsetof(RegisterDetails, Status) == 2);
static_assert(offsetof(RegisterDetails, RegisterValue) == 3);
static_assert(sizeof(WebCmd) == 31);
static_assert(offsetof(WebCmd, SequenceNo) == 0);
static_assert(offsetof(WebCmd, Count) == 1);
static_assert(offsetof(WebCmd, GroupId) == 2);
static_assert(offsetof(WebCmd, sRegdetails) == 3);
static_assert(sizeof(ProcessData) == 36);
static_assert(offsetof(ProcessData, Cmd) == 0);
static_assert(offsetof(ProcessData, Source) == 2);
static_assert(offsetof(ProcessData, Arg) == 4);
static_assert(sizeof(SpearMessage) == 40);
static_assert(offsetof(SpearMessage, Type) == 0);
static_assert(offsetof(SpearMessage, Data) == 4);

static_assert(sizeof(MonitorInfo) == 141);
static_assert(offsetof(MonitorInfo, DisplayMode) == 0);
static_assert(offsetof(MonitorInfo, ActiveColorSpace) == 25);
static_assert(offsetof(MonitorInfo, ActiveVideoInput) == 29);
static_assert(offsetof(MonitorInfo, VideoPipelineDelay) == 33);
static_assert(offsetof(MonitorInfo, LastCalibration) == 37);
static_assert(offsetof(MonitorInfo, BacklightHours) == 41);
static_assert(offsetof(MonitorInfo, Deployment_Date) == 45);
static_assert(offsetof(MonitorInfo, SerialNumber) == 49);
static_assert(offsetof(MonitorInfo, DisplayName) == 64);
static_assert(offsetof(MonitorInfo, DeploymentLocation) == 89);
static_assert(offsetof(MonitorInfo, AutoSwitchSource) == 114);
static_assert(offsetof(MonitorInfo, SoftPowerState) == 118);
static_assert(offsetof(MonitorInfo, RecalibrationAlarmDuration) == 122);
static_assert(offsetof(MonitorInfo, PexalVersion) == 126);

static_assert(sizeof(ManagementInfo) == 40);
static_assert(sizeof(ImageAdjustment) == 76);
static_assert(sizeof(PexalPIPSettings) == 52);
static_assert(sizeof(OSDMenuAndMessageInfo) == 44);
static_assert(sizeof(ColorSpaceInfo) == 196);
static_assert(sizeof(BezelButtonInfo) == 12);
static_assert(sizeof(FunctionButtonInfo) == 60);
static_assert(sizeof(TestPatternInfo) == 44);
static_assert(offsetof(TestPatternInfo, Status) == 40);
static_assert(sizeof(RemoteManagementServer) == 80);
#endif

#endif
