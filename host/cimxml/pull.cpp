// SPDX-License-Identifier: Apache-2.0
#include "cimxml/pull.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace host
{
namespace
{

/** The longest time that a client may ask for between two requests, and what it gets without asking. */
constexpr std::uint32_t longestTimeout = 600;
constexpr std::uint32_t usualTimeout = 60;

constexpr const char *tooMany =
    "Too many enumerations are open, or too large ones; close one, or read one to its end.";
constexpr const char *wrongTimeout = "The OperationTimeout has to be from 1 to 600 seconds.";

class PullAnswer
{
  public:
    PullAnswer(Dispatcher &dispatcher, Contexts &contexts, Arena &arena, const CimXmlMessage &message,
               CimXmlWriter &writer, TextBuffer &out)
        : dispatcher_(dispatcher), contexts_(contexts), arena_(arena), message_(message), writer_(writer),
          out_(out)
    {
    }

    void open()
    {
        const PullRequest &pull = message_.pull;
        if (pull.continueOnError) {
            return fail(statusContinuationOnErrorNotSupported, "ContinueOnError is not supported.");
        }
        if (pull.timeout && *pull.timeout > longestTimeout) {
            return fail(statusInvalidOperationTimeout, wrongTimeout);
        }
        if (pull.form == ObjectForm::paths && message_.request.query != nullptr) {
            return fail(statusFilteredEnumerationNotSupported,
                        "Paths cannot be filtered; enumerate instances.");
        }
        Call call{&arena_, nextRequestNumber()};
        Answer answer(arena_);
        dispatcher_.execute(call, message_.request, answer);
        if (!answer.ok()) {
            return fail(answer.code, answer.message);
        }
        const std::size_t size = answer.instances.size() + answer.paths.size();
        const std::size_t count = std::min<std::size_t>(pull.maxObjectCount, size);
        writer_.beginPart(message_.id, message_.name);
        writer_.part(answer.instances, answer.paths, pull.form, message_.request.includeClassOrigin, 0,
                     count);
        if (pull.returnsQueryResultClass) {
            writer_.queryResultClass(answer);
        }
        std::string context;
        if (count < size && pull.timeout && *pull.timeout == 0) { // stay open without end
            out_.clear();
            return fail(statusInvalidOperationTimeout, wrongTimeout);
        }
        if (count < size) {
            context = keep(answer, count);
            if (context.empty()) {
                out_.clear();
                return fail(CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED, tooMany);
            }
        }
        try {
            writer_.sequence(context, count == size);
            writer_.endPart();
        } catch (...) { // of an enumeration without an answer nobody knows
            contexts_.close(context);
            throw;
        }
    }

    void pull()
    {
        ContextUse use(contexts_, message_.request.principal, std::string(message_.pull.context),
                       kindOf(message_));
        OpenEnumeration *enumeration = use.get();
        if (enumeration == nullptr || !isOfNameSpace(*enumeration)) {
            return failContext();
        }
        const std::size_t count =
            std::min<std::size_t>(message_.pull.maxObjectCount, enumeration->remaining());
        writer_.beginPart(message_.id, message_.name);
        writer_.part(enumeration->instances, enumeration->paths, message_.pull.form,
                     enumeration->note.starts_with(withOrigin), enumeration->next, count);
        enumeration->next += count;
        const bool isEnd = enumeration->remaining() == 0;
        writer_.sequence(isEnd ? std::string() : use.name(), isEnd);
        writer_.endPart();
    }

    void close()
    {
        for (const ObjectForm form :
             {ObjectForm::instancesWithPath, ObjectForm::paths, ObjectForm::instances}) {
            ContextUse use(contexts_, message_.request.principal, std::string(message_.pull.context),
                           static_cast<int>(form));
            if (use.get() != nullptr && isOfNameSpace(*use.get())) {
                use.close();
                writer_.beginPart(message_.id, message_.name);
                return writer_.endPart();
            }
        }
        failContext();
    }

  private:
    // The note of an open enumeration: how it is written, and its namespace.
    static constexpr char withOrigin = '+';
    static constexpr char withoutOrigin = '-';

    static int kindOf(const CimXmlMessage &message)
    {
        return static_cast<int>(message.pull.form);
    }

    bool isOfNameSpace(const OpenEnumeration &enumeration) const
    {
        return cim::sameName(std::string_view(enumeration.note).substr(1), message_.request.nameSpace);
    }

    void fail(CMPIrc code, const char *text)
    {
        writer_.writeError(message_.id, message_.name, false, code, text);
    }

    void failContext()
    {
        fail(statusInvalidEnumerationContext,
             "There is no such enumeration of this kind; it has ended, was closed, or its time is over.");
    }

    /** Keeps what has not been sent; "" when there is no room for it. */
    std::string keep(const Answer &answer, std::size_t sent)
    {
        std::unique_ptr<OpenEnumeration> enumeration = contexts_.make();
        for (std::size_t i = sent; i < answer.instances.size(); ++i) {
            if (!enumeration->add(*answer.instances[i])) {
                return {};
            }
        }
        for (std::size_t i = sent; i < answer.paths.size(); ++i) {
            if (!enumeration->add(*answer.paths[i])) {
                return {};
            }
        }
        enumeration->kind = kindOf(message_);
        enumeration->note = message_.request.includeClassOrigin ? withOrigin : withoutOrigin;
        enumeration->note += message_.request.nameSpace;
        return contexts_.open(message_.request.principal, std::move(enumeration),
                              std::chrono::seconds(message_.pull.timeout.value_or(usualTimeout)));
    }

    Dispatcher &dispatcher_;
    Contexts &contexts_;
    Arena &arena_;
    const CimXmlMessage &message_;
    CimXmlWriter &writer_;
    TextBuffer &out_;
};

} // namespace

void answerPull(Dispatcher &dispatcher, Contexts &contexts, Arena &arena, const CimXmlMessage &message,
                CimXmlWriter &writer, TextBuffer &out)
{
    PullAnswer answer(dispatcher, contexts, arena, message, writer, out);
    if (dispatcher.nameSpaces().find(message.request.nameSpace) == nullptr) {
        return answer.open(); // the dispatcher says that there is no such namespace
    }
    switch (message.pull.step) {
    case PullStep::open:
        return answer.open();
    case PullStep::pull:
        return answer.pull();
    case PullStep::close:
        return answer.close();
    case PullStep::none:
        return;
    }
}

} // namespace host
