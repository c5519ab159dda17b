// SPDX-License-Identifier: Apache-2.0
// The writer of CIM-XML messages (DSP0201): appends straight to the bytes that are sent.
//
// The form is the one that every client reads: elements are not self-closed where a client cannot stand it,
// numbers and texts are plain, references are local paths.
#ifndef HOST_CIMXML_WRITER_H
#define HOST_CIMXML_WRITER_H

#include "cim/name_spaces.h"
#include "cimxml/reader.h"
#include "core/model.h"
#include "core/text_buffer.h"

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace host
{

/** The parts of an instance's XML that are the same for all instances of a class; made when they are first
 * needed, and kept. */
class ClassFragments
{
  public:
    struct Property {
        std::string openValue; // <PROPERTY NAME="..." TYPE="..."><VALUE>, as nearly all begin
        std::size_t nameEnd;   // CLASSORIGIN stands here, if it is asked for
        std::string_view close;

        /** Without the element of a value. */
        std::string_view open() const;
    };

    explicit ClassFragments(const cim::Class &definition);

    std::string open; // <INSTANCE CLASSNAME="...">
    std::vector<Property> properties;
};

class FragmentCache
{
  public:
    explicit FragmentCache(const cim::NameSpaces &nameSpaces);

    const ClassFragments &of(const cim::Class &klass);

  private:
    struct Entry {
        std::once_flag made;
        std::optional<ClassFragments> fragments;
    };

    std::unordered_map<const cim::Class *, Entry> entries_; // one for each class, from the beginning
};

/** What an instance is written with besides its values. */
struct InstanceDetail {
    bool classOrigin = false;
    bool qualifiers = false; // those of the class, for instances have none of their own
};

class CimXmlWriter
{
  public:
    CimXmlWriter(TextBuffer &out, FragmentCache &fragments, std::string_view hostName)
        : out_(out), fragments_(fragments), hostName_(hostName)
    {
    }

    /** The answer to the operation or method of that name. */
    void writeAnswer(std::string_view messageId, std::string_view name, const Request &request,
                     const Answer &answer);

    /** The same when it failed. */
    void writeError(std::string_view messageId, std::string_view name, bool isMethodCall, CMPIrc code,
                    const char *message);

    /** The parts of an answer that tells an enumeration part by part. */
    void beginPart(std::string_view messageId, std::string_view name);
    void part(const ArenaList<Instance *> &instances, const ArenaList<Path *> &paths, ObjectForm form,
              bool includeClassOrigin, std::size_t first, std::size_t count);
    void queryResultClass(const Answer &answer);
    void sequence(std::string_view context, bool isEnd);
    void endPart();

  private:
    void begin(std::string_view messageId, std::string_view name, bool isMethodCall);
    void end(bool isMethodCall);
    void error(CMPIrc code, const char *message);
    void attribute(std::string_view name, std::string_view value);
    void result(const Request &request, const Answer &answer);
    void traversalResult(const Request &request, const Answer &answer);
    void methodResult(const Answer &answer);
    void parameter(std::string_view name, const CMPIData &data);
    void classPath(const cim::Class &klass, std::string_view nameSpace);
    void embedded(const Instance &instance);
    void nameSpacePath(std::string_view nameSpace);
    void instanceName(const Path &path);
    void instancePath(const Path &path);
    void localPath(const Path &path);
    void reference(const Path &path);
    void instance(const Instance &instance, const InstanceDetail &detail);
    void plainProperty(const ClassFragments::Property &fragments, const CMPIData &data);
    void scalar(const CMPIData &data);
    void value(const CMPIData &data);
    void typeAttribute(std::string_view name, CMPIType type);
    void textValue(const cim::Value &value);
    void qualifiers(const cim::Qualifiers &qualifiers);
    void classDefinition(const cim::Class &definition, const Request &request, bool withMethods = true);
    void propertyDefinition(const cim::Property &property, const Request &request);
    void method(const cim::Method &method, const Request &request);
    void qualifierDeclaration(const cim::QualifierDeclaration &declaration);

    TextBuffer &out_;
    FragmentCache &fragments_;
    std::string_view hostName_;
};

} // namespace host

#endif
