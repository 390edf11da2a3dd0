// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <array>
#include <csignal>
#include <filesystem>

#include "Applications/commandFixture.h"
#include "Applications/notebookReplay.h"
#include "notebook/command.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// Runs scripts within this process, or the program in a copy of its folder.
class Notebook : public Command<notebook::run> {
protected:
    /// "@" is the folder.
    Result script(std::string text, const std::string& options = "") const {
        text = std::regex_replace(text, std::regex("@"), folder_.path() + "/");
        const zeUtil::Descriptor input(memfd_create("script", MFD_CLOEXEC));
        EXPECT_EQ(write(input.get(), text.data(), text.size()), ssize_t(text.size()));
        lseek(input.get(), 0, SEEK_SET);
        const zeUtil::Descriptor before(dup(STDIN_FILENO));
        dup2(input.get(), STDIN_FILENO);
        Result result = command(options);
        dup2(before.get(), STDIN_FILENO);
        result.err = std::regex_replace(result.err, std::regex(folder_.path() + "/"), "@");
        return result;
    }

    /// The program and its plug-ins, to be damaged.
    std::string copyProgram() const {
        const fs::path source = fs::path(NOTEBOOK).parent_path();
        fs::copy(source / "plug-ins", path("plug-ins"), fs::copy_options::recursive);
        fs::copy(NOTEBOOK, path("notebook"));
        return path("notebook");
    }

    /// What a shell command prints, in the folder.
    Result shell(const std::string& line) const {
        const std::string inFolder = "cd '" + folder_.path() +
                                     "' && unset ZE_DEBUGDRAW_PLUGIN && (" + line +
                                     ") > out 2> err";
        const int status = std::system(inFolder.c_str());
        return {WEXITSTATUS(status), folder_.read("out"), folder_.read("err")};
    }
};

} // namespace

TEST_F(Notebook, RunsScripts) {
    const std::array<std::string, 3> cases[] = {
        {"append\na\n..\n...\nb\n.\nprint\nprint 3,$\n",
         "     1  a\n     2  .\n     3  ..\n     4  b\n     3  ..\n     4  b\n", ""},
        {"append\na\nb\n.\nappend 1\nc\n.\nap 0\nd\n.\nprint\n",
         "     1  d\n     2  a\n     3  c\n     4  b\n", ""},
        {"append\na\nb\nc\n.\nchange 2,3\nd\n.\ndelete 1\nprint\n", "     1  d\n", ""},
        {"begin both\nappend\na\n.\nappend\nb\n.\nend\nalso delete 1\nundo\nprint\nredo\nprint\n"
         "history\nundo\nredo\nredo\n",
         "     1  b\ndone   both (192 bytes)\ndone   + also delete 1 (130 bytes)\n",
         ":17: there is nothing to redo\n"},
        {"append\na\n.\nalso append\nb\n.\nappend\nc\n.\nlimit steps 1\nhistory\n",
         "done   append (96 bytes)\n", ""},
        {"append\na\n.\ndelete 1\nlimit memory 150\nundo\nundo\n", "",
         ":7: there is nothing to undo\n"},
        {"limit lines 1\n", "", ":1: there is no limit of 'lines'\n"},
        {"begin it\nundo\n", "", ":2: a step has begun: end it first\n"},
        {"end\n", "", ":1: no step has begun\n"},
        {"also append\na\n.\n", "", ":3: there is no step to add to\n"},
        {"also also undo\n", "", ":1: also takes another command\n"},
        {"# help\n\n  print  \nundo 1\n", "", ":4: usage: undo \n"},
        {"remove\n", "", ":1: there is no command 'remove'\n"},
        {std::string(10000, 'a') + "\n", "", ":1: the command is too long or holds a NUL\n"},
        {std::string("save @b\0c\n", 10), "", ":1: the command is too long or holds a NUL\n"},
        {"append\na\n.\nprint 1,2\n", "", ":4: '2' is not a number from 1 to 1\n"},
        {"append\n\x1b[2J\t\xff\n.\nprint\nundo\nquit\nx\n", "     1  \\x1b[2J \\xff\n", ""},
    };
    for (const auto& [text, out, err] : cases) {
        const Result result = script(text);
        EXPECT_EQ(result.out, out) << text;
        const std::regex left("notebook: standard input|note: there are changes .*\n");
        EXPECT_EQ(std::regex_replace(result.err, left, ""), err) << text;
        EXPECT_EQ(result.code, !err.empty()) << text;
    }
    EXPECT_EQ(script("append\na\n.\nquit\n").err, "note: there are changes that were not saved\n");
}

TEST_F(Notebook, KeepsEveryByteOfAFile) {
    using namespace std::string_literals;
    for (const std::string& content : {""s, "\n"s, "a"s, "a\n"s, "a\n\nb"s, "a\0b\xff\xc3\r\n\x80"s,
                                       std::string(200000, 'x'), std::string(70000, '\n')}) {
        folder_.write("file", content);
        EXPECT_EQ(script("save\nsave @copy\n", "-file @file").code, 0);
        EXPECT_EQ(folder_.read("file"), content);
        EXPECT_EQ(folder_.read("copy"), content);
        EXPECT_EQ(script("append 0\n# new\n.\nundo\nredo\nsave\n", "-file @file").code, 0);
        EXPECT_EQ(folder_.read("file"), "# new\n" + content);
        fs::remove(path("copy"));
    }
}

TEST_F(Notebook, RefusesWhatItCannotRead) {
    fs::create_directory(path("folder"));
    fs::create_symlink("loop", path("loop"));
    mkfifo(path("fifo").c_str(), 0600);
    fs::resize_file(folder_.write("huge", ""), std::uintmax_t{1} << 30);
    const std::pair<std::string, std::string> cases[] = {
        {"@folder", "not a regular file"},
        {"@fifo", "not a regular file"},
        {"@huge", "File too large"},
        {"@huge/x", "Not a directory"},
        {"@loop", "Too many levels of symbolic links"},
    };
    for (const auto& [name, reason] : cases) {
        const Result result = script("print\n", "-file " + name);
        EXPECT_EQ(result.code, 1);
        EXPECT_EQ(result.err, "notebook: " + name + ": cannot be read: " + reason + "\n");
    }
}

TEST_F(Notebook, LosesNoFile) {
    folder_.write("a", "1\n");
    folder_.write("b", "2\n");
    fs::create_symlink("a", path("link"));
    fs::create_symlink("made", path("dangling"));
    const std::array<const char*, 4> cases[] = {
        {"-file @a", "save @b\n", "1\n", "@b: is there already"},
        {"-file @a", "export text @link\n", "1\n", "@link: is the file of the text"},
        {"-file @a", "draw @a\n", "1\n", "@a: is the file of the text"},
        {"-file @new", "export text @new\n", "1\n", "@new: is the file of the text"},
        {"-file @a", "append\nx\nsave\n", "1\n", "the lines end without a \".\""},
        {"", "save\n", "1\n", "the text has no file yet"},
        {"", "save @\xff\n", "1\n", "its name is not UTF-8"},
        {"-file @link", "append\nx\n.\nsave\n", "1\nx\n", "@link: 2 lines written"},
        {"-file @new", "append\nn\n.\nsave\nsave -\n", "1\nx\n", "@new: a new file\n"},
        {"-file @dangling", "append\nm\n.\nsave\n", "1\nx\n", "@dangling: 1 lines written"},
    };
    for (const auto& [options, text, content, message] : cases) {
        EXPECT_THAT(script(text, options).err, HasSubstr(message)) << text;
        EXPECT_EQ(folder_.read("a"), content) << text;
    }
    EXPECT_TRUE(fs::is_symlink(path("link")) && fs::is_symlink(path("dangling")));
    EXPECT_EQ(folder_.read("new") + folder_.read("b") + folder_.read("made"), "n\n2\nm\n");
}

TEST_F(Notebook, SavesNothingOverTheChangesOfOthers) {
    folder_.write("a", "1\n");
    const Result result = shell("mkfifo in; " NOTEBOOK " -file a < in & exec 3> in\n"
                                "printf 'append\n2\n.\nexport text made\n' >&3\n"
                                "for i in $(seq 600); do [ -e made ] || sleep 0.1; done\n"
                                "echo others > a; echo save >&3; exec 3>&-; wait $!");
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(folder_.read("a"), "others\n");
    EXPECT_THAT(result.err, HasSubstr(":5: a: cannot be written: another program has changed it"));
}

/// Formats are known by their declarations; a plug-in is opened when it is used first.
TEST_F(Notebook, OpensPlugInsOnFirstUse) {
    folder_.write("script", "append\n<b>&\"c\nd\xff\te\n.\nexport html a.html\n"
                            "export html b.html\nexport text -\nexport pdf -\n");
    const Result result = shell(NOTEBOOK " --verbose --file '<x>' < script");
    EXPECT_EQ(result.out, "<b>&\"c\nd\\xff e\n");
    EXPECT_EQ(std::regex_replace(result.err, std::regex("[0-9.]+ seconds"), "N seconds"),
              "reading <x>\n    <x>: a new file\n    N seconds\n"
              "opening the plug-in exportHtml.so\n    N seconds\n"
              "opening the plug-in exportText.so\n    N seconds\n"
              "notebook: standard input:8: there is no format 'pdf' among: html text\n");
    EXPECT_EQ(folder_.read("a.html"),
              "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n"
              "<title>&#60;x&#62;</title>\n</head>\n<body>\n<pre>\n"
              "&#60;b&#62;&#38;&#34;c\nd\\xff e\n</pre>\n</body>\n</html>\n");
    EXPECT_EQ(folder_.read("b.html"), folder_.read("a.html"));
}

TEST_F(Notebook, LivesOnWithoutPlugIns) {
    copyProgram();
    const std::string folder = "plug-ins/notebook/";
    fs::remove(path(folder + "exportHtml.so"));
    folder_.write(folder + "exportText.so", "no library");
    folder_.write(folder + "serviceDecl_other.so", "no library either");
    fs::remove(path(folder + "drawSvg.so"));
    const std::pair<const char*, const char*> cases[] = {
        {"export html a", "html: the plug-in cannot be used: The proxy plugin does not exist: "},
        {"export text a", "text: the plug-in cannot be used: "},
        {"draw a", "a: cannot be written: drawSvg.so: the plug-in cannot be used: "},
    };
    for (const auto& [command, message] : cases) {
        const Result result = shell("echo " + std::string(command) + " | ./notebook");
        EXPECT_EQ(result.code, 1);
        EXPECT_THAT(result.err, HasSubstr(std::string("notebook: standard input:1: ") + message));
        EXPECT_FALSE(fs::exists(path("a")));
    }
    EXPECT_THAT(shell("echo export pdf a | ./notebook").err, HasSubstr("Proxy failed to load: "));
    EXPECT_THAT(shell("echo draw a | ZE_DEBUGDRAW_PLUGIN=/no/plugin.so ./notebook").err,
                HasSubstr("ZE_DEBUGDRAW_PLUGIN: the plug-in cannot be used: No such file"));
}

TEST_F(Notebook, DrawsLinesAndHistory) {
    folder_.write("script",
                  "append\na <b>\n\n  c\n.\nalso append\nd\n.\nbegin <0>\nappend\ne\n.\nend\nundo\n"
                  "draw a.svg\ndraw b.svg\n");
    EXPECT_EQ(shell(NOTEBOOK " < script").code, 0);
    EXPECT_EQ(
        folder_.read("a.svg"),
        R"svg(<svg xmlns="http://www.w3.org/2000/svg" viewBox="-2 -5 133.947 13" stroke-width="0.4" font-family="monospace" font-size="1.6">
<g stroke="hsl(210,60%,45%)" fill="hsl(210,60%,45%)">
<text stroke="none" x="0" y="-2">text</text>
<line x1="0" y1="0" x2="5" y2="0"/>
<line x1="0" y1="2" x2="0" y2="2"/>
<line x1="0" y1="4" x2="3" y2="4"/>
<line x1="0" y1="6" x2="1" y2="6"/>
</g>
<g stroke="hsl(347,60%,45%)" fill="hsl(347,60%,45%)" stroke-width="0.8">
<text stroke="none" x="110" y="-2">history</text>
<line x1="110" y1="0" x2="117.947" y2="0"/>
<text stroke="none" x="118.947" y="0">append</text>
<line x1="110" y1="2" x2="117.947" y2="2"/>
<text stroke="none" x="118.947" y="2">also append</text>
</g>
<g stroke="hsl(124,60%,45%)" fill="hsl(124,60%,45%)">
<text stroke="none" x="103" y="4">undone</text>
<line x1="110" y1="4" x2="118.469" y2="4"/>
<text stroke="none" x="119.469" y="4">&#60;0&#62;</text>
</g>
</svg>
)svg");
    EXPECT_EQ(folder_.read("b.svg"), folder_.read("a.svg"));
    EXPECT_THAT(shell("echo draw /dev/full | " NOTEBOOK).err, HasSubstr("not a regular file"));
}

/// There are prompts, failures end nothing, and whoever ends the input is asked once.
TEST_F(Notebook, TalksToATerminal) {
    const zeUtil::Descriptor terminal(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    ASSERT_TRUE(grantpt(terminal.get()) == 0 && unlockpt(terminal.get()) == 0);
    const std::string name = ptsname(terminal.get());
    const pid_t child = fork();
    if (child == 0) {
        setsid();
        const int end = open(name.c_str(), O_RDWR); // becomes the controlling terminal
        for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            dup2(end, descriptor);
        std::signal(SIGINT, SIG_DFL);
        execl(NOTEBOOK, NOTEBOOK, nullptr);
        _exit(99);
    }
    std::string said;
    const auto await = [&](const std::string& text) {
        for (char byte; !said.ends_with(text) && read(terminal.get(), &byte, 1) == 1;)
            said += byte;
        return said.ends_with(text);
    };
    const auto type = [&](const std::string& keys) {
        EXPECT_EQ(write(terminal.get(), keys.data(), keys.size()), ssize_t(keys.size()));
    };
    for (const auto& [keys, answer] : std::initializer_list<std::pair<const char*, const char*>>{
             {"", "> "},
             {"delete 1\n", "notebook: '1' is not a number from 1 to 0\r\n> "},
             {"\x03print\n", "print\r\n> "}, // Ctrl-C
             {"append\na\n\x04", "a\r\n> "}, // Ctrl-D
             {"print\n", "     1  a\r\n> "},
             {"\x04", "note: there are changes that were not saved\r\n> "}}) {
        type(keys);
        ASSERT_TRUE(await(answer)) << said;
    }
    type("\x04");
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << said;
}

TEST_F(Notebook, DescribesItsCommandsAndOptions) {
    const std::string readme = folder_.read(NOTEBOOK_FOLDER "README.md");
    const std::string manual = folder_.read(NOTEBOOK_FOLDER "notebook.1");
    std::istringstream help(script("help\n").out);
    int count = 0;
    for (std::string line; std::getline(help, line); ++count) {
        EXPECT_LE(line.size(), 80U);
        const std::string command =
            std::regex_replace(line.substr(0, 21), std::regex(" +$|( ) +"), "$1");
        EXPECT_THAT(readme, HasSubstr("\n| `" + command + "` |"));
        EXPECT_THAT(manual, HasSubstr("\n.B " + command + "\n"));
    }
    EXPECT_EQ(count, 16);
    expectSameOptionsIn(NOTEBOOK_FOLDER "notebook.1");
}

TEST(NotebookHistory, KeepsUpWithItsModel) {
    for (const unsigned int seed : {1U, 2U})
        replay(seed, 20000);
}
