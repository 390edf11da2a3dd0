// SPDX-License-Identifier: MIT

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "Support/FaultTrial.h"
#include "Support/OrdinaryUser.h"

#include "replaceFile.h"
#include "scenefileFixture.h"

using testing::AllOf;
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

    Result save() const { return run({"import", path("new.obj"), path("made")}); }

    /// Ends a save by a signal in the middle of its writing, and returns the signal.
    int endBy(int signal) const {
        const pid_t child = fork();
        if (child == 0) {
            scenefile::replaceFile(path("made"), [&](int descriptor) {
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
            EXPECT_THAT(result.err, EndsWith(result.code == 0 ? "" : "made is as it was\n"));
        }
        EXPECT_TRUE(result.code == 0 || fault.n > 0) << result.err;
    };
    trial.runAll();
    trial.report("scenefile import");

    trial.prepare();
    const SystemFaults faults(SystemFaults::onWrite, {{ENOSPC}});
    EXPECT_EQ(save().err, "scenefile: " + path("made") + ": cannot be written: the disk is full\n" +
                              path("made") + " is as it was\n");
}

TEST_F(ScenefileSave, KeepsTheOldDocumentWhenTheModelIsMalformed) {
    folder_.write("new.obj", "v 1 2\n");
    const Result result = save();
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.err, AllOf(HasSubstr("new.obj:1: "), EndsWith("made is as it was\n")));
    EXPECT_EQ(folder_.read("made"), old_);
    EXPECT_THAT(run({"import", path("new.obj"), path("none")}).err, Not(HasSubstr("as it was")));
}

TEST_F(ScenefileSave, RefusesADocumentThatTheUserMayNotWrite) {
    std::filesystem::permissions(path(""), std::filesystem::perms::all);
    std::filesystem::permissions(path("made"), std::filesystem::perms(0444));
    EXPECT_EQ(asOrdinaryUser([&] {
                  const Result result = save();
                  const bool isSaid = result.err.find("Permission denied") != std::string::npos;
                  return isSaid ? result.code : 100;
              }),
              1);
    EXPECT_EQ(folder_.read("made"), old_);
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
    const Result verified = run({"verify", path("made")});
    EXPECT_EQ(verified.code, 0);
    EXPECT_EQ(verified.err,
              "note: " + left +
                  " may be a part of a new file, from a save that was killed: delete it\n");
    std::filesystem::remove(left);
    EXPECT_THAT(run({"verify", path("made")}).err, IsEmpty());

    // Killed between its two renames.
    std::filesystem::rename(path("made"), path("made.ABCDEF.1.tmp"));
    folder_.write("made_of_wood.tmp", "no such file");
    EXPECT_THAT(run({"show", path("made")}).err,
                EndsWith("made.ABCDEF.1.tmp may be the old file, from a save that was killed: if " +
                         path("made") + " is missing, rename it\n"));
}

} // namespace
