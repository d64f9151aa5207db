// SPDX-License-Identifier: Zlib
// The platform's picture loader under its published names: BMP, JPEG, GIF (first frame), ICO, CUR, TIFF, TGA,
// and WebP where its module is installed, by path or from memory, as an object that knows its size in
// himetric units (hundredths of a millimetre) and draws itself into a context. C++ only; not part of the
// public headers.
//
// Nothing here is shared between threads but what the caller shares: one picture or stream belongs to one
// thread at a time, only their reference counts are atomic.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fenlight/platform/types.h"

namespace fenlight::platform {

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003u);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000Eu);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057u);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002u);
// The data is no picture that this layer knows, or is cut off, or announces an absurd size.
inline constexpr HRESULT CTL_E_INVALIDPICTURE = static_cast<HRESULT>(0x800A01E1u);
// A source or target of no size.
inline constexpr HRESULT CTL_E_INVALIDPROPERTYVALUE = static_cast<HRESULT>(0x800A017Cu);
// The file cannot be opened or read.
inline constexpr HRESULT STG_E_FILENOTFOUND = static_cast<HRESULT>(0x80030002u);

enum class InterfaceId : uint8_t { Unknown, Picture };
inline constexpr InterfaceId IID_IPicture = InterfaceId::Picture;

// Counted objects: made with one reference, gone with the last Release.
class ICounted {
  public:
    virtual uint32_t AddRef() noexcept = 0;
    virtual uint32_t Release() noexcept = 0;

  protected:
    ~ICounted() = default;
};

class IStream : public ICounted {
  public:
    // S_FALSE where the stream ended before `size` bytes; `bytesRead` may be null.
    virtual HRESULT Read(void *buffer, uint32_t size, uint32_t *bytesRead) noexcept = 0;

  protected:
    ~IStream() = default;
};

class IPicture : public ICounted {
  public:
    virtual HRESULT get_Width(int32_t *himetric) noexcept = 0;
    virtual HRESULT get_Height(int32_t *himetric) noexcept = 0;
    // Draws the source rectangle (himetric, y upwards, so that an upright picture has ySrc = its height and a
    // negative cySrc) into the target rectangle (pixels), with pixels dropped or repeated. `bounds` is for
    // metafiles and ignored.
    virtual HRESULT Render(HDC context, int32_t x, int32_t y, int32_t cx, int32_t cy, int32_t xSrc,
                           int32_t ySrc, int32_t cxSrc, int32_t cySrc, const RECT *bounds) noexcept = 0;

  protected:
    ~IPicture() = default;
};

// S_OK the first time on a thread, S_FALSE each further time; as many CoUninitialize as CoInitialize.
FENLIGHT_API HRESULT CoInitialize(void *reserved) noexcept;
FENLIGHT_API void CoUninitialize() noexcept;
// How many CoInitialize of the calling thread are open, for tests.
FENLIGHT_API int CountInitializations() noexcept;

FENLIGHT_API void *CoTaskMemAlloc(size_t bytes) noexcept;
FENLIGHT_API void CoTaskMemFree(void *block) noexcept;
// Blocks of CoTaskMemAlloc that are still out, and streams and pictures still alive, for tests.
FENLIGHT_API int CountTaskBlocks() noexcept;
FENLIGHT_API int CountPictureObjects() noexcept;

// Code page 0 is UTF-8. A byte that is no UTF-8 becomes the lone unit 0xDC00 + byte, so that every path of
// this system, whatever its bytes mean, comes back as it was. `length` -1: up to and including the zero.
// With `wideCount` 0 the number of units needed; else the units written, or 0 if they do not fit or an
// argument makes no sense. Other code pages are refused.
FENLIGHT_API int32_t MultiByteToWideChar(UINT codePage, DWORD options, const char *text, int32_t length,
                                         char16_t *wide, int32_t wideCount) noexcept;

// A read stream over `size` bytes at `block`, a block of CoTaskMemAlloc (which does not know its size, so
// that it is told here). With `freeBlock` the stream frees the block with itself; if no stream comes into
// being the block stays the caller's.
FENLIGHT_API HRESULT CreateStreamOnHGlobal(void *block, uint32_t size, bool freeBlock,
                                           IStream **stream) noexcept;

// Reads a picture from the rest of a stream (`size` 0) or from its next `size` bytes. On failure `*picture`
// is null. `runMode` is ignored.
FENLIGHT_API HRESULT OleLoadPicture(IStream *stream, uint32_t size, BOOL runMode, InterfaceId wanted,
                                    IPicture **picture) noexcept;
// Reads a picture file. `outer`, `reserved` and `colour` (a background for formats that have none) are
// ignored.
FENLIGHT_API HRESULT OleLoadPicturePath(const char16_t *path, void *outer, DWORD reserved, COLORREF colour,
                                        InterfaceId wanted, IPicture **picture) noexcept;

}  // namespace fenlight::platform
