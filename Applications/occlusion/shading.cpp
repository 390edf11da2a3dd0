// SPDX-License-Identifier: MIT

#include "occlusion/shading.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "Base/Utility/zeUtilProgress.h"
#include "Base/Utility/zeUtilThreadPool.h"
#include "Base/Utility/zeUtilThreadedAlg.h"

#include "scene/scene.h"

namespace occlusion {

namespace {

using zeLinear::Point;
using zeLinear::Vector;

/// Does something for each of the numbers from 0 to `count` - 1, some of them in each chunk.
template<class Work>
class ForEach : public zeUtil::ThreadedChunkAlg {
public:
    ForEach(std::size_t count, std::size_t perChunk, const Work& work)
        : count_(count), perChunk_(perChunk), work_(work) {
        numChunks = static_cast<int>((count + perChunk - 1) / perChunk);
    }

    void threadFunc(int chunk, int threadId, int) override {
        if (cancelled(threadId))
            return;
        const std::size_t first = static_cast<std::size_t>(chunk) * perChunk_;
        for (std::size_t i = first; i < std::min(first + perChunk_, count_); ++i)
            work_(i);
        updateProgress(threadId, static_cast<double>(chunk) / numChunks);
    }

private:
    std::size_t count_;
    std::size_t perChunk_;
    const Work& work_;
};

/// `raysEach` makes chunks of some thousand rays: milliseconds, so that a user who cancels need not
/// wait.
template<class Work>
void forEach(std::size_t count, int raysEach, zeUtil::Progress& progress, const Work& work) {
    constexpr int raysPerChunk = 4096;
    ForEach algorithm(count, static_cast<std::size_t>(std::max(raysPerChunk / raysEach, 1)), work);
    algorithm.setProgress(&progress);
    zeUtil::ThreadPool::get()->execute(algorithm);
    if (progress.cancelled())
        throw Cancelled();
}

/// From 0 to 1: the bits of `number` in the opposite order, behind the point.
double reversed(std::uint32_t number) {
    double result = 0;
    for (double bit = 0.5; number != 0; number >>= 1, bit /= 2)
        if ((number & 1) != 0)
            result += bit;
    return result;
}

/// From 0 to 1, without a visible order.
double scattered(std::size_t number) {
    std::uint64_t bits = number * 0x9E3779B97F4A7C15U;
    bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ bits >> 27) * 0x94D049BB133111EBU;
    return static_cast<double>((bits ^ bits >> 31) >> 11) * 0x1p-53;
}

/// Two directions at right angles to a unit vector, and to each other.
struct Frame {
    explicit Frame(const Vector& normal) {
        const double sign = std::copysign(1.0, normal.z);
        const double a = -1 / (sign + normal.z);
        const double b = normal.x * normal.y * a;
        x.set(1 + sign * normal.x * normal.x * a, sign * b, -sign * normal.x);
        y.set(b, sign + normal.y * normal.y * a, -normal.y);
    }

    Vector x;
    Vector y;
};

/// The `i`-th direction of a hemisphere, in its own frame: evenly spread on the disc below, which
/// makes directions near the normal more frequent, by their cosine.
Vector diffuse(int i, int rays, double turn) {
    const double height2 = (i + 0.5) / rays;
    const double radius = std::sqrt(1 - height2);
    const double angle = 2 * std::numbers::pi * (reversed(static_cast<std::uint32_t>(i)) + turn);
    return Vector(radius * std::cos(angle), radius * std::sin(angle), std::sqrt(height2));
}

double visibilityAt(std::size_t point, const Mesh& mesh, const Tree& tree, int rays) {
    constexpr double lift = 1e-6; // clear of the faces around the point
    const Vector& normal = mesh.normals[point];
    if (normal == Vector::zero)
        return 1;
    const Frame frame(normal);
    const Point origin = mesh.points[point] + normal * lift;
    const double turn = scattered(point);
    int open = 0;
    for (int i = 0; i < rays; ++i) {
        const Vector local = diffuse(i, rays, turn);
        const Vector direction = frame.x * local.x + frame.y * local.y + normal * local.z;
        open += tree.isBlocked({origin, direction}) ? 0 : 1;
    }
    return static_cast<double>(open) / rays;
}

/// A plane before the mesh, with its pixels.
class Camera {
public:
    Camera(const Mesh& mesh, const View& view) {
        away_ = -Vector(scenefile::direction(view.from));
        const bool isAlongY = std::fabs(away_.y) > 1 - 1e-9;
        right_ = scenefile::direction(cross(away_, isAlongY ? Vector::zAxis : Vector::yAxis));
        down_ = cross(away_, right_);
        double low[2] = {2, 2}; // beyond all points, in both directions
        double high[2] = {-2, -2};
        for (const auto& triangle : mesh.triangles)
            for (const int corner : triangle) {
                const Vector at = mesh.points[static_cast<std::size_t>(corner)] - Point::origin;
                const double flat[] = {dot(at, right_), dot(at, down_)};
                for (int k = 0; k < 2; ++k) {
                    low[k] = std::min(low[k], flat[k]);
                    high[k] = std::max(high[k], flat[k]);
                }
            }
        constexpr double margin = 1.1;
        pixel_ = margin * std::max({(high[0] - low[0]) / view.width,
                                    (high[1] - low[1]) / view.height, 1e-9});
        const auto start = [&](int k, int pixels) {
            return (low[k] + high[k]) / 2 - pixel_ * pixels / 2;
        };
        corner_ = Point::origin - away_ * 4 + right_ * start(0, view.width) +
                  down_ * start(1, view.height);
    }

    Ray ray(double x, double y) const {
        return {corner_ + right_ * (x * pixel_) + down_ * (y * pixel_), away_};
    }

private:
    Vector away_;
    Vector right_;
    Vector down_;
    double pixel_;
    Point corner_;
};

double shadeOf(const Hit& hit, const Mesh& mesh, const std::vector<double>& visibility) {
    double shade = 0;
    for (std::size_t k = 0; k < 3; ++k)
        shade +=
            hit.weights[k] * visibility[static_cast<std::size_t>(mesh.triangles[hit.triangle][k])];
    return std::clamp(shade, 0.0, 1.0);
}

} // namespace

std::vector<double> visibility(const Mesh& mesh, const Tree& tree, int rays,
                               zeUtil::Progress& progress) {
    std::vector<double> result(mesh.points.size());
    forEach(result.size(), rays, progress,
            [&](std::size_t i) { result[i] = visibilityAt(i, mesh, tree, rays); });
    return result;
}

Picture render(const Mesh& mesh, const Tree& tree, const std::vector<double>& visibility,
               const View& view, zeUtil::Progress& progress) {
    constexpr double background = 0.2;
    constexpr double samples[][2] = {
        {0.375, 0.125}, {0.875, 0.375}, {0.125, 0.625}, {0.625, 0.875}};
    const Camera camera(mesh, view);
    Picture picture{view.width, view.height, {}};
    const auto width = static_cast<std::size_t>(view.width);
    picture.grey.resize(width * static_cast<std::size_t>(view.height));
    forEach(picture.grey.size(), 4, progress, [&](std::size_t i) {
        double sum = 0;
        for (const auto& sample : samples) {
            const auto hit = tree.firstHit(camera.ray(static_cast<double>(i % width) + sample[0],
                                                      static_cast<double>(i / width) + sample[1]));
            sum += hit ? shadeOf(*hit, mesh, visibility) : background;
        }
        picture.grey[i] = static_cast<unsigned char>(std::lround(sum / 4 * 255));
    });
    return picture;
}

} // namespace occlusion
