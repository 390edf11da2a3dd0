// SPDX-License-Identifier: MIT

#include "Base/Registry/zeRegistry.h"

#include <memory>

#include "Base/Registry/zeRegistryImpl.h"

namespace {

zeRegistryImpl* opened(zeRegistryImpl* impl, const zeString::IString& path) {
    std::unique_ptr<zeRegistryImpl> owned(impl);
    owned->openKeyAbs(path);
    return owned.release();
}

} // namespace

zeRegistry::zeRegistry(const zeString::IString& path)
    : impl_(opened(createRegistryImpl(), path)), readOnly_(false) {}

zeRegistry::zeRegistry(const zeString::IString& path, bool readOnly)
    : impl_(opened(createRegistryImpl(readOnly), path)), readOnly_(readOnly) {}

zeRegistry::zeRegistry(const zeRegistry& other)
    : impl_(createRegistryImpl(*other.impl_)), readOnly_(other.readOnly_) {}

zeRegistry::~zeRegistry() {
    delete impl_;
}

bool zeRegistry::openKey(const zeString::IString& path, bool absolute) {
    return absolute ? impl_->openKeyAbs(path) : impl_->openKeyRel(path);
}

void zeRegistry::openParentKey() {
    impl_->upOneLevel();
}

bool zeRegistry::createKey(const zeString::IString& path, bool absolute,
                           const zeString::IString& className) {
    return absolute ? impl_->createKeyAbs(path, className) : impl_->createKeyRel(path, className);
}

zeString::IString zeRegistry::getKeyPath() const {
    return impl_->getKeyPath();
}

zeString::IString zeRegistry::getClassName() const {
    return impl_->getClassName();
}

void zeRegistry::getSubkeys(std::vector<zeString::IString>& names) const {
    impl_->getSubkeys(names);
}

int zeRegistry::getSubkeyCount() const {
    return impl_->numberOfSubkeys();
}

void zeRegistry::getValues(std::vector<zeRegistryValue>& values) const {
    impl_->getValues(values);
}

int zeRegistry::getValueCount() const {
    return impl_->numberOfValues();
}

void zeRegistry::getValue(const zeString::IString& name, zeRegistryValue& value) const {
    value.setName(name);
    impl_->getValue(value);
}

void zeRegistry::setValue(const zeString::IString& name, zeRegistryValue& value) {
    if (readOnly_)
        return;
    value.setName(name);
    impl_->setValue(value);
}

bool zeRegistry::deleteKey(const zeString::IString& path) {
    return !readOnly_ && impl_->deleteKey(path);
}

bool zeRegistry::deleteValue(const zeString::IString& name) {
    return !readOnly_ && impl_->deleteValue(name);
}
