#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# A display engine that is busy, slow, silent or gone, a monitor that cannot be read, and what the client is told.
#
# Where an answer of the engine is expected the processes wait long for it, where none is to come they wait briefly:
# so no check depends on how fast the machine is. Between the two the object manager is started again.
set -euo pipefail
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"

long=$patience
short=1
wait_for_replies() { # wait_for_replies SECONDS: so long does the library wait from now on
    host_stop
    DESK_MONITOR_RECEIVE_TIMEOUT=$1 host_start
}

# expect_refusal OBJECT METHOD ARGUMENTS ANSWER: by the administrator.
expect_refusal() {
    call admin "$1" "$2" "$3"
    expect "$1 $2(${3%%=*}) answers $4" "$4" "$answer"
}
expect_success() {
    call admin "$1" "$2" "$3"
    expect "$1 $2($3) answers 0" 0 "$answer"
}
# expect_read OBJECT OPERATION ANSWER
expect_read() {
    local target=ZT_Marovelton_${1%%/*}
    [ "$2" != gi ] || target=$(path "$1")
    expect_answer "$2 of $1 answers $3" "$3" viewer "$2" "$target"
}
expect_readable() { # expect_readable OBJECT
    instance "$1"
    value_of Caption
    expect "$1 can be read" "\"ZT_Marovelton_${1%%/*}\"" "$value"
}

# An engine that sees no request until it goes on.
engine_pauses() { kill -s STOP "${desk_engine[$desk]}"; }
engine_goes_on() { kill -s CONT "${desk_engine[$desk]}"; }
# What was refused is not left for the engine, nor is a reply left for the next one.
expect_empty_queues() {
    expect 'no request and no reply is left' yes "$(queue_holds 0 0 && queue_holds 3 0 && echo yes)"
}

export DESK_MONITOR_RECEIVE_TIMEOUT=$long
desk_start

echo 'A busy engine'
monitor fault busy on
for operation in gi ei ein; do
    expect_read Monitor $operation 'error 1: Device is Busy. Please try after some time..'
done
expect_read VideoInput/2 gi 'error 1: Device is Busy. Please try after some time..'
expect_read VideoInput ein 'error 1: Device is Busy. Please try after some time..'
# What is shown without the engine is shown.
for object in DisplayManagement ImageAdjustment PictureInPicture OSDMenuAndMessages ColorSpace/1 BezelButton FunctionButton/4 \
    TestPatternGenerator RemoteManagementService WSManagementService; do
    expect_readable $object
done
# Most methods give one text, some one of their own.
busy='error 1: Device is Busy. Please try after some time.'
expect_refusal Monitor SetAutoSwitchSource 'AutoSwitchSource="1"' "$busy"
expect_refusal Monitor SetActiveColorSpace "ColorSpace=$(reference ColorSpace/2)" "$busy"
expect_refusal Monitor SetSelectedVideoInput "VideoInput=$(reference VideoInput/2)" "$busy"
expect_refusal Monitor SetSoftPowerState 'SoftPowerState="0"' "$busy"
expect_refusal Monitor SetRecalibrationAlarmDuration 'RecalibrationAlarmDuration="7"' "$busy"
expect_refusal Monitor FactoryReset '' "$busy"
expect_refusal DisplayManagement SetPowerSaverEnabled 'PowerSaverEnabled="0"' "$busy"
expect_refusal ImageAdjustment SetOverscanFrame 'OverscanFrame="1"' "$busy"
expect_refusal ImageAdjustment SetCroppedRegionOpacity 'CroppedRegionOpacity="30"' 'error 1: Device is Busy. Please try after some time'
expect_refusal ImageAdjustment Set4KSourceScaling 'SourceScaling4K="1"' 'error 1: Device is Busy. Please try after some time..'
expect_refusal PictureInPicture SetPIPMode 'PIPMode="1"' 'error 1: Device is Busy. Plese try after some time.'
expect_refusal PictureInPicture SetPIPSize 'PIPSize="1"' 'error 1: Device is Busy. Please try after some time..'
expect_refusal PictureInPicture SetUseVideoLevels 'UseVideoLevels="1"' "$busy"
expect_refusal OSDMenuAndMessages SetOpacity 'Opacity="40"' "$busy"
expect_refusal OSDMenuAndMessages SetShowInfoWhenPoweredOn 'ShowInfoWhenPoweredOn="0"' 'error 1: Device is Busy. Please try aftrer some time.'
expect_refusal ColorSpace/1 SetDisplayLuminance 'Luminance="100"' "$busy"
expect_refusal ColorSpace/1 ResetToLastCalibration '' 'error 1: Device is Busy. Please try after some time..'
expect_refusal BezelButton SetButtonColor 'ButtonColor="1"' "$busy"
expect_refusal FunctionButton/1 SetSetting 'Setting="9"' "$busy"
expect_refusal TestPatternGenerator SetEnabled 'Enabled="1"' "$busy"
expect_refusal WSManagementService SetWSIdentifyEnabledState 'WSIdentifySupportEnabled="0"' 'error 1: Device is Busy. Please try after some Time.'
expect_refusal IPConfigurationService ApplySettingToIPNetworkConnection \
    "IPNetworkConnection=$(reference IPNetworkConnection),Mode=\"1\",SettingData=$(reference DHCPSettingData)" "$busy"
expect_answer 'the static address answers without its full stop' 'error 1: Device is Busy. Please try after some time' \
    admin mi "$(path ExtendedStaticIPAssignmentSettingData)" 'IPAddresses="10.1.2.3"'
# The services are switched without looking at what becomes of it.
expect_success RemoteManagementService RequestStateChange 'RequestedState="3"'
expect_success WSManagementService RequestStateChange 'RequestedState="3"'
# Arguments are judged first.
expect_refusal BezelButton SetButtonColor 'ButtonColor="3"' 'error 4: Invalid Input Value Range. valid values are between 0 and 2.'
expect 'nothing was sent to the engine' yes "$(queue_holds 0 0 && echo yes)"
settings=$(monitor show settings)
expect 'nothing was changed' '' "$(grep '^[^*]* \*' <<<"$settings")"
monitor fault busy off
expect_property Monitor InputSource 0
expect_success BezelButton SetButtonColor 'ButtonColor="1"'

echo 'A slow engine'
monitor fault slow on 1
started=${EPOCHREALTIME/./}
expect_method viewer DisplayManagement SetPowerSaverEnabled 'PowerSaverEnabled="0"' 0 PowerSaverEnabled TRUE FALSE
expect 'the answer came after the engine had taken its time' yes "$( ((${EPOCHREALTIME/./} - started >= 1000000)) && echo yes)"
monitor fault slow off

echo 'A monitor that cannot be read'
monitor fault fail-read on GetMoinitorInfo
expect_read Monitor ein 'error 1: Failed to get monitor information from database.'
expect_read Monitor ei "error 1: Couldn't build instance"
expect_read Monitor gi 'error 1: Could not get monitor information from database.'
expect_refusal Monitor FactoryReset '' 'error 1: Could not get monitor information from database.'
expect_read BezelButton ei "error 1: Couldn't build instance"
monitor fault fail-read on GetImageAdjustmentInfo
expect_read Monitor gi "error 1: Couldn't build instance"
expect_refusal ImageAdjustment SetDisplayed4KCorner '' 'error 1: Failed to get Settings information from database.'
monitor fault fail-read on GetRegisterValue,GetRemoteManagementServerInfo
expect_read ColorSpace/1 gi "error 1: Couldn't build instance"
expect_refusal ColorSpace/1 SetDisplayLuminance 'Luminance="100"' 'error 1: Failed to get ColorSpace information from database.'
expect_refusal PictureInPicture SetDigitalCinemaOption 'DigitalCinemaOption="1"' 'error 1: Could not get info from DB'
expect_read RemoteManagementService ei "error 1: Couldn't build instance"
expect_refusal RemoteManagementService RequestStateChange 'RequestedState="2"' 'error 1: Failed to get remote management info.'
expect_readable OSDMenuAndMessages
monitor fault fail-read on
for class in Monitor DisplayManagement VideoInput ImageAdjustment PictureInPicture OSDMenuAndMessages ColorSpace BezelButton FunctionButton \
    TestPatternGenerator RemoteManagementService WSManagementService IPNetworkConnection IPConfigurationService \
    ExtendedStaticIPAssignmentSettingData DHCPSettingData IPAssignmentSettingData; do
    expect_read $class ei "error 1: Couldn't build instance"
done
monitor fault clear
monitor fault fail-update on
expect_refusal Monitor SetName 'Name="Nobody"' 'error 1: Failed to update.'
expect_refusal Monitor SetDeploymentDate 'DeploymentDate="01/01/2025"' 'error 1: Failed to update.'
expect_refusal Monitor SetDeploymentLocation 'DeploymentLocation="Nowhere"' 'error 1: Failed to update.'
monitor fault fail-user on
expect_refusal Monitor SetName 'Name="Nobody"' 'error 1: The user could not be looked up.'
monitor fault clear
expect_property Monitor Name '"192.168.10.20"'

echo 'Message queues that fail'
monitor fault fail-queue on 0
expect_read Monitor gi 'error 1: Unable to create a message queue for sending message.'
expect_refusal BezelButton SetButtonColor 'ButtonColor="2"' 'error 1: Unable to create a message queue for sending message.'
expect_refusal BezelButton SetButtonAutoFadeMode 'ButtonAutoFadeMode="0"' \
    'error 1: Failed to process. Unable to create a message queue for sending message.'
monitor fault fail-queue on 3
engine_pauses
expect_read Monitor gi 'error 1: Unable to create a message queue for receiving message.'
expect_empty_queues
expect_refusal BezelButton SetButtonColor 'ButtonColor="2"' 'error 1: Unable to create a message queue for receving message.'
expect_empty_queues
monitor fault clear
engine_goes_on
expect_property BezelButton ButtonColor 1
monitor fault fail-send on
expect_read Monitor gi 'error 1: Unable to send value to SPEAr.'
expect_refusal Monitor SetAutoSwitchSource 'AutoSwitchSource="1"' 'error 1: Unable to send value to SPEAr.'
monitor fault clear
monitor fault fail-receive on
expect_read Monitor gi 'error 1: Failed to read the value from spear.'
expect_empty_queues
expect_refusal TestPatternGenerator SetTestPattern 'TestPattern="3"' 'error 1: Failed to set the value to PowerSaverState.'
expect_empty_queues
monitor fault clear
expect_success TestPatternGenerator SetTestPattern 'TestPattern="4"'
expect_property TestPatternGenerator TestPattern 4
expect_readable Monitor

echo 'An engine that answers nothing'
wait_for_replies $short
monitor fault silent on
started=$SECONDS
expect_read Monitor gi 'error 1: Failed to read the value from spear.'
expect_refusal OSDMenuAndMessages SetLanguage 'Language="5"' 'error 1: Failed to set the value to Language.'
expect 'neither waited for ever' yes "$( ((SECONDS - started < patience)) && echo yes)"
eventually 'the engine does what it was asked' property_is OSDMenuAndMessages Language 5
expect_property OSDMenuAndMessages Language 5
monitor fault clear

echo 'An engine that loses a reply'
monitor fault lose-reply on 1
expect_refusal DisplayManagement SetPowerOnRecallEnabled 'PowerOnRecallEnabled="0"' 'error 1: Failed to set the value to PowerOnRecallState.'
eventually 'the engine does what it was asked' property_is DisplayManagement PowerOnRecallEnabled FALSE
expect_property DisplayManagement PowerOnRecallEnabled FALSE
wait_for_replies $long
expect_success DisplayManagement SetPowerOnRecallEnabled 'PowerOnRecallEnabled="1"'
expect_property DisplayManagement PowerOnRecallEnabled TRUE

echo 'A reply that comes too late'
wait_for_replies $short
monitor fault slow on 2
expect_refusal ImageAdjustment SetUseVideoLevels 'UseVideoLevels="1"' 'error 1: Failed to set the value to video level.'
eventually 'the engine finds that it was taken back' grep -q 'a request of group 2 was taken back' "$directory/engine.log"
expect_empty_queues
expect_property ImageAdjustment UseVideoLevels FALSE
monitor fault slow off
# Nor is anything applied later that the engine could not even see in time.
engine_pauses
expect_refusal ImageAdjustment SetShowBlueChannel 'ShowBlueChannel="1"' 'error 1: Failed to set the value to ShowBlueChannel.'
expect_read Monitor gi 'error 1: Failed to read the value from spear.'
expect_property ImageAdjustment ShowBlueChannel FALSE
expect_empty_queues
engine_goes_on
wait_for_replies $long
expect_method viewer ImageAdjustment SetShowBlueChannel 'ShowBlueChannel="1"' 0 ShowBlueChannel FALSE TRUE
expect_property ImageAdjustment UseVideoLevels FALSE

echo 'No engine'
wait_for_replies $short
engine_stop KILL
started=$SECONDS
for operation in gi ei ein; do
    expect_read Monitor $operation 'error 1: Failed to read the value from spear.'
done
expect_refusal Monitor SetAutoSwitchSource 'AutoSwitchSource="1"' 'error 1: Failed to set the value to AutoSwitchSource.'
expect_refusal PictureInPicture SetPIPMode 'PIPMode="1"' 'error 1: Failed to set the value to PIPMode.'
expect_refusal Monitor FactoryReset '' 'error 1: Failed to set the value to DisplayLuminance.'
expect 'none of them waited for ever' yes "$( ((SECONDS - started < patience)) && echo yes)"
# What needs no engine goes on.
expect_readable ColorSpace/7
expect_success Monitor SetDeploymentLocation 'DeploymentLocation="Stage 3"'
expect_empty_queues

echo 'An engine started again'
wait_for_replies $long
engine_start
expect_method viewer Monitor SetAutoSwitchSource 'AutoSwitchSource="1"' 0 AutoSwitchSource FALSE TRUE

echo 'Everything started again'
host_stop
engine_stop
expect 'the queues are gone with the engine' '' "$(queues_of "${desk_key[$desk]}")"
engine_start
host_start
expect_property Monitor AutoSwitchSource TRUE
expect_property Monitor DeploymentLocation '"Stage 3"'
expect_property BezelButton ButtonColor 1
expect_property OSDMenuAndMessages Language 5
expect_method viewer Monitor SetActiveColorSpace "ColorSpace=$(reference ColorSpace/7)" 0 ColorSpace/7:Active FALSE TRUE
report
