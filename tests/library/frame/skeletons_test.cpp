// SPDX-License-Identifier: Apache-2.0
// What all 33 classes have in common: their factories, their Cleanup and the operations that none of them
// offers.

#include "checks.h"

// One of them has the name of a record.
namespace tested
{

METHOD_CLASS(Monitor);
METHOD_CLASS(DisplayManagement);
METHOD_CLASS(VideoInput);
METHOD_CLASS(ImageAdjustment);
METHOD_CLASS(PictureInPicture);
METHOD_CLASS(OSDMenuAndMessages);
METHOD_CLASS(ColorSpace);
METHOD_CLASS(BezelButton);
METHOD_CLASS(FunctionButton);
METHOD_CLASS(TestPatternGenerator);
METHOD_CLASS(RemoteManagementService);
METHOD_CLASS(WSManagementService);
METHOD_CLASS(IPProtocolEndpoint);
METHOD_CLASS(IPNetworkConnection);
METHOD_CLASS(IPConfigurationService);
METHOD_CLASS(ExtendedStaticIPAssignmentSettingData);
METHOD_CLASS(DHCPSettingData);
METHOD_CLASS(IPVersionSettingData);
METHOD_CLASS(IPAssignmentSettingData);
ASSOCIATION_CLASS(TestPattern);
ASSOCIATION_CLASS(PIPFunctionality);
ASSOCIATION_CLASS(OnScreenDisplay);
ASSOCIATION_CLASS(Management);
ASSOCIATION_CLASS(InputSource);
ASSOCIATION_CLASS(ImageAdjustmentModel);
ASSOCIATION_CLASS(ColorModel);
ASSOCIATION_CLASS(Button);
ASSOCIATION_CLASS(SystemDevice);
ASSOCIATION_CLASS(ElementSettingData);
ASSOCIATION_CLASS(HostedAccessPoint);
ASSOCIATION_CLASS(ProvidesEndpoint);
ASSOCIATION_CLASS(SAPSAPDependency);
ASSOCIATION_CLASS(OrderedComponent);

} // namespace tested

TEST(Skeletons, InstanceAndMethodProviders)
{
    const TestedClass *const classes[] = {
        &tested::Monitor,
        &tested::DisplayManagement,
        &tested::VideoInput,
        &tested::ImageAdjustment,
        &tested::PictureInPicture,
        &tested::OSDMenuAndMessages,
        &tested::ColorSpace,
        &tested::BezelButton,
        &tested::FunctionButton,
        &tested::TestPatternGenerator,
        &tested::RemoteManagementService,
        &tested::WSManagementService,
        &tested::IPProtocolEndpoint,
        &tested::IPNetworkConnection,
        &tested::IPConfigurationService,
        &tested::DHCPSettingData,
        &tested::IPVersionSettingData,
        &tested::IPAssignmentSettingData,
    };
    EXPECT_EQ(std::size(classes), 18u);
    for (const TestedClass *each : classes) {
        checkSkeleton(*each);
    }
    // The one class whose instance can be modified.
    checkSkeleton(tested::ExtendedStaticIPAssignmentSettingData, true);
}

TEST(Skeletons, InstanceAndAssociationProviders)
{
    const TestedClass *const classes[] = {
        &tested::TestPattern,       &tested::PIPFunctionality,
        &tested::OnScreenDisplay,   &tested::Management,
        &tested::InputSource,       &tested::ImageAdjustmentModel,
        &tested::ColorModel,        &tested::Button,
        &tested::SystemDevice,      &tested::ElementSettingData,
        &tested::HostedAccessPoint, &tested::ProvidesEndpoint,
        &tested::SAPSAPDependency,  &tested::OrderedComponent,
    };
    EXPECT_EQ(std::size(classes), 14u);
    for (const TestedClass *each : classes) {
        checkSkeleton(*each);
    }
}

TEST(Skeletons, EveryClassHasTablesOfItsOwn)
{
    std::vector<const void *> tables;
    for (const TestedClass *each :
         {&tested::Monitor, &tested::ColorSpace, &tested::Button, &tested::ColorModel, &tested::VideoInput}) {
        tables.push_back(each->createInstanceMI(&broker, nullptr, nullptr)->ft);
    }
    for (size_t i = 0; i < tables.size(); ++i) {
        for (size_t other = 0; other < i; ++other) {
            EXPECT_NE(tables[i], tables[other]);
        }
    }
}
