// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <numbers>
#include <random>
#include <regex>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Base/Utility/zeUtilProgress.h"
#include "Base/Utility/zeUtilThreadPool.h"
#include "Base/Utility/zeUtilThreadedTaskQueue.h"

#include "Applications/commandFixture.h"
#include "obj/obj.h"
#include "occlusion/command.h"

namespace {

using namespace occlusion;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using zeLinear::Point;
using zeLinear::Vector;

/// The visibility at the origin, under a normal along z, in a scene of these walls.
double visibilityAmong(std::vector<Point> points, std::vector<std::array<int, 3>> triangles) {
    Mesh mesh{std::move(points), std::move(triangles), {}};
    mesh.points.push_back(Point::origin);
    mesh.normals.assign(mesh.points.size(), Vector::zero);
    mesh.normals.back() = Vector::zAxis;
    zeUtil::Progress progress;
    return visibility(mesh, Tree(mesh, progress), 8192, progress).back();
}

/// A surface around the z axis, between two circles.
double visibilityWithin(double radius0, double z0, double radius1, double z1) {
    constexpr int count = 720;
    std::vector<Point> points;
    std::vector<std::array<int, 3>> triangles;
    for (int i = 0; i < count; ++i) {
        const double angle = 2 * std::numbers::pi * i / count;
        points.emplace_back(radius0 * std::cos(angle), radius0 * std::sin(angle), z0);
        points.emplace_back(radius1 * std::cos(angle), radius1 * std::sin(angle), z1);
        const int a = 2 * i;
        const int b = 2 * ((i + 1) % count);
        triangles.push_back({a, b, a + 1});
        triangles.push_back({b, b + 1, a + 1});
    }
    return visibilityAmong(points, triangles);
}

/// Small triangles at random, or in a grid with shared sides.
Mesh manyTriangles(int count, bool isGrid) {
    std::mt19937 random(static_cast<unsigned int>(count));
    std::uniform_real_distribution<double> number(-1, 1);
    const auto anywhere = [&] { return Vector(number(random), number(random), number(random)); };
    Mesh mesh;
    for (int i = 0; i < count; ++i) {
        const Vector at(i % 40 * 0.05 - 1, i / 40 * 0.05 - 1, i % 7 * 0.125);
        const Point p = Point::origin + (isGrid ? at : anywhere());
        mesh.points.insert(mesh.points.end(),
                           {p, p + (isGrid ? Vector(0.05, 0, 0) : anywhere() * 0.2),
                            p + (isGrid ? Vector(0, 0.05, 0) : anywhere() * 0.2)});
        mesh.triangles.push_back({3 * i, 3 * i + 1, 3 * i + 2});
    }
    return mesh;
}

/// From points in the cube, in any direction, along an axis, or within a plane of the grid.
std::vector<Ray> manyRays(int count) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> anywhere(-1, 1);
    std::vector<Ray> rays;
    for (int i = 0; i < count; ++i) {
        Ray ray{Point(anywhere(random), anywhere(random), anywhere(random)),
                Vector(anywhere(random), anywhere(random), anywhere(random))};
        if (i % 4 == 1)
            ray.direction.set(i % 3 == 0, i % 3 == 1, i % 3 == 2 ? -1 : 0);
        if (i % 4 == 2)
            ray = {Point(i % 40 * 0.05 - 1, i % 39 * 0.05 - 1, 2), Vector(0, 0, -1)};
        if (i % 4 == 3)
            ray = {Point(-2, i % 40 * 0.05 - 1, 0.125), Vector(1, 0, i % 8 == 3 ? 0 : 0.01)};
        rays.push_back(ray);
    }
    return rays;
}

Settings settingsFor(int rays) {
    Settings settings;
    settings.rays = rays;
    settings.picture = "not empty";
    settings.view.width = 40;
    settings.view.height = 30;
    return settings;
}

/// With the model "in.obj" in the folder.
class Occlusion : public Command<run> {
protected:
    Occlusion() {
        folder_.write("in.obj", "mtllib a.mtl\nv 0 0 0 2\nv 2 0 0\nv 0 2 0\nv 0 0 1\nv 9 9 9\n"
                                "lod 1\nlod 2\nusemtl red\nf 1 2 4\nf 1 4 3\np 5\n");
    }
};

/// A regular tetrahedron, with its outer sides counterclockwise, or clockwise.
std::string tetrahedron(const char* scale, bool isInside) {
    const std::string faces =
        isInside ? "f 1 3 2\nf 1 4 3\nf 1 2 4\nf 2 3 4\n" : "f 1 2 3\nf 1 3 4\nf 1 4 2\nf 2 4 3\n";
    return std::regex_replace("v 0 0 0\nv S S 0\nv S 0 S\nv 0 S S\n" + faces, std::regex("S"),
                              scale);
}

} // namespace

TEST(OcclusionShading, AgreesWithClosedForms) {
    const double far = 1000;
    const std::vector<Point> plane = {{far, far, 0}, {-far, far, 0}, {0, -far, 0}};
    EXPECT_EQ(visibilityAmong(plane, {{0, 1, 2}}), 1) << "open";
    const double x = 1e-3;
    const std::vector<Point> wall = {{x, -far, 0}, {x, far, 0}, {x, far, far}, {x, -far, far}};
    EXPECT_NEAR(visibilityAmong(wall, {{0, 1, 2}, {0, 2, 3}}), 0.5, 2e-3) << "at its foot";
    for (const double depth : {0.1, 0.5, 1.0, 3.0, 20.0, 200.0})
        EXPECT_NEAR(visibilityWithin(1, -1e-3, 1, depth), 1 / (1 + depth * depth), 1e-3)
            << "a pit of this depth: " << depth;
    for (const double depth : {0.5, 1.0, 2.0})
        EXPECT_NEAR(visibilityWithin(1, depth, 1e-9, depth), depth * depth / (1 + depth * depth),
                    1e-3)
            << "under a disc at this height: " << depth;
}

/// The corners of a solid see all from outside and nothing from inside, however large it is.
/// Numbers of vertices that no face uses do not matter.
TEST_F(Occlusion, ScalesModelsOfEverySize) {
    for (const char* scale : {"1", "3e-320", "1e-300", "7e300", "-1e307"}) {
        for (const bool isInside : {false, true}) {
            const bool isOpen = isInside == (scale[0] == '-');
            zeUtil::Progress progress;
            folder_.write("in.obj", tetrahedron(scale, isInside) + "v 1e308 -1e308 1e308\n");
            const Mesh mesh = makeMesh(scenefile::readObj(folder_.path("in.obj"), false).scene);
            ASSERT_EQ(mesh.triangles.size(), 4U);
            const std::vector<double> seen = visibility(mesh, Tree(mesh, progress), 256, progress);
            ASSERT_EQ(seen.size(), 5U);
            for (std::size_t i = 0; i < 4; ++i) {
                EXPECT_NEAR(mesh.normals[i].length(), 1, 1e-12);
                EXPECT_EQ(seen[i], isOpen ? 1 : 0) << scale << " corner " << i;
            }
            EXPECT_EQ(mesh.normals[4], Vector::zero);
            EXPECT_EQ(seen[4], 1);
        }
    }
}

TEST(OcclusionTree, FindsTheFirstHitOfAll) {
    const std::vector<Ray> rays = manyRays(400);
    for (const int count : {1, 4, 5, 8, 9, 100, 1600})
        for (const bool isGrid : {false, true}) {
            const Mesh mesh = manyTriangles(count, isGrid);
            zeUtil::Progress progress;
            const Tree tree(mesh, progress);
            std::vector<Tree> single; // each with one triangle
            for (const auto& triangle : mesh.triangles)
                single.emplace_back(Mesh{mesh.points, {triangle}, {}}, progress);
            int hits = 0;
            for (const Ray& ray : rays) {
                double nearest = HUGE_VAL;
                for (const Tree& each : single)
                    if (const std::optional<Hit> hit = each.firstHit(ray))
                        nearest = std::min(nearest, hit->distance);
                const std::optional<Hit> found = tree.firstHit(ray);
                ASSERT_EQ(found ? found->distance : HUGE_VAL, nearest) << count;
                ASSERT_EQ(tree.isBlocked(ray), found.has_value());
                hits += found.has_value();
            }
            EXPECT_TRUE(hits > 0 || count < 100);
        }
}

/// Large enough for tasks that measure slices.
TEST(OcclusionThreads, ComputeTheSameInAnyNumber) {
    const Mesh mesh = makeMesh(scenefile::generateModel(200));
    ASSERT_GT(mesh.triangles.size(), std::size_t{1} << 15);
    const Settings settings = settingsFor(2);
    zeUtil::Progress whole;
    const Result serial = compute(mesh, settings, 1, whole);
    for (const int threads : {2, 3, 7}) {
        zeUtil::Progress progress;
        double last = 0;
        int updates = 0;
        progress.getSigUpdate().connectOwned([&](zeUtil::Progress* root) {
            EXPECT_GE(root->get(), last - 1e-9);
            last = root->get();
            ++updates;
        });
        const Result parallel = compute(mesh, settings, threads, progress);
        EXPECT_TRUE(parallel.visibility == serial.visibility) << threads;
        EXPECT_TRUE(parallel.picture == serial.picture) << threads;
        EXPECT_NEAR(last, 1, 1e-9);
        EXPECT_GT(updates, 10);
        EXPECT_EQ(zeUtil::ThreadPool::get(), zeUtil::ThreadPool::getSingleThreadedPool());
        EXPECT_EQ(zeUtil::ThreadedTaskQueue::get(), zeUtil::ThreadedTaskQueue::getSingleThreaded());
    }
}

TEST(OcclusionThreads, StopWheneverTheUserCancels) {
    const Mesh mesh = makeMesh(scenefile::generateModel(100));
    for (const int threads : {1, 3}) {
        int cancelled = 0;
        for (int limit = 1;; limit += limit / 4 + 1) {
            zeUtil::Progress progress;
            int asked = 0;
            progress.getSigCheckCancel().connectOwned([&](zeUtil::Progress* root) {
                if (++asked == limit)
                    root->cancel();
            });
            try {
                compute(mesh, settingsFor(8), threads, progress);
                EXPECT_LT(asked, limit);
                break;
            } catch (const Cancelled&) {
                EXPECT_EQ(asked, limit); // nobody asks again
                ++cancelled;
            }
        }
        EXPECT_GT(cancelled, 5);
    }
}

TEST_F(Occlusion, WritesTheModelWithColoursAndAPicture) {
    EXPECT_EQ(command("-in @in.obj -out @out.obj -pic @a.pgm -size 60x40 -from 0 0 3").out,
              "not kept: lod (2)\n5 vertices, 2 triangles, mean visibility 1.000\n");
    EXPECT_EQ(folder_.read("out.obj"),
              "# written by occlusion\nmtllib a.mtl\nv 0 0 0 1 1 1\nv 2 0 0 1 1 1\n"
              "v 0 2 0 1 1 1\nv 0 0 1 1 1 1\nv 9 9 9 1 1 1\nusemtl red\nf 1 2 4\nf 1 4 3\np 5\n");
    EXPECT_THAT(filesInFolder(), ElementsAre("a.pgm", "in.obj", "out.obj"));
}

TEST_F(Occlusion, TakesAPictureOfTheWholeModel) {
    folder_.write("in.obj", "v 0 0 5\nv 4 0 5\nv 4 2 5\nv 0 2 5\nf 1 2 3 4\n");
    EXPECT_EQ(command("-in @in.obj -pic @a.pgm -size 88x66 -from 0 0 1 -quiet").out, "");
    const std::string picture = folder_.read("a.pgm");
    const std::string header = "P5\n88 66\n255\n";
    ASSERT_TRUE(picture.starts_with(header));
    ASSERT_EQ(picture.size(), header.size() + 88 * 66);
    for (int y = 0; y < 66; ++y)
        for (int x = 0; x < 88; ++x) { // 80 x 40 pixels in the middle
            const auto grey = static_cast<unsigned char>(
                picture[header.size() + static_cast<std::size_t>(88 * y + x)]);
            ASSERT_EQ(grey, x >= 4 && x < 84 && y >= 13 && y < 53 ? 255 : 51) << x << " " << y;
        }
}

TEST_F(Occlusion, ComparesThreadsWithNone) {
    const Result result = command("-in @in.obj -pic @a.pgm -size 9x9 -compare -threads 2");
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_THAT(result.out, AllOf(StartsWith("seconds   "), HasSubstr("\nvisibility  "),
                                  HasSubstr("the results are the same\n")));
}

TEST_F(Occlusion, ExplainsWhatItCannotDoAndWritesNothing) {
    folder_.write("flat.obj", "v 0 0 0\nl 1 1\n");
    folder_.write("bad.obj", "v 0 0\n");
    const std::tuple<int, const char*, const char*> cases[] = {
        {1, "-in @none.obj -out @new", "none.obj"},
        {1, "-in @bad.obj -out @new", "bad.obj:1: needs 3 or more numbers"},
        {1, "-in @flat.obj -out @new", "the model has no faces"},
        {1, "-in @in.obj -out @no/new", "no/new"},
        {1, "-in @in.obj -pic /dev/full", "/dev/full"},
        {2, "-in @in.obj", "nothing to do: give -output, -picture or -compare"},
        {2, "-in @in.obj -out @in.obj", "in.obj are the same file"},
        {2, "-in @in.obj -out @new -pic @new", "new are the same file"},
        {2, "-in @in.obj -pic @new -size 800", "'800' is no size as in 800x600"},
        {2, "-in @in.obj -pic @new -from 0 0 0", "'0 0 0' is no direction"},
        {2, "-in @in.obj -pic @new -rays 0", "'0' is not a number from 1 to 65536"},
        {2, "-in @in.obj -pic @new -threads 1025", "'1025' is not a number from 1 to 1024"},
        {2, "-in @in.obj -compare -serial", "-compare needs -threads 2 or more"},
    };
    for (const auto& [code, line, message] : cases) {
        const Result result = command(line);
        EXPECT_EQ(result.code, code) << line << result.err;
        EXPECT_THAT(result.err, AllOf(StartsWith("occlusion: "), HasSubstr(message))) << line;
        EXPECT_EQ(result.err.ends_with("Try 'occlusion --help'.\n"), code == 2);
        EXPECT_THAT(filesInFolder(), ElementsAre("bad.obj", "flat.obj", "in.obj"));
    }
}

/// The program itself, in the middle of minutes of work.
TEST_F(Occlusion, EndsOnSIGINTWithoutAnyFileTouched) {
    folder_.write("out.obj", "old");
    const std::string input = folder_.path("in.obj");
    const std::string output = folder_.path("out.obj");
    const zeUtil::Descriptor model(open(input.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC));
    scenefile::writeObj(scenefile::generateModel(60), model.get());
    std::signal(SIGINT, SIG_DFL); // what a program inherits
    const std::string line = "echo $$; exec " OCCLUSION " -verbose -rays 65536 -threads 2 -input " +
                             input + " -output " + output + " 2>&1";
    std::FILE* const child = popen(line.c_str(), "re");
    pid_t process = 0;
    ASSERT_EQ(std::fscanf(child, "%d", &process), 1);
    std::string said;
    for (int byte; (byte = std::getc(child)) != EOF;) {
        said += static_cast<char>(byte);
        if (said.ends_with("computing"))
            kill(process, SIGINT);
    }
    EXPECT_EQ(WEXITSTATUS(pclose(child)), 130) << said;
    EXPECT_THAT(said, HasSubstr("occlusion: stopped: nothing was written\n"));
    EXPECT_THAT(filesInFolder(), ElementsAre("in.obj", "out.obj"));
    EXPECT_EQ(folder_.read("out.obj"), "old");
}

TEST_F(Occlusion, DescribesEveryOptionInTheHelpAndTheManual) {
    expectSameOptionsIn(OCCLUSION_MAN);
}
