// SPDX-License-Identifier: MIT

/// @file
/// The content of an IString: the wide text, and the narrow form that was last asked for.
///
/// A short text lies behind its IStringImpl, in the same block of memory, so that a string which is
/// made from a text and does not outgrow it costs one allocation. The text is a standard string all
/// the same: its allocator hands out that room first, and the heap otherwise.

#pragma once

#include <cstdarg>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "Base/Strings/zeStringEncoding.h"

namespace zeString {

/// The room for characters behind an IStringImpl. One text at a time has it; what does not fit, or
/// is made while the room is taken, lives on the heap.
class TextRoom {
public:
    explicit TextRoom(std::size_t n) : free_(n) {}
    TextRoom(const TextRoom&) = delete;
    TextRoom& operator=(const TextRoom&) = delete;

    wchar_t* take(std::size_t n) {
        if (n > free_)
            return std::allocator<wchar_t>().allocate(n);
        free_ = 0;
        return begin();
    }

    void giveBack(wchar_t* characters, std::size_t n) {
        if (characters == begin())
            free_ = n; // the rest, if a shorter text had it, is lost
        else
            std::allocator<wchar_t>().deallocate(characters, n);
    }

private:
    wchar_t* begin(); ///< right behind the IStringImpl, whose base this is

    std::size_t free_; ///< in characters; 0 while a text is here
};

/// The allocator of a wide text: the room of its IStringImpl, and the heap.
///
/// Those of two objects are unequal, so that assigning one text to another copies it. Such texts
/// must not be swapped; exchange the objects.
template<class Char>
class TextAllocator {
public:
    using value_type = Char;

    explicit TextAllocator(TextRoom& room) noexcept : room_(&room) {}
    Char* allocate(std::size_t n) { return room_->take(n); }
    void deallocate(Char* characters, std::size_t n) { room_->giveBack(characters, n); }
    bool operator==(const TextAllocator& other) const noexcept { return room_ == other.room_; }

private:
    TextRoom* room_;
};

using WideText = std::basic_string<wchar_t, std::char_traits<wchar_t>, TextAllocator<wchar_t>>;

class IStringImpl : private TextRoom {
    /// So many characters, asked for together with the object.
    struct Room {
        std::size_t n;
    };

public:
    /// @{
    /// On the heap, with this text.
    static IStringImpl* make() { return makeWith(0); }
    static IStringImpl* make(std::wstring_view text) { return makeWith(text.size(), text); }
    static IStringImpl* make(std::string_view ascii) {
        return makeWith(ascii.size(), ascii.begin(), ascii.end());
    }
    static IStringImpl* make(std::size_t n, wchar_t c) { return makeWith(n, n, c); }
    /// @}

    /// Every change of the text but those through at() and format() ends here.
    void changed() {
        multibyteDirty = true;
        conversionStatus = NotRecorded;
    }

    /// False, with the text kept, if the format fails or produces no text. `size` is that of the
    /// first buffer. The cache stays as it is.
    bool doFormat(const wchar_t* fmt, va_list arguments, unsigned int size);

    enum : int { NotRecorded, Clean, Lossy };

    WideText wideText;
    bool multibyteDirty = true; ///< the cache does not describe the text
    Encoding multibyteEncoding = EncodingMultibyte;
    std::string multibyteCache;
    int conversionStatus = NotRecorded; ///< the outcome of the last conversion, if it was asked for

    static void operator delete(void* block) { ::operator delete(block); }

private:
    friend class TextRoom;

    /// Small, since the room stays where a text has outgrown it.
    static constexpr std::size_t longestInRoom = 63;

    template<class... Content>
    static IStringImpl* makeWith(std::size_t length, Content... content) {
        // Room for a terminator in any case: the address of the room lies within the block.
        const Room room = {length <= longestInRoom ? length + 1 : 1};
        return new (room) IStringImpl(room, content...);
    }

    template<class... Content>
    explicit IStringImpl(Room room, Content... content)
        : TextRoom(room.n), wideText(content..., TextAllocator<wchar_t>(*this)) {}
    static void* operator new(std::size_t size, Room room) {
        return ::operator new(size + room.n * sizeof(wchar_t));
    }
    static void operator delete(void* block, Room) { ::operator delete(block); }
};

static_assert(alignof(IStringImpl) >= alignof(wchar_t));

inline wchar_t* TextRoom::begin() {
    return reinterpret_cast<wchar_t*>(static_cast<IStringImpl*>(this) + 1);
}

} // namespace zeString
