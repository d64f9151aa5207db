// SPDX-License-Identifier: Zlib
#include "platform/pictures/picture_survey.h"

#include "platform/pictures/survey_formats.h"

namespace fenlight::platform {
namespace {

constexpr uint32_t kScreenDpi = 96;
// A side as drawn; keeps its himetric size, 26 times as large, within 31 bits.
constexpr uint64_t kMaxSide = uint64_t{1} << 26;

struct KnownFormat {
    PictureFormat format;
    bool (*isMeant)(const FileBytes &file);
    bool (*survey)(const FileBytes &file, PictureSurvey &survey) noexcept;
};

bool IsIcon(const FileBytes &file) {
    const uint32_t kind = file.U16(2);
    return file.U16(0) == 0 && (kind == 1 || kind == 2) && file.U16(4) > 0;
}

// TGA has no magic bytes and comes last: its survey tells it by a header that makes sense.
constexpr KnownFormat kFormats[] = {
    {PictureFormat::Bmp, [](const FileBytes &file) { return file.StartsWith("BM", 2); }, SurveyBmp},
    {PictureFormat::Jpeg, [](const FileBytes &file) { return file.StartsWith("\xFF\xD8\xFF", 3); },
     SurveyJpeg},
    {PictureFormat::Gif,
     [](const FileBytes &file) { return file.StartsWith("GIF87a", 6) || file.StartsWith("GIF89a", 6); },
     SurveyGif},
    {PictureFormat::Tiff,
     [](const FileBytes &file) { return file.StartsWith("II*\0", 4) || file.StartsWith("MM\0*", 4); },
     SurveyTiff},
    {PictureFormat::WebP,
     [](const FileBytes &file) { return file.StartsWith("RIFF", 4) && file.StartsWith("WEBP", 4, 8); },
     SurveyWebP},
    {PictureFormat::Icon, IsIcon, SurveyIcon},
    {PictureFormat::Tga, [](const FileBytes &) { return true; }, SurveyTga},
};

// The picture as it will be drawn at the screen's resolution: a forged one of 1 pixel per inch must not grow
// past the limit either.
bool IsWithinLimits(const PictureSurvey &survey) {
    if (survey.width == 0 || survey.height == 0 || PixelCount(survey) > kMaxPicturePixels) return false;
    const uint64_t drawnWidth = uint64_t{survey.width} * kScreenDpi / survey.dpiX;
    const uint64_t drawnHeight = uint64_t{survey.height} * kScreenDpi / survey.dpiY;
    return drawnWidth <= kMaxSide && drawnHeight <= kMaxSide && drawnWidth * drawnHeight <= kMaxPicturePixels;
}

}  // namespace

std::optional<PictureSurvey> SurveyPicture(std::span<const uint8_t> data) noexcept {
    const FileBytes file(data);
    for (const KnownFormat &known : kFormats) {
        if (!known.isMeant(file)) continue;
        PictureSurvey survey;
        survey.format = known.format;
        survey.usedBytes = data.size();
        if (!known.survey(file, survey)) return std::nullopt;
        if (survey.dpiX == 0 || survey.dpiY == 0) survey.dpiX = survey.dpiY = kScreenDpi;
        if (!IsWithinLimits(survey)) return std::nullopt;
        return survey;
    }
    return std::nullopt;
}

}  // namespace fenlight::platform
