/* SPDX-License-Identifier: Zlib */
/* Sound: buffers of PCM samples that a mixer plays on the machine's default output.
 *
 * The interfaces, methods, records and codes have their published names, orders and meanings. In C++ an
 * interface is an abstract class, in C a record with a table of functions: voice->lpVtbl->Play(voice, 0, 0,
 * 0). Objects count their references; the last Release ends one. A buffer may outlive the IDirectSound that
 * made it. The output is opened by the first DirectSoundCreate and closed when no object is left. A machine
 * without an output device plays to nobody, at the usual speed.
 *
 * Volumes are hundredths of a decibel: -600 halves the amplitude, -10000 is silence. A pan above 0 attenuates
 * the left side by so much, one below 0 the right side; the other side stays as it is. The primary buffer's
 * volume and pan apply to everything. Voices are added and the sum is held within the range of a sample.
 *
 * All methods may be called on any thread, also for one object from many threads at once, and none of them
 * waits for the mixer. What they change is heard from the mixer's next block of 512 frames on (11.6
 * milliseconds). Methods without a meaning here return DSERR_UNSUPPORTED. */
#ifndef FENLIGHT_PLATFORM_SOUND_H
#define FENLIGHT_PLATFORM_SOUND_H
#include "types.h"

#define DS_OK 0
#define DSERR_UNSUPPORTED ((HRESULT)0x80004001u)
#define DSERR_NOINTERFACE ((HRESULT)0x80004002u)
#define DSERR_OUTOFMEMORY ((HRESULT)0x8007000Eu)
#define DSERR_INVALIDPARAM ((HRESULT)0x80070057u)
#define DSERR_NOAGGREGATION ((HRESULT)0x80040110u)
#define DSERR_CONTROLUNAVAIL ((HRESULT)0x8878001Eu)
#define DSERR_INVALIDCALL ((HRESULT)0x88780032u)
#define DSERR_PRIOLEVELNEEDED ((HRESULT)0x88780046u)
#define DSERR_BADFORMAT ((HRESULT)0x88780064u)
#define DSERR_NODRIVER ((HRESULT)0x88780078u)
#define DSERR_ALREADYINITIALIZED ((HRESULT)0x88780082u)

#define DSSCL_NORMAL 1u
#define DSSCL_PRIORITY 2u
#define DSSCL_EXCLUSIVE 3u
#define DSSCL_WRITEPRIMARY 4u

#define DSBCAPS_PRIMARYBUFFER 0x01u
#define DSBCAPS_STATIC 0x02u
#define DSBCAPS_LOCHARDWARE 0x04u
#define DSBCAPS_LOCSOFTWARE 0x08u
#define DSBCAPS_CTRL3D 0x10u
#define DSBCAPS_CTRLFREQUENCY 0x20u
#define DSBCAPS_CTRLPAN 0x40u
#define DSBCAPS_CTRLVOLUME 0x80u

#define DSBPLAY_LOOPING 1u
#define DSBSTATUS_PLAYING 1u
#define DSBSTATUS_BUFFERLOST 2u
#define DSBSTATUS_LOOPING 4u
#define DSBLOCK_FROMWRITECURSOR 1u
#define DSBLOCK_ENTIREBUFFER 2u

#define DSBVOLUME_MIN (-10000)
#define DSBVOLUME_MAX 0
#define DSBPAN_LEFT (-10000)
#define DSBPAN_CENTER 0
#define DSBPAN_RIGHT 10000
#define DSBFREQUENCY_ORIGINAL 0u
#define DSBFREQUENCY_MIN 100u
#define DSBFREQUENCY_MAX 200000u
#define DSBSIZE_MIN 4u
#define DSBSIZE_MAX 0x0FFFFFFFu
#define WAVE_FORMAT_PCM 1

typedef uint32_t ULONG;

typedef struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} GUID;

/* Without padding: 18 bytes, as in a file. */
#pragma pack(push, 1)
typedef struct WAVEFORMATEX {
    WORD wFormatTag;
    WORD nChannels;        /* 1 or 2 */
    DWORD nSamplesPerSec;  /* 1 or more */
    DWORD nAvgBytesPerSec; /* ignored */
    WORD nBlockAlign;      /* bytes of a frame: nChannels * wBitsPerSample / 8 */
    WORD wBitsPerSample;   /* 8 (unsigned, 128 is silence), 16, 24 or 32 (signed) */
    WORD cbSize;           /* ignored */
} WAVEFORMATEX;
#pragma pack(pop)

typedef struct DSBUFFERDESC {
    DWORD dwSize; /* of this record; without its last field is fine too */
    DWORD dwFlags;
    DWORD dwBufferBytes; /* DSBSIZE_MIN to DSBSIZE_MAX; 0 for the primary buffer */
    DWORD dwReserved;    /* 0 */
    WAVEFORMATEX *lpwfxFormat;
    GUID guid3DAlgorithm; /* ignored */
} DSBUFFERDESC;

typedef struct DSBCAPS {
    DWORD dwSize; /* of this record, to be set by the caller */
    DWORD dwFlags;
    DWORD dwBufferBytes;
    DWORD dwUnlockTransferRate;
    DWORD dwPlayCpuOverhead;
} DSBCAPS;

/* 96 bytes, 24 words. */
typedef struct DSCAPS {
    DWORD dwSize; /* of this record, to be set by the caller */
    DWORD dwFlags;
    DWORD dwMinSecondarySampleRate;
    DWORD dwMaxSecondarySampleRate;
    DWORD dwPrimaryBuffers;
    DWORD dwOfHardware[19]; /* what a sound card does by itself: nothing */
} DSCAPS;

typedef struct IUnknown IUnknown;
typedef struct IDirectSound IDirectSound;
typedef struct IDirectSoundBuffer IDirectSoundBuffer;

/* Interface identifiers for QueryInterface. */
#define FENLIGHT_IID(name, first, second, third, ...) \
    static const GUID name __attribute__((unused)) = {first, second, third, {__VA_ARGS__}}
FENLIGHT_IID(IID_IUnknown, 0x00000000u, 0x0000, 0x0000, 0xC0, 0, 0, 0, 0, 0, 0, 0x46);
FENLIGHT_IID(IID_IDirectSound, 0x279AFA83u, 0x4981, 0x11CE, 0xA5, 0x21, 0x00, 0x20, 0xAF, 0x0B, 0xE5, 0x60);
FENLIGHT_IID(IID_IDirectSoundBuffer, 0x279AFA85u, 0x4981, 0x11CE, 0xA5, 0x21, 0x00, 0x20, 0xAF, 0x0B, 0xE5,
             0x60);

#ifdef __cplusplus

struct IUnknown {
    /* Gives the same object with one more reference, for IUnknown or its own interface; for others 0 and
     * DSERR_NOINTERFACE. */
    virtual HRESULT QueryInterface(const GUID &interfaceId, void **object) FENLIGHT_NOEXCEPT = 0;
    /* Both return the references that are left. */
    virtual ULONG AddRef() FENLIGHT_NOEXCEPT = 0;
    virtual ULONG Release() FENLIGHT_NOEXCEPT = 0;

  protected:
    ~IUnknown() = default;
};

struct IDirectSound : IUnknown {
    /* Makes the primary buffer (DSBCAPS_PRIMARYBUFFER, no size, no format) or a buffer for samples, which is
     * silent, at rest, at position 0, at full volume. `outer` must be 0. On failure `*buffer` is 0. */
    virtual HRESULT CreateSoundBuffer(const DSBUFFERDESC *description, IDirectSoundBuffer **buffer,
                                      IUnknown *outer) FENLIGHT_NOEXCEPT = 0;
    virtual HRESULT GetCaps(DSCAPS *caps) FENLIGHT_NOEXCEPT = 0;
    /* A further voice of the same samples with a position, volume, pan and frequency of its own, which start
     * with those of `original`; at rest, at position 0. On failure `*duplicate` is 0. */
    virtual HRESULT DuplicateSoundBuffer(IDirectSoundBuffer *original,
                                         IDirectSoundBuffer **duplicate) FENLIGHT_NOEXCEPT = 0;
    /* Level 1 to 4; there is nobody to share the output with, so nothing changes. */
    virtual HRESULT SetCooperativeLevel(HWND window, DWORD level) FENLIGHT_NOEXCEPT = 0;
    virtual HRESULT Compact() FENLIGHT_NOEXCEPT = 0;                              /* unsupported */
    virtual HRESULT GetSpeakerConfig(DWORD *configuration) FENLIGHT_NOEXCEPT = 0; /* unsupported */
    virtual HRESULT SetSpeakerConfig(DWORD configuration) FENLIGHT_NOEXCEPT = 0;  /* unsupported */
    virtual HRESULT Initialize(const GUID *device) FENLIGHT_NOEXCEPT = 0;         /* has been done */

  protected:
    ~IDirectSound() = default;
};

/* Offsets and sizes are bytes of the buffer. The primary buffer has no samples to lock, always plays, and
 * keeps its format. */
struct IDirectSoundBuffer : IUnknown {
    virtual HRESULT GetCaps(DSBCAPS *caps) FENLIGHT_NOEXCEPT = 0;
    /* Where the mixer reads next, and from where on bytes may be written while the buffer plays. Either may
     * be 0. */
    virtual HRESULT GetCurrentPosition(DWORD *playOffset, DWORD *writeOffset) FENLIGHT_NOEXCEPT = 0;
    /* Stores up to `size` bytes. Either address may be 0, not both. */
    virtual HRESULT GetFormat(WAVEFORMATEX *format, DWORD size, DWORD *written) FENLIGHT_NOEXCEPT = 0;
    virtual HRESULT GetVolume(LONG *volume) FENLIGHT_NOEXCEPT = 0;
    virtual HRESULT GetPan(LONG *pan) FENLIGHT_NOEXCEPT = 0;
    virtual HRESULT GetFrequency(DWORD *frequency) FENLIGHT_NOEXCEPT = 0;
    /* DSBSTATUS_PLAYING until the last sample has been mixed, with DSBSTATUS_LOOPING if it starts again. */
    virtual HRESULT GetStatus(DWORD *status) FENLIGHT_NOEXCEPT = 0;
    virtual HRESULT Initialize(IDirectSound *sound, const DSBUFFERDESC *description) FENLIGHT_NOEXCEPT = 0;
    /* Gives the samples for writing: from `offset` on, and where that passes the end a second area from the
     * start on (else 0 and 0). Areas that the mixer is about to read must be left alone. */
    virtual HRESULT Lock(DWORD offset, DWORD size, void **area1, DWORD *size1, void **area2, DWORD *size2,
                         DWORD flags) FENLIGHT_NOEXCEPT = 0;
    /* Plays from the position on, once or with DSBPLAY_LOOPING until stopped. A buffer that plays already
     * goes on from where it is and takes over the flag. `reserved` must be 0, `priority` is ignored. */
    virtual HRESULT Play(DWORD reserved, DWORD priority, DWORD flags) FENLIGHT_NOEXCEPT = 0;
    virtual HRESULT SetCurrentPosition(DWORD offset) FENLIGHT_NOEXCEPT = 0;
    virtual HRESULT SetFormat(const WAVEFORMATEX *format) FENLIGHT_NOEXCEPT = 0; /* unsupported */
    /* Values outside the range are clamped; so are pans. */
    virtual HRESULT SetVolume(LONG volume) FENLIGHT_NOEXCEPT = 0;
    virtual HRESULT SetPan(LONG pan) FENLIGHT_NOEXCEPT = 0;
    /* Samples per second, DSBFREQUENCY_MIN to DSBFREQUENCY_MAX, or DSBFREQUENCY_ORIGINAL. */
    virtual HRESULT SetFrequency(DWORD frequency) FENLIGHT_NOEXCEPT = 0;
    /* Keeps the position: the next Play goes on from there. */
    virtual HRESULT Stop() FENLIGHT_NOEXCEPT = 0;
    /* Takes the areas as Lock gave them; the mixer then sees what was written. */
    virtual HRESULT Unlock(void *area1, DWORD size1, void *area2, DWORD size2) FENLIGHT_NOEXCEPT = 0;
    virtual HRESULT Restore() FENLIGHT_NOEXCEPT = 0; /* buffers are never lost */

  protected:
    ~IDirectSoundBuffer() = default;
};

#else

/* The same for C: the object begins with the address of its table of methods. */
/* clang-format off */
typedef struct IDirectSoundVtbl {
    HRESULT (*QueryInterface)(IDirectSound *self, const GUID *interfaceId, void **object);
    ULONG (*AddRef)(IDirectSound *self);
    ULONG (*Release)(IDirectSound *self);
    HRESULT (*CreateSoundBuffer)
    (IDirectSound *self, const DSBUFFERDESC *description, IDirectSoundBuffer **buffer, IUnknown *outer);
    HRESULT (*GetCaps)(IDirectSound *self, DSCAPS *caps);
    HRESULT (*DuplicateSoundBuffer)
    (IDirectSound *self, IDirectSoundBuffer *original, IDirectSoundBuffer **duplicate);
    HRESULT (*SetCooperativeLevel)(IDirectSound *self, HWND window, DWORD level);
    HRESULT (*Compact)(IDirectSound *self);
    HRESULT (*GetSpeakerConfig)(IDirectSound *self, DWORD *configuration);
    HRESULT (*SetSpeakerConfig)(IDirectSound *self, DWORD configuration);
    HRESULT (*Initialize)(IDirectSound *self, const GUID *device);
} IDirectSoundVtbl;
/* clang-format on */

/* clang-format off */
typedef struct IDirectSoundBufferVtbl {
    HRESULT (*QueryInterface)(IDirectSoundBuffer *self, const GUID *interfaceId, void **object);
    ULONG (*AddRef)(IDirectSoundBuffer *self);
    ULONG (*Release)(IDirectSoundBuffer *self);
    HRESULT (*GetCaps)(IDirectSoundBuffer *self, DSBCAPS *caps);
    HRESULT (*GetCurrentPosition)(IDirectSoundBuffer *self, DWORD *playOffset, DWORD *writeOffset);
    HRESULT (*GetFormat)(IDirectSoundBuffer *self, WAVEFORMATEX *format, DWORD size, DWORD *written);
    HRESULT (*GetVolume)(IDirectSoundBuffer *self, LONG *volume);
    HRESULT (*GetPan)(IDirectSoundBuffer *self, LONG *pan);
    HRESULT (*GetFrequency)(IDirectSoundBuffer *self, DWORD *frequency);
    HRESULT (*GetStatus)(IDirectSoundBuffer *self, DWORD *status);
    HRESULT (*Initialize)(IDirectSoundBuffer *self, IDirectSound *sound, const DSBUFFERDESC *description);
    HRESULT (*Lock)
    (IDirectSoundBuffer *self, DWORD offset, DWORD size, void **area1, DWORD *size1, void **area2,
     DWORD *size2, DWORD flags);
    HRESULT (*Play)(IDirectSoundBuffer *self, DWORD reserved, DWORD priority, DWORD flags);
    HRESULT (*SetCurrentPosition)(IDirectSoundBuffer *self, DWORD offset);
    HRESULT (*SetFormat)(IDirectSoundBuffer *self, const WAVEFORMATEX *format);
    HRESULT (*SetVolume)(IDirectSoundBuffer *self, LONG volume);
    HRESULT (*SetPan)(IDirectSoundBuffer *self, LONG pan);
    HRESULT (*SetFrequency)(IDirectSoundBuffer *self, DWORD frequency);
    HRESULT (*Stop)(IDirectSoundBuffer *self);
    HRESULT (*Unlock)(IDirectSoundBuffer *self, void *area1, DWORD size1, void *area2, DWORD size2);
    HRESULT (*Restore)(IDirectSoundBuffer *self);
} IDirectSoundBufferVtbl;
/* clang-format on */

struct IDirectSound {
    const IDirectSoundVtbl *lpVtbl;
};
struct IDirectSoundBuffer {
    const IDirectSoundBufferVtbl *lpVtbl;
};

#endif

FENLIGHT_BEGIN_C

/// Makes an IDirectSound for the default output; the first one opens it.
/// @param device  must be 0, the default
/// @param sound   takes the object, which goes back by Release; 0 on failure
/// @param outer   must be 0
/// @return DS_OK; DSERR_NODRIVER if `device` is not 0 or not even a silent output can be had,
///         DSERR_OUTOFMEMORY, DSERR_NOAGGREGATION, or DSERR_INVALIDPARAM if `sound` is 0
/// @note Any thread. The choice of output is SDL's; the environment variable SDL_AUDIODRIVER names another.
FENLIGHT_API HRESULT DirectSoundCreate(const GUID *device, IDirectSound **sound,
                                       IUnknown *outer) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
