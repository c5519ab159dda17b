// SPDX-License-Identifier: Apache-2.0
// The reference as a document: the classes as mof/ declares them and as they answer.
#ifndef REFERENCE_CONTENT_H
#define REFERENCE_CONTENT_H

#include "document.h"

namespace reference
{

Document referencePage();

} // namespace reference

#endif
