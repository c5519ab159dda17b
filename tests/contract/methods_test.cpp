// SPDX-License-Identifier: Apache-2.0
// The methods against their definitions: the names that a provider knows, the arguments that it asks for and
// their types, and the type of what it returns. The table is typed, not read from either side.

#include "contract.h"
#include "method_table.h"

#include <gmock/gmock.h>

#include <map>

using namespace contract;
using testing::UnorderedElementsAreArray;

namespace contract
{

static void PrintTo(const MethodClassRow &row, std::ostream *out)
{
    *out << row.name;
}

} // namespace contract

namespace
{

TEST(MethodRows, AreOneForEachClass)
{
    expectOneRowEach(methodTable(), false);
}

// ---- calls that record what the provider asks for ----

/** Argument lists whose reader notes the names it is asked for. */
class AskedArguments
{
  public:
    explicit AskedArguments(const Entries &arguments)
        : object_(broker.newArgs(arguments)), usual_(object_->ft)
    {
        names.clear();
        usualTable = usual_;
        table_ = *usual_;
        table_.getArg = [](const CMPIArgs *args, const char *name, CMPIStatus *status) {
            names.push_back(name);
            return usualTable->getArg(args, name, status);
        };
        object_->ft = &table_;
    }
    ~AskedArguments()
    {
        object_->ft = usual_;
    }
    AskedArguments(const AskedArguments &) = delete;
    AskedArguments &operator=(const AskedArguments &) = delete;

    const CMPIArgs *args() const
    {
        return object_;
    }
    const std::vector<std::string> &asked() const
    {
        return names;
    }

  private:
    ArgsObject *object_;
    const CMPIArgsFT *usual_;
    CMPIArgsFT table_ = {};
    static inline const CMPIArgsFT *usualTable = nullptr;
    static inline std::vector<std::string> names;
};

struct MethodAnswer : Answer {
    std::vector<std::string> asked; // the arguments that the provider read, by the names it used
};

MethodAnswer callMethod(const TestedClass &tested, const Path &target, const std::string &method,
                        const Entries &arguments)
{
    CMPIStatus status = {CMPI_RC_OK, nullptr};
    CMPIMethodMI *mi = tested.createMethodMI(&broker, contextOf(noUser()), &status);
    const AskedArguments in(arguments);
    ArgsObject *out = broker.newArgs({});
    MethodAnswer answer;
    static_cast<Answer &>(answer) = collect([&](const CMPIResult *result) {
        return mi->ft->invokeMethod(mi, contextOf("admin"), result, broker.newPath(target), method.c_str(),
                                    in.args(), out);
    });
    answer.asked = in.asked();
    EXPECT_EQ(out->entries.size(), 0u) << method << " has an output argument that is not declared";
    return answer;
}

class Methods : public testing::TestWithParam<MethodClassRow>
{
  public:
    void SetUp() override
    {
        scriptMonitor();
        const std::vector<Path> paths = pathsOf(tested);
        ASSERT_GT(paths.size(), row.target);
        target = paths[row.target];
    }

    Value value(uint8_t number) const
    {
        return row.returnType == CMPI_uint8 ? uint8(number) : uint32(number);
    }
    MethodAnswer call(const std::string &method, const Entries &arguments = {}) const
    {
        return callMethod(tested, target, method, arguments);
    }
    /** The answer to complete arguments. */
    void expectUsual(const MethodRow &method, const Answer &answer) const
    {
        EXPECT_METHOD(answer, value(method.code == CMPI_RC_OK ? 0 : row.failureValue), method.code,
                      method.message);
    }
    const cim::Method &declaredMethod(const char *method) const
    {
        const cim::Method *found = declared.findMethod(method);
        if (!found || found->name != method) {
            ADD_FAILURE() << className << " does not declare " << method;
            static const cim::Method none;
            return none;
        }
        return *found;
    }

    const MethodClassRow row = GetParam();
    const TestedClass &tested = libraryClass(row.name);
    const std::string className = tested.name;
    const cim::Class &declared = declaredClass(className);
    Path target;
};

Entries with(Entries arguments, const char *name, const Value &value)
{
    Entry *entry = findEntry(arguments, name);
    EXPECT_NE(entry, nullptr) << name;
    if (entry) {
        entry->value = value;
    }
    return arguments;
}

/** Values of every other type that clients send where a value of `type` is declared. */
std::vector<Value> valuesOfOtherTypes(CMPIType type)
{
    std::vector<Value> values = {uint32(1), boolean(1), uint16Array({1}), real32(1.0F)};
    values.push_back(type == CMPI_string ? reference(path("ZT_Marovelton_ColorSpace",
                                                          {{"InstanceID", "ZT:Marovelton_ColorSpace:1"}}))
                                         : Value("ZT:Marovelton_ColorSpace:1"));
    return values;
}

// ---- the names ----

TEST_P(Methods, AreThoseThatTheClassDeclares)
{
    std::vector<std::string> expected;
    for (const MethodRow &method : row.methods) {
        expected.push_back(method.name);
    }
    ASSERT_EQ(expected.size(), row.count);
    std::vector<std::string> own;
    for (const cim::Method &method : declared.methods) {
        if (!method.propagated) {
            own.push_back(method.name);
        }
    }
    EXPECT_THAT(own, UnorderedElementsAreArray(expected));
}

TEST_P(Methods, AreKnownToTheProvider)
{
    size_t known = 0;
    for (const MethodRow &method : row.methods) {
        SCOPED_TRACE(method.name);
        for (const Entries &arguments : {Entries(), completeArguments(method)}) {
            const Answer answer = call(method.name, arguments);
            ASSERT_EQ(answer.returned.size(), 1u);
            EXPECT_FALSE(answer.rc == row.unknownCode && answer.message == method.name &&
                         answer.returned[0] == value(row.unknownValue));
        }
        ++known;
    }
    EXPECT_EQ(known, row.count);
}

TEST_P(Methods, OthersAreUnknownToTheProvider)
{
    // Methods of other classes, and those that the class inherits and does not offer.
    std::set<std::string> others = {"Reboot", "SetCaption"};
    size_t inherited = 0;
    for (const cim::Method &method : declared.methods) {
        if (method.propagated) {
            others.insert(method.name);
            ++inherited;
        }
    }
    EXPECT_EQ(inherited, row.inherited);
    for (const MethodClassRow &other : methodTable()) {
        for (const MethodRow &method : other.methods) {
            if (!declared.findMethod(method.name)) {
                others.insert(method.name);
            }
        }
    }
    EXPECT_GT(others.size(), 40u);
    for (const std::string &name : others) {
        SCOPED_TRACE(name);
        const MethodAnswer answer = call(name);
        EXPECT_METHOD(answer, value(row.unknownValue), row.unknownCode, name);
        EXPECT_THAT(answer.asked, testing::IsEmpty());
        EXPECT_SENT(answer, {});
    }
}

// The classes without methods answer one name all the same. Clients know it; it is not declared.
TEST_P(Methods, AreThePlaceholderAloneWhereNoneIsDeclared)
{
    EXPECT_EQ(declared.findMethod("insert_method_name"), nullptr);
    const Answer answer = call("insert_method_name");
    if (row.count == 0) {
        EXPECT_METHOD(answer, uint32(1), CMPI_RC_OK, "");
    } else {
        EXPECT_METHOD(answer, value(row.unknownValue), row.unknownCode, "insert_method_name");
    }
}

// ---- what they take and return ----

TEST_P(Methods, DeclareTheParametersThatTheProviderAsksFor)
{
    for (const MethodRow &method : row.methods) {
        SCOPED_TRACE(method.name);
        const cim::Method &is = declaredMethod(method.name);
        EXPECT_FALSE(is.isStatic);
        ASSERT_EQ(is.parameters.size(), method.parameters.size());
        std::vector<std::string> asked;
        for (const Parameter &parameter : method.parameters) {
            SCOPED_TRACE(parameter.name);
            const cim::Parameter *found = is.findParameter(parameter.name);
            ASSERT_NE(found, nullptr);
            EXPECT_EQ(found->name, parameter.name);
            EXPECT_EQ(found->cmpiCode(), parameter.given.type);
            EXPECT_TRUE(cim::hasQualifier(found->qualifiers, "In"));
            EXPECT_TRUE(found->isIn);
            EXPECT_FALSE(found->isOut);
            if (parameter.given.type == CMPI_ref) {
                EXPECT_TRUE(mof::deskClasses().isA(parameter.given.path->className, found->referenceClass))
                    << found->referenceClass;
            }
            if (parameter.asked) {
                asked.push_back(parameter.name);
            }
        }
        const MethodAnswer answer = call(method.name, completeArguments(method));
        expectUsual(method, answer);
        EXPECT_THAT(answer.asked, UnorderedElementsAreArray(asked));
    }
}

/** Nothing but requests for values, which some methods make before they read their arguments. */
void expectNothingSet(const Answer &answer)
{
    for (const SentMessage &message : answer.sent) {
        EXPECT_EQ(message.bytes[4], PROCESS_GET_REQUEST) << hex(message.bytes);
    }
}

TEST_P(Methods, MissEachParameterThatTheyDeclare)
{
    for (const MethodRow &method : row.methods) {
        for (const Parameter &parameter : method.parameters) {
            SCOPED_TRACE(std::string(method.name) + "(" + parameter.name + ")");
            const Answer answer =
                call(method.name, with(completeArguments(method), parameter.name, absent()));
            if (!parameter.missing) {
                expectUsual(method, answer);
                continue;
            }
            EXPECT_METHOD(answer, value(row.failureValue), CMPI_RC_ERR_INVALID_PARAMETER, parameter.missing);
            expectNothingSet(answer);
        }
    }
}

TEST_P(Methods, RefuseParametersOfOtherTypesThanDeclared)
{
    for (const MethodRow &method : row.methods) {
        for (const Parameter &parameter : method.parameters) {
            for (const Value &other : valuesOfOtherTypes(parameter.given.type)) {
                SCOPED_TRACE(std::string(method.name) + "(" + parameter.name + " = " +
                             test_support::describe(other) + ")");
                const Answer answer =
                    call(method.name, with(completeArguments(method), parameter.name, other));
                if (!parameter.missing) {
                    expectUsual(method, answer);
                    continue;
                }
                EXPECT_METHOD(answer, value(row.failureValue), CMPI_RC_ERR_INVALID_PARAMETER,
                              parameter.invalidType);
                expectNothingSet(answer);
            }
        }
    }
}

TEST_P(Methods, ReturnTheDeclaredType)
{
    size_t methods = 0;
    for (const MethodRow &method : row.methods) {
        SCOPED_TRACE(method.name);
        const CMPIType type = cim::cmpiType(declaredMethod(method.name).returnType, false);
        EXPECT_EQ(type, row.returnType);
        for (const Entries &arguments : {Entries(), completeArguments(method)}) {
            const Answer answer = call(method.name, arguments);
            ASSERT_EQ(answer.returned.size(), 1u);
            EXPECT_EQ(answer.returned[0].type, type);
        }
        ++methods;
    }
    EXPECT_EQ(methods, row.count);
}

TEST_P(Methods, NameTheReturnValuesThatTheyGive)
{
    // The name of 1 tells what it stands for in this class; methods of the standard keep the standard's
    // names.
    const auto declaredNames = [&](const MethodRow &method) {
        const cim::Method &found = declaredMethod(method.name);
        const cim::Qualifier *map = cim::findQualifier(found.qualifiers, "ValueMap");
        const cim::Qualifier *names = cim::findQualifier(found.qualifiers, "Values");
        std::map<std::string, std::string> declaredAs;
        if (map && names && map->value.items.size() == names->value.items.size()) {
            for (size_t i = 0; i < map->value.items.size(); ++i) {
                declaredAs[map->value.items[i]] = names->value.items[i];
            }
        }
        return declaredAs;
    };
    for (const MethodRow &method : row.methods) {
        SCOPED_TRACE(method.name);
        if (cim::findQualifier(declaredMethod(method.name).qualifiers, "Override")) {
            continue;
        }
        const bool unknownMethod = call("Reboot").returned.at(0) == value(1);
        const Answer keyless =
            invoke(tested, path(className), method.name, completeArguments(method), "admin");
        const bool missingKey = keyless.returned.at(0) == value(1);
        EXPECT_NE(keyless.rc, CMPI_RC_OK);
        std::map<std::string, std::string> expected = {{"0", "Success"}, {"2", "Failed"}};
        if (unknownMethod || missingKey) {
            expected["1"] = !missingKey      ? "Unknown Method"
                            : !unknownMethod ? "Missing Key"
                                             : "Unknown Method or Missing Key";
        }
        EXPECT_EQ(declaredNames(method), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryClass, Methods, testing::ValuesIn(methodTable().begin(), methodTable().end()),
                         [](const auto &tested) { return std::string(tested.param.name); });

// ---- the tables themselves ----

TEST(MethodTables, AreComplete)
{
    size_t methods = 0;
    size_t parameters = 0;
    size_t unread = 0;
    for (const MethodClassRow &row : methodTable()) {
        EXPECT_NE(libraryClass(row.name).createMethodMI, nullptr) << row.name;
        EXPECT_EQ(libraryClass(row.name).createAssociationMI, nullptr) << row.name;
        methods += row.methods.size();
        for (const MethodRow &method : row.methods) {
            parameters += method.parameters.size();
            for (const Parameter &parameter : method.parameters) {
                unread += parameter.missing == nullptr;
            }
        }
    }
    EXPECT_EQ(methods, 65u);
    EXPECT_EQ(parameters, 66u);
    EXPECT_EQ(unread, 2u); // Set4KDisplayMode and the RequestStateChange of the configuration service
    size_t declared = 0;
    for (const TestedClass &tested : libraryClasses()) {
        for (const cim::Method &method : declaredClass(tested.name).methods) {
            declared += !method.propagated;
        }
    }
    EXPECT_EQ(declared, 65u);
}

} // namespace
