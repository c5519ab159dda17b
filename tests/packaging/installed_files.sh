# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=sh
# What the component `provider` installs, below the prefix; the documentation apart.

provider_files() {
    cat <<'FILES'
lib/cmpi/libcmpiDisplayManagement.so
share/libcmpiDisplayManagement/libcmpiDisplayManagement.reg
share/libcmpiDisplayManagement/libcmpiDisplayManagement.registration
share/libcmpiDisplayManagement/libcmpiDisplayManagement_providers.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_BezelButton.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_Button.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_ColorModel.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_ColorSpace.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_DHCPSettingData.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_DisplayManagement.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_ElementSettingData.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_ExtendedStaticIPAssignmentSettingData.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_FunctionButton.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_HostedAccessPoint.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_IPAssignmentSettingData.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_IPConfigurationService.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_IPNetworkConnection.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_IPProtocolEndpoint.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_IPVersionSettingData.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_ImageAdjustment.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_ImageAdjustmentModel.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_InputSource.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_Management.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_Monitor.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_OSDMenuAndMessages.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_OnScreenDisplay.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_OrderedComponent.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_PIPFunctionality.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_PictureInPicture.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_ProvidesEndpoint.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_RemoteManagementService.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_SAPSAPDependency.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_SystemDevice.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_TestPattern.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_TestPatternGenerator.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_VideoInput.mof
share/libcmpiDisplayManagement/mof/ZT_Marovelton_WSManagementService.mof
share/libcmpiDisplayManagement/register-providers
share/man/man8/register-providers.8
FILES
}

development_files() { echo include/monitor_support.h; }

# The documentation in the same component, from what is in the source directory.
documentation_files() {
    (cd "$1" && find README.md CHANGELOG.md docs -maxdepth 1 ! -type d \( -name '*.md' -o -name '*.svg' -o -name '*.html' \)) |
        sed 's|^|share/doc/libcmpidisplaymanagement/|' | LC_ALL=C sort
}
documentation_below() { (cd "$1" && find share/doc/libcmpidisplaymanagement ! -type d | LC_ALL=C sort); }

# The files and links below a directory, the documentation apart.
files_below() {
    (cd "$1" && find . ! -type d ! -path './share/doc/*' | sed 's|^\./||' | LC_ALL=C sort)
}
