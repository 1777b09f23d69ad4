#pragma once

#include "quorda/export.h"

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

namespace quorda {

// A bookmark as a string of its raw bytes, the form kept in lists such as a grid's selected rows.
using TBookmarkStr = std::string;

// An owned copy of a record's bookmark bytes (BookmarkSize of them); an empty bookmark is nil.
class QUORDA_API TBookmark {
public:
    TBookmark() = default;
    // Size zero bytes, to be filled in.
    explicit TBookmark(std::size_t Size) : FBytes(Size) {}
    TBookmark(const void* Data, std::size_t Size)
        : FBytes(static_cast<const std::byte*>(Data), static_cast<const std::byte*>(Data) + Size) {}
    explicit TBookmark(const TBookmarkStr& Text) : TBookmark(Text.data(), Text.size()) {}

    bool IsNil() const noexcept { return FBytes.empty(); }
    explicit operator bool() const noexcept { return !FBytes.empty(); }

    // Null for a nil bookmark.
    const std::byte* Data() const noexcept { return FBytes.empty() ? nullptr : FBytes.data(); }
    std::byte* Data() noexcept { return FBytes.empty() ? nullptr : FBytes.data(); }
    std::size_t Size() const noexcept { return FBytes.size(); }

    TBookmarkStr ToString() const {
        return TBookmarkStr(reinterpret_cast<const char*>(FBytes.data()), FBytes.size());
    }

    friend bool operator==(const TBookmark&, const TBookmark&) = default;

private:
    std::vector<std::byte> FBytes;
};

} // namespace quorda
