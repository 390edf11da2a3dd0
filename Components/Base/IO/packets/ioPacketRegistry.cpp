// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketRegistry.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Base/IO/ioBuffer.h"
#include "Base/Utility/zeReferenceCount.h"

/// The types of a registry: all of them by name, those that are numbered by id.
class ioPacketRegistryImpl : public ze::ImplBase {
public:
    /// Takes over `type`. With `assign` it is numbered as well, unless it has an id already: then
    /// it stays where it is, even where a second file numbers it differently.
    void addType(ioPacketType* type, bool assign) {
        if (assign && type->id_ != -1) {
            ++nextId_;
            return;
        }
        own(type);
        if (assign) {
            types_.push_back(type); // first, since it may throw: ids lead to types
            nextId_ = type->id_ = static_cast<int>(types_.size()) - 1;
        }
    }

    ioPacketType* lookup(const char* name) const {
        const auto found = byName_.find(name);
        return found == byName_.end() ? nullptr : found->second.get();
    }
    ioPacketType* lookup(int id) const {
        const auto index = static_cast<std::size_t>(id);
        return id < 0 || index >= types_.size() ? nullptr : types_[index];
    }
    int numNames() const { return static_cast<int>(byName_.size()); }
    const std::vector<ioPacketType*>& types() const { return types_; }
    void restartNumbering() { nextId_ = 0; }

    bool misnumbered = false; // by the list that was read last
    int listedEnd = INT_MAX;  // ids below it are in the list that was written last

private:
    void own(ioPacketType* type) {
        std::unique_ptr<ioPacketType>& place = byName_[type->getName()];
        if (place.get() == type)
            return;
        if (place)
            replaced_.push_back(std::move(place));
        std::erase_if(replaced_, [type](auto& owner) { // `type` was here before, and comes back
            return owner.get() == type && owner.release();
        });
        place.reset(type);
    }

    std::vector<ioPacketType*> types_; // by id
    std::map<std::string, std::unique_ptr<ioPacketType>, std::less<>> byName_;
    int nextId_ = 0;
    std::vector<std::unique_ptr<ioPacketType>> replaced_; // may still have an id
};

namespace {

/// A packet type over a callback that dies with it.
class TypeWithCallback : public ioSimplePacketType {
public:
    TypeWithCallback(const char* name, std::unique_ptr<ioReadCallback> callback)
        : ioSimplePacketType(name, callback.get()), callback_(std::move(callback)) {}

private:
    std::unique_ptr<ioReadCallback> callback_;
};

/// A line of the list of types: a number and a name.
class RegistryLine {
public:
    enum Result { entry = -1, listEnd = 0, streamFailed = 1, notUnderstood = 4 };

    Result read(ioBufferedStreamInput& stream) {
        char line[90];
        stream.readLine(line, sizeof line);
        if (line[0] == '@')
            return listEnd;
        if (stream.getStatus() != streamOK)
            return streamFailed;
        char* rest;
        number = static_cast<int>(std::strtol(line, &rest, 10));
        return rest != line && std::sscanf(rest, "%89s", name) == 1 ? entry : notUnderstood;
    }

    int number = 0;
    char name[90] = "";
};

} // namespace

// ioPacketRegistry

ioPacketRegistry::ioPacketRegistry(bool namesOnly)
    : impl_(new ioPacketRegistryImpl), namesOnly_(namesOnly) {}

ioPacketRegistry::~ioPacketRegistry() {
    delete impl_;
}

void ioPacketRegistry::supportedType(ioPacketType* type) {
    impl_->addType(type, !namesOnly_);
}

ioPacketType* ioPacketRegistry::lookup(const char* name) const {
    return impl_->lookup(name);
}

ioPacketType* ioPacketRegistry::lookup(int id) const {
    return impl_->lookup(id);
}

int ioPacketRegistry::numTypes() const {
    return impl_->numNames();
}

void ioPacketRegistry::init() {
    if (!initialized_) {
        supportedType(new ioPacketString);
        supportedType(new ioPacketEOF);
        registerAllTypes();
        initialized_ = true;
    }
    impl_->restartNumbering();
}

void ioPacketRegistry::writeRegistry(ioBufferedStreamOutput& stream, bool withTypes) {
    impl_->listedEnd = withTypes ? static_cast<int>(impl_->types().size()) : INT_MAX;
    if (withTypes) {
        int id = 0;
        for (const ioPacketType* type : impl_->types())
            stream.printf("%4d %s\n", id++, type->getName());
    }
    stream.writeString("@\n");
}

int ioPacketRegistry::readRegistry(ioBufferedStreamInput& stream) {
    RegistryLine line;
    RegistryLine::Result result = line.read(stream);
    int expected = line.number;
    impl_->misnumbered = false;
    for (int place = 0; result == RegistryLine::entry; ++place) {
        ioPacketType* type = lookup(line.name);
        if (!type)
            type = new ioPacketType(line.name);
        impl_->addType(type, true);
        impl_->misnumbered |= type->getId() != place;

        result = line.read(stream);
        if (result != RegistryLine::entry)
            break;
        // The first number is free, and -1 leaves the choice to the line behind it.
        expected = expected == -1 ? line.number
                                  : static_cast<int>(static_cast<unsigned int>(expected) + 1);
        if (expected != line.number)
            return RegistryLine::notUnderstood;
    }
    return result;
}

bool ioPacketRegistry::isMisnumbered() const {
    return impl_->misnumbered;
}

bool ioPacketRegistry::hasNameTwice() const {
    // A type that another has replaced keeps its id, and the name leads to the other.
    return std::any_of(impl_->types().begin(), impl_->types().end(), [this](ioPacketType* type) {
        const ioPacketType* const named = lookup(type->getName());
        return named != type && named->getId() != -1;
    });
}

bool ioPacketRegistry::isListed(int id) const {
    return id >= 0 && id < impl_->listedEnd;
}

// ioSimplePacketRegistry

ioSimplePacketRegistry::ioSimplePacketRegistry(bool namesOnly) : ioPacketRegistry(namesOnly) {}

ioSimplePacketRegistry::~ioSimplePacketRegistry() = default;

void ioSimplePacketRegistry::add(const char* name) {
    supportedType(new ioSimplePacketType(name));
}

void ioSimplePacketRegistry::add(const char* name, void (*function)()) {
    supportedType(new TypeWithCallback(name, std::make_unique<ioGlobalReadCallback>(function)));
}

void ioSimplePacketRegistry::registerAllTypes() {
    registerSignal.send(this);
}
