#include "host/news_check.h"
#include "host/news_transport.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// Configuration: the vendor's news endpoint. Plain HTTP: the answer is a public count.
constexpr const char* NewsEndpoint = "http://www.tarvelo.com/scripts/quillo_desk/";

} // namespace

NewsCheck::NewsCheck() : NewsCheck(DefaultUrl()) {}

NewsCheck::NewsCheck(std::string url) : url(std::move(url)) {}

std::string NewsCheck::DefaultUrl() {
    if (const char* configured = std::getenv("QUILLO_NEWS_URL"); configured != nullptr && *configured != '\0')
        return configured;
    return NewsEndpoint;
}

void NewsAnswer::Clear() {
    length = 0;
    std::memset(buffer, 0, sizeof buffer);
}

void NewsAnswer::Append(const void* data, size_t size) {
    if (length < OverLong && length + size < sizeof buffer - 1) {
        std::memcpy(buffer + length, data, size);
        length += size;
    } else {
        length = OverLong;
    }
}

int32_t NewsAnswer::Count() const {
    return length == 1 || length == 2 ? std::atoi(buffer) : 0;
}

void NewsCheck::Check(long long time) {
    answer.Clear();
    PostNewsForm(url, {{"updates", "1"}, {"time", std::to_string(time)}}, answer);
    count.store(answer.Count(), std::memory_order_release);
}
