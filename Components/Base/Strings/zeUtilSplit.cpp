// SPDX-License-Identifier: MIT

#include "Base/Strings/zeUtilSplit.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "Base/Strings/zeStringCharacter.h"
#include "Base/Strings/zeStringTextImpl.h"

namespace zeUtil {

using zeString::CString;
using zeString::IString;

namespace {

constexpr std::size_t none = std::string_view::npos;

std::string_view view(const CString& text) {
    return {text.asChar(), text.length()};
}

/// Ends at the first terminator, as every copy of a wide text does.
std::wstring_view view(const IString& text) {
    return text.asWChar();
}

/// A wide string cannot be moved: collecting views first avoids copies while the vector grows.
template<class String, class View>
std::vector<String> strings(const std::vector<View>& views) {
    std::vector<String> result;
    result.reserve(views.size());
    for (const View& item : views)
        result.emplace_back(item.data(), static_cast<int>(item.size()));
    return result;
}

template<class String, class IsSeparator>
std::vector<String> splitAt(const String& string, IsSeparator isSeparator, bool skipEmpty,
                            bool keepSeparators) {
    const auto text = view(string);
    std::vector<decltype(text.substr())> items;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isSeparator(text[i]))
            continue;
        if (begin < i || !(skipEmpty || keepSeparators))
            items.push_back(text.substr(begin, i - begin));
        if (keepSeparators)
            items.push_back(text.substr(i, 1));
        begin = i + 1;
    }
    if (begin < text.size())
        items.push_back(text.substr(begin));
    return strings<String>(items);
}

template<class String>
String joinAll(const std::vector<String>& items) {
    unsigned int length = 0;
    for (const String& item : items)
        length += item.length();
    String result;
    result.reserve(length);
    for (const String& item : items)
        result.append(item);
    return result;
}

/// Errors count columns from 1, so that no position is a success.
int column(std::size_t index) {
    return static_cast<int>(index + 1);
}

Error unmatchedQuote(std::size_t index) {
    return Error(column(index), "Unmatched double quote");
}

/// Reads a line item by item.
class Reader {
public:
    explicit Reader(const CString& line) : text_(view(line)) {}

    /// Moves to the first character of the next item. False at the end of the line.
    bool nextItem() {
        while (!atEnd() && isSpace())
            ++pos_;
        return !atEnd();
    }

    /// Reads an item that is quoted as a whole or not at all.
    Error readQuoted(std::string& item);
    /// Reads an item in which quotes and backslashes may stand anywhere.
    Error readEscaped(std::string& item);

private:
    bool atEnd() const { return pos_ == text_.size(); }
    bool isSpace() const { return zeString::isSpace(text_[pos_]); }

    std::string_view text_;
    std::size_t pos_ = 0;
};

using ReadItem = Error (Reader::*)(std::string& item);

Error Reader::readQuoted(std::string& item) {
    if (text_[pos_] != '"') {
        for (; !atEnd() && !isSpace(); ++pos_) {
            if (text_[pos_] == '"')
                return Error(column(pos_ - 1), "Unexpected character before a double quote: '%c'",
                             text_[pos_ - 1]);
            item += text_[pos_];
        }
        return Error();
    }
    const std::size_t close = text_.find('"', pos_ + 1);
    if (close == none)
        return unmatchedQuote(pos_);
    item = text_.substr(pos_ + 1, close - pos_ - 1);
    pos_ = close + 1;
    if (!atEnd() && !isSpace())
        return Error(column(pos_), "Unexpected character after double quote: '%c'", text_[pos_]);
    return Error();
}

Error Reader::readEscaped(std::string& item) {
    std::size_t open = none; // where a quote is open
    for (; !atEnd() && (open != none || !isSpace()); ++pos_) {
        if (text_[pos_] == '"') {
            open = open == none ? pos_ : none;
            continue;
        }
        if (text_[pos_] == '\\') {
            if (++pos_ == text_.size())
                return Error(column(pos_ - 1), "Single backslash character");
            if (text_[pos_] != '\\' && text_[pos_] != '"')
                return Error(column(pos_), "Illegal escape of character '%c'", text_[pos_]);
        }
        item += text_[pos_];
    }
    return open == none ? Error() : unmatchedQuote(open);
}

Error splitLine(const CString& text, ReadItem readItem, std::vector<CString>& out) {
    out.clear();
    std::vector<std::string> items;
    Error result;
    for (Reader reader(text); result.code() == 0 && reader.nextItem();) {
        std::string item;
        result = (reader.*readItem)(item);
        if (result.code() == 0)
            items.push_back(std::move(item));
    }
    out = strings<CString>(items);
    return result;
}

bool isNewLine(char c) {
    return zeString::isNewLine(c);
}

} // namespace

std::vector<CString> split(const CString& text, char separator, bool skipEmpty,
                           bool keepSeparators) {
    return splitAt(text, zeString::detail::equals(separator), skipEmpty, keepSeparators);
}

std::vector<CString> split(const CString& text, bool (*test)(char), bool skipEmpty,
                           bool keepSeparators) {
    return splitAt(text, test, skipEmpty, keepSeparators);
}

std::vector<IString> split(const IString& text, wchar_t separator, bool skipEmpty,
                           bool keepSeparators) {
    return splitAt(text, zeString::detail::equals(separator), skipEmpty, keepSeparators);
}

std::vector<IString> split(const IString& text, bool (*test)(wchar_t), bool skipEmpty,
                           bool keepSeparators) {
    return splitAt(text, test, skipEmpty, keepSeparators);
}

CString join(const std::vector<CString>& items) {
    return joinAll(items);
}

IString join(const std::vector<IString>& items) {
    return joinAll(items);
}

Error splitWithQuotes(const CString& text, std::vector<CString>& out) {
    return splitLine(text, &Reader::readQuoted, out);
}

Error splitWithQuotesAndBackslash(const CString& text, std::vector<CString>& out) {
    return splitLine(text, &Reader::readEscaped, out);
}

std::vector<CString> splitMultiLines(const CString& text) {
    std::vector<CString> lines = splitAt(text, isNewLine, false, false);
    // Unlike a separator, the end of a line also begins a line, at the end of the text too.
    if (text.isEmpty() || isNewLine(text[text.last()]))
        lines.emplace_back();
    return lines;
}

unsigned int numMultiLines(const CString& text) {
    const std::string_view characters = view(text);
    return 1 + static_cast<unsigned int>(
                   std::count_if(characters.begin(), characters.end(), isNewLine));
}

std::vector<CString> removeDuplicated(const std::vector<CString>& items) {
    std::vector<std::string_view> sorted;
    sorted.reserve(items.size());
    for (const CString& item : items)
        sorted.push_back(view(item));
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    return strings<CString>(sorted);
}

} // namespace zeUtil
