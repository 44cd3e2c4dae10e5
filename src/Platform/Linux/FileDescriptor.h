#pragma once

#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace kiv {

[[noreturn]] inline void throwErrno(int error = errno) { throw std::system_error(error, std::generic_category()); }

// An open file, closed with the object.
class FileDescriptor {
public:
    explicit FileDescriptor(int number = -1) : number_(number) {}
    FileDescriptor(FileDescriptor &&other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor &operator=(FileDescriptor &&other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~FileDescriptor() {
        if (number_ >= 0) ::close(number_);
    }

    int operator*() const { return number_; }
    bool isOpen() const { return number_ >= 0; }

private:
    int number_;
};

}  // namespace kiv
