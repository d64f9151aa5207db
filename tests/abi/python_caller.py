# SPDX-License-Identifier: Zlib
"""A caller in another language: handles above 32 bits survive, results have the declared types."""
import ctypes
import sys
import time
from ctypes import c_int32, c_uint32, c_void_p

platform = ctypes.CDLL(sys.argv[1], mode=ctypes.RTLD_GLOBAL)
library = ctypes.CDLL(sys.argv[2])
HANDLE = ctypes.c_size_t


def function(owner, name, result, *arguments):
    entry = getattr(owner, name)
    entry.restype = result
    entry.argtypes = list(arguments)
    return entry


get_dc = function(platform, "GetDC", HANDLE, HANDLE)
get_pixel = function(platform, "GetPixel", c_uint32, HANDLE, c_int32, c_int32)
create_image = function(library, "CreateImage", HANDLE, HANDLE, c_int32, c_int32)
fill = function(library, "ColorFillImage", c_int32, HANDLE, c_uint32, *[c_int32] * 4)
free_all = function(library, "FreeAllImages", c_int32)
width = function(library, "GetWidthImage", c_int32, HANDLE)
init_sprite = function(library, "InitSprite", HANDLE, *[HANDLE] * 4, *[c_int32] * 11)
delete_all = function(library, "DeleteAllSprites", c_int32)
test_sprite = function(library, "TestSprite", ctypes.c_ssize_t, HANDLE, c_int32)
infos = function(library, "GetSpriteInfos", c_void_p, HANDLE, c_void_p)


def check(holds, claim):
    if not holds:
        sys.exit("not so: " + claim)


check(function(library, "GetVersion", c_int32)() == 3000, "version 3000")
images = [create_image(get_dc(0), 64, 48) for _ in range(4)]
strip, screen, back, clean = images
check(all(images), "four images")
check(width(screen) == 64 and width(0) == -1, "widths")
fill(strip, 0x00FF00, 0, 0, 64, 48)
fill(strip, 0x0000FF, 1, 1, 3, 4)
sprite = init_sprite(strip, screen, back, clean, 0, 0, 4, 4, 1, 1, 1, -1, 30, 1, 1)
check(sprite != 0, "a sprite handle")
check(test_sprite(sprite, 120) == sprite, "the record's own address comes whole")
check(test_sprite(sprite, 32) == -1, "a negative number comes sign-extended")
buffer = (c_int32 * 9)(*[7] * 9)
check(infos(sprite, ctypes.byref(buffer)) == ctypes.addressof(buffer), "the buffer's address comes back")
check(list(buffer) == [-1, 30, -1, 30, 1, 1, 1, 1, 7], "eight words are written, the ninth is not")
deadline = time.monotonic() + 10
while get_pixel(screen, 1, 32) != 0x0000FF and time.monotonic() < deadline:
    time.sleep(0.005)
check(get_pixel(screen, 1, 32) == 0x0000FF, "the thread draws the sprite")
delete_all()
check(free_all() == 4, "four images go back")
print("all claims hold")
