// SPDX-License-Identifier: Zlib
#include "platform/pictures/pixbuf_decoder.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

#include <algorithm>

#include "platform/system/failure_point.h"

namespace fenlight::platform {
namespace {

// Small portions until the decoder tells the size, so that a picture that turns out other than announced is
// dropped before the rest is read. Then all of it: several decoders draw the whole picture anew after each
// portion (a GIF of 640 x 480 took 280 ms in portions, 10 ms in one).
constexpr size_t kPortion = 4096;

struct ObjectRelease {
    void operator()(void *object) const noexcept { g_object_unref(object); }
};
using Loader = std::unique_ptr<GdkPixbufLoader, ObjectRelease>;

// The type pins the format: the library's own guessing would reach formats that nobody asked for.
const char *LoaderType(PictureFormat format) {
    switch (format) {
        case PictureFormat::Bmp:
            return "bmp";
        case PictureFormat::Jpeg:
            return "jpeg";
        case PictureFormat::Gif:
            return "gif";
        case PictureFormat::Icon:
            return "ico";
        case PictureFormat::Tiff:
            return "tiff";
        case PictureFormat::PngIcon:
            return "png";
        case PictureFormat::Tga:
            return "tga";
        default:
            return "webp";
    }
}

struct Announced {
    uint64_t maxPixels;
    bool isConfirmed = false;
    bool isExceeded = false;
};

void CheckSize(GdkPixbufLoader *loader, int width, int height, gpointer announced) {
    auto *size = static_cast<Announced *>(announced);
    size->isConfirmed = width > 0 && height > 0 && uint64_t(width) * uint64_t(height) <= size->maxPixels;
    if (size->isConfirmed) return;
    size->isExceeded = true;
    gdk_pixbuf_loader_set_size(loader, 0, 0);
}

bool WritePortions(GdkPixbufLoader *loader, std::span<const uint8_t> data, const Announced &announced) {
    while (!data.empty() && !announced.isExceeded) {
        const size_t count = announced.isConfirmed ? data.size() : std::min(kPortion, data.size());
        if (!gdk_pixbuf_loader_write(loader, data.data(), count, nullptr)) return false;
        data = data.subspan(count);
    }
    return !announced.isExceeded;
}

// The decoder holds the loader's signal only while this stands, so `announced` may live on the stack.
GdkPixbuf *Decode(std::span<const uint8_t> data, const PictureSurvey &survey) {
    const Loader loader(gdk_pixbuf_loader_new_with_type(LoaderType(survey.format), nullptr));
    if (!loader) return nullptr;
    Announced announced{.maxPixels = uint64_t{survey.width} * survey.height};
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(CheckSize), &announced);
    bool isWhole = WritePortions(loader.get(), data.subspan(survey.firstByte, survey.usedBytes), announced);
    if (isWhole && survey.format == PictureFormat::Gif) {
        constexpr uint8_t kTrailer = 0x3B;  // in the place of the further frames
        isWhole = gdk_pixbuf_loader_write(loader.get(), &kTrailer, 1, nullptr);
    }
    isWhole = gdk_pixbuf_loader_close(loader.get(), nullptr) && isWhole && !announced.isExceeded;
    GdkPixbuf *pixbuf = isWhole ? gdk_pixbuf_loader_get_pixbuf(loader.get()) : nullptr;
    if (pixbuf != nullptr) g_object_ref(pixbuf);
    return pixbuf;
}

enum class AlphaRule : uint8_t { AsStored, OverWhite, PremultipliedOverWhite };

AlphaRule RuleOf(PictureFormat format) {
    if (format == PictureFormat::Tiff)
        return AlphaRule::PremultipliedOverWhite;  // how its reader hands it out
    const bool isOpaque = format == PictureFormat::Bmp || format == PictureFormat::Tga;
    return isOpaque ? AlphaRule::AsStored : AlphaRule::OverWhite;
}

uint8_t OverWhite(uint32_t colour, uint32_t alpha, AlphaRule rule) {
    if (rule == AlphaRule::AsStored) return static_cast<uint8_t>(colour);
    const uint32_t own = rule == AlphaRule::OverWhite ? (colour * alpha + 127) / 255 : colour;
    return static_cast<uint8_t>(std::min(own + 255 - alpha, 255u));
}

void TurnRow24(uint8_t *row, uint32_t width) {
    for (uint32_t x = 0; x < width; ++x, row += 3) std::swap(row[0], row[2]);
}

void TurnRow32(uint8_t *row, uint32_t width, AlphaRule rule) {
    for (uint32_t x = 0; x < width; ++x, row += 4) {
        const uint8_t red = OverWhite(row[0], row[3], rule);
        row[1] = OverWhite(row[1], row[3], rule);
        row[0] = OverWhite(row[2], row[3], rule);
        row[2] = red;
        row[3] = 0;
    }
}

// Turns red, green, blue into the order of a device-independent bitmap, in place.
DecodedPicture TurnPixels(DecodedPicture picture, AlphaRule rule) {
    GdkPixbuf *pixbuf = picture.owner.get();
    const int channels = gdk_pixbuf_get_n_channels(pixbuf);
    picture.width = static_cast<uint32_t>(gdk_pixbuf_get_width(pixbuf));
    picture.height = static_cast<uint32_t>(gdk_pixbuf_get_height(pixbuf));
    picture.bitCount = static_cast<uint16_t>(channels * 8);
    const size_t pitch = (size_t{picture.width} * static_cast<size_t>(channels) + 3) & ~size_t{3};
    uint8_t *pixels = gdk_pixbuf_get_pixels(pixbuf);
    if (pixels == nullptr || static_cast<size_t>(gdk_pixbuf_get_rowstride(pixbuf)) != pitch) return {};
    for (uint32_t y = 0; y < picture.height; ++y) {
        uint8_t *row = pixels + y * pitch;
        if (channels == 4) {
            TurnRow32(row, picture.width, rule);
        } else {
            TurnRow24(row, picture.width);
        }
    }
    picture.pixels = pixels;
    return picture;
}

}  // namespace

void PixbufRelease::operator()(_GdkPixbuf *pixbuf) const noexcept { g_object_unref(pixbuf); }

DecodedPicture DecodePicture(std::span<const uint8_t> data, const PictureSurvey &survey) noexcept {
    if (OperationFails(Operation::Memory)) return {};
    DecodedPicture picture;
    picture.owner.reset(Decode(data, survey));
    if (!picture) return {};
    return TurnPixels(std::move(picture), RuleOf(survey.format));
}

}  // namespace fenlight::platform
