// SPDX-License-Identifier: Apache-2.0
// Values that arrive as text, and the types they take. No protocol tells the type of everything it carries,
// so the class definition decides: of a key, of a property, of an argument.
#ifndef HOST_CORE_TYPING_H
#define HOST_CORE_TYPING_H

#include "cmpi/objects.h"

#include <cstdarg>
#include <string_view>

namespace host
{

struct PathText;

/** One item of a value: a text, or a reference. Null: a null element of an array. */
struct ItemText {
    bool isNull = false;
    std::string_view text;
    const PathText *reference = nullptr;
};

/** A named value as a protocol carries it: a key, a property, an argument. */
struct ValueText {
    std::string_view name;
    cim::Type type = cim::Type::none; // as the client says; None: it does not
    bool isArray = false;
    bool isNull = false;
    ItemText item;                              // of a scalar
    const ArenaList<ItemText> *items = nullptr; // of an array
};

/** A path as a protocol carries it. A key without a name stands for the only key of the class. */
struct PathText {
    std::string_view host;
    std::string_view nameSpace;
    std::string_view className;
    const ArenaList<ValueText> *keys = nullptr;
};

/** Makes typed objects of texts. After a failure the problem has been told in error(). */
class Typing
{
  public:
    Typing(Arena &arena, const cim::NameSpaces &nameSpaces) : arena_(arena), nameSpaces_(nameSpaces) {}

    /** The path with its keys of the types that its class declares. Where the class or the key is not known,
     * the client's type counts. A path without namespace is in defaultNameSpace. Null on failure. */
    Path *path(const PathText &text, std::string_view defaultNameSpace);

    /** The instance; its class must be known. What the class has not is an error. Null on failure. */
    Instance *instance(const Path &path, const ArenaList<ValueText> &properties);

    /** The arguments. Those that the method does not declare, or all when the method is not known, are of
     * the client's type, or strings. A value of another form than the declared one (a reference for a text,
     * an array for a scalar) is handed on as it is: to refuse it is the provider's. Null on failure. */
    Args *arguments(const cim::Class *klass, std::string_view method, const ArenaList<ValueText> &values,
                    std::string_view defaultNameSpace);

    /** A value for an element of that type. False on failure. */
    bool value(const ValueText &text, cim::Type type, bool isArray, std::string_view defaultNameSpace,
               CMPIData &data);

    CMPIrc code() const
    {
        return code_;
    }

    /** The text that says what is wrong. */
    const char *error() const
    {
        return error_;
    }

  private:
    bool scalar(const ItemText &item, cim::Type type, std::string_view name,
                std::string_view defaultNameSpace, CMPIData &data);
    void fail(CMPIrc code, const char *format, ...) __attribute__((format(printf, 3, 4)));

    Arena &arena_;
    const cim::NameSpaces &nameSpaces_;
    CMPIrc code_ = CMPI_RC_OK;
    const char *error_ = nullptr;
};

} // namespace host

#endif
