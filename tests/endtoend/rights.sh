#!/bin/bash
# SPDX-License-Identifier: Apache-2.0
# What administrators alone may do, and who is served at all.
set -euo pipefail
# shellcheck source=desk.sh
. "$(dirname "$0")/desk.sh"
# shellcheck source=client.sh
. "$here/client.sh"
desk_start
refusal='error 2: Operation not allowed for non-admin user credentials'

# administrators_only OBJECT METHOD ARGUMENTS [PROPERTY BEFORE AFTER]...: nothing happens when the ordinary user calls
# it, whatever the arguments; the administrator's call has its effect.
administrators_only() {
    expect_method viewer "$1" "$2" "$3" "$refusal"
    expect_method viewer "$1" "$2" '' "$refusal"
    expect_method admin "$1" "$2" "$3" 0 "${@:4}"
}

echo 'Methods for administrators alone'
administrators_only Monitor SetDeploymentLocation 'DeploymentLocation="Stage 2"' DeploymentLocation '""' '"Stage 2"'
administrators_only Monitor SetDeploymentDate 'DeploymentDate="31/12/1999"' \
    DeploymentDate 20240101000000.000000+000 19991231000000.000000+000
administrators_only Monitor SetRecalibrationAlarmDuration 'RecalibrationAlarmDuration="1"' setting:recalibration_alarm 1000 1
administrators_only DisplayManagement SetCalibrationEnabled 'CalibrationEnabled="false"' CalibrationEnabled TRUE FALSE
administrators_only ImageAdjustment SetDeinterlacerEnabled 'DeinterlacerEnabled="false"' DeinterlacerEnabled TRUE FALSE
administrators_only ImageAdjustment SetCadenceDetectionEnabled 'CadenceDetectionEnabled="false"' CadenceDetectionEnabled TRUE FALSE
administrators_only WSManagementService SetWSIdentifyEnabledState 'WSIdentifySupportEnabled="false"' WSIdentifySupportEnabled TRUE FALSE
later=yes administrators_only WSManagementService RequestStateChange 'RequestedState="3"' EnabledState 2 3
later=yes administrators_only IPConfigurationService ApplySettingToIPNetworkConnection \
    "IPNetworkConnection=$(reference IPNetworkConnection),Mode=\"1\",SettingData=$(reference DHCPSettingData)" setting:ip_configuration_mode 1 0
later=yes administrators_only RemoteManagementService RequestStateChange 'RequestedState="3"' EnabledState 2 3

expect_method viewer Monitor SetName 'Name="Mine"' "$refusal"
renamed=Yours expect_method admin Monitor SetName 'Name="Yours"' 0 SystemName '"192.168.10.20"' '"Yours"' Name '"192.168.10.20"' '"Yours"'

echo 'The static address'
static=$(path ExtendedStaticIPAssignmentSettingData)
expect_answer 'the ordinary user may not change it' "$refusal" viewer mi "$static" 'IPAddresses="10.1.2.3"'
expect_property ExtendedStaticIPAssignmentSettingData IPAddresses '"192.168.10.20"'
expect_answer 'the administrator may' '' admin mi "$static" 'IPAddresses="10.1.2.3"'
eventually 'the address changes' property_is ExtendedStaticIPAssignmentSettingData IPAddresses '"10.1.2.3"'
expect_property ExtendedStaticIPAssignmentSettingData IPAddresses '"10.1.2.3"'

echo 'Rights are asked anew at every call'
monitor user add viewer --administrator
renamed=Mine expect_method viewer Monitor SetName 'Name="Mine"' 0 SystemName '"Yours"' '"Mine"' Name '"Yours"' '"Mine"'
monitor user add viewer
expect_method viewer Monitor SetName 'Name="Ours"' "$refusal"
monitor user remove viewer
expect_method viewer Monitor SetName 'Name="Ours"' 'error 1: The user is not known to the monitor.'
# Who may read is the business of the object manager, and so is who may change what is free to all.
expect_method viewer Monitor SetAutoSwitchSource 'AutoSwitchSource="1"' 0 AutoSwitchSource FALSE TRUE
monitor user add viewer

echo 'Accounts'
monitor_path=$(path Monitor)
# expect_refused WHO CREDENTIALS ANSWER: neither a read nor a change.
expect_refused() {
    run_client ein "http://${2}127.0.0.1:$port/root/cimv2:ZT_Marovelton_Monitor"
    expect "$1 cannot read" "$3" "$answer"
    run_client cm "http://${2}127.0.0.1:$port/root/cimv2:$monitor_path" 'SetAutoSwitchSource.AutoSwitchSource="0"'
    expect "$1 cannot change anything" "$3" "$answer"
}
admin_password=$(<"$directory/password.admin")
viewer_password=$(<"$directory/password.viewer")
expect_refused 'a wrong password' 'admin:wrong@' 'Http Exception: Invalid username/password.'
expect_refused 'a password that is longer' "admin:${admin_password}0@" 'Http Exception: Invalid username/password.'
expect_refused 'a password that is shorter' "admin:${admin_password%?}@" 'Http Exception: Invalid username/password.'
expect_refused 'the password of another' "admin:$viewer_password@" 'Http Exception: Invalid username/password.'
expect_refused 'an unknown user' "nobody:$viewer_password@" 'Http Exception: Invalid username/password.'
expect_refused 'no user' '' 'Http Exception: Username/password required.'
expect_property Monitor AutoSwitchSource TRUE
report
