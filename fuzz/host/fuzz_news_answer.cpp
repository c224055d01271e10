// The news endpoint's answer arrives in pieces of any size from a server we do not control: the
// kept bytes stay inside the buffer and terminated, and the count stays a one- or two-digit number.

#include "host/news_check.h"
#include "nimbit/utils/assert.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    NewsAnswer answer;
    answer.Clear();
    // The first byte chooses the piece size, as a transfer splits the body.
    const size_t piece = size > 0 ? static_cast<size_t>(data[0] % 8) + 1 : 1;
    size_t at = size > 0 ? 1 : 0;
    while (at < size) {
        const size_t n = size - at < piece ? size - at : piece;
        answer.Append(data + at, n);
        at += n;
    }
    NIMBIT_ASSERT(answer.length <= NewsAnswer::OverLong);
    if (answer.length < NewsAnswer::OverLong)
        NIMBIT_ASSERT(answer.buffer[answer.length] == '\0');
    const int32_t count = answer.Count();
    NIMBIT_ASSERT(count >= -9 && count <= 99);
    return 0;
}
