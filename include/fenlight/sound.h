/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_SOUND_H
#define FENLIGHT_SOUND_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Sound.
 *
 * A sound is loaded once and then started as often as wanted. It has fifteen voices that share its samples
 * and take turns, so that it can overlap itself; each voice has a volume and a pan of its own. Two kinds of
 * handle must not be mixed: a sound handle comes from a load, a voice handle from DSoundPlay or
 * DSoundGetNextBuffer and is good as long as its sound. A voice handle is the address of an
 * IDirectSoundBuffer of the platform layer, for whoever wants to do more with it.
 *
 * Volumes are hundredths of a decibel from 0 down to -10000, which is silence; -600 halves the amplitude.
 * Pans go from -10000, left only, to 10000, right only, and attenuate the other side by so many hundredths of
 * a decibel. Values outside are clamped.
 *
 * DSoundInit comes first: before it, and after DSoundDeInit, a load gives 0. Handles other than 0 are
 * trusted. All functions may be called on any thread; setting, starting and stopping takes no lock and no
 * memory. */

/// Opens the sound device. Without a sound card everything works in silence.
/// @param window  whose sound it is; any number, 0 too
/// @return 0, also if the device is open already, which changes nothing; else the failing code of the
/// platform
///         layer's DirectSoundCreate or CreateSoundBuffer, with nothing open
FENLIGHT_API int32_t DSoundInit(uintptr_t window) FENLIGHT_NOEXCEPT;

/// Closes the sound device and sets the global volume and pan back to 0. Sounds should be unloaded before;
/// one that is still there keeps the device running until its own DSoundUnLoad.
/// @return 0
FENLIGHT_API int32_t DSoundDeInit(void) FENLIGHT_NOEXCEPT;

/// Loads a sound from a WAV file: PCM, 8, 16, 24 or 32 bit, mono or stereo, at any rate, which it keeps. The
/// first chunk of the file is taken as the format chunk, whatever its id, and the data chunk may follow
/// anywhere behind it. The last byte of the data is not loaded, silence stands in its place.
/// @param fileName  path; 0 fails
/// @return a sound handle, which goes back by DSoundUnLoad; 0, with nothing left behind, if the file can't be
///         opened, is cut off, compressed or no WAV file, has a format that can't be played or fewer than 4
///         bytes (or more than 0x0FFFFFFF bytes, or less than one frame) of data, if there is no memory, or
///         without DSoundInit
FENLIGHT_API uintptr_t DSoundLoad(const char *fileName) FENLIGHT_NOEXCEPT;

/// Loads a sound from the image of a WAV file in memory; all else as DSoundLoad.
/// @param data  first byte; 0 fails. Not needed any more when the call returns.
/// @param size  bytes; nothing behind them is read. Below 0 fails.
FENLIGHT_API uintptr_t DSoundLoadMemory(const void *data, int32_t size) FENLIGHT_NOEXCEPT;

/// Loads a sound from a resource of the type "WAVE"; all else as DSoundLoad.
/// @param module  0 for the program, or a handle from dlopen
/// @param name    name of the resource, or a number below 65536 in place of the address; a missing one fails
FENLIGHT_API uintptr_t DSoundLoadResource(uintptr_t module, const char *name) FENLIGHT_NOEXCEPT;

/// Starts the next voice of a sound. Voices take turns: the first play takes voice 1, the fourteenth voice
/// 14, the next one voice 0. A voice that still plays goes on from where it is and only takes over the flags;
/// one that was stopped goes on from there; one that came to its end starts from the beginning.
/// @param sound  sound handle; 0 does nothing
/// @param flags  0: once; 1: round and round until DSoundStop
/// @return the voice's handle; 0 if `sound` is 0
FENLIGHT_API uintptr_t DSoundPlay(uintptr_t sound, int32_t flags) FENLIGHT_NOEXCEPT;

/// Stops a voice, which keeps its place.
/// @param voice  voice handle; 0 does nothing
/// @return 0
FENLIGHT_API int32_t DSoundStop(uintptr_t voice) FENLIGHT_NOEXCEPT;

/// Stops a sound and gives all of it back. Its handle and those of its voices must not be used any more, nor
/// on another thread at this moment; no sprite may have it as the sound of a hit.
/// @param sound  sound handle; 0 does nothing
/// @return 0
FENLIGHT_API int32_t DSoundUnLoad(uintptr_t sound) FENLIGHT_NOEXCEPT;

/// Tells which voice the next DSoundPlay of a sound will start, so that its volume and pan can be set before.
/// The turn does not move on. Where other threads start the same sound, they may come first.
/// @param sound  sound handle
/// @return the voice's handle; 0 if `sound` is 0
FENLIGHT_API uintptr_t DSoundGetNextBuffer(uintptr_t sound) FENLIGHT_NOEXCEPT;

/// Sets the volume of one voice, which it keeps for later plays.
/// @param voice   voice handle; 0 does nothing
/// @param volume  hundredths of a decibel, -10000 to 0
/// @return 0
FENLIGHT_API int32_t DSoundSetVolume(uintptr_t voice, int32_t volume) FENLIGHT_NOEXCEPT;

/// Sets the pan of one voice, which it keeps for later plays.
/// @param voice  voice handle; 0 does nothing
/// @param pan    hundredths of a decibel, -10000 (left only) to 10000 (right only)
/// @return 0
FENLIGHT_API int32_t DSoundSetPan(uintptr_t voice, int32_t pan) FENLIGHT_NOEXCEPT;

/// Sets the volume of everything, on top of each voice's own. Does nothing without DSoundInit.
/// @param volume  hundredths of a decibel, -10000 to 0
/// @return 0
FENLIGHT_API int32_t DSoundSetGlobalVolume(int32_t volume) FENLIGHT_NOEXCEPT;

/// Sets the pan of everything, on top of each voice's own. Does nothing without DSoundInit.
/// @param pan  hundredths of a decibel, -10000 (left only) to 10000 (right only)
/// @return 0
FENLIGHT_API int32_t DSoundSetGlobalPan(int32_t pan) FENLIGHT_NOEXCEPT;

/// Tells whether a voice plays. A voice plays until its last sample has been mixed, which is up to 12
/// milliseconds before it is heard.
/// @param voice  voice handle
/// @return 1: plays once; 5: plays round and round; 0: at rest, or `voice` is 0
FENLIGHT_API int32_t DSoundGetStatus(uintptr_t voice) FENLIGHT_NOEXCEPT;

/// Gives the platform layer's objects behind this family. They stay the library's: AddRef them to keep them
/// beyond DSoundDeInit.
/// @param primaryBuffer  takes the address of the primary IDirectSoundBuffer, 0 without DSoundInit; may be 0
/// @return the address of the IDirectSound; 0 without DSoundInit
FENLIGHT_API uintptr_t DSoundGetInterfaces(uintptr_t *primaryBuffer) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
