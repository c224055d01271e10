#include "host/news_check.h"

// The form interface is the one this check is written against; its deprecation notes do not apply.
#define CURL_DISABLE_DEPRECATION 1
#include <curl/curl.h>

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

size_t NewsCheck::CurlCallback(void* data, size_t size, size_t count, void* self) {
    const size_t n = size * count;
    static_cast<NewsCheck*>(self)->answer.Append(data, n);
    return n; // never abort the transfer
}

void NewsCheck::Check(long long time) {
    answer.Clear();

    curl_httppost* form = nullptr;
    curl_httppost* last = nullptr;
    const std::string timeText = std::to_string(time);
    curl_formadd(&form, &last, CURLFORM_COPYNAME, "updates", CURLFORM_COPYCONTENTS, "1", CURLFORM_END);
    curl_formadd(&form, &last, CURLFORM_COPYNAME, "time", CURLFORM_COPYCONTENTS, timeText.c_str(),
                 CURLFORM_END);

    if (CURL* curl = curl_easy_init()) {
        curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &NewsCheck::CurlCallback);
        curl_easy_setopt(curl, CURLOPT_WRITEDATA, this);
        curl_easy_setopt(curl, CURLOPT_HTTPPOST, form);
        curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
        curl_easy_perform(curl); // a failed transfer leaves the answer empty
        curl_easy_cleanup(curl);
    }
    curl_formfree(form);

    count.store(answer.Count(), std::memory_order_release);
}
