// SPDX-License-Identifier: Apache-2.0
// The operations that answer an enumeration part by part (DSP0200: Open, Pull, Close).
#ifndef HOST_CIMXML_PULL_H
#define HOST_CIMXML_PULL_H

#include "cimxml/reader.h"
#include "cimxml/writer.h"
#include "core/contexts.h"
#include "core/dispatcher.h"

namespace host
{

/** Answers the message, which is one of these operations. The answer is appended to out. */
void answerPull(Dispatcher &dispatcher, Contexts &contexts, Arena &arena, const CimXmlMessage &message,
                CimXmlWriter &writer, TextBuffer &out);

} // namespace host

#endif
