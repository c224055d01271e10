#pragma once

#include "nimbit/ui/window.h"

#include <string>

struct UIColors;

// A small borderless window over the gallery that says what is going on ("Saving images...")
// while long work runs; it takes no input.
class GalleryInfoPopup : public nimbit::ui::window {
public:
    GalleryInfoPopup(nimbit::ui::window* parent, const UIColors* colours);
    ~GalleryInfoPopup() override;
    // Shows text centred over the parent and paints it at once (the caller then blocks).
    void ShowText(const std::string& text);
    void HideText();
    const std::string& GetText() const { return text; }

private:
    void Draw(nimbit::ui::drawer& d, const nimbit::ivec4& area);

    const UIColors* colours;
    nimbit::ui::window* parentWindow = nullptr;
    std::string text;
};
