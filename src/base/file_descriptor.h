#pragma once

#include <utility>

#include <unistd.h>

namespace tandrel {

// Owns one open file descriptor and closes it. -1 is none.
class FileDescriptor {
 public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd) : fd_(fd) {}
    ~FileDescriptor() { reset(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            reset();
            fd_ = std::exchange(other.fd_, -1);
        }
        return *this;
    }

    explicit operator bool() const { return fd_ >= 0; }
    int get() const { return fd_; }
    void reset() {
        if (fd_ >= 0) ::close(std::exchange(fd_, -1));
    }

 private:
    int fd_ = -1;
};

}  // namespace tandrel
