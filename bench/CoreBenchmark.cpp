#include "core/Localizer.h"
#include "core/ReadinessChecklist.h"
#include "core/TextTable.h"

#include <benchmark/benchmark.h>

namespace {

using namespace CurtainCore;

/// Every text of every language, once: the first round of a process pays for the pages, later ones do not.
void readTable(benchmark::State& state) {
    std::size_t bytes = sizeof textTable;
    for ([[maybe_unused]] const auto round : state) {
        bytes = sizeof textTable;
        for (const auto& language : textTable) {
            for (const auto text : language.texts) {
                benchmark::DoNotOptimize(text.front());
                bytes += text.size() + 1;
            }
        }
    }
    state.counters["bytes"] = static_cast<double>(bytes);
}

void localizerString(benchmark::State& state, std::string_view lang) {
    const Localizer localizer;
    const auto keys = allCases<LocKey>();
    std::size_t index = 0;
    for ([[maybe_unused]] const auto round : state) {
        benchmark::DoNotOptimize(lang);
        auto text = localizer.string(keys[index], lang);
        benchmark::DoNotOptimize(text);
        index = index + 1 < keys.size() ? index + 1 : 0;
    }
}

void localizerResolve(benchmark::State& state) {
    std::string_view system = "ru";
    for ([[maybe_unused]] const auto round : state) {
        benchmark::DoNotOptimize(system);
        auto lang = Localizer::resolve(AppLanguage::system, system);
        benchmark::DoNotOptimize(lang);
    }
}

void checklistBuild(benchmark::State& state, ReadinessInput input) {
    const ReadinessChecklistEngine engine;
    for ([[maybe_unused]] const auto round : state) {
        benchmark::DoNotOptimize(input);
        auto readiness = engine.build(input);
        benchmark::DoNotOptimize(readiness);
    }
}

BENCHMARK(readTable)->Name("TextTable/firstRead")->Iterations(1);
BENCHMARK(readTable)->Name("TextTable/read");
BENCHMARK_CAPTURE(localizerString, en, "en")->Name("Localizer.string/en");
BENCHMARK_CAPTURE(localizerString, ru, "ru")->Name("Localizer.string/ru");
BENCHMARK_CAPTURE(localizerString, unknown, "xx")->Name("Localizer.string/unknown");
BENCHMARK(localizerResolve)->Name("Localizer.resolve");
BENCHMARK_CAPTURE(checklistBuild, allClear,
                  ReadinessInput{0, 0, NotificationStatus::protected_, true, true, true, true, true, false})
    ->Name("ReadinessChecklistEngine.build/allClear");
BENCHMARK_CAPTURE(checklistBuild, everyIssue,
                  ReadinessInput{7, 12, NotificationStatus::mayAppear, true, false, true, false, false,
                                 false})
    ->Name("ReadinessChecklistEngine.build/everyIssue");

} // namespace
