// SPDX-License-Identifier: Zlib
// Packs files into the library's containers and opens them.
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "commands.h"
#include "failure.h"
#include "password.h"

namespace fenpack {
namespace {

constexpr int kSuccess = 0;
constexpr int kFailed = 1;
constexpr int kWrongUse = 2;

constexpr const char *kUsage =
    "usage: fenpack pack   [options] FILE...   makes FILE.fpk of each\n"
    "       fenpack unpack [options] FILE...   makes FILE of each FILE.fpk\n"
    "       fenpack test   [options] FILE...   unpacks without writing\n"
    "       fenpack list   FILE...             shows sizes; needs no password\n"
    "options:\n"
    "  -o NAME               name of the output, for one FILE\n"
    "  --force               replace files that are there\n"
    "  --password            ask for a password\n"
    "  --password-file NAME  take the password from the first line of a file\n"
    "  --one                 pack into one container, also above 16 MB\n"
    "The inputs are kept. Exit status: 0 all done, 1 something failed, 2 wrong use.\n";

enum class Command { Pack, Unpack, Test, List };

struct Request {
    Command command = Command::List;
    Options options;
    std::vector<std::string> files;
    std::string passwordFile;
    bool asksPassword = false;
};

class WrongUse : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

Command ParseCommand(const std::string &name) {
    if (name == "pack") return Command::Pack;
    if (name == "unpack") return Command::Unpack;
    if (name == "test") return Command::Test;
    if (name == "list") return Command::List;
    throw WrongUse("there is no command " + name);
}

// Takes one option with its value off the arguments; gives the next one's index.
size_t ParseOption(const std::vector<std::string> &arguments, size_t index, Request &request) {
    const std::string &option = arguments[index];
    const auto value = [&]() -> const std::string & {
        if (index + 1 == arguments.size()) throw WrongUse(option + " needs a name");
        return arguments[++index];
    };
    if (option == "-o")
        request.options.output = value();
    else if (option == "--force")
        request.options.force = true;
    else if (option == "--one")
        request.options.inOne = true;
    else if (option == "--password")
        request.asksPassword = true;
    else if (option == "--password-file")
        request.passwordFile = value();
    else
        throw WrongUse("there is no option " + option);
    return index + 1;
}

Request ParseArguments(const std::vector<std::string> &arguments) {
    if (arguments.empty()) throw WrongUse("what is to be done?");
    Request request;
    request.command = ParseCommand(arguments[0]);
    bool takesOptions = true;
    for (size_t index = 1; index < arguments.size();) {
        const std::string &argument = arguments[index];
        if (takesOptions && argument == "--") {
            takesOptions = false;
            ++index;
        } else if (takesOptions && argument.size() > 1 && argument[0] == '-') {
            index = ParseOption(arguments, index, request);
        } else {
            request.files.push_back(argument);
            ++index;
        }
    }
    if (request.files.empty()) throw WrongUse("no file was named");
    if (!request.options.output.empty() && request.files.size() > 1) throw WrongUse("-o goes with one file");
    return request;
}

Password GetPassword(const Request &request) {
    if (!request.passwordFile.empty()) return ReadPasswordFile(request.passwordFile);
    if (request.asksPassword) return AskForPassword(request.command == Command::Pack);
    return {};
}

void DoFile(Command command, const std::string &file, const Options &options) {
    switch (command) {
        case Command::Pack:
            return PackFile(file, options);
        case Command::Unpack:
            return UnpackFile(file, options);
        case Command::Test:
            return TestFile(file, options);
        case Command::List:
            return ListFile(file);
    }
}

// A file that fails does not keep the others from being done.
int DoFiles(const Request &request) {
    int status = kSuccess;
    const auto report = [&](const char *message) {
        std::fprintf(stderr, "fenpack: %s\n", message);
        status = kFailed;
    };
    for (const std::string &file : request.files) {
        try {
            DoFile(request.command, file, request.options);
        } catch (const Failure &failure) {
            report(failure.what());
        } catch (const std::bad_alloc &) {
            report((file + ": not enough memory").c_str());
        }
    }
    return status;
}

int Run(const std::vector<std::string> &arguments) {
    try {
        if (!arguments.empty() && (arguments[0] == "--help" || arguments[0] == "-h")) {
            std::fputs(kUsage, stdout);
            return kSuccess;
        }
        Request request = ParseArguments(arguments);
        const Password password = GetPassword(request);
        request.options.password = password.Text();
        if (request.command == Command::List) ListHeading();
        const int status = DoFiles(request);
        return std::fflush(stdout) == 0 ? status : kFailed;
    } catch (const WrongUse &wrongUse) {
        std::fprintf(stderr, "fenpack: %s\n%s", wrongUse.what(), kUsage);
        return kWrongUse;
    } catch (const std::exception &failure) {
        std::fprintf(stderr, "fenpack: %s\n", failure.what());
        return kFailed;
    }
}

}  // namespace
}  // namespace fenpack

int main(int count, char **arguments) {
    return fenpack::Run({arguments + (count > 0 ? 1 : 0), arguments + count});
}
