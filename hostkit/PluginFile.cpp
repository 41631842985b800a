#include "hostkit/PluginFile.h"

#include <dlfcn.h>

namespace hostkit {

PluginFile::PluginFile(const std::string& path) : path_(path) {
    // A name without a slash would make the loader search the system folders.
    const std::string opened = path.find('/') == std::string::npos ? "./" + path : path;
    handle_ = ::dlopen(opened.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr) {
        const char* reason = ::dlerror();
        error_ = "cannot load the plug-in file " + path + ": " + (reason != nullptr ? reason : "unknown reason");
        return;
    }
    entry_ = reinterpret_cast<Entry>(::dlsym(handle_, "VSTPluginMain"));
    if (entry_ == nullptr) entry_ = reinterpret_cast<Entry>(::dlsym(handle_, "main"));
    if (entry_ == nullptr) {
        error_ = "the file " + path + " exports neither VSTPluginMain nor main; is it a VST 2 plug-in?";
        ::dlclose(handle_);
        handle_ = nullptr;
    }
}

PluginFile::~PluginFile() {
    if (handle_ != nullptr) ::dlclose(handle_);
}

Effect PluginFile::create(audioMasterCallback host, std::string* error) const {
    if (error != nullptr) error->clear();
    if (entry_ == nullptr) {
        if (error != nullptr) *error = error_;
        return Effect();
    }
    AEffect* record = entry_(host);
    if (record == nullptr) {
        if (error != nullptr) *error = "the plug-in file " + path_ + " made no effect";
        return Effect();
    }
    if (record->magic != kEffectMagic) {
        if (error != nullptr) *error = "the plug-in file " + path_ + " returned a record without the plug-in magic";
        return Effect();
    }
    return Effect(record, nullptr);
}

}  // namespace hostkit
