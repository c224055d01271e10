// The usage record is read from disk on every start; a damaged or hand-edited file must never
// crash, stays within its bound, and what it kept is written and read back unchanged.
#include "fuzz/fuzz_support.h"
#include "popup/usage_record.h"

FUZZ_TARGET() {
    const auto now = static_cast<int64_t>(in.take(8));
    UsageRecord record;
    record.Parse(in.text().substr(in.at), now);
    check(record.Size() <= UsageRecord::MaxEntries);
    const std::string text = record.Format();
    UsageRecord again;
    again.Parse(text, now);
    check(again.Format() == text);
}
