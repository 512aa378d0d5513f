#include "platform/linux/system/GSettingsKey.h"

#include <gio/gio.h>

#include <memory>
#include <utility>

namespace LinuxPlatform {
namespace {

struct VariantUnref {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using Variant = std::unique_ptr<GVariant, VariantUnref>;

struct SchemaUnref {
    void operator()(GSettingsSchema* schema) const { g_settings_schema_unref(schema); }
};

std::optional<std::string> textOf(const Variant& variant) {
    if (!variant) {
        return std::nullopt;
    }
    const std::unique_ptr<char, decltype(&g_free)> text(g_variant_print(variant.get(), FALSE), &g_free);
    return std::string(text.get());
}

struct SettingsUnref {
    void operator()(GSettings* settings) const { g_object_unref(settings); }
};

/// Of a schema, for one of its keys; null when the schema is not installed or has no such key.
std::unique_ptr<GSettings, SettingsUnref> open(const std::string& schemaName, const std::string& key) {
    auto* const source = g_settings_schema_source_get_default();
    if (source == nullptr) {
        return nullptr;
    }
    // Asking for a schema or a key that is not there would end this process.
    const std::unique_ptr<GSettingsSchema, SchemaUnref> schema(
        g_settings_schema_source_lookup(source, schemaName.c_str(), TRUE));
    if (!schema || g_settings_schema_has_key(schema.get(), key.c_str()) == FALSE) {
        return nullptr;
    }
    return std::unique_ptr<GSettings, SettingsUnref>(g_settings_new_full(schema.get(), nullptr, nullptr));
}

} // namespace

GSettingsKey::GSettingsKey(std::string schema, std::string key)
    : schema_(std::move(schema)),
      key_(std::move(key)) {}

std::optional<std::string> GSettingsKey::value() const {
    const auto settings = open(schema_, key_);
    return settings ? textOf(Variant(g_settings_get_value(settings.get(), key_.c_str()))) : std::nullopt;
}

std::optional<std::string> GSettingsKey::chosenValue() const {
    const auto settings = open(schema_, key_);
    return settings ? textOf(Variant(g_settings_get_user_value(settings.get(), key_.c_str()))) : std::nullopt;
}

bool GSettingsKey::write(const std::string& value) {
    const auto settings = open(schema_, key_);
    if (!settings || g_settings_is_writable(settings.get(), key_.c_str()) == FALSE) {
        return false;
    }
    const Variant current(g_settings_get_value(settings.get(), key_.c_str()));
    const Variant wanted(
        g_variant_parse(g_variant_get_type(current.get()), value.c_str(), nullptr, nullptr, nullptr));
    return wanted && g_settings_set_value(settings.get(), key_.c_str(), wanted.get()) != FALSE;
}

bool GSettingsKey::reset() {
    const auto settings = open(schema_, key_);
    if (!settings || g_settings_is_writable(settings.get(), key_.c_str()) == FALSE) {
        return false;
    }
    g_settings_reset(settings.get(), key_.c_str());
    return true;
}

} // namespace LinuxPlatform
