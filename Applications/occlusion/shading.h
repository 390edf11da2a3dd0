// SPDX-License-Identifier: MIT

/// @file
/// What is computed with rays: how open each point of a mesh lies, and a picture of that. Both run
/// by chunks on zeUtil::ThreadPool::get(), and come out the same however many threads that has.

#pragma once

#include <vector>

#include "occlusion/tree.h"

namespace occlusion {

/// For each point the share of the sky above it that nothing hides, from 0 to 1, weighted by the
/// cosine to the normal as the light on a dull surface is. `rays` rays are cast for each point: the
/// same ones above every normal, but turned about it by an angle that follows from the point's
/// number. A point without a normal lies open. Throws Cancelled.
std::vector<double> visibility(const Mesh& mesh, const Tree& tree, int rays,
                               zeUtil::Progress& progress);

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> grey; ///< Row by row from the top.

    friend bool operator==(const Picture&, const Picture&) = default;
};

/// Where a picture is taken from.
struct View {
    int width = 800;
    int height = 600;
    zeLinear::Vector from = {1, 0.8, 1.5}; ///< Towards the viewer; of any length but zero.
};

/// The whole mesh without perspective, with the y axis (or z, if it is seen along y) upwards: the
/// visibility of the points as grey, with linear steps between them. Four rays for each pixel.
/// Throws Cancelled.
Picture render(const Mesh& mesh, const Tree& tree, const std::vector<double>& visibility,
               const View& view, zeUtil::Progress& progress);

} // namespace occlusion
