#include "Ordo/ImmutableString.h"

#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace Ordo {

struct ImmutableString::Entry {
    std::string text;
};

namespace {

// The interning table: one entry per distinct text, kept for the life of the
// process so that handles never dangle, whatever order modules unload in.
class InternTable {
public:
    const ImmutableString::Entry* intern(std::string_view text) {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = entries_.find(text);
        if (found != entries_.end()) return found->second.get();
        auto entry = std::make_unique<ImmutableString::Entry>();
        entry->text.assign(text);
        const ImmutableString::Entry* handle = entry.get();
        entries_.emplace(std::string_view(handle->text), std::move(entry));
        return handle;
    }

private:
    std::mutex mutex_;
    std::unordered_map<std::string_view, std::unique_ptr<ImmutableString::Entry>> entries_;
};

InternTable& table() {
    static InternTable* instance = new InternTable();  // never destroyed: handles outlive static destruction
    return *instance;
}

const ImmutableString::Entry* internOrEmpty(const char* text) noexcept {
    try {
        return table().intern(text == nullptr ? std::string_view() : std::string_view(text));
    } catch (...) {
        return nullptr;  // out of memory: the null handle reads as the empty text
    }
}

}  // namespace

ImmutableString::ImmutableString() noexcept : entry_(internOrEmpty("")) {}

ImmutableString::~ImmutableString() = default;

ImmutableString ImmutableString::CreateStatic(const char* text) noexcept { return ImmutableString(internOrEmpty(text)); }

const char* ImmutableString::c_str() const noexcept { return entry_ != nullptr ? entry_->text.c_str() : ""; }

std::size_t ImmutableString::size() const noexcept { return entry_ != nullptr ? entry_->text.size() : 0; }

}  // namespace Ordo
