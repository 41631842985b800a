#pragma once
// What the bridges know of the module: it is loaded through the host kit, the
// way a host application loads it, and every registered variant is described
// once, from a throw-away instance, in the terms plug-in standards use: audio
// ports, and control ports in display units.
//
// The module is the one hostkit::locateModule finds from the bridge library:
// AF_MODULE_PATH, else beside the library, else the installed layout
// (lib/ladspa/ beside lib/audiofilters/); a library reached through a link
// or copied elsewhere then looks where the link leads and in the folder the
// build installs the module into.
#include <cstdint>
#include <string>
#include <vector>

#include "AEffect.h"
#include "ML/VSTAudioFilterRegistry.h"
#include "ML/VSTPropertySupportMixin.h"
#include "hostkit/Effect.h"

namespace AFBridge {

// The rate at which the effects are described: a frequency's default in hertz
// is the effect's default at this rate.
inline constexpr double kReferenceRate = 48000.0;
// The largest block handed to an effect in one call; longer host blocks are
// processed in successive chunks of this many frames (and a shorter rest).
inline constexpr std::int32_t kPlannedBlock = 8192;

enum class Unit { None, Decibel, Hertz, Second, Percent };

struct Control {
    unsigned index = 0;           // the effect's parameter index
    std::string name;             // the effect's own name, blanks trimmed
    std::string label;            // the effect's own unit label, blanks trimmed
    std::string portName;         // "Cutoff (Hz)"
    std::string symbol;           // "cutoff": lower case, unique within the plug-in
    ML::VSTPropertySupportMixin::ParameterType type = ML::VSTPropertySupportMixin::kNotAParameter;
    float minimum = 0.0f;         // the range hosts are given, display units (see HostRanges.h)
    float maximum = 0.0f;
    float defaultValue = 0.0f;    // the freshly made effect's value at the reference rate, same units
    float effectMinimum = 0.0f;   // the effect's own minimum at the reference rate
    bool frequency = false;           // hertz; the effect's own range follows the running rate
    bool silenceAtFloor = false;      // a level whose declared minimum stands for the effect's silence token
    bool toggled = false;             // a switch: 0 off, 1 on
    bool logarithmic = false;
    Unit unit = Unit::None;
};

struct Plugin {
    std::string identifier;       // "Internal Highpass Stereo"
    std::string name;             // "Highpass (Stereo)"
    std::string label;            // "af_highpass_stereo"
    std::string slug;             // "highpass-stereo"
    std::string uri;              // "urn:audiofilters:highpass-stereo"
    unsigned long uniqueId = 0;   // LADSPA id, see uniqueIdFor
    int inputs = 0;
    int outputs = 0;
    std::vector<Control> controls;
    bool hasProperties = false;
    std::string aliasOf;          // the URI of the plug-in this one repeats under another name, if any
    ML::VSTAudioFilterRegistry::Registration registration;
};

// The loaded module and its plug-ins, built once per process on first use.
class Catalog {
public:
    static const Catalog& Get();

    bool loaded() const { return error_.empty(); }
    const std::string& error() const { return error_; }
    const std::string& modulePath() const { return modulePath_; }
    const std::vector<Plugin>& plugins() const { return plugins_; }
    const Plugin* findByLabel(const char* label) const;
    const Plugin* findByUri(const char* uri) const;

    // Loads an explicitly named module (the generator's way); Get() uses the lookup above.
    static Catalog Load(const std::string& modulePath);

private:
    Catalog() = default;
    void describe();
    std::string error_;
    std::string modulePath_;
    std::vector<Plugin> plugins_;
};

// Appends, for every family known to users by another name (Bandreject as
// "notch"), the same plug-ins under that name: labels, URIs and ids of their own.
void addAliases(std::vector<Plugin>& plugins);

// Pure derivations from the registry identifier, shared by both bridges and
// by the tests.
std::string slugFor(const std::string& identifier);     // "Internal Volume 5.1" -> "volume-5-1"
std::string labelFor(const std::string& identifier);    // -> "af_volume_5_1"
std::string familyOf(const std::string& identifier);     // "Internal Volume 5.1" -> "Volume"
std::string displayNameFor(const std::string& familyName, const std::string& identifier);
// LADSPA ids 0xAF0000..0xAFFFFF: 0xAF0000 plus the low 16 bits of the 32-bit
// FNV-1a hash of the identifier's bytes. Stable across builds and orders.
unsigned long uniqueIdFor(const std::string& identifier);
std::string trimmed(const std::string& text);

// One live effect made through the registration's factory with a host that
// answers nothing, started the way a host starts one (open, rate, block size;
// not resumed). Empty when the factory made none.
hostkit::Effect makeEffect(const Plugin& plugin, double sampleRate);

}  // namespace AFBridge
