// SPDX-License-Identifier: Zlib
#include "commands.h"

#include <cinttypes>
#include <cstdio>

#include "container_file.h"
#include "failure.h"
#include "output_file.h"
#include "progress.h"

namespace fenpack {
namespace {

void CheckPackable(const InputFile &file) {
    if (file.Size() < 2) throw Failure(file.Path() + ": files of 0 or 1 bytes can't be packed");
    if (file.Size() > kGreatestFile) throw Failure(file.Path() + ": larger than 2 GB, can't be packed");
}

std::string UnpackedName(const std::string &path) {
    const std::string suffix = kSuffix;
    if (path.size() <= suffix.size() || !path.ends_with(suffix))
        throw Failure(path + ": the name doesn't end in " + suffix + ", so -o must give the output's name");
    return path.substr(0, path.size() - suffix.size());
}

}  // namespace

void PackFile(const std::string &path, const Options &options) {
    InputFile input(path);
    CheckPackable(input);
    OutputFile output(options.output.empty() ? path + kSuffix : options.output, input.Mode(), options.force);
    const Progress progress("packing " + path, input.Size());
    for (const uint64_t size : PieceSizes(input.Size(), options.inOne)) {
        output.Write(PackPiece(input.Read(size), options.password, path));
        progress.Show(input.Position());
    }
    output.Finish();
}

void UnpackFile(const std::string &path, const Options &options) {
    InputFile input(path);
    OutputFile output(options.output.empty() ? UnpackedName(path) : options.output, input.Mode(),
                      options.force);
    const Progress progress("unpacking " + path, input.Size());
    while (auto container = ReadContainer(input)) {
        output.Write(UnpackContainer(*container, options.password, path));
        progress.Show(input.Position());
    }
    output.Finish();
}

void TestFile(const std::string &path, const Options &options) {
    InputFile input(path);
    {
        const Progress progress("testing " + path, input.Size());
        while (auto container = ReadContainer(input)) {
            UnpackContainer(*container, options.password, path);
            progress.Show(input.Position());
        }
    }
    std::printf("%s: good\n", path.c_str());
}

void ListHeading() { std::printf("%12s %12s %7s  %s\n", "original", "packed", "ratio", "name"); }

void ListFile(const std::string &path) {
    InputFile input(path);
    uint64_t original = 0;
    while (const auto container = ReadContainer(input)) original += container->sizes.original;
    std::printf("%12" PRIu64 " %12" PRIu64 " %6.1f%%  %s\n", original, input.Size(),
                100.0 * static_cast<double>(input.Size()) / static_cast<double>(original), path.c_str());
}

}  // namespace fenpack
