// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSAppOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/FaultTrial.h"
#include "Support/Locale.h"
#include "Support/TempFolder.h"

#include "OS/output/StatusCapture.h"

using zeOS::AppOutput;
using zeOS::AppOutputStatusTab;
using zeOS::AppOutputStream;
using zeString::IString;

namespace {

class AppOutputStreamTest : public testing::Test {
protected:
    AppOutputStreamTest() { stream.open(name, false); }

    std::string printed() const { return folder.read("out"); }

    TempFolder folder{TempFolder::memory()};
    IString name{folder.path("out").c_str()};
    AppOutputStream stream{false};
};

using AppOutputLocale = support::Utf8LocaleTest;

} // namespace

TEST_F(AppOutputStreamTest, PutsTheIndentIntoTheFormat) {
    struct Print {
        int indent;
        const char* format;
        const char* argument;
    };
    struct Case {
        std::vector<Print> prints;
        const char* expected;
    };
    const Case cases[] = {
        {{{0, "a\nb%s\n", "c"}, {-3, "d%s\n", ""}}, "a\nbc\nd\n"},
        {{{4, "a\nb\n\nc%s\n", ""}}, "    a\n    b\n    \n    c\n"},
        {{{4, "", ""}, {4, "a%s", ""}, {4, "", ""}, {4, "b%s\n", ""}}, "    ab\n"},
        {{{2, "%s|\n", "a\nb"}}, "  a\nb|\n"},
        {{{2, "%s", "a\n"}, {2, "b%s\n", ""}}, "  a\nb\n"},
        {{{0, "a%s", ""}, {4, "b\nc%s\n", ""}}, "ab\n    c\n"},
        {{{0, "a%s\n", ""}, {0, "", ""}, {2, "b%s", ""}}, "a\n  b"},
        {{{1, "%%%s%%\n", "5"}}, " %5%\n"},
    };
    for (const Case& c : cases) {
        stream.open(name, false);
        for (const Print& print : c.prints) {
            stream.setIndentLevel(print.indent);
            stream(print.format, print.argument);
        }
        EXPECT_EQ(printed(), c.expected);
    }
}

TEST_F(AppOutputStreamTest, PrintsUpToItsLevel) {
    for (const int level : {-1, 0, 2}) {
        stream.open(name, false);
        stream.setLevel(level);
        std::string expected = "any";
        stream("any");
        for (int i = -2; i <= 3; ++i) {
            stream(i, " %d", i);
            stream.printf(i, ",%d", i);
            if (i <= level)
                expected += " " + std::to_string(i) + "," + std::to_string(i);
        }
        stream.printf(static_cast<const char*>(nullptr));
        stream(level, nullptr);
        EXPECT_EQ(printed(), expected) << level;
    }
}

TEST_F(AppOutputStreamTest, KeepsLevelAndIndentFromFileToFile) {
    EXPECT_EQ(stream.setIndentLevel(6), 0);
    EXPECT_EQ(stream.increaseIndentLevel(), 6);
    EXPECT_EQ(stream.setIndentLevel(2), 10);
    EXPECT_EQ(stream.decreaseIndentLevel(), 2);
    EXPECT_EQ(stream.setIndentLevel(3), 0);
    stream.setLevel(7);
    stream.close();
    stream.setLevel(1); // none of this does anything while it is closed
    EXPECT_EQ(stream.setIndentLevel(1), 3);
    stream(0, "nothing %d", 1);
    stream.timestamp();
    EXPECT_STREQ(stream.elapsed(1), "");
    EXPECT_TRUE(stream.open(name, true));
    EXPECT_EQ(stream.getLevel(), 7);
    stream("a\n");
    EXPECT_EQ(printed(), "   a\n");
}

TEST_F(AppOutputStreamTest, OpensFilesAndStandardOutput) {
    stream("old");
    EXPECT_TRUE(fcntl(fileno(stream.getFile()), F_GETFD) & FD_CLOEXEC);
    EXPECT_TRUE(stream.open(name, true));
    stream("+new");
    EXPECT_EQ(printed(), "old+new");

    EXPECT_TRUE(stream.open("-", false));
    EXPECT_EQ(stream.getFile(), stdout);
    stream.close();
    EXPECT_NE(fcntl(STDOUT_FILENO, F_GETFD), -1); // still open

    for (const std::string& bad : {folder.path(), folder.path("no/such/folder"), std::string()}) {
        stream.open(name, false);
        EXPECT_FALSE(stream.open(IString(bad.c_str()), false) || stream.ok()) << bad;
    }
    const std::string umlaut = folder.path("\xC3\xBC");
    EXPECT_TRUE(stream.open(IString(umlaut.c_str(), zeString::EncodingUTF8), false));
    EXPECT_EQ(access(umlaut.c_str(), F_OK), 0);

    AppOutputStream buffered(true);
    buffered.open(name, false);
    buffered("later");
    EXPECT_EQ(printed(), "");
    buffered.close();
    EXPECT_EQ(printed(), "later");
}

TEST_F(AppOutputStreamTest, MakesTextsForMessages) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    struct {
        double seconds;
        const char* text;
    } const times[] = {
        {1.5, "1.500 seconds"},        {-90, "-90.000 seconds"},
        {59.9996, "60.000 seconds"},   {60.0, "01:00 minutes"},
        {359999.9, "5999:59 minutes"}, {infinity, "2147483647:00 minutes"},
        {-infinity, "-inf seconds"},   {std::copysign(std::nan(""), 1), "nan seconds"},
    };
    for (const auto& time : times)
        EXPECT_STREQ(stream.elapsed(time.seconds), time.text);
    EXPECT_STREQ(stream.plural(-1), "s");
    EXPECT_STREQ(stream.plural(1), "");
}

TEST_F(AppOutputStreamTest, DoesNotSeeTheNewlineOfATimestamp) {
    const auto expected = [](std::time_t time) {
        return std::string("  Timestamp: ") + std::ctime(&time) + "a\n";
    };
    const std::time_t now = std::time(nullptr);
    stream.setIndentLevel(2);
    stream.timestamp();
    stream("a\n");
    EXPECT_THAT(printed(), testing::AnyOf(expected(now), expected(now + 1)));
}

TEST_F(AppOutputStreamTest, EndsATextWhereTheLocaleCannotConvert) {
    stream("[%S] [%S]\n", L"plain", L"\u00FC");
    stream("next\n");
    EXPECT_EQ(printed(), "[plain] [next\n");
}

TEST_F(AppOutputLocale, PrintsWideTextsInTheEncodingOfTheLocale) {
    const StatusCapture capture;
    capture.output.status("%S %ls %s\n", L"gr\u00FCn", L"\u20AC", "\xC3\xB6");
    EXPECT_EQ(capture.status(), "gr\xC3\xBCn \xE2\x82\xAC \xC3\xB6\n");
}

TEST_F(AppOutputStreamTest, SurvivesAFullDisk) {
    ASSERT_TRUE(stream.open("/dev/full", false));
    stream("lost %s\n", std::string(100000, 'x').c_str());
    stream("lost\n");
    EXPECT_TRUE(stream.ok());
    ASSERT_TRUE(stream.open(name, false));
    stream("kept\n");
    EXPECT_EQ(printed(), "kept\n");
}

TEST_F(AppOutputStreamTest, SaysWhetherAFileCouldBeOpened) {
    stream.close();
    bool opened = false;
    FaultTrial trial;
    trial.operation = [&] {
        opened = stream.open(name, false);
        stream("text\n");
        stream.close();
    };
    trial.check = [&](const Fault& fault) {
        const bool fails = fault.n > 0 && fault.call == SystemFaults::onFopen;
        EXPECT_EQ(opened, !fails);
        EXPECT_TRUE(fails || printed() == "text\n");
    };
    EXPECT_EQ(trial.runAll(), "fopen fclose");
    trial.report("printing to a file");
}

TEST(AppOutput, PrintsErrorsAndInformationToTwoStreams) {
    const StatusCapture capture;
    AppOutput& output = capture.output;
    output.log.setLevel(2);
    output.log.setIndentLevel(1);
    output.error("%d %s %f %d %d %d %d %s\n", 1, "two", 3.0, 4, 5, 6, 7, "eight");
    output.info(1, "%s %.1f\n", "in the log alone", 0.5);
    output.error(3, "nowhere %d\n", 1);
    output.status.setLevel(3);
    output.info(3, "on %s alone\n", "the screen");
    output.info("%S\n", L"any");
    EXPECT_EQ(capture.status(), "1 two 3.000000 4 5 6 7 eight\non the screen alone\nany\n");
    EXPECT_EQ(capture.log(), " 1 two 3.000000 4 5 6 7 eight\n in the log alone 0.5\n any\n");
}

TEST(AppOutput, IndentsWhatATabCovers) {
    const StatusCapture capture(1);
    const AppOutputStream& status = capture.output.status;
    {
        const AppOutputStatusTab shown(1);
        status("a\n");
        {
            const AppOutputStatusTab hidden(2);
            status("b\n");
            const AppOutputStatusTab inner(0);
            status("c\n");
        }
        status("d\n");
    }
    status("e\n");
    EXPECT_EQ(capture.status(), "    a\n    b\n        c\n    d\ne\n");
}
