// SPDX-License-Identifier: Apache-2.0
// The reference in both forms: whole, readable by machines, and complete beside the class definitions and the
// sources.

#include "mof_classes.h"
#include "sources.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <pugixml.hpp>
#include <regex>
#include <set>
#include <string>
#include <vector>

using reference::contentOf;

namespace
{

const std::string &markdownPage()
{
    static const std::string page = contentOf(MARKDOWN_PAGE);
    return page;
}

const pugi::xml_document &htmlPage()
{
    static pugi::xml_document page;
    static const pugi::xml_parse_result parsed =
        page.load_file(HTML_PAGE, pugi::parse_default | pugi::parse_ws_pcdata);
    EXPECT_TRUE(parsed) << parsed.description() << " at character " << parsed.offset;
    return page;
}

/** The text of an element with all that is in it. */
std::string textOf(const pugi::xml_node &node)
{
    std::string text;
    for (const pugi::xml_node &child : node.children()) {
        text += child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata ? child.value()
                                                                                      : textOf(child);
    }
    return text;
}

pugi::xml_node elementOf(const std::string &id)
{
    return htmlPage().select_node(("//*[@id='" + id + "']").c_str()).node();
}

std::vector<std::string> found(const std::string &text, const std::string &pattern)
{
    std::vector<std::string> all;
    const std::regex expression(pattern);
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match) {
        all.push_back((*match)[1]);
    }
    return all;
}

constexpr const char *prefix = "ZT_Marovelton_";

std::vector<const cim::Class *> ownClasses()
{
    std::vector<const cim::Class *> all;
    for (const cim::Class *klass : mof::deskClasses().all()) {
        if (klass->name.starts_with(prefix)) {
            all.push_back(klass);
        }
    }
    return all;
}

std::string idOf(const cim::Class &klass)
{
    return klass.name.substr(std::string(prefix).size());
}

// ---- the pages as files ----

TEST(Reference, HtmlIsWellFormedAndNeedsNoOtherFile)
{
    const pugi::xml_document &page = htmlPage();
    EXPECT_STREQ(page.document_element().name(), "html");
    EXPECT_TRUE(page.select_nodes("//link | //img | //iframe | //*[@src]").empty());
    std::string text = contentOf(HTML_PAGE);
    text.erase(text.find("http://www.w3.org/1999/xhtml"), 4); // a name, not a place
    for (const char *elsewhere : {"http", "url(", "@import", "fetch("}) {
        EXPECT_EQ(text.find(elsewhere), std::string::npos) << elsewhere;
    }
}

TEST(Reference, EveryLinkOfTheHtmlLeadsSomewhere)
{
    std::set<std::string> ids;
    for (const pugi::xpath_node &node : htmlPage().select_nodes("//@id")) {
        EXPECT_TRUE(ids.insert(node.attribute().value()).second)
            << node.attribute().value() << " stands twice";
    }
    size_t links = 0;
    for (const pugi::xpath_node &node : htmlPage().select_nodes("//@href")) {
        const std::string target = node.attribute().value();
        ASSERT_TRUE(target.starts_with("#")) << target;
        EXPECT_TRUE(ids.contains(target.substr(1))) << target;
        ++links;
    }
    EXPECT_GT(links, 500u);
}

TEST(Reference, EveryLinkOfTheMarkdownLeadsSomewhere)
{
    const std::vector<std::string> anchors = found(markdownPage(), "<a id=\"([^\"]*)\"></a>");
    const std::set<std::string> ids(anchors.begin(), anchors.end());
    EXPECT_EQ(ids.size(), anchors.size());
    const std::vector<std::string> links = found(markdownPage(), "\\]\\(([^)]*)\\)");
    for (const std::string &link : links) {
        ASSERT_TRUE(link.starts_with("#")) << link;
        EXPECT_TRUE(ids.contains(link.substr(1))) << link;
    }
    EXPECT_GT(links.size(), 400u);
}

TEST(Reference, SaysWhatComesFromTheLibraryAndWhatFromTheClass)
{
    struct Line {
        const char *id, *column, *value;
    };
    const Line expected[] = {
        {"Monitor.EnabledState", "Value from the class", "5"},
        {"Monitor.RequestedState", "Value from the class", "12"},
        {"Monitor.EnabledDefault", "Value from the class", "2"},
        {"Monitor.TransitioningToState", "Value from the class", "12"},
        {"Monitor.HealthState", "Value from the class", ""},
        {"Monitor.BacklightHours", "Value from the library", "varies"},
        {"IPProtocolEndpoint.AddressOrigin", "Value from the class", "0"},
        {"IPProtocolEndpoint.EnabledState", "Value from the library", "varies"},
        {"DHCPSettingData.AddressOrigin", "Value from the library", "always 4"},
        {"VideoInput.HealthState", "Declared values", ""}, // no column for a class without defaults
    };
    for (const Line &line : expected) {
        const pugi::xml_node row = elementOf(line.id);
        ASSERT_TRUE(row) << line.id;
        EXPECT_STREQ(row.parent().parent().select_node("thead/tr/th[last()]").node().child_value(),
                     line.column)
            << line.id;
        EXPECT_EQ(textOf(row.select_node("td[last()]").node()), line.value) << line.id;
    }
}

TEST(Reference, BothPagesHaveTheSameAnchors)
{
    std::set<std::string> ofHtml;
    for (const pugi::xpath_node &node : htmlPage().select_nodes("//main//@id")) {
        ofHtml.insert(node.attribute().value());
    }
    const std::vector<std::string> ofMarkdown = found(markdownPage(), "<a id=\"([^\"]*)\"></a>");
    EXPECT_EQ(ofHtml, std::set<std::string>(ofMarkdown.begin(), ofMarkdown.end()));
}

TEST(Reference, SearchesWhatAClientPrintedAndSaysWhenNothingIsFound)
{
    const pugi::xml_node nothing = elementOf("nothing");
    EXPECT_STREQ(nothing.child_value(), "Nothing found.");
    EXPECT_STREQ(nothing.attribute("hidden").value(), "hidden");
    const std::string script = textOf(htmlPage().select_node("//script").node());
    // The page's own expressions take off what stands before the text.
    const std::vector<std::string> expressions = found(script, "replace\\(/\\^(.*)/i, ''\\)");
    ASSERT_EQ(expressions.size(), 2u);
    std::string line = "* wbemcli: Cim: (7) CIM_ERR_NOT_SUPPORTED: SetNothing";
    for (const std::string &expression : expressions) {
        line = std::regex_replace(line, std::regex("^" + expression, std::regex::icase), "");
    }
    EXPECT_EQ(line, "SetNothing");
    EXPECT_NE(script.find("event.key !== '/'"), std::string::npos);
}

TEST(Reference, SaysWhereValuesComeFrom)
{
    EXPECT_NE(textOf(elementOf("IPVersionSettingData.InstanceID"))
                  .find("none; in the path always ZT_Marovelton_IPVersionSettingData"),
              std::string::npos);
    EXPECT_NE(textOf(elementOf("OSDMenuAndMessages.Language")).find("(what they mean is not documented)"),
              std::string::npos);
}

// ---- beside the class definitions ----

TEST(Reference, HasEveryClassAndProperty)
{
    size_t properties = 0;
    for (const cim::Class *klass : ownClasses()) {
        SCOPED_TRACE(klass->name);
        const std::string section = textOf(elementOf(idOf(*klass)));
        EXPECT_TRUE(section.starts_with(klass->name));
        EXPECT_NE(section.find(klass->superclass), std::string::npos);
        for (const cim::Property &property : klass->properties) {
            const std::string row = textOf(elementOf(idOf(*klass) + "." + property.name));
            EXPECT_TRUE(row.starts_with(property.name)) << property.name;
            const std::string type = property.type == cim::Type::reference ? property.referenceClass + " REF"
                                                                           : cim::typeName(property.type);
            EXPECT_NE(row.find(type + (property.isArray ? "[]" : "")), std::string::npos) << property.name;
            ++properties;
        }
    }
    EXPECT_EQ(ownClasses().size(), 33u);
    EXPECT_GT(properties, 300u);
}

TEST(Reference, HasEveryMethodAndArgument)
{
    size_t methods = 0;
    for (const cim::Class *klass : ownClasses()) {
        for (const cim::Method &method : klass->methods) {
            const std::string id = idOf(*klass) + "." + method.name;
            SCOPED_TRACE(id);
            if (method.propagated) {
                const std::string section = textOf(elementOf(idOf(*klass) + ".methods"));
                EXPECT_NE(section.find(method.name), std::string::npos);
                continue;
            }
            EXPECT_NE(textOf(elementOf(id)).find(mof::describe(method)), std::string::npos);
            for (const cim::Parameter &parameter : method.parameters) {
                EXPECT_TRUE(textOf(elementOf(id + "." + parameter.name)).starts_with(parameter.name));
            }
            ++methods;
        }
    }
    EXPECT_EQ(methods, 65u);
}

// ---- beside the sources ----

/** The literals of a file with words in them, but for those that are printed or are commands, by a rougher
 *  reading than the program's. */
std::set<std::string> literalsOf(const std::string &content)
{
    static const std::regex comment(
        "//[^\n]*|/\\*[^]*?\\*/|#(include|pragma|define)([^\n\\\\]|\\\\\n|\\\\.)*");
    static const std::regex literal("\"((?:[^\"\\\\\n]|\\\\.)*)\"(?:\\s*\"((?:[^\"\\\\\n]|\\\\.)*)\")?");
    static const std::regex silent(
        "(printf|puts|trace|judge|static_assert|sizeof|formatCommand|CommandOutput|strstr)\\b");
    const std::string code = std::regex_replace(content, comment, "");
    std::set<std::string> texts;
    for (std::sregex_iterator match(code.begin(), code.end(), literal), end; match != end; ++match) {
        const std::string text = (*match)[1].str() + (*match)[2].str();
        const size_t at = static_cast<size_t>(match->position());
        const size_t statement = code.find_last_of(";{}", at);
        const std::string before = code.substr(statement + 1, at - statement - 1);
        const bool words = std::regex_search(text, std::regex("[A-Za-z] +[A-Za-z_]"));
        if (words && !text.starts_with("---") && !std::regex_search(before, silent) &&
            !text.ends_with("\\n")) {
            texts.insert(text);
        }
    }
    return texts;
}

std::string unescaped(std::string text)
{
    for (const auto &[from, to] : {std::pair("\\|", "|"), std::pair("&lt;", "<"), std::pair("&amp;", "&")}) {
        for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; ++at) {
            text.replace(at, std::string(from).size(), to);
        }
    }
    return text;
}

TEST(Reference, HasEveryTextOfTheSources)
{
    const std::string html = textOf(htmlPage());
    const std::string markdown = unescaped(markdownPage());
    size_t texts = 0;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(SOURCE_DIR)) {
        if (entry.path().extension() != ".cpp" && entry.path().extension() != ".h") {
            continue;
        }
        for (const std::string &text : literalsOf(contentOf(entry.path()))) {
            // Of a format the beginning.
            const std::string fixed = text.substr(0, text.find('%'));
            EXPECT_NE(html.find(fixed), std::string::npos) << entry.path().filename() << ": " << text;
            EXPECT_NE(markdown.find(fixed), std::string::npos) << entry.path().filename() << ": " << text;
            ++texts;
        }
    }
    EXPECT_GT(texts, 250u);
}

TEST(Reference, ReadsTextsWithTheFunctionsThatHoldThem)
{
    const std::vector<reference::SourceText> texts = reference::textsOf(R"cpp(
// "a comment"
namespace
{
constexpr Row rows[] = {
    {"name", "A text of "
             "two pieces."}, // and so on
};
bool check(Call &call)
{
    const char quote = '"';
    trace("a trace line\n", name);
    puts("a printed line");
    return fail(call, CODE, "OneWord") && name("noBlanks");
}
constexpr const char *lone = "A lone text.";
SETTING(SetSize, GROUP, SIZE, "Failed to set the size.")
SETTING(SetMode, GROUP, MODE,
        .reply = "Failed to set the mode.", .busy = "Device is busy.")
INSTANCE_OPERATION(Some_Class, GetInstance, const char **)
{
    return usable(path, "OneWordAgain");
}
} // namespace
Thing::Thing(int x)
{
    setStatus(broker, "Of a \"member\".");
}
)cpp",
                                                                        "file.cpp");
    std::vector<std::string> names;
    for (const reference::SourceText &text : texts) {
        names.push_back(text.function + ": " + text.text);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"rows: A text of two pieces.", "check: OneWord",
                                               "lone: A lone text.", "SetSize: Failed to set the size.",
                                               "SetMode: Failed to set the mode.", "SetMode: Device is busy.",
                                               "Some_ClassGetInstance: OneWordAgain",
                                               "Thing::Thing: Of a \"member\"."}));
}

// ---- what was found out by asking, typed here from the sources ----

/** The rows of the last table of a section, the cells separated by " | ". */
std::vector<std::string> checksOf(const std::string &id)
{
    const pugi::xpath_node_set tables = elementOf(id).select_nodes("div/table");
    std::vector<std::string> rows;
    for (const pugi::xpath_node &row : tables[tables.size() - 1].node().select_nodes("tbody/tr")) {
        std::string text;
        for (const pugi::xml_node &cell : row.node().children("td")) {
            text += (text.empty() ? "" : " | ") + textOf(cell);
        }
        rows.push_back(text);
    }
    return rows;
}

TEST(Reference, TellsTheChecksOfAMethodInTheirOrder)
{
    EXPECT_EQ(
        checksOf("ColorSpace.SetDisplayLuminance"),
        (std::vector<std::string>{
            "1 | Luminance is not given; Luminance is null | 2 | INVALID_PARAMETER (4) | Required argument Luminance "
            "missing.",
            "2 | Luminance is no string | 2 | INVALID_PARAMETER (4) | Invalid type of parameter.",
            "3 | Register ACTIVE_COLORSPACE cannot be read | 2 | FAILED (1) | Failed to get ColorSpace information from "
            "database.",
            "4 | Another preset is in use | 2 | NOT_SUPPORTED (7) | Luminance value changing allowed to active "
            "colorspace only.",
            "5 | Luminance is empty | 2 | INVALID_PARAMETER (4) | Invalid parameter. Value is missing.",
            "6 | Luminance is not wholly a decimal number | 2 | INVALID_PARAMETER (4) | Invalid parameter.",
            "7 | Luminance is less than 48 or more than 250 | 2 | INVALID_PARAMETER (4) | Invalid input value range. "
            "Valid values are between 48 and 250.",
            "8 | The display engine is busy | 2 | FAILED (1) | Device is Busy. Please try after some time.",
            "9 | The queue to the engine cannot be opened | 2 | FAILED (1) | Unable to create a message queue for "
            "sending message.",
            "10 | The message to the engine cannot be sent | 2 | FAILED (1) | Unable to send value to SPEAr.",
            "11 | The queue of replies cannot be opened | 2 | FAILED (1) | Unable to create a message queue for "
            "receiving message.",
            "12 | No reply of the engine arrives | 2 | FAILED (1) | Failed to set the value to DisplayLuminance.",
            "13 | Otherwise | 0 | OK (0) | none"}));
}

TEST(Reference, TellsWhatDependsOnTheStateOfTheMonitor)
{
    const std::string position = textOf(elementOf("PictureInPicture.SetPIPPosition"));
    EXPECT_NE(
        position.find(
            "160 to 480 (second picture of maximum size); 160 to 2116 (second picture of minimum size); "
            "160 to 1688 (second picture of default size)"),
        std::string::npos);
    EXPECT_NE(position.find(
                  "PIPPositionX is less than 160 or more than 480 and PIPPositionY is less than 160 or more "
                  "than 200 (second picture of maximum size)"),
              std::string::npos);
    const std::string region = textOf(elementOf("ImageAdjustment.Set4KRegionPosition"));
    EXPECT_NE(region.find("49 to 1485 (source of 4095 x 2160 with DCI region 1)"), std::string::npos);
    EXPECT_NE(region.find("Invalid Position4KRegionX value 49 and 1485"), std::string::npos);
}

TEST(Reference, TellsWhoMayUseAMethod)
{
    const auto says = [](const std::string &id, const std::string &text) {
        return textOf(elementOf(id)).find(text) != std::string::npos;
    };
    EXPECT_TRUE(says("Monitor.SetName", "Only administrators may call it."));
    EXPECT_TRUE(says("Monitor.FactoryReset", "Everybody may call it."));
    EXPECT_TRUE(
        says("IPConfigurationService.ApplySettingToIPNetworkConnection", "Only administrators may call it."));
    EXPECT_TRUE(
        says("ExtendedStaticIPAssignmentSettingData.ModifyInstance", "Only administrators may use it."));
}

} // namespace
