// SPDX-License-Identifier: Apache-2.0
// What the modules of the display classes offer: builders, operations and setting functions. A setting
// function returns 0, or -1 with what failed in `errorText` (ERROR_TEXT_SIZE characters); a validating one
// does so, too, and gives the index, from 0, of the instance with exactly that identifier.
#ifndef DISPLAY_MODULES_H
#define DISPLAY_MODULES_H

#include "frame/stamp.h"

/** The description of most classes. */
inline constexpr const char *logicalElement =
    "A class derived from Logical Element that represents the single node container of the Display Management System.";

DECLARE_METHOD_PROVIDER(ZT_Marovelton_BezelButton);
[[nodiscard]] frame::Setting setButtonAutoFadeMode, setButtonBrightness, setButtonColor, SetButtonMode;

[[nodiscard]] int ValidateColorSpaceInstanceID(const char *instanceID, char *errorText, int *index);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_ColorSpace, int index);
/** Sets the luminance of the preset in use, in cd/m2. */
[[nodiscard]] int SetDisplayLuminance(int luminance, char *errorText);
[[nodiscard]] frame::Action ResetToLastCalibration, ResetToFactoryCalibration;

DECLARE_METHOD_PROVIDER(ZT_Marovelton_DisplayManagement);
[[nodiscard]] frame::Setting setAutoEDIDUpdateState, setCalibrationState, setDDCCICommunicationsState,
    setHotPlugInitiateState, setPowerOnRecallState, setPowerSaverState, setDisplayPortHotPlugDetection,
    setDisplayPortComapatibility;

[[nodiscard]] int ValidateFunctionButtonInstanceID(const char *instanceID, char *errorText, int *index);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_FunctionButton, int index);
[[nodiscard]] int SetButtonSetting(int value, int registerId, char *errorText);

DECLARE_METHOD_PROVIDER(ZT_Marovelton_ImageAdjustment);
[[nodiscard]] frame::Setting setCroppedRegionOpacity, setDCIImageRegion, setDisplayAspectRatio,
    setOverscanFrame, setShowBlueChannel, setShowCroppedRegionForImageAdjustment, setUseVideoLevels,
    setOverdrive, setDeinterlacer, setCadence, set4KSourceScaling, setDisplayMode4K, setShow4KPositionOverlay;
/** Moves on to the next corner of the 4K source. */
[[nodiscard]] frame::Action setDisplayed4KCorner;
/** Places the shown region of a 4K source, in pixels from its upper left corner. */
[[nodiscard]] int Set4KRegionPosition(int x, int y, char *errorText);
/** The stored state of scrolling through a 4K source, or -1 where it cannot be read. */
[[nodiscard]] int Get4kState();

DECLARE_METHOD_PROVIDER(ZT_Marovelton_Monitor);
[[nodiscard]] int setDisplayName(const char *name, char *errorText);
[[nodiscard]] int setDeploymentDate(const char *text, char *errorText);
[[nodiscard]] int setDeploymentLocation(const char *text, char *errorText);
[[nodiscard]] frame::Setting setAutoSwitchSource, DoRecalibrationAlarmDuration, DoSoftPowerState;
/** By index, from 0. */
[[nodiscard]] frame::Setting SetActiveColorSpace, SetSelectedVideoInput;
[[nodiscard]] frame::Action FactoryReset;

DECLARE_METHOD_PROVIDER(ZT_Marovelton_OSDMenuAndMessages);
/** The engine's code of a language of the class definition; -1 when there is no such language. */
[[nodiscard]] int GetLanguageValue(int language);
/** In seconds; by the language's number in the class definition. */
[[nodiscard]] frame::Setting SetMenuAndMessageTimeOut, SetLanguage;
[[nodiscard]] frame::Setting SetNotifyWhenRecalibrationIsDueState, SetShowInfoWhenColorSpaceChangeState,
    SetShowInfoWhenInputSourceChangeState, SetShowInfoWhenPoweredOnState, setDisplayRotation;
[[nodiscard]] int SetOSDPosition(int x, int y, char *errorText);
/** `opacity` in percent. */
[[nodiscard]] int SetOpacity(float opacity, char *errorText);

DECLARE_METHOD_PROVIDER(ZT_Marovelton_PictureInPicture);
/** The engine's picture-in-picture mode, a PipMode; -1 when it cannot be read. */
[[nodiscard]] int GetPIPMode();
/** The engine's size of the inset, a PipSize; -1 when it cannot be read. */
[[nodiscard]] int GetPIPSize();
/** The active resolution of the inset, in pixels. Returns 0, or -1 on failure. */
[[nodiscard]] int GetResolution(int *horizontal, int *vertical);
[[nodiscard]] frame::Setting SetPIPInputSource, SetPIPSize, SetPIPMode, SetOverScan, SetUseVideoLevels,
    SetDigitalCinemaOption;
[[nodiscard]] frame::Action SetSwapInputSource;
[[nodiscard]] int SetPIPPosition(int x, int y, char *errorText);

DECLARE_METHOD_PROVIDER(ZT_Marovelton_TestPatternGenerator);
[[nodiscard]] frame::Setting SetTestPatternEnable, SetTestPattern;
[[nodiscard]] int SetRGBValue(int red, int green, int blue, char *errorText);

[[nodiscard]] int ValidateVideoInputInstanceID(const char *instanceID, char *errorText, int *index);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_VideoInput, int index);

#endif
