// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilProgress.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using zeUtil::Progress;

/// The tree of phases as plain records that never go away.
struct Model {
    struct Node {
        int parent; ///< -1 for a root.
        double weight;
        double current = 0;
        bool ended = false;
        int updates = 0, destroys = 0;  ///< Firings of a root's signals: as they should be,
        int updated = 0, destroyed = 0; ///< and as they were.
    };

    int add(int parent, double weight) {
        nodes.push_back({parent, weight});
        return static_cast<int>(nodes.size()) - 1;
    }
    Node& operator[](int i) { return nodes[static_cast<std::size_t>(i)]; }
    int root(int i) { return (*this)[i].parent < 0 ? i : root((*this)[i].parent); }
    bool isPartOf(int i, int whole) {
        return i == whole || (i >= 0 && isPartOf((*this)[i].parent, whole));
    }

    void change(int i, double delta) {
        Node& node = (*this)[i];
        node.current = std::min(node.current + delta, 1.0);
        if (node.parent < 0)
            ++node.updates;
        else
            change(node.parent, delta * node.weight);
    }
    bool hasEnded(int i) { return i >= 0 && ((*this)[i].ended || hasEnded((*this)[i].parent)); }
    void end(int i) {
        Node& node = (*this)[i];
        if (node.parent < 0)
            ++node.destroys;
        else if (!hasEnded(i))
            change(i, 1.0 - node.current);
        node.ended = true;
    }

    std::vector<Node> nodes;
};

/// Objects, their nodes in the model, and what their roots have fired.
class ProgressScene {
public:
    explicit ProgressScene(std::size_t count) : objects(count), nodes(count) {
        for (std::size_t i = 0; i < count; ++i)
            makeRoot(i);
    }

    void makeRoot(std::size_t i) {
        if (objects[i])
            model.end(nodes[i]);
        objects[i].reset();
        objects[i] = std::make_unique<Progress>();
        const int root = nodes[i] = model.add(-1, 1);
        Progress* owner = objects[i].get();
        const auto count = [this, root, owner](int Model::Node::*which) {
            return [this, root, owner, which](Progress* sender) {
                EXPECT_EQ(sender, owner);
                ++(model[root].*which);
            };
        };
        owner->getSigUpdate().connectOwned(count(&Model::Node::updated));
        owner->getSigDestroy().connectOwned(count(&Model::Node::destroyed));
    }

    void set(std::size_t i, double value) {
        model.change(nodes[i], value - model[nodes[i]].current);
        objects[i]->set(value);
    }

    void subPhase(std::size_t i, double weight, std::size_t sub) {
        if (model.isPartOf(nodes[i], nodes[sub]))
            return; // not allowed
        model.end(nodes[sub]);
        nodes[sub] = model.add(nodes[i], weight);
        objects[i]->subPhase(weight, *objects[sub]);
    }

    void compare() {
        for (std::size_t i = 0; i < objects.size(); ++i)
            EXPECT_EQ(objects[i]->get(), model[model.root(nodes[i])].current) << i;
        for (const Model::Node& node : model.nodes) {
            EXPECT_EQ(node.updated, node.updates);
            EXPECT_EQ(node.destroyed, node.destroys);
        }
    }

private:
    Model model;
    std::vector<std::unique_ptr<Progress>> objects;
    std::vector<int> nodes;
};

} // namespace

// Weights and values are multiples of powers of two, so that every sum is exact.
TEST(Progress, AddsUpPhasesAsAPlainTreeDoes) {
    for (unsigned int seed = 0; seed < 200; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&](unsigned int n) { return static_cast<unsigned int>(random() % n); };
        const unsigned int count = 2 + seed % 6;
        ProgressScene scene(count);
        for (int step = 0; step < 60 && !testing::Test::HasFailure(); ++step) {
            const std::size_t i = below(count);
            switch (below(8)) {
            case 0:
                scene.makeRoot(i);
                break;
            case 1:
            case 2:
                scene.subPhase(i, (1 + below(3)) / 4.0, below(count));
                break;
            default:
                scene.set(i, below(13) / 8.0 - 0.25); // from -0.25 to 1.25
            }
            scene.compare();
        }
        ASSERT_FALSE(testing::Test::HasFailure()) << "seed " << seed;
    }
}

TEST(Progress, TakesAValueAsAChangeThatIsAdded) {
    Progress progress;
    progress.set(-1e17);
    progress.set(0.5);
    EXPECT_EQ(progress.get(), 0.0) << "the change is rounded to 1e17";
}

TEST(Progress, SpeaksForTheWholeInEveryPhase) {
    Progress progress, phase, inner;
    progress.subPhase(0.5, phase);
    phase.subPhase(0.5, inner);
    std::vector<std::string> captions;
    inner.getSigCaption().connectOwned(
        [&](Progress* sender) { captions.push_back(sender->getCaption()); });
    EXPECT_EQ(&inner.getSigCaption(), &progress.getSigCaption());
    EXPECT_STREQ(inner.getCaption(), "");
    phase.setCaption("reading");
    progress.setCaption(phase.getCaption());
    inner.setCaption(nullptr);
    EXPECT_EQ(captions, (std::vector<std::string>{"reading", "reading", ""}));
}

TEST(Progress, AsksListenersUntilSomebodyCancels) {
    Progress progress, phase;
    progress.subPhase(1, phase);
    EXPECT_FALSE(phase.cancelled());
    int asked = 0;
    progress.getSigCheckCancel().connectOwned([&](Progress* sender) {
        EXPECT_EQ(sender, &progress);
        if (++asked == 3)
            phase.cancel();
    });
    EXPECT_FALSE(phase.cancelled());
    EXPECT_FALSE(progress.cancelled());
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(phase.cancelled() && progress.cancelled());
    EXPECT_EQ(asked, 3) << "the answer sticks, and nobody is asked again";
}
