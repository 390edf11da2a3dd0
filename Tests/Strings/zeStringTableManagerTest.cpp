// SPDX-License-Identifier: MIT

#include "Base/Strings/zeStringTableManager.h"

#include <cstring>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "Base/OS/zeOSFilename.h"
#include "Base/Strings/zeStringTableStringTable.h"
#include "Support/FaultTrial.h"
#include "Support/Locale.h"
#include "Support/TempFolder.h"

using zeString::IString;
using zeStringTable::appStringTable;
using zeStringTable::Key;
using zeStringTable::Manager;

namespace {

const std::string mark = "\xEF\xBB\xBF"; // a byte order mark

/// In a UTF-8 locale, so that messages hold any text.
class Catalog : public support::Utf8LocaleTest {
protected:
    zeUtil::Error load(const std::string& content) {
        appStringTable().clear();
        return Manager::loadCatalog(IString(folder.write("c", content).c_str()));
    }

    /// "key=value;" for each, in the order of the keys.
    static std::string entries() {
        std::vector<Key> keys;
        appStringTable().getKeys([](const Key&, const Key&) { return 0; }, "", keys);
        std::string result;
        for (const Key& key : keys) {
            const IString& value = appStringTable().getString(key, IString());
            result += std::string(key.value().asChar()) + "=" + value.asUTF8() + ";";
        }
        return result;
    }

    TempFolder folder{TempFolder::memory()};
};

const char* const noPair = "Expected idToken = \"quoted value string\" format";
const char* const noQuotes = "Expected quotes surrounding value string. Illegal character(s) "
                             "encountered at start or end";
const char* const noAscii = "Key string contains non-ascii characters";
const char* const noKey = "Key string does not have valid format";
const char* const noUtf8 = "Error interpreting input as UTF-8";

} // namespace

TEST_F(Catalog, FillsTheTableOfTheApplication) {
    // A piece of 4097 bytes is a line: the second begins a comment, or is joined.
    const std::string piece = "a.b = \"" + std::string(4089, 'x');
    const std::pair<std::string, std::string> rows[] = {
        {"a.b = \"x\"\nc.d = \"y\"\n", "a.b=x;c.d=y;"},
        {" \t a.b\t =\t \"x\" \t\r\n\n  \n\r\n", "a.b=x;"},
        {"a.bX= \"x\"", "a.b=x;"}, // whatever stands before the "=" goes
        {mark + "a.b = \"x\"\n", "a.b=x;"},
        {"a.b = \"\xC3\xA4\xE6\x97\xA5\xF0\x9F\x98\x80\"",
         "a.b=\xC3\xA4\xE6\x97\xA5\xF0\x9F\x98\x80;"},
        {std::string("a.b = \"x\"\0\"\nc.d = \"y\"", 22),
         "a.b=x;c.d=y;"}, // a zero byte ends a line
        {std::string("\0a\na.b = \"x\"", 12), "a.b=x;"},
        // Comments.
        {"//a.b = \"x\"\nx// a = b\n// \"\n  // \"quoted\"", ""},
        {"  // no quote: kept, and joined \\\n", ""},
        {"a.b \\ // \"note\"\n= \"x\"", "a.b=x;"}, // cut with the blank before it
        {"a.b \\X// \"note\"\n= \"x\"", "a.b=x;"},
        {"a.b = \"http://x\"", "a.b=http://x;"},
        {"a.b \\\n // skipped \"\n= \"x\"", "a.b=x;"},
        // Continuations.
        {"a.b = \"x \\\n  y\\\n z\"", "a.b=x yz;"},
        {"a.b = \"x\\\n// c \\\n\n  \ny\"", "a.b=xy;"},
        {"a.b = \"x\"\nc.d = \"y\\", "a.b=x;"},     // left open at the end
        {"a.b = \"one\\\\\ntwo\"", "a.b=one\two;"}, // a backslash that is left makes a tab
        {piece + "\\\ny\"", "a.b=" + std::string(4089, 'x') + "y;"},
        {piece + "\\" + "y\"",
         "a.b=" + std::string(4089, 'x') + "y;"}, // a piece of just that length
        // Values.
        {"a.b = \"", "a.b=;"}, // one quote is both
        {"a.b = \"a=b = \"\"c\"\"\"", "a.b=a=b = \"c\";"},
        {"a.b = \"\\n\\t\\r\\n\\r\"", "a.b=\n\t\n\\r;"},
        {"a.b = \"say \\\"x\\\"\"", "a.b=say \"x\";"},
        {"a.b = \"\\\"\"\"", "a.b=\";"},                // the doubled quotes first
        {"a.b = \"\\\\n\\x\\\\\"", "a.b=\\\n\\x\\\\;"}, // a backslash has no escape
    };
    for (const auto& [catalog, expected] : rows) {
        SCOPED_TRACE(catalog.substr(0, 80));
        EXPECT_STREQ(load(catalog).message(), "");
        EXPECT_EQ(entries(), expected);
    }
}

TEST_F(Catalog, EndsAtTheFirstErrorAndKeepsWhatWasRead) {
    const std::string good = "a.b = \"x\"\n";
    const std::string longText(4097, 'x');
    const struct {
        std::string catalog;
        int code;
        int line;
        const char* reason;
        std::string text; ///< what the message ends in
        std::string entries = "";
    } rows[] = {
        {good + "c.d\ne.f = \"y\"", 3, 2, noPair, "c.d", "a.b=x;"},
        {"= \"x\"", 3, 1, noPair, "= \"x\""},
        {"a.b =", 3, 1, noPair, "a.b ="},
        {"a.b = \"x\" // no comment", 3, 1, noQuotes, "a.b = \"x\" // no comment"},
        {"a.b=\"x\"", 3, 1, noKey, "a.b=\"x\""}, // the key is "a."
        {"a.b.c = \"x\"", 3, 1, noKey, "a.b.c = \"x\""},
        {" a= \"x\"", 3, 1, noKey, "a= \"x\""},
        {"\xC3\xA4.b = \"x\"", 3, 1, noAscii, "\xC3\xA4.b = \"x\""},
        {"a \\\n\n// c\nb \\\n = x", 3, 5, noQuotes, "a b = x"},
        {good + "c.d = \"\xFF\"\n", 5, 2, noUtf8, "c.d = \"?\"\n", "a.b=x;"},
        {"// \xC3", 5, 1, noUtf8, "// ?"},
        {mark, 5, 1, noUtf8, ""},
        // A long line comes in pieces, each with a number; one that is cut in a character is bad.
        {longText + "\n\n=", 3, 1, noPair, longText},
        {"//" + longText.substr(2) + "=", 3, 2, noPair, "="},
        {longText.substr(1) + "\xC3\xA4", 5, 1, noUtf8, longText.substr(1) + "?"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.catalog.substr(0, 80));
        const zeUtil::Error error = load(row.catalog);
        EXPECT_EQ(error.code(), row.code);
        EXPECT_EQ(error.message(),
                  "String file " + std::string(row.code == 3 ? "parsing" : "conversion") +
                      " error encountered, line " + std::to_string(row.line) + ", file " +
                      folder.path("c") + ": \n" + row.reason + ": " + row.text + "\n");
        EXPECT_EQ(entries(), row.entries);
    }
}

TEST_F(Catalog, NamesGoToTheSystemInUtf8InAnyLocale) {
    folder.write("\xC3\xA4", "");
    std::setlocale(LC_CTYPE, "C");
    const IString name(folder.path("\xC3\xA4").c_str(), zeString::EncodingUTF8);
    EXPECT_EQ(Manager::loadCatalog(zeOS::Filename(name)).code(), 0);
}

// What the table holds stays, and a key that is there takes the later string.
TEST_F(Catalog, KeepsWhatItReadBeforeACallFailed) {
    const std::string path = folder.write("c", "a.a = \"1\"\n\na.b = \\\n\"2\"\n");
    zeUtil::Error error;
    FaultTrial trial;
    trial.prepare = [] {
        appStringTable().clear();
        appStringTable().assign("a.b", L"0");
    };
    trial.operation = [&] { error = Manager::loadCatalog(IString(path.c_str())); };
    trial.check = [&](const Fault& fault) {
        const bool notOpened = fault.n && fault.call == SystemFaults::onFopen;
        const bool notRead = fault.n && fault.call == SystemFaults::onFgets;
        std::string message;
        if (notOpened || notRead) // a close that fails loses nothing
            message = (notOpened ? "Can't open catalog file " + path + " for read: "
                                 : "Error reading file " + path + ": ") +
                      std::strerror(fault.answer.error) + "\n";
        EXPECT_EQ(error.code(), notOpened ? 1 : notRead ? 2 : 0);
        EXPECT_EQ(error.message(), message);
        const bool first = !notOpened && !(notRead && fault.n == 1);
        const bool second = !notOpened && !(notRead && fault.n < 5);
        EXPECT_EQ(entries(), std::string(first ? "a.a=1;" : "") + (second ? "a.b=2;" : "a.b=0;"));
    };
    EXPECT_EQ(trial.runAll(), "fopen fgets fclose");
    trial.report("loading a catalog");
}
