// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilInitializer.h"

#include <algorithm>
#include <deque>
#include <list>
#include <utility>
#include <vector>

namespace zeUtil {
namespace {

struct Dependency {
    Initializer* dependent;
    Initializer* dependency;
};

// Pointers, so that they are initialised before any code runs: static constructors of any
// translation unit may register. They live as long as the process.
constinit std::vector<Initializer*>* initializers = nullptr;
constinit bool initialized = false;
constinit std::list<Dependency>* dependencies = nullptr;

} // namespace

void Initializer::finalize() {}

Initializer::~Initializer() = default;

void Initializer::addInit() {
    if (!initializers)
        initializers = new std::vector<Initializer*>;
    initializers->push_back(this);
}

void Initializer::dependsOn(Initializer* other) {
    if (!dependencies)
        dependencies = new std::list<Dependency>;
    dependencies->push_back({this, other});
}

Error Initializer::initializeAll() {
    if (!initializers)
        return Error();
    if (initialized)
        return Error(1, "Initializer::initializeAll() already called");
    initialized = true;

    // Each visit of a member visits what it depends on once more, so that a dependency always
    // counts more than its dependents. A cycle keeps this loop running endlessly.
    if (dependencies) {
        std::deque<Initializer*> queue(initializers->begin(), initializers->end());
        while (!queue.empty()) {
            Initializer* visited = queue.front();
            queue.pop_front();
            ++visited->count_;
            for (const Dependency& edge : *dependencies)
                if (edge.dependent == visited)
                    queue.push_back(edge.dependency);
        }
    }
    std::sort(initializers->begin(), initializers->end(),
              [](const Initializer* a, const Initializer* b) { return a->count_ > b->count_; });

    // By index: an initialize() may register further members, and they run too.
    for (std::size_t i = 0; i < initializers->size(); ++i)
        if (Error error = (*initializers)[i]->initialize(); error.code() != 0)
            return error;
    return Error();
}

void Initializer::finalizeAll() {
    if (!initializers)
        return;
    for (std::size_t i = initializers->size(); i > 0; --i)
        (*initializers)[i - 1]->finalize();
}

} // namespace zeUtil
