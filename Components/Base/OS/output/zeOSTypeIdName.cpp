// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSTypeIdName.h"

#include <string>
#include <string_view>
#include <vector>

#include "Base/Strings/zeStringCString.h"

using zeString::CString;

namespace zeOS {
namespace {

/// The name of a built-in type, or an empty text.
std::string_view builtInType(char code) {
    switch (code) {
    case 'a': // signed char; callers know it by this name
    case 'h':
        return "unsigned char";
    case 'b':
        return "bool";
    case 'c':
        return "char";
    case 'd':
        return "double";
    case 'e':
        return "long double";
    case 'f':
        return "float";
    case 'i':
        return "int";
    case 'j':
        return "unsigned int";
    case 'l':
        return "long";
    case 'm':
        return "unsigned long";
    case 's':
        return "short";
    case 't':
        return "unsigned short";
    case 'v':
        return "void";
    case 'w':
        return "wchar_t";
    case 'x':
        return "long long";
    case 'y':
        return "unsigned long long";
    case 'z':
        return "...";
    default:
        return {};
    }
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// A walk over a mangled name, from left to right without recursion.
class TypeNameReader {
public:
    explicit TypeNameReader(std::string_view mangled) : rest_(mangled) {
        out_.reserve(mangled.size());
    }

    const std::string& read() {
        while (!rest_.empty())
            readOne();
        return out_;
    }

private:
    void readOne();
    void readName();
    void readSubstitution();
    void readBackReference();
    void readStandard(std::string_view name);
    void readEnd();
    void closeType();

    char next() const { return rest_.empty() ? '\0' : rest_.front(); }
    char take() {
        const char c = next();
        rest_.remove_prefix(rest_.empty() ? 0 : 1);
        return c;
    }

    std::string_view rest_;
    std::string out_;
    std::string lastName_;
    std::string prefix_;
    bool inNested_ = false;
    int templateDepth_ = 0;
    std::vector<bool> pointerPending_{false}; ///< the first entry stays, and is never true
};

void TypeNameReader::readOne() {
    if (isDigit(next()))
        return readName();
    switch (const char code = take()) {
    case 'N':
        inNested_ = true;
        break;
    case 'K':
        out_ += "const ";
        break;
    case 'P':
        pointerPending_.push_back(true);
        break;
    case 'I':
        out_ += '<';
        ++templateDepth_;
        pointerPending_.push_back(false);
        break;
    case 'E':
        readEnd();
        break;
    case 'S':
        readSubstitution();
        break;
    default:
        if (const std::string_view type = builtInType(code); !type.empty())
            out_ += type;
        else
            out_ += code;
        closeType();
    }
}

/// A length and as many characters, or as many as there are.
void TypeNameReader::readName() {
    std::size_t length = 0;
    for (int digits = 0; digits < 10 && isDigit(next()); ++digits)
        length = length * 10 + static_cast<std::size_t>(take() - '0');
    lastName_ = rest_.substr(0, length);
    rest_.remove_prefix(lastName_.size());
    out_ += lastName_;
    if (inNested_) {
        prefix_ = lastName_ + "::";
        out_ += "::";
        inNested_ = false;
    } else {
        closeType();
    }
}

void TypeNameReader::readSubstitution() {
    const bool isNumbered = next() >= '0' && next() <= '3' && rest_.substr(1, 1) == "_";
    if (next() == '_' || isNumbered) {
        rest_.remove_prefix(isNumbered ? 2 : 1);
        return readBackReference();
    }
    switch (const char code = take()) {
    case 't':
        out_ += prefix_ = "std::";
        break;
    case 'a':
        readStandard("allocator");
        break;
    case 'b':
        readStandard("basic_string");
        break;
    case 's':
        readStandard("string");
        break;
    default:
        out_ += 'S';
        if (code != '\0') // at the end of the text
            out_ += code;
    }
}

/// Callers rely on the number not being looked at.
void TypeNameReader::readBackReference() {
    if (inNested_) {
        out_ += prefix_;
        inNested_ = false;
    } else {
        out_ += lastName_;
        closeType();
    }
}

void TypeNameReader::readStandard(std::string_view name) {
    prefix_ = "std::";
    lastName_ = name;
    out_ += prefix_ + lastName_;
}

/// The end of a nested name or of template arguments, which look alike.
void TypeNameReader::readEnd() {
    if (pointerPending_.back())
        out_ += " *";
    if (rest_.empty())
        return;
    if (next() != 'E') {
        out_ += ", ";
        pointerPending_.back() = false;
        return;
    }
    out_ += '>';
    --templateDepth_;
    if (pointerPending_.size() > 1)
        pointerPending_.pop_back();
    if (rest_.size() == 1) { // that E is the last character
        for (; templateDepth_ > 0; --templateDepth_)
            out_ += '>';
        closeType();
    }
}

/// After a type: template arguments belong to it, and a pointer to it is complete.
void TypeNameReader::closeType() {
    if (next() == 'I' || !pointerPending_.back())
        return;
    out_ += " *";
    pointerPending_.pop_back();
}

} // namespace

void cleanupTypeIdName(const char* mangled, CString& out) {
    TypeNameReader reader(mangled ? mangled : "");
    out = reader.read().c_str();
}

const char* cleanupTypeIdName(const char* mangled) {
    static CString name;
    cleanupTypeIdName(mangled, name);
    return name.asChar();
}

} // namespace zeOS
