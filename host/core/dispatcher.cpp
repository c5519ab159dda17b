#include "core/dispatcher.h"

#include <cstdarg>
#include <cstdio>
#include <unordered_set>

namespace host
{
namespace
{

/** Makes the answer an error with a text of its own. */
void fail(Call &call, Answer &answer, CMPIrc code, const char *format, ...)
    __attribute__((format(printf, 4, 5)));

void fail(Call &call, Answer &answer, CMPIrc code, const char *format, ...)
{
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    answer.code = code;
    answer.message = call.arena->copyText(text);
}

int shown(std::string_view text)
{
    return static_cast<int>(std::min<std::size_t>(text.size(), 200));
}

CMPIFlags flagsOf(const Request &request)
{
    return (request.localOnly ? CMPI_FLAG_LocalOnly : 0u) |
           (request.deepInheritance ? CMPI_FLAG_DeepInheritance : 0u) |
           (request.includeQualifiers ? CMPI_FLAG_IncludeQualifiers : 0u) |
           (request.includeClassOrigin ? CMPI_FLAG_IncludeClassOrigin : 0u);
}

/** Takes over what a provider returns, as far as the operation has a place for it. */
class Collector final : public ResultSink
{
  public:
    enum class Kind { Nothing, Data, Instances, Paths };

    Collector(Arena &arena, const Request &request, Kind kind, Answer &answer)
        : arena_(arena), request_(request), kind_(kind), answer_(answer)
    {
    }

    CMPIrc takeData(const CMPIValue *value, CMPIType type) override
    {
        if (kind_ != Kind::Data) {
            return CMPI_RC_ERR_NOT_SUPPORTED;
        }
        const CMPIrc code = takeValue(arena_, value, type, answer_.returnValue);
        answer_.hasReturnValue = code == CMPI_RC_OK;
        return code;
    }

    CMPIrc takeInstance(const Instance &instance) override
    {
        if (kind_ != Kind::Instances) {
            return CMPI_RC_ERR_NOT_SUPPORTED;
        }
        if (arena_.exhausted()) {
            return CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED;
        }
        // A copy, because the provider may go on to change the instance and return it again.
        Instance *copy = copyObject(arena_, instance);
        completeKeys(*copy);
        complete(*copy->path);
        answer_.instances.append(copy);
        return CMPI_RC_OK;
    }

    CMPIrc takePath(const Path &path) override
    {
        if (kind_ != Kind::Paths) {
            return CMPI_RC_ERR_NOT_SUPPORTED;
        }
        if (arena_.exhausted()) {
            return CMPI_RC_ERR_SERVER_LIMITS_EXCEEDED;
        }
        Path *copy = copyObject(arena_, path);
        complete(*copy);
        answer_.paths.append(copy);
        return CMPI_RC_OK;
    }

    void takeError(const Error &error) override
    {
        error_ = copyObject(arena_, error);
    }

    void done() override
    {
        // The return of the provider says the same.
    }

    const Error *error() const
    {
        return error_;
    }

  private:
    void complete(Path &path)
    {
        if (path.nameSpace == nullptr) {
            path.nameSpace = makeString(arena_, request_.nameSpace);
        }
    }

    Arena &arena_;
    const Request &request_;
    Kind kind_;
    Answer &answer_;
    const Error *error_ = nullptr;
};

/** Shows only the properties that the request wants to see. */
class Projection
{
  public:
    /** limit: only properties that this class has too; null: all. */
    Projection(Arena &arena, const Request &request, const ClassInfo *limit)
        : arena_(arena), request_(request), limit_(limit)
    {
    }

    void apply(Instance &instance)
    {
        const bool limited = limit_ != nullptr && limit_ != instance.info;
        if (request_.propertyList == nullptr && !request_.localOnly && !limited) {
            return;
        }
        if (instance.info != lastClass_) {
            lastClass_ = instance.info;
            lastSet_ = makeSet(*instance.info, limited);
        }
        instance.visible = lastSet_;
    }

  private:
    const PropertySet *makeSet(const ClassInfo &info, bool limited)
    {
        const std::vector<cim::Property> &properties = info.definition().properties;
        const PropertySet *listed =
            request_.propertyList != nullptr ? makePropertySet(arena_, info, request_.propertyList) : nullptr;
        PropertySet *set = makePropertySet(arena_, info);
        for (std::size_t i = 0; i < properties.size(); ++i) {
            if ((listed == nullptr || listed->contains(i)) &&
                (!request_.localOnly || !properties[i].propagated) &&
                (!limited || limit_->findProperty(properties[i].name) != ClassInfo::NO_PROPERTY)) {
                set->insert(i);
            }
        }
        return set;
    }

    Arena &arena_;
    const Request &request_;
    const ClassInfo *limit_;
    const ClassInfo *lastClass_ = nullptr;
    const PropertySet *lastSet_ = nullptr;
};

struct PathHash {
    std::size_t operator()(const Path *path) const
    {
        return hashPath(*path);
    }
};

struct PathEqual {
    bool operator()(const Path *left, const Path *right) const
    {
        return samePath(*left, *right);
    }
};

/** Leaves out objects that have been there before, beginning at a place. */
class Deduplication
{
  public:
    template <typename T, typename GetPath>
    void apply(ArenaList<T *> &objects, std::size_t first, GetPath getPath)
    {
        std::size_t kept = first;
        for (std::size_t i = first; i < objects.size(); ++i) {
            if (seen_.insert(getPath(objects[i])).second) {
                objects[kept++] = objects[i];
            }
        }
        objects.truncate(kept);
    }

  private:
    std::unordered_set<const Path *, PathHash, PathEqual> seen_;
};

/** The word after FROM; DSP0200 tells the class of a query nowhere else. */
std::string_view classOfQuery(std::string_view query)
{
    constexpr std::string_view BLANKS = " \t\r\n";
    bool afterFrom = false;
    while (true) {
        const std::size_t first = query.find_first_not_of(BLANKS);
        if (first == std::string_view::npos) {
            return {};
        }
        query.remove_prefix(first);
        const std::size_t end = std::min(query.find_first_of(BLANKS), query.size());
        const std::string_view word = query.substr(0, end);
        if (afterFrom) {
            return word;
        }
        afterFrom = cim::sameName(word, "from");
        query.remove_prefix(end);
    }
}

} // namespace

// ------------------------------------------------------------------------------------------------ the gate

bool ProviderGate::enter(std::uint64_t request, std::chrono::milliseconds patience)
{
    std::unique_lock lock(mutex_);
    if (holder_ != request && holder_ != 0 &&
        !free_.wait_for(lock, patience, [this] { return holder_ == 0; })) {
        return false;
    }
    holder_ = request;
    ++entries_;
    return true;
}

void ProviderGate::leave()
{
    {
        const std::lock_guard lock(mutex_);
        if (--entries_ != 0) {
            return;
        }
        holder_ = 0;
    }
    free_.notify_one();
}

// --------------------------------------------------------------------------------------- the provider call

/** One call of one provider: enters, makes the context and the result, and turns what comes back into the
 * answer. */
class ProviderCall
{
  public:
    ProviderCall(Dispatcher &dispatcher, Call &call, const Request &request, Collector::Kind kind,
                 Answer &answer)
        : dispatcher_(dispatcher), call_(call), request_(request), answer_(answer),
          collector_(*call.arena, request, kind, answer)
    {
    }

    /** function: does the call, given the context and the result. True when it succeeded. */
    template <typename Function>
    bool run(Function function)
    {
        if (call_.depth >= Dispatcher::MAX_DEPTH) {
            fail(call_, answer_, CMPI_RC_ERR_FAILED,
                 "Up-calls of providers are nested more than %u deep; this is probably a loop.",
                 Dispatcher::MAX_DEPTH);
            return false;
        }
        if (!dispatcher_.gate_.enter(call_.request, dispatcher_.patience_)) {
            fail(call_, answer_, CMPI_RC_ERR_FAILED,
                 "Another request has been keeping the providers busy for too long.");
            return false;
        }
        Arena &arena = *call_.arena;
        Context *context = makeContext(arena);
        context->request = call_.request;
        Call inner = call_;
        context->depth = ++inner.depth;
        addEntry(*context, CMPIInitNameSpace, stringData(makeString(arena, request_.nameSpace)));
        addEntry(*context, CMPIPrincipal, stringData(makeString(arena, request_.principal)));
        CMPIData flags = {};
        flags.type = CMPI_uint32;
        flags.value.uint32 = flagsOf(request_);
        addEntry(*context, CMPIInvocationFlags, flags);
        Result *result = makeResult(arena, collector_);
        CMPIStatus status = {};
        {
            const CallScope scope(inner);
            status = function(&context->cmpi, &result->cmpi);
        }
        dispatcher_.gate_.leave();
        return conclude(status);
    }

  private:
    static void addEntry(Context &context, const char *name, const CMPIData &data)
    {
        context.entries->append({makeString(*context.arena, name), data});
    }

    bool conclude(const CMPIStatus &status)
    {
        const Error *error = collector_.error();
        if (status.rc == CMPI_RC_OK && error == nullptr) {
            return true;
        }
        const String *message = behind<String>(status.msg);
        answer_.code = status.rc;
        if (error != nullptr && status.rc == CMPI_RC_OK) {
            answer_.code = error->statusCode != CMPI_RC_OK ? error->statusCode : CMPI_RC_ERR_FAILED;
            message = error->message;
        }
        // The text may be a clone's, which the arena does not own.
        answer_.message = message != nullptr ? copyObject(*call_.arena, *message)->text : nullptr;
        return false;
    }

    Dispatcher &dispatcher_;
    Call &call_;
    const Request &request_;
    Answer &answer_;
    Collector collector_;
};

// ---------------------------------------------------------------------------------------------- dispatching

Dispatcher::Dispatcher(const ClassTable &classes, const ProviderManager &providers, std::string hostName)
    : classes_(classes), providers_(providers), hostName_(std::move(hostName))
{
}

void Dispatcher::execute(Call &call, const Request &request, Answer &answer)
{
    const CallScope scope(call);
    if (request.principal.empty()) {
        fail(call, answer, CMPI_RC_ERR_ACCESS_DENIED, "The request has no principal.");
    } else if (!classes_.isNameSpace(request.nameSpace)) {
        fail(call, answer, CMPI_RC_ERR_INVALID_NAMESPACE, "The namespace %.*s does not exist.",
             shown(request.nameSpace), request.nameSpace.data());
    } else {
        dispatch(call, request, answer);
    }
    if (call.depth == 0) {
        std::fflush(stdout); // a client that has its answer finds there what the providers have printed
    }
    if (!answer.ok()) {
        // An error is the whole answer, even when objects were returned before it.
        answer.instances.clear();
        answer.paths.clear();
        answer.classes.clear();
        answer.qualifiers.clear();
        answer.hasReturnValue = false;
        answer.outArguments = nullptr;
    }
}

void Dispatcher::dispatch(Call &call, const Request &request, Answer &answer)
{
    switch (request.operation) {
    case Operation::EnumerateInstances:
    case Operation::EnumerateInstanceNames:
        return enumerate(call, request, answer);
    case Operation::GetInstance:
        return getInstance(call, request, answer);
    case Operation::CreateInstance:
        return createInstance(call, request, answer);
    case Operation::ModifyInstance:
        return modifyInstance(call, request, answer);
    case Operation::DeleteInstance:
        return deleteInstance(call, request, answer);
    case Operation::GetProperty:
        return getProperty(call, request, answer);
    case Operation::SetProperty:
        return setProperty(call, request, answer);
    case Operation::ExecQuery:
        return execQuery(call, request, answer);
    case Operation::Associators:
    case Operation::AssociatorNames:
    case Operation::References:
    case Operation::ReferenceNames:
        return traverse(call, request, answer);
    case Operation::InvokeMethod:
        return invokeMethod(call, request, answer);
    case Operation::GetClass:
    case Operation::EnumerateClasses:
    case Operation::EnumerateClassNames:
        return readClasses(call, request, answer);
    case Operation::GetQualifier:
    case Operation::EnumerateQualifiers:
        return readQualifiers(request, answer);
    }
}

const ClassInfo *Dispatcher::classOf(const Request &, std::string_view name, Answer &answer)
{
    const ClassInfo *info = classes_.find(name);
    if (info == nullptr) {
        fail(*currentCall(), answer, CMPI_RC_ERR_INVALID_CLASS, "The class %.*s does not exist.", shown(name),
             name.data());
    }
    return info;
}

const ClassInfo *Dispatcher::classOfPath(const Request &request, Answer &answer)
{
    if (request.path->info != nullptr) {
        return request.path->info;
    }
    return classOf(request, request.path->className->view(), answer);
}

bool Dispatcher::isServedBelow(const ClassInfo &info) const
{
    for (const cim::Class *subclass : classes_.repository().deepSubclasses(info.definition())) {
        if (providers_.instanceProvider(classes_.byId(subclass->id)) != nullptr) {
            return true;
        }
    }
    return false;
}

/** The provider of exactly that class. A path names the class that the instance was made of, so one that
 * names a superclass leads to nothing (DSP0200: not found). */
const Provider *Dispatcher::instanceProvider(Call &call, const ClassInfo &info, Answer &answer)
{
    const Provider *provider = providers_.instanceProvider(info);
    const char *name = info.definition().name.c_str();
    if (provider != nullptr) {
        return provider;
    }
    if (isServedBelow(info)) {
        fail(call, answer, CMPI_RC_ERR_NOT_FOUND,
             "There is no instance of %s itself; its subclasses have instances.", name);
    } else {
        fail(call, answer, CMPI_RC_ERR_NOT_SUPPORTED, "No instance provider is registered for the class %s.",
             name);
    }
    return nullptr;
}

namespace
{

/** The answer to an operation that the provider's table has not. */
CMPIStatus notImplemented(Arena &arena)
{
    CMPIStatus status = {};
    setStatus(&status, CMPI_RC_ERR_NOT_SUPPORTED, &arena, "The provider does not implement the operation.");
    return status;
}

} // namespace

void Dispatcher::enumerate(Call &call, const Request &request, Answer &answer)
{
    const ClassInfo *wanted = classOf(request, request.className, answer);
    if (wanted == nullptr) {
        return;
    }
    const bool names = request.operation == Operation::EnumerateInstanceNames;
    const auto collect = [&](const ClassInfo &info) {
        const Provider *provider = providers_.instanceProvider(info);
        if (provider == nullptr) {
            return false;
        }
        Path *path = makePath(*call.arena, classes_, request.nameSpace, info.definition().name);
        ProviderCall providerCall(*this, call, request,
                                  names ? Collector::Kind::Paths : Collector::Kind::Instances, answer);
        providerCall.run([&](const CMPIContext *context, const CMPIResult *result) {
            CMPIInstanceMI *mi = provider->instance;
            if (names) {
                return mi->ft->enumerateInstanceNames == nullptr
                           ? notImplemented(*call.arena)
                           : mi->ft->enumerateInstanceNames(mi, context, result, &path->cmpi);
            }
            return mi->ft->enumerateInstances == nullptr
                       ? notImplemented(*call.arena)
                       : mi->ft->enumerateInstances(mi, context, result, &path->cmpi, request.propertyList);
        });
        return true;
    };
    bool served = collect(*wanted);
    if (!wanted->definition().subclasses.empty()) {
        for (const cim::Class *subclass : classes_.repository().deepSubclasses(wanted->definition())) {
            if (!answer.ok()) {
                return;
            }
            served = collect(classes_.byId(subclass->id)) || served;
        }
    }
    if (!served) {
        fail(call, answer, CMPI_RC_ERR_NOT_SUPPORTED,
             "No instance provider is registered for the class %s or a subclass of it.",
             wanted->definition().name.c_str());
        return;
    }
    Projection projection(*call.arena, request, request.deepInheritance ? nullptr : wanted);
    for (Instance *instance : answer.instances) {
        projection.apply(*instance);
    }
}

void Dispatcher::getInstance(Call &call, const Request &request, Answer &answer)
{
    const ClassInfo *info = classOfPath(request, answer);
    const Provider *provider = info != nullptr ? instanceProvider(call, *info, answer) : nullptr;
    if (provider == nullptr) {
        return;
    }
    ProviderCall providerCall(*this, call, request, Collector::Kind::Instances, answer);
    if (!providerCall.run([&](const CMPIContext *context, const CMPIResult *result) {
            CMPIInstanceMI *mi = provider->instance;
            return mi->ft->getInstance == nullptr
                       ? notImplemented(*call.arena)
                       : mi->ft->getInstance(mi, context, result, &request.path->cmpi, request.propertyList);
        })) {
        return;
    }
    if (answer.instances.empty()) {
        fail(call, answer, CMPI_RC_ERR_NOT_FOUND, "The provider of %s returned no instance.",
             info->definition().name.c_str());
        return;
    }
    answer.instances.truncate(1);
    Projection(*call.arena, request, nullptr).apply(*answer.instances[0]);
}

void Dispatcher::createInstance(Call &call, const Request &request, Answer &answer)
{
    const ClassInfo *info = classOfPath(request, answer);
    const Provider *provider = info != nullptr ? instanceProvider(call, *info, answer) : nullptr;
    if (provider == nullptr) {
        return;
    }
    ProviderCall providerCall(*this, call, request, Collector::Kind::Paths, answer);
    if (providerCall.run([&](const CMPIContext *context, const CMPIResult *result) {
            CMPIInstanceMI *mi = provider->instance;
            return mi->ft->createInstance == nullptr
                       ? notImplemented(*call.arena)
                       : mi->ft->createInstance(mi, context, result, &request.path->cmpi,
                                                &request.instance->cmpi);
        }) &&
        answer.paths.empty()) {
        // The provider took the instance without saying its path: the keys that were given name it.
        completeKeys(*request.instance);
        answer.paths.append(request.instance->path);
    }
}

void Dispatcher::modifyInstance(Call &call, const Request &request, Answer &answer)
{
    const ClassInfo *info = classOfPath(request, answer);
    const Provider *provider = info != nullptr ? instanceProvider(call, *info, answer) : nullptr;
    if (provider == nullptr) {
        return;
    }
    ProviderCall providerCall(*this, call, request, Collector::Kind::Nothing, answer);
    providerCall.run([&](const CMPIContext *context, const CMPIResult *result) {
        CMPIInstanceMI *mi = provider->instance;
        return mi->ft->modifyInstance == nullptr
                   ? notImplemented(*call.arena)
                   : mi->ft->modifyInstance(mi, context, result, &request.path->cmpi, &request.instance->cmpi,
                                            request.propertyList);
    });
}

void Dispatcher::deleteInstance(Call &call, const Request &request, Answer &answer)
{
    const ClassInfo *info = classOfPath(request, answer);
    const Provider *provider = info != nullptr ? instanceProvider(call, *info, answer) : nullptr;
    if (provider == nullptr) {
        return;
    }
    ProviderCall providerCall(*this, call, request, Collector::Kind::Nothing, answer);
    providerCall.run([&](const CMPIContext *context, const CMPIResult *result) {
        CMPIInstanceMI *mi = provider->instance;
        return mi->ft->deleteInstance == nullptr
                   ? notImplemented(*call.arena)
                   : mi->ft->deleteInstance(mi, context, result, &request.path->cmpi);
    });
}

void Dispatcher::getProperty(Call &call, const Request &request, Answer &answer)
{
    const ClassInfo *info = classOfPath(request, answer);
    if (info == nullptr) {
        return;
    }
    const int index = info->findProperty(request.propertyName);
    if (index == ClassInfo::NO_PROPERTY) {
        fail(call, answer, CMPI_RC_ERR_NO_SUCH_PROPERTY, "The class %s has no property %.*s.",
             info->definition().name.c_str(), shown(request.propertyName), request.propertyName.data());
        return;
    }
    const char *list[] = {info->property(index).name.c_str(), nullptr};
    Request whole = request;
    whole.operation = Operation::GetInstance;
    whole.propertyList = list;
    getInstance(call, whole, answer);
    if (answer.ok() && answer.instances[0]->info == info) {
        answer.returnValue = answer.instances[0]->values[index];
        answer.hasReturnValue = !isNull(answer.returnValue);
    }
    answer.instances.clear();
}

void Dispatcher::setProperty(Call &call, const Request &request, Answer &answer)
{
    const ClassInfo *info = classOfPath(request, answer);
    if (info == nullptr) {
        return;
    }
    const int index = info->findProperty(request.propertyName);
    if (index == ClassInfo::NO_PROPERTY) {
        fail(call, answer, CMPI_RC_ERR_NO_SUCH_PROPERTY, "The class %s has no property %.*s.",
             info->definition().name.c_str(), shown(request.propertyName), request.propertyName.data());
        return;
    }
    const cim::Property &property = info->property(index);
    if (!isNull(request.propertyValue) && request.propertyValue.type != property.cmpiCode()) {
        fail(call, answer, CMPI_RC_ERR_TYPE_MISMATCH, "The property %s of %s has the type %s%s.",
             property.name.c_str(), info->definition().name.c_str(), typeName(property.type),
             property.isArray ? "[]" : "");
        return;
    }
    const char *list[] = {property.name.c_str(), nullptr};
    Request change = request;
    change.operation = Operation::ModifyInstance;
    change.propertyList = list;
    change.instance = makeInstance(*call.arena, *request.path);
    host::setProperty(*change.instance, index, copyData(*call.arena, request.propertyValue));
    modifyInstance(call, change, answer);
}

void Dispatcher::execQuery(Call &call, const Request &request, Answer &answer)
{
    const std::string_view className = classOfQuery(request.query);
    if (className.empty()) {
        fail(call, answer, CMPI_RC_ERR_INVALID_QUERY, "The query names no class after FROM.");
        return;
    }
    const ClassInfo *info = classOf(request, className, answer);
    const Provider *provider = info != nullptr ? instanceProvider(call, *info, answer) : nullptr;
    if (provider == nullptr) {
        return;
    }
    Path *path = makePath(*call.arena, classes_, request.nameSpace, info->definition().name);
    ProviderCall providerCall(*this, call, request, Collector::Kind::Instances, answer);
    providerCall.run([&](const CMPIContext *context, const CMPIResult *result) {
        CMPIInstanceMI *mi = provider->instance;
        return mi->ft->execQuery == nullptr ? notImplemented(*call.arena)
                                            : mi->ft->execQuery(mi, context, result, &path->cmpi,
                                                                request.query, request.queryLanguage);
    });
}

namespace
{

/** True when one of the association's references may point at an object of the class. */
bool canReference(const ClassTable &classes, const ClassInfo &association, const ClassInfo &source)
{
    for (const cim::Property &property : association.definition().properties) {
        if (property.type != cim::Type::Reference) {
            continue;
        }
        const ClassInfo *end = classes.find(property.referenceClass);
        if (end != nullptr && classes.isA(source, *end)) {
            return true;
        }
    }
    return false;
}

CMPIStatus callAssociation(CMPIAssociationMI *mi, const CMPIContext *context, const CMPIResult *result,
                           const Path &source, const Request &request, Arena &arena)
{
    const CMPIAssociationMIFT &table = *mi->ft;
    switch (request.operation) {
    case Operation::Associators:
        return table.associators == nullptr
                   ? notImplemented(arena)
                   : table.associators(mi, context, result, &source.cmpi, request.associationClass,
                                       request.resultClass, request.role, request.resultRole,
                                       request.propertyList);
    case Operation::AssociatorNames:
        return table.associatorNames == nullptr
                   ? notImplemented(arena)
                   : table.associatorNames(mi, context, result, &source.cmpi, request.associationClass,
                                           request.resultClass, request.role, request.resultRole);
    case Operation::References:
        return table.references == nullptr
                   ? notImplemented(arena)
                   : table.references(mi, context, result, &source.cmpi, request.associationClass,
                                      request.role, request.propertyList);
    default:
        return table.referenceNames == nullptr ? notImplemented(arena)
                                               : table.referenceNames(mi, context, result, &source.cmpi,
                                                                      request.associationClass, request.role);
    }
}

} // namespace

void Dispatcher::traverse(Call &call, const Request &request, Answer &answer)
{
    const ClassInfo *source = classOfPath(request, answer);
    if (source == nullptr) {
        return;
    }
    if (request.path->keys->empty()) {
        fail(call, answer, CMPI_RC_ERR_NOT_SUPPORTED, "%s of a class is not supported: the path has no keys.",
             operationName(request.operation));
        return;
    }
    const ClassInfo *reach = nullptr;
    for (const char *filter : {request.associationClass, request.resultClass}) {
        const ClassInfo *info = filter != nullptr ? classes_.find(filter) : nullptr;
        if (filter != nullptr && info == nullptr) {
            fail(call, answer, CMPI_RC_ERR_INVALID_PARAMETER,
                 "The class %.200s of the filter does not exist.", filter);
            return;
        }
        if (filter == request.associationClass) {
            reach = info;
        }
    }
    const bool names =
        request.operation == Operation::AssociatorNames || request.operation == Operation::ReferenceNames;
    Deduplication deduplication;
    for (const ClassInfo *association : providers_.associationClasses()) {
        if ((reach != nullptr && !classes_.isA(*association, *reach)) ||
            !canReference(classes_, *association, *source)) {
            continue;
        }
        // Each provider gets a path of its own, because it may write to it.
        const Path *path = copyObject(*call.arena, *request.path);
        const std::size_t firstInstance = answer.instances.size();
        const std::size_t firstPath = answer.paths.size();
        ProviderCall providerCall(*this, call, request,
                                  names ? Collector::Kind::Paths : Collector::Kind::Instances, answer);
        if (!providerCall.run([&](const CMPIContext *context, const CMPIResult *result) {
                return callAssociation(providers_.associationProvider(*association)->association, context,
                                       result, *path, request, *call.arena);
            })) {
            return;
        }
        deduplication.apply(answer.instances, firstInstance,
                            [](const Instance *instance) { return instance->path; });
        deduplication.apply(answer.paths, firstPath, [](const Path *found) { return found; });
    }
    Projection projection(*call.arena, request, nullptr);
    for (Instance *instance : answer.instances) {
        projection.apply(*instance);
    }
}

void Dispatcher::invokeMethod(Call &call, const Request &request, Answer &answer)
{
    const ClassInfo *info = classOfPath(request, answer);
    if (info == nullptr) {
        return;
    }
    const Provider *provider = providers_.methodProvider(*info);
    if (provider == nullptr) {
        if (!request.path->keys->empty() && isServedBelow(*info) &&
            providers_.instanceProvider(*info) == nullptr) {
            fail(call, answer, CMPI_RC_ERR_NOT_FOUND,
                 "There is no instance of %s itself; its subclasses have instances.",
                 info->definition().name.c_str());
        } else {
            fail(call, answer, CMPI_RC_ERR_NOT_SUPPORTED,
                 "No method provider is registered for the class %s.", info->definition().name.c_str());
        }
        return;
    }
    Args *out = makeArgs(*call.arena);
    ProviderCall providerCall(*this, call, request, Collector::Kind::Data, answer);
    if (providerCall.run([&](const CMPIContext *context, const CMPIResult *result) {
            CMPIMethodMI *mi = provider->method;
            return mi->ft->invokeMethod == nullptr
                       ? notImplemented(*call.arena)
                       : mi->ft->invokeMethod(mi, context, result, &request.path->cmpi, request.methodName,
                                              &request.arguments->cmpi, &out->cmpi);
        })) {
        answer.outArguments = out;
    }
}

void Dispatcher::readClasses(Call &, const Request &request, Answer &answer)
{
    const cim::ClassRepository &repository = classes_.repository();
    if (request.operation == Operation::GetClass) {
        const ClassInfo *info = classes_.find(request.className);
        if (info == nullptr) { // DSP0200 has GetClass alone say "not found" here
            fail(*currentCall(), answer, CMPI_RC_ERR_NOT_FOUND, "The class %.*s does not exist.",
                 shown(request.className), request.className.data());
            return;
        }
        answer.classes.append(info);
        return;
    }
    std::vector<const cim::Class *> found;
    if (request.className.empty()) {
        found = request.deepInheritance ? repository.all() : repository.roots();
    } else {
        const ClassInfo *parent = classOf(request, request.className, answer);
        if (parent == nullptr) {
            return;
        }
        found = request.deepInheritance ? repository.deepSubclasses(parent->definition())
                                        : repository.subclasses(parent->definition());
    }
    for (const cim::Class *klass : found) {
        answer.classes.append(&classes_.byId(klass->id));
    }
}

void Dispatcher::readQualifiers(const Request &request, Answer &answer)
{
    const cim::ClassRepository &repository = classes_.repository();
    if (request.operation == Operation::EnumerateQualifiers) {
        for (const cim::QualifierDeclaration *declaration : repository.qualifiers()) {
            answer.qualifiers.append(declaration);
        }
        return;
    }
    const cim::QualifierDeclaration *declaration = repository.findQualifier(request.qualifierName);
    if (declaration == nullptr) {
        fail(*currentCall(), answer, CMPI_RC_ERR_NOT_FOUND, "The qualifier %.*s does not exist.",
             shown(request.qualifierName), request.qualifierName.data());
        return;
    }
    answer.qualifiers.append(declaration);
}

} // namespace host
