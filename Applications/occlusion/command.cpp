// SPDX-License-Identifier: MIT

#include "occlusion/command.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <new>
#include <numeric>

#include "Base/Utility/zeUtilError.h"
#include "Base/Utility/zeUtilProgress.h"

#include "Shared/failure.h"
#include "Shared/interruption.h"
#include "Shared/message.h"
#include "Shared/output.h"
#include "Shared/save.h"
#include "Shared/terminal.h"
#include "obj/obj.h"

namespace occlusion {

namespace {

using app::message;

/// Standard input and standard output are not the same file.
void refuseSameFiles(const Settings& settings) {
    const std::string files[] = {settings.input, settings.output, settings.picture};
    for (std::size_t i = 1; i < std::size(files); ++i)
        for (std::size_t k = 0; k < i && !files[i].empty(); ++k)
            if ((files[i] == files[k] && (k > 0 || files[k] != app::standardStream)) ||
                app::Target(files[i]).isSameFile(files[k]))
                throw app::UsageError(message(
                    "occlusion.same_file", "{1} and {2} are the same file", {files[k], files[i]}));
}

/// Shows how far the work is, and lets Ctrl-C cancel it.
Result computeWatched(const Mesh& mesh, const Settings& settings, int threads) {
    constexpr int whole = 1000;
    const app::InterruptFlag interrupt;
    const app::Step step("compute", message("occlusion.computing", "computing on {1} thread(s)",
                                            {std::to_string(threads)}));
    app::Progress line("computing", app::messages().getLevel() < app::verbose ? whole : 0);
    zeUtil::Progress progress;
    progress.getSigUpdate().connectOwned([&](zeUtil::Progress* root) {
        line.report(static_cast<std::int64_t>(root->get() * whole));
    });
    progress.getSigCheckCancel().connectOwned([&](zeUtil::Progress* root) {
        if (interrupt.isSet())
            root->cancel();
    });
    Result result = compute(mesh, settings, threads, progress);
    if (interrupt.isSet()) // since it was last asked
        throw Cancelled();
    return result;
}

void printTimes(const Result& serial, const Result& parallel, int threads,
                zeOS::AppOutputStream& out) {
    out("%-12s%10s%6d threads%10s\n", "seconds", "1 thread", threads, "speed-up");
    const auto print = [&](const char* name, double one, double many) {
        out("%-12s%10.3f%14.3f%10.2f\n", name, one, many, one / many);
    };
    constexpr const char* names[] = {"tree", "visibility", "picture"};
    const std::size_t count = serial.picture.grey.empty() ? 2 : 3;
    double sums[2] = {};
    for (std::size_t i = 0; i < count; ++i) {
        print(names[i], serial.seconds[i], parallel.seconds[i]);
        sums[0] += serial.seconds[i];
        sums[1] += parallel.seconds[i];
    }
    print("all", sums[0], sums[1]);
}

/// Equality of numbers is that of bits here: none is negative or no number.
Result computeTwice(const Mesh& mesh, const Settings& settings, zeOS::AppOutputStream& out) {
    const Result serial = computeWatched(mesh, settings, 1);
    Result parallel = computeWatched(mesh, settings, settings.threads);
    if (serial.visibility != parallel.visibility || serial.picture != parallel.picture)
        throw app::Failure(message("occlusion.different", "the results are different"));
    printTimes(serial, parallel, settings.threads, out);
    out("%s\n", message("occlusion.same", "the results are the same").c_str());
    return parallel;
}

void writePicture(const Picture& picture, int descriptor) {
    const std::string header =
        "P5\n" + std::to_string(picture.width) + " " + std::to_string(picture.height) + "\n255\n";
    const std::string pixels(picture.grey.begin(), picture.grey.end());
    if (!app::writeAll(descriptor, header + pixels))
        throw app::Failure(app::systemMessage(errno));
}

/// Weights and colours exclude each other.
void setColours(scenefile::Vertices& vertices, const std::vector<double>& visibility) {
    vertices.weights.clear();
    vertices.colours.clear();
    for (const double grey : visibility)
        vertices.colours.insert(vertices.colours.end(), 3, grey);
}

/// Says what the model that was written lacks.
void noteSkipped(const std::map<std::string, int>& skipped, zeOS::AppOutputStream& out) {
    for (const auto& [keyword, count] : skipped)
        out(app::normal, "%s\n",
            message("occlusion.skipped", "not kept: {1} ({2})",
                    {app::visible(keyword), std::to_string(count)})
                .c_str());
}

void shade(const Settings& settings) {
    refuseSameFiles(settings);
    const std::string stream = app::standardStream;
    if (settings.picture == stream && isatty(STDOUT_FILENO) == 1)
        throw app::UsageError(
            message("occlusion.terminal", "a picture cannot be written to a terminal"));
    const bool isOutTaken = settings.output == stream || settings.picture == stream;
    zeOS::AppOutputStream& out = isOutTaken ? app::messages() : app::results();

    scenefile::ObjModel model = scenefile::readObj(settings.input, true);
    const Mesh mesh = makeMesh(model.scene);
    const Result result = settings.compare ? computeTwice(mesh, settings, out)
                                           : computeWatched(mesh, settings, settings.threads);
    if (!settings.output.empty()) {
        setColours(*model.scene.vertices, result.visibility);
        app::saveFile(app::Target(settings.output), [&](int descriptor) {
            scenefile::writeObj(model.scene, descriptor, "occlusion");
        });
        noteSkipped(model.skipped, out);
    }
    if (!settings.picture.empty())
        app::saveFile(app::Target(settings.picture),
                      [&](int descriptor) { writePicture(result.picture, descriptor); });
    const double sum = std::accumulate(result.visibility.begin(), result.visibility.end(), 0.0);
    out(app::normal, "%zu vertices, %zu triangles, mean visibility %.3f\n", mesh.points.size(),
        mesh.triangles.size(), sum / static_cast<double>(mesh.points.size()));
}

} // namespace

int run(const std::vector<std::string>& arguments) {
    try {
        if (const std::optional<Settings> settings = parseArguments(arguments))
            shade(*settings);
        app::flushResults();
        return 0;
    } catch (const Cancelled&) {
        app::report("occlusion", message("occlusion.stopped", "stopped: nothing was written"));
        return 128 + SIGINT; // as a shell has it for a program that SIGINT ended
    } catch (const app::UsageError& error) {
        app::report("occlusion", error.what());
        app::report("", message("shared.try_help", "Try '{1} --help'.", {"occlusion"}));
        return 2;
    } catch (const std::bad_alloc&) {
        app::report("occlusion", message("shared.no_memory", "out of memory"));
    } catch (const zeUtil::Error& error) { // a thread cannot be started
        app::report("occlusion", app::oneLine(error.message()));
    } catch (const std::exception& error) {
        app::report("occlusion", error.what());
    }
    return 1;
}

} // namespace occlusion
