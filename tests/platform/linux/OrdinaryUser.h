// Rights of an ordinary user for a part of a test that runs as root.
#pragma once

#include <sys/types.h>
#include <unistd.h>

namespace tavo {

// While it lives, file permissions hold for this process, too.
class OrdinaryUser {
public:
    OrdinaryUser() : wasRoot_(geteuid() == 0) {
        constexpr uid_t kNobody = 65534;
        succeeded_ = !wasRoot_ || seteuid(kNobody) == 0;
    }
    ~OrdinaryUser() {
        if (wasRoot_ && succeeded_ && seteuid(0) != 0) {
            _exit(1);
        }
    }

    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

    // False where root cannot become anybody else.
    [[nodiscard]] bool succeeded() const { return succeeded_; }

private:
    bool wasRoot_;
    bool succeeded_;
};

}  // namespace tavo
