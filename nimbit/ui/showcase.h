#pragma once

#include "nimbit/graphics/vec.h"

#include <memory>

namespace nimbit::ui {

class window;
struct showcase_controls;

// One of each standard control, laid out in a window: the picture a backend is checked against.
// Backend-neutral: the window only has to be created (showcase_size fits it best). The controls live
// as long as the returned object, which must go before the window.
constexpr _vec2<int> showcase_size{520, 400};

class showcase {
public:
    explicit showcase(window& w);
    ~showcase();
    showcase(const showcase&) = delete;
    showcase& operator=(const showcase&) = delete;

    showcase_controls& controls() { return *parts; }

private:
    std::unique_ptr<showcase_controls> parts;
};

std::unique_ptr<showcase> build_showcase(window& w);

} // namespace nimbit::ui
