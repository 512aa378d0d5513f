#include "Curtain/AppCatalog.h"
#include "Curtain/AppChoiceModel.h"
#include "platform/linux/apps/DesktopEntryBundles.h"
#include "platform/linux/system/PosixFileManager.h"
#include "tests/support/FakeLoginItem.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <array>
#include <memory>
#include <string>

namespace {

constexpr int installedApps = 5000;

/// Entries as long as packages ship them, with translations.
std::string entryText(int number) {
    std::string text = "[Desktop Entry]\nType=Application\nExec=true %U\nIcon=application-x-executable\n";
    const auto name = "Program " + std::to_string(number * 7919 % installedApps);
    text += "Name=" + name + "\n";
    for (const auto* const language : {"ar", "cs", "da", "de", "el", "es", "fi", "fr", "he", "hi", "hu",
                                       "it", "ja", "ko", "nl", "pl", "pt", "ru", "sv", "tr", "uk", "zh_CN"}) {
        text += std::string("Name[") + language + "]=" + name + "\n";
        text += std::string("Comment[") + language + "]=A program of the benchmark\n";
    }
    return text;
}

struct World {
    TestSupport::TemporaryFolder folder;
    std::filesystem::path applications = folder.path() / "applications";

    World() {
        for (int number = 0; number < installedApps; ++number) {
            TestSupport::writeFile(applications / ("app" + std::to_string(number) + ".desktop"),
                                   entryText(number));
        }
    }
};

struct Catalog {
    explicit Catalog(const World& world)
        : entries({world.applications}),
          catalog(workspace, files, bundles, {{world.applications.string()}, "desktop"}) {}

    LinuxPlatform::DesktopEntries entries;
    LinuxPlatform::DesktopEntryBundles bundles{entries};
    LinuxPlatform::PosixFileManager files;
    TestSupport::FakeWorkspace workspace;
    Curtain::AppCatalog catalog;
};

void listFirst(benchmark::State& state) {
    const World world;
    for ([[maybe_unused]] const auto round : state) {
        Catalog catalog(world);
        benchmark::DoNotOptimize(catalog.catalog.installedApps());
    }
}

/// What the window pays: the entries have been read when the first running app was looked up.
void listWithEntriesRead(benchmark::State& state) {
    const World world;
    for ([[maybe_unused]] const auto round : state) {
        state.PauseTiming();
        Catalog catalog(world);
        catalog.entries.all();
        state.ResumeTiming();
        benchmark::DoNotOptimize(catalog.catalog.installedApps());
    }
}

void listAgain(benchmark::State& state) {
    const World world;
    Catalog catalog(world);
    catalog.catalog.installedApps();
    for ([[maybe_unused]] const auto round : state) {
        benchmark::DoNotOptimize(catalog.catalog.installedApps());
    }
}

void listAfterAChange(benchmark::State& state) {
    const World world;
    Catalog catalog(world);
    catalog.catalog.installedApps();
    int number = 0;
    for ([[maybe_unused]] const auto round : state) {
        state.PauseTiming();
        TestSupport::writeFile(world.applications / "app7.desktop", entryText(++number));
        state.ResumeTiming();
        benchmark::DoNotOptimize(catalog.catalog.installedApps());
    }
}

void keyStroke(benchmark::State& state) {
    const World world;
    const Catalog catalog(world);
    TestSupport::MemoryUserDefaults defaults;
    CurtainCore::PreferencesStore store(defaults);
    TestSupport::FakeLocale locale;
    TestSupport::FakeLoginItem loginItem;
    TestSupport::RecordingLog log;
    Curtain::SettingsModel settings(store, locale, loginItem, log);
    Curtain::AppChoiceModel model(settings, catalog.catalog, "tr");
    model.setEntries(catalog.catalog.installedApps());
    constexpr std::array<const char*, 4> queries{"p", "pr", "program 4", "xyz"};
    std::size_t next = 0;
    for ([[maybe_unused]] const auto round : state) {
        model.setQuery(QString::fromLatin1(queries.at(++next % queries.size())));
    }
}

BENCHMARK(listFirst)->Name("AppCatalog.installedApps/5000/first")->Unit(benchmark::kMillisecond);
BENCHMARK(listWithEntriesRead)
    ->Name("AppCatalog.installedApps/5000/entriesRead")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(listAgain)->Name("AppCatalog.installedApps/5000/again")->Unit(benchmark::kMillisecond);
BENCHMARK(listAfterAChange)
    ->Name("AppCatalog.installedApps/5000/afterAChange")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(keyStroke)->Name("AppChoiceModel.setQuery/5000")->Unit(benchmark::kMillisecond);

} // namespace
