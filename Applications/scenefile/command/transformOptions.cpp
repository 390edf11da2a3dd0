// SPDX-License-Identifier: MIT

#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>
#include <vector>

#include "Base/Linear/zeLinearTolerance.h"
#include "Base/Linear/zeLinearVector.h"

#include "Shared/failure.h"
#include "Shared/message.h"
#include "command/command.h"
#include "scene/scene.h"

namespace scenefile {

namespace {

using zeLinear::AffineMatrix;
using zeLinear::Normal;

std::vector<std::string_view> split(std::string_view text) {
    std::vector<std::string_view> words;
    for (std::size_t comma = text.find(','); comma != std::string_view::npos;
         comma = text.find(',')) {
        words.push_back(text.substr(0, comma));
        text.remove_prefix(comma + 1);
    }
    words.push_back(text);
    return words;
}

double number(std::string_view word) {
    double result = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), result);
    if (error != std::errc() || end != word.data() + word.size() || !std::isfinite(result))
        throw app::UsageError(
            app::message("scenefile.bad_number", "'{1}' is not a number", {word}));
    return result;
}

std::vector<double> numbers(std::string_view text) {
    std::vector<double> result;
    for (std::string_view word : split(text))
        result.push_back(number(word));
    return result;
}

Normal axisOf(std::string_view text) {
    if (text == "x")
        return Normal::xAxis;
    if (text == "y")
        return Normal::yAxis;
    if (text == "z")
        return Normal::zAxis;
    const std::vector<double> direct = numbers(text);
    return direct.size() == 3 ? direction(zeLinear::Vector(direct.data())) : Normal();
}

} // namespace

AffineMatrix rotation(const std::string& value) {
    const std::size_t comma = value.find(',');
    const double degrees = number(value.substr(0, comma));
    const Normal axis =
        comma == std::string::npos ? Normal() : axisOf(std::string_view(value).substr(comma + 1));
    if (!axis.valid)
        throw app::UsageError(app::message(
            "scenefile.bad_rotation",
            "'{1}' is no rotation: give degrees and an axis, as in 90,z or 90,0,0,1", {value}));
    AffineMatrix result;
    result.rotate(zeLinear::toRadians(std::remainder(degrees, 360)), axis);
    const bool alongAxis =
        std::fabs(axis.x) == 1 || std::fabs(axis.y) == 1 || std::fabs(axis.z) == 1;
    if (alongAxis && std::remainder(degrees, 90) == 0)
        for (auto& row : result.m)
            for (double& entry : row)
                entry = std::round(entry) + 0.0; // no zero is negative
    return result;
}

AffineMatrix scaling(const std::string& value) {
    std::vector<double> factors = numbers(value);
    if (factors.size() == 1)
        factors.resize(3, factors[0]);
    if (factors.size() != 3)
        throw app::UsageError(
            app::message("scenefile.bad_scale",
                         "'{1}' is no scale: give one factor or three, as in 1,1,0.5", {value}));
    for (double factor : factors)
        if (factor == 0)
            throw app::UsageError(app::message(
                "scenefile.flat", "a scale of 0 makes the model flat, which nothing can undo"));
    AffineMatrix result;
    result.scale(factors[0], factors[1], factors[2]);
    return result;
}

AffineMatrix translation(const std::string& value) {
    const std::vector<double> offsets = numbers(value);
    if (offsets.size() != 3)
        throw app::UsageError(
            app::message("scenefile.bad_translation",
                         "'{1}' is no translation: give three numbers, as in 0,0,-2.5", {value}));
    AffineMatrix result;
    result.translate(zeLinear::Vector(offsets.data()));
    return result;
}

} // namespace scenefile
