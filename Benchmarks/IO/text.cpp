// SPDX-License-Identifier: MIT

// Text packet files, and the conversion of numbers and formatting of strings beneath them.
// small: 200,000 records of nine values as text packets, to and from one file (as in packets.cpp).
// short: the same with short numbers in place of those that need all digits.
// format_int: one million numbers into a slot. format_string: one message into a fresh string.

#include "Base/Strings/zeStringCString.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeNumberText.h"
#include "Support/RecordFile.h"
#include "Support/Workload.h"

namespace {

constexpr size_t numberCount = 1000000;

const bench::ScratchFile scratch("text");

void regRecords(const std::string& workload, const std::vector<bench::Rec>& (*records)(size_t)) {
    const auto write = [records] {
        bench::writeFile<bench::RecordType>(
            scratch.path, ioWriteAscii, [records](ioWriteContext& context, const auto* type) {
                for (const bench::Rec& r : records(bench::recordCount))
                    bench::RecordType::write(context, type, r);
            });
    };
    bench::reg(workload + "_write/ours", [write](State& s) {
        for (auto _ : s)
            write();
        bench::items(s, bench::recordCount);
    });
    bench::reg(workload + "_read/ours", [write](State& s) {
        write();
        for (auto _ : s)
            bench::readRecords(scratch.path);
        bench::items(s, bench::recordCount);
    });
}

const bool registered = [] {
    regRecords("small", bench::recs);
    regRecords("short", bench::shortRecs);
    bench::reg("format_int/ours", [](State& s) {
        bench::Rng random(6);
        std::vector<int> numbers(numberCount);
        for (int& i : numbers)
            i = int(random()) >> random.below(24);
        for (auto _ : s)
            for (int i : numbers)
                bench::keep(ze::int64ToAscii(i, 0));
        bench::items(s, numberCount);
    });
    bench::reg("format_string/ours", [](State& s) {
        int i = 0;
        for (auto _ : s) {
            ++i;
            zeString::CString text;
            text.format("%s: %d of %d (%.3f)", "loading model", i, 1000, i * 0.001);
            bench::keep(text);
        }
    });
    bench::reg("format_string/ours_wide", [](State& s) {
        int i = 0;
        for (auto _ : s) {
            ++i;
            zeString::IString text;
            text.format(L"%S: %d of %d (%.3f)", L"loading model", i, 1000, i * 0.001);
            bench::keep(text);
        }
    });
    return true;
}();

} // namespace
