#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Every method of every class, called by a client on a running desk, with its effect read back. What needs no
# administrator is called by the ordinary user. The values before are those of the factory.
set -euo pipefail
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"
desk_start

echo 'DisplayManagement'
expect_method viewer DisplayManagement SetAutoEDIDUpdateEnabled 'AutoEDIDUpdateEnabled="false"' 0 AutoEDIDUpdateEnabled TRUE FALSE
expect_method admin DisplayManagement SetCalibrationEnabled 'CalibrationEnabled="0"' 0 CalibrationEnabled TRUE FALSE
expect_method viewer DisplayManagement SetDDCCICommunicationsEnabled 'DDCCICommunicationsEnabled="FALSE"' 0 DDCCICommunicationsEnabled TRUE FALSE
expect_method viewer DisplayManagement SetHotPlugInitiateEnabled 'HotPlugInitiateEnabled="True"' 0 HotPlugInitiateEnabled FALSE TRUE
expect_method viewer DisplayManagement SetPowerOnRecallEnabled 'PowerOnRecallEnabled="0"' 0 PowerOnRecallEnabled TRUE FALSE
expect_method viewer DisplayManagement SetPowerSaverEnabled 'PowerSaverEnabled="False"' 0 PowerSaverEnabled TRUE FALSE
expect_method viewer DisplayManagement SetDisplayPortHotPlugDetection 'DisplayPortHotPlugDetection="0"' 0 DisplayPortHotPlugDetection 1 0
expect_method viewer DisplayManagement SetDisplayPortComapatibility 'DisplayPortComapatibility="1"' 0 setting:display_port_compatibility 0 1
expect_method viewer DisplayManagement SetDisplayPortComapatibility 'DisplayPortComapatibility="true"' 'error 4: Invalid parameter.' setting:display_port_compatibility 1 1

echo 'ImageAdjustment'
expect_method viewer ImageAdjustment SetCroppedRegionOpacity 'CroppedRegionOpacity="75"' 0 CroppedRegionOpacity 50 75
expect_method viewer ImageAdjustment SetDCIImageRegion 'DCIImageRegion="2"' 0 DCIImageRegion 0 2
expect_method viewer ImageAdjustment SetOverscanFrame 'OverscanFrame="true"' 0 OverscanFrame FALSE TRUE
expect_method viewer ImageAdjustment SetShowBlueChannel 'ShowBlueChannel="1"' 0 ShowBlueChannel FALSE TRUE
expect_method viewer ImageAdjustment SetShowCroppedRegion 'ShowCroppedRegion="true"' 0 ShowCroppedRegion FALSE TRUE
expect_method viewer ImageAdjustment SetUseVideoLevels 'UseVideoLevels="1"' 0 UseVideoLevels FALSE TRUE
expect_method viewer ImageAdjustment SetOverdriveEnabled 'OverdriveEnabled="TRUE"' 0 OverdriveEnabled FALSE TRUE
expect_method admin ImageAdjustment SetDeinterlacerEnabled 'DeinterlacerEnabled="false"' 0 DeinterlacerEnabled TRUE FALSE
expect_method admin ImageAdjustment SetCadenceDetectionEnabled 'CadenceDetectionEnabled="0"' 0 CadenceDetectionEnabled TRUE FALSE
expect_method viewer ImageAdjustment Set4KDisplayMode 'DisplayMode4K="1"' 'error 7:  '
expect_method viewer ImageAdjustment SetShow4KPositionOverlay '' 'error 7: SetShow4KPositionOverlay'

echo 'ImageAdjustment: the 4K region needs the aspect ratio Pixel-for-Pixel and a 4K input'
expect_method viewer ImageAdjustment SetDisplayed4KCorner '' 'error 7: 4k not supported. (Pixel-for-Pixel should be enabled)'
expect_method viewer ImageAdjustment Set4KRegionPosition 'Position4KRegionX="0",Position4KRegionY="0"' 'error 7: 4k not supported. (Pixel-for-Pixel should be enabled)'
expect_method viewer ImageAdjustment SetDisplayAspectRatio 'DisplayAspectRatio="4"' 0 DisplayAspectRatio 0 4
expect_method viewer ImageAdjustment Set4KRegionPosition 'Position4KRegionX="1281",Position4KRegionY="720"' 'error 4: Invalid Position4KRegionX value 0 and 1280'
expect_method viewer ImageAdjustment Set4KRegionPosition 'Position4KRegionX="1280",Position4KRegionY="721"' 'error 4: Invalid Position4KRegionY value. Valid values are between 0 and 720'
expect_method viewer ImageAdjustment Set4KRegionPosition 'Position4KRegionX="1280",Position4KRegionY="720"' 0 Region4KPositionX 0 1280 Region4KPositionY 0 720
expect_method viewer ImageAdjustment SetDisplayed4KCorner '' 0 Region4KPositionY 720 0 setting:displayed_4k_corner 0 1
expect_method viewer ImageAdjustment Set4KSourceScaling 'SourceScaling4K="3"' 0 SourceScaling4K 0 3
set_monitor input1.width 1920
set_monitor input1.height 1080
expect_method viewer ImageAdjustment SetDisplayed4KCorner '' 'error 7: 4k not supported.(Unsupported Resolution)'
expect_method viewer ImageAdjustment Set4KRegionPosition 'Position4KRegionX="0",Position4KRegionY="0"' 'error 7: 4k not supported.(Unsupported Resolution)'
expect_method viewer ImageAdjustment Set4KSourceScaling 'SourceScaling4K="4"' 'error 7: SourceScaling4K cannot be modified.(Unsupported Resolution)'
echo 'ImageAdjustment: an input 4095 pixels wide, cut at the sides'
set_monitor input1.width 4095
set_monitor input1.height 2160
expect_method viewer ImageAdjustment SetDCIImageRegion 'DCIImageRegion="1"' 0 DCIImageRegion 2 1
expect_method viewer ImageAdjustment Set4KRegionPosition 'Position4KRegionX="1486",Position4KRegionY="0"' 'error 4: Invalid Position4KRegionX value 49 and 1485'
expect_method viewer ImageAdjustment Set4KRegionPosition 'Position4KRegionX="1485",Position4KRegionY="0"' 0 Region4KPositionX 1280 1485
set_monitor input1.width 3840

echo 'PictureInPicture: off'
expect_method viewer PictureInPicture SetPIPInputSource 'PIPInputSource="2"' 'error 7: PIP mode is off. Unable to set the value for PIPInput source'
expect_method viewer PictureInPicture SwapPrimaryPIPInputs '' 'error 7: PIP mode is off. Unable to set the value for Swap input source'
expect_method viewer PictureInPicture SetPIPPosition 'PIPPositionX="160",PIPPositionY="160"' 'error 7: PIP mode or picture in picture is off. Unable to set the value for pip positions'
expect_method viewer PictureInPicture SetPIPSize 'PIPSize="1"' 'error 7: PIP mode or picture beside picture is off. Unable to set the value for pip size'
expect_method viewer PictureInPicture SetPIPOverscanEnabled 'PIPOverscanEnabled="true"' 'error 7: PIP mode is off. Unable to set the value for OverScan'
expect_method viewer PictureInPicture SetDigitalCinemaOption 'DigitalCinemaOption="1"' 'error 7: PIP mode is off. Unable to set the value'
echo 'PictureInPicture: on'
expect_method viewer PictureInPicture SetPIPMode 'PIPMode="1"' 0 PIPMode 0 1
expect_method viewer PictureInPicture SetPIPInputSource 'PIPInputSource="2"' 0 PIPInputSource 1 2
expect_method viewer PictureInPicture SetPIPPosition 'PIPPositionX="159",PIPPositionY="881"' 'error 4: Invalid values, PIP Size is default. Valid Values of PIPPositionX are between 160 and 1688 and Valid values of PIPPositionY are between 160 and 880.'
expect_method viewer PictureInPicture SetPIPPosition 'PIPPositionX="160",PIPPositionY="161"' 0 PIPPositionX 1688 160 PIPPositionY 880 161
expect_method viewer PictureInPicture SetPIPSize 'PIPSize="1"' 0 PIPSize 2 1
expect_method viewer PictureInPicture SetPIPOverscanEnabled 'PIPOverscanEnabled="true"' 0 PIPOverscanEnabled FALSE TRUE
expect_method viewer PictureInPicture SetUseVideoLevels 'UseVideoLevels="1"' 0 UseVideoLevels FALSE TRUE
expect_method viewer PictureInPicture SwapPrimaryPIPInputs '' 0 PIPInputSource 2 0 Monitor:InputSource 0 2
expect_method viewer PictureInPicture SetDigitalCinemaOption 'DigitalCinemaOption="3"' 'error 7: PIP active resolution does not support DCI. Unable to set the value'
set_monitor input1.width 4096
expect_method viewer PictureInPicture SetDigitalCinemaOption 'DigitalCinemaOption="3"' 'error 4: Invalid input value range. Valid values are between 0 and 2.'
expect_method viewer PictureInPicture SetDigitalCinemaOption 'DigitalCinemaOption="1"' 0 DigitalCinemaOption 0 1
expect_method viewer PictureInPicture SwapPrimaryPIPInputs '' 0 PIPInputSource 0 2 Monitor:InputSource 2 0
echo 'PictureInPicture: the pictures beside one another'
expect_method viewer PictureInPicture SetPIPMode 'PIPMode="2"' 0 PIPMode 1 2
expect_method viewer PictureInPicture SetPIPSize 'PIPSize="0"' 'error 7: PIP mode or picture beside picture is off. Unable to set the value for pip size'
expect_method viewer PictureInPicture SetPIPInputSource 'PIPInputSource="1"' 'error 7: PIP mode is off. Unable to set the value for PIPInput source'
expect_method viewer PictureInPicture SetPIPOverscanEnabled 'PIPOverscanEnabled="0"' 0 PIPOverscanEnabled TRUE FALSE

echo 'OSDMenuAndMessages'
expect_method viewer OSDMenuAndMessages SetMenuAndMessageTimeOut 'MenuAndMessageTimeOut="30"' 0 MenuAndMessageTimeOut 15 30
# The language is given in the numbering of CIM and shown in that of the engine.
expect_method viewer OSDMenuAndMessages SetLanguage 'Language="1"' 0 Language 1 4
expect_method viewer OSDMenuAndMessages SetLanguage 'Language="3"' 0 Language 4 0
expect_method viewer OSDMenuAndMessages SetNotifyWhenRecalibrationIsDue 'NotifyWhenReCalibrationIsDue="false"' 0 NotifyWhenReCalibrationIsDue TRUE FALSE
expect_method viewer OSDMenuAndMessages SetOSDPosition 'OSDPositionX="2561",OSDPositionY="1441"' 'error 4: Invalid input value range. Valid Values of OSDpositionX are between 0 and 2560 , Valid values of OSDpositionY are between 0 and 1440.'
expect_method viewer OSDMenuAndMessages SetOSDPosition 'OSDPositionX="2560",OSDPositionY="1440"' 0 OSDPositionX 1920 2560 OSDPositionY 120 1440
expect_method viewer OSDMenuAndMessages SetOpacity 'Opacity="40"' 'error 1: Invalid Opacity Value. valid opacity values are 25, 31.25, 37.50, 43.75, 50, 56.25, 62.50, 68.75, 81.25, 87.50, 93.75, 100'
expect_method viewer OSDMenuAndMessages SetOpacity 'Opacity="37.5"' 0 Opacity 1.00000000e+02 3.75000000e+01
expect_method viewer OSDMenuAndMessages SetShowInfoWhenColorSpaceChanges 'ShowInfoWhenColorSpaceChanges="0"' 0 ShowInfoWhenColorSpaceChanges TRUE FALSE
expect_method viewer OSDMenuAndMessages SetShowInfoWhenInputSourceChanges 'ShowInfoWhenInputSourceChanges="FALSE"' 0 ShowInfoWhenInputSourceChanges TRUE FALSE
expect_method viewer OSDMenuAndMessages SetShowInfoWhenPoweredOn 'ShowInfoWhenPoweredOn="0"' 0 ShowInfoWhenPoweredOn TRUE FALSE
expect_method viewer OSDMenuAndMessages SetDisplayRotation 'DisplayRotation="1"' 0 DisplayRotation 0 1
# The methods of this class return one byte, those of the others four.
ask viewer cmx "$(path OSDMenuAndMessages)" 'SetDisplayRotation.DisplayRotation="0"'
expect 'OSDMenuAndMessages SetDisplayRotation returns a uint8' '<RETURNVALUE PARAMTYPE="uint8">' "$(grep '<RETURNVALUE' <<<"$answer")"
ask viewer cmx "$(path PictureInPicture)" 'SetPIPMode.PIPMode="1"'
expect 'PictureInPicture SetPIPMode returns a uint32' '<RETURNVALUE PARAMTYPE="uint32">' "$(grep '<RETURNVALUE' <<<"$answer")"

echo 'ColorSpace'
expect_method viewer ColorSpace/1 ResetToFactoryCalibration '' 'error 7: Operation not allowed.Current store is same as factory store'
expect_method viewer ColorSpace/2 SetDisplayLuminance 'Luminance="120"' 'error 7: Luminance value changing allowed to active colorspace only.'
expect_method viewer ColorSpace/1 SetDisplayLuminance 'Luminance="251"' 'error 4: Invalid input value range. Valid values are between 48 and 250.'
expect_method viewer ColorSpace/1 SetDisplayLuminance 'Luminance="120"' 0 DisplayLuminance 250 120
expect_method viewer ColorSpace/1 ResetToLastCalibration '' 'error 7: Operation not allowed.Current store have user-adjusted luminance'
# A factory reset is accepted on any preset; it resets the one in use.
expect_method viewer ColorSpace/5 ResetToFactoryCalibration '' 0 ColorSpace/1:DisplayLuminance 120 250
set_monitor preset1.calibrated_luminance 200
set_monitor preset1.luminance 200
# It is allowed only while the luminance is the calibrated one, so that its effect is that nothing changes.
expect_method viewer ColorSpace/2 ResetToLastCalibration '' 'error 7: ResetToLastCalibration allowed for active colorspace only.'
expect_method viewer ColorSpace/1 ResetToLastCalibration '' 0 DisplayLuminance 200 200
expect_method viewer ColorSpace/1 ResetToFactoryCalibration '' 0 DisplayLuminance 200 250 setting:preset1.calibrated_luminance 200 250

echo 'BezelButton and FunctionButton'
expect_method viewer BezelButton SetButtonAutoFadeMode 'ButtonAutoFadeMode="0"' 0 ButtonAutoFadeMode 1 0
expect_method viewer BezelButton SetButtonBrightness 'ButtonBrightness="7"' 'error 4: Invalid Button Brightness Value. Valid values are between 0,2,4,6,8,10,12,14 upto 20.'
expect_method viewer BezelButton SetButtonBrightness 'ButtonBrightness="20"' 0 ButtonBrightness 10 20
expect_method viewer BezelButton SetButtonColor 'ButtonColor="2"' 0 ButtonColor 0 2
expect_method viewer BezelButton SetButtonMode 'ButtonMode="1"' 0 ButtonMode 0 1
for number in 1 2 3 4; do
    expect_method viewer FunctionButton/$number SetSetting "Setting=\"$((number + 13))\"" 0 Setting $number $((number + 13))
done

echo 'TestPatternGenerator'
expect_method viewer TestPatternGenerator SetEnabled 'Enabled="TRUE"' 0 Enabled FALSE TRUE
expect_method viewer TestPatternGenerator SetTestPattern 'TestPattern="8"' 0 TestPattern 0 8
expect_method viewer TestPatternGenerator SetRGBValue 'RValue="1",GValue="256",BValue="3"' 'error 4: Invalid input value range. Valid values are between 0 and 255.'
expect_method viewer TestPatternGenerator SetRGBValue 'RValue="1",GValue="2",BValue="3"' 0 RValue '"255"' '"1"' GValue '"255"' '"2"' BValue '"255"' '"3"'

echo 'Services'
expect_method admin WSManagementService SetWSIdentifyEnabledState 'WSIdentifySupportEnabled="false"' 0 WSIdentifySupportEnabled TRUE FALSE
expect_method admin IPConfigurationService RequestStateChange 'RequestedState="2"' 'error 7: RequestStateChange'
arguments="IPNetworkConnection=$(reference IPNetworkConnection),Mode=\"1\",SettingData=$(reference DHCPSettingData)"
later=yes expect_method admin IPConfigurationService ApplySettingToIPNetworkConnection "$arguments" 0 setting:ip_configuration_mode 1 0
later=yes expect_method admin WSManagementService RequestStateChange 'RequestedState="3"' 0 EnabledState 2 3
later=yes expect_method admin RemoteManagementService RequestStateChange 'RequestedState="3"' 0 EnabledState 2 3
expect_method admin IPConfigurationService ApplySettingToIPNetworkConnection "$arguments" 'error 1: Remote management status is disabled.'

echo 'Monitor'
expect_method viewer Monitor SetAutoSwitchSource 'AutoSwitchSource="TRUE"' 0 AutoSwitchSource FALSE TRUE
expect_method viewer Monitor SetActiveColorSpace "ColorSpace=$(reference ColorSpace/3)" 0 ColorSpace/1:Active TRUE FALSE ColorSpace/3:Active FALSE TRUE
expect_method viewer Monitor SetActiveColorSpace "ColorSpace=$(reference ColorSpace/8)" 'error 4: This Input class does not exist (wrong InstanceID).'
expect_method viewer Monitor SetActiveColorSpace "ColorSpace=$(reference VideoInput/1)" 'error 4: Invalid classname for ColorSpaceInput'
expect_method viewer Monitor SetSelectedVideoInput "VideoInput=$(reference VideoInput/3)" 0 InputSource 0 2 \
    HorizontalResolution 4096 1920 VerticalResolution 2160 1080 VideoInput/1:Selected TRUE FALSE VideoInput/3:Selected FALSE TRUE
expect_method viewer Monitor SetSelectedVideoInput "VideoInput=$(reference ColorSpace/1)" 'error 4: Invalid classname for VideoInput'
expect_method admin Monitor SetDeploymentLocation 'DeploymentLocation="Suite 4&#44; rack 2"' 0 DeploymentLocation '""' '"Suite 4, rack 2"'
expect_method admin Monitor SetDeploymentDate 'DeploymentDate="30/02/2024"' 'error 4: Invalid date. date format is DD/MM/YYYY'
expect_method admin Monitor SetDeploymentDate 'DeploymentDate="29/02/2024"' 0 DeploymentDate 20240101000000.000000+000 20240229000000.000000+000
expect_method admin Monitor SetRecalibrationAlarmDuration 'RecalibrationAlarmDuration="1001"' 'error 4: Invalid input value range. Valid values are between 1 and 1000.'
expect_method admin Monitor SetRecalibrationAlarmDuration 'RecalibrationAlarmDuration="500"' 0 setting:recalibration_alarm 1000 500
renamed='Grading 1, left' expect_method admin Monitor SetName 'Name="Grading 1&#44; left"' 0 \
    SystemName '"192.168.10.20"' '"Grading 1, left"' Name '"192.168.10.20"' '"Grading 1, left"'
expect_property BezelButton Name '"Grading 1, left-BezelButton"'
expect_method viewer Monitor SetSoftPowerState 'SoftPowerState="1"' 'error 7: SetSoftPowerState'
expect_method viewer Monitor SetSoftPowerState 'SoftPowerState="0"' 0 SoftPowerState TRUE FALSE
call viewer Monitor FactoryReset ''
system=192.168.10.20
called[Monitor.FactoryReset]=yes
expect 'Monitor FactoryReset() answers 0' 0 "$answer"
expect_property Monitor Name '"192.168.10.20"'
settings=$(monitor show settings)
expect 'no setting differs from its factory value' '' "$(grep '^[^*]* \*' <<<"$settings")"

echo 'Methods that are none'
expect_call() { # expect_call OBJECT METHOD ANSWER
    call admin "$1" "$2" ''
    expect "$1 $2() answers $3" "$3" "$answer"
}
for object in Monitor DisplayManagement ImageAdjustment PictureInPicture OSDMenuAndMessages ColorSpace/1 BezelButton FunctionButton/1 \
    RemoteManagementService WSManagementService IPConfigurationService VideoInput/1; do
    expect_call $object Reboot 'error 6: Reboot'
done
for object in TestPatternGenerator IPProtocolEndpoint/lo IPNetworkConnection ExtendedStaticIPAssignmentSettingData DHCPSettingData \
    IPVersionSettingData IPAssignmentSettingData; do
    expect_call $object Reboot 'error 7: Reboot'
done
# The letter case of a name matters, but not to the test-pattern generator and to the two services.
expect_call Monitor factoryreset 'error 6: factoryreset'
call viewer TestPatternGenerator setrgbvalue 'RValue="4",GValue="5",BValue="6"'
expect 'TestPatternGenerator setrgbvalue() answers 0' 0 "$answer"
expect_property TestPatternGenerator RValue '"4"'
expect_call WSManagementService requeststatechange 'error 4: Required argument RequestStateChange missing.'
# Of the classes without methods this one takes the name that stands for none.
expect_call VideoInput/2 insert_method_name 1

echo 'No method is forgotten'
declared=$(cd "$source_dir/mof" && sed -n '/^ *uint[0-9]* [A-Za-z0-9]* *(/s/^ *uint[0-9]* \([A-Za-z0-9]*\) *(.*/\1/;T;F;p' ZT_Marovelton_*.mof |
    sed 'N;s/^ZT_Marovelton_\(.*\)\.mof\n/\1./' | sort)
expect "the methods called are those of the class definitions: $(wc -l <<<"$declared")" "$declared" "$(printf '%s\n' "${!called[@]}" | sort)"
report
