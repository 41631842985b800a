// afx list: every registered effect in registration order.
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "Commands.h"
#include "Errors.h"
#include "Json.h"
#include "ListedCounts.h"
#include "ModuleHost.h"

namespace afx {
namespace {

constexpr const char* kListHelp =
    "usage: afx list [--json] [--module PATH]\n"
    "\n"
    "Lists every effect the module registers, in registration order: identifier,\n"
    "display name, registry flags (hex), channels (inputs of a created instance)\n"
    "and parameter count. A '-' marks an effect the module registers but cannot\n"
    "make yet. A heading line is printed only when stdout is a terminal, so a\n"
    "pipe gets one line per effect.\n"
    "\n"
    "  --json         one JSON array instead of the table\n"
    "  --module PATH  the effects module (default: libAudioFilters.so beside afx)\n";

struct Row {
    std::string identifier;
    std::string name;
    unsigned flags;
    int channels;    // -1: no instance
    int parameters;  // -1: no instance
};

}  // namespace

int listCommand(Arguments& arguments, const std::string& defaultModule) {
    std::string modulePath = defaultModule;
    bool json = false;
    while (!arguments.done()) {
        std::string inlineValue;
        const std::string word = optionWord(arguments, inlineValue);
        if (word == "--help" || word == "-h") {
            std::fputs(kListHelp, stdout);
            return 0;
        }
        if (takeModuleOption(word, arguments, modulePath)) continue;
        if (word == "--json") {
            json = true;
            continue;
        }
        throw UsageError(looksLikeOption(word) ? "unknown option '" + word + "' for list (see afx list --help)"
                                               : "list takes no argument '" + word + "'");
    }

    ModuleHost host(modulePath);
    std::vector<Row> rows;
    for (const auto& registration : host.registrations()) {
        Row row{registration.id.c_str(), displayName(registration), registration.flags, -1, -1};
        if (const auto counts = knownCounts(row.identifier)) {
            row.channels = counts->channels;
            row.parameters = counts->parameters;
        } else if (auto effect = host.create(registration)) {
            row.channels = effect->inputCount();
            row.parameters = effect->parameterCount();
        }
        rows.push_back(row);
    }

    if (json) {
        std::printf("[\n");
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const Row& row = rows[i];
            char flags[16];
            std::snprintf(flags, sizeof flags, "0x%X", row.flags);
            std::printf("  {\"index\": %zu, \"identifier\": %s, \"name\": %s, \"flags\": %s, \"flagsValue\": %u, "
                        "\"channels\": %s, \"parameters\": %s}%s\n",
                        i + 1, jsonString(row.identifier).c_str(), jsonString(row.name).c_str(),
                        jsonString(flags).c_str(), row.flags,
                        row.channels < 0 ? "null" : std::to_string(row.channels).c_str(),
                        row.parameters < 0 ? "null" : std::to_string(row.parameters).c_str(),
                        i + 1 < rows.size() ? "," : "");
        }
        std::printf("]\n");
        return 0;
    }

    std::size_t idWidth = 10;
    std::size_t nameWidth = 4;
    for (const Row& row : rows) {
        idWidth = std::max(idWidth, row.identifier.size());
        nameWidth = std::max(nameWidth, row.name.size());
    }
    const int idColumn = static_cast<int>(idWidth);
    const int nameColumn = static_cast<int>(nameWidth);
    if (::isatty(STDOUT_FILENO))
        std::printf("%-*s  %-*s  %-7s  %8s  %10s\n", idColumn, "identifier", nameColumn, "name", "flags", "channels",
                    "parameters");
    for (const Row& row : rows) {
        char flags[16];
        std::snprintf(flags, sizeof flags, "0x%X", row.flags);
        const std::string channels = row.channels < 0 ? "-" : std::to_string(row.channels);
        const std::string parameters = row.parameters < 0 ? "-" : std::to_string(row.parameters);
        std::printf("%-*s  %-*s  %-7s  %8s  %10s\n", idColumn, row.identifier.c_str(), nameColumn, row.name.c_str(),
                    flags, channels.c_str(), parameters.c_str());
    }
    return 0;
}

}  // namespace afx
