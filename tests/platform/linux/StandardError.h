// What the test's own process says on standard error while one of these lives.
#pragma once

#include <cstdio>
#include <string>

#include <unistd.h>

namespace tavo {

class StandardError {
public:
    StandardError() : saved_(dup(STDERR_FILENO)), text_(std::tmpfile()) {
        std::fflush(stderr);
        dup2(fileno(text_), STDERR_FILENO);
    }
    ~StandardError() {
        std::fflush(stderr);
        dup2(saved_, STDERR_FILENO);
        close(saved_);
        std::fclose(text_);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

    [[nodiscard]] std::string text() const {
        std::fflush(stderr);
        std::string text;
        char byte = 0;
        for (off_t at = 0; pread(fileno(text_), &byte, 1, at) == 1; ++at) {
            text.push_back(byte);
        }
        return text;
    }

private:
    int saved_;
    std::FILE* text_;
};

}  // namespace tavo
