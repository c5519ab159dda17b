// SPDX-License-Identifier: Apache-2.0
// What the modules of the display classes offer: builders, setting functions and operations. A setting
// function returns 0, or -1 with what failed in `errorText` (ERROR_TEXT_SIZE characters).
#ifndef DISPLAY_MODULES_H
#define DISPLAY_MODULES_H

#include "frame/stamp.h"

DECLARE_METHOD_PROVIDER(ZT_Marovelton_BezelButton);
[[nodiscard]] int setButtonAutoFadeMode(int value, char *errorText);
[[nodiscard]] int setButtonBrightness(int value, char *errorText);
[[nodiscard]] int setButtonColor(int value, char *errorText);
[[nodiscard]] int SetButtonMode(int value, char *errorText);

/** The index, from 0, of the preset with exactly this identifier. Returns 0, or -1 with `errorText` filled.
 */
[[nodiscard]] int ValidateColorSpaceInstanceID(const char *instanceID, char *errorText, int *index);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_ColorSpace, int index);
/** Sets the luminance of the preset in use, in cd/m2. */
[[nodiscard]] int SetDisplayLuminance(int luminance, char *errorText);
[[nodiscard]] int ResetToLastCalibration(char *errorText);
[[nodiscard]] int ResetToFactoryCalibration(char *errorText);

DECLARE_METHOD_PROVIDER(ZT_Marovelton_DisplayManagement);
[[nodiscard]] int setAutoEDIDUpdateState(int value, char *errorText);
[[nodiscard]] int setCalibrationState(int value, char *errorText);
[[nodiscard]] int setDDCCICommunicationsState(int value, char *errorText);
[[nodiscard]] int setHotPlugInitiateState(int value, char *errorText);
[[nodiscard]] int setPowerOnRecallState(int value, char *errorText);
[[nodiscard]] int setPowerSaverState(int value, char *errorText);
[[nodiscard]] int setDisplayPortHotPlugDetection(int value, char *errorText);
[[nodiscard]] int setDisplayPortComapatibility(int value, char *errorText);

/** The index, from 0, of the button with exactly this identifier. Returns 0, or -1 with `errorText` filled.
 */
[[nodiscard]] int ValidateFunctionButtonInstanceID(const char *instanceID, char *errorText, int *index);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_FunctionButton, int index);
[[nodiscard]] int SetButtonSetting(int value, int registerId, char *errorText);

DECLARE_METHOD_PROVIDER(ZT_Marovelton_ImageAdjustment);
[[nodiscard]] int setCroppedRegionOpacity(int value, char *errorText);
[[nodiscard]] int setDCIImageRegion(int value, char *errorText);
[[nodiscard]] int setDisplayAspectRatio(int value, char *errorText);
/** Moves on to the next corner of the 4K source. */
[[nodiscard]] int setDisplayed4KCorner(char *errorText);
[[nodiscard]] int setOverscanFrame(int value, char *errorText);
/** Places the shown region of a 4K source, in pixels from its upper left corner. */
[[nodiscard]] int Set4KRegionPosition(int x, int y, char *errorText);
[[nodiscard]] int setShowBlueChannel(int value, char *errorText);
[[nodiscard]] int setShowCroppedRegionForImageAdjustment(int value, char *errorText);
[[nodiscard]] int setUseVideoLevels(int value, char *errorText);
[[nodiscard]] int setOverdrive(int value, char *errorText);
[[nodiscard]] int setDeinterlacer(int value, char *errorText);
[[nodiscard]] int setCadence(int value, char *errorText);
[[nodiscard]] int set4KSourceScaling(int value, char *errorText);
[[nodiscard]] int setDisplayMode4K(int value, char *errorText);
[[nodiscard]] int setShow4KPositionOverlay(int value, char *errorText);
/** The stored state of scrolling through a 4K source, or -1 where it cannot be read. */
[[nodiscard]] int Get4kState();

DECLARE_METHOD_PROVIDER(ZT_Marovelton_Monitor);
[[nodiscard]] int setDisplayName(const char *name, char *errorText);
[[nodiscard]] int setDeploymentDate(const char *text, char *errorText);
[[nodiscard]] int setDeploymentLocation(const char *text, char *errorText);
[[nodiscard]] int setAutoSwitchSource(int value, char *errorText);
[[nodiscard]] int SetActiveColorSpace(int index, char *errorText);
[[nodiscard]] int SetSelectedVideoInput(int index, char *errorText);
[[nodiscard]] int DoRecalibrationAlarmDuration(int value, char *errorText);
[[nodiscard]] int DoSoftPowerState(int value, char *errorText);
[[nodiscard]] int FactoryReset(char *errorText);

DECLARE_METHOD_PROVIDER(ZT_Marovelton_OSDMenuAndMessages);
/** The engine's code of a language of the class definition; -1 when there is no such language. */
[[nodiscard]] int GetLanguageValue(int language);
[[nodiscard]] int SetMenuAndMessageTimeOut(int seconds, char *errorText);
[[nodiscard]] int SetLanguage(int language, char *errorText);
[[nodiscard]] int SetNotifyWhenRecalibrationIsDueState(int value, char *errorText);
[[nodiscard]] int SetOSDPosition(int x, int y, char *errorText);
/** `opacity` in percent. */
[[nodiscard]] int SetOpacity(float opacity, char *errorText);
[[nodiscard]] int SetShowInfoWhenColorSpaceChangeState(int value, char *errorText);
[[nodiscard]] int SetShowInfoWhenInputSourceChangeState(int value, char *errorText);
[[nodiscard]] int SetShowInfoWhenPoweredOnState(int value, char *errorText);
[[nodiscard]] int setDisplayRotation(int value, char *errorText);

DECLARE_METHOD_PROVIDER(ZT_Marovelton_PictureInPicture);
/** The engine's picture-in-picture mode, a PipMode; -1 when it cannot be read. */
[[nodiscard]] int GetPIPMode();
/** The engine's size of the inset, a PipSize; -1 when it cannot be read. */
[[nodiscard]] int GetPIPSize();
/** The active resolution of the inset, in pixels. Returns 0, or -1 on failure. */
[[nodiscard]] int GetResolution(int *horizontal, int *vertical);
[[nodiscard]] int SetPIPInputSource(int value, char *errorText);
[[nodiscard]] int SetSwapInputSource(char *errorText);
[[nodiscard]] int SetPIPPosition(int x, int y, char *errorText);
[[nodiscard]] int SetPIPSize(int value, char *errorText);
[[nodiscard]] int SetPIPMode(int value, char *errorText);
[[nodiscard]] int SetOverScan(int value, char *errorText);
[[nodiscard]] int SetUseVideoLevels(int value, char *errorText);
[[nodiscard]] int SetDigitalCinemaOption(int value, char *errorText);

DECLARE_METHOD_PROVIDER(ZT_Marovelton_TestPatternGenerator);
[[nodiscard]] int SetTestPatternEnable(int value, char *errorText);
[[nodiscard]] int SetTestPattern(int pattern, char *errorText);
[[nodiscard]] int SetRGBValue(int red, int green, int blue, char *errorText);

/** The index, from 0, of the input with exactly this identifier. Returns 0, or -1 with `errorText` filled. */
[[nodiscard]] int ValidateVideoInputInstanceID(const char *instanceID, char *errorText, int *index);
DECLARE_METHOD_PROVIDER(ZT_Marovelton_VideoInput, int index);

#endif
