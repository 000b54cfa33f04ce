#include "platform/linux/instance/SingleInstance.h"

#include <utility>

#include "platform/linux/dbus/SessionBus.h"
#include "platform/linux/instance/InstanceBusName.h"
#include "platform/linux/instance/InstanceListener.h"

namespace tavo {

SingleInstance::SingleInstance(SessionBus& bus, std::unique_ptr<InstanceSocket> socket,
                               const StartRequest& request)
    : bus_(bus), hasSocket_(socket != nullptr) {
    bus_.thread().postAndWait([&] {
        if (socket) {
            listener_ = std::make_unique<InstanceListener>(
                bus_.thread(), std::move(socket),
                [this](const StartRequest& asked) { take(asked); });
        }
        name_ = std::make_unique<InstanceBusName>(
            bus_, request,
            InstanceBusName::Events{.activated = [this](const StartRequest& asked) { take(asked); },
                                    .superseded =
                                        [this] {
                                            superseded_ = true;
                                            announce();
                                        },
                                    .owned = [this](bool owned) { ownsName_ = owned; }});
    });
}

SingleInstance::~SingleInstance() {
    bus_.thread().postAndWait([this] { end(); });
}

void SingleInstance::end() {
    listener_.reset();
    name_.reset();
    ownsName_ = false;
}

void SingleInstance::serve(MainQueue& mainQueue, Events events) {
    events_ = std::move(events);
    poster_.emplace(mainQueue);
    bus_.thread().post([this] {
        serving_ = true;
        if (listener_) {
            listener_->confirmStarts();
        }
        if (name_) {
            name_->confirmCallers();
        }
        announce();
    });
}

void SingleInstance::stopServing() {
    bus_.thread().postAndWait([this] { serving_ = false; });
    poster_.reset();
}

void SingleInstance::take(const StartRequest& request) {
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(request);
    }
    announce();
}

void SingleInstance::announce() {
    if (serving_) {
        poster_->post([this] { deliver(); });
    }
}

void SingleInstance::deliver() {
    std::vector<StartRequest> requests;
    {
        const std::lock_guard lock(mutex_);
        requests.swap(requests_);
    }
    if (!requests.empty()) {
        events_.activated(requests.back());
    }
    if (superseded_) {
        events_.superseded();
    }
}

bool SingleInstance::endUnlessAsked() {
    bool asked = false;
    // On the thread on which requests arrive, so that none arrives between the check and the end.
    bus_.thread().postAndWait([&] {
        if (listener_) {
            listener_->hearAll();
        }
        const std::lock_guard lock(mutex_);
        asked = !requests_.empty() && !superseded_;
        if (!asked) {
            end();
        }
    });
    return !asked;
}

}  // namespace tavo
