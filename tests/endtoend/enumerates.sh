#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# Every class that is registered answers an enumeration of its names and of its instances, with as many objects as it
# has and with all properties that it publishes.
set -euo pipefail
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"
desk_start

interfaces=$(tail -n +3 /proc/net/dev | wc -l)

# class NAME COUNT PROPERTY...: the properties are those that have a value, in the order of the class definition.
seen=()
class() {
    local class=ZT_Marovelton_$1 count=$2 names
    shift 2
    seen+=("$class")
    ask viewer ein "$class"
    without_host
    names=$answer
    expect "$class: $count names" "$count" "$(grep -c "^$class\.[A-Za-z]*=" <<<"$names")"
    ask viewer ei -nl "$class"
    without_host
    expect "$class: $count instances" "$count" "$(grep -c "^$class\." <<<"$answer")"
    # Every instance has a value for each of them, and none has one for another.
    expect "$class: $# properties" "$(for ((i = 0; i < count; ++i)); do printf '%s\n' "$@"; done)" \
        "$(sed -n 's/^-\([A-Za-z0-9]*\)=..*/\1/p' <<<"$answer")"
}

class Monitor 1 InstanceID Caption Description ElementName Name EnabledState RequestedState EnabledDefault TransitioningToState \
    SystemCreationClassName SystemName CreationClassName DeviceID SoftPowerState VideoPipelineDelay LastCalibration BacklightHours InputSource AutoSwitchSource DeploymentDate DeploymentLocation \
    DisplayMode VerticalResolution HorizontalResolution
class DisplayManagement 1 InstanceID Caption Description ElementName Name AutoEDIDUpdateEnabled CalibrationEnabled \
    DDCCICommunicationsEnabled HotPlugInitiateEnabled PowerOnRecallEnabled PowerSaverEnabled DisplayPortHotPlugDetection
class VideoInput 3 InstanceID Caption Description ElementName Name Selected Active
class ImageAdjustment 1 InstanceID Caption Description ElementName Name Region4KPositionX Region4KPositionY CroppedRegionOpacity \
    OverscanFrame ShowBlueChannel ShowCroppedRegion UseVideoLevels OverdriveEnabled DeinterlacerEnabled CadenceDetectionEnabled \
    DisplayAspectRatio DCIImageRegion SourceScaling4K
class PictureInPicture 1 InstanceID Caption Description ElementName Name PIPOverscanEnabled PIPSize PIPPositionX PIPPositionY PIPMode \
    UseVideoLevels ShowDCICroppedRegion DigitalCinemaOption PIPInputSource
class OSDMenuAndMessages 1 InstanceID Caption Description ElementName Name MenuAndMessageTimeOut NotifyWhenReCalibrationIsDue \
    OSDPositionX OSDPositionY Opacity ShowInfoWhenColorSpaceChanges ShowInfoWhenInputSourceChanges ShowInfoWhenPoweredOn Language \
    DisplayRotation
class ColorSpace 7 InstanceID Caption Description ElementName Name Active ColorSpaceNumber ColorSpaceName DisplayLuminance \
    BluePrimaryU BluePrimaryV BluePrimaryX BluePrimaryY Gamma GreenPrimaryU GreenPrimaryV GreenPrimaryX GreenPrimaryY \
    RedPrimaryU RedPrimaryV RedPrimaryX RedPrimaryY WhitePointU WhitePointV WhitePointX WhitePointY
class BezelButton 1 InstanceID Caption Description ElementName Name ButtonBrightness ButtonColor ButtonAutoFadeMode ButtonMode
class FunctionButton 4 InstanceID Caption Description ElementName Name Setting
class TestPatternGenerator 1 InstanceID Caption Description ElementName Name Enabled RValue GValue BValue TestPattern
class RemoteManagementService 1 InstanceID Caption Description ElementName Name EnabledState RequestedState EnabledDefault \
    AvailableRequestedStates TransitioningToState SystemCreationClassName SystemName CreationClassName
class WSManagementService 1 InstanceID Caption Description ElementName Name EnabledState RequestedState EnabledDefault \
    AvailableRequestedStates TransitioningToState SystemCreationClassName SystemName CreationClassName WSIdentifySupportEnabled
class IPProtocolEndpoint "$interfaces" Caption Description ElementName Name Status EnabledState OtherEnabledState RequestedState \
    EnabledDefault TransitioningToState SystemCreationClassName SystemName CreationClassName NameFormat ProtocolType ProtocolIFType \
    OtherTypeDescription IPv4Address IPv6Address SubnetMask IPVersionSupport AddressOrigin
class IPNetworkConnection 1 InstanceID Description ElementName Name Status EnabledState RequestedState EnabledDefault \
    TransitioningToState SystemCreationClassName SystemName CreationClassName
class IPConfigurationService 1 InstanceID Description ElementName Name Status EnabledState RequestedState EnabledDefault \
    AvailableRequestedStates TransitioningToState SystemCreationClassName SystemName CreationClassName
class ExtendedStaticIPAssignmentSettingData 1 InstanceID Caption Description ChangeableType ConfigurationName AddressOrigin \
    ProtocolIFType IPAddresses SubnetMasks GatewayAddresses CreationClassName Name Status
class DHCPSettingData 1 InstanceID Caption Description ChangeableType ConfigurationName AddressOrigin ProtocolIFType CreationClassName \
    Name Status
# Its instance has no property at all, and the name that it gives is none that it takes.
class IPVersionSettingData 1
ask viewer ein ZT_Marovelton_IPVersionSettingData
without_host
expect 'ZT_Marovelton_IPVersionSettingData: the name' 'ZT_Marovelton_IPVersionSettingData.InstanceID="ZT_Marovelton_IPVersionSettingData"' "$answer"
class IPAssignmentSettingData 1 InstanceID ChangeableType ConfigurationName AddressOrigin ProtocolIFType
class TestPattern 1 TestPatternGenerator Monitor
class PIPFunctionality 1 PictureInPicture Monitor
class OnScreenDisplay 1 OSDMenuAndMessages Monitor
class Management 1 DisplayManagement Monitor
class InputSource 3 VideoInput Monitor
class ImageAdjustmentModel 1 ImageAdjustment Monitor
class ColorModel 7 ColorSpace Monitor
class Button 5 Antecedent Dependent
class SystemDevice 1 GroupComponent PartComponent
class ElementSettingData 3 ManagedElement SettingData IsCurrent IsNext
class HostedAccessPoint 1 Antecedent Dependent
class ProvidesEndpoint $((2 * interfaces)) Antecedent Dependent
class SAPSAPDependency "$interfaces" Antecedent Dependent
class OrderedComponent 2 GroupComponent PartComponent AssignedSequence

echo 'By name: what an enumeration names can be read'
for class in "${seen[@]}"; do
    ask viewer ein "$class"
    without_host
    name=${answer%%$'\n'*}
    ask viewer gi "$name"
    case $class in
    ZT_Marovelton_IPVersionSettingData)
        expect "$class refuses the name it gives" 'error 6: This class name does not exist (wrong InstanceID).' "$answer"
        ;;
    *)
        without_host
        expect "$class" "$name" "${answer:0:${#name}}"
        ;;
    esac
done
ask viewer gi -nl "$(path IPVersionSettingData)"
without_host
expect 'ZT_Marovelton_IPVersionSettingData by the name it takes' "$(path IPVersionSettingData)" "${answer%%$'\n'*}"

echo 'No class is forgotten: 33'
expect 'the classes are those that are registered' "$(sed -n 's/^\[\(.*\)\]$/\1/p' "$source_dir/mof/libcmpiDisplayManagement.reg" | sort)" \
    "$(printf '%s\n' "${seen[@]}" | sort)"
expect 'there are 33 of them' 33 ${#seen[@]}
report
