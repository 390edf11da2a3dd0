// SPDX-License-Identifier: MIT

#include "Base/OS/zeOSMoveableMemory.h"

#include <unistd.h>

#include <climits>
#include <memory>

#include "Base/OS/memory/zeOSMoveableMemImpl.h"
#include "Base/OS/zeOSFile.h"
#include "Base/OS/zeOSFileStatus.h"
#include "Base/OS/zeOSFilename.h"
#include "Base/OS/zeOSUuid.h"
#include "Base/Strings/zeStringCString.h"

namespace zeOS {
namespace {

constexpr unsigned long largeThreshold = 32ul << 20;
constexpr unsigned long alignment = 64ul << 10;
constexpr unsigned long blockSize = 128ul << 20;

bool isDirectory(const zeString::IString& path) {
    FileStatus status;
    File::query(Filename(path), status);
    return status.exists() && status.isDirectory();
}

} // namespace

// MoveableMemImpl

MoveableMemImpl::MoveableMemImpl() : MMAllocator(largeThreshold, alignment, blockSize, true) {
    stats.granularity = FileMapping::getGranularity();
}

MoveableMemImpl::~MoveableMemImpl() {
    freeSpareBlock();
}

bool MoveableMemImpl::initializeFiles(const zeString::IString& directory,
                                      const zeString::IString& prefix) {
    if (directory.isEmpty() || prefix.isEmpty() || !isDirectory(directory))
        return false;
    directory_ = directory;
    prefix_ = prefix;
    filesReady_ = true;
    return true;
}

MemoryBlock* MoveableMemImpl::allocateBlock(unsigned long size) {
    if (!filesReady_ || size > LONG_MAX)
        return nullptr;
    Uuid id;
    id.generate();
    zeString::IString name;
    name.format(L"%S-%d-%s", prefix_.asWChar(), static_cast<int>(::getpid()),
                id.asString().asChar());
    auto block = std::make_unique<MemoryBlock>();
    if (!block->file.createFile(Filename(directory_, name).path(), static_cast<long>(size), true))
        return nullptr;
    block->size = size;
    ++stats.fileCount;
    stats.fileBytes += size;
    return block.release();
}

MemoryChunk* MoveableMemImpl::allocateChunk(unsigned long size, MemoryBlock* block,
                                            unsigned long offset, bool) {
    return new MemoryChunk(size, block, offset);
}

void MoveableMemImpl::freeBlock(MemoryBlock* block) {
    --stats.fileCount;
    stats.fileBytes -= block->size;
    delete block;
}

void MoveableMemImpl::freeChunk(MemoryChunk* chunk) {
    delete chunk;
}

void MoveableMemImpl::chunkAllocated(MemoryChunk* chunk) {
    ++stats.chunkCount;
    stats.chunkBytes += chunk->size;
}

void MoveableMemImpl::chunkFreed(MemoryChunk* chunk) {
    --stats.chunkCount;
    stats.chunkBytes -= chunk->size;
}

// MappingImpl

MappingImpl::~MappingImpl() {
    mapping_.unmap(); // mappedBytes is not corrected: kept for compatibility
    memory_->release(chunk_);
}

void* MappingImpl::map() {
    if (!mapping_.pointer) {
        mapping_ = chunk_->block->file.map(static_cast<long>(chunk_->offset), getSize());
        if (mapping_.pointer)
            memory_->stats.mappedBytes += getSize();
    }
    return mapping_.pointer;
}

void MappingImpl::unmap() {
    if (!mapping_.pointer)
        return;
    mapping_.unmap();
    memory_->stats.mappedBytes -= getSize();
}

// MoveableMapping and MoveableMemory

MoveableMapping::~MoveableMapping() = default;

MoveableMemory::MoveableMemory() : impl_(new MoveableMemImpl) {}

MoveableMemory::~MoveableMemory() {
    delete impl_;
}

bool MoveableMemory::initializeFiles(const zeString::IString& directory,
                                     const zeString::IString& prefix) {
    return impl_->initializeFiles(directory, prefix);
}

ze::Reference<MoveableMapping> MoveableMemory::allocate(unsigned long size) {
    MemoryChunk* const chunk = impl_->allocate(size);
    if (!chunk)
        return nullptr;
    try {
        return new MappingImpl(impl_, chunk);
    } catch (...) {
        impl_->release(chunk);
        throw;
    }
}

MoveableMemory::Stats MoveableMemory::getStats() {
    impl_->freeSpareBlock();
    return impl_->stats;
}

} // namespace zeOS
