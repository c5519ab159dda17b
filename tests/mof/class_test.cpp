// SPDX-License-Identifier: Apache-2.0
// The classes in mof/ against what the providers publish: one row per class, typed here once more.
#include "cim/mof_reader.h"
#include "mof_classes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace
{

using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;
using Texts = std::vector<std::string>;

struct ClassRow {
    const char *name;   // after ZT_Marovelton_
    const char *chain;  // superclasses from the nearest to the root
    Texts keys;         // of the object path
    Texts properties;   // all that the provider sets, in its order
    Texts methods = {}; // in the order of the class's documentation
};

const Texts instanceId = {"InstanceID"};
const Texts inSystem = {"SystemCreationClassName", "SystemName", "CreationClassName", "Name"};

constexpr const char *logicalElement = "CIM_LogicalElement CIM_ManagedSystemElement CIM_ManagedElement";
constexpr const char *service =
    "CIM_Service CIM_EnabledLogicalElement CIM_LogicalElement CIM_ManagedSystemElement "
    "CIM_ManagedElement";

const ClassRow instanceClasses[] = {
    {"Monitor",
     "CIM_Display CIM_UserDevice CIM_LogicalDevice CIM_AllocatedLogicalElement CIM_EnabledLogicalElement "
     "CIM_LogicalElement CIM_ManagedSystemElement CIM_ManagedElement",
     {"DeviceID", "CreationClassName", "SystemName", "SystemCreationClassName"},
     {"string DeviceID",
      "string CreationClassName",
      "string SystemName",
      "string SystemCreationClassName",
      "boolean SoftPowerState",
      "uint16 VideoPipelineDelay",
      "uint16 LastCalibration",
      "uint16 BacklightHours",
      "uint16 InputSource",
      "boolean AutoSwitchSource",
      "datetime DeploymentDate",
      "string DeploymentLocation",
      "uint16 DisplayMode",
      "uint16 VerticalResolution",
      "uint16 HorizontalResolution",
      "string Caption",
      "string ElementName",
      "string InstanceID",
      "string Name",
      "string Description"},
     {"uint32 SetAutoSwitchSource(string AutoSwitchSource)", "uint32 SetName(string Name)",
      "uint32 SetDeploymentLocation(string DeploymentLocation)",
      "uint32 SetDeploymentDate(string DeploymentDate)",
      "uint32 SetRecalibrationAlarmDuration(string RecalibrationAlarmDuration)",
      "uint32 SetActiveColorSpace(ZT_Marovelton_ColorSpace REF ColorSpace)",
      "uint32 SetSelectedVideoInput(ZT_Marovelton_VideoInput REF VideoInput)",
      "uint32 SetSoftPowerState(string SoftPowerState)", "uint32 FactoryReset()"}},

    {"DisplayManagement",
     logicalElement,
     instanceId,
     {"boolean AutoEDIDUpdateEnabled", "boolean CalibrationEnabled", "boolean DDCCICommunicationsEnabled",
      "boolean HotPlugInitiateEnabled", "boolean PowerOnRecallEnabled", "boolean PowerSaverEnabled",
      "uint16 DisplayPortHotPlugDetection", "string Caption", "string ElementName", "string InstanceID",
      "string Description", "string Name"},
     {"uint32 SetAutoEDIDUpdateEnabled(string AutoEDIDUpdateEnabled)",
      "uint32 SetCalibrationEnabled(string CalibrationEnabled)",
      "uint32 SetDDCCICommunicationsEnabled(string DDCCICommunicationsEnabled)",
      "uint32 SetHotPlugInitiateEnabled(string HotPlugInitiateEnabled)",
      "uint32 SetPowerOnRecallEnabled(string PowerOnRecallEnabled)",
      "uint32 SetPowerSaverEnabled(string PowerSaverEnabled)",
      "uint32 SetDisplayPortHotPlugDetection(string DisplayPortHotPlugDetection)",
      "uint32 SetDisplayPortComapatibility(string DisplayPortComapatibility)"}},

    {"VideoInput",
     logicalElement,
     instanceId,
     {"boolean Selected", "string Name", "boolean Active", "string Caption", "string ElementName",
      "string InstanceID", "string Description"}},

    {"ImageAdjustment",
     logicalElement,
     instanceId,
     {"uint16 Region4KPositionX", "uint16 Region4KPositionY", "uint16 CroppedRegionOpacity",
      "boolean OverscanFrame", "boolean ShowBlueChannel", "boolean ShowCroppedRegion",
      "boolean UseVideoLevels", "boolean OverdriveEnabled", "boolean DeinterlacerEnabled",
      "boolean CadenceDetectionEnabled", "uint16 DisplayAspectRatio[]", "uint16 DCIImageRegion[]",
      "uint16 SourceScaling4K[]", "string Caption", "string ElementName", "string InstanceID",
      "string Description", "string Name"},
     {"uint32 SetCroppedRegionOpacity(string CroppedRegionOpacity)",
      "uint32 SetDCIImageRegion(string DCIImageRegion)",
      "uint32 SetDisplayAspectRatio(string DisplayAspectRatio)",
      "uint32 Set4KDisplayMode(string DisplayMode4K)", "uint32 SetDisplayed4KCorner()",
      "uint32 SetOverscanFrame(string OverscanFrame)",
      "uint32 Set4KRegionPosition(string Position4KRegionX, string Position4KRegionY)",
      "uint32 SetShow4KPositionOverlay()", "uint32 SetShowBlueChannel(string ShowBlueChannel)",
      "uint32 SetShowCroppedRegion(string ShowCroppedRegion)",
      "uint32 SetUseVideoLevels(string UseVideoLevels)",
      "uint32 SetOverdriveEnabled(string OverdriveEnabled)",
      "uint32 SetDeinterlacerEnabled(string DeinterlacerEnabled)",
      "uint32 SetCadenceDetectionEnabled(string CadenceDetectionEnabled)",
      "uint32 Set4KSourceScaling(string SourceScaling4K)"}},

    {"PictureInPicture",
     logicalElement,
     instanceId,
     {"boolean PIPOverscanEnabled", "uint16 PIPSize", "uint16 PIPPositionX", "uint16 PIPPositionY",
      "uint16 PIPMode[]", "boolean UseVideoLevels", "boolean ShowDCICroppedRegion",
      "uint16 DigitalCinemaOption[]", "uint16 PIPInputSource[]", "string Caption", "string ElementName",
      "string InstanceID", "string Description", "string Name"},
     {"uint32 SetPIPInputSource(string PIPInputSource)", "uint32 SwapPrimaryPIPInputs()",
      "uint32 SetPIPPosition(string PIPPositionX, string PIPPositionY)", "uint32 SetPIPSize(string PIPSize)",
      "uint32 SetPIPMode(string PIPMode)", "uint32 SetPIPOverscanEnabled(string PIPOverscanEnabled)",
      "uint32 SetUseVideoLevels(string UseVideoLevels)",
      "uint32 SetDigitalCinemaOption(string DigitalCinemaOption)"}},

    {"OSDMenuAndMessages",
     logicalElement,
     instanceId,
     {"uint16 MenuAndMessageTimeOut", "boolean NotifyWhenReCalibrationIsDue", "uint16 OSDPositionX",
      "uint16 OSDPositionY", "real32 Opacity", "boolean ShowInfoWhenColorSpaceChanges",
      "boolean ShowInfoWhenInputSourceChanges", "boolean ShowInfoWhenPoweredOn", "uint16 Language[]",
      "uint16 DisplayRotation[]", "string Caption", "string ElementName", "string InstanceID",
      "string Description", "string Name"},
     {"uint8 SetMenuAndMessageTimeOut(string MenuAndMessageTimeOut)", "uint8 SetLanguage(string Language)",
      "uint8 SetNotifyWhenRecalibrationIsDue(string NotifyWhenReCalibrationIsDue)",
      "uint8 SetOSDPosition(string OSDPositionX, string OSDPositionY)", "uint8 SetOpacity(string Opacity)",
      "uint8 SetShowInfoWhenColorSpaceChanges(string ShowInfoWhenColorSpaceChanges)",
      "uint8 SetShowInfoWhenInputSourceChanges(string ShowInfoWhenInputSourceChanges)",
      "uint8 SetShowInfoWhenPoweredOn(string ShowInfoWhenPoweredOn)",
      "uint8 SetDisplayRotation(string DisplayRotation)"}},

    {"ColorSpace",
     logicalElement,
     instanceId,
     {"boolean Active",        "uint16 ColorSpaceNumber",
      "string ColorSpaceName", "uint16 DisplayLuminance",
      "string BluePrimaryU",   "string BluePrimaryV",
      "string BluePrimaryX",   "string BluePrimaryY",
      "string Gamma",          "string GreenPrimaryU",
      "string GreenPrimaryV",  "string GreenPrimaryX",
      "string GreenPrimaryY",  "string RedPrimaryU",
      "string RedPrimaryV",    "string RedPrimaryX",
      "string RedPrimaryY",    "string WhitePointU",
      "string WhitePointV",    "string WhitePointX",
      "string WhitePointY",    "string Caption",
      "string ElementName",    "string InstanceID",
      "string Description",    "string Name"},
     {"uint32 SetDisplayLuminance(string Luminance)", "uint32 ResetToLastCalibration()",
      "uint32 ResetToFactoryCalibration()"}},

    {"BezelButton",
     logicalElement,
     instanceId,
     {"uint16 ButtonBrightness", "uint16 ButtonColor[]", "uint16 ButtonAutoFadeMode[]", "uint16 ButtonMode[]",
      "string Caption", "string ElementName", "string InstanceID", "string Description", "string Name"},
     {"uint32 SetButtonAutoFadeMode(string ButtonAutoFadeMode)",
      "uint32 SetButtonBrightness(string ButtonBrightness)", "uint32 SetButtonColor(string ButtonColor)",
      "uint32 SetButtonMode(string ButtonMode)"}},

    {"FunctionButton",
     logicalElement,
     instanceId,
     {"string Name", "uint16 Setting[]", "string Caption", "string ElementName", "string InstanceID",
      "string Description"},
     {"uint32 SetSetting(string Setting)"}},

    {"TestPatternGenerator",
     logicalElement,
     instanceId,
     {"string Caption", "string ElementName", "string InstanceID", "string Description", "string Name",
      "boolean Enabled", "string RValue", "string GValue", "string BValue", "uint16 TestPattern[]"},
     {"uint32 SetEnabled(string Enabled)", "uint32 SetTestPattern(string TestPattern)",
      "uint32 SetRGBValue(string RValue, string GValue, string BValue)"}},

    {"RemoteManagementService",
     service,
     inSystem,
     {"uint16 EnabledState", "string SystemName", "string SystemCreationClassName",
      "string CreationClassName", "string Name", "string Caption", "string ElementName", "string InstanceID",
      "string Description", "uint16 AvailableRequestedStates[]"},
     {"uint32 RequestStateChange(string RequestedState)"}},

    {"WSManagementService",
     service,
     inSystem,
     {"boolean WSIdentifySupportEnabled", "uint16 EnabledState", "string SystemName",
      "string SystemCreationClassName", "string CreationClassName", "string Name", "string Caption",
      "string ElementName", "string InstanceID", "string Description", "uint16 AvailableRequestedStates[]"},
     {"uint32 RequestStateChange(string RequestedState)",
      "uint32 SetWSIdentifyEnabledState(string WSIdentifySupportEnabled)"}},

    {"IPProtocolEndpoint",
     "CIM_IPProtocolEndpoint CIM_ProtocolEndpoint CIM_ServiceAccessPoint CIM_EnabledLogicalElement "
     "CIM_LogicalElement CIM_ManagedSystemElement CIM_ManagedElement",
     inSystem,
     {"string SystemCreationClassName",
      "string SystemName",
      "string CreationClassName",
      "string Name",
      "uint16 ProtocolIFType",
      "string NameFormat",
      "uint16 ProtocolType",
      "string OtherTypeDescription",
      "string IPv4Address",
      "string SubnetMask",
      "string IPv6Address",
      "uint16 IPVersionSupport",
      "string Caption",
      "string Description",
      "string Status",
      "string ElementName",
      "uint16 EnabledState",
      "string OtherEnabledState",
      "uint16 RequestedState",
      "uint16 EnabledDefault"}},

    {"IPNetworkConnection",
     "CIM_IPNetworkConnection CIM_ServiceAccessPoint CIM_EnabledLogicalElement CIM_LogicalElement "
     "CIM_ManagedSystemElement CIM_ManagedElement",
     inSystem,
     {"string SystemCreationClassName", "string CreationClassName", "string ElementName", "string InstanceID",
      "string Name", "string Status", "string SystemName", "string Description"}},

    {"IPConfigurationService",
     "CIM_IPConfigurationService CIM_Service CIM_EnabledLogicalElement CIM_LogicalElement "
     "CIM_ManagedSystemElement CIM_ManagedElement",
     inSystem,
     {"string SystemCreationClassName", "string CreationClassName", "string ElementName", "string InstanceID",
      "string Name", "string Status", "string SystemName", "string Description",
      "uint16 AvailableRequestedStates[]"},
     {"uint32 ApplySettingToIPNetworkConnection(CIM_IPNetworkConnection REF IPNetworkConnection, string "
      "Mode, "
      "CIM_IPAssignmentSettingData REF SettingData)",
      "uint32 RequestStateChange(string RequestedState)"}},

    {"ExtendedStaticIPAssignmentSettingData",
     "CIM_ExtendedStaticIPAssignmentSettingData CIM_IPAssignmentSettingData CIM_SettingData "
     "CIM_ManagedElement",
     instanceId,
     {"string CreationClassName", "string Name", "string Status", "string Caption", "string Description",
      "string InstanceID", "uint16 ChangeableType", "string GatewayAddresses[]", "string IPAddresses[]",
      "string SubnetMasks[]", "uint16 AddressOrigin", "uint16 ProtocolIFType", "string ConfigurationName"}},

    {"DHCPSettingData",
     "CIM_DHCPSettingData CIM_IPAssignmentSettingData CIM_SettingData CIM_ManagedElement",
     instanceId,
     {"string CreationClassName", "string Name", "string ConfigurationName", "string Status",
      "uint16 AddressOrigin", "uint16 ProtocolIFType", "string InstanceID", "string Caption",
      "string Description", "uint16 ChangeableType"}},

    {"IPAssignmentSettingData",
     "CIM_IPAssignmentSettingData CIM_SettingData CIM_ManagedElement",
     instanceId,
     {"string ConfigurationName", "string InstanceID", "uint16 AddressOrigin", "uint16 ProtocolIFType",
      "uint16 ChangeableType"}},

    {"IPVersionSettingData", "CIM_IPVersionSettingData CIM_SettingData CIM_ManagedElement", instanceId, {}},
};

struct AssociationRow {
    const char *name; // after ZT_Marovelton_
    const char *chain;
    const char *leftRole;
    const char *leftClass;
    const char *rightRole;
    Texts rightClasses;
    const char *rightReference; // what the right reference is declared as: the class or a common ancestor
    Texts otherProperties = {};
};

const AssociationRow associations[] = {
    {"TestPattern",
     "",
     "TestPatternGenerator",
     "ZT_Marovelton_TestPatternGenerator",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     "ZT_Marovelton_Monitor"},
    {"PIPFunctionality",
     "",
     "PictureInPicture",
     "ZT_Marovelton_PictureInPicture",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     "ZT_Marovelton_Monitor"},
    {"OnScreenDisplay",
     "",
     "OSDMenuAndMessages",
     "ZT_Marovelton_OSDMenuAndMessages",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     "ZT_Marovelton_Monitor"},
    {"Management",
     "",
     "DisplayManagement",
     "ZT_Marovelton_DisplayManagement",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     "ZT_Marovelton_Monitor"},
    {"InputSource",
     "",
     "VideoInput",
     "ZT_Marovelton_VideoInput",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     "ZT_Marovelton_Monitor"},
    {"ImageAdjustmentModel",
     "",
     "ImageAdjustment",
     "ZT_Marovelton_ImageAdjustment",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     "ZT_Marovelton_Monitor"},
    {"ColorModel",
     "",
     "ColorSpace",
     "ZT_Marovelton_ColorSpace",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     "ZT_Marovelton_Monitor"},
    {"Button",
     "CIM_Dependency",
     "Antecedent",
     "ZT_Marovelton_Monitor",
     "Dependent",
     {"ZT_Marovelton_FunctionButton", "ZT_Marovelton_BezelButton"},
     "CIM_LogicalElement"},
    {"SystemDevice",
     "CIM_SystemDevice CIM_SystemComponent CIM_Component",
     "GroupComponent",
     "Linux_ComputerSystem",
     "PartComponent",
     {"ZT_Marovelton_Monitor"},
     "ZT_Marovelton_Monitor"},
    {"ElementSettingData",
     "CIM_ElementSettingData",
     "ManagedElement",
     "ZT_Marovelton_IPNetworkConnection",
     "SettingData",
     {"ZT_Marovelton_IPAssignmentSettingData", "ZT_Marovelton_DHCPSettingData",
      "ZT_Marovelton_ExtendedStaticIPAssignmentSettingData"},
     "CIM_IPAssignmentSettingData",
     {"uint16 IsCurrent", "uint16 IsNext"}},
    {"HostedAccessPoint",
     "CIM_HostedAccessPoint CIM_HostedDependency CIM_Dependency",
     "Antecedent",
     "Linux_ComputerSystem",
     "Dependent",
     {"ZT_Marovelton_IPNetworkConnection"},
     "ZT_Marovelton_IPNetworkConnection"},
    {"ProvidesEndpoint",
     "CIM_ProvidesEndpoint CIM_ServiceAccessBySAP CIM_Dependency",
     "Dependent",
     "ZT_Marovelton_IPProtocolEndpoint",
     "Antecedent",
     {"ZT_Marovelton_RemoteManagementService", "ZT_Marovelton_WSManagementService"},
     "CIM_Service"},
    {"SAPSAPDependency",
     "CIM_SAPSAPDependency CIM_Dependency",
     "Antecedent",
     "ZT_Marovelton_IPNetworkConnection",
     "Dependent",
     {"ZT_Marovelton_IPProtocolEndpoint"},
     "ZT_Marovelton_IPProtocolEndpoint"},
    {"OrderedComponent",
     "CIM_OrderedComponent CIM_Component",
     "GroupComponent",
     "ZT_Marovelton_IPAssignmentSettingData",
     "PartComponent",
     {"ZT_Marovelton_DHCPSettingData", "ZT_Marovelton_ExtendedStaticIPAssignmentSettingData"},
     "CIM_IPAssignmentSettingData",
     {"uint64 AssignedSequence"}},
};

const cim::ClassRepository &classes()
{
    return mof::deskClasses();
}

const cim::Class *findOurs(const char *name)
{
    return classes().find(std::string("ZT_Marovelton_") + name);
}

/** The superclasses from the nearest to the root, with blanks between them. */
std::string chainOf(const cim::Class &klass)
{
    std::string chain;
    for (const cim::Class *next = classes().find(klass.superclass); next != nullptr;
         next = classes().find(next->superclass)) {
        chain += (chain.empty() ? "" : " ") + next->name;
    }
    return chain;
}

Texts keyNames(const cim::Class &klass)
{
    Texts names;
    for (const cim::Property *key : classes().keys(klass)) {
        names.push_back(key->name);
    }
    return names;
}

TEST(Classes, EachThatIsRegisteredHasARow)
{
    Texts rows;
    for (const ClassRow &row : instanceClasses) {
        rows.push_back(std::string("ZT_Marovelton_") + row.name);
    }
    for (const AssociationRow &row : associations) {
        rows.push_back(std::string("ZT_Marovelton_") + row.name);
    }
    EXPECT_EQ(rows.size(), 33u);
    EXPECT_THAT(rows, UnorderedElementsAreArray(mof::registeredClasses()));
}

TEST(Classes, EachStandsInItsOwnFileWhichIsIncludedOnce)
{
    const std::string all = mof::fileText("ZT_Marovelton.mof");
    std::size_t files = 0;
    for (const auto &entry : std::filesystem::directory_iterator(MOF_DIR)) {
        const std::string name = entry.path().stem().string();
        if (entry.path().extension() != ".mof" || !name.starts_with("ZT_Marovelton_")) {
            continue;
        }
        ++files;
        const cim::Class *klass = classes().find(name);
        ASSERT_NE(klass, nullptr) << name;
        EXPECT_EQ(std::filesystem::path(klass->definedAt.substr(0, klass->definedAt.rfind(':'))).filename(),
                  entry.path().filename());
        const std::string include = "#pragma include (\"" + name + ".mof\")\n";
        const std::size_t place = all.find(include);
        EXPECT_NE(place, std::string::npos) << name;
        EXPECT_EQ(all.find(include, place + 1), std::string::npos) << name;
    }
    EXPECT_EQ(files, 33u);
}

TEST(Classes, DeriveFromTheStandardOnes)
{
    for (const ClassRow &row : instanceClasses) {
        const cim::Class *klass = findOurs(row.name);
        ASSERT_NE(klass, nullptr) << row.name;
        EXPECT_EQ(chainOf(*klass), row.chain) << row.name;
        EXPECT_FALSE(klass->isAssociation) << row.name;
        EXPECT_FALSE(klass->isAbstract) << row.name;
    }
    for (const AssociationRow &row : associations) {
        const cim::Class *klass = findOurs(row.name);
        ASSERT_NE(klass, nullptr) << row.name;
        EXPECT_EQ(chainOf(*klass), row.chain) << row.name;
        EXPECT_TRUE(klass->isAssociation) << row.name;
        EXPECT_FALSE(klass->isAbstract) << row.name;
    }
    const cim::Class *system = classes().find("Linux_ComputerSystem");
    ASSERT_NE(system, nullptr);
    EXPECT_EQ(chainOf(*system), "CIM_UnitaryComputerSystem CIM_ComputerSystem CIM_System "
                                "CIM_AllocatedLogicalElement CIM_EnabledLogicalElement CIM_LogicalElement "
                                "CIM_ManagedSystemElement CIM_ManagedElement");
    EXPECT_THAT(keyNames(*system), UnorderedElementsAreArray({"CreationClassName", "Name"}));
}

TEST(Classes, HaveTheKeysOfTheirObjectPaths)
{
    for (const ClassRow &row : instanceClasses) {
        const cim::Class *klass = findOurs(row.name);
        ASSERT_NE(klass, nullptr) << row.name;
        EXPECT_THAT(keyNames(*klass), UnorderedElementsAreArray(row.keys)) << row.name;
        for (const cim::Property *key : classes().keys(*klass)) {
            EXPECT_EQ(mof::describe(*key), "string " + key->name) << row.name;
        }
    }
    for (const AssociationRow &row : associations) {
        const cim::Class *klass = findOurs(row.name);
        ASSERT_NE(klass, nullptr) << row.name;
        EXPECT_THAT(keyNames(*klass), UnorderedElementsAreArray({row.leftRole, row.rightRole})) << row.name;
    }
}

TEST(Classes, DeclareWhatTheProvidersSet)
{
    for (const ClassRow &row : instanceClasses) {
        const cim::Class *klass = findOurs(row.name);
        ASSERT_NE(klass, nullptr) << row.name;
        for (const std::string &expected : row.properties) {
            const std::string name = expected.substr(expected.find(' ') + 1);
            const cim::Property *property = klass->findProperty(name.substr(0, name.find('[')));
            ASSERT_NE(property, nullptr) << row.name << " " << expected;
            EXPECT_EQ(mof::describe(*property), expected) << row.name;
        }
    }
}

// What a class adds to its superclasses is what its provider sets, no more, and in the provider's order.
TEST(Classes, AddNothingThatTheProvidersDoNotSet)
{
    for (const ClassRow &row : instanceClasses) {
        const cim::Class *klass = findOurs(row.name);
        ASSERT_NE(klass, nullptr) << row.name;
        Texts added;
        for (const cim::Property &property : klass->properties) {
            if (property.classOrigin == klass->name) {
                added.push_back(mof::describe(property));
            } else if (!property.propagated) {
                EXPECT_THAT(row.properties, testing::Contains(mof::describe(property))) << row.name;
            }
        }
        const cim::Class *parent = classes().find(klass->superclass);
        ASSERT_NE(parent, nullptr) << row.name;
        Texts expected;
        for (const std::string &property : row.properties) {
            const std::string name = property.substr(property.find(' ') + 1);
            if (parent->findProperty(name.substr(0, name.find('['))) == nullptr) {
                expected.push_back(property);
            }
        }
        EXPECT_THAT(added, ElementsAreArray(expected)) << row.name;
    }
}

TEST(Classes, HaveTheMethodsOfTheProviders)
{
    for (const ClassRow &row : instanceClasses) {
        const cim::Class *klass = findOurs(row.name);
        ASSERT_NE(klass, nullptr) << row.name;
        Texts declared;
        for (const cim::Method &method : klass->methods) {
            if (!method.propagated) {
                declared.push_back(mof::describe(method));
                EXPECT_FALSE(method.isStatic) << row.name << "." << method.name;
                for (const cim::Parameter &parameter : method.parameters) {
                    EXPECT_TRUE(cim::hasQualifier(parameter.qualifiers, "In")) << method.name;
                    EXPECT_FALSE(parameter.isOut) << method.name;
                }
            }
        }
        EXPECT_THAT(declared, UnorderedElementsAreArray(row.methods)) << row.name;
    }
    for (const AssociationRow &row : associations) {
        const cim::Class *klass = findOurs(row.name);
        ASSERT_NE(klass, nullptr) << row.name;
        EXPECT_THAT(klass->methods, IsEmpty()) << row.name;
    }
}

TEST(Classes, AssociationsReferToTheClassesOfTheirEnds)
{
    for (const AssociationRow &row : associations) {
        const cim::Class *klass = findOurs(row.name);
        ASSERT_NE(klass, nullptr) << row.name;
        const cim::Property *left = klass->findProperty(row.leftRole);
        const cim::Property *right = klass->findProperty(row.rightRole);
        ASSERT_NE(left, nullptr) << row.name;
        ASSERT_NE(right, nullptr) << row.name;
        EXPECT_EQ(mof::describe(*left), std::string(row.leftClass) + " REF " + row.leftRole);
        EXPECT_EQ(mof::describe(*right), std::string(row.rightReference) + " REF " + row.rightRole);
        for (const std::string &end : row.rightClasses) {
            EXPECT_TRUE(classes().isA(end, row.rightReference)) << row.name << " " << end;
        }
        for (const std::string &expected : row.otherProperties) {
            const cim::Property *property = klass->findProperty(expected.substr(expected.find(' ') + 1));
            ASSERT_NE(property, nullptr) << row.name << " " << expected;
            EXPECT_EQ(mof::describe(*property), expected) << row.name;
        }
        for (const cim::Property &property : klass->properties) {
            if (property.type != cim::Type::reference) {
                EXPECT_NE(property.classOrigin, klass->name) << row.name << " adds " << property.name;
            }
        }
    }
}

/** The parts of an association's ends: how many instances of each there are for one at the other end. */
struct CardinalityRow {
    const char *name;
    const char *role;
    const char *count;
};

TEST(Classes, AssociationsTellHowManyPartsThereAre)
{
    constexpr CardinalityRow rows[] = {
        {"TestPattern", "TestPatternGenerator", "1"},
        {"PIPFunctionality", "PictureInPicture", "1"},
        {"OnScreenDisplay", "OSDMenuAndMessages", "1"},
        {"Management", "DisplayManagement", "1"},
        {"InputSource", "VideoInput", "3"},
        {"ImageAdjustmentModel", "ImageAdjustment", "1"},
        {"ColorModel", "ColorSpace", "7"},
        {"ColorModel", "Monitor", "1"},
        {"Button", "Antecedent", "1"},
        {"Button", "Dependent", "5"},
        {"SystemDevice", "GroupComponent", "1"},
        {"SystemDevice", "PartComponent", "1"},
        {"HostedAccessPoint", "Antecedent", "1"},
        {"HostedAccessPoint", "Dependent", "1"},
        {"ElementSettingData", "ManagedElement", "1"},
        {"ElementSettingData", "SettingData", "3"},
        {"OrderedComponent", "GroupComponent", "1"},
        {"OrderedComponent", "PartComponent", "2"},
    };
    for (const CardinalityRow &row : rows) {
        const cim::Class *klass = findOurs(row.name);
        ASSERT_NE(klass, nullptr) << row.name;
        const cim::Property *property = klass->findProperty(row.role);
        ASSERT_NE(property, nullptr) << row.name << "." << row.role;
        for (const char *qualifier : {"Min", "Max"}) {
            const cim::Qualifier *found = cim::findQualifier(property->qualifiers, qualifier);
            ASSERT_NE(found, nullptr) << row.name << "." << row.role << " " << qualifier;
            EXPECT_EQ(found->value.text(), row.count) << row.name << "." << row.role << " " << qualifier;
        }
    }
}

struct ValueRow {
    const char *name;
    const char *element; // "Property" or "Method.Parameter"
    Texts map;
    Texts values;
};

TEST(Classes, NameTheValuesThatHaveNames)
{
    const Texts inputs = {"Display Port1", "Display Port2", "HDMI"};
    const Texts modes = {"Off", "Picture in Picture", "Picture beside Picture"};
    const Texts sizes = {"Maximum", "Minimum", "Default"};
    const ValueRow rows[] = {
        {"Monitor", "InputSource", {"0", "1", "2"}, inputs},
        {"PictureInPicture", "PIPMode", {"0", "1", "2"}, modes},
        {"PictureInPicture", "SetPIPMode.PIPMode", {"0", "1", "2"}, modes},
        {"PictureInPicture", "PIPSize", {"0", "1", "2"}, sizes},
        {"PictureInPicture", "SetPIPSize.PIPSize", {"0", "1", "2"}, sizes},
        {"PictureInPicture", "PIPInputSource", {"0", "1", "2"}, inputs},
        {"RemoteManagementService", "EnabledState", {"2", "3"}, {"Enabled", "Disabled"}},
        {"RemoteManagementService", "AvailableRequestedStates", {"2", "3"}, {"Enabled", "Disabled"}},
        {"RemoteManagementService", "RequestStateChange.RequestedState", {"2", "3"}, {"Enabled", "Disabled"}},
        {"WSManagementService", "EnabledState", {"2", "3"}, {"Enabled", "Disabled"}},
        {"WSManagementService", "RequestStateChange.RequestedState", {"2", "3"}, {"Enabled", "Disabled"}},
        {"IPProtocolEndpoint", "EnabledState", {"0", "2", "3"}, {"Unknown", "Enabled", "Disabled"}},
        {"BezelButton", "ButtonAutoFadeMode", {"0", "1"}, {"Off", "On"}},
        {"ElementSettingData", "IsCurrent", {"1", "2"}, {"Is Current", "Is Not Current"}},
        {"ElementSettingData", "IsNext", {"2"}, {"Is Not Next"}},
    };
    for (const ValueRow &row : rows) {
        const cim::Class *klass = findOurs(row.name);
        ASSERT_NE(klass, nullptr) << row.name;
        const std::string element = row.element;
        const std::size_t dot = element.find('.');
        const cim::Element *found = nullptr;
        if (dot == std::string::npos) {
            found = klass->findProperty(element);
        } else if (const cim::Method *method = klass->findMethod(element.substr(0, dot))) {
            found = method->findParameter(element.substr(dot + 1));
        }
        ASSERT_NE(found, nullptr) << row.name << " " << element;
        const cim::Qualifier *map = cim::findQualifier(found->qualifiers, "ValueMap");
        const cim::Qualifier *values = cim::findQualifier(found->qualifiers, "Values");
        ASSERT_NE(map, nullptr) << row.name << " " << element;
        ASSERT_NE(values, nullptr) << row.name << " " << element;
        EXPECT_EQ(map->value.items, row.map) << row.name << " " << element;
        EXPECT_EQ(values->value.items, row.values) << row.name << " " << element;
    }
}

void expectDescribed(const cim::Qualifiers &qualifiers, const std::string &what)
{
    const cim::Qualifier *description = cim::findQualifier(qualifiers, "Description");
    ASSERT_NE(description, nullptr) << what;
    EXPECT_GT(description->value.text().size(), 5u) << what;
    EXPECT_EQ(description->value.text().find("  "), std::string::npos)
        << what << ": " << description->value.text();
    const cim::Qualifier *map = cim::findQualifier(qualifiers, "ValueMap");
    const cim::Qualifier *values = cim::findQualifier(qualifiers, "Values");
    if (values != nullptr) {
        ASSERT_NE(map, nullptr) << what;
        EXPECT_EQ(map->value.items.size(), values->value.items.size()) << what;
    }
}

TEST(Classes, DescribeEverything)
{
    for (const cim::Class *klass : classes().all()) {
        expectDescribed(klass->qualifiers, klass->name);
        EXPECT_NE(cim::findQualifier(klass->qualifiers, "Version"), nullptr) << klass->name;
        for (const cim::Property &property : klass->properties) {
            expectDescribed(property.qualifiers, klass->name + "." + property.name);
        }
        for (const cim::Method &method : klass->methods) {
            expectDescribed(method.qualifiers, klass->name + "." + method.name);
            for (const cim::Parameter &parameter : method.parameters) {
                expectDescribed(parameter.qualifiers, method.name + "." + parameter.name);
            }
        }
    }
}

// The reader refuses undeclared qualifiers; this is the other direction, and that the declarations are the
// standard's.
TEST(Classes, EveryQualifierThatIsDeclaredIsUsed)
{
    std::set<std::string> used;
    const auto note = [&](const cim::Qualifiers &qualifiers) {
        for (const cim::Qualifier &qualifier : qualifiers) {
            used.insert(qualifier.name);
        }
    };
    for (const cim::Class *klass : classes().all()) {
        note(klass->qualifiers);
        for (const cim::Property &property : klass->properties) {
            note(property.qualifiers);
        }
        for (const cim::Method &method : klass->methods) {
            note(method.qualifiers);
            for (const cim::Parameter &parameter : method.parameters) {
                note(parameter.qualifiers);
            }
        }
    }
    const std::set<std::string> standard = {"Abstract",
                                            "Aggregate",
                                            "Aggregation",
                                            "ArrayType",
                                            "Association",
                                            "Composition",
                                            "Counter",
                                            "Deprecated",
                                            "Description",
                                            "EmbeddedInstance",
                                            "EmbeddedObject",
                                            "In",
                                            "Key",
                                            "Max",
                                            "MaxLen",
                                            "MaxValue",
                                            "Min",
                                            "MinValue",
                                            "ModelCorrespondence",
                                            "Override",
                                            "Propagated",
                                            "PUnit",
                                            "Required",
                                            "ValueMap",
                                            "Values",
                                            "Version",
                                            "Weak",
                                            "Write"};
    std::set<std::string> declared;
    for (const cim::QualifierDeclaration *qualifier : classes().qualifiers()) {
        declared.insert(qualifier->name);
    }
    EXPECT_EQ(declared, standard);
    EXPECT_EQ(used, standard);
}

struct DefaultRow {
    const char *klass;
    const char *property;
    const char *value;
};

TEST(Classes, KeepTheDefaultValuesOfTheStandard)
{
    constexpr DefaultRow rows[] = {
        {"CIM_EnabledLogicalElement", "EnabledState", "5"},
        {"CIM_EnabledLogicalElement", "RequestedState", "12"},
        {"CIM_EnabledLogicalElement", "EnabledDefault", "2"},
        {"CIM_IPProtocolEndpoint", "ProtocolIFType", "4096"},
        {"CIM_IPAssignmentSettingData", "AddressOrigin", "0"},
        {"CIM_ExtendedStaticIPAssignmentSettingData", "AddressOrigin", "0"},
        {"CIM_DHCPSettingData", "AddressOrigin", "4"},
        {"ZT_Marovelton_DHCPSettingData", "AddressOrigin", "4"},
    };
    for (const DefaultRow &row : rows) {
        const cim::Class *klass = classes().find(row.klass);
        ASSERT_NE(klass, nullptr) << row.klass;
        const cim::Property *property = klass->findProperty(row.property);
        ASSERT_NE(property, nullptr) << row.klass;
        EXPECT_FALSE(property->defaultValue.isNull) << row.klass;
        EXPECT_EQ(property->defaultValue.text(), row.value) << row.klass;
    }
    const cim::Class *monitor = findOurs("Monitor");
    ASSERT_NE(monitor, nullptr);
    EXPECT_TRUE(monitor->findProperty("DisplayMode")->defaultValue.isNull);
}

// The static setting data are the one instance that clients may modify.
TEST(Classes, MarkTheAddressesAsWritable)
{
    const cim::Class *klass = findOurs("ExtendedStaticIPAssignmentSettingData");
    ASSERT_NE(klass, nullptr);
    for (const char *name : {"IPAddresses", "SubnetMasks", "GatewayAddresses"}) {
        const cim::Property *property = klass->findProperty(name);
        ASSERT_NE(property, nullptr) << name;
        EXPECT_TRUE(cim::hasQualifier(property->qualifiers, "Write")) << name;
    }
    EXPECT_FALSE(cim::hasQualifier(klass->findProperty("AddressOrigin")->qualifiers, "Write"));
}

// Where the object manager brings the standard schema, desk.mof is not needed; this one must not depend on
// it.
TEST(Classes, NeedOnlyWhatTheDeskFileBrings)
{
    cim::ClassRepository repository;
    const cim::MofResult result =
        cim::readMofFiles(repository, {MOF_DIR "/qualifiers.mof", MOF_DIR "/CIM_superclasses.mof",
                                       MOF_DIR "/Linux_ComputerSystem.mof", MOF_DIR "/ZT_Marovelton.mof"});
    EXPECT_THAT(result.messages, IsEmpty());
    EXPECT_EQ(repository.size(), classes().size());
}

TEST(Helpers, TellWhatDiffers)
{
    EXPECT_EQ(mof::checkProperty("ZT_Marovelton_Monitor", "DisplayMode", 0x0090), "");
    EXPECT_EQ(mof::checkProperty("ZT_Marovelton_Monitor", "Caption", 0x1700), "");
    EXPECT_EQ(mof::checkProperty("ZT_Marovelton_Monitor", "Caption", 0x1600), "");
    EXPECT_EQ(mof::checkProperty("ZT_Marovelton_PictureInPicture", "PIPMode", 0x2090), "");
    EXPECT_EQ(
        mof::checkProperty("ZT_Marovelton_ExtendedStaticIPAssignmentSettingData", "IPAddresses", 0x3700), "");
    EXPECT_EQ(mof::checkProperty("ZT_Marovelton_PictureInPicture", "PIPMode", 0x0090),
              "ZT_Marovelton_PictureInPicture.PIPMode has CMPI type 0x2090, not 0x0090");
    EXPECT_EQ(mof::checkProperty("ZT_Marovelton_Monitor", "displaymode", 0x0090),
              "the property is spelled DisplayMode, not displaymode");
    EXPECT_EQ(mof::checkProperty("ZT_Marovelton_Monitor", "SerialNumber", 0x1600),
              "no property SerialNumber in ZT_Marovelton_Monitor");
    EXPECT_EQ(mof::checkProperty("ZT_Marovelton_Nothing", "Name", 0x1600), "no class ZT_Marovelton_Nothing");
    EXPECT_EQ(mof::checkKeys("ZT_Marovelton_ColorSpace", {"InstanceID"}), "");
    EXPECT_EQ(mof::checkKeys("ZT_Marovelton_Monitor",
                             {"SystemName", "DeviceID", "CreationClassName", "SystemCreationClassName"}),
              "");
    EXPECT_EQ(mof::checkKeys("ZT_Marovelton_ColorSpace", {"Name"}),
              "the keys of ZT_Marovelton_ColorSpace are (InstanceID), not (Name)");
    EXPECT_EQ(mof::checkMethod("ZT_Marovelton_OSDMenuAndMessages", "SetOSDPosition", 0x0080,
                               {"OSDPositionY", "OSDPositionX"}),
              "");
    EXPECT_EQ(mof::checkMethod("ZT_Marovelton_OSDMenuAndMessages", "SetOSDPosition", 0x00a0,
                               {"OSDPositionX", "OSDPositionY"}),
              "ZT_Marovelton_OSDMenuAndMessages.SetOSDPosition returns uint8");
    EXPECT_EQ(mof::checkMethod("ZT_Marovelton_Monitor", "FactoryReset", 0x00a0, {"Sure"}),
              "the parameters of ZT_Marovelton_Monitor.FactoryReset are (), not (Sure)");
    EXPECT_EQ(mof::checkMethod("ZT_Marovelton_Monitor", "factoryreset", 0x00a0, {}),
              "the method is spelled FactoryReset, not factoryreset");
    EXPECT_EQ(mof::checkMethod("ZT_Marovelton_Monitor", "Reboot", 0x00a0, {}),
              "no method Reboot in ZT_Marovelton_Monitor");
}

} // namespace
