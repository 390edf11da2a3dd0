// SPDX-License-Identifier: MIT

#include <cstdlib>

#include "Base/Strings/zeStringTableStringTable.h"

#include "Shared/terminal.h"
#include "scenefileFixture.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

const char* const methods[] = {"binary", "text", "binary-debug", "text-debug"};

const std::tuple<const char*, int, const char*> malformed[] = {
    {"", 1, "without a vertex"},
    {"v 1 2\n", 1, "needs 3"},
    {"v 1 2 3 4 5\n", 1, "not 5"},
    {"v 1 2 0x10\n", 1, "'0x10' is not a number"},
    {"v 1 2 nan\n", 1, "'nan' is not a number"},
    {"v 1 2 1e999\n", 1, "too large"},
    {"v 1 2 -1.7976931348623157e308\n", 1, "too large"}, // has no 16 digits
    {"v 1 2 3\nv 1 2 3 1 1 1\n", 2, "has a colour"},
    {"v 1 2 3 1 1 1\n\nv 1 2 3\n", 3, "has no colour"},
    {"v 0 0 0\nl 1\n", 2, "needs 2"},
    {"v 0 0 0\nf 1 1\n", 2, "needs 3 or more vertices, and has 2"},
    {"v 0 0 0\nf 1 1 0\n", 2, "vertex 0: numbers begin at 1"},
    {"v 0 0 0\nf 1 1 2\nf 1 1 1\n", 2, "vertex 2: the file has only 1"},
    {"v 0 0 0\nf 1 1 -2\n", 2, "vertex -2: only 1"},
    {"v 0 0 0\nf 1/1 1/1 1/1\n", 2, "texture vertex 1: the file has only 0"},
    {"v 0 0 0\nf 1//1 1//1 1//1\n", 2, "normal 1: the file has only 0"},
    {"v 0 0 0\nvn 0 0 1\nf 1//1 1//1 1\n", 3, "'1' is not of the form"},
    {"v 0 0 0\nf 1/1/1/1 1 1\n", 2, "too many parts"},
    {"v 0 0 0\nf 1 1 99999999999\n", 2, "of reasonable size"},
    {"v 0 0 0\ns -1\n", 2, "not negative"},
    {"v 0 0 0\no a\x01z\n", 2, "control byte"},
    {"v 0 0 0\nvx 1\n", 2, "unknown statement 'vx'"},
    {"v 0 0 0\ncurv 0 1 1\n", 2, "'curv' is not supported"},
    {"v 0 0 0\n\\\n \\\nf 1 2 \\\r\n3 x\n", 2, "'x' is not a whole number"},
};

} // namespace

TEST_F(Scenefile, RefusesMalformedModelsWithTheirLineAndWritesNothing) {
    folder_.write("document", "an old document");
    for (const auto& [content, line, message] : malformed) {
        const std::string model = folder_.write("bad.obj", content);
        for (const char* target : {"document", "new"}) {
            const Result result = run({"import", model, path(target)});
            const std::string place = model + ":" + std::to_string(line) + ": ";
            EXPECT_EQ(result.code, 1) << content;
            EXPECT_THAT(result.err, AllOf(StartsWith("scenefile: " + place), HasSubstr(message)));
            EXPECT_EQ(result.err.ends_with("document is as it was\n"), *target == 'd');
            EXPECT_THAT(filesInFolder(), ElementsAre("bad.obj", "document"));
        }
    }
    EXPECT_EQ(folder_.read("document"), "an old document");
}

TEST_F(Scenefile, RefusesWhatIsNoTextFile) {
    folder_.write("zero.obj", std::string("v 1 2 3\n\0", 9));
    EXPECT_THAT(command("import @zero.obj @d").err, HasSubstr(":2: a zero byte"));
    EXPECT_THAT(run({"import", path(""), path("d")}).err, HasSubstr("exists but is not a file"));
    EXPECT_THAT(command("import @none.obj @d").err, HasSubstr("none.obj does not exist."));
    EXPECT_THAT(command("import /dev/zero @d").err, HasSubstr(":1: a zero byte"));
}

/// Models that say the same in another way make the same document.
TEST_F(Scenefile, TakesEveryFormOfTheSameModel) {
    const std::pair<const char*, const char*> pairs[] = {
        {"v 0 0 0\nv 1 0 0\nf 1 2 1\n", "v 0 0 0\r\nv 1 0 0\r\nf 1 2 1\r\n"},
        {"v 0 0 0\nv 1 0 0\nf 1 2 1\n", "v 0 0 0\rv 1 0 0\rf 1 2 1"},
        {"v 0 0 0\nv 1 0 0\nf 1 2 1\n", "v 0 0 0\nv 1 0 0\nf -2 -1 -2\n"},
        {"v 0 0 0\nv 1 0 0\nf 1 2 1\n", "f 1 2 1\nv 0 0 0\nv 1 0 0\n"},
        {"v 0 0 0\nv 1 0 0\nf 1 2 1\n",
         "#c\\\n\tv +0 0. 0e5 #c\nv 1\\\n 0 \\  \n0\n\nf 1  2\t1 #\n"},
        {"v 0 0 0\nvn 0 0 1\nf 1//1 1//1 1//1\n", "vn 0 0 1\nv 0 0 0\nf -1//-1 1//-1 -1//1\n"},
        {"v 1 2 3 1\nv 1 2 3 2\n", "v 1 2 3\nv 1 2 3 2\n"},
        {"v 0 0 0\nvt 1 0 0\nvt 1 2 0\nvt 1 2 3\n", "v 0 0 0\nvt 1\nvt 1 2\nvt 1 2 3\n"},
        {"v 0 0 0\np 1\n", "v 0 0 0\ng unused\nusemtl unused\ng\nusemtl\ns off\np 1\n"},
        {"v 0 0 0\no a b\np 1\n", "v 0 0 0\no \t a\tb \\\n\np 1\n"},
    };
    for (const auto& [plain, variant] : pairs)
        EXPECT_EQ(importText(variant, "text"), importText(plain, "text")) << variant;
}

TEST_F(Scenefile, KeepsAModelThroughExportAndImport) {
    std::vector<std::string> models = {
        fullModel,
        "v 0.1 1e-300 -0\nv -1.797693134862315e308 5e-324 3.0000000000000004\n",
        "v 0 0 0 0.5\np 1\n",
        "v 0 0 0 1 0 0.25\nvt 0.5\nvt 1\np 1\nl 1/1 1/2\n",
        "v 0 0 0\nvt 1 2 3\no\no\np 1\no\np 1\ng default\np 1\ng\np 1\n",
        "v 0 0 0\no a\np 1\no a\np 1\no b#c \\} \"[<\\{ \xC3\xA9 \xFF\np 1\n",
        "v 0 0 0\nf 1 1 1\nf 1 1 1 1\nl 1 1\nf 1 1 1\np 1 1 1\n",
        "v 0 0 0\nmtllib a b.mtl\nmtllib c\nusemtl m\np 1\nusemtl n\np 1\nusemtl m\np 1\n",
    };
    if (const char* more = std::getenv("SCENEFILE_MODELS"))
        for (const auto& entry : std::filesystem::directory_iterator(more))
            if (entry.path().extension() == ".obj")
                models.push_back(folder_.read(entry.path()));
    for (const std::string& model : models)
        for (const char* method : methods) {
            const std::string document = importText(model, method);
            const std::string exported = exportText(document);
            EXPECT_EQ(importText(exported, method), document) << model << exported;
        }
    EXPECT_EQ(exportText(importText(fullModel, "binary")),
              std::string("# written by scenefile\n") + fullModel);
}

TEST_F(Scenefile, SaysWhatItDoesNotKeep) {
    folder_.write("in.obj", "v 0 0 0\nlod 1\nvp 1 2\nlod 2\np 1\n");
    const Result result = command("import @in.obj @d --skip-unsupported");
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.out, AllOf(HasSubstr("lod (2 times)"), HasSubstr("vp (1 time)")));

    folder_.write("in.obj", "v 0.1 0.30000000000000004 1\n");
    EXPECT_THAT(command("import @in.obj @d --method text").out, HasSubstr("1 number rounded"));
    EXPECT_THAT(command("import @in.obj @d").out, Not(HasSubstr("rounded")));
    importText(fullModel, "text");
    EXPECT_THAT(command("transform @made --rotate 30,1,1,1").out,
                HasSubstr(" numbers rounded to the 16 digits"));
}

TEST_F(Scenefile, ShowsWhatIsInADocument) {
    importText(fullModel, "text");
    EXPECT_THAT(
        command("show @made").out,
        AllOf(HasSubstr("vertices: 4 positions, 2 texture coordinates of 2 numbers, 1 normal\n"),
              HasSubstr("material library: house.mtl\n"),
              HasSubstr("bounds (0 0 -0.001) to (1 1 0.1)\n"),
              HasSubstr("  node house: mesh of 3 runs, bounds (0 0 -0.001) to (1 1 0.1)\n"
                        "    2 faces, 7 corners of v/vt/vn; material red {brick}; group "
                        "walls south; smoothing 3\n"
                        "    1 face, 3 corners of v//vn; material red {brick}; smoothing 3\n"
                        "    1 line, 2 corners of v/vt\n"
                        "  node empty: no mesh\n"
                        "  node \"roof\" <1>: mesh of 1 run, bounds (0 0 -0.001) to (1 1 0.1)\n")));
    importText("v 0 0 0\n", "text");
    EXPECT_THAT(command("show @made").out, HasSubstr("\nno bounds\n"));
}

TEST_F(Scenefile, ExplainsWrongUse) {
    folder_.write("in.obj", "v 0 0 0\n");
    std::istringstream wrong("|frobnicate|import @in.obj|import @in.obj @b c|hash -|"
                             "import @in.obj @b --method xml|import @in.obj @b --colour|"
                             "import @in.obj @b --compress=1|import @in.obj @./in.obj|"
                             "show @in.obj --method text|generate @a.obj --segments 2|"
                             "transform @in.obj|transform @in.obj --method text|"
                             "transform @in.obj --rotate 90,w|"
                             "transform @in.obj --rotate 90,0,0,0|transform @in.obj --scale|"
                             "transform @in.obj --scale 0|transform @in.obj --scale 1,-0,1|"
                             "transform @in.obj --translate 1,2,|show @in.obj -- -x|"
                             "transform @in.obj --translate 0,nan,0");
    for (std::string line; std::getline(wrong, line, '|');) {
        const Result result = command(line);
        EXPECT_EQ(result.code, 2) << line;
        EXPECT_THAT(result.err, HasSubstr("scenefile --help"));
    }
    EXPECT_THAT(command("import @in.obj --compress").err, HasSubstr("a file of that name is ./--"));
}

TEST_F(Scenefile, HasAManPageWithTheOptionsOfItsHelp) {
    expectSameOptionsIn(SCENEFILE_MAN);
}

/// The catalog has each text that the sources ask for, but for the listing of show, and no other.
TEST_F(Scenefile, SpeaksGermanFromACatalog) {
    std::string sources;
    for (const char* folder : {"scenefile", "Shared"})
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(std::string(APPLICATIONS) + folder))
            if (entry.path().extension() == ".cpp")
                sources += folder_.read(entry.path());
    std::set<std::string> asked = matches(sources, "message\\(\\s*\"([a-z0-9_.]+)\"");
    EXPECT_GT(asked.size(), 40U);
    std::istringstream catalog(folder_.read(SCENEFILE_GERMAN));
    for (std::string line; std::getline(catalog, line);) {
        const std::string found = line.substr(0, line.find(' '));
        const bool isListed = found.starts_with("scenefile.help_") ||
                              found.starts_with("scenefile.one_") ||
                              found.starts_with("scenefile.many_");
        EXPECT_TRUE(found.find('.') == std::string::npos || isListed || asked.erase(found) == 1)
            << found;
    }
    EXPECT_THAT(asked, testing::IsEmpty());

    const std::string help = command("--messages " SCENEFILE_GERMAN " --help").out;
    EXPECT_THAT(help, AllOf(StartsWith("Aufruf: scenefile BEFEHL"), HasSubstr("\nBefehle:\n")));
    EXPECT_THAT(help, Not(HasSubstr(" the "))); // nothing is left in English
    zeStringTable::appStringTable().clear();
}

TEST_F(Scenefile, SaysAsMuchAsItIsAskedFor) {
    folder_.write("in.obj", "v 0 0 0\np 1\n");
    EXPECT_EQ(command("import @in.obj @d --quiet").out, "");
    EXPECT_EQ(command("verify @d --quiet").out, "");
    EXPECT_THAT(command("show @d --quiet").out, HasSubstr("objects: "));
    EXPECT_EQ(command("import @in.obj @d").err, "");
    EXPECT_THAT(command("import @in.obj @d --trace").err,
                AllOf(StartsWith("reading " + path("in.obj") + "\n"),
                      HasSubstr(" Start trace: read "), HasSubstr(" End trace: read ")));
    EXPECT_EQ(app::messages().getIndentLevel(), 0);
}

// Standard input and output are those of a process: hence one of its own.
TEST_F(Scenefile, ReadsStandardInputAndWritesStandardOutput) {
    const auto shell = [&](const std::string& line) {
        return std::system(
            ("cd " + path("") + "; export TMPDIR=.; (" + line + ") 2> messages").c_str());
    };
    ASSERT_EQ(command("generate @in.obj --segments 8").code, 0);
    ASSERT_EQ(command("import @in.obj @in.zd --compress").code, 0);
    ASSERT_EQ(shell("cat in.obj | " SCENEFILE " import - - --compress | cat > out.zd"), 0);
    EXPECT_EQ(folder_.read("out.zd"), folder_.read("in.zd"));
    EXPECT_THAT(folder_.read("messages"), StartsWith("standard output: 57 positions"));
    ASSERT_EQ(shell(SCENEFILE " transform - --scale 2 < in.zd | " SCENEFILE
                              " transform - --scale 0.5 | " SCENEFILE " export - - > out.obj"),
              0);
    EXPECT_EQ(folder_.read("out.obj"), folder_.read("in.obj"));
    ASSERT_EQ(shell(SCENEFILE " show - < in.zd > shown"), 0);
    EXPECT_THAT(folder_.read("shown"), StartsWith("standard input: binary"));
    EXPECT_NE(shell(SCENEFILE " generate - > /dev/full"), 0);
    EXPECT_THAT(folder_.read("messages"),
                HasSubstr("standard output: cannot be written: No space"));
    EXPECT_NE(shell("echo 'v 1' | " SCENEFILE " import - d"), 0);
    EXPECT_THAT(folder_.read("messages"), StartsWith("scenefile: standard input:1: needs 3"));
}

TEST(Visible, KeepsOnlyWhatCanBePrinted) {
    const std::pair<std::string_view, const char*> texts[] = {
        {"plain \\ ~", "plain \\ ~"},
        {"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xC2\xA0",
         "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xC2\xA0"},
        {"\x1B[2J\a\t\n\r\x7F", R"(\x1b[2J\x07\x09\x0a\x0d\x7f)"},
        {{"\0", 1}, R"(\x00)"},
        {"\xC2\x9B", R"(\xc2\x9b)"},                 // a control character beyond ASCII
        {"\x80 \xFF", R"(\x80 \xff)"},               // begin no character
        {"\xC3", R"(\xc3)"},                         // cut off
        {"\xE2\x82z", R"(\xe2\x82z)"},               // cut off
        {"\xC1\xBF", R"(\xc1\xbf)"},                 // too long
        {"\xE0\x9F\xBF", R"(\xe0\x9f\xbf)"},         // too long
        {"\xED\xA0\x80", R"(\xed\xa0\x80)"},         // a surrogate
        {"\xF4\x90\x80\x80", R"(\xf4\x90\x80\x80)"}, // beyond Unicode
    };
    for (const auto& [text, printed] : texts)
        EXPECT_EQ(app::visible(text), printed);
}

/// Texts from files, file names and arguments, with what could command a terminal.
TEST_F(Scenefile, PrintsNothingThatCommandsATerminal) {
    const std::string control = "\x1B]0;x\a\x7F\xC2\x9B"
                                "2J";
    const std::string hostile = control + "\xFF";
    const std::string document = path("a\x1B]0;\n\xC2\x9B.zd"); // saved names are UTF-8
    const std::string model = path("b" + control + ".obj");     // arguments are UTF-8
    const std::string name = "name \xC2\x9B"
                             "2J\xFF"; // as a document can hold it
    std::string printed;
    const auto collect = [&](const std::vector<std::string>& arguments) {
        const Result result = run(arguments);
        printed += result.out + result.err;
    };
    for (const std::string& line :
         {"v 1 2 " + hostile, "o " + hostile, hostile + " 1", "f " + hostile, "s " + hostile,
          "usemtl " + hostile, "curv" + hostile, "mtllib " + name, "o " + name, "usemtl " + name}) {
        folder_.write(std::filesystem::path(model).filename(), "v 0 0 0\n" + line + "\np 1\n");
        collect({"import", model, document, "--skip-unsupported"});
        collect({"show", document});
    }
    folder_.write("types.zd", "^@\n1\n1 0 1\n1 2 4 8 4 8 8\n@\n   0 packetFile_EOF\n   1 " +
                                  hostile + "\n@\n{ 1 0 }\n{ 0 0 }\n");
    collect({"show", path("types.zd")});
    collect({hostile});
    collect({"show", "a", hostile + hostile});
    collect({"show", "--" + hostile});
    collect({"hash", document, "--expect", hostile});
    EXPECT_THAT(printed, AllOf(HasSubstr(R"(\x1b]0;x\x07\x7f\xc2\x9b2J\xff)"),
                               HasSubstr(R"(material library: name \xc2\x9b2J\xff)")));
    for (std::size_t end = 0; !printed.empty(); printed.erase(0, end + 1)) {
        end = printed.find('\n');
        const std::string line = printed.substr(0, end);
        EXPECT_EQ(line, app::visible(line));
    }
}
