// SPDX-License-Identifier: MIT

/// @file
/// What a registry's store can do. There is one implementation, the empty one.

#pragma once

#include <vector>

#include "Base/Registry/zeRegistryValue.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeReferenceCount.h"

class zeRegistryImpl : public ze::ImplBase {
public:
    /// The roots of absolute paths, as numbers of their names.
    enum Hive {
        HiveClassesRoot,
        HiveCurrentConfig,
        HiveCurrentUser,
        HiveLocalMachine,
        HiveUsers,
        HivePerformanceData,
        NumHives
    };

    virtual zeString::IString getKeyPath() const = 0;
    virtual bool openKeyRel(const zeString::IString& path) = 0;
    virtual bool openKeyAbs(const zeString::IString& path) = 0;
    virtual void upOneLevel() = 0;
    virtual bool createKeyRel(const zeString::IString& path, zeString::IString className) = 0;
    virtual bool createKeyAbs(const zeString::IString& path, zeString::IString className) = 0;
    virtual void getSubkeys(std::vector<zeString::IString>& names) const = 0;
    virtual void getValues(std::vector<zeRegistryValue>& values) const = 0;
    virtual void getValue(zeRegistryValue& value) const = 0;
    virtual void setValue(const zeRegistryValue& value) = 0;
    virtual bool deleteKey(const zeString::IString& path) = 0;
    virtual bool deleteValue(const zeString::IString& name) = 0;
    virtual int numberOfSubkeys() const = 0;
    virtual int numberOfValues() const = 0;
    virtual zeString::IString getClassName() const = 0;

    /// Whether `name` is exactly that of a root, which `hive` is set to. For stores that have some.
    static bool checkHiveName(const zeString::IString& name, Hive& hive);

private:
    static const wchar_t* const s_hiveNames[NumHives];
};

/// The store of this system; the caller owns it.
zeRegistryImpl* createRegistryImpl();
/// The same, to be read only, if the system makes a difference.
zeRegistryImpl* createRegistryImpl(bool readOnly);
/// A copy. Throws std::bad_cast if `other` is not of this system.
zeRegistryImpl* createRegistryImpl(const zeRegistryImpl& other);
