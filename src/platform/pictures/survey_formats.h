// SPDX-License-Identifier: Zlib
// The surveys of the single formats behind SurveyPicture. Each is called with data that starts like its
// format, fills the survey and answers whether the picture is whole and could be what it announces.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>

#include "platform/pictures/picture_survey.h"

namespace fenlight::platform {

// Numbers out of a file. What lies outside reads 0, so that a survey asks Holds once for what it is about to
// trust and not before every field.
class FileBytes {
  public:
    explicit FileBytes(std::span<const uint8_t> data, bool isBigEndian = false)
        : data_(data), isBigEndian_(isBigEndian) {}

    FileBytes AsBigEndian() const { return FileBytes(data_, true); }

    uint64_t Size() const { return data_.size(); }
    bool Holds(uint64_t at, uint64_t count) const { return at <= data_.size() && count <= data_.size() - at; }
    bool StartsWith(const char *text, size_t count, uint64_t at = 0) const {
        return Holds(at, count) && std::memcmp(data_.data() + at, text, count) == 0;
    }
    uint32_t U8(uint64_t at) const { return Holds(at, 1) ? data_[static_cast<size_t>(at)] : 0; }
    uint32_t U16(uint64_t at) const {
        return isBigEndian_ ? U8(at) << 8 | U8(at + 1) : U8(at) | U8(at + 1) << 8;
    }
    uint32_t U32(uint64_t at) const {
        return isBigEndian_ ? U16(at) << 16 | U16(at + 2) : U16(at) | U16(at + 2) << 16;
    }
    // The next place from `at` on that holds `value`, or Size().
    uint64_t Find(uint8_t value, uint64_t at) const {
        if (at >= data_.size()) return data_.size();
        const void *found = std::memchr(data_.data() + at, value, data_.size() - static_cast<size_t>(at));
        return found == nullptr ? data_.size()
                                : static_cast<uint64_t>(static_cast<const uint8_t *>(found) - data_.data());
    }

  private:
    std::span<const uint8_t> data_;
    bool isBigEndian_;
};

// Formats that may leave pixels undrawn (run-length BMP, the screen of a GIF) get this many without data for
// them: 4 MiB.
inline constexpr uint64_t kFreePixels = uint64_t{1} << 20;

inline uint64_t PixelCount(const PictureSurvey &survey) { return uint64_t{survey.width} * survey.height; }

bool SurveyBmp(const FileBytes &file, PictureSurvey &survey) noexcept;
bool SurveyJpeg(const FileBytes &file, PictureSurvey &survey) noexcept;
bool SurveyGif(const FileBytes &file, PictureSurvey &survey) noexcept;
bool SurveyIcon(const FileBytes &file, PictureSurvey &survey) noexcept;
bool SurveyTiff(const FileBytes &file, PictureSurvey &survey) noexcept;
bool SurveyTga(const FileBytes &file, PictureSurvey &survey) noexcept;
bool SurveyWebP(const FileBytes &file, PictureSurvey &survey) noexcept;

}  // namespace fenlight::platform
