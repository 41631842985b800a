#include "hostkit/ModulePath.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>

namespace hostkit {
namespace {

// Relative to the binary's folder: where an installation puts the module.
constexpr const char* kInstalledModule = "../audiofilters/libAudioFilters.so";

std::string folderOfPath(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string("./") : path.substr(0, slash + 1);
}

std::string programPath() {
    char path[PATH_MAX] = {};
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : std::string();
}

bool readable(const std::string& path) { return !path.empty() && ::access(path.c_str(), R_OK) == 0; }

}  // namespace

std::string folderOf(const void* address) {
    Dl_info info{};
    link_map* map = nullptr;
    if (::dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0) return "./";
    // The program's own entry in the link map has an empty name; its file name
    // from dladdr is only what it was started as, so the real path is used.
    const bool inProgram = map == nullptr || map->l_name == nullptr || map->l_name[0] == '\0';
    const std::string path = inProgram ? programPath() : std::string(info.dli_fname != nullptr ? info.dli_fname : "");
    return path.empty() ? std::string("./") : folderOfPath(path);
}

std::string moduleBeside(const void* address) { return folderOf(address) + kModuleFile; }

std::vector<std::string> moduleCandidates(const void* address) {
    const char* named = std::getenv(kModulePathVariable);
    if (named != nullptr && *named != '\0') return {named};
    const std::string folder = folderOf(address);
    return {folder + kModuleFile, folder + kInstalledModule};
}

std::string locateModule(const void* address) {
    const std::vector<std::string> candidates = moduleCandidates(address);
    for (const std::string& candidate : candidates)
        if (readable(candidate)) return candidate;
    return candidates.back();
}

}  // namespace hostkit
