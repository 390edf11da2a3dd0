// SPDX-License-Identifier: MIT

// What others need for the work of text.cpp, and the limits below which nothing can go.

#include <charconv>
#include <fstream>
#include <iomanip>
#include <sstream>

#include "IO/recordPeers.h"
#include <fmt/compile.h>
#include <fmt/os.h>

namespace {

using namespace peers;

constexpr size_t numberCount = 1'000'000;
constexpr auto general = std::chars_format::general;

const bench::ScratchFile scratch("text.peers");

// --- Records as lines of text --------------------------------------------------------------------

struct FprintfWriter : StdioFile {
    explicit FprintfWriter(const std::string& path) : StdioFile(path, "wb") {}
    void put(const Rec& r) {
        fprintf(file, "{ 2 0 %d %.16g %.16g %.16g %.7g %d %d \"%s\" %u }\n", r.id, r.x, r.y, r.z,
                double(r.w), r.kind, r.flag, r.name.c_str(), r.ref);
    }
};

struct OstreamWriter {
    explicit OstreamWriter(const std::string& path) : file(path, std::ios::binary) {}
    void put(const Rec& r) {
        file << "{ 2 0 " << r.id << ' ' << std::setprecision(16) << r.x << ' ' << r.y << ' ' << r.z
             << ' ' << std::setprecision(7) << r.w << ' ' << r.kind << ' ' << r.flag << " \""
             << r.name << "\" " << r.ref << " }\n";
    }

    std::ofstream file;
};

struct FmtWriter : StdioFile {
    explicit FmtWriter(const std::string& path) : StdioFile(path, "wb") {}
    void put(const Rec& r) {
        line.clear();
        fmt::format_to(
            std::back_inserter(line),
            FMT_COMPILE("{{ 2 0 {} {:.16g} {:.16g} {:.16g} {:.7g} {} {:d} \"{}\" {} }}\n"), r.id,
            r.x, r.y, r.z, r.w, r.kind, r.flag, r.name, r.ref);
        fwrite(line.data(), 1, line.size(), file);
    }

    fmt::memory_buffer line;
};

/// The limit: to_chars into one block, and write(2) when it is full.
struct ToCharsWriter : DescriptorFile {
    explicit ToCharsWriter(const std::string& path) : DescriptorFile(path, forWriting) {}
    ~ToCharsWriter() { flush(); }
    void put(const Rec& r) {
        append("{ 2 0 ");
        number(r.id);
        for (const double d : {r.x, r.y, r.z})
            number(d, general, 16);
        number(double(r.w), general, 7);
        number(int(r.kind));
        append(r.flag ? "1 \"" : "0 \"");
        append(r.name);
        append("\" ");
        number(r.ref);
        append("}\n");
        if (at - block.data() >= long(blockSize))
            flush();
    }
    void append(std::string_view text) { at += text.copy(at, text.size()); }
    void number(auto value, auto... format) {
        at = std::to_chars(at, at + 40, value, format...).ptr;
        *at++ = ' ';
    }
    void flush() {
        write(block.data(), size_t(at - block.data()));
        at = block.data();
    }

    std::vector<char> block = std::vector<char>(blockSize + 512);
    char* at = block.data();
};

struct IstreamReader {
    explicit IstreamReader(const std::string& path) : file(path) {}
    void get(Rec& r) {
        char brace;
        int type, reference;
        file >> brace >> type >> reference >> r.id >> r.x >> r.y >> r.z >> r.w >> r.kind >>
            r.flag >> r.name >> r.ref >> brace;
    }

    std::ifstream file;
};

struct FscanfReader : StdioFile {
    explicit FscanfReader(const std::string& path) : StdioFile(path, "rb") {}
    void get(Rec& r) {
        int flag;
        char name[64];
        const int found = fscanf(file, " { 2 0 %d %lf %lf %lf %f %hd %d \"%63[^\"]\" %u }", &r.id,
                                 &r.x, &r.y, &r.z, &r.w, &r.kind, &flag, name, &r.ref);
        bench::require(found == 9, "a record was read");
        r.flag = flag != 0;
        r.name = name;
    }
};

/// Reads lines; `Parser` takes numbers off their front.
template<class Parser>
struct LineReader : StdioFile {
    explicit LineReader(const std::string& path) : StdioFile(path, "rb") {}
    void get(Rec& r) {
        char line[1024];
        bench::require(fgets(line, sizeof line, file) != nullptr, "a line was read");
        Parser parse{line + 6};
        int flag = 0;
        parse(r.id);
        parse(r.x);
        parse(r.y);
        parse(r.z);
        parse(r.w);
        parse(r.kind);
        parse(flag);
        r.flag = flag != 0;
        const char* const name = strchr(parse.at, '"') + 1;
        const char* const end = strchr(name, '"');
        r.name.assign(name, end);
        parse.at = end + 2;
        parse(r.ref);
    }
};

struct StrtolParser {
    void operator()(double& value) { value = strtod(at, &end()); }
    void operator()(float& value) { value = strtof(at, &end()); }
    void operator()(uint32_t& value) { value = uint32_t(strtoul(at, &end(), 10)); }
    template<class Integer>
    void operator()(Integer& value) {
        value = Integer(strtol(at, &end(), 10));
    }
    char*& end() { return const_cast<char*&>(at); }

    const char* at;
};

struct FromCharsParser {
    void operator()(auto& value) { at = std::from_chars(at, at + 64, value).ptr + 1; }

    const char* at;
};

// --- Single numbers and texts --------------------------------------------------------------------

/// A row that writes each of `values` into a slot.
template<class Value, class Write>
void regFormat(const std::string& name, const std::vector<Value>& values, Write write) {
    bench::reg(name, [&values, write](State& s) {
        char slot[64];
        for (auto _ : s)
            for (const Value value : values) {
                write(slot, value);
                bench::keep(slot);
            }
        bench::items(s, numberCount);
    });
}

/// A row that adds up the numbers at `starts`.
template<class Parse>
void regParse(const std::string& name, const std::vector<const char*>& starts, Parse parse) {
    bench::reg(name, [&starts, parse](State& s) {
        for (auto _ : s) {
            double sum = 0;
            for (const char* const start : starts)
                sum += parse(start);
            bench::keep(sum);
        }
        bench::items(s, numberCount);
    });
}

/// A row that makes a fresh string of a count.
template<class Format>
void regMessage(const std::string& peer, Format format) {
    bench::reg("format_string/" + peer, [format](State& s) {
        int i = 0;
        for (auto _ : s)
            bench::keep(format(++i));
    });
}

/// The rows of records as lines of text.
void regRecords(const std::string& workload, Records records) {
    const std::string& path = scratch.path;
    const std::string write = workload + "_write/";
    regWriting<FprintfWriter>("fprintf", path, write, records);
    regWriting<OstreamWriter>("ostream", path, write, records);
    regWriting<FmtWriter>("fmt", path, write, records);
    regWriting<ToCharsWriter>("limit_to_chars", path, write, records);
    const std::string read = workload + "_read/";
    regReading<ToCharsWriter, IstreamReader>("istream", path, read, records);
    regReading<ToCharsWriter, FscanfReader>("fscanf", path, read, records);
    regReading<ToCharsWriter, LineReader<StrtolParser>>("strtol_strtod", path, read, records);
    regReading<ToCharsWriter, LineReader<FromCharsParser>>("limit_from_chars", path, read, records);
}

const bool registered = [] {
    regRecords("small", bench::recs);
    regRecords("short", bench::shortRecs);

    static std::vector<int> ints(numberCount);
    bench::Rng random(6);
    for (int& i : ints)
        i = int(random()) >> random.below(24);
    regFormat("format_int/snprintf", ints,
              [](char* slot, int i) { snprintf(slot, 28, "%ld", long(i)); });
    regFormat("format_int/fmt", ints,
              [](char* slot, int i) { *fmt::format_to(slot, FMT_COMPILE("{}"), i) = 0; });
    regFormat("format_int/limit_to_chars", ints,
              [](char* slot, int i) { *std::to_chars(slot, slot + 32, long(i)).ptr = 0; });

    static const std::vector<double> doubles = bench::doubles(numberCount, 5);
    regFormat("format_double/snprintf", doubles,
              [](char* slot, double d) { snprintf(slot, 64, "%.16g", d); });
    regFormat("format_double/fmt_16g", doubles,
              [](char* slot, double d) { *fmt::format_to(slot, FMT_COMPILE("{:.16g}"), d) = 0; });
    regFormat("format_double/to_chars_16g", doubles, [](char* slot, double d) {
        *std::to_chars(slot, slot + 64, d, general, 16).ptr = 0;
    });
    regFormat("format_double/limit_to_chars_shortest", doubles,
              [](char* slot, double d) { *std::to_chars(slot, slot + 64, d).ptr = 0; });

    static std::vector<char> text(24 * numberCount + 64);
    static std::vector<const char*> starts;
    for (char* at = text.data(); const double d : doubles) {
        starts.push_back(at);
        at += snprintf(at, 64, "%.16g ", d);
    }
    regParse("parse_double/strtod", starts, [](const char* at) { return strtod(at, nullptr); });
    regParse("parse_double/limit_from_chars", starts, [](const char* at) {
        double d = 0;
        std::from_chars(at, at + 32, d);
        return d;
    });

    regMessage("snprintf_std_string", [](int i) {
        char slot[256];
        snprintf(slot, 256, "%s: %d of %d (%.3f)", "loading model", i, 1000, i * 0.001);
        return std::string(slot);
    });
    regMessage("fmt", [](int i) {
        return fmt::format(FMT_COMPILE("{}: {} of {} ({:.3f})"), "loading model", i, 1000,
                           i * 0.001);
    });
    regMessage("ostringstream", [](int i) {
        std::ostringstream message;
        message << "loading model: " << i << " of " << 1000 << " (" << std::fixed
                << std::setprecision(3) << i * 0.001 << ")";
        return message.str();
    });
    regMessage("swprintf_std_wstring", [](int i) {
        wchar_t slot[256];
        swprintf(slot, 256, L"%S: %d of %d (%.3f)", L"loading model", i, 1000, i * 0.001);
        return std::wstring(slot);
    });
    return true;
}();

} // namespace
