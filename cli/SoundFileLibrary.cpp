// libsndfile, opened the first time afx touches an audio file. Linked as a
// dependency, it and the eight codec libraries it pulls in were mapped and
// relocated by every command, the listing and 'info' included: about half a
// millisecond of each start. These definitions stand in for the library's
// functions of the same names (the only ones afx calls) and forward to it.
// When it cannot be opened, the calls fail the way the library's own do: no
// file, and an error text that says why.
#include <dlfcn.h>
#include <sndfile.h>

#include <string>

namespace {

// The name the library has been published under since its version 1.0.
constexpr const char* kLibraryName = "libsndfile.so.1";

struct Library {
    void* handle = nullptr;
    std::string error;  // why it could not be opened
};

const Library& library() {
    static const Library opened = [] {
        Library library;
        library.handle = ::dlopen(kLibraryName, RTLD_NOW | RTLD_LOCAL);
        if (library.handle == nullptr) {
            const char* why = ::dlerror();
            library.error = std::string("cannot load ") + kLibraryName + ": " + (why != nullptr ? why : "unknown reason");
        }
        return library;
    }();
    return opened;
}

// The library's own definition of `name`; null when it is missing.
template <class Function>
Function* resolve(const char* name) {
    void* handle = library().handle;
    return handle != nullptr ? reinterpret_cast<Function*>(::dlsym(handle, name)) : nullptr;
}

// Each function is looked up once, on its first call.
#define AFX_SNDFILE_ENTRY(name) static auto* const real = resolve<decltype(::name)>(#name)

}  // namespace

extern "C" {

SNDFILE* sf_open(const char* path, int mode, SF_INFO* info) {
    AFX_SNDFILE_ENTRY(sf_open);
    return real != nullptr ? real(path, mode, info) : nullptr;
}

SNDFILE* sf_open_fd(int descriptor, int mode, SF_INFO* info, int closeDescriptor) {
    AFX_SNDFILE_ENTRY(sf_open_fd);
    return real != nullptr ? real(descriptor, mode, info, closeDescriptor) : nullptr;
}

int sf_close(SNDFILE* file) {
    AFX_SNDFILE_ENTRY(sf_close);
    return real != nullptr ? real(file) : SF_ERR_UNRECOGNISED_FORMAT;
}

int sf_error(SNDFILE* file) {
    AFX_SNDFILE_ENTRY(sf_error);
    return real != nullptr ? real(file) : SF_ERR_UNRECOGNISED_FORMAT;
}

const char* sf_strerror(SNDFILE* file) {
    AFX_SNDFILE_ENTRY(sf_strerror);
    return real != nullptr ? real(file) : library().error.c_str();
}

const char* sf_error_number(int error) {
    AFX_SNDFILE_ENTRY(sf_error_number);
    return real != nullptr ? real(error) : library().error.c_str();
}

int sf_command(SNDFILE* file, int command, void* data, int size) {
    AFX_SNDFILE_ENTRY(sf_command);
    return real != nullptr ? real(file, command, data, size) : SF_ERR_UNRECOGNISED_FORMAT;
}

int sf_format_check(const SF_INFO* info) {
    AFX_SNDFILE_ENTRY(sf_format_check);
    return real != nullptr ? real(info) : SF_FALSE;
}

const char* sf_get_string(SNDFILE* file, int type) {
    AFX_SNDFILE_ENTRY(sf_get_string);
    return real != nullptr ? real(file, type) : nullptr;
}

int sf_set_string(SNDFILE* file, int type, const char* text) {
    AFX_SNDFILE_ENTRY(sf_set_string);
    return real != nullptr ? real(file, type, text) : SF_ERR_UNRECOGNISED_FORMAT;
}

sf_count_t sf_readf_float(SNDFILE* file, float* frames, sf_count_t count) {
    AFX_SNDFILE_ENTRY(sf_readf_float);
    return real != nullptr ? real(file, frames, count) : 0;
}

sf_count_t sf_writef_float(SNDFILE* file, const float* frames, sf_count_t count) {
    AFX_SNDFILE_ENTRY(sf_writef_float);
    return real != nullptr ? real(file, frames, count) : 0;
}

sf_count_t sf_writef_int(SNDFILE* file, const int* frames, sf_count_t count) {
    AFX_SNDFILE_ENTRY(sf_writef_int);
    return real != nullptr ? real(file, frames, count) : 0;
}

}  // extern "C"
