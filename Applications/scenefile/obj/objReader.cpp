// SPDX-License-Identifier: MIT

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "obj/obj.h"
#include "obj/objLines.h"

namespace scenefile {

namespace {

/// Statements of OBJ that a scene cannot hold.
constexpr std::string_view unsupported[] = {
    // free-form geometry
    "vp", "cstype", "deg", "bmat", "step", "curv", "curv2", "surf", "parm", "trim", "hole", "scrv",
    "sp", "end", "con", "bsp", "bzp", "cdc", "cdp", "res",
    // display and rendering
    "bevel", "c_interp", "d_interp", "lod", "shadow_obj", "trace_obj", "ctech", "stech", "mg",
    "maplib", "usemap", "fo",
    // other files
    "call", "csh"};

/// The highest index that an element used, and the line where it first did.
struct Highest {
    int number = 0;
    int line = 0;
};

class Reader {
public:
    Reader(const std::string& path, bool skipUnsupported)
        : lines_(path), skipUnsupported_(skipUnsupported) {}

    ObjModel read();

private:
    using Handler = void (Reader::*)();

    static Handler findHandler(std::string_view keyword);
    void statement();

    void vertex();
    void textureVertex();
    void normal();
    void point() { element(ElementKind::point); }
    void line() { element(ElementKind::line); }
    void face() { element(ElementKind::face); }
    void object();
    void group();
    void smoothing();
    void material();
    void library();

    void element(ElementKind kind);
    void corner(std::string_view word, Run& run);
    Run& runFor(ElementKind kind, std::string_view firstCorner);
    int index(std::string_view word, int count, Highest& highest, const char* what);
    void checkHighest(const Highest& highest, int count, const char* what) const;

    int numbers(std::array<double, 6>& values, int fewest, int most);
    double number(std::string_view word) const;
    int integer(std::string_view word) const;
    std::string name() const;
    void checkRoom(std::size_t count) const;

    void addNode(const std::string& name);
    Mesh& currentMesh();
    const Material* currentMaterial();
    const Group* currentGroup();

    ObjLines lines_;
    bool skipUnsupported_;
    ObjModel model_;
    Scene& scene_ = model_.scene;
    std::string_view rest_; // of the statement, behind its keyword

    Node* node_ = nullptr;
    std::size_t meshNumbers_ = 0; // in the mesh of the node
    std::string materialName_;
    std::vector<std::string> groupNames_;
    int smoothing_ = 0;
    std::map<std::string, const Material*> materials_;
    std::map<std::vector<std::string>, const Group*> groups_;
    Highest highestPosition_;
    Highest highestTexture_;
    Highest highestNormal_;
};

ObjModel Reader::read() {
    scene_ = makeScene();
    while (lines_.next())
        statement();
    const Vertices& vertices = *scene_.vertices;
    if (vertices.positions.empty())
        lines_.fail("the file ends without a vertex");
    checkHighest(highestPosition_, vertices.positionCount(), "vertex");
    checkHighest(highestTexture_, vertices.textureCount(), "texture vertex");
    checkHighest(highestNormal_, vertices.normalCount(), "normal");
    return std::move(model_);
}

Reader::Handler Reader::findHandler(std::string_view keyword) {
    static constexpr std::pair<std::string_view, Handler> handlers[] = {
        {"v", &Reader::vertex},         {"f", &Reader::face},         {"vn", &Reader::normal},
        {"vt", &Reader::textureVertex}, {"l", &Reader::line},         {"p", &Reader::point},
        {"g", &Reader::group},          {"s", &Reader::smoothing},    {"o", &Reader::object},
        {"usemtl", &Reader::material},  {"mtllib", &Reader::library},
    };
    for (const auto& [name, handler] : handlers)
        if (name == keyword)
            return handler;
    return nullptr;
}

void Reader::statement() {
    rest_ = lines_.text();
    const std::string_view keyword = takeWord(rest_);
    if (const Handler handler = findHandler(keyword)) {
        (this->*handler)();
        return;
    }
    const std::string text(keyword.substr(0, 40));
    if (std::find(std::begin(unsupported), std::end(unsupported), keyword) == std::end(unsupported))
        lines_.fail("unknown statement '" + text + "'");
    if (!skipUnsupported_)
        lines_.fail("'" + text + "' is not supported: a document holds points, lines and polygons" +
                    " (--skip-unsupported skips such statements)");
    ++model_.skipped[text];
}

// Vertices.

void Reader::vertex() {
    std::array<double, 6> values;
    const int count = numbers(values, 3, 6);
    Vertices& vertices = *scene_.vertices;
    if (count == 5)
        lines_.fail("a vertex has 3 numbers, 4 with a weight, or 6 with a colour, not 5");
    if (const bool first = vertices.positions.empty();
        !first && vertices.colours.empty() == (count == 6))
        lines_.fail(count == 6 ? "this vertex has a colour, and those before it have none"
                               : "this vertex has no colour, and those before it have one");
    if (count == 4 || !vertices.weights.empty()) {
        vertices.weights.resize(vertices.positions.size() / 3, 1.0);
        vertices.weights.push_back(count == 4 ? values[3] : 1.0);
    }
    if (count == 6)
        vertices.colours.insert(vertices.colours.end(), values.begin() + 3, values.end());
    vertices.positions.insert(vertices.positions.end(), values.begin(), values.begin() + 3);
}

/// Texture coordinates that are left out are 0; all vertices of a file get as many as the longest.
void Reader::textureVertex() {
    std::array<double, 6> values = {};
    const int count = numbers(values, 1, 3);
    Vertices& vertices = *scene_.vertices;
    if (count > vertices.textureSize) {
        std::vector<double> wider;
        for (std::size_t i = 0; i < vertices.texture.size(); ++i) {
            wider.push_back(vertices.texture[i]);
            if ((i + 1) % static_cast<std::size_t>(vertices.textureSize) == 0)
                wider.resize(wider.size() + static_cast<std::size_t>(count - vertices.textureSize));
        }
        vertices.texture = std::move(wider);
        vertices.textureSize = count;
    }
    vertices.texture.insert(vertices.texture.end(), values.begin(),
                            values.begin() + vertices.textureSize);
}

void Reader::normal() {
    std::array<double, 6> values;
    numbers(values, 3, 3);
    std::vector<double>& normals = scene_.vertices->normals;
    normals.insert(normals.end(), values.begin(), values.begin() + 3);
}

// State.

void Reader::object() {
    addNode(name());
}

void Reader::addNode(const std::string& name) {
    node_ = addTo(scene_.nodes);
    node_->name = name;
    node_->parent = scene_.root;
    scene_.root->children.push_back(node_);
    meshNumbers_ = 0;
}

void Reader::group() {
    groupNames_.clear();
    name(); // has no control bytes
    for (std::string_view word = takeWord(rest_); !word.empty(); word = takeWord(rest_))
        groupNames_.emplace_back(word);
}

void Reader::smoothing() {
    const std::string_view word = takeWord(rest_);
    if (!takeWord(rest_).empty())
        lines_.fail("'s' takes one number, or \"off\"");
    smoothing_ = word == "off" ? 0 : integer(word);
    if (smoothing_ < 0)
        lines_.fail("a smoothing group is not negative");
}

void Reader::material() {
    materialName_ = name();
}

void Reader::library() {
    scene_.libraries.push_back(name());
    if (scene_.libraries.back().empty())
        lines_.fail("'mtllib' needs the name of a file");
}

/// The node's mesh. What comes before the first `o` belongs to a node without a name.
Mesh& Reader::currentMesh() {
    if (node_ == nullptr)
        addNode({});
    if (node_->mesh == nullptr) {
        node_->mesh = addTo(scene_.meshes);
        node_->mesh->vertices = scene_.vertices;
    }
    return *node_->mesh;
}

/// Materials and groups are made for the first element that uses them.
const Material* Reader::currentMaterial() {
    if (materialName_.empty())
        return nullptr;
    const Material*& known = materials_[materialName_];
    if (known == nullptr) {
        Material* made = addTo(scene_.materials);
        made->name = materialName_;
        known = made;
    }
    return known;
}

const Group* Reader::currentGroup() {
    if (groupNames_.empty())
        return nullptr;
    const Group*& known = groups_[groupNames_];
    if (known == nullptr) {
        Group* made = addTo(scene_.groups);
        made->names = groupNames_;
        known = made;
    }
    return known;
}

// Elements.

void Reader::element(ElementKind kind) {
    std::string_view words = rest_;
    const std::string_view first = takeWord(words);
    Run& run = runFor(kind, first);
    const std::size_t before = run.positions.size();
    for (std::string_view word = takeWord(rest_); !word.empty(); word = takeWord(rest_))
        corner(word, run);
    const std::size_t corners = run.positions.size() - before;
    if (corners < static_cast<std::size_t>(fewestCorners(kind)))
        lines_.fail("this element needs " + std::to_string(fewestCorners(kind)) +
                    " or more vertices, and has " + std::to_string(corners));
    run.sizes.push_back(static_cast<int>(corners));
    meshNumbers_ += 1 + corners * (1U + run.hasTexture + run.hasNormals);
    checkRoom(meshNumbers_);
}

/// The last run of the mesh if the element fits, or else a new one.
Run& Reader::runFor(ElementKind kind, std::string_view firstCorner) {
    Run wanted;
    wanted.kind = kind;
    if (const std::size_t slash = firstCorner.find('/'); slash != std::string_view::npos) {
        wanted.hasTexture = firstCorner.substr(slash + 1, 1) != "/";
        wanted.hasNormals = firstCorner.find('/', slash + 1) != std::string_view::npos;
    }
    std::vector<Run>& runs = currentMesh().runs;
    wanted.material = currentMaterial();
    wanted.group = currentGroup();
    wanted.smoothing = smoothing_;
    if (runs.empty() || runs.back().kind != wanted.kind ||
        runs.back().hasTexture != wanted.hasTexture ||
        runs.back().hasNormals != wanted.hasNormals || runs.back().material != wanted.material ||
        runs.back().group != wanted.group || runs.back().smoothing != wanted.smoothing)
        runs.push_back(std::move(wanted));
    return runs.back();
}

/// "v", "v/vt", "v//vn" or "v/vt/vn", in the form of the element's first corner.
void Reader::corner(std::string_view word, Run& run) {
    std::string_view parts[3];
    int count = 0;
    for (std::string_view left = word;; ++count) {
        if (count == 3)
            lines_.fail("'" + std::string(word) + "' has too many parts");
        const std::size_t slash = left.find('/');
        parts[count] = left.substr(0, slash);
        if (slash == std::string_view::npos)
            break;
        left.remove_prefix(slash + 1);
    }
    if (run.hasTexture == parts[1].empty() || run.hasNormals != (count == 2))
        lines_.fail("'" + std::string(word) + "' is not of the form of the first vertex here");
    const Vertices& vertices = *scene_.vertices;
    run.positions.push_back(index(parts[0], vertices.positionCount(), highestPosition_, "vertex"));
    if (run.hasTexture)
        run.texture.push_back(
            index(parts[1], vertices.textureCount(), highestTexture_, "texture vertex"));
    if (run.hasNormals)
        run.normals.push_back(index(parts[2], vertices.normalCount(), highestNormal_, "normal"));
}

/// An index from 0. `count` are known so far, from which negative numbers count backwards.
int Reader::index(std::string_view word, int count, Highest& highest, const char* what) {
    const int number = integer(word);
    if (number == 0)
        lines_.fail(std::string(what) + " 0: numbers begin at 1");
    if (number < -count)
        lines_.fail(std::string(what) + " " + std::to_string(number) + ": only " +
                    std::to_string(count) + " come before this line");
    if (number > highest.number)
        highest = {number, lines_.line()};
    return number > 0 ? number - 1 : count + number;
}

void Reader::checkHighest(const Highest& highest, int count, const char* what) const {
    if (highest.number > count)
        lines_.fail(highest.line, std::string(what) + " " + std::to_string(highest.number) +
                                      ": the file has only " + std::to_string(count));
}

// Words.

/// The numbers of a vertex; returns how many there are.
int Reader::numbers(std::array<double, 6>& values, int fewest, int most) {
    int count = 0;
    for (std::string_view word = takeWord(rest_); !word.empty(); word = takeWord(rest_)) {
        if (count == most)
            lines_.fail("more than " + std::to_string(most) + " numbers");
        values[static_cast<std::size_t>(count++)] = number(word);
    }
    if (count < fewest)
        lines_.fail("needs " + std::to_string(fewest) + " or more numbers, and has " +
                    std::to_string(count));
    const Vertices& vertices = *scene_.vertices;
    checkRoom(2 * vertices.positions.size() + vertices.texture.size() + vertices.normals.size());
    return count;
}

double Reader::number(std::string_view word) const {
    const bool plain = word.find_first_not_of("+-.0123456789eE") == std::string_view::npos;
    const std::string text(word);
    char* end = nullptr;
    const double value = plain ? std::strtod(text.c_str(), &end) : 0;
    if (!plain || end == text.c_str() || *end != '\0')
        lines_.fail("'" + text.substr(0, 40) + "' is not a number");
    if (std::fabs(value) > largestCoordinate)
        lines_.fail("'" + text.substr(0, 40) + "' is too large");
    return value;
}

int Reader::integer(std::string_view word) const {
    if (word.starts_with('+') && !word.starts_with("+-"))
        word.remove_prefix(1);
    int value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc() || end != word.data() + word.size())
        lines_.fail("'" + std::string(word.substr(0, 40)) + "' is not a whole number" +
                    (error == std::errc::result_out_of_range ? " of reasonable size" : ""));
    return value;
}

/// What follows the keyword, with each tab turned into a blank.
std::string Reader::name() const {
    std::string_view words = rest_;
    const std::string_view first = takeWord(words);
    if (first.empty())
        return {};
    std::string text(first.data(), rest_.data() + rest_.size());
    std::replace(text.begin(), text.end(), '\t', ' ');
    if (!isName(text))
        lines_.fail("a control byte in a name");
    return text;
}

void Reader::checkRoom(std::size_t count) const {
    if (count > mostNumbers)
        lines_.fail("the model is too large for a document");
}

} // namespace

ObjModel readObj(const std::string& path, bool skipUnsupported) {
    return Reader(path, skipUnsupported).read();
}

} // namespace scenefile
