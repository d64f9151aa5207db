// SPDX-License-Identifier: Zlib
#include "frame/jpeg_codec.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>

// These two need cstdio's FILE before them.
#include <jpeglib.h>
// Numbers of libjpeg's messages.
#include <jerror.h>

#include "fenlight/platform/system.h"
#include "fenlight/platform/windows.h"

namespace fenlight {
namespace {

struct BlockFreer {
    void operator()(uint8_t *block) const noexcept { GlobalFree(block); }
};
using Block = std::unique_ptr<uint8_t, BlockFreer>;

Block Allocate(size_t bytes) { return Block(static_cast<uint8_t *>(GlobalAlloc(GMEM_FIXED, bytes))); }

// Rows from the top, three bytes a pixel: blue, green, red.
struct PictureRows {
    int32_t width = 0;
    int32_t height = 0;
    size_t pitch = 0;
    Block bytes;
};

int32_t GetBits(HBITMAP bitmap, int32_t lines, void *bits, BITMAPINFOHEADER &header) {
    return GetDIBits(GetDC(0), bitmap, 0, static_cast<UINT>(lines), bits,
                     reinterpret_cast<BITMAPINFO *>(&header), DIB_RGB_COLORS);
}

// The picture as a whole at one moment, whoever draws on it. Without bytes on failure.
PictureRows FetchRows(HBITMAP bitmap) {
    BITMAPINFOHEADER header{};
    header.biSize = sizeof header;
    PictureRows rows;
    if (GetBits(bitmap, 0, nullptr, header) == 0) return rows;
    rows.width = header.biWidth;
    rows.height = header.biHeight;
    rows.pitch = (3 * static_cast<size_t>(rows.width) + 3) / 4 * 4;

    header = {};
    header.biSize = sizeof header;
    header.biWidth = rows.width;
    header.biHeight = -rows.height;
    header.biPlanes = 1;
    header.biBitCount = 24;
    header.biCompression = BI_RGB;
    rows.bytes = Allocate(rows.pitch * static_cast<size_t>(rows.height));
    if (rows.bytes != nullptr && GetBits(bitmap, rows.height, rows.bytes.get(), header) != rows.height)
        rows.bytes.reset();
    return rows;
}

// libjpeg ends the program on an error and prints warnings, unless told otherwise.
struct ErrorManager {
    jpeg_error_mgr base;
    std::jmp_buf leave;
};

[[noreturn]] void LeaveCodec(j_common_ptr codec) {
    std::longjmp(reinterpret_cast<ErrorManager *>(codec->err)->leave, 1);
}
void DropMessage(j_common_ptr /*codec*/) {}
void DropWarning(j_common_ptr /*codec*/, int /*level*/) {}

// The file grows in memory. libjpeg's own destination of that kind loses its block where growing fails.
struct Destination {
    jpeg_destination_mgr base;
    uint8_t *bytes;
    size_t size;
};

// A photo of 640 x 480 grows it once or twice.
constexpr size_t kFirstSize = size_t{64} << 10;

void Grow(j_compress_ptr codec, size_t size) {
    auto &destination = *reinterpret_cast<Destination *>(codec->dest);
    Block larger = Allocate(size);
    if (larger == nullptr) return;
    const size_t used = destination.size;
    if (used != 0) std::memcpy(larger.get(), destination.bytes, used);
    GlobalFree(destination.bytes);
    destination.bytes = larger.release();
    destination.size = size;
    destination.base.next_output_byte = destination.bytes + used;
    destination.base.free_in_buffer = size - used;
}

// No object with a destructor may stand in a function that LeaveCodec jumps out of.
void RequireRoom(j_compress_ptr codec, size_t size) {
    Grow(codec, size);
    if (reinterpret_cast<Destination *>(codec->dest)->size != size) ERREXIT1(codec, JERR_OUT_OF_MEMORY, 0);
}

void OpenDestination(j_compress_ptr codec) { RequireRoom(codec, kFirstSize); }
boolean EnlargeDestination(j_compress_ptr codec) {
    RequireRoom(codec, 2 * reinterpret_cast<Destination *>(codec->dest)->size);
    return TRUE;
}
void CloseDestination(j_compress_ptr /*codec*/) {}

// The rows' order of colours is told to libjpeg-turbo, which saves swapping them: the file is the same.
void WritePicture(jpeg_compress_struct &codec, const PictureRows &rows, int32_t quality) {
    codec.image_width = static_cast<JDIMENSION>(rows.width);
    codec.image_height = static_cast<JDIMENSION>(rows.height);
    codec.input_components = 3;
    codec.in_color_space = JCS_EXT_BGR;
    jpeg_set_defaults(&codec);
    jpeg_set_quality(&codec, quality, FALSE);
    jpeg_start_compress(&codec, TRUE);
    while (codec.next_scanline < codec.image_height) {
        JSAMPROW row = rows.bytes.get() + rows.pitch * codec.next_scanline;
        jpeg_write_scanlines(&codec, &row, 1);
    }
    jpeg_finish_compress(&codec);
}

// One JPEG file in memory.
class JpegEncoder {
  public:
    JpegEncoder() noexcept {
        codec_.err = jpeg_std_error(&errors_.base);
        errors_.base.error_exit = LeaveCodec;
        errors_.base.output_message = DropMessage;
        errors_.base.emit_message = DropWarning;
        destination_.base.init_destination = OpenDestination;
        destination_.base.empty_output_buffer = EnlargeDestination;
        destination_.base.term_destination = CloseDestination;
    }
    JpegEncoder(const JpegEncoder &) = delete;
    JpegEncoder &operator=(const JpegEncoder &) = delete;
    ~JpegEncoder() {
        jpeg_destroy_compress(&codec_);
        GlobalFree(destination_.bytes);
    }

    bool Encode(const PictureRows &rows, int32_t quality) noexcept {
        if (setjmp(errors_.leave) != 0) return false;
        jpeg_create_compress(&codec_);
        codec_.dest = &destination_.base;
        WritePicture(codec_, rows, quality);
        return true;
    }
    const uint8_t *Bytes() const noexcept { return destination_.bytes; }
    // Far below 4 GB: no bitmap has more than 2^28 pixels.
    DWORD Size() const noexcept {
        return static_cast<DWORD>(destination_.size - destination_.base.free_in_buffer);
    }

  private:
    jpeg_compress_struct codec_{};
    ErrorManager errors_{};
    Destination destination_{};
};

bool WriteWholeFile(const char *fileName, const uint8_t *bytes, DWORD size) {
    const HANDLE file =
        CreateFileA(fileName, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, 0);
    if (file == INVALID_HANDLE_VALUE) return false;
    const bool isWritten = WriteFile(file, bytes, size, nullptr, nullptr) != 0;
    return CloseHandle(file) != 0 && isWritten;
}

}  // namespace

// The file is opened when the picture is encoded: a save that fails before leaves an older file whole.
uint32_t WriteJpegFile(HBITMAP bitmap, const char *fileName, int32_t quality) noexcept {
    const PictureRows rows = FetchRows(bitmap);
    if (rows.bytes == nullptr) return 0;
    JpegEncoder encoder;
    if (!encoder.Encode(rows, std::clamp(quality, 1, 10) * 10)) return 0;
    return WriteWholeFile(fileName, encoder.Bytes(), encoder.Size()) ? 1 : 0;
}

}  // namespace fenlight
