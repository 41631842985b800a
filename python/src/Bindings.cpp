// The extension module: the effect instances and the module's registrations,
// with the interpreter released while audio is processed.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <tuple>
#include <vector>

#include "EffectCore.h"
#include "CommandLine.h"
#include "EffectNames.h"
#include "Errors.h"
#include "LoadedModule.h"

namespace py = pybind11;
using audiofilters::EffectCore;

namespace {

// The family name a registered identifier belongs to, or "" for none.
std::string familyOf(const std::string& identifier) {
    for (const afx::Family& family : afx::families())
        for (unsigned channels : {1u, 2u, 6u, 16u})
            if (afx::equalsIgnoringCase(afx::familyIdentifier(family, channels), identifier)) return family.name;
    return {};
}

std::vector<std::tuple<std::string, std::string, std::string>> registrations() {
    std::vector<std::tuple<std::string, std::string, std::string>> list;
    for (const auto& registration : audiofilters::loadedModule().registrations()) {
        const std::string identifier = registration.id.c_str();
        list.emplace_back(identifier, afx::displayName(registration), familyOf(identifier));
    }
    return list;
}

std::vector<std::string> familyNames() {
    std::vector<std::string> names;
    for (const afx::Family& family : afx::families()) names.emplace_back(family.name);
    return names;
}

// A float32 array of shape (channels, frames) whose rows are contiguous and
// writable; the Python layer has already turned every other input into one.
struct Rows {
    float* samples;
    std::ptrdiff_t stride;
    std::ptrdiff_t frames;
};

Rows rowsOf(py::array& audio, int channels) {
    if (!py::isinstance<py::array_t<float>>(audio) || audio.ndim() != 2 || audio.shape(0) != channels ||
        (audio.shape(1) > 1 && audio.strides(1) != static_cast<py::ssize_t>(sizeof(float))) ||
        audio.strides(0) % static_cast<py::ssize_t>(sizeof(float)) != 0 || !audio.writeable())
        throw py::value_error("expected a writable float32 array of shape (" + std::to_string(channels) +
                              ", frames) with contiguous rows");
    return {static_cast<float*>(audio.mutable_data()), audio.strides(0) / static_cast<py::ssize_t>(sizeof(float)),
            audio.shape(1)};
}

void checkBlock(int blockSize) {
    if (blockSize < 1) throw py::value_error("block_size must be at least 1 frame");
}

// Holds every effect of a chain for this thread, or refuses.
class Claims {
public:
    explicit Claims(const std::vector<EffectCore*>& chain) {
        for (EffectCore* effect : chain) {
            // An effect may appear twice in a chain; it is claimed once.
            if (std::find(held_.begin(), held_.end(), effect) != held_.end()) continue;
            if (!effect->claim()) {
                releaseAll();
                throw std::runtime_error("the effect '" + effect->identifier() +
                                         "' is processing in another thread; use one effect object per thread");
            }
            held_.push_back(effect);
        }
    }
    ~Claims() { releaseAll(); }

private:
    void releaseAll() {
        for (EffectCore* effect : held_) effect->release();
        held_.clear();
    }
    std::vector<EffectCore*> held_;
};

void processOne(EffectCore& effect, py::array& audio, int blockSize) {
    checkBlock(blockSize);
    const Rows rows = rowsOf(audio, effect.channels());
    if (!effect.claim())
        throw std::runtime_error("the effect '" + effect.identifier() +
                                 "' is processing in another thread; use one effect object per thread");
    {
        py::gil_scoped_release unlocked;
        effect.process(rows.samples, rows.stride, rows.frames, blockSize);
    }
    effect.release();
}

void processChain(const std::vector<EffectCore*>& chain, py::array& audio, int blockSize) {
    checkBlock(blockSize);
    if (chain.empty()) return;
    for (EffectCore* effect : chain)
        if (effect->channels() != chain.front()->channels())
            throw py::value_error("every effect of a chain needs the same channel count");
    const Rows rows = rowsOf(audio, chain.front()->channels());
    Claims claims(chain);
    py::gil_scoped_release unlocked;
    audiofilters::processChain(chain.data(), chain.size(), rows.samples, rows.stride, rows.frames, blockSize);
}

}  // namespace

PYBIND11_MODULE(_audiofilters, m) {
    m.doc() = "The effects module as loaded by the audiofilters package (internal; use the audiofilters API).";
    py::register_exception_translator([](std::exception_ptr raised) {
        try {
            if (raised) std::rethrow_exception(raised);
        } catch (const afx::UsageError& error) {
            PyErr_SetString(PyExc_ValueError, error.what());
        } catch (const afx::RunError& error) {
            PyErr_SetString(PyExc_RuntimeError, error.what());
        }
    });

    m.def("package_folder", &audiofilters::packageFolder, "The folder holding the extension and the module.");
    m.def("registrations", &registrations, "(identifier, display name, family) of every registered effect.");
    m.def("family_names", &familyNames, "The family names an effect may be created by.");
    m.def("process_chain", &processChain, py::arg("chain"), py::arg("audio"), py::arg("block_size"),
          "Processes `audio` in place through every effect of `chain`, block by block.");

    py::class_<EffectCore>(m, "EffectCore")
        .def(py::init<const std::string&, unsigned, double, int>(), py::arg("name"), py::arg("channels"),
             py::arg("sample_rate"), py::arg("block_size"))
        .def_property_readonly("identifier", &EffectCore::identifier)
        .def_property_readonly("channels", &EffectCore::channels)
        .def_property_readonly("sample_rate", &EffectCore::sampleRate)
        .def_property_readonly("parameter_count", &EffectCore::parameterCount)
        .def_property_readonly("latency", &EffectCore::latency)
        .def_property_readonly("tail", &EffectCore::tail)
        .def("name", &EffectCore::name)
        .def("label", &EffectCore::label)
        .def("text", &EffectCore::text)
        .def("type", &EffectCore::type)
        .def("minimum", &EffectCore::minimum)
        .def("maximum", &EffectCore::maximum)
        .def("step", &EffectCore::step)
        .def("converts_display_values", &EffectCore::convertsDisplayValues)
        .def("normalised", &EffectCore::normalised)
        .def("set_normalised", &EffectCore::setNormalised)
        .def("display_value", &EffectCore::displayValue)
        .def("set_display_value", &EffectCore::setDisplayValue)
        .def("reset", &EffectCore::reset)
        .def("process", &processOne, py::arg("audio"), py::arg("block_size"));
}
