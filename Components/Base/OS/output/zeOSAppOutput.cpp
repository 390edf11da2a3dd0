// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSAppOutput.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <ctime>
#include <string>
#include <string_view>

#include "Base/Strings/zeStringCString.h"
#include "Base/Utility/zeReferenceCount.h"
#include "Base/Utility/zeUtilWrap.h"

using zeString::CString;
using zeString::VariadicArguments;

namespace zeOS {

class AppOutputStreamImpl : public ze::ImplBase {
public:
    std::FILE* file = nullptr;
    int level = 0;
    int indent = 0;
    CString indentText; ///< `indent` spaces
    bool ownsFile = false;
    bool buffered = false;
    bool atLineStart = true;
};

namespace {

constexpr int tabWidth = 4;
constexpr int anyLevel = INT_MIN; ///< at most every level that a stream can have

/// `format` with `indent` before each line that begins in it. The arguments are not looked at:
/// callers rely on their newlines staying as they are.
std::string indented(std::string_view format, const char* indent, bool& atLineStart) {
    std::string result;
    while (!format.empty()) {
        if (atLineStart)
            result += indent;
        const std::size_t newline = format.find('\n');
        atLineStart = newline != std::string_view::npos;
        const std::size_t length = atLineStart ? newline + 1 : format.size();
        result += format.substr(0, length);
        format.remove_prefix(length);
    }
    return result;
}

void print(AppOutputStreamImpl& stream, const char* format, va_list arguments) {
    if (stream.indent > 0) {
        const std::string lines = indented(format, stream.indentText.asChar(), stream.atLineStart);
        std::vfprintf(stream.file, lines.c_str(), arguments);
    } else {
        if (const std::string_view text = format; !text.empty())
            stream.atLineStart = text.back() == '\n';
        std::vfprintf(stream.file, format, arguments);
    }
    if (!stream.buffered)
        std::fflush(stream.file);
}

} // namespace

// AppOutputStream

AppOutputStream::AppOutputStream(bool buffered) : impl_(new AppOutputStreamImpl) {
    impl_->buffered = buffered;
}

AppOutputStream::~AppOutputStream() {
    close();
    delete impl_;
}

bool AppOutputStream::open(const zeString::IString& name, bool append) {
    impl_->atLineStart = true;
    close();
    impl_->ownsFile = name != L"-";
    if (impl_->ownsFile)
        impl_->file = std::fopen(name.asUTF8(), append ? "ae" : "we"); // close-on-exec
    else
        impl_->file = stdout;
    return ok();
}

void AppOutputStream::close() {
    if (impl_->file && impl_->ownsFile)
        std::fclose(impl_->file);
    impl_->file = nullptr;
}

bool AppOutputStream::ok() const {
    return impl_->file != nullptr;
}

void AppOutputStream::setLevel(int level) {
    if (ok())
        impl_->level = level;
}

int AppOutputStream::getLevel() const {
    return impl_->level;
}

int AppOutputStream::setIndentLevel(int spaces) {
    const int before = impl_->indent;
    if (ok()) {
        const int indent = std::max(spaces, 0);
        impl_->indentText = CString(static_cast<unsigned int>(indent), ' ');
        impl_->indent = indent;
    }
    return before;
}

int AppOutputStream::increaseIndentLevel() {
    return setIndentLevel(zeUtil::wrappedSum(impl_->indent, tabWidth));
}

int AppOutputStream::decreaseIndentLevel() {
    return setIndentLevel(impl_->indent - tabWidth);
}

int AppOutputStream::getIndentLevel() const {
    return impl_->indent;
}

std::FILE* AppOutputStream::getFile() {
    return impl_->file;
}

void AppOutputStream::operator()(const char* format, ...) const {
    VariadicArguments arguments;
    va_start(arguments.list, format);
    printArg(format, arguments.list);
}

void AppOutputStream::printf(const char* format, ...) const {
    VariadicArguments arguments;
    va_start(arguments.list, format);
    printArg(format, arguments.list);
}

void AppOutputStream::printArg(const char* format, va_list arguments) const {
    printArg(anyLevel, format, arguments);
}

void AppOutputStream::operator()(int level, const char* format, ...) const {
    if (!prints(level))
        return;
    VariadicArguments arguments;
    va_start(arguments.list, format);
    printArg(format, arguments.list);
}

void AppOutputStream::printf(int level, const char* format, ...) const {
    if (!prints(level))
        return;
    VariadicArguments arguments;
    va_start(arguments.list, format);
    printArg(format, arguments.list);
}

void AppOutputStream::printArg(int level, const char* format, va_list arguments) const {
    if (prints(level) && format)
        print(*impl_, format, arguments);
}

void AppOutputStream::timestamp() const {
    const std::time_t now = std::time(nullptr);
    char text[26]; // what ctime_r asks for
    printf("Timestamp: %s", ::ctime_r(&now, text));
}

const char* AppOutputStream::elapsed(double seconds) const {
    static CString text;
    if (!ok()) {
        text = "";
    } else if (!(seconds >= 60)) { // also what is not a number
        text.format("%.3f seconds", seconds);
    } else {
        constexpr double longest = INT_MAX * 60.0;
        const double shown = std::min(seconds, longest);
        text.format("%02d:%02d minutes", static_cast<int>(shown / 60),
                    static_cast<int>(std::fmod(shown, 60)));
    }
    return text.asChar();
}

const char* AppOutputStream::plural(int n) {
    return n == 1 ? "" : "s";
}

const char* AppOutputStream::aBool(bool value) {
    return value ? "true" : "false";
}

bool AppOutputStream::prints(int level) const {
    return impl_->file && level <= impl_->level;
}

// AppOutput

AppOutput AppOutput::s_instance;

AppOutput::AppOutput() : status(false), log(false), application1(false), application2(false) {}

AppOutput& AppOutput::getInstance() {
    return s_instance;
}

void AppOutput::setLevel(int level) {
    for (AppOutputStream* stream : {&status, &log, &application1, &application2})
        stream->setLevel(level);
}

void AppOutput::error(const char* format, ...) const {
    VariadicArguments arguments;
    va_start(arguments.list, format);
    print(anyLevel, format, arguments.list);
}

void AppOutput::error(int level, const char* format, ...) const {
    VariadicArguments arguments;
    va_start(arguments.list, format);
    print(level, format, arguments.list);
}

void AppOutput::info(const char* format, ...) const {
    VariadicArguments arguments;
    va_start(arguments.list, format);
    print(anyLevel, format, arguments.list);
}

void AppOutput::info(int level, const char* format, ...) const {
    VariadicArguments arguments;
    va_start(arguments.list, format);
    print(level, format, arguments.list);
}

/// Both streams read all arguments, so that each needs a list of its own.
void AppOutput::print(int level, const char* format, va_list arguments) const {
    for (const AppOutputStream* stream : {&status, &log})
        if (stream->prints(level)) {
            VariadicArguments copy;
            va_copy(copy.list, arguments);
            stream->printArg(format, copy.list);
        }
}

// AppOutputStatusTab

AppOutputStatusTab::AppOutputStatusTab(int level)
    : active_(AppOutput::getInstance().status.getLevel() >= level) {
    if (active_)
        AppOutput::getInstance().status.increaseIndentLevel();
}

AppOutputStatusTab::~AppOutputStatusTab() {
    if (active_)
        AppOutput::getInstance().status.decreaseIndentLevel();
}

} // namespace zeOS
