// SPDX-License-Identifier: Zlib
#include "platform/system/named_semaphores.h"

#include <pthread.h>

#include <map>
#include <new>
#include <string>

namespace fenlight::platform {

// A name that is in use, or that was and has a lock file, for which the entry stays.
struct NamedEntry {
    LockFile file;
    Semaphore *semaphore = nullptr;  // not owned; nullptr while nobody has it open
};

namespace {

// Each name with a file keeps a descriptor for good. A program with more names than this gets semaphores of
// its own process for the rest.
constexpr int kMostLockFiles = 64;

struct Table {
    std::mutex mutex;  // taken before the mutex of a semaphore
    std::map<std::string, NamedEntry, std::less<>> entries;
    int lockFiles = 0;
};

void LockAllForFork();
void UnlockAllAfterFork();
void StartAnewInChild();

// Never destroyed: threads may still wait while the program ends.
Table &TheTable() {
    static Table *const table = [] {
        auto *made = new Table;
        pthread_atfork(LockAllForFork, UnlockAllAfterFork, StartAnewInChild);
        return made;
    }();
    return *table;
}

void LockAllForFork() {
    Table &table = TheTable();
    table.mutex.lock();
    for (auto &[name, entry] : table.entries) {
        if (entry.semaphore != nullptr) entry.semaphore->LockForFork();
    }
}

void UnlockAllAfterFork() {
    Table &table = TheTable();
    for (auto &[name, entry] : table.entries) {
        if (entry.semaphore != nullptr) entry.semaphore->UnlockAfterFork();
    }
    table.mutex.unlock();
}

void StartAnewInChild() {
    for (auto &[name, entry] : TheTable().entries) {
        if (entry.semaphore != nullptr) entry.semaphore->StartAnewInChild();
    }
    UnlockAllAfterFork();
}

bool IsALock(int32_t initialCount, int32_t maximumCount) { return initialCount == 1 && maximumCount == 1; }

void OpenFileOnce(Table &table, NamedEntry &entry, std::string_view name) {
    if (entry.file.IsOpen() || table.lockFiles >= kMostLockFiles) return;
    entry.file.Open(name);
    if (entry.file.IsOpen()) ++table.lockFiles;
}

}  // namespace

NamedSemaphore OpenNamedSemaphore(std::string_view name, int32_t initialCount, int32_t maximumCount) {
    Table &table = TheTable();
    const std::lock_guard lock(table.mutex);
    NamedEntry &entry = table.entries.try_emplace(std::string(name)).first->second;
    if (entry.semaphore != nullptr) {
        entry.semaphore->AddOwner();
        return {Owner<Semaphore>::Adopt(entry.semaphore), true};
    }
    const bool isALock = IsALock(initialCount, maximumCount);
    if (isALock) OpenFileOnce(table, entry, name);
    LockFile *file = isALock && entry.file.IsOpen() ? &entry.file : nullptr;
    entry.semaphore = new (std::nothrow) Semaphore(initialCount, maximumCount, file, true);
    return {Owner<Semaphore>::Adopt(entry.semaphore), false};
}

void DropNamedSemaphore(Semaphore *semaphore) noexcept {
    Table &table = TheTable();
    const std::lock_guard lock(table.mutex);
    if (!semaphore->DropsLastOwner()) return;
    for (auto entry = table.entries.begin(); entry != table.entries.end(); ++entry) {
        if (entry->second.semaphore != semaphore) continue;
        entry->second.semaphore = nullptr;
        if (!entry->second.file.IsOpen()) table.entries.erase(entry);
        break;
    }
    delete semaphore;
}

}  // namespace fenlight::platform
