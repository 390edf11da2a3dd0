// SPDX-License-Identifier: MIT

// The list of elements: which bytes of the file belong to which entry, and which are free.

#include <algorithm>
#include <utility>

#include "Base/IO/ioPackageFile.h"
#include "Base/IO/package/ioFirstFitImpl.h"

/// Finds room for an entry and returns its element, which has no name yet.
int ioPackageFile::createEntry(long size) {
    dirty_ = true;
    joinEntries();
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
    for (auto& [name, place] : names_)
        if (place >= index)
            ++place;
    ++freeCount_;
    firstFit_->invalidate();
    dirty_ = true;
}

/// Joining moves all elements behind: it waits until somebody looks, so that many entries can be
/// deleted in one pass.
void ioPackageFile::freeEntry(int index) {
    const auto isFree = [this](int i) {
        return i >= 0 && static_cast<std::size_t>(i) < entries_.size() &&
               entries_[static_cast<std::size_t>(i)].name_.isEmpty();
    };
    ioPackageFileEntry& entry = entries_[static_cast<std::size_t>(index)];
    entry.name_ = zeString::IString();
    ++freeCount_;
    firstFit_->set(index, entry.size_);
    if (isFree(index + 1) || isFree(index - 1))
        joinsDue_.push_back(index);
    dirty_ = true;
}

/// Joins what was freed with the free elements beside it; those that lay side by side in the file
/// stay apart. The last data element, joined to the directory's place, becomes that place: so free
/// space at the end is given back.
void ioPackageFile::joinEntries() {
    if (joinsDue_.empty())
        return;
    std::vector<bool> freed(entries_.size());
    for (const int index : joinsDue_)
        freed[static_cast<std::size_t>(index)] = true;
    std::vector<int> places(entries_.size(), 0); // where each element has gone
    std::size_t last = 0;
    for (std::size_t i = 1; i < entries_.size(); ++i) {
        if ((freed[i - 1] || freed[i]) && entries_[last].name_.isEmpty() &&
            entries_[i].name_.isEmpty()) {
            // The directory's place may have any size in a file.
            entries_[last].size_ =
                static_cast<long>(static_cast<unsigned long>(entries_[i].size_) +
                                  static_cast<unsigned long>(entries_[last].size_));
            --freeCount_;
        } else if (++last != i) {
            entries_[last].swap(entries_[i]);
        }
        places[i] = static_cast<int>(last);
    }
    entries_.resize(last + 1);
    for (auto& [name, place] : names_)
        place = places[static_cast<std::size_t>(place)];
    firstFit_->invalidate();
    joinsDue_.clear();
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
