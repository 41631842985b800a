#include "plinth/config/Localizer.h"

#include <cstring>
#include <map>
#include <mutex>
#include <string>

#include "Ordo/MakeStdString.h"

namespace plinth::config {

namespace {

// The process's one localiser, with the translations a host installed.
class HostLocalizer final : public Localizer {
public:
    void Localize(WideString& out, const char* key) const override {
        const std::string keyText = key != nullptr ? key : "";
        {
            std::lock_guard<std::mutex> lock(mutex_);
            auto found = translations_.find(keyText);
            if (found != translations_.end()) {
                out = found->second;
                return;
            }
        }
        // The English default: everything after the first '=', blanks kept.
        const std::size_t equals = keyText.find('=');
        out = Ordo::MakeWideString(equals == std::string::npos ? keyText : keyText.substr(equals + 1));
    }

    void SetTranslation(const char* key, const WideString& text) override {
        std::lock_guard<std::mutex> lock(mutex_);
        translations_[key != nullptr ? key : ""] = text;
    }

    void ClearTranslations() noexcept override {
        std::lock_guard<std::mutex> lock(mutex_);
        translations_.clear();
    }

private:
    mutable std::mutex mutex_;
    std::map<std::string, WideString> translations_;
};

}  // namespace

Localizer& Localizer::Get() noexcept {
    static HostLocalizer* instance = new HostLocalizer();  // lives as long as the process
    return *instance;
}

const char* Localizer::Language() const noexcept { return "en"; }

void Localizer::Localize(WideString& out, const char* key) const {
    (void)key;
    out.clear();
}

void Localizer::SetTranslation(const char* key, const WideString& text) {
    (void)key;
    (void)text;
}

void Localizer::ClearTranslations() noexcept {}

Localizer::~Localizer() = default;

}  // namespace plinth::config
