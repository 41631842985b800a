#pragma once
// A VST 2 plug-in file as a host loads it: a shared object exporting
// VSTPluginMain (or main, as older hosts look it up), whose entry makes one
// effect per call. The file stays loaded while the object lives; effects made
// from it must be closed first.
#include <string>

#include "AEffect.h"
#include "hostkit/Effect.h"

namespace hostkit {

class PluginFile {
public:
    // Loads the file at `path` (a name without a slash means the file in the
    // current folder) and looks up its entry. On failure loaded() is false and
    // error() says why.
    explicit PluginFile(const std::string& path);
    ~PluginFile();
    PluginFile(const PluginFile&) = delete;
    PluginFile& operator=(const PluginFile&) = delete;

    bool loaded() const { return entry_ != nullptr; }
    const std::string& error() const { return error_; }
    const std::string& path() const { return path_; }

    // A new effect from the entry with `host` as its callback. Empty, with
    // `error` set, when the entry makes none or what it returns is not a
    // plug-in record. The effect has no property interface.
    Effect create(audioMasterCallback host, std::string* error = nullptr) const;

private:
    using Entry = AEffect* (*)(audioMasterCallback);
    std::string path_;
    std::string error_;
    void* handle_ = nullptr;
    Entry entry_ = nullptr;
};

}  // namespace hostkit
