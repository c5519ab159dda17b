// SPDX-License-Identifier: Apache-2.0
// What the two dummy providers (C and C++) show to the test of the stub macros.
#ifndef CMPI_TEST_PROVIDER_H
#define CMPI_TEST_PROVIDER_H

#include "cmpimacs.h"

#ifdef __cplusplus
extern "C" {
#endif

CMPIInstanceMI *C_Sample_Create_InstanceMI(const CMPIBroker *, const CMPIContext *, CMPIStatus *);
CMPIAssociationMI *C_Sample_Create_AssociationMI(const CMPIBroker *, const CMPIContext *, CMPIStatus *);
CMPIMethodMI *C_Sample_Create_MethodMI(const CMPIBroker *, const CMPIContext *, CMPIStatus *);
CMPIPropertyMI *C_Sample_Create_PropertyMI(const CMPIBroker *, const CMPIContext *, CMPIStatus *);
CMPIIndicationMI *C_Sample_Create_IndicationMI(const CMPIBroker *, const CMPIContext *, CMPIStatus *);

/** The broker that the last factory of the C provider was given. */
const CMPIBroker *cProviderBroker(void);
/** How often a hook of the C provider ran. */
int cProviderHooks(void);

#ifdef __cplusplus
}
#endif

#endif
