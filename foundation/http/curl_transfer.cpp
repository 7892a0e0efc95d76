// SPDX-License-Identifier: Apache-2.0
#include "foundation/http/curl_transfer.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/clock.h"
#include "foundation/http/reason_phrase.h"

namespace foundation::http {

namespace {

/// All lines of a reply's head, redirections and interim replies included.
constexpr std::size_t kMaxHeadBytes = std::size_t{1} << 20;
/// How long a transfer may stay below the idle speed.
constexpr long kIdleSeconds = 30;
constexpr std::size_t kMaxIdleHandles = 8;

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// A time-out as libcurl takes it.
long as_long(milliseconds timeout) {
    constexpr milliseconds::rep kMost = std::numeric_limits<long>::max();
    return static_cast<long>(std::clamp<milliseconds::rep>(timeout.count(), 0, kMost));
}

SteadyClock::time_point deadline(milliseconds timeout) {
    return timeout.count() > 0 ? Clock::later(SteadyClock::now(), timeout)
                               : SteadyClock::time_point::max();
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Whether the host of a URL is a name or an address of this machine (RFC 6761, section 6.3).
bool is_on_this_machine(std::string_view url) {
    const std::size_t scheme = url.find("://");
    if (scheme == std::string_view::npos) return false;
    std::string_view host = url.substr(scheme + 3);
    host = host.substr(0, host.find_first_of("/?#"));
    if (host.find('@') != std::string_view::npos) return false; // libcurl's host is what follows
    if (host.starts_with("[::1]")) return true;
    host = host.substr(0, host.find(':'));
    return host == "localhost" || host.ends_with(".localhost") || host == "127.0.0.1" ||
           (host.starts_with("127.") &&
            host.find_first_not_of("0123456789.") == std::string_view::npos);
}

/// Header lines in libcurl's form.
class HeaderList {
  public:
    HeaderList() = default;
    HeaderList(const HeaderList&) = delete;
    HeaderList& operator=(const HeaderList&) = delete;
    ~HeaderList() { curl_slist_free_all(list_); }

    void add(const std::string& line) {
        curl_slist* const longer = curl_slist_append(list_, line.c_str());
        if (longer == nullptr) throw std::bad_alloc();
        list_ = longer;
    }
    curl_slist* get() const { return list_; }

  private:
    curl_slist* list_ = nullptr;
};

/// Collects one reply; its static members are libcurl's callbacks, through which no exception may
/// pass.
class Reply {
  public:
    Reply(HttpMethod method, const HttpClientConfiguration& configuration)
        : head_deadline_(deadline(configuration.responseTimeout)),
          max_bytes_(configuration.maxReplyBytes),
          may_be_repeated_(method != HttpMethod::Post) {}

    HttpResponse response;
    bool head_timed_out = false;
    bool too_large = false;
    bool no_memory = false;
    bool broke_off = false; ///< before the reply, and the request must not be sent again

    /// libcurl sends a request anew when a kept connection turns out to be closed. The server may
    /// have acted on it all the same.
    static int about_to_send(void* self, char*, char*, int, int) {
        auto& reply = *static_cast<Reply*>(self);
        reply.broke_off = reply.times_sent_++ > 0 && !reply.may_be_repeated_;
        return reply.broke_off ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
    }

    static std::size_t take_head(char* bytes, std::size_t, std::size_t count, void* self) {
        return static_cast<Reply*>(self)->guarded(count, [&](Reply& reply) {
            reply.take_head_line({bytes, count});
        });
    }

    static std::size_t take_body(char* bytes, std::size_t, std::size_t count, void* self) {
        return static_cast<Reply*>(self)->guarded(count, [&](Reply& reply) {
            reply.has_head_ = true;
            reply.response.body.append(bytes, count);
            reply.too_large = reply.response.body.size() > reply.max_bytes_;
        });
    }

    static int watch(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
        auto& reply = *static_cast<Reply*>(self);
        reply.head_timed_out = !reply.has_head_ && SteadyClock::now() >= reply.head_deadline_;
        return reply.head_timed_out ? 1 : 0;
    }

  private:
    template <class Take>
    std::size_t guarded(std::size_t count, Take take) {
        try {
            take(*this);
        } catch (const std::exception&) {
            no_memory = true;
        }
        return no_memory || too_large ? 0 : count; // anything but `count` ends the transfer
    }

    void take_head_line(std::string_view line) {
        head_bytes_ += line.size();
        too_large = head_bytes_ > kMaxHeadBytes;
        if (line.starts_with("HTTP/")) return take_status_line(line);
        const std::size_t colon = line.find(':');
        if (colon != std::string_view::npos)
            response.headers.emplace_back(trimmed(line.substr(0, colon)),
                                          trimmed(line.substr(colon + 1)));
        else if (trimmed(line).empty())
            has_head_ = !is_interim_;
    }

    /// "HTTP/1.1 200 OK", or without a phrase in HTTP/2.
    void take_status_line(std::string_view line) {
        response.headers.clear(); // of an interim reply
        const std::string_view status = trimmed(line.substr(std::min(line.find(' '), line.size())));
        const std::size_t blank = std::min(status.find(' '), status.size());
        response.reason = trimmed(status.substr(blank));
        is_interim_ = status.starts_with('1');
    }

    SteadyClock::time_point head_deadline_;
    std::size_t max_bytes_;
    bool may_be_repeated_;
    int times_sent_ = 0;
    bool is_interim_ = false;
    std::size_t head_bytes_ = 0;
    bool has_head_ = false;
};

template <class Value>
void set(CURL* handle, CURLoption option, Value value) {
    const CURLcode code = curl_easy_setopt(handle, option, value);
    if (code == CURLE_OUT_OF_MEMORY) throw std::bad_alloc();
    if (code != CURLE_OK)
        throw HttpRequestException(std::string("The request cannot be prepared: ") +
                                   curl_easy_strerror(code) + ".");
}

void set_request(CURL* handle, const HttpRequest& request, HeaderList& headers) {
    const std::string url = request.fullUrl();
    set(handle, CURLOPT_URL, url.c_str());
    // A proxy elsewhere must not get what is for this machine.
    if (is_on_this_machine(url)) set(handle, CURLOPT_PROXY, "");
    for (const auto& [name, value] : request.headers())
        headers.add(value.empty() ? name + ";" : name + ": " + value);
    const bool has_body =
        request.method() == HttpMethod::Post || request.method() == HttpMethod::Put;
    if (has_body) {
        headers.add("Expect:"); // waiting for the server's leave costs a round trip
        set(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body().size()));
        set(handle, CURLOPT_POSTFIELDS, request.body().data());
    }
    set(handle, CURLOPT_CUSTOMREQUEST, to_string(request.method()));
    set(handle, CURLOPT_HTTPHEADER, headers.get());
}

void set_rules(CURL* handle, const HttpClientConfiguration& configuration) {
    set(handle, CURLOPT_NOSIGNAL, 1L);
    set(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    set(handle, CURLOPT_FOLLOWLOCATION, 0L);
    set(handle, CURLOPT_ACCEPT_ENCODING, "gzip");
    set(handle, CURLOPT_TCP_NODELAY, 1L);
    set(handle, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    set(handle, CURLOPT_CONNECTTIMEOUT_MS, as_long(configuration.connectTimeout));
    set(handle, CURLOPT_TIMEOUT_MS, as_long(configuration.transferTimeout));
    if (configuration.idleSpeed() > 0) {
        set(handle, CURLOPT_LOW_SPEED_LIMIT, configuration.idleSpeed());
        set(handle, CURLOPT_LOW_SPEED_TIME, kIdleSeconds);
    }
    if (!configuration.caFile.empty()) set(handle, CURLOPT_CAINFO, configuration.caFile.c_str());
}

void collect(CURL* handle, Reply& reply) {
    set(handle, CURLOPT_HEADERFUNCTION, &Reply::take_head);
    set(handle, CURLOPT_HEADERDATA, &reply);
    set(handle, CURLOPT_WRITEFUNCTION, &Reply::take_body);
    set(handle, CURLOPT_WRITEDATA, &reply);
    set(handle, CURLOPT_NOPROGRESS, 0L);
    set(handle, CURLOPT_XFERINFOFUNCTION, &Reply::watch);
    set(handle, CURLOPT_XFERINFODATA, &reply);
    set(handle, CURLOPT_PREREQFUNCTION, &Reply::about_to_send);
    set(handle, CURLOPT_PREREQDATA, &reply);
}

[[noreturn]] void fail(CURLcode code, const Reply& reply) {
    if (reply.no_memory) throw std::bad_alloc();
    if (reply.head_timed_out || code == CURLE_OPERATION_TIMEDOUT)
        throw HttpRequestTimeoutException("The server did not answer in time.");
    if (reply.too_large) throw HttpRequestException("The reply is larger than the limit allows.");
    if (reply.broke_off)
        throw HttpRequestException("The connection broke before the reply; whether the request "
                                   "was carried out is not known.");
    // libcurl's own description: it names neither the address nor a header.
    throw HttpRequestException(std::string("The request failed: ") + curl_easy_strerror(code) +
                               ".");
}

} // namespace

CurlHandle CurlHandles::take() {
    {
        const std::scoped_lock lock(mutex_);
        if (!idle_.empty()) {
            CurlHandle handle = std::move(idle_.back());
            idle_.pop_back();
            return handle;
        }
    }
    CurlHandle handle(curl_easy_init());
    if (handle == nullptr) throw std::bad_alloc();
    return handle;
}

void CurlHandles::give_back(CurlHandle handle) {
    curl_easy_reset(handle.get()); // keeps connections, forgets headers and bodies
    const std::scoped_lock lock(mutex_);
    if (idle_.size() < kMaxIdleHandles) idle_.push_back(std::move(handle));
}

HttpResponse exchange(CURL* handle, const HttpRequest& request,
                      const HttpClientConfiguration& configuration) {
    HeaderList headers;
    Reply reply(request.method(), configuration);
    set_rules(handle, configuration);
    set_request(handle, request, headers);
    collect(handle, reply);
    const CURLcode code = curl_easy_perform(handle);
    if (code != CURLE_OK) fail(code, reply);
    long status = 0;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
    reply.response.status = static_cast<HttpResponseCode>(status);
    if (reply.response.reason.empty()) reply.response.reason = usual_reason(reply.response.status);
    return std::move(reply.response);
}

} // namespace foundation::http
