// SPDX-License-Identifier: Apache-2.0
// The broker's four tables: every member of CMPI 2.0 is there, and does what it says or says that it does
// not.
#include "test_host.h"

#include <cmpi/cmpimacs.h>

#include <cstring>
#include <unistd.h>

namespace
{

class BrokerTables : public testing::Test
{
  protected:
    BrokerTables()
        : repository_(test::readTestClasses()), nameSpaces_(repository_, "root/cimv2"), broker_(nameSpaces_)
    {
    }

    const CMPIBroker *broker() const
    {
        return &broker_.cmpi();
    }

    CMPIObjectPath *thing()
    {
        return CMNewObjectPath(broker(), "root/cimv2", "Test_Thing", nullptr);
    }

    test::TestCall call_;
    cim::ClassRepository repository_;
    cim::NameSpaces nameSpaces_;
    host::DispatchingBroker broker_;
};

/** The members of a table, which are all pointers after the first few, seen as an array of words. */
template <typename Table>
void expectNoNull(const Table &table, std::size_t firstPointer)
{
    constexpr std::size_t wordCount = sizeof(Table) / sizeof(void *);
    const void *words[wordCount];
    std::memcpy(words, &table, sizeof words);
    for (std::size_t i = firstPointer; i < wordCount; ++i) {
        EXPECT_NE(words[i], nullptr) << "member at word " << i;
    }
}

TEST_F(BrokerTables, HaveNoNullMember)
{
    expectNoNull(*broker()->bft, 1);
    expectNoNull(*broker()->eft, 1);
    expectNoNull(*broker()->xft, 1);
    expectNoNull(*broker()->mft, 1);
}

TEST_F(BrokerTables, OfObjectsHaveNoNullMember)
{
    expectNoNull(host::stringTable, 1);
    expectNoNull(host::arrayTable, 1);
    expectNoNull(host::pathTable, 1);
    expectNoNull(host::instanceTable, 1);
    expectNoNull(host::argsTable, 1);
    expectNoNull(host::enumerationTable, 1);
    expectNoNull(host::dateTimeTable, 1);
    expectNoNull(host::contextTable, 1);
    expectNoNull(host::selectExpressionTable, 1);
    expectNoNull(host::errorTable, 1);
    expectNoNull(host::resultTable, 1);
}

TEST_F(BrokerTables, AreOfVersion200)
{
    EXPECT_EQ(broker()->bft->brokerVersion, 200);
    EXPECT_STREQ(broker()->bft->brokerName, "display-host");
    EXPECT_EQ(broker()->eft->ftVersion, 200);
    EXPECT_EQ(broker()->xft->ftVersion, 200);
    EXPECT_EQ(broker()->mft->ftVersion, 200);
    for (const CMPIVersion version :
         {host::stringTable.ftVersion, host::arrayTable.ftVersion, host::pathTable.ftVersion,
          host::instanceTable.ftVersion, host::argsTable.ftVersion, host::enumerationTable.ftVersion,
          host::dateTimeTable.ftVersion, host::contextTable.ftVersion, host::selectExpressionTable.ftVersion,
          host::errorTable.ftVersion, host::resultTable.ftVersion}) {
        EXPECT_EQ(version, 200);
    }
}

TEST_F(BrokerTables, SayWhatTheyCanDo)
{
    const unsigned can = broker()->bft->brokerCapabilities;
    EXPECT_EQ(can & CMPI_MB_InstanceManipulation, static_cast<unsigned>(CMPI_MB_InstanceManipulation));
    EXPECT_EQ(can & CMPI_MB_AssociationTraversal, static_cast<unsigned>(CMPI_MB_AssociationTraversal));
    EXPECT_EQ(can & 0x80u, 0u) << "indications are not delivered";
    EXPECT_EQ(can & CMPI_MB_Supports_MemEnhancements, 0u) << "there are no marks";
}

TEST_F(BrokerTables, MakeNothingOutsideACall)
{
    host::Call *call = host::exchangeCurrentCall(nullptr);
    CMPIStatus status = {};
    EXPECT_EQ(CMNewString(broker(), "text", &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
    EXPECT_EQ(CMNewObjectPath(broker(), "root/cimv2", "Test_Thing", nullptr), nullptr);
    EXPECT_EQ(broker()->mft->cmpiMalloc(broker(), 8), nullptr);
    host::exchangeCurrentCall(call);
    EXPECT_NE(CMNewString(broker(), "text", &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
}

TEST_F(BrokerTables, RefuseANullBroker)
{
    CMPIStatus status = {};
    const CMPIBrokerEncFT &eft = *broker()->eft;
    EXPECT_EQ(eft.newString(nullptr, "text", &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(eft.newArgs(nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(eft.logMessage(nullptr, CMPI_SEV_INFO, "id", "text", nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(eft.trace(nullptr, CMPI_LEV_INFO, "id", "text", nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(broker()->bft->attachThread(nullptr, nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(BrokerTables, MakeNoMoreThanTheCallMayHave)
{
    CMPIStatus status = {};
    unsigned arrays = 0;
    while (CMNewArray(broker(), 100000, CMPI_uint64, &status) != nullptr) {
        ASSERT_LT(++arrays, 1000u);
    }
    EXPECT_EQ(status.rc, CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED);
    EXPECT_EQ(CMNewString(broker(), "text", &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED);
}

// ------------------------------------------------------------------------------------------------- factories

TEST_F(BrokerTables, NewInstanceNeedsAKnownClass)
{
    CMPIStatus status = {};
    const CMPIObjectPath *unknown = CMNewObjectPath(broker(), "root/cimv2", "Test_Nope", &status);
    ASSERT_NE(unknown, nullptr);
    EXPECT_EQ(CMNewInstance(broker(), unknown, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(CMNewInstance(broker(), nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(BrokerTables, NewObjectPathNeedsAClassName)
{
    CMPIStatus status = {};
    EXPECT_EQ(CMNewObjectPath(broker(), "root/cimv2", nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMNewObjectPath(broker(), "root/cimv2", "", &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    const CMPIObjectPath *path = CMNewObjectPath(broker(), nullptr, "Test_Thing", &status);
    ASSERT_NE(path, nullptr);
    EXPECT_STREQ(CMGetCharPtr(CMGetNameSpace(path, nullptr)), "");
}

TEST_F(BrokerTables, NewStringNeedsAText)
{
    CMPIStatus status = {};
    EXPECT_EQ(CMNewString(broker(), nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
}

TEST_F(BrokerTables, NewArrayRefusesTypesThatAreNone)
{
    CMPIStatus status = {};
    EXPECT_EQ(CMNewArray(broker(), 1, CMPI_uint16A, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_EQ(CMNewArray(broker(), 1, CMPI_null, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_EQ(CMNewArray(broker(), 4000000000u, CMPI_uint8, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED);
}

TEST_F(BrokerTables, ClassPathIsAKnowsTheHierarchy)
{
    CMPIStatus status = {};
    const CMPIObjectPath *special = CMNewObjectPath(broker(), "root/cimv2", "test_specialthing", nullptr);
    EXPECT_EQ(CMClassPathIsA(broker(), special, "Test_SpecialThing", &status), 1);
    EXPECT_EQ(CMClassPathIsA(broker(), special, "Test_Thing", &status), 1);
    EXPECT_EQ(CMClassPathIsA(broker(), special, "TEST_ELEMENT", &status), 1);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(CMClassPathIsA(broker(), thing(), "Test_SpecialThing", &status), 0);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_EQ(CMClassPathIsA(broker(), thing(), "Test_Simple", &status), 0);
    EXPECT_EQ(CMClassPathIsA(broker(), thing(), "Test_Nope", &status), 0);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(CMClassPathIsA(broker(), thing(), nullptr, &status), 0);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    EXPECT_EQ(CMClassPathIsA(broker(), nullptr, "Test_Thing", &status), 0);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    const CMPIObjectPath *unknown = CMNewObjectPath(broker(), "root/cimv2", "Test_Nope", nullptr);
    EXPECT_EQ(CMClassPathIsA(broker(), unknown, "test_nope", &status), 1) << "a class is itself";
}

TEST_F(BrokerTables, KnowTheTypeOfAnObject)
{
    CMPIStatus status = {};
    const CMPIBrokerEncFT &eft = *broker()->eft;
    const CMPIString *string = CMNewString(broker(), "text", nullptr);
    EXPECT_EQ(eft.isOfType(broker(), string, "CMPIString", &status), 1);
    EXPECT_EQ(eft.isOfType(broker(), string, "CMPIInstance", &status), 0);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(eft.getType(broker(), string, nullptr)), "CMPIString");
    EXPECT_STREQ(CMGetCharPtr(eft.getType(broker(), thing(), nullptr)), "CMPIObjectPath");
    EXPECT_STREQ(CMGetCharPtr(eft.getType(broker(), CMNewInstance(broker(), thing(), nullptr), nullptr)),
                 "CMPIInstance");
    EXPECT_STREQ(CMGetCharPtr(eft.getType(broker(), CMNewArgs(broker(), nullptr), nullptr)), "CMPIArgs");
    EXPECT_STREQ(CMGetCharPtr(eft.getType(broker(), CMNewArray(broker(), 1, CMPI_ref, nullptr), nullptr)),
                 "CMPIArray");
    EXPECT_STREQ(CMGetCharPtr(eft.getType(broker(), CMNewDateTime(broker(), nullptr), nullptr)),
                 "CMPIDateTime");
    EXPECT_EQ(eft.isOfType(broker(), nullptr, "CMPIString", &status), 0);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(eft.isOfType(broker(), string, nullptr, &status), 0);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
    const struct {
        const void *hdl;
        const void *ft;
    } stranger = {string, &status};
    EXPECT_EQ(eft.getType(broker(), &stranger, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(BrokerTables, ToStringShowsObjects)
{
    const CMPIBrokerEncFT &eft = *broker()->eft;
    const auto text = [&](const void *object) {
        return std::string(CMGetCharPtr(eft.toString(broker(), object, nullptr)));
    };
    EXPECT_EQ(text(CMNewString(broker(), "a text", nullptr)), "a text");
    CMPIObjectPath *path = thing();
    const CMPIUint16 number = 5;
    CMAddKey(path, "DeviceID", reinterpret_cast<const CMPIValue *>("a\"b"), CMPI_chars);
    CMAddKey(path, "Number", reinterpret_cast<const CMPIValue *>(&number), CMPI_uint16);
    EXPECT_EQ(text(path), "root/cimv2:Test_Thing.DeviceID=\"a\\\"b\",Number=5");
    CMPIArray *array = CMNewArray(broker(), 2, CMPI_uint16, nullptr);
    CMSetArrayElementAt(array, 1, reinterpret_cast<const CMPIValue *>(&number), CMPI_uint16);
    EXPECT_EQ(text(array), "{NULL, 5}");
    CMPIArgs *args = CMNewArgs(broker(), nullptr);
    CMAddArg(args, "a", reinterpret_cast<const CMPIValue *>(&number), CMPI_uint16);
    CMAddArg(args, "b", nullptr, CMPI_string);
    EXPECT_EQ(text(args), "a=5, b=NULL");
    EXPECT_EQ(text(CMNewDateTimeFromBinary(broker(), 0, 0, nullptr)), "19700101000000.000000+000");
    const CMPIObjectPath *simple = CMNewObjectPath(broker(), "root/cimv2", "Test_Unserved", nullptr);
    EXPECT_EQ(text(CMNewInstance(broker(), simple, nullptr)), "instance of Test_Unserved { Name = NULL; }");
    CMPIStatus status = {};
    EXPECT_EQ(eft.toString(broker(), nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
}

TEST_F(BrokerTables, MessagesTakeInserts)
{
    const CMPIBrokerEncFT &eft = *broker()->eft;
    CMPIStatus status = {};
    const CMPIString *string = CMNewString(broker(), "string", nullptr);
    const CMPIString *message =
        eft.getMessage(broker(), "id", "$0 $1 $2 $3 $4 $9 $x $", &status, 5, CMPI_chars, "chars", CMPI_string,
                       string, CMPI_sint64, -5LL, CMPI_uint64, 7ULL, CMPI_boolean, 1);
    ASSERT_NE(message, nullptr);
    EXPECT_STREQ(CMGetCharPtr(message), "chars string -5 7 true $9 $x $");
    EXPECT_EQ(status.rc, CMPI_RC_OK);
    EXPECT_STREQ(CMGetCharPtr(eft.getMessage(broker(), "id", "$0 and $0", nullptr, 1, CMPI_real64, 0.5)),
                 "0.5 and 0.5");
    EXPECT_EQ(eft.getMessage(broker(), "id", "$0", &status, 1, CMPI_ref, nullptr), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_STREQ(CMGetCharPtr(eft.getMessage2(broker(), "id", nullptr, "plain", nullptr, 0)), "plain");
    CMPIMsgFileHandle handle = &status;
    EXPECT_EQ(eft.openMessageFile(broker(), "file", &handle).rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(eft.closeMessageFile(broker(), handle).rc, CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(BrokerTables, LogMessagesGoToStandardError)
{
    testing::internal::CaptureStderr();
    EXPECT_EQ(broker()->eft->logMessage(broker(), CMPI_SEV_ERROR, "id", "the text", nullptr).rc, CMPI_RC_OK);
    const CMPIString *string = CMNewString(broker(), "the string", nullptr);
    EXPECT_EQ(broker()->eft->logMessage(broker(), CMPI_SEV_WARNING, nullptr, "hidden", string).rc,
              CMPI_RC_OK);
    EXPECT_EQ(broker()->eft->trace(broker(), CMPI_LEV_VERBOSE, "part", "not shown", nullptr).rc, CMPI_RC_OK);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "display-host: provider error: id: the text\ndisplay-host: provider warning: the string\n");
}

// -------------------------------------------------------------------------------------- threads and up-calls

TEST_F(BrokerTables, IndicationsAreNotSupported)
{
    const CMPIContext *context = &host::makeContext(call_.arena)->cmpi;
    EXPECT_EQ(broker()->bft->deliverIndication(broker(), context, "root/cimv2", nullptr).rc,
              CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(BrokerTables, UpCallsNeedADispatcher)
{
    const CMPIContext *context = &host::makeContext(call_.arena)->cmpi;
    CMPIStatus status = {};
    EXPECT_EQ(CBGetInstance(broker(), context, thing(), nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
}

TEST_F(BrokerTables, UpCallsNeedAContextAndAPath)
{
    const CMPIBrokerFT &bft = *broker()->bft;
    const CMPIContext *context = &host::makeContext(call_.arena)->cmpi;
    CMPIStatus status = {};
    EXPECT_EQ(bft.getInstance(broker(), nullptr, thing(), nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(bft.enumerateInstances(broker(), context, nullptr, nullptr, &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(bft.enumerateInstanceNames(broker(), context, nullptr, &status), nullptr);
    EXPECT_EQ(bft.modifyInstance(broker(), context, nullptr, nullptr, nullptr).rc,
              CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(bft.deleteInstance(broker(), nullptr, nullptr).rc, CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(bft.createInstance(broker(), context, nullptr, nullptr, &status), nullptr);
    EXPECT_EQ(
        bft.associators(broker(), context, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &status),
        nullptr);
    EXPECT_EQ(bft.associatorNames(broker(), context, nullptr, nullptr, nullptr, nullptr, nullptr, &status),
              nullptr);
    EXPECT_EQ(bft.references(broker(), context, nullptr, nullptr, nullptr, nullptr, &status), nullptr);
    EXPECT_EQ(bft.referenceNames(broker(), context, nullptr, nullptr, nullptr, &status), nullptr);
    EXPECT_EQ(bft.execQuery(broker(), context, nullptr, "q", "l", &status), nullptr);
    EXPECT_EQ(bft.invokeMethod(broker(), context, nullptr, "m", nullptr, nullptr, &status).state,
              CMPI_badValue);
    EXPECT_EQ(bft.setProperty(broker(), context, nullptr, "p", nullptr, CMPI_string).rc,
              CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(bft.getProperty(broker(), context, nullptr, "p", &status).state, CMPI_badValue);
}

TEST_F(BrokerTables, ThreadsAreAttachedOnce)
{
    const CMPIContext *context = &host::makeContext(call_.arena)->cmpi;
    const CMPIContext *prepared = CBPrepareAttachThread(broker(), context);
    ASSERT_NE(prepared, nullptr);
    EXPECT_EQ(CBDetachThread(broker(), prepared).rc, CMPI_RC_ERR_FAILED) << "it is not attached";
    ASSERT_EQ(CBAttachThread(broker(), prepared).rc, CMPI_RC_OK);
    EXPECT_EQ(CBAttachThread(broker(), prepared).rc, CMPI_RC_ERR_ALREADY_EXISTS);
    EXPECT_NE(CMNewString(broker(), "made in the thread's own memory", nullptr), nullptr);
    EXPECT_EQ(CBDetachThread(broker(), prepared).rc, CMPI_RC_OK);
    EXPECT_EQ(host::currentCall(), &call_.call());
    EXPECT_EQ(CBPrepareAttachThread(broker(), nullptr), nullptr);
}

// ------------------------------------------------------------------------------------------ operating system

TEST_F(BrokerTables, ResolveFileNames)
{
    char *name = broker()->xft->resolveFileName("some");
    EXPECT_STREQ(name, "libsome.so");
    free(name);
    EXPECT_EQ(broker()->xft->resolveFileName(nullptr), nullptr);
}

void *doubled(void *argument)
{
    return static_cast<char *>(argument) + 1;
}

int onceCount = 0;

TEST_F(BrokerTables, RunThreads)
{
    const CMPIBrokerExtFT &xft = *broker()->xft;
    char place[2] = {};
    void *thread = xft.newThread(doubled, place, 0);
    ASSERT_NE(thread, nullptr);
    void *result = nullptr;
    EXPECT_EQ(xft.joinThread(thread, &result), 0);
    EXPECT_EQ(result, place + 1);
    EXPECT_EQ(xft.newThread(nullptr, nullptr, 0), nullptr);
    EXPECT_EQ(xft.threadSleep(1), 0);
    int once = 0;
    xft.threadOnce(&once, [] { ++onceCount; });
    xft.threadOnce(&once, [] { ++onceCount; });
    EXPECT_EQ(onceCount, 1);
    EXPECT_EQ(xft.threadOnce(nullptr, nullptr), EINVAL);
    void *ending = xft.newThread(
        [](void *argument) -> void * {
            static_cast<const CMPIBrokerExtFT *>(argument)->exitThread(argument);
            return nullptr;
        },
        const_cast<CMPIBrokerExtFT *>(&xft), 0);
    EXPECT_EQ(xft.joinThread(ending, &result), 0);
    EXPECT_EQ(result, &xft);
    void *sleeping = xft.newThread(
        [](void *) -> void * {
            pause();
            return nullptr;
        },
        nullptr, 0);
    EXPECT_EQ(xft.cancelThread(sleeping), 0);
    EXPECT_EQ(xft.joinThread(sleeping, &result), 0);
}

TEST_F(BrokerTables, KeepThreadSpecificValues)
{
    const CMPIBrokerExtFT &xft = *broker()->xft;
    unsigned key = 0;
    int value = 0;
    ASSERT_EQ(xft.createThreadKey(&key, nullptr), 0);
    EXPECT_EQ(xft.getThreadSpecific(key), nullptr);
    EXPECT_EQ(xft.setThreadSpecific(key, &value), 0);
    EXPECT_EQ(xft.getThreadSpecific(key), &value);
    EXPECT_EQ(xft.destroyThreadKey(key), 0);
    EXPECT_EQ(xft.createThreadKey(nullptr, nullptr), EINVAL);
}

TEST_F(BrokerTables, LockAndWait)
{
    const CMPIBrokerExtFT &xft = *broker()->xft;
    void *mutex = xft.newMutex(0);
    void *condition = xft.newCondition(0);
    xft.lockMutex(mutex);
    timespec past = {1, 0};
    EXPECT_EQ(xft.timedCondWait(condition, mutex, &past), ETIMEDOUT);
    EXPECT_EQ(xft.signalCondition(condition), 0);
    xft.unlockMutex(mutex);
    struct Waiting {
        const CMPIBrokerExtFT *xft;
        void *mutex;
        void *condition;
        bool arrived;
        bool go;
    } waiting = {&xft, mutex, condition, false, false};
    void *thread = xft.newThread(
        [](void *argument) -> void * {
            auto *w = static_cast<Waiting *>(argument);
            w->xft->lockMutex(w->mutex);
            w->arrived = true;
            while (!w->go) {
                w->xft->condWait(w->condition, w->mutex);
            }
            w->xft->unlockMutex(w->mutex);
            return w;
        },
        &waiting, 0);
    for (bool arrived = false; !arrived;) {
        xft.lockMutex(mutex);
        arrived = waiting.arrived;
        waiting.go = arrived;
        xft.signalCondition(condition);
        xft.unlockMutex(mutex);
    }
    void *result = nullptr;
    EXPECT_EQ(xft.joinThread(thread, &result), 0);
    EXPECT_EQ(result, &waiting);
    xft.destroyCondition(condition);
    xft.destroyMutex(mutex);
    EXPECT_EQ(xft.condWait(nullptr, nullptr), EINVAL);
    EXPECT_EQ(xft.timedCondWait(nullptr, nullptr, nullptr), EINVAL);
    EXPECT_EQ(xft.signalCondition(nullptr), EINVAL);
    xft.lockMutex(nullptr);
    xft.unlockMutex(nullptr);
    xft.destroyMutex(nullptr);
    xft.destroyCondition(nullptr);
}

// ---------------------------------------------------------------------------------------------------- memory

TEST_F(BrokerTables, HaveNoMarks)
{
    CMPIStatus status = {};
    EXPECT_EQ(broker()->mft->mark(broker(), &status), nullptr);
    EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(broker()->mft->release(broker(), nullptr).rc, CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(BrokerTables, GiveMemoryOfTheCall)
{
    const CMPIBrokerMemFT &mft = *broker()->mft;
    auto *bytes = static_cast<unsigned char *>(mft.cmpiMalloc(broker(), 100));
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % alignof(std::max_align_t), 0u);
    std::memset(bytes, 0x5a, 100);
    auto *more = static_cast<unsigned char *>(mft.cmpiRealloc(broker(), bytes, 200));
    ASSERT_NE(more, nullptr);
    EXPECT_EQ(more[0], 0x5a);
    EXPECT_EQ(more[99], 0x5a);
    auto *less = static_cast<unsigned char *>(mft.cmpiRealloc(broker(), more, 10));
    EXPECT_EQ(less[9], 0x5a);
    const auto *zeros = static_cast<const unsigned char *>(mft.cmpiCalloc(broker(), 10, 3));
    for (int i = 0; i < 30; ++i) {
        EXPECT_EQ(zeros[i], 0);
    }
    EXPECT_EQ(mft.cmpiCalloc(broker(), SIZE_MAX, 2), nullptr);
    EXPECT_EQ(mft.cmpiMalloc(broker(), SIZE_MAX), nullptr);
    EXPECT_STREQ(mft.cmpiStrDup(broker(), "copy"), "copy");
    EXPECT_EQ(mft.cmpiStrDup(broker(), nullptr), nullptr);
    mft.cmpiFree(broker(), more);
}

TEST_F(BrokerTables, FreeObjects)
{
    const CMPIBrokerMemFT &mft = *broker()->mft;
    CMPIInstance *instance = CMNewInstance(broker(), thing(), nullptr);
    // Clones are really given back (a leak would be found); objects of the call are left to it.
    mft.freeInstance(broker(), CMClone(instance, nullptr));
    mft.freeInstance(broker(), instance);
    mft.freeObjectPath(broker(), CMClone(thing(), nullptr));
    mft.freeArgs(broker(), CMClone(CMNewArgs(broker(), nullptr), nullptr));
    mft.freeString(broker(), CMClone(CMNewString(broker(), "s", nullptr), nullptr));
    mft.freeArray(broker(), CMClone(CMNewArray(broker(), 1, CMPI_string, nullptr), nullptr));
    mft.freeDateTime(broker(), CMClone(CMNewDateTime(broker(), nullptr), nullptr));
    mft.freeSelectExp(broker(), CMClone(CMNewSelectExp(broker(), "q", "l", nullptr, nullptr), nullptr));
    EXPECT_STREQ(CMGetCharPtr(CMGetClassName(CMGetObjectPath(instance, nullptr), nullptr)), "Test_Thing");
}

} // namespace
