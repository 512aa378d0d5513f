#include "tests/fuzz/FuzzCheck.h"

#include "core/PreferencesJson.h"

#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view document(reinterpret_cast<const char*>(bytes), size);
    CurtainCore::holdsUnknownKeys(document);
    const auto read = CurtainCore::decodePreferences(document);
    if (!read) {
        return 0;
    }
    const auto written = CurtainCore::encodePreferences(*read);
    Fuzz::check(written.has_value(), "what was read can be written");
    Fuzz::check(CurtainCore::decodePreferences(*written) == read, "what was written is read as it was");
    Fuzz::check(!CurtainCore::holdsUnknownKeys(*written), "no unknown keys are written");
    return 0;
}
