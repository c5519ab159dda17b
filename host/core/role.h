// SPDX-License-Identifier: Apache-2.0
// What an account may do, as far as the host is concerned; the library decides on top of that.
#ifndef HOST_CORE_ROLE_H
#define HOST_CORE_ROLE_H

#include <array>
#include <optional>
#include <string_view>

namespace host
{

enum class Role {
    administrator,
    operatorUser,
    reader, // changes nothing and calls no method
};

/** The names that roles have in the accounts file, in the order of Role. */
inline constexpr std::array<const char *, 3> roleNames = {"administrator", "operator", "reader"};

inline const char *roleName(Role role)
{
    return roleNames[static_cast<std::size_t>(role)];
}

inline std::optional<Role> roleNamed(std::string_view name)
{
    for (std::size_t i = 0; i < roleNames.size(); ++i) {
        if (name == roleNames[i]) {
            return static_cast<Role>(i);
        }
    }
    return std::nullopt;
}

} // namespace host

#endif
