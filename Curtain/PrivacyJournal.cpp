#include "Curtain/PrivacyJournal.h"

#include <nlohmann/json.hpp>

#include <exception>

namespace Curtain {
namespace {

using Json = nlohmann::json;

constexpr int version = 1;

PrivacyJournal::Entry entryIn(const Json& document) {
    PrivacyJournal::Entry entry;
    document.at("targets").get_to(entry.privacy.targets);
    document.at("hiddenByUs").get_to(entry.privacy.hiddenByUs);
    document.at("previousHidden").get_to(entry.privacy.previousHidden);
    document.at("wasAutomatic").get_to(entry.wasAutomatic);
    document.at("isQuiet").get_to(entry.isQuiet);
    return entry;
}

std::optional<PrivacyJournal::Entry> entryIn(const std::optional<std::string>& text) {
    if (!text) {
        return std::nullopt;
    }
    try {
        const auto document = Json::parse(*text);
        return document.at("version") == version ? std::optional(entryIn(document)) : std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace

PrivacyJournal::PrivacyJournal(Platform::SessionNote& note) : note_(note), earlier_(entryIn(note.text())) {}

void PrivacyJournal::write(const Entry& entry) {
    const Json document{
        {"version", version},
        {"targets", entry.privacy.targets},
        {"hiddenByUs", entry.privacy.hiddenByUs},
        {"previousHidden", entry.privacy.previousHidden},
        {"wasAutomatic", entry.wasAutomatic},
        {"isQuiet", entry.isQuiet},
    };
    keep(document.dump(2, ' ', false, Json::error_handler_t::replace));
}

void PrivacyJournal::clear() {
    keep(std::nullopt);
}

void PrivacyJournal::keep(const std::optional<std::string>& text) {
    if (text && text == kept_) {
        return;
    }
    kept_ = text;
    note_.keep(text);
}

} // namespace Curtain
