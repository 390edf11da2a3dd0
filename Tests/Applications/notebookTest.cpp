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
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

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
        {"append\na\nb\nc\nd\n.\nmove 1,2 3\nmove $ 0\nprint\nmove 2,3 2\n",
         "     1  d\n     2  c\n     3  a\n     4  b\n", ":10: the lines are there already\n"},
        {"append\naba\nb\n.\nreplace /a/aa/\nreplace 2 |b|x y\nprint\nreplace 1 /x/y/\n",
         "     1  aabaa\n     2  x y\n", "replaced: 2\nreplaced: 1\n:8: 'x' is not there\n"},
        {"begin both\nappend\na\n.\nappend\nb\n.\nend\nalso delete 1\nundo\nprint\nredo\nprint\n"
         "history\nundo\nredo 2\n",
         "     1  b\ndone   both (192 bytes)\ndone   + also delete 1 (130 bytes)\n",
         ":16: there is nothing to redo\n"},
        {"limit steps off\nappend\na\n.\nundo\n", "", ":5: there is nothing to undo\n"},
        {"append\nlong\n.\nundo\nlimit text 4\nredo\n", "",
         ":6: the step cannot be redone, and the history is gone\n"},
        {"limit text 4\nappend\nab\ncd\n.\n", "", ":5: the text would have more than 4 bytes\n"},
        {"append\naaaa\n.\nlimit text 9\nreplace /a/bb/\nreplace /b/cc/\n", "",
         "replaced: 4\n:6: the text would have more than 9 bytes\n"},
        {"begin\nundo\n", "", ":2: a step has begun: end it first\n"},
        {"also append\na\n.\n", "", ":3: there is no step to add to\n"},
        {"# help\n\n  print\nd\n", "", ":4: 'd' may be delete or draw\n"},
        {"undo!\n", "", ":1: there is no command 'undo!'\n"},
        {"append\na\n.\nprint 1,2\n", "", ":4: there is no line '2' from 1 to 1\n"},
        {"undo 1 2\n", "", ":1: too much behind undo\n"},
        {"append\na\n", "", ":3: the lines end without a \".\"\n"},
        {"append\n\x1b[2J\t\xff\n.\nprint\n", "     1  \\x1b[2J\t\\xff\n", ""},
        {"append\na\n.\nundo\nquit\n", "", ""},
        {"append\na\n.\nquit\n", "",
         ":4: there are changes that were not saved (a \"!\" behind the command drops them)\n"},
    };
    for (const auto& [text, out, err] : cases) {
        const Result result = script(text + "quit!\n");
        EXPECT_EQ(result.out, out) << text;
        EXPECT_EQ(std::regex_replace(result.err, std::regex("notebook: standard input"), ""), err)
            << text;
        EXPECT_EQ(result.code, result.err.find("notebook: ") != std::string::npos) << text;
    }
    EXPECT_EQ(script("append\na\n.\n").err, "note: there are changes that were not saved\n");
    const Result result = script("x\nappend 9\nquit!\n.\nappend\na\n.\nprint\n", "-keep-going");
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.out, "     1  a\n");
}

TEST_F(Notebook, KeepsEveryByteOfAFile) {
    using namespace std::string_literals;
    for (const std::string& content : {""s, "\n"s, "a"s, "a\n"s, "a\n\nb"s, "a\0b\xff\xc3\r\n\x80"s,
                                       std::string(200000, 'x'), std::string(70000, '\n')}) {
        folder_.write("file", content);
        EXPECT_EQ(script("open @file\nsave\nsave @copy\n").code, 0);
        EXPECT_EQ(folder_.read("file"), content);
        EXPECT_EQ(folder_.read("copy"), content);
        const std::string changed = "# new\n" + content;
        EXPECT_EQ(script("append 0\n# new\n.\nundo\nredo\nsave\n", "-file @file").code, 0);
        EXPECT_EQ(folder_.read("file"), content.empty() ? "# new\n" : changed);
        fs::remove(path("copy"));
    }
}

TEST_F(Notebook, RefusesWhatItCannotRead) {
    fs::create_directory(path("folder"));
    fs::create_symlink("loop", path("loop"));
    mkfifo(path("fifo").c_str(), 0600);
    fs::resize_file(folder_.write("huge", ""), std::uintmax_t{1} << 30);
    const std::pair<std::string, std::string> cases[] = {
        {"@folder", "@folder: cannot be read: not a regular file"},
        {"@fifo", "@fifo: cannot be read: not a regular file"},
        {"@huge", "@huge: is larger than the 268435456 bytes that a text may have"},
        {"@huge/x", "@huge/x: cannot be opened: Not a directory"},
        {"@loop", "@loop: cannot be opened: Too many levels of symbolic links"},
        {"@\xff", "its name is not UTF-8"},
        {"-", "standard input holds the commands"},
        {"", "the name of a file is missing"},
    };
    for (const auto& [name, message] : cases)
        EXPECT_EQ(script("open " + name + "\n").err,
                  "notebook: standard input:1: " + message + "\n");
}

TEST_F(Notebook, LosesNoFile) {
    folder_.write("a", "1\n");
    folder_.write("b", "2\n");
    fs::create_symlink("a", path("link"));
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"open @a\nsave @b\n", "1\n", "@b: is there already: \"save!\" replaces it"},
        {"open @a\nappend\nx\n.\nopen @b\n", "1\n", "there are changes that were not saved"},
        {"open @a\nexport text @link\n", "1\n", "@link: is the file of the text"},
        {"open @a\ndraw @a\n", "1\n", "@a: is the file of the text"},
        {"save\n", "1\n", "the name of a file is missing"},
        {"save! @\n", "1\n", "not a regular file"},
        {"save! /dev/full\n", "1\n", "/dev/full: cannot be written: not a regular file"},
        {"open @link\nappend\nx\n.\nsave\n", "1\nx\n", "@link: 2 lines written"},
        {"open @new\nappend\nn\n.\nsave\nsave! @b\n", "1\nx\n", "@new: a new file\n"},
    };
    for (const auto& [text, content, message] : cases) {
        EXPECT_THAT(script(text).err, HasSubstr(message)) << text;
        EXPECT_EQ(folder_.read("a"), content) << text;
    }
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(folder_.read("new") + folder_.read("b"), "n\nn\n");
}

TEST_F(Notebook, SavesNothingOverTheChangesOfOthers) {
    folder_.write("a", "1\n");
    copyProgram();
    const Result result = shell("mkfifo in; ./notebook -keep < in & exec 3> in\n"
                                "printf 'open a\\nappend\\n2\\n.\\nexport text made\\n' >&3\n"
                                "for i in $(seq 600); do [ -e made ] || sleep 0.1; done\n"
                                "echo others > a\n"
                                "printf 'save\\nexport text a\\nsave!\\n' >&3; exec 3>&-; wait $!");
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(folder_.read("a"), "1\n2\n");
    EXPECT_THAT(result.err, HasSubstr(":6: a: cannot be written: another program has changed it"));
    EXPECT_THAT(result.err, HasSubstr("a: 2 lines written"));
}

/// Formats are known by their declarations; a plug-in is opened when it is used first.
TEST_F(Notebook, OpensPlugInsOnFirstUse) {
    copyProgram();
    folder_.write("script", "append\n# A <b>&\"c\n- d\xff\te\n\n####### f\n.\nformats\n"
                            "export html a.html\nexport html b.html\nexport text -\n");
    const Result result = shell("./notebook --verbose --file '<x>' < script");
    EXPECT_EQ(result.out, "html\ntext\n# A <b>&\"c\n- d\\xff e\n\n####### f\n");
    EXPECT_EQ(std::regex_replace(result.err, std::regex("[0-9.]+ seconds"), "N seconds"),
              "reading <x>\n    N seconds\n<x>: a new file\nopening the plug-in "
              "exportHtml.so\n    N seconds\n"
              "opening the plug-in exportText.so\n    N seconds\n"
              "note: there are changes that were not saved\n");
    const std::string html =
        "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>&lt;x&gt;</title>\n"
        "</head>\n<body>\n<h1>A &lt;b&gt;&amp;&quot;c</h1>\n<ul>\n<li>d\\xff e</li>\n</ul>\n"
        "<p>\n####### f\n</p>\n</body>\n</html>\n";
    EXPECT_EQ(folder_.read("a.html"), html);
    EXPECT_EQ(folder_.read("b.html"), html);
}

TEST_F(Notebook, LivesOnWithoutPlugIns) {
    copyProgram();
    const std::string folder = "plug-ins/notebook/";
    fs::remove(path(folder + "exportHtml.so"));
    folder_.write(folder + "exportText.so", "no library");
    folder_.write(folder + "serviceDecl_other.so", "no library either");
    fs::remove(path(folder + "drawSvg.so"));
    folder_.write("script", "export html a\nexport html a\nexport text a\nexport pdf a\ndraw a\n"
                            "append\nb\n.\nprint\nsave a\n");
    const Result result = shell("./notebook --keep-going < script");
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.out, "     1  b\n");
    EXPECT_EQ(folder_.read("a"), "b\n");
    const std::string place = "notebook: standard input:";
    for (const char* message : {
             "1: html: the plug-in cannot be used: The proxy plugin does not exist: ",
             "2: html: the plug-in cannot be used: ", // for whatever reason
             "3: text: the plug-in cannot be used: ",
             "4: there is no format 'pdf'\n",
             "5: a: cannot be written: drawSvg.so: the plug-in cannot be used: ",
         })
        EXPECT_THAT(result.err, HasSubstr(place + message));
    EXPECT_THAT(result.err, HasSubstr("Proxy failed to load: "));
    EXPECT_THAT(shell("echo draw a.svg | ZE_DEBUGDRAW_PLUGIN=/no/plugin.so ./notebook").err,
                HasSubstr("ZE_DEBUGDRAW_PLUGIN: the plug-in cannot be used: No such file"));
}

TEST_F(Notebook, DrawsLinesAndHistory) {
    copyProgram();
    folder_.write("script",
                  "append\na <b>\n\n  c\n.\nalso append\nd\n.\nbegin <0>\nappend\ne\n.\nend\nundo\n"
                  "draw a.svg\ndraw b.svg\n");
    EXPECT_EQ(shell("./notebook < script").code, 0);
    EXPECT_EQ(
        folder_.read("a.svg"),
        R"svg(<svg xmlns="http://www.w3.org/2000/svg" viewBox="-2 -5 38.9471 19" stroke-width="0.4" font-family="monospace" font-size="1.6">
<g stroke="hsl(210,60%,45%)" fill="hsl(210,60%,45%)">
<text stroke="none" x="0" y="-2">4 lines</text>
<line x1="0" y1="0" x2="5" y2="0"/>
<line x1="0" y1="2" x2="0" y2="2"/>
<line x1="2" y1="4" x2="3" y2="4"/>
<line x1="0" y1="6" x2="1" y2="6"/>
</g>
<g stroke="hsl(347,60%,45%)" fill="hsl(347,60%,45%)">
<text stroke="none" x="15" y="-2">done</text>
</g>
<g stroke="hsl(124,60%,45%)" fill="hsl(124,60%,45%)" stroke-width="0.8">
<text stroke="none" x="15" y="2">undone next</text>
<line x1="15" y1="4" x2="22.9471" y2="4"/>
<text stroke="none" x="23.9471" y="4">append</text>
<line x1="15" y1="6" x2="22.9471" y2="6"/>
<line x1="15" y1="4" x2="15" y2="6"/>
<text stroke="none" x="23.9471" y="6">also append</text>
</g>
<g stroke="hsl(261,60%,45%)" fill="hsl(261,60%,45%)">
<text stroke="none" x="15" y="10">undone</text>
<line x1="15" y1="12" x2="23.4691" y2="12"/>
<text stroke="none" x="24.4691" y="12">&lt;0&gt;</text>
</g>
</svg>
)svg");
    EXPECT_EQ(folder_.read("b.svg"), folder_.read("a.svg"));
    EXPECT_THAT(shell("echo draw /dev/full | ./notebook").err, HasSubstr("not a regular file"));
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
             {"delete 1\n", "notebook: there is no line '1' from 1 to 0\r\n> "},
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
        std::string command = line.substr(0, 27);
        command.resize(command.find_last_not_of(' ') + 1);
        command = std::regex_replace(command, std::regex(" +"), " ");
        command = std::regex_replace(command, std::regex(" !"), "[!]");
        EXPECT_THAT(readme, HasSubstr("\n| `" + command + "` |"));
        EXPECT_THAT(manual, HasSubstr("\n.B " + command + "\n"));
    }
    EXPECT_EQ(count, 20);
    expectSameOptionsIn(NOTEBOOK_FOLDER "notebook.1", 8);
}

TEST(NotebookHistory, KeepsUpWithItsModel) {
    for (const unsigned int seed : {1U, 2U})
        replay(seed, 20000);
}
