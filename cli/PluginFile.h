#pragma once
// A VST 2 plug-in file as an effect of afx's chains: any Linux VST 2 effect
// (a shared object exporting VSTPluginMain or main), driven through its record
// exactly as the module's effects are.
#include <memory>
#include <string>

#include "ModuleHost.h"
#include "hostkit/PluginFile.h"

namespace afx {

// True when the text after -e names a file rather than an effect of the module
// ("path/to/Effect.so", "./x.so").
bool namesPluginFile(const std::string& text);

// A loaded plug-in file; it stays loaded while any effect made from it lives.
class PluginFile {
public:
    // Loads the file and looks up its entry; RunError when either fails.
    explicit PluginFile(const std::string& path);

    // A new effect from the file's entry; RunError when it makes none or the
    // record is not a plug-in record. The effect has no property interface.
    std::unique_ptr<Effect> create() const;
    // The effect's own name (opcode 45), else the file name.
    std::string effectName(const Effect& effect) const;

private:
    hostkit::PluginFile file_;
};

// Display value to normalised for an effect without a property interface:
// the normalised value whose display text (opcode 7) reads closest to `text`,
// found by bisection, so the display must grow or fall steadily with the value.
// UsageError when the display is not a number or `text` lies outside its range.
float displayToNormalisedBySearch(const Effect& effect, const std::string& identifier, int index,
                                  const std::string& text);

}  // namespace afx
