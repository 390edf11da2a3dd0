// SPDX-License-Identifier: MIT

/// @file
/// A hierarchy of keys, each with subkeys and values: zeRegistry.
///
/// **There is no store on Linux**: every call is accepted, and nothing is kept. The class is there
/// so that code that uses a registry on other systems compiles and runs; what a program must keep,
/// it keeps elsewhere. Opening, creating and deleting answer true for an empty path only, so that a
/// program that looks at the result sees that no key is there.
///
/// Threads: a registry belongs to one thread at a time.
///
/// @code
/// zeRegistry settings(L"HKEY_CURRENT_USER\\Software\\Sketch", true);
/// assert(settings.getValueCount() == 0 && !settings.openKey(L"Window", false));
/// zeRegistryValue width(L"", zeRegistryValue::TypeUInt, 640u); // the default
/// settings.getValue(L"width", width);
/// unsigned int number = 0;
/// width.getData(number);
/// assert(number == 640);
/// @endcode

#pragma once

#include <vector>

#include "Base/Registry/zeRegistryValue.h"
#include "Base/Strings/zeStringIString.h"
#include "Base/zeBaseExport.h"

class zeRegistryImpl;

/// A place in the hierarchy, which openKey() and openParentKey() move, and what can be done there.
/// A copy stands at the same place, and can be read-only as the original.
class ZEBASE_API zeRegistry {
public:
    /// Opens the key at an absolute path.
    explicit zeRegistry(const zeString::IString& path);
    /// The same. Where `readOnly`, values cannot be set, and neither keys nor values deleted.
    zeRegistry(const zeString::IString& path, bool readOnly);
    /// Stands at the same place, and is read-only if `other` is.
    zeRegistry(const zeRegistry& other);
    zeRegistry& operator=(const zeRegistry&) = delete; ///< Make a copy instead.
    ~zeRegistry();

    /// Moves to a key, by its absolute path or by that from here. Whether it could be opened: on
    /// Linux, whether the path is empty.
    bool openKey(const zeString::IString& path, bool absolute);

    /// Moves to the key above.
    void openParentKey();

    /// Makes a key. Whether it could be made: on Linux, whether the path or the name of its class
    /// is empty.
    bool createKey(const zeString::IString& path, bool absolute,
                   const zeString::IString& className);

    /// The absolute path of this key; on Linux empty.
    zeString::IString getKeyPath() const;

    /// The class of this key; on Linux empty.
    zeString::IString getClassName() const;

    /// The names of the keys below; on Linux none. What was in the vector is gone.
    void getSubkeys(std::vector<zeString::IString>& names) const;

    /// The number of keys below.
    int getSubkeyCount() const;

    /// The values of this key; on Linux none. What was in the vector is gone.
    void getValues(std::vector<zeRegistryValue>& values) const;

    /// The number of values of this key.
    int getValueCount() const;

    /// Sets the name of `value`, and reads its data; on Linux the data stays as it is.
    void getValue(const zeString::IString& name, zeRegistryValue& value) const;

    /// Sets the name of `value`, and stores it. Changes neither on a read-only registry.
    void setValue(const zeString::IString& name, zeRegistryValue& value);

    /// Deletes a key. Whether it could be deleted: on Linux, whether the path is empty; false on a
    /// read-only registry.
    bool deleteKey(const zeString::IString& path);

    /// Deletes a value of this key. The same results.
    bool deleteValue(const zeString::IString& name);

private:
    zeRegistryImpl* impl_; ///< Owned.
    bool readOnly_;
};
