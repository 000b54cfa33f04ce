// A file descriptor that closes itself.
#pragma once

#include <utility>

#include <unistd.h>

namespace tavo {

// Owns the descriptor that it is made of; a negative one means none. Movable.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor() { close(); }

    [[nodiscard]] bool valid() const { return descriptor_ >= 0; }
    [[nodiscard]] int get() const { return descriptor_; }

    void close() {
        if (descriptor_ >= 0) {
            ::close(std::exchange(descriptor_, -1));
        }
    }

private:
    int descriptor_ = -1;
};

}  // namespace tavo
