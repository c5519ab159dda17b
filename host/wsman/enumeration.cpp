// SPDX-License-Identifier: Apache-2.0
// Enumerate, Pull and Release.
#include "wsman/duration.h"
#include "wsman/exchange.h"
#include "wsman/filter.h"
#include "wsman/uris.h"
#include "wsman/xml.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <span>

namespace host::wsman
{
namespace
{

/** The kind of WS-Management's enumerations among all that are open. */
constexpr int contextKind = 0x100;

/** What stands around the items in the body of an answer at most. */
constexpr std::size_t around = 512;

/** Of one answer, when the client sets no limit. */
constexpr std::size_t mostItems = 1024;

enum class Mode : char { object = 'o', endpoint = 'e', both = 'b' };

struct Order {
    Mode mode = Mode::object;
    /** The class whose properties alone are shown; null: each object is shown as what it is. */
    const cim::Class *as = nullptr;
    bool exactClass = false;
    bool isOptimized = false;
    std::size_t maxElements = 1; // as WS-Enumeration has it
    std::size_t maxCharacters = SIZE_MAX;
    std::chrono::milliseconds lifetime{};
    bool tellsLifetime = false;
};

/** The objects that are handed out, as instances or as paths. */
struct Items {
    std::span<Instance *const> instances;
    std::span<Path *const> paths;

    std::size_t size() const
    {
        return instances.size() + paths.size();
    }
};

void writeItem(Writer &writer, const Items &items, std::size_t place, const Order &order)
{
    if (order.mode == Mode::both) {
        writer.raw("<wsman:Item>");
    }
    if (order.mode != Mode::endpoint) {
        writer.instance(*items.instances[place], order.as);
    }
    if (order.mode != Mode::object) {
        writer.endpoint(items.paths.empty() ? *items.instances[place]->path : *items.paths[place]);
    }
    if (order.mode == Mode::both) {
        writer.raw("</wsman:Item>");
    }
}

/** Writes objects, from one on, as many as may and fit. Returns the number; false in fits when the first one
 * alone is too long. */
std::size_t writeItems(Exchange &exchange, Writer &writer, const Items &items, std::size_t first,
                       const Order &order, bool &fits)
{
    const Message &message = exchange.message;
    TextBuffer &buffer = writer.buffer();
    std::size_t written = 0;
    fits = true;
    for (std::size_t i = first; i < items.size() && written < order.maxElements; ++i) {
        const std::size_t before = buffer.size();
        writeItem(writer, items, i, order);
        const std::size_t whole =
            buffer.size() + around + writer.envelopeSize(message.action, message.messageId);
        if (whole > message.maxEnvelopeSize || buffer.size() > order.maxCharacters) {
            buffer.truncate(before);
            fits = written != 0;
            break;
        }
        ++written;
    }
    return written;
}

bool tooLong(Exchange &exchange)
{
    return exchange.refuse(FaultKind::encodingLimit, "MaxEnvelopeSize",
                           "An object is longer than the MaxEnvelopeSize of the request allows.");
}

/** A number that a client gives; none, or more than there are: the most. */
bool readCount(Exchange &exchange, pugi::xml_node element, std::size_t &count)
{
    if (!element) {
        return true;
    }
    const std::string_view text = trimmedText(element, exchange.arena);
    std::uint64_t number = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end != text.data() + text.size() || number == 0 || problem == std::errc::invalid_argument) {
        return exchange.refuse(FaultKind::schemaValidationError, "",
                               std::string(localName(element)) + " is no number greater than 0.");
    }
    count = problem == std::errc() ? static_cast<std::size_t>(std::min<std::uint64_t>(number, mostItems))
                                   : mostItems;
    return true;
}

// ------------------------------------------------------------------------------------------------- the order

bool readMode(Exchange &exchange, pugi::xml_node enumerate, Order &order)
{
    const pugi::xml_node element = childOf(enumerate, uri::wsman, "EnumerationMode");
    const std::string_view mode = trimmedText(element, exchange.arena);
    if (mode == "EnumerateEPR") {
        order.mode = Mode::endpoint;
    } else if (mode == "EnumerateObjectAndEPR") {
        order.mode = Mode::both;
    } else if (element) {
        return exchange.refuse(FaultKind::unsupportedFeature, "EnumerationMode",
                               "There is no enumeration mode " + std::string(mode.substr(0, 200)) +
                                   "; there are EnumerateEPR and EnumerateObjectAndEPR.");
    }
    return true;
}

bool readPolymorphism(Exchange &exchange, pugi::xml_node enumerate, const Target &target, Order &order)
{
    const pugi::xml_node element = childOf(enumerate, uri::binding, "PolymorphismMode");
    const std::string_view mode = trimmedText(element, exchange.arena);
    if (mode == "ExcludeSubClassProperties") {
        order.as = target.klass;
    } else if (mode == "None") {
        order.exactClass = true;
    } else if (element && mode != "IncludeSubClassProperties") {
        return exchange.refuse(FaultKind::unsupportedFeature, "",
                               "There is no polymorphism mode " + std::string(mode.substr(0, 200)) +
                                   "; there are IncludeSubClassProperties, ExcludeSubClassProperties and "
                                   "None.");
    }
    return true;
}

bool readLifetime(Exchange &exchange, pugi::xml_node enumerate, Order &order)
{
    const pugi::xml_node element = childOf(enumerate, uri::enumeration, "Expires");
    order.lifetime = exchange.service.contexts.limits().lifetime;
    if (!element) {
        return true;
    }
    const std::string_view text = trimmedText(element, exchange.arena);
    const std::optional<std::chrono::milliseconds> wanted = readDuration(text);
    if (!wanted && !cimDateTime(text).empty()) {
        return exchange.refuse(FaultKind::unsupportedExpirationType, "",
                               "Expires is a duration here, such as PT60S, and no time of the day.");
    }
    if (!wanted || wanted->count() == 0) {
        return exchange.refuse(FaultKind::invalidExpirationTime, "",
                               "Expires is no duration greater than 0, such as PT60S.");
    }
    order.lifetime = std::min(order.lifetime, *wanted);
    order.tellsLifetime = true;
    return true;
}

bool readOrder(Exchange &exchange, pugi::xml_node enumerate, const Target &target, Order &order)
{
    order.isOptimized = !childOf(enumerate, uri::wsman, "OptimizeEnumeration").empty();
    return readMode(exchange, enumerate, order) && readPolymorphism(exchange, enumerate, target, order) &&
           readLifetime(exchange, enumerate, order) &&
           readCount(exchange, childOf(enumerate, uri::wsman, "MaxElements"), order.maxElements);
}

// ------------------------------------------------------------------------------------------------- contexts

/** What a pull must know stands in the note: the mode, the base of the URIs, and the class that is shown. */
std::string noteOf(const Exchange &exchange, const Target &target, const Order &order)
{
    std::string note(1, static_cast<char>(order.mode));
    note += std::string(exchange.vendorBase) + " " + std::string(target.nameSpace) + " ";
    return order.as != nullptr ? note + order.as->name : note;
}

void readNote(Exchange &exchange, std::string_view note, Order &order)
{
    order.mode = static_cast<Mode>(note.front());
    note.remove_prefix(1);
    const std::size_t base = note.find(' ');
    const std::size_t nameSpace = note.find(' ', base + 1);
    exchange.vendorBase = exchange.arena.copyText(note.substr(0, base));
    const std::string_view className = note.substr(nameSpace + 1);
    if (!className.empty()) {
        order.as = exchange.service.dispatcher.nameSpaces().findClass(
            note.substr(base + 1, nameSpace - base - 1), className);
    }
}

/** Keeps what is left after the first ones; the name of the context, or "" with the fault. */
std::string keepOpen(Exchange &exchange, const Target &target, const Order &order, const Items &items,
                     std::size_t first)
{
    std::unique_ptr<OpenEnumeration> rest = exchange.service.contexts.make();
    rest->kind = contextKind;
    rest->note = noteOf(exchange, target, order);
    bool fits = true;
    for (std::size_t i = first; i < items.size() && fits; ++i) {
        fits = items.paths.empty() ? rest->add(*items.instances[i]) : rest->add(*items.paths[i]);
    }
    std::string name;
    if (fits) {
        name = exchange.service.contexts.open(exchange.http.principal, std::move(rest), order.lifetime);
    }
    if (name.empty()) {
        exchange.refuse(FaultKind::quotaLimit, "",
                        fits ? "There are too many open enumerations; pull them to their end, release them, "
                               "or ask for everything at once with OptimizeEnumeration and MaxElements."
                             : "The open enumerations hold too much; ask for everything at once with "
                               "OptimizeEnumeration and MaxElements.");
    }
    return name;
}

/** Leaves out what is not of exactly the class. */
void keepExactClass(const Target &target, Answer &answer)
{
    std::size_t kept = 0;
    for (std::size_t i = 0; i < answer.instances.size(); ++i) {
        if (answer.instances[i]->klass == target.klass) {
            answer.instances[kept++] = answer.instances[i];
        }
    }
    answer.instances.truncate(kept);
    kept = 0;
    for (std::size_t i = 0; i < answer.paths.size(); ++i) {
        if (answer.paths[i]->klass == target.klass) {
            answer.paths[kept++] = answer.paths[i];
        }
    }
    answer.paths.truncate(kept);
}

/** The header with the number of objects, if it is wanted. */
std::string countHeader(const Exchange &exchange, std::size_t count)
{
    return exchange.message.wantsItemCount ? "<wsman:TotalItemsCountEstimate>" + std::to_string(count) +
                                                 "</wsman:TotalItemsCountEstimate>"
                                           : "";
}

/** The context comes before the items, but is not known before it is known how many fit. */
bool answerEnumerate(Exchange &exchange, const Target &target, const Order &order, const Items &items)
{
    Writer writer = exchange.writer();
    std::size_t written = 0;
    bool fits = true;
    if (order.isOptimized) {
        written = writeItems(exchange, writer, items, 0, order, fits);
    }
    if (!fits) {
        return tooLong(exchange);
    }
    const bool isWhole = order.isOptimized && written == items.size();
    std::string start = "<wsen:EnumerateResponse>";
    if (order.tellsLifetime) {
        start += "<wsen:Expires>" + durationText(order.lifetime) + "</wsen:Expires>";
    }
    start += "<wsen:EnumerationContext>";
    if (!isWhole) {
        const std::string context = keepOpen(exchange, target, order, items, written);
        if (context.empty()) {
            return false;
        }
        start += context;
    }
    start += "</wsen:EnumerationContext>";
    if (order.isOptimized) {
        start += "<wsman:Items>";
        writer.raw(isWhole ? "</wsman:Items><wsman:EndOfSequence/>" : "</wsman:Items>");
    }
    exchange.out.prepend(start);
    writer.raw("</wsen:EnumerateResponse>");
    writer.finish(exchange.message.action, "Response", exchange.message.messageId,
                  countHeader(exchange, items.size()));
    return true;
}

} // namespace

bool enumerate(Exchange &exchange)
{
    const pugi::xml_node element = childOf(exchange.message.body, uri::enumeration, "Enumerate");
    if (!element) {
        return exchange.refuse(FaultKind::schemaValidationError, "", "The body holds no wsen:Enumerate.");
    }
    Target target;
    const bool isOfAll = namesAllClasses(exchange.message.resource.resourceUri);
    if (isOfAll ? !findNameSpace(exchange, exchange.message.resource.selectors, target.nameSpace)
                : !findClass(exchange, exchange.message.resource, target)) {
        return false;
    }
    Order order;
    Filter filter(exchange.arena);
    if (!readOrder(exchange, element, target, order) ||
        !readFilter(exchange, element, target, order.mode == Mode::endpoint, filter)) {
        return false;
    }
    Answer answer(exchange.arena);
    if (!exchange.run(filter.request, answer) || !filter.apply(exchange, answer)) {
        return false;
    }
    if (order.exactClass && target.klass != nullptr) {
        keepExactClass(target, answer);
    }
    const Items items = {{answer.instances.begin(), answer.instances.size()},
                         {answer.paths.begin(), answer.paths.size()}};
    return answerEnumerate(exchange, target, order, items);
}

bool pull(Exchange &exchange)
{
    const pugi::xml_node element = childOf(exchange.message.body, uri::enumeration, "Pull");
    const std::string_view name =
        trimmedText(childOf(element, uri::enumeration, "EnumerationContext"), exchange.arena);
    Order order;
    if (!element) {
        return exchange.refuse(FaultKind::schemaValidationError, "", "The body holds no wsen:Pull.");
    }
    if (!readCount(exchange, childOf(element, uri::enumeration, "MaxElements"), order.maxElements)) {
        return false;
    }
    if (const pugi::xml_node limit = childOf(element, uri::enumeration, "MaxCharacters")) {
        order.maxCharacters = static_cast<std::size_t>(
            std::min(limit.text().as_ullong(), static_cast<unsigned long long>(SIZE_MAX)));
    }
    const ContextUse use(exchange.service.contexts, exchange.http.principal, std::string(name), contextKind);
    if (use.get() == nullptr) {
        return exchange.refuse(FaultKind::invalidEnumerationContext, "", "");
    }
    OpenEnumeration &open = *use.get();
    readNote(exchange, open.note, order);
    Writer writer = exchange.writer();
    bool fits = true;
    const Items items = {{open.instances.begin(), open.instances.size()},
                         {open.paths.begin(), open.paths.size()}};
    const std::size_t written = writeItems(exchange, writer, items, open.next, order, fits);
    if (!fits) {
        return tooLong(exchange);
    }
    const bool isLast = open.remaining() == written;
    std::string start = "<wsen:PullResponse>";
    if (!isLast) { // compat: clients pull on while the answer names a context, whatever else it says
        start += "<wsen:EnumerationContext>" + use.name() + "</wsen:EnumerationContext>";
    }
    exchange.out.prepend(start + "<wsen:Items>");
    writer.raw(isLast ? "</wsen:Items><wsen:EndOfSequence/></wsen:PullResponse>"
                      : "</wsen:Items></wsen:PullResponse>");
    writer.finish(exchange.message.action, "Response", exchange.message.messageId,
                  countHeader(exchange, items.size()));
    open.next += written;
    return true;
}

bool release(Exchange &exchange)
{
    const pugi::xml_node element = childOf(exchange.message.body, uri::enumeration, "Release");
    const std::string_view name =
        trimmedText(childOf(element, uri::enumeration, "EnumerationContext"), exchange.arena);
    ContextUse use(exchange.service.contexts, exchange.http.principal, std::string(name), contextKind);
    if (use.get() == nullptr) {
        return exchange.refuse(FaultKind::invalidEnumerationContext, "", "");
    }
    use.close();
    exchange.writer().finish(exchange.message.action, "Response", exchange.message.messageId);
    return true;
}

} // namespace host::wsman
