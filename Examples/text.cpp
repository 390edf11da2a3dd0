// SPDX-License-Identifier: MIT

// Text on its way through a program: from bytes to characters, through changes, and back to bytes.
// Bytes have an encoding; characters (zeString::IString) have none, and are what one counts, cuts
// and compares.
//
//     $ text 'Grün ist der Apfel, 3 Äpfel sind grün.'
//     38 characters, 41 bytes of UTF-8
//     upper case: GRÜN IST DER APFEL, 3 ÄPFEL SIND GRÜN.
//     8 words, the longest is "Apfel,"
//     "grün" is at position 33
//     with another word: Rot ist der Apfel, 3 Äpfel sind rot.
//     the third word has 3 letters: der
//     $ text "$(printf 'cut off: \xC3')"
//     10 characters, 10 bytes of UTF-8 (repaired: it was not UTF-8)
//     upper case: CUT OFF: ?
//     3 words, the longest is "off:"

#include <clocale>
#include <cstdio>
#include <vector>

#include "Base/Strings/zeStringIString.h"
#include "Base/Strings/zeUtilSplit.h"

namespace {

using zeString::IString;

/// Prints a line in UTF-8. asUTF8() belongs to the string, and lasts until its next change.
void printLine(const IString& line) {
    std::printf("%s\n", line.asUTF8());
}

/// The formats of wide texts are wide, and %S takes a wide argument.
void printCounts(const IString& text, bool isClean) {
    IString line;
    line.format(L"%u characters, %u bytes of UTF-8", text.length(), text.asUTF8StoreSize() - 1);
    if (!isClean)
        line.append(L" (repaired: it was not UTF-8)");
    printLine(line);
}

void printUpperCase(const IString& text) {
    IString line(text); // A copy: copies are independent.
    line.toUpperCase(); // By the rules of the locale.
    line.prepend(L"upper case: ");
    printLine(line);
}

void printWords(const std::vector<IString>& words) {
    if (words.empty())
        return;
    const IString* longest = &words[0];
    for (const IString& word : words)
        if (word.length() > longest->length())
            longest = &word;
    IString line;
    line.format(L"%u words, the longest is \"%S\"", static_cast<unsigned int>(words.size()),
                longest->asWChar());
    printLine(line);
}

/// Positions count characters, whatever their number of bytes. npos says that nothing was found.
void printSearch(const IString& text) {
    const IString green(L"gr\u00FCn");
    const unsigned int place = text.find(green);
    if (place == IString::npos)
        return;
    IString line;
    line.format(L"\"%S\" is at position %u", green.asWChar(), place);
    printLine(line);
    IString changed(text);
    changed.replace(green, L"rot").replace(L"Gr\u00FCn", L"Rot");
    changed.prepend(L"with another word: ");
    printLine(changed);
}

void printThirdWord(const std::vector<IString>& words) {
    if (words.size() < 4)
        return;
    IString line;
    line.format(L"the third word has %u letters: %S", words[2].length(), words[2].asWChar());
    printLine(line);
}

} // namespace

int main(int argc, char** argv) {
    // What depends on the language follows the user's settings only after this call. Without it,
    // the locale is "C", where EncodingMultibyte is ASCII and no other letter has an upper case.
    std::setlocale(LC_ALL, "");
    if (argc != 2) {
        std::fputs("usage: text TEXT\n", stderr);
        return 2;
    }
    // Say in which encoding the bytes are, and look at `ok`: "?" stands for what is no text.
    bool ok = false;
    const IString text(argv[1], zeString::EncodingUTF8, &ok);
    const std::vector<IString> words = zeUtil::split(text, L' ', true);
    printCounts(text, ok || text.isEmpty());
    printUpperCase(text);
    printWords(words);
    printSearch(text);
    printThirdWord(words);
    return 0;
}
