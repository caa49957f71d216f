#include "backends/linux/host/Download.h"

#include "backends/linux/host/CurlLibrary.h"
#include "backends/shared/UpdateWorld.h"
#include "platform/foundation/Text.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>

namespace backends {

using platform::NSError;

namespace {

constexpr long mostRedirects = 5;
constexpr long leastBytesPerSecond = 100;
constexpr long connectSeconds = 30;
constexpr std::chrono::milliseconds betweenProgress { 500 };

// A download under way, as the callbacks of the library see it.
struct Course {
    Download const& download;
    std::function<bool(std::string_view)> const& sink;
    std::uint64_t received = 0;
    int lastPercent = 0;
    std::chrono::steady_clock::time_point lastTold {};
    char const* problem = nullptr;

    bool isCancelled() const { return download.isCancelled && *download.isCancelled; }
    std::uint64_t most() const { return download.length.value_or(download.maximum); }
    char const* tooLong() const
    {
        return download.length ? "the download is longer than the feed says" : "the download is too long";
    }
};

std::size_t take(char* bytes, std::size_t size, std::size_t count, void* context)
{
    auto& course = *static_cast<Course*>(context);
    auto const length = size * count;
    course.received += length;
    if (course.received > course.most()) {
        course.problem = course.tooLong();
        return CURL_WRITEFUNC_ERROR;
    }
    if (!course.sink({ bytes, length })) {
        course.problem = "the download cannot be written";
        return CURL_WRITEFUNC_ERROR;
    }
    return length;
}

int tellProgress(void* context, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
{
    auto& course = *static_cast<Course*>(context);
    if (course.isCancelled())
        return 1;
    auto const& length = course.download.length;
    if (!length || *length == 0 || !course.download.progress)
        return 0;
    auto const fraction = static_cast<double>(course.received) / static_cast<double>(*length);
    auto const percent = static_cast<int>(std::floor(fraction * 100));
    auto const now = std::chrono::steady_clock::now();
    // Asked once a second when nothing comes as well, so that the last word before a stall is told too.
    if (percent <= course.lastPercent || now - course.lastTold < betweenProgress)
        return 0;
    course.lastPercent = percent;
    course.lastTold = now;
    course.download.progress(fraction);
    return 0;
}

long milliseconds(platform::Seconds time) { return std::lround(time.count() * 1000); }

void prepare(CurlLibrary const& library, CURL* handle, Course& course)
{
    auto const& download = course.download;
    bool const isSecure = platform::asciiLowerCase(download.url).starts_with("https:");
    auto const set = [&](CURLoption option, auto value) { library.curl_easy_setopt(handle, option, value); };
    set(CURLOPT_URL, download.url.c_str());
    set(CURLOPT_USERAGENT, download.userAgent.c_str());
    // Signals are the host's.
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_PROTOCOLS, static_cast<long>(CURLPROTO_HTTP | CURLPROTO_HTTPS));
    set(CURLOPT_REDIR_PROTOCOLS, static_cast<long>(isSecure ? CURLPROTO_HTTPS : CURLPROTO_HTTP | CURLPROTO_HTTPS));
    // Most programs look there, and this library does not by itself.
    if (auto const* const trusted = std::getenv("SSL_CERT_FILE"); trusted && *trusted)
        set(CURLOPT_CAINFO, trusted);
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, mostRedirects);
    set(CURLOPT_FAILONERROR, 1L);
    set(CURLOPT_CONNECTTIMEOUT, connectSeconds);
    set(CURLOPT_LOW_SPEED_LIMIT, leastBytesPerSecond);
    set(CURLOPT_LOW_SPEED_TIME, std::max(1L, std::lround(download.stallTime.count())));
    if (download.deadline)
        set(CURLOPT_TIMEOUT_MS, milliseconds(*download.deadline));
    set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(course.most()));
    set(CURLOPT_WRITEFUNCTION, &take);
    set(CURLOPT_WRITEDATA, &course);
    set(CURLOPT_XFERINFOFUNCTION, &tellProgress);
    set(CURLOPT_XFERINFODATA, &course);
    set(CURLOPT_NOPROGRESS, 0L);
}

std::string wordsOf(CurlLibrary const& library, CURL* handle, CURLcode result)
{
    long status = 0;
    library.curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
    if (result == CURLE_HTTP_RETURNED_ERROR)
        return "the server answers " + std::to_string(status);
    return library.curl_easy_strerror(result);
}

} // namespace

std::optional<NSError> fetch(Download const& download, std::function<bool(std::string_view)> const& sink)
{
    auto const loaded = CurlLibrary::load();
    if (!loaded)
        return loaded.error();
    auto const& library = loaded.value();
    std::unique_ptr<CURL, decltype(library.curl_easy_cleanup)> const handle(
        library.curl_easy_init(), library.curl_easy_cleanup);
    if (!handle)
        return NSError { "Updates", 2000, "no memory for a download" };
    Course course { download, sink };
    prepare(library, handle.get(), course);
    auto const result = library.curl_easy_perform(handle.get());
    if (course.isCancelled())
        return NSError { "Updates", updateCancelled, "the download was cancelled" };
    // Said by the server before the first byte.
    if (result == CURLE_FILESIZE_EXCEEDED)
        course.problem = course.tooLong();
    if (course.problem)
        return NSError { "Updates", 2002, course.problem };
    if (result != CURLE_OK)
        return NSError { "Updates", 2001, download.url + ": " + wordsOf(library, handle.get(), result) };
    if (download.length && course.received != *download.length)
        return NSError { "Updates", 2003, "the download is shorter than the feed says" };
    return std::nullopt;
}

} // namespace backends
