// SPDX-License-Identifier: MIT

#include "Base/IO/ioPacketRegistry.h"

#include <cstdio>
#include <cstdlib>
#include <map>
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
            nextId_ = type->id_ = static_cast<int>(types_.size());
            types_.push_back(type);
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
    : impl_(std::make_unique<ioPacketRegistryImpl>()), namesOnly_(namesOnly) {}

ioPacketRegistry::~ioPacketRegistry() = default;

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
    while (result == RegistryLine::entry) {
        ioPacketType* type = lookup(line.name);
        impl_->addType(type ? type : new ioPacketType(line.name), true);

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
