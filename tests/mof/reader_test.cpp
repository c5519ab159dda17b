// SPDX-License-Identifier: Apache-2.0
// The MOF reader: what it takes, what it says about what it does not take, and that nothing brings it down.
#include "cim/mof_reader.h"
#include "mof_classes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char *qualifierText = R"(
Qualifier Abstract : boolean = false, Scope(class, association, indication), Flavor(Restricted);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride);
Qualifier Indication : boolean = false, Scope(class, indication), Flavor(DisableOverride);
Qualifier Description : string, Scope(any), Flavor(Translatable);
Qualifier In : boolean = true, Scope(parameter), Flavor(DisableOverride);
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride);
Qualifier MaxLen : uint32, Scope(property, parameter, method);
Qualifier Out : boolean = false, Scope(parameter), Flavor(DisableOverride);
Qualifier Override : string, Scope(property, reference, method), Flavor(Restricted);
Qualifier Static : boolean = false, Scope(method, property), Flavor(DisableOverride);
Qualifier ValueMap : string[], Scope(property, parameter, method);
Qualifier Version : string, Scope(class, association, indication), Flavor(Restricted, Translatable);
)";

/** A repository with the qualifiers above. */
void prepare(cim::ClassRepository &repository)
{
    const cim::MofResult result = cim::readMofText(repository, qualifierText, "qualifiers");
    ASSERT_THAT(result.messages, IsEmpty()) << result.messages.front().format();
}

std::vector<std::string> texts(const cim::MofResult &result)
{
    std::vector<std::string> lines;
    for (const cim::MofMessage &message : result.messages) {
        lines.push_back(message.format());
    }
    return lines;
}

/** The messages of a text read after the qualifiers. */
std::vector<std::string> messagesOf(const std::string &text, const cim::MofLimits &limits = {})
{
    cim::ClassRepository repository;
    prepare(repository);
    return texts(cim::readMofText(repository, text, "f", limits));
}

/** A directory of its own for files to include, gone at the end. */
class Directory
{
  public:
    Directory()
    {
        std::string pattern = std::filesystem::temp_directory_path() / "mof_test_XXXXXX";
        path_ = mkdtemp(pattern.data()) == nullptr ? "" : pattern;
    }
    ~Directory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Directory(const Directory &) = delete;
    Directory &operator=(const Directory &) = delete;

    std::string write(const std::string &name, const std::string &text) const
    {
        const std::string path = path_ + "/" + name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }
    const std::string &path() const
    {
        return path_;
    }

  private:
    std::string path_;
};

// ---- What it takes ----

TEST(Reader, ReadsQualifierDeclarations)
{
    cim::ClassRepository repository;
    const cim::MofResult result =
        cim::readMofText(repository, "qualifier Plain : string, scope ( Class , PROPERTY );\n"
                                     "Qualifier List : uint8[] = {1, 0x02, 11b}, Scope(any),\n"
                                     "    Flavor(DisableOverride, Restricted, Translatable);\n"
                                     "Qualifier Number : sint64 = -5, Scope(method, parameter, "
                                     "reference, indication, association, schema),\n"
                                     "    Flavor(EnableOverride, ToSubclass);");
    EXPECT_THAT(texts(result), IsEmpty());
    const cim::QualifierDeclaration *plain = repository.findQualifier("PLAIN");
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(plain->type, cim::Type::string);
    EXPECT_TRUE(plain->defaultValue.isNull);
    EXPECT_EQ(plain->scope, cim::QualifierDeclaration::scopeClass | cim::QualifierDeclaration::scopeProperty);
    EXPECT_EQ(plain->flavor, (cim::Flavor{true, true, false}));
    const cim::QualifierDeclaration *list = repository.findQualifier("List");
    ASSERT_NE(list, nullptr);
    EXPECT_TRUE(list->isArray);
    EXPECT_THAT(list->defaultValue.items, ElementsAre("1", "2", "3"));
    EXPECT_EQ(list->scope, cim::QualifierDeclaration::scopeAny);
    EXPECT_EQ(list->flavor, (cim::Flavor{false, false, true}));
    const cim::QualifierDeclaration *number = repository.findQualifier("Number");
    ASSERT_NE(number, nullptr);
    EXPECT_EQ(number->defaultValue.text(), "-5");
    EXPECT_EQ(number->scope,
              cim::QualifierDeclaration::scopeMethod | cim::QualifierDeclaration::scopeParameter |
                  cim::QualifierDeclaration::scopeReference | cim::QualifierDeclaration::scopeIndication |
                  cim::QualifierDeclaration::scopeAssociation | cim::QualifierDeclaration::scopeSchema);
}

TEST(Reader, ReadsEveryTypeAndDefault)
{
    cim::ClassRepository repository;
    prepare(repository);
    const cim::MofResult result = cim::readMofText(repository, R"(
        class T_All {
            boolean Yes = TRUE; boolean No = false; boolean Unknown = NULL; boolean None;
            char16 Letter = 'x'; char16 Quote = '\''; char16 Euro = '\x20AC';
            uint8 U8 = 255; uint16 U16 = 0xFFFF; uint32 U32 = 4294967295; uint64 U64 = 18446744073709551615;
            sint8 S8 = -128; sint16 S16 = -32768; sint32 S32 = -2147483648; sint64 S64 = -9223372036854775808;
            uint8 Octal = 017; uint8 Binary = 101b; sint8 Plus = +7; uint8 Zero = 0; sint8 MinusZero = -0;
            real32 R32 = 6.25; real64 R64 = -1.5E-3; real64 Point = .5; real64 PlusReal = +2.0; real32 Whole = 3;
            string Text = "one"; string Empty = "";
            datetime Stamp = "20250131235959.000000+060"; datetime Interval = "00000001000000.000000:000";
            datetime Open = "2025**********.******+000";
            uint16 Open16[]; uint16 Fixed[3] = { 1, 2, 3 }; string Nothing[] = {}; string NullArray[] = NULL;
        };)");
    ASSERT_THAT(texts(result), IsEmpty());
    const cim::Class *klass = repository.find("T_All");
    ASSERT_NE(klass, nullptr);
    const auto value = [&](const char *name) {
        const cim::Property *property = klass->findProperty(name);
        return property == nullptr || property->defaultValue.isNull ? "null" : property->defaultValue.text();
    };
    EXPECT_EQ(value("Yes"), "true");
    EXPECT_EQ(value("No"), "false");
    EXPECT_EQ(value("Unknown"), "null");
    EXPECT_EQ(value("None"), "null");
    EXPECT_EQ(value("Letter"), "x");
    EXPECT_EQ(value("Quote"), "'");
    EXPECT_EQ(value("Euro"), "\xe2\x82\xac");
    EXPECT_EQ(value("U8"), "255");
    EXPECT_EQ(value("U16"), "65535");
    EXPECT_EQ(value("U32"), "4294967295");
    EXPECT_EQ(value("U64"), "18446744073709551615");
    EXPECT_EQ(value("S8"), "-128");
    EXPECT_EQ(value("S16"), "-32768");
    EXPECT_EQ(value("S32"), "-2147483648");
    EXPECT_EQ(value("S64"), "-9223372036854775808");
    EXPECT_EQ(value("Octal"), "15");
    EXPECT_EQ(value("Binary"), "5");
    EXPECT_EQ(value("Plus"), "7");
    EXPECT_EQ(value("Zero"), "0");
    EXPECT_EQ(value("MinusZero"), "0");
    EXPECT_EQ(value("R32"), "6.25");
    EXPECT_EQ(value("R64"), "-1.5E-3");
    EXPECT_EQ(value("Point"), "0.5");
    EXPECT_EQ(value("PlusReal"), "2.0");
    EXPECT_EQ(value("Whole"), "3");
    EXPECT_EQ(value("Text"), "one");
    EXPECT_EQ(value("Empty"), "");
    EXPECT_EQ(value("Stamp"), "20250131235959.000000+060");
    EXPECT_EQ(value("Interval"), "00000001000000.000000:000");
    EXPECT_EQ(value("Open"), "2025**********.******+000");
    EXPECT_TRUE(klass->findProperty("Open16")->isArray);
    EXPECT_EQ(klass->findProperty("Open16")->arraySize, 0u);
    EXPECT_EQ(klass->findProperty("Open16")->cmpiCode(), 0x2090);
    EXPECT_EQ(klass->findProperty("Fixed")->arraySize, 3u);
    EXPECT_THAT(klass->findProperty("Fixed")->defaultValue.items, ElementsAre("1", "2", "3"));
    EXPECT_FALSE(klass->findProperty("Nothing")->defaultValue.isNull);
    EXPECT_THAT(klass->findProperty("Nothing")->defaultValue.items, IsEmpty());
    EXPECT_TRUE(klass->findProperty("NullArray")->defaultValue.isNull);
}

TEST(Reader, JoinsLiteralsAndResolvesEscapes)
{
    cim::ClassRepository repository;
    prepare(repository);
    const cim::MofResult result = cim::readMofText(
        repository, "class T_A { string S = \"one \" \"two\"\n // between\n /* and */ \" three\";\n"
                    " string E = \"\\b\\t\\n\\f\\r\\\"\\'\\\\ \\x41\\X00e9\\x20AC|\\x7a|\"; string U = "
                    "\"\xc3\xa9\xf0\x9f\x98\x80\"; };");
    ASSERT_THAT(texts(result), IsEmpty());
    const cim::Class *klass = repository.find("T_A");
    ASSERT_NE(klass, nullptr);
    EXPECT_EQ(klass->findProperty("S")->defaultValue.text(), "one two three");
    EXPECT_EQ(klass->findProperty("E")->defaultValue.text(), "\b\t\n\f\r\"'\\ A\xc3\xa9\xe2\x82\xac|z|");
    EXPECT_EQ(klass->findProperty("U")->defaultValue.text(), "\xc3\xa9\xf0\x9f\x98\x80");
}

TEST(Reader, SkipsCommentsByteOrderMarkAndCase)
{
    cim::ClassRepository repository;
    prepare(repository);
    const cim::MofResult result = cim::readMofText(
        repository, "\xef\xbb\xbf/* a * b ** / */ // c\r\n[DESCRIPTION(\"x\")/**/] CLASS T_A AS $a "
                    "{ UINT16 A; Boolean B; t_a ref_; };//end");
    EXPECT_THAT(texts(result),
                ElementsAre("<text>:2:63: error: unknown type \"t_a\"; expected boolean, string, "
                            "datetime, char16, real32, real64, uint8 to uint64, sint8 to sint64, "
                            "or a class name followed by REF"));
    const cim::MofResult good = cim::readMofText(
        repository, "\xef\xbb\xbf/* a * b ** / */ // c\r\n[DESCRIPTION(\"x\")/**/] CLASS T_A AS $a "
                    "{ UINT16 A; Boolean B; };//end");
    EXPECT_THAT(texts(good), IsEmpty());
    ASSERT_NE(repository.find("T_A"), nullptr);
    EXPECT_EQ(repository.find("T_A")->qualifiers.at(0).name, "Description");
    EXPECT_EQ(repository.find("T_A")->definedAt, "<text>:2");
}

TEST(Reader, ReadsMethods)
{
    cim::ClassRepository repository;
    prepare(repository);
    const cim::MofResult result = cim::readMofText(repository, R"(
        class T_A {
            uint32 Nothing();
            [Static] boolean Many ( [In, ValueMap { "0", "1" }] string A, [In(false), Out] uint16 B[], uint8 C[4],
                [Out] T_A REF D, [In] T_A REF E[] );
        };)");
    ASSERT_THAT(texts(result), IsEmpty());
    const cim::Class *klass = repository.find("T_A");
    ASSERT_NE(klass, nullptr);
    ASSERT_EQ(klass->methods.size(), 2u);
    EXPECT_EQ(mof::describe(klass->methods[0]), "uint32 Nothing()");
    EXPECT_FALSE(klass->methods[0].isStatic);
    const cim::Method &many = klass->methods[1];
    EXPECT_TRUE(many.isStatic);
    EXPECT_EQ(many.returnType, cim::Type::boolean);
    EXPECT_EQ(mof::describe(many),
              "boolean Many(string A, out uint16 B[], uint8 C[4], out T_A REF D, T_A REF E[])");
    EXPECT_FALSE(many.findParameter("b")->isIn);
    EXPECT_TRUE(many.findParameter("C")->isIn);
    EXPECT_TRUE(many.findParameter("D")->isIn) << "In is true by default";
    EXPECT_EQ(many.findParameter("E")->cmpiCode(), 0x3100);
    EXPECT_THAT(cim::findQualifier(many.parameters[0].qualifiers, "valuemap")->value.items,
                ElementsAre("0", "1"));
}

TEST(Reader, ResolvesInheritance)
{
    cim::ClassRepository repository;
    prepare(repository);
    const cim::MofResult result = cim::readMofText(repository, R"(
        [Abstract, Version("1.0"), Description("base")]
        class T_Base {
            [Description("id"), MaxLen(10)] string Id;
            [Description("kind")] uint16 Kind = 5;
            [Description("run")] uint32 Run(string A);
            uint32 Stop();
        };
        [Version("2.0")]
        class T_Middle : t_base {
            string Own;
            [Key, Override("Id"), MaxLen(20)] string Id;
            [Override("Run"), Description("middle run")] uint32 Run(uint16 A, uint16 B);
        };
        class T_Leaf : T_Middle { [Override("Kind")] uint16 Kind = 7; };)");
    ASSERT_THAT(texts(result), IsEmpty());
    const cim::Class &base = *repository.find("T_Base");
    const cim::Class &middle = *repository.find("T_Middle");
    const cim::Class &leaf = *repository.find("T_Leaf");

    EXPECT_TRUE(base.isAbstract);
    EXPECT_FALSE(middle.isAbstract) << "Abstract is restricted to its class";
    EXPECT_EQ(middle.superclass, "T_Base") << "in the spelling of the declaration";
    EXPECT_EQ(cim::findQualifier(middle.qualifiers, "Version")->value.text(), "2.0");
    EXPECT_EQ(cim::findQualifier(leaf.qualifiers, "Version"), nullptr) << "restricted";
    ASSERT_NE(cim::findQualifier(leaf.qualifiers, "Description"), nullptr);
    EXPECT_EQ(cim::findQualifier(leaf.qualifiers, "Description")->value.text(), "base");
    EXPECT_TRUE(cim::findQualifier(leaf.qualifiers, "Description")->propagated);

    ASSERT_EQ(middle.properties.size(), 3u);
    EXPECT_EQ(middle.properties[0].name, "Id");
    EXPECT_EQ(middle.properties[1].name, "Kind");
    EXPECT_EQ(middle.properties[2].name, "Own");
    const cim::Property &id = middle.properties[0];
    EXPECT_TRUE(id.isKey);
    EXPECT_FALSE(id.propagated);
    EXPECT_EQ(id.classOrigin, "T_Base");
    EXPECT_EQ(cim::findQualifier(id.qualifiers, "MaxLen")->value.text(), "20");
    EXPECT_FALSE(cim::findQualifier(id.qualifiers, "MaxLen")->propagated);
    EXPECT_TRUE(cim::findQualifier(id.qualifiers, "Description")->propagated);
    EXPECT_FALSE(base.properties[0].isKey);
    EXPECT_TRUE(middle.properties[1].propagated);
    EXPECT_EQ(middle.properties[1].defaultValue.text(), "5");

    EXPECT_TRUE(leaf.properties[0].isKey);
    EXPECT_TRUE(leaf.properties[0].propagated);
    EXPECT_EQ(cim::findQualifier(leaf.properties[0].qualifiers, "Override"), nullptr) << "restricted";
    EXPECT_EQ(leaf.properties[1].defaultValue.text(), "7");
    EXPECT_EQ(leaf.properties[2].classOrigin, "T_Middle");
    ASSERT_EQ(repository.keys(leaf).size(), 1u);

    ASSERT_EQ(middle.methods.size(), 2u);
    EXPECT_EQ(mof::describe(middle.methods[0]), "uint32 Run(uint16 A, uint16 B)");
    EXPECT_EQ(middle.methods[0].classOrigin, "T_Base");
    EXPECT_FALSE(middle.methods[0].propagated);
    EXPECT_EQ(cim::findQualifier(middle.methods[0].qualifiers, "Description")->value.text(), "middle run");
    EXPECT_TRUE(middle.methods[1].propagated);
    EXPECT_EQ(mof::describe(*leaf.findMethod("run")), "uint32 Run(uint16 A, uint16 B)");
    EXPECT_TRUE(leaf.findMethod("run")->propagated);
}

TEST(Reader, ReadsAssociationsWithReferencesToLaterClasses)
{
    cim::ClassRepository repository;
    prepare(repository);
    const cim::MofResult result = cim::readMofText(repository, R"(
        [Association] class T_Link { [Key] T_End REF Left; [Key] T_End REF Right; };
        class T_End { [Key] string Id; };
        class T_Narrow : T_End { };
        class T_NarrowLink : T_Link { [Override("Left")] T_Narrow REF Left; };
        [Indication] class T_Event { string Text; };)");
    ASSERT_THAT(texts(result), IsEmpty());
    const cim::Class &link = *repository.find("T_NarrowLink");
    EXPECT_TRUE(link.isAssociation) << "inherited";
    EXPECT_EQ(link.properties[0].referenceClass, "T_Narrow");
    EXPECT_EQ(link.properties[0].type, cim::Type::reference);
    EXPECT_TRUE(link.properties[0].isKey);
    EXPECT_EQ(repository.keys(link).size(), 2u);
    EXPECT_TRUE(repository.find("T_Event")->isIndication);
    EXPECT_FALSE(repository.find("T_End")->isAssociation);
}

TEST(Reader, TakesFlavorsAtTheUse)
{
    cim::ClassRepository repository;
    prepare(repository);
    const cim::MofResult result =
        cim::readMofText(repository, "class T_A { [Description(\"x\") : DisableOverride Translatable, "
                                     "MaxLen(3) : Restricted ToInstance] string S; };"
                                     "class T_B : T_A { };");
    ASSERT_THAT(texts(result), IsEmpty());
    const cim::Property &property = repository.find("T_A")->properties[0];
    EXPECT_EQ(property.qualifiers[0].flavor, (cim::Flavor{false, true, true}));
    EXPECT_EQ(property.qualifiers[1].flavor, (cim::Flavor{true, false, false}));
    EXPECT_EQ(repository.find("T_B")->properties[0].qualifiers.size(), 1u);
}

TEST(Reader, SkipsInstancesAndOtherPragmas)
{
    EXPECT_THAT(
        messagesOf("#pragma locale (\"en_US\")\n#pragma InstanceLocale(\"en_US\")\n"
                   "#pragma namespace (\"root/cimv2\")\n"
                   "instance of T_A as $x { Name = \"};\"; List = { 1, 2 }; };\n"
                   "[Description(\"d\")] instance of T_A { };\n"
                   "class T_A { };"),
        ElementsAre("f:3:9: warning: #pragma namespace is ignored",
                    "f:4:1: warning: the instance of T_A is skipped; only classes and qualifiers are read",
                    "f:5:20: warning: the instance of T_A is skipped; only classes and qualifiers are read"));
}

// ---- Files ----

TEST(Files, AreIncludedRelativeToTheIncludingFile)
{
    const Directory directory;
    const std::string top = directory.write("top.mof", "#pragma include (\"sub/one.mof\")\n"
                                                       "class T_Top : T_Two { };\n");
    directory.write("sub/one.mof", "#pragma include(\"two.mof\") class T_One { };\n");
    directory.write("sub/two.mof", "class T_Two { };\n");
    cim::ClassRepository repository;
    EXPECT_THAT(texts(cim::readMofFiles(repository, {top})), IsEmpty());
    EXPECT_EQ(repository.size(), 3u);
    EXPECT_EQ(repository.find("T_Two")->definedAt, directory.path() + "/sub/two.mof:1");
    EXPECT_EQ(repository.find("T_Top")->definedAt, directory.path() + "/top.mof:2");
}

TEST(Files, ThatCannotBeReadAreNamed)
{
    const Directory directory;
    const std::string path = directory.path();
    const std::string top = directory.write("top.mof", "\n  #pragma include (\"none.mof\")\n"
                                                       "#pragma include (\".\")\n"
                                                       "#pragma include (\"\")\n"
                                                       "#pragma include (\"a\\x1b\")\n"
                                                       "class T_A { };\n");
    cim::ClassRepository repository;
    EXPECT_THAT(
        texts(cim::readMofFiles(repository, {path + "/first.mof", top})),
        ElementsAre(path + "/first.mof: error: cannot read \"" + path +
                        "/first.mof\": No such file or directory",
                    top + ":2:20: error: cannot read \"" + path + "/none.mof\": No such file or directory",
                    top + ":3:18: error: cannot read \"" + path + "/.\": not a file",
                    top + ":4:18: error: expected the name of a file to include",
                    top + ":5:18: error: cannot read \"" + path + "/a\x1b\": No such file or directory"));
    EXPECT_NE(repository.find("T_A"), nullptr) << "what is right is taken";
}

TEST(Files, DoNotIncludeThemselves)
{
    const Directory directory;
    const std::string a = directory.write("a.mof", "#pragma include (\"b.mof\")\n");
    const std::string b = directory.write("b.mof", "#pragma include (\"./a.mof\")\nclass T_B { };\n");
    cim::ClassRepository repository;
    EXPECT_THAT(
        texts(cim::readMofFiles(repository, {a})),
        ElementsAre(b + ":1:18: error: the file \"" + directory.path() + "/./a.mof\" includes itself"));
    EXPECT_NE(repository.find("T_B"), nullptr);
}

TEST(Files, AreBoundedInDepthNumberAndLength)
{
    const Directory directory;
    for (int i = 0; i < 5; ++i) {
        directory.write(std::to_string(i) + ".mof",
                        "#pragma include (\"" + std::to_string(i + 1) + ".mof\")\n");
    }
    directory.write("5.mof", "class T_Deep { };\n");
    const std::string top = directory.path() + "/0.mof";
    cim::MofLimits limits;
    limits.includeDepth = 6;
    cim::ClassRepository good;
    EXPECT_THAT(texts(cim::readMofFiles(good, {top}, limits)), IsEmpty());
    limits.includeDepth = 5;
    cim::ClassRepository deep;
    EXPECT_THAT(texts(cim::readMofFiles(deep, {top}, limits)),
                ElementsAre(directory.path() + "/4.mof:1:18: error: includes are nested more than 5 deep"));
    limits = {};
    limits.files = 5;
    cim::ClassRepository many;
    EXPECT_THAT(texts(cim::readMofFiles(many, {top}, limits)),
                ElementsAre(directory.path() + "/4.mof:1:18: error: more than 5 files"));
    limits = {};
    limits.fileBytes = 17;
    cim::ClassRepository longFile;
    EXPECT_THAT(texts(cim::readMofFiles(longFile, {directory.path() + "/5.mof"}, limits)),
                ElementsAre(directory.path() + "/5.mof: error: the file is longer than 17 bytes"));
    limits = {};
    limits.totalBytes = 30;
    cim::ClassRepository longAll;
    EXPECT_THAT(texts(cim::readMofFiles(longAll, {top}, limits)),
                ElementsAre(directory.path() + "/1.mof: error: all files together are longer than 30 bytes"));
}

// ---- What it refuses ----

struct Case {
    const char *text;
    const char *message; // the only one
};

/** In one line without the text, which the names of tests could not hold. */
void PrintTo(const Case &test, std::ostream *stream)
{
    *stream << std::string_view(test.message).substr(0, std::string_view(test.message).find(" error"));
}

class Refused : public testing::TestWithParam<Case>
{
};

TEST_P(Refused, WithPlaceAndReason)
{
    SCOPED_TRACE(GetParam().text);
    cim::ClassRepository repository;
    prepare(repository);
    const cim::MofResult base =
        cim::readMofText(repository,
                         "class T_Base { [Key] string Id; uint16 Kind[]; uint32 Run(); };\n"
                         "class T_Other { };\n"
                         "[Association] class T_Link { [Key] T_Base REF Left; T_Base REF Right; };\n",
                         "base");
    ASSERT_THAT(texts(base), IsEmpty());
    const cim::MofResult result = cim::readMofText(repository, GetParam().text, "f");
    EXPECT_THAT(texts(result), ElementsAre(GetParam().message));
    EXPECT_FALSE(result.ok());
    EXPECT_EQ(repository.find("T_A"), nullptr) << "a class with an error is left out";
}

INSTANTIATE_TEST_SUITE_P(
    Words, Refused,
    testing::Values(
        Case{"class T_A { string S = \"abc; };\n",
             "f:1:24: error: the string is not closed on its line; expected \""},
        Case{"class T_A { string S = \"ab\ncd\"; };",
             "f:1:24: error: the string is not closed on its line; expected \""},
        Case{"class T_A { string S = \"abc\\",
             "f:1:24: error: the string is not closed on its line; expected \""},
        Case{"class T_A { string S = \"\\q\"; };",
             "f:1:24: error: unknown escape \\'q'; known are \\b \\t \\n \\f \\r "
             "\\\" \\' \\\\ and \\x with one to four hexadecimal digits"},
        Case{"class T_A { string S = \"\\xg\"; };",
             "f:1:24: error: \\x wants one to four hexadecimal digits of a "
             "character other than 0"},
        Case{"class T_A { string S = \"\\x0000\"; };",
             "f:1:24: error: \\x wants one to four hexadecimal digits of a "
             "character other than 0"},
        Case{"class T_A { string S = \"\\xD800\"; };",
             "f:1:24: error: \\x wants one to four hexadecimal digits of a "
             "character other than 0"},
        Case{"class T_A { string S = \"\xe9t\xe9\"; };", "f:1:24: error: the literal is not valid UTF-8"},
        Case{"class T_A { string S = \"\xed\xa0\x80\"; };", "f:1:24: error: the literal is not valid UTF-8"},
        Case{"class T_A { string S = \"\xc0\x80\"; };", "f:1:24: error: the literal is not valid UTF-8"},
        Case{"class T_A { string S = \"a\x01z\"; };", "f:1:24: error: control character 0x01 in the literal"},
        Case{"class T_A { char16 C = 'ab'; };",
             "f:1:24: error: a character literal holds exactly one character"},
        Case{"class T_A { char16 C = ''; };",
             "f:1:24: error: a character literal holds exactly one character"},
        Case{"class T_A { char16 C = 'a; };\n",
             "f:1:24: error: the character is not closed on its line; expected '"},
        Case{"class T_B { };\n/* never closed",
             "f:2:1: error: the comment that starts here has no end; expected */"},
        Case{"class T_A { uint64 N = 18446744073709551616; };",
             "f:1:24: error: the number 18446744073709551616 is too large; 64 bits are the most"},
        Case{"class T_A { uint8 N = 0x; };", "f:1:23: error: \"0x\" is not a number"},
        Case{"class T_A { uint8 N = 089; };", "f:1:23: error: \"089\" is not a number"},
        Case{"class T_A { uint8 N = 12b; };", "f:1:23: error: \"12b\" is not a number"},
        Case{"class T_A { uint8 N = 1a; };", "f:1:23: error: \"1a\" is not a number"},
        Case{"class T_A { sint8 N = -; };", "f:1:23: error: \"-\" is not a number"},
        Case{"class T_A { real32 N = 1.; };", "f:1:24: error: \"1.\" is not a number"},
        Case{"class T_A { real32 N = 1.5e; };", "f:1:24: error: \"1.5e\" is not a number"},
        Case{"class T_A { real32 N = 1.5.2; };", "f:1:24: error: \"1.5.2\" is not a number"},
        Case{"class T_A { string \xc3\xa4; };", "f:1:20: error: unexpected character 0xc3"},
        Case{"class T_A @ { };", "f:1:11: error: unexpected character '@'"}));

INSTANTIATE_TEST_SUITE_P(
    Grammar, Refused,
    testing::Values(
        Case{"class", "f:1:6: error: expected the name of a class, found the end of the file"},
        Case{"class T_A",
             "f:1:10: error: expected \"{\" after the name of the class, found the end of the file"},
        Case{"class T_A : { };", "f:1:13: error: expected the name of the superclass, found \"{\""},
        Case{"class T_A as x { };", "f:1:14: error: expected \"$\" after \"as\", found \"x\""},
        Case{"class T_A {",
             "f:1:12: error: expected \"}\" at the end of class \"T_A\", found the end of the file"},
        Case{"class T_A { }", "f:1:14: error: expected \";\" after the class, found the end of the file"},
        Case{"class T_A { string S; \nclass T_B { };",
             "f:2:1: error: expected \"}\" at the end of class \"T_A\", found \"class\""},
        Case{"class T_A { string S };", "f:1:22: error: expected \";\" after the property, found \"}\""},
        Case{"class T_A { string; };",
             "f:1:19: error: expected the name of a property or method, found \";\""},
        Case{"class T_A { int S; };", "f:1:13: error: unknown type \"int\"; expected boolean, string, "
                                      "datetime, char16, real32, real64, uint8 to "
                                      "uint64, sint8 to sint64, or a class name followed by REF"},
        Case{"class T_A { reference S; };",
             "f:1:13: error: unknown type \"reference\"; expected boolean, string, datetime, char16, real32, "
             "real64, "
             "uint8 to uint64, sint8 to sint64, or a class name followed by REF"},
        Case{"class T_A { string S[; };", "f:1:22: error: expected \"]\" after \"[\", found \";\""},
        Case{"class T_A { string S[2; };",
             "f:1:23: error: expected \"]\" after the size of the array, found \";\""},
        Case{"class T_A { string S[0]; };",
             "f:1:22: error: the size of an array is a positive number of 32 bits"},
        Case{"class T_A { string S[-1]; };",
             "f:1:22: error: the size of an array is a positive number of 32 bits"},
        Case{"class T_A { string S[4294967296]; };",
             "f:1:22: error: the size of an array is a positive number of 32 bits"},
        Case{"class T_A { string S = ; };", "f:1:24: error: expected a value: a number, a string, a "
                                            "character, TRUE, FALSE or NULL, found \";\""},
        Case{"class T_A { string S = maybe; };", "f:1:24: error: expected a value: a number, a string, a "
                                                 "character, TRUE, FALSE or NULL, found \"maybe\""},
        Case{"class T_A { uint8 N[] = { 1 2 }; };",
             "f:1:29: error: expected \"}\" after the values, found \"2\""},
        Case{"class T_A { uint8 N[] = { { 1 } }; };", "f:1:27: error: expected a value: a number, a string, "
                                                      "a character, TRUE, FALSE or NULL, found \"{\""},
        Case{"class T_A { uint32 M(string A; };",
             "f:1:30: error: expected \")\" after the parameters, found \";\""},
        Case{"class T_A { uint32 M(string); };",
             "f:1:28: error: expected the name of a parameter, found \")\""},
        Case{"class T_A { uint32 M(string A,); };",
             "f:1:31: error: expected a type or the name of a class with REF, found \")\""},
        Case{"class T_A { uint32 M() };", "f:1:24: error: expected \";\" after the method, found \"}\""},
        Case{"class T_A { [Key string S; };",
             "f:1:18: error: expected \"]\" after the qualifiers, found \"string\""},
        Case{"class T_A { [] string S; };", "f:1:14: error: expected the name of a qualifier, found \"]\""},
        Case{"class T_A { [MaxLen(1] string S; };",
             "f:1:22: error: expected \")\" after the value of the qualifier, found \"]\""},
        Case{"class T_A { [Key : Sticky] string S; };",
             "f:1:20: error: expected a flavor: EnableOverride, DisableOverride, ToSubclass, Restricted or "
             "Translatable, found \"Sticky\""},
        Case{"[Version(\"1\")] struct T_A { };",
             "f:1:16: error: expected \"class\" or \"instance\" after the qualifiers, found \"struct\""},
        Case{"struct T_A { };",
             "f:1:1: error: expected a class, a qualifier declaration or a #pragma, found \"struct\""},
        Case{"};", "f:1:1: error: expected a class, a qualifier declaration or a #pragma, found \"}\""},
        Case{"#include (\"x\")", "f:1:2: error: expected \"pragma\" after \"#\", found \"include\""},
        Case{"#pragma (\"x\")", "f:1:9: error: expected the name of a pragma, found \"(\""},
        Case{"#pragma include \"x\"",
             "f:1:17: error: expected \"(\" after the name of the pragma, found a string"},
        Case{"#pragma include (x)",
             "f:1:18: error: expected a string, the argument of the pragma, found \"x\""},
        Case{"#pragma locale (\"x\";",
             "f:1:20: error: expected \")\" after the argument of the pragma, found \";\""},
        Case{"instance T_B { };", "f:1:10: error: expected \"of\" after \"instance\", found \"T_B\""},
        Case{"instance of T_B;",
             "f:1:16: error: expected \"{\" after the class of the instance, found \";\""},
        Case{"instance of T_B { x = { 1, 2 };",
             "f:1:32: error: expected \"}\" at the end of the instance, found the end of the file"},
        Case{"qualifier : boolean, Scope(any);",
             "f:1:11: error: expected the name of a qualifier, found \":\""},
        Case{"qualifier Q boolean, Scope(any);",
             "f:1:13: error: expected \":\" after the name of the qualifier, found \"boolean\""},
        Case{"qualifier Q : thing, Scope(any);", "f:1:15: error: \"thing\" is not a type of qualifiers; "
                                                 "expected boolean, string, datetime, char16, real32, "
                                                 "real64 or an integer type"},
        Case{"qualifier Q : boolean;",
             "f:1:22: error: expected \",\" after the type of the qualifier, found \";\""},
        Case{"qualifier Q : boolean, Flavor(Restricted);",
             "f:1:24: error: expected \"Scope\", found \"Flavor\""},
        Case{"qualifier Q : boolean, Scope(everywhere);",
             "f:1:30: error: \"everywhere\" is no scope; expected any, class, association, indication, "
             "property, "
             "reference, method, parameter or schema"},
        Case{"qualifier Q : boolean, Scope(any), Flavour(Restricted);",
             "f:1:36: error: expected \"Flavor\", found \"Flavour\""},
        Case{"qualifier Q : boolean, Scope(any), Flavor(Sticky);",
             "f:1:43: error: expected a flavor: EnableOverride, DisableOverride, ToSubclass, Restricted or "
             "Translatable, found \"Sticky\""},
        Case{"qualifier Q : boolean, Scope(any)",
             "f:1:34: error: expected \";\" after the qualifier declaration, found the end of the file"}));

INSTANTIATE_TEST_SUITE_P(
    Values, Refused,
    testing::Values(
        Case{"class T_A { uint8 N = 256; };",
             "f:1:23: error: default value of property \"N\" of class \"T_A\": expected "
             "a uint8 (0 to 255), found \"256\""},
        Case{"class T_A { uint16 N = -1; };",
             "f:1:24: error: default value of property \"N\" of class \"T_A\": expected "
             "a uint16 (0 to 65535), found \"-1\""},
        Case{"class T_A { sint8 N = 128; };",
             "f:1:23: error: default value of property \"N\" of class \"T_A\": expected "
             "a sint8 (-128 to 127), found \"128\""},
        Case{"class T_A { sint64 N = 9223372036854775808; };",
             "f:1:24: error: default value of property \"N\" of class \"T_A\": expected a sint64 "
             "(-9223372036854775808 to "
             "9223372036854775807), found \"9223372036854775808\""},
        Case{"class T_A { uint8 N = \"1\"; };",
             "f:1:23: error: default value of property \"N\" of class \"T_A\": "
             "expected a number of type uint8, found a string"},
        Case{"class T_A { uint8 N = 1.0; };",
             "f:1:23: error: default value of property \"N\" of class \"T_A\": expected "
             "a number of type uint8, found \"1.0\""},
        Case{"class T_A { boolean B = 1; };",
             "f:1:25: error: default value of property \"B\" of class \"T_A\": expected "
             "TRUE or FALSE, found \"1\""},
        Case{"class T_A { string S = TRUE; };",
             "f:1:24: error: default value of property \"S\" of class \"T_A\": "
             "expected a string, found \"TRUE\""},
        Case{"class T_A { char16 C = \"a\"; };",
             "f:1:24: error: default value of property \"C\" of class \"T_A\": "
             "expected a character in single quotes, found a string"},
        Case{"class T_A { real32 R = 1.0e99; };",
             "f:1:24: error: default value of property \"R\" of class \"T_A\": "
             "expected a number in the range of real32, found \"1.0e99\""},
        Case{"class T_A { real64 R = 'x'; };",
             "f:1:24: error: default value of property \"R\" of class \"T_A\": "
             "expected a number of type real64, found a character literal"},
        Case{"class T_A { datetime D = \"2025-01-31\"; };",
             "f:1:26: error: default value of property \"D\" of class \"T_A\": expected a datetime like "
             "\"20250131235959.000000+000\" or \"00000001235959.000000:000\", found a string"},
        Case{"class T_A { datetime D = \"00000001235959.000000:001\"; };",
             "f:1:26: error: default value of property \"D\" of class \"T_A\": expected a datetime like "
             "\"20250131235959.000000+000\" or \"00000001235959.000000:000\", found a string"},
        Case{"class T_A { uint8 N[] = 1; };",
             "f:1:25: error: default value of property \"N\" of class \"T_A\": expected "
             "values in { } for uint8[]"},
        Case{"class T_A { uint8 N = { 1 }; };",
             "f:1:23: error: default value of property \"N\" of class \"T_A\": "
             "expected a single value without { } for uint8"},
        Case{"class T_A { uint8 N[] = { 1, NULL }; };",
             "f:1:30: error: default value of property \"N\" of class "
             "\"T_A\": expected a value that is not NULL in an array, found "
             "\"NULL\""},
        Case{"qualifier Q : uint8 = 300, Scope(any);",
             "f:1:23: error: default value of qualifier \"Q\": expected a uint8 (0 to 255), found \"300\""},
        Case{"[Association] class T_A { [Key] T_Base REF L = 5; T_Base REF R; };",
             "f:1:48: error: default value of property \"L\" of class \"T_A\": expected an object path in a "
             "string, "
             "found \"5\""}));

INSTANTIATE_TEST_SUITE_P(
    Meaning, Refused,
    testing::Values(
        Case{"class T_A : T_Unknown { };",
             "f:1:13: error: unknown superclass \"T_Unknown\" of class \"T_A\"; it must be "
             "declared before its subclasses"},
        Case{"class t_base { };", "f:1:7: error: class \"t_base\" is defined twice, first at base:1"},
        Case{"class T_A { string S; uint8 s; };",
             "f:1:29: error: property \"s\" of class \"T_A\" is declared twice"},
        Case{"class T_A { uint32 M(); uint32 m(); };",
             "f:1:32: error: method \"m\" of class \"T_A\" is declared twice"},
        Case{"class T_A { uint32 M(string A, string a); };",
             "f:1:39: error: parameter \"a\" of method \"T_A.M\" is declared twice"},
        Case{"[Colour(\"red\")] class T_A { };",
             "f:1:2: error: unknown qualifier \"Colour\"; it must be declared before it is used"},
        Case{"class T_A { [Key, Key] string S; };",
             "f:1:19: error: qualifier \"Key\" stands twice in the same list"},
        Case{"[Key] class T_A { };",
             "f:1:2: error: qualifier \"Key\" may not stand at class \"T_A\"; its scope is "
             "property, reference"},
        Case{"class T_A { [In] string S; };",
             "f:1:14: error: qualifier \"In\" may not stand at property \"S\" of class "
             "\"T_A\"; its scope is parameter"},
        Case{"class T_A { [Key] uint32 M(); };",
             "f:1:14: error: qualifier \"Key\" may not stand at method \"M\" of class "
             "\"T_A\"; its scope is property, reference"},
        Case{"class T_A { uint32 M([Key] string P); };", "f:1:23: error: qualifier \"Key\" may not stand at "
                                                         "parameter \"P\" of method \"T_A.M\"; its scope is "
                                                         "property, reference"},
        Case{"[Association] class T_A { [MaxLen(1), Key] T_Base REF L; T_Base REF R; };",
             "f:1:28: error: qualifier \"MaxLen\" may not stand at property \"L\" of class \"T_A\"; its "
             "scope is "
             "property, method, parameter"},
        Case{
            "class T_A { [MaxLen(\"1\")] string S; };",
            "f:1:21: error: value of qualifier \"MaxLen\": expected a number of type uint32, found a string"},
        Case{"class T_A { [ValueMap(\"1\")] string S; };",
             "f:1:23: error: value of qualifier \"ValueMap\": expected values in { } for string[]"},
        Case{"class T_A { [Description{\"1\"}] string S; };",
             "f:1:25: error: value of qualifier \"Description\": expected a single value without { } for "
             "string"},
        Case{"class T_A { [MaxLen] string S; };",
             "f:1:14: error: qualifier \"MaxLen\" has no value; expected uint32 in ( )"},
        Case{"class T_A { [ValueMap] string S; };",
             "f:1:14: error: qualifier \"ValueMap\" has no value; expected string[] in { }"},
        Case{"class T_A : T_Base { string Id; };",
             "f:1:29: error: property \"Id\" of class \"T_A\" is already declared in "
             "\"T_Base\"; expected [Override (\"Id\")]"},
        Case{"class T_A : T_Base { uint32 Run(); };",
             "f:1:29: error: method \"Run\" of class \"T_A\" is already declared "
             "in \"T_Base\"; expected [Override (\"Run\")]"},
        Case{
            "class T_A : T_Base { [Override(\"Name\")] string Name; };",
            "f:1:48: error: property \"Name\" of class \"T_A\" overrides nothing; no superclass declares it"},
        Case{"class T_A { [Override(\"Go\")] uint32 Go(); };",
             "f:1:37: error: method \"Go\" of class \"T_A\" overrides nothing; no superclass declares it"},
        Case{"class T_A : T_Base { [Override(\"Kind\")] string Id; };",
             "f:1:48: error: property \"Id\" of class \"T_A\" overrides \"Kind\"; expected its own name"},
        Case{"class T_A : T_Base { [Override(\"Id\")] uint16 Id; };",
             "f:1:46: error: property \"Id\" of class \"T_A\" has type uint16; the property it overrides has "
             "string"},
        Case{"class T_A : T_Base { [Override(\"Kind\")] uint16 Kind; };",
             "f:1:48: error: property \"Kind\" of class \"T_A\" has type uint16; the property it overrides "
             "has uint16[]"},
        Case{"class T_A : T_Base { [Override(\"Run\")] uint8 Run(); };",
             "f:1:46: error: method \"Run\" of class \"T_A\" returns uint8; the method it overrides returns "
             "uint32"},
        Case{"class T_A : T_Base { [Key(false), Override(\"Id\")] string Id; };",
             "f:1:23: error: qualifier \"Key\" of property \"Id\" of class \"T_A\" may not change; the "
             "inherited value is "
             "\"true\""},
        Case{"class T_A : T_Base { [Key] string Second; };",
             "f:1:35: error: property \"Second\" of class \"T_A\" may not be a key; the keys are those of "
             "superclass "
             "\"T_Base\": Id"},
        Case{"class T_A { [Key] string Keys[]; };", "f:1:26: error: property \"Keys\" of class \"T_A\" is a "
                                                    "key and an array; a key has a single value"},
        Case{"class T_A { T_Base REF Link; };", "f:1:24: error: property \"Link\" of class \"T_A\" is a "
                                                "reference; only an association may have one"},
        Case{"[Association] class T_A { T_Base REF L[]; [Key] T_Base REF R; };",
             "f:1:38: error: property \"L\" of class \"T_A\" is an array of references; only parameters may "
             "be"},
        Case{"[Association] class T_A { [Key] T_Base REF Only; };",
             "f:1:21: error: class \"T_A\" is an association with 1 references; expected at least two"},
        Case{"[Association] class T_A : T_Other { [Key] T_Base REF L; T_Base REF R; };",
             "f:1:21: error: class \"T_A\" is an association and its superclass \"T_Other\" is not"},
        Case{"class T_A { T_Base REF M(); };",
             "f:1:24: error: method \"M\" returns a reference; expected one of the other types"},
        Case{"qualifier KEY : boolean, Scope(any);", "f:1:11: error: qualifier \"KEY\" is declared twice"}));

// These are found at the end, when the class itself has been taken.
TEST(References, MustNameClassesThatExist)
{
    EXPECT_THAT(
        messagesOf("[Association] class T_A { [Key] T_None REF L;\n T_A REF R; };"),
        ElementsAre("f:1:44: error: property \"L\" of class \"T_A\" refers to class \"T_None\", which is not "
                    "defined"));
    EXPECT_THAT(messagesOf("class T_A { uint32 M(T_None REF P); };"),
                ElementsAre("f:1:33: error: parameter \"P\" of method \"M\" of class \"T_A\" refers to class "
                            "\"T_None\", which is not defined"));
    EXPECT_THAT(
        messagesOf("class T_A { uint32 M(T_Bad REF P); };\nclass T_Bad { int I; };"),
        testing::Contains("f:1:32: error: parameter \"P\" of method \"M\" of class \"T_A\" refers to class "
                          "\"T_Bad\", which has errors"));
}

TEST(References, MayOnlyBeNarrowed)
{
    EXPECT_THAT(
        messagesOf("class T_E { };\nclass T_F { };\n"
                   "[Association] class T_A { [Key] T_E REF L; [Key] T_E REF R; };\n"
                   "class T_B : T_A { [Override(\"L\")] T_F REF L; };"),
        ElementsAre(
            "f:4:43: error: property \"L\" of class \"T_B\" refers to class \"T_F\"; expected \"T_E\" or "
            "a subclass, as the overridden property has it"));
}

TEST(Recovery, GoesOnAfterAnError)
{
    cim::ClassRepository repository;
    prepare(repository);
    const cim::MofResult result = cim::readMofText(repository,
                                                   "class T_A { int S; string T = \"};\"; };\n"
                                                   "class T_B { string S };\n"
                                                   "class T_C { string S;\n"
                                                   "Qualifier Q1 : nothing, Scope(any);\n"
                                                   "Qualifier Q2 : boolean, Scope(any);\n"
                                                   "class T_D : T_A { };\n"
                                                   "class T_E { [Q2] string S; };\n",
                                                   "f");
    EXPECT_THAT(
        texts(result),
        ElementsAre(
            "f:1:13: error: unknown type \"int\"; expected boolean, string, datetime, char16, real32, "
            "real64, uint8 to uint64, sint8 to sint64, or a class name followed by REF",
            "f:2:22: error: expected \";\" after the property, found \"}\"",
            "f:4:1: error: expected \"}\" at the end of class \"T_C\", found \"Qualifier\"",
            "f:4:16: error: \"nothing\" is not a type of qualifiers; expected boolean, string, "
            "datetime, char16, real32, real64 or an integer type",
            "f:6:13: error: the superclass \"T_A\" of class \"T_D\" has errors"));
    EXPECT_EQ(repository.size(), 1u);
    EXPECT_NE(repository.find("T_E"), nullptr);
}

TEST(Recovery, ReportsSeveralErrorsOfOneClass)
{
    EXPECT_THAT(
        messagesOf("class T_A {\n  uint8 N = 256;\n  [Wrong] string S;\n  string s;\n};"),
        ElementsAre("f:2:13: error: default value of property \"N\" of class \"T_A\": expected a uint8 (0 to "
                    "255), found \"256\"",
                    "f:3:4: error: unknown qualifier \"Wrong\"; it must be declared before it is used",
                    "f:4:10: error: property \"s\" of class \"T_A\" is declared twice"));
}

// ---- Bounds ----

TEST(Bounds, StopAfterTooManyErrors)
{
    cim::MofLimits limits;
    limits.errors = 3;
    EXPECT_THAT(
        messagesOf("x;\nx;\nx;\nx;\nx;\n", limits),
        ElementsAre("f:1:1: error: expected a class, a qualifier declaration or a #pragma, found \"x\"",
                    "f:2:1: error: expected a class, a qualifier declaration or a #pragma, found \"x\"",
                    "f:3:1: error: expected a class, a qualifier declaration or a #pragma, found \"x\"",
                    "f:3:1: error: too many errors; the rest is not read"));
    EXPECT_THAT(messagesOf("#pragma a(\"\")\n#pragma b(\"\")\n#pragma c(\"\")\n#pragma d(\"\")\n", limits),
                ElementsAre("f:1:9: warning: #pragma a is ignored", "f:2:9: warning: #pragma b is ignored",
                            "f:3:9: warning: more warnings are not shown"));
}

TEST(Bounds, HoldForNamesListsAndInheritance)
{
    cim::MofLimits limits;
    limits.nameLength = 5;
    EXPECT_THAT(messagesOf("class T_1234 { };", limits),
                ElementsAre("f:1:7: error: the name is longer than 5 characters"));
    limits = {};
    limits.listLength = 3;
    EXPECT_THAT(messagesOf("class T_A { string A; string B; string C; };", limits), IsEmpty());
    EXPECT_THAT(messagesOf("class T_A { string A; string B; string C; string D; };", limits),
                ElementsAre("f:1:53: error: more than 3 properties"));
    EXPECT_THAT(messagesOf("class T_A { uint8 A(); uint8 B(); uint8 C(); uint8 D(); };", limits),
                ElementsAre("f:1:57: error: more than 3 methods"));
    EXPECT_THAT(messagesOf("class T_A { uint8 M(uint8 A, uint8 B, uint8 C, uint8 D); };", limits),
                ElementsAre("f:1:55: error: more than 3 parameters"));
    EXPECT_THAT(messagesOf("class T_A { uint8 M[] = { 1, 2, 3, 4 }; };", limits),
                ElementsAre("f:1:38: error: more than 3 values"));
    EXPECT_THAT(
        messagesOf("class T_A { [Description(\"\"), Key, MaxLen(1), ValueMap{}] string S; };", limits),
        ElementsAre("f:1:57: error: more than 3 qualifiers"));
    EXPECT_THAT(
        messagesOf("class T_A { string A; string B; }; class T_B : T_A { string C; string D; };", limits),
        ElementsAre("f:1:42: error: the class has more than 3 properties with the inherited ones"));
    limits = {};
    limits.inheritanceDepth = 2;
    EXPECT_THAT(messagesOf("class T_A { }; class T_B : T_A { };\nclass T_C : T_B { };", limits),
                ElementsAre("f:2:13: error: class \"T_C\" derives through more than 2 classes"));
    limits = {};
    limits.inheritedBytes = 10000;
    std::string family = "class T_0 { string A; string B; string C; };\n";
    for (int i = 1; i < 50; ++i) {
        family += "class T_" + std::to_string(i) + " : T_" + std::to_string(i - 1) + " { };\n";
    }
    const std::vector<std::string> messages = messagesOf(family, limits);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_THAT(messages[0], testing::HasSubstr("error: the classes inherit more than 10000 bytes"));
}

TEST(Bounds, DeepNestingIsJustWrong)
{
    for (const char *opening : {"{", "[", "(", "class T_A {", "[Key", "#", "$", "instance of x {", "/*"}) {
        std::string text;
        for (int i = 0; i < 100000; ++i) {
            text += opening;
        }
        cim::ClassRepository repository;
        const cim::MofResult result = cim::readMofText(repository, text);
        EXPECT_FALSE(result.ok()) << opening;
        EXPECT_LE(result.messages.size(), 51u) << opening;
        EXPECT_EQ(repository.size(), 0u) << opening;
    }
    const std::string nested(100000, '{');
    EXPECT_THAT(
        messagesOf("class T_A { uint8 N[] = " + nested),
        ElementsAre("f:1:26: error: expected a value: a number, a string, a character, TRUE, FALSE or NULL, "
                    "found \"{\""));
}

// ---- Malformed input ----

/** A repository with everything that the monitor's classes need. */
void prepareDesk(cim::ClassRepository &repository)
{
    const cim::MofResult result = cim::readMofFiles(
        repository,
        {MOF_DIR "/qualifiers.mof", MOF_DIR "/CIM_superclasses.mof", MOF_DIR "/Linux_ComputerSystem.mof",
         MOF_DIR "/ZT_Marovelton_VideoInput.mof", MOF_DIR "/ZT_Marovelton_ColorSpace.mof"});
    ASSERT_TRUE(result.ok());
}

TEST(Malformed, EveryTruncationOfAClassIsAnError)
{
    cim::ClassRepository repository;
    prepareDesk(repository);
    const std::size_t size = repository.size();
    const std::string licence = "// SPDX-License-Identifier: Apache-2.0\n";
    const std::string file = mof::fileText("ZT_Marovelton_Monitor.mof");
    ASSERT_TRUE(file.starts_with(licence + "   [")) << "three blanks before the first word";
    const std::string text = file.substr(licence.size());
    ASSERT_TRUE(text.ends_with("\n};\n"));
    for (std::size_t length = 0; length + 1 < text.size(); ++length) {
        const cim::MofResult result = cim::readMofText(repository, std::string_view(text).substr(0, length));
        ASSERT_EQ(result.ok(), length <= 3) << length;
        for (const cim::MofMessage &message : result.messages) {
            ASSERT_GT(message.line, 0u) << length;
            ASSERT_FALSE(message.text.empty()) << length;
        }
    }
    EXPECT_EQ(repository.size(), size);
    EXPECT_TRUE(cim::readMofText(repository, std::string_view(text).substr(0, text.size() - 1)).ok());
    EXPECT_EQ(repository.size(), size + 1);
}

TEST(Malformed, TruncatedQualifierDeclarationsAreErrors)
{
    const std::string text = "Qualifier Some : string[] = { \"a\", \"b\" }, Scope(class, property), "
                             "Flavor(Restricted, Translatable);";
    for (std::size_t length = 1; length < text.size(); ++length) {
        cim::ClassRepository repository;
        EXPECT_FALSE(cim::readMofText(repository, std::string_view(text).substr(0, length)).ok()) << length;
        EXPECT_TRUE(repository.qualifiers().empty()) << length;
    }
    cim::ClassRepository repository;
    EXPECT_TRUE(cim::readMofText(repository, text).ok());
}

// Bytes changed, removed and doubled at places that a fixed sequence chooses. Whatever comes of it, the
// reader ends, says where it found something, and keeps a tree of classes that fits together.
TEST(Malformed, DamagedTextNeverBringsItDown)
{
    std::uint64_t state = 20250131;
    const auto random = [&](std::size_t below) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        return static_cast<std::size_t>(state >> 33) % below;
    };
    constexpr std::string_view interesting = "\"'\\{}[]();:,=#$/*\n \x80\xff\x01"
                                             "0xb.-+eK";
    const std::string text =
        std::string(qualifierText) + mof::fileText("qualifiers.mof").substr(0, 400) +
        mof::fileText("ZT_Marovelton_TestPattern.mof") +
        "class T_B { [Key] string Id; uint16 A[3] = { 1, 2 }; real32 R = -1.5e3; char16 C = 'c'; "
        "datetime D = \"20250131235959.000000+000\"; uint32 M([In] T_B REF P); };\n"
        "class T_C : T_B { [Override(\"Id\")] string Id; };\n";
    std::size_t good = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string damaged = text;
        for (std::size_t change = 1 + random(4); change > 0; --change) {
            const std::size_t place = random(damaged.size());
            switch (random(4)) {
            case 0:
                damaged[place] = interesting[random(interesting.size())];
                break;
            case 1:
                damaged.erase(place, 1 + random(20));
                break;
            case 2:
                damaged.insert(place, damaged.substr(random(damaged.size()), random(60)));
                break;
            default:
                damaged.insert(place, 1, static_cast<char>(random(256)));
                break;
            }
        }
        cim::ClassRepository repository;
        const cim::MofResult result = cim::readMofText(repository, damaged);
        ASSERT_EQ(result.ok(), std::none_of(result.messages.begin(), result.messages.end(),
                                            [](const cim::MofMessage &m) { return m.isError; }));
        for (const cim::MofMessage &message : result.messages) {
            ASSERT_GT(message.line, 0u);
            ASSERT_GT(message.column, 0u);
            ASSERT_FALSE(message.text.empty());
        }
        for (const cim::Class *klass : repository.all()) {
            ASSERT_EQ(repository.find(klass->name), klass);
            ASSERT_EQ(klass->superclass.empty(), klass->superclassId == cim::noClass);
            ASSERT_TRUE(klass->superclass.empty() || repository.isA(klass->name, klass->superclass));
        }
        good += result.ok() ? 1 : 0;
    }
    EXPECT_LT(good, 3000u);
}

} // namespace
