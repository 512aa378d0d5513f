#include "tests/support/MemoryUserDefaults.h"

#include "tests/platform/system/UserDefaultsContract.h"

namespace TestSupport {
namespace {

struct MemoryWorld {
    MemoryUserDefaults defaults;

    void put(const std::string& key, const std::string& bytes) { defaults.values[key] = bytes; }
    void putUnreadable(const std::string& key) {
        put(key, "unreadable");
        defaults.unreadable.insert(key);
    }
    std::string stored(const std::string& key) const { return defaults.values.at(key); }
    std::vector<std::string> copies(const std::string& /*key*/) const { return defaults.copies; }
};

INSTANTIATE_TYPED_TEST_SUITE_P(Memory, UserDefaultsContract, MemoryWorld);

} // namespace
} // namespace TestSupport
