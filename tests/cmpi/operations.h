// SPDX-License-Identifier: Apache-2.0
/*
 * Operations of a dummy provider, prefix Dummy: each answers with a code of its own, so that a test sees
 * which one an entry of a function table leads to. Included by a C and a C++ provider; the operations are
 * static in each.
 */
#define DUMMY(name, code, ...)                                                                               \
    static CMPIStatus Dummy##name(__VA_ARGS__)                                                               \
    {                                                                                                        \
        const CMPIStatus status = {(code), NULL};                                                            \
        return status;                                                                                       \
    }

#ifdef __cplusplus
#define UNNAMED(type, name) type
#else
#define UNNAMED(type, name) type name __attribute__((unused))
#endif
#define CTX UNNAMED(const CMPIContext *, ctx)
#define RSLT UNNAMED(const CMPIResult *, rslt)
#define OP UNNAMED(const CMPIObjectPath *, op)
#define CHARS(name) UNNAMED(const char *, name)
#define LIST UNNAMED(const char **, properties)
#define FLAG UNNAMED(CMPIBoolean, flag)
#define INST UNNAMED(const CMPIInstance *, inst)
#define FILTER UNNAMED(const CMPISelectExp *, filter)
#define MI(kind) UNNAMED(CMPI##kind##MI *, mi)

DUMMY(Cleanup, CMPI_RC_ERR_FAILED, MI(Instance), CTX, FLAG)
DUMMY(EnumInstanceNames, CMPI_RC_ERR_ACCESS_DENIED, MI(Instance), CTX, RSLT, OP)
DUMMY(EnumInstances, CMPI_RC_ERR_INVALID_NAMESPACE, MI(Instance), CTX, RSLT, OP, LIST)
DUMMY(GetInstance, CMPI_RC_ERR_INVALID_PARAMETER, MI(Instance), CTX, RSLT, OP, LIST)
DUMMY(CreateInstance, CMPI_RC_ERR_INVALID_CLASS, MI(Instance), CTX, RSLT, OP, INST)
DUMMY(ModifyInstance, CMPI_RC_ERR_NOT_FOUND, MI(Instance), CTX, RSLT, OP, INST, LIST)
DUMMY(DeleteInstance, CMPI_RC_ERR_NOT_SUPPORTED, MI(Instance), CTX, RSLT, OP)
DUMMY(ExecQuery, CMPI_RC_ERR_INVALID_QUERY, MI(Instance), CTX, RSLT, OP, CHARS(query), CHARS(lang))

DUMMY(AssociationCleanup, CMPI_RC_ERR_FAILED, MI(Association), CTX, FLAG)
DUMMY(Associators, CMPI_RC_ERR_ACCESS_DENIED, MI(Association), CTX, RSLT, OP, CHARS(a), CHARS(b), CHARS(c),
      CHARS(d), LIST)
DUMMY(AssociatorNames, CMPI_RC_ERR_INVALID_NAMESPACE, MI(Association), CTX, RSLT, OP, CHARS(a), CHARS(b),
      CHARS(c), CHARS(d))
DUMMY(References, CMPI_RC_ERR_INVALID_PARAMETER, MI(Association), CTX, RSLT, OP, CHARS(a), CHARS(b), LIST)
DUMMY(ReferenceNames, CMPI_RC_ERR_INVALID_CLASS, MI(Association), CTX, RSLT, OP, CHARS(a), CHARS(b))

DUMMY(MethodCleanup, CMPI_RC_ERR_FAILED, MI(Method), CTX, FLAG)
DUMMY(InvokeMethod, CMPI_RC_ERR_ACCESS_DENIED, MI(Method), CTX, RSLT, OP, CHARS(method),
      UNNAMED(const CMPIArgs *, in), UNNAMED(CMPIArgs *, out))

DUMMY(PropertyCleanup, CMPI_RC_ERR_FAILED, MI(Property), CTX, FLAG)
DUMMY(SetProperty, CMPI_RC_ERR_ACCESS_DENIED, MI(Property), CTX, RSLT, OP, CHARS(name),
      UNNAMED(CMPIData, data))
DUMMY(GetProperty, CMPI_RC_ERR_INVALID_NAMESPACE, MI(Property), CTX, RSLT, OP, CHARS(name))
DUMMY(SetPropertyWithOrigin, CMPI_RC_ERR_INVALID_PARAMETER, MI(Property), CTX, RSLT,
      UNNAMED(CMPIObjectPath *, op), CHARS(name), UNNAMED(CMPIData, data), CHARS(origin))

DUMMY(IndicationCleanup, CMPI_RC_ERR_FAILED, MI(Indication), CTX, FLAG)
DUMMY(AuthorizeFilter, CMPI_RC_ERR_ACCESS_DENIED, MI(Indication), CTX, FILTER, CHARS(className), OP,
      CHARS(owner))
DUMMY(MustPoll, CMPI_RC_ERR_INVALID_NAMESPACE, MI(Indication), CTX, RSLT, FILTER, CHARS(className), OP)
DUMMY(ActivateFilter, CMPI_RC_ERR_INVALID_PARAMETER, MI(Indication), CTX, FILTER, CHARS(className), OP, FLAG)
DUMMY(DeActivateFilter, CMPI_RC_ERR_INVALID_CLASS, MI(Indication), CTX, FILTER, CHARS(className), OP, FLAG)
DUMMY(EnableIndications, CMPI_RC_ERR_NOT_FOUND, MI(Indication), CTX)
DUMMY(DisableIndications, CMPI_RC_ERR_NOT_SUPPORTED, MI(Indication), CTX)
