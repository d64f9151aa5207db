// SPDX-License-Identifier: Zlib
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "fenlight/platform/system.h"
#include "platform/system/handle_table.h"

namespace fenlight::platform {
namespace {

std::string BytesOf(const char *fileName) {
    std::ifstream file(std::string(FENLIGHT_RESOURCE_FILES) + "/" + fileName, std::ios::binary);
    EXPECT_TRUE(file) << fileName;
    return {std::istreambuf_iterator<char>(file), {}};
}

// "none" where there is no such resource.
std::string Found(HMODULE module, const char *name, const char *type) {
    const HRSRC resource = FindResourceA(module, name, type);
    if (resource == 0) return "none";
    const void *bytes = LockResource(LoadResource(module, resource));
    EXPECT_NE(bytes, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(bytes) % 16, 0u);
    return {static_cast<const char *>(bytes), SizeofResource(module, resource)};
}

const char *Number(uintptr_t number) { return reinterpret_cast<const char *>(number); }

class Module {
  public:
    Module() : handle_(dlopen(FENLIGHT_RESOURCE_MODULE, RTLD_NOW | RTLD_LOCAL)) {
        EXPECT_NE(handle_, nullptr) << dlerror();
    }
    Module(const Module &) = delete;
    Module &operator=(const Module &) = delete;
    ~Module() { dlclose(handle_); }
    HMODULE Handle() const { return reinterpret_cast<HMODULE>(handle_); }

  private:
    void *handle_;
};

TEST(Resources, AreFoundInTheProgramByTextAndNumber) {
    const std::string program = BytesOf("program.bin"), module = BytesOf("module.bin");
    void *self = dlopen(nullptr, RTLD_LAZY);
    for (const HMODULE main : {HMODULE{0}, reinterpret_cast<HMODULE>(self)}) {
        EXPECT_EQ(Found(main, "figure 1/ä", "image"), program);
        EXPECT_EQ(Found(main, "FIGURE 1/ä", "IMAGE"), program);
        EXPECT_EQ(Found(main, Number(101), "Image"), module);
        EXPECT_EQ(Found(main, "#101", "Image"), module);
        EXPECT_EQ(Found(main, "#7", Number(2)), program);
        EXPECT_EQ(Found(main, Number(7), "#2"), program);
        EXPECT_EQ(Found(main, "Empty", "Image"), "");
    }
    dlclose(self);
    const struct {
        const char *name, *type;
    } absent[] = {{"101", "Image"},       {"figure", "image"},      {"figure 1/ä", "sound"},
                  {"", "image"},          {"#", "image"},           {"#65637", "image"},
                  {"#101x", "image"},     {"#-101", "image"},       {"#18446744073709551717", "image"},
                  {Number(0), Number(0)}, {Number(65535), "image"}, {Number(7), "2"},
                  {"figure 1/ä", ""}};
    for (const auto &each : absent) {
        SetLastError(0);
        EXPECT_EQ(FindResourceA(0, each.name, each.type), 0u);
        EXPECT_EQ(GetLastError(), 1812u);
    }
    EXPECT_EQ(FindResourceA(0, std::string(100'000, 'a').c_str(), "image"), 0u);
}

TEST(Resources, BelongToTheirModuleAlone) {
    const Module module;
    EXPECT_EQ(Found(module.Handle(), "figure 1/ä", "image"), BytesOf("module.bin"));
    EXPECT_EQ(Found(0, "figure 1/ä", "image"), BytesOf("program.bin"));
    EXPECT_EQ(Found(module.Handle(), "OF THE \"MODULE\"", "image"), BytesOf("program.bin"));
    EXPECT_EQ(Found(0, "of the \"module\"", "image"), "none");
    EXPECT_EQ(Found(module.Handle(), "#101", "image"), "none");
    EXPECT_NE(dlsym(reinterpret_cast<void *>(module.Handle()), "fenlight_resource_n494d414745_n42454c4f57"),
              nullptr)
        << "the module's library is there, so that the next line can go wrong";
    EXPECT_EQ(Found(module.Handle(), "below", "image"), "none");
    // The C library exports thousands of symbols and holds no resource.
    void *library = dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(Found(reinterpret_cast<HMODULE>(library), "figure 1/ä", "image"), "none");
    dlclose(library);
}

TEST(Resources, AreNotFoundInForeignModules) {
    std::mt19937_64 random(31);
    int local = 0;
    for (int i = 0; i < 2000; ++i) {
        const HMODULE module = random() >> (random() % 64);
        if (module == 0) continue;
        EXPECT_EQ(Found(module, "figure 1/ä", "image"), "none") << module;
    }
    EXPECT_EQ(Found(reinterpret_cast<HMODULE>(&local), "figure 1/ä", "image"), "none");
}

TEST(Resources, TakeOneHandleHoweverOftenTheyAreFound) {
    const HRSRC first = FindResourceA(0, "#101", "image");
    const int before = CountHandles(HandleKind::Resource);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(FindResourceA(0, "#101", "image"), first);
    EXPECT_EQ(CountHandles(HandleKind::Resource), before);
}

}  // namespace
}  // namespace fenlight::platform
