// SPDX-License-Identifier: Apache-2.0
// Another provider's library, with an association engine whose functions have the names of ours: once in C
// and with other parameters, as such libraries come, and once with the very parameters of ours. Whoever of us
// is bound to one of them is counted.

#include <cmpi/cmpidt.h>

namespace
{

int calls;

} // namespace

#define FOREIGN __attribute__((visibility("default")))

// ---- C, other parameters ----
extern "C" {

FOREIGN int foreignCalls()
{
    return calls;
}

FOREIGN const char *_assoc_targetClass_Name(const char *)
{
    ++calls;
    return nullptr;
}
FOREIGN void *_assoc_targetClass_OP(int)
{
    ++calls;
    return nullptr;
}
FOREIGN int _assoc_check_parameter_const(const char *, const char *)
{
    ++calls;
    return 0;
}
FOREIGN int _assoc_create_refs_1toN(int, int)
{
    ++calls;
    return -1;
}
FOREIGN int _assoc_create_inst_1toN(int)
{
    ++calls;
    return -1;
}
FOREIGN void *_assoc_get_inst(int)
{
    ++calls;
    return nullptr;
}
FOREIGN int _assoc_create_refs_1toN_ProvideEndpoint(int)
{
    ++calls;
    return -1;
}
FOREIGN int _assoc_create_refs_1toN_ElementSetting(int)
{
    ++calls;
    return -1;
}
FOREIGN int match_instance(int)
{
    ++calls;
    return -1;
}
FOREIGN int match_instance_elementsetting(int)
{
    ++calls;
    return -1;
}
FOREIGN int get_instance_from_key(int)
{
    ++calls;
    return -1;
}

/** What this library gets when it calls its own engine: how often that was counted, 1 when it is really its
 * own. */
FOREIGN int foreignOwnEngine()
{
    const int before = calls;
    _assoc_create_refs_1toN(1, 2);
    const int counted = calls - before;
    calls = before;
    return counted;
}

} // extern "C"

// ---- C++, the same parameters ----

FOREIGN const char *_assoc_targetClass_Name(const CMPIBroker *, const CMPIObjectPath *, const char *,
                                            const char *, CMPIStatus *)
{
    ++calls;
    return nullptr;
}
FOREIGN CMPIObjectPath *_assoc_targetClass_OP(const CMPIBroker *, const CMPIObjectPath *, const char *,
                                              const char *, CMPIStatus *)
{
    ++calls;
    return nullptr;
}
FOREIGN int _assoc_check_parameter_const(const CMPIBroker *, const CMPIObjectPath *, const char *,
                                         const char *, const char *, const char *, const char *, const char *,
                                         const char *, CMPIStatus *)
{
    ++calls;
    return 0;
}
FOREIGN int _assoc_create_refs_1toN(const CMPIBroker *, const CMPIContext *, const CMPIResult *,
                                    const CMPIObjectPath *, const char *, const char *, const char *,
                                    const char *, const char *, int, int, CMPIStatus *)
{
    ++calls;
    return -1;
}
FOREIGN int _assoc_create_inst_1toN(const CMPIBroker *, const CMPIContext *, const CMPIResult *,
                                    const CMPIObjectPath *, const char *, const char *, const char *,
                                    const char *, const char *, int, int, CMPIStatus *)
{
    ++calls;
    return -1;
}
FOREIGN CMPIInstance *_assoc_get_inst(const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                                      const char *, const char *, const char *, CMPIStatus *)
{
    ++calls;
    return nullptr;
}
FOREIGN int _assoc_create_refs_1toN_ProvideEndpoint(const CMPIBroker *, const CMPIContext *,
                                                    const CMPIResult *, const CMPIObjectPath *, const char *,
                                                    const char *, const char *, const char *, const char *,
                                                    int, int, CMPIStatus *)
{
    ++calls;
    return -1;
}
FOREIGN int get_instance_from_key(const CMPIObjectPath *, const CMPIInstance *, const CMPIObjectPath *,
                                  const CMPIBroker *, CMPIStatus *, int *, const char *, int *, int, char *)
{
    ++calls;
    return -1;
}
FOREIGN int match_instance(const char *, const char *, int *, int)
{
    ++calls;
    return -1;
}
