// SPDX-License-Identifier: Zlib
// How an embedded resource is found: one symbol in the module that holds it, made by
// fenlight_add_resources(). The symbol is "fenlight_resource_<type>_<name>", type and name each as "n" and
// the hex digits of the upper-cased bytes, or as "i" and a decimal number: legal for any text, and blind to
// case. It stands on a header, and the bytes follow it.
#pragma once

#include <cstdint>
#include <string>

namespace fenlight::platform {

struct ResourceHeader {
    uint64_t size;  // bytes behind the header
    uint64_t reserved;
};

// The symbol for a type and a name as FindResourceA takes them: a number below 65536 in place of the address,
// text such as "#101" for the same number, or text. Empty for what can name no resource.
std::string ResourceSymbol(const char *type, const char *name);

// What the symbol stands on in that very module, not in one it depends on; nullptr if it is not there, or if
// `module` is neither 0 nor the handle of a loaded module.
const ResourceHeader *FindInModule(uintptr_t module, const char *symbol) noexcept;

}  // namespace fenlight::platform
