// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSAppOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <limits>
#include <string>
#include <thread>
#include <vector>

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

/// A pipe whose writing end a stream opens by name.
struct Pipe {
    Pipe() { EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0); }
    ~Pipe() {
        closeReader();
        close(ends[1]);
    }
    void closeReader() {
        if (ends[0] >= 0)
            close(ends[0]);
        ends[0] = -1;
    }
    IString name() const {
        IString text;
        text.format(L"/proc/self/fd/%d", ends[1]);
        return text;
    }
    int ends[2];
};

} // namespace

TEST_F(AppOutputStreamTest, PutsTheIndentIntoTheFormat) {
    struct Print {
        int indent;
        const char* format;
        const char* argument;
    };
    struct Case {
        const char* what;
        std::vector<Print> prints;
        const char* expected;
    };
    const Case cases[] = {
        {"no indent", {{0, "a\nb%s\n", "c"}}, "a\nbc\n"},
        {"each line", {{4, "a\nb\n\nc%s\n", ""}}, "    a\n    b\n    \n    c\n"},
        {"one line in pieces", {{4, "a%s", ""}, {4, "b%s\n", ""}, {4, "c%s", ""}}, "    ab\n    c"},
        {"nothing", {{4, "", ""}, {4, "a%s", ""}, {4, "", ""}, {4, "b%s", ""}}, "    ab"},
        {"newlines in arguments", {{2, "%s|\n", "a\nb"}}, "  a\nb|\n"},
        {"a newline at the end of an argument", {{2, "%s", "a\n"}, {2, "b%s\n", ""}}, "  a\nb\n"},
        {"a change within a line", {{0, "a%s", ""}, {4, "b\nc%s\n", ""}}, "ab\n    c\n"},
        {"no indent until the line ends",
         {{0, "a%s\n", ""}, {0, "", ""}, {2, "b%s", ""}},
         "a\n  b"},
        {"a negative indent is none", {{-3, "a%s\n", ""}}, "a\n"},
        {"percent signs", {{1, "%%%s%%\n", "5"}}, " %5%\n"},
    };
    for (const Case& c : cases) {
        stream.open(name, false);
        for (const Print& print : c.prints) {
            stream.setIndentLevel(print.indent);
            stream(print.format, print.argument);
        }
        EXPECT_EQ(printed(), c.expected) << c.what;
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
        EXPECT_EQ(printed(), expected) << level;
    }
    stream.printf(static_cast<const char*>(nullptr));
    stream(0, nullptr);
}

TEST_F(AppOutputStreamTest, KeepsLevelAndIndentFromFileToFile) {
    EXPECT_EQ(stream.setIndentLevel(6), 0);
    EXPECT_EQ(stream.increaseIndentLevel(), 6);
    EXPECT_EQ(stream.getIndentLevel(), 10);
    EXPECT_EQ(stream.setIndentLevel(2), 10);
    EXPECT_EQ(stream.decreaseIndentLevel(), 2);
    EXPECT_EQ(stream.getIndentLevel(), 0);
    EXPECT_EQ(stream.decreaseIndentLevel(), 0);
    stream.setIndentLevel(3);
    stream.setLevel(7);
    stream.close();

    stream.setLevel(1); // none of this does anything while it is closed
    EXPECT_EQ(stream.setIndentLevel(1), 3);
    EXPECT_EQ(stream.increaseIndentLevel(), 3);
    EXPECT_EQ(stream.decreaseIndentLevel(), 3);
    stream("nothing %d", 1);
    stream(0, "nothing %d", 1);
    stream.timestamp();
    EXPECT_FALSE(stream.ok());
    EXPECT_EQ(stream.getFile(), nullptr);
    EXPECT_STREQ(stream.elapsed(1), "");

    EXPECT_TRUE(stream.open(name, true));
    EXPECT_EQ(stream.getLevel(), 7);
    stream("a\n");
    EXPECT_EQ(printed(), "   a\n");

    const AppOutputStream fresh(false);
    EXPECT_FALSE(fresh.ok());
    EXPECT_EQ(fresh.getLevel(), 0);
    EXPECT_EQ(fresh.getIndentLevel(), 0);
}

TEST_F(AppOutputStreamTest, OpensFilesAndStandardOutput) {
    stream("old");
    EXPECT_TRUE(fcntl(fileno(stream.getFile()), F_GETFD) & FD_CLOEXEC);
    EXPECT_TRUE(stream.open(name, true));
    stream("+new");
    EXPECT_EQ(printed(), "old+new");
    EXPECT_TRUE(stream.open(name, false));
    EXPECT_EQ(printed(), "");

    EXPECT_TRUE(stream.open("-", false));
    EXPECT_EQ(stream.getFile(), stdout);
    stream.close();
    EXPECT_NE(fcntl(STDOUT_FILENO, F_GETFD), -1); // still open

    for (const std::string& bad : {folder.path(), folder.path("no/such/folder"), std::string()}) {
        stream.open(name, false);
        EXPECT_FALSE(stream.open(IString(bad.c_str()), false)) << bad;
        EXPECT_FALSE(stream.ok());
    }
    const IString umlaut(folder.path("\xC3\xBC").c_str(), zeString::EncodingUTF8);
    EXPECT_TRUE(stream.open(umlaut, false));
    EXPECT_EQ(access(folder.path("\xC3\xBC").c_str(), F_OK), 0);
}

TEST_F(AppOutputStreamTest, WritesAtOnceUnlessItIsBuffered) {
    AppOutputStream buffered(true);
    buffered.open(name, false);
    buffered("later");
    EXPECT_EQ(printed(), "");
    buffered.close();
    EXPECT_EQ(printed(), "later");
}

TEST_F(AppOutputStreamTest, MakesTextsForMessages) {
    struct {
        double seconds;
        const char* text;
    } const times[] = {
        {0, "0.000 seconds"},
        {1.5, "1.500 seconds"},
        {-90, "-90.000 seconds"},
        {59.9996, "60.000 seconds"},
        {60.0, "01:00 minutes"},
        {3725.0, "62:05 minutes"},
        {359999.9, "5999:59 minutes"},
        {1e300, "2147483647:00 minutes"},
        {std::numeric_limits<double>::infinity(), "2147483647:00 minutes"},
        {-std::numeric_limits<double>::infinity(), "-inf seconds"},
    };
    for (const auto& time : times)
        EXPECT_STREQ(stream.elapsed(time.seconds), time.text);
    EXPECT_NE(std::string(stream.elapsed(std::nan(""))).find("nan seconds"), std::string::npos);
    EXPECT_STREQ(AppOutputStream::plural(1), "");
    for (const int n : {-1, 0, 2})
        EXPECT_STREQ(stream.plural(n), "s");
    EXPECT_STREQ(stream.aBool(true), "true");
    EXPECT_STREQ(stream.aBool(false), "false");
}

TEST_F(AppOutputStreamTest, DoesNotSeeTheNewlineOfATimestamp) {
    stream.setIndentLevel(2);
    stream.timestamp();
    stream("a\n");
    const std::string text = printed();
    ASSERT_EQ(text.size(), 2 + 11 + 25 + 2u);
    EXPECT_EQ(text.substr(0, 13), "  Timestamp: ");
    const std::time_t now = std::time(nullptr);
    const std::string date = std::ctime(&now); // but for the time of day
    EXPECT_EQ(text.substr(13, 11), date.substr(0, 11));
    EXPECT_EQ(text.substr(33, 4), date.substr(20, 4));
    EXPECT_EQ(text.substr(37), "\na\n");
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

TEST_F(AppOutputStreamTest, SurvivesAFullDiskAndAClosedPipe) {
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    Pipe pipe;
    pipe.closeReader();
    for (const IString& lost : {IString("/dev/full"), pipe.name()}) {
        ASSERT_TRUE(stream.open(lost, false));
        stream("lost %s\n", std::string(100000, 'x').c_str());
        stream("lost\n");
        EXPECT_TRUE(stream.ok());
    }
    std::signal(SIGPIPE, before);
    ASSERT_TRUE(stream.open(name, false));
    stream("kept\n");
    EXPECT_EQ(printed(), "kept\n");
}

TEST_F(AppOutputStreamTest, WritesLongTextsInPiecesWhileSignalsArrive) {
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = [](int) {};
    action.sa_flags = SA_RESTART;
    sigaction(SIGUSR1, &action, &before);
    Pipe pipe;
    ASSERT_TRUE(stream.open(pipe.name(), false));
    std::string received;
    const pthread_t writer = pthread_self();
    std::thread reader([&] {
        char block[1000];
        for (ssize_t n; received.size() < 1000001 && (n = read(pipe.ends[0], block, 1000)) > 0;) {
            received.append(block, static_cast<std::size_t>(n));
            pthread_kill(writer, SIGUSR1);
        }
    });
    const std::string longText(1000000, 'x');
    stream("%s\n", longText.c_str());
    reader.join();
    sigaction(SIGUSR1, &before, nullptr);
    EXPECT_EQ(received, longText + "\n");
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
        EXPECT_FALSE(stream.ok());
        if (!fails) {
            EXPECT_EQ(printed(), "text\n");
        }
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

TEST(AppOutput, SetsTheLevelOfEveryOpenStream) {
    TempFolder folder{TempFolder::memory()};
    AppOutput output;
    const IString name(folder.path("out").c_str());
    for (AppOutputStream* stream :
         {&output.status, &output.log, &output.application1, &output.application2})
        stream->open(name, true);
    output.application1.close();
    output.setLevel(5);
    EXPECT_EQ(output.status.getLevel(), 5);
    EXPECT_EQ(output.log.getLevel(), 5);
    EXPECT_EQ(output.application1.getLevel(), 0);
    EXPECT_EQ(output.application2.getLevel(), 5);
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
