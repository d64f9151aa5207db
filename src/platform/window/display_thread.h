// SPDX-License-Identifier: Zlib
// The one thread that makes every SDL video call but the message box. It starts with the first task, sleeps
// while no window is open, else pumps events and shows what changed, and never ends before the process does:
// when the process exits, it comes to rest first, so that nothing it uses is taken down under it.
//
// It is started without CreateThread: it is neither the caller's nor the library's, so it is not announced to
// SetThreadNotification and nobody can suspend it.
#pragma once

namespace fenlight::platform {

// Runs `call(argument)` on the display thread and waits for its end. False, and nothing was run, if the
// thread could not be started or the process is exiting; in that case it has come to rest before. Never to be
// called on the display thread itself, nor with a bitmap locked.
bool CallOnDisplayThread(void (*call)(void *argument), void *argument) noexcept;

// The same for anything that can be called without arguments.
template <class Task>
bool RunOnDisplayThread(Task task) noexcept {
    return CallOnDisplayThread([](void *argument) { (*static_cast<Task *>(argument))(); }, &task);
}

// Has the thread been started, and may it still look at what callers own?
bool IsDisplayThreadRunning() noexcept;

}  // namespace fenlight::platform
