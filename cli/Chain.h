#pragma once
// A chain of effects driven in place, as a host does: every effect gets the
// same channel arrays as its inputs and its outputs, block after block.
#include <memory>
#include <string>
#include <vector>

#include "ModuleHost.h"
#include "PluginFile.h"

namespace afx {

// One -p NAME=VALUE (display units) or --set INDEX=NORMALISED, as typed.
struct ParameterRequest {
    bool normalised = false;
    std::string parameter;  // a name or an index
    std::string value;
};

// One -e EFFECT with the parameter requests that follow it. EFFECT is an
// effect of the module or the path of a VST 2 plug-in file.
struct EffectRequest {
    std::string effect;
    std::vector<ParameterRequest> parameters;
};

// What a chain link ended up with, for the user to read.
struct AppliedParameter {
    int index;
    std::string name;
    float normalised;
    std::string display;  // opcode 7 after the value was set
    std::string label;
};

class Chain {
public:
    // Resolves and creates every effect, runs open, sample rate, block size and
    // resume, then sets the requested parameters in order. UsageError for an
    // unknown effect or parameter or a value that does not convert; RunError
    // when the module makes no instance.
    Chain(const ModuleHost& host, const std::vector<EffectRequest>& requests, unsigned channels, int sampleRate,
          int blockSize);
    ~Chain();
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;

    // One block, in place through every effect in order.
    void process(float** channels, int frames) const { process(channels, frames, 0, links_.size()); }
    // One block through the links from `firstLink` up to (not including) `endLink` only.
    void process(float** channels, int frames, std::size_t firstLink, std::size_t endLink) const;
    // Suspends every effect (they are closed when the chain goes).
    void finish();

    std::size_t size() const { return links_.size(); }
    const std::string& identifier(std::size_t link) const { return links_[link].identifier; }
    // Instances of the link's variant side by side, each on its own channels
    // (1 when the variant takes all of them), and the channels each takes.
    std::size_t instances(std::size_t link) const { return links_[link].instances.size(); }
    unsigned width(std::size_t link) const { return links_[link].width; }
    const std::vector<AppliedParameter>& applied(std::size_t link) const { return links_[link].applied; }

private:
    struct Link {
        std::string identifier;
        std::vector<std::unique_ptr<Effect>> instances;
        unsigned width = 0;
        std::vector<AppliedParameter> applied;
        bool fromPluginFile = false;
    };

    void applyRequests(const std::vector<EffectRequest>& requests);

    bool running_ = false;
    // Declared before the links: the files stay loaded until their effects are closed.
    std::vector<std::unique_ptr<PluginFile>> pluginFiles_;
    std::vector<Link> links_;
};

// The parameter of `effect` named (case and blanks ignored; "NAME#N" for the
// N-th of several with one name) or numbered by `text`; UsageError listing
// the parameters when none matches.
int findParameter(const Effect& effect, const std::string& identifier, const std::string& text);

// Display value (the parameter's units) to normalised, through the property
// interface; UsageError when it cannot be converted or lies outside the range.
float displayToNormalised(const Effect& effect, const std::string& identifier, int index, const std::string& text);

}  // namespace afx
