#include "platform/linux/shortcutlists/GSettingsShortcuts.h"

#include "platform/linux/system/AsciiCase.h"

#include <gio/gio.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace LinuxPlatform {
namespace {

template <auto release>
struct Release {
    template <class Object>
    void operator()(Object* object) const {
        release(object);
    }
};

using Settings = std::unique_ptr<GSettings, Release<g_object_unref>>;
using SchemaPointer = std::unique_ptr<GSettingsSchema, Release<g_settings_schema_unref>>;
using Variant = std::unique_ptr<GVariant, Release<g_variant_unref>>;

SchemaPointer find(const std::string& id) {
    auto* const source = g_settings_schema_source_get_default();
    return SchemaPointer(source != nullptr ? g_settings_schema_source_lookup(source, id.c_str(), TRUE)
                                           : nullptr);
}

/// A text or a list of texts; anything else is no combination.
std::vector<std::string> textsIn(GVariant* value) {
    std::vector<std::string> texts;
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) != FALSE) {
        texts.emplace_back(g_variant_get_string(value, nullptr));
    } else if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING_ARRAY) != FALSE) {
        for (gsize index = 0; index < g_variant_n_children(value); ++index) {
            const Variant child(g_variant_get_child_value(value, index));
            texts.emplace_back(g_variant_get_string(child.get(), nullptr));
        }
    }
    return texts;
}

bool holds(GSettings* settings, GSettingsSchema* schema, const WantedShortcut& wanted) {
    const std::unique_ptr<gchar*, Release<g_strfreev>> keys(g_settings_schema_list_keys(schema));
    for (auto* const* key = keys.get(); *key != nullptr; ++key) {
        const Variant value(g_settings_get_value(settings, *key));
        if (std::ranges::any_of(textsIn(value.get()), [&](const std::string& text) {
                return wanted.matches(Accelerator::fromGtk(text));
            })) {
            return true;
        }
    }
    return false;
}

bool customHolds(GSettings* settings, GSettingsSchema* schema, const GSettingsShortcuts::Schema& place,
                 const WantedShortcut& wanted) {
    const auto custom = find(place.customSchema);
    if (!custom || g_settings_schema_has_key(schema, place.pathsKey.c_str()) == FALSE) {
        return false;
    }
    const Variant paths(g_settings_get_value(settings, place.pathsKey.c_str()));
    return std::ranges::any_of(textsIn(paths.get()), [&](const std::string& path) {
        if (!path.starts_with('/') || !path.ends_with('/') || path.find("//") != std::string::npos) {
            return false;
        }
        const Settings entry(g_settings_new_full(custom.get(), nullptr, path.c_str()));
        return holds(entry.get(), custom.get(), wanted);
    });
}

} // namespace

GSettingsShortcuts::GSettingsShortcuts(std::vector<Schema> schemas) : schemas_(std::move(schemas)) {}

std::vector<GSettingsShortcuts::Schema> GSettingsShortcuts::schemasOf(std::string_view currentDesktop) {
    const auto names = ":" + asciiLowerCase(currentDesktop) + ":";
    const auto isNamed = [&](const std::string& name) {
        return names.find(":" + name + ":") != std::string::npos;
    };
    if (isNamed("x-cinnamon") || isNamed("cinnamon")) {
        return {{"org.cinnamon.desktop.keybindings", {}, {}},
                {"org.cinnamon.desktop.keybindings.wm", {}, {}},
                {"org.cinnamon.desktop.keybindings.media-keys", {}, {}}};
    }
    if (isNamed("mate")) {
        return {{"org.mate.Marco.global-keybindings", {}, {}},
                {"org.mate.Marco.window-keybindings", {}, {}},
                {"org.mate.SettingsDaemon.plugins.media-keys", {}, {}}};
    }
    if (isNamed("gnome") || isNamed("gnome-classic") || isNamed("unity") || isNamed("budgie")) {
        return {{"org.gnome.desktop.wm.keybindings", {}, {}},
                {"org.gnome.mutter.keybindings", {}, {}},
                {"org.gnome.mutter.wayland.keybindings", {}, {}},
                {"org.gnome.shell.keybindings", {}, {}},
                {"com.solus-project.budgie-wm", {}, {}},
                {"org.gnome.settings-daemon.plugins.media-keys", "custom-keybindings",
                 "org.gnome.settings-daemon.plugins.media-keys.custom-keybinding"}};
    }
    return {};
}

void GSettingsShortcuts::ask(const WantedShortcut& wanted, Answer answer) {
    answer(std::ranges::any_of(schemas_, [&](const Schema& place) {
        const auto schema = find(place.id);
        if (!schema) {
            return false;
        }
        const Settings settings(g_settings_new_full(schema.get(), nullptr, nullptr));
        return holds(settings.get(), schema.get(), wanted) ||
               (!place.pathsKey.empty() && customHolds(settings.get(), schema.get(), place, wanted));
    }));
}

} // namespace LinuxPlatform
