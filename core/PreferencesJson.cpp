#include "core/PreferencesJson.h"

#include "core/JsonText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>
#include <stdexcept>

namespace CurtainCore {
namespace {

using Json = nlohmann::json;

void readValue(const Json& json, bool& value) {
    value = json.get_ref<const Json::boolean_t&>();
}

void readValue(const Json& json, std::string& value) {
    value = json.get_ref<const Json::string_t&>();
}

template <class Enumeration>
requires std::is_enum_v<Enumeration>
void readValue(const Json& json, Enumeration& value) {
    const auto found = fromRawValue<Enumeration>(json.get_ref<const Json::string_t&>());
    if (!found) {
        throw std::invalid_argument("no such case");
    }
    value = *found;
}

void readValue(const Json& json, TargetApp& value) {
    readValue(json.at("bundleID"), value.bundleID);
    readValue(json.at("displayName"), value.displayName);
}

template <class Element>
void readValue(const Json& json, std::vector<Element>& value) {
    const auto& elements = json.get_ref<const Json::array_t&>();
    value.clear();
    value.reserve(elements.size());
    for (const auto& element : elements) {
        readValue(element, value.emplace_back());
    }
}

template <class Value>
void readValue(const Json& json, std::optional<Value>& value) {
    readValue(json, value.emplace());
}

Json writeValue(bool value) {
    return value;
}

Json writeValue(const std::string& value) {
    return value;
}

template <class Enumeration>
requires std::is_enum_v<Enumeration> Json writeValue(Enumeration value) {
    return std::string(rawValue(value));
}

Json writeValue(const TargetApp& value) {
    return {{"bundleID", value.bundleID}, {"displayName", value.displayName}};
}

template <class Element>
Json writeValue(const std::vector<Element>& value) {
    auto array = Json::array();
    for (const auto& element : value) {
        array.push_back(writeValue(element));
    }
    return array;
}

class Reader {
public:
    explicit Reader(const Json& document) : document_(document) {}

    template <class Value>
    void operator()(const char* key, Value& value) const {
        const auto found = document_.find(key);
        if (found != document_.end() && !found->is_null()) {
            readValue(*found, value);
        }
    }

private:
    const Json& document_;
};

class Writer {
public:
    explicit Writer(Json& document) : document_(document) {}

    template <class Value>
    void operator()(const char* key, const Value& value) const {
        document_[key] = writeValue(value);
    }

    template <class Value>
    void operator()(const char* key, const std::optional<Value>& value) const {
        if (value) {
            document_[key] = writeValue(*value);
        }
    }

private:
    Json& document_;
};

class Names {
public:
    explicit Names(std::set<std::string>& names) : names_(names) {}

    template <class Value>
    void operator()(const char* key, const Value& /*value*/) const {
        names_.emplace(key);
    }

private:
    std::set<std::string>& names_;
};

template <class Record, class Visitor>
void visitFields(Record& record, const Visitor& visit) {
    visit("targetApps", record.targetApps);
    visit("autoDetectEnabled", record.autoDetectEnabled);
    visit("autoDetectMode", record.autoDetectMode);
    visit("triggerBundleIDs", record.triggerBundleIDs);
    visit("language", record.language);
    visit("showCameraPreview", record.showCameraPreview);
    visit("selectedCameraID", record.selectedCameraID);
    visit("showMicrophoneCheck", record.showMicrophoneCheck);
    visit("selectedMicrophoneID", record.selectedMicrophoneID);
    visit("microphoneTestMode", record.microphoneTestMode);
    visit("checkDesktopFiles", record.checkDesktopFiles);
    visit("hideFinderWithFixEverything", record.hideFinderWithFixEverything);
    visit("checkNotifications", record.checkNotifications);
    visit("notificationsMarkedHandled", record.notificationsMarkedHandled);
    visit("showEmbarrassmentScore", record.showEmbarrassmentScore);
    visit("runTestShareModeOnOpen", record.runTestShareModeOnOpen);
    visit("launchAtLogin", record.launchAtLogin);
    visit("hasOnboarded", record.hasOnboarded);
}

} // namespace

std::optional<std::string> encodePreferences(const Preferences& preferences) {
    try {
        auto document = Json::object();
        visitFields(preferences, Writer(document));
        return document.dump(2);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::optional<Preferences> decodePreferences(std::string_view document) {
    try {
        const auto json = Json::parse(jsonWithHoldableValues(document).value());
        if (!json.is_object()) {
            return std::nullopt;
        }
        Preferences preferences;
        visitFields(preferences, Reader(json));
        return preferences;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

bool holdsUnknownKeys(std::string_view document) {
    std::set<std::string> known;
    const Preferences record;
    visitFields(record, Names(known));
    try {
        const auto json = Json::parse(jsonWithHoldableValues(document).value());
        return json.is_object() && std::ranges::any_of(json.items(), [&](const auto& item) {
                   return !known.contains(item.key());
               });
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace CurtainCore
