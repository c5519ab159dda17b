// SPDX-License-Identifier: Apache-2.0
// The elements that values and paths are made of (DSP0201), read into what typing.h takes.
#ifndef HOST_CIMXML_ELEMENT_READER_H
#define HOST_CIMXML_ELEMENT_READER_H

#include "cimxml/reader.h"

namespace host
{

using pugi::xml_node;

/** True when the element has that name. */
bool is(const xml_node &node, const char *name);

std::string_view attribute(const xml_node &node, const char *name);

/** The text without white space around it. */
std::string_view trimmed(std::string_view text);

/** The first child that is an element. */
xml_node firstElement(const xml_node &node);

/** Reads parts of a message; the first thing that is wrong stands in the message. */
class ElementReader
{
  public:
    ElementReader(Arena &arena, const cim::NameSpaces &nameSpaces, CimXmlMessage &message)
        : arena_(arena), nameSpaces_(nameSpaces), message_(message)
    {
    }

  protected:
    static constexpr std::size_t maxKeys = 64;
    static constexpr std::size_t maxArguments = 256;

    void fail(CMPIrc code, const char *text);

    void failWith(const char *format, std::string_view name);

    bool failed() const
    {
        return message_.code != CMPI_RC_OK;
    }

    /** The text of an element, be it in one piece or in several (CDATA sections, comments in between). */
    std::string_view textOf(const xml_node &node);

    const char *zeroTerminated(std::string_view text);

    std::string_view nameSpaceOf(const xml_node &localNameSpacePath);

    ItemText itemOf(const xml_node &node);

    /** The value that stands in an element: a scalar, an array, or nothing, which is null. Qualifiers may
     * come before it. */
    void readValue(const xml_node &holder, ValueText &value);

    cim::Type typeOf(const xml_node &node, const char *attributeName);

    template <typename T>
    ArenaList<T> *makeList()
    {
        return new (arena_.allocate(sizeof(ArenaList<T>), alignof(ArenaList<T>))) ArenaList<T>(arena_);
    }

    void readKeyValue(const xml_node &node, ValueText &key);

    void readInstanceName(const xml_node &node, PathText &path);

    /** INSTANCENAME or CLASSNAME, alone or with what names their namespace and host around them. */
    const PathText *pathOf(const xml_node &node);

    void readPath(const xml_node &node, PathText &path);

    void readLastElement(const xml_node &node, PathText &path);

    Path *typedPath(const PathText *text);

    Arena &arena_;
    const cim::NameSpaces &nameSpaces_;
    CimXmlMessage &message_;
};

} // namespace host

#endif
