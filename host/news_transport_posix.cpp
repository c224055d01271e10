#include "host/news_check.h"
#include "host/news_transport.h"

// The form interface is the one this check is written against; its deprecation notes do not apply.
#define CURL_DISABLE_DEPRECATION 1
#include <curl/curl.h>

namespace {

// libcurl's write callback: NewsAnswer keeps at most 62 bytes and marks a longer answer over-long.
size_t Receive(void* data, size_t size, size_t count, void* answer) {
    const size_t n = size * count;
    static_cast<NewsAnswer*>(answer)->Append(data, n);
    return n; // never abort the transfer
}

} // namespace

void PostNewsForm(const std::string& url, const FormFields& fields, NewsAnswer& answer) noexcept {
    curl_httppost* form = nullptr;
    curl_httppost* last = nullptr;
    for (const auto& [name, value] : fields)
        curl_formadd(&form, &last, CURLFORM_COPYNAME, name.c_str(), CURLFORM_COPYCONTENTS, value.c_str(),
                     CURLFORM_END);

    if (CURL* curl = curl_easy_init()) {
        curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &Receive);
        curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer);
        curl_easy_setopt(curl, CURLOPT_HTTPPOST, form);
        curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
        curl_easy_perform(curl); // a failed transfer leaves the answer empty
        curl_easy_cleanup(curl);
    }
    curl_formfree(form);
}
