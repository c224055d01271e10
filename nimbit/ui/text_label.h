#pragma once

#include "nimbit/ui/draw_types.h"
#include "nimbit/ui/widget.h"

#include <string>
#include <string_view>
#include <vector>

namespace nimbit::ui {

// Static text, plain or with the small mark-up of text_markup.h. The text wraps at word boundaries
// inside the label; the label_... keys give the font, colour and alignment.
class text_label : public widget {
public:
    text_label();
    ~text_label() override;

    // fit_width: the label takes the width of the text (one line unless it holds line breaks);
    // fit_height: the label takes the height of the text wrapped at the label's width.
    void set_text(std::string_view utf8, bool fit_width = false, bool fit_height = false);
    void set_html_text(std::string_view markup, bool fit_width = false, bool fit_height = false);
    // Applies the fit flags of the last set_text or set_html_text again (after a font change).
    void check_size();

    const std::string& get_text() const { return text; }
    const std::vector<text_full_format>& get_runs() const { return runs; }
    bool is_html() const { return html; }

private:
    void draw(const event_info&);
    void on_theme(const event_info&);
    text_full_format base_format() const;
    void rebuild();

    std::string source;
    std::string text;
    std::vector<text_full_format> runs;
    bool html = false;
    bool fit_width = false;
    bool fit_height = false;
};

} // namespace nimbit::ui
