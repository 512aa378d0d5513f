#pragma once

#include <unistd.h>

namespace LinuxPlatform {

/// Owns a file descriptor.
class Descriptor {
public:
    /// Of what a system call answered: a negative number is none.
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor() {
        if (isOpen()) {
            ::close(descriptor_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return descriptor_; }
    bool isOpen() const { return descriptor_ >= 0; }

private:
    int descriptor_;
};

} // namespace LinuxPlatform
