#include <climits>
#include <cstddef>
#include <cstring>
#include <thread>
#include <vector>

namespace {

// Nothing here is known before it runs, neither to the compiler nor to what reads the code.
int readPastTheEnd() {
    volatile std::size_t size = 4;
    const std::vector<int> numbers(size);
    return numbers.data()[size];
}

int overflow() {
    volatile int most = INT_MAX;
    return most + 1;
}

// In a thread of its own, whose stack keeps no trace of them.
int loseMemory() {
    std::thread([] {
        volatile std::size_t count = 100;
        for (std::size_t made = 0; made < count; ++made) {
            std::vector<char*> kept{new char[16]};
            kept.clear();
        }
    }).join();
    return 0;
}

} // namespace

/// Makes the fault that its argument names, and none without one. Ends with 0 where nobody notices.
int main(int argumentCount, char** arguments) {
    const char* const fault = argumentCount > 1 ? arguments[1] : "";
    [[maybe_unused]] volatile int result = 0;
    if (std::strcmp(fault, "address") == 0) {
        result = readPastTheEnd();
    } else if (std::strcmp(fault, "undefined") == 0) {
        result = overflow();
    } else if (std::strcmp(fault, "leak") == 0) {
        result = loseMemory();
    }
    return 0;
}
