// SPDX-License-Identifier: Apache-2.0
// The settings of a monitor by name. What the classes say comes from model/facts.h; what no qualifier can say
// (the dotted name, how a value is written) is the one table in settings_table.cpp.
#ifndef DISPLAYCTL_MODEL_SETTINGS_H
#define DISPLAYCTL_MODEL_SETTINGS_H

#include "model/facts.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace displayctl::model
{

/** How the value of a setting is written, read and sent. */
enum class Kind {
    text,
    date,         ///< YYYY-MM-DD
    number,       ///< whole, maybe with its unit
    decimal,      ///< maybe with its unit
    onOff,        ///< on or off; a boolean or a code with two values
    choice,       ///< a code whose values have words
    code,         ///< a code without documented meaning; a number, or the name that the site gives it
    position,     ///< x,y
    size,         ///< WIDTHxHEIGHT
    colour,       ///< r,g,b
    chromaticity, ///< x,y, decimal
    preset,       ///< 1 to 7, or the name of a preset
    networkMode,  ///< dhcp or static
    address,      ///< IPv4
    anything,     ///< never accepted, whatever is given
};

/** What is special about a setting. */
enum Trait : unsigned {
    none = 0,
    administrator = 1, ///< only administrators may change it
    readOnly = 2,      ///< what its property corresponds to is changed by another setting or by an action
    writeOnly = 4,     ///< no property tells it
    neverAccepted = 8, ///< the monitor refuses every change
    identity = 16,     ///< belongs to one monitor, and is skipped where a profile is applied to several
    onlyAll = 32,      ///< not in the usual `show`
    late = 64,         ///< the monitor answers before the change is made
    network = 128,     ///< a change may cut the connection, so it asks first
    mask = 256,        ///< an address whose ones stand before its zeros
};

/** One row of the table; N in its name stands for 1 to the number of the class's instances. */
struct SettingRow {
    std::string_view name;
    Kind kind;
    std::string_view className;               ///< without prefix
    std::vector<std::string_view> properties; ///< that it is read from
    unsigned traits = none;
    std::string_view arguments = {};          ///< "Class.Method.Argument" where no property corresponds to it
    std::string_view description = {};        ///< where its property is one that superclasses describe
    std::vector<std::string_view> words = {}; ///< of a choice, by code from 0
    std::optional<double> minimum = {}; ///< where the property is a text, for which a class cannot say it
    std::optional<double> maximum = {};
    std::optional<double> step = {};
    std::vector<int> sent = {}; ///< by the code that is read, the code that the method takes
};

/** Where a method's argument stands. */
struct MethodArgument {
    const ClassFacts *owner = nullptr;
    const MethodFacts *method = nullptr;
    const ArgumentFacts *argument = nullptr;
};

struct Setting {
    std::string name; ///< as in preset.3.luminance
    const SettingRow *row;
    int number = 0; ///< of the instance, from 1; 0 where the class has one
    const ClassFacts *owner = nullptr;
    std::vector<const PropertyFacts *> properties = {};
    std::vector<MethodArgument> arguments =
        {}; ///< one for each part of the value; empty: not changed by a method

    [[nodiscard]] bool has(Trait trait) const
    {
        return (row->traits & trait) != 0;
    }
    /** Whether there is something that changes it; the monitor may still refuse every change. */
    [[nodiscard]] bool isWritable() const;
    [[nodiscard]] bool isReadable() const
    {
        return !has(writeOnly);
    }
    [[nodiscard]] Kind kind() const
    {
        return row->kind;
    }
    /** As people write it: cd/m2, %, s. Empty where there is none. */
    [[nodiscard]] std::string_view unit() const;
    /** Bounds of a number, or of the part of a position or colour. */
    [[nodiscard]] std::optional<double> minimum(std::size_t part = 0) const;
    [[nodiscard]] std::optional<double> maximum(std::size_t part = 0) const;
    [[nodiscard]] std::span<const CodeName> codes() const;
    /** Everything before the last component: preset.3, pip. */
    [[nodiscard]] std::string_view group() const;
    /** Where site names of its codes stand: function.action of function.3.action. */
    [[nodiscard]] std::string siteName() const;
    /** One sentence from the class definitions. */
    [[nodiscard]] std::string_view description() const;
};

/** All settings, in the order in which they are shown. */
[[nodiscard]] std::span<const Setting> allSettings();
[[nodiscard]] const Setting *findSetting(std::string_view name);

/** The rows as they are written, for tests of their completeness. */
[[nodiscard]] std::span<const SettingRow> settingRows();

/** An action: something to do, not a value. */
struct ActionRow {
    std::string_view name;
    std::string_view argument; ///< "last", "factory", or empty
    std::string_view method;   ///< "Class.Method"
    bool cannotBeUndone;
    std::string_view description;
    std::string_view nothingToDo = {}; ///< the refusal that means that it is as if done
};

[[nodiscard]] std::span<const ActionRow> allActions();
[[nodiscard]] const ActionRow *findAction(std::string_view name, std::string_view argument);

/** A method or property ("Class.Name") that no setting and no action stands for, and why. */
struct Exception {
    std::string_view name;
    std::string_view reason;
};
[[nodiscard]] std::span<const Exception> exceptions();

} // namespace displayctl::model

#endif
