// SPDX-License-Identifier: MIT

#include "objWriter.h"

#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <string_view>

#include "failure.h"
#include "progress.h"

namespace scenefile {

namespace {

/// Text on its way to a file.
class Output {
public:
    explicit Output(int descriptor) : file_(openFile(descriptor)) {}
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output() { std::fclose(file_); }

    Output& operator<<(std::string_view text) {
        if (std::fwrite(text.data(), 1, text.size(), file_) != text.size())
            fail();
        return *this;
    }
    Output& operator<<(double number) { return printNumber(number); }
    Output& operator<<(int number) { return printNumber(number); }

    void finish() {
        if (std::fflush(file_) != 0)
            fail();
    }

private:
    /// In the fewest digits that read back as the same number.
    template<class T>
    Output& printNumber(T number) {
        char digits[32];
        const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
        return *this << std::string_view(digits, static_cast<std::size_t>(end - digits));
    }

    [[noreturn]] static void fail() { throw Failure(systemMessage(errno)); }

    static std::FILE* openFile(int descriptor) {
        std::FILE* file = fdopen(dup(descriptor), "w");
        if (file == nullptr)
            fail();
        return file;
    }

    std::FILE* file_;
};

class Writer {
public:
    Writer(const Scene& scene, int descriptor) : scene_(scene), output_(descriptor) {}

    void write();

private:
    void vertices();
    void tuples(const char* keyword, const std::vector<double>& numbers, int size);
    void node(const Node& node, bool first);
    void run(const Run& run);
    void state(const Run& run);
    void corner(const Run& run, std::size_t at);

    const Scene& scene_;
    Output output_;
    const Material* material_ = nullptr;
    const Group* group_ = nullptr;
    int smoothing_ = 0;
};

void Writer::write() {
    output_ << "# written by scenefile\n";
    for (const std::string& library : scene_.libraries)
        output_ << "mtllib " << library << "\n";
    vertices();
    const std::vector<Node*>& children = scene_.root->children;
    Progress progress("writing", static_cast<std::int64_t>(children.size()));
    for (std::size_t i = 0; i < children.size(); ++i) {
        node(*children[i], i == 0);
        progress.report(static_cast<std::int64_t>(i));
    }
    output_.finish();
}

void Writer::vertices() {
    const Vertices& all = *scene_.vertices;
    for (std::size_t i = 0; i < all.positions.size() / 3; ++i) {
        output_ << "v";
        for (std::size_t k = 3 * i; k < 3 * i + 3; ++k)
            output_ << " " << all.positions[k];
        if (!all.weights.empty())
            output_ << " " << all.weights[i];
        for (std::size_t k = 3 * i; !all.colours.empty() && k < 3 * i + 3; ++k)
            output_ << " " << all.colours[k];
        output_ << "\n";
    }
    tuples("vt", all.texture, all.textureSize);
    tuples("vn", all.normals, 3);
}

void Writer::tuples(const char* keyword, const std::vector<double>& numbers, int size) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (i % static_cast<std::size_t>(size) == 0)
            output_ << (i == 0 ? "" : "\n") << keyword;
        output_ << " " << numbers[i];
    }
    output_ << (numbers.empty() ? "" : "\n");
}

/// The first node needs no statement if it has a mesh and no name: a reader makes it by itself.
void Writer::node(const Node& node, bool first) {
    if (!node.name.empty())
        output_ << "o " << node.name << "\n";
    else if (!first || node.mesh == nullptr)
        output_ << "o\n";
    if (node.mesh != nullptr)
        for (const Run& part : node.mesh->runs)
            run(part);
}

void Writer::run(const Run& run) {
    state(run);
    const char* keyword = run.kind == ElementKind::face   ? "f"
                          : run.kind == ElementKind::line ? "l"
                                                          : "p";
    std::size_t at = 0;
    for (int size : run.sizes) {
        output_ << keyword;
        for (int i = 0; i < size; ++i)
            corner(run, at++);
        output_ << "\n";
    }
}

/// What a run needs and the one before it had not.
void Writer::state(const Run& run) {
    if (run.group != group_) {
        output_ << "g";
        if (run.group != nullptr)
            for (const std::string& name : run.group->names)
                output_ << " " << name;
        output_ << "\n";
    }
    if (run.material != material_)
        output_ << "usemtl" << (run.material != nullptr ? " " + run.material->name : "") << "\n";
    if (run.smoothing != smoothing_)
        output_ << "s " << run.smoothing << "\n";
    group_ = run.group;
    material_ = run.material;
    smoothing_ = run.smoothing;
}

void Writer::corner(const Run& run, std::size_t at) {
    output_ << " " << run.positions[at] + 1;
    if (run.hasTexture)
        output_ << "/" << run.texture[at] + 1;
    if (run.hasNormals)
        output_ << (run.hasTexture ? "/" : "//") << run.normals[at] + 1;
}

} // namespace

void writeObj(const Scene& scene, int descriptor) {
    Writer(scene, descriptor).write();
}

} // namespace scenefile
