// SPDX-License-Identifier: MIT

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "Support/FaultTrial.h"

#include "Shared/save.h"
#include "scenefileFixture.h"

using testing::AllOf;
using testing::AnyOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// A document with an old model in it, and a new model.
class ScenefileSave : public Scenefile {
protected:
    ScenefileSave() {
        importText("v 0 0 0\n", "binary");
        old_ = folder_.read("made");
        folder_.write("new.obj", fullModel);
        std::filesystem::remove(path("in.obj"));
    }

    Result save() const { return command("import @new.obj @made"); }

    /// Ends a save by a signal in the middle of its writing, and returns the signal.
    int endBy(int signal) const {
        const pid_t child = fork();
        if (child == 0) {
            app::saveFile(app::Target(path("made")), [&](int descriptor) {
                if (write(descriptor, "a part", 6) == 6)
                    kill(getpid(), signal);
            });
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }

    std::string old_;
};

} // namespace

TEST_F(ScenefileSave, KeepsTheOldDocumentAndSaysSoWhateverFails) {
    ASSERT_EQ(save().code, 0);
    const std::string complete = folder_.read("made");
    Result result{};
    FaultTrial trial;
    trial.prepare = [&] {
        for (const std::string& name : filesInFolder())
            if (name != "new.obj")
                std::filesystem::remove(path(name));
        folder_.write("made", old_);
    };
    trial.operation = [&] { result = save(); };
    trial.check = [&](const Fault& fault) {
        EXPECT_EQ(folder_.read("made"), result.code == 0 ? complete : old_);
        // What cannot be looked at or deleted is left behind.
        if (fault.call != SystemFaults::onStat && fault.call != SystemFaults::onUnlink) {
            EXPECT_THAT(filesInFolder(), ElementsAre("made", "new.obj"));
            // The parser refuses a file before anything is done.
            EXPECT_THAT(result.err,
                        AnyOf(EndsWith(result.code == 0 ? "" : "made is as it was\n"),
                              EndsWith("is not readable.\n"), EndsWith("is not writable.\n")));
        }
        EXPECT_TRUE(result.code == 0 || fault.n > 0) << result.err;
    };
    trial.runAll();
    trial.report("scenefile import");

    trial.prepare();
    folder_.write("other.zd", complete);
    const struct {
        const char* line;
        SystemFaults::Call call;
        const char* reason;
    } writers[] = {
        {"import @new.obj @made", SystemFaults::onWrite, "the disk is full"},
        {"export @other.zd @made", SystemFaults::onFwrite, "No space left on device"},
        {"transform @made --scale 2", SystemFaults::onWrite, "the disk is full"},
    };
    for (const auto& [line, call, reason] : writers) {
        const SystemFaults faults(call, {{ENOSPC}, {ENOSPC}});
        EXPECT_EQ(command(line).err, "scenefile: " + path("made") + ": cannot be written: " +
                                         reason + "\n" + path("made") + " is as it was\n");
        EXPECT_EQ(folder_.read("made"), old_);
        EXPECT_THAT(filesInFolder(), ElementsAre("made", "new.obj", "other.zd"));
    }
}

// The environment is looked at once in a process: hence one of its own.
TEST_F(ScenefileSave, KeepsTheRightsOfTheDocumentByEitherStrategy) {
    const std::string command = SCENEFILE " import " + path("new.obj") + " " + path("made");
    for (const std::string environment : {"", "ZEPHI_PROTECTED_WRITE_USE_COPY=1 "})
        for (const auto rights : {std::filesystem::perms(0600), std::filesystem::perms(0666)}) {
            std::filesystem::permissions(path("made"), rights);
            EXPECT_EQ(std::system((environment + command + " > /dev/null").c_str()), 0);
            EXPECT_EQ(std::filesystem::status(path("made")).permissions(), rights) << environment;
        }
}

TEST_F(ScenefileSave, LeavesNoTemporaryFileWhenItIsBrokenOff) {
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        EXPECT_EQ(endBy(signal), signal);
        EXPECT_EQ(folder_.read("made"), old_);
        EXPECT_THAT(filesInFolder(), ElementsAre("made", "new.obj"));
    }
}

TEST_F(ScenefileSave, NotesWhatAKillLeft) {
    EXPECT_EQ(endBy(SIGKILL), SIGKILL);
    EXPECT_EQ(folder_.read("made"), old_);
    ASSERT_EQ(filesInFolder().size(), 3U);
    const std::string left = path(filesInFolder()[1]);
    EXPECT_THAT(left, AllOf(HasSubstr("/made."), EndsWith(".0.tmp")));
    const Result verified = command("verify @made");
    EXPECT_EQ(verified.code, 0);
    EXPECT_EQ(verified.err,
              "note: " + left +
                  " may be a part of a new file, from a save that was killed: delete it\n");
    std::filesystem::remove(left);
    EXPECT_THAT(command("verify @made").err, IsEmpty());

    // Killed between its two renames.
    std::filesystem::rename(path("made"), path("made.ABCDEF.1.tmp"));
    folder_.write("made_of_wood.tmp", "no such file");
    std::filesystem::create_directory(path("links"));
    std::filesystem::create_symlink(path("made"), path("links/other"));
    for (const char* name : {"made", "links/other"})
        EXPECT_THAT(run({"show", path(name)}).err,
                    EndsWith("made.ABCDEF.1.tmp may be the old file, from a save that was killed: "
                             "if " +
                             path("made") + " is missing, rename it\n"));
}

// The digests come from another implementation, over the bytes that zeOSFileHash.h describes.
TEST_F(Scenefile, PrintsAndComparesTheDigestOfADocument) {
    const std::string document = folder_.write("scene.zd", "hello");
    const std::string key = folder_.write("key", std::string("\0\xFF\n", 3));
    const std::string line = "  " + document + "\n";
    const std::string byDefault =
        "df39e6f668002e237d7aacb6c27ed781e5024f5006582e204a46c535439b745b";
    const std::string byText = "238666048bffb5df0d4dcea46a875fc88be5678323122bfeb68f119e7aad0ed5";
    const std::string byFile = "7f795c97c204b65f4fdeea394425ba4ef9bd77ed53915ad4186293fc2baf4cae";
    unsetenv("SCENEFILE_KEY");
    EXPECT_EQ(run({"--hash", document}).out, byDefault + line);
    EXPECT_EQ(run({"hash", document}).out, byDefault + line);
    setenv("SCENEFILE_KEY", "secret", 1);
    EXPECT_EQ(run({"--hash", document}).out, byText + line);
    EXPECT_EQ(run({"--hash", document, "--key-file", key}).out, byFile + line);
    EXPECT_EQ(run({"--hash", document, "--expect", byText}).out, byText + line);

    const std::tuple<std::vector<std::string>, int, const char*> failures[] = {
        {{"--hash", document, "--expect", byFile}, 1, "does not have this digest"},
        {{"--hash", document, "--expect", byText.substr(1)}, 2, "no digest"},
        {{"--hash", path("")}, 1, "not a file"},
        {{"--hash", path("\xFF")}, 1, "not UTF-8"},
        {{"--hash", document, "--key-file", path("none")}, 1, "does not exist"},
    };
    for (const auto& [arguments, code, message] : failures) {
        const Result result = run(arguments);
        EXPECT_EQ(result.code, code) << result.err;
        EXPECT_THAT(result.err, HasSubstr(message));
        EXPECT_EQ(result.out, "");
    }
    setenv("SCENEFILE_KEY", "", 1);
    EXPECT_THAT(run({"--hash", document}).err, HasSubstr("SCENEFILE_KEY: the key is empty"));
    unsetenv("SCENEFILE_KEY");
}
