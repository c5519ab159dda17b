// SPDX-License-Identifier: Apache-2.0
// XML as text: what is let in, and how text goes out.
#include "core/xml_text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace
{

bool check(std::string_view document, const host::XmlLimits &limits = {})
{
    return host::checkXml(document, limits) == host::XmlProblem::none;
}

std::string escaped(std::string_view text)
{
    host::TextBuffer buffer;
    host::appendEscaped(buffer, text);
    return std::string(buffer.view());
}

TEST(CheckXml, LetsGoodDocumentsIn)
{
    EXPECT_TRUE(check("<a/>"));
    EXPECT_TRUE(check("<a></a>"));
    EXPECT_TRUE(check(
        "\xef\xbb\xbf<?xml version=\"1.0\"?>\n<!DOCTYPE a SYSTEM \"a.dtd\">\n<!-- c --><a b='1' c=\"'\">"
        "t &lt;&gt;&amp;&quot;&apos; &#65;&#x20AC;<![CDATA[<&]]><?pi?><b /></a>\n<!-- end -->"));
    EXPECT_TRUE(check("<a>gr\xc3\xbcn \xe2\x82\xac \xf0\x9f\x98\x80</a>"));
}

TEST(CheckXml, RefusesWhatIsNotWellFormed)
{
    for (const char *bad : {"",
                            " ",
                            "text",
                            "<a>",
                            "</a>",
                            "<a></a></a>",
                            "<a/><b/>",
                            "<a/>text",
                            "text<a/>",
                            "<a b/>",
                            "<a b=c/>",
                            "<a b=\"1\" b=\"2\"/>",
                            "<a b=\"<\"/>",
                            "<a b=\"&\"/>",
                            "<a b=\"1\"",
                            "<a b=\"1",
                            "<a /x>",
                            "<a",
                            "<a>&unknown;</a>",
                            "<a>&</a>",
                            "<a>&;</a>",
                            "<a>&#;</a>",
                            "<a>&#x;</a>",
                            "<a>&#0;</a>",
                            "<a>&#1;</a>",
                            "<a>&#xD800;</a>",
                            "<a>&#x110000;</a>",
                            "<a>&#99999999999;</a>",
                            "<a>&#xg;</a>",
                            "<a>&amp</a>",
                            "<a><!-- </a>",
                            "<a><![CDATA[ </a>",
                            "<![CDATA[x]]><a/>",
                            "<?xml <a/>",
                            "&amp;<a/>",
                            "<!DOCTYPE a [<!ENTITY x \"y\">]><a>&x;</a>",
                            "<a/><!DOCTYPE a>",
                            "<!DOCTYPE a",
                            "<a>\x01</a>",
                            "<a b=\"\x02\"/>",
                            "<a>\xff</a>",
                            "<a>\xc3</a>",
                            "<a>\xc0\x80</a>",
                            "<a>\xe0\x80\x80</a>",
                            "<a>\xed\xa0\x80</a>",
                            "<a>\xf0\x80\x80\x80</a>",
                            "<a>\xf4\x90\x80\x80</a>",
                            "<a>\xef\xbf\xbf</a>",
                            "<a>\xc3(</a>",
                            "<a><!-- \x01 --></a>",
                            "<a><![CDATA[\x01]]></a>"}) {
        EXPECT_FALSE(check(bad)) << bad;
    }
    EXPECT_FALSE(check(std::string_view("<a>\0</a>", 8)));
}

TEST(CheckXml, KeepsToItsLimits)
{
    host::XmlLimits limits;
    limits.depth = 3;
    limits.elements = 5;
    limits.attributes = 2;
    EXPECT_TRUE(check("<a><b><c/></b></a>", limits));
    EXPECT_FALSE(check("<a><b><c><d/></c></b></a>", limits));
    EXPECT_TRUE(check("<a><b/><b/><b/><b/></a>", limits));
    EXPECT_FALSE(check("<a><b/><b/><b/><b/><b/></a>", limits));
    EXPECT_TRUE(check("<a b=\"\" c=\"\"/>", limits));
    EXPECT_FALSE(check("<a b=\"\" c=\"\" d=\"\"/>", limits));
    limits.attributes = 1000;
    std::string many = "<a";
    for (int i = 0; i < 40; ++i) {
        many += " a" + std::to_string(i) + "=\"\"";
    }
    EXPECT_FALSE(check(many + "/>", limits)) << "there is an end to attributes whatever the limit says";
}

TEST(AppendEscaped, UsesTheFiveEntities)
{
    EXPECT_EQ(escaped("plain text, 123"), "plain text, 123");
    EXPECT_EQ(escaped("<a & \"b\" 'c'>"), "&lt;a &amp; &quot;b&quot; &apos;c&apos;&gt;");
    EXPECT_EQ(escaped(""), "");
    EXPECT_EQ(escaped("gr\xc3\xbcn \xe2\x82\xac \xf0\x9f\x98\x80"),
              "gr\xc3\xbcn \xe2\x82\xac \xf0\x9f\x98\x80");
    EXPECT_EQ(escaped("a\tb\nc"), "a\tb\nc");
    EXPECT_EQ(escaped("\x7f"), "\x7f");
}

TEST(AppendEscaped, FindsWhatIsSpecialAnywhere)
{
    const std::pair<const char *, const char *> specials[] = {
        {"<", "&lt;"},
        {">", "&gt;"},
        {"&", "&amp;"},
        {"\"", "&quot;"},
        {"'", "&apos;"},
        {"\t", "\t"},
        {"\x1f", "\xef\xbf\xbd"},
        {"\x7f", "\x7f"},
        {"\xc3\xbc", "\xc3\xbc"},
        {"\xff", "\xef\xbf\xbd"},
    };
    for (std::size_t length = 0; length < 50; ++length) {
        const std::string plain(length, '~');
        EXPECT_EQ(escaped(plain), plain);
        for (std::size_t place = 0; place <= length; ++place) {
            for (const auto &[special, written] : specials) {
                const std::string before(place, ' ');
                const std::string after(length - place, '~');
                EXPECT_EQ(escaped(before + special + after), before + written + after)
                    << length << ' ' << place;
            }
        }
    }
}

TEST(AppendEscaped, ReplacesWhatXmlCannotHold)
{
    EXPECT_EQ(escaped("a\x01"
                      "b"),
              "a\xef\xbf\xbd"
              "b");
    EXPECT_EQ(escaped(std::string_view("\0", 1)), "\xef\xbf\xbd");
    EXPECT_EQ(escaped("caf\xe9"), "caf\xef\xbf\xbd") << "Latin-1 is not UTF-8";
    EXPECT_EQ(escaped("\xc3"), "\xef\xbf\xbd") << "a sequence that breaks off";
    EXPECT_EQ(escaped("\xef\xbf\xbf"), "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd");
}

TEST(TextBuffer, GrowsAndIsUsedAgain)
{
    host::TextBuffer buffer;
    std::string expected;
    for (int i = 0; i < 20000; ++i) {
        buffer.append("line ");
        buffer.append('x');
        expected += "line x";
    }
    EXPECT_EQ(buffer.view(), expected);
    buffer.clear();
    EXPECT_EQ(buffer.size(), 0u);
    buffer.append(std::string(3000000, 'y'));
    EXPECT_EQ(buffer.size(), 3000000u);
    buffer.clear();
    buffer.append("again");
    EXPECT_EQ(buffer.view(), "again");
}

} // namespace
