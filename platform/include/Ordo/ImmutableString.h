#pragma once
#include <cstddef>

#include "PlatformExport.h"

namespace Ordo {

// An interned, immutable text. Equal texts share one handle for the life of the
// process, so two ImmutableStrings compare equal exactly when their handles are
// the same object: comparison is an identity test, never a character test.
// Interning is thread-safe; interned texts are never freed.
class PLATFORM_API ImmutableString {
public:
    struct Entry;

    ImmutableString() noexcept;  // the empty text
    ImmutableString(const ImmutableString&) noexcept = default;
    ImmutableString& operator=(const ImmutableString&) noexcept = default;
    ~ImmutableString();

    // Interns `text` (null counts as the empty text) and returns its handle.
    static ImmutableString CreateStatic(const char* text) noexcept;

    const char* c_str() const noexcept;
    std::size_t size() const noexcept;
    const void* Handle() const noexcept { return entry_; }

    friend bool operator==(const ImmutableString& a, const ImmutableString& b) noexcept {
        return a.entry_ == b.entry_;
    }

private:
    explicit ImmutableString(const Entry* entry) noexcept : entry_(entry) {}
    const Entry* entry_;
};

}  // namespace Ordo
