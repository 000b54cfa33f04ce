#include "platform/linux/opening/OpeningThread.h"

#include <cerrno>
#include <system_error>
#include <thread>
#include <utility>

#include <sys/wait.h>

#include "platform/linux/system/Pidfd.h"
#include "platform/posix/FileDescriptor.h"

namespace tavo {
namespace {

// Whether the child has ended. Sets `status` if waitpid(2) gave one.
bool reap(pid_t process, std::optional<int>& status) {
    int word = 0;
    const pid_t result = ::waitpid(process, &word, WNOHANG);
    if (result == process) {
        status = word;
    }
    return result == process || (result < 0 && errno == ECHILD);
}

}  // namespace

struct OpeningThread::Child {
    FileDescriptor pidfd;
    std::function<void(std::optional<int>)> ended;
    ScopedSource readable;  // the last member: it uses the pidfd
};

OpeningThread::~OpeningThread() {
    {
        const std::lock_guard lock(wayBack_->mutex);
        wayBack_->thread = nullptr;
    }
    bus_.thread().postAndWait([this] {
        children_.clear();
        calls_.reset();
    });
}

void OpeningThread::inBackground(std::function<Job()> work) {
    auto run = [wayBack = wayBack_, work = std::move(work)]() mutable {
        Job job = work();
        work = nullptr;  // so that what it shares with the job ends on the bus thread
        const std::lock_guard lock(wayBack->mutex);
        if (job && wayBack->thread != nullptr) {
            wayBack->thread->post(std::move(job));
        }
    };
    try {
        std::thread(run).detach();
    } catch (const std::system_error&) {
        run();  // the system allows no further thread
    }
}

ScopedSource OpeningThread::after(std::chrono::milliseconds delay, std::function<void()> callback) {
    return bus_.thread().after(delay,
                               [alive = std::weak_ptr(calls_), callback = std::move(callback)] {
                                   if (!alive.expired()) {
                                       callback();
                                   }
                               });
}

void OpeningThread::askBus(std::chrono::milliseconds patience,
                           std::function<void(SessionBus::State)> answered) {
    bus_.ask(patience, [alive = std::weak_ptr(calls_),
                        answered = std::move(answered)](SessionBus::State state) {
        if (!alive.expired()) {
            answered(state);
        }
    });
}

void OpeningThread::watchChild(pid_t process, std::function<void(std::optional<int>)> ended) {
    reapUnwatched();
    FileDescriptor pidfd = openPidfd(process);
    if (!pidfd.valid()) {
        std::optional<int> status;
        if (reap(process, status)) {
            ended(status);
        } else {
            unwatched_.push_back(process);
        }
        return;
    }
    const int descriptor = pidfd.get();
    const auto child =
        std::make_shared<Child>(Child{std::move(pidfd), std::move(ended), ScopedSource()});
    child->readable =
        bus_.thread().whenReadable(descriptor, [this, process] { childReadable(process); });
    children_.insert_or_assign(process, child);
}

void OpeningThread::childReadable(pid_t process) {
    const auto child = children_.find(process);
    std::optional<int> status;
    if (!reap(process, status)) {
        return;
    }
    const auto ended = std::move(child->second->ended);
    children_.erase(child);
    ended(status);
}

void OpeningThread::reapUnwatched() {
    std::erase_if(unwatched_, [](pid_t process) {
        std::optional<int> status;
        return reap(process, status);
    });
}

}  // namespace tavo
