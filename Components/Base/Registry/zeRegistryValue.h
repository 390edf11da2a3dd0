// SPDX-License-Identifier: MIT

/// @file
/// A named, typed value of a registry key: zeRegistryValue.
///
/// The type says what the bytes are: an unsigned int (1, 2, 3), text (4, 9), or just bytes (any
/// other number). Bytes can be read and written whatever the type; an operation for numbers or
/// texts on a value of another type throws a zeUtil::Error with code 1.
///
/// Threads: a value belongs to one thread at a time.
///
/// @code
/// zeRegistryValue width(L"width", zeRegistryValue::TypeUInt, 640u);
/// unsigned int number = 0;
/// width.getData(number);
/// assert(number == 640 && width.getSize() == 4);
/// try {
///     width.setData(zeString::IString(L"wide"));
///     assert(false);
/// } catch (const zeUtil::Error& error) {
///     assert(error.code() == 1);
/// }
/// @endcode

#pragma once

#include "Base/Strings/zeStringIString.h"
#include "Base/Utility/zeUtilError.h"
#include "Base/zeBaseExport.h"

/// A name, a type and a block of bytes, which the value owns. Copies have a block of their own.
class ZEBASE_API zeRegistryValue {
public:
    /// What the bytes are. Any number may be given; those without a name mean bytes.
    enum ValueType : int {
        TypeBytes = 0,
        TypeUInt = 1,  ///< An unsigned int, in the byte order of this machine.
        TypeUInt2 = 2, ///< The same.
        TypeUInt3 = 3, ///< The same.
        TypeText = 4,  ///< Text in UTF-8.
        TypeText9 = 9, ///< The same.
    };

    /// Without data.
    zeRegistryValue(const zeString::IString& name, ValueType type);
    /// @{
    /// With data, as setData() sets it and under its conditions.
    zeRegistryValue(const zeString::IString& name, ValueType type, const unsigned char* data,
                    unsigned long size);
    zeRegistryValue(const zeString::IString& name, ValueType type, unsigned int number);
    zeRegistryValue(const zeString::IString& name, ValueType type, const zeString::IString& text);
    /// @}
    /// A copy with a block of its own.
    zeRegistryValue(const zeRegistryValue& other);
    /// Leaves the left side unchanged if the copy cannot be allocated.
    zeRegistryValue& operator=(zeRegistryValue other);
    ~zeRegistryValue();

    /// The name within its key.
    const zeString::IString& getName() const { return name_; }

    /// Changes the name alone.
    void setName(const zeString::IString& name) { name_ = name; }

    /// The type that it was constructed with.
    ValueType getType() const { return type_; }

    /// The number of bytes. For a text, that of its UTF-8 form, plus 2: a terminator, and one more.
    unsigned long getSize() const { return size_; }

    /// Copies all getSize() bytes to `data`, which has room for them.
    void getData(unsigned char* data) const;

    /// Reads the number: the first four bytes, and 0 for those that a shorter block lacks. The
    /// value must have data. Throws if the type is not that of a number.
    void getData(unsigned int& number) const;

    /// Reads the text, up to its terminator if there is one; a value without data is empty. Throws
    /// if the type is not that of a text.
    void getData(zeString::IString& text) const;

    /// Takes a copy of `size` bytes, which may be the value's own. With a size of 0, the value has
    /// no data, and `data` may be null.
    void setData(const unsigned char* data, unsigned long size);

    /// Stores a number. Throws if the type is not that of a number, and changes nothing.
    void setData(unsigned int number);

    /// Stores a text. Throws if the type is not that of a text, and changes nothing.
    void setData(const zeString::IString& text);

    /// Equal names, types, sizes and bytes.
    bool operator==(const zeRegistryValue& other) const;

private:
    zeString::IString name_;
    ValueType type_;
    unsigned long size_ = 0;
    unsigned char* data_ = nullptr; ///< Owned; null if the size is 0.
};
