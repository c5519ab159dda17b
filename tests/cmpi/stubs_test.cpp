// SPDX-License-Identifier: Apache-2.0
// The factories that the stub macros make, in C++ (here, without a hook) and in C (provider.c, with one).

#include "provider.h"

#include <type_traits>

#include <gtest/gtest.h>

#include "operations.h"

static const CMPIBroker *theBroker = nullptr;

CMInstanceMIStub(Dummy, Cxx_Sample, theBroker, CMNoHook)
    CMAssociationMIStub(Dummy, Cxx_Sample, theBroker, CMNoHook)
        CMMethodMIStub(Dummy, Cxx_Sample, theBroker, CMNoHook)
            CMPropertyMIStub(Dummy, Cxx_Sample, theBroker, CMNoHook)
                CMIndicationMIStub(Dummy, Cxx_Sample, theBroker, CMNoHook)

                    namespace
{

    const CMPIBroker *cxxProviderBroker()
    {
        return theBroker;
    }

    // Calls a factory with a status that holds something, then without one: the broker is kept, the status is
    // left alone, and there is one MI. Returns it.
    template <typename MI>
    MI *makeMi(MI * (*factory)(const CMPIBroker *, const CMPIContext *, CMPIStatus *),
               const CMPIBroker *(*kept)())
    {
        const CMPIBroker first = {};
        const CMPIBroker second = {};
        const CMPIContext context = {};
        CMPIString message = {};
        CMPIStatus status = {CMPI_RC_NEVER_UNLOAD, &message};
        MI *const mi = factory(&first, &context, &status);
        EXPECT_EQ(kept(), &first);
        EXPECT_EQ(status.rc, CMPI_RC_NEVER_UNLOAD);
        EXPECT_EQ(status.msg, &message);
        EXPECT_EQ(factory(&second, nullptr, nullptr), mi);
        EXPECT_EQ(kept(), &second);
        return mi;
    }

    // What every MI tells of itself.
    template <typename MI>
    void checkMi(const MI *mi, const char *name)
    {
        ASSERT_NE(mi, nullptr);
        EXPECT_EQ(mi->hdl, nullptr);
        ASSERT_NE(mi->ft, nullptr);
        EXPECT_EQ(mi->ft->ftVersion, 200);
        EXPECT_EQ(mi->ft->miVersion, 200);
        EXPECT_STREQ(mi->ft->miName, name);
    }

    void checkInstanceMi(CMPIInstanceMI * mi, const char *name)
    {
        ASSERT_NO_FATAL_FAILURE(checkMi(mi, name));
        const CMPIInstanceMIFT &ft = *mi->ft;
        EXPECT_EQ(ft.cleanup(mi, nullptr, 0).rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(ft.enumerateInstanceNames(mi, nullptr, nullptr, nullptr).rc, CMPI_RC_ERR_ACCESS_DENIED);
        EXPECT_EQ(ft.enumerateInstances(mi, nullptr, nullptr, nullptr, nullptr).rc,
                  CMPI_RC_ERR_INVALID_NAMESPACE);
        EXPECT_EQ(ft.getInstance(mi, nullptr, nullptr, nullptr, nullptr).rc, CMPI_RC_ERR_INVALID_PARAMETER);
        EXPECT_EQ(ft.createInstance(mi, nullptr, nullptr, nullptr, nullptr).rc, CMPI_RC_ERR_INVALID_CLASS);
        EXPECT_EQ(ft.modifyInstance(mi, nullptr, nullptr, nullptr, nullptr, nullptr).rc,
                  CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(ft.deleteInstance(mi, nullptr, nullptr, nullptr).rc, CMPI_RC_ERR_NOT_SUPPORTED);
        EXPECT_EQ(ft.execQuery(mi, nullptr, nullptr, nullptr, nullptr, nullptr).rc,
                  CMPI_RC_ERR_INVALID_QUERY);
    }

    void checkAssociationMi(CMPIAssociationMI * mi, const char *name)
    {
        ASSERT_NO_FATAL_FAILURE(checkMi(mi, name));
        const CMPIAssociationMIFT &ft = *mi->ft;
        EXPECT_EQ(ft.cleanup(mi, nullptr, 0).rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(
            ft.associators(mi, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr).rc,
            CMPI_RC_ERR_ACCESS_DENIED);
        EXPECT_EQ(ft.associatorNames(mi, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr).rc,
                  CMPI_RC_ERR_INVALID_NAMESPACE);
        EXPECT_EQ(ft.references(mi, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr).rc,
                  CMPI_RC_ERR_INVALID_PARAMETER);
        EXPECT_EQ(ft.referenceNames(mi, nullptr, nullptr, nullptr, nullptr, nullptr).rc,
                  CMPI_RC_ERR_INVALID_CLASS);
    }

    void checkMethodMi(CMPIMethodMI * mi, const char *name)
    {
        ASSERT_NO_FATAL_FAILURE(checkMi(mi, name));
        EXPECT_EQ(mi->ft->cleanup(mi, nullptr, 0).rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(mi->ft->invokeMethod(mi, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr).rc,
                  CMPI_RC_ERR_ACCESS_DENIED);
    }

    void checkPropertyMi(CMPIPropertyMI * mi, const char *name)
    {
        ASSERT_NO_FATAL_FAILURE(checkMi(mi, name));
        const CMPIPropertyMIFT &ft = *mi->ft;
        EXPECT_EQ(ft.cleanup(mi, nullptr, 0).rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(ft.setProperty(mi, nullptr, nullptr, nullptr, nullptr, CMPIData{}).rc,
                  CMPI_RC_ERR_ACCESS_DENIED);
        EXPECT_EQ(ft.getProperty(mi, nullptr, nullptr, nullptr, nullptr).rc, CMPI_RC_ERR_INVALID_NAMESPACE);
        EXPECT_EQ(ft.setPropertyWithOrigin(mi, nullptr, nullptr, nullptr, nullptr, CMPIData{}, nullptr).rc,
                  CMPI_RC_ERR_INVALID_PARAMETER);
    }

    void checkIndicationMi(CMPIIndicationMI * mi, const char *name)
    {
        ASSERT_NO_FATAL_FAILURE(checkMi(mi, name));
        const CMPIIndicationMIFT &ft = *mi->ft;
        EXPECT_EQ(ft.cleanup(mi, nullptr, 0).rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(ft.authorizeFilter(mi, nullptr, nullptr, nullptr, nullptr, nullptr).rc,
                  CMPI_RC_ERR_ACCESS_DENIED);
        EXPECT_EQ(ft.mustPoll(mi, nullptr, nullptr, nullptr, nullptr, nullptr).rc,
                  CMPI_RC_ERR_INVALID_NAMESPACE);
        EXPECT_EQ(ft.activateFilter(mi, nullptr, nullptr, nullptr, nullptr, 1).rc,
                  CMPI_RC_ERR_INVALID_PARAMETER);
        EXPECT_EQ(ft.deActivateFilter(mi, nullptr, nullptr, nullptr, nullptr, 1).rc,
                  CMPI_RC_ERR_INVALID_CLASS);
        EXPECT_EQ(ft.enableIndications(mi, nullptr).rc, CMPI_RC_ERR_NOT_FOUND);
        EXPECT_EQ(ft.disableIndications(mi, nullptr).rc, CMPI_RC_ERR_NOT_SUPPORTED);
    }

    TEST(CmpiStubs, InCxx)
    {
        checkInstanceMi(makeMi(&Cxx_Sample_Create_InstanceMI, &cxxProviderBroker), "instanceCxx_Sample");
        checkAssociationMi(makeMi(&Cxx_Sample_Create_AssociationMI, &cxxProviderBroker),
                           "associationCxx_Sample");
        checkMethodMi(makeMi(&Cxx_Sample_Create_MethodMI, &cxxProviderBroker), "methodCxx_Sample");
        checkPropertyMi(makeMi(&Cxx_Sample_Create_PropertyMI, &cxxProviderBroker), "propertyCxx_Sample");
        checkIndicationMi(makeMi(&Cxx_Sample_Create_IndicationMI, &cxxProviderBroker),
                          "indicationCxx_Sample");
    }

    TEST(CmpiStubs, InC)
    {
        const int hooks = cProviderHooks();
        checkInstanceMi(makeMi(&C_Sample_Create_InstanceMI, &cProviderBroker), "instanceC_Sample");
        EXPECT_EQ(cProviderHooks(), hooks + 2);
        checkAssociationMi(makeMi(&C_Sample_Create_AssociationMI, &cProviderBroker), "associationC_Sample");
        EXPECT_EQ(cProviderHooks(), hooks + 4);
        checkMethodMi(makeMi(&C_Sample_Create_MethodMI, &cProviderBroker), "methodC_Sample");
        EXPECT_EQ(cProviderHooks(), hooks + 6);
        checkPropertyMi(makeMi(&C_Sample_Create_PropertyMI, &cProviderBroker), "propertyC_Sample");
        EXPECT_EQ(cProviderHooks(), hooks + 8);
        checkIndicationMi(makeMi(&C_Sample_Create_IndicationMI, &cProviderBroker), "indicationC_Sample");
        EXPECT_EQ(cProviderHooks(), hooks + 10);
    }

} // namespace
