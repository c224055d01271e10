// Label mark-up and UTF-8 from anywhere: parsing must stay in bounds and give runs that cover the
// text in order.
#include "fuzz/fuzz_support.h"
#include "nimbit/ui/text_markup.h"
#include "nimbit/ui/wide_text.h"

using namespace nimbit::ui;

FUZZ_TARGET() {
    const std::string_view input = in.text();
    const std::u32string wide = utf8_to_wide(input);
    check(utf8_to_wide(wide_to_utf8(wide)) == wide);

    text_full_format base;
    base.font_name = "tahoma";
    const markup_text parsed = parse_markup(input, base);
    const size_t characters = utf8_to_wide(parsed.text).size();
    unsigned next = 0;
    for (const text_full_format& run : parsed.runs) {
        check(run.start == next && run.end > run.start && run.size >= 1.0f && run.size <= 400.0f);
        next = run.end;
    }
    check(next == characters);
}
