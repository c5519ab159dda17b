// SPDX-License-Identifier: Apache-2.0
#include "wbem/connection.h"

#include "wbem/failure.h"
#include "wbem/message.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <new>
#include <utility>

namespace displayctl::wbem
{

namespace
{

using Clock = std::chrono::steady_clock;

/** More than all instances of all classes take. */
constexpr std::size_t maximumAnswer = 16UL << 20U;

constexpr std::size_t noOperation = static_cast<std::size_t>(-1);

template <auto function>
struct Release {
    template <typename Handle>
    void operator()(Handle *handle) const
    {
        function(handle);
    }
};

using EasyHandle = std::unique_ptr<CURL, Release<curl_easy_cleanup>>;
using MultiHandle = std::unique_ptr<CURLM, Release<curl_multi_cleanup>>;
using HeaderList = std::unique_ptr<curl_slist, Release<curl_slist_free_all>>;

/** libcurl as a whole, from the first connection to the end of the program. */
void initialise()
{
    static const struct Library {
        Library()
        {
            if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) {
                throw std::bad_alloc{};
            }
        }
        ~Library()
        {
            curl_global_cleanup();
        }
    } library;
}

/** Option by option: libcurl fails only for lack of memory, or for an option it was built without. */
template <typename Argument>
void set(CURL *handle, CURLoption option, Argument argument)
{
    if (curl_easy_setopt(handle, option, argument) != CURLE_OK) {
        throw std::bad_alloc{};
    }
}

/** One request on its way. */
struct Transfer {
    EasyHandle handle;
    HeaderList headers;
    std::size_t operation = noOperation; // its index, while it is on its way
    std::string request;
    std::size_t taken = 0; // bytes of the request that libcurl has read
    std::string answer;
    bool lacksMemory = false; // for the answer
    std::array<char, CURL_ERROR_SIZE> problem{};
};

std::size_t keepAnswer(char *bytes, std::size_t size, std::size_t count, void *context)
{
    auto &transfer = *static_cast<Transfer *>(context);
    if (transfer.answer.size() + size * count > maximumAnswer) {
        return 0; // ends the transfer with CURLE_WRITE_ERROR
    }
    try {
        transfer.answer.append(bytes, size * count);
    } catch (const std::bad_alloc &) {
        transfer.lacksMemory = true; // libcurl lets no exception through
        return 0;
    }
    return size * count;
}

std::size_t giveRequest(char *bytes, std::size_t size, std::size_t count, void *context)
{
    auto &transfer = *static_cast<Transfer *>(context);
    const std::size_t length = std::min(size * count, transfer.request.size() - transfer.taken);
    std::memcpy(bytes, transfer.request.data() + transfer.taken, length);
    transfer.taken += length;
    return length;
}

/** Lets libcurl begin a request again; not set for those that change the monitor. */
int rewindRequest(void *context, curl_off_t offset, int origin)
{
    if (origin != SEEK_SET || offset != 0) {
        return CURL_SEEKFUNC_FAIL;
    }
    static_cast<Transfer *>(context)->taken = 0;
    return CURL_SEEKFUNC_OK;
}

} // namespace

std::string Endpoint::authority() const
{
    const bool isVersion6 = host.find(':') != std::string::npos;
    return (isVersion6 ? '[' + host + ']' : host) + ':' + std::to_string(port);
}

/** The transfers of one connection: at most two at a time, of which the second waits for the connection, so
 * that its request leaves as soon as the first is answered. */
class Connection::Transfers
{
  public:
    Transfers(Endpoint endpoint, std::chrono::milliseconds timeout)
        : endpoint_(std::move(endpoint)), timeout_(timeout),
          url_((endpoint_.tls ? "https://" : "http://") + endpoint_.authority() + "/cimom")
    {
        initialise();
        multi_.reset(curl_multi_init());
        if (multi_ == nullptr) {
            throw std::bad_alloc{};
        }
        curl_multi_setopt(multi_.get(), CURLMOPT_MAX_HOST_CONNECTIONS, 1L);
        curl_multi_setopt(multi_.get(), CURLMOPT_PIPELINING, static_cast<long>(CURLPIPE_NOTHING));
    }

    ~Transfers()
    {
        abandon();
    }

    Transfers(const Transfers &) = delete;
    Transfers &operator=(const Transfers &) = delete;

    std::vector<Answer> exchange(std::span<const Operation> operations);

    [[nodiscard]] const Endpoint &endpoint() const
    {
        return endpoint_;
    }
    [[nodiscard]] Traffic traffic() const
    {
        return traffic_;
    }
    [[nodiscard]] std::optional<std::int64_t> certificateExpiry() const
    {
        return certificateExpiry_;
    }

  private:
    void begin(Transfer &transfer, const Operation &operation);
    void setRequest(Transfer &transfer, const Operation &operation);
    void setSecurity(CURL *handle) const;
    void beginWaiting(std::span<const Operation> operations);
    void goOn();
    bool wait(Clock::time_point deadline);
    [[nodiscard]] Transfer *takeEnded(CURLcode &result);
    [[nodiscard]] Answer read(Transfer &transfer, CURLcode result, const Operation &operation);
    [[nodiscard]] Answer late(const Transfer &transfer, const Operation &operation) const;
    void giveUp(std::span<const Operation> operations, std::vector<Answer> &answers, const Answer &reason);
    void abandon();

    [[nodiscard]] bool isAnyOnItsWay() const
    {
        return std::ranges::any_of(
            transfers_, [](const Transfer &transfer) { return transfer.operation != noOperation; });
    }

    Endpoint endpoint_;
    std::chrono::milliseconds timeout_;
    std::string url_;
    MultiHandle multi_;
    std::array<Transfer, 2> transfers_; // after multi_: they leave before it does
    std::size_t next_ = 0;              // the first operation that is not on its way
    Traffic traffic_;
    std::optional<std::int64_t> certificateExpiry_;
};

/** Of the first certificate of the chain that the handshake of this transfer brought; none of a kept
 * connection. */
static std::optional<std::int64_t> expiryOf(CURL *handle)
{
    curl_certinfo *certificates = nullptr;
    if (curl_easy_getinfo(handle, CURLINFO_CERTINFO, &certificates) != CURLE_OK || certificates == nullptr ||
        certificates->num_of_certs < 1) {
        return std::nullopt;
    }
    constexpr std::string_view label = "Expire date:";
    for (const curl_slist *line = certificates->certinfo[0]; line != nullptr; line = line->next) {
        if (std::string_view(line->data).starts_with(label)) {
            const time_t time = curl_getdate(line->data + label.size(), nullptr);
            return time < 0 ? std::nullopt : std::optional<std::int64_t>(time);
        }
    }
    return std::nullopt;
}

void Connection::Transfers::setSecurity(CURL *handle) const
{
    set(handle, CURLOPT_SSL_VERIFYPEER, endpoint_.insecure ? 0L : 1L);
    set(handle, CURLOPT_SSL_VERIFYHOST, endpoint_.insecure ? 0L : 2L);
    set(handle, CURLOPT_CERTINFO, endpoint_.tls ? 1L : 0L);
    if (!endpoint_.caFile.empty()) {
        set(handle, CURLOPT_CAINFO, endpoint_.caFile.c_str());
        set(handle, CURLOPT_CAPATH, static_cast<const char *>(nullptr));
    }
    if (!endpoint_.user.empty()) {
        set(handle, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));
        set(handle, CURLOPT_USERNAME, endpoint_.user.c_str());
        set(handle, CURLOPT_PASSWORD, endpoint_.password.value_or("").c_str());
    }
}

void Connection::Transfers::setRequest(Transfer &transfer, const Operation &operation)
{
    CURL *handle = transfer.handle.get();
    transfer.request = requestBody(operation, endpoint_.nameSpace);
    transfer.taken = 0;
    set(handle, CURLOPT_POST, 1L);
    set(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(transfer.request.size()));
    set(handle, CURLOPT_READFUNCTION, giveRequest);
    set(handle, CURLOPT_READDATA, &transfer);
    if (!operation.changes()) {
        set(handle, CURLOPT_SEEKFUNCTION, rewindRequest);
        set(handle, CURLOPT_SEEKDATA, &transfer);
    }

    const std::string method = "CIMMethod: " + std::string{methodHeader(operation)};
    const std::string object = "CIMObject: " + objectHeader(operation, endpoint_.nameSpace);
    transfer.headers.reset();
    for (const char *header : {"Content-Type: application/xml; charset=\"utf-8\"", "CIMOperation: MethodCall",
                               method.c_str(), object.c_str(), "Expect:"}) {
        curl_slist *longer = curl_slist_append(transfer.headers.get(), header);
        if (longer == nullptr) {
            throw std::bad_alloc{};
        }
        static_cast<void>(transfer.headers.release());
        transfer.headers.reset(longer);
    }
    set(handle, CURLOPT_HTTPHEADER, transfer.headers.get());
}

void Connection::Transfers::begin(Transfer &transfer, const Operation &operation)
{
    if (transfer.handle == nullptr) {
        transfer.handle.reset(curl_easy_init());
        if (transfer.handle == nullptr) {
            throw std::bad_alloc{};
        }
    }
    CURL *handle = transfer.handle.get();
    curl_easy_reset(handle);
    transfer.answer.clear();
    transfer.lacksMemory = false;
    transfer.problem.front() = '\0';
    set(handle, CURLOPT_URL, url_.c_str());
    set(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    set(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    set(handle, CURLOPT_PROXY, ""); // monitors stand in the same network; none learns their passwords
    set(handle, CURLOPT_NOSIGNAL, 1L);
    set(handle, CURLOPT_USERAGENT, "displayctl/" DISPLAYCTL_VERSION);
    set(handle, CURLOPT_ERRORBUFFER, transfer.problem.data());
    set(handle, CURLOPT_WRITEFUNCTION, keepAnswer);
    set(handle, CURLOPT_WRITEDATA, &transfer);
    set(handle, CURLOPT_PRIVATE, &transfer);
    // The time limit is kept here: libcurl's own would count the time that a request waits for the
    // connection.
    set(handle, CURLOPT_CONNECTTIMEOUT_MS, 0x7FFF'FFFFL);
    setSecurity(handle);
    setRequest(transfer, operation);
    if (curl_multi_add_handle(multi_.get(), handle) != CURLM_OK) {
        throw std::bad_alloc{};
    }
}

/** Does what can be done without waiting. */
void Connection::Transfers::goOn()
{
    int running = 0;
    if (curl_multi_perform(multi_.get(), &running) != CURLM_OK) {
        throw std::bad_alloc{};
    }
}

/** Puts operations that are not on their way where there is room. */
void Connection::Transfers::beginWaiting(std::span<const Operation> operations)
{
    for (Transfer &transfer : transfers_) {
        if (transfer.operation == noOperation && next_ < operations.size()) {
            begin(transfer, operations[next_]);
            transfer.operation = next_++;
        }
    }
    goOn();
}

/** Waits for the network; false when the deadline has passed. */
bool Connection::Transfers::wait(Clock::time_point deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) {
        return false;
    }
    curl_multi_poll(multi_.get(), nullptr, 0, static_cast<int>(std::min<std::int64_t>(left, 60'000)),
                    nullptr);
    goOn();
    return true;
}

Transfer *Connection::Transfers::takeEnded(CURLcode &result)
{
    int left = 0;
    while (const CURLMsg *message = curl_multi_info_read(multi_.get(), &left)) {
        if (message->msg == CURLMSG_DONE) {
            void *transfer = nullptr;
            result = message->data.result;
            curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
            curl_multi_remove_handle(multi_.get(), message->easy_handle);
            return static_cast<Transfer *>(transfer);
        }
    }
    return nullptr;
}

Answer Connection::Transfers::read(Transfer &transfer, CURLcode result, const Operation &operation)
{
    long connections = 0;
    curl_easy_getinfo(transfer.handle.get(), CURLINFO_NUM_CONNECTS, &connections);
    traffic_.connections += static_cast<unsigned>(connections);
    traffic_.requests += 1;
    if (const auto expiry = expiryOf(transfer.handle.get())) {
        certificateExpiry_ = expiry;
    }

    if (transfer.lacksMemory) {
        result = CURLE_OUT_OF_MEMORY;
    }
    const Ending ending = endingOf(transfer.handle.get(), result, transfer.problem.data());
    if (ending.result == CURLE_OK && ending.httpStatus == 200) {
        return parseAnswer(transfer.answer, operation);
    }
    Answer answer = failure(endpoint_, ending);
    answer.maybeDone = answer.maybeDone && operation.changes();
    return answer;
}

Answer Connection::Transfers::late(const Transfer &transfer, const Operation &operation) const
{
    const bool wasSent = bytesSent(transfer.handle.get()) > 0;
    Answer answer = wasSent ? noAnswerInTime(endpoint_, timeout_) : noConnectionInTime(endpoint_, timeout_);
    answer.maybeDone = wasSent && operation.changes();
    return answer;
}

/** The operations that were not answered will not be. The one whose turn it was has its own reason already.
 */
void Connection::Transfers::giveUp(std::span<const Operation> operations, std::vector<Answer> &answers,
                                   const Answer &reason)
{
    Answer notSent = reason;
    notSent.maybeDone = false;
    for (const Transfer &transfer : transfers_) {
        if (transfer.operation != noOperation) {
            answers[transfer.operation] = notSent;
        }
    }
    std::fill(answers.begin() + static_cast<std::ptrdiff_t>(next_), answers.end(), notSent);
    next_ = operations.size();
    abandon();
}

void Connection::Transfers::abandon()
{
    for (Transfer &transfer : transfers_) {
        if (std::exchange(transfer.operation, noOperation) != noOperation) {
            curl_multi_remove_handle(multi_.get(), transfer.handle.get());
        }
    }
}

/** Whether what is asked next would fare no better. */
static bool endsAll(Status status)
{
    switch (status) {
    case Status::unauthorized:
    case Status::untrusted:
    case Status::unreachable:
    case Status::noAnswer:
        return true;
    case Status::ok:
    case Status::cimError:
    case Status::busy:
    case Status::forbidden:
    case Status::broken:
        break;
    }
    return false;
}

std::vector<Answer> Connection::Transfers::exchange(std::span<const Operation> operations)
{
    std::vector<Answer> answers(operations.size());
    next_ = 0;
    if (!endpoint_.user.empty() && !endpoint_.password) {
        giveUp(operations, answers, noPassword(endpoint_));
    }
    beginWaiting(operations);
    Clock::time_point deadline = Clock::now() + timeout_;
    while (isAnyOnItsWay()) {
        CURLcode result = CURLE_OK;
        if (Transfer *ended = takeEnded(result)) {
            const std::size_t index = std::exchange(ended->operation, noOperation);
            deadline = Clock::now() + timeout_;
            // The next request leaves, on the other handle, before this answer is read.
            goOn();
            answers[index] = read(*ended, result, operations[index]);
            if (endsAll(answers[index].status)) {
                giveUp(operations, answers, Answer{answers[index]});
            }
            beginWaiting(operations);
        } else if (!wait(deadline)) {
            const Transfer &first = *std::ranges::min_element(transfers_, {}, &Transfer::operation);
            const std::size_t index = first.operation;
            const Answer reason = late(first, operations[index]);
            giveUp(operations, answers, reason);
            answers[index] = reason;
        }
    }
    return answers;
}

Connection::Connection(Endpoint endpoint, std::chrono::milliseconds timeout)
    : transfers_(std::make_unique<Transfers>(std::move(endpoint), timeout))
{
}

Connection::Connection(Connection &&other) noexcept = default;
Connection &Connection::operator=(Connection &&other) noexcept = default;
Connection::~Connection() = default;

std::vector<Answer> Connection::exchange(std::span<const Operation> operations)
{
    return transfers_->exchange(operations);
}

Answer Connection::exchange(const Operation &operation)
{
    return std::move(transfers_->exchange({&operation, 1}).front());
}

const Endpoint &Connection::endpoint() const
{
    return transfers_->endpoint();
}

Traffic Connection::traffic() const
{
    return transfers_->traffic();
}

std::optional<std::int64_t> Connection::certificateExpiry() const
{
    return transfers_->certificateExpiry();
}

} // namespace displayctl::wbem
