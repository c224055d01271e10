// The usage record is read from disk on every start; a damaged or hand-edited file must never
// crash, stays within its bound, and what it kept is written and read back unchanged.
#include "fuzz/fuzz_support.h"
#include "popup/usage_record.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    fuzz_input in{data, size};
    const auto now = static_cast<int64_t>(in.take(8));
    UsageRecord record;
    record.Parse(in.text().substr(in.at), now);
    check(record.Size() <= UsageRecord::MaxEntries);
    const std::string text = record.Format();
    UsageRecord again;
    again.Parse(text, now);
    check(again.Format() == text);
    return 0;
}
