/* SPDX-License-Identifier: Zlib */
/* A program of another project: installed headers, installed libraries, a picture embedded into the program.
 */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>

int main(void) {
    const uintptr_t image = LoadResourceImage(0, "strip");
    if (GetVersion() != 3000 || GetWidthImage(image) != 108 || GetHeightImage(image) != 18) {
        fprintf(stderr, "consumer: the embedded strip did not load\n");
        return 1;
    }
    if (GetPixel(image, 0, 0) != 0x00800080u) {
        fprintf(stderr, "consumer: the strip's key colour is %06X\n", GetPixel(image, 0, 0));
        return 1;
    }
    return FreeAllImages() == 1 ? 0 : 1;
}
