// SPDX-License-Identifier: MIT

#include "Base/Registry/zeRegistryValue.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <cstring>
#include <memory>
#include <utility>

#include "Base/Strings/zeStringCString.h"

namespace {

using Type = zeRegistryValue::ValueType;

void requireNumber(Type type, const char* complaint) {
    if (type < zeRegistryValue::TypeUInt || type > zeRegistryValue::TypeUInt3)
        throw zeUtil::Error(1, complaint, type);
}

void requireText(Type type, const char* complaint) {
    if (type != zeRegistryValue::TypeText && type != zeRegistryValue::TypeText9)
        throw zeUtil::Error(1, complaint, type);
}

} // namespace

zeRegistryValue::zeRegistryValue(const zeString::IString& name, ValueType type)
    : name_(name), type_(type) {}

// The others delegate, so that the destructor runs if setData() throws.
zeRegistryValue::zeRegistryValue(const zeString::IString& name, ValueType type,
                                 const unsigned char* data, unsigned long size)
    : zeRegistryValue(name, type) {
    setData(data, size);
}

zeRegistryValue::zeRegistryValue(const zeString::IString& name, ValueType type, unsigned int number)
    : zeRegistryValue(name, type) {
    setData(number);
}

zeRegistryValue::zeRegistryValue(const zeString::IString& name, ValueType type,
                                 const zeString::IString& text)
    : zeRegistryValue(name, type) {
    setData(text);
}

zeRegistryValue::zeRegistryValue(const zeRegistryValue& other)
    : zeRegistryValue(other.name_, other.type_, other.data_, other.size_) {}

zeRegistryValue& zeRegistryValue::operator=(zeRegistryValue other) {
    name_.swap(other.name_);
    std::swap(type_, other.type_);
    std::swap(size_, other.size_);
    std::swap(data_, other.data_);
    return *this;
}

zeRegistryValue::~zeRegistryValue() {
    delete[] data_;
}

void zeRegistryValue::getData(unsigned char* data) const {
    if (size_ != 0)
        std::memcpy(data, data_, size_);
}

void zeRegistryValue::getData(unsigned int& number) const {
    requireNumber(type_, "Data of type %d cannot be converted to unsigned int");
    assert(data_);
    number = 0;
    std::memcpy(&number, data_, std::min<unsigned long>(size_, sizeof number));
}

void zeRegistryValue::getData(zeString::IString& text) const {
    requireText(type_, "Data of type %d cannot be converted to zeString::IString");
    const char* bytes = size_ != 0 ? reinterpret_cast<const char*>(data_) : "";
    const unsigned long limit = std::min<unsigned long>(size_, INT_MAX); // of a string's length
    const zeString::CString terminated(bytes, static_cast<int>(strnlen(bytes, limit)));
    text.assign(terminated.asChar(), zeString::EncodingUTF8);
}

// Copies before it frees: the block may be the value's own.
void zeRegistryValue::setData(const unsigned char* data, unsigned long size) {
    std::unique_ptr<unsigned char[]> copy;
    if (size != 0) {
        copy.reset(new unsigned char[size]);
        std::memcpy(copy.get(), data, size);
    }
    delete[] data_;
    data_ = copy.release();
    size_ = size;
}

void zeRegistryValue::setData(unsigned int number) {
    requireNumber(type_, "Unsigned int cannot be converted to data of type %d");
    setData(reinterpret_cast<const unsigned char*>(&number), sizeof number);
}

// One byte more than the text with its terminator: kept for readers that count on it.
void zeRegistryValue::setData(const zeString::IString& text) {
    requireText(type_, "zeString::IString cannot be converted to data of type %d");
    const unsigned long length = text.asUTF8StoreSize();
    const auto block = std::make_unique<unsigned char[]>(length + 1); // zeros
    std::memcpy(block.get(), text.asUTF8(), length);
    setData(block.get(), length + 1);
}

bool zeRegistryValue::operator==(const zeRegistryValue& other) const {
    return name_ == other.name_ && type_ == other.type_ && size_ == other.size_ &&
           (size_ == 0 || std::memcmp(data_, other.data_, size_) == 0);
}
