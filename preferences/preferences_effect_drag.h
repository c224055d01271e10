#pragma once

#include "nimbit/ui/widget.h"

#include <string>
#include <string_view>

struct UIColors;

// The row being dragged, drawn under the pointer: the entry's name on a lit bar. It only shows; the
// pointer passes through it to the rows below.
class PreferencesEffectDrag : public nimbit::ui::widget {
public:
    PreferencesEffectDrag();
    ~PreferencesEffectDrag() override;

    void SetText(std::string_view name);
    const std::string& GetText() const { return text; }
    void SetColours(const UIColors* colours);

private:
    void Draw(const nimbit::ui::event_info&);

    std::string text;
    const UIColors* colours = nullptr;
};
