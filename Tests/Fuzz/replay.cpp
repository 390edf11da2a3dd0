// SPDX-License-Identifier: MIT

// Gives a target each file of the folders named on the command line: its corpus as a test. Small
// files come cut and damaged at every byte, too.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr std::size_t smallFile = 1024;

void run(const std::string& bytes) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

} // namespace

int main(int argc, char** argv) {
    int files = 0;
    for (int i = 1; i < argc; ++i)
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::printf("%s\n", entry.path().c_str());
            std::fflush(stdout);
            std::ifstream file(entry.path(), std::ios::binary);
            std::string bytes{std::istreambuf_iterator<char>(file), {}};
            run(bytes);
            ++files;
            for (std::size_t at = 0; bytes.size() <= smallFile && at < bytes.size(); ++at) {
                run(bytes.substr(0, at));
                for (const int flip : {0x01, 0xFE}) {
                    const char whole = bytes[at];
                    bytes[at] = static_cast<char>(whole ^ flip);
                    run(bytes);
                    bytes[at] = whole;
                }
            }
        }
    return files > 0 ? 0 : 1;
}
