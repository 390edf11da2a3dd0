// SPDX-License-Identifier: MIT

#include "Base/Registry/zeRegistryImpl.h"

namespace {

using zeString::IString;

/// The store of a system that has none: accepts everything and keeps nothing. An empty path is
/// that of the key where one stands, and the only one that is there.
class zeRegistryUnixImpl final : public zeRegistryImpl {
public:
    IString getKeyPath() const override { return IString(); }
    bool openKeyRel(const IString& path) override { return path.isEmpty(); }
    bool openKeyAbs(const IString& path) override { return path.isEmpty(); }
    void upOneLevel() override {}
    bool createKeyRel(const IString& path, IString className) override {
        return path.isEmpty() || className.isEmpty();
    }
    bool createKeyAbs(const IString& path, IString className) override {
        return path.isEmpty() || className.isEmpty();
    }
    void getSubkeys(std::vector<IString>& names) const override { names.clear(); }
    void getValues(std::vector<zeRegistryValue>& values) const override { values.clear(); }
    void getValue(zeRegistryValue&) const override {}
    void setValue(const zeRegistryValue&) override {}
    bool deleteKey(const IString& path) override { return path.isEmpty(); }
    bool deleteValue(const IString& name) override { return name.isEmpty(); }
    int numberOfSubkeys() const override { return 0; }
    int numberOfValues() const override { return 0; }
    IString getClassName() const override { return IString(); }
};

} // namespace

zeRegistryImpl* createRegistryImpl() {
    return new zeRegistryUnixImpl;
}

zeRegistryImpl* createRegistryImpl(bool) {
    return new zeRegistryUnixImpl;
}

zeRegistryImpl* createRegistryImpl(const zeRegistryImpl& other) {
    return new zeRegistryUnixImpl(dynamic_cast<const zeRegistryUnixImpl&>(other));
}
