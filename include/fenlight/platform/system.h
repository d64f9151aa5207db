/* SPDX-License-Identifier: Zlib */
/* Time, threads, semaphores, memory, files and resources of the calling program.
 *
 * Handles of threads, semaphores and files come from one table of 65535 places and go back by CloseHandle.
 * A handle that is dead, foreign or of another kind makes a call fail with ERROR_INVALID_HANDLE and is
 * never followed. A call that fails leaves the reason in GetLastError of its thread; one that succeeds
 * leaves it alone unless it says otherwise. All functions may be called on any thread, also for one handle
 * from many threads at once, unless they say otherwise. Text is bytes with a zero at the end; paths are
 * those of the system, with slashes. */
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

/* Last error, time, arithmetic */

/// Tells why the last failing call on this thread failed.
/// @return an ERROR_ code, or one of the published codes that have no name here; 0 on a thread without
///         failures
FENLIGHT_API DWORD GetLastError(void) FENLIGHT_NOEXCEPT;

/// Sets what GetLastError gives on this thread.
/// @param code  any value
FENLIGHT_API void SetLastError(DWORD code) FENLIGHT_NOEXCEPT;

/// Reads the clock that all pacing goes by.
/// @return milliseconds since an unknown start; wraps to 0 after 49.7 days, so only differences have a
///         meaning
FENLIGHT_API DWORD GetTickCount(void) FENLIGHT_NOEXCEPT;

/// Gives up the processor. A thread that SuspendThread stopped meanwhile stays here until it is resumed.
/// @param milliseconds  shortest length; 0 lets another ready thread run, INFINITE never ends
FENLIGHT_API void Sleep(DWORD milliseconds) FENLIGHT_NOEXCEPT;

/// Multiplies and divides through a 64-bit product.
/// @return number * numerator / denominator, rounded to the nearest integer and halves away from zero; -1 if
///         `denominator` is 0 or the result does not fit
FENLIGHT_API int32_t MulDiv(int32_t number, int32_t numerator, int32_t denominator) FENLIGHT_NOEXCEPT;

/* Memory */

/// Allocates a block, aligned to 16 bytes.
/// @param flags  GMEM_ZEROINIT (the same as GPTR) fills the block with zeros; other bits change nothing,
///               every block is fixed
/// @param bytes  size; 0 gives a block of which nothing may be used
/// @return the block, which goes back by GlobalFree and by nothing else; 0 with ERROR_NOT_ENOUGH_MEMORY if
///         there is no room, and always from 2^39 bytes on
FENLIGHT_API void *GlobalAlloc(UINT flags, size_t bytes) FENLIGHT_NOEXCEPT;

/// Gives a block back.
/// @param block  from GlobalAlloc, not given back before; 0 does nothing. No other address can be recognised.
/// @return 0
FENLIGHT_API void *GlobalFree(void *block) FENLIGHT_NOEXCEPT;

/* Threads
 *
 * Stopping is cooperative. A thread stops at its next graphics operation, sleep or wait, and so never
 * inside one of them or with a lock of the library held. A thread that sleeps or waits already counts as
 * stopped, and goes on only when it is resumed; a wait that is stopped takes nothing meanwhile. */

/// Starts a thread.
/// @param attributes  ignored
/// @param stackSize   bytes; the system's default is used where it is larger, so 0 means the default
/// @param start       called with `parameter` on the new thread; what it returns is the exit code
/// @param flags       4 makes the thread stopped with a count of 1, before `start`; other bits change nothing
/// @param threadId    takes a number that no other thread of this process had; may be 0
/// @return a handle; the thread runs on when it is closed. 0 with ERROR_INVALID_PARAMETER if `start` is 0, or
///         with ERROR_NOT_ENOUGH_MEMORY if the system gives no thread.
/// @note `start` must not let an exception out.
FENLIGHT_API HANDLE CreateThread(void *attributes, size_t stackSize, LPTHREAD_START_ROUTINE start,
                                 void *parameter, DWORD flags, DWORD *threadId) FENLIGHT_NOEXCEPT;

/// Raises the stop count of a thread by 1 and waits until the thread stands still. A thread that reaches no
/// gate, for instance because it computes, is waited for up to two seconds; it stops later, when it reaches
/// one.
/// @param thread  from CreateThread; the calling thread itself may be meant and stops at once
/// @return the count before; 0xFFFFFFFF with ERROR_ACCESS_DENIED for a thread that has ended, with 156 where
///         the count is 127 already, or with ERROR_INVALID_HANDLE
/// @note Call it with no lock held that the thread may wait for: the stopped thread keeps what it holds,
///       semaphores included.
FENLIGHT_API DWORD SuspendThread(HANDLE thread) FENLIGHT_NOEXCEPT;

/// Lowers the stop count of a thread by 1; at 0 the thread goes on, at least to its next gate.
/// @return the count before, 0 if the thread was not stopped or has ended; 0xFFFFFFFF with
///         ERROR_INVALID_HANDLE
FENLIGHT_API DWORD ResumeThread(HANDLE thread) FENLIGHT_NOEXCEPT;

/// Reads what a thread returned.
/// @param exitCode  takes STILL_ACTIVE while the thread runs, its exit code afterwards; unchanged on failure
/// @return 1; 0 with ERROR_INVALID_HANDLE, or with ERROR_INVALID_PARAMETER if `exitCode` is 0
FENLIGHT_API BOOL GetExitCodeThread(HANDLE thread, DWORD *exitCode) FENLIGHT_NOEXCEPT;

/// Has a function called on each thread that CreateThread starts. An addition of our own.
/// @param notify  called with DLL_THREAD_ATTACH before the start routine and with DLL_THREAD_DETACH behind
///                it, on the thread itself; 0 ends that. Holds for threads that begin or end from now on.
FENLIGHT_API void SetThreadNotification(void (*notify)(DWORD reason)) FENLIGHT_NOEXCEPT;

/* Semaphores and waiting */

/// Makes a counting semaphore, or opens one of that name which is open in this process. A named semaphore
/// with counts of 1 and 1 is one object for all processes of the user: while one of them has taken it, the
/// others wait, and a process that ends or is killed gives it back. With other counts, or where the user has
/// no directory for the lock file, it belongs to this process alone.
/// @param attributes    ignored
/// @param initialCount  0 to `maximumCount`; ignored for a semaphore that is open already
/// @param maximumCount  1 or more; ignored for a semaphore that is open already
/// @param name          any text up to 260 bytes, told apart by case; 0 or "" for a semaphore without a name
/// @return a handle of its own for each call; the last error is then 0, or 183 if the semaphore was open
///         already. 0 with ERROR_INVALID_PARAMETER, 206 (name too long) or ERROR_NOT_ENOUGH_MEMORY.
FENLIGHT_API HANDLE CreateSemaphoreA(void *attributes, LONG initialCount, LONG maximumCount,
                                     const char *name) FENLIGHT_NOEXCEPT;

/// Waits for a semaphore with a count above 0, and takes 1 of it, or for the end of a thread.
/// @param object        semaphore or thread. Closing this handle meanwhile does not disturb the wait.
/// @param milliseconds  longest wait; 0 only looks, INFINITE waits without a limit. The clock of the limit
///                      runs on while the waiting thread is stopped.
/// @return WAIT_OBJECT_0; WAIT_TIMEOUT, with nothing taken; or WAIT_FAILED with ERROR_INVALID_HANDLE
FENLIGHT_API DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds) FENLIGHT_NOEXCEPT;

/// Gives units back to a semaphore. Any thread of the process may do that, not only the one that took them.
/// @param count     1 or more
/// @param previous  takes the count before; may be 0; unchanged on failure
/// @return 1; 0, with nothing changed, and ERROR_INVALID_PARAMETER for a count below 1, 298 if the maximum
///         would be exceeded (so too where another process holds the semaphore), or ERROR_INVALID_HANDLE
FENLIGHT_API BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG *previous) FENLIGHT_NOEXCEPT;

/// Closes the handle of a thread, a semaphore or a file. A thread runs on, a wait under way goes on, and a
/// semaphore lives until its last handle and its last wait are gone.
/// @return 1, or 0 with ERROR_INVALID_HANDLE
FENLIGHT_API BOOL CloseHandle(HANDLE object) FENLIGHT_NOEXCEPT;

/* Files */

/// Gives the directory for temporary files: the user's own, closed to all others, made when missing. It lies
/// in the first of TMPDIR, /tmp and XDG_RUNTIME_DIR that has room for it. Files of fixed names in it are
/// safe.
/// @param size    bytes of `buffer`
/// @param buffer  takes the path, with a slash at the end and a zero behind it; unchanged if it is too small.
///                May be 0.
/// @return the length without the zero; the size needed, with the zero, if `buffer` is 0 or too small; 0 with
///         ERROR_ACCESS_DENIED if the user has no such directory
FENLIGHT_API DWORD GetTempPathA(DWORD size, char *buffer) FENLIGHT_NOEXCEPT;

/// Gives the path of a file from the root, without "." and double slashes; ".." is resolved unless it follows
/// a symbolic link, so that the path always names the same file. The file need not exist.
/// @param fileName  relative to the current directory, or from the root
/// @param size      bytes of `buffer`
/// @param buffer    takes the path; unchanged if it is too small. May be 0, else must not overlap `fileName`.
/// @param filePart  takes the address of the last step within `buffer`, 0 if the path ends with a slash or if
///                  nothing was stored; may be 0
/// @return the length without the zero; the size needed, with the zero, if `buffer` is 0 or too small; 0 with
///         123 (no name), ERROR_PATH_NOT_FOUND (the current directory is gone) or ERROR_NOT_ENOUGH_MEMORY
FENLIGHT_API DWORD GetFullPathNameA(const char *fileName, DWORD size, char *buffer,
                                    char **filePart) FENLIGHT_NOEXCEPT;

/// Opens or makes a file. Directories are refused.
/// @param fileName     path; a new file gets the rights that the user's mask leaves
/// @param access       GENERIC_READ, GENERIC_WRITE, both, or 0 to ask for the size only
/// @param sharing      ignored: other handles and processes may always open the file too
/// @param attributes   ignored
/// @param disposition  CREATE_NEW refuses an existing file (80), CREATE_ALWAYS empties it, OPEN_ALWAYS opens
///                     it; OPEN_EXISTING refuses a missing one, 5 too, which empties the file and needs
///                     GENERIC_WRITE
/// @param flags        ignored
/// @param pattern      ignored
/// @return a handle with the position 0; the last error is then 183 if CREATE_ALWAYS or OPEN_ALWAYS found the
///         file, else 0. INVALID_HANDLE_VALUE on failure, with ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND (a
///         directory on the way is missing, or no name), ERROR_ACCESS_DENIED, ERROR_INVALID_PARAMETER (no
///         such disposition) or another published code.
FENLIGHT_API HANDLE CreateFileA(const char *fileName, DWORD access, DWORD sharing, void *attributes,
                                DWORD disposition, DWORD flags, HANDLE pattern) FENLIGHT_NOEXCEPT;

/// Reads from the position of the file on, and moves it behind what was read.
/// @param buffer      room for `size` bytes; what lies behind the bytes read is left alone
/// @param size        bytes wanted; fewer come at the end of the file, and from a pipe that has no more at
///                    the moment
/// @param bytesRead   takes the bytes that came, also on failure; may be 0
/// @param overlapped  must be 0
/// @return 1, also at the end of the file with 0 bytes; else 0 with ERROR_INVALID_PARAMETER,
///         ERROR_ACCESS_DENIED (not opened for reading), ERROR_INVALID_HANDLE or another published code
/// @note Two threads that use one handle at the same time get pieces in no certain order.
FENLIGHT_API BOOL ReadFile(HANDLE file, void *buffer, DWORD size, DWORD *bytesRead,
                           void *overlapped) FENLIGHT_NOEXCEPT;

/// Writes at the position of the file, and moves it behind what was written.
/// @param buffer        `size` bytes
/// @param bytesWritten  takes the bytes that were written, also on failure; may be 0
/// @param overlapped    must be 0
/// @return 1 if all was written; else 0 with the codes of ReadFile, or 112 where the disk is full
/// @note Two threads that use one handle at the same time get pieces in no certain order.
FENLIGHT_API BOOL WriteFile(HANDLE file, const void *buffer, DWORD size, DWORD *bytesWritten,
                            void *overlapped) FENLIGHT_NOEXCEPT;

/// Moves the position of a file. It may lie behind the end; writing there fills the gap with zeros.
/// @param distance      bytes, signed; with `distanceHigh` the low half of a signed 64-bit number
/// @param distanceHigh  the high half, takes the high half of the new position; 0 if positions fit 32 bits
/// @param method        from where: FILE_BEGIN, FILE_CURRENT or FILE_END
/// @return the low half of the new position, and the last error is 0. INVALID_SET_FILE_POINTER, the last
///         error not 0 and the position unchanged: 131 for a position before the start,
///         ERROR_INVALID_PARAMETER for another method or a position that has no room in the result.
FENLIGHT_API DWORD SetFilePointer(HANDLE file, LONG distance, LONG *distanceHigh,
                                  DWORD method) FENLIGHT_NOEXCEPT;

/// Gives the size of a file.
/// @param sizeHigh  takes the high half of the size in bytes; may be 0; unchanged on failure
/// @return the low half, and the last error is 0; INVALID_FILE_SIZE, the last error not 0, also for a pipe or
///         a device
FENLIGHT_API DWORD GetFileSize(HANDLE file, DWORD *sizeHigh) FENLIGHT_NOEXCEPT;

/// Deletes a file, not a directory. Handles that are open on it go on working.
/// @param fileName  path
/// @return 1, or 0 with ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_ACCESS_DENIED or another published
///         code
FENLIGHT_API BOOL DeleteFileA(const char *fileName) FENLIGHT_NOEXCEPT;

/* Resources
 *
 * Files that the CMake function fenlight_add_resources has embedded in a program or a module. */

/// Finds a resource in one module, and not in those that it depends on.
/// @param module  0 for the program, or a handle from dlopen of a module that is still loaded; any other
///                number finds nothing
/// @param name    text of up to 1024 bytes, its letters A to Z in either case; a number below 65536 in place
///                of the address, or the same as text "#101"
/// @param type    as `name`; bitmaps have the number 2
/// @return a handle, the same for each search, which need not go back; 0 with 1812 if there is no such
///         resource
FENLIGHT_API HRSRC FindResourceA(HMODULE module, const char *name, const char *type) FENLIGHT_NOEXCEPT;

/// Gives what LockResource wants.
/// @param module    ignored; the handle knows its module
/// @param resource  from FindResourceA
/// @return a handle that need not go back; 0 with ERROR_INVALID_HANDLE
FENLIGHT_API HGLOBAL LoadResource(HMODULE module, HRSRC resource) FENLIGHT_NOEXCEPT;

/// Gives the bytes of a resource.
/// @param resource  from LoadResource
/// @return the first byte, aligned to 16; read only, and there as long as the module is loaded. 0 with
///         ERROR_INVALID_HANDLE.
FENLIGHT_API void *LockResource(HGLOBAL resource) FENLIGHT_NOEXCEPT;

/// Gives the number of bytes of a resource.
/// @param module    ignored
/// @param resource  from FindResourceA
/// @return bytes; 0 for an empty file, and with ERROR_INVALID_HANDLE for a wrong handle
FENLIGHT_API DWORD SizeofResource(HMODULE module, HRSRC resource) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
