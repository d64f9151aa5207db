/* SPDX-License-Identifier: Zlib */
/* Plays four sounds: steps that walk from the left to the right, coins that overlap themselves, a ball that
 * bounces softer and softer, and an explosion. Then one more coin, slowed down through the platform layer.
 * Prints what can be heard. Run it in the project's folder. */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>

enum { Step, Bounce, Coin, Explosion, SoundCount };

static const char *const names[SoundCount] = {"step", "bounce", "coin", "explosion"};
static uintptr_t sounds[SoundCount];

static int LoadAll(void) {
    for (int i = 0; i < SoundCount; ++i) {
        char path[64];
        snprintf(path, sizeof path, "assets/%s.wav", names[i]);
        sounds[i] = DSoundLoad(path);
        if (sounds[i] == 0) {
            fprintf(stderr, "%s can't be loaded\n", path);
            return 0;
        }
    }
    return 1;
}

/* Volume and pan belong to a voice, so they are set on the one whose turn is next. */
static uintptr_t PlayAt(int sound, int32_t volume, int32_t pan) {
    uintptr_t voice = DSoundGetNextBuffer(sounds[sound]);
    DSoundSetVolume(voice, volume);
    DSoundSetPan(voice, pan);
    return DSoundPlay(sounds[sound], 0);
}

static void WaitFor(uintptr_t voice) {
    while (DSoundGetStatus(voice) != 0) Sleep(10);
}

static void PlaySlowly(int sound) {
    uintptr_t voice = DSoundGetNextBuffer(sounds[sound]);
    IDirectSoundBuffer *buffer = (IDirectSoundBuffer *)voice;
    buffer->lpVtbl->SetFrequency(buffer, 22050);
    WaitFor(PlayAt(sound, 0, 0));
}

int main(void) {
    if (DSoundInit(0) != 0) {
        fprintf(stderr, "no sound device\n");
        return 1;
    }
    if (!LoadAll()) return 1;

    puts("steps, from the left to the right");
    for (int32_t pan = -2000; pan <= 2000; pan += 500, Sleep(220)) PlayAt(Step, -300, pan);
    puts("eight coins, overlapping");
    for (int i = 0; i < 8; ++i, Sleep(90)) PlayAt(Coin, -1400, 0);
    puts("a ball comes to rest");
    for (int32_t volume = 0; volume > -3000; volume -= 400) {
        PlayAt(Bounce, volume, 0);
        Sleep((DWORD)(500 + volume / 8));
    }
    puts("an explosion");
    WaitFor(PlayAt(Explosion, 0, 0));
    puts("a coin at half its speed");
    PlaySlowly(Coin);

    for (int i = 0; i < SoundCount; ++i) DSoundUnLoad(sounds[i]);
    return DSoundDeInit();
}
