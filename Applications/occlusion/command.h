// SPDX-License-Identifier: MIT

/// @file
/// The command line: run(), and the computation that it asks for.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "occlusion/shading.h"

namespace occlusion {

/// Does what the arguments (without the program's name) ask for, and returns the exit code: 0 for
/// success, 1 for bad input or a failed write, 2 for wrong use, 130 if SIGINT came while it
/// computed. Results go to app::results(), messages to app::messages(): they must be open.
int run(const std::vector<std::string>& arguments);

struct Settings {
    std::string input = "-";
    std::string output;  ///< Empty: no model is written.
    std::string picture; ///< Empty: none is taken.
    int threads = 1;
    int rays = 64;
    View view;
    bool compare = false;
};

/// Nothing if the help or the version was asked for, and has been printed. Throws a UsageError, or
/// a Failure for a file that cannot be read or written.
std::optional<Settings> parseArguments(const std::vector<std::string>& arguments);

/// What is computed, and how long that took. Without a picture to take, there is none.
struct Result {
    std::vector<double> visibility;
    Picture picture;
    double seconds[3] = {}; ///< For the tree, the visibility and the picture.
};

/// Computes on `threads` threads; for 1, on that of the caller alone. Throws Cancelled if a
/// listener of the progress cancels it, or the zeUtil::Error of a thread that cannot be started.
Result compute(const Mesh& mesh, const Settings& settings, int threads, zeUtil::Progress& progress);

} // namespace occlusion
