#pragma once

#include "nimbit/ui/bitmap.h"
#include "nimbit/ui/generic_panel.h"

// A picture that does nothing but show itself: the search glass beside the popup's search field.
class IconView : public nimbit::ui::generic_panel {
public:
    IconView();
    ~IconView() override;

    void SetImage(nimbit::ui::image_stream const& stream);
    bool HasImage() const { return image.is_loaded(); }

private:
    void Draw(const nimbit::ui::event_info&);

    nimbit::ui::bitmap image;
};
