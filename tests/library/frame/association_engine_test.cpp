// SPDX-License-Identifier: Apache-2.0
// The association engine, function by function.

#include "library/associations/association_world.h"
#include "network/network_objects.h"

using namespace association_world;

namespace
{

const char *const left = "ZT_Marovelton_ColorSpace";
const char *const right = "ZT_Marovelton_Monitor";

struct AssociationEngine : testing::Test {
    AssociationEngine()
    {
        serveWorld();
        broker.superclasses = {{"ZT_Marovelton_Monitor", "CIM_FlatPanel"},
                               {"CIM_FlatPanel", "CIM_Display"},
                               {"ZT_Marovelton_ColorSpace", "CIM_SettingData"},
                               {"ACME_StudioMonitor", "ZT_Marovelton_Monitor"},
                               {"ACME_PrintColorSpace", "ZT_Marovelton_ColorSpace"}};
    }
    const Association association = {};
};

} // namespace

TEST(AssociationTypes, DirectionsAndSettingsStatesHaveTheirNumbers)
{
    EXPECT_EQ(ASSOC_RIGHT_LEFT, 1);
    EXPECT_EQ(ASSOC_LEFT_RIGHT, 2);
    EXPECT_EQ(static_cast<int>(ASSOC_TYPE_E::ASSOC_LEFT_RIGHT), 2);
    EXPECT_EQ(DONT_CHANGE, 0);
    EXPECT_EQ(YES, 1);
    EXPECT_EQ(NO, 2);
}

// ---- _assoc_targetClass_Name ----

namespace
{

struct TargetName {
    const char *name;
    CMPIStatus status;
};

TargetName targetName(const Path &source, const char *leftClass, const char *rightClass)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const char *name =
        _assoc_targetClass_Name(&broker, broker.newPath(source), leftClass, rightClass, &status);
    return {name, status};
}

void expectNoTarget(const TargetName &target, const std::string &message)
{
    EXPECT_EQ(target.name, nullptr);
    EXPECT_EQ(target.status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(test_support::textOf(target.status.msg, "none"), message);
}

} // namespace

TEST_F(AssociationEngine, TargetNameIsTheOtherEndOfTheTwoGivenPointers)
{
    EXPECT_EQ(targetName(colorSpacePath(1), left, right).name, right);
    EXPECT_EQ(targetName(monitorPath(), left, right).name, left);
    EXPECT_EQ(targetName(monitorPath(), left, right).status.rc, CMPI_RC_OK);
}

TEST_F(AssociationEngine, TargetNameOfSubclasses)
{
    EXPECT_EQ(targetName(path("ACME_PrintColorSpace"), left, right).name, right);
    EXPECT_EQ(targetName(path("ACME_StudioMonitor"), left, right).name, left);
}

TEST_F(AssociationEngine, TargetNameWinsOnTheLeft)
{
    // Both ends the same class.
    const std::string sameClass = right;
    EXPECT_EQ(targetName(monitorPath(), right, sameClass.c_str()).name, sameClass.c_str());
    // A subclass of both ends.
    EXPECT_EQ(targetName(path("ACME_StudioMonitor"), "CIM_Display", "CIM_FlatPanel").name,
              std::string("CIM_FlatPanel"));
    // Equal to the right end and a subclass of the left one: the exact name comes first.
    EXPECT_EQ(targetName(path("CIM_FlatPanel"), "CIM_Display", "CIM_FlatPanel").name,
              std::string("CIM_Display"));
}

TEST_F(AssociationEngine, TargetNameLeavesLetterCaseToTheBroker)
{
    // The engine's own comparison is exact; the object manager knows its classes in any case.
    EXPECT_EQ(targetName(path("zt_marovelton_monitor"), left, right).name, left);
    broker.classPathIsAYes = static_cast<CMPIBoolean>(0);
    expectNoTarget(targetName(path("zt_marovelton_monitor"), left, right),
                   "referenced Class is not covered by this Association.");
    expectNoTarget(targetName(path("zt_marovelton_colorspace"), left, right),
                   "referenced Class is not covered by this Association.");
    EXPECT_EQ(targetName(path("ZT_Marovelton_Monitor"), left, right).name, left);
}

TEST_F(AssociationEngine, TargetNameTakesOnlyOneForYes)
{
    for (const int yes : {0, 2, 255}) {
        broker.classPathIsAYes = static_cast<CMPIBoolean>(yes);
        expectNoTarget(targetName(path("ACME_StudioMonitor"), left, right),
                       "referenced Class is not covered by this Association.");
    }
}

TEST_F(AssociationEngine, TargetNameOfAnUnrelatedClass)
{
    for (const char *name : {"CIM_Service", "ZT_Marovelton_MonitorX", "ZT_Marovelton_Monito", ""}) {
        expectNoTarget(targetName(path(name), left, right),
                       "referenced Class is not covered by this Association.");
    }
}

TEST_F(AssociationEngine, TargetNameOfAPathWhoseClassCannotBeRead)
{
    for (const TextForm form : {TextForm::noString, TextForm::noCharacters, TextForm::noHandle}) {
        Path unreadable = monitorPath();
        unreadable.classNameForm = form;
        expectNoTarget(targetName(unreadable, left, right), "Could not get classname of source object path.");
    }
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    EXPECT_EQ(_assoc_targetClass_Name(&broker, nullptr, left, right, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(test_support::textOf(status.msg, "none"), "Could not get classname of source object path.");
}

TEST_F(AssociationEngine, TargetNameWithoutEnds)
{
    expectNoTarget(targetName(monitorPath(), nullptr, nullptr),
                   "referenced Class is not covered by this Association.");
    EXPECT_EQ(targetName(monitorPath(), nullptr, right).name, nullptr);
}

// ---- _assoc_targetClass_OP ----

TEST_F(AssociationEngine, TargetPathIsAnEmptyPathOfTheFarEndInTheSourcesNamespace)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const CMPIObjectPath *made = _assoc_targetClass_OP(
        &broker, broker.newPath(monitorPath().inNameSpace("root/studio")), left, right, &status);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(describe(static_cast<const PathObject *>(made)->path), "root/studio:ZT_Marovelton_ColorSpace");
    EXPECT_EQ(status.rc, CMPI_RC_OK);
}

TEST_F(AssociationEngine, TargetPathPassesAMissingNameThrough)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    EXPECT_EQ(_assoc_targetClass_OP(&broker, broker.newPath(path("CIM_Service")), left, right, &status),
              nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(test_support::textOf(status.msg, "none"),
              "referenced Class is not covered by this Association.");
}

TEST_F(AssociationEngine, TargetPathThatCannotBeMadeIsHandedOutAsItCame)
{
    for (const Fault flaw : everyFlaw) {
        SCOPED_TRACE(describe(flaw));
        faults.arm("newObjectPath", 1, flaw);
        CMPIStatus status = {CMPI_RC_OK, nullptr};
        const CMPIObjectPath *made =
            _assoc_targetClass_OP(&broker, broker.newPath(monitorPath()), left, right, &status);
        faults.disarm();
        EXPECT_EQ(made == nullptr, flaw == Fault::fails || flaw == Fault::silent);
        EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(test_support::textOf(status.msg, "none"), "Create CMPIObjectPath failed.");
    }
}

// ---- _assoc_check_parameter_const ----

namespace
{

struct Admission {
    int result;
    CMPIStatus status;
};

Admission admission(const Path &source, const char *resultClass, const char *role, const char *resultRole,
                    const char *leftClass = left, const char *rightClass = right)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    const int result =
        _assoc_check_parameter_const(&broker, broker.newPath(source), "ColorSpace", "Monitor", leftClass,
                                     rightClass, resultClass, role, resultRole, &status);
    return {result, status};
}

/** A filter with what it is expected to do to a source at the left and to one at the right end. */
struct Filter {
    const char *value;
    bool admitsLeft;
    bool admitsRight;
};

} // namespace

TEST_F(AssociationEngine, EveryCombinationOfFilters)
{
    const struct {
        const char *className;
        bool isLeft;
        bool isRight;
    } sources[] = {
        {"ZT_Marovelton_ColorSpace", true, false},
        {"zt_MAROVELTON_colorspace", true, false},
        {"ACME_PrintColorSpace", true, false},
        {"ZT_Marovelton_Monitor", false, true},
        {"ZT_MAROVELTON_MONITOR", false, true},
        {"ACME_StudioMonitor", false, true},
        {"CIM_Service", false, false},
        {"CIM_FlatPanel", false, false},
    };
    const Filter resultClasses[] = {
        {nullptr, true, true},
        {"ZT_Marovelton_Monitor", true, false},    // the far end of the left one
        {"zt_marovelton_MONITOR", true, false},    //
        {"CIM_FlatPanel", true, false},            // a superclass of it
        {"CIM_Display", true, false},              //
        {"ACME_StudioMonitor", true, false},       // a subclass of it
        {"ZT_Marovelton_ColorSpace", false, true}, // the far end of the right one
        {"CIM_SettingData", false, true},          //
        {"ACME_PrintColorSpace", false, true},     //
        {"CIM_Service", false, false},             // neither
        {"", false, false},
    };
    const Filter roles[] = {
        {nullptr, true, true},    {"ColorSpace", true, false}, {"COLORSPACE", true, false},
        {"Monitor", false, true}, {"moNITOR", false, true},    {"Antecedent", false, false},
        {"", false, false},
    };
    const Filter resultRoles[] = {
        {nullptr, true, true},       {"Monitor", true, false},    {"MONITOR", true, false},
        {"ColorSpace", false, true}, {"colorspace", false, true}, {"Antecedent", false, false},
        {"", false, false},
    };
    int admitted = 0;
    for (const auto &source : sources) {
        for (const Filter &resultClass : resultClasses) {
            for (const Filter &role : roles) {
                for (const Filter &resultRole : resultRoles) {
                    const bool expected = (source.isLeft && resultClass.admitsLeft && role.admitsLeft &&
                                           resultRole.admitsLeft) ||
                                          (source.isRight && resultClass.admitsRight && role.admitsRight &&
                                           resultRole.admitsRight);
                    const Admission is =
                        admission(path(source.className), resultClass.value, role.value, resultRole.value);
                    const auto shown = [](const char *text) { return std::string(text ? text : "(null)"); };
                    EXPECT_EQ(is.result, expected ? 1 : 0)
                        << source.className << ", result class " << shown(resultClass.value) << ", role "
                        << shown(role.value) << ", result role " << shown(resultRole.value);
                    EXPECT_EQ(is.status.rc, CMPI_RC_OK);
                    admitted += is.result;
                    broker.freeObjects();
                }
            }
        }
    }
    // 3 sources of the left end pass 6 result classes, 3 roles and 3 result roles; of the right end 4, 3
    // and 3.
    EXPECT_EQ(admitted, 3 * 6 * 3 * 3 + 3 * 4 * 3 * 3);
}

TEST_F(AssociationEngine, ASourceThatFitsBothEndsIsAdmittedInEitherRole)
{
    broker.superclasses["ACME_Projector"] = "CIM_Display";
    const struct {
        const char *source;
        const char *leftClass;
        const char *rightClass;
        int projector; // admitted as the result class: a subclass of one end, and of the other it is none
    } cases[] = {
        {"ZT_Marovelton_Monitor", right, right, 0},
        {"ACME_StudioMonitor", right, right, 0},
        {"ZT_Marovelton_Monitor", "CIM_Display", right, 1},
        {"ZT_Marovelton_Monitor", right, "CIM_Display", 1},
        {"ACME_StudioMonitor", "CIM_Display", right, 1},
        {"ACME_StudioMonitor", right, "CIM_Display", 1},
    };
    for (const auto &it : cases) {
        SCOPED_TRACE(std::string(it.source) + " between " + it.leftClass + " and " + it.rightClass);
        const auto admitted = [&](const char *resultClass, const char *role, const char *resultRole) {
            return admission(path(it.source), resultClass, role, resultRole, it.leftClass, it.rightClass)
                .result;
        };
        for (const char *role : {static_cast<const char *>(nullptr), "ColorSpace", "Monitor"}) {
            for (const char *resultRole : {static_cast<const char *>(nullptr), "ColorSpace", "Monitor"}) {
                EXPECT_EQ(admitted(nullptr, role, resultRole), 1);
            }
        }
        EXPECT_EQ(admitted(nullptr, "Antecedent", nullptr), 0);
        EXPECT_EQ(admitted(nullptr, nullptr, "Antecedent"), 0);
        for (const char *resultClass : {"CIM_Display", "ZT_Marovelton_Monitor", "ACME_StudioMonitor"}) {
            EXPECT_EQ(admitted(resultClass, nullptr, nullptr), 1) << resultClass;
        }
        EXPECT_EQ(admitted("ACME_Projector", nullptr, nullptr), it.projector);
        EXPECT_EQ(admitted("ZT_Marovelton_ColorSpace", nullptr, nullptr), 0);
    }
}

TEST_F(AssociationEngine, FiltersTakeOnlyOneForYes)
{
    for (const int yes : {0, 2, 255}) {
        broker.classPathIsAYes = static_cast<CMPIBoolean>(yes);
        EXPECT_EQ(admission(path("ACME_StudioMonitor"), nullptr, nullptr, nullptr).result, 0);
        EXPECT_EQ(admission(monitorPath(), nullptr, nullptr, nullptr).result, 1);
        EXPECT_EQ(admission(monitorPath(), left, nullptr, nullptr).result, 0);
    }
}

TEST_F(AssociationEngine, FiltersOfASourceWhoseClassCannotBeRead)
{
    Path unreadable = monitorPath();
    for (const TextForm form : {TextForm::noString, TextForm::noCharacters, TextForm::noHandle}) {
        unreadable.classNameForm = form;
        const Admission is = admission(unreadable, nullptr, nullptr, nullptr);
        EXPECT_EQ(is.result, 0);
        EXPECT_EQ(is.status.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(test_support::textOf(is.status.msg, "none"),
                  "Could not get classname of source object path.");
    }
}

TEST_F(AssociationEngine, FiltersWithoutAPathGoByTheNamesOrFail)
{
    for (const Fault flaw : everyFlaw) {
        SCOPED_TRACE(describe(flaw));
        // The name is enough.
        faults.arm("newObjectPath", 1, flaw);
        EXPECT_EQ(admission(monitorPath(), nullptr, nullptr, nullptr).result, 1);
        // It is not.
        faults.arm("newObjectPath", 1, flaw);
        Admission is = admission(path("ACME_StudioMonitor"), nullptr, nullptr, nullptr);
        EXPECT_EQ(is.result, 0);
        EXPECT_EQ(is.status.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(test_support::textOf(is.status.msg, "none"), "Create CMPIObjectPath failed.");
        // The far end's path fails; the result class' own path decides, or nothing does.
        faults.arm("newObjectPath", 2, flaw);
        EXPECT_EQ(admission(monitorPath(), "ACME_PrintColorSpace", nullptr, nullptr).result, 1);
        faults.arm("newObjectPath", 2, flaw);
        is = admission(monitorPath(), "CIM_SettingData", nullptr, nullptr);
        EXPECT_EQ(is.result, 0);
        EXPECT_EQ(test_support::textOf(is.status.msg, "none"), "Create CMPIObjectPath failed.");
        // And the other way round.
        faults.arm("newObjectPath", 3, flaw);
        EXPECT_EQ(admission(monitorPath(), "CIM_SettingData", nullptr, nullptr).result, 1);
        faults.arm("newObjectPath", 3, flaw);
        is = admission(monitorPath(), "ACME_PrintColorSpace", nullptr, nullptr);
        EXPECT_EQ(is.result, 0);
        EXPECT_EQ(is.status.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(test_support::textOf(is.status.msg, "none"), "Create CMPIObjectPath failed.");
    }
    faults.disarm();
}

// ---- _assoc_create_refs_1toN: what it hands over ----

TEST_F(AssociationEngine, AssociatorsAreTheFarEndsInstances)
{
    const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, association, monitorPath(), 1, 1);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(answer.instances(),
              (std::vector<Instance>{objectAt(colorSpacePath(1)), objectAt(colorSpacePath(2))}));
    EXPECT_EQ(answer.upCalls,
              (std::vector<std::string>{"getInstance(" + describe(monitorPath()) + ")",
                                        "enumerateInstances(root/cimv2:ZT_Marovelton_ColorSpace)"}));
    EXPECT_EQ(answer.trace, "--- _assoc_create_refs_1toN() called \n---"
                            "--- _assoc_create_refs_1toN() leave \n---");
    EXPECT_CALLS(answer, {});
}

TEST_F(AssociationEngine, AssociatorNamesAreTheFarEndsPaths)
{
    const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, association, monitorPath(), 0, 1);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(answer.paths(), (std::vector<Path>{colorSpacePath(1), colorSpacePath(2)}));
    EXPECT_EQ(answer.upCalls,
              (std::vector<std::string>{"getInstance(" + describe(monitorPath()) + ")",
                                        "enumerateInstanceNames(root/cimv2:ZT_Marovelton_ColorSpace)"}));
    EXPECT_EQ(answer.trace, "--- _assoc_create_refs_1toN() called \n---"
                            "--- _assoc_create_refs_1toN() leave \n---");
}

TEST_F(AssociationEngine, ReferencesFromTheRightEnd)
{
    const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, association, monitorPath(), 1, 0);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(answer.instances(),
              (std::vector<Instance>{associationInstance("ZT_Marovelton_ColorModel", "ColorSpace",
                                                         colorSpacePath(1), "Monitor", monitorPath()),
                                     associationInstance("ZT_Marovelton_ColorModel", "ColorSpace",
                                                         colorSpacePath(2), "Monitor", monitorPath())}));
    EXPECT_EQ(answer.upCalls,
              (std::vector<std::string>{"getInstance(" + describe(monitorPath()) + ")",
                                        "enumerateInstanceNames(root/cimv2:ZT_Marovelton_ColorSpace)"}));
    EXPECT_EQ(answer.trace, "--- _assoc_create_refs_1toN() called \n---"
                            "targetName is ZT_Marovelton_ColorSpace\n"
                            "targetName is ZT_Marovelton_ColorSpace\n"
                            "--- _assoc_create_refs_1toN() leave \n---");
}

TEST_F(AssociationEngine, ReferencesFromTheLeftEnd)
{
    const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, association, colorSpacePath(2), 1, 0);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(answer.instances(),
              (std::vector<Instance>{associationInstance("ZT_Marovelton_ColorModel", "ColorSpace",
                                                         colorSpacePath(2), "Monitor", monitorPath())}));
    EXPECT_EQ(answer.upCalls,
              (std::vector<std::string>{"getInstance(" + describe(colorSpacePath(2)) + ")",
                                        "enumerateInstanceNames(root/cimv2:ZT_Marovelton_Monitor)"}));
}

TEST_F(AssociationEngine, ReferencesFromASubclassAndInAnotherNamespace)
{
    const Path source = colorSpacePath(7).ofClass("ACME_PrintColorSpace").inNameSpace("root/studio");
    serve({source});
    const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, association, source, 1, 0);
    expectResult(answer, 0, CMPI_RC_OK, "");
    Instance expected = associationInstance("ZT_Marovelton_ColorModel", "ColorSpace", source, "Monitor",
                                            monitorPath().inNameSpace("root/studio"));
    expected.path.nameSpace = "root/studio";
    EXPECT_EQ(answer.instances(), std::vector<Instance>{expected});
}

TEST_F(AssociationEngine, ReferenceNamesAreThePathsInTheSourcesNamespace)
{
    const Path source = monitorPath().inNameSpace("root/studio");
    const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, association, source, 0, 0);
    expectResult(answer, 0, CMPI_RC_OK, "");
    const auto expected = [&](int number) {
        return associationPath("ZT_Marovelton_ColorModel", "ColorSpace",
                               colorSpacePath(number).inNameSpace("root/studio"), "Monitor", source)
            .inNameSpace("root/studio");
    };
    EXPECT_EQ(answer.paths(), (std::vector<Path>{expected(1), expected(2)}));
}

TEST_F(AssociationEngine, AnAssociationOfAClassWithItselfHasItsSourceOnTheLeft)
{
    const Association chain = {"ZT_Marovelton_ColorModel", left, left, "Previous", "Following"};
    const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, chain, colorSpacePath(2), 1, 0);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(
        answer.instances(),
        (std::vector<Instance>{associationInstance("ZT_Marovelton_ColorModel", "Previous", colorSpacePath(2),
                                                   "Following", colorSpacePath(1)),
                               associationInstance("ZT_Marovelton_ColorModel", "Previous", colorSpacePath(2),
                                                   "Following", colorSpacePath(2))}));
}

TEST_F(AssociationEngine, ASubclassOfBothEndsIsOnTheLeft)
{
    const Path source = monitorPath().ofClass("ACME_StudioMonitor");
    const Path display = monitorPath().ofClass("CIM_Display");
    serve({source});
    serve({display});
    const struct {
        const char *leftClass;
        const char *rightClass;
        Path farEnd;
    } cases[] = {{"CIM_Display", right, monitorPath()}, {right, "CIM_Display", display}};
    for (const auto &it : cases) {
        const Association chain = {"ZT_Marovelton_ColorModel", it.leftClass, it.rightClass, "Previous",
                                   "Following"};
        const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, chain, source, 1, 0);
        expectResult(answer, 0, CMPI_RC_OK, "");
        EXPECT_EQ(answer.instance(), associationInstance("ZT_Marovelton_ColorModel", "Previous", source,
                                                         "Following", it.farEnd));
    }
}

TEST_F(AssociationEngine, AFarEndWithoutInstancesIsAnEmptySuccess)
{
    broker.classes["ZT_Marovelton_ColorSpace"].instances.clear();
    for (const int inst : {0, 1}) {
        for (const int associators : {0, 1}) {
            const EngineAnswer answer =
                createRefs(_assoc_create_refs_1toN, association, monitorPath(), inst, associators);
            expectResult(answer, 0, CMPI_RC_OK, "");
            EXPECT_EQ(answer.returned.size(), 0u);
            EXPECT_EQ(answer.trace, "--- _assoc_create_refs_1toN() called \n---"
                                    "--- _assoc_create_refs_1toN() leave \n---");
        }
    }
}

TEST_F(AssociationEngine, OtherFlagsThanZeroAndOne)
{
    // Instances of the far end come for exactly 1 and 1, everything else goes by the names.
    const EngineAnswer names = createRefs(_assoc_create_refs_1toN, association, monitorPath(), 0, 2);
    expectResult(names, 0, CMPI_RC_OK, "");
    EXPECT_EQ(names.paths(), (std::vector<Path>{colorSpacePath(1), colorSpacePath(2)}));
    for (const auto &[inst, associators] : {std::pair(2, 1), std::pair(1, 2), std::pair(-1, 7)}) {
        const EngineAnswer nothing =
            createRefs(_assoc_create_refs_1toN, association, monitorPath(), inst, associators);
        expectResult(nothing, 0, CMPI_RC_OK, "");
        EXPECT_EQ(nothing.returned.size(), 0u);
        EXPECT_EQ(nothing.upCalls.back(), "enumerateInstanceNames(root/cimv2:ZT_Marovelton_ColorSpace)");
    }
    EXPECT_EQ(createRefs(_assoc_create_refs_1toN, association, monitorPath(), 2, 0).instances().size(), 2u);
}

TEST_F(AssociationEngine, AnElementThatIsMarkedAsNullAndHasAnObjectIsTaken)
{
    broker.manners.marksElementsNull = true;
    for (const auto &[inst, associators] :
         {std::pair(1, 1), std::pair(0, 1), std::pair(1, 0), std::pair(0, 0)}) {
        const EngineAnswer answer =
            createRefs(_assoc_create_refs_1toN, association, monitorPath(), inst, associators);
        expectResult(answer, 0, CMPI_RC_OK, "");
        EXPECT_EQ(answer.returned.size(), 2u);
    }
}

// ---- _assoc_create_refs_1toN: failures ----

TEST_F(AssociationEngine, ASourceThatCannotBeFetched)
{
    const struct {
        CMPIrc rc;
        const char *message;
        const char *expected;
    } cases[] = {
        {CMPI_RC_ERR_FAILED, "no memory", "GetInstance of source object failed."},
        {CMPI_RC_ERR_NOT_FOUND, "no such key", "Source object not found."},
        {CMPI_RC_ERR_ACCESS_DENIED, "not for you", "not for you"},
        {CMPI_RC_ERR_INVALID_CLASS, "", ""},
    };
    for (const auto &failure : cases) {
        for (const int inst : {0, 1}) {
            for (const int associators : {0, 1}) {
                ClassScript &script = broker.classes["ZT_Marovelton_Monitor"];
                script.getInstanceRc = failure.rc;
                script.getInstanceMessage = failure.message;
                const EngineAnswer answer =
                    createRefs(_assoc_create_refs_1toN, association, monitorPath(), inst, associators);
                expectResult(answer, -1, failure.rc, failure.expected);
                EXPECT_EQ(answer.returned.size(), 0u);
                EXPECT_EQ(answer.upCalls,
                          (std::vector<std::string>{"getInstance(" + describe(monitorPath()) + ")"}));
                EXPECT_EQ(answer.trace, "--- _assoc_create_refs_1toN() called \n---");
            }
        }
    }
}

TEST_F(AssociationEngine, ASourceThatIsDeliveredAsNothing)
{
    for (const Fault flaw : everyFlaw) {
        SCOPED_TRACE(describe(flaw));
        faults.arm("getInstance", 1, flaw);
        const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, association, monitorPath(), 1, 1);
        faults.disarm();
        expectResult(answer, -1, CMPI_RC_ERR_FAILED, "GetInstance of source object failed.");
        EXPECT_EQ(answer.returned.size(), 0u);
    }
}

TEST_F(AssociationEngine, ASourceAtNeitherEndGivesNothingAndSaysWhy)
{
    for (const int inst : {0, 1}) {
        for (const int associators : {0, 1}) {
            const EngineAnswer answer =
                createRefs(_assoc_create_refs_1toN, association, computerPath(), inst, associators);
            expectResult(answer, 0, CMPI_RC_ERR_FAILED,
                         "referenced Class is not covered by this Association.");
            EXPECT_EQ(answer.returned.size(), 0u);
            EXPECT_EQ(answer.upCalls,
                      (std::vector<std::string>{"getInstance(" + describe(computerPath()) + ")"}));
        }
    }
}

TEST_F(AssociationEngine, PathsThatCannotBeMade)
{
    for (const Fault flaw : everyFlaw) {
        SCOPED_TRACE(describe(flaw));
        // Of the far end: nothing, with the status set.
        faults.arm("newObjectPath", 1, flaw);
        EngineAnswer answer = createRefs(_assoc_create_refs_1toN, association, monitorPath(), 1, 0);
        expectResult(answer, 0, CMPI_RC_ERR_FAILED, "Create CMPIObjectPath failed.");
        EXPECT_EQ(answer.upCalls.size(), 1u);
        // Of the association: a failure.
        faults.arm("newObjectPath", 2, flaw);
        answer = createRefs(_assoc_create_refs_1toN, association, monitorPath(), 1, 0);
        expectResult(answer, -1, CMPI_RC_ERR_FAILED, "Create CMPIObjectPath failed.");
        EXPECT_EQ(answer.upCalls.size(), 1u);
        EXPECT_EQ(answer.returned.size(), 0u);
    }
    faults.disarm();
}

TEST_F(AssociationEngine, EnumerationsThatFail)
{
    const auto check = [&](int inst, int associators, const char *message) {
        const EngineAnswer answer =
            createRefs(_assoc_create_refs_1toN, association, monitorPath(), inst, associators);
        expectResult(answer, -1, CMPI_RC_ERR_FAILED, message);
        EXPECT_EQ(answer.returned.size(), 0u);
        EXPECT_EQ(answer.trace, "--- _assoc_create_refs_1toN() called \n---");
    };
    const auto checkAll = [&] {
        check(1, 1, "CBEnumInstances( _broker, ctx, op, rc)");
        check(0, 1, "CBEnumInstanceNames( _broker, ctx, op, rc)");
        check(1, 0, "CBEnumInstanceNames( _broker, ctx, op, rc)");
        check(0, 0, "CBEnumInstanceNames( _broker, ctx, op, rc)");
    };
    ClassScript &script = broker.classes["ZT_Marovelton_ColorSpace"];
    for (const CMPIrc rc : {CMPI_RC_ERR_FAILED, CMPI_RC_ERR_NOT_FOUND, CMPI_RC_ERR_ACCESS_DENIED}) {
        script.enumerateRc = rc;
        script.enumerateMessage = "the other provider's words";
        checkAll();
    }
    script.enumerateRc = CMPI_RC_OK;
    script.noEnumeration = true;
    checkAll();
    script.noEnumeration = false;
    for (const Fault flaw : everyFlaw) {
        SCOPED_TRACE(describe(flaw));
        faults.arm("enumerateInstances", 1, flaw);
        check(1, 1, "CBEnumInstances( _broker, ctx, op, rc)");
        faults.arm("enumerateInstanceNames", 1, flaw);
        check(1, 0, "CBEnumInstanceNames( _broker, ctx, op, rc)");
    }
    faults.disarm();
}

TEST_F(AssociationEngine, AnEnumerationThatComesWithAFailureIsNone)
{
    for (const CMPIrc rc : {CMPI_RC_ERR_FAILED, CMPI_RC_ERR_ACCESS_DENIED}) {
        const auto expectNone = [](const EngineAnswer &answer, const char *message) {
            expectResult(answer, -1, CMPI_RC_ERR_FAILED, message);
            EXPECT_EQ(answer.returned.size(), 0u);
        };
        {
            const BrokerWithElements instances({embedded(objectAt(colorSpacePath(1)))}, rc);
            expectNone(createRefs(_assoc_create_refs_1toN, association, monitorPath(), 1, 1),
                       "CBEnumInstances( _broker, ctx, op, rc)");
        }
        const BrokerWithElements names({reference(colorSpacePath(1))}, rc);
        for (const auto &[inst, associators] : {std::pair(0, 1), std::pair(1, 0), std::pair(0, 0)}) {
            expectNone(createRefs(_assoc_create_refs_1toN, association, monitorPath(), inst, associators),
                       "CBEnumInstanceNames( _broker, ctx, op, rc)");
        }
        expectNone(createInst(association, path("ZT_Marovelton_ColorModel"), 1, 1),
                   "CBEnumInstanceNames( _broker, ctx, op, rc)");
    }
}

TEST_F(AssociationEngine, AnEmptyElementEndsTheRequest)
{
    for (const size_t element : {0u, 1u}) {
        broker.classes["ZT_Marovelton_ColorSpace"].emptyElement = element;
        for (const int inst : {0, 1}) {
            for (const int associators : {0, 1}) {
                const EngineAnswer answer =
                    createRefs(_assoc_create_refs_1toN, association, monitorPath(), inst, associators);
                expectResult(answer, -1, CMPI_RC_ERR_FAILED, "CMGetNext( en, rc)");
                EXPECT_EQ(answer.returned.size(), element) << "what came before it is handed over";
            }
        }
    }
}

TEST_F(AssociationEngine, ElementsThatAreNotWhatTheyShouldBe)
{
    Value missing = reference(colorSpacePath(1));
    missing.state = CMPI_notFound;
    Value bad = reference(colorSpacePath(1));
    bad.state = CMPI_badValue;
    const std::vector<Value> names = {embedded(objectAt(colorSpacePath(1))),
                                      "ZT_Marovelton_ColorSpace",
                                      uint32(17),
                                      nullOf(CMPI_ref),
                                      nullReference(),
                                      missing,
                                      bad,
                                      Value()};
    for (const Value &element : names) {
        SCOPED_TRACE(describe(element));
        const BrokerWithElements elements({element});
        for (const auto &[inst, associators] : {std::pair(0, 1), std::pair(1, 0), std::pair(0, 0)}) {
            expectResult(createRefs(_assoc_create_refs_1toN, association, monitorPath(), inst, associators),
                         -1, CMPI_RC_ERR_FAILED, "CMGetNext( en, rc)");
        }
        expectResult(createInst(association, monitorPath(), 1, 1), -1, CMPI_RC_ERR_FAILED,
                     "CMGetNext( en, rc)");
    }
    Value noInstance;
    noInstance.type = CMPI_instance;
    for (const Value &element :
         {reference(colorSpacePath(1)), Value("text"), nullOf(CMPI_instance), noInstance}) {
        SCOPED_TRACE(describe(element));
        const BrokerWithElements elements({element});
        expectResult(createRefs(_assoc_create_refs_1toN, association, monitorPath(), 1, 1), -1,
                     CMPI_RC_ERR_FAILED, "CMGetNext( en, rc)");
    }
}

TEST_F(AssociationEngine, ElementsThatCannotBeTakenOut)
{
    for (const Fault flaw : everyFlaw) {
        for (const int inst : {0, 1}) {
            for (const int associators : {0, 1}) {
                SCOPED_TRACE(describe(flaw));
                faults.arm("getNext", 2, flaw);
                const EngineAnswer answer =
                    createRefs(_assoc_create_refs_1toN, association, monitorPath(), inst, associators);
                faults.disarm();
                expectResult(answer, -1, CMPI_RC_ERR_FAILED, "CMGetNext( en, rc)");
                EXPECT_EQ(answer.returned.size(), 1u);
            }
        }
    }
    faults.arm("hasNext", 2, Fault::fails);
    expectResult(createRefs(_assoc_create_refs_1toN, association, monitorPath(), 1, 1), -1,
                 CMPI_RC_ERR_FAILED, "CMGetNext( en, rc)");
    faults.disarm();
}

TEST_F(AssociationEngine, AssociationInstancesThatCannotBeMade)
{
    for (const Fault flaw : everyFlaw) {
        for (const int inst : {0, 1}) {
            SCOPED_TRACE(describe(flaw));
            faults.arm("newInstance", 2, flaw);
            const EngineAnswer answer =
                createRefs(_assoc_create_refs_1toN, association, monitorPath(), inst, 0);
            faults.disarm();
            expectResult(answer, -1, CMPI_RC_ERR_FAILED, "Create CMPIInstance failed.");
            EXPECT_EQ(answer.returned.size(), 1u);
        }
    }
}

TEST_F(AssociationEngine, AnAssociationWithoutItsEndsIsNeverHandedOver)
{
    for (const int nth : {1, 2}) {
        faults.arm("setProperty", nth);
        const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, association, monitorPath(), 1, 0);
        faults.disarm();
        EXPECT_EQ(answer.result, -1);
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(answer.returned.size(), 0u);
    }
    // The class of the source can no longer be read when its end is to be told.
    faults.arm("getClassName", 2);
    const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, association, monitorPath(), 1, 0);
    faults.disarm();
    expectResult(answer, -1, CMPI_RC_ERR_FAILED, "Could not get classname of source object path.");
    EXPECT_EQ(answer.returned.size(), 0u);
}

TEST_F(AssociationEngine, ReferenceNamesThatCannotBeTakenFromTheInstance)
{
    for (const Fault flaw : everyFlaw) {
        SCOPED_TRACE(describe(flaw));
        faults.arm("getObjectPath", 2, flaw);
        const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, association, monitorPath(), 0, 0);
        faults.disarm();
        expectResult(answer, -1, CMPI_RC_ERR_FAILED, "CMGetObjectPath(ci,rc)");
        EXPECT_EQ(answer.returned.size(), 1u);
    }
    faults.arm("setNameSpace", 1);
    const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, association, monitorPath(), 0, 0);
    faults.disarm();
    EXPECT_EQ(answer.result, -1);
    EXPECT_EQ(answer.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(answer.returned.size(), 0u);
}

TEST_F(AssociationEngine, AnEarlierStatusDoesNotDecideALaterRun)
{
    const CMPIStatus earlier = {CMPI_RC_ERR_NOT_FOUND, broker.newString("of another run")};
    const EngineAnswer answer =
        createRefs(_assoc_create_refs_1toN, association, monitorPath(), 1, 1, earlier);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(answer.returned.size(), 2u);
}

TEST_F(AssociationEngine, ABrokerThatReportsFailuresOnly)
{
    // Some object managers write a status only where something failed.
    static const CMPIBrokerFT *const usual = broker.bft;
    CMPIBrokerFT sparing = *usual;
    sparing.getInstance = [](const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op,
                             const char **properties,
                             CMPIStatus *) { return usual->getInstance(mb, ctx, op, properties, nullptr); };
    sparing.enumerateInstances = [](const CMPIBroker *mb, const CMPIContext *ctx, const CMPIObjectPath *op,
                                    const char **properties, CMPIStatus *) {
        return usual->enumerateInstances(mb, ctx, op, properties, nullptr);
    };
    sparing.enumerateInstanceNames = [](const CMPIBroker *mb, const CMPIContext *ctx,
                                        const CMPIObjectPath *op, CMPIStatus *) {
        return usual->enumerateInstanceNames(mb, ctx, op, nullptr);
    };
    const CMPIStatus earlier = {CMPI_RC_ERR_NOT_FOUND, broker.newString("of another run")};
    broker.bft = &sparing;
    for (const int inst : {0, 1}) {
        for (const int associators : {0, 1}) {
            const EngineAnswer answer =
                createRefs(_assoc_create_refs_1toN, association, monitorPath(), inst, associators, earlier);
            EXPECT_EQ(answer.result, 0);
            EXPECT_EQ(answer.rc, CMPI_RC_OK);
            EXPECT_EQ(answer.returned.size(), 2u);
        }
    }
    EXPECT_EQ(createInst(association, monitorPath(), 1, 1, earlier).returned.size(), 2u);
    broker.bft = usual;
}

// ---- _assoc_create_refs_1toN: properties of particular classes ----

TEST_F(AssociationEngine, AssignedSequenceOfOrderedComponent)
{
    const Association ordered = {"ZT_Marovelton_OrderedComponent", left, right, "GroupComponent",
                                 "PartComponent"};
    for (const Path &source : {monitorPath(), colorSpacePath(1)}) {
        const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, ordered, source, 1, 0);
        expectResult(answer, 0, CMPI_RC_OK, "");
        for (const Instance &made : answer.instances()) {
            EXPECT_PROPERTIES(made, {{"GroupComponent", *made.find("GroupComponent")},
                                     {"PartComponent", reference(monitorPath())},
                                     {"AssignedSequence", uint64(0)}});
        }
        EXPECT_CALLS(answer, {});
    }
    // The name of the class is compared exactly.
    const Association other = {"ZT_MAROVELTON_ORDEREDCOMPONENT", left, right, "GroupComponent",
                               "PartComponent"};
    for (const Instance &made : createRefs(_assoc_create_refs_1toN, other, monitorPath(), 1, 0).instances()) {
        EXPECT_EQ(made.properties.size(), 2u);
    }
}

TEST_F(AssociationEngine, IsCurrentOfEveryPairInEveryMode)
{
    const char *connection = "ZT_Marovelton_IPNetworkConnection";
    const char *dhcp = "ZT_Marovelton_DHCPSettingData";
    const char *assignment = "ZT_Marovelton_IPAssignmentSettingData";
    const char *staticData = "ZT_Marovelton_ExtendedStaticIPAssignmentSettingData";
    const struct {
        const char *leftClass;
        const char *rightClass;
        int currentMode; // the mode in which IsCurrent is 1; -1: never
    } pairs[] = {
        {connection, dhcp, 0},       {dhcp, connection, 0},        {connection, assignment, 1},
        {assignment, connection, 1}, {connection, staticData, -1}, {staticData, connection, -1},
        {assignment, dhcp, -1},      {dhcp, staticData, -1},
    };
    const auto pathOf = [&](const std::string &className) {
        return className == connection   ? connectionPath()
               : className == dhcp       ? dhcpPath()
               : className == staticData ? staticPath()
                                         : assignmentPath();
    };
    for (const auto &pair : pairs) {
        for (const int mode : {-2, 0, 1, 2, 3}) {
            SCOPED_TRACE(std::string(pair.leftClass) + ", " + pair.rightClass + ", mode " +
                         std::to_string(mode));
            seam.remote.IPConfigurationMode = mode;
            const Association settings = {"ZT_Marovelton_ElementSettingData", pair.leftClass, pair.rightClass,
                                          "ManagedElement", "SettingData"};
            const Path leftPath = pathOf(pair.leftClass);
            const Path rightPath = pathOf(pair.rightClass);
            for (const Path &source : {leftPath, rightPath}) {
                const EngineAnswer answer = createRefs(_assoc_create_refs_1toN, settings, source, 1, 0);
                expectResult(answer, 0, CMPI_RC_OK, "");
                const uint16_t isCurrent = mode == pair.currentMode ? 1 : 2;
                EXPECT_PROPERTIES(answer.instance(), {{"ManagedElement", reference(leftPath)},
                                                      {"SettingData", reference(rightPath)},
                                                      {"IsNext", uint16(2)},
                                                      {"IsCurrent", uint16(isCurrent)}});
                EXPECT_CALLS(answer, {"GetRemoteManagementServerInfo()"});
                EXPECT_EQ(answer.trace, "--- _assoc_create_refs_1toN() called \n---IP mode is " +
                                            std::to_string(mode) + "\ntargetName is " +
                                            (source == leftPath ? pair.rightClass : pair.leftClass) +
                                            "\n--- _assoc_create_refs_1toN() leave \n---");
            }
        }
    }
}

TEST_F(AssociationEngine, SettingsWithoutTheModeAreNothing)
{
    const Association settings = {"ZT_Marovelton_ElementSettingData", "ZT_Marovelton_IPNetworkConnection",
                                  "ZT_Marovelton_DHCPSettingData", "ManagedElement", "SettingData"};
    for (const int failure : {-1, 1}) {
        seam.returns("GetRemoteManagementServerInfo", failure);
        for (const int inst : {0, 1}) {
            for (const int associators : {0, 1}) {
                const EngineAnswer answer =
                    createRefs(_assoc_create_refs_1toN, settings, connectionPath(), inst, associators);
                expectResult(answer, 0, CMPI_RC_ERR_FAILED, "Failed to get remote management info.");
                EXPECT_EQ(answer.returned.size(), 0u);
                EXPECT_EQ(answer.upCalls.size(), 0u) << "the mode comes first";
                EXPECT_EQ(answer.trace, "--- _assoc_create_refs_1toN() called \n---");
            }
        }
    }
}

// ---- _assoc_create_inst_1toN ----

TEST_F(AssociationEngine, EnumerationPairsEverySourceWithTheFarEnd)
{
    const EngineAnswer fromLeft = createInst(association, path("ZT_Marovelton_ColorModel"), 1, 1);
    expectResult(fromLeft, 0, CMPI_RC_OK, "");
    const auto expected = [](int number) {
        return associationInstance("ZT_Marovelton_ColorModel", "ColorSpace", colorSpacePath(number),
                                   "Monitor", monitorPath());
    };
    EXPECT_EQ(fromLeft.instances(), (std::vector<Instance>{expected(1), expected(2)}));
    EXPECT_EQ(fromLeft.upCalls,
              (std::vector<std::string>{"enumerateInstanceNames(root/cimv2:ZT_Marovelton_ColorSpace)",
                                        "getInstance(" + describe(colorSpacePath(1)) + ")",
                                        "enumerateInstanceNames(root/cimv2:ZT_Marovelton_Monitor)",
                                        "getInstance(" + describe(colorSpacePath(2)) + ")",
                                        "enumerateInstanceNames(root/cimv2:ZT_Marovelton_Monitor)"}));
    EXPECT_EQ(fromLeft.trace, "--- _assoc_create_inst_1toN() called\n---"
                              "--- _assoc_create_refs_1toN() called \n---"
                              "targetName is ZT_Marovelton_Monitor\n"
                              "--- _assoc_create_refs_1toN() leave \n---"
                              "--- _assoc_create_refs_1toN() called \n---"
                              "targetName is ZT_Marovelton_Monitor\n"
                              "--- _assoc_create_refs_1toN() leave \n---"
                              "--- _assoc_create_inst_1toN() Leave \n---");

    const EngineAnswer fromRight = createInst(association, path("ZT_Marovelton_ColorModel"), 0, 1);
    expectResult(fromRight, 0, CMPI_RC_OK, "");
    EXPECT_EQ(fromRight.instances(), (std::vector<Instance>{expected(1), expected(2)}));
    EXPECT_EQ(fromRight.upCalls.at(0), "enumerateInstanceNames(root/cimv2:ZT_Marovelton_Monitor)");
    EXPECT_EQ(fromRight.upCalls.size(), 3u);
    EXPECT_EQ(createInst(association, path("ZT_Marovelton_ColorModel"), 5, 1).upCalls, fromLeft.upCalls);
}

TEST_F(AssociationEngine, EnumerationOfNames)
{
    const EngineAnswer answer =
        createInst(association, path("ZT_Marovelton_ColorModel").inNameSpace("root/studio"), 1, 0);
    expectResult(answer, 0, CMPI_RC_OK, "");
    const auto expected = [](int number) {
        return associationPath("ZT_Marovelton_ColorModel", "ColorSpace",
                               colorSpacePath(number).inNameSpace("root/studio"), "Monitor",
                               monitorPath().inNameSpace("root/studio"))
            .inNameSpace("root/studio");
    };
    EXPECT_EQ(answer.paths(), (std::vector<Path>{expected(1), expected(2)}));
}

TEST_F(AssociationEngine, EnumerationWithoutSources)
{
    broker.classes[left].instances.clear();
    const EngineAnswer answer = createInst(association, path("ZT_Marovelton_ColorModel"), 1, 1);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(answer.returned.size(), 0u);
    EXPECT_EQ(answer.trace,
              "--- _assoc_create_inst_1toN() called\n------ _assoc_create_inst_1toN() Leave \n---");
}

TEST_F(AssociationEngine, EnumerationFailsWithoutItsPathOrItsSources)
{
    for (const Fault flaw : everyFlaw) {
        SCOPED_TRACE(describe(flaw));
        faults.arm("newObjectPath", 1, flaw);
        EngineAnswer answer = createInst(association, path("ZT_Marovelton_ColorModel"), 1, 1);
        expectResult(answer, -1, CMPI_RC_ERR_FAILED, "Create CMPIObjectPath failed.");
        EXPECT_EQ(answer.upCalls.size(), 0u);
        faults.arm("enumerateInstanceNames", 1, flaw);
        answer = createInst(association, path("ZT_Marovelton_ColorModel"), 1, 1);
        expectResult(answer, -1, CMPI_RC_ERR_FAILED, "CBEnumInstanceNames( _broker, ctx, op, rc)");
        EXPECT_EQ(answer.returned.size(), 0u);
        EXPECT_EQ(answer.trace, "--- _assoc_create_inst_1toN() called\n---");
    }
    faults.disarm();
    for (const CMPIrc rc : {CMPI_RC_ERR_FAILED, CMPI_RC_ERR_NOT_FOUND, CMPI_RC_ERR_NOT_SUPPORTED}) {
        broker.classes[left].enumerateRc = rc;
        expectResult(createInst(association, path("ZT_Marovelton_ColorModel"), 1, 1), -1, CMPI_RC_ERR_FAILED,
                     "CBEnumInstanceNames( _broker, ctx, op, rc)");
    }
    broker.classes[left].enumerateRc = CMPI_RC_OK;
    broker.classes[left].noEnumeration = true;
    expectResult(createInst(association, path("ZT_Marovelton_ColorModel"), 1, 1), -1, CMPI_RC_ERR_FAILED,
                 "CBEnumInstanceNames( _broker, ctx, op, rc)");
}

TEST_F(AssociationEngine, EnumerationStopsAtAnEmptySource)
{
    broker.classes[left].emptyElement = 1;
    const EngineAnswer answer = createInst(association, path("ZT_Marovelton_ColorModel"), 1, 1);
    expectResult(answer, -1, CMPI_RC_ERR_FAILED, "CMGetNext( en, rc)");
    EXPECT_EQ(answer.returned.size(), 1u);
}

TEST_F(AssociationEngine, EnumerationGoesOnAfterAFailedSourceAndEndsAsTheLastOne)
{
    faults.arm("getInstance", 1);
    EngineAnswer answer = createInst(association, path("ZT_Marovelton_ColorModel"), 1, 1);
    expectResult(answer, 0, CMPI_RC_OK, "");
    EXPECT_EQ(answer.instance(), associationInstance("ZT_Marovelton_ColorModel", "ColorSpace",
                                                     colorSpacePath(2), "Monitor", monitorPath()));
    faults.arm("getInstance", 2);
    answer = createInst(association, path("ZT_Marovelton_ColorModel"), 1, 1);
    faults.disarm();
    expectResult(answer, -1, CMPI_RC_ERR_FAILED, "GetInstance of source object failed.");
    EXPECT_EQ(answer.instance(), associationInstance("ZT_Marovelton_ColorModel", "ColorSpace",
                                                     colorSpacePath(1), "Monitor", monitorPath()));
}

// ---- _assoc_get_inst ----

namespace
{

Path colorModelPath()
{
    return associationPath("ZT_Marovelton_ColorModel", "ColorSpace", colorSpacePath(2), "Monitor",
                           monitorPath());
}

void expectNothing(const Answer &answer, CMPIrc rc, const std::string &message)
{
    EXPECT_STATUS(answer, rc, message);
    EXPECT_EQ(answer.returned.size(), 0u) << answer.text();
}

} // namespace

TEST_F(AssociationEngine, GetInstChecksBothEnds)
{
    const Answer answer = getInst(association, colorModelPath().inNameSpace("root/studio"));
    EXPECT_STATUS(answer, CMPI_RC_OK, "");
    // Both references move into the namespace of the request.
    const Path colorSpace = colorSpacePath(2).inNameSpace("root/studio");
    const Path monitor = monitorPath().inNameSpace("root/studio");
    Instance expected =
        associationInstance("ZT_Marovelton_ColorModel", "ColorSpace", colorSpace, "Monitor", monitor);
    expected.path.nameSpace = "root/studio";
    EXPECT_EQ(answer.instance(), expected);
    EXPECT_EQ(answer.upCalls, (std::vector<std::string>{"getInstance(" + describe(colorSpace) + ")",
                                                        "getInstance(" + describe(monitor) + ")"}));
}

TEST_F(AssociationEngine, GetInstWithoutALeftReference)
{
    std::vector<Value> missing = {absent(),
                                  nullOf(CMPI_ref),
                                  nullReference(),
                                  notFoundState(CMPI_ref),
                                  uint32(1),
                                  "root/cimv2:ZT_Marovelton_ColorSpace",
                                  embedded(objectAt(colorSpacePath(2)))};
    for (const CMPIrc rc : {CMPI_RC_ERR_FAILED, CMPI_RC_ERR_NOT_FOUND}) {
        missing.push_back(readFails(rc));
    }
    for (const Value &value : missing) {
        SCOPED_TRACE(describe(value));
        const Answer answer = getInst(association, colorModelPath().with("ColorSpace", value));
        expectNothing(answer, CMPI_RC_ERR_FAILED, "CMGetKey( cop, _RefLeft, rc)");
        EXPECT_EQ(answer.upCalls.size(), 0u);
    }
    expectNothing(getInst(association, path("ZT_Marovelton_ColorModel")), CMPI_RC_ERR_FAILED,
                  "CMGetKey( cop, _RefLeft, rc)");
}

TEST_F(AssociationEngine, GetInstWithoutARightReferenceGivesTheLeftEnd)
{
    std::vector<Value> missing = {absent(),        nullOf(CMPI_ref),
                                  nullReference(), notFoundState(CMPI_ref),
                                  uint32(1),       "root/cimv2:ZT_Marovelton_Monitor"};
    for (const CMPIrc rc : {CMPI_RC_ERR_FAILED, CMPI_RC_ERR_NOT_FOUND}) {
        missing.push_back(readFails(rc));
    }
    for (const Value &value : missing) {
        SCOPED_TRACE(describe(value));
        const Answer answer = getInst(association, colorModelPath().with("Monitor", value));
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "CMGetKey( cop, _RefRight, rc)");
        EXPECT_EQ(answer.instance(), objectAt(colorSpacePath(2)));
        EXPECT_EQ(answer.upCalls.size(), 1u);
    }
}

TEST_F(AssociationEngine, GetInstOfEndsThatCannotBeFetched)
{
    const struct {
        const char *className;
        const char *failed;
        const char *notFound;
        size_t upCalls;
    } ends[] = {
        {left, "GetInstance of left reference failed.", "Left reference not found.", 1},
        {right, "GetInstance of right reference failed.", "Right reference not found.", 2},
    };
    for (const auto &end : ends) {
        SCOPED_TRACE(end.className);
        ClassScript &script = broker.classes[end.className];
        const ClassScript usual = script;
        script.getInstanceMessage = "the other provider's words";
        script.getInstanceRc = CMPI_RC_ERR_FAILED;
        const Answer answer = getInst(association, colorModelPath());
        expectNothing(answer, CMPI_RC_ERR_FAILED, end.failed);
        EXPECT_EQ(answer.upCalls.size(), end.upCalls);
        script.getInstanceRc = CMPI_RC_ERR_NOT_FOUND;
        expectNothing(getInst(association, colorModelPath()), CMPI_RC_ERR_NOT_FOUND, end.notFound);
        script.getInstanceRc = CMPI_RC_ERR_ACCESS_DENIED;
        expectNothing(getInst(association, colorModelPath()), CMPI_RC_ERR_ACCESS_DENIED,
                      "the other provider's words");
        script = usual;
        for (const Fault flaw : everyFlaw) {
            SCOPED_TRACE(describe(flaw));
            faults.arm("getInstance", static_cast<int>(end.upCalls), flaw);
            expectNothing(getInst(association, colorModelPath()), CMPI_RC_ERR_FAILED, end.failed);
            faults.disarm();
        }
        script.instances.clear();
        expectNothing(getInst(association, colorModelPath()), CMPI_RC_ERR_NOT_FOUND, end.notFound);
        script = usual;
    }
}

TEST_F(AssociationEngine, GetInstThatCannotBeBuilt)
{
    for (const Fault flaw : everyFlaw) {
        SCOPED_TRACE(describe(flaw));
        faults.arm("newObjectPath", 1, flaw);
        expectNothing(getInst(association, colorModelPath()), CMPI_RC_ERR_FAILED,
                      "Create CMPIObjectPath failed.");
        faults.arm("newInstance", 1, flaw);
        expectNothing(getInst(association, colorModelPath()), CMPI_RC_ERR_FAILED,
                      "Create CMPIInstance failed.");
    }
    for (const int nth : {1, 2}) {
        faults.arm("setProperty", nth);
        const Answer answer = getInst(association, colorModelPath());
        EXPECT_EQ(answer.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(answer.returned.size(), 0u);
        faults.arm("setNameSpace", nth);
        const Answer moved = getInst(association, colorModelPath());
        EXPECT_EQ(moved.rc, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(moved.returned.size(), 0u);
    }
    faults.disarm();
}
