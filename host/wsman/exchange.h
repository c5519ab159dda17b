// SPDX-License-Identifier: Apache-2.0
// One request of a client on its way to an answer or a fault.
#ifndef HOST_WSMAN_EXCHANGE_H
#define HOST_WSMAN_EXCHANGE_H

#include "core/contexts.h"
#include "core/dispatcher.h"
#include "core/front_end.h"
#include "core/typing.h"
#include "wsman/message.h"
#include "wsman/writer.h"

#include <string>
#include <string_view>

namespace host::wsman
{

/** What all requests share. */
struct Service {
    Dispatcher &dispatcher;
    Contexts contexts;
    FragmentCache fragments;
    std::string vendorBase;
    std::string vendor;
    std::string version;
};

class Exchange
{
  public:
    Exchange(Service &shared, const HttpRequest &request, Arena &memory, TextBuffer &reply)
        : service(shared), http(request), arena(memory), out(reply), message(memory),
          vendorBase(shared.vendorBase)
    {
    }

    Service &service;
    const HttpRequest &http;
    Arena &arena;
    TextBuffer &out;
    Message message;
    Fault fault;
    /** The base of the URIs of the vendor's classes: the one that the client uses, once it is known. */
    std::string_view vendorBase;

    Writer writer()
    {
        return {out, service.fragments, vendorBase};
    }

    /** Makes the answer a fault; always false. The text is copied. */
    bool refuse(FaultKind kind, std::string_view detail, std::string_view text);
    bool refuse(CMPIrc code, std::string_view text);

    /** Has the request done; false, with the fault, when it failed. */
    [[nodiscard]] bool run(Request &request, Answer &answer);
};

// ------------------------------------------------------------------------------------------------ resources

/** What a resource URI and selectors name. */
struct Target {
    std::string_view nameSpace;
    const cim::Class *klass = nullptr;
    Path *path = nullptr; // without keys when there are no selectors
};

/** The class that the URI names, in the namespace of the selectors; the keys are not looked at. */
[[nodiscard]] bool findClass(Exchange &exchange, const Endpoint &endpoint, Target &target);

/** The instance. All keys of the class must be there, and nothing else; needsKeys false: or none of them. */
[[nodiscard]] bool findTarget(Exchange &exchange, const Endpoint &endpoint, bool needsKeys, Target &target);

/** The value of the selector __cimnamespace, or the standard namespace; false when there is no such one. */
[[nodiscard]] bool findNameSpace(Exchange &exchange, const ArenaList<Selector> &selectors,
                                 std::string_view &nameSpace);

/** True when the URI stands for all classes. */
bool namesAllClasses(std::string_view resourceUri);

// --------------------------------------------------------------------------------------------------- values

/** What the class says about a property or a parameter. */
struct Declared {
    cim::Type type = cim::Type::none;
    bool isArray = false;
};

/** Finds a property, or a parameter, of that name. */
class Declarations
{
  public:
    virtual Declared find(std::string_view name) const = 0;

  protected:
    ~Declarations() = default;
};

/** Reads the child elements as named values; elements of the same name are the items of an array. kind: of
 * the fault for what is no value. */
[[nodiscard]] bool readValues(Exchange &exchange, pugi::xml_node parent, const Declarations &declarations,
                              FaultKind kind, ArenaList<ValueText> &values);

/** Reads the value in one element. */
[[nodiscard]] bool readItem(Exchange &exchange, pugi::xml_node element, cim::Type type, FaultKind kind,
                            ItemText &item);

// ----------------------------------------------------------------------------------------------- operations
// Each writes the answer; false with the fault when it failed.

[[nodiscard]] bool identify(Exchange &exchange);
[[nodiscard]] bool get(Exchange &exchange);
[[nodiscard]] bool put(Exchange &exchange);
[[nodiscard]] bool create(Exchange &exchange);
[[nodiscard]] bool remove(Exchange &exchange);
[[nodiscard]] bool enumerate(Exchange &exchange);
[[nodiscard]] bool pull(Exchange &exchange);
[[nodiscard]] bool release(Exchange &exchange);
[[nodiscard]] bool invoke(Exchange &exchange);

} // namespace host::wsman

#endif
