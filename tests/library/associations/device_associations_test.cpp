// SPDX-License-Identifier: Apache-2.0
// The associations between the monitor and its components, through their factories.

#include "library/associations/association_world.h"

using namespace association_world;

ASSOCIATION_CLASS(TestPattern);
ASSOCIATION_CLASS(PIPFunctionality);
ASSOCIATION_CLASS(OnScreenDisplay);
ASSOCIATION_CLASS(Management);
ASSOCIATION_CLASS(InputSource);
ASSOCIATION_CLASS(ImageAdjustmentModel);
ASSOCIATION_CLASS(ColorModel);
ASSOCIATION_CLASS(Button);
ASSOCIATION_CLASS(SystemDevice);

// The operations beside ModifyInstance that no function table refers to.
#define SET_INSTANCE(Class)                                                                                  \
    CMPIStatus ZT_Marovelton_##Class##SetInstance(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *, \
                                                  const CMPIObjectPath *, const CMPIInstance *,              \
                                                  const char **)
SET_INSTANCE(TestPattern);
SET_INSTANCE(PIPFunctionality);
SET_INSTANCE(OnScreenDisplay);
SET_INSTANCE(Management);
SET_INSTANCE(InputSource);
SET_INSTANCE(ImageAdjustmentModel);
SET_INSTANCE(ColorModel);
SET_INSTANCE(Button);

namespace
{

/** One device association: its constants, and the objects at its ends. */
struct DeviceAssociation {
    const TestedClass *tested;
    const char *refLeft;
    const char *leftClass;
    const char *refRight;
    std::vector<const char *> rightClasses;
    CMPIStatus (*setInstance)(CMPIInstanceMI *, const CMPIContext *, const CMPIResult *,
                              const CMPIObjectPath *, const CMPIInstance *, const char **);
};

const DeviceAssociation associations[] = {
    {&TestPattern,
     "TestPatternGenerator",
     "ZT_Marovelton_TestPatternGenerator",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     ZT_Marovelton_TestPatternSetInstance},
    {&PIPFunctionality,
     "PictureInPicture",
     "ZT_Marovelton_PictureInPicture",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     ZT_Marovelton_PIPFunctionalitySetInstance},
    {&OnScreenDisplay,
     "OSDMenuAndMessages",
     "ZT_Marovelton_OSDMenuAndMessages",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     ZT_Marovelton_OnScreenDisplaySetInstance},
    {&Management,
     "DisplayManagement",
     "ZT_Marovelton_DisplayManagement",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     ZT_Marovelton_ManagementSetInstance},
    {&InputSource,
     "VideoInput",
     "ZT_Marovelton_VideoInput",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     ZT_Marovelton_InputSourceSetInstance},
    {&ImageAdjustmentModel,
     "ImageAdjustment",
     "ZT_Marovelton_ImageAdjustment",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     ZT_Marovelton_ImageAdjustmentModelSetInstance},
    {&ColorModel,
     "ColorSpace",
     "ZT_Marovelton_ColorSpace",
     "Monitor",
     {"ZT_Marovelton_Monitor"},
     ZT_Marovelton_ColorModelSetInstance},
    {&Button,
     "Antecedent",
     "ZT_Marovelton_Monitor",
     "Dependent",
     {"ZT_Marovelton_FunctionButton", "ZT_Marovelton_BezelButton"},
     ZT_Marovelton_ButtonSetInstance},
    {&SystemDevice,
     "GroupComponent",
     "Linux_ComputerSystem",
     "PartComponent",
     {"ZT_Marovelton_Monitor"},
     nullptr},
};

/** Two objects of every class at the ends. */
Path objectOf(const std::string &className, int number)
{
    return identified(className, className + ":" + std::to_string(number));
}

struct DeviceAssociations : testing::TestWithParam<DeviceAssociation> {
    DeviceAssociations()
    {
        serve({objectOf(it.leftClass, 1), objectOf(it.leftClass, 2)});
        for (const char *rightClass : it.rightClasses) {
            serve({objectOf(rightClass, 1), objectOf(rightClass, 2)});
        }
        serve({path("CIM_Service")});
        broker.superclasses = {{it.tested->name, "CIM_Dependency"}, {"CIM_Dependency", "CIM_Association"}};
        broker.superclasses[it.leftClass] = "CIM_Left";
        for (const char *rightClass : it.rightClasses) {
            broker.superclasses[rightClass] = "CIM_Right";
        }
    }

    Path leftObject(int number) const
    {
        return objectOf(it.leftClass, number);
    }
    Path rightObject(size_t end, int number) const
    {
        return objectOf(it.rightClasses.at(end), number);
    }
    Path name(const Path &left, const Path &right) const
    {
        return associationPath(it.tested->name, it.refLeft, left, it.refRight, right);
    }
    Instance made(const Path &left, const Path &right) const
    {
        return associationInstance(it.tested->name, it.refLeft, left, it.refRight, right);
    }
    /** Every pair, by right class, then left object, then right object. */
    std::vector<std::pair<Path, Path>> pairs() const
    {
        std::vector<std::pair<Path, Path>> all;
        for (size_t end = 0; end < it.rightClasses.size(); ++end) {
            for (const int number : {1, 2}) {
                for (const int other : {1, 2}) {
                    all.emplace_back(leftObject(number), rightObject(end, other));
                }
            }
        }
        return all;
    }

    const DeviceAssociation &it = GetParam();
};

/** As the test report shows a parameter. */
void PrintTo(const DeviceAssociation &association, std::ostream *stream)
{
    *stream << association.tested->name;
}

std::string nameOf(const testing::TestParamInfo<DeviceAssociation> &parameter)
{
    return parameter.param.tested->name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(All, DeviceAssociations, testing::ValuesIn(associations), nameOf);

TEST_P(DeviceAssociations, SkeletonAndFunctionTables)
{
    checkSkeleton(*it.tested);

    CMPIStatus status = {CMPI_RC_ERR_NOT_FOUND, nullptr};
    CMPIAssociationMI *mi = it.tested->createAssociationMI(&broker, nullptr, &status);
    ASSERT_NE(mi, nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_FOUND) << "a factory does not touch the status";
    EXPECT_EQ(mi->ft->miName, "association" + std::string(it.tested->name));
    EXPECT_EQ(mi, it.tested->createAssociationMI(&broker, nullptr, nullptr));
    for (const CMPIBoolean terminating : {CMPIBoolean(0), CMPIBoolean(1)}) {
        const CMPIStatus cleaned = mi->ft->cleanup(mi, nullptr, terminating);
        EXPECT_EQ(cleaned.rc, CMPI_RC_OK);
        EXPECT_EQ(cleaned.msg, nullptr);
    }
}

TEST_P(DeviceAssociations, SetInstanceIsNotSupportedAndNotInTheTable)
{
    CMPIInstanceMI *mi = it.tested->createInstanceMI(&broker, nullptr, nullptr);
    if (!it.setInstance) {
        return; // the class has none
    }
    EXPECT_NE(mi->ft->modifyInstance, it.setInstance);
    const CMPIStatus status = it.setInstance(mi, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(test_support::textOf(status.msg, "none"), "NOT_SUPPORTED");
}

// ---- the association's own objects ----

TEST_P(DeviceAssociations, EnumInstanceNamesPairsEveryLeftObjectWithEveryRightOne)
{
    const Answer answer = enumerateNames(*it.tested, path(it.tested->name));
    std::vector<Path> expected;
    for (const auto &[left, right] : pairs()) {
        expected.push_back(name(left, right));
    }
    expectSuccess(answer, expected.size());
    EXPECT_EQ(answer.paths(), expected);
    EXPECT_EQ(answer.upCalls.at(0), std::string("enumerateInstanceNames(root/cimv2:") + it.leftClass + ")")
        << "the left end's objects are the sources";
    const std::string tested = it.tested->name;
    EXPECT_TRUE(answer.trace.starts_with("--- " + tested +
                                         " CMPI EnumInstanceNames() called\n"
                                         "--- _assoc_create_inst_1toN() called\n---"));
    EXPECT_TRUE(answer.trace.ends_with("--- _assoc_create_inst_1toN() Leave \n---"
                                       "--- " +
                                       tested + " CMPI EnumInstanceNames() exited\n"));
    EXPECT_CALLS(answer, {});
}

TEST_P(DeviceAssociations, EnumInstancesPairsEveryLeftObjectWithEveryRightOne)
{
    const Answer answer = enumerate(*it.tested, path(it.tested->name));
    std::vector<Instance> expected;
    for (const auto &[left, right] : pairs()) {
        expected.push_back(made(left, right));
    }
    expectSuccess(answer, expected.size());
    EXPECT_EQ(answer.instances(), expected);
    const std::string tested = it.tested->name;
    EXPECT_TRUE(answer.trace.starts_with("--- " + tested + " CMPI EnumInstances() called\n"));
    EXPECT_TRUE(answer.trace.ends_with("--- " + tested + " CMPI EnumInstances() leave \n"));
}

TEST_P(DeviceAssociations, EnumerationsFailAsTheEngineDoes)
{
    for (const auto operation : {enumerateNames, enumerate}) {
        ClassScript &leftEnd = broker.classes[it.leftClass];
        leftEnd.enumerateRc = CMPI_RC_ERR_ACCESS_DENIED;
        Answer answer = operation(*it.tested, path(it.tested->name));
        expectFailure(answer, CMPI_RC_ERR_FAILED, "CBEnumInstanceNames( _broker, ctx, op, rc)");
        EXPECT_EQ(answer.upCalls.size(), 1u) << "the first failing run ends the request";
        EXPECT_EQ(answer.returned.size(), 0u);
        leftEnd.enumerateRc = CMPI_RC_OK;

        leftEnd.getInstanceRc = CMPI_RC_ERR_NOT_FOUND;
        answer = operation(*it.tested, path(it.tested->name));
        expectFailure(answer, CMPI_RC_ERR_NOT_FOUND, "Source object not found.");
        EXPECT_EQ(answer.upCalls.size(), 3u);
        leftEnd.getInstanceRc = CMPI_RC_OK;

        // The last right end: what the ones before it gave is handed over already.
        broker.classes[it.rightClasses.back()].noEnumeration = true;
        answer = operation(*it.tested, path(it.tested->name));
        expectFailure(answer, CMPI_RC_ERR_FAILED, "CBEnumInstanceNames( _broker, ctx, op, rc)");
        EXPECT_EQ(answer.returned.size(), 4 * (it.rightClasses.size() - 1));
        broker.classes[it.rightClasses.back()].noEnumeration = false;
    }
}

TEST_P(DeviceAssociations, EnumerationsOfNothing)
{
    for (const auto operation : {enumerateNames, enumerate}) {
        const ClassScript usual = broker.classes[it.leftClass];
        broker.classes[it.leftClass].instances.clear();
        expectEmptySuccess(operation(*it.tested, path(it.tested->name)));
        broker.classes[it.leftClass] = usual;
    }
}

TEST_P(DeviceAssociations, GetInstance)
{
    for (const auto &[left, right] : pairs()) {
        const Answer answer = get(*it.tested, name(left, right));
        expectSuccess(answer, 1);
        EXPECT_EQ(answer.instance(), made(left, right));
        const std::string tested = it.tested->name;
        EXPECT_EQ(answer.trace, "--- " + tested + " CMPI GetInstance() called\n--- " + tested +
                                    " CMPI GetInstance() exited\n");
    }
}

TEST_P(DeviceAssociations, GetInstanceThatFailsHasOneText)
{
    const Path target = name(leftObject(1), rightObject(0, 1));
    const auto expectOneText = [&](const Answer &answer) {
        EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Failed to create Instance.");
        EXPECT_EQ(answer.returned.size(), 0u);
        EXPECT_EQ(answer.done, 1) << "the result is closed all the same";
    };
    expectOneText(get(*it.tested, target.without(it.refLeft)));
    expectOneText(get(*it.tested, path(it.tested->name)));
    expectOneText(get(*it.tested, name(objectOf(it.leftClass, 9), rightObject(0, 1))));
    expectOneText(get(*it.tested, name(leftObject(1), objectOf(it.rightClasses[0], 9))));
    broker.classes[it.leftClass].getInstanceRc = CMPI_RC_ERR_ACCESS_DENIED;
    expectOneText(get(*it.tested, target));
    broker.classes[it.leftClass].getInstanceRc = CMPI_RC_OK;
    for (const char *function : {"newObjectPath", "newInstance"}) {
        faults.arm(function, 1);
        expectOneText(get(*it.tested, target));
        faults.disarm();
    }
}

TEST_P(DeviceAssociations, GetInstanceWithoutTheRightKeyGivesTheLeftEndWithAFailure)
{
    const Answer answer = get(*it.tested, name(leftObject(2), rightObject(0, 1)).without(it.refRight));
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "CMGetKey( cop, _RefRight, rc)");
    EXPECT_EQ(answer.instance(), objectAt(leftObject(2)));
    EXPECT_EQ(answer.done, 1);
}

// ---- what an object is tied to ----

TEST_P(DeviceAssociations, FromTheLeft)
{
    const Path source = leftObject(2);
    std::vector<Path> objects;
    std::vector<Instance> instances;
    std::vector<Path> names;
    std::vector<Instance> ties;
    for (size_t end = 0; end < it.rightClasses.size(); ++end) {
        for (const int number : {1, 2}) {
            const Path right = rightObject(end, number);
            objects.push_back(right);
            instances.push_back(objectAt(right));
            names.push_back(name(source, right));
            ties.push_back(made(source, right));
        }
    }
    const Answer found = associators(*it.tested, source);
    expectSuccess(found, objects.size());
    EXPECT_EQ(found.instances(), instances);
    EXPECT_EQ(associatorNames(*it.tested, source).paths(), objects);
    EXPECT_EQ(references(*it.tested, source).instances(), ties);
    EXPECT_EQ(referenceNames(*it.tested, source).paths(), names);
    expectSuccess(associatorNames(*it.tested, source), objects.size());
    expectSuccess(references(*it.tested, source), objects.size());
    expectSuccess(referenceNames(*it.tested, source), objects.size());
}

TEST_P(DeviceAssociations, FromTheRight)
{
    for (size_t end = 0; end < it.rightClasses.size(); ++end) {
        const Path source = rightObject(end, 1);
        const Answer found = associators(*it.tested, source);
        expectSuccess(found, 2);
        EXPECT_EQ(found.instances(),
                  (std::vector<Instance>{objectAt(leftObject(1)), objectAt(leftObject(2))}));
        EXPECT_EQ(associatorNames(*it.tested, source).paths(),
                  (std::vector<Path>{leftObject(1), leftObject(2)}));
        EXPECT_EQ(references(*it.tested, source).instances(),
                  (std::vector<Instance>{made(leftObject(1), source), made(leftObject(2), source)}));
        EXPECT_EQ(referenceNames(*it.tested, source).paths(),
                  (std::vector<Path>{name(leftObject(1), source), name(leftObject(2), source)}));
    }
}

TEST_P(DeviceAssociations, AnUnrelatedSourceIsAnEmptySuccess)
{
    for (const auto operation : {associators, associatorNames, references, referenceNames}) {
        const Answer answer = operation(*it.tested, path("CIM_Service"), {});
        expectEmptySuccess(answer);
        EXPECT_EQ(answer.upCalls.size(), 0u);
    }
}

TEST_P(DeviceAssociations, ASourceOfWhichTheFiltersCannotTellIsAnEmptySuccess)
{
    const auto expectNothing = [](const Answer &answer) {
        expectEmptySuccess(answer);
        EXPECT_EQ(answer.upCalls.size(), 0u);
    };
    broker.superclasses["ACME_Left"] = it.leftClass;
    for (const auto operation : {associators, associatorNames, references, referenceNames}) {
        Path unreadable = leftObject(1);
        for (const TextForm form : {TextForm::noString, TextForm::noCharacters, TextForm::noHandle}) {
            unreadable.classNameForm = form;
            for (const char *filter : {static_cast<const char *>(nullptr), it.tested->name}) {
                expectNothing(operation(*it.tested, unreadable, {.associationClass = filter}));
            }
        }
        // Without a path of its class it cannot be told what the source is.
        faults.arm("newObjectPath", 1);
        const Answer answer = operation(*it.tested, path("ACME_Left"), {});
        faults.disarm();
        if (it.rightClasses.size() == 1) {
            expectNothing(answer);
        } else { // the next right end has its turn and looks for the source, whose class the broker has not
            EXPECT_EQ(answer.rc, CMPI_RC_ERR_INVALID_CLASS);
        }
    }
}

TEST_P(DeviceAssociations, AssociationClassFilter)
{
    const size_t count = 2 * it.rightClasses.size();
    std::string lower = it.tested->name;
    for (char &c : lower) {
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    }
    for (const auto operation : {associators, associatorNames, references, referenceNames}) {
        for (const char *filter : {it.tested->name, "CIM_Dependency", "CIM_Association", lower.c_str()}) {
            expectSuccess(operation(*it.tested, leftObject(1), {.associationClass = filter}), count);
        }
        for (const char *filter : {"CIM_SystemDevice", "ZT_Marovelton_Monitor", "NoSuchClass", ""}) {
            const Answer answer = operation(*it.tested, leftObject(1), {.associationClass = filter});
            expectEmptySuccess(answer);
            EXPECT_EQ(answer.upCalls.size(), 0u);
        }
        for (const Fault flaw : everyFlaw) {
            faults.arm("newObjectPath", 1, flaw);
            const Answer answer = operation(*it.tested, leftObject(1), {.associationClass = it.tested->name});
            faults.disarm();
            expectFailure(answer, CMPI_RC_ERR_FAILED, "Create CMPIObjectPath failed.");
            EXPECT_EQ(answer.upCalls.size(), 0u);
        }
        broker.classPathIsAYes = static_cast<CMPIBoolean>(2);
        expectEmptySuccess(operation(*it.tested, leftObject(1), {.associationClass = it.tested->name}));
        broker.classPathIsAYes.reset();
    }
}

TEST_P(DeviceAssociations, RoleFilters)
{
    const size_t fromLeft = 2 * it.rightClasses.size();
    std::string upperLeft = it.refLeft;
    for (char &c : upperLeft) {
        c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    }
    for (const auto operation : {associators, associatorNames, references, referenceNames}) {
        expectSuccess(operation(*it.tested, leftObject(1), {.role = it.refLeft}), fromLeft);
        expectSuccess(operation(*it.tested, leftObject(1), {.role = upperLeft.c_str()}), fromLeft);
        expectSuccess(operation(*it.tested, rightObject(0, 1), {.role = it.refRight}), 2);
        // The far end's reference is not the role of the source.
        expectEmptySuccess(operation(*it.tested, leftObject(1), {.role = it.refRight}));
        expectEmptySuccess(operation(*it.tested, rightObject(0, 1), {.role = it.refLeft}));
        expectEmptySuccess(operation(*it.tested, leftObject(1), {.role = "Element"}));
    }
    for (const auto operation : {associators, associatorNames}) {
        expectSuccess(operation(*it.tested, leftObject(1), {.resultRole = it.refRight}), fromLeft);
        expectSuccess(operation(*it.tested, rightObject(0, 1), {.resultRole = upperLeft.c_str()}), 2);
        expectEmptySuccess(operation(*it.tested, leftObject(1), {.resultRole = it.refLeft}));
        expectEmptySuccess(operation(*it.tested, rightObject(0, 1), {.resultRole = it.refRight}));
        expectSuccess(operation(*it.tested, leftObject(1), {.role = it.refLeft, .resultRole = it.refRight}),
                      fromLeft);
        expectEmptySuccess(
            operation(*it.tested, leftObject(1), {.role = it.refLeft, .resultRole = it.refLeft}));
    }
}

TEST_P(DeviceAssociations, ResultClassFilter)
{
    for (const auto operation : {associators, associatorNames}) {
        expectSuccess(operation(*it.tested, leftObject(1), {.resultClass = "CIM_Right"}),
                      2 * it.rightClasses.size());
        for (const char *rightClass : it.rightClasses) {
            expectSuccess(operation(*it.tested, leftObject(1), {.resultClass = rightClass}), 2);
        }
        expectSuccess(operation(*it.tested, rightObject(0, 1), {.resultClass = "CIM_Left"}), 2);
        expectSuccess(operation(*it.tested, rightObject(0, 1), {.resultClass = it.leftClass}), 2);
        expectEmptySuccess(operation(*it.tested, leftObject(1), {.resultClass = it.leftClass}));
        expectEmptySuccess(operation(*it.tested, leftObject(1), {.resultClass = "CIM_Service"}));
        expectEmptySuccess(operation(*it.tested, leftObject(1), {.resultClass = "NoSuchClass"}));
        expectEmptySuccess(operation(*it.tested, rightObject(0, 1), {.resultClass = "CIM_Right"}));
    }
}

TEST_P(DeviceAssociations, ASourceThatDoesNotExist)
{
    for (const auto operation : {associators, associatorNames, references, referenceNames}) {
        const Answer answer = operation(*it.tested, objectOf(it.leftClass, 9), {});
        expectFailure(answer, CMPI_RC_ERR_NOT_FOUND, "Source object not found.");
        EXPECT_EQ(answer.upCalls.size(), 1u);
    }
}

TEST_P(DeviceAssociations, AFailingFarEndEndsTheRequest)
{
    broker.classes[it.rightClasses[0]].enumerateRc = CMPI_RC_ERR_FAILED;
    const Answer found = associators(*it.tested, leftObject(1));
    expectFailure(found, CMPI_RC_ERR_FAILED, "CBEnumInstances( _broker, ctx, op, rc)");
    EXPECT_EQ(found.upCalls.size(), 2u);
    for (const auto operation : {associatorNames, references, referenceNames}) {
        const Answer answer = operation(*it.tested, leftObject(1), {});
        expectFailure(answer, CMPI_RC_ERR_FAILED, "CBEnumInstanceNames( _broker, ctx, op, rc)");
        EXPECT_EQ(answer.upCalls.size(), 2u);
    }
}

TEST_P(DeviceAssociations, AFarEndWithoutInstancesIsAnEmptySuccess)
{
    for (const char *rightClass : it.rightClasses) {
        broker.classes[rightClass].instances.clear();
    }
    for (const auto operation : {associators, associatorNames, references, referenceNames}) {
        expectEmptySuccess(operation(*it.tested, leftObject(1), {}));
    }
}

TEST_P(DeviceAssociations, WhatTheEngineSaysBesideSuccessIsASuccess)
{
    // The far end's path cannot be made: the engine gives nothing and a status, the request is a success.
    const int pathsBefore = 1; // of the source's class, for the filters
    for (const auto operation : {associators, associatorNames, references, referenceNames}) {
        faults.arm("newObjectPath", pathsBefore + 1);
        const Answer answer = operation(*it.tested, rightObject(0, 1), {});
        faults.disarm();
        EXPECT_STATUS(answer, CMPI_RC_OK, "");
        EXPECT_EQ(answer.returned.size(), 0u);
        EXPECT_EQ(answer.done, 1);
    }
}

TEST_P(DeviceAssociations, Torture)
{
    // A list that ends early or a namespace that cannot be read does not show.
    Torture torture = {.prepare = {}, .harmless = {"hasNext", "getNameSpace", "getCharPtr"}};
    // An enumeration ends as its last source does, so that there is one here.
    broker.classes[it.leftClass].instances.pop_back();
    checkTorture([&] { return enumerateNames(*it.tested, path(it.tested->name)); }, torture);
    checkTorture([&] { return enumerate(*it.tested, path(it.tested->name)); }, torture);
    checkTorture([&] { return get(*it.tested, name(leftObject(1), rightObject(0, 1))); }, torture);
    // Whose class cannot be told is tied to nothing; without the far end's path a request is an empty
    // success.
    for (const char *function : {"classPathIsA", "newObjectPath", "getClassName"}) {
        torture.harmless.push_back(function);
    }
    for (const auto operation : {associators, associatorNames, references, referenceNames}) {
        for (const Path &source : {leftObject(1), rightObject(0, 2)}) {
            checkTorture(
                [&] { return operation(*it.tested, source, {.associationClass = "CIM_Dependency"}); },
                torture);
        }
    }
}

// ---- particular classes ----

namespace
{

void serveMonitorAndComponents()
{
    serveWorld();
    std::vector<Path> colorSpaces;
    for (int number = 1; number <= 7; ++number) {
        colorSpaces.push_back(colorSpacePath(number));
    }
    serve(colorSpaces);
    std::vector<Path> functionButtons;
    for (int number = 1; number <= 4; ++number) {
        functionButtons.push_back(identified("ZT_Marovelton_FunctionButton",
                                             "ZT:Marovelton_FunctionButton:" + std::to_string(number)));
    }
    serve(functionButtons);
    serve({identified("ZT_Marovelton_BezelButton", "ZT:Marovelton_BezelButton")});
}

} // namespace

TEST(ColorModelAssociation, TheMonitorsSevenColorSpaces)
{
    serveMonitorAndComponents();
    const Answer answer = associators(ColorModel, monitorPath());
    expectSuccess(answer, 7);
    for (size_t i = 0; i < 7; ++i) {
        EXPECT_EQ(answer.instances().at(i), objectAt(colorSpacePath(static_cast<int>(i) + 1)));
    }
}

TEST(ColorModelAssociation, RoleMonitor)
{
    serveMonitorAndComponents();
    expectEmptySuccess(references(ColorModel, colorSpacePath(1), {.role = "Monitor"}));
    expectSuccess(references(ColorModel, monitorPath(), {.role = "Monitor"}), 7);
    expectSuccess(references(ColorModel, monitorPath(), {.role = "monitor"}), 7);
}

TEST(ButtonAssociation, FunctionButtonsThenBezelButtons)
{
    serveMonitorAndComponents();
    const Answer answer = associatorNames(Button, monitorPath());
    expectSuccess(answer, 5);
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(answer.paths().at(i).className, "ZT_Marovelton_FunctionButton");
    }
    EXPECT_EQ(answer.paths().at(4).className, "ZT_Marovelton_BezelButton");
    EXPECT_EQ(answer.upCalls,
              (std::vector<std::string>{"getInstance(" + describe(monitorPath()) + ")",
                                        "enumerateInstanceNames(root/cimv2:ZT_Marovelton_FunctionButton)",
                                        "getInstance(" + describe(monitorPath()) + ")",
                                        "enumerateInstanceNames(root/cimv2:ZT_Marovelton_BezelButton)"}));
    EXPECT_EQ(associators(Button, monitorPath()).instances().size(), 5u);
}

TEST(ButtonAssociation, ABezelButtonFindsTheMonitorThroughTheSecondRightEnd)
{
    serveMonitorAndComponents();
    const Path button = identified("ZT_Marovelton_BezelButton", "ZT:Marovelton_BezelButton");
    const Answer answer = references(Button, button);
    expectSuccess(answer, 1);
    EXPECT_EQ(answer.instance(),
              associationInstance("ZT_Marovelton_Button", "Antecedent", monitorPath(), "Dependent", button));
}

TEST(ButtonAssociation, TheFirstFailingRightEndEndsTheRequest)
{
    serveMonitorAndComponents();
    broker.classes["ZT_Marovelton_FunctionButton"].enumerateRc = CMPI_RC_ERR_FAILED;
    for (const auto operation : {associatorNames, references, referenceNames}) {
        const Answer answer = operation(Button, monitorPath(), {});
        expectFailure(answer, CMPI_RC_ERR_FAILED, "CBEnumInstanceNames( _broker, ctx, op, rc)");
        EXPECT_EQ(answer.upCalls.size(), 2u);
    }
    const Answer listed = enumerate(Button, path("ZT_Marovelton_Button"));
    expectFailure(listed, CMPI_RC_ERR_FAILED, "CBEnumInstanceNames( _broker, ctx, op, rc)");
    EXPECT_EQ(listed.upCalls.size(), 3u);
}

TEST(ButtonAssociation, AStatusBesideSuccessOfOneRightEndIsNotLostInAnEnumeration)
{
    serveMonitorAndComponents();
    // In the first run the path of the far end cannot be made: nothing of it is listed, the second run is
    // well.
    faults.arm("newObjectPath", 2);
    const Answer answer = enumerate(Button, path("ZT_Marovelton_Button"));
    faults.disarm();
    EXPECT_STATUS(answer, CMPI_RC_ERR_FAILED, "Create CMPIObjectPath failed.");
    EXPECT_EQ(answer.instances().size(), 1u);
    EXPECT_EQ(answer.done, 1);
}

TEST(SystemDeviceAssociation, TheComputerSystemOfAnotherProvider)
{
    serveMonitorAndComponents();
    const Answer answer = associators(SystemDevice, monitorPath());
    expectSuccess(answer, 1);
    EXPECT_EQ(answer.instance(), objectAt(computerPath()));
    EXPECT_EQ(references(SystemDevice, computerPath()).instance(),
              associationInstance("ZT_Marovelton_SystemDevice", "GroupComponent", computerPath(),
                                  "PartComponent", monitorPath()));
    // Without that provider nothing can be told.
    broker.classes.erase("Linux_ComputerSystem");
    expectFailure(associators(SystemDevice, monitorPath()), CMPI_RC_ERR_FAILED,
                  "CBEnumInstances( _broker, ctx, op, rc)");
}
