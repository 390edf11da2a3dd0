// SPDX-License-Identifier: MIT

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <string_view>

#include "Shared/failure.h"
#include "Shared/save.h"
#include "Shared/terminal.h"
#include "obj/obj.h"

namespace scenefile {

namespace {

/// A buffered text file, whose failures are exceptions.
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

    [[noreturn]] static void fail() { throw app::Failure(app::systemMessage(errno)); }

    static std::FILE* openFile(int descriptor) {
        zeUtil::Descriptor copy = app::duplicate(descriptor);
        std::FILE* file = fdopen(copy.get(), "w");
        if (file == nullptr)
            fail();
        copy.release(); // the file closes it
        return file;
    }

    std::FILE* file_;
};

class Writer {
public:
    Writer(const Scene& scene, int descriptor)
        : scene_(scene), output_(descriptor), progress_("writing", lineCount(scene)) {}

    void write(std::string_view program);

private:
    static std::int64_t lineCount(const Scene& scene);
    void endLine();
    void vertices();
    void tuples(const char* keyword, const std::vector<double>& numbers, int size);
    void node(const Node& node, bool first);
    void run(const Run& run);
    void state(const Run& run);
    void corner(const Run& run, std::size_t at);

    const Scene& scene_;
    Output output_;
    app::Progress progress_;
    std::int64_t lines_ = 0; // of vertices and elements
    const Material* material_ = nullptr;
    const Group* group_ = nullptr;
    int smoothing_ = 0;
};

void Writer::write(std::string_view program) {
    output_ << "# written by " << program << "\n";
    for (const std::string& library : scene_.libraries)
        output_ << "mtllib " << library << "\n";
    vertices();
    const std::vector<Node*>& children = scene_.root->children;
    for (std::size_t i = 0; i < children.size(); ++i)
        node(*children[i], i == 0);
    output_.finish();
}

/// Of vertices and elements.
std::int64_t Writer::lineCount(const Scene& scene) {
    const Vertices& all = *scene.vertices;
    return std::int64_t{all.positionCount()} + all.textureCount() + all.normalCount() +
           countScene(scene).elements;
}

void Writer::endLine() {
    output_ << "\n";
    progress_.report(++lines_);
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
        endLine();
    }
    tuples("vt", all.texture, all.textureSize);
    tuples("vn", all.normals, 3);
}

void Writer::tuples(const char* keyword, const std::vector<double>& numbers, int size) {
    for (std::size_t i = 0; i < numbers.size();) {
        output_ << keyword;
        for (const std::size_t end = i + static_cast<std::size_t>(size); i < end; ++i)
            output_ << " " << numbers[i];
        endLine();
    }
}

/// The first node needs no statement if it has a mesh and no name: readers make it by themselves.
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
        endLine();
    }
}

/// The statements for what differs from the run before.
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

void writeObj(const Scene& scene, int descriptor, std::string_view program) {
    Writer(scene, descriptor).write(program);
}

} // namespace scenefile
