/* SPDX-License-Identifier: Zlib */
/* The options of the examples that go on until their window is closed. */
#ifndef RUN_OPTIONS_H
#define RUN_OPTIONS_H
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#ifndef FENLIGHT_ASSETS
#define FENLIGHT_ASSETS "assets/"
#endif

typedef struct {
    const char *picture, *assets; /* a file to be written, or NULL; a folder with a slash at its end */
    int seconds;                  /* 0: until the window is closed */
} RunOptions;

/* Without a display, where nobody can close a window, it is for some seconds. 0 after telling how it is used.
 */
static int ReadOptions(int argumentCount, char **arguments, int headlessSeconds, RunOptions *options) {
    options->picture = NULL;
    options->assets = FENLIGHT_ASSETS;
    options->seconds = getenv("DISPLAY") || getenv("WAYLAND_DISPLAY") ? 0 : headlessSeconds;
    for (int i = 1; i < argumentCount; i += 2) {
        const char *value = i + 1 < argumentCount ? arguments[i + 1] : NULL;
        if (value && strcmp(arguments[i], "--picture") == 0) {
            options->picture = value;
        } else if (value && strcmp(arguments[i], "--assets") == 0) {
            options->assets = value;
        } else if (value && strcmp(arguments[i], "--seconds") == 0) {
            options->seconds = atoi(value);
        } else {
            fprintf(stderr, "usage: %s [--picture FILE] [--seconds N] [--assets FOLDER/]\n", arguments[0]);
            return 0;
        }
    }
    return 1;
}

#endif
