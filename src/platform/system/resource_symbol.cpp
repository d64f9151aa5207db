// SPDX-License-Identifier: Zlib
#include "platform/system/resource_symbol.h"

#include <dlfcn.h>
#include <link.h>

#include <cstring>
#include <optional>
#include <string_view>

namespace fenlight::platform {
namespace {

constexpr uint32_t kNumbers = 65536;
constexpr size_t kLongestName = 1024;

// The number that "#101" means; nothing for other text.
std::optional<uint32_t> NumberInText(std::string_view text) {
    if (text.size() < 2 || text[0] != '#') return {};
    uint32_t number = 0;
    for (const char digit : text.substr(1)) {
        if (digit < '0' || digit > '9' || number >= kNumbers) return {};
        number = number * 10 + static_cast<uint32_t>(digit - '0');
    }
    return number < kNumbers ? std::optional(number) : std::nullopt;
}

char UpperCase(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter;
}

std::string EncodeText(std::string_view text) {
    constexpr char kHex[] = "0123456789abcdef";
    std::string code = "n";
    for (const char letter : text) {
        const auto byte = static_cast<unsigned char>(UpperCase(letter));
        code.append({kHex[byte >> 4], kHex[byte & 15]});
    }
    return code;
}

std::string EncodeNumber(uintptr_t number) { return std::string("i").append(std::to_string(number)); }

std::string Encode(const char *identifier) {
    const auto address = reinterpret_cast<uintptr_t>(identifier);
    if (address < kNumbers) return EncodeNumber(address);
    const std::string_view text(identifier, strnlen(identifier, kLongestName + 1));
    if (text.empty() || text.size() > kLongestName) return {};
    if (const auto number = NumberInText(text)) return EncodeNumber(*number);
    return EncodeText(text);
}

// The dynamic linker's handle of a module is the address of its link map, and the list of these maps is what
// a number is compared with before anything follows it.
struct Search {
    const void *handle;
    bool isLoaded;
};

// Called with the dynamic linker's lock held, so that the list stands still; the first call walks all of it.
int FindInList(dl_phdr_info *, size_t, void *argument) {
    auto *search = static_cast<Search *>(argument);
    for (const link_map *map = _r_debug.r_map; map != nullptr; map = map->l_next) {
        if (map == search->handle) search->isLoaded = true;
    }
    return 1;
}

bool IsLoadedModule(const void *handle) {
    Search search{handle, false};
    dl_iterate_phdr(FindInList, &search);
    return search.isLoaded;
}

void *MainProgram() {
    static void *const handle = dlopen(nullptr, RTLD_LAZY);
    return handle;
}

}  // namespace

std::string ResourceSymbol(const char *type, const char *name) {
    const std::string typeCode = Encode(type);
    const std::string nameCode = Encode(name);
    if (typeCode.empty() || nameCode.empty()) return {};
    return std::string("fenlight_resource_").append(typeCode).append("_").append(nameCode);
}

const ResourceHeader *FindInModule(uintptr_t module, const char *symbol) noexcept {
    void *handle = module == 0 ? MainProgram() : reinterpret_cast<void *>(module);
    if (handle == nullptr || !IsLoadedModule(handle)) return nullptr;
    void *address = dlsym(handle, symbol);
    if (address == nullptr) return nullptr;
    // dlsym also looks into what the module depends on.
    Dl_info about{};
    link_map *home = nullptr;
    if (dladdr1(address, &about, reinterpret_cast<void **>(&home), RTLD_DL_LINKMAP) == 0) return nullptr;
    return home == handle ? static_cast<const ResourceHeader *>(address) : nullptr;
}

}  // namespace fenlight::platform
