// SPDX-License-Identifier: Zlib
#include "frame/attach.h"

#include "fenlight/platform/system.h"
#include "frame/codec_binding.h"
#include "frame/random.h"

namespace fenlight {
namespace {

void OnThread(DWORD reason) { EntryRoutine(reason); }

__attribute__((constructor)) void OnLoad() {
    EntryRoutine(DLL_PROCESS_ATTACH);
    SetThreadNotification(OnThread);
}

// Threads that still run at this moment would call into what goes away.
__attribute__((destructor)) void OnUnload() {
    SetThreadNotification(nullptr);
    EntryRoutine(DLL_PROCESS_DETACH);
}

}  // namespace

uint32_t EntryRoutine(uint32_t reason) noexcept {
    RandomSeed(GetTickCount());
    if (reason == DLL_PROCESS_ATTACH) BindCodecs();
    if (reason == DLL_PROCESS_DETACH) UnbindCodecs();
    return 1;
}

}  // namespace fenlight
