/* SPDX-License-Identifier: Zlib */
/* Time, threads, the named semaphore, memory, files and resources of the calling program. */
#ifndef FENLIGHT_PLATFORM_SYSTEM_H
#define FENLIGHT_PLATFORM_SYSTEM_H
#include "types.h"

#define INFINITE 0xFFFFFFFFu
#define WAIT_OBJECT_0 0u
#define WAIT_TIMEOUT 258u
#define WAIT_FAILED 0xFFFFFFFFu
#define STILL_ACTIVE 259u
#define MAX_PATH 260

#define ERROR_SUCCESS 0u
#define ERROR_FILE_NOT_FOUND 2u
#define ERROR_PATH_NOT_FOUND 3u
#define ERROR_ACCESS_DENIED 5u
#define ERROR_INVALID_HANDLE 6u
#define ERROR_NOT_ENOUGH_MEMORY 8u
#define ERROR_INVALID_PARAMETER 87u

#define GMEM_FIXED 0u
#define GMEM_ZEROINIT 64u
#define GPTR 64u

#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define FILE_SHARE_READ 1u
#define CREATE_NEW 1u
#define CREATE_ALWAYS 2u
#define OPEN_EXISTING 3u
#define OPEN_ALWAYS 4u
#define FILE_ATTRIBUTE_NORMAL 128u
#define FILE_BEGIN 0u
#define FILE_CURRENT 1u
#define FILE_END 2u
#define INVALID_HANDLE_VALUE ((HANDLE)-1)
#define INVALID_FILE_SIZE 0xFFFFFFFFu
#define INVALID_SET_FILE_POINTER 0xFFFFFFFFu

#define DLL_PROCESS_DETACH 0u
#define DLL_PROCESS_ATTACH 1u
#define DLL_THREAD_ATTACH 2u
#define DLL_THREAD_DETACH 3u

typedef DWORD (*LPTHREAD_START_ROUTINE)(void *parameter);

FENLIGHT_BEGIN_C

FENLIGHT_API DWORD GetLastError(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API void SetLastError(DWORD code) FENLIGHT_NOEXCEPT;
FENLIGHT_API DWORD GetTickCount(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API void Sleep(DWORD milliseconds) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t MulDiv(int32_t number, int32_t numerator, int32_t denominator) FENLIGHT_NOEXCEPT;

FENLIGHT_API void *GlobalAlloc(UINT flags, size_t bytes) FENLIGHT_NOEXCEPT;
FENLIGHT_API void *GlobalFree(void *block) FENLIGHT_NOEXCEPT;

FENLIGHT_API HANDLE CreateThread(void *attributes, size_t stackSize, LPTHREAD_START_ROUTINE start,
                                 void *parameter, DWORD flags, DWORD *threadId) FENLIGHT_NOEXCEPT;
FENLIGHT_API DWORD SuspendThread(HANDLE thread) FENLIGHT_NOEXCEPT;
FENLIGHT_API DWORD ResumeThread(HANDLE thread) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL GetExitCodeThread(HANDLE thread, DWORD *exitCode) FENLIGHT_NOEXCEPT;
/* An addition of our own: `notify` is called on each thread that CreateThread starts, with DLL_THREAD_ATTACH
 * before its start routine and with DLL_THREAD_DETACH behind it; 0 ends that. */
FENLIGHT_API void SetThreadNotification(void (*notify)(DWORD reason)) FENLIGHT_NOEXCEPT;

FENLIGHT_API HANDLE CreateSemaphoreA(void *attributes, LONG initialCount, LONG maximumCount,
                                     const char *name) FENLIGHT_NOEXCEPT;
FENLIGHT_API DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG *previous) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL CloseHandle(HANDLE object) FENLIGHT_NOEXCEPT;

FENLIGHT_API DWORD GetTempPathA(DWORD size, char *buffer) FENLIGHT_NOEXCEPT;
FENLIGHT_API DWORD GetFullPathNameA(const char *fileName, DWORD size, char *buffer,
                                    char **filePart) FENLIGHT_NOEXCEPT;
FENLIGHT_API HANDLE CreateFileA(const char *fileName, DWORD access, DWORD sharing, void *attributes,
                                DWORD disposition, DWORD flags, HANDLE pattern) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL ReadFile(HANDLE file, void *buffer, DWORD size, DWORD *bytesRead,
                           void *overlapped) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL WriteFile(HANDLE file, const void *buffer, DWORD size, DWORD *bytesWritten,
                            void *overlapped) FENLIGHT_NOEXCEPT;
FENLIGHT_API DWORD SetFilePointer(HANDLE file, LONG distance, LONG *distanceHigh,
                                  DWORD method) FENLIGHT_NOEXCEPT;
FENLIGHT_API DWORD GetFileSize(HANDLE file, DWORD *sizeHigh) FENLIGHT_NOEXCEPT;
FENLIGHT_API BOOL DeleteFileA(const char *fileName) FENLIGHT_NOEXCEPT;

FENLIGHT_API HRSRC FindResourceA(HMODULE module, const char *name, const char *type) FENLIGHT_NOEXCEPT;
FENLIGHT_API HGLOBAL LoadResource(HMODULE module, HRSRC resource) FENLIGHT_NOEXCEPT;
FENLIGHT_API void *LockResource(HGLOBAL resource) FENLIGHT_NOEXCEPT;
FENLIGHT_API DWORD SizeofResource(HMODULE module, HRSRC resource) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
