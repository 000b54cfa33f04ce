#include "platform/qt/TerminationSignals.h"

#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <utility>

#include <sys/eventfd.h>
#include <unistd.h>

#include "platform/posix/FileDescriptor.h"

namespace tavo {
namespace {

constexpr std::array<int, 3> kSignals = {SIGTERM, SIGINT, SIGHUP};

// All that a handler can reach.
volatile std::sig_atomic_t wakeUp = -1;

void handle(int /*signal*/) {
    const int before = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(wakeUp, &one, sizeof one);
    errno = before;
}

class Listener {
public:
    explicit Listener(std::function<void()> asked)
        : asked_(std::move(asked)),
          event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
          notifier_(event_.get(), QSocketNotifier::Read) {
        QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] {
            std::uint64_t count = 0;
            [[maybe_unused]] const ssize_t size = ::read(event_.get(), &count, sizeof count);
            asked_();
        });
        wakeUp = event_.get();
        struct sigaction action = {};
        action.sa_handler = handle;
        action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            ::sigaction(kSignals[i], nullptr, &before_[i]);
            if (before_[i].sa_handler != SIG_IGN) {
                ::sigaction(kSignals[i], &action, nullptr);
            }
        }
    }

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    ~Listener() {
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            ::sigaction(kSignals[i], &before_[i], nullptr);
        }
        wakeUp = -1;
    }

private:
    const std::function<void()> asked_;
    FileDescriptor event_;
    QSocketNotifier notifier_;
    std::array<struct sigaction, kSignals.size()> before_ = {};
};

}  // namespace

std::shared_ptr<void> listenForTermination(std::function<void()> asked) {
    return std::make_shared<Listener>(std::move(asked));
}

}  // namespace tavo
