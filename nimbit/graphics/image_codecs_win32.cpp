#include "nimbit/graphics/image_decoder.h"
#include "nimbit/graphics/jpeg_encoder.h"
#include "nimbit/graphics/png_encoder.h"

#include <windows.h>

#include <objbase.h>
#include <wincodec.h>

#include <cstring>
#include <new>

// PNG and JPG through the Windows Imaging Component: no codec library is packaged for Windows, and
// the system's codecs are always there. Each call makes its own factory, so any thread may decode;
// COM is started for the calling thread where it is not yet (a host's main thread already has it).

namespace nimbit::graphics {

namespace {

template <class T> class com_ptr {
public:
    com_ptr() = default;
    ~com_ptr() {
        if (p)
            p->Release();
    }
    com_ptr(const com_ptr&) = delete;
    com_ptr& operator=(const com_ptr&) = delete;
    T** put() { return &p; }
    T* get() const { return p; }
    T* operator->() const { return p; }
    explicit operator bool() const { return p != nullptr; }

private:
    T* p = nullptr;
};

struct com_scope {
    HRESULT result = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    ~com_scope() {
        if (SUCCEEDED(result))
            CoUninitialize();
    }
    // RPC_E_CHANGED_MODE: the thread is already in another apartment, which serves as well.
    bool usable() const { return SUCCEEDED(result) || result == RPC_E_CHANGED_MODE; }
};

bool make_factory(com_ptr<IWICImagingFactory>& factory) {
    return SUCCEEDED(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                      IID_PPV_ARGS(factory.put())));
}

// BGRA as the system's converters all produce it, to RGBA in place.
void swap_red_blue(unsigned char* pixels, size_t count) {
    for (size_t i = 0; i < count; ++i, pixels += 4)
        std::swap(pixels[0], pixels[2]);
}

// The width of the smallest eighth of the full size that is still at least min_width wide, as a
// JPG decoder that scales in its DCT would pick it.
UINT reduced_width(UINT width, int min_width) {
    for (UINT eighths = 1; eighths < 8; ++eighths) {
        const UINT w = (width * eighths + 7) / 8;
        if (w >= UINT(min_width))
            return w;
    }
    return width;
}

bool decode(const GUID& container, const unsigned char* bytes, size_t size, unsigned long long max_pixels,
            int min_width, rgba_image& out, _vec2<int>* full_size) {
    const com_scope com;
    com_ptr<IWICImagingFactory> factory;
    com_ptr<IWICStream> stream;
    com_ptr<IWICBitmapDecoder> decoder;
    com_ptr<IWICBitmapFrameDecode> frame;
    if (!com.usable() || size > MAXDWORD || !make_factory(factory) ||
        FAILED(factory->CreateStream(stream.put())) ||
        FAILED(stream->InitializeFromMemory(const_cast<BYTE*>(bytes), static_cast<DWORD>(size))) ||
        FAILED(factory->CreateDecoder(container, nullptr, decoder.put())) ||
        FAILED(decoder->Initialize(stream.get(), WICDecodeMetadataCacheOnDemand)) ||
        FAILED(decoder->GetFrame(0, frame.put())))
        return false;
    UINT width = 0, height = 0;
    // The cap is checked from the frame's header, before any pixel memory is taken.
    if (FAILED(frame->GetSize(&width, &height)) || !size_allowed(width, height, max_pixels))
        return false;

    IWICBitmapSource* source = frame.get();
    UINT out_width = width, out_height = height;
    com_ptr<IWICBitmapScaler> scaler;
    if (min_width > 0 && (out_width = reduced_width(width, min_width)) < width) {
        out_height = std::max<UINT>(1, static_cast<UINT>((uint64_t(height) * out_width + width / 2) / width));
        if (FAILED(factory->CreateBitmapScaler(scaler.put())) ||
            FAILED(scaler->Initialize(frame.get(), out_width, out_height, WICBitmapInterpolationModeFant)))
            return false;
        source = scaler.get();
    }
    com_ptr<IWICFormatConverter> converter;
    if (FAILED(factory->CreateFormatConverter(converter.put())) ||
        FAILED(converter->Initialize(source, GUID_WICPixelFormat32bppBGRA, WICBitmapDitherTypeNone, nullptr,
                                     0.0, WICBitmapPaletteTypeCustom)))
        return false;
    const size_t stride = size_t(out_width) * 4, length = stride * out_height;
    if (length > MAXUINT)
        return false;
    try {
        out.pixels.resize(length);
    } catch (const std::bad_alloc&) {
        return false;
    }
    if (FAILED(converter->CopyPixels(nullptr, static_cast<UINT>(stride), static_cast<UINT>(length),
                                     out.pixels.data())))
        return false;
    swap_red_blue(out.pixels.data(), size_t(out_width) * out_height);
    out.size = {static_cast<int>(out_width), static_cast<int>(out_height)};
    if (full_size)
        *full_size = {static_cast<int>(width), static_cast<int>(height)};
    return true;
}

// Encodes the image into an in-memory stream; encoder options (name, value) set on the frame.
std::vector<unsigned char> encode(const GUID& container, const rgba_view& image, const GUID& frame_format,
                                  void (*options)(IPropertyBag2*)) {
    if (!image.pixels || image.width <= 0 || image.height <= 0 || image.pitch < size_t(image.width) * 4)
        return {};
    const com_scope com;
    com_ptr<IWICImagingFactory> factory;
    com_ptr<IStream> stream;
    com_ptr<IWICBitmapEncoder> encoder;
    com_ptr<IWICBitmapFrameEncode> frame;
    com_ptr<IPropertyBag2> properties;
    if (!com.usable() || !make_factory(factory) ||
        FAILED(CreateStreamOnHGlobal(nullptr, TRUE, stream.put())) ||
        FAILED(factory->CreateEncoder(container, nullptr, encoder.put())) ||
        FAILED(encoder->Initialize(stream.get(), WICBitmapEncoderNoCache)) ||
        FAILED(encoder->CreateNewFrame(frame.put(), properties.put())))
        return {};
    if (options)
        options(properties.get());
    const UINT width = static_cast<UINT>(image.width), height = static_cast<UINT>(image.height);
    WICPixelFormatGUID format = frame_format;
    if (FAILED(frame->Initialize(properties.get())) || FAILED(frame->SetSize(width, height)) ||
        FAILED(frame->SetPixelFormat(&format)))
        return {};

    // The rows in the system's BGRA; WriteSource converts them to whatever the frame settled on.
    std::vector<unsigned char> bgra;
    const size_t stride = size_t(width) * 4;
    if (stride * height > MAXUINT)
        return {};
    try {
        bgra.resize(stride * height);
    } catch (const std::bad_alloc&) {
        return {};
    }
    for (UINT y = 0; y < height; ++y)
        std::memcpy(bgra.data() + stride * y, image.pixels + image.pitch * y, stride);
    swap_red_blue(bgra.data(), size_t(width) * height);
    com_ptr<IWICBitmap> bitmap;
    if (FAILED(factory->CreateBitmapFromMemory(width, height, GUID_WICPixelFormat32bppBGRA,
                                               static_cast<UINT>(stride), static_cast<UINT>(bgra.size()),
                                               bgra.data(), bitmap.put())) ||
        FAILED(frame->WriteSource(bitmap.get(), nullptr)) || FAILED(frame->Commit()) ||
        FAILED(encoder->Commit()))
        return {};

    STATSTG stat{};
    LARGE_INTEGER start{};
    if (FAILED(stream->Stat(&stat, STATFLAG_NONAME)) || stat.cbSize.QuadPart > MAXDWORD ||
        FAILED(stream->Seek(start, STREAM_SEEK_SET, nullptr)))
        return {};
    std::vector<unsigned char> bytes;
    try {
        bytes.resize(static_cast<size_t>(stat.cbSize.QuadPart));
    } catch (const std::bad_alloc&) {
        return {};
    }
    ULONG read = 0;
    if (FAILED(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read)) || read != bytes.size())
        return {};
    return bytes;
}

void write_option(IPropertyBag2* properties, const wchar_t* name, VARIANT& value) {
    PROPBAG2 option{};
    option.pstrName = const_cast<LPOLESTR>(name);
    properties->Write(1, &option, &value); // an option the codec does not know is left at its default
}

// Highest quality, and full colour resolution where the codec lets it be chosen.
void jpeg_options(IPropertyBag2* properties) {
    VARIANT quality;
    VariantInit(&quality);
    quality.vt = VT_R4;
    quality.fltVal = 1.0f;
    write_option(properties, L"ImageQuality", quality);
    VARIANT subsampling;
    VariantInit(&subsampling);
    subsampling.vt = VT_UI1;
    subsampling.bVal = WICJpegYCrCbSubsampling444;
    write_option(properties, L"JpegYCrCbSubsampling", subsampling);
}

} // namespace

bool decode_png(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out) {
    static const unsigned char signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    const bool ok = bytes && size >= 33 && std::memcmp(bytes, signature, 8) == 0 &&
                    detail::png_structure_plausible(bytes, size) &&
                    decode(GUID_ContainerFormatPng, bytes, size, max_pixels, 0, out, nullptr);
    if (!ok)
        out = {};
    else
        out.alpha = true;
    return ok;
}

bool decode_jpeg_reduced(const unsigned char* bytes, size_t size, unsigned long long max_pixels,
                         int min_width, rgba_image& out, _vec2<int>* full_size) {
    const bool ok = bytes && size >= 4 && bytes[0] == 0xFF && bytes[1] == 0xD8 &&
                    detail::jpeg_has_end(bytes, size) &&
                    decode(GUID_ContainerFormatJpeg, bytes, size, max_pixels, min_width, out, full_size);
    if (!ok)
        out = {};
    else
        out.alpha = false;
    return ok;
}

bool decode_jpeg(const unsigned char* bytes, size_t size, unsigned long long max_pixels, rgba_image& out) {
    return decode_jpeg_reduced(bytes, size, max_pixels, 0, out);
}

std::vector<unsigned char> encode_png(const rgba_view& image) {
    return encode(GUID_ContainerFormatPng, image, GUID_WICPixelFormat32bppBGRA, nullptr);
}

std::vector<unsigned char> encode_jpg(const rgba_view& image) {
    if (image.width > 65500 || image.height > 65500)
        return {};
    return encode(GUID_ContainerFormatJpeg, image, GUID_WICPixelFormat24bppBGR, jpeg_options);
}

} // namespace nimbit::graphics
