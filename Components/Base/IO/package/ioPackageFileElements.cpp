// SPDX-License-Identifier: MIT

// The list of elements: which bytes of the file belong to which entry, and which are free.

#include <algorithm>
#include <utility>

#include "Base/IO/ioPackageFile.h"
#include "Base/IO/package/ioFirstFitImpl.h"

/// Finds room for an entry and returns its element, which has no name yet.
int ioPackageFile::createEntry(long size) {
    dirty_ = true;
    const int fit = freeCount_ > 0 ? takeFreeEntry(size) : -1;
    if (fit >= 0)
        return fit;
    ioPackageFileEntry entry;
    entry.package_ = this;
    entry.offset_ = entries_.back().offset_;
    entry.size_ = size;
    entries_.push_back(entry);
    std::swap(entries_[entries_.size() - 2], entries_.back());
    entries_.back().offset_ += size;
    return static_cast<int>(entries_.size()) - 2;
}

/// The first free element that is large enough, or its front part; -1 if there is none. The
/// directory's place does not count, whatever its size.
int ioPackageFile::takeFreeEntry(long size) {
    if (!firstFit_->isValid()) {
        std::vector<long> sizes;
        sizes.reserve(entries_.size());
        for (const ioPackageFileEntry& entry : entries_)
            sizes.push_back(entry.name_.isEmpty() ? entry.size_ : ioFirstFitImpl::taken);
        sizes.back() = ioFirstFitImpl::taken;
        firstFit_->assign(sizes);
    }
    const int index = firstFit_->find(size);
    if (index < 0)
        return -1;
    if (entries_[static_cast<std::size_t>(index)].size_ != size)
        splitEntry(index, size);
    --freeCount_;
    firstFit_->set(index, ioFirstFitImpl::taken);
    return index;
}

/// Divides free space: its front part becomes an element of its own, at `index`.
void ioPackageFile::splitEntry(int index, long size) {
    ioPackageFileEntry front;
    front.package_ = this;
    front.offset_ = entries_[static_cast<std::size_t>(index)].offset_;
    front.size_ = size;
    const auto rest = entries_.insert(entries_.begin() + index, front) + 1;
    rest->offset_ += size;
    rest->size_ -= size;
    moveIndices(index, 1);
    ++freeCount_;
    dirty_ = true;
}

/// Adds the next element to this one. The last data element, joined to the directory's place,
/// becomes that place: so free space at the end is given back.
void ioPackageFile::joinEntries(int index) {
    const auto place = entries_.begin() + index;
    place->size_ += (place + 1)->size_;
    entries_.erase(place + 1);
    moveIndices(index + 1, -1);
    --freeCount_;
    dirty_ = true;
}

void ioPackageFile::freeEntry(int index) {
    const auto isFree = [this](int i) {
        return i >= 0 && static_cast<std::size_t>(i) < entries_.size() &&
               entries_[static_cast<std::size_t>(i)].name_.isEmpty();
    };
    ioPackageFileEntry& entry = entries_[static_cast<std::size_t>(index)];
    entry.name_ = zeString::IString();
    ++freeCount_;
    firstFit_->set(index, entry.size_);
    if (isFree(index + 1))
        joinEntries(index);
    if (isFree(index - 1))
        joinEntries(index - 1);
    dirty_ = true;
}

/// Renumbers the names of the elements from `from` on, which have moved by one.
void ioPackageFile::moveIndices(int from, int by) {
    if (static_cast<std::size_t>(from) + 1 >= entries_.size()) { // only the directory's place moved
        firstFit_->set(from - 1, ioFirstFitImpl::taken);
        return;
    }
    firstFit_->invalidate();
    for (auto& [name, index] : names_)
        if (index >= from)
            index += by;
}

void ioPackageFile::appendEntry(const char* name, long offset, long size, long timeStamp,
                                bool compressed) {
    ioPackageFileEntry entry;
    entry.package_ = this;
    entry.name_ = zeString::IString(name, zeString::EncodingUTF8);
    entry.offset_ = offset;
    entry.size_ = size;
    entry.timeStamp_ = timeStamp;
    entry.compressed_ = compressed;
    entries_.push_back(entry);
    if (entry.name_.isEmpty())
        ++freeCount_;
    else if (entry.name_ != L".") // of any other name, the last one counts
        names_[entry.name_] = static_cast<int>(entries_.size()) - 1;
    dirty_ = true;
}
