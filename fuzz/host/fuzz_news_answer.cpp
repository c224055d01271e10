// The news endpoint's answer arrives in pieces of any size from a server we do not control: the
// kept bytes stay inside the buffer and terminated, and the count stays a one- or two-digit number.

#include "fuzz/fuzz_support.h"
#include "host/news_check.h"
#include "nimbit/utils/assert.h"

FUZZ_TARGET() {
    NewsAnswer answer;
    answer.Clear();
    // The first byte chooses the piece size, as a transfer splits the body.
    const size_t piece = in.byte() % 8 + 1u;
    for (std::string_view part; !(part = in.bytes(piece)).empty();)
        answer.Append(part.data(), part.size());
    NIMBIT_ASSERT(answer.length <= NewsAnswer::OverLong);
    if (answer.length < NewsAnswer::OverLong)
        NIMBIT_ASSERT(answer.buffer[answer.length] == '\0');
    const int32_t count = answer.Count();
    NIMBIT_ASSERT(count >= -9 && count <= 99);
}
