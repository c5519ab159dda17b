// SPDX-License-Identifier: Apache-2.0
// The writer of envelopes: appends straight to the bytes that are sent.
//
// compat: every element has a prefix, because there are clients that read answers as text.
#ifndef HOST_WSMAN_WRITER_H
#define HOST_WSMAN_WRITER_H

#include "core/model.h"
#include "core/text_buffer.h"
#include "wsman/fault.h"
#include "wsman/message.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace host::wsman
{

/** The parts of an object's XML that are the same for all objects of a class. */
struct ClassFragments {
    struct Property {
        std::size_t place; // in the class
        std::string open;
        std::string close;
        std::string null;
    };

    ClassFragments(const cim::Class &klass, std::size_t number);

    /** Of the elements of the class, with a colon at its end; each class has its own. */
    std::string prefix;
    std::string name;
    std::vector<Property> properties; // in the order of their names, as DSP0230 has it
};

class FragmentCache
{
  public:
    explicit FragmentCache(const cim::NameSpaces &nameSpaces);

    const ClassFragments &of(const cim::Class &klass);

  private:
    struct Entry {
        std::size_t number;
        std::once_flag made;
        std::optional<ClassFragments> fragments;
    };

    std::unordered_map<const cim::Class *, Entry> entries_;
};

/** The base of a class's resource URI, with a slash at its end: DSP0227 has one for CIM's own classes; for
 * others it is the vendor's, which the client knows. */
std::string_view baseUri(std::string_view className, std::string_view vendorBase);

class Writer
{
  public:
    /** vendorBase: of the resource URIs of classes that are not CIM's own. */
    Writer(TextBuffer &out, FragmentCache &fragments, std::string_view vendorBase)
        : out_(out), fragments_(fragments), vendorBase_(vendorBase)
    {
    }

    /** Puts the envelope around the body, which is what has been written. headers: what stands beside those
     * of every answer. The namespaces of classes are declared by the envelope alone.
     *
     * compat: there are clients that look for the element of an object by its name and the bracket after it.
     */
    void finish(std::string_view action, std::string_view suffix, std::string_view relatesTo,
                std::string_view headers = "");

    /** What finish() adds, or a little more. */
    std::size_t envelopeSize(std::string_view action, std::string_view relatesTo) const;

    /** A whole fault message. */
    void fault(const Fault &fault, std::string_view relatesTo);

    /** <prefix:name>text</prefix:name> */
    void element(std::string_view name, std::string_view text);
    void raw(std::string_view text)
    {
        out_.append(text);
    }
    void escaped(std::string_view text);

    /** The object as an element named by its class. as: the class that is shown; null: the object's own. */
    void instance(const Instance &instance, const cim::Class *as = nullptr);

    /** One property, as instance() writes it. index: of the one element of an array that is wanted, from 1;
     * 0: all. */
    void fragment(const Instance &instance, std::size_t place, std::size_t index, bool textOnly);

    /** <wsa:EndpointReference> of the path, and what stands in it. */
    void endpoint(const Path &path);
    void endpointParts(const Path &path);

    /** The value, as elements of that name in the namespace of the class; as many as an array has. */
    void value(const cim::Class &klass, std::string_view name, const CMPIData &data);

    /** An element in the namespace of the class, and its end. */
    void openElement(const cim::Class &klass, std::string_view name);
    void closeElement(const cim::Class &klass, std::string_view name);

    /** The URI of the class. */
    void resourceUri(std::string_view className);

    TextBuffer &buffer()
    {
        return out_;
    }

  private:
    const ClassFragments &fragmentsOf(const cim::Class &klass);
    std::string head(std::string_view action, std::string_view suffix, std::string_view relatesTo) const;
    void scalar(const CMPIData &data);
    void items(const CMPIData &data, std::string_view open, std::string_view close, std::string_view null);
    void faultDetail(const Fault &fault);

    TextBuffer &out_;
    FragmentCache &fragments_;
    std::string_view vendorBase_;
    std::vector<const ClassFragments *> declared_;
};

} // namespace host::wsman

#endif
