#include "platform/linux/renderer/Picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include <cairo.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <librsvg/rsvg.h>

#include "platform/linux/renderer/Icns.h"

namespace tavo {
namespace {

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
template<typename T>
using ObjectPointer = std::unique_ptr<T, Unref>;

// A square of ARGB pixels that cairo draws on.
class Square {
public:
    explicit Square(int side)
        : side_(side),
          pixels_(static_cast<std::size_t>(side) * static_cast<std::size_t>(side)),
          surface_(cairo_image_surface_create_for_data(
              reinterpret_cast<unsigned char*>(pixels_.data()), CAIRO_FORMAT_ARGB32, side, side,
              side * static_cast<int>(sizeof(std::uint32_t)))),
          context_(cairo_create(surface_)) {}
    Square(const Square&) = delete;
    Square& operator=(const Square&) = delete;
    ~Square() {
        cairo_destroy(context_);
        cairo_surface_destroy(surface_);
    }

    [[nodiscard]] int side() const { return side_; }
    [[nodiscard]] cairo_t* context() const { return context_; }
    [[nodiscard]] std::uint32_t& at(int x, int y) {
        return pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(side_) +
                       static_cast<std::size_t>(x)];
    }

    // The pixels; empty when all are transparent.
    [[nodiscard]] std::vector<std::uint32_t> take() {
        cairo_surface_flush(surface_);
        const bool seen =
            std::ranges::any_of(pixels_, [](std::uint32_t pixel) { return pixel >> 24U != 0; });
        return seen ? std::move(pixels_) : std::vector<std::uint32_t>();
    }

private:
    int side_;
    std::vector<std::uint32_t> pixels_;
    cairo_surface_t* surface_;
    cairo_t* context_;
};

// A drawing that says neither its size nor its view box is scaled so that all that it shows fits.
void scaleWithoutSize(RsvgHandle* drawing, const RsvgRectangle& viewport, cairo_t* context) {
    gboolean hasWidth = FALSE;
    gboolean hasHeight = FALSE;
    gboolean hasViewBox = FALSE;
    RsvgLength width = {};
    RsvgLength height = {};
    RsvgRectangle viewBox = {};
    RsvgRectangle ink = {};
    rsvg_handle_get_intrinsic_dimensions(drawing, &hasWidth, &width, &hasHeight, &height,
                                         &hasViewBox, &viewBox);
    const auto isFixed = [](gboolean has, const RsvgLength& length) {
        return has != FALSE && length.unit != RSVG_UNIT_PERCENT;
    };
    if (hasViewBox != FALSE || (isFixed(hasWidth, width) && isFixed(hasHeight, height)) ||
        rsvg_handle_get_geometry_for_layer(drawing, nullptr, &viewport, &ink, nullptr, nullptr) ==
            FALSE ||
        ink.width <= 0 || ink.height <= 0) {
        return;
    }
    const double scale = viewport.width / std::max(ink.width, ink.height);
    cairo_translate(context, (viewport.width - ink.width * scale) / 2,
                    (viewport.height - ink.height * scale) / 2);
    cairo_scale(context, scale, scale);
    cairo_translate(context, -ink.x, -ink.y);
}

std::vector<std::uint32_t> drawSvg(std::string_view bytes, int side) {
    const ObjectPointer<GInputStream> stream(g_memory_input_stream_new_from_data(
        bytes.data(), static_cast<gssize>(bytes.size()), nullptr));
    const ObjectPointer<RsvgHandle> drawing(rsvg_handle_new_from_stream_sync(
        stream.get(), nullptr, RSVG_HANDLE_FLAGS_NONE, nullptr, nullptr));
    if (drawing == nullptr) {
        return {};
    }
    Square square(side);
    const RsvgRectangle viewport = {0, 0, static_cast<double>(side), static_cast<double>(side)};
    scaleWithoutSize(drawing.get(), viewport, square.context());
    if (rsvg_handle_render_document(drawing.get(), square.context(), &viewport, nullptr) == FALSE) {
        return {};
    }
    return square.take();
}

// Notes whether the picture is too large, as soon as the loader knows its size.
void sizePrepared(GdkPixbufLoader* /*loader*/, int width, int height, gpointer tooLarge) {
    *static_cast<bool*>(tooLarge) = width > kLargestPictureSide || height > kLargestPictureSide;
}

// A loader for `bytes`. The usual formats are told by their first bytes here, because gdk-pixbuf
// tells formats by the session's MIME database, which may lack them or be missing.
GdkPixbufLoader* loaderFor(std::string_view bytes) {
    struct Format {
        std::string_view start;
        const char* name;
    };
    constexpr std::array<Format, 4> kFormats = {{{"\x89PNG\r\n\x1a\n", "png"},
                                                 {"/* XPM", "xpm"},
                                                 {"\xff\xd8\xff", "jpeg"},
                                                 {"GIF8", "gif"}}};
    for (const Format& format : kFormats) {
        if (bytes.starts_with(format.start)) {
            return gdk_pixbuf_loader_new_with_type(format.name, nullptr);
        }
    }
    return gdk_pixbuf_loader_new();
}

// The picture that gdk-pixbuf finds in `bytes`; null: none.
ObjectPointer<GdkPixbuf> decode(std::string_view bytes) {
    // Decodes in pieces, so that a picture that is too large is given up after its head.
    constexpr std::size_t kPiece = 4096;
    const ObjectPointer<GdkPixbufLoader> loader(loaderFor(bytes));
    if (loader == nullptr) {
        return nullptr;
    }
    bool tooLarge = false;
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(sizePrepared), &tooLarge);
    bool sound = true;
    while (sound && !tooLarge && !bytes.empty()) {
        const std::string_view piece = bytes.substr(0, kPiece);
        bytes.remove_prefix(piece.size());
        sound = gdk_pixbuf_loader_write(loader.get(), reinterpret_cast<const guchar*>(piece.data()),
                                        piece.size(), nullptr) != FALSE;
    }
    // A loader must be closed before it is released.
    sound = gdk_pixbuf_loader_close(loader.get(), nullptr) != FALSE && sound && !tooLarge;
    GdkPixbuf* const picture = sound ? gdk_pixbuf_loader_get_pixbuf(loader.get()) : nullptr;
    return ObjectPointer<GdkPixbuf>(picture != nullptr ? GDK_PIXBUF(g_object_ref(picture))
                                                       : nullptr);
}

std::uint32_t premultiplied(const guchar* pixel, bool hasAlpha) {
    const std::uint32_t alpha = hasAlpha ? pixel[3] : 255U;
    const auto part = [alpha](guchar value) { return (value * alpha + 127U) / 255U; };
    return alpha << 24U | part(pixel[0]) << 16U | part(pixel[1]) << 8U | part(pixel[2]);
}

std::vector<std::uint32_t> drawPixels(std::string_view bytes, int side) {
    ObjectPointer<GdkPixbuf> picture = decode(bytes);
    if (picture == nullptr) {
        return {};
    }
    const double scale = static_cast<double>(side) / std::max(gdk_pixbuf_get_width(picture.get()),
                                                              gdk_pixbuf_get_height(picture.get()));
    const auto fitting = [&](int length) {
        return std::clamp(static_cast<int>(std::lround(length * scale)), 1, side);
    };
    const int width = fitting(gdk_pixbuf_get_width(picture.get()));
    const int height = fitting(gdk_pixbuf_get_height(picture.get()));
    // GDK_INTERP_BILINEAR averages over areas when it makes a picture smaller.
    picture.reset(gdk_pixbuf_scale_simple(picture.get(), width, height, GDK_INTERP_BILINEAR));
    if (picture == nullptr) {
        return {};
    }
    Square square(side);
    const guchar* const pixels = gdk_pixbuf_read_pixels(picture.get());
    const int stride = gdk_pixbuf_get_rowstride(picture.get());
    const int channels = gdk_pixbuf_get_n_channels(picture.get());
    const bool hasAlpha = gdk_pixbuf_get_has_alpha(picture.get()) != FALSE;
    for (int y = 0; y < height; ++y) {
        const guchar* pixel = pixels + static_cast<std::ptrdiff_t>(y) * stride;
        for (int x = 0; x < width; ++x, pixel += channels) {
            square.at((side - width) / 2 + x, (side - height) / 2 + y) =
                premultiplied(pixel, hasAlpha);
        }
    }
    return square.take();
}

bool isSvg(std::string_view bytes) {
    constexpr std::string_view kGzip = "\x1f\x8b";
    constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
    if (bytes.starts_with(kByteOrderMark)) {
        bytes.remove_prefix(kByteOrderMark.size());
    }
    const std::size_t start = bytes.find_first_not_of(" \t\r\n");
    const bool isUtf16 = bytes.starts_with("\xff\xfe") || bytes.starts_with("\xfe\xff");
    return bytes.starts_with(kGzip) || isUtf16 ||
           (start != std::string_view::npos && bytes[start] == '<');
}

}  // namespace

std::vector<std::uint32_t> drawPicture(std::string_view bytes, int side) {
    if (isSvg(bytes)) {
        return drawSvg(bytes, side);
    }
    if (!bytes.starts_with("icns")) {
        return drawPixels(bytes, side);
    }
    for (const IcnsPicture& picture : icnsPictures(bytes, side)) {
        if (auto pixels = drawPixels(picture.png, side); !pixels.empty()) {
            return pixels;
        }
    }
    return {};
}

}  // namespace tavo
