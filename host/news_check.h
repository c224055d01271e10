#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

// The endpoint's answer as it arrives: at most 62 bytes are kept, zero-terminated; a longer answer
// is only marked as over-long (length 64).
struct NewsAnswer {
    static constexpr uint64_t OverLong = 64;

    uint64_t length = 0;
    char buffer[64] = {};

    void Clear();
    void Append(const void* data, size_t size);
    // An answer of one or two characters is the count (its leading digits); anything else is 0.
    int32_t Count() const;
};

// Asks the news endpoint how many news items appeared since the user last looked. Check runs on a
// thread of its own; the popup's timer polls GetCount on the main thread until it is no longer -1.
class NewsCheck {
public:
    // The endpoint is a plain HTTP URL whose path is "/scripts/quillo_desk/".
    NewsCheck();
    explicit NewsCheck(std::string url);

    // Posts the form fields "updates" = "1" and "time" = time and waits for the answer. An answer of
    // one or two characters is the count; anything else, or no answer, counts as 0.
    void Check(long long time);
    // -1 until a check has finished.
    int32_t GetCount() const { return count.load(std::memory_order_acquire); }

    // The endpoint used by default: QUILLO_NEWS_URL from the environment when set, else the
    // vendor's server.
    static std::string DefaultUrl();

private:
    NewsAnswer answer;
    std::atomic<int32_t> count{-1};
    std::string url;
};
