#include "platform/qt/TerminationSignals.h"

#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include <unistd.h>

#include "platform/posix/Pipe.h"

namespace tavo {
namespace {

constexpr std::array<int, 3> kSignals = {SIGTERM, SIGINT, SIGHUP};

// The writing end of the listener's pipe. A signal handler may use little more than such a variable
// and write(2).
volatile std::sig_atomic_t writingEnd = -1;

void handle(int /*signal*/) {
    const int before = errno;
    [[maybe_unused]] const ssize_t written = ::write(writingEnd, "", 1);
    errno = before;
}

class Listener {
public:
    explicit Listener(std::function<void()> asked)
        : asked_(std::move(asked)), notifier_(pipe_.reading.get(), QSocketNotifier::Read) {
        QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [this] {
            std::array<char, kSignals.size()> bytes;
            [[maybe_unused]] const ssize_t got =
                ::read(pipe_.reading.get(), bytes.data(), bytes.size());
            asked_();
        });
        writingEnd = pipe_.writing.get();
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
        writingEnd = -1;
    }

private:
    const std::function<void()> asked_;
    const Pipe pipe_ = makePipe();
    QSocketNotifier notifier_;
    std::array<struct sigaction, kSignals.size()> before_ = {};
};

}  // namespace

std::shared_ptr<void> listenForTermination(std::function<void()> asked) {
    return std::make_shared<Listener>(std::move(asked));
}

}  // namespace tavo
