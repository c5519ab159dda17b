/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A dummy provider in C: every stub macro, with a hook.
 */
#include "provider.h"

#include "operations.h"

static const CMPIBroker *theBroker;
static int hooks;

CMInstanceMIStub(Dummy, C_Sample, theBroker, ++hooks) CMAssociationMIStub(Dummy, C_Sample, theBroker, ++hooks)
    CMMethodMIStub(Dummy, C_Sample, theBroker, ++hooks) CMPropertyMIStub(Dummy, C_Sample, theBroker, ++hooks)
        CMIndicationMIStub(Dummy, C_Sample, theBroker, ++hooks)

            const CMPIBroker *cProviderBroker(void)
{
    return theBroker;
}

int cProviderHooks(void)
{
    return hooks;
}
