// SPDX-License-Identifier: Apache-2.0
// Files with certificates and keys, and whether they have changed.
#ifndef HOST_HTTP_PEM_FILE_H
#define HOST_HTTP_PEM_FILE_H

#include <gnutls/gnutls.h>
#include <string>

namespace host
{

/** The file as a whole. False, with the reason in problem, when it cannot be read. */
[[nodiscard]] bool readText(const std::string &file, std::string &text, std::string &problem);

/** The text as GnuTLS takes it; it stays where it is. */
gnutls_datum_t datumOf(std::string &text);

/** Another number when the file has changed or was replaced; 0: there is none. */
long long stampOf(const std::string &file);

} // namespace host

#endif
