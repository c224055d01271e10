#pragma once

#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/generic_button.h"
#include "nimbit/ui/image_stream.h"

#include <cstdint>
#include <string>

struct UIColors;

// A tool button of the gallery: its icon, then its caption (which tells buttons with the same icon
// apart) and a count (how many captures it would act on, shown while there are any).
class GalleryButton : public nimbit::ui::generic_button {
public:
    GalleryButton(const UIColors* colours, const nimbit::ui::image_stream UIColors::*icon,
                  std::string caption = {});
    ~GalleryButton() override;
    void SetColors(const UIColors* colours);
    void set_counter(uint32_t count);
    uint32_t get_counter() const { return counter; }

private:
    void Draw(nimbit::ui::drawer& d, const nimbit::ivec4& area);

    const UIColors* colours;
    const nimbit::ui::image_stream UIColors::*icon;
    nimbit::ui::bitmap iconImage;
    int iconFrames = 1;
    std::string caption;
    uint32_t counter = 0;
};

// The preview's orientation toggle, drawn with the theme's swap icon.
class SwapButton : public nimbit::ui::generic_button {
public:
    explicit SwapButton(const UIColors* colours);
    ~SwapButton() override;
    void SetColors(const UIColors* colours);

private:
    void Draw(nimbit::ui::drawer& d, const nimbit::ivec4& area);

    const UIColors* colours;
    nimbit::ui::bitmap iconImage;
    int iconFrames = 1;
};
