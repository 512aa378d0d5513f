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

struct Record {
    std::optional<PrivacyJournal::Entry> entry;
    int startsUnderWay = 0;
};

Record recordIn(const std::optional<std::string>& text) {
    if (!text) {
        return {};
    }
    try {
        const auto document = Json::parse(*text);
        if (document.at("version") != version) {
            return {};
        }
        return {entryIn(document), document.value("startsUnderWay", 0)};
    } catch (const std::exception&) {
        return {};
    }
}

} // namespace

PrivacyJournal::PrivacyJournal(Platform::SessionNote& note) : note_(note) {
    const auto record = recordIn(note.text());
    earlier_ = record.entry;
    failedStarts_ = record.startsUnderWay;
    startsUnderWay_ = failedStarts_;
}

void PrivacyJournal::willTakeUp() {
    ++startsUnderWay_;
    write(*earlier_);
}

void PrivacyJournal::write(const Entry& entry) {
    const Json document{
        {"version", version},
        {"targets", entry.privacy.targets},
        {"hiddenByUs", entry.privacy.hiddenByUs},
        {"previousHidden", entry.privacy.previousHidden},
        {"wasAutomatic", entry.wasAutomatic},
        {"isQuiet", entry.isQuiet},
        {"startsUnderWay", startsUnderWay_},
    };
    keep(document.dump(2, ' ', false, Json::error_handler_t::replace));
}

void PrivacyJournal::clear() {
    startsUnderWay_ = 0;
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
