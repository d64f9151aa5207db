/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_INTERNET_H
#define FENLIGHT_INTERNET_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Internet: downloads.
 *
 * A file is fetched over HTTP or HTTPS in one call that waits until it is there, and a second call finds out
 * whether anything can be fetched at all. Nothing is cached: every call asks the server. The environment
 * variables http_proxy, https_proxy and no_proxy are followed as usual. Any thread may call these functions,
 * also several at a time; a thread that must not wait leaves them to another one. */

/// Fetches a file. It is received into a file without a name in the same folder, which takes the target's
/// place in one step when it is whole; whatever goes wrong before leaves the target as it was, or absent.
/// Where the file system has no files without a name it is called .fenlight- and two numbers meanwhile, and
/// stays behind if the process is killed.
/// @param url       address with http:// or https:// in front; spaces are allowed. Up to 20 redirects are
///                  followed, to those two only, and certificates of servers are checked.
/// @param fileName  path of the target, whose folder must exist and be writable. A file that stands there is
///                  replaced and keeps its access rights, a symbolic link leads to the file that is replaced
///                  (one that leads nowhere is replaced itself); directories, devices and files that may not
///                  be written are refused.
/// @return 0 if the file is there and whole. Else one of the published result codes, all below 0:
///
///         0x800C0002  `url` is no address, or 0
///         0x800C0004  the server refuses the connection
///         0x800C0005  there is no such server
///         0x800C0006  the server has no such page (404, 410)
///         0x800C0008  the transfer broke off, the server reports another error, anything else
///         0x800C0009  a user name and password are wanted (401, 407)
///         0x800C000B  the server did not accept a connection for 60 seconds, or sent nothing for 60 seconds
///         0x800C000D  neither HTTP nor HTTPS, or the server does not speak it
///         0x800C000E  no secure connection could be made
///         0x800C0014  too many redirects, or one to something else than HTTP and HTTPS
///         0x800C0019  the server's certificate is not valid
///         0x8007xxxx  the file could not be written, or no memory: xxxx is the code that GetLastError has
///                     for it, as 0x80070005 for ERROR_ACCESS_DENIED
/// @note Without a length in the server's answer, as old servers give it, the end of a page and a connection
///       that was cut look the same.
FENLIGHT_API int32_t DownloadHttpFile(const char *url, const char *fileName) FENLIGHT_NOEXCEPT;

/// Finds out whether the internet can be reached, by fetching a small page of a public server over HTTP into
/// the file fenlight_itest in the directory of GetTempPathA. The file stays there for the next probe.
/// @return 1 if the page came, else 0, whatever the reason. The answer holds for this moment only.
/// @note It waits as long as DownloadHttpFile may, and the server learns of it: do not call it in a loop.
FENLIGHT_API int32_t IsInternet(void) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
