// SPDX-License-Identifier: MIT

// Starts other programs, each argument being a command line, and says how they ended. No shell is
// involved, so that nothing but blanks and double quotes means anything. With --lines it reads what
// they print; with --background it does not wait for them.
//
//     $ programs 'printf "%s\n" "two words" $HOME' 'test -f none' 'sh -c "kill -9 $$"'
//     two words
//     $HOME
//     printf: exit code 0
//     test: exit code 1
//     sh: ended by a signal
//     $ echo 'only words' > words && chmod +x words
//     $ programs nosuch ./words 'echo "open'
//     programs: nosuch: program not found.
//     programs: exec() failed: Exec format error
//     programs: echo "open: column 6: Unmatched double quote
//     $ programs --lines 'printf "%s\n" one two three' 'sh -c "echo oh; exit 3"'
//     3 lines, the first is: one
//     printf: exit code 0
//     1 lines, the first is: oh
//     sh: exit code 3
//     $ mkfifo news && programs --background 'sh -c "echo later > news"' && cat news
//     sh: started
//     later

#include <clocale>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "Base/OS/zeOSFileOperations.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/OS/zeOSProcessManager.h"
#include "Base/OS/zeOSTempFiles.h"
#include "Base/Strings/zeUtilSplit.h"

namespace {

using Arguments = std::vector<zeString::IString>;

const zeOS::Filename here; // Programs run in the current directory.

bool fail(const zeUtil::Error& error) {
    std::fprintf(stderr, "programs: %s\n", error.message());
    return false;
}

/// Takes a command line apart. Empty, with a message, if that is not possible.
Arguments argumentsOf(const char* command) {
    std::vector<zeString::CString> words;
    if (const zeUtil::Error error = zeUtil::splitWithQuotes(command, words); error.code() != 0) {
        std::fprintf(stderr, "programs: %s: column %d: %s\n", command, error.code(),
                     error.message());
        return {};
    }
    if (words.empty())
        std::fputs("programs: a command is empty\n", stderr);
    return Arguments(words.begin(), words.end());
}

/// Runs a program that shares our streams, and waits for it. An error says that it did not run;
/// what it thinks of its work is the exit code, -1 if a signal ended it.
bool run(const Arguments& args) {
    const zeOS::SyncResult result = zeOS::ProcessManager::getInstance()->startSync(args, here);
    if (result.error.code() != 0)
        return fail(result.error);
    const char* name = args[0].asMultibyte();
    if (result.exitCode == -1)
        std::printf("%s: ended by a signal\n", name);
    else
        std::printf("%s: exit code %ld\n", name, result.exitCode);
    return result.exitCode == 0;
}

/// Runs a program whose output goes to a file, and reads the file. A shell redirects the output and
/// then becomes the program, which gets its arguments untouched by the shell. `set -C` makes it
/// refuse a file that somebody else has put there.
bool runAndRead(const Arguments& args) {
    const zeOS::Filename output = zeOS::createTmpFilename(L"out", L"programs");
    Arguments redirected = {L"sh", L"-c", L"set -C; exec \"$@\" > \"$0\"", output.path()};
    redirected.insert(redirected.end(), args.begin(), args.end());
    const zeOS::SyncResult result =
        zeOS::ProcessManager::getInstance()->startSync(redirected, here);
    if (result.error.code() != 0)
        return fail(result.error);
    std::ifstream file(output.path().asUTF8());
    std::string first;
    std::string other;
    int count = std::getline(file, first) ? 1 : 0;
    while (std::getline(file, other))
        ++count;
    zeOS::fileDelete(output);
    std::printf("%d lines, the first is: %s\n%s: exit code %ld\n", count, first.c_str(),
                args[0].asMultibyte(), result.exitCode);
    return result.exitCode == 0;
}

/// Starts a program and leaves it to itself. It is known to run when this returns, but nobody here
/// learns how it ends.
bool start(const Arguments& args) {
    const zeUtil::Error error = zeOS::ProcessManager::getInstance()->startAsync(args, here);
    if (error.code() != 0)
        return fail(error);
    std::printf("%s: started\n", args[0].asMultibyte());
    return true;
}

} // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, ""); // arguments are in the user's encoding
    const std::string_view option = argc > 1 ? argv[1] : "";
    const bool reads = option == "--lines";
    const bool leaves = option == "--background";
    const int begin = reads || leaves ? 2 : 1;
    if (argc == begin) {
        std::fputs("usage: programs [--lines | --background] COMMAND...\n", stderr);
        return 2;
    }
    bool isGood = true;
    for (int i = begin; i < argc; ++i) {
        std::fflush(stdout); // what we print comes before what the program prints
        const Arguments args = argumentsOf(argv[i]);
        isGood &= !args.empty() && (reads ? runAndRead(args) : leaves ? start(args) : run(args));
    }
    return isGood ? 0 : 1;
}
