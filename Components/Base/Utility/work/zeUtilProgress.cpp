// SPDX-License-Identifier: MIT

#include "Base/Utility/zeUtilProgress.h"

#include <algorithm>

#include "Base/Strings/zeStringCString.h"

namespace zeUtil {

/// One node of the tree of phases. A phase keeps its parent alive, but not the Progress above it.
class Progress::Impl : public ze::ReferenceCount {
public:
    /// A root.
    Impl() : root_(this) {}
    /// A phase.
    Impl(Impl* parent, double weight) : parent_(parent), root_(parent->root_), weight_(weight) {}
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;
    ~Impl() override = default;

    virtual void set(double value) {
        double delta = value - current_;
        for (Impl* node = this; node->parent_; node = node->parent_.get()) {
            node->current_ = std::min(node->current_ + delta, 1.0);
            delta *= node->weight_; // the whole change, also of a node that is full
        }
        root_->set(root_->current_ + delta);
    }
    virtual double get() const { return root_->get(); }
    virtual Signal& getSigUpdate() { return root_->getSigUpdate(); }
    virtual Signal& getSigDestroy() { return root_->getSigDestroy(); }
    virtual Signal& getSigCaption() { return root_->getSigCaption(); }
    virtual Signal& getSigCheckCancel() { return root_->getSigCheckCancel(); }
    virtual void cancel() { root_->cancel(); }
    virtual bool cancelled() { return root_->cancelled(); }
    virtual void setCaption(const char* caption) { root_->setCaption(caption); }
    virtual const char* getCaption() const { return root_->getCaption(); }

    /// The Progress of this node ends, or becomes another phase.
    virtual void destroy() = 0;

    void setDestroyed() { destroyed_ = true; }
    bool isDestroyed() const { return destroyed_; }

    /// Whether this node, or any on the way to the root, was destroyed.
    bool isChainDestroyed() const {
        const Impl* node = this;
        while (node && !node->isDestroyed())
            node = node->parent_.get();
        return node != nullptr;
    }

protected:
    ze::Reference<Impl> parent_; ///< Null for a root.
    Impl* root_;                 ///< Not counted: a chain of parents leads to it.
    double current_ = 0;
    double weight_ = 1.0; ///< The share of the parent.
    bool destroyed_ = false;
};

class Progress::RootProgress final : public Impl {
public:
    explicit RootProgress(Progress* owner) : owner_(owner) {}

    void set(double value) override {
        // As a change that is added, like in a phase: the last bit may differ from `value`.
        current_ = std::min((value - current_) + current_, 1.0);
        sigUpdate_.send(owner_);
    }
    double get() const override { return current_; }
    Signal& getSigUpdate() override { return sigUpdate_; }
    Signal& getSigDestroy() override { return sigDestroy_; }
    Signal& getSigCaption() override { return sigCaption_; }
    Signal& getSigCheckCancel() override { return sigCheckCancel_; }
    void cancel() override { cancelFlag_ = true; }
    bool cancelled() override {
        if (!cancelFlag_)
            sigCheckCancel_.send(owner_);
        return cancelFlag_;
    }
    void setCaption(const char* caption) override {
        caption_ = caption;
        sigCaption_.send(owner_);
    }
    const char* getCaption() const override { return caption_.asChar(); }

    void destroy() override {
        sigDestroy_.send(owner_);
        setDestroyed();
    }

private:
    Progress* owner_; ///< The argument of every signal.
    bool cancelFlag_ = false;
    zeString::CString caption_;
    Signal sigUpdate_;
    Signal sigDestroy_;
    Signal sigCaption_;
    Signal sigCheckCancel_;
};

class Progress::SubProgress final : public Impl {
public:
    using Impl::Impl;

    void destroy() override {
        if (!isChainDestroyed())
            set(1.0);
        setDestroyed();
    }
};

Progress::Progress() : impl_(new RootProgress(this)) {}

Progress::~Progress() {
    impl_->destroy();
}

void Progress::set(double value) {
    impl_->set(value);
}

double Progress::get() const {
    return impl_->get();
}

Progress::Signal& Progress::getSigUpdate() {
    return impl_->getSigUpdate();
}

Progress::Signal& Progress::getSigDestroy() {
    return impl_->getSigDestroy();
}

Progress::Signal& Progress::getSigCaption() {
    return impl_->getSigCaption();
}

Progress::Signal& Progress::getSigCheckCancel() {
    return impl_->getSigCheckCancel();
}

void Progress::cancel() {
    impl_->cancel();
}

bool Progress::cancelled() {
    return impl_->cancelled();
}

void Progress::setCaption(const char* caption) {
    impl_->setCaption(caption);
}

const char* Progress::getCaption() const {
    return impl_->getCaption();
}

void Progress::subPhase(double weight, Progress& sub) {
    const ze::Reference<Impl> phase(new SubProgress(impl_.get(), weight));
    sub.impl_->destroy();
    sub.impl_ = phase;
}

} // namespace zeUtil
