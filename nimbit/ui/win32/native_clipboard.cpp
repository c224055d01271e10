#include "nimbit/ui/native_clipboard.h"

#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/png_encoder.h"
#include "nimbit/ui/win32/native_bitmap.h"
#include "nimbit/utils/wide_string_win32.h"

#include <cstring>

// The system clipboard: text as CF_UNICODETEXT with Windows line ends, images both as CF_DIBV5 (32-bit
// with straight alpha, read by most programs) and as "PNG" (the bytes of a PNG file, which keeps alpha
// exactly). Reading takes the PNG when there is one, else a 24- or 32-bit device-independent bitmap.

namespace nimbit::ui {

namespace {

UINT png_format() {
    static const UINT format = RegisterClipboardFormatW(L"PNG");
    return format;
}

// The clipboard is shared: another program may hold it for a moment.
class open_clipboard {
public:
    open_clipboard() {
        for (int attempt = 0; attempt < 10 && !open; ++attempt) {
            open = OpenClipboard(nullptr) != FALSE;
            if (!open)
                Sleep(5);
        }
    }
    ~open_clipboard() {
        if (open)
            CloseClipboard();
    }
    open_clipboard(const open_clipboard&) = delete;
    open_clipboard& operator=(const open_clipboard&) = delete;
    explicit operator bool() const { return open; }

private:
    bool open = false;
};

bool put(UINT format, const void* data, size_t size) {
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, size);
    if (!memory)
        return false;
    void* at = GlobalLock(memory);
    if (!at) {
        GlobalFree(memory);
        return false;
    }
    std::memcpy(at, data, size);
    GlobalUnlock(memory);
    if (!SetClipboardData(format, memory)) {
        GlobalFree(memory);
        return false;
    }
    return true; // the clipboard owns the memory now
}

// The bytes of a clipboard format (the clipboard must be open).
std::vector<unsigned char> get(UINT format) {
    std::vector<unsigned char> bytes;
    HANDLE memory = GetClipboardData(format);
    if (!memory)
        return bytes;
    const size_t size = GlobalSize(memory);
    if (const void* at = GlobalLock(memory)) {
        bytes.assign(static_cast<const unsigned char*>(at), static_cast<const unsigned char*>(at) + size);
        GlobalUnlock(memory);
    }
    return bytes;
}

// A packed DIB (header, optional masks, pixels) of 24 or 32 bits without compression (or with the
// standard bit fields) to straight RGBA.
bool read_dib(const std::vector<unsigned char>& dib, graphics::rgba_image& out) {
    if (dib.size() < sizeof(BITMAPINFOHEADER))
        return false;
    BITMAPINFOHEADER h;
    std::memcpy(&h, dib.data(), sizeof h);
    const long long width = h.biWidth,
                    height = h.biHeight < 0 ? -static_cast<long long>(h.biHeight) : h.biHeight;
    if ((h.biBitCount != 32 && h.biBitCount != 24) ||
        (h.biCompression != BI_RGB && h.biCompression != BI_BITFIELDS) ||
        h.biSize < sizeof(BITMAPINFOHEADER) ||
        !graphics::size_allowed(width, height, native_bitmap::max_pixels))
        return false;
    size_t offset = h.biSize;
    // Masks follow a plain info header; the larger headers hold them inside.
    if (h.biCompression == BI_BITFIELDS && h.biSize == sizeof(BITMAPINFOHEADER))
        offset += 12;
    const size_t pitch = ((size_t(width) * h.biBitCount + 31) / 32) * 4;
    if (offset > dib.size() || (dib.size() - offset) / pitch < size_t(height))
        return false;
    const bool bottom_up = h.biHeight > 0;
    out.size = {static_cast<int>(width), static_cast<int>(height)};
    out.pixels.assign(size_t(width) * size_t(height) * 4, 0);
    bool any_alpha = false;
    for (long long y = 0; y < height; ++y) {
        const unsigned char* in = dib.data() + offset + pitch * size_t(bottom_up ? height - 1 - y : y);
        unsigned char* o = &out.pixels[size_t(y) * size_t(width) * 4];
        for (long long x = 0; x < width; ++x, o += 4, in += h.biBitCount / 8) {
            o[0] = in[2];
            o[1] = in[1];
            o[2] = in[0];
            o[3] = h.biBitCount == 32 ? in[3] : 255;
            any_alpha = any_alpha || o[3] != 0;
        }
    }
    // Many programs leave the fourth byte zero: such a picture is opaque.
    out.alpha = h.biBitCount == 32 && any_alpha;
    if (!any_alpha)
        for (size_t i = 3; i < out.pixels.size(); i += 4)
            out.pixels[i] = 255;
    return true;
}

class win32_clipboard final : public native_clipboard {
public:
    bool set_text(std::string_view utf8) override {
        // Windows line ends on the clipboard, the toolkit's own in the program.
        std::wstring text;
        for (wchar_t c : widen(utf8)) {
            if (c == L'\n' && (text.empty() || text.back() != L'\r'))
                text += L'\r';
            text += c;
        }
        open_clipboard clip;
        if (!clip || !EmptyClipboard())
            return false;
        return put(CF_UNICODETEXT, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    }

    std::string get_text() const override {
        open_clipboard clip;
        if (!clip)
            return {};
        const std::vector<unsigned char> bytes = get(CF_UNICODETEXT);
        std::wstring text(reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / sizeof(wchar_t));
        text.resize(std::wcslen(text.c_str())); // up to the terminator, whatever the block's size
        std::wstring plain;
        for (size_t i = 0; i < text.size(); ++i)
            if (!(text[i] == L'\r' && i + 1 < text.size() && text[i + 1] == L'\n'))
                plain += text[i];
        return narrow(plain);
    }

    bool has_text() const override { return IsClipboardFormatAvailable(CF_UNICODETEXT) != FALSE; }

    bool set_image(const native_bitmap& image) override {
        unsigned pitch = 0;
        const unsigned char* pixels = image.read_pixels(pitch);
        const _vec2<int> size = image.get_size();
        if (!pixels || size.x <= 0 || size.y <= 0)
            return false;
        const std::vector<unsigned char> png = graphics::encode_png({pixels, size.x, size.y, pitch});
        BITMAPV5HEADER h{};
        h.bV5Size = sizeof h;
        h.bV5Width = size.x;
        h.bV5Height = size.y; // bottom-up, as most readers expect
        h.bV5Planes = 1;
        h.bV5BitCount = 32;
        h.bV5Compression = BI_BITFIELDS;
        h.bV5RedMask = 0x00FF0000;
        h.bV5GreenMask = 0x0000FF00;
        h.bV5BlueMask = 0x000000FF;
        h.bV5AlphaMask = 0xFF000000;
        h.bV5CSType = 0x73524742; // LCS_sRGB, spelled out: the header writes it as a multi-character constant
        h.bV5Intent = LCS_GM_IMAGES;
        const size_t row = size_t(size.x) * 4;
        h.bV5SizeImage = static_cast<DWORD>(row * size_t(size.y));
        std::vector<unsigned char> dib(sizeof h + row * size_t(size.y));
        std::memcpy(dib.data(), &h, sizeof h);
        for (int y = 0; y < size.y; ++y) {
            const unsigned char* in = pixels + size_t(y) * pitch;
            unsigned char* o = dib.data() + sizeof h + row * size_t(size.y - 1 - y);
            for (int x = 0; x < size.x; ++x, in += 4, o += 4) {
                o[0] = in[2];
                o[1] = in[1];
                o[2] = in[0];
                o[3] = image.has_alpha() ? in[3] : 255;
            }
        }
        open_clipboard clip;
        if (!clip || !EmptyClipboard())
            return false;
        const bool dib_ok = put(CF_DIBV5, dib.data(), dib.size());
        const bool png_ok = !png.empty() && put(png_format(), png.data(), png.size());
        return dib_ok || png_ok;
    }

    std::unique_ptr<native_bitmap> get_image() const override {
        open_clipboard clip;
        if (!clip)
            return nullptr;
        graphics::rgba_image pixels;
        if (IsClipboardFormatAvailable(png_format())) {
            const std::vector<unsigned char> png = get(png_format());
            if (!graphics::decode_image(png.data(), png.size(), native_bitmap::max_pixels, pixels))
                pixels = {};
        }
        // The system makes CF_DIB out of CF_DIBV5 and the other way round.
        for (UINT format : {UINT(CF_DIBV5), UINT(CF_DIB)})
            if (pixels.empty() && IsClipboardFormatAvailable(format) && !read_dib(get(format), pixels))
                pixels = {};
        if (pixels.empty())
            return nullptr;
        return std::make_unique<win32::win32_bitmap>(std::move(pixels));
    }

    bool has_image() const override {
        return IsClipboardFormatAvailable(png_format()) || IsClipboardFormatAvailable(CF_DIBV5) ||
               IsClipboardFormatAvailable(CF_DIB);
    }
};

} // namespace

native_clipboard& get_native_clipboard() {
    static win32_clipboard instance;
    return instance;
}

} // namespace nimbit::ui
