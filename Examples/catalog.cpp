// SPDX-License-Identifier: MIT

// The words of a program outside of its code. Each has a key, a fallback in the code, and, where a
// catalog is loaded, a translation. A catalog may lack words, or be wrong: the program works on.
//
//     $ catalog Ada 3
//     Hello, Ada!
//     There are 3 new messages.
//     $ echo '// German' > de.cat
//     $ echo 'mail.hello = "Guten Tag, {1}!"' >> de.cat
//     $ echo 'mail.many = "Für {1} liegen {2} \' >> de.cat
//     $ echo '             neue Nachrichten vor."' >> de.cat
//     $ catalog Ada 3 de.cat
//     Guten Tag, Ada!
//     Für Ada liegen 3 neue Nachrichten vor.
//     $ catalog Ada 1 de.cat
//     Guten Tag, Ada!
//     There is one new message.
//     $ catalog --check de.cat
//     de.cat lacks mail.one
//     $ echo 'mail.one.new = "Eine neue Nachricht"' >> de.cat
//     $ catalog Ada 1 de.cat 2>&1 | sed 's/ $//'
//     String file parsing error encountered, line 5, file de.cat:
//     Key string does not have valid format: mail.one.new = "Eine neue Nachricht"
//     Guten Tag, Ada!
//     There is one new message.

#include <clocale>
#include <cstdio>
#include <cstring>

#include "Base/Strings/zeStringIString.h"
#include "Base/Strings/zeStringTableManager.h"
#include "Base/Strings/zeStringTableStringTable.h"

namespace {

using zeString::IString;

/// A word of the program: what its code knows of it.
struct Word {
    const char* key; // Set and id: the set groups what belongs together.
    const wchar_t* fallback;
};

constexpr Word hello = {"mail.hello", L"Hello, {1}!"};
constexpr Word one = {"mail.one", L"There is one new message."};
constexpr Word many = {"mail.many", L"There are {2} new messages."};
constexpr Word allWords[] = {hello, one, many};

/// The translation, or the fallback. A copy: getString() may give back the fallback itself, which
/// lives here.
IString text(const Word& word) {
    const IString fallback(word.fallback);
    return zeStringTable::appStringTable().getString(word.key, fallback);
}

/// Marks, and no "%S": a text from outside must never be a format, since each "%" in it would take
/// an argument that may not be there. Translators may also put the marks in another order.
void print(const Word& word, const IString& first, const IString& second) {
    IString line = text(word);
    line.replace(L"{1}", first).replace(L"{2}", second);
    std::printf("%s\n", line.asMultibyte());
}

/// An error leaves the entries before it in the table, so that the program goes on with them. The
/// message ends in a line feed of its own.
bool loadCatalog(const char* name) {
    const zeUtil::Error error = zeStringTable::Manager::loadCatalog(name);
    std::fprintf(stderr, "%s", error.message());
    return error.code() == 0;
}

/// What a translator runs.
int check(const char* name) {
    bool isComplete = loadCatalog(name);
    for (const Word& word : allWords)
        if (!zeStringTable::appStringTable().keyExists(word.key)) {
            std::printf("%s lacks %s\n", name, word.key);
            isComplete = false;
        }
    return isComplete ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, ""); // For names of files, and for messages.
    if (argc == 3 && std::strcmp(argv[1], "--check") == 0)
        return check(argv[2]);
    if (argc != 3 && argc != 4) {
        std::fputs("usage: catalog NAME COUNT [CATALOG]\n       catalog --check CATALOG\n", stderr);
        return 2;
    }
    if (argc == 4)
        loadCatalog(argv[3]); // Before other threads read: the table has no lock.
    const IString name(argv[1]);
    const IString count(argv[2]);
    print(hello, name, count);
    print(count == L"1" ? one : many, name, count);
    return 0;
}
