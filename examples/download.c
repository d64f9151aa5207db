/* SPDX-License-Identifier: Zlib */
/* Fetches a file and tells what came of it:  download http://host/picture.png picture.png
 * Without arguments it only finds out whether the internet can be reached. */
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stdio.h>

static const char *Explain(int32_t result) {
    switch ((uint32_t)result) {
        case 0x800C0002u:
            return "that is no address";
        case 0x800C0004u:
        case 0x800C0005u:
            return "the server can't be reached";
        case 0x800C0006u:
            return "the server has no such page";
        case 0x800C000Bu:
            return "the server keeps silent";
        case 0x800C000Du:
            return "only http:// and https:// are spoken here";
        case 0x80070000u | ERROR_ACCESS_DENIED:
        case 0x80070000u | ERROR_PATH_NOT_FOUND:
            return "the file can't be written";
        default:
            return "the transfer failed";
    }
}

static int Fetch(const char *url, const char *fileName) {
    DWORD start = GetTickCount();
    int32_t result = DownloadHttpFile(url, fileName);
    if (result != 0) {
        fprintf(stderr, "%s: %s (0x%08X)\n", url, Explain(result), (unsigned)result);
        return 1;
    }
    HANDLE file = CreateFileA(fileName, 0, FILE_SHARE_READ, 0, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, 0);
    if (file == INVALID_HANDLE_VALUE) return 1;
    DWORD milliseconds = GetTickCount() - start;
    printf("%s: %u bytes in %u milliseconds\n", fileName, (unsigned)GetFileSize(file, 0),
           (unsigned)milliseconds);
    CloseHandle(file);
    return 0;
}

int main(int argc, char **argv) {
    if (argc == 3) return Fetch(argv[1], argv[2]);
    puts(IsInternet() ? "the internet is there" : "no internet");
    return 0;
}
