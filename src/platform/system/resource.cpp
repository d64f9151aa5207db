// SPDX-License-Identifier: Zlib
#include <map>
#include <mutex>
#include <new>

#include "fenlight/platform/system.h"
#include "platform/system/handle_table.h"
#include "platform/system/resource_symbol.h"

namespace fenlight::platform {
namespace {

constexpr DWORD kResourceDataNotFound = 1812;

struct Resource : HandleObject {
    explicit Resource(const ResourceHeader *found) : header(found), size(static_cast<DWORD>(found->size)) {}
    const ResourceHeader *const header;
    const DWORD size;  // kept here, so that asking for it follows no address into a module that may be gone
};

using PinnedResource = Pinned<Resource, HandleKind::Resource>;

// One handle for each resource that was ever found, since nothing gives such handles back. A module that is
// loaded where another one was may have a resource of another size at the same address.
struct Known {
    std::mutex mutex;
    std::map<std::pair<const ResourceHeader *, uint64_t>, HRSRC> handles;
};

Known &TheKnown() {
    static Known *const known = new Known;
    return *known;
}

HRSRC HandleOf(const ResourceHeader *header) {
    Known &known = TheKnown();
    const std::lock_guard lock(known.mutex);
    HRSRC &handle = known.handles[{header, header->size}];
    if (handle == 0) {
        auto *resource = new (std::nothrow) Resource(header);
        if (resource != nullptr) handle = InsertHandle(HandleKind::Resource, resource);
    }
    return handle;
}

HRSRC Find(HMODULE module, const char *name, const char *type) {
    const std::string symbol = ResourceSymbol(type, name);
    if (symbol.empty()) return 0;
    const ResourceHeader *header = FindInModule(module, symbol.c_str());
    return header != nullptr && header->size <= UINT32_MAX ? HandleOf(header) : 0;
}

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

HRSRC FindResourceA(HMODULE module, const char *name, const char *type) noexcept {
    HRSRC resource = 0;
    try {
        resource = Find(module, name, type);
    } catch (const std::bad_alloc &) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
    if (resource == 0) SetLastError(kResourceDataNotFound);
    return resource;
}

HGLOBAL LoadResource(HMODULE, HRSRC resource) noexcept {
    if (KindOfHandle(resource) == HandleKind::Resource) return resource;
    SetLastError(ERROR_INVALID_HANDLE);
    return 0;
}

void *LockResource(HGLOBAL resource) noexcept {
    const PinnedResource pinned(resource);
    if (pinned) return const_cast<ResourceHeader *>(pinned->header + 1);
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

DWORD SizeofResource(HMODULE, HRSRC resource) noexcept {
    const PinnedResource pinned(resource);
    if (pinned) return pinned->size;
    SetLastError(ERROR_INVALID_HANDLE);
    return 0;
}
