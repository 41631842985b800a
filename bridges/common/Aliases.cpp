#include "Catalog.h"

namespace AFBridge {

namespace {

struct FamilyAlias {
    const char* identifierStart;  // "Internal Bandreject"
    const char* aliasStart;       // "Internal Notch"
};

// The family's name for users (and the README's): the notch filter.
constexpr FamilyAlias kAliases[] = {{"Internal Bandreject", "Internal Notch"}};

}  // namespace

void addAliases(std::vector<Plugin>& plugins) {
    const std::size_t count = plugins.size();
    for (std::size_t i = 0; i < count; ++i) {
        for (const FamilyAlias& alias : kAliases) {
            const std::string start = alias.identifierStart;
            if (plugins[i].identifier.rfind(start, 0) != 0) continue;
            const std::string named = alias.aliasStart + plugins[i].identifier.substr(start.size());
            Plugin copy = plugins[i];
            copy.aliasOf = plugins[i].uri;
            copy.label = labelFor(named);
            copy.slug = slugFor(named);
            copy.uri = "urn:audiofilters:" + copy.slug;
            copy.uniqueId = uniqueIdFor(named);
            plugins.push_back(std::move(copy));
        }
    }
}

}  // namespace AFBridge
