// SPDX-License-Identifier: Apache-2.0
// The objects between which the tests of the associations move, and calls of the engine's functions.
#ifndef TEST_LIBRARY_ASSOCIATION_WORLD_H
#define TEST_LIBRARY_ASSOCIATION_WORLD_H

#include "by_name.h"
#include "checks.h"

namespace association_world
{

// ---- objects ----

inline Path systemScoped(const std::string &className, const std::string &nameKey, const std::string &name)
{
    return path(className, {{nameKey, name},
                            {"CreationClassName", className},
                            {"SystemName", "Studio 7"},
                            {"SystemCreationClassName", "Linux_ComputerSystem"}});
}

inline Path computerPath()
{
    return path("Linux_ComputerSystem",
                {{"CreationClassName", "Linux_ComputerSystem"}, {"Name", "controller"}});
}

inline Path monitorPath()
{
    return systemScoped("ZT_Marovelton_Monitor", "DeviceID", "ZT:Marovelton_Monitor");
}

inline Path identified(const std::string &className, const std::string &instanceID)
{
    return path(className, {{"InstanceID", instanceID}});
}

inline Path colorSpacePath(int number)
{
    return identified("ZT_Marovelton_ColorSpace", "ZT:Marovelton_ColorSpace:" + std::to_string(number));
}

inline Path connectionPath()
{
    return systemScoped("ZT_Marovelton_IPNetworkConnection", "Name", "Studio 7-IPNetworkConnection");
}

inline Path endpointPath(const std::string &name)
{
    return systemScoped("ZT_Marovelton_IPProtocolEndpoint", "Name", name);
}

inline Path remoteServicePath()
{
    return systemScoped("ZT_Marovelton_RemoteManagementService", "Name", "Studio 7-RemoteManagementService");
}

inline Path wsServicePath()
{
    return systemScoped("ZT_Marovelton_WSManagementService", "Name", "Studio 7-WSManagementService");
}

inline Path dhcpPath()
{
    return identified("ZT_Marovelton_DHCPSettingData", "ZT:Marovelton_DHCPSettingData");
}

inline Path staticPath()
{
    return identified("ZT_Marovelton_ExtendedStaticIPAssignmentSettingData",
                      "ZT:Marovelton_ExtendedStaticIPAssignmentSettingData");
}

inline Path assignmentPath()
{
    return identified("ZT_Marovelton_IPAssignmentSettingData", "ZT:Marovelton_IPAssignmentSettingData");
}

/** An object as its provider delivers it: its keys are properties, too, and there is more to it. */
inline Instance objectAt(const Path &path)
{
    Entries properties = path.keys;
    properties.push_back({"Caption", path.className});
    return instance(path, properties);
}

/** Makes the objects of a class known to the broker. */
inline void serve(const std::vector<Path> &paths)
{
    ClassScript script;
    for (const Path &path : paths) {
        script.instances.push_back(objectAt(path));
    }
    broker.classes[paths.at(0).className] = script;
}

/** A computer system, a monitor, two colour spaces; the network objects with the endpoints of the loopback
 * and of the management interface. */
inline void serveWorld()
{
    serve({computerPath()});
    serve({monitorPath()});
    serve({colorSpacePath(1), colorSpacePath(2)});
    serve({connectionPath()});
    serve({endpointPath("IPv4_lo"), endpointPath("IPv4_eth0")});
    serve({remoteServicePath()});
    serve({wsServicePath()});
    serve({dhcpPath()});
    serve({staticPath()});
    serve({assignmentPath()});
}

// ---- calls of the engine ----

/** An association, as the engine is told of it. */
struct Association {
    const char *className = "ZT_Marovelton_ColorModel";
    const char *leftClass = "ZT_Marovelton_ColorSpace";
    const char *rightClass = "ZT_Marovelton_Monitor";
    const char *refLeft = "ColorSpace";
    const char *refRight = "Monitor";
};

struct EngineAnswer : Answer {
    int result = 12345;
};

using CreateRefs = decltype(&_assoc_create_refs_1toN);

inline EngineAnswer createRefs(CreateRefs function, const Association &association, const Path &source,
                               int inst, int associators, CMPIStatus status = {CMPI_RC_OK, nullptr})
{
    EngineAnswer engine;
    static_cast<Answer &>(engine) = collect([&](const CMPIResult *result) {
        engine.result = function(&broker, contextOf(noUser()), result, broker.newPath(source),
                                 association.className, association.leftClass, association.rightClass,
                                 association.refLeft, association.refRight, inst, associators, &status);
        return status;
    });
    return engine;
}

inline EngineAnswer createInst(const Association &association, const Path &reference, int left, int inst,
                               CMPIStatus status = {CMPI_RC_OK, nullptr})
{
    EngineAnswer engine;
    static_cast<Answer &>(engine) = collect([&](const CMPIResult *result) {
        engine.result =
            _assoc_create_inst_1toN(&broker, contextOf(noUser()), result, broker.newPath(reference),
                                    association.className, association.leftClass, association.rightClass,
                                    association.refLeft, association.refRight, left, inst, &status);
        return status;
    });
    return engine;
}

/** The answer of _assoc_get_inst: an instance that it gives is put into the result. */
inline Answer getInst(const Association &association, const Path &reference)
{
    return collect([&](const CMPIResult *result) {
        CMPIStatus status = {CMPI_RC_OK, nullptr};
        const CMPIInstance *made =
            _assoc_get_inst(&broker, contextOf(noUser()), broker.newPath(reference), association.className,
                            association.refLeft, association.refRight, &status);
        if (made) {
            EXPECT_EQ(result->ft->returnInstance(result, made).rc, CMPI_RC_OK);
        }
        return status;
    });
}

inline void expectResult(const EngineAnswer &answer, int result, CMPIrc rc, const std::string &message)
{
    EXPECT_EQ(answer.result, result);
    EXPECT_STATUS(answer, rc, message);
    EXPECT_EQ(answer.done, 0) << "the engine closes the result";
}

inline void expectEmptySuccess(const Answer &answer)
{
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.returned.size(), 0u) << answer.text();
    EXPECT_EQ(answer.done, 1);
}

inline void expectSuccess(const Answer &answer, size_t count)
{
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    EXPECT_EQ(answer.returned.size(), count) << answer.text();
    EXPECT_EQ(answer.done, 1);
}

inline void expectFailure(const Answer &answer, CMPIrc rc, const std::string &message)
{
    EXPECT_STATUS(answer, rc, message);
    EXPECT_EQ(answer.done, 0);
}

/** The path of an association, with its references as keys. */
inline Path associationPath(const std::string &className, const std::string &refLeft, const Path &left,
                            const std::string &refRight, const Path &right)
{
    return path(className, {{refLeft, reference(left)}, {refRight, reference(right)}});
}

/** The association instance: on an empty path, with the references and then `more` as properties. */
inline Instance associationInstance(const std::string &className, const std::string &refLeft,
                                    const Path &left, const std::string &refRight, const Path &right,
                                    const Entries &more = {})
{
    Entries properties = {{refLeft, reference(left)}, {refRight, reference(right)}};
    properties.insert(properties.end(), more.begin(), more.end());
    return instance(path(className), properties);
}

/** A broker whose enumerations hold what a test says, whatever class is asked for, and come with a status. */
class BrokerWithElements
{
  public:
    explicit BrokerWithElements(const std::vector<Value> &theElements, CMPIrc theRc = CMPI_RC_OK)
        : usual_(broker.bft), table_(*broker.bft)
    {
        elements() = theElements;
        rc() = theRc;
        table_.enumerateInstanceNames = [](const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                                           CMPIStatus *status) { return enumeration(status); };
        table_.enumerateInstances = [](const CMPIBroker *, const CMPIContext *, const CMPIObjectPath *,
                                       const char **, CMPIStatus *status) { return enumeration(status); };
        broker.bft = &table_;
    }
    ~BrokerWithElements()
    {
        broker.bft = usual_;
    }
    BrokerWithElements(const BrokerWithElements &) = delete;
    BrokerWithElements &operator=(const BrokerWithElements &) = delete;

  private:
    static std::vector<Value> &elements()
    {
        static std::vector<Value> list;
        return list;
    }
    static CMPIrc &rc()
    {
        static CMPIrc code;
        return code;
    }
    static CMPIEnumeration *enumeration(CMPIStatus *status)
    {
        *status = {rc(), nullptr};
        auto *made = broker.make<EnumerationObject>();
        made->elements = elements();
        return made;
    }
    const CMPIBrokerFT *usual_;
    CMPIBrokerFT table_;
};

} // namespace association_world

#endif
